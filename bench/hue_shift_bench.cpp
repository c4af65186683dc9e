// The hue-shift engine on a real photograph (see BenchImage.h), measured against a 96 MB memcpy
// of the same run (M).
//
// Selections: "10" selects a band of hues that holds about a tenth of the 8-bit image's distinct
// colours (the hues between the 45th and 55th percentile of the colour table), "100" selects
// every colour. The shift turns the selection by 0.3 of the circle and raises its saturation
// by 0.3; the brightness curve is the identity. The counters "colours" and "pixels" give the
// selected share of the table's colours and of the image's pixels, in percent. "reuse" 1 hands the
// engine the previous result as its destination (what an editor re-shifting on every slider move
// can do) instead of letting it copy the source; "reuse" 2 also tells it what that result holds,
// so that an 8-bit shift writes only the selected colours; "reuse" 3 instead keeps the map of
// pixels to colours from run to run, as the engine object does (made by an untimed first shift),
// so that a large selection is written in one pass over the rows; "threads" 1 runs the engine on
// the calling thread, whose CPU time over the memcpy's (M_cpu) is then independent of other load.
//
// The engine prints one trace line per worker on standard output; filter it out when reading
// the console, e.g. `hue_shift_bench | grep -v '^thread:'`.

#include "BenchImage.h"
#include "colour/KVColorGamut.h"
#include "colour/WorkingSpaces.h"
#include "engine/ColorTable.h"
#include "engine/HueShift.h"
#include "engine/HueShiftParameters.h"
#include "engine/SelectionWeights.h"
#include "engine/ShiftCaches.h"

#include <algorithm>
#include <map>
#include <memory>

namespace tintorra::bench {
namespace {

struct Prepared {
    LChColorTable table;
    KVColorGamutPtr gamut;
    HueShiftParameters selectTenth;
    HueShiftParameters selectAll;
    double tenthColours = 0.0;
    double tenthPixels = 0.0;
};

HueShiftParameters shiftTowards(ColorSpaceModel mode, double lower, double upper,
                                const KVColorGamutPtr& gamut)
{
    HueShiftParameters p;
    p.colorSpaceModel = mode;
    p.gamut = gamut;
    p.hueLowerFalloff = lower;
    p.hueLower = lower;
    p.hueUpper = upper;
    p.hueUpperFalloff = upper;
    p.targetHue = lower + 0.3 - (lower + 0.3 >= 1.0 ? 1.0 : 0.0);
    p.targetSat = 0.3;
    p.saturationGain = 1.5;
    return p;
}

double hueOfEntry(const color_table_lch_entry_info& e, ColorSpaceModel mode)
{
    return isLchColorMode(mode) ? hueFraction(e.hue) : static_cast<double>(e.hue);
}

// The 8-bit photograph's colour table in a mode, the gamut, and both selections; built once.
const Prepared* prepared(ColorSpaceModel mode, bool withAlpha)
{
    static std::map<std::pair<ColorSpaceModel, bool>, std::unique_ptr<Prepared>> cache;
    auto& slot = cache[{mode, withAlpha}];
    if (slot) {
        return slot.get();
    }
    const KVBitmapPtr image = benchImage(false, withAlpha);
    if (!image) {
        return nullptr;
    }
    slot = std::make_unique<Prepared>();
    Prepared& p = *slot;
    p.table = createLChColorTableWithImageGamma(image, 1.0 / 2.2, mode);
    if (isLchColorMode(mode)) {
        p.gamut = std::make_shared<const KVColorGamut>(sRGBChromaticities(), mode);
    }
    std::vector<double> hues(p.table.count);
    for (std::uint64_t i = 0; i < p.table.count; ++i) {
        hues[i] = hueOfEntry(p.table.colors[i], mode);
    }
    std::sort(hues.begin(), hues.end());
    const double lower = hues[hues.size() * 45 / 100];
    const double upper = hues[hues.size() * 55 / 100];
    p.selectTenth = shiftTowards(mode, lower, upper, p.gamut);
    p.selectAll = shiftTowards(mode, 0.0, 1.0, p.gamut);

    HueShiftParameters normalised = p.selectTenth;
    normalizeHueShiftParameters(normalised);
    std::uint64_t colours = 0;
    std::uint64_t pixels = 0;
    for (std::uint64_t i = 0; i < p.table.count; ++i) {
        const color_table_lch_entry_info& e = p.table.colors[i];
        const double w =
            isLchColorMode(mode)
                ? lchSelection({e.lightness, e.chroma, e.hue, e.alpha}, normalised, p.gamut.get())
                      .weight
                : cylinderSelection({e.hue, e.chroma, e.lightness, e.alpha,
                                     mode == ColorSpaceModel::HCL ? e.saturation : e.chroma},
                                    normalised)
                      .weight;
        if (w > 0.0) {
            ++colours;
            pixels += e.locationCount;
        }
    }
    p.tenthColours = 100.0 * static_cast<double>(colours) / static_cast<double>(p.table.count);
    p.tenthPixels =
        100.0 * static_cast<double>(pixels) / static_cast<double>(p.table.locationCount);
    return slot.get();
}

// The tables an engine keeps from one shift to the next.
ShiftCaches& engineCaches()
{
    static ShiftCaches caches;
    return caches;
}

KVBitmapPtr shiftAsTheEngineDoes(const KVBitmapPtr& image, const KVBitmapPtr& destination,
                                 const HueShiftParameters& parameters, unsigned processors,
                                 detail::TableFootprints* footprints = nullptr,
                                 detail::EntryMapSlot* entryMap = nullptr)
{
    return detail::hueShift(image, destination, parameters, processors, EngineKernels::best,
                            nullptr, {&engineCaches(), {}, entryMap}, footprints);
}

// Wall time as multiples of the memcpy (M), and the shifting thread's CPU time as multiples of
// the memcpy's CPU time (M_cpu): on one thread the latter is the engine's own cost, whatever else
// the machine is doing.
void runShifts(benchmark::State& state, const KVBitmapPtr& image, HueShiftParameters parameters,
               std::int64_t reuse, unsigned processors)
{
    KVBitmapPtr destination = reuse != 0 ? image->copy() : nullptr;
    detail::TableFootprints footprints;
    TableFootprint holds;
    detail::EntryMapSlot entryMap{nullptr, true};
    if (reuse == 3) {
        shiftAsTheEngineDoes(image, destination, parameters, processors, nullptr, &entryMap);
    }
    double seconds = 0.0;
    double cpuSeconds = 0.0;
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        const double cpuStart = threadCpuSeconds();
        footprints.destinationHolds = reuse == 2 && footprints.tracked ? &holds : nullptr;
        if (footprints.destinationHolds == nullptr) {
            footprints.plan = nullptr;
        }
        KVBitmapPtr result = shiftAsTheEngineDoes(image, destination, parameters, processors,
                                                  reuse == 2 ? &footprints : nullptr,
                                                  reuse == 3 ? &entryMap : nullptr);
        holds.swap(footprints.written);
        cpuSeconds += threadCpuSeconds() - cpuStart;
        seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        benchmark::DoNotOptimize(result.get());
        if (!result) {
            state.SkipWithError("the shift failed");
            return;
        }
    }
    reportMultiple(state, seconds);
    if (processors == 1 && memcpyCpuSeconds() > 0.0) {
        state.counters["M_cpu"] =
            benchmark::Counter(cpuSeconds / memcpyCpuSeconds(), benchmark::Counter::kAvgIterations);
    }
}

// Arguments: colour mode, alpha, reuse the destination, selection (10 or 100), threads (0: one
// per processor).
void BM_ReshiftWithTable(benchmark::State& state)
{
    const ColorSpaceModel mode = colorSpaceModelFromNumber(state.range(0)).value();
    const bool alpha = state.range(1) != 0;
    const Prepared* p = prepared(mode, alpha);
    if (p == nullptr) {
        skipWithoutImage(state);
        return;
    }
    HueShiftParameters parameters = state.range(3) == 10 ? p->selectTenth : p->selectAll;
    parameters.colorTable = ColorTableRef::of(p->table);
    runShifts(state, benchImage(false, alpha), parameters, state.range(2),
              static_cast<unsigned>(state.range(4)));
    state.counters["colours"] = state.range(3) == 10 ? p->tenthColours : 100.0;
    state.counters["pixels"] = state.range(3) == 10 ? p->tenthPixels : 100.0;
    state.counters["tableColours"] = static_cast<double>(p->table.count);
}

// Arguments: colour mode, selection (10 or 100), reuse the destination, threads.
void BM_ShiftSixteenBitRows(benchmark::State& state)
{
    const ColorSpaceModel mode = colorSpaceModelFromNumber(state.range(0)).value();
    const Prepared* p = prepared(mode, false);
    const KVBitmapPtr image = benchImage(true, false);
    if (p == nullptr || !image) {
        skipWithoutImage(state);
        return;
    }
    runShifts(state, image, state.range(1) == 10 ? p->selectTenth : p->selectAll, state.range(2),
              static_cast<unsigned>(state.range(3)));
    state.counters["pixels"] = state.range(1) == 10 ? p->tenthPixels : 100.0;
}

BENCHMARK(BM_Memcpy96MB)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_ReshiftWithTable)
    ->ArgNames({"mode", "alpha", "reuse", "sel", "threads"})
    ->Args({0, 0, 0, 10, 0})
    ->Args({0, 0, 1, 10, 0})
    ->Args({0, 0, 1, 10, 1})
    ->Args({0, 0, 2, 10, 0})
    ->Args({0, 0, 2, 10, 1})
    ->Args({0, 1, 0, 10, 0})
    ->Args({0, 1, 1, 10, 0})
    ->Args({0, 1, 2, 10, 0})
    ->Args({0, 1, 1, 10, 1})
    ->Args({1, 1, 1, 10, 0})
    ->Args({3, 1, 1, 10, 0})
    ->Args({0, 0, 3, 10, 0})
    ->Args({0, 1, 3, 10, 0})
    ->Args({0, 1, 1, 100, 0})
    ->Args({0, 1, 2, 100, 0})
    ->Args({0, 1, 3, 100, 0})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(BM_ShiftSixteenBitRows)
    ->ArgNames({"mode", "sel", "reuse", "threads"})
    ->Args({0, 10, 0, 0})
    ->Args({0, 10, 1, 0})
    ->Args({0, 10, 1, 1})
    ->Args({0, 100, 1, 0})
    ->Args({0, 100, 1, 1})
    ->Args({1, 10, 1, 0})
    ->Args({1, 100, 1, 0})
    ->Args({3, 10, 1, 0})
    ->Args({3, 100, 1, 0})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

} // namespace
} // namespace tintorra::bench

namespace tintorra::bench {
namespace {

// Per-pixel cost without the photograph: 600 x 400 random 16-bit colours on one thread, so that
// the CPU time (not the wall time of a shared machine) gives nanoseconds per pixel.
void BM_RowKernelPerPixel(benchmark::State& state)
{
    static KVBitmapPtr image;
    if (!image) {
        KVBitmapLayout layout;
        layout.pixelsWide = 600;
        layout.pixelsHigh = 400;
        layout.bitsPerSample = 16;
        layout.samplesPerPixel = 3;
        layout.hasAlpha = false;
        image = KVBitmap::create(layout);
        std::uint32_t lcg = 12345;
        auto* words = reinterpret_cast<std::uint16_t*>(image->bitmapData());
        for (std::size_t i = 0; i < image->sampleBytes() / 2; ++i) {
            lcg = lcg * 1664525u + 1013904223u;
            words[i] = static_cast<std::uint16_t>(lcg >> 16);
        }
    }
    const ColorSpaceModel mode = colorSpaceModelFromNumber(state.range(0)).value();
    HueShiftParameters p;
    p.colorSpaceModel = mode;
    if (isLchColorMode(mode)) {
        static KVColorGamutPtr gamuts[2];
        KVColorGamutPtr& gamut = gamuts[colorSpaceModelNumber(mode)];
        if (!gamut) {
            gamut = std::make_shared<const KVColorGamut>(sRGBChromaticities(), mode);
        }
        p.gamut = gamut;
    }
    const double width = state.range(1) / 100.0;
    p.hueLowerFalloff = 0.3;
    p.hueLower = 0.3;
    p.hueUpper = 0.3 + width;
    p.hueUpperFalloff = 0.3 + width;
    p.targetHue = 0.7;
    p.targetSat = 0.3;
    const KVBitmapPtr destination = image->copy();
    for (auto _ : state) {
        benchmark::DoNotOptimize(shiftAsTheEngineDoes(image, destination, p, 1).get());
    }
    state.counters["ns/pixel"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * 600 * 400,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_RowKernelPerPixel)
    ->ArgNames({"mode", "hue%"})
    ->Args({0, 10})
    ->Args({0, 100})
    ->Args({1, 10})
    ->Args({1, 100})
    ->Args({3, 10})
    ->Args({3, 100})
    ->Unit(benchmark::kMillisecond);

} // namespace
} // namespace tintorra::bench
