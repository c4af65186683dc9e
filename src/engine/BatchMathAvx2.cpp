// Compiled for AVX2 and FMA without contraction (see src/CMakeLists.txt) and called only after
// the processor has been checked, so this file holds nothing but these loops: no inline function
// of a shared header may be compiled here and then chosen by the linker for ordinary code (the
// four-lane helpers have internal linkage).

#include "engine/Avx2Lanes.h"

#include <cstddef>
#include <immintrin.h>
#include <sleef.h>

namespace tintorra::batch::avx2 {

namespace {

constexpr std::size_t kLanes = 4;

// The last, partial group of lanes is padded with ones so that no lane computes on garbage.
__m256d loadTail(const double* x, std::size_t count)
{
    double lanes[kLanes] = {1.0, 1.0, 1.0, 1.0};
    for (std::size_t i = 0; i < count; ++i) {
        lanes[i] = x[i];
    }
    return _mm256_loadu_pd(lanes);
}

void storeTail(double* out, __m256d v, std::size_t count)
{
    double lanes[kLanes];
    _mm256_storeu_pd(lanes, v);
    for (std::size_t i = 0; i < count; ++i) {
        out[i] = lanes[i];
    }
}

} // namespace

void pow(const double* x, double y, double* out, std::size_t n)
{
    const __m256d exponent = _mm256_set1_pd(y);
    std::size_t i = 0;
    for (; i + kLanes <= n; i += kLanes) {
        _mm256_storeu_pd(out + i, Sleef_powd4_u10avx2(_mm256_loadu_pd(x + i), exponent));
    }
    if (i < n) {
        storeTail(out + i, Sleef_powd4_u10avx2(loadTail(x + i, n - i), exponent), n - i);
    }
}

void cbrt(const double* x, double* out, std::size_t n)
{
    std::size_t i = 0;
    for (; i + kLanes <= n; i += kLanes) {
        _mm256_storeu_pd(out + i, rowKernel::avx2::cubeRoot(_mm256_loadu_pd(x + i)));
    }
    if (i < n) {
        storeTail(out + i, rowKernel::avx2::cubeRoot(loadTail(x + i, n - i)), n - i);
    }
}

void atan2(const double* y, const double* x, double* out, std::size_t n)
{
    std::size_t i = 0;
    for (; i + kLanes <= n; i += kLanes) {
        _mm256_storeu_pd(out + i,
                         Sleef_atan2d4_u35avx2(_mm256_loadu_pd(y + i), _mm256_loadu_pd(x + i)));
    }
    if (i < n) {
        storeTail(out + i, Sleef_atan2d4_u35avx2(loadTail(y + i, n - i), loadTail(x + i, n - i)),
                  n - i);
    }
}

void sincos(const double* angle, double* sines, double* cosines, std::size_t n)
{
    std::size_t i = 0;
    for (; i + kLanes <= n; i += kLanes) {
        const Sleef___m256d_2 sc = Sleef_sincosd4_u35avx2(_mm256_loadu_pd(angle + i));
        _mm256_storeu_pd(sines + i, sc.x);
        _mm256_storeu_pd(cosines + i, sc.y);
    }
    if (i < n) {
        const Sleef___m256d_2 sc = Sleef_sincosd4_u35avx2(loadTail(angle + i, n - i));
        storeTail(sines + i, sc.x, n - i);
        storeTail(cosines + i, sc.y, n - i);
    }
}

} // namespace tintorra::batch::avx2
