#include "CircularSliderTestSupport.h"

#include <gtest/gtest.h>

namespace tintorra {
namespace {

using testing_support::offsetSum;
using testing_support::ringTotal;

TEST(CircularSliderScale, MaxAllowableValueStopsShortOnlyWhenWrapping)
{
    KVCircularSliderModel ring(true);
    EXPECT_EQ(ring.maxAllowableValue(), ringTotal());
    EXPECT_EQ(ring.maxAllowableTotalOffsets(), ringTotal());
    KVCircularSliderModel straight(false);
    EXPECT_EQ(straight.maxAllowableValue(), 1.0);
    EXPECT_EQ(straight.maxAllowableTotalOffsets(), 1.0);
}

struct FrameCase {
    double width;
    double height;
    bool circular;
};

class CircularFrameRule : public testing::TestWithParam<FrameCase> {};

TEST_P(CircularFrameRule, RingWhenNeitherSideExceedsOnePointTwoTimesTheOther)
{
    const FrameCase& c = GetParam();
    EXPECT_EQ(KVCircularSliderModel::isCircularFrame(c.width, c.height), c.circular);
    const KVCircularSliderModel slider = KVCircularSliderModel::forFrameSize(c.width, c.height);
    EXPECT_EQ(slider.isCircular(), c.circular);
    EXPECT_EQ(slider.wrapsAround(), c.circular);
}

INSTANTIATE_TEST_SUITE_P(Frames, CircularFrameRule,
                         testing::Values(FrameCase{100, 100, true}, FrameCase{120, 100, true},
                                         FrameCase{100, 120, true}, FrameCase{121, 100, false},
                                         FrameCase{100, 121, false}, FrameCase{300, 22, false},
                                         FrameCase{22, 300, false}));

TEST(CircularSliderInitialValues, RingSelectsTenDegreesEachSide)
{
    const KVCircularSliderModel ring(true);
    const double tenDegrees = 10.0 / 360.0;
    EXPECT_EQ(ring.offsets(),
              (KVSliderOffsets{tenDegrees, tenDegrees, 0.0, tenDegrees, tenDegrees}));
    EXPECT_EQ(ring.defaultValue(), 0.0);
}

TEST(CircularSliderInitialValues, StraightSliderSelectsItsWholeScale)
{
    const KVCircularSliderModel straight(false);
    EXPECT_EQ(straight.offsets(), (KVSliderOffsets{0.0, 0.5, 0.5, 0.5, 0.0}));
    EXPECT_EQ(straight.defaultValue(), 0.5);
    EXPECT_EQ(straight.sliderValues(), (KVSliderValues{1.0, 1.0, 0.5, 0.0, 0.0}));
}

struct OffsetsFromValuesCase {
    const char* name;
    bool wraps;
    bool centering;
    KVSliderValues values;
    KVSliderOffsets offsets;
};

class OffsetsFromValues : public testing::TestWithParam<OffsetsFromValuesCase> {};

TEST_P(OffsetsFromValues, MatchesHandDerivedOffsets)
{
    const OffsetsFromValuesCase& c = GetParam();
    KVCircularSliderModel slider(c.wraps);
    slider.setCenterThumbWithinOffsets(c.centering);
    EXPECT_EQ(slider.offsetsFromValues(c.values), c.offsets) << c.name;
}

INSTANTIATE_TEST_SUITE_P(
    Cases, OffsetsFromValues,
    testing::Values(
        // Bounds measured one way round from the wrapped middle.
        OffsetsFromValuesCase{"ring, middle wrapped",
                              true,
                              false,
                              {1.875, 1.75, 1.5, 1.25, 1.125},
                              {0.125, 0.25, 0.5, 0.25, 0.125}},
        OffsetsFromValuesCase{"ring, bounds given wrapped",
                              true,
                              false,
                              {0.125, 0.0625, 0.9375, 0.75, 0.5},
                              {0.0625, 0.125, 0.9375, 0.1875, 0.25}},
        // A lower bound on the middle is a whole turn away; an upper bound on it is none.
        OffsetsFromValuesCase{"ring, bounds on the middle",
                              true,
                              false,
                              {0.5, 0.5, 0.5, 0.5, 0.5},
                              {0.0, 0.0, 0.5, 1.0, 1.0}},
        OffsetsFromValuesCase{"ring, centred",
                              true,
                              true,
                              {0.5, 0.375, 0.25, 0.0, -0.25},
                              {0.125, 0.1875, 0.1875, 0.1875, 0.25}},
        OffsetsFromValuesCase{"straight",
                              false,
                              false,
                              {0.875, 0.75, 0.5, 0.375, 0.125},
                              {0.125, 0.25, 0.5, 0.125, 0.25}},
        OffsetsFromValuesCase{"straight, ends limit",
                              false,
                              false,
                              {2.0, 1.5, 0.5, -1.0, -2.0},
                              {-0.5, 0.5, 0.5, 0.5, -1.0}},
        OffsetsFromValuesCase{"straight, bounds reversed",
                              false,
                              false,
                              {0.25, 0.375, 0.5, 0.625, 0.75},
                              {0.0, 0.0, 0.5, 0.0, 0.0}},
        // Distances come from the raw middle, only the stored middle is clamped.
        OffsetsFromValuesCase{"straight, middle beyond the end",
                              false,
                              false,
                              {1.5, 1.25, 1.125, 0.875, 0.75},
                              {-0.25, -0.125, 1.0, 0.25, 0.125}},
        OffsetsFromValuesCase{"straight, centred",
                              false,
                              true,
                              {0.875, 0.75, 0.5, 0.25, 0.125},
                              {0.125, 0.25, 0.5, 0.25, 0.125}},
        OffsetsFromValuesCase{"straight, centred moves the middle",
                              false,
                              true,
                              {1.0, 0.875, 0.5, 0.375, 0.25},
                              {0.125, 0.25, 0.625, 0.25, 0.125}}));

TEST(OffsetsFromValuesHiddenThumbs, HiddenKindsGetZeroOffsets)
{
    const KVSliderValues values{0.875, 0.75, 0.5, 0.25, 0.125};
    KVCircularSliderModel ring(true);
    ring.setShowsUpperLowerFalloffThumbs(false);
    EXPECT_EQ(ring.offsetsFromValues(values), (KVSliderOffsets{0.0, 0.25, 0.5, 0.25, 0.0}));
    ring.setShowsUpperLowerThumbs(false);
    EXPECT_EQ(ring.offsetsFromValues(values), (KVSliderOffsets{0.0, 0.0, 0.5, 0.0, 0.0}));
    ring.setShowsUpperLowerFalloffThumbs(true);
    EXPECT_EQ(ring.offsetsFromValues(values), (KVSliderOffsets{0.125, 0.0, 0.5, 0.0, 0.125}));
}

TEST(CenteredOffsets, MiddleMovesHalfwayBetweenTheBounds)
{
    const KVCircularSliderModel ring(true);
    EXPECT_EQ(ring.offsetsWithMiddleValueCenteredWithinOffsets({0.1, 0.125, 0.0625, 0.25, 0.2}),
              (KVSliderOffsets{0.1, 0.1875, 0.0, 0.1875, 0.2}));
    // The middle wraps below 0; the upper offset is still the half span.
    EXPECT_EQ(ring.offsetsWithMiddleValueCenteredWithinOffsets({0.0, 0.125, 0.0625, 0.375, 0.0}),
              (KVSliderOffsets{0.0, 0.25, 0.9375, 0.25, 0.0}));
    const KVCircularSliderModel straight(false);
    EXPECT_EQ(
        straight.offsetsWithMiddleValueCenteredWithinOffsets({0.0, 0.125, 0.0625, 0.375, 0.0}),
        (KVSliderOffsets{0.0, 0.25, -0.0625, 0.25, 0.0}));
}

struct ClampCase {
    const char* name;
    bool wraps;
    int heldPart;
    KVSliderOffsets raw;
    KVSliderOffsets clamped;
};

class ClampedOffsets : public testing::TestWithParam<ClampCase> {};

TEST_P(ClampedOffsets, MatchesHandDerivedOffsets)
{
    const ClampCase& c = GetParam();
    KVCircularSliderModel slider(c.wraps);
    slider.setOffsets(c.raw);
    // Holding a part sets the control part the clamp looks at.
    if (c.heldPart != kCircularPartNone) {
        ASSERT_TRUE(slider.mouseDown(c.heldPart, slider.valueForControlPart(c.heldPart)));
    }
    EXPECT_EQ(slider.clampedOffsets(c.raw), c.clamped) << c.name;
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ClampedOffsets,
    testing::Values(ClampCase{"ring, fits",
                              true,
                              kCircularPartNone,
                              {0.125, 0.25, 0.5, 0.25, 0.125},
                              {0.125, 0.25, 0.5, 0.25, 0.125}},
                    ClampCase{"ring, middle wrapped",
                              true,
                              kCircularPartNone,
                              {0.0, 0.0, -0.25, 0.0, 0.0},
                              {0.0, 0.0, 0.75, 0.0, 0.0}},
                    ClampCase{"ring, negative offsets",
                              true,
                              kCircularPartNone,
                              {-0.5, -0.25, 0.5, -0.125, -1},
                              {0.0, 0.0, 0.5, 0.0, 0.0}},
                    // 0.3125 * 4 = 1.25: the lower fall-off gives way (1 - 100 ulp - 0.9375 is
                    // 0.0625 less a hair), the upper fall-off keeps its length.
                    ClampCase{"ring, too long, lower fall-off yields",
                              true,
                              kCircularPartNone,
                              {0.3125, 0.3125, 0.5, 0.3125, 0.3125},
                              {0.3125, 0.3125, 0.5, 0.3125, 0.0625 - std::ldexp(100.0, -53)}},
                    ClampCase{"ring, too long, upper thumb held",
                              true,
                              kCircularPartUpper,
                              {0.3125, 0.3125, 0.5, 0.3125, 0.3125},
                              {0.0625 - std::ldexp(100.0, -53), 0.3125, 0.5, 0.3125, 0.3125}},
                    ClampCase{"straight, fits",
                              false,
                              kCircularPartNone,
                              {0.5, 0.25, 0.5, 0.125, 0.5},
                              {0.25, 0.25, 0.5, 0.125, 0.375}},
                    ClampCase{"straight, ends limit",
                              false,
                              kCircularPartNone,
                              {0.125, 0.5, 0.75, 0.875, 0.0625},
                              {0.0, 0.25, 0.75, 0.75, 0.0}},
                    ClampCase{"straight, middle beyond the end",
                              false,
                              kCircularPartNone,
                              {0.125, 0.25, 1.5, 0.25, 0.125},
                              {0.0, 0.0, 1.0, 0.25, 0.125}},
                    ClampCase{"straight, negative offsets",
                              false,
                              kCircularPartNone,
                              {-0.125, -0.25, 0.5, -0.25, -0.125},
                              {0.0, 0.0, 0.5, 0.0, 0.0}}));

TEST(ClampedOffsetsFullCircle, SpreadOf360IsCutJustUnderOneTurn)
{
    KVCircularSliderModel ring(true);
    ring.setSpreadInDegrees(360.0);
    EXPECT_EQ(offsetSum(ring.offsets()), 2.0); // stored without clamping
    const KVSliderOffsets clamped = ring.clampedOffsets(ring.offsets());
    EXPECT_LE(offsetSum(clamped), ringTotal());
    EXPECT_GT(offsetSum(clamped), ringTotal() - 1e-15);
    // The lower side is reserved first: the upper offset is what is left of T after 1.0, which
    // is a hair below zero; the upper fall-off takes the other half turn.
    EXPECT_EQ(clamped.upperOffset, -std::ldexp(100.0, -53));
    EXPECT_EQ(clamped.lowerOffset, 0.5);
    EXPECT_EQ(clamped.upperFalloffOffset, 0.5);
    EXPECT_EQ(clamped.lowerFalloffOffset, 0.0);
}

TEST(ClampedOffsetsHiddenThumbs, HiddenBoundsCollapseEverythingOntoTheMiddle)
{
    KVCircularSliderModel ring(true);
    ring.takeValues(KVSliderValues{0.875, 0.75, 0.5, 0.25, 0.125});
    ring.setShowsUpperLowerThumbs(false);
    const KVSliderValues read = ring.sliderValues();
    EXPECT_EQ(read, (KVSliderValues{0.5, 0.5, 0.5, 0.5, 0.5}));
    ring.setShowsUpperLowerThumbs(true);
    ring.setShowsUpperLowerFalloffThumbs(false);
    EXPECT_EQ(ring.sliderValues(), (KVSliderValues{0.75, 0.75, 0.5, 0.25, 0.25}));
}

struct CollapseCase {
    int method;
    KVSliderOffsets collapsed;
};

class CollapsedOffsets : public testing::TestWithParam<CollapseCase> {};

// On a straight slider of scale 0..1 (T = 1), offsets totalling 1.5 lose 0.5.
TEST_P(CollapsedOffsets, ShrinkByTheChosenMethod)
{
    const CollapseCase& c = GetParam();
    KVCircularSliderModel straight(false);
    straight.setCenterThumbWithinOffsets(false);
    const KVSliderOffsets collapsed =
        straight.collapsedOffsetsFromOffsets({0.5, 0.25, 0.5, 0.25, 0.5}, c.method);
    EXPECT_EQ(collapsed.middleValue, 0.5);
    EXPECT_DOUBLE_EQ(collapsed.upperFalloffOffset, c.collapsed.upperFalloffOffset);
    EXPECT_DOUBLE_EQ(collapsed.upperOffset, c.collapsed.upperOffset);
    EXPECT_DOUBLE_EQ(collapsed.lowerOffset, c.collapsed.lowerOffset);
    EXPECT_DOUBLE_EQ(collapsed.lowerFalloffOffset, c.collapsed.lowerFalloffOffset);
}

INSTANTIATE_TEST_SUITE_P(
    Methods, CollapsedOffsets,
    testing::Values(CollapseCase{kCollapseProportionally,
                                 {1.0 / 3, 1.0 / 6, 0.5, 1.0 / 6, 1.0 / 3}},
                    CollapseCase{kCollapseLowerSideFirst, {0.5, 0.25, 0.5, 0.25, 0.0}},
                    CollapseCase{kCollapseUpperSideFirst, {0.0, 0.25, 0.5, 0.25, 0.5}}));

TEST(CollapsedOffsetsOrder, ExcessRunsThroughTheSidesInOrder)
{
    KVCircularSliderModel straight(false);
    straight.setCenterThumbWithinOffsets(false);
    // Excess 1.0: lower fall-off 0.25, lower 0.5, then 0.25 of the upper fall-off.
    EXPECT_EQ(
        straight.collapsedOffsetsFromOffsets({0.5, 0.75, 0.5, 0.5, 0.25}, kCollapseLowerSideFirst),
        (KVSliderOffsets{0.25, 0.75, 0.5, 0.0, 0.0}));
    EXPECT_EQ(
        straight.collapsedOffsetsFromOffsets({0.5, 0.75, 0.5, 0.5, 0.25}, kCollapseUpperSideFirst),
        (KVSliderOffsets{0.0, 0.25, 0.5, 0.5, 0.25}));
    // Each offset is first limited to [0, T].
    EXPECT_EQ(
        straight.collapsedOffsetsFromOffsets({-0.25, 2.0, 0.5, 0.0, 0.0}, kCollapseLowerSideFirst),
        (KVSliderOffsets{0.0, 1.0, 0.5, 0.0, 0.0}));
}

TEST(ScaleChanges, MinAndMaxCollapseFromTheirOwnSide)
{
    KVCircularSliderModel straight(false);
    straight.setCenterThumbWithinOffsets(false);
    straight.setOffsets({0.125, 0.25, 0.5, 0.25, 0.125});
    straight.setMinValue(0.5);
    EXPECT_EQ(straight.wrapDist(), 0.5);
    EXPECT_EQ(straight.offsets(), (KVSliderOffsets{0.125, 0.25, 0.5, 0.125, 0.0}));

    KVCircularSliderModel other(false);
    other.setCenterThumbWithinOffsets(false);
    other.setOffsets({0.125, 0.25, 0.5, 0.25, 0.125});
    other.setMaxValue(0.5);
    EXPECT_EQ(other.offsets(), (KVSliderOffsets{0.0, 0.125, 0.5, 0.25, 0.125}));
}

TEST(ScaleChanges, MinAndMaxNeverCross)
{
    KVCircularSliderModel straight(false);
    straight.setMinValue(2.0);
    EXPECT_EQ(straight.minValue(), 1.0);
    EXPECT_EQ(straight.wrapDist(), 0.0);
    EXPECT_EQ(straight.middleValue(), 1.0);
    straight.setMaxValue(-3.0);
    EXPECT_EQ(straight.maxValue(), 1.0);
}

TEST(ScaleChanges, SwitchingWrappingOnFitsTheOffsetsIntoOneTurn)
{
    KVCircularSliderModel straight(false);
    straight.setCenterThumbWithinOffsets(false);
    straight.setOffsets({0.25, 0.5, 0.5, 0.5, 0.25});
    straight.setWrapsAround(true);
    const KVSliderOffsets offsets = straight.offsets();
    EXPECT_EQ(offsets.upperFalloffOffset, 0.0);
    EXPECT_EQ(offsets.upperOffset, 0.25 - std::ldexp(100.0, -53));
    EXPECT_EQ(offsets.lowerOffset, 0.5);
    EXPECT_EQ(offsets.lowerFalloffOffset, 0.25);
    straight.setWrapsAround(false);
    EXPECT_EQ(straight.offsets(), offsets);
}

} // namespace
} // namespace tintorra
