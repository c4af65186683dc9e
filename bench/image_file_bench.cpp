// Encoding and decoding photograph-sized bitmaps, and the PNG compression settings compared.
// Run: build/dev/bench/image_file_bench
//
// The PNG benchmarks named "Photo" use the real 24-megapixel photograph of BenchImage.h (set
// TINTORRA_BENCH_IMAGE to its 8-bit PPM; its PNG, eveningglow-6000x4000-8.png, is expected
// beside it) and give their times as multiples of a 96 MB memcpy of the same run (M), and the
// CPU time of all the process's threads as multiples of the memcpy's CPU time (M_cpu_all), which
// other load on the machine hardly changes.

#include "BenchImage.h"
#include "image/KVBitmap.h"
#include "imageio/ImageFile.h"

#include <benchmark/benchmark.h>
#include <png.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace {

using namespace tintorra;
using tintorra::bench::benchImage;
using tintorra::bench::memcpyCpuSeconds;
using tintorra::bench::reportMultiple;
using tintorra::bench::skipWithoutImage;

BENCHMARK(tintorra::bench::BM_Memcpy96MB)->Unit(benchmark::kMillisecond)->UseRealTime();

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
            state.SkipWithError(bytes.error().message.c_str());
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
        state.SkipWithError(bytes.error().message.c_str());
        return;
    }
    for (auto _ : state) {
        IOResult<KVBitmapPtr> decoded = decodeImage(bytes.value());
        if (!decoded.ok()) {
            state.SkipWithError(decoded.error().message.c_str());
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
            state.SkipWithError(bytes.error().message.c_str());
            return;
        }
        IOResult<KVBitmapPtr> decoded = decodeImage(bytes.value());
        if (!decoded.ok()) {
            state.SkipWithError(decoded.error().message.c_str());
            return;
        }
        benchmark::DoNotOptimize(decoded.value()->bitmapData());
    }
}
BENCHMARK(BM_Tiff50Megapixels16)->Unit(benchmark::kMillisecond)->Iterations(1);

} // namespace

namespace {

// CPU time of every thread of the process.
double processCpuSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

// The photograph's PNG as ImageMagick wrote it (Paeth on almost every row), read once.
const std::vector<std::uint8_t>* photoPng()
{
    static std::vector<std::uint8_t> bytes;
    const char* const ppm = std::getenv("TINTORRA_BENCH_IMAGE");
    if (bytes.empty() && ppm != nullptr) {
        std::string path = ppm;
        const std::size_t at = path.rfind(".ppm");
        if (at == std::string::npos)
            return nullptr;
        path.replace(at, 4, ".png");
        std::ifstream file(path, std::ios::binary);
        bytes.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    return bytes.empty() ? nullptr : &bytes;
}

// Times `run` (which returns false on failure) as M, ms and M_cpu_all.
template <typename Run>
void timePhoto(benchmark::State& state, const Run& run)
{
    double seconds = 0.0;
    double cpuSeconds = 0.0;
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        const double cpuStart = processCpuSeconds();
        const bool ok = run();
        cpuSeconds += processCpuSeconds() - cpuStart;
        seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        if (!ok) {
            state.SkipWithError("the photograph could not be encoded or decoded");
            return;
        }
    }
    reportMultiple(state, seconds);
    if (memcpyCpuSeconds() > 0.0)
        state.counters["M_cpu_all"] =
            benchmark::Counter(cpuSeconds / memcpyCpuSeconds(), benchmark::Counter::kAvgIterations);
}

void decodePhoto(benchmark::State& state, const std::vector<std::uint8_t>& png)
{
    timePhoto(state, [&] {
        IOResult<KVBitmapPtr> decoded = decodeImage(png);
        benchmark::DoNotOptimize(decoded.ok() ? decoded.value()->bitmapData() : nullptr);
        return decoded.ok();
    });
    state.counters["file_MB"] = static_cast<double>(png.size()) / 1e6;
}

// The photograph's own PNG file.
void BM_DecodePngPhoto8(benchmark::State& state)
{
    const std::vector<std::uint8_t>* png = photoPng();
    if (png == nullptr) {
        skipWithoutImage(state);
        return;
    }
    decodePhoto(state, *png);
}
BENCHMARK(BM_DecodePngPhoto8)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

// The file our own encoder writes of the photograph (Average filter throughout).
void BM_DecodePngPhoto8WrittenByUs(benchmark::State& state)
{
    const KVBitmapPtr image = benchImage(false, false);
    if (!image) {
        skipWithoutImage(state);
        return;
    }
    const IOResult<std::vector<std::uint8_t>> png = encodeImage(*image, ImageFormat::png);
    if (!png.ok()) {
        state.SkipWithError(png.error().message.c_str());
        return;
    }
    decodePhoto(state, png.value());
}
BENCHMARK(BM_DecodePngPhoto8WrittenByUs)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(3);

// Arguments: bits per sample; libpng's own compression (zlib level 2, Up filter) instead of ours.
void BM_EncodePngPhoto(benchmark::State& state)
{
    const KVBitmapPtr image = benchImage(state.range(0) == 16, false);
    if (!image) {
        skipWithoutImage(state);
        return;
    }
    EncodeOptions options;
    if (state.range(1) != 0) {
        options.pngCompressionLevel = 2;
        options.pngFilters = PNG_FILTER_UP;
    }
    std::size_t size = 0;
    timePhoto(state, [&] {
        IOResult<std::vector<std::uint8_t>> png = encodeImage(*image, ImageFormat::png, options);
        if (png.ok())
            size = png.value().size();
        return png.ok();
    });
    state.counters["file_MB"] = static_cast<double>(size) / 1e6;
    state.counters["size_ratio"] =
        static_cast<double>(size) / static_cast<double>(image->bytesPerRow() * image->pixelsHigh());
}
BENCHMARK(BM_EncodePngPhoto)
    ->ArgNames({"bits", "libpng"})
    ->Args({8, 0})
    ->Args({16, 0})
    ->Args({8, 1})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(3);

} // namespace
