#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

namespace tintorra {

// Tables that replace the per-sample powers of decoding and encoding with lookups giving the very
// same results: the engine decodes every pixel and encodes every changed colour, and a power
// costs far more than a lookup.

// Linear values of every 16-bit sample: entry k is (k / 65535)^(1 / imageGamma), computed as the
// pixel readers compute it (k / 65535 when the gamma is 1).
class WordDecodeTable {
public:
    static constexpr std::size_t kSize = 65536;
    explicit WordDecodeTable(double imageGamma);
    double operator[](std::uint16_t sample) const { return linear_[sample]; }
    // All kSize values, by sample.
    const double* data() const { return linear_.data(); }

private:
    std::vector<double> linear_;
};

// Guesses of a 16-bit sample, cell by cell: values sharing their exponent and top mantissa bits
// (their bits shifted right by `shift`) form a cell, and with the cell's row c of kStride doubles
// and x = v - the cell's start, c[0] + x (c[1] + x (c[2] + x c[3])) is within kLargestError of
// v^gamma x 65535 + 0.5, the value whose whole part is stored. The whole part is then plain away
// from the boundaries, and near them one comparison with a threshold settles it.
struct SampleGuessCells {
    static constexpr std::size_t kStride = 4;
    static constexpr double kLargestError = 2e-5;
    // A guess whose fraction lies this far from 0 and from 1 has the stored sample as its whole
    // part: no threshold is needed.
    static constexpr double kMargin = 5e-5;
    // Null where cells of a sensible number cannot guess that closely.
    const double* cells = nullptr;
    std::uint64_t firstKey = 0;
    unsigned shift = 0;
};

// The stored sample of a linear value in 0..1 at 8 or 16 bits: trunc(v^imageGamma x max + 0.5)
// as the pixel writers compute it (v itself when the gamma is 1). A cell table gives a guess close
// to the sample, and the smallest linear value of each sample, found once with the power, settles
// it; exact wherever that power is monotonic, which the correctly rounded library power is.
class SampleEncodeTable {
public:
    SampleEncodeTable(double imageGamma, unsigned maximum);

    unsigned operator()(double linear) const
    {
        // NaN and anything not above 0 is 0; the writers never see values above 1.
        if (!(linear > 0.0)) {
            return 0;
        }
        if (linear >= 1.0) {
            return maximum_;
        }
        if (linear < thresholds_[1] && (!cellSamples_.empty() || !guessCells_.empty())) {
            return 0;
        }
        if (!cellSamples_.empty()) {
            unsigned k =
                cellSamples_[(std::bit_cast<std::uint64_t>(linear) >> kCellShift) - firstCellKey_];
            for (unsigned step = 0; step < cellSteps_; ++step) {
                k += linear >= thresholds_[k + 1] ? 1u : 0u;
            }
            return k;
        }
        if (!guessCells_.empty()) {
            const std::uint64_t key = std::bit_cast<std::uint64_t>(linear) >> guessShift_;
            const double start = std::bit_cast<double>(key << guessShift_);
            const double* cell = &guessCells_[SampleGuessCells::kStride * (key - firstGuessKey_)];
            const double x = linear - start;
            const double guess = cell[0] + x * (cell[1] + x * (cell[2] + x * cell[3]));
            const double whole = std::floor(guess);
            const double fraction = guess - whole;
            if (fraction > SampleGuessCells::kMargin &&
                fraction < 1.0 - SampleGuessCells::kMargin) {
                return static_cast<unsigned>(whole);
            }
            const auto c = static_cast<unsigned>(
                std::clamp(std::floor(guess + 0.5), 1.0, static_cast<double>(maximum_)));
            return linear >= thresholds_[c] ? c : c - 1;
        }
        // Gammas so extreme that no cell table serves them: the power itself.
        const double encoded = gamma_ != 1.0 ? std::pow(linear, gamma_) : linear;
        return static_cast<unsigned>(encoded * maximum_ + 0.5);
    }

    // thresholds()[k]: the smallest value stored as k or more, for k = 0 .. maximum + 1 (-inf
    // first, +inf last).
    const double* thresholds() const { return thresholds_.data(); }

    // The 16-bit table's cells (none at 8 bits, whose own cells are faster).
    SampleGuessCells guessCells() const
    {
        return {guessCells_.empty() ? nullptr : guessCells_.data(), firstGuessKey_, guessShift_};
    }

private:
    void makeGuessCells(double imageGamma);

    // Cells of values sharing their exponent and top eight mantissa bits, for 8-bit samples:
    // cellSamples_[key - firstCellKey_] is the sample of the smallest value with the key (its bits
    // shifted right by kCellShift), and no cell holds more than cellSteps_ thresholds, so that a
    // few comparisons finish the lookup. Empty where a cell table would be too large.
    static constexpr unsigned kCellShift = 44;
    std::vector<std::uint8_t> cellSamples_;
    std::uint64_t firstCellKey_ = 0;
    unsigned cellSteps_ = 0;
    // See SampleGuessCells; empty at 8 bits and where no cell table guesses closely enough.
    std::vector<double> guessCells_;
    std::uint64_t firstGuessKey_ = 0;
    unsigned guessShift_ = 0;
    unsigned maximum_;
    double gamma_;
    // thresholds_[k]: the smallest value stored as k or more; [0] is -inf and [max + 1] +inf.
    std::vector<double> thresholds_;
};

} // namespace tintorra
