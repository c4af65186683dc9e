#pragma once

#include "engine/ColorTable.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <tuple>

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
    return std::make_tuple(orderedFloatBits(a.hue), orderedFloatBits(a.lightness),
                           orderedFloatBits(a.chroma), a.firstLocation) <
           std::make_tuple(orderedFloatBits(b.hue), orderedFloatBits(b.lightness),
                           orderedFloatBits(b.chroma), b.firstLocation);
}

// Sorts `entries` into the table order, from `source` (left unspecified afterwards). Distributes
// the entries into buckets of hue ranges and sorts each small bucket, on up to `threads`
// threads. Returns false, leaving `entries` unspecified, when memory runs out.
bool sortColorTableEntries(color_table_lch_entry_info* source, color_table_lch_entry_info* entries,
                           std::size_t count, unsigned threads);

} // namespace tintorra
