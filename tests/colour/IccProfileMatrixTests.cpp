// The matrix of colour spaces tagged with real ICC profiles installed by colord-data,
// icc-profiles-free and argyll-ref, checked against the tag bytes read straight from the files and
// compared with the working-space table.
#include "IccTestBytes.h"
#include "MatrixTestHelpers.h"
#include "colour/ColorMatrices.h"
#include "colour/IccProfiles.h"
#include "colour/KVColorSpace.h"
#include "colour/WorkingSpaces.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <optional>
#include <ostream>
#include <string>

namespace tintorra {
namespace {

using test::maxAbsDifference;
using test::Vector3;
using test::whiteFromChromaticity;

const std::string kColord = "/usr/share/color/icc/colord/";
const std::string kIccFree = "/usr/share/color/icc/";
const std::string kArgyll = "/usr/share/color/argyll/ref/";

// How the matrix read from a profile relates to matrixFromChromaticities of the table row with the
// same primaries and white. Every profile here stores colourants that add up to D50, so the
// colourants are always Bradford-adapted from D50 to D65; the scale then comes from the white
// point tag as stored.
enum class Outcome {
    // Version 2, D65 space, white point tag D65: the adaptation undoes the profile maker's and the
    // scale lands on D65. What is left is the 1/65536 steps of the tags and the makers' slightly
    // different whites.
    agrees,
    // Version 4, D65 space: the white point tag holds D50. The columns get back the primaries'
    // chromaticities, but RGB white maps to D50 instead of D65, so the matrix is off by about
    // 0.26 (mostly in Z).
    primariesAgreeWhiteIsD50,
    // A space whose own white is not D65 (D50, C or E): its D50 colourants are taken to D65 all
    // the same, which moves the primaries' chromaticities by 0.01 to 0.04, and the white lands on
    // the white point tag (D50).
    primariesMoved,
};

struct RealProfile {
    std::string path;
    const char* workingSpace;
    int majorVersion;
    Outcome outcome;
    // Max element difference from the row's matrix and max difference of the columns'
    // chromaticities from the row's primaries, both as measured by these tests.
    double matrixDifference;
    double chromaticityDifference;
};

// Shown by the test runner instead of the raw bytes of the record.
void PrintTo(const RealProfile& profile, std::ostream* os)
{
    *os << profile.path << " (" << profile.workingSpace << ")";
}

std::string nameOf(const testing::TestParamInfo<RealProfile>& info)
{
    std::string name = info.param.path.substr(info.param.path.find("color/") + 6);
    std::replace_if(
        name.begin(), name.end(),
        [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); }, '_');
    return name;
}

const RealProfile kProfiles[] = {
    {kArgyll + "sRGB.icm", "sRGB", 2, Outcome::agrees, 2.24e-4, 2.32e-5},
    {kArgyll + "Rec709.icm", "sRGB", 2, Outcome::agrees, 2.24e-4, 2.32e-5},
    {kArgyll + "ClayRGB1998.icm", "Adobe RGB 1998", 2, Outcome::agrees, 1.91e-4, 1.58e-5},
    {kArgyll + "EBU3213_PAL.icm", "PAL/SECAM RGB", 2, Outcome::agrees, 2.25e-4, 2.40e-5},
    {kArgyll + "SMPTE_RP145_NTSC.icm", "SMPTE-C RGB", 2, Outcome::agrees, 2.16e-4, 1.95e-5},
    {kIccFree + "compatibleWithAdobeRGB1998.icc", "Adobe RGB 1998", 2, Outcome::agrees, 1.91e-4,
     1.58e-5},
    // Its white point tag is (0.9501, 1, 1.0883), a little off D65.
    {kIccFree + "sRGB.icc", "sRGB", 2, Outcome::agrees, 6.88e-4, 8.63e-5},

    {kColord + "sRGB.icc", "sRGB", 4, Outcome::primariesAgreeWhiteIsD50, 0.265, 8.63e-5},
    {kColord + "Rec709.icc", "sRGB", 4, Outcome::primariesAgreeWhiteIsD50, 0.265, 8.63e-5},
    {kColord + "AdobeRGB1998.icc", "Adobe RGB 1998", 4, Outcome::primariesAgreeWhiteIsD50, 0.265,
     8.75e-5},
    {kColord + "AppleRGB.icc", "Apple RGB", 4, Outcome::primariesAgreeWhiteIsD50, 0.265, 8.37e-5},
    {kColord + "BruceRGB.icc", "Bruce RGB", 4, Outcome::primariesAgreeWhiteIsD50, 0.266, 8.58e-5},
    {kColord + "PAL-RGB.icc", "PAL/SECAM RGB", 4, Outcome::primariesAgreeWhiteIsD50, 0.264,
     8.47e-5},
    {kColord + "SMPTE-C-RGB.icc", "SMPTE-C RGB", 4, Outcome::primariesAgreeWhiteIsD50, 0.265,
     7.86e-5},

    {kColord + "BestRGB.icc", "Best RGB", 4, Outcome::primariesMoved, 0.0276, 0.0299},
    {kColord + "BetaRGB.icc", "Beta RGB", 4, Outcome::primariesMoved, 0.0239, 0.0201},
    {kColord + "ColorMatchRGB.icc", "ColorMatch RGB", 4, Outcome::primariesMoved, 0.0425, 0.0216},
    {kColord + "DonRGB4.icc", "Don RGB 4", 4, Outcome::primariesMoved, 0.0267, 0.0260},
    {kColord + "ECI-RGBv2.icc", "ECI RGB v2", 4, Outcome::primariesMoved, 0.0253, 0.0200},
    {kColord + "EktaSpacePS5.icc", "Ekta Space PS5", 4, Outcome::primariesMoved, 0.0332, 0.0197},
    {kColord + "ProPhotoRGB.icc", "ProPhoto RGB", 4, Outcome::primariesMoved, 0.0310, 0.0371},
    {kColord + "WideGamutRGB.icc", "Wide Gamut RGB", 4, Outcome::primariesMoved, 0.0260, 0.0195},
    // Whites C and E: their colourants were adapted to D50 from C or E, but go on to D65.
    {kColord + "NTSC-RGB.icc", "NTSC RGB", 4, Outcome::primariesMoved, 0.355, 0.00989},
    {kColord + "CIE-RGB.icc", "CIE RGB", 4, Outcome::primariesMoved, 0.175, 0.0267},
    // A version 2 profile of a D50 space behaves the same.
    {kArgyll + "ProPhoto.icm", "ProPhoto RGB", 2, Outcome::primariesMoved, 0.0310, 0.0371},
};

// The profile's file, parsed here byte by byte, and the space the program makes of it.
struct Loaded {
    test::ParsedProfile parsed;
    KVColorSpace space;
};

std::optional<Loaded> load(const std::string& path)
{
    const auto bytes = test::readFileBytes(path);
    if (!bytes) {
        return std::nullopt;
    }
    auto parsed = test::parseProfile(*bytes);
    auto space = colorSpaceFromIccProfile(*bytes);
    if (!parsed || !space) {
        ADD_FAILURE() << path << " does not parse";
        return std::nullopt;
    }
    return Loaded{std::move(*parsed), std::move(*space)};
}

Vector3 tagOrZero(const test::ParsedProfile& parsed, const char* tag)
{
    const auto xyz = test::xyzTag(parsed, tag);
    return xyz ? *xyz : Vector3{0.0, 0.0, 0.0};
}

double maxChromaticityDifference(const Matrix3& a, const Matrix3& b)
{
    double largest = 0.0;
    for (int c = 0; c < 3; ++c) {
        const double sumA = a[c] + a[3 + c] + a[6 + c];
        const double sumB = b[c] + b[3 + c] + b[6 + c];
        largest = std::max({largest, std::fabs(a[c] / sumA - b[c] / sumB),
                            std::fabs(a[3 + c] / sumA - b[3 + c] / sumB)});
    }
    return largest;
}

class RealProfileMatrix : public testing::TestWithParam<RealProfile> {};

// The matrix rebuilt here from the tag bytes: colourants adapted when they add up to D50 (the
// adaptation matrix being the one checked against published values elsewhere), then scaled by
// Cramer's rule onto the white point tag.
TEST_P(RealProfileMatrix, MatchesTheTagsReadFromTheFile)
{
    const RealProfile& p = GetParam();
    const auto loaded = load(p.path);
    if (!loaded) {
        GTEST_SKIP() << p.path << " is not installed";
    }
    EXPECT_EQ(loaded->parsed.majorVersion, p.majorVersion);
    EXPECT_EQ(loaded->space.model(), KVColorSpaceModel::rgb);

    const Vector3 colorants[3] = {tagOrZero(loaded->parsed, "rXYZ"),
                                  tagOrZero(loaded->parsed, "gXYZ"),
                                  tagOrZero(loaded->parsed, "bXYZ")};
    const Vector3 white = tagOrZero(loaded->parsed, "wtpt");

    Vector3 sum{};
    for (const Vector3& c : colorants) {
        for (int i = 0; i < 3; ++i) {
            sum[i] += c[i];
        }
    }
    const bool d50Sums = std::fabs(sum[0] - 0.9642) <= 0.001 && std::fabs(sum[1] - 1.0) <= 0.001 &&
                         std::fabs(sum[2] - 0.8249) <= 0.001;
    EXPECT_TRUE(d50Sums);

    Matrix3 adaptation = test::kIdentity;
    if (d50Sums) {
        const Vector3 d50 = whiteFromChromaticity(0.34567, 0.3585);
        const Vector3 d65 = whiteFromChromaticity(0.31271, 0.32902);
        for (int j = 0; j < 3; ++j) {
            double unit[3] = {0.0, 0.0, 0.0};
            unit[j] = 1.0;
            double out[3];
            ASSERT_EQ(adaptXyz(unit, d50.data(), out, d65.data(), kAdaptationBradford), 0);
            for (int i = 0; i < 3; ++i) {
                adaptation[i * 3 + j] = out[i];
            }
        }
    }
    Matrix3 q{};
    for (int col = 0; col < 3; ++col) {
        const Vector3 adapted = test::apply(adaptation, colorants[col]);
        for (int row = 0; row < 3; ++row) {
            q[row * 3 + col] = adapted[row];
        }
    }
    const Vector3 s = test::solveByCramer(q, white);
    Matrix3 expected{};
    for (int i = 0; i < 9; ++i) {
        expected[i] = q[i] * s[i % 3];
    }

    Matrix3 m{};
    matrixFromColorSpace(m, &loaded->space);
    EXPECT_LT(maxAbsDifference(m, expected), 1e-12);

    // The white column sums are the white point tag as stored.
    const Vector3 rgbWhite = test::apply(m, {1.0, 1.0, 1.0});
    for (int i = 0; i < 3; ++i) {
        EXPECT_NEAR(rgbWhite[i], white[i], 1e-12);
    }

    Matrix3 mi{};
    inverseMatrixFromColorSpace(mi, &loaded->space);
    EXPECT_LT(maxAbsDifference(test::product(m, mi), test::kIdentity), 1e-12);
}

TEST_P(RealProfileMatrix, ComparesWithTheWorkingSpaceRowAsMeasured)
{
    const RealProfile& p = GetParam();
    const auto loaded = load(p.path);
    if (!loaded) {
        GTEST_SKIP() << p.path << " is not installed";
    }
    const ColorSpaceChromaticities* row = workingSpaceNamed(p.workingSpace);
    ASSERT_NE(row, nullptr);
    Matrix3 m{};
    matrixFromColorSpace(m, &loaded->space);
    const Matrix3 reference = matrixFromChromaticities(*row);

    const double matrixDifference = maxAbsDifference(m, reference);
    const double chromaticityDifference = maxChromaticityDifference(m, reference);
    // The figures in the table were printed to three digits.
    EXPECT_NEAR(matrixDifference, p.matrixDifference, 0.005 * p.matrixDifference);
    EXPECT_NEAR(chromaticityDifference, p.chromaticityDifference, 0.005 * p.chromaticityDifference);

    const Vector3 rgbWhite = test::apply(m, {1.0, 1.0, 1.0});
    switch (p.outcome) {
    case Outcome::agrees:
        EXPECT_LT(matrixDifference, 1e-3);
        EXPECT_LT(chromaticityDifference, 1e-4);
        EXPECT_NEAR(rgbWhite[2], 1.089, 1e-3); // D65
        break;
    case Outcome::primariesAgreeWhiteIsD50:
        EXPECT_GT(matrixDifference, 0.2);
        EXPECT_LT(chromaticityDifference, 1e-4);
        EXPECT_NEAR(rgbWhite[2], 0.8249, 1e-3); // D50
        break;
    case Outcome::primariesMoved:
        EXPECT_GT(matrixDifference, 0.02);
        EXPECT_GT(chromaticityDifference, 0.009);
        EXPECT_NEAR(rgbWhite[2], 0.8249, 1e-3); // D50
        break;
    }
}

INSTANTIATE_TEST_SUITE_P(Installed, RealProfileMatrix, testing::ValuesIn(kProfiles), nameOf);

} // namespace
} // namespace tintorra
