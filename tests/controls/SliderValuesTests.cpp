#include "controls/KVSliderArithmetic.h"
#include "controls/KVSliderValues.h"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>

namespace tintorra {
namespace {

TEST(SliderValuesDictionary, FiveKeysRoundTripAndMissingNumbersReadAsZero)
{
    const KVSliderValues values{1.125, 1.0625, 0.5, -0.25, -0.5};
    const KVValueDictionary expected = {{"upperFalloff", 1.125},
                                        {"upper", 1.0625},
                                        {"middle", 0.5},
                                        {"lower", -0.25},
                                        {"lowerFalloff", -0.5}};
    EXPECT_EQ(dictionaryFromValues(values), expected);
    EXPECT_EQ(valuesFromDictionary(expected), values);
    EXPECT_EQ(valuesFromDictionary({{"middle", 0.25}}), (KVSliderValues{0, 0, 0.25, 0, 0}));
    // A middle that is present is kept, even if it does not fit the bounds.
    EXPECT_EQ(valuesFromDictionary({{"upper", 0.75}, {"lower", 0.25}, {"middle", 0.125}}).middle,
              0.125);
}

// Without "middle": the middle of the arc running up from lower to upper, period 1.0.
TEST(SliderValuesDictionary, MiddleDerivedFromTheBounds)
{
    const struct {
        double upper, lower, middle;
    } cases[] = {
        {0.75, 0.25, 0.5},  {0.0625, 0.9375, 0.0}, // crosses 0: (1.0625 + 0.9375)/2 wraps
        {0.25, 0.25, 0.25}, {-1.5, 0.5, 0.5},      // upper raised twice
        {3.25, 0.25, 0.75}, {0.125, 0.375, 0.75},  // lower above upper: 1.125
        {0.0, 0.0, 0.0},
    };
    for (const auto& c : cases) {
        const KVSliderValues v = valuesFromDictionary({{"upper", c.upper}, {"lower", c.lower}});
        EXPECT_EQ(v.middle, c.middle) << c.upper << " " << c.lower;
        EXPECT_EQ(v.upper, c.upper);
        EXPECT_EQ(v.lower, c.lower);
    }
    // Far apart, or of wildly different sizes: must still finish, within the scale.
    for (const auto& [upper, lower] : {std::pair{0.0, 1.0e7}, std::pair{0.0, 1.0e17},
                                       std::pair{0.0, 1.0e300}, std::pair{-1.0e40, 1.0e15}}) {
        const double middle = middleFromBounds(upper, lower);
        EXPECT_TRUE(middle >= 0.0 && middle < 1.0) << upper << " " << lower;
    }
    EXPECT_TRUE(std::isnan(middleFromBounds(NAN, 0.5)));
}

TEST(SliderValuesFromOffsets, BoundsDerivedWithoutWrapping)
{
    EXPECT_EQ(valuesFromOffsets({0.25, 0.125, 0.9375, 0.5, 0.0625}),
              (KVSliderValues{1.3125, 1.0625, 0.9375, 0.4375, 0.375}));
}

TEST(SliderArithmetic, ForwardDistanceWalksOneWayRound)
{
    const struct {
        double from, to, period, distance;
    } cases[] = {
        {0.25, 0.5, 1.0, 0.25},   {0.25, 0.0, 1.0, 0.75},   {0.25, 0.25, 1.0, 0.0},
        {0.25, 2.5, 1.0, 0.25},   {0.25, 0.0, -1.0, -0.25}, {0.25, 0.5, -1.0, -0.75},
        {0.25, 0.25, -1.0, -1.0}, {0.25, 0.75, 0.0, 0.0},   {10.0, 370.0, 360.0, 0.0},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(forwardDistance(c.from, c.to, c.period), c.distance)
            << c.from << " " << c.to << " " << c.period;
    }
}

// The unit is the gap to the neighbour in the direction of travel: 2^-52 above 1.0, 2^-53 below
// it, 2^-54 around 0.3.
TEST(SliderArithmetic, NudgeMovesByWholeUnitsInTheLastPlace)
{
    EXPECT_EQ(nudgeUp(1.0, 1.0), 1.0 + std::ldexp(1.0, -52));
    EXPECT_EQ(nudgeDown(1.0, 100.0), 1.0 - std::ldexp(100.0, -53));
    EXPECT_EQ(nudgeUp(0.3, 100.0), 0.3 + std::ldexp(100.0, -54));
    EXPECT_EQ(nudgeUp(0.75, 0.0), 0.75);
    EXPECT_EQ(nudgeDown(0.75, 0.0), 0.75);
    EXPECT_EQ(nudgeUp(0.0, 2.0), 2.0 * std::nextafter(0.0, 1.0));
}

} // namespace
} // namespace tintorra
