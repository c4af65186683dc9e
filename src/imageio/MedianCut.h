#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tintorra {

using PaletteColour = std::array<std::uint8_t, 3>;

// Colours counted at 5 bits per channel: the input of the median cut.
class ColourHistogram {
public:
    static constexpr int kBins = 1 << 15;

    static int binOf(std::uint8_t r, std::uint8_t g, std::uint8_t b)
    {
        return ((r >> 3) << 10) | ((g >> 3) << 5) | (b >> 3);
    }

    void add(std::uint8_t r, std::uint8_t g, std::uint8_t b);

    std::uint64_t count(int bin) const { return counts_[static_cast<std::size_t>(bin)]; }
    // The sum of the 8-bit values of one channel over the pixels counted in a bin.
    std::uint64_t sum(int bin, int channel) const
    {
        return sums_[static_cast<std::size_t>(bin)][static_cast<std::size_t>(channel)];
    }

private:
    std::vector<std::uint64_t> counts_ = std::vector<std::uint64_t>(kBins, 0);
    std::vector<std::array<std::uint64_t, 3>> sums_ =
        std::vector<std::array<std::uint64_t, 3>>(kBins, {0, 0, 0});
};

// A palette of at most `maximumColours` colours by median cut: the box of colours holding the
// most pixels is split at the median of its longest side until there are enough boxes; each box
// gives the mean of its pixels. `indexOfBin` maps every histogram bin that holds pixels to the
// palette entry nearest to their mean.
struct MedianCutPalette {
    std::vector<PaletteColour> colours;
    std::vector<std::uint16_t> indexOfBin;
};

MedianCutPalette medianCutPalette(const ColourHistogram& histogram, std::size_t maximumColours);

} // namespace tintorra
