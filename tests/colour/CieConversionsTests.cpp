#include "ConversionTestSupport.h"
#include "colour/ColorConversions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace tintorra {
namespace {

// IEC 61966-2-1 (sRGB) RGB-to-XYZ matrix, as published to four decimals.
constexpr Matrix3 kIecSrgbMatrix = {0.4124, 0.3576, 0.1805, //
                                    0.2126, 0.7152, 0.0722, //
                                    0.0193, 0.1192, 0.9505};

TEST(CieConversions, SrgbPrimariesMatchThePublishedMatrix)
{
    const Matrix3 m = testing::srgbToXyzMatrix();
    const ColorComponents primaries[3] = {{1, 0, 0, 1}, {0, 1, 0, 1}, {0, 0, 1, 1}};
    for (int column = 0; column < 3; ++column) {
        const ColorComponents xyz = rgbToXyz(primaries[column], m);
        // The table's white (0.31271, 0.32902) is a touch more precise than the standard's
        // (0.3127, 0.3290), so the last published digit may differ by one.
        EXPECT_NEAR(xyz.c0, kIecSrgbMatrix[column], 1.5e-4) << "column " << column;
        EXPECT_NEAR(xyz.c1, kIecSrgbMatrix[3 + column], 1.5e-4) << "column " << column;
        EXPECT_NEAR(xyz.c2, kIecSrgbMatrix[6 + column], 1.5e-4) << "column " << column;
    }
    const ColorComponents white = rgbToXyz({1, 1, 1, 1}, m);
    EXPECT_NEAR(white.c0, 0.31271 / 0.32902, 1e-12);
    EXPECT_NEAR(white.c1, 1.0, 1e-12);
    EXPECT_NEAR(white.c2, (1 - 0.31271 - 0.32902) / 0.32902, 1e-12);
}

TEST(CieConversions, ChromaticityFormsUseTheWorkingSpaceMatrix)
{
    const ColorComponents rgb{0.25, 0.5, 0.75, 0.5};
    const ColorComponents xyz = rgbToXyzFromChromaticities(rgb, sRGBChromaticities());
    EXPECT_LE(testing::largestChannelError(xyz, rgbToXyz(rgb, testing::srgbToXyzMatrix())), 1e-15);
    const ColorComponents back = xyzToRgbFromChromaticities(xyz, sRGBChromaticities());
    EXPECT_LE(testing::largestChannelError(back, rgb), 1e-14);
}

// Widely published CIE values of the sRGB primaries and secondaries (D65, 2 degree observer).
struct KnownColor {
    const char* name;
    ColorComponents rgb;
    ColorComponents lab;
    ColorComponents luv;
};

constexpr KnownColor kKnownColors[] = {
    {"red", {1, 0, 0, 1}, {53.2408, 80.0925, 67.2032, 1}, {53.2408, 175.0151, 37.7564, 1}},
    {"green", {0, 1, 0, 1}, {87.7347, -86.1827, 83.1793, 1}, {87.7347, -83.0776, 107.3985, 1}},
    {"blue", {0, 0, 1, 1}, {32.2970, 79.1875, -107.8602, 1}, {32.2970, -9.4054, -130.3423, 1}},
    {"yellow", {1, 1, 0, 1}, {97.1393, -21.5537, 94.4780, 1}, {97.1393, 7.7056, 106.7866, 1}},
    {"cyan", {0, 1, 1, 1}, {91.1132, -48.0875, -14.1312, 1}, {91.1132, -70.4773, -15.2042, 1}},
    {"magenta", {1, 0, 1, 1}, {60.3242, 98.2343, -60.8249, 1}, {60.3242, 84.0714, -108.6834, 1}},
};

TEST(CieConversions, LabAndLuvOfKnownColors)
{
    const Matrix3 m = testing::srgbToXyzMatrix();
    for (const KnownColor& known : kKnownColors) {
        const ColorComponents xyz = rgbToXyz(known.rgb, m);
        const ColorComponents lab = xyzToLab(xyz);
        const ColorComponents luv = xyzToLuv(xyz);
        // Published values use slightly different whites and matrices; a few hundredths of a
        // unit is far below a visible difference.
        EXPECT_NEAR(lab.c0, known.lab.c0, 0.02) << known.name;
        EXPECT_NEAR(lab.c1, known.lab.c1, 0.05) << known.name;
        EXPECT_NEAR(lab.c2, known.lab.c2, 0.05) << known.name;
        EXPECT_NEAR(luv.c0, known.luv.c0, 0.02) << known.name;
        EXPECT_NEAR(luv.c1, known.luv.c1, 0.05) << known.name;
        EXPECT_NEAR(luv.c2, known.luv.c2, 0.05) << known.name;
    }
}

TEST(CieConversions, WhitesAreNeutralAndBlackIsAFixedPoint)
{
    const ColorComponents lab = xyzToLab({0.95047, 1.0, 1.08883, 0.25});
    EXPECT_DOUBLE_EQ(lab.c0, 100.0);
    EXPECT_NEAR(std::hypot(lab.c1, lab.c2), 0.0, 1e-12);
    EXPECT_EQ(lab.alpha, 0.25);
    // The Luv white is the illuminant table's D65 (0.31271, 0.32902), not the Lab white, which
    // seen through Luv is not quite neutral.
    const ColorComponents luv = xyzToLuv(xyzFromChromaticity(0.31271, 0.32902));
    EXPECT_DOUBLE_EQ(luv.c0, 100.0);
    EXPECT_NEAR(std::hypot(luv.c1, luv.c2), 0.0, 1e-9);
    const ColorComponents labWhiteInLuv = xyzToLuv({0.95047, 1.0, 1.08883, 1.0});
    EXPECT_GT(std::hypot(labWhiteInLuv.c1, labWhiteInLuv.c2), 1e-4);

    const ColorComponents black{0.0, 0.0, 0.0, 0.5};
    EXPECT_EQ(xyzToLab(black), black);
    EXPECT_EQ(xyzToLuv(black), black);
    EXPECT_EQ(luvToXyz({0.0, 12.0, -7.0, 0.5}), black);
    EXPECT_EQ(luvToXyz({-3.0, 12.0, -7.0, 0.5}), black);
    EXPECT_EQ(luvToXyzAlternative({0.0, 12.0, -7.0, 0.5}), black);
}

TEST(CieConversions, LightnessBranchesMeetAtEight)
{
    // At L = 8 the linear branch applies, just above it the cubic one; both give epsilon there.
    const double atEight = labToXyz({8.0, 0.0, 0.0, 1.0}).c1;
    const double aboveEight = labToXyz({8.0 + 1e-9, 0.0, 0.0, 1.0}).c1;
    EXPECT_DOUBLE_EQ(atEight, 8.0 / kCieKappa);
    EXPECT_DOUBLE_EQ(aboveEight, std::pow((24.0 + 1e-9) / 116.0, 3.0));
    EXPECT_NEAR(atEight, kCieEpsilon, 1e-15);
    EXPECT_NEAR(aboveEight, kCieEpsilon, 1e-11);
    EXPECT_DOUBLE_EQ(kCieKappa * kCieEpsilon, kCieLightnessThreshold);
}

TEST(CieConversions, LabAndLuvInvertAcrossBothBranches)
{
    // Luminances on both sides of epsilon, in grey and in colour.
    const double luminances[] = {1e-5, 0.004, kCieEpsilon * 0.999, kCieEpsilon * 1.001, 0.2, 0.9};
    const double tints[][2] = {{1.0, 1.0}, {0.7, 1.2}, {1.3, 0.4}};
    for (const double Y : luminances) {
        for (const auto& tint : tints) {
            const ColorComponents xyz{0.95047 * Y * tint[0], Y, 1.08883 * Y * tint[1], 1.0};
            const ColorComponents viaLab = labToXyz(xyzToLab(xyz));
            const ColorComponents viaLuv = luvToXyz(xyzToLuv(xyz));
            const ColorComponents viaLuvAlternative = luvToXyzAlternative(xyzToLuv(xyz));
            for (const ColorComponents& back : {viaLab, viaLuv, viaLuvAlternative}) {
                EXPECT_NEAR(back.c0, xyz.c0, 1e-12 + 1e-12 * xyz.c0) << "Y " << Y;
                EXPECT_NEAR(back.c1, xyz.c1, 1e-12 + 1e-12 * xyz.c1) << "Y " << Y;
                EXPECT_NEAR(back.c2, xyz.c2, 1e-12 + 1e-12 * xyz.c2) << "Y " << Y;
            }
        }
    }
    // A u far to the green side puts X below zero: the main form clamps it, the alternative
    // reports it as it is.
    const ColorComponents luv{50.0, -300.0, 0.0, 1.0};
    EXPECT_EQ(luvToXyz(luv).c0, 0.0);
    EXPECT_LT(luvToXyzAlternative(luv).c0, 0.0);
    EXPECT_DOUBLE_EQ(luvToXyz(luv).c1, luvToXyzAlternative(luv).c1);
}

TEST(CieConversions, XyzToRgbAlwaysReturnsAWritableColor)
{
    const Matrix3 mi = testing::xyzToSrgbMatrix();
    const ColorComponents inputs[] = {
        {2.0, 2.0, 2.0, 1.5},    {-1.0, 0.5, 0.2, -0.5}, {0.0, 1.0, 0.0, 1.0},
        {0.9, 0.1, 0.0, 0.5},    {0.1, 0.05, 3.0, 2.0},  {1e6, -1e6, 1e6, 1e9},
        {0.95, 1.0, 1.09, 0.25},
    };
    for (const ColorComponents& xyz : inputs) {
        const ColorComponents rgb = xyzToRgb(xyz, mi);
        EXPECT_GE(std::min({rgb.c0, rgb.c1, rgb.c2, rgb.alpha}), 0.0);
        EXPECT_LE(std::max({rgb.c0, rgb.c1, rgb.c2, rgb.alpha}), 1.0);
    }
    EXPECT_EQ(xyzToRgb({0.2, 0.2, 0.2, 0.25}, mi).alpha, 0.25);
}

TEST(CieConversions, LchHueConventions)
{
    // Exact forms: achromatic hue 0, hues in -pi..pi as atan2 gives them.
    EXPECT_EQ(labToLch({50.0, 0.0, 0.0, 1.0}).c2, 0.0);
    EXPECT_EQ(luvToLch({50.0, 0.0, 0.0, 1.0}).c2, 0.0);
    EXPECT_DOUBLE_EQ(labToLch({50.0, 0.0, -10.0, 1.0}).c2, -0.5 * kPi);
    EXPECT_DOUBLE_EQ(labToLch({50.0, -10.0, 0.0, 1.0}).c2, kPi);
    EXPECT_DOUBLE_EQ(labToLch({50.0, 3.0, 4.0, 1.0}).c1, 5.0);

    // The fast form stays within its error of the exact one all around the circle.
    for (int degrees = -180; degrees <= 180; degrees += 5) {
        const double h = radiansFromDegrees(degrees);
        const ColorComponents lab = lchToLab({60.0, 40.0, h, 1.0});
        const ColorComponents fast = labToLchFast(lab);
        EXPECT_NEAR(fast.c1, 40.0, 1e-12);
        EXPECT_NEAR(hueDifference(fast.c2, h, kTwoPi), 0.0, testing::kFastAtan2MaxError) << degrees;
    }
}

TEST(CieConversions, LchabForwardUsesTheFastArctangentAndLchuvTheExactOne)
{
    const Matrix3 m = testing::srgbToXyzMatrix();
    const ColorComponents rgb{0.8, 0.3, 0.1, 1.0};
    const ColorComponents lab = xyzToLab(rgbToXyz(rgb, m));
    EXPECT_EQ(rgbToLchab(rgb, m).c2, fastAtan2(lab.c2, lab.c1));
    EXPECT_NE(rgbToLchab(rgb, m).c2, std::atan2(lab.c2, lab.c1));
    const ColorComponents luv = xyzToLuv(rgbToXyz(rgb, m));
    EXPECT_EQ(rgbToLchuv(rgb, m).c2, std::atan2(luv.c2, luv.c1));
}

TEST(CieConversions, SaturationAndLshForms)
{
    const ColorComponents lab{40.0, 12.0, -16.0, 0.5};
    EXPECT_DOUBLE_EQ(chromaFromLab(lab), 20.0);
    EXPECT_DOUBLE_EQ(saturationFromLab(lab), 0.5);
    const ColorComponents lsh = labToLsh(lab);
    EXPECT_DOUBLE_EQ(lsh.c1, 0.5);
    const ColorComponents back = lshToLab(lsh);
    EXPECT_NEAR(back.c1, 12.0, 1e-12);
    EXPECT_NEAR(back.c2, -16.0, 1e-12);
    EXPECT_EQ(back.alpha, 0.5);
    EXPECT_EQ(saturationFromLab({0.0, 0.0, 0.0, 1.0}), 0.0);
}

TEST(CieConversions, ChromaticityHelpers)
{
    double x = 0.0, y = 0.0;
    chromaticityFromXyz(0.0, 0.0, 0.0, x, y);
    EXPECT_EQ(x, 1.0 / 3.0);
    EXPECT_EQ(y, 1.0 / 3.0);

    // The D65 white goes to its chromaticity and back.
    const ColorComponents d65 = xyzFromChromaticity(0.31271, 0.32902);
    const ColorComponents xyY = chromaticityFromXyz(d65);
    EXPECT_NEAR(xyY.c0, 0.31271, 1e-15);
    EXPECT_NEAR(xyY.c1, 0.32902, 1e-15);
    EXPECT_EQ(xyY.c2, 1.0);
    EXPECT_EQ(xyzFromChromaticity(0.3, 0.0), (ColorComponents{0.0, 0.0, 0.0, 1.0}));

    const ColorComponents scaled = xyzFromChromaticityAndLuminance(0.31271, 0.32902, 0.2);
    EXPECT_NEAR(scaled.c0, 0.2 * d65.c0, 1e-15);
    EXPECT_EQ(scaled.c1, 0.2);
    EXPECT_NEAR(scaled.c2, 0.2 * d65.c2, 1e-15);
    EXPECT_EQ(xyzFromChromaticityAndLuminanceOrBlack(0.3, 0.0, 0.5),
              (ColorComponents{0.0, 0.0, 0.0, 1.0}));
    EXPECT_EQ(xyzFromChromaticityAndLuminanceOrBlack(0.31271, 0.32902, 0.2), scaled);
}

} // namespace
} // namespace tintorra
