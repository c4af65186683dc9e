#include "HueShiftTestSupport.h"
#include "colour/ColorConversions.h"
#include "colour/ColorMatrices.h"
#include "engine/HueShift.h"
#include "engine/SelectionMasks.h"
#include "engine/ShiftOutcome.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ostream>

namespace tintorra {
namespace {

// A 16-bit picture of many colours with some partial transparency.
KVBitmapPtr picture(bool premultiplied)
{
    const KVBitmapPtr bitmap = test::makeRgbBitmap(41, 17, 16, true, premultiplied);
    for (std::int64_t y = 0; y < 17; ++y) {
        for (std::int64_t x = 0; x < 41; ++x) {
            const ColorComponents c = hsbToRgb({x / 41.0, 0.1 + 0.05 * y, 0.3 + 0.017 * x, 1.0});
            const double a = x % 7 == 3 ? 0.5 : (x == 11 && y == 4 ? 0.0 : 1.0);
            const auto word = [&](double v) {
                return static_cast<std::uint16_t>((premultiplied ? v * a : v) * 65535.0 + 0.5);
            };
            test::setWords(bitmap, x, y,
                           {word(c.c0), word(c.c1), word(c.c2),
                            static_cast<std::uint16_t>(a * 65535.0 + 0.5)});
        }
    }
    return bitmap;
}

// The picture shifted one pixel at a time through the single-colour functions and the pixel
// layer's own readers and writers, as the row worker's steps describe it.
KVBitmapPtr shiftedPixelByPixel(const KVBitmapPtr& source, HueShiftParameters p)
{
    normalizeHueShiftParameters(p);
    const KVBitmapPtr out = source->copy();
    const PixelManipulationOffsets in =
        pixelManipulationOffsetsWithImageGamma(source, p.imageGamma);
    const PixelManipulationOffsets to = pixelManipulationOffsetsWithImageGamma(out, p.imageGamma);
    OutcomeContext context{&p, p.gamut.get(), {}, {}, PartialHighlight::reduceChroma};
    if (p.gamut) {
        p.gamut->copy_RGB_to_XYZ_matrix(context.M);
        p.gamut->copy_XYZ_to_RGB_matrix(context.MI);
    } else {
        matrixFromColorSpace(context.M, &source->colorSpace());
        inverseMatrixFromColorSpace(context.MI, &source->colorSpace());
    }
    const ColorSpaceModel mode = p.colorSpaceModel;
    for (std::int64_t y = 0; y < source->pixelsHigh(); ++y) {
        for (std::int64_t x = 0; x < source->pixelsWide(); ++x) {
            ColorComponents linear;
            readLinearFloats(x, y, in, linear);
            const ShiftOutcome o =
                isLchColorMode(mode)
                    ? lchOutcome(lchFromLinearRgb(linear, mode, context.M), context)
                    : cylinderOutcome(cylinderFromLinearRgb(linear, mode), context);
            if (showsGreyMask(p.maskToShow)) {
                const double v = o.weight > 0.0 ? o.weight : 0.0;
                const double grey = p.maskToShow == MaskView::whiteMask ? 1.0 - v : v;
                writeGammaFloats(x, y, to, {grey, grey, grey, 1.0});
            } else if (o.weight > 0.0) {
                writeLinearFloats(x, y, to, o.rgb);
            }
        }
    }
    return out;
}

struct KernelCase {
    ColorSpaceModel model;
    MaskView mask;
    double targetBri;
    double targetSat;
    bool preserveHue;
};

void PrintTo(const KernelCase& c, std::ostream* os)
{
    *os << "{model=" << colorSpaceModelNumber(c.model) << " mask=" << maskViewNumber(c.mask)
        << " targetBri=" << c.targetBri << " targetSat=" << c.targetSat
        << " preserveHue=" << c.preserveHue << "}";
}

class RowKernel : public testing::TestWithParam<KernelCase> {};

// The row worker takes its powers, roots and angles four at a time; the picture it makes is that
// of the colour-by-colour functions to within a unit of the 16-bit samples.
TEST_P(RowKernel, MatchesThePixelByPixelShift)
{
    const KernelCase& c = GetParam();
    for (const bool premultiplied : {false, true}) {
        HueShiftParameters p = test::selectEverything(c.model);
        p.hueLowerFalloff = 0.1;
        p.hueLower = 0.2;
        p.hueUpper = 0.55;
        p.hueUpperFalloff = 0.7;
        p.lightUpper = 0.8;
        p.lightUpperFalloff = 0.95;
        p.targetHue = 0.85;
        p.targetBri = c.targetBri;
        p.targetSat = c.targetSat;
        p.saturationGain = 1.2;
        p.preserveHue = c.preserveHue ? 1 : 0;
        p.maskToShow = c.mask;
        p.brightnessToHighlight = 0.45;
        const KVBitmapPtr source = picture(premultiplied);
        const KVBitmapPtr engine = test::runShift(source, p).result;
        const KVBitmapPtr reference = shiftedPixelByPixel(source, p);
        int worst = 0;
        for (std::int64_t y = 0; y < source->pixelsHigh(); ++y) {
            for (std::int64_t x = 0; x < source->pixelsWide(); ++x) {
                const PixelWords a = test::wordsAt(engine, x, y);
                const PixelWords b = test::wordsAt(reference, x, y);
                worst = std::max({worst, std::abs(a.r - b.r), std::abs(a.g - b.g),
                                  std::abs(a.b - b.b), std::abs(a.a - b.a)});
            }
        }
        EXPECT_LE(worst, 1) << premultiplied;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, RowKernel,
    testing::Values(KernelCase{ColorSpaceModel::LChuv, MaskView::shiftedImage, 0.0, 0.4, false},
                    KernelCase{ColorSpaceModel::LChuv, MaskView::shiftedImage, 0.3, -0.5, true},
                    KernelCase{ColorSpaceModel::LChab, MaskView::shiftedImage, -0.4, 1.0, false},
                    KernelCase{ColorSpaceModel::LChab, MaskView::selectionHighlight, 0.0, 0.0,
                               false},
                    KernelCase{ColorSpaceModel::LChuv, MaskView::hoverHighlight, 0.0, 0.2, false},
                    KernelCase{ColorSpaceModel::LChuv, MaskView::blackMask, 0.0, 0.0, false},
                    KernelCase{ColorSpaceModel::HCL, MaskView::shiftedImage, 0.5, 0.3, false},
                    KernelCase{ColorSpaceModel::HSB, MaskView::shiftedImage, 0.0, -1.0, false},
                    KernelCase{ColorSpaceModel::HSL, MaskView::shiftedImage, -0.2, 0.6, true},
                    KernelCase{ColorSpaceModel::HSB, MaskView::selectionHighlight, 0.0, 0.0, false},
                    KernelCase{ColorSpaceModel::HCL, MaskView::hoverHighlight, 0.0, 0.0, false},
                    KernelCase{ColorSpaceModel::HSL, MaskView::whiteMask, 0.0, 0.0, false}));

} // namespace
} // namespace tintorra
