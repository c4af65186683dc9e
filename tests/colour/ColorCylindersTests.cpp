#include "ConversionTestSupport.h"
#include "colour/ColorConversions.h"

#include <gtest/gtest.h>

#include <cmath>

namespace tintorra {
namespace {

struct CylinderCase {
    ColorComponents rgb;
    double hue; // as a fraction; red is 1.0
    double hsbSaturation;
    double brightness;
    double hslSaturation;
    double lightness;
};

// Hand-derived from the definitions of hue, HSB and HSL. Red is hue 1.0, not 0.
constexpr CylinderCase kCylinderCases[] = {
    {{1, 0, 0, 1}, 1.0, 1.0, 1.0, 1.0, 0.5},
    {{1, 1, 0, 1}, 1.0 / 6, 1.0, 1.0, 1.0, 0.5},
    {{0, 1, 0, 1}, 2.0 / 6, 1.0, 1.0, 1.0, 0.5},
    {{0, 1, 1, 1}, 3.0 / 6, 1.0, 1.0, 1.0, 0.5},
    {{0, 0, 1, 1}, 4.0 / 6, 1.0, 1.0, 1.0, 0.5},
    {{1, 0, 1, 1}, 5.0 / 6, 1.0, 1.0, 1.0, 0.5},
    {{1, 0.5, 0, 1}, 1.0 / 12, 1.0, 1.0, 1.0, 0.5},
    {{0.5, 0.25, 0.25, 1}, 1.0, 0.5, 0.5, 1.0 / 3, 0.375},
    {{0.2, 0.6, 0.4, 1}, 5.0 / 12, 2.0 / 3, 0.6, 0.5, 0.4},
    {{0.9, 0.8, 1.0, 1}, 3.0 / 4, 0.2, 1.0, 1.0, 0.9},
};

TEST(ColorCylinders, ForwardHueSaturationAndValue)
{
    for (const CylinderCase& c : kCylinderCases) {
        const ColorComponents hsb = rgbToHsb(c.rgb);
        if (c.hue == 1.0) { // exactly, not just close to 0 across the seam
            EXPECT_EQ(hsb.c0, 1.0);
            EXPECT_EQ(rgbToHsl(c.rgb).c0, 1.0);
            EXPECT_EQ(rgbToHcl(c.rgb).h, 1.0);
        }
        EXPECT_NEAR(hsb.c0, c.hue, 1e-15) << c.rgb.c0 << "," << c.rgb.c1 << "," << c.rgb.c2;
        EXPECT_NEAR(hsb.c1, c.hsbSaturation, 1e-15);
        EXPECT_NEAR(hsb.c2, c.brightness, 1e-15);
        const ColorComponents hsl = rgbToHsl(c.rgb);
        EXPECT_NEAR(hsl.c0, c.hue, 1e-15);
        EXPECT_NEAR(hsl.c1, c.hslSaturation, 1e-15);
        EXPECT_NEAR(hsl.c2, c.lightness, 1e-15);
        const HclComponents hcl = rgbToHcl(c.rgb);
        EXPECT_NEAR(hcl.h, c.hue, 1e-15);
        EXPECT_NEAR(hcl.saturation, c.hsbSaturation, 1e-15);
    }
}

TEST(ColorCylinders, GreysHaveNoHueOrSaturation)
{
    for (const double v : {0.0, 0.25, 0.5, 1.0}) {
        EXPECT_EQ(rgbToHsb({v, v, v, 0.5}), (ColorComponents{0.0, 0.0, v, 0.5}));
        EXPECT_EQ(rgbToHsl({v, v, v, 0.5}), (ColorComponents{0.0, 0.0, v, 0.5}));
        const HclComponents hcl = rgbToHcl({v, v, v, 0.5});
        EXPECT_EQ(hcl.h + hcl.c + hcl.saturation, 0.0);
        EXPECT_NEAR(hcl.l, v, 1e-15);
    }
}

TEST(ColorCylinders, ReverseConversionsWrapTheHue)
{
    // Each pair names the same hue.
    const double equivalent[][2] = {
        {1.0, 0.0}, {-0.25, 0.75}, {2.5, 0.5}, {-3.0, 0.0}, {7.0 / 6, 1.0 / 6}};
    for (const auto& [a, b] : equivalent) {
        EXPECT_LE(testing::largestChannelError(hsbToRgb({a, 0.8, 0.9, 1.0}),
                                               hsbToRgb({b, 0.8, 0.9, 1.0})),
                  1e-15)
            << a;
        EXPECT_LE(testing::largestChannelError(hslToRgb({a, 0.8, 0.4, 1.0}),
                                               hslToRgb({b, 0.8, 0.4, 1.0})),
                  1e-15)
            << a;
        EXPECT_LE(testing::largestChannelError(hclToRgb({a, 0.5, 0.4, 1.0}),
                                               hclToRgb({b, 0.5, 0.4, 1.0})),
                  1e-15)
            << a;
    }
    // A non-finite hue gives grey instead of hanging.
    EXPECT_EQ(hsbToRgb({std::nan(""), 1.0, 0.5, 1.0}), (ColorComponents{0.0, 0.0, 0.0, 1.0}));
    EXPECT_EQ(hsbToRgb({INFINITY, 0.5, 0.5, 1.0}), (ColorComponents{0.25, 0.25, 0.25, 1.0}));
}

TEST(ColorCylinders, HclKeepsLumaAndGivesUpChroma)
{
    // Saturated colours asked for at a luma they cannot have at full chroma, bright and dark.
    for (int sixth = 0; sixth < 12; ++sixth) {
        const double hue = sixth / 12.0;
        for (const double luma : {0.02, 0.05, 0.5, 0.95, 0.99}) {
            const ColorComponents rgb = hclToRgb({hue, 1.0, luma, 1.0});
            for (const double channel : {rgb.c0, rgb.c1, rgb.c2}) {
                EXPECT_GE(channel, -1e-15);
                EXPECT_LE(channel, 1.0 + 1e-15);
            }
            EXPECT_NEAR(lumaHcl(rgb.c0, rgb.c1, rgb.c2), luma, 1e-15) << hue << " " << luma;
            const HclComponents back = rgbToHcl(rgb);
            EXPECT_LT(back.c, 1.0) << hue << " " << luma;
            EXPECT_NEAR(hueDifference(back.h, hue, 1.0), 0.0, 1e-12) << hue << " " << luma;
        }
    }
}

TEST(ColorCylinders, LumaHelpersWeighEachPrimary)
{
    struct LumaCase {
        double (*luma)(double, double, double);
        double red, green, blue;
    };
    const LumaCase cases[] = {
        {lumaHcl, 0.212671, 0.71516, 0.072169},
        {lumaSmpte240, 0.2124, 0.7011, 0.0866},
        {lumaRec601, 0.299, 0.5864, 0.1146},
    };
    for (const LumaCase& c : cases) {
        EXPECT_EQ(c.luma(1, 0, 0), c.red);
        EXPECT_EQ(c.luma(0, 1, 0), c.green);
        EXPECT_EQ(c.luma(0, 0, 1), c.blue);
        // The SMPTE weights are rounded and sum to 1.0001.
        EXPECT_NEAR(c.luma(1, 1, 1), 1.0, 1.5e-4);
    }
}

} // namespace
} // namespace tintorra
