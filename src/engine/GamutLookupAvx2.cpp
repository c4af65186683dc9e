// Compiled for AVX2 and FMA without contraction (see src/CMakeLists.txt); called only after the
// processor has been checked.

#include "engine/Avx2Lanes.h"
#include "engine/RowKernel.h"

namespace tintorra::rowKernel::avx2 {

namespace {

// Four lanes from `values`, the missing ones of a last, partial group 0.
Lanes loadGroup(const double* values, std::size_t count)
{
    double lanes[kLanes] = {0.0, 0.0, 0.0, 0.0};
    for (std::size_t lane = 0; lane < kLanes && lane < count; ++lane) {
        lanes[lane] = values[lane];
    }
    return _mm256_loadu_pd(lanes);
}

void storeGroup(double* out, Lanes v, std::size_t count)
{
    double lanes[kLanes];
    _mm256_storeu_pd(lanes, v);
    for (std::size_t lane = 0; lane < kLanes && lane < count; ++lane) {
        out[lane] = lanes[lane];
    }
}

} // namespace

void chromasForHues(const ChromaTable& table, const double* hue, const double* lightness,
                    std::size_t count, double* out)
{
    for (std::size_t i = 0; i < count; i += kLanes) {
        storeGroup(
            out + i,
            chromaForHue(table, loadGroup(hue + i, count - i), loadGroup(lightness + i, count - i)),
            count - i);
    }
}

void maxChromasForHues(const double* maxChromas, const double* hue, std::size_t count, double* out)
{
    for (std::size_t i = 0; i < count; i += kLanes) {
        const Lanes halfDegrees = mul(splat(2.0), wrappedDegrees(loadGroup(hue + i, count - i)));
        storeGroup(out + i, maxChromaAtHalfDegrees(maxChromas, halfDegrees), count - i);
    }
}

} // namespace tintorra::rowKernel::avx2
