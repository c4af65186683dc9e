#pragma once

#include "engine/ColorTable.h"
#include "engine/TableFootprint.h"
#include "engine/TableWritePlan.h"
#include "image/KVBitmap.h"

#include <memory>

namespace tintorra {

// What a shift wrote into the bitmap it returned, for a later shift into that same bitmap: an
// 8-bit picture shifted through its colour table into a bitmap of its own, showing no grey mask,
// differs from its source only at the pixels of the entries it wrote. Held weakly: a footprint
// keeps nothing alive and matches nothing once its pictures or table are gone.
struct ShiftFootprint {
    std::weak_ptr<KVBitmap> source;
    std::weak_ptr<KVBitmap> destination;
    std::weak_ptr<const LChColorTable> colorTable;
    TableFootprint written;
    // How those entries' pixels were written, for a later shift that writes them again; absent
    // for selections of many pixels.
    TableWritePlanPtr plan = nullptr;
};

using ShiftFootprintPtr = std::shared_ptr<const ShiftFootprint>;

// A shifted picture with what the shift wrote into it.
struct TrackedShift {
    KVBitmapPtr image;
    // Null when a later shift cannot build on this one (other depths, in place, grey masks).
    ShiftFootprintPtr footprint;
};

} // namespace tintorra
