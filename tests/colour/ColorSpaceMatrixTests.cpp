// The matrix of a colour space, checked on profiles written byte by byte so that every tag value
// is known exactly.
#include "IccTestBytes.h"
#include "MatrixTestHelpers.h"
#include "colour/ColorMatrices.h"
#include "colour/KVColorSpace.h"
#include "colour/WorkingSpaces.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>

namespace tintorra {
namespace {

using test::apply;
using test::buildProfile;
using test::maxAbsDifference;
using test::toFixed;
using test::Vector3;
using test::whiteFromChromaticity;

const Matrix3 kSentinel = {-1, -2, -3, -4, -5, -6, -7, -8, -9};

Vector3 column(const Matrix3& m, int c)
{
    return {m[c], m[3 + c], m[6 + c]};
}

std::array<std::int32_t, 3> fixedXyz(const Vector3& xyz)
{
    return {toFixed(xyz[0]), toFixed(xyz[1]), toFixed(xyz[2])};
}

Vector3 fromFixed(const std::array<std::int32_t, 3>& raw)
{
    return {raw[0] / 65536.0, raw[1] / 65536.0, raw[2] / 65536.0};
}

// Colourants and white as s15.16 values, the way a profile maker would write them.
struct Colorants {
    std::array<std::int32_t, 3> red, green, blue, white;
};

KVColorSpace rgbSpace(const Colorants& c)
{
    return {KVColorSpaceModel::rgb, "test",
            buildProfile(
                "RGB ", {{"rXYZ", c.red}, {"gXYZ", c.green}, {"bXYZ", c.blue}, {"wtpt", c.white}})};
}

// The sRGB row's columns taken to D50 with the Bradford matrix, as a version 2 profile stores them.
Colorants d50AdaptedSRGB(const Vector3& white)
{
    const Matrix3 m = matrixFromChromaticities(sRGBChromaticities());
    const Vector3 d65 = whiteFromChromaticity(0.31271, 0.32902);
    const Vector3 d50 = whiteFromChromaticity(0.34567, 0.3585);
    Colorants c{};
    std::array<std::int32_t, 3>* targets[3] = {&c.red, &c.green, &c.blue};
    for (int i = 0; i < 3; ++i) {
        Vector3 adapted{};
        EXPECT_EQ(adaptXyz(column(m, i).data(), d65.data(), adapted.data(), d50.data(),
                           kAdaptationBradford),
                  0);
        *targets[i] = fixedXyz(adapted);
    }
    c.white = fixedXyz(white);
    return c;
}

TEST(MatrixFromColorSpace, NoSpaceOrNoProfileGivesTheSRGBRow)
{
    const Matrix3 srgb = matrixFromChromaticities(sRGBChromaticities());
    const KVColorSpace untagged = KVColorSpace::deviceRGB();
    const KVColorSpace garbage(KVColorSpaceModel::rgb, "broken", {1, 2, 3, 4, 5, 6, 7, 8});
    const KVColorSpace* spaces[] = {nullptr, &untagged, &garbage};
    for (const KVColorSpace* space : spaces) {
        SCOPED_TRACE(space ? space->name() : "no space");
        Matrix3 m = kSentinel;
        matrixFromColorSpace(m, space);
        EXPECT_EQ(m, srgb);
        Matrix3 mi = kSentinel;
        inverseMatrixFromColorSpace(mi, space);
        EXPECT_LT(maxAbsDifference(test::product(m, mi), test::kIdentity), 1e-12);
    }
}

TEST(MatrixFromColorSpace, NonRgbSpaceLeavesTheOutputUntouched)
{
    const test::Bytes profile =
        buildProfile("GRAY", {{"wtpt", fixedXyz(whiteFromChromaticity(0.34567, 0.3585))}});
    for (const KVColorSpaceModel model :
         {KVColorSpaceModel::gray, KVColorSpaceModel::cmyk, KVColorSpaceModel::lab,
          KVColorSpaceModel::deviceN, KVColorSpaceModel::indexed, KVColorSpaceModel::pattern,
          KVColorSpaceModel::unknown}) {
        for (const bool withProfile : {false, true}) {
            const KVColorSpace space(model, "not rgb", withProfile ? profile : test::Bytes{});
            Matrix3 m = kSentinel;
            matrixFromColorSpace(m, &space);
            EXPECT_EQ(m, kSentinel) << static_cast<int>(model);
            inverseMatrixFromColorSpace(m, &space);
            EXPECT_EQ(m, kSentinel) << static_cast<int>(model);
        }
    }
}

// Colourants adapted to D50 are taken back to D65; with a D65 white point the sRGB matrix returns,
// up to the 1/65536 steps of the tags.
TEST(MatrixFromColorSpace, D50ColorantsWithD65WhiteGiveBackTheSRGBRow)
{
    const Colorants colorants = d50AdaptedSRGB(whiteFromChromaticity(0.31271, 0.32902));
    const KVColorSpace space = rgbSpace(colorants);
    Matrix3 m{};
    matrixFromColorSpace(m, &space);
    EXPECT_LT(maxAbsDifference(m, matrixFromChromaticities(sRGBChromaticities())), 5e-5);
    // The white column sums are the white point tag.
    const Vector3 white = apply(m, {1.0, 1.0, 1.0});
    const Vector3 tag = fromFixed(colorants.white);
    for (int i = 0; i < 3; ++i) {
        EXPECT_NEAR(white[i], tag[i], 1e-12);
    }
    Matrix3 mi{};
    inverseMatrixFromColorSpace(mi, &space);
    EXPECT_LT(maxAbsDifference(test::product(m, mi), test::kIdentity), 1e-12);
}

// A version 4 profile stores D50 as its white point. The colourants are still adapted to D65, but
// the scale comes from the tag: RGB white then lands on D50, not on the space's own white.
TEST(MatrixFromColorSpace, D50WhitePointScalesTheAdaptedColorantsToD50)
{
    const Colorants colorants = d50AdaptedSRGB(whiteFromChromaticity(0.34567, 0.3585));
    const KVColorSpace space = rgbSpace(colorants);
    Matrix3 m{};
    matrixFromColorSpace(m, &space);
    const Vector3 white = apply(m, {1.0, 1.0, 1.0});
    const Vector3 tag = fromFixed(colorants.white);
    for (int i = 0; i < 3; ++i) {
        EXPECT_NEAR(white[i], tag[i], 1e-12);
    }
    // The columns keep the chromaticities of the sRGB primaries.
    const Matrix3 srgb = matrixFromChromaticities(sRGBChromaticities());
    for (int c = 0; c < 3; ++c) {
        const Vector3 got = column(m, c);
        const Vector3 want = column(srgb, c);
        const double gotSum = got[0] + got[1] + got[2];
        const double wantSum = want[0] + want[1] + want[2];
        EXPECT_NEAR(got[0] / gotSum, want[0] / wantSum, 2e-5);
        EXPECT_NEAR(got[1] / gotSum, want[1] / wantSum, 2e-5);
    }
    EXPECT_GT(maxAbsDifference(m, srgb), 0.1);
}

// Colourants that do not add up to D50 are used as stored; so are colourants whose X and Y sums
// match D50 but whose Z sum does not.
TEST(MatrixFromColorSpace, OtherColorantsAreUsedAsRead)
{
    const Matrix3 srgb = matrixFromChromaticities(sRGBChromaticities());
    struct Case {
        const char* what;
        Vector3 red, green, blue, white;
    };
    const Vector3 d65 = whiteFromChromaticity(0.31271, 0.32902);
    const Case cases[] = {
        {"colourants adding up to D65", column(srgb, 0), column(srgb, 1), column(srgb, 2), d65},
        {"X and Y sums of D50, Z sum off by 0.01",
         {0.4361, 0.2225, 0.0139},
         {0.3851, 0.7169, 0.0971},
         {0.1430, 0.0606, 0.7239},
         {0.9642, 1.0, 0.8349}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const Colorants colorants = {fixedXyz(c.red), fixedXyz(c.green), fixedXyz(c.blue),
                                     fixedXyz(c.white)};
        const KVColorSpace space = rgbSpace(colorants);
        Matrix3 m{};
        matrixFromColorSpace(m, &space);

        // Expected: columns are the stored colourants, scaled (by Cramer's rule) onto the white.
        const Vector3 stored[3] = {fromFixed(colorants.red), fromFixed(colorants.green),
                                   fromFixed(colorants.blue)};
        Matrix3 p{};
        for (int col = 0; col < 3; ++col) {
            for (int row = 0; row < 3; ++row) {
                p[row * 3 + col] = stored[col][row];
            }
        }
        const Vector3 s = test::solveByCramer(p, fromFixed(colorants.white));
        Matrix3 expected{};
        for (int i = 0; i < 9; ++i) {
            expected[i] = p[i] * s[i % 3];
        }
        EXPECT_LT(maxAbsDifference(m, expected), 1e-12);
    }
}

TEST(MatrixFromColorSpace, MissingTagsReadAsZero)
{
    const Colorants c = d50AdaptedSRGB(whiteFromChromaticity(0.31271, 0.32902));

    // Without a white point every scale is zero.
    const KVColorSpace noWhite(
        KVColorSpaceModel::rgb, "no white",
        buildProfile("RGB ", {{"rXYZ", c.red}, {"gXYZ", c.green}, {"bXYZ", c.blue}}));
    Matrix3 m = kSentinel;
    matrixFromColorSpace(m, &noWhite);
    EXPECT_EQ(maxAbsDifference(m, Matrix3{}), 0.0);

    // Without a red colourant P is singular; its first column stays zero whatever the scale.
    const KVColorSpace noRed(
        KVColorSpaceModel::rgb, "no red",
        buildProfile("RGB ", {{"gXYZ", c.green}, {"bXYZ", c.blue}, {"wtpt", c.white}}));
    m = kSentinel;
    matrixFromColorSpace(m, &noRed);
    EXPECT_EQ(m[0], 0.0);
    EXPECT_EQ(m[3], 0.0);
    EXPECT_EQ(m[6], 0.0);
}

// Tag numbers pass through single precision: 256 + 1/65536 needs 25 significant bits and comes
// out as 256 exactly.
TEST(MatrixFromColorSpace, TagValuesAreConvertedInSinglePrecision)
{
    const Matrix3 srgb = matrixFromChromaticities(sRGBChromaticities());
    Colorants c = {fixedXyz(column(srgb, 0)),
                   fixedXyz(column(srgb, 1)),
                   fixedXyz(column(srgb, 2)),
                   {0x01000001, 0x00010000, 0x00010000}};
    const KVColorSpace space = rgbSpace(c);
    Matrix3 m{};
    matrixFromColorSpace(m, &space);
    const Vector3 white = apply(m, {1.0, 1.0, 1.0});
    EXPECT_NEAR(white[0], 256.0, 1e-10);
    EXPECT_GT(std::fabs(white[0] - (256.0 + 1.0 / 65536.0)), 1e-5);
    EXPECT_NEAR(white[1], 1.0, 1e-12);
    EXPECT_NEAR(white[2], 1.0, 1e-12);
}

} // namespace
} // namespace tintorra
