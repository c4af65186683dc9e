#include "engine/VectorisedTable.h"

#include "engine/BatchMath.h"
#include "engine/TableEntryColors.h"

namespace tintorra {

namespace {

// Entries per stretch: the working arrays stay in the first-level cache, as the rows' do.
constexpr std::size_t kStretch = 256;

} // namespace

bool VectorisedTable::serves(const HueShiftRun& run, const HueShiftParameters& p)
{
    const MaskView mask = p.maskToShow;
    return run.vectorised && batch::vectorised() && isLchColorMode(p.colorSpaceModel) &&
           !showsGreyMask(mask) && mask != MaskView::selectionHighlight &&
           mask != MaskView::hoverHighlight;
}

VectorisedTable::VectorisedTable(const HueShiftRun& run, const HueShiftParameters& p,
                                 const OutcomeContext& context)
    // The painted coverage is mixed in by the writers, byte by byte.
    : run_(run), arrays_(kStretch), shift_(p, context, run.pairedChroma, false)
{}

void VectorisedTable::shiftEntries(const ColorTableRef& table, std::uint64_t begin,
                                   std::uint64_t end, std::vector<TableColor>& toWrite)
{
    const rowKernel::Candidates& in = arrays_.candidates();
    const rowKernel::SelectedColors& out = arrays_.selected();
    const SampleEncodeTable& encode = *run_.byteEncode;
    std::uint64_t from = begin;
    while (from < end) {
        // The next stretch's entries that describe pixels, their offsets from `from` as columns.
        std::size_t count = 0;
        std::uint64_t i = from;
        for (; i < end && count < kStretch; ++i) {
            const color_table_lch_entry_info& entry = table.colors[i];
            if (!describesPixels(entry, table)) {
                continue;
            }
            out.L[count] = entry.lightness;
            out.C[count] = entry.chroma;
            out.h[count] = entry.hue;
            in.alpha[count] = entry.alpha;
            in.x[count] = static_cast<std::uint32_t>(i - from);
            ++count;
        }
        const std::size_t selected = rowKernel::avx2::selectLchCandidates(
            shift_.select(), in, count, arrays_.weights(), out);
        rowKernel::avx2::paintShifted(shift_.paint(), out, selected);
        for (std::size_t k = 0; k < selected; ++k) {
            const color_table_lch_entry_info& entry = table.colors[from + out.x[k]];
            const ColorComponents painted{out.paintedR[k], out.paintedG[k], out.paintedB[k],
                                          out.paintedAlpha[k]};
            toWrite.push_back({entry.firstLocation, entry.locationCount,
                               encodedColor(painted, *run_.destination, encode),
                               static_cast<std::uint32_t>(from + out.x[k])});
        }
        from = i;
    }
}

} // namespace tintorra
