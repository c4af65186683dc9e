#include "CircularSliderTestSupport.h"

#include <gtest/gtest.h>

namespace tintorra {
namespace {

using testing_support::offsetSum;
using testing_support::ringAtHalf;
using testing_support::ringTotal;
using testing_support::straightAtHalf;

TEST(TakeValues, RangeAcrossZeroReadsBackRelativeToTheMiddle)
{
    KVCircularSliderModel ring(true);
    ring.takeValues(KVValueDictionary{{"upperFalloff", 0.1},
                                      {"upper", 0.05},
                                      {"middle", 0.0},
                                      {"lower", 0.95},
                                      {"lowerFalloff", 0.9}});
    const KVSliderValues read = valuesFromDictionary(ring.values());
    EXPECT_NEAR(read.middle, 0.0, 1e-15);
    EXPECT_NEAR(read.lower, -0.05, 1e-15);
    EXPECT_NEAR(read.upper, 0.05, 1e-15);
    EXPECT_NEAR(read.lowerFalloff, -0.1, 1e-15);
    EXPECT_NEAR(read.upperFalloff, 0.1, 1e-15);
}

TEST(TakeValues, StoresWithoutClampingButReadsClamped)
{
    KVCircularSliderModel ring(true);
    ring.setCenterThumbWithinOffsets(false);
    ring.takeValues(KVSliderValues{1.25, 0.875, 0.5, 0.125, -0.25});
    EXPECT_EQ(ring.offsets(), (KVSliderOffsets{0.375, 0.375, 0.5, 0.375, 0.375}));
    EXPECT_LE(offsetSum(ring.clampedOffsets(ring.offsets())), ringTotal());
    // Reading does not change what is stored.
    (void)ring.values();
    EXPECT_EQ(ring.offsets(), (KVSliderOffsets{0.375, 0.375, 0.5, 0.375, 0.375}));
}

TEST(SingleValues, DeriveFromTheStoredOffsetsUnwrapped)
{
    KVCircularSliderModel ring(true);
    ring.setOffsets({0.125, 0.0625, 0.9375, 0.25, 0.5});
    EXPECT_EQ(ring.middleValue(), 0.9375);
    EXPECT_EQ(ring.upperValue(), 1.0);
    EXPECT_EQ(ring.upperFalloffValue(), 1.125);
    EXPECT_EQ(ring.lowerValue(), 0.6875);
    EXPECT_EQ(ring.lowerFalloffValue(), 0.1875);
    EXPECT_EQ(ring.doubleValueForKey("upperFalloffValue"), 1.125);
    EXPECT_TRUE(std::isnan(ring.doubleValueForKey("values")));
}

TEST(TakeMiddleValue, RingTurnsTheWholeRangeWithAPeriodJustUnderOneTurn)
{
    KVCircularSliderModel ring = ringAtHalf();
    ring.takeMiddleValue(1.25);
    // Wrapped by the allowable span, 1 - 100 ulp, not by a whole turn.
    EXPECT_EQ(ring.middleValue(), 0.25 + std::ldexp(100.0, -53));
    ring.takeMiddleValue(-0.25);
    EXPECT_EQ(ring.middleValue(), 0.75 - std::ldexp(100.0, -53));
    EXPECT_EQ(ring.offsets().upperOffset, 0.125);
    EXPECT_EQ(ring.offsets().lowerFalloffOffset, 0.0625);
}

struct StraightMiddleCase {
    bool centering;
    double value;
    double middle;
};

class StraightTakeMiddleValue : public testing::TestWithParam<StraightMiddleCase> {};

TEST_P(StraightTakeMiddleValue, KeepsTheRangeOnTheScale)
{
    const StraightMiddleCase& c = GetParam();
    KVCircularSliderModel straight(false);
    straight.setCenterThumbWithinOffsets(c.centering);
    straight.setOffsets({0.0, 0.25, 0.5, 0.125, 0.0});
    straight.takeMiddleValue(c.value);
    EXPECT_EQ(straight.middleValue(), c.middle);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, StraightTakeMiddleValue,
    testing::Values(StraightMiddleCase{true, 0.0, 0.125}, StraightMiddleCase{true, 0.5, 0.5},
                    StraightMiddleCase{true, 0.9, 0.75}, StraightMiddleCase{false, -1.0, 0.0},
                    StraightMiddleCase{false, 0.625, 0.625}, StraightMiddleCase{false, 1.5, 1.0}));

TEST(TakeMiddleValue, StraightClampsTheOffsetsUnlessTheMouseIsDown)
{
    KVCircularSliderModel straight = straightAtHalf(false);
    straight.takeMiddleValue(0.875);
    EXPECT_EQ(straight.offsets().upperOffset, 0.125);

    KVCircularSliderModel held = straightAtHalf(false);
    ASSERT_TRUE(held.mouseDown(kCircularPartMiddle, 0.5));
    held.takeMiddleValue(0.875);
    EXPECT_EQ(held.offsets().upperOffset, 0.25);
}

struct BoundCase {
    const char* name;
    bool upper; // takeUpperValue, else takeLowerValue
    bool centering;
    double value;
    KVSliderOffsets offsets;
};

class TakeBoundOnRing : public testing::TestWithParam<BoundCase> {};

// From the ring at 0.5 with bounds 0.125 and fall-offs 0.0625.
TEST_P(TakeBoundOnRing, MatchesHandDerivedOffsets)
{
    const BoundCase& c = GetParam();
    KVCircularSliderModel ring = ringAtHalf(c.centering);
    if (c.upper) {
        ring.takeUpperValue(c.value);
    } else {
        ring.takeLowerValue(c.value);
    }
    EXPECT_EQ(ring.offsets(), c.offsets) << c.name;
}

INSTANTIATE_TEST_SUITE_P(
    Cases, TakeBoundOnRing,
    testing::Values(
        BoundCase{"upper out, centred", true, true, 0.75, {0.0625, 0.1875, 0.5625, 0.1875, 0.0625}},
        BoundCase{"upper below lower", true, true, 0.25, {0.0625, 0.0, 0.375, 0.0, 0.0625}},
        BoundCase{
            "upper out, from the middle", true, false, 0.75, {0.0625, 0.25, 0.5, 0.125, 0.0625}},
        BoundCase{"upper below the middle", true, false, 0.375, {0.0625, 0.0, 0.5, 0.125, 0.0625}},
        BoundCase{
            "lower out, centred", false, true, 0.25, {0.0625, 0.1875, 0.4375, 0.1875, 0.0625}},
        BoundCase{"lower above upper", false, true, 0.75, {0.0625, 0.0, 0.625, 0.0, 0.0625}},
        BoundCase{
            "lower out, from the middle", false, false, 0.25, {0.0625, 0.125, 0.5, 0.25, 0.0625}},
        BoundCase{"lower in, from the middle",
                  false,
                  false,
                  0.4375,
                  {0.0625, 0.125, 0.5, 0.0625, 0.0625}}));

TEST(TakeUpperValue, RingStopsAtTheLowerFalloffOneTurnOn)
{
    KVCircularSliderModel ring = ringAtHalf();
    ring.takeUpperValue(1.5);
    // The span from the lower bound may use all but the lower fall-off: T - 0.0625.
    const double span = ringTotal() - 0.0625;
    const KVSliderOffsets offsets = ring.offsets();
    EXPECT_EQ(offsets.upperOffset + offsets.lowerOffset, span);
    EXPECT_EQ(offsets.lowerOffset, span - span / 2);
    EXPECT_EQ(offsets.lowerFalloffOffset, 0.0625);
    // What is left for the upper fall-off is (nearly) nothing.
    EXPECT_GE(offsets.upperFalloffOffset, 0.0);
    EXPECT_LE(offsets.upperFalloffOffset, 1e-15);
    EXPECT_LE(offsetSum(offsets), ringTotal() + 1e-15);
}

TEST(TakeLowerValue, RingStopsAtTheUpperFalloffOneTurnBack)
{
    KVCircularSliderModel ring = ringAtHalf();
    ring.takeLowerValue(-0.5);
    const double span = ringTotal() - 0.0625;
    const KVSliderOffsets offsets = ring.offsets();
    EXPECT_EQ(offsets.upperOffset + offsets.lowerOffset, span);
    EXPECT_EQ(offsets.upperFalloffOffset, 0.0625);
    EXPECT_LE(offsets.lowerFalloffOffset, 1e-15);
}

TEST(TakeLowerValue, RingAcrossZeroTakesTheValueUnwrapped)
{
    KVCircularSliderModel ring(true);
    ring.setOffsets({0.0625, 0.0625, 0.0625, 0.0625, 0.0625});
    ring.takeLowerValue(-0.0625);
    EXPECT_EQ(ring.offsets(), (KVSliderOffsets{0.0625, 0.09375, 0.03125, 0.09375, 0.0625}));
    // The same hue given as 0.9375 lies above the upper bound and empties the range.
    ring.setOffsets({0.0625, 0.0625, 0.0625, 0.0625, 0.0625});
    ring.takeLowerValue(0.9375);
    EXPECT_EQ(ring.offsets().lowerOffset, 0.0);
    EXPECT_EQ(ring.offsets().upperOffset, 0.0);
}

TEST(TakeUpperValue, EmptyRingRangeOpensTheLongWayRound)
{
    // With lower = upper the lower bound is wrapped below the reference, a whole turn back, so a
    // small step up makes the range as wide as the lower fall-off allows.
    KVCircularSliderModel ring(true);
    ring.setOffsets({0.0625, 0.0, 0.5, 0.0, 0.0625});
    ring.takeUpperValue(0.5625);
    EXPECT_EQ(ring.offsets().upperOffset + ring.offsets().lowerOffset, ringTotal() - 0.0625);
    // The lower bound opens normally.
    ring.setOffsets({0.0625, 0.0, 0.5, 0.0, 0.0625});
    ring.takeLowerValue(0.4375);
    EXPECT_EQ(ring.offsets().upperOffset + ring.offsets().lowerOffset, 0.0625);
}

struct StraightBoundCase {
    bool upper;
    bool centering;
    double value;
    KVSliderOffsets offsets;
};

class TakeBoundOnStraight : public testing::TestWithParam<StraightBoundCase> {};

TEST_P(TakeBoundOnStraight, MatchesHandDerivedOffsets)
{
    const StraightBoundCase& c = GetParam();
    KVCircularSliderModel straight = straightAtHalf(c.centering);
    if (c.upper) {
        straight.takeUpperValue(c.value);
    } else {
        straight.takeLowerValue(c.value);
    }
    EXPECT_EQ(straight.offsets(), c.offsets);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, TakeBoundOnStraight,
    testing::Values(StraightBoundCase{true, true, 0.875, {0.0, 0.3125, 0.5625, 0.3125, 0.0}},
                    StraightBoundCase{true, true, 1.5, {0.0, 0.375, 0.625, 0.375, 0.0}},
                    StraightBoundCase{true, false, 1.5, {0.0, 0.5, 0.5, 0.25, 0.0}},
                    StraightBoundCase{true, false, 0.0, {0.0, 0.0, 0.5, 0.25, 0.0}},
                    StraightBoundCase{false, true, 0.125, {0.0, 0.3125, 0.4375, 0.3125, 0.0}},
                    StraightBoundCase{false, true, -1.0, {0.0, 0.375, 0.375, 0.375, 0.0}},
                    StraightBoundCase{false, false, -1.0, {0.0, 0.25, 0.5, 0.5, 0.0}}));

TEST(TakeBounds, HiddenBoundThumbsZeroBothBoundOffsets)
{
    KVCircularSliderModel ring = ringAtHalf();
    ring.setShowsUpperLowerThumbs(false);
    ring.takeUpperValue(0.75);
    EXPECT_EQ(ring.offsets(), (KVSliderOffsets{0.0625, 0.0, 0.5, 0.0, 0.0625}));
    ring = ringAtHalf();
    ring.setShowsUpperLowerThumbs(false);
    ring.takeLowerValue(0.25);
    EXPECT_EQ(ring.offsets(), (KVSliderOffsets{0.0625, 0.0, 0.5, 0.0, 0.0625}));
}

TEST(TakeBounds, FalloffIsLimitedToTheRoomLeftUnlessDragging)
{
    KVCircularSliderModel straight(false);
    straight.setOffsets({0.25, 0.125, 0.5, 0.125, 0.25});
    straight.takeUpperValue(0.875);
    // Centred: lower bound 0.375 stays, middle 0.625, upper 0.875; 0.125 left above.
    EXPECT_EQ(straight.offsets(), (KVSliderOffsets{0.125, 0.25, 0.625, 0.25, 0.25}));
    straight.setOffsets({0.25, 0.125, 0.5, 0.125, 0.25});
    straight.takeLowerValue(0.125);
    EXPECT_EQ(straight.offsets(), (KVSliderOffsets{0.25, 0.25, 0.375, 0.25, 0.125}));
}

struct FalloffCase {
    const char* name;
    bool wraps;
    bool upper;
    double value;
    double offset;
};

class TakeFalloff : public testing::TestWithParam<FalloffCase> {};

TEST_P(TakeFalloff, MatchesHandDerivedOffset)
{
    const FalloffCase& c = GetParam();
    KVCircularSliderModel slider(c.wraps);
    slider.setOffsets({0.0625, 0.125, 0.5, 0.125, 0.0625});
    if (c.upper) {
        slider.takeUpperFalloffValue(c.value);
        EXPECT_EQ(slider.offsets().upperFalloffOffset, c.offset) << c.name;
        EXPECT_EQ(slider.offsets().lowerFalloffOffset, 0.0625) << c.name;
    } else {
        slider.takeLowerFalloffValue(c.value);
        EXPECT_EQ(slider.offsets().lowerFalloffOffset, c.offset) << c.name;
        EXPECT_EQ(slider.offsets().upperFalloffOffset, 0.0625) << c.name;
    }
}

// Room on the ring: T - 0.3125 = 0.6875 - 100 ulp.
INSTANTIATE_TEST_SUITE_P(
    Cases, TakeFalloff,
    testing::Values(FalloffCase{"ring upper", true, true, 0.75, 0.125},
                    FalloffCase{"ring upper on the bound", true, true, 0.625, 0.0},
                    FalloffCase{"ring upper below the bound goes round", true, true, 0.5,
                                0.6875 - std::ldexp(100.0, -53)},
                    FalloffCase{"ring lower", true, false, 0.25, 0.125},
                    FalloffCase{"ring lower on the bound is a whole turn", true, false, 0.375,
                                0.6875 - std::ldexp(100.0, -53)},
                    FalloffCase{"ring lower wrapped", true, false, 1.25, 0.125},
                    FalloffCase{"straight upper", false, true, 0.875, 0.25},
                    FalloffCase{"straight upper inside", false, true, 0.5, 0.0},
                    FalloffCase{"straight lower", false, false, 0.0, 0.375},
                    FalloffCase{"straight lower inside", false, false, 0.5, 0.0}));

TEST(TakeFalloff, HiddenThumbsZeroBothFalloffs)
{
    KVCircularSliderModel ring = ringAtHalf();
    ring.setShowsUpperLowerFalloffThumbs(false);
    ring.takeUpperFalloffValue(0.75);
    EXPECT_EQ(ring.offsets(), (KVSliderOffsets{0.0, 0.125, 0.5, 0.125, 0.0}));
    ring = ringAtHalf();
    ring.setShowsUpperLowerThumbs(false);
    ring.takeLowerFalloffValue(0.25);
    EXPECT_EQ(ring.offsets(), (KVSliderOffsets{0.0, 0.125, 0.5, 0.125, 0.0}));
}

struct SpreadTagCase {
    long tag;
    double degrees;
};

class SpreadTags : public testing::TestWithParam<SpreadTagCase> {};

TEST_P(SpreadTags, TagIsTheSpreadWithinItsLimits)
{
    const SpreadTagCase& c = GetParam();
    EXPECT_EQ(KVCircularSliderModel::spreadForSegmentTag(c.tag), c.degrees);
    KVCircularSliderModel ring(true);
    ring.setSpread(c.tag);
    EXPECT_DOUBLE_EQ(ring.offsets().upperOffset, c.degrees / 720.0);
}

INSTANTIATE_TEST_SUITE_P(Tags, SpreadTags,
                         testing::Values(SpreadTagCase{-5, 1.0}, SpreadTagCase{0, 1.0},
                                         SpreadTagCase{1, 1.0}, SpreadTagCase{45, 45.0},
                                         SpreadTagCase{179, 179.0}, SpreadTagCase{180, 179.0},
                                         SpreadTagCase{1000, 179.0}));

TEST(Spread, HalfEachSideAndAsMuchAgainOfFalloff)
{
    KVCircularSliderModel ring = ringAtHalf();
    ring.setSpreadInDegrees(90.0);
    EXPECT_EQ(ring.offsets(), (KVSliderOffsets{0.125, 0.125, 0.5, 0.125, 0.125}));
    ring.setShowsUpperLowerThumbs(false);
    ring.setSpreadInDegrees(180.0);
    EXPECT_EQ(ring.offsets(), (KVSliderOffsets{0.25, 0.0, 0.5, 0.0, 0.25}));
    ring.setShowsUpperLowerFalloffThumbs(false);
    ring.setSpreadInDegrees(180.0);
    EXPECT_EQ(ring.offsets(), (KVSliderOffsets{0.0, 0.0, 0.5, 0.0, 0.0}));
}

TEST(Reset, RingResetValuesReturnsToTheDefaultMiddleAndTwentyDegrees)
{
    KVCircularSliderModel ring = ringAtHalf();
    ring.setDefaultValue(0.25);
    ring.resetValues();
    const double quarterOfTwenty = 20.0 / 360.0 * 0.5;
    EXPECT_EQ(ring.offsets(), (KVSliderOffsets{quarterOfTwenty, quarterOfTwenty, 0.25,
                                               quarterOfTwenty, quarterOfTwenty}));
}

TEST(Reset, RingResetAllThumbsKeepsTheMiddle)
{
    KVCircularSliderModel ring = ringAtHalf();
    ring.resetAllThumbs();
    EXPECT_EQ(ring.middleValue(), 0.5);
    EXPECT_DOUBLE_EQ(ring.offsets().upperOffset, 1.0 / 36.0);
    EXPECT_DOUBLE_EQ(ring.offsets().lowerFalloffOffset, 1.0 / 36.0);
}

TEST(Reset, StraightResetSelectsTheWholeScaleAroundTheDefault)
{
    KVCircularSliderModel straight(false);
    straight.setOffsets({0.125, 0.125, 0.25, 0.125, 0.125});
    straight.setDefaultValue(0.75);
    straight.resetAllThumbs();
    EXPECT_EQ(straight.offsets(), (KVSliderOffsets{0.0, 0.25, 0.75, 0.75, 0.0}));
    straight.setShowsUpperLowerThumbs(false);
    straight.resetValues();
    EXPECT_EQ(straight.offsets(), (KVSliderOffsets{0.0, 0.0, 0.75, 0.0, 0.0}));
}

TEST(Reset, FalloffResetsSetOneStep)
{
    KVCircularSliderModel ring = ringAtHalf();
    ring.resetUpperThumb();
    EXPECT_NEAR(ring.offsets().upperFalloffOffset, 10.0 / 360.0, 1e-15);
    ring.resetLowerThumb();
    EXPECT_NEAR(ring.offsets().lowerFalloffOffset, 10.0 / 360.0, 1e-15);

    KVCircularSliderModel straight = straightAtHalf();
    straight.setOffsets({0.0, 0.25, 0.5, 0.25, 0.0});
    straight.resetUpperThumb();
    straight.resetLowerThumb();
    EXPECT_DOUBLE_EQ(straight.offsets().upperFalloffOffset, 0.1);
    EXPECT_DOUBLE_EQ(straight.offsets().lowerFalloffOffset, 0.1);
}

TEST(Reset, LowerFalloffResetIsClampedIntoTheRoom)
{
    KVCircularSliderModel straight(false);
    straight.setOffsets({0.0, 0.25, 0.5, 0.4375, 0.0});
    straight.resetLowerThumb();
    // Only 0.0625 is left below the lower bound.
    EXPECT_EQ(straight.offsets().lowerFalloffOffset, 0.0625);
}

} // namespace
} // namespace tintorra

namespace tintorra {
namespace {

TEST(TakeValues, EmptyRingRangeComesBackAsAFullTurnAroundTheOppositeHue)
{
    // Lower bound and lower fall-off on the middle are a whole turn below it when taken back;
    // centring then moves the middle half a turn.
    KVCircularSliderModel ring(true);
    ring.setOffsets({0.0, 0.0, 0.25, 0.0, 0.0});
    const KVSliderValues read = ring.sliderValues();
    EXPECT_EQ(read, (KVSliderValues{0.25, 0.25, 0.25, 0.25, 0.25}));
    ring.takeValues(read);
    EXPECT_EQ(ring.offsets(), (KVSliderOffsets{0.0, 0.5, 0.75, 0.5, 1.0}));
}

} // namespace
} // namespace tintorra
