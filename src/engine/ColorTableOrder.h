#pragma once

#include "engine/ColorTable.h"

#include <bit>
#include <cstddef>
#include <cstdint>

namespace tintorra {

// Maps a float onto an unsigned key whose order is the float order (-0 and +0 equal; NaNs with
// the sign bit below everything, the others above), so the table order is total and comparisons
// are integer compares.
inline std::uint32_t orderedFloatBits(float value)
{
    const std::uint32_t bits = std::bit_cast<std::uint32_t>(value == 0.0f ? 0.0f : value);
    return (bits & 0x80000000u) != 0 ? ~bits : (bits | 0x80000000u);
}

// The table order: hue, then lightness, then chroma, ascending; entries equal in all three keep
// the order of their location runs (the packed colour order).
inline bool colorTableEntryLess(const color_table_lch_entry_info& a,
                                const color_table_lch_entry_info& b)
{
    const std::uint64_t aHigh =
        std::uint64_t{orderedFloatBits(a.hue)} << 32 | orderedFloatBits(a.lightness);
    const std::uint64_t bHigh =
        std::uint64_t{orderedFloatBits(b.hue)} << 32 | orderedFloatBits(b.lightness);
    if (aHigh != bHigh) {
        return aHigh < bHigh;
    }
    const std::uint64_t aLow = std::uint64_t{orderedFloatBits(a.chroma)} << 32 | a.firstLocation;
    const std::uint64_t bLow = std::uint64_t{orderedFloatBits(b.chroma)} << 32 | b.firstLocation;
    return aLow < bLow;
}

// Writes the `count` entries of `source` to `entries` in the table order: a radix sort of the
// hues on up to `threads` threads, then the runs of equal hue by comparison. `source` is used as
// the radix sort's second buffer and holds no particular order afterwards.
void sortColorTableEntries(color_table_lch_entry_info* source, color_table_lch_entry_info* entries,
                           std::size_t count, unsigned threads);

} // namespace tintorra
