#include "engine/MedianCut.h"

#include "common/Diagnostics.h"
#include "engine/TableAllocation.h"

#include <algorithm>
#include <cstdio>
#include <tuple>

namespace tintorra {

namespace {

struct Box {
    std::size_t first;
    std::size_t colors;
    std::uint64_t pixels;
};

std::uint8_t channel(const HistogramColor& color, int index)
{
    return index == 0 ? color.r : index == 1 ? color.g : color.b;
}

// The channel to split along: the largest range weighted by luma; the lower channel on ties.
int splitChannel(const HistogramColor* colors, std::size_t count)
{
    int best = 0;
    double bestRange = -1.0;
    for (int index = 0; index < 3; ++index) {
        std::uint8_t lowest = 255, highest = 0;
        for (std::size_t i = 0; i < count; ++i) {
            lowest = std::min(lowest, channel(colors[i], index));
            highest = std::max(highest, channel(colors[i], index));
        }
        const double range = (highest - lowest) * kMedianCutWeights[index];
        if (range > bestRange) {
            bestRange = range;
            best = index;
        }
    }
    return best;
}

ColormapEntry meanOfBox(const HistogramColor* colors, const Box& box)
{
    std::uint64_t sums[3] = {0, 0, 0};
    for (std::size_t i = 0; i < box.colors; ++i) {
        const HistogramColor& color = colors[box.first + i];
        sums[0] += color.r * color.count;
        sums[1] += color.g * color.count;
        sums[2] += color.b * color.count;
    }
    if (box.pixels == 0) {
        const HistogramColor& color = colors[box.first];
        return {color.r, color.g, color.b, 0};
    }
    const auto mean = [&box](std::uint64_t sum) {
        return static_cast<std::uint8_t>((sum + box.pixels / 2) / box.pixels);
    };
    return {mean(sums[0]), mean(sums[1]), mean(sums[2]), box.pixels};
}

} // namespace

Colormap medianCutColormap(ColorHistogram& histogram, std::size_t maxColors)
{
    Colormap colormap;
    if (histogram.count == 0 || maxColors == 0) {
        return colormap;
    }
    TableArray<Box> boxes = allocateTable<Box>(maxColors);
    colormap.colors = allocateTable<ColormapEntry>(maxColors);
    if (!boxes || !colormap.colors) {
        diagnostic("\nout of memory making colormap");
        colormap.colors.reset();
        return colormap;
    }
    HistogramColor* colors = histogram.colors.get();
    std::uint64_t pixels = 0;
    for (std::size_t i = 0; i < histogram.count; ++i) {
        pixels += colors[i].count;
    }
    boxes[0] = {0, histogram.count, pixels};
    std::size_t boxCount = 1;

    while (boxCount < maxColors) {
        std::size_t chosen = boxCount;
        for (std::size_t i = 0; i < boxCount; ++i) {
            if (boxes[i].colors >= 2 &&
                (chosen == boxCount || boxes[i].pixels > boxes[chosen].pixels)) {
                chosen = i;
            }
        }
        if (chosen == boxCount) {
            break;
        }
        Box& box = boxes[chosen];
        HistogramColor* first = colors + box.first;
        const int along = splitChannel(first, box.colors);
        std::sort(first, first + box.colors,
                  [along](const HistogramColor& a, const HistogramColor& b) {
                      const int c1 = (along + 1) % 3, c2 = (along + 2) % 3;
                      return std::make_tuple(channel(a, along), channel(a, c1), channel(a, c2)) <
                             std::make_tuple(channel(b, along), channel(b, c1), channel(b, c2));
                  });
        // The lower box takes colours until it holds at least half the pixels, leaving at least
        // one colour above.
        std::size_t lowerColors = 1;
        std::uint64_t lowerPixels = first[0].count;
        while (lowerColors + 1 < box.colors && lowerPixels * 2 < box.pixels) {
            lowerPixels += first[lowerColors++].count;
        }
        boxes[boxCount++] = {box.first + lowerColors, box.colors - lowerColors,
                             box.pixels - lowerPixels};
        box.colors = lowerColors;
        box.pixels = lowerPixels;
    }

    for (std::size_t i = 0; i < boxCount; ++i) {
        colormap.colors[i] = meanOfBox(colors, boxes[i]);
    }
    colormap.count = boxCount;
    return colormap;
}

} // namespace tintorra
