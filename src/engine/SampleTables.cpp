#include "engine/SampleTables.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <mutex>

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

// A few recent tables per kind, keyed by the gamma's bits.
template <typename Table, typename Make>
std::shared_ptr<const Table> cachedTable(double imageGamma, unsigned variant, const Make& make)
{
    struct Entry {
        std::uint64_t key;
        unsigned variant;
        std::shared_ptr<const Table> table;
    };
    static std::mutex mutex;
    static std::vector<Entry> cache;
    constexpr std::size_t kKept = 4;
    const auto key = std::bit_cast<std::uint64_t>(imageGamma);
    const std::lock_guard<std::mutex> lock(mutex);
    for (const Entry& entry : cache) {
        if (entry.key == key && entry.variant == variant) {
            return entry.table;
        }
    }
    std::shared_ptr<const Table> table = make();
    if (cache.size() == kKept) {
        cache.erase(cache.begin());
    }
    cache.push_back({key, variant, table});
    return table;
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
    : maximum_(maximum), gammaF_(static_cast<float>(imageGamma)), thresholds_(maximum + 2)
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
    if (maximum > 255 || !(thresholds_[1] > 0.0) || endKey - firstKey > kMostCells) {
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

std::shared_ptr<const WordDecodeTable> wordDecodeTable(double imageGamma)
{
    return cachedTable<WordDecodeTable>(
        imageGamma, 0, [&] { return std::make_shared<const WordDecodeTable>(imageGamma); });
}

std::shared_ptr<const SampleEncodeTable> byteEncodeTable(double imageGamma)
{
    return cachedTable<SampleEncodeTable>(imageGamma, 255, [&] {
        return std::make_shared<const SampleEncodeTable>(imageGamma, 255u);
    });
}

std::shared_ptr<const SampleEncodeTable> wordEncodeTable(double imageGamma)
{
    return cachedTable<SampleEncodeTable>(imageGamma, 65535, [&] {
        return std::make_shared<const SampleEncodeTable>(imageGamma, 65535u);
    });
}

} // namespace tintorra
