#include "HueShiftTestSupport.h"
#include "colour/ColorConversions.h"
#include "engine/HueShift.h"
#include "engine/SelectionMasks.h"
#include "engine/ShiftOutcome.h"

#include <gtest/gtest.h>

#include <ostream>

namespace tintorra {
namespace {

using test::charsAt;
using test::makeRgbBitmap;
using test::runShift;
using test::selectEverything;
using test::setChars;
using test::wordsAt;

// Cyan has HSB hue 0.5 exactly; a fall-off from 0.25 to 0.75 gives it weight 0.5.
HueShiftParameters halfSelectsCyan(MaskView mask)
{
    HueShiftParameters p = selectEverything(ColorSpaceModel::HSB);
    p.hueLowerFalloff = 0.25;
    p.hueLower = 0.75;
    p.hueUpper = 0.85;
    p.hueUpperFalloff = 0.9;
    p.maskToShow = mask;
    return p;
}

// Row 0: cyan (weight 0.5), red (weight 0), transparent cyan; row 1: magenta (hue 5/6, weight 1).
KVBitmapPtr maskPicture(std::int64_t bits, bool premultiplied)
{
    const KVBitmapPtr bitmap = makeRgbBitmap(3, 2, bits, true, premultiplied);
    setChars(bitmap, 0, 0, {0, 255, 255, 255});
    setChars(bitmap, 1, 0, {255, 0, 0, 255});
    setChars(bitmap, 2, 0, {0, 0, 0, 0});
    for (std::int64_t x = 0; x < 3; ++x) {
        setChars(bitmap, x, 1, {255, 0, 255, 255});
    }
    return bitmap;
}

struct MaskCase {
    MaskView mask;
    int grey[3]; // cyan, red, transparent
    int selected;
};

void PrintTo(const MaskCase& c, std::ostream* os)
{
    *os << "{mask=" << maskViewNumber(c.mask) << " grey=" << c.grey[0] << "," << c.grey[1] << ","
        << c.grey[2] << " selected=" << c.selected << "}";
}

class GreyMasks : public testing::TestWithParam<MaskCase> {};

// White = selected in the black mask, black = selected in the white mask; weights are stored
// as samples, so weight 0.5 is 128, not a linear-light half.
TEST_P(GreyMasks, WriteTheWeightsOfEveryPixel)
{
    const MaskCase& c = GetParam();
    for (const std::int64_t bits : {8, 16}) {
        const KVBitmapPtr result =
            runShift(maskPicture(bits, false), halfSelectsCyan(c.mask)).result;
        ASSERT_NE(result, nullptr);
        for (std::int64_t x = 0; x < 3; ++x) {
            // The table writes 255 - 128 for a half weight, the rows 1 - 0.5: one code apart.
            const PixelChars p = charsAt(result, x, 0);
            EXPECT_NEAR(p.r, c.grey[x], x == 0 ? 1 : 0) << bits << " " << x;
            EXPECT_EQ(p.g, p.r) << bits << " " << x;
            EXPECT_EQ(p.b, p.r) << bits << " " << x;
            EXPECT_EQ(charsAt(result, x, 1).r, c.selected);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Masks, GreyMasks,
                         testing::Values(MaskCase{MaskView::blackMask, {128, 0, 0}, 255},
                                         MaskCase{MaskView::whiteMask, {127, 255, 255}, 0}));

TEST(GreyMasks, PremultipliedTableMasksScaleByTheAlphaByte)
{
    const KVBitmapPtr source = makeRgbBitmap(2, 1, 8, true, true);
    setChars(source, 0, 0, {0, 100, 100, 100}); // cyan at alpha 100, premultiplied
    setChars(source, 1, 0, {0, 200, 200, 200});
    for (const MaskView mask : {MaskView::blackMask, MaskView::whiteMask}) {
        const KVBitmapPtr result = runShift(source, halfSelectsCyan(mask)).result;
        for (std::int64_t x = 0; x < 2; ++x) {
            const unsigned a = x == 0 ? 100 : 200;
            const std::uint8_t expected = mask == MaskView::blackMask
                                              ? premultipliedBlackMaskSample(128, a)
                                              : premultipliedWhiteMaskSample(128, a);
            EXPECT_EQ(charsAt(result, x, 0).r, expected) << maskViewNumber(mask) << " " << x;
            EXPECT_EQ(charsAt(result, x, 0).a, a);
        }
    }
}

TEST(GreyMasks, NearNeutralPicturesAreBlackInTheLchModes)
{
    for (const ColorSpaceModel model : {ColorSpaceModel::LChuv, ColorSpaceModel::LChab}) {
        for (const std::int64_t bits : {8, 16}) {
            const KVBitmapPtr source = makeRgbBitmap(4, 4, bits, false);
            for (std::int64_t i = 0; i < 16; ++i) {
                const auto v = static_cast<std::uint8_t>(i * 17);
                setChars(source, i % 4, i / 4, {v, v, v, 255});
            }
            HueShiftParameters p = selectEverything(model);
            p.maskToShow = MaskView::blackMask;
            const KVBitmapPtr black = runShift(source, p).result;
            p.maskToShow = MaskView::whiteMask;
            const KVBitmapPtr white = runShift(source, p).result;
            for (std::int64_t i = 0; i < 16; ++i) {
                EXPECT_EQ(charsAt(black, i % 4, i / 4), (PixelChars{0, 0, 0, 255}));
                EXPECT_EQ(charsAt(white, i % 4, i / 4), (PixelChars{255, 255, 255, 255}));
            }
        }
    }
}

// The painted masks limit the grey masks unless the mask brush is in use.
TEST(GreyMasks, ThePaintMaskLimitsThemWhenTheFlagIsSet)
{
    for (const std::int64_t bits : {8, 16}) {
        HueShiftParameters p = halfSelectsCyan(MaskView::blackMask);
        p.exclusionMask = KVBitmap::deviceWhite8Rep(3, 2);
        p.exclusionMask->bitmapData()[p.exclusionMask->bytesPerRow() + 1] =
            255; // magenta at (1, 1)
        p.exclusionMask->bitmapData()[p.exclusionMask->bytesPerRow() + 2] = 128; // and (2, 1)
        const KVBitmapPtr limited = runShift(maskPicture(bits, false), p).result;
        EXPECT_EQ(charsAt(limited, 0, 1).r, 255);
        EXPECT_EQ(charsAt(limited, 1, 1).r, 0);
        EXPECT_NEAR(charsAt(limited, 2, 1).r, 127, 1);
        p.paintMaskLimitsMasks = 0;
        const KVBitmapPtr unlimited = runShift(maskPicture(bits, false), p).result;
        EXPECT_EQ(charsAt(unlimited, 1, 1).r, 255);
    }
}

// Painting: a pixel whose coverage is 0 is never changed; inclusion limits the shift to what is
// painted and exclusion takes painted parts away again.
TEST(PaintMask, CoverageDecidesWhereTheShiftApplies)
{
    for (const std::int64_t bits : {8, 16}) {
        HueShiftParameters p = selectEverything(ColorSpaceModel::HSB);
        p.targetHue = 0.1;
        p.inclusionMask = KVBitmap::deviceWhite8Rep(3, 2);
        p.exclusionMask = KVBitmap::deviceWhite8Rep(3, 2);
        std::uint8_t* include = p.inclusionMask->bitmapData();
        std::uint8_t* exclude = p.exclusionMask->bitmapData();
        const std::int64_t row = p.inclusionMask->bytesPerRow();
        include[row + 0] = 255;
        include[row + 1] = 255;
        exclude[row + 1] = 255;
        include[row + 2] = 128;
        const KVBitmapPtr source = maskPicture(bits, false);
        const KVBitmapPtr result = runShift(source, p).result;
        const KVBitmapPtr full = runShift(source, selectEverything(ColorSpaceModel::HSB)).result;
        HueShiftParameters unpainted = p;
        unpainted.inclusionMask = nullptr;
        unpainted.exclusionMask = nullptr;
        const KVBitmapPtr shifted = runShift(source, unpainted).result;

        EXPECT_EQ(wordsAt(result, 0, 0), wordsAt(source, 0, 0)) << bits;  // not included
        EXPECT_EQ(wordsAt(result, 0, 1), wordsAt(shifted, 0, 1)) << bits; // included
        EXPECT_EQ(wordsAt(result, 1, 1), wordsAt(source, 1, 1)) << bits;  // excluded again
        // Half covered: between the source and the shifted colour.
        const PixelChars half = charsAt(result, 2, 1);
        const PixelChars from = charsAt(source, 2, 1);
        const PixelChars to = charsAt(shifted, 2, 1);
        for (const auto& [h, a, b] :
             {std::tuple{half.r, from.r, to.r}, std::tuple{half.g, from.g, to.g},
              std::tuple{half.b, from.b, to.b}}) {
            EXPECT_GE(h, std::min(a, b)) << bits;
            EXPECT_LE(h, std::max(a, b)) << bits;
        }
        EXPECT_NE(half, from);
        EXPECT_NE(half, to);
    }
}

TEST(PaintMask, TablePathMixesHalfCoveredPixelsInIntegers)
{
    const KVBitmapPtr source = maskPicture(8, false);
    HueShiftParameters p = selectEverything(ColorSpaceModel::HSB);
    p.targetHue = 0.1;
    const KVBitmapPtr shifted = runShift(source, p).result;
    p.inclusionMask = KVBitmap::deviceWhite8Rep(3, 2);
    p.inclusionMask->bitmapData()[p.inclusionMask->bytesPerRow() + 2] = 100;
    const KVBitmapPtr result = runShift(source, p).result;
    const PixelChars from = charsAt(source, 2, 1);
    const PixelChars to = charsAt(shifted, 2, 1);
    EXPECT_EQ(charsAt(result, 2, 1),
              (PixelChars{mixByCoverage(from.r, to.r, 100), mixByCoverage(from.g, to.g, 100),
                          mixByCoverage(from.b, to.b, 100), to.a}));
}

// The highlight of a fully selected red pixel is the gamut's most chromatic colour of the
// complementary hue; partial selection is darker at 8 bits and paler per pixel.
TEST(SelectionHighlight, PaintsSelectedPixelsInTheComplementaryColour)
{
    for (const ColorSpaceModel model : {ColorSpaceModel::LChuv, ColorSpaceModel::LChab}) {
        const KVColorGamutPtr gamut = test::sRGBGamut(model);
        Matrix3 M;
        Matrix3 MI;
        gamut->copy_RGB_to_XYZ_matrix(M);
        gamut->copy_XYZ_to_RGB_matrix(MI);
        const ColorComponents red = model == ColorSpaceModel::LChuv ? rgbToLchuv({1, 0, 0, 1}, M)
                                                                    : rgbToLchab({1, 0, 0, 1}, M);
        const double gamma = 1.0 / 2.2;
        const auto expected = [&](PartialHighlight partial, bool full) {
            const ColorComponents h = lchHighlightColor(red.c2, full, partial, gamut.get());
            const ColorComponents rgb =
                model == ColorSpaceModel::LChuv ? lchuvToRgb(h, MI) : lchabToRgb(h, MI);
            return gammaEncode(rgb, 1.0 / gamma);
        };
        HueShiftParameters p = selectEverything(model);
        p.maskToShow = MaskView::selectionHighlight;
        // Red fully selected; the fall-off gives a half-selected red-orange its partial look.
        for (const std::int64_t bits : {8, 16}) {
            const KVBitmapPtr source = makeRgbBitmap(2, 1, bits, false);
            setChars(source, 0, 0, {255, 0, 0, 255});
            setChars(source, 1, 0, {10, 10, 10, 255});
            const KVBitmapPtr result = runShift(source, p).result;
            const ColorComponents want = expected(PartialHighlight::halveLightness, true);
            const PixelWords got = wordsAt(result, 0, 0);
            EXPECT_NEAR(got.r / 65535.0, want.c0, 1.5 / 255)
                << colorSpaceModelNumber(model) << " " << bits;
            EXPECT_NEAR(got.g / 65535.0, want.c1, 1.5 / 255)
                << colorSpaceModelNumber(model) << " " << bits;
            EXPECT_NEAR(got.b / 65535.0, want.c2, 1.5 / 255)
                << colorSpaceModelNumber(model) << " " << bits;
            EXPECT_EQ(wordsAt(result, 1, 0), wordsAt(source, 1, 0)); // grey: not selected
        }

        const double lower = hueFraction(red.c2) - 0.02;
        p.hueLowerFalloff = lower - 0.1;
        p.hueLower = lower;
        p.hueUpper = lower + 0.3;
        p.hueUpperFalloff = lower + 0.3;
        HueShiftParameters n = p;
        normalizeHueShiftParameters(n);
        const KVBitmapPtr eight = makeRgbBitmap(1, 1, 8, false);
        const KVBitmapPtr sixteen = makeRgbBitmap(1, 1, 16, false);
        const PixelChars magentaRed{255, 0, 90, 255};
        setChars(eight, 0, 0, magentaRed);
        setChars(sixteen, 0, 0, magentaRed);
        const ColorComponents lin = gammaDecode({1.0, 0.0, 90 / 255.0, 1.0}, 2.2);
        const ColorComponents lch = lchFromLinearRgb(lin, model, M);
        ASSERT_LT(lchSelection(lch, n, gamut.get()).weight, 1.0);
        ASSERT_GT(lchSelection(lch, n, gamut.get()).weight, 0.0);
        const auto partial = [&](PartialHighlight rule) {
            const ColorComponents h = lchHighlightColor(lch.c2, false, rule, gamut.get());
            return gammaEncode(
                model == ColorSpaceModel::LChuv ? lchuvToRgb(h, MI) : lchabToRgb(h, MI), 2.2);
        };
        const ColorComponents darker = partial(PartialHighlight::halveLightness);
        const ColorComponents paler = partial(PartialHighlight::reduceChroma);
        const PixelChars tablePixel = charsAt(runShift(eight, p).result, 0, 0);
        const PixelWords rowPixel = wordsAt(runShift(sixteen, p).result, 0, 0);
        EXPECT_NEAR(tablePixel.g / 255.0, darker.c1, 1.5 / 255) << colorSpaceModelNumber(model);
        EXPECT_NEAR(tablePixel.b / 255.0, darker.c2, 1.5 / 255) << colorSpaceModelNumber(model);
        EXPECT_NEAR(rowPixel.g / 65535.0, paler.c1, 1.0 / 65535 + 1e-4)
            << colorSpaceModelNumber(model);
        EXPECT_NEAR(rowPixel.b / 65535.0, paler.c2, 1.0 / 65535 + 1e-4)
            << colorSpaceModelNumber(model);
    }
}

TEST(SelectionHighlight, CylinderModesUseFixedSaturationAndBrightness)
{
    HueShiftParameters p = halfSelectsCyan(MaskView::selectionHighlight);
    const KVBitmapPtr source = maskPicture(16, false);
    const KVBitmapPtr result = runShift(source, p).result;
    // Cyan, half selected: hue 0 (red), saturation 0.4, brightness 0.5, encoded with 1/2.2.
    const ColorComponents cyan = gammaEncode(hsbToRgb({0.0, 0.4, 0.5, 1.0}), 2.2);
    const PixelWords got = wordsAt(result, 0, 0);
    EXPECT_NEAR(got.r / 65535.0, cyan.c0, 1.0 / 65535);
    EXPECT_NEAR(got.g / 65535.0, cyan.c1, 1.0 / 65535);
    // Magenta, fully selected: saturation 0.5, hue 1/3 (green).
    const ColorComponents green =
        gammaEncode(hsbToRgb({5.0 / 6.0 + 0.5 - 1.0, 0.5, 0.5, 1.0}), 2.2);
    const PixelWords magenta = wordsAt(result, 0, 1);
    EXPECT_NEAR(magenta.r / 65535.0, green.c0, 1.0 / 65535);
    EXPECT_NEAR(magenta.g / 65535.0, green.c1, 1.0 / 65535);
    // Red is not selected and keeps its samples.
    EXPECT_EQ(wordsAt(result, 1, 0), wordsAt(source, 1, 0));
}

TEST(HoverHighlight, PaintsOnlySelectedPixelsOfTheHoveredLightness)
{
    HueShiftParameters p = selectEverything(ColorSpaceModel::HSL);
    p.maskToShow = MaskView::hoverHighlight;
    p.targetHue = 0.25;
    const KVBitmapPtr source = makeRgbBitmap(2, 1, 16, false);
    setChars(source, 0, 0, {200, 50, 50, 255});
    setChars(source, 1, 0, {100, 20, 20, 255});
    const ColorComponents lin = gammaDecode({200 / 255.0, 50 / 255.0, 50 / 255.0, 1.0}, 2.2);
    const ColorComponents hsl = rgbToHsl(lin);
    p.brightnessToHighlight = hsl.c2;
    const KVBitmapPtr result = runShift(source, p).result;
    HueShiftParameters plain = p;
    plain.maskToShow = MaskView::shiftedImage;
    const KVBitmapPtr shifted = runShift(source, plain).result;
    EXPECT_EQ(wordsAt(result, 1, 0), wordsAt(shifted, 1, 0));
    // The hovered pixel is the shifted colour turned half way round: hue 0.75.
    const ColorComponents expected = gammaEncode(hslToRgb({0.75, hsl.c1, hsl.c2, 1.0}), 2.2);
    const PixelWords got = wordsAt(result, 0, 0);
    EXPECT_NEAR(got.r / 65535.0, expected.c0, 1.0 / 65535);
    EXPECT_NEAR(got.g / 65535.0, expected.c1, 1.0 / 65535);
    EXPECT_NEAR(got.b / 65535.0, expected.c2, 1.0 / 65535);
}

} // namespace
} // namespace tintorra
