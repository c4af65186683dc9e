#pragma once

#include "engine/PackedSamples.h"
#include "engine/TableAllocation.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace tintorra {

// One distinct colour of an image with its weight: pixels, or for images with alpha the sum of
// their alpha bytes.
struct HistogramColor {
    std::uint8_t r;
    std::uint8_t g;
    std::uint8_t b;
    std::uint64_t count;
};

// The distinct (r, g, b) colours of an image in a chained hash table of 65,536 buckets.
class ColorHashTable {
public:
    static constexpr std::size_t kBucketCount = 65536;

    // Allocates the buckets; false, after "\nout of memory allocating hash table" on standard
    // error, when memory runs out.
    bool allocate();
    // Adds `weight` to the colour's count, making its node when it is new; false, after
    // "\nout of memory computing hash table", when a node cannot be had.
    bool add(std::uint8_t r, std::uint8_t g, std::uint8_t b, std::uint64_t weight);

    std::size_t colorCount() const { return nodeCount_; }
    // Calls visit(r, g, b, count) for every colour, bucket by bucket.
    template <typename Visit>
    void forEach(const Visit& visit) const;

    static std::size_t bucketOf(std::uint32_t rgb);

private:
    static constexpr std::uint32_t kNoNode = 0xFFFFFFFFu;
    static constexpr std::size_t kNodesPerChunk = 65536;
    struct Node {
        std::uint32_t rgb;
        std::uint32_t next;
        std::uint64_t count;
    };

    Node& node(std::uint32_t index) const
    {
        return chunks_[index / kNodesPerChunk][index % kNodesPerChunk];
    }

    TableArray<std::uint32_t> buckets_;
    // At most 2^24 colours: 256 chunks of nodes, allocated as they fill.
    std::array<TableArray<Node>, 256> chunks_;
    std::size_t nodeCount_ = 0;
};

template <typename Visit>
void ColorHashTable::forEach(const Visit& visit) const
{
    if (!buckets_) {
        return;
    }
    for (std::size_t bucket = 0; bucket < kBucketCount; ++bucket) {
        for (std::uint32_t index = buckets_[bucket]; index != kNoNode; index = node(index).next) {
            const Node& entry = node(index);
            visit(static_cast<std::uint8_t>(entry.rgb), static_cast<std::uint8_t>(entry.rgb >> 8),
                  static_cast<std::uint8_t>(entry.rgb >> 16), entry.count);
        }
    }
}

// The colours of a hash table as a list.
struct ColorHistogram {
    TableArray<HistogramColor> colors;
    std::size_t count = 0;
};

// Counts the colours of an image: with alpha each pixel weighs its alpha byte and transparent
// pixels are skipped; premultiplied colours are divided by alpha first. False (after the hash
// table's message) when memory runs out.
bool collectImageColors(const PackedSampleSource& source, ColorHashTable& table);

// Lists the table's colours; empty, after "\nzero colors specified for histogram" or
// "\nout of memory generating histogram", when there are none or memory runs out.
ColorHistogram histogramFromColorHash(const ColorHashTable& table);

} // namespace tintorra
