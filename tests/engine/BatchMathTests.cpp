#include "engine/BatchMath.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace tintorra {
namespace {

// Units in the last place between two doubles of the same sign.
double ulps(double a, double b)
{
    if (a == b || (std::isnan(a) && std::isnan(b))) {
        return 0.0;
    }
    return std::fabs(a - b) / std::fabs(std::nextafter(a, b) - a);
}

std::vector<double> values(std::size_t n, double low, double high, unsigned start)
{
    std::mt19937_64 random(start);
    std::uniform_real_distribution<double> d(low, high);
    std::vector<double> v(n);
    for (double& x : v) {
        x = d(random);
    }
    return v;
}

// Every length from 0 to 9 covers whole groups of four and every partial tail.
TEST(BatchMath, AgreesWithTheLibraryWithinTwoUnitsInTheLastPlace)
{
    for (std::size_t n = 0; n <= 9; ++n) {
        const std::vector<double> x = values(n, 0.0, 1.0, 1 + n);
        const std::vector<double> y = values(n, -4.0, 4.0, 100 + n);
        std::vector<double> out(n), out2(n);
        for (const double exponent : {1.0 / 2.2, 2.2, 0.5, 1.0}) {
            batch::pow(x.data(), exponent, out.data(), n);
            for (std::size_t i = 0; i < n; ++i) {
                EXPECT_LE(ulps(out[i], std::pow(x[i], exponent)), 2.0) << x[i];
            }
        }
        batch::cbrt(y.data(), out.data(), n);
        for (std::size_t i = 0; i < n; ++i) {
            EXPECT_LE(ulps(out[i], std::cbrt(y[i])), 2.0) << y[i];
        }
        batch::atan2(y.data(), x.data(), out.data(), n);
        for (std::size_t i = 0; i < n; ++i) {
            EXPECT_LE(ulps(out[i], std::atan2(y[i], x[i])), 2.0) << y[i] << " " << x[i];
        }
        batch::sincos(y.data(), out.data(), out2.data(), n);
        for (std::size_t i = 0; i < n; ++i) {
            EXPECT_LE(std::fabs(out[i] - std::sin(y[i])), 2e-16) << y[i];
            EXPECT_LE(std::fabs(out2[i] - std::cos(y[i])), 2e-16) << y[i];
        }
    }
}

TEST(BatchMath, KeepsTheSpecialValuesOfTheLibrary)
{
    const std::vector<double> x = {0.0, 1.0, -0.5, std::numeric_limits<double>::quiet_NaN(),
                                   std::numeric_limits<double>::infinity()};
    std::vector<double> out(x.size());
    batch::pow(x.data(), 0.45, out.data(), x.size());
    EXPECT_EQ(out[0], 0.0);
    EXPECT_EQ(out[1], 1.0);
    EXPECT_TRUE(std::isnan(out[2]));
    EXPECT_TRUE(std::isnan(out[3]));
    EXPECT_TRUE(std::isinf(out[4]));
    const std::vector<double> zeros = {0.0, 0.0, 0.0};
    batch::atan2(zeros.data(), zeros.data(), out.data(), zeros.size());
    EXPECT_EQ(out[0], 0.0);
    batch::cbrt(x.data(), out.data(), x.size());
    EXPECT_EQ(out[0], 0.0);
    EXPECT_EQ(out[1], 1.0);
    EXPECT_LE(ulps(out[2], std::cbrt(-0.5)), 1.0);
}

TEST(BatchMath, ResultsDoNotDependOnNeighbours)
{
    const std::vector<double> x = values(13, 0.01, 1.0, 5);
    std::vector<double> whole(x.size());
    batch::pow(x.data(), 1.0 / 2.2, whole.data(), x.size());
    for (std::size_t i = 0; i < x.size(); ++i) {
        double single;
        batch::pow(&x[i], 1.0 / 2.2, &single, 1);
        EXPECT_EQ(single, whole[i]) << i;
    }
    // In place.
    std::vector<double> inPlace = x;
    batch::pow(inPlace.data(), 1.0 / 2.2, inPlace.data(), inPlace.size());
    EXPECT_EQ(inPlace, whole);
}

} // namespace
} // namespace tintorra
