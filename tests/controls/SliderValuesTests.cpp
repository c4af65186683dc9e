#include "controls/KVSliderValues.h"

#include <gtest/gtest.h>

#include <cmath>

namespace tintorra {
namespace {

TEST(SliderValuesDictionary, UsesTheFiveKeysAndRoundTrips)
{
    const KVSliderValues values{1.125, 1.0625, 0.5, -0.25, -0.5};
    const KVValueDictionary dictionary = dictionaryFromValues(values);
    const KVValueDictionary expected = {{"upperFalloff", 1.125},
                                        {"upper", 1.0625},
                                        {"middle", 0.5},
                                        {"lower", -0.25},
                                        {"lowerFalloff", -0.5}};
    EXPECT_EQ(dictionary, expected);
    EXPECT_EQ(valuesFromDictionary(dictionary), values);
}

TEST(SliderValuesDictionary, MissingNumbersReadAsZero)
{
    const KVSliderValues values = valuesFromDictionary({{"middle", 0.25}});
    EXPECT_EQ(values, (KVSliderValues{0.0, 0.0, 0.25, 0.0, 0.0}));
}

struct MiddleFromBoundsCase {
    double upper;
    double lower;
    double middle;
};

class MiddleFromBounds : public testing::TestWithParam<MiddleFromBoundsCase> {};

// The middle of the arc that runs up from lower to upper, on a circle of period 1.0.
TEST_P(MiddleFromBounds, DerivesTheWrappedMidpoint)
{
    const MiddleFromBoundsCase& c = GetParam();
    const KVSliderValues values = valuesFromDictionary({{"upper", c.upper}, {"lower", c.lower}});
    EXPECT_EQ(values.middle, c.middle);
    EXPECT_EQ(values.upper, c.upper);
    EXPECT_EQ(values.lower, c.lower);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, MiddleFromBounds,
    testing::Values(MiddleFromBoundsCase{0.75, 0.25, 0.5},     // ordinary range
                    MiddleFromBoundsCase{0.0625, 0.9375, 0.0}, // crosses 0: 1.0625 and 0.9375
                    MiddleFromBoundsCase{0.25, 0.25, 0.25},    // empty range
                    MiddleFromBoundsCase{-1.5, 0.5, 0.5},      // upper raised twice to 0.5
                    MiddleFromBoundsCase{3.25, 0.25, 0.75},    // (3.25 + 0.25)/2 = 1.75
                    MiddleFromBoundsCase{0.125, 0.375, 0.75},  // lower above upper: 1.125
                    MiddleFromBoundsCase{0.0, 0.0, 0.0}));     // both missing

TEST(SliderValuesDictionary, MiddleIsKeptWhenPresentEvenIfInconsistent)
{
    const KVSliderValues values =
        valuesFromDictionary({{"upper", 0.75}, {"lower", 0.25}, {"middle", 0.125}});
    EXPECT_EQ(values.middle, 0.125);
}

TEST(SliderValuesFromOffsets, DerivesBoundsWithoutWrapping)
{
    const KVSliderOffsets offsets{0.25, 0.125, 0.9375, 0.5, 0.0625};
    const KVSliderValues values = valuesFromOffsets(offsets);
    EXPECT_EQ(values.middle, 0.9375);
    EXPECT_EQ(values.upper, 1.0625);
    EXPECT_EQ(values.upperFalloff, 1.3125);
    EXPECT_EQ(values.lower, 0.4375);
    EXPECT_EQ(values.lowerFalloff, 0.375);
}

} // namespace
} // namespace tintorra
