#include "common/Diagnostics.h"
#include "engine/HueShiftWorkers.h"
#include "engine/SelectionMasks.h"
#include "engine/ShiftBatch.h"
#include "engine/ShiftOutcome.h"
#include "engine/TableEntryColors.h"
#include "engine/VectorisedTable.h"

#include <algorithm>
#include <cstdio>

namespace tintorra {

namespace {

// How many entries the four-lane stages shift between two looks at the stop request.
constexpr std::uint64_t kEntriesBetweenChecks = 4096;

// An entry's stored colour in the form the weights are computed on.
ShiftOutcome entryOutcome(const color_table_lch_entry_info& entry, bool lch, ColorSpaceModel mode,
                          const OutcomeContext& context)
{
    if (lch) {
        return lchOutcome({entry.lightness, entry.chroma, entry.hue, entry.alpha}, context);
    }
    // The table keeps HCL's own saturation; HSB and HSL test their S.
    const double saturation = mode == ColorSpaceModel::HCL ? entry.saturation : entry.chroma;
    return cylinderOutcome({entry.hue, entry.chroma, entry.lightness, entry.alpha, saturation},
                           context);
}

} // namespace

void colorTableWorker(const HueShiftTask& task, std::vector<TableColor>& toWrite)
{
    printWorkerTrace(task.index);
    const HueShiftRun& run = *task.run;
    const HueShiftParameters& p = task.parameters;
    const ColorTableRef& table = p.colorTable;
    const OutcomeContext context{&p, p.gamut.get(), run.M, run.MI,
                                 PartialHighlight::halveLightness};
    const bool lch = isLchColorMode(p.colorSpaceModel);
    const std::uint64_t first = task.firstItem;
    const std::uint64_t end = task.firstItem + task.itemCount;
    // Entries off the arc of selectable hues have weight 0 and are never computed.
    const auto candidates =
        table.sortedByHue ? entriesOnHueArc(table.colors, first, end, run.selectableHues)
                          : std::vector<std::pair<std::uint64_t, std::uint64_t>>{{first, end}};

    if (showsGreyMask(p.maskToShow)) {
        // Every pixel is written; weight 0 where no candidate says otherwise.
        toWrite.reserve(task.itemCount);
        auto candidate = candidates.begin();
        for (std::uint64_t i = first; i < end; ++i) {
            const color_table_lch_entry_info& entry = table.colors[i];
            while (candidate != candidates.end() && candidate->second <= i) {
                ++candidate;
            }
            if (!describesPixels(entry, table)) {
                continue;
            }
            double weight = 0.0;
            if (candidate != candidates.end() && candidate->first <= i) {
                weight = entryOutcome(entry, lch, p.colorSpaceModel, context).weight;
            }
            const auto sample = static_cast<std::uint8_t>(maskSample(weight > 0.0 ? weight : 0.0));
            toWrite.push_back({entry.firstLocation,
                               entry.locationCount,
                               {sample, 0, 0, 0},
                               static_cast<std::uint32_t>(i)});
        }
        return;
    }

    // Room for every candidate at once: a list that grows by doubling touches fresh small pages
    // again and again, and a large one can be given huge pages.
    std::uint64_t candidateCount = 0;
    for (const auto& [begin, stop] : candidates) {
        candidateCount += stop - begin;
    }
    toWrite.reserve(toWrite.size() + static_cast<std::size_t>(candidateCount));

    if (VectorisedTable::serves(run, p)) {
        VectorisedTable vectorised(run, p, context);
        for (const auto& [begin, stop] : candidates) {
            for (std::uint64_t from = begin; from < stop; from += kEntriesBetweenChecks) {
                if (run.stopRequested()) {
                    return;
                }
                const std::uint64_t to = std::min(stop, from + kEntriesBetweenChecks);
                vectorised.shiftEntries(table, from, to, toWrite);
                run.advance(to - from, task.index);
            }
        }
        return;
    }

    // The selected colours of each stretch of candidates are painted together.
    constexpr std::size_t kStretch = 1024;
    const SampleEncodeTable& encode = *run.byteEncode;
    ShiftBatch batch;
    batch.reserve(kStretch);
    for (const auto& [begin, stop] : candidates) {
        for (std::uint64_t from = begin; from < stop; from += kStretch) {
            if (run.stopRequested()) {
                return;
            }
            const auto count =
                static_cast<std::size_t>(std::min<std::uint64_t>(kStretch, stop - from));
            std::size_t selected = 0;
            for (std::size_t j = 0; j < count; ++j) {
                const color_table_lch_entry_info& entry = table.colors[from + j];
                if (!describesPixels(entry, table)) {
                    continue;
                }
                Selection selection;
                if (lch) {
                    batch.lch[j] = {entry.lightness, entry.chroma, entry.hue, entry.alpha};
                    selection = lchSelection(batch.lch[j], p, context.gamut);
                } else {
                    // The table keeps HCL's own saturation; HSB and HSL test their S.
                    const double saturation =
                        p.colorSpaceModel == ColorSpaceModel::HCL ? entry.saturation : entry.chroma;
                    batch.cylinder[j] = {entry.hue, entry.chroma, entry.lightness, entry.alpha,
                                         saturation};
                    selection = cylinderSelection(batch.cylinder[j], p);
                }
                if (selection.weight > 0.0) {
                    batch.selected[selected] = static_cast<std::uint32_t>(j);
                    batch.selection[selected] = selection;
                    ++selected;
                }
            }
            if (lch) {
                paintSelectedLch(batch, selected, context);
            } else {
                paintSelectedCylinders(batch, selected, context);
            }
            for (std::size_t k = 0; k < selected; ++k) {
                const color_table_lch_entry_info& entry = table.colors[from + batch.selected[k]];
                toWrite.push_back({entry.firstLocation, entry.locationCount,
                                   encodedColor(batch.rgb[k], *run.destination, encode),
                                   static_cast<std::uint32_t>(from + batch.selected[k])});
            }
            run.advance(count, task.index);
        }
    }
}

void printWorkerTrace(unsigned long index)
{
    diagnostic("thread: %lu\n", index);
}

} // namespace tintorra
