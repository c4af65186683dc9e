#include "engine/ColorTableOrder.h"

#include "common/ParallelLoops.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

namespace tintorra {

namespace {

// The hue's ordered bits are sorted in three stable passes of 11 bits each.
constexpr unsigned kDigitBits = 11;
constexpr std::size_t kDigitValues = std::size_t{1} << kDigitBits;
constexpr unsigned kPasses = 3;
// Each pass splits the entries into this many runs per thread, counted and moved in parallel.
constexpr std::size_t kRunsPerThread = 4;

using Histogram = std::array<std::uint32_t, kDigitValues>;

unsigned hueDigit(const color_table_lch_entry_info& entry, unsigned pass)
{
    return (orderedFloatBits(entry.hue) >> (pass * kDigitBits)) &
           static_cast<unsigned>(kDigitValues - 1);
}

} // namespace

void sortColorTableEntries(color_table_lch_entry_info* source, color_table_lch_entry_info* entries,
                           std::size_t count, unsigned threads)
{
    if (count == 0) {
        return;
    }
    const std::size_t runs =
        std::clamp<std::size_t>(count / 16384, 1, kRunsPerThread * std::max(1u, threads));
    const auto runStart = [&](std::size_t run) { return count * run / runs; };
    std::vector<Histogram> histograms(runs);

    // Least significant digit first, moving whole entries: each pass reads them in order and
    // writes 2048 streams, which keeps the moves in cache where gathering them by a sorted index
    // would miss it on nearly every entry. Runs keep their order within each digit, so the
    // passes stay stable however the runs are shared out.
    color_table_lch_entry_info* from = source;
    color_table_lch_entry_info* to = entries;
    for (unsigned pass = 0; pass < kPasses; ++pass) {
        runChunks(threads, runs, [&](std::size_t run, unsigned) {
            Histogram& histogram = histograms[run];
            histogram.fill(0);
            for (std::size_t i = runStart(run); i < runStart(run + 1); ++i) {
                ++histogram[hueDigit(from[i], pass)];
            }
        });
        // A digit that is the same for all entries moves nothing.
        const unsigned firstDigit = hueDigit(from[0], pass);
        std::uint64_t sharingFirstDigit = 0;
        for (const Histogram& histogram : histograms) {
            sharingFirstDigit += histogram[firstDigit];
        }
        if (sharingFirstDigit == count) {
            continue;
        }
        std::uint32_t running = 0;
        for (std::size_t value = 0; value < kDigitValues; ++value) {
            for (Histogram& histogram : histograms) {
                const std::uint32_t members = histogram[value];
                histogram[value] = running;
                running += members;
            }
        }
        runChunks(threads, runs, [&](std::size_t run, unsigned) {
            Histogram& cursors = histograms[run];
            for (std::size_t i = runStart(run); i < runStart(run + 1); ++i) {
                to[cursors[hueDigit(from[i], pass)]++] = from[i];
            }
        });
        std::swap(from, to);
    }
    if (from != entries) {
        std::memcpy(entries, from, count * sizeof(color_table_lch_entry_info));
    }

    // Runs of equal hue (all greys, and hues that the cylinders repeat exactly) by the rest.
    for (std::size_t first = 0; first < count;) {
        const std::uint32_t hue = orderedFloatBits(entries[first].hue);
        std::size_t end = first + 1;
        while (end < count && orderedFloatBits(entries[end].hue) == hue) {
            ++end;
        }
        if (end - first > 1) {
            std::sort(entries + first, entries + end,
                      [](const color_table_lch_entry_info& a, const color_table_lch_entry_info& b) {
                          return colorTableEntryLess(a, b);
                      });
        }
        first = end;
    }
}

} // namespace tintorra
