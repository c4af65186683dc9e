#include "engine/PixelEntryMap.h"

#include "common/ParallelLoops.h"
#include "engine/HueShiftWorkers.h"
#include "engine/SelectionMasks.h"
#include "engine/TableEntryColors.h"

#include <cstring>

namespace tintorra {

namespace {

// Rows per piece of work: enough to make a piece worth taking, few enough that the stop request
// is seen within a millisecond or so.
constexpr std::int64_t kRowsPerChunk = 32;
// Entries per piece of the map's build.
constexpr std::uint64_t kEntriesPerChunk = 16384;

// The map's row stride in pixels: the bitmap's rows, padding included, in whole pixels.
std::int64_t strideInPixels(const PixelManipulationOffsets& image)
{
    return image.bytesPerRow / image.bytesPerPixel;
}

std::uint32_t loadPixel(const std::uint8_t* p, std::int64_t bytesPerPixel)
{
    std::uint32_t samples = 0;
    std::memcpy(&samples, p, static_cast<std::size_t>(bytesPerPixel));
    return samples;
}

// A colour's bytes placed at the pixel's offsets, for the 8-bit chunky layouts served.
std::uint32_t pixelSamples(const PixelManipulationOffsets& d, std::uint8_t r, std::uint8_t g,
                           std::uint8_t b, std::uint8_t a)
{
    std::uint8_t bytes[4] = {0, 0, 0, 0};
    bytes[d.redOffset] = r;
    bytes[d.greenOffset] = g;
    bytes[d.blueOffset] = b;
    if (d.hasAlpha) {
        bytes[d.alphaOffset] = a;
    }
    std::uint32_t samples = 0;
    std::memcpy(&samples, bytes, sizeof samples);
    return samples;
}

// What an entry's pixels get when the run collected it: its colour, or its grey mask sample
// (over the entry's own alpha, which every pixel of the entry shares).
std::uint32_t writtenSamples(const PixelManipulationOffsets& d, const HueShiftParameters& p,
                             const TableColor& color, std::uint32_t ownSamples)
{
    if (!showsGreyMask(p.maskToShow)) {
        return pixelSamples(d, color.color.r, color.color.g, color.color.b, color.color.a);
    }
    std::uint8_t own[4];
    std::memcpy(own, &ownSamples, sizeof own);
    const std::uint8_t alpha = d.hasAlpha ? own[d.alphaOffset] : 255;
    const bool white = p.maskToShow == MaskView::whiteMask;
    const unsigned sample = color.color.r;
    std::uint8_t value;
    if (d.premultiplied) {
        value = white ? premultipliedWhiteMaskSample(sample, alpha)
                      : premultipliedBlackMaskSample(sample, alpha);
    } else {
        value = static_cast<std::uint8_t>(white ? 255 - sample : sample);
    }
    return pixelSamples(d, value, value, value, alpha);
}

} // namespace

bool PixelEntryMap::serves(const PixelManipulationOffsets& image)
{
    const bool wholePixel =
        (image.bytesPerPixel == 3 && !image.hasAlpha && image.samplesPerPixel == 3) ||
        (image.bytesPerPixel == 4 && image.hasAlpha);
    return image.supported && image.bitsPerSample == 8 && !image.isPlanar && wholePixel &&
           image.bytesPerRow % image.bytesPerPixel == 0 && image.pixelsWide > 0 &&
           image.pixelsHigh > 0;
}

bool PixelEntryMap::fits(const PixelManipulationOffsets& image, const ColorTableRef& table) const
{
    return image.pixelsWide == pixelsWide_ && image.pixelsHigh == pixelsHigh_ &&
           image.bytesPerRow == bytesPerRow_ && image.bytesPerPixel == bytesPerPixel_ &&
           table.count == entryCount_;
}

std::shared_ptr<const PixelEntryMap>
PixelEntryMap::build(const HueShiftRun& run, const ColorTableRef& table, unsigned threads)
{
    const PixelManipulationOffsets& image = *run.source;
    if (!serves(image) || table.count >= kNoEntry) {
        return nullptr;
    }
    auto map = std::make_shared<PixelEntryMap>();
    map->pixelsWide_ = image.pixelsWide;
    map->pixelsHigh_ = image.pixelsHigh;
    map->bytesPerRow_ = image.bytesPerRow;
    map->bytesPerPixel_ = image.bytesPerPixel;
    map->entryCount_ = table.count;
    const auto stride = static_cast<std::uint64_t>(strideInPixels(image));
    const auto slots = stride * static_cast<std::uint64_t>(image.pixelsHigh);
    map->entries_ = allocateTable<std::uint32_t>(slots);
    map->samples_ = allocateTable<std::uint32_t>(table.count);
    if (map->entries_ == nullptr || map->samples_ == nullptr) {
        return nullptr;
    }
    // The row layout of the map is the bitmap's, so that a pixel's slot is its offset divided
    // by the pixel's size; the rows then drop their padding for the writers.
    std::uint32_t* const slotOf = map->entries_.get();
    const auto rowChunks =
        static_cast<std::size_t>((image.pixelsHigh + kRowsPerChunk - 1) / kRowsPerChunk);
    runChunks(threads, rowChunks, [&](std::size_t chunk, unsigned) {
        const std::uint64_t first = chunk * kRowsPerChunk * stride;
        const std::uint64_t end = std::min(slots, first + kRowsPerChunk * stride);
        std::fill(slotOf + first, slotOf + end, kNoEntry);
    });

    const auto bytesPerPixel = static_cast<std::uint32_t>(image.bytesPerPixel);
    const auto lastPixel = static_cast<std::uint64_t>((image.pixelsHigh - 1) * image.bytesPerRow +
                                                      (image.pixelsWide - 1) * image.bytesPerPixel);
    const auto entryChunks =
        static_cast<std::size_t>((table.count + kEntriesPerChunk - 1) / kEntriesPerChunk);
    runChunks(threads, entryChunks, [&](std::size_t chunk, unsigned) {
        if (run.stopRequested()) {
            return;
        }
        const std::uint64_t first = chunk * kEntriesPerChunk;
        const std::uint64_t end = std::min(table.count, first + kEntriesPerChunk);
        for (std::uint64_t e = first; e < end; ++e) {
            const color_table_lch_entry_info& entry = table.colors[e];
            map->samples_[e] = 0;
            if (!describesPixels(entry, table)) {
                continue;
            }
            const std::uint32_t* const locations = table.locations + entry.firstLocation;
            if (locations[0] <= lastPixel) {
                map->samples_[e] = loadPixel(image.bitmapData + locations[0], image.bytesPerPixel);
            }
            for (std::uint32_t k = 0; k < entry.locationCount; ++k) {
                if (locations[k] <= lastPixel) {
                    slotOf[locations[k] / bytesPerPixel] = static_cast<std::uint32_t>(e);
                }
            }
        }
    });
    if (run.stopRequested()) {
        return nullptr;
    }
    // Rows are read without their padding from here on.
    if (stride != static_cast<std::uint64_t>(image.pixelsWide)) {
        for (std::int64_t y = 1; y < image.pixelsHigh; ++y) {
            std::memmove(slotOf + static_cast<std::uint64_t>(y) *
                                      static_cast<std::uint64_t>(image.pixelsWide),
                         slotOf + static_cast<std::uint64_t>(y) * stride,
                         static_cast<std::size_t>(image.pixelsWide) * sizeof(std::uint32_t));
        }
    }
    return map;
}

void writeTableColorsByMap(const HueShiftRun& run, const HueShiftParameters& p,
                           const PixelEntryMap& map,
                           const std::vector<std::vector<TableColor>>& toWrite, unsigned threads)
{
    const PixelManipulationOffsets& d = *run.destination;
    const PixelManipulationOffsets& s = *run.source;
    // Kept by the calling thread from run to run, as a drag re-shifts again and again.
    thread_local std::vector<std::uint32_t> newSamples;
    newSamples.assign(map.entrySamples(), map.entrySamples() + map.entryCount());
    for (const std::vector<TableColor>& list : toWrite) {
        for (const TableColor& color : list) {
            if (color.entry < newSamples.size()) {
                newSamples[color.entry] = writtenSamples(d, p, color, newSamples[color.entry]);
            }
        }
    }
    const std::uint32_t* const lookup = newSamples.data();
    const auto rowPixels = static_cast<std::size_t>(d.pixelsWide);
    const auto pixelBytes = static_cast<std::size_t>(d.bytesPerPixel);
    const auto rowEnd = rowPixels * pixelBytes;
    const auto padding = static_cast<std::size_t>(d.bytesPerRow) - rowEnd;
    const auto rowChunks =
        static_cast<std::size_t>((d.pixelsHigh + kRowsPerChunk - 1) / kRowsPerChunk);
    runChunks(threads, rowChunks, [&](std::size_t chunk, unsigned) {
        if (run.stopRequested()) {
            return;
        }
        const std::int64_t firstRow = static_cast<std::int64_t>(chunk) * kRowsPerChunk;
        const std::int64_t endRow = std::min(d.pixelsHigh, firstRow + kRowsPerChunk);
        for (std::int64_t y = firstRow; y < endRow; ++y) {
            const std::uint32_t* const entries = map.row(y);
            std::uint8_t* const to = d.bitmapData + y * d.bytesPerRow;
            const std::uint8_t* const from = s.bitmapData + y * s.bytesPerRow;
            if (pixelBytes == 4) {
                for (std::size_t x = 0; x < rowPixels; ++x) {
                    const std::uint32_t e = entries[x];
                    if (e != PixelEntryMap::kNoEntry) {
                        std::memcpy(to + 4 * x, lookup + e, 4);
                    } else {
                        std::memcpy(to + 4 * x, from + 4 * x, 4);
                    }
                }
            } else {
                for (std::size_t x = 0; x < rowPixels; ++x) {
                    const std::uint32_t e = entries[x];
                    if (e != PixelEntryMap::kNoEntry) {
                        std::memcpy(to + 3 * x, lookup + e, 3);
                    } else {
                        std::memcpy(to + 3 * x, from + 3 * x, 3);
                    }
                }
            }
            if (padding != 0 && to != from) {
                std::memcpy(to + rowEnd, from + rowEnd, padding);
            }
        }
    });
}

} // namespace tintorra
