#include "engine/ColorTableOrder.h"

#include "engine/TableAllocation.h"
#include "engine/WorkerThreads.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace tintorra {

namespace {

// Average entries per bucket: small enough for insertion sorting, large enough that the
// bucket counts stay in cache.
constexpr std::size_t kEntriesPerBucket = 8;

// A bucket index that never decreases with the hue, in the order of orderedFloatBits: finite
// hues spread linearly over [lowest, highest], infinities and NaNs at the ends by their sign.
class HueBuckets {
public:
    HueBuckets(double lowest, double highest, std::size_t count)
        : lowest_(lowest), last_(count - 1),
          scale_(highest > lowest ? static_cast<double>(count) / (highest - lowest) : 0.0)
    {}

    std::size_t operator()(float hue) const
    {
        if (!std::isfinite(hue)) {
            return std::signbit(hue) ? 0 : last_;
        }
        const double position = (static_cast<double>(hue) - lowest_) * scale_;
        return position >= static_cast<double>(last_) ? last_ : static_cast<std::size_t>(position);
    }

private:
    double lowest_;
    std::size_t last_;
    double scale_;
};

} // namespace

bool sortColorTableEntries(color_table_lch_entry_info* source, color_table_lch_entry_info* entries,
                           std::size_t count, unsigned threads)
{
    if (count == 0) {
        return true;
    }
    double lowest = std::numeric_limits<double>::infinity();
    double highest = -lowest;
    for (std::size_t i = 0; i < count; ++i) {
        const float hue = source[i].hue;
        if (std::isfinite(hue)) {
            lowest = std::min(lowest, static_cast<double>(hue));
            highest = std::max(highest, static_cast<double>(hue));
        }
    }
    if (!(lowest <= highest)) {
        lowest = highest = 0.0;
    }

    const std::size_t bucketCount = std::max<std::size_t>(1, count / kEntriesPerBucket);
    const HueBuckets bucketOf(lowest, highest, bucketCount);
    TableArray<std::uint32_t> buckets = allocateTable<std::uint32_t>(count);
    TableArray<std::size_t> starts = allocateTable<std::size_t>(bucketCount + 1);
    if (!buckets || !starts) {
        return false;
    }
    std::fill(starts.get(), starts.get() + bucketCount + 1, std::size_t{0});
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t bucket = bucketOf(source[i].hue);
        buckets[i] = static_cast<std::uint32_t>(bucket);
        ++starts[bucket + 1];
    }
    for (std::size_t bucket = 0; bucket < bucketCount; ++bucket) {
        starts[bucket + 1] += starts[bucket];
    }
    {
        std::vector<std::size_t> cursors(starts.get(), starts.get() + bucketCount);
        for (std::size_t i = 0; i < count; ++i) {
            entries[cursors[buckets[i]]++] = source[i];
        }
    }

    // Each thread sorts the buckets of about an equal share of the entries.
    threads = static_cast<unsigned>(std::clamp<std::size_t>(threads, 1, bucketCount));
    std::vector<std::size_t> firstBucket(threads + 1, bucketCount);
    firstBucket[0] = 0;
    for (unsigned thread = 1; thread < threads; ++thread) {
        std::size_t bucket = firstBucket[thread - 1];
        while (bucket < bucketCount && starts[bucket] * threads < count * thread) {
            ++bucket;
        }
        firstBucket[thread] = bucket;
    }
    runOnThreads(threads, [&](unsigned thread) {
        for (std::size_t bucket = firstBucket[thread]; bucket < firstBucket[thread + 1]; ++bucket) {
            std::sort(entries + starts[bucket], entries + starts[bucket + 1], colorTableEntryLess);
        }
    });
    return true;
}

} // namespace tintorra
