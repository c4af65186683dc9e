#include "imageio/MedianCut.h"

#include <algorithm>
#include <limits>

namespace tintorra {

namespace {

struct Box {
    // Inclusive 5-bit bounds per channel.
    int low[3] = {31, 31, 31};
    int high[3] = {0, 0, 0};
    std::uint64_t population = 0;
};

int channelOf(int bin, int channel)
{
    return (bin >> (10 - 5 * channel)) & 31;
}

bool contains(const Box& box, int bin)
{
    for (int c = 0; c < 3; ++c) {
        const int v = channelOf(bin, c);
        if (v < box.low[c] || v > box.high[c])
            return false;
    }
    return true;
}

// Shrinks a box to the bins that hold pixels and counts them; false when it holds none.
bool shrink(const ColourHistogram& histogram, Box& box)
{
    Box tight;
    for (int r = box.low[0]; r <= box.high[0]; ++r) {
        for (int g = box.low[1]; g <= box.high[1]; ++g) {
            for (int b = box.low[2]; b <= box.high[2]; ++b) {
                const int bin = (r << 10) | (g << 5) | b;
                const std::uint64_t n = histogram.count(bin);
                if (n == 0)
                    continue;
                tight.population += n;
                const int v[3] = {r, g, b};
                for (int c = 0; c < 3; ++c) {
                    tight.low[c] = std::min(tight.low[c], v[c]);
                    tight.high[c] = std::max(tight.high[c], v[c]);
                }
            }
        }
    }
    if (tight.population == 0)
        return false;
    box = tight;
    return true;
}

bool splittable(const Box& box)
{
    return box.low[0] != box.high[0] || box.low[1] != box.high[1] || box.low[2] != box.high[2];
}

// Splits along the longest side where half the pixels lie on either side.
bool split(const ColourHistogram& histogram, Box& box, Box& other)
{
    int axis = 0;
    for (int c = 1; c < 3; ++c) {
        if (box.high[c] - box.low[c] > box.high[axis] - box.low[axis])
            axis = c;
    }
    std::uint64_t slices[32] = {};
    for (int r = box.low[0]; r <= box.high[0]; ++r)
        for (int g = box.low[1]; g <= box.high[1]; ++g)
            for (int b = box.low[2]; b <= box.high[2]; ++b) {
                const int v[3] = {r, g, b};
                slices[v[axis]] += histogram.count((r << 10) | (g << 5) | b);
            }
    std::uint64_t below = 0;
    int cut = box.low[axis];
    for (int v = box.low[axis]; v < box.high[axis]; ++v) {
        below += slices[v];
        cut = v;
        if (2 * below >= box.population)
            break;
    }
    other = box;
    box.high[axis] = cut;
    other.low[axis] = cut + 1;
    const bool first = shrink(histogram, box);
    const bool second = shrink(histogram, other);
    return first && second;
}

} // namespace

void ColourHistogram::add(std::uint8_t r, std::uint8_t g, std::uint8_t b)
{
    const auto bin = static_cast<std::size_t>(binOf(r, g, b));
    ++counts_[bin];
    sums_[bin][0] += r;
    sums_[bin][1] += g;
    sums_[bin][2] += b;
}

MedianCutPalette medianCutPalette(const ColourHistogram& histogram, std::size_t maximumColours)
{
    MedianCutPalette palette;
    palette.indexOfBin.assign(ColourHistogram::kBins, 0);
    Box all;
    all.low[0] = all.low[1] = all.low[2] = 0;
    all.high[0] = all.high[1] = all.high[2] = 31;
    std::vector<Box> boxes;
    if (maximumColours == 0 || !shrink(histogram, all))
        return palette;
    boxes.push_back(all);

    while (boxes.size() < maximumColours) {
        // The box whose pixels spread furthest: population times its longest side.
        std::size_t chosen = boxes.size();
        std::uint64_t chosenWeight = 0;
        for (std::size_t i = 0; i < boxes.size(); ++i) {
            if (!splittable(boxes[i]))
                continue;
            const int side =
                std::max({boxes[i].high[0] - boxes[i].low[0], boxes[i].high[1] - boxes[i].low[1],
                          boxes[i].high[2] - boxes[i].low[2]});
            const std::uint64_t weight = boxes[i].population * static_cast<std::uint64_t>(side);
            if (chosen == boxes.size() || weight > chosenWeight) {
                chosen = i;
                chosenWeight = weight;
            }
        }
        if (chosen == boxes.size())
            break;
        Box other;
        if (!split(histogram, boxes[chosen], other))
            break;
        boxes.push_back(other);
    }

    for (const Box& box : boxes) {
        std::uint64_t sums[3] = {};
        for (int bin = 0; bin < ColourHistogram::kBins; ++bin) {
            if (!contains(box, bin))
                continue;
            for (int c = 0; c < 3; ++c)
                sums[c] += histogram.sum(bin, c);
        }
        const std::uint64_t n = box.population;
        palette.colours.push_back({static_cast<std::uint8_t>((sums[0] + n / 2) / n),
                                   static_cast<std::uint8_t>((sums[1] + n / 2) / n),
                                   static_cast<std::uint8_t>((sums[2] + n / 2) / n)});
    }

    // Each bin takes the palette colour nearest to the mean of its pixels, which near box edges
    // is often a neighbouring box's.
    for (int bin = 0; bin < ColourHistogram::kBins; ++bin) {
        const std::uint64_t n = histogram.count(bin);
        if (n == 0)
            continue;
        int mean[3];
        for (int c = 0; c < 3; ++c)
            mean[c] = static_cast<int>((histogram.sum(bin, c) + n / 2) / n);
        int best = 0;
        int bestDistance = std::numeric_limits<int>::max();
        for (std::size_t i = 0; i < palette.colours.size(); ++i) {
            int distance = 0;
            for (int c = 0; c < 3; ++c) {
                const int d = mean[c] - palette.colours[i][static_cast<std::size_t>(c)];
                distance += d * d;
            }
            if (distance < bestDistance) {
                bestDistance = distance;
                best = static_cast<int>(i);
            }
        }
        palette.indexOfBin[static_cast<std::size_t>(bin)] = static_cast<std::uint16_t>(best);
    }
    return palette;
}

} // namespace tintorra
