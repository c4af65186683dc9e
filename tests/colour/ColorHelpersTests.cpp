#include "colour/ColorHelpers.h"

#include <gtest/gtest.h>

namespace tintorra {
namespace {

TEST(ColorFromHexRGB, ScansAHexadecimalInteger)
{
    struct Case {
        const char* text;
        int red, green, blue;
    };
    const Case cases[] = {
        {"FF8000", 255, 128, 0},
        {"ff8000", 255, 128, 0},
        {"  \t0x00FF00", 0, 255, 0},
        {"0X0000ff", 0, 0, 255},
        {"12G4", 0, 0, 0x12},           // stops at the first non-digit
        {"ABCDEF12", 0xCD, 0xEF, 0x12}, // bits above 23 are not a channel
        {"#FF8000", 0, 0, 0},           // no digits at the start
        {"", 0, 0, 0},
        {"0x", 0, 0, 0},
        {"FFFFFFFFFF", 255, 255, 255}, // too large: the scan saturates
    };
    for (const Case& c : cases) {
        const RgbaColor color = colorFromHexRGB(c.text);
        EXPECT_NEAR(color.red, c.red / 255.0, 1e-7) << c.text;
        EXPECT_NEAR(color.green, c.green / 255.0, 1e-7) << c.text;
        EXPECT_NEAR(color.blue, c.blue / 255.0, 1e-7) << c.text;
        EXPECT_EQ(color.alpha, 1.0) << c.text;
        EXPECT_EQ(color.space, RgbaColorSpace::calibratedRgb) << c.text;
    }
}

TEST(ColorFromHexRGB, ChannelsAreSinglePrecision)
{
    const RgbaColor color = colorFromHexRGB("FF8000");
    EXPECT_EQ(color.red, 1.0);
    EXPECT_EQ(color.green, static_cast<double>(static_cast<float>(color.green)));
    EXPECT_NE(color.green, 128.0 / 255.0);
}

TEST(ColorFromHexRGB, NoStringIsBlack)
{
    const RgbaColor color = colorFromHexRGB(static_cast<const char*>(nullptr));
    EXPECT_EQ(color, RgbaColor::calibratedRgb(0.0, 0.0, 0.0, 1.0));
}

TEST(Brightness, IsTheLargestChannelOrTheGreyLevel)
{
    struct Case {
        RgbaColor color;
        double expected;
    };
    const Case cases[] = {
        {RgbaColor::calibratedRgb(0.2, 0.6, 0.4), 0.6},
        {RgbaColor::deviceRgb(0.9, 0.1, 0.1, 0.2), 0.9},
        {RgbaColor::calibratedWhite(0.35), 0.35},
        {RgbaColor::deviceWhite(1.0, 0.0), 1.0},
        {RgbaColor::calibratedRgb(0.0, 0.0, 0.0), 0.0},
    };
    for (const Case& c : cases) {
        EXPECT_DOUBLE_EQ(brightness(c.color), c.expected);
    }
}

TEST(ContrastingBlackOrWhite, WhiteBelowBrightness073)
{
    struct Case {
        RgbaColor color;
        RgbaColor expected;
    };
    const Case cases[] = {
        {RgbaColor::calibratedWhite(0.73), RgbaColor::calibratedWhite(0.0, 1.0)},
        {RgbaColor::calibratedWhite(0.7299), RgbaColor::calibratedWhite(1.0, 1.0)},
        {RgbaColor::deviceWhite(0.2, 0.5), RgbaColor::deviceWhite(1.0, 1.0)},
        {RgbaColor::deviceRgb(0.1, 0.8, 0.1, 0.3), RgbaColor::deviceWhite(0.0, 1.0)},
        {RgbaColor::calibratedRgb(0.5, 0.2, 0.7), RgbaColor::calibratedWhite(1.0, 1.0)},
        {RgbaColor::calibratedRgb(1.0, 1.0, 0.0), RgbaColor::calibratedWhite(0.0, 1.0)},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(contrastingBlackOrWhite(c.color), c.expected) << brightness(c.color);
    }
}

} // namespace
} // namespace tintorra
