#include "HueShiftTestSupport.h"
#include "engine/SelectionWeights.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <ostream>

namespace tintorra {
namespace {

constexpr double kDegree = 1.0 / 360.0;

HueShiftParameters hueRange(ColorSpaceModel model, double lowerFalloff, double lower, double upper,
                            double upperFalloff)
{
    HueShiftParameters p = test::selectEverything(model);
    p.hueLowerFalloff = lowerFalloff;
    p.hueLower = lower;
    p.hueUpper = upper;
    p.hueUpperFalloff = upperFalloff;
    return p;
}

struct ChainCase {
    const char* name;
    double bounds[4]; // lower fall-off, lower, upper, upper fall-off, as delivered
    double chain[4];  // after normalisation, in fractions of the period
};

void PrintTo(const ChainCase& c, std::ostream* os)
{
    *os << c.name;
}

class HueChain : public testing::TestWithParam<ChainCase> {};

// Each bound is raised by one period at most, tested against the one just adjusted.
TEST_P(HueChain, UnwrapsIntoANonDecreasingChain)
{
    const ChainCase& c = GetParam();
    for (const ColorSpaceModel model : {ColorSpaceModel::LChuv, ColorSpaceModel::HSB}) {
        HueShiftParameters p = hueRange(model, c.bounds[0], c.bounds[1], c.bounds[2], c.bounds[3]);
        normalizeHueShiftParameters(p);
        const double period = model == ColorSpaceModel::LChuv ? kTwoPi : 1.0;
        const double chain[4] = {p.hueLowerFalloff, p.hueLower, p.hueUpper, p.hueUpperFalloff};
        for (int i = 0; i < 4; ++i) {
            EXPECT_NEAR(chain[i], c.chain[i] * period, 1e-12) << c.name << " " << i;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Ranges, HueChain,
    testing::Values(ChainCase{"slider across 0",
                              {-20 * kDegree, -10 * kDegree, 10 * kDegree, 20 * kDegree},
                              {-20 * kDegree, -10 * kDegree, 10 * kDegree, 20 * kDegree}},
                    ChainCase{"saved set across 0",
                              {340 * kDegree, 350 * kDegree, 10 * kDegree, 20 * kDegree},
                              {340 * kDegree, 350 * kDegree, 370 * kDegree, 380 * kDegree}},
                    ChainCase{"lower fall-off past 0",
                              {350 * kDegree, 5 * kDegree, 30 * kDegree, 40 * kDegree},
                              {350 * kDegree, 365 * kDegree, 390 * kDegree, 400 * kDegree}},
                    ChainCase{"upper fall-off past 0",
                              {300 * kDegree, 310 * kDegree, 350 * kDegree, 5 * kDegree},
                              {300 * kDegree, 310 * kDegree, 350 * kDegree, 365 * kDegree}},
                    ChainCase{"plain", {0.1, 0.2, 0.3, 0.4}, {0.1, 0.2, 0.3, 0.4}}),
    [](const auto& info) {
        std::string name = info.param.name;
        for (char& ch : name) {
            ch = std::isalnum(static_cast<unsigned char>(ch)) ? ch : '_';
        }
        return name;
    });

TEST(NormalizeHueShiftParameters, ScalesTheLchModesOnly)
{
    HueShiftParameters p = hueRange(ColorSpaceModel::LChab, 0.1, 0.2, 0.3, 0.4);
    p.targetHue = 0.25;
    p.lightLowerFalloff = 0.1;
    p.lightLower = 0.2;
    p.lightUpper = 0.6;
    p.lightUpperFalloff = 0.8;
    p.brightnessToHighlight = 0.5;
    HueShiftParameters cylinder = p;
    cylinder.colorSpaceModel = ColorSpaceModel::HSL;
    normalizeHueShiftParameters(p);
    normalizeHueShiftParameters(cylinder);
    EXPECT_DOUBLE_EQ(p.targetHue, 0.5 * kPi);
    EXPECT_DOUBLE_EQ(p.hueUpperFalloff, 0.8 * kPi);
    EXPECT_DOUBLE_EQ(p.lightLower, 20.0);
    EXPECT_DOUBLE_EQ(p.lightUpperFalloff, 80.0);
    EXPECT_DOUBLE_EQ(p.brightnessToHighlight, 50.0);
    EXPECT_EQ(cylinder.targetHue, 0.25);
    EXPECT_EQ(cylinder.lightUpper, 0.6);
    EXPECT_EQ(cylinder.hueLower, 0.2);
}

TEST(NormalizeHueShiftParameters, RaisesOutOfOrderBoundsAndNeverLowersThem)
{
    HueShiftParameters p = test::selectEverything(ColorSpaceModel::HSB);
    p.satLowerFalloff = 0.5;
    p.satLower = 0.2; // below its fall-off: raised to 0.5
    p.satUpper = 0.4; // below lower: raised to 0.5
    p.satUpperFalloff = 0.9;
    p.lightLowerFalloff = 0.1;
    p.lightLower = 0.3;
    p.lightUpper = 0.8;
    p.lightUpperFalloff = 0.7; // below upper: raised to 0.8
    normalizeHueShiftParameters(p);
    EXPECT_EQ((std::array{p.satLowerFalloff, p.satLower, p.satUpper, p.satUpperFalloff}),
              (std::array{0.5, 0.5, 0.5, 0.9}));
    EXPECT_EQ((std::array{p.lightLowerFalloff, p.lightLower, p.lightUpper, p.lightUpperFalloff}),
              (std::array{0.1, 0.3, 0.8, 0.8}));
}

// LCh colour of a hue in degrees, mid lightness, chroma well above the gate.
ColorComponents lchAt(double degrees, double chroma = 30.0, double lightness = 50.0,
                      double alpha = 1.0)
{
    return {lightness, chroma, radiansFromDegrees(degrees), alpha};
}

struct HueWeightCase {
    double degrees;
    double weight;
};

void PrintTo(const HueWeightCase& c, std::ostream* os)
{
    *os << "{degrees=" << c.degrees << " weight=" << c.weight << "}";
}

class SavedRangeAcrossZero : public testing::TestWithParam<HueWeightCase> {};

// 350 to 10 degrees with 10 more degrees of fall-off on either side, no gamut (s = 1).
TEST_P(SavedRangeAcrossZero, WeighsHuesAroundTheCircle)
{
    HueShiftParameters p =
        hueRange(ColorSpaceModel::LChuv, 340 * kDegree, 350 * kDegree, 10 * kDegree, 20 * kDegree);
    p.gamut = nullptr;
    normalizeHueShiftParameters(p);
    const Selection s = lchSelection(lchAt(GetParam().degrees), p, nullptr);
    EXPECT_NEAR(s.weight, GetParam().weight, 1e-9) << GetParam().degrees;
}

INSTANTIATE_TEST_SUITE_P(Hues, SavedRangeAcrossZero,
                         testing::Values(HueWeightCase{5, 1.0}, HueWeightCase{-5, 1.0},
                                         HueWeightCase{355, 1.0}, HueWeightCase{350, 1.0},
                                         HueWeightCase{10, 1.0}, HueWeightCase{15, 0.5},
                                         HueWeightCase{345, 0.5}, HueWeightCase{342.5, 0.25},
                                         HueWeightCase{-17.5, 0.25}, HueWeightCase{180, 0.0},
                                         HueWeightCase{20, 0.0}, HueWeightCase{25, 0.0},
                                         HueWeightCase{725, 1.0}));

TEST(LchSelection, ABoundIsInsideAndAnEmptyFalloffNeverDivides)
{
    // Lower bound equal to its fall-off end: no lower fall-off at all.
    HueShiftParameters p = hueRange(ColorSpaceModel::LChuv, 0.25, 0.25, 0.5, 0.6);
    normalizeHueShiftParameters(p);
    EXPECT_EQ(lchSelection({50, 30, 0.5 * kPi, 1}, p, nullptr).weight, 1.0);
    EXPECT_EQ(lchSelection({50, 30, 0.5 * kPi, 1}, p, nullptr).hueZone, SelectionZone::inside);
    EXPECT_EQ(lchSelection({50, 30, 0.49 * kPi, 1}, p, nullptr).weight, 0.0);
    const Selection upper = lchSelection({50, 30, 1.1 * kPi, 1}, p, nullptr);
    EXPECT_EQ(upper.hueZone, SelectionZone::upperFalloff);
    EXPECT_NEAR(upper.weight, 0.5, 1e-12);
}

TEST(LchSelection, NearNeutralAndTransparentColoursAreNeverSelected)
{
    HueShiftParameters p = test::selectEverything(ColorSpaceModel::LChab);
    normalizeHueShiftParameters(p);
    EXPECT_EQ(lchSelection(lchAt(40, 0.009), p, p.gamut.get()).weight, 0.0);
    EXPECT_GT(lchSelection(lchAt(40, 0.011), p, p.gamut.get()).weight, 0.0);
    EXPECT_EQ(lchSelection(lchAt(40, 30, 50, 0.0), p, p.gamut.get()).weight, 0.0);

    HueShiftParameters cylinder = test::selectEverything(ColorSpaceModel::HSB);
    normalizeHueShiftParameters(cylinder);
    EXPECT_EQ(cylinderSelection({0.3, 0.5, 0.5, 0.0, 0.5}, cylinder).weight, 0.0);
    // No chroma gate in the cylinder modes.
    EXPECT_EQ(cylinderSelection({0.3, 0.001, 0.5, 1.0, 0.001}, cylinder).weight, 1.0);
}

TEST(LchSelection, MeasuresSaturationAgainstTheGamutsLargestChroma)
{
    HueShiftParameters p = test::selectEverything(ColorSpaceModel::LChuv);
    p.satLowerFalloff = 0.2;
    p.satLower = 0.6;
    normalizeHueShiftParameters(p);
    const KVColorGamut& gamut = *p.gamut;
    const double hue = 1.0;
    const double cmax = gamut.maxChromaForHue(hue).c1;
    const Selection half = lchSelection({60, 0.4 * cmax, hue, 1}, p, &gamut);
    EXPECT_NEAR(half.saturation, 0.4, 1e-12);
    EXPECT_NEAR(half.weight, (0.4 - 0.2) / (0.6 - 0.2), 1e-12);
    EXPECT_EQ(half.hueZone, SelectionZone::inside);
    // Beyond the largest chroma the saturation stays 1.
    EXPECT_EQ(lchSelection({60, 2 * cmax, hue, 1}, p, &gamut).saturation, 1.0);
    // Without a gamut every colour counts as fully saturated.
    EXPECT_EQ(lchSelection({60, 0.4 * cmax, hue, 1}, p, nullptr).saturation, 1.0);
}

TEST(LchSelection, MultipliesTheThreeFactors)
{
    HueShiftParameters p = hueRange(ColorSpaceModel::LChuv, 0.0, 0.1, 0.2, 0.3);
    p.gamut = nullptr;
    p.lightLowerFalloff = 0.2;
    p.lightLower = 0.4;
    normalizeHueShiftParameters(p);
    // Hue halfway into the upper fall-off, lightness a quarter of the way into the lower one.
    const Selection s = lchSelection({25.0, 30.0, 0.25 * kTwoPi, 1.0}, p, nullptr);
    EXPECT_NEAR(s.weight, 0.5 * 0.25, 1e-12);
    EXPECT_EQ(s.hueZone, SelectionZone::upperFalloff);
}

TEST(CylinderSelection, TestsTheThirdComponentAndTheSaturationValue)
{
    HueShiftParameters p = test::selectEverything(ColorSpaceModel::HCL);
    p.satLowerFalloff = 0.4;
    p.satLower = 0.6;
    p.lightUpper = 0.5;
    p.lightUpperFalloff = 0.7;
    normalizeHueShiftParameters(p);
    // Chroma (second value) is not what the saturation test reads.
    EXPECT_EQ(cylinderSelection({0.5, 0.1, 0.4, 1.0, 0.8}, p).weight, 1.0);
    EXPECT_NEAR(cylinderSelection({0.5, 0.9, 0.4, 1.0, 0.5}, p).weight, 0.5, 1e-12);
    EXPECT_NEAR(cylinderSelection({0.5, 0.9, 0.6, 1.0, 0.8}, p).weight, 0.5, 1e-12);
    // Red comes out of the forward conversions as hue 1.0: still inside [0, 1].
    EXPECT_EQ(cylinderSelection({1.0, 0.9, 0.4, 1.0, 0.8}, p).weight, 1.0);
}

TEST(LchSelection, FarAwayOrNonFiniteBoundsEndWithAFixedResult)
{
    for (const double bound : {1.0e300, -1.0e300, std::numeric_limits<double>::infinity(),
                               std::numeric_limits<double>::quiet_NaN()}) {
        HueShiftParameters p = hueRange(ColorSpaceModel::LChuv, bound, bound, bound, bound);
        normalizeHueShiftParameters(p);
        const double w = lchSelection(lchAt(30), p, nullptr).weight;
        EXPECT_TRUE(w == 0.0 || w == 1.0) << bound;
    }
    // A huge but reachable chain: the hue is jumped there and selected.
    HueShiftParameters p = hueRange(ColorSpaceModel::LChuv, 1.0e7, 1.0e7, 1.0e7 + 0.5, 1.0e7 + 0.5);
    normalizeHueShiftParameters(p);
    const double hue = wrapRadians(1.0e7 * kTwoPi + 0.25 * kTwoPi);
    EXPECT_EQ(lchSelection({50, 30, hue, 1}, p, nullptr).weight, 1.0);
}

TEST(SelectionWeight, ReplacesTheColourOnlyWhenAskedAndSelected)
{
    HueShiftParameters p = test::selectEverything(ColorSpaceModel::HSL);
    p.targetHue = 0.75;
    normalizeHueShiftParameters(p);
    HclComponents colour{0.25, 0.5, 0.5, 1.0, 0.5};
    EXPECT_EQ(selectionWeight(colour, p, false), 1.0);
    EXPECT_EQ(colour.h, 0.25);
    EXPECT_EQ(selectionWeight(colour, p, true), 1.0);
    EXPECT_EQ(colour.h, 0.75);

    HueShiftParameters lch = test::selectEverything(ColorSpaceModel::LChuv);
    lch.targetHue = 0.5;
    normalizeHueShiftParameters(lch);
    ColorComponents grey{50, 0.0, 0.3, 1.0};
    EXPECT_EQ(selectionWeight(grey, lch, true), 0.0);
    EXPECT_EQ(grey.c2, 0.3);
}

} // namespace
} // namespace tintorra
