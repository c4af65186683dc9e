#include "engine/SampleTables.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace tintorra {

namespace {

// What the pixel writers store for a linear value.
unsigned encodeByPower(double linear, double imageGamma, unsigned maximum)
{
    const double encoded = imageGamma != 1.0 ? std::pow(linear, imageGamma) : linear;
    return static_cast<unsigned>(static_cast<std::int64_t>(encoded * maximum + 0.5));
}

// Non-negative doubles are ordered like their bit patterns.
std::uint64_t ordinal(double value)
{
    return std::bit_cast<std::uint64_t>(value);
}

double fromOrdinal(std::uint64_t bits)
{
    return std::bit_cast<double>(bits);
}

// The smallest value in [0, 1] stored as `code` or more, searched from a close guess: widen a
// bracket around the guess until it holds the change, then bisect.
double smallestValueStoredAs(unsigned code, double imageGamma, unsigned maximum)
{
    const auto reaches = [&](std::uint64_t bits) {
        return encodeByPower(fromOrdinal(bits), imageGamma, maximum) >= code;
    };
    const double guessValue = imageGamma != 1.0 ? std::pow((code - 0.5) / maximum, 1.0 / imageGamma)
                                                : (code - 0.5) / maximum;
    const std::uint64_t one = ordinal(1.0);
    std::uint64_t guess = std::min(ordinal(std::max(guessValue, 0.0)), one);
    std::uint64_t low = guess;
    std::uint64_t high = guess;
    // low: not reaching; high: reaching.
    for (std::uint64_t step = 1; reaches(low) && low > 0; step *= 2) {
        high = low;
        low = low > step ? low - step : 0;
    }
    for (std::uint64_t step = 1; !reaches(high) && high < one; step *= 2) {
        low = high;
        high = std::min(one, high + step);
    }
    if (reaches(low)) {
        return fromOrdinal(low);
    }
    while (high - low > 1) {
        const std::uint64_t middle = low + (high - low) / 2;
        if (reaches(middle)) {
            high = middle;
        } else {
            low = middle;
        }
    }
    return fromOrdinal(high);
}

} // namespace

WordDecodeTable::WordDecodeTable(double imageGamma) : linear_(kSize)
{
    for (std::size_t k = 0; k < kSize; ++k) {
        const double stored = static_cast<double>(k) / 65535.0;
        linear_[k] = imageGamma != 1.0 ? std::pow(stored, 1.0 / imageGamma) : stored;
    }
}

SampleEncodeTable::SampleEncodeTable(double imageGamma, unsigned maximum)
    : maximum_(maximum), gamma_(imageGamma), thresholds_(maximum + 2)
{
    thresholds_[0] = -std::numeric_limits<double>::infinity();
    for (unsigned code = 1; code <= maximum; ++code) {
        thresholds_[code] = smallestValueStoredAs(code, imageGamma, maximum);
    }
    thresholds_[maximum + 1] = std::numeric_limits<double>::infinity();

    // Cells from the one holding the smallest value stored as 1 up to 1.0; below that value
    // everything is 0, from 1.0 on everything is the maximum.
    constexpr std::uint64_t kMostCells = 1u << 16;
    const std::uint64_t firstKey = ordinal(thresholds_[1]) >> kCellShift;
    const std::uint64_t endKey = ordinal(1.0) >> kCellShift;
    if (maximum > 255) {
        makeGuessCells(imageGamma);
        return;
    }
    if (!(thresholds_[1] > 0.0) || endKey - firstKey > kMostCells) {
        return;
    }
    firstCellKey_ = firstKey;
    cellSamples_.resize(endKey - firstKey);
    unsigned k = 0;
    for (std::uint64_t key = firstKey; key < endKey; ++key) {
        const double low = fromOrdinal(key << kCellShift);
        const double next = fromOrdinal((key + 1) << kCellShift);
        while (thresholds_[k + 1] <= low) {
            ++k;
        }
        cellSamples_[key - firstKey] = static_cast<std::uint8_t>(k);
        unsigned inside = 0;
        while (thresholds_[k + 1 + inside] < next) {
            ++inside;
        }
        cellSteps_ = std::max(cellSteps_, inside);
    }
}

void SampleEncodeTable::makeGuessCells(double imageGamma)
{
    // 8192 cells take 256 kB: more would crowd the caches that the lookups are meant to use.
    constexpr std::uint64_t kMostCells = 1u << 13;
    if (!(thresholds_[1] >= std::numeric_limits<double>::min())) {
        return;
    }
    const double maximum = maximum_;
    const auto scaled = [&](double v) {
        return (imageGamma != 1.0 ? std::pow(v, imageGamma) : v) * maximum + 0.5;
    };
    // The cubic through both ends and two points between strays from the power by at most
    // width^4 / 1944 x its largest fourth derivative, which lies at one end of the cell.
    const auto bend = [&](double v) {
        return maximum *
               std::fabs(imageGamma * (imageGamma - 1.0) * (imageGamma - 2.0) *
                         (imageGamma - 3.0)) *
               std::pow(v, imageGamma - 4.0);
    };
    for (unsigned mantissaBits = 2; mantissaBits <= 12; ++mantissaBits) {
        const unsigned shift = 52 - mantissaBits;
        const std::uint64_t firstKey = ordinal(thresholds_[1]) >> shift;
        const std::uint64_t endKey = ordinal(1.0) >> shift;
        if (endKey - firstKey > kMostCells) {
            return;
        }
        std::vector<double> cells(SampleGuessCells::kStride * (endKey - firstKey));
        bool closeEnough = true;
        for (std::uint64_t key = firstKey; key < endKey && closeEnough; ++key) {
            const double start = fromOrdinal(key << shift);
            const double end = fromOrdinal((key + 1) << shift);
            const double width = end - start;
            const double third = width / 3.0;
            // Newton's divided differences at 0, w/3, 2w/3 and w, then the powers of x.
            const double f[4] = {scaled(start), scaled(start + third), scaled(start + 2.0 * third),
                                 scaled(end)};
            const double d1[3] = {(f[1] - f[0]) / third, (f[2] - f[1]) / third,
                                  (f[3] - f[2]) / third};
            const double d2[2] = {(d1[1] - d1[0]) / (2.0 * third), (d1[2] - d1[1]) / (2.0 * third)};
            const double d3 = (d2[1] - d2[0]) / width;
            double* const cell = &cells[SampleGuessCells::kStride * (key - firstKey)];
            cell[0] = f[0];
            cell[1] = d1[0] - d2[0] * third + d3 * third * (2.0 * third);
            cell[2] = d2[0] - d3 * (third + 2.0 * third);
            cell[3] = d3;
            const double fourth = width * width * width * width;
            closeEnough = fourth / 1944.0 * std::max(bend(start), bend(end)) <=
                          SampleGuessCells::kLargestError;
        }
        if (closeEnough) {
            guessCells_ = std::move(cells);
            firstGuessKey_ = firstKey;
            guessShift_ = shift;
            return;
        }
    }
}

} // namespace tintorra
