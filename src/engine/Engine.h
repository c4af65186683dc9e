#pragma once

#include "colour/KVColorGamut.h"
#include "common/Error.h"
#include "common/WorkerPool.h"
#include "engine/ColorTable.h"
#include "engine/HueShift.h"
#include "engine/HueShiftParameters.h"
#include "engine/RunControl.h"
#include "engine/ShiftCaches.h"
#include "engine/ShiftFootprint.h"
#include "engine/TableAllocation.h"
#include "engine/TableWriteLimits.h"
#include "image/KVBitmap.h"

#include <memory>
#include <mutex>
#include <stop_token>

namespace tintorra {

// A colour table, complete and never changed again: whoever holds it may read it from any thread,
// and a shift that holds it keeps it alive however long the shift runs.
using ColorTablePtr = std::shared_ptr<const LChColorTable>;

struct EngineOptions {
    // Threads that work on one job, the calling thread included; 0 means one per processor.
    unsigned threads = 0;
    // The plain kernels give the same pictures; tests choose them to compare the two.
    EngineKernels kernels = EngineKernels::best;
    // How much freed table memory is kept for the next table, and (tests only) an injected
    // allocation failure.
    TableMemoryOptions tableMemory{};
    // Tests only: tiny limits exercise the blocks and waves of the table writes on small images.
    TableWriteLimits tableWrites{};
    // Tests only: makes allocation number n of each gamut build fail (see KVColorGamut).
    long failGamutAllocation = -1;
    // Whether shifts that write many pixels of an 8-bit picture may make a map of its pixels'
    // colours (4 bytes a pixel), kept for the next shifts of that picture and table. A live
    // editor wants it: the first such shift pays for the map, each later one then writes the
    // picture in one pass, several times faster. A single shift gains nothing from it.
    bool keepsEntryMaps = false;
};

// One shift: the picture, where it goes, and what the editor built for it.
struct ShiftRequest {
    KVBitmapPtr source;
    // The source itself (shift in place), a bitmap of the source's exact layout, or nothing (a
    // fresh copy). A shift in place that is stopped midway leaves the source half shifted.
    KVBitmapPtr destination;
    HueShiftParameters parameters;
    // The source's colour table in the record's colour mode; needed for 8-bit images. The
    // record's own table reference is taken from it.
    ColorTablePtr colorTable;
    // What the destination holds, as the shift that wrote it described it (shiftTracked), if
    // nothing else has written into it and the source's samples are unchanged since. An 8-bit
    // shift of the same source through the same table then writes only what changes, with the
    // same result. Ignored when it describes another destination, source or table.
    ShiftFootprintPtr destinationFootprint = nullptr;
};

// The pixel engine as one object: it owns the threads that every job of the process runs on, the
// memory of its tables and the tables its shifts reuse, and chooses its kernels once. Two engines
// share nothing that changes. Its calls may come from several threads at once; each takes a stop
// token and hands back a value or an error, and none of them throws or prints.
class Engine {
public:
    explicit Engine(EngineOptions options = {});
    // Gives the kept table memory back; tables still held elsewhere free theirs when they go.
    ~Engine();
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    unsigned threadCount() const { return pool_.size(); }
    EngineKernels kernels() const { return kernels_; }

    // The distinct colours of an 8-bit (or, read by its high bytes, 16-bit) image in a colour
    // mode. The stop token is looked at before and after the build.
    Result<ColorTablePtr> buildColorTable(const KVBitmapPtr& image, double imageGamma,
                                          ColorSpaceModel colorSpaceModel,
                                          std::stop_token stop = {});

    // The gamut of an RGB colour space for one of the LCh modes.
    Result<KVColorGamutPtr> buildGamut(const KVColorSpace& space, ColorSpaceModel colorSpaceModel,
                                       std::stop_token stop = {});

    // Shifts (or renders a selection mask of) a picture. A run asked to stop ends early with
    // the error code `cancelled`, and its destination is not handed out.
    Result<KVBitmapPtr> shift(const ShiftRequest& request, std::stop_token stop = {},
                              const ProgressCallback& progress = {});

    // The same, also describing what it wrote, for a later request into the returned bitmap.
    Result<TrackedShift> shiftTracked(const ShiftRequest& request, std::stop_token stop = {},
                                      const ProgressCallback& progress = {});

    // Table memory kept for the next table, and a way to give it back while nothing is being
    // built for a while (the last document closed).
    std::size_t retainedTableMemory() const { return tableMemory_->retainedBytes(); }
    void releaseRetainedTableMemory();

private:
    Result<KVBitmapPtr> run(const ShiftRequest& request, std::stop_token stop,
                            const ProgressCallback& progress, detail::TableFootprints* footprints);

    // The map of the last source and table shifted through one; it goes when either goes.
    struct KeptEntryMap {
        std::weak_ptr<const LChColorTable> table;
        std::weak_ptr<KVBitmap> source;
        PixelEntryMapPtr map;
    };
    detail::EntryMapSlot entryMapSlot(const ShiftRequest& request);
    void keepEntryMap(const ShiftRequest& request, PixelEntryMapPtr map);

    WorkerPool pool_;
    EngineKernels kernels_;
    bool keepsEntryMaps_;
    std::mutex entryMapMutex_;
    KeptEntryMap keptEntryMap_;
    std::shared_ptr<TableMemory> tableMemory_;
    std::unique_ptr<ShiftCaches> caches_;
    TableWriteLimits tableWrites_;
    long failGamutAllocation_;
};

} // namespace tintorra
