#include "CircularSliderTestSupport.h"

#include <gtest/gtest.h>

namespace tintorra {
namespace {

using namespace testSupport;

TEST(CircularSliderValues, RangeAcrossZeroReadsBackRelativeToTheMiddle)
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

TEST(CircularSliderValues, StoredUnclampedReadClamped)
{
    KVCircularSliderModel ring(true);
    ring.setCenterThumbWithinOffsets(false);
    ring.takeValues(KVSliderValues{1.25, 0.875, 0.5, 0.125, -0.25});
    const KVSliderOffsets stored{0.375, 0.375, 0.5, 0.375, 0.375};
    EXPECT_EQ(ring.offsets(), stored);
    EXPECT_LE(offsetSum(ring.clampedOffsets(ring.offsets())), ringTotal());
    (void)ring.values();
    EXPECT_EQ(ring.offsets(), stored); // reading changes nothing
    EXPECT_EQ(ring.upperFalloffValue(), 1.25);
    EXPECT_EQ(ring.lowerFalloffValue(), -0.25);
    EXPECT_EQ(ring.doubleValueForKey("lowerValue"), 0.125);
}

TEST(CircularSliderValues, EmptyRingRangeComesBackAsAFullTurnAroundTheOppositeHue)
{
    // Lower bound and lower fall-off on the middle are a whole turn below it when taken back;
    // centring then moves the middle half a turn.
    KVCircularSliderModel ring = sliderWith(true, {0.0, 0.0, 0.25, 0.0, 0.0});
    const KVSliderValues read = ring.sliderValues();
    EXPECT_EQ(read, (KVSliderValues{0.25, 0.25, 0.25, 0.25, 0.25}));
    ring.takeValues(read);
    EXPECT_EQ(ring.offsets(), (KVSliderOffsets{0.0, 0.5, 0.75, 0.5, 1.0}));
}

TEST(CircularSliderTakeMiddle, RingTurnsTheWholeRangeWithAPeriodJustUnderOneTurn)
{
    KVCircularSliderModel ring = sliderWith(true, kRingAtHalf);
    ring.takeMiddleValue(1.25);
    EXPECT_EQ(ring.middleValue(), 0.25 + 100 * ulpBelowOne()); // wrapped by 1 - 100 ulp
    ring.takeMiddleValue(-0.25);
    EXPECT_EQ(ring.middleValue(), 0.75 - 100 * ulpBelowOne());
    EXPECT_EQ(ring.offsets().upperOffset, 0.125);
}

TEST(CircularSliderTakeMiddle, StraightKeepsTheRangeOnTheScale)
{
    const struct {
        bool centering;
        double value, middle, upperOffset;
    } cases[] = {{true, 0.0, 0.125, 0.25}, {true, 0.5, 0.5, 0.25},       {true, 0.9, 0.75, 0.25},
                 {false, -1.0, 0.0, 0.25}, {false, 0.875, 0.875, 0.125}, {false, 1.5, 1.0, 0.0}};
    for (const auto& c : cases) {
        KVCircularSliderModel straight = sliderWith(false, {0, 0.25, 0.5, 0.125, 0}, c.centering);
        straight.takeMiddleValue(c.value);
        EXPECT_EQ(straight.middleValue(), c.middle) << c.value;
        EXPECT_EQ(straight.offsets().upperOffset, c.upperOffset) << c.value;
    }
    // While the mouse is down the offsets are left for the mouse-up clamp.
    KVCircularSliderModel held = sliderWith(false, {0, 0.25, 0.5, 0.25, 0}, false);
    ASSERT_TRUE(held.mouseDown(kCircularPartMiddle, 0.5));
    held.takeMiddleValue(0.875);
    EXPECT_EQ(held.offsets().upperOffset, 0.25);
}

TEST(CircularSliderTakeBounds, Table)
{
    enum : int { ring = 1, upper = 2, centred = 4 };
    const KVSliderOffsets narrow{0.0625, 0.0625, 0.0625, 0.0625, 0.0625};
    const KVSliderOffsets straight{0, 0.25, 0.5, 0.25, 0};
    const KVSliderOffsets falloffs{0.25, 0.125, 0.5, 0.125, 0.25};
    const struct {
        int flags;
        double value;
        KVSliderOffsets start, offsets;
    } cases[] = {
        {ring | upper | centred, 0.75, kRingAtHalf, {0.0625, 0.1875, 0.5625, 0.1875, 0.0625}},
        {ring | upper | centred, 0.25, kRingAtHalf, {0.0625, 0.0, 0.375, 0.0, 0.0625}},
        {ring | upper, 0.75, kRingAtHalf, {0.0625, 0.25, 0.5, 0.125, 0.0625}},
        {ring | upper, 0.375, kRingAtHalf, {0.0625, 0.0, 0.5, 0.125, 0.0625}},
        {ring | centred, 0.25, kRingAtHalf, {0.0625, 0.1875, 0.4375, 0.1875, 0.0625}},
        {ring | centred, 0.75, kRingAtHalf, {0.0625, 0.0, 0.625, 0.0, 0.0625}},
        {ring, 0.25, kRingAtHalf, {0.0625, 0.125, 0.5, 0.25, 0.0625}},
        {ring, 0.4375, kRingAtHalf, {0.0625, 0.125, 0.5, 0.0625, 0.0625}},
        // Across 0 the value is taken as given: -0.0625 widens, 0.9375 lies above the upper bound.
        {ring | centred, -0.0625, narrow, {0.0625, 0.09375, 0.03125, 0.09375, 0.0625}},
        {ring | centred, 0.9375, narrow, {0.0625, 0.0, 0.125, 0.0, 0.0625}},
        {upper | centred, 0.875, straight, {0.0, 0.3125, 0.5625, 0.3125, 0.0}},
        {upper | centred, 1.5, straight, {0.0, 0.375, 0.625, 0.375, 0.0}},
        {upper, 1.5, straight, {0.0, 0.5, 0.5, 0.25, 0.0}},
        {centred, 0.125, straight, {0.0, 0.3125, 0.4375, 0.3125, 0.0}},
        {0, -1.0, straight, {0.0, 0.25, 0.5, 0.5, 0.0}},
        // Not dragging: the fall-off is cut to the room left.
        {upper | centred, 0.875, falloffs, {0.125, 0.25, 0.625, 0.25, 0.25}},
        {centred, 0.125, falloffs, {0.25, 0.25, 0.375, 0.25, 0.125}},
    };
    for (const auto& c : cases) {
        KVCircularSliderModel slider = sliderWith(c.flags & ring, c.start, c.flags & centred);
        (c.flags & upper) ? slider.takeUpperValue(c.value) : slider.takeLowerValue(c.value);
        EXPECT_EQ(slider.offsets(), c.offsets) << c.flags << " " << c.value;
    }
}

TEST(CircularSliderTakeBounds, RingStopsAtTheOppositeFalloffOneTurnOn)
{
    // The span may use all of T but the far fall-off: T - 0.0625, split evenly.
    const double span = ringTotal() - 0.0625;
    for (const bool upper : {true, false}) {
        KVCircularSliderModel ring = sliderWith(true, kRingAtHalf);
        upper ? ring.takeUpperValue(1.5) : ring.takeLowerValue(-0.5);
        const KVSliderOffsets o = ring.offsets();
        EXPECT_EQ(o.upperOffset + o.lowerOffset, span) << upper;
        EXPECT_EQ(upper ? o.lowerFalloffOffset : o.upperFalloffOffset, 0.0625);
        EXPECT_LE(upper ? o.upperFalloffOffset : o.lowerFalloffOffset, 1e-15); // no room left
        EXPECT_LE(offsetSum(o), ringTotal() + 1e-15);
    }
}

TEST(CircularSliderTakeBounds, EmptyRingRangeOpensTheLongWayRoundUpwards)
{
    // With lower = upper the lower bound is wrapped below the reference, a whole turn back: a
    // small step up makes the range as wide as the lower fall-off allows. Downwards is normal.
    KVCircularSliderModel ring = sliderWith(true, {0.0625, 0.0, 0.5, 0.0, 0.0625});
    ring.takeUpperValue(0.5625);
    EXPECT_EQ(ring.offsets().upperOffset + ring.offsets().lowerOffset, ringTotal() - 0.0625);
    ring.setOffsets({0.0625, 0.0, 0.5, 0.0, 0.0625});
    ring.takeLowerValue(0.4375);
    EXPECT_EQ(ring.offsets().upperOffset + ring.offsets().lowerOffset, 0.0625);
}

TEST(CircularSliderTakeFalloffs, Table)
{
    const double room = 0.6875 - 100 * ulpBelowOne(); // T - 0.3125 on the ring
    const struct {
        bool wraps, upper;
        double value, offset;
    } cases[] = {
        {true, true, 0.75, 0.125},  {true, true, 0.625, 0.0},   // on the bound
        {true, true, 0.5, room},                                // below the bound goes round
        {true, false, 0.25, 0.125}, {true, false, 0.375, room}, // on the bound is a whole turn
        {true, false, 1.25, 0.125},                             // given wrapped
        {false, true, 0.875, 0.25}, {false, true, 0.5, 0.0},
        {false, false, 0.0, 0.375}, {false, false, 0.5, 0.0},
    };
    for (const auto& c : cases) {
        KVCircularSliderModel slider = sliderWith(c.wraps, kRingAtHalf);
        c.upper ? slider.takeUpperFalloffValue(c.value) : slider.takeLowerFalloffValue(c.value);
        const KVSliderOffsets o = slider.offsets();
        EXPECT_EQ(c.upper ? o.upperFalloffOffset : o.lowerFalloffOffset, c.offset) << c.value;
        EXPECT_EQ(c.upper ? o.lowerFalloffOffset : o.upperFalloffOffset, 0.0625) << c.value;
    }
}

TEST(CircularSliderTakers, HiddenThumbsZeroTheirKind)
{
    KVCircularSliderModel ring = sliderWith(true, kRingAtHalf);
    ring.setShowsUpperLowerThumbs(false);
    ring.takeUpperValue(0.75);
    EXPECT_EQ(ring.offsets(), (KVSliderOffsets{0.0625, 0.0, 0.5, 0.0, 0.0625}));
    ring.takeLowerFalloffValue(0.25); // fall-offs need the bound thumbs too
    EXPECT_EQ(ring.offsets(), (KVSliderOffsets{0.0, 0.0, 0.5, 0.0, 0.0}));
    ring = sliderWith(true, kRingAtHalf);
    ring.setShowsUpperLowerFalloffThumbs(false);
    ring.takeUpperFalloffValue(0.75);
    EXPECT_EQ(ring.offsets(), (KVSliderOffsets{0.0, 0.125, 0.5, 0.125, 0.0}));
}

TEST(CircularSliderSpread, SegmentTagsAndDegrees)
{
    const struct {
        long tag;
        double degrees;
    } cases[] = {{-5, 1.0},    {0, 1.0},     {1, 1.0},     {45, 45.0},
                 {179, 179.0}, {180, 179.0}, {1000, 179.0}};
    for (const auto& c : cases) {
        KVCircularSliderModel ring(true);
        ring.setSpread(c.tag);
        EXPECT_DOUBLE_EQ(ring.offsets().upperOffset, c.degrees / 720.0) << c.tag;
        EXPECT_DOUBLE_EQ(ring.offsets().lowerFalloffOffset, c.degrees / 720.0) << c.tag;
    }
    KVCircularSliderModel ring = sliderWith(true, kRingAtHalf);
    ring.setSpreadInDegrees(90.0);
    EXPECT_EQ(ring.offsets(), (KVSliderOffsets{0.125, 0.125, 0.5, 0.125, 0.125}));
    ring.setShowsUpperLowerThumbs(false);
    ring.setSpreadInDegrees(180.0);
    EXPECT_EQ(ring.offsets(), (KVSliderOffsets{0.25, 0.0, 0.5, 0.0, 0.25}));
}

TEST(CircularSliderReset, RingAndStraight)
{
    const double d = 20.0 / 360.0 * 0.5;
    KVCircularSliderModel ring = sliderWith(true, kRingAtHalf);
    ring.resetAllThumbs(); // keeps the middle
    EXPECT_EQ(ring.offsets(), (KVSliderOffsets{d, d, 0.5, d, d}));
    ring.setDefaultValue(0.25);
    ring.resetValues(); // back to the default middle
    EXPECT_EQ(ring.offsets(), (KVSliderOffsets{d, d, 0.25, d, d}));

    KVCircularSliderModel straight = sliderWith(false, {0.125, 0.125, 0.25, 0.125, 0.125});
    straight.setDefaultValue(0.75);
    straight.resetAllThumbs(); // the whole scale around the default
    EXPECT_EQ(straight.offsets(), (KVSliderOffsets{0.0, 0.25, 0.75, 0.75, 0.0}));
    straight.setShowsUpperLowerThumbs(false);
    straight.resetValues();
    EXPECT_EQ(straight.offsets(), (KVSliderOffsets{0.0, 0.0, 0.75, 0.0, 0.0}));
}

TEST(CircularSliderReset, FalloffResetsSetOneStepWithinTheRoom)
{
    KVCircularSliderModel ring = sliderWith(true, kRingAtHalf);
    ring.resetUpperThumb();
    ring.resetLowerThumb();
    EXPECT_NEAR(ring.offsets().upperFalloffOffset, 10.0 / 360.0, 1e-15);
    EXPECT_NEAR(ring.offsets().lowerFalloffOffset, 10.0 / 360.0, 1e-15);
    KVCircularSliderModel straight = sliderWith(false, {0.0, 0.25, 0.5, 0.25, 0.0});
    straight.resetUpperThumb();
    straight.resetLowerThumb();
    EXPECT_DOUBLE_EQ(straight.offsets().upperFalloffOffset, 0.1);
    EXPECT_DOUBLE_EQ(straight.offsets().lowerFalloffOffset, 0.1);
    straight.setOffsets({0.0, 0.25, 0.5, 0.4375, 0.0});
    straight.resetLowerThumb();
    EXPECT_EQ(straight.offsets().lowerFalloffOffset, 0.0625); // all that is left below
}

} // namespace
} // namespace tintorra
