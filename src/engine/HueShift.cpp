#include "engine/HueShift.h"

#include "colour/ColorMatrices.h"
#include "common/ParallelLoops.h"
#include "engine/HueCandidates.h"
#include "engine/HueShiftWorkers.h"
#include "engine/PaintCoverage.h"
#include "engine/SelectionWeights.h"
#include "engine/ShiftCaches.h"
#include "engine/ShiftOutcome.h"
#include "image/PixelAccess.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <thread>
#include <vector>

namespace tintorra {

namespace {

// A run whose colours cover at least this share of the pixels (one in so many), or more than a
// write plan holds, writes through the map of pixels to entries: gathering that many pixels
// colour by colour costs more than one pass over all of them.
constexpr std::uint64_t kEntryMapShare = 4;

bool sameLayout(const PixelManipulationOffsets& a, const PixelManipulationOffsets& b)
{
    return a.pixelsWide == b.pixelsWide && a.pixelsHigh == b.pixelsHigh &&
           a.bitsPerSample == b.bitsPerSample && a.samplesPerPixel == b.samplesPerPixel &&
           a.bytesPerRow == b.bytesPerRow && a.bytesPerPixel == b.bytesPerPixel &&
           a.hasAlpha == b.hasAlpha && a.bitmapFormat == b.bitmapFormat &&
           a.premultiplied == b.premultiplied && a.isPlanar == b.isPlanar &&
           a.numberOfPlanes == b.numberOfPlanes;
}

// The matrices of the gamut the colours were measured with, or of the source's colour space.
void runMatrices(const HueShiftParameters& p, const KVBitmap& source, Matrix3& M, Matrix3& MI)
{
    if (p.gamut != nullptr) {
        p.gamut->copy_RGB_to_XYZ_matrix(M);
        p.gamut->copy_XYZ_to_RGB_matrix(MI);
        return;
    }
    matrixFromColorSpace(M, &source.colorSpace());
    inverseMatrixFromColorSpace(MI, &source.colorSpace());
}

// Gives each task about the same number of entries on the arc of selectable hues: a selection is
// a run of hues, and the table is in hue order, so even runs of entries would leave one thread
// with all the work. Only the entries on the arc are ever computed.
void balanceOnHueArc(std::vector<HueShiftTask>& tasks, const ColorTableRef& table,
                     const HueArc& arc)
{
    const auto candidates = entriesOnHueArc(table.colors, 0, table.count, arc);
    std::uint64_t total = 0;
    for (const auto& [begin, end] : candidates) {
        total += end - begin;
    }
    const std::size_t threads = tasks.size();
    if (threads < 2 || total == 0) {
        return;
    }
    // The entry where the k-th share of the candidates begins.
    const auto shareBegins = [&](std::uint64_t k) -> std::uint64_t {
        std::uint64_t before = total * k / threads;
        for (const auto& [begin, end] : candidates) {
            if (before < end - begin) {
                return begin + before;
            }
            before -= end - begin;
        }
        return table.count;
    };
    std::uint64_t first = 0;
    for (std::size_t i = 0; i < threads; ++i) {
        const std::uint64_t next = i + 1 < threads ? shareBegins(i + 1) : table.count;
        tasks[i].firstItem = first;
        tasks[i].itemCount = next - first;
        first = next;
    }
}

// A colour table is usable when it is empty (nothing to shift) or describes colours of the
// record's mode.
bool usableColorTable(const ColorTableRef& table, ColorSpaceModel colorSpaceModel)
{
    return table.count == 0 || (table.colorSpaceModel == colorSpaceModel &&
                                table.colors != nullptr && table.locations != nullptr);
}

KVBitmapPtr shift(const KVBitmapPtr& source, const KVBitmapPtr& given, HueShiftParameters p,
                  unsigned processorCount, EngineKernels kernels, RunControl* control,
                  ShiftCaches& caches, const TableWriteLimits& writeLimits,
                  detail::EntryMapSlot* entryMap, detail::TableFootprints* footprints)
{
    TableWritePlanPtr givenPlan;
    if (footprints != nullptr) {
        givenPlan = std::move(footprints->plan);
        footprints->tracked = false;
        footprints->written.clear();
    }
    const std::lock_guard<std::recursive_mutex> lock(source->lock());

    PixelManipulationOffsets sourceOffsets;
    if (!initializePixelManipulationOffsets(sourceOffsets, source, p.imageGamma) ||
        (sourceOffsets.samplesPerPixel != 3 && sourceOffsets.samplesPerPixel != 4)) {
        return nullptr;
    }
    const bool byColorTable = sourceOffsets.bitsPerSample == 8;
    if (byColorTable && !usableColorTable(p.colorTable, p.colorSpaceModel)) {
        return nullptr;
    }

    KVBitmapPtr destination;
    bool copySourceSamples = false;
    PixelManipulationOffsets destinationOffsets;
    const PixelManipulationOffsets* destinationRecord = &sourceOffsets;
    if (given == source) {
        destination = source;
    } else {
        if (given != nullptr &&
            initializePixelManipulationOffsets(destinationOffsets, given, p.imageGamma) &&
            sameLayout(sourceOffsets, destinationOffsets) &&
            given->sampleBytes() == source->sampleBytes()) {
            destination = given;
            // The writers give it the source's samples wherever they write no colour.
            copySourceSamples = true;
        } else {
            destination = source->copy();
            if (destination == nullptr) {
                return nullptr;
            }
            initializePixelManipulationOffsets(destinationOffsets, destination, p.imageGamma);
        }
        destinationRecord = &destinationOffsets;
    }

    if (p.gamut != nullptr && !p.gamut->hasTables()) {
        p.gamut = nullptr;
    }
    normalizeHueShiftParameters(p);

    const PaintCoverage coverage = combinePaintMasks(
        p.inclusionMask, p.exclusionMask, sourceOffsets.pixelsWide, sourceOffsets.pixelsHigh);
    HueShiftRun run;
    run.source = &sourceOffsets;
    run.destination = destinationRecord;
    run.coverage = &coverage;
    run.vectorised = kernels == EngineKernels::best;
    run.control = control;
    runMatrices(p, *source, run.M, run.MI);
    run.selectableHues = selectableHueArc(p);
    run.luvHueFilter = LuvHueFilter(run.selectableHues, run.M);
    if (byColorTable) {
        run.byteEncode = caches.byteEncodeTable(destinationRecord->imageGamma);
    } else if (sourceOffsets.bitsPerSample == 16) {
        run.wordDecode = caches.wordDecodeTable(sourceOffsets.imageGamma);
        run.wordEncode = caches.wordEncodeTable(destinationRecord->imageGamma);
    }
    if (run.vectorised) {
        run.pairedChroma = caches.pairedChromaTable(p.gamut);
    }
    run.writeLimits = writeLimits;

    const std::uint64_t items =
        byColorTable ? p.colorTable.count : static_cast<std::uint64_t>(sourceOffsets.pixelsHigh);
    const WorkerPool* pool = currentWorkerPool();
    const unsigned processors = processorCount != 0 ? processorCount
                                : pool != nullptr
                                    ? pool->size()
                                    : std::max(1u, std::thread::hardware_concurrency());
    const auto threads = static_cast<unsigned>(std::min<std::uint64_t>(processors, items));
    const std::uint64_t chunk = threads != 0 ? items / threads : 0;
    if (control != nullptr) {
        control->setTotal(items);
    }
    std::vector<HueShiftTask> tasks(threads);
    for (unsigned i = 0; i < threads; ++i) {
        tasks[i].run = &run;
        tasks[i].parameters = p;
        tasks[i].firstItem = i * chunk;
        tasks[i].itemCount = i + 1 < threads ? chunk : items - (threads - 1) * chunk;
        tasks[i].index = i;
    }
    if (byColorTable && p.colorTable.sortedByHue && !showsGreyMask(p.maskToShow)) {
        balanceOnHueArc(tasks, p.colorTable, run.selectableHues);
    }

    // A bitmap of an earlier run, of this source and table, differs from the source only where
    // that run wrote; a grey mask writes every pixel, so neither it nor its successor is tracked.
    const bool trackable = footprints != nullptr && byColorTable && destination != source &&
                           !sourceOffsets.isPlanar && !showsGreyMask(p.maskToShow) && threads != 0;
    const TableFootprint* holds =
        trackable && copySourceSamples ? footprints->destinationHolds : nullptr;

    // A run that writes many pixels, or a grey mask, goes row by row through the map of pixels
    // to entries: every pixel is written, the source's samples wherever no colour is.
    const bool mapServes = byColorTable && entryMap != nullptr && destination != source &&
                           threads != 0 && !coverage.present() &&
                           PixelEntryMap::serves(sourceOffsets);
    const auto entryMapFor = [&](std::uint64_t writtenPixels) -> const PixelEntryMap* {
        const std::uint64_t pixels = static_cast<std::uint64_t>(sourceOffsets.pixelsWide) *
                                     static_cast<std::uint64_t>(sourceOffsets.pixelsHigh);
        if (!mapServes ||
            (writtenPixels < pixels / kEntryMapShare && writtenPixels <= kMaxPlannedPixels)) {
            return nullptr;
        }
        if (entryMap->map == nullptr || !entryMap->map->fits(sourceOffsets, p.colorTable)) {
            entryMap->map =
                entryMap->mayBuild ? PixelEntryMap::build(run, p.colorTable, threads) : nullptr;
        }
        return entryMap->map.get();
    };

    // Planes lie apart, so the writers' row by row copying cannot serve them: copy at once.
    run.destinationHoldsSource = !copySourceSamples || holds != nullptr;
    if (copySourceSamples && holds == nullptr && (sourceOffsets.isPlanar || threads == 0)) {
        std::memcpy(destination->bitmapData(), source->bitmapData(), source->sampleBytes());
        run.destinationHoldsSource = true;
    }
    if (threads == 0) {
        return destination;
    }

    if (byColorTable) {
        std::vector<std::vector<TableColor>> toWrite(threads);
        runWorkers(threads, [&](unsigned i) { colorTableWorker(tasks[i], toWrite[i]); });
        if (trackable) {
            footprints->written = footprintOf(toWrite);
        }
        std::uint64_t writtenPixels = 0;
        for (const auto& list : toWrite) {
            for (const TableColor& color : list) {
                writtenPixels += color.locationCount;
            }
        }
        if (const PixelEntryMap* map =
                entryMapFor(showsGreyMask(p.maskToShow) ? std::uint64_t(-1) : writtenPixels);
            map != nullptr && !run.stopRequested()) {
            writeTableColorsByMap(run, p, *map, toWrite, threads);
            // No plan: the next run of these colours goes through the map again.
            if (trackable) {
                footprints->tracked = !run.stopRequested();
            }
            return destination;
        }
        if (holds != nullptr) {
            const std::vector<std::vector<TableColor>> restore{
                entriesToRestore(*holds, footprints->written)};
            writeTableColors(run, p, restore, threads, TableWrite::sourceSamples);
        }
        TableWritePlanPtr plan;
        if (trackable && !run.stopRequested()) {
            plan = std::move(givenPlan);
            if (plan == nullptr || plan->entries != footprints->written ||
                plan->blockBytes != tableWriteBlockBytes(*destinationRecord, run.writeLimits)) {
                plan = planTableWrites(run, p.colorTable, footprints->written, threads);
            }
        }
        if (plan != nullptr) {
            writeTableColorsByPlan(run, p, *plan, toWrite, threads);
            footprints->plan = std::move(plan);
        } else {
            writeTableColors(run, p, toWrite, threads);
        }
        // The workers and the writer end early on a stop: what they left is not described.
        if (trackable) {
            footprints->tracked = !run.stopRequested();
        }
    } else {
        runWorkers(threads, [&](unsigned i) { rowWorker(tasks[i]); });
    }
    return destination;
}

} // namespace

namespace detail {

KVBitmapPtr hueShift(const KVBitmapPtr& source, const KVBitmapPtr& destination,
                     HueShiftParameters parameters, unsigned processorCount, EngineKernels kernels,
                     RunControl* control, const RunResources& resources,
                     TableFootprints* footprints)
{
    if (source == nullptr) {
        return nullptr;
    }
    try {
        ShiftCaches ownCaches;
        return shift(source, destination, std::move(parameters), processorCount, kernels, control,
                     resources.caches != nullptr ? *resources.caches : ownCaches,
                     resources.writeLimits, resources.entryMap, footprints);
    } catch (...) {
        if (footprints != nullptr) {
            footprints->tracked = false;
        }
        return nullptr;
    }
}

} // namespace detail

KVBitmapPtr hueShift(const KVBitmapPtr& source, const KVBitmapPtr& destination,
                     HueShiftParameters parameters, unsigned processorCount)
{
    return detail::hueShift(source, destination, std::move(parameters), processorCount,
                            EngineKernels::best, nullptr);
}

KVBitmapPtr hueShift(const KVBitmapPtr& source, const KVBitmapPtr& destination,
                     HueShiftParameters parameters)
{
    return hueShift(source, destination, std::move(parameters), 0);
}

} // namespace tintorra
