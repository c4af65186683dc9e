#include "engine/TableWritePlan.h"

#include "common/ParallelLoops.h"
#include "engine/HueShiftWorkers.h"

#include <algorithm>

namespace tintorra {

std::uint64_t tableWriteBlockBytes(const PixelManipulationOffsets& destination,
                                   const TableWriteLimits& limits)
{
    const auto rowBytes = static_cast<std::uint64_t>(destination.bytesPerRow);
    return std::max<std::uint64_t>(1, limits.blockBytes / rowBytes) * rowBytes;
}

TableWritePlanPtr planTableWrites(const HueShiftRun& run, const ColorTableRef& table,
                                  const TableFootprint& entries, unsigned threads)
{
    std::uint64_t total = 0;
    for (const TableSpan& entry : entries) {
        total += entry.locationCount;
    }
    if (total > kMaxPlannedPixels) {
        return nullptr;
    }
    const PixelManipulationOffsets& d = *run.destination;
    auto plan = std::make_shared<TableWritePlan>();
    plan->entries = entries;
    plan->blockBytes = tableWriteBlockBytes(d, run.writeLimits);
    const std::uint64_t imageBytes = static_cast<std::uint64_t>(d.rep->sampleBytes());
    const std::uint64_t blocks = (imageBytes + plan->blockBytes - 1) / plan->blockBytes;
    const auto lastPixel = static_cast<std::uint64_t>((d.pixelsHigh - 1) * d.bytesPerRow +
                                                      (d.pixelsWide - 1) * d.bytesPerPixel);

    // Each thread sorts a run of the entries into blocks of its own; the blocks are then joined.
    threads = static_cast<unsigned>(std::clamp<std::size_t>(entries.size(), 1, threads));
    std::vector<std::vector<std::vector<TableWritePlan::Pixel>>> sorted(threads);
    constexpr std::size_t kPrefetchAhead = 24;
    const std::uint64_t blockBytes = plan->blockBytes;
    const double reciprocal = 1.0 / static_cast<double>(blockBytes);
    runWorkers(threads, [&](unsigned t) {
        std::vector<std::vector<TableWritePlan::Pixel>>& own = sorted[t];
        own.resize(blocks);
        const std::size_t begin = entries.size() * t / threads;
        const std::size_t end = entries.size() * (t + 1) / threads;
        for (std::size_t i = begin; i < end; ++i) {
            if ((i & 4095) == 0 && run.stopRequested()) {
                return;
            }
            if (i + kPrefetchAhead < end) {
                __builtin_prefetch(table.locations + entries[i + kPrefetchAhead].firstLocation);
            }
            const std::uint32_t* locations = table.locations + entries[i].firstLocation;
            for (std::uint32_t k = 0; k < entries[i].locationCount; ++k) {
                const std::uint32_t location = locations[k];
                if (location > lastPixel) {
                    continue;
                }
                // location / blockBytes by a multiplication, corrected to be exact.
                auto block = static_cast<std::uint64_t>(static_cast<double>(location) * reciprocal);
                if (block * blockBytes > location) {
                    --block;
                } else if ((block + 1) * blockBytes <= location) {
                    ++block;
                }
                own[block].push_back({location, static_cast<std::uint32_t>(i)});
            }
        }
    });
    if (run.stopRequested()) {
        return nullptr;
    }
    plan->pixels.reserve(total);
    plan->blockBegin.reserve(blocks + 1);
    for (std::uint64_t b = 0; b < blocks; ++b) {
        plan->blockBegin.push_back(plan->pixels.size());
        for (const auto& own : sorted) {
            plan->pixels.insert(plan->pixels.end(), own[b].begin(), own[b].end());
        }
    }
    plan->blockBegin.push_back(plan->pixels.size());
    // In the order of the pixels within each block: the writes then walk the block's rows
    // forwards, which the cache fetches ahead of them.
    runChunks(threads, static_cast<std::size_t>(blocks), [&](std::size_t b, unsigned) {
        std::sort(plan->pixels.begin() + static_cast<std::ptrdiff_t>(plan->blockBegin[b]),
                  plan->pixels.begin() + static_cast<std::ptrdiff_t>(plan->blockBegin[b + 1]),
                  [](const TableWritePlan::Pixel& a, const TableWritePlan::Pixel& b) {
                      return a.location < b.location;
                  });
    });
    return plan;
}

} // namespace tintorra
