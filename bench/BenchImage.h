#pragma once

// The benchmark photograph and the memcpy yardstick shared by the engine benchmarks.
//
// The image comes from scripts/make-bench-images.sh; point TINTORRA_BENCH_IMAGE at its 8-bit
// binary PPM (the 16-bit PPM is expected beside it with "-16" for "-8" in the name). Figures are
// reported in milliseconds and as multiples (M) of a 96 MB memcpy timed in the same run.

#include "image/KVBitmap.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <string>
#include <vector>

namespace tintorra::bench {

inline constexpr std::size_t kCopyBytes = 96u << 20;

inline double& memcpySeconds()
{
    static double seconds = 0.0;
    return seconds;
}

inline double& memcpyCpuSeconds()
{
    static double seconds = 0.0;
    return seconds;
}

// CPU time of the calling thread.
inline double threadCpuSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

// A binary PPM (P6) of 8 or 16 bits into a bitmap of 3 or 4 samples per pixel (alpha opaque).
inline KVBitmapPtr loadPpm(const std::string& path, bool withAlpha)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return nullptr;
    }
    std::string magic;
    file >> magic;
    std::int64_t values[3] = {0, 0, 0};
    for (std::int64_t& value : values) {
        file >> std::ws;
        while (file.peek() == '#') {
            std::string comment;
            std::getline(file, comment);
            file >> std::ws;
        }
        file >> value;
    }
    file.get();
    const auto [wide, high, maximum] = values;
    if (magic != "P6" || wide <= 0 || high <= 0 || maximum <= 0 || maximum > 65535) {
        return nullptr;
    }
    const std::int64_t bytesPerSample = maximum > 255 ? 2 : 1;
    std::vector<std::uint8_t> samples(static_cast<std::size_t>(wide * high * 3 * bytesPerSample));
    file.read(reinterpret_cast<char*>(samples.data()),
              static_cast<std::streamsize>(samples.size()));
    if (!file) {
        return nullptr;
    }
    KVBitmapLayout layout;
    layout.pixelsWide = wide;
    layout.pixelsHigh = high;
    layout.bitsPerSample = 8 * bytesPerSample;
    layout.samplesPerPixel = withAlpha ? 4 : 3;
    layout.hasAlpha = withAlpha;
    const KVBitmapPtr bitmap = KVBitmap::create(layout);
    if (!bitmap) {
        return nullptr;
    }
    const std::int64_t channels = layout.samplesPerPixel;
    for (std::int64_t y = 0; y < high; ++y) {
        std::uint8_t* row = bitmap->bitmapData() + y * bitmap->bytesPerRow();
        const std::uint8_t* in = samples.data() + y * wide * 3 * bytesPerSample;
        for (std::int64_t x = 0; x < wide; ++x) {
            for (std::int64_t c = 0; c < channels; ++c) {
                std::uint8_t* out = row + (x * channels + c) * bytesPerSample;
                if (c == 3) {
                    std::memset(out, 0xFF, static_cast<std::size_t>(bytesPerSample));
                } else if (bytesPerSample == 1) {
                    *out = in[x * 3 + c];
                } else {
                    // PPM stores big-endian words; the bitmap keeps the machine's order.
                    out[0] = in[(x * 3 + c) * 2 + 1];
                    out[1] = in[(x * 3 + c) * 2];
                }
            }
        }
    }
    return bitmap;
}

// The photograph, loaded once per layout; nullptr without the environment variable.
inline KVBitmapPtr benchImage(bool sixteenBits, bool withAlpha)
{
    static KVBitmapPtr cache[2][2];
    KVBitmapPtr& slot = cache[sixteenBits][withAlpha];
    const char* const variable = std::getenv("TINTORRA_BENCH_IMAGE");
    if (!slot && variable != nullptr) {
        std::string path = variable;
        if (sixteenBits) {
            const std::size_t at = path.rfind("-8.");
            if (at == std::string::npos) {
                return nullptr;
            }
            path.replace(at, 3, "-16.");
        }
        slot = loadPpm(path, withAlpha);
    }
    return slot;
}

inline void skipWithoutImage(benchmark::State& state)
{
    state.SkipWithError("no benchmark image: run scripts/make-bench-images.sh and set "
                        "TINTORRA_BENCH_IMAGE to its eveningglow-6000x4000-8.ppm");
}

inline void reportMultiple(benchmark::State& state, double seconds)
{
    if (memcpySeconds() > 0.0) {
        state.counters["M"] =
            benchmark::Counter(seconds / memcpySeconds(), benchmark::Counter::kAvgIterations);
    }
    state.counters["ms"] = benchmark::Counter(seconds * 1e3, benchmark::Counter::kAvgIterations);
}

inline double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const std::size_t n = values.size();
    return n % 2 == 1 ? values[n / 2] : 0.5 * (values[n / 2 - 1] + values[n / 2]);
}

// Registered by each program that includes this header; run first so M is known. With
// repetitions M is their median.
inline void BM_Memcpy96MB(benchmark::State& state)
{
    std::vector<char> from(kCopyBytes, 1), to(kCopyBytes, 0);
    double seconds = 0.0;
    double cpuSeconds = 0.0;
    std::int64_t runs = 0;
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        const double cpuStart = threadCpuSeconds();
        std::memcpy(to.data(), from.data(), kCopyBytes);
        benchmark::ClobberMemory();
        cpuSeconds += threadCpuSeconds() - cpuStart;
        seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        ++runs;
    }
    // The median of the repetitions so far: one slow or fast copy must not move every figure
    // after it.
    static std::vector<double> averages;
    static std::vector<double> cpuAverages;
    averages.push_back(seconds / static_cast<double>(runs));
    cpuAverages.push_back(cpuSeconds / static_cast<double>(runs));
    memcpySeconds() = median(averages);
    memcpyCpuSeconds() = median(cpuAverages);
    state.counters["cpu_ms"] = benchmark::Counter(memcpyCpuSeconds() * 1e3);
    state.counters["ms"] = benchmark::Counter(memcpySeconds() * 1e3);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kCopyBytes));
}

} // namespace tintorra::bench
