#pragma once

#include "engine/PackedSamples.h"
#include "engine/TableAllocation.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace tintorra {

// One distinct colour and its run of pixel offsets.
struct DistinctColor {
    std::uint32_t color;
    std::uint32_t firstLocation;
    std::uint32_t locationCount;
};
static_assert(sizeof(DistinctColor) == 12);

enum class GroupingFailure { none, pixelTable, colorList, locationTable };

// Every pixel's byte offset, grouped by packed colour in ascending order, each group in ascending
// offset order, and the list of distinct colours in the same order.
struct PixelColorGroups {
    GroupingFailure failure = GroupingFailure::none;
    TableArray<std::uint32_t> locations;
    std::uint64_t locationCount = 0;
    TableArray<DistinctColor> colors;
    std::uint64_t colorCount = 0;
};

// Groups the pixels of `source` by colour, using up to `threads` threads; the result does not
// depend on the thread count. The caller guarantees that every offset fits in 32 bits.
//
// A two-level counting sort: one pass histograms the high bits of the packed colour, a second
// scatters each pixel's offset (with the colour's low bits) into its bucket in scan order, and a
// third sorts each small bucket by its low bits while the bucket is in cache, straight into the
// locations. Each pixel is touched three times, against the eight scattering passes of a radix
// sort on (colour, offset); the bucket count is kept small enough for the scatter to stay in cache.
PixelColorGroups groupPixelsByColor(const PackedSampleSource& source, unsigned threads);

} // namespace tintorra
