// Cost per pixel of the engine's inner step: read a pixel as linear floats and write it back.
#include "image/PixelAccess.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>

namespace {

using namespace tintorra;

constexpr std::int64_t kWide = 4000;
constexpr std::int64_t kHigh = 3000;

KVBitmapPtr makePhoto(std::int64_t bitsPerSample, bool planar)
{
    KVBitmapLayout layout;
    layout.pixelsWide = kWide;
    layout.pixelsHigh = kHigh;
    layout.bitsPerSample = bitsPerSample;
    layout.samplesPerPixel = 4;
    layout.hasAlpha = true;
    layout.isPlanar = planar;
    layout.bitmapFormat = kBitmapFormatAlphaNonpremultiplied;
    auto bitmap = KVBitmap::create(layout);
    if (!bitmap) {
        std::abort();
    }
    // Every sample slot, slack included, gets pseudo-random content.
    const std::size_t slots = planar ? static_cast<std::size_t>(3 * bitsPerSample / 8 + 1) : 1;
    const std::size_t bytes = bitmap->planeBytes() * slots;
    std::uint32_t state = 12345;
    for (std::size_t i = 0; i < bytes; ++i) {
        state = state * 1664525u + 1013904223u;
        bitmap->bitmapData()[i] = static_cast<std::uint8_t>(state >> 24);
    }
    return bitmap;
}

void readWriteLinear(benchmark::State& state, std::int64_t bitsPerSample, bool planar, double gamma)
{
    const auto bitmap = makePhoto(bitsPerSample, planar);
    const auto offsets = pixelManipulationOffsetsWithImageGamma(bitmap, gamma);
    for (auto _ : state) {
        for (std::int64_t y = 0; y < kHigh; ++y) {
            for (std::int64_t x = 0; x < kWide; ++x) {
                ColorComponents colour;
                readLinearFloats(x, y, offsets, colour);
                writeLinearFloats(x, y, offsets, colour);
            }
        }
        benchmark::ClobberMemory();
    }
    const std::int64_t pixels = kWide * kHigh;
    state.SetItemsProcessed(state.iterations() * pixels);
    // Inverted rate: seconds per pixel, printed with its SI prefix (e.g. "95n" + "s").
    state.counters["per_pixel"] = benchmark::Counter(static_cast<double>(pixels),
                                                     benchmark::Counter::kIsIterationInvariantRate |
                                                         benchmark::Counter::kInvert);
}

void BM_LinearReadWrite8Chunky(benchmark::State& state)
{
    readWriteLinear(state, 8, false, 1.0 / 2.2);
}
void BM_LinearReadWrite8Planar(benchmark::State& state)
{
    readWriteLinear(state, 8, true, 1.0 / 2.2);
}
void BM_LinearReadWrite16Chunky(benchmark::State& state)
{
    readWriteLinear(state, 16, false, 1.0 / 2.2);
}
void BM_LinearReadWrite16Planar(benchmark::State& state)
{
    readWriteLinear(state, 16, true, 1.0 / 2.2);
}
// Gamma 1 skips the powers and shows what addressing and conversion cost alone.
void BM_LinearReadWrite8ChunkyGammaOne(benchmark::State& state)
{
    readWriteLinear(state, 8, false, 1.0);
}
void BM_LinearReadWrite16PlanarGammaOne(benchmark::State& state)
{
    readWriteLinear(state, 16, true, 1.0);
}

BENCHMARK(BM_LinearReadWrite8Chunky)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LinearReadWrite8Planar)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LinearReadWrite16Chunky)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LinearReadWrite16Planar)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LinearReadWrite8ChunkyGammaOne)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LinearReadWrite16PlanarGammaOne)->Unit(benchmark::kMillisecond);

} // namespace
