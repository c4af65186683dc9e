#include "engine/PixelColorGrouping.h"

#include "common/ParallelLoops.h"
#include "engine/TableAllocation.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstring>
#include <type_traits>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tintorra {

namespace {

// Units of work per thread: rows are cut into bands and buckets into runs of about equal pixel
// counts, which the threads take in turn, so that a thread the system holds up costs little.
constexpr std::size_t kChunksPerThread = 8;

// How the packed colour splits into a bucket (its high bits) and the low bits sorted within the
// bucket. Constant alpha leaves 24 varying bits: 4096 buckets of 12 low bits, so that the scatter
// writes to few enough places to stay in cache and each bucket sorts with 4096 counters in L1.
// Varying alpha: 65536 buckets of 16 low bits, sorted by comparison.
template <unsigned kShiftBits, unsigned kKeyBits>
struct KeySplit {
    static constexpr unsigned kShift = kShiftBits;
    static constexpr std::uint32_t kBucketMask = (1u << (kKeyBits - kShiftBits)) - 1;
    static constexpr std::uint32_t kLowValues = 1u << kShiftBits;
    static constexpr std::size_t kBucketCount = std::size_t{kBucketMask} + 1;

    static std::uint32_t bucket(std::uint32_t color) { return (color >> kShift) & kBucketMask; }
    static std::uint32_t low(std::uint32_t color) { return color & ((1u << kShift) - 1); }
};

using ConstantAlphaSplit = KeySplit<12, 24>;
using VaryingAlphaSplit = KeySplit<16, 32>;

// Pixel readers. The common chunky layouts load the pixel as one word; the generic reader picks
// the four bytes at the layout's offsets (planar data, alpha first, grey, 16-bit high bytes).
// `interior` reads a pixel that is not the last of its row, which lets packed RGB load a word
// that reaches into the next pixel.
std::uint32_t loadWord(const std::uint8_t* p)
{
    std::uint32_t word;
    std::memcpy(&word, p, sizeof word);
    return word;
}

constexpr bool kLittleEndian = std::endian::native == std::endian::little;

struct GenericReader {
    static constexpr bool kOpaque = false;
    std::int64_t bytesPerPixel;
    std::uint64_t red, green, blue, alpha;
    bool hasAlpha;

    std::int64_t step() const { return bytesPerPixel; }
    std::uint32_t operator()(const std::uint8_t* p) const
    {
        return packColor(p[red], p[green], p[blue], hasAlpha ? p[alpha] : 0xFF);
    }
    std::uint32_t interior(const std::uint8_t* p) const { return (*this)(p); }
};

struct RgbaReader {
    static constexpr bool kOpaque = false;
    static constexpr std::int64_t step() { return 4; }
    std::uint32_t operator()(const std::uint8_t* p) const { return loadWord(p); }
    std::uint32_t interior(const std::uint8_t* p) const { return loadWord(p); }
};

struct RgbxReader {
    static constexpr bool kOpaque = true;
    static constexpr std::int64_t step() { return 4; }
    std::uint32_t operator()(const std::uint8_t* p) const { return loadWord(p) | 0xFF000000u; }
    std::uint32_t interior(const std::uint8_t* p) const { return (*this)(p); }
};

struct RgbReader {
    static constexpr bool kOpaque = true;
    static constexpr std::int64_t step() { return 3; }
    std::uint32_t operator()(const std::uint8_t* p) const
    {
        return packColor(p[0], p[1], p[2], 0xFF);
    }
    std::uint32_t interior(const std::uint8_t* p) const { return loadWord(p) | 0xFF000000u; }
};

struct ArgbReader {
    static constexpr bool kOpaque = false;
    static constexpr std::int64_t step() { return 4; }
    std::uint32_t operator()(const std::uint8_t* p) const
    {
        const std::uint32_t word = loadWord(p);
        return word >> 8 | word << 24;
    }
    std::uint32_t interior(const std::uint8_t* p) const { return (*this)(p); }
};

struct RowRange {
    std::int64_t first;
    std::int64_t end;
};

RowRange rowsOfBand(std::int64_t rows, std::size_t band, std::size_t bands)
{
    const auto total = static_cast<std::size_t>(rows);
    return {static_cast<std::int64_t>(total * band / bands),
            static_cast<std::int64_t>(total * (band + 1) / bands)};
}

// Pass 1: histogram of the bucket bits of every pixel, and which bits differ from the first
// pixel's colour (to learn whether alpha is constant). Neighbouring pixels often share a bucket;
// counting even and odd pixels apart halves the chains of increments of one counter.
template <typename Split, typename Reader>
std::uint32_t histogramRows(const PackedSampleSource& source, const Reader& read, RowRange rows,
                            std::uint32_t firstColor, std::uint32_t* histogram)
{
    std::uint32_t* even = histogram;
    std::uint32_t* odd = histogram + Split::kBucketCount;
    std::fill(even, even + Split::kBucketCount, 0u);
    std::fill(odd, odd + Split::kBucketCount, 0u);
    std::uint32_t differingBits = 0;
    const std::int64_t step = read.step();
    for (std::int64_t y = rows.first; y < rows.end; ++y) {
        const std::uint8_t* pixel = source.data + y * source.bytesPerRow;
        std::int64_t x = 0;
        for (; x + 2 < source.pixelsWide; x += 2, pixel += 2 * step) {
            const std::uint32_t first = read.interior(pixel);
            const std::uint32_t second = read.interior(pixel + step);
            if constexpr (!Reader::kOpaque) {
                differingBits |= (first ^ firstColor) | (second ^ firstColor);
            }
            ++even[Split::bucket(first)];
            ++odd[Split::bucket(second)];
        }
        for (; x < source.pixelsWide; ++x, pixel += step) {
            const std::uint32_t color = read(pixel);
            if constexpr (!Reader::kOpaque) {
                differingBits |= color ^ firstColor;
            }
            ++even[Split::bucket(color)];
        }
    }
    for (std::size_t bucket = 0; bucket < Split::kBucketCount; ++bucket) {
        even[bucket] += odd[bucket];
    }
    return differingBits;
}

// Pass 2: scatter each pixel's offset to its bucket of the locations, in scan order, and the
// colour's low bits to the same place of `lows`. (One stream of 8-byte records would miss the
// cache a little less, but it doubles the fresh memory the kernel has to clear.)
template <typename Split, typename Reader, typename Place>
void scanRows(const PackedSampleSource& source, const Reader& read, RowRange rows,
              const Place& place)
{
    const std::int64_t step = read.step();
    for (std::int64_t y = rows.first; y < rows.end; ++y) {
        const std::uint8_t* pixel = source.data + y * source.bytesPerRow;
        auto offset = static_cast<std::uint32_t>(y * source.bytesPerRow);
        std::int64_t x = 0;
        for (; x + 1 < source.pixelsWide; ++x, pixel += step) {
            place(read.interior(pixel), offset);
            offset += static_cast<std::uint32_t>(step);
        }
        place(read(pixel), offset);
    }
}

template <typename Split, typename Reader>
void scatterRows(const PackedSampleSource& source, const Reader& read, RowRange rows,
                 std::uint32_t* cursors, std::uint32_t* locations, std::uint16_t* lows)
{
    scanRows<Split>(source, read, rows, [&](std::uint32_t color, std::uint32_t offset) {
        const std::uint32_t position = cursors[Split::bucket(color)]++;
        locations[position] = offset;
        lows[position] = static_cast<std::uint16_t>(Split::low(color));
    });
}

// The same with software write-combining, for the 4096 buckets of constant alpha: each bucket
// gathers 16 offsets and their low bits in a line buffer that stays in cache, and writes them
// out as whole lines with streaming stores, which neither fetch the destination lines first nor
// push the image out of the cache. Runs of a bucket that do not fill a whole line of this band's
// part of it (its ends) are written plainly.
struct CombiningLine {
    static constexpr std::uint32_t kSlots = 16;
    std::uint32_t offsets[kSlots];
    std::uint16_t lows[kSlots];
};

void writeLine(const CombiningLine& line, std::uint32_t* locations, std::uint16_t* lows)
{
#if defined(__SSE2__)
    const auto* offsets = reinterpret_cast<const __m128i*>(line.offsets);
    auto* offsetsOut = reinterpret_cast<__m128i*>(locations);
    for (int i = 0; i < 4; ++i) {
        _mm_stream_si128(offsetsOut + i, _mm_loadu_si128(offsets + i));
    }
    const auto* lowsIn = reinterpret_cast<const __m128i*>(line.lows);
    auto* lowsOut = reinterpret_cast<__m128i*>(lows);
    for (int i = 0; i < 2; ++i) {
        _mm_stream_si128(lowsOut + i, _mm_loadu_si128(lowsIn + i));
    }
#else
    std::memcpy(locations, line.offsets, sizeof line.offsets);
    std::memcpy(lows, line.lows, sizeof line.lows);
#endif
}

template <typename Split, typename Reader>
void scatterRowsCombining(const PackedSampleSource& source, const Reader& read, RowRange rows,
                          std::uint32_t* cursors, std::uint32_t* bandStarts, CombiningLine* lines,
                          std::uint32_t* locations, std::uint16_t* lows)
{
    constexpr std::uint32_t kSlots = CombiningLine::kSlots;
    std::copy(cursors, cursors + Split::kBucketCount, bandStarts);
    const auto writePlainly = [&](const CombiningLine& line, std::uint32_t first,
                                  std::uint32_t end) {
        for (std::uint32_t position = first; position < end; ++position) {
            locations[position] = line.offsets[position % kSlots];
            lows[position] = line.lows[position % kSlots];
        }
    };
    scanRows<Split>(source, read, rows, [&](std::uint32_t color, std::uint32_t offset) {
        const std::uint32_t bucket = Split::bucket(color);
        const std::uint32_t position = cursors[bucket]++;
        CombiningLine& line = lines[bucket];
        const std::uint32_t slot = position % kSlots;
        line.offsets[slot] = offset;
        line.lows[slot] = static_cast<std::uint16_t>(Split::low(color));
        if (slot == kSlots - 1) {
            const std::uint32_t first = position - slot;
            if (first >= bandStarts[bucket]) {
                writeLine(line, locations + first, lows + first);
            } else {
                writePlainly(line, bandStarts[bucket], position + 1);
            }
        }
    });
    for (std::size_t bucket = 0; bucket < Split::kBucketCount; ++bucket) {
        const std::uint32_t end = cursors[bucket];
        const std::uint32_t lineStart = end - end % kSlots;
        writePlainly(lines[bucket], std::max(lineStart, bandStarts[bucket]), end);
    }
#if defined(__SSE2__)
    // Streaming stores are weakly ordered; make them visible before the band counts as done.
    _mm_sfence();
#endif
}

// Pass 3 for 12 low bits: a stable counting sort of one bucket through `scratch`, which holds the
// bucket while it is in cache. Writes the bucket's distinct colours to `out` and returns how many
// there were. `counts` (4096 zeroes) is left zeroed.
template <unsigned kLowValues>
std::size_t sortSmallKeyBucket(const std::uint16_t* lows, std::uint32_t* locations,
                               std::uint32_t count, std::uint32_t firstIndex,
                               std::uint32_t colorBase, std::uint32_t* counts,
                               std::uint32_t* scratch, DistinctColor* out)
{
    constexpr unsigned kWords = kLowValues / 64;
    std::size_t distinct = 0;
    std::uint32_t run = 0;
    const auto emit = [&](unsigned low) {
        const std::uint32_t members = counts[low];
        out[distinct++] = {colorBase | low, firstIndex + run, members};
        counts[low] = run;
        run += members;
    };
    // Large buckets find their colours by scanning the counters; small ones remember which
    // counters they touched, so that they need not visit all 4096.
    const bool scan = count >= kLowValues / 4;
    std::uint64_t present[kWords];
    if (scan) {
        for (std::uint32_t i = 0; i < count; ++i) {
            ++counts[lows[i]];
        }
        for (unsigned low = 0; low < kLowValues; ++low) {
            if (counts[low] != 0) {
                emit(low);
            }
        }
    } else {
        std::fill(present, present + kWords, std::uint64_t{0});
        for (std::uint32_t i = 0; i < count; ++i) {
            const unsigned low = lows[i];
            ++counts[low];
            present[low >> 6] |= std::uint64_t{1} << (low & 63);
        }
        for (unsigned word = 0; word < kWords; ++word) {
            for (std::uint64_t bits = present[word]; bits != 0; bits &= bits - 1) {
                emit(word * 64 + static_cast<unsigned>(std::countr_zero(bits)));
            }
        }
    }
    if (distinct > 1) {
        std::memcpy(scratch, locations, count * sizeof(std::uint32_t));
        for (std::uint32_t i = 0; i < count; ++i) {
            locations[counts[lows[i]]++] = scratch[i];
        }
    }
    if (scan) {
        std::fill(counts, counts + kLowValues, 0u);
    } else {
        for (unsigned word = 0; word < kWords; ++word) {
            for (std::uint64_t bits = present[word]; bits != 0; bits &= bits - 1) {
                counts[word * 64 + static_cast<unsigned>(std::countr_zero(bits))] = 0;
            }
        }
    }
    return distinct;
}

// Pass 3 for 16 low bits (images whose alpha varies): sort (low bits, offset) pairs; offsets are
// unique, so this is the stable order.
std::size_t sortWideKeyBucket(const std::uint16_t* lows, std::uint32_t* locations,
                              std::uint32_t count, std::uint32_t firstIndex,
                              std::uint32_t colorBase, std::uint64_t* scratch, DistinctColor* out)
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
        const auto low = static_cast<std::uint32_t>(scratch[i] >> 32);
        if (i == 0 || low != static_cast<std::uint32_t>(scratch[i - 1] >> 32)) {
            out[distinct++] = {colorBase | low, firstIndex + i, 0};
        }
        ++out[distinct - 1].locationCount;
    }
    return distinct;
}

// Band k's two histograms (even and odd pixels; the first ends up holding the band's counts).
template <typename Split>
std::uint32_t* bandHistogram(std::uint32_t* histograms, std::size_t band)
{
    return histograms + band * 2 * Split::kBucketCount;
}

template <typename Split, typename Reader>
PixelColorGroups groupWithReader(const PackedSampleSource& source, const Reader& read,
                                 unsigned threads, std::size_t bands, std::uint32_t* histograms,
                                 std::uint32_t firstColor)
{
    PixelColorGroups groups;
    const std::uint64_t pixelCount = static_cast<std::uint64_t>(source.pixelsWide) *
                                     static_cast<std::uint64_t>(source.pixelsHigh);
    constexpr std::size_t bucketCount = Split::kBucketCount;

    TableArray<std::uint16_t> lows = allocateTable<std::uint16_t>(pixelCount);
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

    // Bucket starts, and each band's cursors behind the pixels of the bands above it, so that
    // the scatter keeps scan order.
    std::vector<std::uint32_t> counts(bucketCount), starts(bucketCount);
    std::uint32_t total = 0;
    for (std::size_t bucket = 0; bucket < bucketCount; ++bucket) {
        starts[bucket] = total;
        std::uint32_t running = total;
        for (std::size_t band = 0; band < bands; ++band) {
            std::uint32_t& cursor = bandHistogram<Split>(histograms, band)[bucket];
            const std::uint32_t members = cursor;
            cursor = running;
            running += members;
        }
        counts[bucket] = running - total;
        total = running;
    }

    constexpr bool kSmallKeys = Split::kShift < 16;
    if constexpr (kSmallKeys) {
        std::vector<TableArray<CombiningLine>> lines(threads);
        std::vector<TableArray<std::uint32_t>> bandStarts(threads);
        for (unsigned thread = 0; thread < threads; ++thread) {
            lines[thread] = allocateTable<CombiningLine>(bucketCount);
            bandStarts[thread] = allocateTable<std::uint32_t>(bucketCount);
            if (!lines[thread] || !bandStarts[thread]) {
                groups = {};
                groups.failure = GroupingFailure::pixelTable;
                return groups;
            }
        }
        runChunks(threads, bands, [&](std::size_t band, unsigned thread) {
            scatterRowsCombining<Split>(source, read, rowsOfBand(source.pixelsHigh, band, bands),
                                        bandHistogram<Split>(histograms, band),
                                        bandStarts[thread].get(), lines[thread].get(),
                                        groups.locations.get(), lows.get());
        });
    } else {
        runChunks(threads, bands, [&](std::size_t band, unsigned) {
            scatterRows<Split>(source, read, rowsOfBand(source.pixelsHigh, band, bands),
                               bandHistogram<Split>(histograms, band), groups.locations.get(),
                               lows.get());
        });
    }

    // Runs of buckets of about equal pixel counts, each with room for as many distinct colours
    // as its buckets can hold.
    const std::size_t runs = std::max<std::size_t>(1, threads * kChunksPerThread);
    std::vector<std::size_t> firstBucket(runs + 1, bucketCount);
    firstBucket[0] = 0;
    for (std::size_t run = 1; run < runs; ++run) {
        std::size_t bucket = firstBucket[run - 1];
        while (bucket < bucketCount && std::uint64_t{starts[bucket]} * runs < pixelCount * run) {
            ++bucket;
        }
        firstBucket[run] = bucket;
    }
    std::vector<std::uint64_t> colorBase(runs + 1, 0);
    std::uint32_t largestBucket = 0;
    for (std::size_t run = 0; run < runs; ++run) {
        // A bucket has at most as many colours as pixels and as values of its low bits.
        std::uint64_t room = 0;
        for (std::size_t bucket = firstBucket[run]; bucket < firstBucket[run + 1]; ++bucket) {
            room += std::min<std::uint64_t>(counts[bucket], Split::kLowValues);
            largestBucket = std::max(largestBucket, counts[bucket]);
        }
        colorBase[run + 1] = colorBase[run] + room;
    }

    // Pages of this upper bound that the colours do not reach are never touched.
    groups.colors = allocateTable<DistinctColor>(colorBase[runs]);
    if (!groups.colors) {
        groups = {};
        groups.failure = GroupingFailure::colorList;
        return groups;
    }

    // Each thread's room for the largest bucket: its offsets while they are sorted, or its
    // (low, offset) pairs when alpha varies; and its counters.
    using Scratch = std::conditional_t<kSmallKeys, std::uint32_t, std::uint64_t>;
    std::vector<TableArray<Scratch>> scratch(threads);
    std::vector<TableArray<std::uint32_t>> lowCounts(threads);
    for (unsigned thread = 0; thread < threads; ++thread) {
        scratch[thread] = allocateTable<Scratch>(largestBucket);
        lowCounts[thread] = allocateTable<std::uint32_t>(Split::kLowValues);
        if (!scratch[thread] || !lowCounts[thread]) {
            groups = {};
            groups.failure = GroupingFailure::pixelTable;
            return groups;
        }
        std::fill(lowCounts[thread].get(), lowCounts[thread].get() + Split::kLowValues, 0u);
    }

    const std::uint32_t constantHighBits = kSmallKeys ? (firstColor & 0xFF000000u) : 0u;
    std::vector<std::size_t> distinctOfRun(runs, 0);
    runChunks(threads, runs, [&](std::size_t run, unsigned thread) {
        DistinctColor* out = groups.colors.get() + colorBase[run];
        std::size_t distinct = 0;
        for (std::size_t bucket = firstBucket[run]; bucket < firstBucket[run + 1]; ++bucket) {
            const std::uint32_t members = counts[bucket];
            if (members == 0) {
                continue;
            }
            const std::uint32_t first = starts[bucket];
            const std::uint32_t colorOfBucket =
                constantHighBits | static_cast<std::uint32_t>(bucket) << Split::kShift;
            if constexpr (kSmallKeys) {
                distinct += sortSmallKeyBucket<Split::kLowValues>(
                    lows.get() + first, groups.locations.get() + first, members, first,
                    colorOfBucket, lowCounts[thread].get(), scratch[thread].get(), out + distinct);
            } else {
                distinct +=
                    sortWideKeyBucket(lows.get() + first, groups.locations.get() + first, members,
                                      first, colorOfBucket, scratch[thread].get(), out + distinct);
            }
        }
        distinctOfRun[run] = distinct;
    });

    std::size_t colorCount = distinctOfRun[0];
    for (std::size_t run = 1; run < runs; ++run) {
        std::memmove(groups.colors.get() + colorCount, groups.colors.get() + colorBase[run],
                     distinctOfRun[run] * sizeof(DistinctColor));
        colorCount += distinctOfRun[run];
    }
    groups.colorCount = colorCount;
    return groups;
}

template <typename Split, typename Reader>
std::uint32_t histogramBands(const PackedSampleSource& source, const Reader& read, unsigned threads,
                             std::size_t bands, std::uint32_t firstColor, std::uint32_t* histograms)
{
    std::vector<std::uint32_t> differingBits(bands, 0);
    runChunks(threads, bands, [&](std::size_t band, unsigned) {
        differingBits[band] =
            histogramRows<Split>(source, read, rowsOfBand(source.pixelsHigh, band, bands),
                                 firstColor, bandHistogram<Split>(histograms, band));
    });
    std::uint32_t differing = 0;
    for (const std::uint32_t bits : differingBits) {
        differing |= bits;
    }
    return differing;
}

template <typename Reader>
PixelColorGroups groupWith(const PackedSampleSource& source, const Reader& read, unsigned threads)
{
    PixelColorGroups failed;
    failed.failure = GroupingFailure::pixelTable;
    const std::size_t bands = std::min<std::size_t>(static_cast<std::size_t>(source.pixelsHigh),
                                                    threads * kChunksPerThread);
    const std::uint32_t firstColor = read(source.data);

    TableArray<std::uint32_t> histograms =
        allocateTable<std::uint32_t>(bands * 2 * ConstantAlphaSplit::kBucketCount);
    if (!histograms) {
        return failed;
    }
    const std::uint32_t differing = histogramBands<ConstantAlphaSplit>(
        source, read, threads, bands, firstColor, histograms.get());
    if ((differing >> 24) == 0) {
        return groupWithReader<ConstantAlphaSplit>(source, read, threads, bands, histograms.get(),
                                                   firstColor);
    }
    histograms = allocateTable<std::uint32_t>(bands * 2 * VaryingAlphaSplit::kBucketCount);
    if (!histograms) {
        return failed;
    }
    histogramBands<VaryingAlphaSplit>(source, read, threads, bands, firstColor, histograms.get());
    return groupWithReader<VaryingAlphaSplit>(source, read, threads, bands, histograms.get(),
                                              firstColor);
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
