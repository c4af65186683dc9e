#include "engine/SampleTables.h"
#include "engine/ShiftCaches.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <random>

namespace tintorra {
namespace {

// What the pixel writers store, written out independently of the tables.
unsigned storedByPower(double linear, double gamma, unsigned maximum)
{
    const double encoded = gamma != 1.0 ? std::pow(linear, gamma) : linear;
    return static_cast<unsigned>(encoded * maximum + 0.5);
}

ShiftCaches& caches()
{
    static ShiftCaches shared;
    return shared;
}

class SampleTables : public testing::TestWithParam<double> {};

TEST_P(SampleTables, DecodeEverySixteenBitSampleAsThePowerDoes)
{
    const double gamma = GetParam();
    const auto table = caches().wordDecodeTable(gamma);
    for (unsigned k = 0; k < 65536; k += 7) {
        const double stored = k / 65535.0;
        const double expected = gamma != 1.0 ? std::pow(stored, 1.0 / gamma) : stored;
        ASSERT_EQ((*table)[static_cast<std::uint16_t>(k)], expected) << k;
    }
}

// Random values, and for every sample its smallest value and the double just below it.
TEST_P(SampleTables, EncodeExactlyAsThePowerDoes)
{
    const double gamma = GetParam();
    for (const unsigned maximum : {255u, 65535u}) {
        const auto table =
            maximum == 255 ? caches().byteEncodeTable(gamma) : caches().wordEncodeTable(gamma);
        std::mt19937_64 random(42);
        std::uniform_real_distribution<double> unit(0.0, 1.0);
        for (int i = 0; i < 50000; ++i) {
            const double v = i % 2 == 0 ? unit(random) : std::pow(unit(random), 6.0);
            ASSERT_EQ((*table)(v), storedByPower(v, gamma, maximum)) << v << " " << maximum;
        }
        for (unsigned k = 1; k <= maximum; k += maximum == 255 ? 1 : 97) {
            // The boundary between k - 1 and k, found here by bisection on the power itself.
            double low = 0.0;
            double high = 1.0;
            for (int step = 0; step < 200 && std::nextafter(low, 1.0) < high; ++step) {
                const double middle = 0.5 * (low + high);
                (storedByPower(middle, gamma, maximum) >= k ? high : low) = middle;
            }
            ASSERT_EQ((*table)(high), storedByPower(high, gamma, maximum)) << k;
            ASSERT_EQ((*table)(low), storedByPower(low, gamma, maximum)) << k;
        }
        EXPECT_EQ((*table)(0.0), 0u);
        EXPECT_EQ((*table)(1.0), maximum);
        EXPECT_EQ((*table)(std::nan("")), 0u);
    }
}

// The 16-bit cells' guesses against the power, at random values of every cell's range.
TEST_P(SampleTables, GuessSixteenBitSamplesWithinTheirBound)
{
    const double gamma = GetParam();
    const auto table = caches().wordEncodeTable(gamma);
    const SampleGuessCells cells = table->guessCells();
    if (gamma < 0.1) {
        EXPECT_EQ(cells.cells, nullptr) << "so small a gamma needs more cells than a table holds";
        return;
    }
    ASSERT_NE(cells.cells, nullptr);
    std::mt19937_64 random(7);
    std::uniform_real_distribution<double> exponent(std::log2(table->thresholds()[1]), 0.0);
    for (int i = 0; i < 200000; ++i) {
        const double v = std::exp2(exponent(random));
        const std::uint64_t key = std::bit_cast<std::uint64_t>(v) >> cells.shift;
        const double x = v - std::bit_cast<double>(key << cells.shift);
        const double* c = cells.cells + SampleGuessCells::kStride * (key - cells.firstKey);
        const double guess = c[0] + x * (c[1] + x * (c[2] + x * c[3]));
        const double power = gamma != 1.0 ? std::pow(v, gamma) : v;
        ASSERT_NEAR(guess, power * 65535.0 + 0.5, SampleGuessCells::kLargestError) << v;
    }
}

INSTANTIATE_TEST_SUITE_P(Gammas, SampleTables,
                         testing::Values(1.0 / 2.2, 0.5, 1.0, 1.0 / 3.0, 2.2, 0.02));

TEST(SampleTables, AreSharedPerGammaAndDepthWithinOneEngineOnly)
{
    EXPECT_EQ(caches().byteEncodeTable(0.5), caches().byteEncodeTable(0.5));
    EXPECT_NE(static_cast<const void*>(caches().byteEncodeTable(0.5).get()),
              static_cast<const void*>(caches().wordEncodeTable(0.5).get()));
    EXPECT_NE(caches().wordDecodeTable(0.5), caches().wordDecodeTable(0.6));
    ShiftCaches other;
    EXPECT_NE(other.byteEncodeTable(0.5), caches().byteEncodeTable(0.5));
}

} // namespace
} // namespace tintorra
