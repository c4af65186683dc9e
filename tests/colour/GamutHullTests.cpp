#include "colour/GamutHull.h"
#include "colour/KVColorGamut.h"
#include "colour/WorkingSpaces.h"
#include "support/DiagnosticsCapture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <numbers>
#include <vector>

namespace tintorra {
namespace {

double radians(double degrees)
{
    return degrees * std::numbers::pi / 180.0;
}

// ---- Ray against one triangle ----------------------------------------------------------------

TEST(RayTriangleDistance, HitsMissesAndDegenerateCases)
{
    // A triangle in the plane x = d around the x axis; rays start at the origin.
    const double s = 1.0 / std::sqrt(2.0);
    const double n = 1.0 / std::sqrt(1.0 + 0.64 + 0.64);
    const struct {
        const char* what;
        double plane;
        double direction[3];
        double expected; // negative: no hit
    } cases[] = {
        {"straight on", 2.0, {1, 0, 0}, 2.0},
        {"slanted, still inside", 2.0, {s, s * 0.4, 0}, 2.0 / s},
        {"pointing away", 2.0, {-1, 0, 0}, -1.0},
        {"passing beside it", 2.0, {s, -s, 0}, -1.0},
        {"parallel to its plane", 2.0, {0, 1, 0}, -1.0},
        {"through the hypotenuse's far side", 2.0, {n, 0.8 * n, 0.8 * n}, -1.0},
        {"too close counts as no hit", 1e-7, {1, 0, 0}, -1.0},
        {"just far enough", 2e-6, {1, 0, 0}, 2e-6},
    };
    const double origin[3] = {0, 0, 0};
    for (const auto& c : cases) {
        const double v0[3] = {c.plane, -1, -1};
        const double v1[3] = {c.plane, 2, -1};
        const double v2[3] = {c.plane, -1, 2};
        const double t = rayTriangleDistance(origin, c.direction, v0, v1, v2);
        if (c.expected < 0.0) {
            EXPECT_LT(t, 0.0) << c.what;
        } else {
            EXPECT_NEAR(t, c.expected, 1e-12) << c.what;
        }
    }
}

// ---- Hull of a simple solid ------------------------------------------------------------------

TEST(GamutHull, CubeAroundTheAxisGivesItsWalls)
{
    // Points of a cube |u|, |v| <= 10, L in 0..100 (stored as (L, u, v) like Luv colours): a ray
    // from the axis leaves through a side wall at 10 / max(|cos h|, |sin h|).
    std::vector<ColorComponents> points;
    for (const double L : {0.0, 50.0, 100.0}) {
        for (const double u : {-10.0, 0.0, 10.0}) {
            for (const double v : {-10.0, 0.0, 10.0}) {
                points.push_back({L, u, v, 1.0});
            }
        }
    }
    GamutHull hull;
    ASSERT_TRUE(hull.build(points, std::vector<int>(points.size(), 1)));
    EXPECT_EQ(hull.inputPointCount(), 27u);
    EXPECT_GT(hull.triangleCount(), 11u);
    for (const double degrees : {0.0, 10.0, 45.0, 100.0, 200.0, 300.0}) {
        const double h = radians(degrees);
        const double expected = 10.0 / std::max(std::fabs(std::cos(h)), std::fabs(std::sin(h)));
        for (const double L : {10.0, 50.5, 93.0}) {
            EXPECT_NEAR(hull.rayDistance(h, L), expected, 1e-9) << degrees << " " << L;
        }
    }
}

TEST(GamutHull, FlatOrMissingInputGivesNoTriangles)
{
    GamutHull empty;
    EXPECT_FALSE(empty.build({}, {}));
    EXPECT_EQ(empty.triangleCount(), 0u);
    EXPECT_EQ(empty.rayDistance(0.5, 50.0), 0.0);

    // All in one plane of lightness: no volume to tetrahedralise.
    std::vector<ColorComponents> flat;
    for (int k = 0; k < 8; ++k) {
        flat.push_back({50.0, double(k % 3), double(k / 3), 1.0});
    }
    GamutHull plane;
    EXPECT_FALSE(plane.build(flat, std::vector<int>(flat.size(), 0)));
    EXPECT_EQ(plane.triangleCount(), 0u);
}

// ---- The hull builder of a gamut ------------------------------------------------------------

// A gamut with its 21^3 grid, the grid's Luv points and their hull, but search tables only.
std::unique_ptr<KVColorGamut> gamutWithHull(bool interiorPoints)
{
    test::captureDiagnostics();
    auto gamut = std::make_unique<KVColorGamut>(sRGBChromaticities(), ColorSpaceModel::LChuv);
    gamut->setIncludeInteriorPoints(interiorPoints);
    gamut->buildRGBColors();
    gamut->buildLuvColors();
    gamut->buildHull();
    test::capturedDiagnostics();
    return gamut;
}

TEST(GamutHullGrid, GridAndPointsAreAsDescribed)
{
    const std::unique_ptr<KVColorGamut> gamut = gamutWithHull(true);
    ASSERT_EQ(gamut->rgbColors().size(), 9261u);
    EXPECT_EQ(gamut->actualNumberOfPoints(), 9261u);
    // Red outermost, then green, then blue.
    EXPECT_EQ(gamut->rgbColors()[1], (ColorComponents{0.0, 0.0, 0.05, 1.0}));
    EXPECT_EQ(gamut->rgbColors()[21], (ColorComponents{0.0, 0.05, 0.0, 1.0}));
    EXPECT_EQ(gamut->rgbColors()[441], (ColorComponents{0.05, 0.0, 0.0, 1.0}));
    EXPECT_EQ(gamut->rgbColors().back(), (ColorComponents{1.0, 1.0, 1.0, 1.0}));
    // White is L = 100 on the axis, black the origin.
    ASSERT_EQ(gamut->luvColors().size(), 9261u);
    EXPECT_NEAR(gamut->luvColors().back().c0, 100.0, 1e-9);
    EXPECT_NEAR(gamut->luvColors().back().c1, 0.0, 1e-3);
    EXPECT_NEAR(gamut->luvColors().back().c2, 0.0, 1e-3);
    EXPECT_EQ(gamut->luvColors().front().c0, 0.0);
    const GamutHull* hull = gamut->hull();
    ASSERT_NE(hull, nullptr);
    EXPECT_EQ(hull->inputPointCount(), 9261u);
    EXPECT_GT(hull->triangleCount(), 100u);
    // Every hull corner is a point of the grid (the hull adds none).
    for (std::size_t t = 0; t < hull->triangleCount(); t += 7) {
        EXPECT_LT(hull->triangleCorner(t, 0), 9261u);
    }
}

TEST(GamutHullGrid, SurfacePointsAloneGiveTheSameHull)
{
    // Interior grid points map to the inside of the Luv body, so leaving them out cannot change
    // the convex hull.
    const std::unique_ptr<KVColorGamut> surface = gamutWithHull(false);
    const std::unique_ptr<KVColorGamut> full = gamutWithHull(true);
    EXPECT_EQ(surface->actualNumberOfPoints(), 9261u - 19u * 19u * 19u);
    for (const ColorComponents& rgb : surface->rgbColors()) {
        const bool onSurface = rgb.c0 == 0.0 || rgb.c0 == 1.0 || rgb.c1 == 0.0 || rgb.c1 == 1.0 ||
                               rgb.c2 == 0.0 || rgb.c2 == 1.0;
        ASSERT_TRUE(onSurface) << rgb.c0 << ", " << rgb.c1 << ", " << rgb.c2;
    }
    for (const double degrees : {3.0, 77.0, 150.5, 260.0, 333.3}) {
        for (const double L : {5.0, 30.0, 52.5, 88.0}) {
            EXPECT_NEAR(surface->calculateChromaForHue(radians(degrees), L),
                        full->calculateChromaForHue(radians(degrees), L), 1e-9)
                << degrees << " " << L;
        }
    }
}

// One sRGB gamut whose tables were rebuilt from its hull, next to one built by the search. The
// hull tables cost a tetrahedralisation and 145 000 rays, so the suite builds them once.
class GamutHullTables : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        test::captureDiagnostics();
        searched_ = new KVColorGamut(sRGBChromaticities(), ColorSpaceModel::LChuv);
        hulled_ = new KVColorGamut(sRGBChromaticities(), ColorSpaceModel::LChuv);
        hulled_->buildRGBColors();
        hulled_->buildLuvColors();
        hulled_->buildChromaLUTsFromPolys();
        buildOutput_ = new std::string(test::capturedDiagnostics());
    }
    static void TearDownTestSuite()
    {
        delete searched_;
        delete hulled_;
        delete buildOutput_;
    }

    static KVColorGamut* searched_;
    static KVColorGamut* hulled_;
    static std::string* buildOutput_;
};

KVColorGamut* GamutHullTables::searched_ = nullptr;
KVColorGamut* GamutHullTables::hulled_ = nullptr;
std::string* GamutHullTables::buildOutput_ = nullptr;

TEST_F(GamutHullTables, HullAgreesWithTheSearch)
{
    // The hull is the convex hull of the 21^3 grid in Luv. Where the gamut body is convex its
    // flat faces cut slightly inside the true boundary; where the body is concave (towards white
    // from red, for one) the hull spans the hollow and reports more chroma than the search.
    // Measured for sRGB: median |hull - search| 0.0059, 90 % within 6.0, hull at most 1.09 below
    // and at most 28.71 above the search.
    std::vector<double> differences;
    double lowest = 0.0;
    double highest = 0.0;
    for (std::size_t i = 0; i < KVColorGamut::kHueCount; ++i) {
        for (std::size_t j = 1; j + 1 < KVColorGamut::kLightnessCount; ++j) {
            const double difference = hulled_->tableChroma(i, j) - searched_->tableChroma(i, j);
            differences.push_back(std::fabs(difference));
            lowest = std::min(lowest, difference);
            highest = std::max(highest, difference);
        }
    }
    std::sort(differences.begin(), differences.end());
    const double median = differences[differences.size() / 2];
    const double ninetieth = differences[differences.size() * 9 / 10];
    EXPECT_LT(median, 0.01);
    EXPECT_LT(ninetieth, 6.5);
    EXPECT_GT(lowest, -1.2);
    EXPECT_LT(highest, 30.0);
    EXPECT_GT(highest, 20.0); // the hollow between red and white is really there
    for (std::size_t i = 0; i < KVColorGamut::kHueCount; ++i) {
        EXPECT_EQ(hulled_->tableChroma(i, 0), 0.0);
        EXPECT_EQ(hulled_->tableChroma(i, 200), 0.0);
    }
}

TEST_F(GamutHullTables, TablesFollowTheirRays)
{
    EXPECT_EQ(*buildOutput_, "Building chroma LUT...\nBuilding chroma LUT...\nBuilding Luv "
                             "colors...\nBuilding chroma LUT...\n");
    // The table fill looks only at triangles near each lightness; the plain walk over every
    // triangle must find the very same first hit.
    for (std::size_t i = 0; i < KVColorGamut::kHueCount; i += 31) {
        for (std::size_t j = 1; j < 200; j += 9) {
            const double h = radians(static_cast<double>(i) * 0.5);
            EXPECT_EQ(hulled_->calculateChromaForHue(h, static_cast<double>(j) * 0.5),
                      hulled_->tableChroma(i, j))
                << i << "," << j;
        }
    }
    EXPECT_EQ(hulled_->calculateChromaForHue(1.0, 0.0), 0.0);
    EXPECT_EQ(hulled_->calculateChromaForHue(1.0, 100.0), 0.0);
    // The most chromatic colour of each hue comes from the hull tables too.
    for (std::size_t i = 0; i < KVColorGamut::kHueCount; i += 17) {
        double largest = 0.0;
        double at = 0.0;
        for (std::size_t j = 0; j < KVColorGamut::kLightnessCount; ++j) {
            if (hulled_->tableChroma(i, j) > largest) {
                largest = hulled_->tableChroma(i, j);
                at = static_cast<double>(j) * 0.5;
            }
        }
        EXPECT_EQ(hulled_->tableMaxChroma(i).c1, largest);
        EXPECT_EQ(hulled_->tableMaxChroma(i).c0, at);
    }
}

TEST(GamutHullSurface, WithoutGridTheSearchTablesStay)
{
    test::captureDiagnostics();
    KVColorGamut gamut(sRGBChromaticities(), ColorSpaceModel::LChuv);
    const double before = gamut.chromaForHue(1.0, 40.0);
    gamut.buildChromaLUTsFromPolys();
    test::capturedDiagnostics();
    ASSERT_NE(gamut.hull(), nullptr);
    EXPECT_EQ(gamut.hull()->triangleCount(), 0u);
    EXPECT_EQ(gamut.chromaForHue(1.0, 40.0), before);
}

} // namespace
} // namespace tintorra
