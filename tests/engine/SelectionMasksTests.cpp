#include "HueShiftTestSupport.h"
#include "colour/ColorConversions.h"
#include "engine/SelectionMasks.h"
#include "engine/SelectionWeights.h"

#include <gtest/gtest.h>

#include <ostream>

namespace tintorra {
namespace {

struct SampleCase {
    unsigned c;
    unsigned a;
    unsigned black;
    unsigned white;
};

void PrintTo(const SampleCase& c, std::ostream* os)
{
    *os << "{c=" << c.c << " a=" << c.a << " black=" << c.black << " white=" << c.white << "}";
}

class PremultipliedMaskSample : public testing::TestWithParam<SampleCase> {};

// c x a / 255 and 255 - c x a / 255, truncated.
TEST_P(PremultipliedMaskSample, ScalesByAlphaInIntegers)
{
    const SampleCase& s = GetParam();
    EXPECT_EQ(premultipliedBlackMaskSample(s.c, s.a), s.black);
    EXPECT_EQ(premultipliedWhiteMaskSample(s.c, s.a), s.white);
}

INSTANTIATE_TEST_SUITE_P(Values, PremultipliedMaskSample,
                         testing::Values(SampleCase{255, 255, 255, 0}, SampleCase{0, 255, 0, 255},
                                         SampleCase{128, 128, 64, 191},
                                         SampleCase{200, 100, 78, 177}, SampleCase{255, 0, 0, 255},
                                         SampleCase{1, 254, 0, 255}));

TEST(MaskSample, RoundsTheWeightHalfUp)
{
    EXPECT_EQ(maskSample(0.0), 0u);
    EXPECT_EQ(maskSample(1.0), 255u);
    EXPECT_EQ(maskSample(0.5), 128u);
    EXPECT_EQ(maskSample(0.25), 64u);
    EXPECT_EQ(maskSample(1.0 / 255.0 * 0.499), 0u);
}

TEST(MixByCoverage, IsExactAtTheEndsAndIntegerInBetween)
{
    for (unsigned oldSample : {0u, 77u, 255u}) {
        for (unsigned newSample : {0u, 200u, 255u}) {
            EXPECT_EQ(mixByCoverage(oldSample, newSample, 0), oldSample);
            EXPECT_EQ(mixByCoverage(oldSample, newSample, 255), newSample);
        }
    }
    EXPECT_EQ(mixByCoverage(100, 200, 128), (100 * 127 + 200 * 128) / 255);
    EXPECT_EQ(mixByCoverage(255, 0, 1), 254);
}

// A fully selected red pixel turns into the most chromatic cyan-green of the gamut.
TEST(LchHighlightColor, IsTheComplementaryHuesMostChromaticColour)
{
    for (const ColorSpaceModel model : {ColorSpaceModel::LChuv, ColorSpaceModel::LChab}) {
        const KVColorGamutPtr gamut = test::sRGBGamut(model);
        Matrix3 M;
        Matrix3 MI;
        gamut->copy_RGB_to_XYZ_matrix(M);
        gamut->copy_XYZ_to_RGB_matrix(MI);
        const ColorComponents red = model == ColorSpaceModel::LChuv ? rgbToLchuv({1, 0, 0, 1}, M)
                                                                    : rgbToLchab({1, 0, 0, 1}, M);
        const ColorComponents h =
            lchHighlightColor(red.c2, true, PartialHighlight::halveLightness, gamut.get());
        EXPECT_EQ(h, (ColorComponents{gamut->maxChromaForHue(red.c2 + kPi).c0,
                                      gamut->maxChromaForHue(red.c2 + kPi).c1,
                                      gamut->maxChromaForHue(red.c2 + kPi).c2, 1.0}));
        const ColorComponents rgb =
            model == ColorSpaceModel::LChuv ? lchuvToRgb(h, MI) : lchabToRgb(h, MI);
        EXPECT_LT(rgb.c0, 0.05) << colorSpaceModelNumber(model);
        EXPECT_GT(rgb.c1, 0.5) << colorSpaceModelNumber(model);
        EXPECT_GT(rgb.c2, 0.5) << colorSpaceModelNumber(model);

        const ColorComponents darker =
            lchHighlightColor(red.c2, false, PartialHighlight::halveLightness, gamut.get());
        EXPECT_EQ(darker.c0, 0.5 * h.c0);
        EXPECT_EQ(darker.c1, h.c1);
        const ColorComponents paler =
            lchHighlightColor(red.c2, false, PartialHighlight::reduceChroma, gamut.get());
        EXPECT_EQ(paler.c0, h.c0);
        EXPECT_EQ(paler.c1, 0.8 * h.c1);
    }
    EXPECT_EQ(lchHighlightColor(1.0, true, PartialHighlight::reduceChroma, nullptr),
              (ColorComponents{0, 0, 0, 1}));
}

TEST(CylinderHighlightColor, TurnsTheHueHalfwayRound)
{
    EXPECT_EQ(hsbHighlightColor(0.75, true), (ColorComponents{0.25, 0.5, 0.5, 1.0}));
    EXPECT_EQ(hsbHighlightColor(0.25, false), (ColorComponents{0.75, 0.4, 0.5, 1.0}));
    EXPECT_EQ(hsbHighlightColor(1.0, true).c0, 0.5);
    const HclComponents hcl = hclHighlightColor({0.6, 0.3, 0.9, 0.5, 0.4});
    EXPECT_NEAR(hcl.h, 0.1, 1e-15);
    EXPECT_EQ(hcl.c, 0.3);
    EXPECT_EQ(hcl.l, 0.5);
    EXPECT_EQ(hcl.alpha, 1.0);
}

TEST(HoveredLightness, ComparesOnTheModesScale)
{
    HueShiftParameters p = test::selectEverything(ColorSpaceModel::LChuv);
    p.brightnessToHighlight = 0.5;
    normalizeHueShiftParameters(p);
    EXPECT_TRUE(isHoveredLightness(50.9, p));
    EXPECT_FALSE(isHoveredLightness(51.0, p));
    HueShiftParameters q = test::selectEverything(ColorSpaceModel::HSB);
    q.brightnessToHighlight = 0.5;
    normalizeHueShiftParameters(q);
    EXPECT_TRUE(isHoveredLightness(0.509, q));
    EXPECT_FALSE(isHoveredLightness(0.52, q));
}

} // namespace
} // namespace tintorra
