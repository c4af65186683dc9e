#include "HueShiftTestSupport.h"
#include "colour/ColorConversions.h"
#include "engine/ShiftColor.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <ostream>
#include <string>

namespace tintorra {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

Selection full(double saturation = 1.0)
{
    return {1.0, SelectionZone::inside, saturation};
}

HueShiftParameters lchRecord(ColorSpaceModel model, double gamma, bool withGamut)
{
    HueShiftParameters p = test::selectEverything(model);
    p.imageGamma = gamma;
    if (!withGamut) {
        p.gamut = nullptr;
    }
    normalizeHueShiftParameters(p);
    return p;
}

struct BrightnessCase {
    double targetBri;
    double saturation;
    double lightness;
    double expected;
};

void PrintTo(const BrightnessCase& c, std::ostream* os)
{
    *os << "{targetBri=" << c.targetBri << " saturation=" << c.saturation
        << " lightness=" << c.lightness << " expected=" << c.expected << "}";
}

class LchBrightness : public testing::TestWithParam<BrightnessCase> {};

// L' = L + 200 (1 - L/100)^gamma t raising, L + 200 (L/100)^gamma t lowering, t = bri s w;
// here gamma 0.5, so the powers are square roots.
TEST_P(LchBrightness, MovesLightnessByTheDoubledChange)
{
    const BrightnessCase& c = GetParam();
    HueShiftParameters p = lchRecord(ColorSpaceModel::LChuv, 0.5, false);
    p.targetBri = c.targetBri;
    const ColorComponents out =
        shiftLchColor({c.lightness, 20.0, 1.0, 1.0}, full(c.saturation), p, nullptr);
    EXPECT_NEAR(out.c0, c.expected, 1e-9);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, LchBrightness,
    testing::Values(BrightnessCase{0.1, 1.0, 50.0, 50.0 + 200.0 * std::sqrt(0.5) * 0.1},
                    BrightnessCase{-0.1, 1.0, 50.0, 50.0 - 200.0 * std::sqrt(0.5) * 0.1},
                    BrightnessCase{0.2, 0.5, 75.0, 75.0 + 200.0 * 0.5 * 0.1},
                    BrightnessCase{-0.25, 0.8, 36.0, 36.0 - 200.0 * 0.6 * 0.2},
                    BrightnessCase{1.0, 1.0, 50.0, 100.0}, // clamped
                    BrightnessCase{-1.0, 1.0, 50.0, 0.0}));

TEST(LchCurve, TheIdentityCurveIsTenthsNotTheirPowers)
{
    for (const double gamma : {1.0 / 2.2, 0.5, 1.0}) {
        HueShiftParameters p = lchRecord(ColorSpaceModel::LChab, gamma, false);
        for (double L = 0.0; L <= 100.0; L += 2.5) {
            const ColorComponents out = shiftLchColor({L, 20.0, 1.0, 1.0}, full(), p, nullptr);
            EXPECT_NEAR(out.c0, L, 1e-9) << gamma << " " << L;
        }
    }
    // The curve (k/10)^(1/gamma) is not the identity under this lightness axis.
    HueShiftParameters p = lchRecord(ColorSpaceModel::LChab, 1.0 / 2.2, false);
    for (std::size_t k = 0; k < p.targetBriTenVals.size(); ++k) {
        p.targetBriTenVals[k] = std::pow(k / 10.0, 2.2);
    }
    EXPECT_GT(std::fabs(shiftLchColor({50.0, 20.0, 1.0, 1.0}, full(), p, nullptr).c0 - 50.0), 10.0);
}

// The lightness the powers there and back give, step by step, for the record's curve.
double lightnessThroughThePowers(double L, double saturation, const HueShiftParameters& p)
{
    const double first = std::pow(lightnessPowerBase(L / 100.0, p), p.imageGamma);
    double y = 0.0;
    const bool applies = curveOutput(first, p, y);
    const double second = applies ? std::pow(y, 1.0 / p.imageGamma) : 0.0;
    return lchShiftedLightness(L, full(saturation), p, first, applies, second);
}

// With the identity curve the powers are skipped: the lightness stays exactly, where the powers
// would have moved it by rounding alone.
TEST(LchCurve, TheIdentityCurveKeepsLightnessWhereThePowersWouldOnlyRound)
{
    for (const double gamma : {1.0 / 2.2, 2.2, 0.5, 1.0}) {
        for (const double gain : {1.0, 3.0}) {
            HueShiftParameters p = lchRecord(ColorSpaceModel::LChuv, gamma, false);
            p.curveGain = gain;
            ASSERT_TRUE(keepsLightness(p));
            for (double L = 0.0; L <= 100.0; L += 0.37) {
                const ColorComponents out =
                    shiftLchColor({L, 20.0, 1.0, 1.0}, full(0.8), p, nullptr);
                EXPECT_EQ(out.c0, L);
                EXPECT_NEAR(lightnessThroughThePowers(L, 0.8, p), L, 1e-12) << gamma << " " << L;
            }
            // Lightness a hair outside 0..100 is clamped either way.
            EXPECT_EQ(shiftLchColor({100.0000001, 20.0, 1.0, 1.0}, full(), p, nullptr).c0, 100.0);
            EXPECT_EQ(shiftLchColor({-1e-9, 20.0, 1.0, 1.0}, full(), p, nullptr).c0, 0.0);
        }
    }
}

TEST(LchCurve, OnlyTheExactIdentityWithoutBrightnessChangeSkipsThePowers)
{
    HueShiftParameters p = lchRecord(ColorSpaceModel::LChuv, 1.0 / 2.2, false);
    EXPECT_TRUE(keepsLightness(p));
    p.targetBri = 0.1;
    EXPECT_FALSE(keepsLightness(p));
    p.targetBri = 0.0;
    p.targetBriTenVals[5] = std::nextafter(0.5, 1.0);
    EXPECT_FALSE(keepsLightness(p));
    // A curve one unit in the last place off the identity still goes through the powers, and
    // comes out within rounding of the lightness.
    for (double L = 0.0; L <= 100.0; L += 0.37) {
        const double through = lightnessThroughThePowers(L, 1.0, p);
        EXPECT_EQ(shiftLchColor({L, 20.0, 1.0, 1.0}, full(), p, nullptr).c0, through);
        EXPECT_NEAR(through, L, 1e-12);
    }
}

TEST(CylinderCurve, TheIdentityCurveKeepsTheLevel)
{
    for (const ColorSpaceModel model :
         {ColorSpaceModel::HCL, ColorSpaceModel::HSB, ColorSpaceModel::HSL}) {
        HueShiftParameters p = test::selectEverything(model);
        normalizeHueShiftParameters(p);
        ASSERT_TRUE(keepsLightness(p));
        for (double V = 0.0; V <= 1.0; V += 0.0123) {
            const HclComponents colour{0.2, 0.4, V, 1.0, 0.5};
            const HclComponents out = shiftCylinderColor(colour, full(), p);
            EXPECT_EQ(out.l, V) << colorSpaceModelNumber(model);
            const double first = std::pow(lightnessPowerBase(V, p), p.imageGamma);
            double y = 0.0;
            const bool applies = curveOutput(first, p, y);
            const double second = applies ? std::pow(y, 1.0 / p.imageGamma) : 0.0;
            EXPECT_NEAR(cylinderShiftedLevel(colour, full(), p, first, applies, second), V, 1e-14)
                << colorSpaceModelNumber(model) << " " << V;
        }
    }
}

TEST(LchCurve, AFlatCurveSetsLightnessScaledBySaturationWeightAndGain)
{
    HueShiftParameters p = lchRecord(ColorSpaceModel::LChuv, 0.5, false);
    p.targetBriTenVals.fill(0.5);
    p.curveGain = 2.0;
    // L' = L + (100 * 0.5^2 - L) * 0.5 * 1 * 2 = 25 whatever L.
    for (const double L : {10.0, 60.0, 95.0}) {
        EXPECT_NEAR(shiftLchColor({L, 20.0, 1.0, 1.0}, full(0.5), p, nullptr).c0, 25.0, 1e-9);
    }
    // An infinite gain on a colour already where the curve puts it changes nothing.
    p.curveGain = kInfinity;
    EXPECT_NEAR(shiftLchColor({25.0, 20.0, 1.0, 1.0}, full(), p, nullptr).c0, 25.0, 1e-9);
}

TEST(LchChroma, KeepsTheColoursPlaceBetweenGreyAndTheBoundary)
{
    HueShiftParameters p = lchRecord(ColorSpaceModel::LChuv, 1.0 / 2.2, true);
    const KVColorGamut& gamut = *p.gamut;
    const double L = 60.0;
    // Move from a hue with much room (blue-violet) to one with little (yellow) and back.
    const double roomy = radiansFromDegrees(265.0);
    const double narrow = radiansFromDegrees(85.0);
    ASSERT_GT(gamut.chromaForHue(roomy, L), gamut.chromaForHue(narrow, L));

    p.targetHue = narrow;
    const double C = 0.5 * gamut.chromaForHue(roomy, L);
    const ColorComponents shrunk = shiftLchColor({L, C, roomy, 1.0}, full(), p, &gamut);
    EXPECT_NEAR(shrunk.c1 / gamut.chromaForHue(narrow, L), 0.5, 1e-12);
    EXPECT_EQ(shrunk.c2, narrow);

    p.targetHue = roomy;
    const ColorComponents kept = shiftLchColor({L, 10.0, narrow, 1.0}, full(), p, &gamut);
    EXPECT_EQ(kept.c1, 10.0);
}

TEST(LchSaturation, RaisesTowardsTheLimitAndLowersTowardsGrey)
{
    HueShiftParameters p = lchRecord(ColorSpaceModel::LChab, 1.0 / 2.2, true);
    const KVColorGamut& gamut = *p.gamut;
    const double L = 50.0;
    const double h = 2.0;
    const double limit = gamut.chromaForHue(h, L);
    p.targetHue = h;

    p.targetSat = 0.5;
    p.saturationGain = 1.0;
    const double c = 0.25 * limit;
    EXPECT_NEAR(shiftLchColor({L, c, h, 1.0}, full(), p, &gamut).c1, c + (limit - c) * 0.5, 1e-9);
    // An infinite gain takes the colour to the limit; at the limit already, it stays there.
    p.saturationGain = kInfinity;
    EXPECT_NEAR(shiftLchColor({L, c, h, 1.0}, full(), p, &gamut).c1, limit, 1e-9);
    for (const double atLimit : {limit, std::nextafter(limit, 0.0), std::nextafter(limit, 200.0)}) {
        EXPECT_NEAR(shiftLchColor({L, atLimit, h, 1.0}, full(), p, &gamut).c1, limit, 1e-9);
    }

    p.targetSat = -1.0;
    const ColorComponents grey = shiftLchColor({L, c, h, 1.0}, full(), p, &gamut);
    EXPECT_EQ(grey.c1, 0.0);
    EXPECT_EQ(grey.c2, 0.0);
    p.targetSat = -0.99;
    const ColorComponents trace = shiftLchColor({L, c, h, 1.0}, full(), p, &gamut);
    EXPECT_NEAR(trace.c1, 0.01 * c, 1e-9);
    EXPECT_GT(trace.c1, 0.0);
}

TEST(LchBlend, PartialWeightsBlendFromTheUnshiftedColour)
{
    HueShiftParameters p = lchRecord(ColorSpaceModel::LChuv, 1.0 / 2.2, true);
    const KVColorGamut& gamut = *p.gamut;
    const double from = 1.0;
    const double to = 2.5;
    p.targetHue = to;
    const ColorComponents colour{55.0, 20.0, from, 0.75};
    const Selection half{0.5, SelectionZone::inside, 1.0};

    p.preserveHue = 1;
    const ColorComponents throughGrey = shiftLchColor(colour, half, p, &gamut);
    EXPECT_TRUE(throughGrey.c2 == from || throughGrey.c2 == to) << throughGrey.c2;
    p.preserveHue = 0;
    const ColorComponents cartesian = shiftLchColor(colour, half, p, &gamut);
    EXPECT_GT(cartesian.c2, from + 0.1);
    EXPECT_LT(cartesian.c2, to - 0.1);
    EXPECT_EQ(cartesian.alpha, 0.75);

    // From the fall-off's end: a small weight keeps (through grey) the fall-off end's hue.
    p.preserveHue = 1;
    p.blendToFalloffHues = 1;
    p.hueLowerFalloff = 0.7;
    const ColorComponents fromFalloff =
        shiftLchColor(colour, {0.1, SelectionZone::lowerFalloff, 1.0}, p, &gamut);
    EXPECT_EQ(fromFalloff.c2, 0.7);
    // Fully selected: exactly the computed colour.
    const ColorComponents exact = shiftLchColor(colour, full(), p, &gamut);
    EXPECT_EQ(exact.c2, to);
    EXPECT_EQ(exact.alpha, 0.75);
}

// Whatever the targets, a fully selected colour lands inside the gamut: its chroma within the
// limit at its new hue and lightness, and its RGB (before any clamping) inside 0..1 up to the
// tables' interpolation.
TEST(LchShiftInvariant, ShiftedColoursStayInsideTheGamut)
{
    for (const ColorSpaceModel model : {ColorSpaceModel::LChuv, ColorSpaceModel::LChab}) {
        HueShiftParameters base = lchRecord(model, 1.0 / 2.2, true);
        const KVColorGamut& gamut = *base.gamut;
        Matrix3 M;
        Matrix3 MI;
        gamut.copy_RGB_to_XYZ_matrix(M);
        gamut.copy_XYZ_to_RGB_matrix(MI);
        double worst = 0.0;
        for (const double targetHue : {0.3, 1.7, 3.9, 5.5}) {
            for (const double targetSat : {-0.5, 0.0, 0.6, 1.0}) {
                for (const double targetBri : {-0.4, 0.0, 0.7}) {
                    HueShiftParameters p = base;
                    p.targetHue = targetHue;
                    p.targetSat = targetSat;
                    p.targetBri = targetBri;
                    p.saturationGain = 1.5;
                    for (int r = 0; r <= 8; ++r) {
                        for (int g = 0; g <= 8; ++g) {
                            for (int b = 0; b <= 8; ++b) {
                                const ColorComponents rgb{r / 8.0, g / 8.0, b / 8.0, 1.0};
                                const ColorComponents lch = model == ColorSpaceModel::LChuv
                                                                ? rgbToLchuv(rgb, M)
                                                                : rgbToLchab(rgb, M);
                                const Selection s = lchSelection(lch, p, &gamut);
                                if (s.weight == 0.0) {
                                    continue;
                                }
                                const ColorComponents out = shiftLchColor(lch, s, p, &gamut);
                                ASSERT_LE(out.c1, gamut.chromaForHue(out.c2, out.c0) + 1e-9);
                                const ColorComponents xyz = model == ColorSpaceModel::LChuv
                                                                ? luvToXyz(lchToLuv(out))
                                                                : labToXyz(lchToLab(out));
                                const ColorComponents raw{
                                    MI[0] * xyz.c0 + MI[1] * xyz.c1 + MI[2] * xyz.c2,
                                    MI[3] * xyz.c0 + MI[4] * xyz.c1 + MI[5] * xyz.c2,
                                    MI[6] * xyz.c0 + MI[7] * xyz.c1 + MI[8] * xyz.c2, 1.0};
                                for (const double v : {raw.c0, raw.c1, raw.c2}) {
                                    worst = std::max({worst, -v, v - 1.0});
                                }
                            }
                        }
                    }
                }
            }
        }
        // The Lab tables come from a search with deliberately rounded constants, so they may
        // reach a little further than the exact conversion allows.
        EXPECT_LT(worst, model == ColorSpaceModel::LChuv ? 1e-3 : 5e-3)
            << "model " << colorSpaceModelNumber(model);
        RecordProperty(model == ColorSpaceModel::LChuv ? "worstLuv" : "worstLab",
                       std::to_string(worst));
    }
}

struct CylinderCase {
    const char* name;
    ColorSpaceModel model;
    double gamma;
    double targetBri;
    double targetSat;
    double curveLevel; // < 0: no curve
    HclComponents colour;
    double expectedS;
    double expectedV;
};

void PrintTo(const CylinderCase& c, std::ostream* os)
{
    *os << c.name;
}

class CylinderShift : public testing::TestWithParam<CylinderCase> {};

TEST_P(CylinderShift, FollowsTheModesOwnRules)
{
    const CylinderCase& c = GetParam();
    HueShiftParameters p = test::selectEverything(c.model);
    p.imageGamma = c.gamma;
    p.targetBri = c.targetBri;
    p.targetSat = c.targetSat;
    p.targetHue = 0.6;
    if (c.curveLevel >= 0.0) {
        p.targetBriTenVals.fill(c.curveLevel);
    }
    normalizeHueShiftParameters(p);
    const HclComponents out = shiftCylinderColor(c.colour, full(), p);
    EXPECT_NEAR(out.c, c.expectedS, 1e-12) << c.name;
    EXPECT_NEAR(out.l, c.expectedV, 1e-12) << c.name;
    EXPECT_EQ(out.h, 0.6) << c.name;
}

const HclComponents kColour{0.2, 0.4, 0.5, 1.0, 0.5};

INSTANTIATE_TEST_SUITE_P(
    Table, CylinderShift,
    testing::Values(
        // Brightness: HCL doubles the change, HSB and HSL do not; t = bri S w.
        CylinderCase{"hcl raise", ColorSpaceModel::HCL, 1.0, 0.5, 0.0, -1, kColour, 0.4,
                     0.5 + 2 * 0.5 * 0.2},
        CylinderCase{"hsb raise", ColorSpaceModel::HSB, 1.0, 0.5, 0.0, -1, kColour, 0.4,
                     0.5 + 0.5 * 0.2},
        CylinderCase{"hsl lower", ColorSpaceModel::HSL, 0.5, -0.5, 0.0, -1, kColour, 0.4,
                     0.5 - std::sqrt(0.5) * 0.2},
        CylinderCase{"hcl lower", ColorSpaceModel::HCL, 0.5, -0.5, 0.0, -1, kColour, 0.4,
                     0.5 - 2 * std::sqrt(0.5) * 0.2},
        // The curve: HCL scales by the saturation value, HSB and HSL by S.
        CylinderCase{"hcl curve", ColorSpaceModel::HCL, 1.0, 0.0, 0.0, 0.25, kColour, 0.4,
                     0.5 - 0.25 * 0.5},
        CylinderCase{"hsb curve", ColorSpaceModel::HSB, 1.0, 0.0, 0.0, 0.25, kColour, 0.4,
                     0.5 - 0.25 * 0.4},
        CylinderCase{"identity curve", ColorSpaceModel::HSL, 0.5, 0.0, 0.0, -1, kColour, 0.4, 0.5},
        // Saturation: raising doubles, lowering does not; both clamp to 0..1.
        CylinderCase{"raise", ColorSpaceModel::HSB, 1.0, 0.0, 0.5, -1, kColour, 0.8, 0.5},
        CylinderCase{"raise clamped", ColorSpaceModel::HCL, 1.0, 0.0, 1.0, -1, kColour, 1.0, 0.5},
        CylinderCase{"lower", ColorSpaceModel::HSL, 1.0, 0.0, -0.5, -1, kColour, 0.2, 0.5}),
    [](const auto& info) {
        std::string name = info.param.name;
        for (char& ch : name) {
            ch = std::isalnum(static_cast<unsigned char>(ch)) ? ch : '_';
        }
        return name;
    });

TEST(CylinderShift, MinusOneRemovesHueAndSaturationAndPartialWeightsBlend)
{
    HueShiftParameters p = test::selectEverything(ColorSpaceModel::HSB);
    p.targetSat = -1.0;
    p.targetHue = 0.6;
    normalizeHueShiftParameters(p);
    const HclComponents grey = shiftCylinderColor(kColour, full(), p);
    EXPECT_EQ(grey.h, 0.0);
    EXPECT_EQ(grey.c, 0.0);

    p.targetSat = 0.0;
    p.preserveHue = 1;
    const HclComponents blended = shiftCylinderColor(kColour, {0.5, SelectionZone::inside, 0.0}, p);
    EXPECT_TRUE(blended.h == 0.2 || blended.h == 0.6) << blended.h;
    EXPECT_NEAR(blended.l, 0.5, 1e-12);
}

} // namespace
} // namespace tintorra
