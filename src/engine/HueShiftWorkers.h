#pragma once

#include "colour/Matrix3.h"
#include "common/ParallelLoops.h"
#include "engine/HueCandidates.h"
#include "engine/HueShiftParameters.h"
#include "engine/PaintCoverage.h"
#include "engine/RunControl.h"
#include "engine/SampleTables.h"
#include "engine/TableWriteLimits.h"
#include "image/PixelAccess.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <new>
#include <vector>

namespace tintorra {

// What every worker of one run shares, read-only: both bitmaps' offsets (the same record when
// shifting in place), the painted coverage, the colour space's matrices and the lookup tables.
struct HueShiftRun {
    const PixelManipulationOffsets* source = nullptr;
    const PixelManipulationOffsets* destination = nullptr;
    const PaintCoverage* coverage = nullptr;
    Matrix3 M{};
    Matrix3 MI{};
    // False when the destination is a given bitmap that still holds something else: the writers
    // then give it the source's samples wherever they do not write a colour.
    bool destinationHoldsSource = true;
    // Hues outside this arc have weight 0.
    HueArc selectableHues;
    LuvHueFilter luvHueFilter{HueArc{}, Matrix3{}};
    // Sample conversions of the destination's gamma (encoding) and the source's (16-bit
    // decoding); absent when the run does not need them.
    std::shared_ptr<const SampleEncodeTable> byteEncode;
    std::shared_ptr<const WordDecodeTable> wordDecode;
    std::shared_ptr<const SampleEncodeTable> wordEncode;
    // The gamut's chroma table with rows paired, for the four-lane stages; absent without a
    // gamut.
    std::shared_ptr<const std::vector<double>> pairedChroma;
    TableWriteLimits writeLimits;
    // Whether the four-lane stages may run: the processor has them and the engine chose them.
    bool vectorised = true;
    // Asked between pieces of work; absent for runs that can be neither stopped nor followed.
    const RunControl* control = nullptr;

    bool stopRequested() const { return control != nullptr && control->stopRequested(); }
    void advance(std::uint64_t items, unsigned long workerIndex) const
    {
        if (control != nullptr) {
            control->advance(items, workerIndex);
        }
    }
};

// One worker's share: its own copy of the normalised record, so no thread sees another's
// changes, and its run of items (colour-table entries or rows).
struct HueShiftTask {
    const HueShiftRun* run = nullptr;
    HueShiftParameters parameters;
    std::uint64_t firstItem = 0;
    std::uint64_t itemCount = 0;
    unsigned long index = 0;
};

// A colour-table entry to be written and the four bytes it is written with. For the grey masks
// the first byte is the weight's mask sample.
struct TableColor {
    // The entry's run in the table's locations.
    std::uint32_t firstLocation = 0;
    std::uint32_t locationCount = 0;
    PixelChars color;
    // The entry's index in the table.
    std::uint32_t entry = 0;
};

// 8-bit images, first step: each entry of the task's run is computed once; the entries to be
// written are collected (every entry for the grey masks, the selected ones otherwise).
void colorTableWorker(const HueShiftTask& task, std::vector<TableColor>& toWrite);

// What the table writer puts at the pixels of the collected entries: their colours, or the
// source's samples back (where a destination kept from an earlier shift holds that shift's
// colours of entries the present shift does not write).
enum class TableWrite { colors, sourceSamples };

// 8-bit images, second step: every pixel of the collected colours is written, block by block of
// rows so that the writes stay in cache, on up to `threads` threads.
void writeTableColors(const HueShiftRun& run, const HueShiftParameters& parameters,
                      const std::vector<std::vector<TableColor>>& toWrite, unsigned threads,
                      TableWrite what = TableWrite::colors);

// Other depths: every pixel of the task's rows, left to right.
void rowWorker(const HueShiftTask& task);

// The trace both workers begin with, on standard output.
void printWorkerTrace(unsigned long index);

// Runs body(index) for every index on joinable threads (runOnThreads) and rethrows, once all are
// joined, std::bad_alloc for a worker that failed: an exception must not leave a thread.
template <typename Body>
void runWorkers(unsigned count, const Body& body)
{
    std::atomic<bool> failed{false};
    runOnThreads(count, [&](unsigned index) {
        try {
            body(index);
        } catch (...) {
            failed.store(true, std::memory_order_relaxed);
        }
    });
    if (failed.load(std::memory_order_relaxed)) {
        throw std::bad_alloc();
    }
}

} // namespace tintorra
