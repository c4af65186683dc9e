#pragma once

#include "engine/ColorHistogram.h"
#include "engine/TableAllocation.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace tintorra {

// One colour of a colormap: the count-weighted mean of a box of image colours and the box's
// total count.
struct ColormapEntry {
    std::uint8_t r;
    std::uint8_t g;
    std::uint8_t b;
    std::uint64_t count;
};

struct Colormap {
    TableArray<ColormapEntry> colors;
    std::size_t count = 0;
};

// The luma weights by which a box's channel ranges are compared.
inline constexpr double kMedianCutWeights[3] = {0.212671, 0.71516, 0.072169};

// Cuts a colormap of at most `maxColors` colours from a histogram by median cut: the box of the
// most pixels (among boxes of two or more colours) is split along the channel whose range,
// weighted by the luma coefficients, is largest, at the colour where half its pixels lie on
// each side. Reorders `histogram`. Empty, after "\nout of memory making colormap" on standard
// error, when memory runs out; empty without message for an empty histogram or no colours asked.
Colormap medianCutColormap(ColorHistogram& histogram, std::size_t maxColors);

} // namespace tintorra
