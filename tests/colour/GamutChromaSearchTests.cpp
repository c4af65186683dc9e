#include "colour/ColorMatrices.h"
#include "colour/GamutChromaSearch.h"
#include "colour/WorkingSpaces.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <numbers>
#include <ostream>
#include <string>
#include <vector>

namespace tintorra {
namespace {

// ---- A plain transcription of the search, one evaluation at a time --------------------------
//
// Everything is recomputed at every step, straight from the formulas, with the smallest and
// largest channel taken as written. The program's search hoists and vectorises this; the tests
// below hold it to the same bits.

struct ReferenceRgb {
    double r, g, b;
};

ReferenceRgb referenceLabRgb(const ChromaSearchCoefficients& p, double h, double L, double C)
{
    const double l16 = 16.0 + L;
    const double yr = L > 8.0 ? 6.40658e-7 * (l16 * l16 * l16) : 0.00110706 * L;
    const double fy = 0.00862069 * L + 0.137931;
    const double fx = fy + 0.002 * C * std::cos(h);
    const double fz = fy - 0.005 * C * std::sin(h);
    const double xr = fx * fx * fx > 0.00885645
                          ? fx * fx * fx
                          : 0.00110705625 * L + 29.0 * 8.85645e-6 * C * std::cos(h);
    const double zr = fz * fz * fz > 0.00885645
                          ? fz * fz * fz
                          : 0.001107055 * L - 29.0 * 2.21411e-5 * C * std::sin(h);
    return {p[0] * xr + p[1] * yr + p[2] * zr, p[3] * xr + p[4] * yr + p[5] * zr,
            p[6] * xr + p[7] * yr + p[8] * zr};
}

ReferenceRgb referenceLuvRgb(const ChromaSearchCoefficients& e, double h, double L, double C)
{
    const double u = C * std::cos(h);
    const double v = C * std::sin(h);
    const double l16 = 16.0 + L;
    const double Y = L > 8.0 ? 6.406576735413506e-7 * (l16 * l16 * l16) : 0.0011070564598794539 * L;
    const double t = Y / (0.164248 * v + L);
    return {t * (e[0] * L + e[1] * u + e[2] * v), t * (e[3] * L + e[4] * u + e[5] * v),
            t * (e[6] * L + e[7] * u + e[8] * v)};
}

double referenceSearch(bool lab, const ChromaSearchCoefficients& table, double h, double L)
{
    if (L <= 0.0 || L >= 100.0) {
        return 0.0;
    }
    double C = lab ? 64.0 : 75.0;
    double s = C;
    double factor = 1.0;
    double smallest = 0.0;
    double largest = 0.0;
    do {
        const ReferenceRgb rgb =
            lab ? referenceLabRgb(table, h, L, C) : referenceLuvRgb(table, h, L, C);
        smallest = std::min(rgb.r, std::min(rgb.g, rgb.b));
        largest = std::max(rgb.r, std::max(rgb.g, rgb.b));
        if (smallest > 0.0 && largest < 1.0) {
            s = s * factor;
            C = C + s;
        } else {
            s = s / 2.0;
            C = C - s;
            factor = 0.5;
        }
    } while (s > 0.001);
    return smallest < 0.0 || largest > 1.0 ? C - s : C;
}

double hueOfRow(int row)
{
    return static_cast<double>(row) * 0.5 * std::numbers::pi / 180.0;
}

Matrix3 inverseMatrixOf(const char* spaceName)
{
    const ColorSpaceChromaticities* space = workingSpaceNamed(spaceName);
    EXPECT_NE(space, nullptr) << spaceName;
    Matrix3 MI{};
    EXPECT_TRUE(invertMatrix3(MI, matrixFromChromaticities(*space)));
    return MI;
}

bool sameBits(double a, double b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

// ---- Coefficients ------------------------------------------------------------------------------

TEST(ChromaSearchCoefficients, LuvCoefficientsReproduceTheCieInversion)
{
    // The folded form must agree with X = 9Yu'/(4v'), Z = Y(12 - 3u' - 20v')/(4v') followed by
    // the matrix. It is not exact: its constants have six digits, and it takes the white's X and
    // Z from the Lab white (0.95047, 1.08883) where the Luv white gives 0.95043 and 1.08890, which
    // moves a channel by up to about 1e-4.
    const Matrix3 MI = inverseMatrixOf("sRGB");
    const ChromaSearchCoefficients e = luvMatrixPrecalc(MI);
    const double un = 0.1978294495177785;
    const double vn = 0.468332168241386;
    struct Sample {
        double L, u, v;
    };
    for (const Sample s : {Sample{50, 20, -30}, Sample{75, -40, 60}, Sample{20, 5, 5}}) {
        const double uPrime = s.u / (13 * s.L) + un;
        const double vPrime = s.v / (13 * s.L) + vn;
        const double Y = std::pow((s.L + 16) / 116, 3);
        const double X = 9 * Y * uPrime / (4 * vPrime);
        const double Z = Y * (12 - 3 * uPrime - 20 * vPrime) / (4 * vPrime);
        const double t = Y / (0.164248 * s.v + s.L);
        for (int k = 0; k < 3; ++k) {
            const double expected = MI[3 * k] * X + MI[3 * k + 1] * Y + MI[3 * k + 2] * Z;
            const double folded = t * (e[3 * k] * s.L + e[3 * k + 1] * s.u + e[3 * k + 2] * s.v);
            EXPECT_NEAR(folded, expected, 1.5e-4) << "channel " << k << " at L " << s.L;
        }
    }
}

// ---- The single search ---------------------------------------------------------------------

TEST(ChromaSearch, BlackAndWhiteAndBeyondHaveNoChroma)
{
    const ChromaSearchCoefficients lab = labMatrixPrecalc(inverseMatrixOf("sRGB"));
    const ChromaSearchCoefficients luv = luvMatrixPrecalc(inverseMatrixOf("sRGB"));
    for (const double L : {0.0, -5.0, 100.0, 120.0}) {
        EXPECT_EQ(labChromaSearch(lab, 1.0, L), 0.0) << L;
        EXPECT_EQ(luvChromaSearch(luv, 1.0, L), 0.0) << L;
    }
}

TEST(ChromaSearch, MatchesTheTranscriptionBitForBit)
{
    for (const char* name : {"sRGB", "Adobe RGB 1998", "ProPhoto RGB", "CIE RGB"}) {
        const Matrix3 MI = inverseMatrixOf(name);
        for (const bool lab : {false, true}) {
            const ChromaSearchCoefficients table =
                lab ? labMatrixPrecalc(MI) : luvMatrixPrecalc(MI);
            for (int row = 0; row < 720; row += 7) {
                for (int column = 0; column <= 200; column += 3) {
                    const double h = hueOfRow(row);
                    const double L = column * 0.5;
                    const double expected = referenceSearch(lab, table, h, L);
                    const double actual =
                        lab ? labChromaSearch(table, h, L) : luvChromaSearch(table, h, L);
                    ASSERT_TRUE(sameBits(actual, expected))
                        << name << (lab ? " Lab" : " Luv") << " row " << row << " column " << column
                        << ": " << actual << " vs " << expected;
                }
            }
        }
    }
}

// ---- Whole rows, vectorised ------------------------------------------------------------------

struct RowCase {
    const char* space;
    bool lab;
    ChromaRowKernel kernel;
};

void PrintTo(const RowCase& value, std::ostream* os)
{
    *os << value.space << (value.lab ? " Lab" : " Luv")
        << (value.kernel == ChromaRowKernel::best ? ", best kernel" : ", baseline kernel");
}

class ChromaSearchRows : public ::testing::TestWithParam<RowCase> {};

TEST_P(ChromaSearchRows, EveryEntryHasTheBitsOfTheTranscription)
{
    const RowCase c = GetParam();
    const Matrix3 MI = inverseMatrixOf(c.space);
    const ChromaSearchCoefficients table = c.lab ? labMatrixPrecalc(MI) : luvMatrixPrecalc(MI);
    std::array<double, kGamutLightnessCount> row{};
    std::size_t mismatches = 0;
    for (int i = 0; i < 720; i += 3) {
        const double h = hueOfRow(i);
        row.fill(-1.0);
        if (c.lab) {
            labChromaSearchRow(table, h, row.data(), c.kernel);
        } else {
            luvChromaSearchRow(table, h, row.data(), c.kernel);
        }
        for (std::size_t j = 0; j < row.size(); ++j) {
            const double expected = referenceSearch(c.lab, table, h, static_cast<double>(j) * 0.5);
            if (!sameBits(row[j], expected)) {
                ++mismatches;
                ADD_FAILURE() << "row " << i << " column " << j << ": " << row[j] << " vs "
                              << expected;
            }
        }
    }
    EXPECT_EQ(mismatches, 0u);
}

std::string rowCaseName(const ::testing::TestParamInfo<RowCase>& info)
{
    std::string name = info.param.space;
    name.erase(
        std::remove_if(name.begin(), name.end(),
                       [](char ch) { return !std::isalnum(static_cast<unsigned char>(ch)); }),
        name.end());
    name += info.param.lab ? "_Lab" : "_Luv";
    name += info.param.kernel == ChromaRowKernel::best ? "_Best" : "_Baseline";
    return name;
}

INSTANTIATE_TEST_SUITE_P(
    SpacesModelsKernels, ChromaSearchRows,
    ::testing::Values(RowCase{"sRGB", false, ChromaRowKernel::best},
                      RowCase{"sRGB", true, ChromaRowKernel::best},
                      RowCase{"sRGB", false, ChromaRowKernel::baseline},
                      RowCase{"sRGB", true, ChromaRowKernel::baseline},
                      RowCase{"Adobe RGB 1998", false, ChromaRowKernel::best},
                      RowCase{"Adobe RGB 1998", true, ChromaRowKernel::baseline},
                      RowCase{"ProPhoto RGB", false, ChromaRowKernel::baseline},
                      RowCase{"ProPhoto RGB", true, ChromaRowKernel::best},
                      RowCase{"Wide Gamut RGB", false, ChromaRowKernel::best},
                      RowCase{"Wide Gamut RGB", true, ChromaRowKernel::best}),
    rowCaseName);

} // namespace
} // namespace tintorra
