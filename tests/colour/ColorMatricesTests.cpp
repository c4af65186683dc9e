#include "MatrixTestHelpers.h"
#include "colour/ColorMatrices.h"
#include "colour/WorkingSpaces.h"
#include "support/DiagnosticsCapture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace tintorra {
namespace {

using test::apply;
using test::maxAbsDifference;
using test::Vector3;
using test::whiteFromChromaticity;

// Published RGB-to-XYZ matrices of common working spaces. Their authors used the whites
// D65 = (0.95047, 1, 1.08883) and D50 = (0.96422, 1, 0.82521), which differ from ours (made from
// the illuminant table's x, y) by up to 7e-5; the matrices therefore agree to about 1e-4.
TEST(MatrixFromChromaticities, MatchesPublishedMatrices)
{
    struct Case {
        const char* space;
        Matrix3 published;
    };
    const Case cases[] = {
        {"sRGB",
         {0.4124564, 0.3575761, 0.1804375, 0.2126729, 0.7151522, 0.0721750, 0.0193339, 0.1191920,
          0.9503041}},
        {"Adobe RGB 1998",
         {0.5767309, 0.1855540, 0.1881852, 0.2973769, 0.6273491, 0.0752741, 0.0270343, 0.0706872,
          0.9911085}},
        {"Apple RGB",
         {0.4497288, 0.3162486, 0.1844926, 0.2446525, 0.6720283, 0.0833192, 0.0251848, 0.1411824,
          0.9224628}},
        {"Best RGB",
         {0.6326696, 0.2045558, 0.1269946, 0.2284569, 0.7373523, 0.0341908, 0.0000000, 0.0095142,
          0.8156958}},
        {"ProPhoto RGB",
         {0.7976749, 0.1351917, 0.0313534, 0.2880402, 0.7118741, 0.0000857, 0.0000000, 0.0000000,
          0.8252100}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.space);
        const ColorSpaceChromaticities* space = workingSpaceNamed(c.space);
        ASSERT_NE(space, nullptr);
        EXPECT_LT(maxAbsDifference(matrixFromChromaticities(*space), c.published), 1.5e-4);
    }
}

TEST(MatrixFromChromaticities, InverseOfSRGBMatchesThePublishedInverse)
{
    const Matrix3 published = {3.2404542, -1.5371385, -0.4985314, -0.9692660, 1.8760108,
                               0.0415560, 0.0556434,  -0.2040259, 1.0572252};
    Matrix3 mi{};
    ASSERT_TRUE(invertMatrix3(mi, matrixFromChromaticities(sRGBChromaticities())));
    // The published inverse was made with a slightly different white; 5.5e-4 is measured.
    EXPECT_LT(maxAbsDifference(mi, published), 1e-3);
}

TEST(MatrixFromChromaticities, RgbWhiteMapsExactlyOntoTheWhitePoint)
{
    for (const ColorSpaceChromaticities& space : workingSpaceTable) {
        SCOPED_TRACE(space.name);
        const Vector3 white = apply(matrixFromChromaticities(space), {1.0, 1.0, 1.0});
        const Vector3 expected = whiteFromChromaticity(space.whiteX, space.whiteY);
        for (int i = 0; i < 3; ++i) {
            EXPECT_NEAR(white[i], expected[i], 1e-14);
        }
    }
    // The sRGB row in particular, with the white written out.
    const Vector3 srgbWhite =
        apply(matrixFromChromaticities(sRGBChromaticities()), {1.0, 1.0, 1.0});
    EXPECT_NEAR(srgbWhite[0], 0.31271 / 0.32902, 1e-15);
    EXPECT_NEAR(srgbWhite[1], 1.0, 1e-15);
    EXPECT_NEAR(srgbWhite[2], (1.0 - 0.31271 - 0.32902) / 0.32902, 1e-15);
}

TEST(MatrixFromChromaticities, DegenerateChromaticities)
{
    // A blue primary on y = 0 contributes only its luminance: its column is (0, Y s, 0).
    ColorSpaceChromaticities flatBlue = sRGBChromaticities();
    flatBlue.blueY = 0.0;
    const Matrix3 m = matrixFromChromaticities(flatBlue);
    EXPECT_EQ(m[2], 0.0);
    EXPECT_EQ(m[8], 0.0);
    EXPECT_NE(m[5], 0.0);
    const Vector3 white = apply(m, {1.0, 1.0, 1.0});
    const Vector3 expected = whiteFromChromaticity(flatBlue.whiteX, flatBlue.whiteY);
    for (int i = 0; i < 3; ++i) {
        EXPECT_NEAR(white[i], expected[i], 1e-12);
    }

    // A white on y = 0 is replaced by (0, 1, 0).
    ColorSpaceChromaticities flatWhite = sRGBChromaticities();
    flatWhite.whiteY = 0.0;
    const Vector3 fallback = apply(matrixFromChromaticities(flatWhite), {1.0, 1.0, 1.0});
    EXPECT_NEAR(fallback[0], 0.0, 1e-12);
    EXPECT_NEAR(fallback[1], 1.0, 1e-12);
    EXPECT_NEAR(fallback[2], 0.0, 1e-12);
}

// Without the luminances the columns are only known up to scale, and the scale comes from the
// white: the result must be the same matrix.
TEST(MatrixFromPrimaries, AgreesWithTheChromaticityRecord)
{
    for (const ColorSpaceChromaticities& space : workingSpaceTable) {
        SCOPED_TRACE(space.name);
        std::array<double, 12> out{};
        test::captureDiagnostics();
        matrixFromPrimaries(out, space.redX, space.redY, space.greenX, space.greenY, space.blueX,
                            space.blueY, space.whiteX, space.whiteY);
        EXPECT_EQ(test::capturedDiagnostics(), "");
        Matrix3 m{};
        std::copy(out.begin(), out.begin() + 9, m.begin());
        EXPECT_LT(maxAbsDifference(m, matrixFromChromaticities(space)), 1e-13);
        const Vector3 white = whiteFromChromaticity(space.whiteX, space.whiteY);
        EXPECT_DOUBLE_EQ(out[9], white[0]);
        EXPECT_EQ(out[10], 1.0);
        EXPECT_DOUBLE_EQ(out[11], white[2]);
    }
}

TEST(MatrixFromPrimaries, ZeroPivotStopsAndLeavesOnlyTheWhite)
{
    struct Case {
        const char* what;
        double xr, yr, xg, yg, xb, yb;
        const char* message;
    };
    const Case cases[] = {
        // Red x is the first pivot.
        {"red x zero", 0.0, 0.33, 0.3, 0.6, 0.15, 0.06, "zero pivot found in line:0\n"},
        {"red x below 1e-6", 5e-7, 0.33, 0.3, 0.6, 0.15, 0.06, "zero pivot found in line:0\n"},
        // Equal red and green make the second column a multiple of the first.
        {"red equals green", 0.64, 0.33, 0.64, 0.33, 0.15, 0.06, "zero pivot found in line:1\n"},
        {"green at red's chromaticity scaled", 0.3, 0.6, 0.3, 0.6, 0.15, 0.06,
         "zero pivot found in line:1\n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        std::array<double, 12> out{};
        out.fill(-7.0);
        test::captureDiagnostics();
        matrixFromPrimaries(out, c.xr, c.yr, c.xg, c.yg, c.xb, c.yb, 0.31271, 0.32902);
        EXPECT_EQ(test::capturedDiagnostics(), c.message);
        for (int i = 0; i < 9; ++i) {
            EXPECT_EQ(out[i], -7.0) << i;
        }
        EXPECT_DOUBLE_EQ(out[9], 0.31271 / 0.32902);
        EXPECT_EQ(out[10], 1.0);
        EXPECT_DOUBLE_EQ(out[11], (1.0 - 0.31271 - 0.32902) / 0.32902);
    }

    // A first pivot just above the limit is accepted.
    std::array<double, 12> out{};
    test::captureDiagnostics();
    matrixFromPrimaries(out, 2e-6, 0.33, 0.3, 0.6, 0.15, 0.06, 0.31271, 0.32902);
    EXPECT_EQ(test::capturedDiagnostics(), "");
}

// Only the two elimination rows are checked; equal green and blue leave a zero in the last
// diagonal element, which back substitution divides by without a message.
TEST(MatrixFromPrimaries, LastPivotIsNotChecked)
{
    std::array<double, 12> out{};
    test::captureDiagnostics();
    matrixFromPrimaries(out, 0.64, 0.33, 0.3, 0.6, 0.3, 0.6, 0.31271, 0.32902);
    EXPECT_EQ(test::capturedDiagnostics(), "");
    bool allFinite = true;
    for (int i = 0; i < 9; ++i) {
        allFinite = allFinite && std::isfinite(out[i]);
    }
    EXPECT_FALSE(allFinite);
}

Matrix3 adaptationMatrix(const Vector3& source, const Vector3& destination, int method)
{
    // Column j is the adaptation of the j-th unit vector.
    Matrix3 m{};
    for (int j = 0; j < 3; ++j) {
        double unit[3] = {0.0, 0.0, 0.0};
        unit[j] = 1.0;
        double out[3];
        EXPECT_EQ(adaptXyz(unit, source.data(), out, destination.data(), method), 0);
        for (int i = 0; i < 3; ++i) {
            m[i * 3 + j] = out[i];
        }
    }
    return m;
}

// Published adaptation matrices between D50 = (0.96422, 1, 0.82521) and D65 = (0.95047, 1,
// 1.08883), printed to seven decimals.
TEST(AdaptXyz, MatchesPublishedAdaptationMatrices)
{
    const Vector3 d50 = {0.96422, 1.0, 0.82521};
    const Vector3 d65 = {0.95047, 1.0, 1.08883};
    struct Case {
        const char* what;
        Vector3 source;
        Vector3 destination;
        int method;
        Matrix3 published;
    };
    const Case cases[] = {
        {"Bradford D50 to D65",
         d50,
         d65,
         kAdaptationBradford,
         {0.9555766, -0.0230393, 0.0631636, -0.0282895, 1.0099416, 0.0210077, 0.0122982, -0.0204830,
          1.3299098}},
        {"Bradford D65 to D50",
         d65,
         d50,
         kAdaptationBradford,
         {1.0478112, 0.0228866, -0.0501270, 0.0295424, 0.9904844, -0.0170491, -0.0092345, 0.0150436,
          0.7521316}},
        {"XYZ scaling D50 to D65",
         d50,
         d65,
         kAdaptationXyzScaling,
         {0.9857398, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.3194581}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_LT(
            maxAbsDifference(adaptationMatrix(c.source, c.destination, c.method), c.published),
            1.5e-7);
    }
}

// Method 3 is another name for Bradford. The von Kries cone matrix has (0, 0, 0.91822) as its
// last row, so Z only depends on Z and is scaled by the ratio of the whites' Z.
TEST(AdaptXyz, BradfordAliasAndVonKries)
{
    const Vector3 d50 = {0.96422, 1.0, 0.82521};
    const Vector3 d65 = {0.95047, 1.0, 1.08883};
    EXPECT_EQ(adaptationMatrix(d50, d65, kAdaptationBradfordAlias),
              adaptationMatrix(d50, d65, kAdaptationBradford));
    const Matrix3 m = adaptationMatrix(d50, d65, kAdaptationVonKries);
    EXPECT_NEAR(m[6], 0.0, 1e-15);
    EXPECT_NEAR(m[7], 0.0, 1e-15);
    EXPECT_NEAR(m[8], 1.08883 / 0.82521, 1e-14);
}

TEST(AdaptXyz, SourceWhiteBecomesDestinationWhiteForEveryMethod)
{
    const Vector3 whites[] = {
        whiteFromChromaticity(0.34567, 0.3585), whiteFromChromaticity(0.31271, 0.32902),
        whiteFromChromaticity(0.44757, 0.40745), whiteFromChromaticity(1.0 / 3.0, 1.0 / 3.0)};
    for (int method = 0; method <= 3; ++method) {
        for (const Vector3& source : whites) {
            for (const Vector3& destination : whites) {
                double out[3];
                ASSERT_EQ(adaptXyz(source.data(), source.data(), out, destination.data(), method),
                          0);
                for (int i = 0; i < 3; ++i) {
                    EXPECT_NEAR(out[i], destination[i], 1e-14) << "method " << method;
                }
            }
        }
    }
}

TEST(AdaptXyz, UnknownMethodReturnsMinusFiftyAndWritesNothing)
{
    const double source[3] = {0.9642, 1.0, 0.8249};
    const double destination[3] = {0.9505, 1.0, 1.089};
    const double xyz[3] = {0.5, 0.5, 0.5};
    for (const int method : {4, 5, 100, -1}) {
        Vector3 out = {-9.0, -9.0, -9.0};
        EXPECT_EQ(adaptXyz(xyz, source, out.data(), destination, method), -50) << method;
        EXPECT_EQ(out, (Vector3{-9.0, -9.0, -9.0})) << method;
    }
}

TEST(IsD50White, ToleranceOfOneThousandthPerComponent)
{
    struct Case {
        double X, Y, Z;
        bool expected;
    };
    const Case cases[] = {
        {0.9642, 1.0, 0.8249, true},
        {0.9642119944211994, 1.0, 0.8251882845188288, true}, // the D50 row as XYZ
        {0.9651, 1.0009, 0.8258, true},
        {0.9633, 0.9991, 0.8240, true},
        {0.9654, 1.0, 0.8249, false},
        {0.9630, 1.0, 0.8249, false},
        {0.9642, 1.0012, 0.8249, false},
        {0.9642, 0.9988, 0.8249, false},
        {0.9642, 1.0, 0.8261, false},
        {0.9642, 1.0, 0.8237, false},
        {0.9504285453771807, 1.0, 1.0889003707981277, false}, // D65
    };
    for (const Case& c : cases) {
        EXPECT_EQ(isD50White(c.X, c.Y, c.Z), c.expected) << c.X << ", " << c.Y << ", " << c.Z;
    }
}

} // namespace
} // namespace tintorra
