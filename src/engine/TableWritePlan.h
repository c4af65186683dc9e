#pragma once

#include "engine/TableFootprint.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace tintorra {

struct ColorTableRef;
struct HueShiftParameters;
struct HueShiftRun;
struct PixelManipulationOffsets;
struct TableWriteLimits;

// The pixels of a shift's colours sorted into the table writer's blocks of rows, each with the
// index of its colour. A later shift that writes the same entries again (a slider moving the
// target of an unchanged selection) writes from the plan, without gathering the table's
// scattered locations again, which costs most of such a shift.
struct TableWritePlan {
    struct Pixel {
        std::uint32_t location;
        std::uint32_t color;
    };
    // The entries in the order of the colour indices.
    TableFootprint entries;
    std::uint64_t blockBytes = 0;
    // Where each block's pixels begin in `pixels`, and where the last one ends.
    std::vector<std::uint64_t> blockBegin;
    std::vector<Pixel> pixels;
};

using TableWritePlanPtr = std::shared_ptr<const TableWritePlan>;

// The most pixels a plan holds (8 bytes each); larger selections are written without one.
constexpr std::uint64_t kMaxPlannedPixels = 6u << 20;

// The block size the table writer uses on this destination under these limits.
std::uint64_t tableWriteBlockBytes(const PixelManipulationOffsets& destination,
                                   const TableWriteLimits& limits);

// The plan of `entries` (the collected colours in order), on up to `threads` threads; null when
// they hold more pixels than a plan may, or the run was asked to stop.
TableWritePlanPtr planTableWrites(const HueShiftRun& run, const ColorTableRef& table,
                                  const TableFootprint& entries, unsigned threads);

// Writes the collected colours, flattened in the plan's order, by the plan: block by block on up
// to `threads` threads, each block first given the source's samples when the destination does
// not yet hold them.
void writeTableColorsByPlan(const HueShiftRun& run, const HueShiftParameters& parameters,
                            const TableWritePlan& plan,
                            const std::vector<std::vector<TableColor>>& toWrite, unsigned threads);

} // namespace tintorra
