#include "engine/BatchMath.h"

#include <cmath>

namespace tintorra::batch {

namespace avx2 {
void pow(const double* x, double y, double* out, std::size_t n);
void cbrt(const double* x, double* out, std::size_t n);
void atan2(const double* y, const double* x, double* out, std::size_t n);
void sincos(const double* angle, double* sines, double* cosines, std::size_t n);
} // namespace avx2

bool vectorised()
{
#if TINTORRA_AVX2_KERNELS
    static const bool available =
        __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("fma") != 0;
    return available;
#else
    return false;
#endif
}

void pow(const double* x, double y, double* out, std::size_t n)
{
    if (vectorised()) {
        avx2::pow(x, y, out, n);
        return;
    }
    for (std::size_t i = 0; i < n; ++i) {
        out[i] = std::pow(x[i], y);
    }
}

void cbrt(const double* x, double* out, std::size_t n)
{
    if (vectorised()) {
        avx2::cbrt(x, out, n);
        return;
    }
    for (std::size_t i = 0; i < n; ++i) {
        out[i] = std::cbrt(x[i]);
    }
}

void atan2(const double* y, const double* x, double* out, std::size_t n)
{
    if (vectorised()) {
        avx2::atan2(y, x, out, n);
        return;
    }
    for (std::size_t i = 0; i < n; ++i) {
        out[i] = std::atan2(y[i], x[i]);
    }
}

void sincos(const double* angle, double* sines, double* cosines, std::size_t n)
{
    if (vectorised()) {
        avx2::sincos(angle, sines, cosines, n);
        return;
    }
    for (std::size_t i = 0; i < n; ++i) {
        const double a = angle[i];
        sines[i] = std::sin(a);
        cosines[i] = std::cos(a);
    }
}

} // namespace tintorra::batch
