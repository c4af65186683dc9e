#include "colour/ColorConversions.h"

#include <gtest/gtest.h>

#include <cmath>

namespace tintorra {
namespace {

TEST(TransferFunctions, SrgbReferencePoints)
{
    EXPECT_EQ(srgbDecode(0.0), 0.0);
    EXPECT_DOUBLE_EQ(srgbDecode(1.0), 1.0);
    EXPECT_DOUBLE_EQ(srgbEncode(1.0), 1.0);
    EXPECT_NEAR(srgbDecode(0.5), 0.214041140, 1e-9);
    EXPECT_NEAR(srgbDecode(128.0 / 255.0), 0.215860500, 1e-9);
    EXPECT_NEAR(srgbEncode(0.18), 0.461356129, 1e-9);
    // The two pieces meet at the break points to the precision of the published constants
    // (they miss by 2.3e-9).
    EXPECT_NEAR(0.04045 / 12.92, std::pow((0.04045 + 0.055) / 1.055, 2.4), 3e-9);
    EXPECT_NEAR(srgbEncode(0.0031308), 0.04045, 1e-7);
}

TEST(TransferFunctions, Rec709ReferencePoints)
{
    EXPECT_DOUBLE_EQ(rec709Encode(1.0), 1.0);
    EXPECT_DOUBLE_EQ(rec709Decode(1.0), 1.0);
    EXPECT_DOUBLE_EQ(rec709Encode(0.01), 0.045);
    EXPECT_NEAR(rec709Encode(0.18), 0.409007728, 1e-9);
}

TEST(TransferFunctions, CurvesInvertOverTheUnitRange)
{
    struct Curve {
        const char* name;
        double (*decode)(double);
        double (*encode)(double);
        // Encoded values that no linear value encodes to: the rounded Rec. 709 constants leave a
        // gap between the toe's end (0.081) and the power curve's start (0.08129).
        double gapLow, gapHigh;
    };
    const Curve curves[] = {{"sRGB", srgbDecode, srgbEncode, 0.0, 0.0},
                            {"Rec. 709", rec709Decode, rec709Encode, 0.081, 0.0813}};
    for (const Curve& curve : curves) {
        for (int i = 0; i <= 4096; ++i) {
            const double x = i / 4096.0;
            EXPECT_NEAR(curve.decode(curve.encode(x)), x, 1e-9) << curve.name << " " << x;
            if (x <= curve.gapLow || x >= curve.gapHigh) {
                EXPECT_NEAR(curve.encode(curve.decode(x)), x, 1e-9) << curve.name << " " << x;
            }
        }
    }
}

TEST(TransferFunctions, PowerLawGamma)
{
    const ColorComponents rgb{0.25, 0.5, 1.0, 0.7};
    const ColorComponents linear = gammaDecode(rgb, 2.0);
    EXPECT_EQ(linear, (ColorComponents{0.0625, 0.25, 1.0, 0.7}));
    const ColorComponents back = gammaEncode(gammaDecode(rgb, 2.2), 2.2);
    EXPECT_NEAR(back.c0, 0.25, 1e-15);
    EXPECT_NEAR(back.c1, 0.5, 1e-15);
    EXPECT_EQ(back.c2, 1.0);
    EXPECT_EQ(back.alpha, 0.7);
}

TEST(TransferFunctions, LightnessOfKnownLuminances)
{
    // L* of 18 % grey is 49.5, of half luminance 76.07; below epsilon L* is linear.
    EXPECT_NEAR(luminanceToLightness(0.18, 1.0), 0.49496, 1e-5);
    EXPECT_NEAR(luminanceToLightness(0.5, 1.0), 0.76069, 1e-5);
    EXPECT_DOUBLE_EQ(luminanceToLightness(1.0, 1.0), 1.0);
    EXPECT_DOUBLE_EQ(luminanceToLightness(50.0, 50.0), 1.0);
    EXPECT_DOUBLE_EQ(luminanceToLightness(0.004, 1.0), 0.004 * kCieKappa / 100.0);
    EXPECT_NEAR(luminanceToLightness(kCieEpsilon, 1.0), 0.08, 1e-15);
}

TEST(TransferFunctions, FastLuminanceInvertsLightness)
{
    // On the cubic part the polynomial is the exact inverse; on the toe its slope is 1/9.03,
    // a rounded kappa, which is off from the exact 100/kappa by 3.3e-4 relative.
    for (int i = 0; i <= 1000; ++i) {
        const double l = i / 1000.0;
        const double y = lightnessToLuminanceFast(l);
        if (l > 0.08) {
            EXPECT_NEAR(y, std::pow((l + 0.16) / 1.16, 3.0), 1e-15) << l;
        } else {
            EXPECT_NEAR(y, l * 100.0 / kCieKappa, 4e-4 * y + 1e-18) << l;
        }
        EXPECT_NEAR(luminanceToLightness(y, 1.0), l, 3e-5) << l;
    }
    EXPECT_DOUBLE_EQ(lightnessToLuminanceFast(0.5), std::pow(0.66 / 1.16, 3.0));
}

} // namespace
} // namespace tintorra
