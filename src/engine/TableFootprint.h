#pragma once

#include <cstdint>
#include <vector>

namespace tintorra {

struct TableColor;

// The pixels of one colour-table entry: its run in the table's locations.
struct TableSpan {
    std::uint32_t firstLocation = 0;
    std::uint32_t locationCount = 0;

    friend bool operator==(const TableSpan&, const TableSpan&) = default;
};

// What an 8-bit shift wrote into its destination, entry by entry in no particular order; every
// pixel outside these spans holds the source's samples. Distinct entries have disjoint spans, so
// an entry is known by its first location.
using TableFootprint = std::vector<TableSpan>;

// The spans of the colours a shift collected for writing.
TableFootprint footprintOf(const std::vector<std::vector<TableColor>>& toWrite);

// The entries of `before` that `now` does not write again: a destination holding `before` gets
// the source's samples back at their pixels to hold `now` (colours unused).
std::vector<TableColor> entriesToRestore(const TableFootprint& before, const TableFootprint& now);

} // namespace tintorra
