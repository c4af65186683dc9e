#include "GamutTestSupport.h"
#include "colour/ColorMatrices.h"
#include "colour/KVColorGamut.h"
#include "colour/KVLChColor.h"
#include "colour/WorkingSpaces.h"
#include "support/DiagnosticsCapture.h"

#include <gtest/gtest.h>

#include <memory>

namespace tintorra {
namespace {

Matrix3 sRGBMatrix()
{
    return matrixFromChromaticities(sRGBChromaticities());
}

Matrix3 sRGBInverse()
{
    Matrix3 MI{};
    invertMatrix3(MI, sRGBMatrix());
    return MI;
}

TEST(KVLChColor, HoldsItsFourValuesAndTheGamutItIsGiven)
{
    KVLChColor color(62.5, 40.0, -1.25, 0.75);
    EXPECT_EQ(color.lchColor(), (ColorComponents{62.5, 40.0, -1.25, 0.75}));
    EXPECT_EQ(color.gamut(), nullptr);
    color.setLightness(10.0);
    color.setChroma(5.0);
    color.setHue(3.0);
    color.setAlpha(1.0);
    EXPECT_EQ(color.lchColor(), (ColorComponents{10.0, 5.0, 3.0, 1.0}));
    test::captureDiagnostics();
    const KVColorGamutPtr gamut = std::make_shared<const KVColorGamut>();
    test::capturedDiagnostics();
    color.setGamut(gamut);
    EXPECT_EQ(color.gamut(), gamut);
    color.setGamut(nullptr);
    EXPECT_EQ(gamut.use_count(), 1);
}

TEST(KVLChColor, RgbOfAnInGamutColourIsItsSource)
{
    struct Case {
        double r, g, b;
    };
    for (const Case c :
         {Case{0.2, 0.5, 0.3}, Case{0.9, 0.1, 0.4}, Case{0.5, 0.5, 0.5}, Case{0.05, 0.1, 0.8}}) {
        const ColorComponents lch = testSupport::linearRgbToLch(false, c.r, c.g, c.b, sRGBMatrix());
        const ColorComponents rgb =
            KVLChColor(lch.c0, lch.c1, lch.c2, 0.6).rgbUsingMatrix(sRGBInverse());
        EXPECT_NEAR(rgb.c0, c.r, 1e-6);
        EXPECT_NEAR(rgb.c1, c.g, 1e-6);
        EXPECT_NEAR(rgb.c2, c.b, 1e-6);
        EXPECT_EQ(rgb.alpha, 0.6);
    }
}

TEST(KVLChColor, ChromaBeyondTheGamutIsClamped)
{
    for (const double hue : {0.0, 1.5, 3.0, -2.0}) {
        const ColorComponents rgb = KVLChColor(55.0, 400.0, hue, 1.0).rgbUsingMatrix(sRGBInverse());
        const testSupport::Rgb channels{rgb.c0, rgb.c1, rgb.c2};
        EXPECT_TRUE(channels.within(0.0, 1.0)) << hue;
        EXPECT_TRUE(channels.smallest() == 0.0 || channels.largest() == 1.0) << hue;
    }
}

TEST(KVLChColor, AlwaysReadsItsValuesAsLuv)
{
    // An LChab triple gives the colour its numbers mean in LChuv, not the one it came from.
    const ColorComponents lab = testSupport::linearRgbToLch(true, 0.6, 0.3, 0.1, sRGBMatrix());
    const ColorComponents rgb =
        KVLChColor(lab.c0, lab.c1, lab.c2, 1.0).rgbUsingMatrix(sRGBInverse());
    const testSupport::Rgb asLuv =
        testSupport::lchuvToLinearRgb(lab.c0, lab.c1, lab.c2, sRGBInverse());
    EXPECT_NEAR(rgb.c0, std::clamp(asLuv.r, 0.0, 1.0), 1e-6);
    EXPECT_NEAR(rgb.c1, std::clamp(asLuv.g, 0.0, 1.0), 1e-6);
    EXPECT_NEAR(rgb.c2, std::clamp(asLuv.b, 0.0, 1.0), 1e-6);
    EXPECT_GT(std::fabs(rgb.c1 - 0.3), 0.01);
}

} // namespace
} // namespace tintorra
