#include "ConversionTestSupport.h"
#include "colour/ColorConversions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace tintorra {
namespace {

struct WrapCase {
    double (*wrap)(double);
    double input;
    double expected;
};

TEST(HueAngles, WrapsLandInTheirHalfOpenRanges)
{
    const WrapCase cases[] = {
        {wrapDegrees, 0.0, 0.0},
        {wrapDegrees, 360.0, 0.0},
        {wrapDegrees, -90.0, 270.0},
        {wrapDegrees, 725.0, 5.0},
        {wrapDegrees, -1e-20, 0.0},
        {wrapDegreesSigned, 180.0, -180.0},
        {wrapDegreesSigned, -180.0, -180.0},
        {wrapDegreesSigned, 190.0, -170.0},
        {wrapDegreesSigned, -190.0, 170.0},
        {wrapDegreesSigned, 45.0, 45.0},
        {wrapRadians, -0.5 * kPi, 1.5 * kPi},
        {wrapRadians, kTwoPi, 0.0},
        {wrapRadians, 5.0 * kPi, kPi},
        {wrapRadians, -1e-20, 0.0},
        {wrapRadiansSigned, kPi, -kPi},
        {wrapRadiansSigned, 1.5 * kPi, -0.5 * kPi},
        {wrapRadiansSigned, -1.5 * kPi, 0.5 * kPi},
        {fractionalPart, 2.75, 0.75},
        {fractionalPart, -0.25, 0.75},
    };
    for (const WrapCase& c : cases) {
        EXPECT_NEAR(c.wrap(c.input), c.expected, 1e-12) << c.input;
    }
    // Where x / period rounds to -0 the floor adds nothing: the result is still not negative.
    for (const double tiny : {-1e-321, -std::numeric_limits<double>::denorm_min()}) {
        EXPECT_EQ(wrapDegrees(tiny), 0.0);
        EXPECT_EQ(wrapRadians(tiny), 0.0);
    }
    // Sweep: every result within the range.
    for (double x = -1000.0; x < 1000.0; x += 0.37) {
        EXPECT_GE(wrapDegrees(x), 0.0);
        EXPECT_LT(wrapDegrees(x), 360.0);
        EXPECT_GE(wrapDegreesSigned(x), -180.0);
        EXPECT_LT(wrapDegreesSigned(x), 180.0);
        EXPECT_GE(wrapRadians(x), 0.0);
        EXPECT_LT(wrapRadians(x), kTwoPi);
        EXPECT_GE(wrapRadiansSigned(x), -kPi);
        EXPECT_LT(wrapRadiansSigned(x), kPi);
    }
}

TEST(HueAngles, HueDifferenceTakesTheShorterArc)
{
    struct DifferenceCase {
        double a, b, period, expected;
    };
    const DifferenceCase cases[] = {
        {0.1, 0.3, 1.0, 0.2},
        {0.9, 0.1, 1.0, 0.2},
        {0.1, 0.9, 1.0, -0.2},
        {0.0, 0.5, 1.0, 0.5},
        {0.5, 0.0, 1.0, 0.5},
        {1.0, 0.0, 1.0, 0.0},
        {-0.25, 0.25, 1.0, 0.5},
        {2.1, 0.2, 1.0, 0.1},
        {3.0, -3.0, kTwoPi, kTwoPi - 6.0},
        {-3.0, 3.0, kTwoPi, 6.0 - kTwoPi},
        {0.0, kPi, kTwoPi, kPi},
    };
    for (const DifferenceCase& c : cases) {
        EXPECT_NEAR(hueDifference(c.a, c.b, c.period), c.expected, 1e-12) << c.a << " -> " << c.b;
    }
}

TEST(HueAngles, WrapIntoRange)
{
    struct RangeCase {
        double x, a, b, wrapped, offset;
    };
    const RangeCase cases[] = {
        {5.0, 0.0, 4.0, 1.0, 1.0},           {-1.0, 0.0, 4.0, 3.0, 3.0}, {4.0, 0.0, 4.0, 0.0, 0.0},
        {5.0, 4.0, 0.0, 1.0, -3.0},          {0.5, 1.0, 3.0, 2.5, 1.5},  {2.0, 1.0, 3.0, 2.0, 1.0},
        {370.0, -180.0, 180.0, 10.0, 190.0}, {7.0, 2.0, 2.0, 2.0, 0.0},
    };
    for (const RangeCase& c : cases) {
        EXPECT_DOUBLE_EQ(wrapIntoRange(c.x, c.a, c.b), c.wrapped)
            << c.x << " " << c.a << " " << c.b;
        EXPECT_DOUBLE_EQ(wrapIntoRangeOffset(c.x, c.a, c.b), c.offset)
            << c.x << " " << c.a << " " << c.b;
    }
    // Far-out and non-finite values finish instead of stepping forever.
    const double far = wrapIntoRange(1e300, 0.0, 1.0);
    EXPECT_GE(far, 0.0);
    EXPECT_LT(far, 1.0);
    EXPECT_TRUE(std::isinf(wrapIntoRange(INFINITY, 0.0, 1.0)));
}

TEST(HueAngles, SmallHelpers)
{
    const struct {
        const char* what;
        double got, expected;
    } cases[] = {
        {"fraction of pi/2", hueFraction(0.5 * kPi), 0.25},
        {"fraction of -pi/2", hueFraction(-0.5 * kPi), 0.75},
        {"fraction of -pi", hueFraction(-kPi), 0.5},
        {"fraction of -5 pi", hueFraction(-5.0 * kPi), 0.5},
        {"fraction of 3 pi: only negative angles wrap", hueFraction(3.0 * kPi), 1.5},
        {"round 0.74 to 0.5", roundToStep(0.74, 0.5), 0.5},
        {"round 0.75 to 0.5", roundToStep(0.75, 0.5), 1.0},
        {"round -0.25 to 0.5", roundToStep(-0.25, 0.5), 0.0},
        {"round -0.26 to 0.5", roundToStep(-0.26, 0.5), -0.5},
        {"round 13 to 5", roundToStep(13.0, 5.0), 15.0},
        {"angle +90", angleBetween({1.0, 1.0}, {2.0, 1.0}, {1.0, 3.0}), 0.5 * kPi},
        {"angle -90", angleBetween({1.0, 1.0}, {1.0, 3.0}, {2.0, 1.0}), -0.5 * kPi},
        {"angle 180", angleBetween({1.0, 1.0}, {2.0, 1.0}, {0.0, 1.0}), kPi},
        {"angle 0", angleBetween({1.0, 1.0}, {2.0, 2.0}, {5.0, 5.0}), 0.0},
        {"coarse on +y", fastAtan2Coarse(2.0, 0.0), 0.5 * kPi},
        {"coarse on -y", fastAtan2Coarse(-2.0, 0.0), -0.5 * kPi},
        {"coarse at the origin", fastAtan2Coarse(0.0, 0.0), 0.0},
        {"coarse on +x", fastAtan2Coarse(0.0, 3.0), 0.0},
        {"coarse on -x", fastAtan2Coarse(0.0, -3.0), kPi},
        // The 1e-10 guard makes (0, 0) the direction y = 1e-10, x = 0, which the cubic places
        // just above pi/2: finite, never NaN.
        {"fast at the origin", fastAtan2(0.0, 0.0), 0.9817 - 0.1963 + 0.25 * kPi},
    };
    for (const auto& c : cases) {
        EXPECT_NEAR(c.got, c.expected, 1e-15) << c.what;
    }
}

// Largest |approximation - atan2| over a fine sweep of directions at several radii.
double largestArctangentError(double (*approximation)(double, double))
{
    double worst = 0.0;
    for (const double radius : {1e-3, 1.0, 250.0}) {
        for (int step = 0; step < 36000; ++step) {
            const double angle = -kPi + step * (kTwoPi / 36000.0);
            const double y = radius * std::sin(angle), x = radius * std::cos(angle);
            worst = std::max(
                worst, std::fabs(hueDifference(approximation(y, x), std::atan2(y, x), kTwoPi)));
        }
    }
    return worst;
}

TEST(HueAngles, FastArctangentsStayWithinTheirErrors)
{
    // The cubic's worst error is 0.58 degrees, reached near +-97 degrees; at the diagonals and
    // on the axes it is essentially exact.
    const double fastError = largestArctangentError(fastAtan2);
    EXPECT_LT(fastError, testing::kFastAtan2MaxError);
    EXPECT_GT(fastError, 0.01);
    for (const double angle : {0.25 * kPi, 0.75 * kPi, -0.25 * kPi, -0.75 * kPi}) {
        EXPECT_NEAR(fastAtan2(std::sin(angle), std::cos(angle)), angle, 1e-9);
    }
    // Measured 4.9e-3 rad (0.28 degrees).
    EXPECT_LT(largestArctangentError(fastAtan2Coarse), radiansFromDegrees(0.3));
}

} // namespace
} // namespace tintorra
