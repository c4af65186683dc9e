#pragma once

#include "engine/HueShiftParameters.h"
#include "engine/PixelEntryMap.h"
#include "engine/RunControl.h"
#include "engine/TableFootprint.h"
#include "engine/TableWriteLimits.h"
#include "engine/TableWritePlan.h"
#include "image/KVBitmap.h"

namespace tintorra {

// The engine's entry: shifts the source's selected colours towards the record's targets, or
// renders one of the selection masks (maskToShow), into a destination, and returns it.
//
// - The destination is the source itself when the same bitmap is given (shifting in place), a
//   given bitmap whose layout matches the source's in every respect (it is first given the
//   source's samples), or otherwise a fresh copy of the source. Callers use the returned bitmap.
// - 8-bit images are shifted through the record's colour table, which must be the table of this
//   image in the record's colour mode and stay alive and unchanged during the call; other depths
//   pixel by pixel.
// - The work is spread over min(processors, items) joinable threads (items: table entries or
//   rows), all joined before returning; shifts of one source are serialised by its lock. Each
//   worker prints "thread: <index>" on standard output.
//
// Returns nullptr, having written nothing, when the source's layout is unsupported, it has
// neither 3 nor 4 samples per pixel, or an 8-bit source comes with a table of another mode;
// nullptr too when memory runs out. An empty table has nothing to shift: the destination is
// returned holding the source. Never throws.
KVBitmapPtr hueShift(const KVBitmapPtr& source, const KVBitmapPtr& destination,
                     HueShiftParameters parameters);

// The same on at most `processorCount` threads (0: the machine's active processor count), so
// that results can be compared across thread counts.
KVBitmapPtr hueShift(const KVBitmapPtr& source, const KVBitmapPtr& destination,
                     HueShiftParameters parameters, unsigned processorCount);

// Which of the engine's ways a run may take: the processor's four-lane stages where they serve,
// or the plain scalar steps everywhere (the two give the same pictures, bit for bit).
enum class EngineKernels { best, plain };

class ShiftCaches;

namespace detail {
// The engine's map of the run's source through the run's table: in, the one it keeps (or none)
// and whether the run may make one; out, the one the run made.
struct EntryMapSlot {
    PixelEntryMapPtr map;
    bool mayBuild = false;
};

// What an engine lends each of its runs.
struct RunResources {
    // Tables reused from run to run; without them a run makes its own.
    ShiftCaches* caches = nullptr;
    TableWriteLimits writeLimits;
    // Absent: the run writes colour by colour.
    EntryMapSlot* entryMap = nullptr;
};

// What a run into a bitmap kept from an earlier run knows of it, and learns of its own result.
struct TableFootprints {
    // In: what the given destination holds, or null when unknown: the footprint of an earlier
    // run of the same source through the same table, whose samples are unchanged since. An
    // 8-bit run then writes only its own colours and gives the source's samples back to the
    // entries that run wrote and this one does not, instead of copying the whole source.
    const TableFootprint* destinationHolds = nullptr;
    // In: the write plan of an earlier run through the same table, reused when this run writes
    // the same entries into a bitmap of the same layout. Out: this run's plan, when it has one.
    TableWritePlanPtr plan;
    // Out: whether `written` describes the returned bitmap: an 8-bit run, finished, into a
    // bitmap other than the source (not planar), showing no grey mask.
    bool tracked = false;
    TableFootprint written;
};

// The engine object's entry: the same with a choice of kernels and a control that the workers
// consult between pieces of work. A run stopped midway returns its half-written destination;
// the engine object never hands that out. Given footprints, the run reads and describes them;
// a run stopped midway describes nothing.
KVBitmapPtr hueShift(const KVBitmapPtr& source, const KVBitmapPtr& destination,
                     HueShiftParameters parameters, unsigned processorCount, EngineKernels kernels,
                     RunControl* control, const RunResources& resources = {},
                     TableFootprints* footprints = nullptr);
} // namespace detail

} // namespace tintorra
