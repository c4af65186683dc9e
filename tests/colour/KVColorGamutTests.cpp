#include "GamutTestSupport.h"
#include "colour/ColorMatrices.h"
#include "colour/IccProfiles.h"
#include "colour/KVColorGamut.h"
#include "colour/KVColorSpace.h"
#include "colour/WorkingSpaces.h"
#include "support/DiagnosticsCapture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <memory>
#include <numbers>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

namespace tintorra {
namespace {

using testSupport::lchToLinearRgb;
using testSupport::linearRgbToLch;
using testSupport::Rgb;

constexpr double kPi = std::numbers::pi;

double radians(double degrees)
{
    return degrees * kPi / 180.0;
}

// Gamuts are costly enough to share between the tests that only read them.
KVColorGamutPtr sharedGamut(const char* spaceName, ColorSpaceModel model)
{
    static std::map<std::pair<std::string, ColorSpaceModel>, KVColorGamutPtr> cache;
    const auto key = std::make_pair(std::string(spaceName), model);
    auto found = cache.find(key);
    if (found == cache.end()) {
        found =
            cache
                .emplace(key,
                         std::make_shared<const KVColorGamut>(*workingSpaceNamed(spaceName), model))
                .first;
    }
    return found->second;
}

Matrix3 matrixOf(const KVColorGamut& gamut)
{
    Matrix3 m{};
    gamut.copy_RGB_to_XYZ_matrix(m);
    return m;
}

Matrix3 inverseOf(const KVColorGamut& gamut)
{
    Matrix3 m{};
    gamut.copy_XYZ_to_RGB_matrix(m);
    return m;
}

// ---- Initialisers --------------------------------------------------------------------------

TEST(KVColorGamut, DefaultIsSRGBOverLuvAndOnlyModelOneIsLab)
{
    const KVColorGamut gamut;
    EXPECT_EQ(gamut.colorSpaceModel(), ColorSpaceModel::LChuv);
    EXPECT_EQ(matrixOf(gamut), matrixFromChromaticities(sRGBChromaticities()));
    ASSERT_TRUE(gamut.hasTables());
    // A mode without a gamut of its own builds exactly the Luv tables.
    const KVColorGamut seven(sRGBChromaticities(), ColorSpaceModel::HSB);
    const KVColorGamut& reference = *sharedGamut("sRGB", ColorSpaceModel::LChuv);
    for (std::size_t i = 0; i < KVColorGamut::kHueCount; i += 37) {
        for (std::size_t j = 0; j < KVColorGamut::kLightnessCount; ++j) {
            ASSERT_EQ(gamut.tableChroma(i, j), reference.tableChroma(i, j)) << i << "," << j;
            ASSERT_EQ(seven.tableChroma(i, j), reference.tableChroma(i, j)) << i << "," << j;
        }
    }
    for (const ColorSpaceModel given : kColorSpaceModels) {
        const ColorSpaceModel stored =
            given == ColorSpaceModel::LChab ? ColorSpaceModel::LChab : ColorSpaceModel::LChuv;
        EXPECT_EQ(KVColorGamut(sRGBChromaticities(), given).colorSpaceModel(), stored)
            << colorSpaceModelNumber(given);
    }
}

TEST(KVColorGamut, ColorSpaceInitialisers)
{
    // No space means sRGB; a tagged space takes the matrix its profile gives; a grey space leaves
    // both matrices zero.
    const KVColorGamut none(static_cast<const KVColorSpace*>(nullptr), ColorSpaceModel::LChab);
    EXPECT_EQ(matrixOf(none), matrixFromChromaticities(sRGBChromaticities()));
    EXPECT_EQ(none.colorSpaceModel(), ColorSpaceModel::LChab);

    const KVColorSpace profiled = sRGBColorSpace();
    Matrix3 expected{};
    matrixFromColorSpace(expected, &profiled);
    const KVColorGamut byReference(profiled, ColorSpaceModel::LChuv);
    const KVColorGamut byPointer(&profiled, ColorSpaceModel::LChuv);
    EXPECT_EQ(matrixOf(byReference), expected);
    EXPECT_EQ(matrixOf(byPointer), expected);
    EXPECT_NE(expected, Matrix3{});
    // Its tables belong to that matrix: just inside at the entry, outside a little beyond.
    const Matrix3 MI = inverseOf(byReference);
    for (const std::size_t i : {0u, 200u, 470u}) {
        const double h = radians(i * 0.5);
        const double C = byReference.tableChroma(i, 100);
        EXPECT_TRUE(lchToLinearRgb(false, 50.0, C - 0.002, h, MI).within(-2e-4, 1.0 + 2e-4)) << i;
        EXPECT_FALSE(lchToLinearRgb(false, 50.0, C + 0.05, h, MI).within(2e-4, 1.0 - 2e-4)) << i;
    }

    const KVColorGamut grey(KVColorSpace::deviceGray(), ColorSpaceModel::LChuv);
    EXPECT_EQ(matrixOf(grey), Matrix3{});
    EXPECT_EQ(inverseOf(grey), Matrix3{});

    const KVColorGamut& adobe = *sharedGamut("Adobe RGB 1998", ColorSpaceModel::LChab);
    EXPECT_EQ(matrixOf(adobe), matrixFromChromaticities(*workingSpaceNamed("Adobe RGB 1998")));
    Matrix3 product{};
    multiplyMatrix3(product, matrixOf(adobe), inverseOf(adobe));
    for (int k = 0; k < 9; ++k) {
        EXPECT_NEAR(product[k], k % 4 == 0 ? 1.0 : 0.0, 1e-12) << k;
    }
}

TEST(KVColorGamut, NonRgbSpaceHoldsTheSmallestStepEverywhereButBlackAndWhite)
{
    // The tables of black and white stay 0; everything between ends at the last step of a search
    // that never finds an inside colour: from 64 the step halves 16 times (64/65536 is the first
    // step not above 0.001), from 75 it takes 17 halvings, since 75/65536 is still above 0.001.
    struct Case {
        ColorSpaceModel model;
        double step;
    };
    for (const Case c : {Case{ColorSpaceModel::LChab, 64.0 / 65536.0},
                         Case{ColorSpaceModel::LChuv, 75.0 / 131072.0}}) {
        const KVColorGamut grey(KVColorSpace::deviceGray(), c.model);
        for (std::size_t i = 0; i < KVColorGamut::kHueCount; i += 45) {
            EXPECT_EQ(grey.tableChroma(i, 0), 0.0);
            EXPECT_EQ(grey.tableChroma(i, 200), 0.0);
            for (std::size_t j = 1; j < 200; j += 11) {
                EXPECT_EQ(grey.tableChroma(i, j), c.step)
                    << colorSpaceModelNumber(c.model) << " " << i << "," << j;
            }
        }
    }
}

TEST(KVColorGamut, BuildingStepsByName)
{
    test::captureDiagnostics();
    KVColorGamut gamut(sRGBChromaticities(), ColorSpaceModel::LChab);
    test::capturedDiagnostics();
    // The single searches reproduce the table of the model whose coefficients are loaded.
    for (const std::size_t i : {0u, 111u, 500u}) {
        for (const std::size_t j : {1u, 64u, 150u}) {
            EXPECT_EQ(gamut.LabChromaIterationForHue(radians(i * 0.5), j * 0.5),
                      gamut.tableChroma(i, j));
        }
    }
    const KVColorGamut& luv = *sharedGamut("sRGB", ColorSpaceModel::LChuv);
    gamut.LuvMatrixPrecalc();
    EXPECT_EQ(gamut.LuvChromaIterationForHue(radians(60.0), 40.0), luv.tableChroma(120, 80));
    gamut.LabMatrixPrecalc();
    EXPECT_EQ(gamut.LabChromaIterationForHue(radians(60.0), 40.0), gamut.tableChroma(120, 80));

    // initVars starts the matrices and the grid over; the tables stay.
    gamut.buildRGBColors();
    ASSERT_EQ(gamut.actualNumberOfPoints(), 9261u);
    gamut.initVars();
    EXPECT_EQ(gamut.actualNumberOfPoints(), 0u);
    EXPECT_TRUE(gamut.rgbColors().empty());
    EXPECT_EQ(matrixOf(gamut), Matrix3{});
    EXPECT_EQ(inverseOf(gamut), Matrix3{});
    EXPECT_TRUE(gamut.hasTables());
}

TEST(KVColorGamut, DescriptionNamesClassAddressAndModel)
{
    const KVColorGamut& gamut = *sharedGamut("sRGB", ColorSpaceModel::LChab);
    char expected[96];
    std::snprintf(expected, sizeof expected, "<<KVColorGamut: %p>> colorSpaceModel: 1",
                  static_cast<const void*>(&gamut));
    EXPECT_EQ(gamut.description(), expected);
}

// ---- Allocation failure ----------------------------------------------------------------------

struct AllocationCase {
    long failing;
    const char* diagnostics;
};

// The expected text holds newlines; the failing allocation alone tells the cases apart.
void PrintTo(const AllocationCase& c, std::ostream* os)
{
    *os << "{failing=" << c.failing << "}";
}

class KVColorGamutAllocation : public ::testing::TestWithParam<AllocationCase> {};

TEST_P(KVColorGamutAllocation, LeavesBothTablesAbsentAndSaysWhy)
{
    test::captureDiagnostics();
    const KVColorGamut gamut(sRGBChromaticities(), ColorSpaceModel::LChuv, GetParam().failing);
    const std::string said = test::capturedDiagnostics();

    EXPECT_FALSE(gamut.hasTables());
    EXPECT_EQ(said, std::string(GetParam().diagnostics) +
                        "Memory allocation failed building lookup tables");
    EXPECT_EQ(gamut.chromaForHue(1.0, 50.0), 0.0);
}

INSTANTIATE_TEST_SUITE_P(
    EachAllocation, KVColorGamutAllocation,
    ::testing::Values(
        AllocationCase{0, ""},
        AllocationCase{1, "Memory allocation failed while allocating for matrix[].\n"},
        AllocationCase{2, "Memory allocation failed while allocating matrix[0][201]\n"},
        AllocationCase{2 + 719, "Memory allocation failed while allocating matrix[719][201]\n"}));

TEST(KVColorGamutAllocationRecovery, NextBuildSucceedsOnceAllocationWorksAgain)
{
    test::captureDiagnostics();
    KVColorGamut gamut(sRGBChromaticities(), ColorSpaceModel::LChuv, 5);
    test::capturedDiagnostics();
    ASSERT_FALSE(gamut.hasTables());
    gamut.buildChromaLUTsExact();
    ASSERT_TRUE(gamut.hasTables());
    EXPECT_EQ(gamut.chromaForHue(1.0, 50.0),
              sharedGamut("sRGB", ColorSpaceModel::LChuv)->chromaForHue(1.0, 50.0));
}

// ---- Lookups ---------------------------------------------------------------------------------

TEST(KVColorGamutLookup, BlackWhiteAndBeyondHaveNoChroma)
{
    const KVColorGamut& gamut = *sharedGamut("sRGB", ColorSpaceModel::LChab);
    for (const double L : {0.0, -0.3, -7.0, 100.0, 100.2, 250.0, std::nan("")}) {
        EXPECT_EQ(gamut.chromaForHue(1.0, L), 0.0) << L;
    }
    // Just above black the first column is still mixed in.
    EXPECT_DOUBLE_EQ(gamut.chromaForHue(0.0, 0.2), 0.4 * gamut.tableChroma(0, 1));
    EXPECT_GT(gamut.chromaForHue(0.0, 0.2), 0.0);
    EXPECT_EQ(gamut.chromaForHue(std::nan(""), 50.0), 0.0);
    EXPECT_EQ(gamut.chromaForHue(INFINITY, 50.0), 0.0);
}

TEST(KVColorGamutLookup, InterpolatesBetweenNeighbours)
{
    const KVColorGamut& gamut = *sharedGamut("sRGB", ColorSpaceModel::LChuv);
    struct Case {
        double degrees;
        double lightness;
        std::size_t i0, i1, j0, j1;
        double fx, fy;
    };
    const Case cases[] = {
        {10.0, 99.9, 20, 20, 199, 200, 0.0, 0.8},  // last two columns, exact half degree
        {10.0, 0.1, 20, 20, 0, 1, 0.0, 0.2},       // first two columns
        {359.9, 50.0, 719, 0, 100, 100, 0.8, 0.0}, // across the seam, exact column
        {359.9, 50.3, 719, 0, 100, 101, 0.8, 0.6}, // across the seam, both mixes
        {12.3, 33.3, 24, 25, 66, 67, 0.6, 0.6},    // ordinary cell
        {120.0, 38.5, 240, 240, 77, 77, 0.0, 0.0}, // on a grid point
    };
    for (const Case& c : cases) {
        const auto T = [&](std::size_t i, std::size_t j) { return gamut.tableChroma(i, j); };
        const double expected = (1 - c.fx) * (1 - c.fy) * T(c.i0, c.j0) +
                                c.fx * (1 - c.fy) * T(c.i1, c.j0) +
                                (1 - c.fx) * c.fy * T(c.i0, c.j1) + c.fx * c.fy * T(c.i1, c.j1);
        EXPECT_NEAR(gamut.chromaForHue(radians(c.degrees), c.lightness), expected, 1e-9)
            << c.degrees << " " << c.lightness;
    }
}

TEST(KVColorGamutLookup, HueWrapsInRadians)
{
    const KVColorGamut& gamut = *sharedGamut("Adobe RGB 1998", ColorSpaceModel::LChab);
    for (const double L : {25.0, 50.25, 80.7}) {
        for (const auto& [h, same] : {std::pair{radians(-0.25), radians(359.75)},
                                      {radians(-90.0), radians(270.0)},
                                      {radians(45.3) + 4 * kPi, radians(45.3)},
                                      {2 * kPi, 0.0}}) {
            EXPECT_NEAR(gamut.chromaForHue(h, L), gamut.chromaForHue(same, L), 1e-9) << h;
        }
    }
}

TEST(KVColorGamutLookup, MaxChromaTakesTheNearestHalfDegree)
{
    const KVColorGamut& gamut = *sharedGamut("sRGB", ColorSpaceModel::LChuv);
    struct Case {
        double degrees;
        std::size_t row;
    };
    for (const Case c : {Case{0.0, 0}, Case{359.8, 0}, Case{359.7, 719}, Case{0.2, 0}, Case{0.3, 1},
                         Case{-0.5, 719}, Case{90.0, 180}, Case{180.26, 361}, Case{720.1, 0}}) {
        const ColorComponents record = gamut.maxChromaForHue(radians(c.degrees));
        const ColorComponents& expected = gamut.tableMaxChroma(c.row);
        EXPECT_EQ(record, expected) << c.degrees;
        EXPECT_NEAR(record.c2, radians(c.row * 0.5), 1e-12) << c.degrees;
        EXPECT_EQ(record.alpha, 1.0);
    }
}

// ---- Table contents against independent conversions ------------------------------------------

struct SpaceModel {
    const char* space;
    ColorSpaceModel model;
};

void PrintTo(const SpaceModel& value, std::ostream* os)
{
    *os << value.space << (value.model == ColorSpaceModel::LChab ? " Lab" : " Luv");
}

class KVColorGamutTables : public ::testing::TestWithParam<SpaceModel> {};

TEST_P(KVColorGamutTables, EveryEntrySitsOnTheGamutBoundary)
{
    // Just below the tabulated chroma the colour is inside the RGB cube; a little beyond it is
    // outside. Checked with textbook CIE conversions, away from black and white.
    //
    // The Luv search folds the inversion into coefficients that take the white's X and Z from the
    // Lab white (0.95047, 1.08883) while u'n, v'n come from x, y = 0.31271, 0.32902 (X 0.950429,
    // Z 1.088900). Against the exact inversion its channels are therefore off by up to 1.3e-4
    // (measured: sRGB 1.24e-4, Adobe RGB 7.4e-5, ProPhoto 6.5e-5), which where a channel crosses
    // its limit at a shallow angle moves the boundary by up to 0.2 in chroma. The Lab search's
    // rounded constants cost at most 5.5e-7. Spaces whose white is not D65 (ProPhoto) have no
    // inside colour at all near white, not even grey; there the search steps back to 0 and the
    // inside check is skipped.
    const auto [space, model] = GetParam();
    const KVColorGamut& gamut = *sharedGamut(space, model);
    const Matrix3 MI = inverseOf(gamut);
    const bool lab = model == ColorSpaceModel::LChab;
    const double slack = lab ? 1e-6 : 2e-4;
    std::size_t failures = 0;
    std::size_t checked = 0;
    for (std::size_t i = 0; i < KVColorGamut::kHueCount && failures < 10; ++i) {
        const double h = radians(i * 0.5);
        for (std::size_t j = 0; j < KVColorGamut::kLightnessCount && failures < 10; ++j) {
            const double L = j * 0.5;
            const double C = gamut.tableChroma(i, j);
            ASSERT_GE(C, 0.0);
            if (L < 1.0 || L > 99.0 || C < 0.002) {
                continue;
            }
            ++checked;
            const Rgb below = lchToLinearRgb(lab, L, C - 0.002, h, MI);
            const Rgb beyond = lchToLinearRgb(lab, L, C + 0.05, h, MI);
            if (!below.within(-slack, 1.0 + slack)) {
                ++failures;
                ADD_FAILURE() << "not inside at " << i << "," << j << " C " << C << ": " << below.r
                              << ", " << below.g << ", " << below.b;
            }
            if (lab ? beyond.within(0.0, 1.0) : beyond.within(slack, 1.0 - slack)) {
                ++failures;
                ADD_FAILURE() << "not outside at " << i << "," << j << " C " << C << ": "
                              << beyond.r << ", " << beyond.g << ", " << beyond.b;
            }
        }
    }
    EXPECT_GT(checked, 120000u);
}

TEST_P(KVColorGamutTables, MaxChromaRecordIsTheFirstLargestEntryOfItsRow)
{
    const auto [space, model] = GetParam();
    const KVColorGamut& gamut = *sharedGamut(space, model);
    for (std::size_t i = 0; i < KVColorGamut::kHueCount; ++i) {
        std::vector<double> row(KVColorGamut::kLightnessCount);
        for (std::size_t j = 0; j < row.size(); ++j) {
            row[j] = gamut.tableChroma(i, j);
        }
        // max_element returns the first of equal maxima: ties keep the lower lightness.
        const auto largest = std::max_element(row.begin(), row.end());
        const ColorComponents& record = gamut.tableMaxChroma(i);
        ASSERT_EQ(record.c1, *largest) << i;
        ASSERT_EQ(record.c0, static_cast<double>(largest - row.begin()) * 0.5) << i;
        ASSERT_NEAR(record.c2, radians(i * 0.5), 1e-12) << i;
        ASSERT_EQ(record.alpha, 1.0) << i;
    }
}

std::string spaceModelName(const ::testing::TestParamInfo<SpaceModel>& info)
{
    std::string name;
    for (const char* p = info.param.space; *p; ++p) {
        if (std::isalnum(static_cast<unsigned char>(*p))) {
            name += *p;
        }
    }
    return name + (info.param.model == ColorSpaceModel::LChab ? "_Lab" : "_Luv");
}

INSTANTIATE_TEST_SUITE_P(SpacesAndModels, KVColorGamutTables,
                         ::testing::Values(SpaceModel{"sRGB", ColorSpaceModel::LChuv},
                                           SpaceModel{"sRGB", ColorSpaceModel::LChab},
                                           SpaceModel{"Adobe RGB 1998", ColorSpaceModel::LChuv},
                                           SpaceModel{"Adobe RGB 1998", ColorSpaceModel::LChab},
                                           SpaceModel{"ProPhoto RGB", ColorSpaceModel::LChuv},
                                           SpaceModel{"ProPhoto RGB", ColorSpaceModel::LChab}),
                         spaceModelName);

TEST(KVColorGamutTables, HueZeroPeaksOnTheEdgeFromRedToMagenta)
{
    // Hue 0 lies between sRGB red and magenta in both models, so its most chromatic colour is
    // on the cube edge r = 1, g = 0: the point (1, 0, t) whose hue is 0, found here by bisection
    // on t with textbook conversions. The table can only sample it at half units of lightness.
    for (const ColorSpaceModel model : {ColorSpaceModel::LChuv, ColorSpaceModel::LChab}) {
        const bool lab = model == ColorSpaceModel::LChab;
        const KVColorGamut& gamut = *sharedGamut("sRGB", model);
        const Matrix3 M = matrixOf(gamut);
        const ColorComponents red = linearRgbToLch(lab, 1, 0, 0, M);
        const ColorComponents magenta = linearRgbToLch(lab, 1, 0, 1, M);
        ASSERT_GT(red.c2, 0.0);
        ASSERT_LT(magenta.c2, 0.0);
        double low = 0.0;
        double high = 1.0;
        for (int step = 0; step < 60; ++step) {
            const double t = 0.5 * (low + high);
            (linearRgbToLch(lab, 1, 0, t, M).c2 > 0.0 ? low : high) = t;
        }
        const ColorComponents cusp = linearRgbToLch(lab, 1, 0, low, M);

        const ColorComponents record = gamut.maxChromaForHue(0.0);
        EXPECT_EQ(record.c2, 0.0);
        EXPECT_NEAR(record.c0, cusp.c0, 0.5) << colorSpaceModelNumber(model);
        EXPECT_LE(record.c1, cusp.c1 + 0.01) << colorSpaceModelNumber(model);
        EXPECT_GE(record.c1, cusp.c1 - 2.0) << colorSpaceModelNumber(model);
        EXPECT_GT(record.c0, red.c0) << colorSpaceModelNumber(model);
        EXPECT_LT(record.c0, magenta.c0) << colorSpaceModelNumber(model);
        const Rgb rgb = lchToLinearRgb(lab, record.c0, record.c1, 0.0, inverseOf(gamut));
        EXPECT_NEAR(rgb.r, 1.0, 0.02) << colorSpaceModelNumber(model);
        EXPECT_NEAR(rgb.g, 0.0, 0.02) << colorSpaceModelNumber(model);
        EXPECT_NEAR(rgb.b, low, 0.02) << colorSpaceModelNumber(model);
    }
}

// ---- Concurrency ----------------------------------------------------------------------------

TEST(KVColorGamutConcurrency, GamutsBuiltOnSeveralThreadsAtOnceAgree)
{
    std::vector<std::unique_ptr<KVColorGamut>> gamuts(2);
    test::captureDiagnostics();
    std::vector<std::thread> builders;
    for (std::size_t t = 0; t < gamuts.size(); ++t) {
        builders.emplace_back([&, t] {
            gamuts[t] =
                std::make_unique<KVColorGamut>(sRGBChromaticities(), ColorSpaceModel::LChab);
        });
    }
    for (std::thread& builder : builders) {
        builder.join();
    }
    test::capturedDiagnostics();
    const KVColorGamut& reference = *sharedGamut("sRGB", ColorSpaceModel::LChab);
    for (const auto& gamut : gamuts) {
        for (std::size_t i = 0; i < KVColorGamut::kHueCount; i += 13) {
            for (std::size_t j = 0; j < KVColorGamut::kLightnessCount; j += 5) {
                ASSERT_EQ(gamut->tableChroma(i, j), reference.tableChroma(i, j));
            }
        }
    }
}

} // namespace
} // namespace tintorra
