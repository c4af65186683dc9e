#pragma once

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

// The stored sample of a linear value in 0..1 at 8 or 16 bits: trunc(v^imageGamma x max + 0.5)
// as the pixel writers compute it (v itself when the gamma is 1). A single-precision power
// guesses the sample to within one, and the smallest linear value of each sample, found once
// with the double-precision power, settles it; exact wherever that power is monotonic, which
// the correctly rounded library power is.
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
        if (!cellSamples_.empty()) {
            if (linear < thresholds_[1]) {
                return 0;
            }
            unsigned k =
                cellSamples_[(std::bit_cast<std::uint64_t>(linear) >> kCellShift) - firstCellKey_];
            for (unsigned step = 0; step < cellSteps_; ++step) {
                k += linear >= thresholds_[k + 1] ? 1u : 0u;
            }
            return k;
        }
        const float power = gammaF_ == 1.0f ? static_cast<float>(linear)
                                            : std::pow(static_cast<float>(linear), gammaF_);
        const double scaled = static_cast<double>(power) * maximum_ + 0.5;
        const double whole = std::floor(scaled);
        const double fraction = scaled - whole;
        auto k = static_cast<unsigned>(whole);
        // The single-precision power is within a few parts in 1e7 of the double one, far less
        // than the margin: away from a rounding boundary the guess is the answer.
        if (fraction > kMargin && fraction < 1.0 - kMargin && k <= maximum_) {
            return k;
        }
        if (k > maximum_) {
            k = maximum_;
        }
        while (linear < thresholds_[k]) {
            --k;
        }
        while (linear >= thresholds_[k + 1]) {
            ++k;
        }
        return k;
    }

    // thresholds()[k]: the smallest value stored as k or more, for k = 0 .. maximum + 1 (-inf
    // first, +inf last).
    const double* thresholds() const { return thresholds_.data(); }

private:
    static constexpr double kMargin = 0.05;
    // Cells of values sharing their exponent and top eight mantissa bits, for 8-bit samples:
    // cellSamples_[key - firstCellKey_] is the sample of the smallest value with the key (its bits
    // shifted right by kCellShift), and no cell holds more than cellSteps_ thresholds, so that a
    // few comparisons finish the lookup. Empty where a cell table would be too large.
    static constexpr unsigned kCellShift = 44;
    std::vector<std::uint8_t> cellSamples_;
    std::uint64_t firstCellKey_ = 0;
    unsigned cellSteps_ = 0;
    unsigned maximum_;
    float gammaF_;
    // thresholds_[k]: the smallest value stored as k or more; [0] is -inf and [max + 1] +inf.
    std::vector<double> thresholds_;
};

// The tables for a gamma, made once and shared: later runs with the same gamma reuse them.
std::shared_ptr<const WordDecodeTable> wordDecodeTable(double imageGamma);
std::shared_ptr<const SampleEncodeTable> byteEncodeTable(double imageGamma);
std::shared_ptr<const SampleEncodeTable> wordEncodeTable(double imageGamma);

} // namespace tintorra
