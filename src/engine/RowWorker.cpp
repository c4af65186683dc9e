#include "engine/BatchMath.h"
#include "engine/HueShiftWorkers.h"
#include "engine/SelectionMasks.h"
#include "engine/ShiftBatch.h"
#include "engine/ShiftOutcome.h"
#include "engine/VectorisedRows.h"

#include <cstring>
#include <memory>
#include <vector>

namespace tintorra {

namespace {

// Linear straight-alpha colour of a pixel, as readLinearFloats gives it, with the powers of
// 16-bit samples looked up.
class LinearReader {
public:
    LinearReader(const PixelManipulationOffsets& source, const WordDecodeTable* table)
        : s_(source), table_(source.bitsPerSample == 16 ? table : nullptr)
    {}

    ColorComponents operator()(std::int64_t x, std::int64_t y) const
    {
        ColorComponents c;
        if (table_ == nullptr) {
            readLinearFloats(x, y, s_, c);
            return c;
        }
        using pixelDetail::loadWord;
        const std::uint8_t* const pixel = pixelDetail::pixelAddress(x, y, s_);
        const std::uint16_t alpha = s_.hasAlpha ? loadWord(pixel + s_.alphaOffset) : 65535;
        // A premultiplied sample that is not opaque is divided before the power: no lookup.
        if (s_.premultiplied && alpha != 65535) {
            readLinearFloats(x, y, s_, c);
            return c;
        }
        const WordDecodeTable& linear = *table_;
        return {linear[loadWord(pixel + s_.redOffset)], linear[loadWord(pixel + s_.greenOffset)],
                linear[loadWord(pixel + s_.blueOffset)], alpha / 65535.0};
    }

private:
    const PixelManipulationOffsets& s_;
    const WordDecodeTable* table_;
};

// Stores a linear straight-alpha colour as writeLinearFloats does, with the powers of 16-bit
// samples looked up.
class LinearWriter {
public:
    LinearWriter(const PixelManipulationOffsets& destination, const SampleEncodeTable* table)
        : d_(destination), table_(destination.bitsPerSample == 16 ? table : nullptr)
    {}

    void operator()(std::int64_t x, std::int64_t y, const ColorComponents& c) const
    {
        const bool premultiply = d_.hasAlpha && d_.premultiplied;
        if (table_ == nullptr || (premultiply && c.alpha != 1.0)) {
            writeLinearFloats(x, y, d_, c);
            return;
        }
        using pixelDetail::storeWord;
        std::uint8_t* const pixel = pixelDetail::pixelAddress(x, y, d_);
        const SampleEncodeTable& encode = *table_;
        storeWord(pixel + d_.redOffset, static_cast<std::uint16_t>(encode(c.c0)));
        storeWord(pixel + d_.greenOffset, static_cast<std::uint16_t>(encode(c.c1)));
        storeWord(pixel + d_.blueOffset, static_cast<std::uint16_t>(encode(c.c2)));
        if (d_.hasAlpha) {
            storeWord(pixel + d_.alphaOffset, pixelDetail::encodeWord(c.alpha));
        }
    }

private:
    const PixelManipulationOffsets& d_;
    const SampleEncodeTable* table_;
};

// The working arrays of one worker, kept from row to row. Candidates are the pixels whose
// weight is computed (not transparent, hue possibly selectable), with their linear colours;
// selected ones have a weight above 0.
struct RowScratch {
    std::vector<ColorComponents> linear;
    std::vector<std::uint32_t> candidate;
    std::vector<double> weight;
    ShiftBatch batch;

    void reserve(std::size_t n)
    {
        linear.resize(n);
        candidate.resize(n);
        weight.resize(n);
        batch.reserve(n);
    }
};

void writeSelected(std::int64_t y, std::size_t count, const RowScratch& s,
                   const PaintCoverage& coverage, const LinearWriter& write)
{
    for (std::size_t k = 0; k < count; ++k) {
        const std::uint32_t x = s.candidate[s.batch.selected[k]];
        const unsigned painted = coverage.present() ? coverage.at(x, y) : 255;
        if (painted != 0) {
            write(x, y, mixColors(s.linear[s.batch.selected[k]], s.batch.rgb[k], painted / 255.0));
        }
    }
}

// Row y's candidates, in order of x, into the scratch; returns their count.
std::size_t readRow(const HueShiftRun& run, ColorSpaceModel mode, std::int64_t y,
                    const LinearReader& read, RowScratch& s)
{
    const auto wide = static_cast<std::size_t>(run.source->pixelsWide);
    std::size_t candidates = 0;
    for (std::size_t x = 0; x < wide; ++x) {
        const ColorComponents linear = read(static_cast<std::int64_t>(x), y);
        // Transparent pixels and (over Luv) hues off the selectable arc have weight 0.
        if (linear.alpha != 0.0 &&
            (mode != ColorSpaceModel::LChuv ||
             run.luvHueFilter.mayBeSelected(linear.c0, linear.c1, linear.c2))) {
            s.linear[candidates] = linear;
            s.candidate[candidates++] = static_cast<std::uint32_t>(x);
        }
    }
    return candidates;
}

// The rest of a row once its candidates are read: every candidate's weight, then the selected
// ones' colours, each stage over the whole row so that the powers, roots and angles go four at
// a time.
void shiftCandidates(const HueShiftRun& run, const HueShiftParameters& p,
                     const OutcomeContext& context, std::int64_t y, std::size_t candidates,
                     const LinearWriter& write, RowScratch& s)
{
    const PixelManipulationOffsets& source = *run.source;
    const PixelManipulationOffsets& destination = *run.destination;
    const PaintCoverage& coverage = *run.coverage;
    const ColorSpaceModel mode = p.colorSpaceModel;
    const bool lch = isLchColorMode(mode);
    const auto wide = static_cast<std::size_t>(source.pixelsWide);

    ShiftBatch& colors = s.batch;
    if (lch) {
        lchOfLinearColors(s.linear.data(), candidates, mode, context.M, colors);
    } else {
        for (std::size_t j = 0; j < candidates; ++j) {
            colors.cylinder[j] = cylinderFromLinearRgb(s.linear[j], mode);
        }
    }

    std::size_t selected = 0;
    for (std::size_t j = 0; j < candidates; ++j) {
        const Selection selection = lch ? lchSelection(colors.lch[j], p, context.gamut)
                                        : cylinderSelection(colors.cylinder[j], p);
        s.weight[j] = selection.weight;
        if (selection.weight > 0.0) {
            colors.selected[selected] = static_cast<std::uint32_t>(j);
            colors.selection[selected] = selection;
            ++selected;
        }
    }

    if (showsGreyMask(p.maskToShow)) {
        // Every pixel, stored as samples directly, without gamma: weight 0.5 is 128 of 255.
        const bool white = p.maskToShow == MaskView::whiteMask;
        const bool limited = p.paintMaskLimitsMasks != 0 && coverage.present();
        std::size_t j = 0;
        for (std::size_t x = 0; x < wide; ++x) {
            double v = 0.0;
            if (j < candidates && s.candidate[j] == x) {
                v = s.weight[j] > 0.0 ? s.weight[j] : 0.0;
                ++j;
            }
            if (limited) {
                v *= coverage.at(static_cast<std::int64_t>(x), y) / 255.0;
            }
            const double grey = white ? 1.0 - v : v;
            writeGammaFloats(static_cast<std::int64_t>(x), y, destination, {grey, grey, grey, 1.0});
        }
        return;
    }

    if (lch) {
        paintSelectedLch(colors, selected, context);
    } else {
        paintSelectedCylinders(colors, selected, context);
    }
    writeSelected(y, selected, s, coverage, write);
}

} // namespace

void rowWorker(const HueShiftTask& task)
{
    printWorkerTrace(task.index);
    const HueShiftRun& run = *task.run;
    const HueShiftParameters& p = task.parameters;
    const PixelManipulationOffsets& source = *run.source;
    const PixelManipulationOffsets& destination = *run.destination;
    const OutcomeContext context{&p, p.gamut.get(), run.M, run.MI, PartialHighlight::reduceChroma};
    const LinearReader read(source, run.wordDecode.get());
    const LinearWriter write(destination, run.wordEncode.get());
    const auto rowBytes = static_cast<std::size_t>(source.bytesPerRow);
    std::unique_ptr<VectorisedRows> vectorised;
    if (VectorisedRows::available(run)) {
        vectorised = std::make_unique<VectorisedRows>(run, p, context);
    }
    // The scalar steps' arrays, row-wide, only where they are used: fresh memory is dear.
    const bool wholeRows = vectorised && vectorised->shiftsWholeRows();
    RowScratch scratch;
    if (!wholeRows) {
        scratch.reserve(static_cast<std::size_t>(source.pixelsWide));
    }

    const auto end = static_cast<std::int64_t>(task.firstItem + task.itemCount);
    for (auto y = static_cast<std::int64_t>(task.firstItem); y < end; ++y) {
        if (run.stopRequested()) {
            return;
        }
        run.advance(1, task.index);
        if (wholeRows) {
            vectorised->shiftRow(y);
            continue;
        }
        // Whatever is not written below keeps the source's samples.
        if (!run.destinationHoldsSource) {
            std::memcpy(destination.bitmapData + y * destination.bytesPerRow,
                        source.bitmapData + y * source.bytesPerRow, rowBytes);
        }
        const std::size_t candidates =
            vectorised ? vectorised->readRow(y, scratch.linear.data(), scratch.candidate.data())
                       : readRow(run, p.colorSpaceModel, y, read, scratch);
        shiftCandidates(run, p, context, y, candidates, write, scratch);
    }
}

} // namespace tintorra
