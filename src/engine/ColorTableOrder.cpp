#include "engine/ColorTableOrder.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

namespace tintorra {

namespace {

// The hue's ordered bits are sorted in three stable passes of 11 bits each.
constexpr unsigned kDigitBits = 11;
constexpr std::size_t kDigitValues = std::size_t{1} << kDigitBits;
constexpr unsigned kPasses = 3;

unsigned hueDigit(const color_table_lch_entry_info& entry, unsigned pass)
{
    return (orderedFloatBits(entry.hue) >> (pass * kDigitBits)) &
           static_cast<unsigned>(kDigitValues - 1);
}

} // namespace

void sortColorTableEntries(color_table_lch_entry_info* source, color_table_lch_entry_info* entries,
                           std::size_t count)
{
    if (count == 0) {
        return;
    }
    std::vector<std::array<std::uint32_t, kDigitValues>> histograms(kPasses);
    for (auto& histogram : histograms) {
        histogram.fill(0);
    }
    for (std::size_t i = 0; i < count; ++i) {
        for (unsigned pass = 0; pass < kPasses; ++pass) {
            ++histograms[pass][hueDigit(source[i], pass)];
        }
    }

    // Least significant digit first, moving whole entries: each pass reads them in order and
    // writes 2048 streams, which keeps the moves in cache where gathering them by a sorted index
    // would miss it on nearly every entry. A pass whose digit is the same for all is skipped.
    color_table_lch_entry_info* from = source;
    color_table_lch_entry_info* to = entries;
    for (unsigned pass = 0; pass < kPasses; ++pass) {
        std::array<std::uint32_t, kDigitValues>& histogram = histograms[pass];
        if (histogram[hueDigit(from[0], pass)] == count) {
            continue;
        }
        std::uint32_t running = 0;
        for (std::uint32_t& bin : histogram) {
            const std::uint32_t members = bin;
            bin = running;
            running += members;
        }
        for (std::size_t i = 0; i < count; ++i) {
            to[histogram[hueDigit(from[i], pass)]++] = from[i];
        }
        std::swap(from, to);
    }
    if (from != entries) {
        std::memcpy(entries, from, count * sizeof(color_table_lch_entry_info));
    }

    // Runs of equal hue (all greys, and hues that the cylinders repeat exactly) by the rest.
    for (std::size_t first = 0; first < count;) {
        const std::uint32_t hue = orderedFloatBits(entries[first].hue);
        std::size_t end = first + 1;
        while (end < count && orderedFloatBits(entries[end].hue) == hue) {
            ++end;
        }
        if (end - first > 1) {
            std::sort(entries + first, entries + end,
                      [](const color_table_lch_entry_info& a, const color_table_lch_entry_info& b) {
                          return colorTableEntryLess(a, b);
                      });
        }
        first = end;
    }
}

} // namespace tintorra
