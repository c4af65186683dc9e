#include "colour/ColorConversions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace tintorra {
namespace {

struct Ciede2000Pair {
    int pair;
    ColorComponents lab1;
    ColorComponents lab2;
    double expected;
};

// Sharma, Wu and Dalal's published CIEDE2000 test pairs.
std::vector<Ciede2000Pair> readCiede2000Pairs()
{
    std::ifstream file(TINTORRA_TEST_DATA_DIR "/ciede2000.csv");
    std::vector<Ciede2000Pair> pairs;
    std::string line;
    while (std::getline(file, line)) {
        if (line.empty() || line[0] == '#' || line.rfind("pair", 0) == 0) {
            continue;
        }
        std::replace(line.begin(), line.end(), ',', ' ');
        std::istringstream fields(line);
        Ciede2000Pair p{};
        fields >> p.pair >> p.lab1.c0 >> p.lab1.c1 >> p.lab1.c2 >> p.lab2.c0 >> p.lab2.c1 >>
            p.lab2.c2 >> p.expected;
        if (fields) {
            pairs.push_back(p);
        }
    }
    return pairs;
}

TEST(ColorDifferences, Ciede2000MatchesThePublishedPairs)
{
    const std::vector<Ciede2000Pair> pairs = readCiede2000Pairs();
    ASSERT_EQ(pairs.size(), 34u);
    for (const Ciede2000Pair& p : pairs) {
        // Published to four decimals; the formula is symmetric in its two colours.
        EXPECT_NEAR(deltaE2000(p.lab1, p.lab2), p.expected, 5e-5) << "pair " << p.pair;
        EXPECT_NEAR(deltaE2000(p.lab2, p.lab1), p.expected, 5e-5) << "pair " << p.pair;
    }
}

TEST(ColorDifferences, SimpleDifferences)
{
    const ColorComponents lab1{50.0, 3.0, 4.0, 1.0};
    const ColorComponents lab2{53.0, 0.0, 5.0, 1.0};
    EXPECT_DOUBLE_EQ(deltaE76(lab1, lab2), std::sqrt(9.0 + 9.0 + 1.0));
    EXPECT_DOUBLE_EQ(deltaL(lab1, lab2), 3.0);
    EXPECT_DOUBLE_EQ(deltaC(lab1, lab2), 0.0); // both chromas are 5
    // Equal chroma: the whole a/b distance is hue.
    EXPECT_DOUBLE_EQ(deltaH(lab1, lab2), std::sqrt(10.0));
    // Pythagoras: dE76^2 = dL^2 + dC^2 + dH^2.
    const ColorComponents lab3{20.0, -12.0, 30.0, 1.0};
    EXPECT_NEAR(std::pow(deltaE76(lab1, lab3), 2.0),
                std::pow(deltaL(lab1, lab3), 2.0) + std::pow(deltaC(lab1, lab3), 2.0) +
                    std::pow(deltaH(lab1, lab3), 2.0),
                1e-10);
    // Same hue, different chroma: no hue difference, and never NaN from rounding.
    EXPECT_EQ(deltaH({50.0, 0.1, 0.3, 1.0}, {50.0, 0.2, 0.6, 1.0}), 0.0);
}

TEST(ColorDifferences, Cie94WeightsByApplication)
{
    // Hand-derived: a pure lightness step is divided by kL; a pure chroma step along the hue
    // by 1 + K1 C1; a pure hue step (equal chroma) by 1 + K2 C1.
    const ColorComponents reference{50.0, 30.0, 40.0, 1.0}; // C1 = 50
    const ColorComponents lighter{56.0, 30.0, 40.0, 1.0};
    const ColorComponents moreChroma{50.0, 36.0, 48.0, 1.0}; // C = 60
    const ColorComponents rotated{50.0, 40.0, 30.0, 1.0};    // C = 50, dH = sqrt(200)
    EXPECT_DOUBLE_EQ(deltaE94(0, reference, lighter), 6.0);
    EXPECT_DOUBLE_EQ(deltaE94(1, reference, lighter), 3.0);
    EXPECT_DOUBLE_EQ(deltaE94(0, reference, moreChroma), 10.0 / 3.25);
    EXPECT_DOUBLE_EQ(deltaE94(1, reference, moreChroma), 10.0 / 3.4);
    EXPECT_DOUBLE_EQ(deltaE94(0, reference, rotated), std::sqrt(200.0) / 1.75);
    EXPECT_DOUBLE_EQ(deltaE94(1, reference, rotated), std::sqrt(200.0) / 1.7);
    // Any flag other than 1 means graphic arts.
    EXPECT_EQ(deltaE94(2, reference, rotated), deltaE94(0, reference, rotated));
    // The weights come from the first colour only.
    EXPECT_NE(deltaE94(0, moreChroma, reference), deltaE94(0, reference, moreChroma));
}

TEST(ColorDifferences, CmcWeights)
{
    // Reference L 50, C 50 at hue 90 degrees: SL = 0.040975 L / (1 + 0.01765 L) = 1.088313,
    // SC = 0.0638 C / (1 + 0.0131 C) + 0.638 = 2.565492. A pure lightness step of 4 and a pure
    // chroma step of 10 along the hue have no hue term.
    const ColorComponents reference{50.0, 0.0, 50.0, 1.0};
    EXPECT_NEAR(deltaECMCLightness(reference, {46.0, 0.0, 50.0, 1.0}, 2.0), -4.0 / 2.176627, 1e-6);
    EXPECT_NEAR(deltaECMCChroma(reference, {50.0, 0.0, 60.0, 1.0}, 1.0), 10.0 / 2.565492, 1e-6);
    EXPECT_NEAR(deltaECMCHue(reference, {50.0, 0.0, 60.0, 1.0}), 0.0, 1e-12);
    // The total is the root of the sum of the squared terms.
    const ColorComponents sample{46.0, 6.0, 58.0, 1.0};
    EXPECT_NEAR(deltaECMC(reference, sample, 2.0, 1.0),
                std::hypot(deltaECMCLightness(reference, sample, 2.0),
                           deltaECMCChroma(reference, sample, 1.0),
                           deltaECMCHue(reference, sample)),
                1e-12);
    // Below L 16 the lightness weight is the constant 0.511; a neutral pair has no difference.
    EXPECT_NEAR(deltaECMCLightness({10.0, 0.0, 0.0, 1.0}, {12.0, 0.0, 0.0, 1.0}, 1.0), 2.0 / 0.511,
                1e-12);
    EXPECT_NEAR(deltaECMC({50.0, 0.0, 0.0, 1.0}, {50.0, 0.0, 0.0, 1.0}, 2.0, 1.0), 0.0, 1e-15);
    // A 2 degree turn at chroma 40 has dH = 80 sin 1 deg; SH = SC (F T + 1 - F) with T from
    // 0.36 + |0.4 cos(h + 35)| at 90 degrees (0.58943) and, blue-green, from
    // 0.56 + |0.2 cos(h + 168)| at 270 degrees (0.60158).
    for (const auto& [degrees, expected] : {std::pair{90.0, 1.0240262}, {270.0, 1.0033540}}) {
        const auto at = [](double d) {
            const double h = radiansFromDegrees(d);
            return ColorComponents{50.0, 40.0 * std::cos(h), 40.0 * std::sin(h), 1.0};
        };
        EXPECT_NEAR(deltaECMCHue(at(degrees), at(degrees + 2.0)), expected, 1e-6) << degrees;
    }
}

} // namespace
} // namespace tintorra
