#include "common/ParallelLoops.h"
#include "engine/HueShiftWorkers.h"
#include "engine/SelectionMasks.h"
#include "engine/TableWritePlan.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <span>

namespace tintorra {

namespace {

struct Record {
    std::uint32_t location;
    PixelChars color;
};

// floor(location / divisor) by a multiplication, corrected to be exact.
class Divider {
public:
    explicit Divider(std::uint64_t divisor)
        : divisor_(divisor), reciprocal_(1.0 / static_cast<double>(divisor))
    {}
    std::uint64_t operator()(std::uint32_t value) const
    {
        auto q = static_cast<std::uint64_t>(static_cast<double>(value) * reciprocal_);
        if (q * divisor_ > value) {
            --q;
        } else if ((q + 1) * divisor_ <= value) {
            ++q;
        }
        return q;
    }

private:
    std::uint64_t divisor_;
    double reciprocal_;
};

class PixelWriter {
public:
    PixelWriter(const HueShiftRun& run, const HueShiftParameters& p, TableWrite what)
        : d_(*run.destination), source_(run.source->bitmapData), coverage_(*run.coverage),
          restore_(what == TableWrite::sourceSamples),
          greyMask_(p.maskToShow == MaskView::blackMask || p.maskToShow == MaskView::whiteMask),
          white_(p.maskToShow == MaskView::whiteMask),
          maskLimitedByCoverage_(p.paintMaskLimitsMasks != 0 && run.coverage->present()),
          rowOf_(static_cast<std::uint64_t>(d_.bytesPerRow)),
          lastPixel_(static_cast<std::uint64_t>((d_.pixelsHigh - 1) * d_.bytesPerRow +
                                                (d_.pixelsWide - 1) * d_.bytesPerPixel))
    {}

    // A location outside the image (a table of another image) is never written.
    bool inside(std::uint32_t location) const { return location <= lastPixel_; }

    // Writes a block's records. Colours written whole (no grey mask, no paint mask) take a loop
    // whose offsets live in locals: a byte store could alias any member read through `this`.
    void writeAll(std::span<const Record> records) const
    {
        if (restore_) {
            for (const Record& record : records) {
                restorePixel(record.location);
            }
            return;
        }
        if (greyMask_ || coverage_.present()) {
            for (const Record& record : records) {
                write(record);
            }
            return;
        }
        std::uint8_t* const base = d_.bitmapData;
        const auto red = d_.redOffset;
        const auto green = d_.greenOffset;
        const auto blue = d_.blueOffset;
        if (d_.hasAlpha) {
            const auto alpha = d_.alphaOffset;
            for (const Record& record : records) {
                std::uint8_t* const p = base + record.location;
                p[red] = record.color.r;
                p[green] = record.color.g;
                p[blue] = record.color.b;
                p[alpha] = record.color.a;
            }
            return;
        }
        for (const Record& record : records) {
            std::uint8_t* const p = base + record.location;
            p[red] = record.color.r;
            p[green] = record.color.g;
            p[blue] = record.color.b;
        }
    }

    void write(const Record& record) const
    {
        if (restore_) {
            restorePixel(record.location);
            return;
        }
        std::uint8_t* const p = d_.bitmapData + record.location;
        if (greyMask_) {
            writeMask(p, record.location, record.color.r);
            return;
        }
        // Mixed with the source's samples, not the destination's: a destination kept from an
        // earlier shift may hold that shift's colour here.
        const unsigned m = coverage(record.location);
        if (m == 0) {
            restorePixel(record.location);
            return;
        }
        if (m == 255) {
            p[d_.redOffset] = record.color.r;
            p[d_.greenOffset] = record.color.g;
            p[d_.blueOffset] = record.color.b;
        } else {
            const std::uint8_t* const s = source_ + record.location;
            p[d_.redOffset] = mixByCoverage(s[d_.redOffset], record.color.r, m);
            p[d_.greenOffset] = mixByCoverage(s[d_.greenOffset], record.color.g, m);
            p[d_.blueOffset] = mixByCoverage(s[d_.blueOffset], record.color.b, m);
        }
        if (d_.hasAlpha) {
            p[d_.alphaOffset] = record.color.a;
        }
    }

private:
    void restorePixel(std::uint32_t location) const
    {
        std::uint8_t* const to = d_.bitmapData + location;
        const std::uint8_t* const from = source_ + location;
        if (to != from) {
            std::memcpy(to, from, static_cast<std::size_t>(d_.bytesPerPixel));
        }
    }

    unsigned coverage(std::uint32_t location) const
    {
        if (!coverage_.present()) {
            return 255;
        }
        const std::uint64_t row = rowOf_(location);
        const auto column =
            static_cast<std::int64_t>(location - row * static_cast<std::uint64_t>(d_.bytesPerRow)) /
            d_.bytesPerPixel;
        return coverage_.at(column, static_cast<std::int64_t>(row));
    }

    void writeMask(std::uint8_t* p, std::uint32_t location, unsigned sample) const
    {
        if (maskLimitedByCoverage_) {
            sample = sample * coverage(location) / 255;
        }
        std::uint8_t value;
        if (d_.premultiplied) {
            const unsigned alpha = p[d_.alphaOffset];
            value = white_ ? premultipliedWhiteMaskSample(sample, alpha)
                           : premultipliedBlackMaskSample(sample, alpha);
        } else {
            value = static_cast<std::uint8_t>(white_ ? 255 - sample : sample);
        }
        p[d_.redOffset] = value;
        p[d_.greenOffset] = value;
        p[d_.blueOffset] = value;
    }

    const PixelManipulationOffsets& d_;
    const std::uint8_t* source_;
    const PaintCoverage& coverage_;
    bool restore_;
    bool greyMask_;
    bool white_;
    bool maskLimitedByCoverage_;
    Divider rowOf_;
    std::uint64_t lastPixel_;
};

// A run of the collected colours, flattened across the workers.
struct ColorRun {
    std::size_t begin;
    std::size_t end;
};

void copySamples(const HueShiftRun& run, std::uint64_t begin, std::uint64_t end)
{
    std::memcpy(run.destination->bitmapData + begin, run.source->bitmapData + begin, end - begin);
}

std::uint64_t sampleBytes(const PixelManipulationOffsets& offsets)
{
    return static_cast<std::uint64_t>(offsets.rep->sampleBytes());
}

// One thread's records of a wave sorted into the wave's blocks. Each block fills its slice of
// one buffer, sized for its even share with some slack, and spills into a list of its own only
// past that: one large buffer rather than a list per block, so that a cold run touches few
// (huge) pages and no list regrows.
class BlockBuckets {
public:
    void reset(std::size_t blocks, std::size_t perBlock)
    {
        perBlock_ = std::max<std::size_t>(1, perBlock);
        if (slices_.size() < blocks * perBlock_) {
            slices_.resize(blocks * perBlock_);
        }
        counts_.assign(blocks, 0);
        spills_.resize(std::max(spills_.size(), blocks));
        for (std::size_t b = 0; b < blocks; ++b) {
            spills_[b].clear();
        }
    }
    void push(std::size_t block, const Record& record)
    {
        std::size_t& count = counts_[block];
        if (count < perBlock_) {
            slices_[block * perBlock_ + count++] = record;
        } else {
            spills_[block].push_back(record);
        }
    }
    std::span<const Record> slice(std::size_t block) const
    {
        return {slices_.data() + block * perBlock_, counts_[block]};
    }
    std::span<const Record> spill(std::size_t block) const { return spills_[block]; }

private:
    std::size_t perBlock_ = 1;
    std::vector<Record> slices_;
    std::vector<std::size_t> counts_;
    std::vector<std::vector<Record>> spills_;
};

// The writer's working memory, kept by each calling thread from run to run: a slider drag
// re-shifts again and again, and fresh pages for the sorted writes cost more here than the
// writes themselves. Bounded by the wave budget.
struct WriteScratch {
    std::vector<TableColor> colors;
    std::vector<std::uint64_t> pixelsBefore;
    std::vector<std::uint32_t> cursor;
    std::vector<BlockBuckets> buckets;
};

} // namespace

void writeTableColors(const HueShiftRun& run, const HueShiftParameters& p,
                      const std::vector<std::vector<TableColor>>& toWrite, unsigned threads,
                      TableWrite what)
{
    const ColorTableRef& table = p.colorTable;
    const PixelManipulationOffsets& d = *run.destination;
    const PixelWriter writer(run, p, what);
    threads = std::max(1u, threads);

    thread_local WriteScratch scratch;
    std::vector<TableColor>& colors = scratch.colors;
    colors.clear();
    for (const auto& list : toWrite) {
        colors.insert(colors.end(), list.begin(), list.end());
    }
    // Runs of colours with about equal numbers of pixels, one per thread.
    std::vector<std::uint64_t>& pixelsBefore = scratch.pixelsBefore;
    pixelsBefore.assign(colors.size() + 1, 0);
    for (std::size_t i = 0; i < colors.size(); ++i) {
        pixelsBefore[i + 1] = pixelsBefore[i] + colors[i].locationCount;
    }
    const std::uint64_t totalPixels = pixelsBefore.back();
    std::vector<ColorRun> runs(threads);
    for (unsigned t = 0; t < threads; ++t) {
        const auto at = [&](unsigned k) {
            return static_cast<std::size_t>(std::lower_bound(pixelsBefore.begin(),
                                                             pixelsBefore.end(),
                                                             totalPixels * k / threads) -
                                            pixelsBefore.begin());
        };
        runs[t] = {std::min(at(t), colors.size()), std::min(at(t + 1), colors.size())};
    }
    runs.back().end = colors.size();

    // Blocks of whole rows, so that a pixel's samples never straddle two blocks; for planar
    // layouts the other planes' samples lie elsewhere, so the source is copied whole first.
    const std::uint64_t imageBytes = sampleBytes(d);
    const auto rowBytes = static_cast<std::uint64_t>(d.bytesPerRow);
    const std::uint64_t blockBytes =
        std::max<std::uint64_t>(1, run.writeLimits.blockBytes / rowBytes) * rowBytes;
    const std::uint64_t blocks = (imageBytes + blockBytes - 1) / blockBytes;
    const Divider blockOf(blockBytes);
    const bool copyByBlock = !run.destinationHoldsSource && !d.isPlanar;
    if (!run.destinationHoldsSource && d.isPlanar) {
        copySamples(run, 0, imageBytes);
    }

    // Waves of consecutive blocks keep the sorted writes within the budget when the pixels are
    // spread evenly; each colour's locations ascend, so a cursor per colour carries over.
    const std::uint64_t waves = std::max<std::uint64_t>(
        1, std::min<std::uint64_t>(blocks, (totalPixels + run.writeLimits.wavePixels - 1) /
                                               run.writeLimits.wavePixels));
    std::vector<std::uint32_t>& cursor = scratch.cursor;
    cursor.assign(colors.size(), 0);
    std::vector<BlockBuckets>& buckets = scratch.buckets;
    buckets.resize(std::max<std::size_t>(buckets.size(), threads));
    std::vector<char> ascending(threads, 1);
    // Each colour's locations lie elsewhere in a table far larger than the caches: ask for
    // them well before they are needed.
    constexpr std::size_t kPrefetchAhead = 24;

    for (std::uint64_t wave = 0; wave < waves; ++wave) {
        if (run.stopRequested()) {
            return;
        }
        const std::uint64_t waveBegin = blocks * wave / waves;
        const std::uint64_t waveEnd = blocks * (wave + 1) / waves;
        const std::uint64_t waveEndByte = std::min(imageBytes, waveEnd * blockBytes);

        runWorkers(threads, [&](unsigned t) {
            BlockBuckets& bucket = buckets[t];
            // Kept from wave to wave (cleared, not freed): each block's even share of the run's
            // pixels with some slack.
            const std::uint64_t share =
                (pixelsBefore[runs[t].end] - pixelsBefore[runs[t].begin]) / blocks * 5 / 4;
            bucket.reset(waveEnd - waveBegin, share);
            for (std::size_t i = runs[t].begin; i < runs[t].end; ++i) {
                if (i + kPrefetchAhead < runs[t].end) {
                    const TableColor& ahead = colors[i + kPrefetchAhead];
                    __builtin_prefetch(table.locations + ahead.firstLocation +
                                       cursor[i + kPrefetchAhead]);
                }
                const std::uint32_t* locations = table.locations + colors[i].firstLocation;
                const std::uint32_t n = colors[i].locationCount;
                std::uint32_t k = cursor[i];
                std::uint32_t previous = k > 0 ? locations[k - 1] : 0;
                for (; k < n && locations[k] < waveEndByte; ++k) {
                    const std::uint32_t location = locations[k];
                    if (k > 0 && location <= previous) {
                        ascending[t] = 0;
                    }
                    previous = location;
                    if (writer.inside(location)) {
                        const std::uint64_t b = blockOf(location);
                        if (b >= waveBegin && b < waveEnd) {
                            bucket.push(b - waveBegin, {location, colors[i].color});
                        } else {
                            ascending[t] = 0;
                        }
                    }
                }
                cursor[i] = k;
            }
        });
        if (std::find(ascending.begin(), ascending.end(), 0) != ascending.end()) {
            break;
        }

        const std::uint64_t waveBlocks = waveEnd - waveBegin;
        const auto writers = static_cast<unsigned>(std::min<std::uint64_t>(threads, waveBlocks));
        runWorkers(writers, [&](unsigned t) {
            const std::uint64_t first = waveBegin + waveBlocks * t / writers;
            const std::uint64_t last = waveBegin + waveBlocks * (t + 1) / writers;
            for (std::uint64_t b = first; b < last; ++b) {
                if (copyByBlock) {
                    copySamples(run, b * blockBytes, std::min(imageBytes, (b + 1) * blockBytes));
                }
                for (unsigned from = 0; from < threads; ++from) {
                    writer.writeAll(buckets[from].slice(b - waveBegin));
                    writer.writeAll(buckets[from].spill(b - waveBegin));
                }
            }
        });
    }

    // A table whose locations do not ascend within each colour (not one the table builder made)
    // is written colour by colour, over whatever the waves wrote so far.
    if (std::find(ascending.begin(), ascending.end(), 0) != ascending.end()) {
        if (copyByBlock) {
            copySamples(run, 0, imageBytes);
        }
        for (const TableColor& c : colors) {
            const std::uint32_t* locations = table.locations + c.firstLocation;
            for (std::uint32_t k = 0; k < c.locationCount; ++k) {
                if (writer.inside(locations[k])) {
                    writer.write({locations[k], c.color});
                }
            }
        }
    }
}

void writeTableColorsByPlan(const HueShiftRun& run, const HueShiftParameters& p,
                            const TableWritePlan& plan,
                            const std::vector<std::vector<TableColor>>& toWrite, unsigned threads)
{
    std::vector<PixelChars> colors;
    colors.reserve(plan.entries.size());
    for (const auto& list : toWrite) {
        for (const TableColor& color : list) {
            colors.push_back(color.color);
        }
    }
    const PixelWriter writer(run, p, TableWrite::colors);
    const std::uint64_t imageBytes = sampleBytes(*run.destination);
    const std::uint64_t blocks = plan.blockBegin.size() - 1;
    const auto writers =
        static_cast<unsigned>(std::clamp<std::uint64_t>(blocks, 1, std::max(1u, threads)));
    // Blocks handed out one at a time: a selection's pixels gather in parts of the picture, so
    // even runs of blocks would leave one thread with most of them.
    std::atomic<std::uint64_t> nextBlock{0};
    runWorkers(writers, [&](unsigned) {
        std::vector<Record> records;
        for (std::uint64_t b = nextBlock++; b < blocks; b = nextBlock++) {
            if (run.stopRequested()) {
                return;
            }
            if (!run.destinationHoldsSource) {
                copySamples(run, b * plan.blockBytes,
                            std::min(imageBytes, (b + 1) * plan.blockBytes));
            }
            records.clear();
            for (std::uint64_t i = plan.blockBegin[b]; i < plan.blockBegin[b + 1]; ++i) {
                records.push_back({plan.pixels[i].location, colors[plan.pixels[i].color]});
            }
            writer.writeAll(records);
        }
    });
}

} // namespace tintorra
