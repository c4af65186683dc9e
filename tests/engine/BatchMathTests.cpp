#include "engine/BatchMath.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
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
            EXPECT_LE(std::fabs(out[i] - std::sin(y[i])), 4e-16) << y[i];
            EXPECT_LE(std::fabs(out2[i] - std::cos(y[i])), 4e-16) << y[i];
        }
    }
}

// The largest error in units in the last place of `f` against `truth` over `x`.
template <typename F, typename T>
double largestError(const std::vector<double>& x, const F& f, const T& truth)
{
    std::vector<double> out(x.size());
    f(x, out);
    double worst = 0.0;
    for (std::size_t i = 0; i < x.size(); ++i) {
        const double expected = truth(i);
        EXPECT_EQ(std::isnan(out[i]), std::isnan(expected)) << x[i];
        EXPECT_EQ(std::signbit(out[i]), std::signbit(expected)) << x[i];
        worst = std::max(worst, ulps(out[i], expected));
    }
    return worst;
}

// Values spread over every binade from the smallest denormal to the largest double, both signs.
std::vector<double> everyBinade(std::size_t perBinade, unsigned start)
{
    std::mt19937_64 random(start);
    std::uniform_real_distribution<double> mantissa(1.0, 2.0);
    std::vector<double> v;
    for (int e = -1074; e <= 1023; ++e) {
        for (std::size_t k = 0; k < perBinade; ++k) {
            const double x = std::ldexp(e < -1022 ? 1.0 : mantissa(random), e);
            v.push_back(x);
            v.push_back(-x);
        }
    }
    return v;
}

// The cube root, arctangent, sine and cosine against the C library over many values, the
// denormals and extremes included: SLEEF states 3.5 units in the last place from the true value
// for the latter three, and the library may be off itself (its cube root by up to 3 units).
TEST(BatchMath, FastFunctionsStayWithinFourAndAHalfUnitsInTheLastPlace)
{
    const double kBound = 4.5;
    std::vector<double> x = everyBinade(8, 11);
    const std::vector<double> unit = values(200000, -1.0, 1.0, 12);
    x.insert(x.end(), unit.begin(), unit.end());
    const double edges[] = {0.0,
                            -0.0,
                            1.0,
                            -1.0,
                            std::numeric_limits<double>::denorm_min(),
                            std::numeric_limits<double>::min(),
                            std::numeric_limits<double>::max(),
                            -std::numeric_limits<double>::max(),
                            0.008856451679035631,
                            1e-300};
    x.insert(x.end(), std::begin(edges), std::end(edges));
    const double cbrtError = largestError(
        x, [](const auto& in, auto& out) { batch::cbrt(in.data(), out.data(), in.size()); },
        [&](std::size_t i) { return std::cbrt(x[i]); });
    EXPECT_LE(cbrtError, kBound);

    // Arctangents of pairs: the unit square, tiny and huge components, and every axis and sign.
    std::vector<double> ys = values(200000, -1.0, 1.0, 13);
    std::vector<double> xs = values(200000, -1.0, 1.0, 14);
    const std::vector<double> spread = everyBinade(4, 15);
    for (std::size_t i = 0; i < spread.size(); ++i) {
        ys.push_back(spread[i]);
        xs.push_back(spread[(i * 7919) % spread.size()]);
        ys.push_back(spread[i]);
        xs.push_back(i % 2 == 0 ? 1.0 : -1.0);
    }
    for (const double a : edges) {
        for (const double b : edges) {
            ys.push_back(a);
            xs.push_back(b);
        }
    }
    const double atanError = largestError(
        ys,
        [&](const auto& in, auto& out) {
            batch::atan2(in.data(), xs.data(), out.data(), in.size());
        },
        [&](std::size_t i) { return std::atan2(ys[i], xs[i]); });
    EXPECT_LE(atanError, kBound);

    // Sines and cosines of hues many turns either way, and small angles down to the denormals.
    std::vector<double> angles = values(200000, -100.0, 100.0, 16);
    for (const double a : everyBinade(8, 17)) {
        if (std::fabs(a) < 1e6) {
            angles.push_back(a);
        }
    }
    angles.insert(angles.end(), std::begin(edges), std::begin(edges) + 6);
    std::vector<double> cosines(angles.size());
    const double sinError = largestError(
        angles,
        [&](const auto& in, auto& out) {
            batch::sincos(in.data(), out.data(), cosines.data(), in.size());
        },
        [&](std::size_t i) { return std::sin(angles[i]); });
    EXPECT_LE(sinError, kBound);
    double cosError = 0.0;
    for (std::size_t i = 0; i < angles.size(); ++i) {
        cosError = std::max(cosError, ulps(cosines[i], std::cos(angles[i])));
    }
    EXPECT_LE(cosError, kBound);
    std::printf("largest errors in ulp: cbrt %.3f atan2 %.3f sin %.3f cos %.3f\n", cbrtError,
                atanError, sinError, cosError);
}

// Our own four-lane cube root against the long-double root rounded to double, a closer truth
// than the library's double root.
TEST(BatchMath, CubeRootIsWithinOneUnitOfTheLongDoubleRoot)
{
    if (!batch::vectorised()) {
        GTEST_SKIP() << "no AVX2: the cube root is the library's";
    }
    std::vector<double> x = everyBinade(16, 21);
    const std::vector<double> luminances = values(200000, 0.0, 1.1, 22);
    x.insert(x.end(), luminances.begin(), luminances.end());
    const double cbrtError = largestError(
        x, [](const auto& in, auto& out) { batch::cbrt(in.data(), out.data(), in.size()); },
        [&](std::size_t i) {
            return static_cast<double>(std::cbrt(static_cast<long double>(x[i])));
        });
    EXPECT_LE(cbrtError, 1.0);
}

TEST(BatchMath, FastFunctionsKeepTheLibrarysInfinitiesAndNaNs)
{
    const double inf = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::vector<double> x = {inf, -inf, nan, 0.0, -0.0};
    std::vector<double> out(x.size());
    batch::cbrt(x.data(), out.data(), x.size());
    EXPECT_EQ(out[0], inf);
    EXPECT_EQ(out[1], -inf);
    EXPECT_TRUE(std::isnan(out[2]));
    EXPECT_EQ(out[3], 0.0);
    EXPECT_FALSE(std::signbit(out[3]));
    EXPECT_TRUE(std::signbit(out[4]));

    // Every pair of these: the library's atan2 gives the quadrant's angle for infinities and
    // zeros of either sign, NaN with any NaN.
    const std::vector<double> unusual = {inf, -inf, nan, 0.0, -0.0, 1.0, -1.0};
    std::vector<double> ys;
    std::vector<double> xs;
    for (const double a : unusual) {
        for (const double b : unusual) {
            ys.push_back(a);
            xs.push_back(b);
        }
    }
    std::vector<double> angles(ys.size());
    batch::atan2(ys.data(), xs.data(), angles.data(), ys.size());
    for (std::size_t i = 0; i < ys.size(); ++i) {
        const double expected = std::atan2(ys[i], xs[i]);
        if (std::isnan(expected)) {
            EXPECT_TRUE(std::isnan(angles[i])) << ys[i] << " " << xs[i];
        } else {
            EXPECT_EQ(std::signbit(angles[i]), std::signbit(expected)) << ys[i] << " " << xs[i];
            EXPECT_LE(ulps(angles[i], expected), 1.0) << ys[i] << " " << xs[i];
        }
    }

    std::vector<double> sines(x.size());
    std::vector<double> cosines(x.size());
    batch::sincos(x.data(), sines.data(), cosines.data(), x.size());
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_TRUE(std::isnan(sines[i])) << x[i];
        EXPECT_TRUE(std::isnan(cosines[i])) << x[i];
    }
    EXPECT_EQ(sines[3], 0.0);
    EXPECT_TRUE(std::signbit(sines[4]));
    EXPECT_EQ(cosines[3], 1.0);
    EXPECT_EQ(cosines[4], 1.0);
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
