#include "controls/KVSliderArithmetic.h"
#include "controls/KVSliderValues.h"

#include <gtest/gtest.h>

#include <cmath>

namespace tintorra {
namespace {

struct ForwardCase {
    double from;
    double to;
    double period;
    double distance;
};

class ForwardDistance : public testing::TestWithParam<ForwardCase> {};

TEST_P(ForwardDistance, WalksOneWayRound)
{
    const ForwardCase& c = GetParam();
    EXPECT_EQ(forwardDistance(c.from, c.to, c.period), c.distance);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ForwardDistance,
    testing::Values(ForwardCase{0.25, 0.5, 1.0, 0.25}, ForwardCase{0.25, 0.0, 1.0, 0.75},
                    ForwardCase{0.25, 0.25, 1.0, 0.0}, ForwardCase{0.25, 2.5, 1.0, 0.25},
                    ForwardCase{0.25, 0.0, -1.0, -0.25}, ForwardCase{0.25, 0.5, -1.0, -0.75},
                    ForwardCase{0.25, 0.25, -1.0, -1.0}, ForwardCase{0.25, 0.75, 0.0, 0.0},
                    ForwardCase{10.0, 370.0, 360.0, 0.0}));

struct NudgeCase {
    double x;
    double units;
    bool up;
    double expected;
};

class NudgeByUnitsInTheLastPlace : public testing::TestWithParam<NudgeCase> {};

TEST_P(NudgeByUnitsInTheLastPlace, MovesByWholeUnits)
{
    const NudgeCase& c = GetParam();
    EXPECT_EQ(c.up ? nudgeUp(c.x, c.units) : nudgeDown(c.x, c.units), c.expected);
}

// The unit is the gap to the neighbour in the direction of travel.
INSTANTIATE_TEST_SUITE_P(
    Cases, NudgeByUnitsInTheLastPlace,
    testing::Values(NudgeCase{1.0, 1.0, true, 1.0 + std::ldexp(1.0, -52)},
                    NudgeCase{1.0, 100.0, false, 1.0 - std::ldexp(100.0, -53)},
                    NudgeCase{0.3, 100.0, true, 0.3 + std::ldexp(100.0, -54)},
                    NudgeCase{0.75, 0.0, true, 0.75}, NudgeCase{0.75, 0.0, false, 0.75},
                    NudgeCase{0.0, 2.0, true, 2.0 * std::nextafter(0.0, 1.0)}));

TEST(MiddleFromBounds, FarApartBoundsStillGiveAWrappedMiddle)
{
    for (const double lower : {1.0e7, 1.0e17, 1.0e300}) {
        const double middle = middleFromBounds(0.0, lower);
        EXPECT_GE(middle, 0.0) << lower;
        EXPECT_LT(middle, 1.0) << lower;
    }
    EXPECT_TRUE(std::isnan(middleFromBounds(NAN, 0.5)));
}

} // namespace
} // namespace tintorra
