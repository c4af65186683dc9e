#include "engine/HueShiftWorkers.h"
#include "engine/SelectionMasks.h"
#include "engine/ShiftOutcome.h"

#include <cstring>

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
        using pixel_detail::loadWord;
        const std::uint8_t* const pixel = pixel_detail::pixelAddress(x, y, s_);
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
        using pixel_detail::storeWord;
        std::uint8_t* const pixel = pixel_detail::pixelAddress(x, y, d_);
        const SampleEncodeTable& encode = *table_;
        storeWord(pixel + d_.redOffset, static_cast<std::uint16_t>(encode(c.c0)));
        storeWord(pixel + d_.greenOffset, static_cast<std::uint16_t>(encode(c.c1)));
        storeWord(pixel + d_.blueOffset, static_cast<std::uint16_t>(encode(c.c2)));
        if (d_.hasAlpha) {
            storeWord(pixel + d_.alphaOffset, pixel_detail::encodeWord(c.alpha));
        }
    }

private:
    const PixelManipulationOffsets& d_;
    const SampleEncodeTable* table_;
};

} // namespace

void rowWorker(const HueShiftTask& task)
{
    printWorkerTrace(task.index);
    const HueShiftRun& run = *task.run;
    const HueShiftParameters& p = task.parameters;
    const PixelManipulationOffsets& source = *run.source;
    const PixelManipulationOffsets& destination = *run.destination;
    const PaintCoverage& coverage = *run.coverage;
    const OutcomeContext context{&p, p.gamut.get(), run.M, run.MI, PartialHighlight::reduceChroma};
    const std::int64_t mode = p.colorSpaceModel;
    const bool lch = isLchColorMode(mode);
    const bool filterByLuvHue = mode == kColorModeLChuv;
    const bool greyMask = showsGreyMask(p.maskToShow);
    const bool white = p.maskToShow == kShowWhiteMask;
    const bool limitedByCoverage = p.paintMaskLimitsMasks != 0 && coverage.present();
    const LinearReader read(source, run.wordDecode.get());
    const LinearWriter write(destination, run.wordEncode.get());
    const auto rowBytes = static_cast<std::size_t>(source.bytesPerRow);

    const auto end = static_cast<std::int64_t>(task.firstItem + task.itemCount);
    for (auto y = static_cast<std::int64_t>(task.firstItem); y < end; ++y) {
        // Whatever is not written below keeps the source's samples.
        if (!run.destinationHoldsSource) {
            std::memcpy(destination.bitmapData + y * destination.bytesPerRow,
                        source.bitmapData + y * source.bytesPerRow, rowBytes);
        }
        for (std::int64_t x = 0; x < source.pixelsWide; ++x) {
            const ColorComponents linear = read(x, y);
            ShiftOutcome outcome;
            // Transparent pixels and (over Luv) hues off the selectable arc have weight 0.
            if (linear.alpha != 0.0 && (!filterByLuvHue || run.luvHueFilter.mayBeSelected(
                                                               linear.c0, linear.c1, linear.c2))) {
                outcome = lch ? lchOutcome(lchFromLinearRgb(linear, mode, context.M), context)
                              : cylinderOutcome(cylinderFromLinearRgb(linear, mode), context);
            }
            if (greyMask) {
                // Stored as samples directly, without gamma: a weight of 0.5 is 128 of 255.
                double v = outcome.weight > 0.0 ? outcome.weight : 0.0;
                if (limitedByCoverage) {
                    v *= coverage.at(x, y) / 255.0;
                }
                const double grey = white ? 1.0 - v : v;
                writeGammaFloats(x, y, destination, {grey, grey, grey, 1.0});
                continue;
            }
            if (!(outcome.weight > 0.0)) {
                continue;
            }
            const unsigned painted = coverage.present() ? coverage.at(x, y) : 255;
            if (painted != 0) {
                write(x, y, mixColors(linear, outcome.rgb, painted / 255.0));
            }
        }
    }
}

} // namespace tintorra
