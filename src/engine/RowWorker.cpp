#include "engine/HueShiftWorkers.h"
#include "engine/SelectionMasks.h"
#include "engine/ShiftOutcome.h"

namespace tintorra {

namespace {

// The pixel's samples as they are, at 8 or 16 bits, alpha only when both bitmaps have it.
void copySamples(std::int64_t x, std::int64_t y, const PixelManipulationOffsets& source,
                 const PixelManipulationOffsets& destination)
{
    if (&source == &destination) {
        return;
    }
    if (source.bitsPerSample == 8) {
        copyPixel(x, y, source, destination);
        return;
    }
    PixelWords words;
    readGammaWords(x, y, source, words);
    std::uint8_t* const to = pixel_detail::pixelAddress(x, y, destination);
    pixel_detail::storeWord(to + destination.redOffset, words.r);
    pixel_detail::storeWord(to + destination.greenOffset, words.g);
    pixel_detail::storeWord(to + destination.blueOffset, words.b);
    if (source.hasAlpha && destination.hasAlpha) {
        pixel_detail::storeWord(to + destination.alphaOffset, words.a);
    }
}

ShiftOutcome pixelOutcome(const ColorComponents& linear, bool lch, const OutcomeContext& context)
{
    const std::int64_t mode = context.parameters->colorSpaceModel;
    if (lch) {
        return lchOutcome(lchFromLinearRgb(linear, mode, context.M), context);
    }
    return cylinderOutcome(cylinderFromLinearRgb(linear, mode), context);
}

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
    const bool lch = isLchColorMode(p.colorSpaceModel);
    const bool greyMask = showsGreyMask(p.maskToShow);
    const bool white = p.maskToShow == kShowWhiteMask;
    const bool limitedByCoverage = p.paintMaskLimitsMasks != 0 && coverage.present();

    const auto end = static_cast<std::int64_t>(task.firstItem + task.itemCount);
    for (auto y = static_cast<std::int64_t>(task.firstItem); y < end; ++y) {
        for (std::int64_t x = 0; x < source.pixelsWide; ++x) {
            ColorComponents linear;
            readLinearFloats(x, y, source, linear);
            const ShiftOutcome outcome = pixelOutcome(linear, lch, context);
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
                copySamples(x, y, source, destination);
                continue;
            }
            const unsigned painted = coverage.present() ? coverage.at(x, y) : 255;
            if (painted == 0) {
                copySamples(x, y, source, destination);
                continue;
            }
            writeLinearFloats(x, y, destination, mixColors(linear, outcome.rgb, painted / 255.0));
        }
    }
}

} // namespace tintorra
