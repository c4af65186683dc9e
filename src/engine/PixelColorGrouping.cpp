#include "engine/PixelColorGrouping.h"

#include "engine/TableAllocation.h"
#include "engine/WorkerThreads.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstring>
#include <vector>

namespace tintorra {

namespace {

constexpr unsigned kBucketBits = 16;
constexpr std::size_t kBucketCount = std::size_t{1} << kBucketBits;
constexpr std::uint32_t kBucketMask = kBucketCount - 1;

// Pixel readers. The common chunky layouts load the pixel as one word; the generic reader picks
// the four bytes at the layout's offsets (planar data, alpha first, grey, 16-bit high bytes).
std::uint32_t loadWord(const std::uint8_t* p)
{
    std::uint32_t word;
    std::memcpy(&word, p, sizeof word);
    return word;
}

constexpr bool kLittleEndian = std::endian::native == std::endian::little;

struct GenericReader {
    std::int64_t bytesPerPixel;
    std::uint64_t red, green, blue, alpha;
    bool hasAlpha;

    std::int64_t step() const { return bytesPerPixel; }
    std::uint32_t operator()(const std::uint8_t* p) const
    {
        return packColor(p[red], p[green], p[blue], hasAlpha ? p[alpha] : 0xFF);
    }
};

struct RgbaReader {
    static constexpr std::int64_t step() { return 4; }
    std::uint32_t operator()(const std::uint8_t* p) const { return loadWord(p); }
};

struct RgbxReader {
    static constexpr std::int64_t step() { return 4; }
    std::uint32_t operator()(const std::uint8_t* p) const { return loadWord(p) | 0xFF000000u; }
};

struct RgbReader {
    static constexpr std::int64_t step() { return 3; }
    std::uint32_t operator()(const std::uint8_t* p) const
    {
        return packColor(p[0], p[1], p[2], 0xFF);
    }
};

struct ArgbReader {
    static constexpr std::int64_t step() { return 4; }
    std::uint32_t operator()(const std::uint8_t* p) const
    {
        const std::uint32_t word = loadWord(p);
        return word >> 8 | word << 24;
    }
};

struct RowRange {
    std::int64_t first;
    std::int64_t end;
};

RowRange rowsOfThread(std::int64_t rows, unsigned thread, unsigned threads)
{
    return {rows * thread / threads, rows * (thread + 1) / threads};
}

// Pass 1: histogram of the bucket bits of every pixel, and which bits differ from the first
// pixel's colour (to learn whether alpha is constant).
template <typename Reader>
std::uint32_t histogramRows(const PackedSampleSource& source, const Reader& read, RowRange rows,
                            unsigned shift, std::uint32_t firstColor, std::uint32_t* histogram)
{
    std::fill(histogram, histogram + kBucketCount, 0u);
    std::uint32_t differingBits = 0;
    for (std::int64_t y = rows.first; y < rows.end; ++y) {
        const std::uint8_t* pixel = source.data + y * source.bytesPerRow;
        for (std::int64_t x = 0; x < source.pixelsWide; ++x, pixel += read.step()) {
            const std::uint32_t color = read(pixel);
            differingBits |= color ^ firstColor;
            ++histogram[(color >> shift) & kBucketMask];
        }
    }
    return differingBits;
}

// Pass 2: scatter each pixel's offset and low colour bits to its bucket, in scan order.
template <typename Low, typename Reader>
void scatterRows(const PackedSampleSource& source, const Reader& read, RowRange rows,
                 unsigned shift, std::uint32_t* cursors, std::uint32_t* locations, Low* lows)
{
    for (std::int64_t y = rows.first; y < rows.end; ++y) {
        const std::uint8_t* pixel = source.data + y * source.bytesPerRow;
        std::uint32_t offset = static_cast<std::uint32_t>(y * source.bytesPerRow);
        const std::uint32_t step = static_cast<std::uint32_t>(read.step());
        for (std::int64_t x = 0; x < source.pixelsWide; ++x, pixel += read.step(), offset += step) {
            const std::uint32_t color = read(pixel);
            const std::uint32_t position = cursors[(color >> shift) & kBucketMask]++;
            locations[position] = offset;
            lows[position] = static_cast<Low>(color);
        }
    }
}

// Pass 3 for 8 low bits: a stable counting sort of one bucket through `scratch`. Writes the
// bucket's distinct colours to `out` and returns how many there were.
std::size_t sortBucket(const std::uint8_t* lows, std::uint32_t* locations, std::uint32_t count,
                       std::uint32_t firstIndex, std::uint32_t colorBase, std::uint32_t* counts,
                       std::uint32_t* scratch, DistinctColor* out)
{
    std::uint64_t present[4] = {0, 0, 0, 0};
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::uint8_t low = lows[i];
        ++counts[low];
        present[low >> 6] |= std::uint64_t{1} << (low & 63);
    }
    std::size_t distinct = 0;
    std::uint32_t run = 0;
    for (unsigned word = 0; word < 4; ++word) {
        for (std::uint64_t bits = present[word]; bits != 0; bits &= bits - 1) {
            const unsigned low = word * 64 + static_cast<unsigned>(std::countr_zero(bits));
            const std::uint32_t members = counts[low];
            out[distinct++] = {colorBase | low, firstIndex + run, members};
            counts[low] = run;
            run += members;
        }
    }
    if (distinct > 1) {
        for (std::uint32_t i = 0; i < count; ++i) {
            scratch[counts[lows[i]]++] = locations[i];
        }
        std::memcpy(locations, scratch, count * sizeof(std::uint32_t));
    }
    for (unsigned word = 0; word < 4; ++word) {
        for (std::uint64_t bits = present[word]; bits != 0; bits &= bits - 1) {
            counts[word * 64 + static_cast<unsigned>(std::countr_zero(bits))] = 0;
        }
    }
    return distinct;
}

// Pass 3 for 16 low bits (images whose alpha varies): sort (low, offset) pairs; offsets are
// unique, so this is the stable order.
std::size_t sortBucket(const std::uint16_t* lows, std::uint32_t* locations, std::uint32_t count,
                       std::uint32_t firstIndex, std::uint32_t colorBase, std::uint32_t*,
                       std::uint64_t* scratch, DistinctColor* out)
{
    for (std::uint32_t i = 0; i < count; ++i) {
        scratch[i] = std::uint64_t{lows[i]} << 32 | locations[i];
    }
    if (!std::is_sorted(scratch, scratch + count)) {
        std::sort(scratch, scratch + count);
    }
    std::size_t distinct = 0;
    for (std::uint32_t i = 0; i < count; ++i) {
        locations[i] = static_cast<std::uint32_t>(scratch[i]);
        const std::uint32_t low = static_cast<std::uint32_t>(scratch[i] >> 32);
        if (i == 0 || low != static_cast<std::uint32_t>(scratch[i - 1] >> 32)) {
            out[distinct++] = {colorBase | low, firstIndex + i, 0};
        }
        ++out[distinct - 1].locationCount;
    }
    return distinct;
}

template <typename Low>
using ScratchFor = std::conditional_t<sizeof(Low) == 1, std::uint32_t, std::uint64_t>;

template <typename Low, typename Reader>
PixelColorGroups groupWithReader(const PackedSampleSource& source, const Reader& read,
                                 unsigned threads, std::uint32_t* histograms, unsigned shift,
                                 std::uint32_t firstColor)
{
    PixelColorGroups groups;
    const std::uint64_t pixelCount = static_cast<std::uint64_t>(source.pixelsWide) *
                                     static_cast<std::uint64_t>(source.pixelsHigh);

    TableArray<Low> lows = allocateTable<Low>(pixelCount);
    if (!lows) {
        groups.failure = GroupingFailure::pixelTable;
        return groups;
    }
    groups.locations = allocateTable<std::uint32_t>(pixelCount);
    if (!groups.locations) {
        groups.failure = GroupingFailure::locationTable;
        return groups;
    }
    groups.locationCount = pixelCount;

    // Bucket starts, and each thread's cursors behind the pixels of the threads before it, so
    // that the scatter keeps scan order.
    std::vector<std::uint32_t> counts(kBucketCount), starts(kBucketCount);
    std::uint32_t total = 0;
    for (std::size_t bucket = 0; bucket < kBucketCount; ++bucket) {
        starts[bucket] = total;
        std::uint32_t running = total;
        for (unsigned thread = 0; thread < threads; ++thread) {
            std::uint32_t& histogram = histograms[thread * kBucketCount + bucket];
            const std::uint32_t members = histogram;
            histogram = running;
            running += members;
        }
        counts[bucket] = running - total;
        total = running;
    }

    runOnThreads(threads, [&](unsigned thread) {
        scatterRows(source, read, rowsOfThread(source.pixelsHigh, thread, threads), shift,
                    histograms + thread * kBucketCount, groups.locations.get(), lows.get());
    });

    // Split the buckets so that each thread sorts about the same number of pixels, and give each
    // thread room for as many distinct colours as its buckets can hold.
    std::vector<std::size_t> firstBucket(threads + 1, kBucketCount);
    firstBucket[0] = 0;
    for (unsigned thread = 1; thread < threads; ++thread) {
        std::size_t bucket = firstBucket[thread - 1];
        while (bucket < kBucketCount &&
               std::uint64_t{starts[bucket]} * threads < pixelCount * thread) {
            ++bucket;
        }
        firstBucket[thread] = bucket;
    }
    std::vector<std::uint64_t> colorBase(threads + 1, 0);
    std::vector<std::uint32_t> largestBucket(threads, 0);
    for (unsigned thread = 0; thread < threads; ++thread) {
        std::uint64_t pixelsInRange = 0, nonEmptyInRange = 0;
        for (std::size_t bucket = firstBucket[thread]; bucket < firstBucket[thread + 1]; ++bucket) {
            pixelsInRange += counts[bucket];
            nonEmptyInRange += counts[bucket] != 0;
            if (counts[bucket] > 1) {
                largestBucket[thread] = std::max(largestBucket[thread], counts[bucket]);
            }
        }
        colorBase[thread + 1] =
            colorBase[thread] + std::min(pixelsInRange, nonEmptyInRange << shift);
    }

    // Untouched pages of this upper bound are never committed.
    groups.colors = allocateTable<DistinctColor>(colorBase[threads]);
    if (!groups.colors) {
        groups.failure = GroupingFailure::colorList;
        return groups;
    }

    const std::uint32_t constantHighBits = shift == 8 ? (firstColor & 0xFF000000u) : 0u;
    std::vector<std::size_t> distinctOfThread(threads, 0);
    std::atomic<bool> scratchFailed{false};
    runOnThreads(threads, [&](unsigned thread) {
        TableArray<ScratchFor<Low>> scratch = allocateTable<ScratchFor<Low>>(largestBucket[thread]);
        TableArray<std::uint32_t> lowCounts = allocateTable<std::uint32_t>(256);
        if (!scratch || !lowCounts) {
            scratchFailed = true;
            return;
        }
        std::fill(lowCounts.get(), lowCounts.get() + 256, 0u);
        DistinctColor* out = groups.colors.get() + colorBase[thread];
        std::size_t distinct = 0;
        for (std::size_t bucket = firstBucket[thread]; bucket < firstBucket[thread + 1]; ++bucket) {
            const std::uint32_t members = counts[bucket];
            if (members == 0) {
                continue;
            }
            const std::uint32_t first = starts[bucket];
            distinct +=
                sortBucket(lows.get() + first, groups.locations.get() + first, members, first,
                           constantHighBits | static_cast<std::uint32_t>(bucket) << shift,
                           lowCounts.get(), scratch.get(), out + distinct);
        }
        distinctOfThread[thread] = distinct;
    });
    if (scratchFailed) {
        groups = {};
        groups.failure = GroupingFailure::pixelTable;
        return groups;
    }

    std::size_t colorCount = distinctOfThread[0];
    for (unsigned thread = 1; thread < threads; ++thread) {
        std::memmove(groups.colors.get() + colorCount, groups.colors.get() + colorBase[thread],
                     distinctOfThread[thread] * sizeof(DistinctColor));
        colorCount += distinctOfThread[thread];
    }
    groups.colorCount = colorCount;
    return groups;
}

template <typename Reader>
PixelColorGroups groupWith(const PackedSampleSource& source, const Reader& read, unsigned threads)
{
    TableArray<std::uint32_t> histograms = allocateTable<std::uint32_t>(threads * kBucketCount);
    if (!histograms) {
        PixelColorGroups groups;
        groups.failure = GroupingFailure::pixelTable;
        return groups;
    }
    const std::uint32_t firstColor = read(source.data);

    // Bucket on blue and green below a constant alpha; on alpha and blue when alpha varies.
    std::vector<std::uint32_t> differingBits(threads, 0);
    const auto histogramPass = [&](unsigned shift) {
        runOnThreads(threads, [&](unsigned thread) {
            differingBits[thread] =
                histogramRows(source, read, rowsOfThread(source.pixelsHigh, thread, threads), shift,
                              firstColor, histograms.get() + thread * kBucketCount);
        });
    };
    histogramPass(8);
    std::uint32_t differing = 0;
    for (const std::uint32_t bits : differingBits) {
        differing |= bits;
    }
    if ((differing >> 24) == 0) {
        return groupWithReader<std::uint8_t>(source, read, threads, histograms.get(), 8,
                                             firstColor);
    }
    histogramPass(16);
    return groupWithReader<std::uint16_t>(source, read, threads, histograms.get(), 16, firstColor);
}

} // namespace

PixelColorGroups groupPixelsByColor(const PackedSampleSource& source, unsigned threads)
{
    if (source.data == nullptr || source.pixelsWide <= 0 || source.pixelsHigh <= 0) {
        return {};
    }
    threads = std::clamp<unsigned>(
        threads, 1, static_cast<unsigned>(std::max<std::int64_t>(1, source.pixelsHigh)));

    const bool rgbOrder =
        source.redOffset == 0 && source.greenOffset == 1 && source.blueOffset == 2;
    if (kLittleEndian && source.bytesPerPixel == 4 && rgbOrder && source.hasAlpha &&
        source.alphaOffset == 3) {
        return groupWith(source, RgbaReader{}, threads);
    }
    if (kLittleEndian && source.bytesPerPixel == 4 && rgbOrder && !source.hasAlpha) {
        return groupWith(source, RgbxReader{}, threads);
    }
    if (source.bytesPerPixel == 3 && rgbOrder && !source.hasAlpha) {
        return groupWith(source, RgbReader{}, threads);
    }
    if (kLittleEndian && source.bytesPerPixel == 4 && source.hasAlpha && source.alphaOffset == 0 &&
        source.redOffset == 1 && source.greenOffset == 2 && source.blueOffset == 3) {
        return groupWith(source, ArgbReader{}, threads);
    }
    const GenericReader generic{source.bytesPerPixel, source.redOffset,   source.greenOffset,
                                source.blueOffset,    source.alphaOffset, source.hasAlpha};
    return groupWith(source, generic, threads);
}

} // namespace tintorra
