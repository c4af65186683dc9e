// Encoding and decoding photograph-sized bitmaps, and the PNG compression settings compared.
// Run: build/dev/bench/image_file_bench

#include "engine/KVBitmap.h"
#include "imageio/ImageFile.h"

#include <benchmark/benchmark.h>
#include <png.h>

#include <cstring>
#include <stdexcept>

namespace {

using namespace tintorra;

// A picture with a photograph's statistics: smooth gradients plus sensor-like noise of a few
// 8-bit levels.
KVBitmapPtr photograph(std::int64_t width, std::int64_t height, int bits)
{
    KVBitmapLayout layout;
    layout.pixelsWide = width;
    layout.pixelsHigh = height;
    layout.bitsPerSample = bits;
    layout.samplesPerPixel = 3;
    layout.hasAlpha = false;
    KVBitmapPtr bitmap = KVBitmap::create(layout);
    if (!bitmap)
        throw std::runtime_error("no memory for the test picture");
    const std::uint32_t maximum = bits == 16 ? 65535u : 255u;
    std::uint32_t noise = 12345;
    for (std::int64_t y = 0; y < height; ++y) {
        std::uint8_t* row = bitmap->bitmapData() + y * bitmap->bytesPerRow();
        for (std::int64_t x = 0; x < width; ++x) {
            for (int c = 0; c < 3; ++c) {
                noise = noise * 1664525u + 1013904223u;
                const double base = c == 0   ? static_cast<double>(x) / width
                                    : c == 1 ? static_cast<double>(y) / height
                                             : 0.5 + 0.4 * ((x + y) % 512) / 512.0;
                const double level = base * 0.9 * maximum + ((noise >> 24) % 5) * (maximum / 255.0);
                const auto v = static_cast<std::uint32_t>(level);
                const std::size_t at =
                    static_cast<std::size_t>(x) * 3 + static_cast<std::size_t>(c);
                if (bits == 16) {
                    const auto s = static_cast<std::uint16_t>(v);
                    std::memcpy(row + 2 * at, &s, 2);
                } else {
                    row[at] = static_cast<std::uint8_t>(v);
                }
            }
        }
    }
    return bitmap;
}

const KVBitmap& twelveMegapixels16()
{
    static const KVBitmapPtr bitmap = photograph(4000, 3000, 16);
    return *bitmap;
}

const KVBitmap& twelveMegapixels8()
{
    static const KVBitmapPtr bitmap = photograph(4000, 3000, 8);
    return *bitmap;
}

void encodeBenchmark(benchmark::State& state, const KVBitmap& bitmap, ImageFormat format,
                     const EncodeOptions& options)
{
    std::size_t size = 0;
    for (auto _ : state) {
        IOResult<std::vector<std::uint8_t>> bytes = encodeImage(bitmap, format, options);
        if (!bytes.ok()) {
            state.SkipWithError(bytes.error().c_str());
            return;
        }
        size = bytes.value().size();
        benchmark::DoNotOptimize(bytes.value().data());
    }
    const double raw = static_cast<double>(bitmap.bytesPerRow() * bitmap.pixelsHigh());
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * raw));
    state.counters["size_ratio"] = static_cast<double>(size) / raw;
}

void decodeBenchmark(benchmark::State& state, const KVBitmap& bitmap, ImageFormat format)
{
    const IOResult<std::vector<std::uint8_t>> bytes = encodeImage(bitmap, format);
    if (!bytes.ok()) {
        state.SkipWithError(bytes.error().c_str());
        return;
    }
    for (auto _ : state) {
        IOResult<KVBitmapPtr> decoded = decodeImage(bytes.value());
        if (!decoded.ok()) {
            state.SkipWithError(decoded.error().c_str());
            return;
        }
        benchmark::DoNotOptimize(decoded.value()->bitmapData());
    }
    state.SetBytesProcessed(
        static_cast<std::int64_t>(state.iterations() * bitmap.bytesPerRow() * bitmap.pixelsHigh()));
}

// PNG settings: (zlib level, filters).
void BM_EncodePng16(benchmark::State& state)
{
    EncodeOptions options;
    options.pngCompressionLevel = static_cast<int>(state.range(0));
    options.pngFilters = static_cast<int>(state.range(1));
    encodeBenchmark(state, twelveMegapixels16(), ImageFormat::png, options);
}
BENCHMARK(BM_EncodePng16)
    ->ArgNames({"level", "filters"})
    ->Args({1, PNG_FILTER_SUB})
    ->Args({2, PNG_FILTER_SUB})
    ->Args({3, PNG_FILTER_SUB})
    ->Args({2, PNG_FILTER_NONE})
    ->Args({2, PNG_FILTER_UP})
    ->Args({2, PNG_FILTER_PAETH})
    ->Args({6, PNG_ALL_FILTERS})
    ->Unit(benchmark::kMillisecond)
    ->Iterations(2);

void BM_DecodePng16(benchmark::State& state)
{
    decodeBenchmark(state, twelveMegapixels16(), ImageFormat::png);
}
BENCHMARK(BM_DecodePng16)->Unit(benchmark::kMillisecond)->Iterations(2);

void BM_EncodeTiff16(benchmark::State& state)
{
    encodeBenchmark(state, twelveMegapixels16(), ImageFormat::tiff, {});
}
BENCHMARK(BM_EncodeTiff16)->Unit(benchmark::kMillisecond)->Iterations(2);

void BM_DecodeTiff16(benchmark::State& state)
{
    decodeBenchmark(state, twelveMegapixels16(), ImageFormat::tiff);
}
BENCHMARK(BM_DecodeTiff16)->Unit(benchmark::kMillisecond)->Iterations(2);

void BM_EncodeJpeg8(benchmark::State& state)
{
    encodeBenchmark(state, twelveMegapixels8(), ImageFormat::jpeg, {});
}
BENCHMARK(BM_EncodeJpeg8)->Unit(benchmark::kMillisecond)->Iterations(2);

void BM_DecodeJpeg8(benchmark::State& state)
{
    decodeBenchmark(state, twelveMegapixels8(), ImageFormat::jpeg);
}
BENCHMARK(BM_DecodeJpeg8)->Unit(benchmark::kMillisecond)->Iterations(2);

void BM_EncodeJpeg2000_16(benchmark::State& state)
{
    encodeBenchmark(state, twelveMegapixels16(), ImageFormat::jpeg2000, {});
}
BENCHMARK(BM_EncodeJpeg2000_16)->Unit(benchmark::kMillisecond)->Iterations(1);

void BM_DecodeJpeg2000_16(benchmark::State& state)
{
    decodeBenchmark(state, twelveMegapixels16(), ImageFormat::jpeg2000);
}
BENCHMARK(BM_DecodeJpeg2000_16)->Unit(benchmark::kMillisecond)->Iterations(1);

// A 50-megapixel 16-bit photograph through TIFF, once each way.
void BM_Tiff50Megapixels16(benchmark::State& state)
{
    const KVBitmapPtr bitmap = photograph(8660, 5774, 16);
    for (auto _ : state) {
        IOResult<std::vector<std::uint8_t>> bytes = encodeImage(*bitmap, ImageFormat::tiff);
        if (!bytes.ok()) {
            state.SkipWithError(bytes.error().c_str());
            return;
        }
        IOResult<KVBitmapPtr> decoded = decodeImage(bytes.value());
        if (!decoded.ok()) {
            state.SkipWithError(decoded.error().c_str());
            return;
        }
        benchmark::DoNotOptimize(decoded.value()->bitmapData());
    }
}
BENCHMARK(BM_Tiff50Megapixels16)->Unit(benchmark::kMillisecond)->Iterations(1);

} // namespace
