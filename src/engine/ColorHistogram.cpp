#include "engine/ColorHistogram.h"

#include "common/Diagnostics.h"
#include "engine/TableAllocation.h"

#include <algorithm>
#include <cstdio>

namespace tintorra {

std::size_t ColorHashTable::bucketOf(std::uint32_t rgb)
{
    // Fibonacci hashing: neighbouring colours of a smooth image spread over the buckets.
    return static_cast<std::uint32_t>(rgb * 2654435761u) >> 16;
}

bool ColorHashTable::allocate()
{
    buckets_ = allocateTable<std::uint32_t>(kBucketCount);
    if (!buckets_) {
        diagnostic("\nout of memory allocating hash table");
        return false;
    }
    std::fill(buckets_.get(), buckets_.get() + kBucketCount, kNoNode);
    for (TableArray<Node>& chunk : chunks_) {
        chunk.reset();
    }
    nodeCount_ = 0;
    return true;
}

bool ColorHashTable::add(std::uint8_t r, std::uint8_t g, std::uint8_t b, std::uint64_t weight)
{
    const std::uint32_t rgb = std::uint32_t{r} | std::uint32_t{g} << 8 | std::uint32_t{b} << 16;
    std::uint32_t& head = buckets_[bucketOf(rgb)];
    for (std::uint32_t index = head; index != kNoNode; index = node(index).next) {
        Node& entry = node(index);
        if (entry.rgb == rgb) {
            entry.count += weight;
            return true;
        }
    }
    const std::size_t chunk = nodeCount_ / kNodesPerChunk;
    if (!chunks_[chunk]) {
        chunks_[chunk] = allocateTable<Node>(kNodesPerChunk);
        if (!chunks_[chunk]) {
            diagnostic("\nout of memory computing hash table");
            return false;
        }
    }
    const auto index = static_cast<std::uint32_t>(nodeCount_++);
    node(index) = {rgb, head, weight};
    head = index;
    return true;
}

bool collectImageColors(const PackedSampleSource& source, ColorHashTable& table)
{
    if (!table.allocate()) {
        return false;
    }
    for (std::int64_t y = 0; y < source.pixelsHigh; ++y) {
        for (std::int64_t x = 0; x < source.pixelsWide; ++x) {
            const std::uint32_t packed = readPackedColor(source, x, y);
            std::uint32_t r = packed & 0xFF, g = (packed >> 8) & 0xFF, b = (packed >> 16) & 0xFF;
            const std::uint32_t alpha = packed >> 24;
            std::uint64_t weight = 1;
            if (source.hasAlpha) {
                if (alpha == 0) {
                    continue;
                }
                weight = alpha;
                if (source.premultiplied && alpha != 255) {
                    const auto straight = [alpha](std::uint32_t value) {
                        return std::min<std::uint32_t>(255, (value * 255 + alpha / 2) / alpha);
                    };
                    r = straight(r);
                    g = straight(g);
                    b = straight(b);
                }
            }
            if (!table.add(static_cast<std::uint8_t>(r), static_cast<std::uint8_t>(g),
                           static_cast<std::uint8_t>(b), weight)) {
                return false;
            }
        }
    }
    return true;
}

ColorHistogram histogramFromColorHash(const ColorHashTable& table)
{
    ColorHistogram histogram;
    if (table.colorCount() == 0) {
        diagnostic("\nzero colors specified for histogram");
        return histogram;
    }
    histogram.colors = allocateTable<HistogramColor>(table.colorCount());
    if (!histogram.colors) {
        diagnostic("\nout of memory generating histogram");
        return histogram;
    }
    table.forEach(
        [&histogram](std::uint8_t r, std::uint8_t g, std::uint8_t b, std::uint64_t count) {
            histogram.colors[histogram.count++] = {r, g, b, count};
        });
    return histogram;
}

} // namespace tintorra
