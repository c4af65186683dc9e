#include "ConversionTestSupport.h"
#include "colour/ColorConversions.h"

#include <gtest/gtest.h>

#include <cmath>

namespace tintorra {
namespace {

constexpr int kModes[] = {kBlendThroughGrey, kBlendCartesian, kBlendAlongHue};

TEST(ColorBlending, EndpointsGiveTheTwoColors)
{
    const ColorComponents from{0.1, 0.8, 0.3, 1.0};
    const ColorComponents to{0.6, 0.4, 0.9, 0.5};
    for (const int mode : kModes) {
        const ColorComponents start = blendColors(mode, from, to, 0.0);
        const ColorComponents end = blendColors(mode, from, to, 1.0);
        // The Cartesian mode goes back through the fast arctangent, so its hue is approximate.
        const double hueTolerance =
            mode == kBlendCartesian ? testing::kFastAtan2MaxError / kTwoPi : 1e-15;
        EXPECT_NEAR(hueDifference(start.c0, 0.1, 1.0), 0.0, hueTolerance) << mode;
        EXPECT_NEAR(start.c1, 0.8, 1e-15) << mode;
        EXPECT_EQ(start.c2, 0.3);
        EXPECT_EQ(start.alpha, 1.0);
        EXPECT_NEAR(hueDifference(end.c0, 0.6, 1.0), 0.0, hueTolerance) << mode;
        EXPECT_NEAR(end.c1, 0.4, 1e-15) << mode;
        EXPECT_NEAR(end.c2, 0.9, 1e-15);
        EXPECT_EQ(end.alpha, 0.5);
    }
}

TEST(ColorBlending, ThroughGreyKeepsOneOfTheTwoHues)
{
    const ColorComponents from{0.2, 0.6, 0.5, 1.0};
    const ColorComponents to{0.7, 0.2, 0.5, 1.0};
    // Total chroma path 0.8: the first 0.6 (t < 0.75) runs down the first hue.
    const double expected[][3] = {
        {0.25, 0.2, 0.4},
        {0.5, 0.2, 0.2},
        {0.75, 0.7, 0.0},
        {0.875, 0.7, 0.1},
    };
    for (const auto& e : expected) {
        const ColorComponents mid = blendColors(kBlendThroughGrey, from, to, e[0]);
        EXPECT_EQ(mid.c0, e[1]) << e[0];
        EXPECT_NEAR(mid.c1, e[2], 1e-15) << e[0];
    }
    // Two greys stay grey.
    const ColorComponents grey = blendColors(kBlendThroughGrey, ColorComponents{0.3, 0.0, 0.2, 1.0},
                                             ColorComponents{0.9, 0.0, 0.6, 1.0}, 0.5);
    EXPECT_EQ(grey.c1, 0.0);
    EXPECT_NEAR(grey.c2, 0.4, 1e-15);
}

TEST(ColorBlending, CartesianCutsAcrossTheCircle)
{
    // Opposite hues of equal chroma meet in grey halfway; neighbours interpolate across the
    // chord, so the chroma dips below both.
    const ColorComponents opposite =
        blendColors(kBlendCartesian, ColorComponents{0.0, 0.5, 0.5, 1.0},
                    ColorComponents{0.5, 0.5, 0.5, 1.0}, 0.5);
    EXPECT_NEAR(opposite.c1, 0.0, 1e-15);
    const ColorComponents chord = blendColors(kBlendCartesian, ColorComponents{0.95, 1.0, 0.5, 1.0},
                                              ColorComponents{0.05, 1.0, 0.5, 1.0}, 0.5);
    EXPECT_NEAR(chord.c1, std::cos(kTwoPi * 0.05), 1e-15);
    EXPECT_NEAR(hueDifference(chord.c0, 0.0, 1.0), 0.0, testing::kFastAtan2MaxError / kTwoPi);
    EXPECT_GE(chord.c0, 0.0);
    EXPECT_LT(chord.c0, 1.0);
}

TEST(ColorBlending, AlongHueTakesTheShorterArc)
{
    const ColorComponents mid = blendColors(kBlendAlongHue, ColorComponents{0.9, 0.4, 0.5, 1.0},
                                            ColorComponents{0.1, 0.8, 0.5, 1.0}, 0.5);
    EXPECT_NEAR(hueDifference(mid.c0, 0.0, 1.0), 0.0, 1e-15);
    EXPECT_NEAR(mid.c1, 0.6, 1e-15);
    const ColorComponents quarter = blendColors(kBlendAlongHue, ColorComponents{0.1, 0.4, 0.5, 1.0},
                                                ColorComponents{0.9, 0.8, 0.5, 1.0}, 0.25);
    EXPECT_NEAR(quarter.c0, 0.05, 1e-15);
}

TEST(ColorBlending, HclRecordBlendsItsFifthValueToo)
{
    const HclComponents from{0.2, 0.6, 0.3, 1.0, 0.9};
    const HclComponents to{0.7, 0.2, 0.5, 0.0, 0.1};
    const HclComponents mid = blendColors(kBlendThroughGrey, from, to, 0.5);
    EXPECT_EQ(mid.h, 0.2);
    EXPECT_NEAR(mid.c, 0.2, 1e-15);
    EXPECT_NEAR(mid.l, 0.4, 1e-15);
    EXPECT_EQ(mid.alpha, 0.5);
    EXPECT_NEAR(mid.saturation, 0.5, 1e-15);
}

TEST(ColorBlending, LchFormWorksInRadians)
{
    const ColorComponents from{40.0, 30.0, 0.5 * kPi, 1.0};
    const ColorComponents to{60.0, 30.0, -0.5 * kPi + 0.2, 1.0};
    const ColorComponents along = blendColorsLch(kBlendAlongHue, from, to, 0.5);
    EXPECT_DOUBLE_EQ(along.c0, 50.0);
    EXPECT_DOUBLE_EQ(along.c1, 30.0);
    EXPECT_NEAR(along.c2, 0.1, 1e-12); // the short way passes through 0

    const ColorComponents cartesian = blendColorsLch(kBlendCartesian, from, to, 0.5);
    EXPECT_NEAR(cartesian.c1, 30.0 * std::sin(0.1), 1e-12);
    // The chord's midpoint lies on the bisector of the two hues, 0.1 rad.
    EXPECT_NEAR(hueDifference(cartesian.c2, 0.1, kTwoPi), 0.0, testing::kFastAtan2MaxError);
    EXPECT_GE(cartesian.c2, 0.0);
    EXPECT_LT(cartesian.c2, kTwoPi);

    const ColorComponents grey = blendColorsLch(kBlendThroughGrey, from, to, 0.25);
    EXPECT_EQ(grey.c2, 0.5 * kPi);
    EXPECT_DOUBLE_EQ(grey.c1, 15.0);
}

} // namespace
} // namespace tintorra
