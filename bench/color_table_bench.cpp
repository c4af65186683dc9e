// The colour table of a real photograph, measured against a 96 MB memcpy of the same run (M).
//
// The image comes from scripts/make-bench-images.sh; point TINTORRA_BENCH_IMAGE at its 8-bit
// binary PPM (the 16-bit PPM is expected beside it with "-16" for "-8" in the name). Without
// the variable the image benchmarks are skipped with a message.

#include "BenchImage.h"
#include "engine/ColorTable.h"
#include "engine/ColorTableBuild.h"
#include "engine/HueSpectrum.h"
#include "engine/TableAllocation.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace tintorra;

using bench::benchImage;
using bench::kCopyBytes;

// The reference copy: 96 MB between two buffers that stay allocated for the whole run.
class ReferenceCopy {
public:
    ReferenceCopy() : from_(kCopyBytes, 1), to_(kCopyBytes, 0) {}

    double seconds()
    {
        const auto start = std::chrono::steady_clock::now();
        std::memcpy(to_.data(), from_.data(), kCopyBytes);
        benchmark::ClobberMemory();
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }

private:
    std::vector<char> from_, to_;
};

ReferenceCopy& referenceCopy()
{
    static ReferenceCopy copy;
    return copy;
}

// M: the measured time over the time of the reference copies made beside it, one before each
// measured call, so that both see the same load on the machine.
void reportMultiple(benchmark::State& state, double seconds, double copySeconds)
{
    state.counters["M"] = benchmark::Counter(seconds / copySeconds);
    state.counters["ms"] = benchmark::Counter(seconds * 1e3, benchmark::Counter::kAvgIterations);
    state.counters["copy_ms"] =
        benchmark::Counter(copySeconds * 1e3, benchmark::Counter::kAvgIterations);
}

void BM_Memcpy96MB(benchmark::State& state)
{
    double seconds = 0.0;
    for (auto _ : state) {
        seconds += referenceCopy().seconds();
    }
    state.counters["ms"] = benchmark::Counter(seconds * 1e3, benchmark::Counter::kAvgIterations);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kCopyBytes));
}
BENCHMARK(BM_Memcpy96MB)->Unit(benchmark::kMillisecond)->UseRealTime();

// Arguments: colour mode, threads (0: as the application builds it), 16-bit, alpha, cold. A cold
// build first gives back the memory kept from the previous table, so it pays for fresh pages as
// the first table of a session does; otherwise a build reuses the previous one's blocks, as a
// rebuild after a change of colour mode does.
void BM_ColorTable(benchmark::State& state)
{
    const ColorSpaceModel mode = colorSpaceModelFromNumber(state.range(0)).value();
    const auto threads = static_cast<unsigned>(state.range(1));
    const bool cold = state.range(4) != 0;
    const KVBitmapPtr bitmap = benchImage(state.range(2) != 0, state.range(3) != 0);
    if (!bitmap) {
        state.SkipWithError("no benchmark image: run scripts/make-bench-images.sh and set "
                            "TINTORRA_BENCH_IMAGE to its eveningglow-6000x4000-8.ppm");
        return;
    }
    // The memory an engine keeps for its tables.
    static const auto memory = std::make_shared<TableMemory>();
    const UseTableMemory use(memory);
    if (!cold) {
        // A first build leaves its blocks for the timed ones.
        benchmark::DoNotOptimize(createLChColorTableWithImageGamma(bitmap, 1.0 / 2.2, mode).count);
    }
    double seconds = 0.0, copySeconds = 0.0;
    std::uint64_t colors = 0;
    for (auto _ : state) {
        if (cold) {
            memory->release();
        }
        copySeconds += referenceCopy().seconds();
        const auto start = std::chrono::steady_clock::now();
        const LChColorTable table = threads == 0
                                        ? createLChColorTableWithImageGamma(bitmap, 1.0 / 2.2, mode)
                                        : detail::buildColorTable(bitmap, 1.0 / 2.2, mode, threads);
        seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        colors = table.count;
        benchmark::DoNotOptimize(table.colors.get());
    }
    reportMultiple(state, seconds, copySeconds);
    state.counters["colours"] = static_cast<double>(colors);
    state.counters["MP"] = static_cast<double>(bitmap->pixelsWide() * bitmap->pixelsHigh()) / 1e6;
}
// The figures that matter, repeated for their medians; then the other modes and layouts.
BENCHMARK(BM_ColorTable)
    ->ArgNames({"mode", "threads", "16bit", "alpha", "cold"})
    ->Args({0, 0, 0, 0, 0})
    ->Args({0, 0, 0, 0, 1})
    ->Args({0, 1, 0, 0, 0})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(3)
    ->Repetitions(3)
    // On a busy machine the least disturbed repetition says most about the code.
    ->ComputeStatistics("min",
                        [](const std::vector<double>& v) {
                            return *std::min_element(v.begin(), v.end());
                        })
    ->ReportAggregatesOnly(true);
BENCHMARK(BM_ColorTable)
    ->ArgNames({"mode", "threads", "16bit", "alpha", "cold"})
    ->Args({0, 0, 0, 1, 0})
    ->Args({1, 0, 0, 0, 0})
    ->Args({2, 0, 0, 0, 0})
    ->Args({3, 0, 0, 0, 0})
    ->Args({0, 0, 1, 0, 0})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(3);

void BM_HueSpectrum(benchmark::State& state)
{
    const KVBitmapPtr bitmap = benchImage(false, false);
    if (!bitmap) {
        state.SkipWithError("no benchmark image: run scripts/make-bench-images.sh and set "
                            "TINTORRA_BENCH_IMAGE to its eveningglow-6000x4000-8.ppm");
        return;
    }
    const LChColorTable table =
        createLChColorTableWithImageGamma(bitmap, 1.0 / 2.2, ColorSpaceModel::LChuv);
    double seconds = 0.0, copySeconds = 0.0;
    for (auto _ : state) {
        copySeconds += referenceCopy().seconds();
        const auto start = std::chrono::steady_clock::now();
        const LChSpectrum spectrum = createLChSpectrumFromLChColorTable(table);
        seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        benchmark::DoNotOptimize(spectrum.bands.get());
    }
    reportMultiple(state, seconds, copySeconds);
}
BENCHMARK(BM_HueSpectrum)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
