// Per-pixel cost of the colour model round trips the engine runs: linear RGB into the working
// model and back, over a million pseudo-random colours (a photograph's worth of pixels that the
// branch predictor cannot learn).
#include "colour/ColorConversions.h"
#include "colour/ColorMatrices.h"
#include "colour/WorkingSpaces.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

namespace {

using namespace tintorra;

constexpr std::size_t kPixelCount = 1 << 20;

const std::vector<ColorComponents>& linearPixels()
{
    static const std::vector<ColorComponents> pixels = [] {
        std::mt19937_64 generator(20240611);
        std::uniform_real_distribution<double> unit(0.0, 1.0);
        std::vector<ColorComponents> result(kPixelCount);
        for (ColorComponents& pixel : result) {
            pixel = {unit(generator), unit(generator), unit(generator), 1.0};
        }
        return result;
    }();
    return pixels;
}

struct Matrices {
    Matrix3 m;
    Matrix3 mi;
};

const Matrices& srgbMatrices()
{
    static const Matrices matrices = [] {
        Matrices result{matrixFromChromaticities(sRGBChromaticities()), {}};
        invertMatrix3(result.mi, result.m);
        return result;
    }();
    return matrices;
}

template <typename RoundTrip>
void runRoundTrip(benchmark::State& state, RoundTrip roundTrip)
{
    const std::vector<ColorComponents>& pixels = linearPixels();
    std::vector<ColorComponents> output(pixels.size());
    for (auto _ : state) {
        for (std::size_t i = 0; i < pixels.size(); ++i) {
            output[i] = roundTrip(pixels[i]);
        }
        benchmark::DoNotOptimize(output.data());
        benchmark::ClobberMemory();
    }
    const auto processed = static_cast<double>(pixels.size());
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * pixels.size()));
    // Seconds per pixel, printed with an SI prefix (e.g. "21.4n").
    state.counters["per_pixel"] = benchmark::Counter(
        processed, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void BM_RgbLchuvRgb(benchmark::State& state)
{
    const Matrices& matrices = srgbMatrices();
    runRoundTrip(state, [&matrices](ColorComponents rgb) {
        return lchuvToRgb(rgbToLchuv(rgb, matrices.m), matrices.mi);
    });
}

void BM_RgbLchabRgb(benchmark::State& state)
{
    const Matrices& matrices = srgbMatrices();
    runRoundTrip(state, [&matrices](ColorComponents rgb) {
        return lchabToRgb(rgbToLchab(rgb, matrices.m), matrices.mi);
    });
}

void BM_RgbHsbRgb(benchmark::State& state)
{
    runRoundTrip(state, [](ColorComponents rgb) { return hsbToRgb(rgbToHsb(rgb)); });
}

void BM_RgbHslRgb(benchmark::State& state)
{
    runRoundTrip(state, [](ColorComponents rgb) { return hslToRgb(rgbToHsl(rgb)); });
}

void BM_RgbHclRgb(benchmark::State& state)
{
    runRoundTrip(state, [](ColorComponents rgb) {
        const HclComponents hcl = rgbToHcl(rgb);
        return hclToRgb({hcl.h, hcl.c, hcl.l, hcl.alpha});
    });
}

BENCHMARK(BM_RgbLchuvRgb)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RgbLchabRgb)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RgbHsbRgb)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RgbHslRgb)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RgbHclRgb)->Unit(benchmark::kMillisecond);

} // namespace
