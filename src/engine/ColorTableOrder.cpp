#include "engine/ColorTableOrder.h"

#include "engine/TableAllocation.h"
#include "engine/WorkerThreads.h"

#include <algorithm>
#include <array>
#include <vector>

namespace tintorra {

namespace {

// The hue key is sorted in three stable passes of 11 bits each.
constexpr unsigned kDigitBits = 11;
constexpr std::size_t kDigitValues = std::size_t{1} << kDigitBits;
constexpr unsigned kPasses = 3;

unsigned digit(std::uint64_t key, unsigned pass)
{
    // The hue key is the high half of the 64-bit key; the low half (the index) is not sorted
    // on, since the passes are stable and the keys start in index order.
    const unsigned shift = 32 + pass * kDigitBits;
    return static_cast<unsigned>(key >> shift) & static_cast<unsigned>(kDigitValues - 1);
}

// Orders entries equal in hue: by lightness, then chroma, then index (packed colour order).
bool tiedLess(const color_table_lch_entry_info* source, std::uint64_t a, std::uint64_t b)
{
    return colorTableEntryLess(source[static_cast<std::uint32_t>(a)],
                               source[static_cast<std::uint32_t>(b)]);
}

} // namespace

bool sortColorTableEntries(const color_table_lch_entry_info* source,
                           color_table_lch_entry_info* entries, std::size_t count, unsigned threads)
{
    if (count == 0) {
        return true;
    }
    // Keys: the hue's ordered bits above the entry's index.
    TableArray<std::uint64_t> keys = allocateTable<std::uint64_t>(count);
    TableArray<std::uint64_t> spare = allocateTable<std::uint64_t>(count);
    if (!keys || !spare) {
        return false;
    }
    std::vector<std::array<std::uint32_t, kDigitValues>> histograms(kPasses);
    for (auto& histogram : histograms) {
        histogram.fill(0);
    }
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint64_t key = std::uint64_t{orderedFloatBits(source[i].hue)} << 32 | i;
        keys[i] = key;
        for (unsigned pass = 0; pass < kPasses; ++pass) {
            ++histograms[pass][digit(key, pass)];
        }
    }

    // Least significant digit first; a pass whose digit is the same for every key is skipped.
    std::uint64_t* from = keys.get();
    std::uint64_t* to = spare.get();
    for (unsigned pass = 0; pass < kPasses; ++pass) {
        std::array<std::uint32_t, kDigitValues>& histogram = histograms[pass];
        if (histogram[digit(from[0], pass)] == count) {
            continue;
        }
        std::uint32_t running = 0;
        for (std::uint32_t& bin : histogram) {
            const std::uint32_t members = bin;
            bin = running;
            running += members;
        }
        for (std::size_t i = 0; i < count; ++i) {
            to[histogram[digit(from[i], pass)]++] = from[i];
        }
        std::swap(from, to);
    }

    // Runs of equal hue (all greys, and hues that the cylinders repeat exactly) by the rest.
    for (std::size_t first = 0; first < count;) {
        std::size_t end = first + 1;
        while (end < count && (from[end] >> 32) == (from[first] >> 32)) {
            ++end;
        }
        if (end - first > 1) {
            std::sort(from + first, from + end, [source](std::uint64_t a, std::uint64_t b) {
                return tiedLess(source, a, b);
            });
        }
        first = end;
    }

    const std::size_t chunks = std::clamp<std::size_t>(count / 4096, 1, 8 * std::size_t{threads});
    runChunks(threads, chunks, [&](std::size_t chunk, unsigned) {
        const std::size_t first = count * chunk / chunks;
        const std::size_t end = count * (chunk + 1) / chunks;
        for (std::size_t i = first; i < end; ++i) {
            entries[i] = source[static_cast<std::uint32_t>(from[i])];
        }
    });
    return true;
}

} // namespace tintorra
