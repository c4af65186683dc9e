#pragma once

#include "engine/TableAllocation.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace tintorra {

struct ColorTableRef;
struct HueShiftParameters;
struct HueShiftRun;
struct PixelManipulationOffsets;
struct TableColor;

// Which colour-table entry each pixel of an 8-bit image has, row by row, with each entry's
// samples as its pixels store them. A shift that writes many colours then writes the whole
// picture in one pass over the rows, each pixel from a small array of its entry's new samples,
// instead of gathering every colour's pixels from all over the image (a cache miss per pixel).
class PixelEntryMap {
public:
    // No entry: a pixel that the table does not describe keeps the source's samples.
    static constexpr std::uint32_t kNoEntry = ~std::uint32_t{0};

    // Whether pixels of this layout are written whole from their entries' samples: chunky RGB
    // in three bytes or RGBA in four, so that every byte of a pixel belongs to its colour.
    static bool serves(const PixelManipulationOffsets& image);

    // The map of the run's source through `table`, on up to `threads` threads; nullptr when the
    // layout is not served, memory runs out or the run is asked to stop.
    static std::shared_ptr<const PixelEntryMap> build(const HueShiftRun& run,
                                                      const ColorTableRef& table, unsigned threads);

    // Whether this map was made for an image of this geometry and a table of this size.
    bool fits(const PixelManipulationOffsets& image, const ColorTableRef& table) const;

    std::int64_t pixelsWide() const { return pixelsWide_; }
    std::uint64_t entryCount() const { return entryCount_; }
    // The entries of row y's pixels (kNoEntry for a pixel the table leaves out).
    const std::uint32_t* row(std::int64_t y) const
    {
        return entries_.get() +
               static_cast<std::uint64_t>(y) * static_cast<std::uint64_t>(pixelsWide_);
    }
    // Entry e's samples in the pixel's byte order, in the low bytes.
    const std::uint32_t* entrySamples() const { return samples_.get(); }

private:
    std::int64_t pixelsWide_ = 0;
    std::int64_t pixelsHigh_ = 0;
    std::int64_t bytesPerRow_ = 0;
    std::int64_t bytesPerPixel_ = 0;
    std::uint64_t entryCount_ = 0;
    TableArray<std::uint32_t> entries_;
    TableArray<std::uint32_t> samples_;
};

using PixelEntryMapPtr = std::shared_ptr<const PixelEntryMap>;

// Writes every pixel of the run's destination by the map: the collected colours (or, showing a
// grey mask, their mask samples) at their entries' pixels and the source's samples elsewhere.
// The run may have no painted coverage. Ends early when the run is asked to stop.
void writeTableColorsByMap(const HueShiftRun& run, const HueShiftParameters& parameters,
                           const PixelEntryMap& map,
                           const std::vector<std::vector<TableColor>>& toWrite, unsigned threads);

} // namespace tintorra
