#include "CircularSliderTestSupport.h"

#include <gtest/gtest.h>

namespace tintorra {
namespace {

using namespace testSupport;

TEST(CircularSliderSetup, FrameAspectDecidesRingOrStraight)
{
    const struct {
        double width, height;
        bool circular;
    } cases[] = {{100, 100, true},  {120, 100, true},  {100, 120, true},
                 {121, 100, false}, {100, 121, false}, {22, 300, false}};
    for (const auto& c : cases) {
        const KVCircularSliderModel slider = KVCircularSliderModel::forFrameSize(c.width, c.height);
        EXPECT_EQ(slider.isCircular(), c.circular) << c.width << "x" << c.height;
        EXPECT_EQ(slider.wrapsAround(), c.circular) << c.width << "x" << c.height;
    }
}

TEST(CircularSliderSetup, InitialValuesAndAllowableTotal)
{
    const KVCircularSliderModel ring(true);
    const double ten = 10.0 / 360.0;
    EXPECT_EQ(ring.offsets(), (KVSliderOffsets{ten, ten, 0.0, ten, ten}));
    EXPECT_EQ(ring.defaultValue(), 0.0);
    EXPECT_EQ(ring.maxAllowableValue(), ringTotal());
    EXPECT_EQ(ring.maxAllowableTotalOffsets(), ringTotal());

    const KVCircularSliderModel straight(false);
    EXPECT_EQ(straight.offsets(), (KVSliderOffsets{0.0, 0.5, 0.5, 0.5, 0.0}));
    EXPECT_EQ(straight.defaultValue(), 0.5);
    EXPECT_EQ(straight.maxAllowableTotalOffsets(), 1.0);
    EXPECT_EQ(straight.sliderValues(), (KVSliderValues{1.0, 1.0, 0.5, 0.0, 0.0}));
}

TEST(CircularSliderOffsets, FromValues)
{
    const struct {
        bool wraps, centering;
        KVSliderValues values;
        KVSliderOffsets offsets;
    } cases[] = {
        {true, false, {1.875, 1.75, 1.5, 1.25, 1.125}, {0.125, 0.25, 0.5, 0.25, 0.125}},
        {true, false, {0.125, 0.0625, 0.9375, 0.75, 0.5}, {0.0625, 0.125, 0.9375, 0.1875, 0.25}},
        // A lower bound on the middle is a whole turn away, an upper bound on it none.
        {true, false, {0.5, 0.5, 0.5, 0.5, 0.5}, {0.0, 0.0, 0.5, 1.0, 1.0}},
        {true, true, {0.5, 0.375, 0.25, 0.0, -0.25}, {0.125, 0.1875, 0.1875, 0.1875, 0.25}},
        {false, false, {0.875, 0.75, 0.5, 0.375, 0.125}, {0.125, 0.25, 0.5, 0.125, 0.25}},
        {false, false, {2.0, 1.5, 0.5, -1.0, -2.0}, {-0.5, 0.5, 0.5, 0.5, -1.0}},   // ends limit
        {false, false, {0.25, 0.375, 0.5, 0.625, 0.75}, {0.0, 0.0, 0.5, 0.0, 0.0}}, // reversed
        // Distances come from the raw middle; only the stored middle is clamped.
        {false, false, {1.5, 1.25, 1.125, 0.875, 0.75}, {-0.25, -0.125, 1.0, 0.25, 0.125}},
        {false, true, {1.0, 0.875, 0.5, 0.375, 0.25}, {0.125, 0.25, 0.625, 0.25, 0.125}},
    };
    for (const auto& c : cases) {
        KVCircularSliderModel slider(c.wraps);
        slider.setCenterThumbWithinOffsets(c.centering);
        EXPECT_EQ(slider.offsetsFromValues(c.values), c.offsets) << c.values.middle;
    }

    KVCircularSliderModel ring(true);
    const KVSliderValues values{0.875, 0.75, 0.5, 0.25, 0.125};
    ring.setShowsUpperLowerFalloffThumbs(false);
    EXPECT_EQ(ring.offsetsFromValues(values), (KVSliderOffsets{0.0, 0.25, 0.5, 0.25, 0.0}));
    ring.setShowsUpperLowerThumbs(false);
    ring.setShowsUpperLowerFalloffThumbs(true);
    EXPECT_EQ(ring.offsetsFromValues(values), (KVSliderOffsets{0.125, 0.0, 0.5, 0.0, 0.125}));
}

TEST(CircularSliderOffsets, CentringMovesTheMiddleHalfwayBetweenTheBounds)
{
    const KVCircularSliderModel ring(true);
    EXPECT_EQ(ring.offsetsWithMiddleValueCenteredWithinOffsets({0.1, 0.125, 0.0625, 0.25, 0.2}),
              (KVSliderOffsets{0.1, 0.1875, 0.0, 0.1875, 0.2}));
    // The middle wraps below 0, the upper offset is still the half span.
    EXPECT_EQ(ring.offsetsWithMiddleValueCenteredWithinOffsets({0, 0.125, 0.0625, 0.375, 0}),
              (KVSliderOffsets{0.0, 0.25, 0.9375, 0.25, 0.0}));
    const KVCircularSliderModel straight(false);
    EXPECT_EQ(straight.offsetsWithMiddleValueCenteredWithinOffsets({0, 0.125, 0.0625, 0.375, 0}),
              (KVSliderOffsets{0.0, 0.25, -0.0625, 0.25, 0.0}));
}

TEST(CircularSliderOffsets, Clamped)
{
    const double hair = 100.0 * ulpBelowOne();
    const KVSliderOffsets tooLong{0.3125, 0.3125, 0.5, 0.3125, 0.3125};
    const struct {
        bool wraps;
        int heldPart;
        KVSliderOffsets raw, clamped;
    } cases[] = {
        {true, 0, {0.125, 0.25, 0.5, 0.25, 0.125}, {0.125, 0.25, 0.5, 0.25, 0.125}},
        {true, 0, {0, 0, -0.25, 0, 0}, {0, 0, 0.75, 0, 0}},
        {true, 0, {-0.5, -0.25, 0.5, -0.125, -1}, {0, 0, 0.5, 0, 0}},
        // 4 x 0.3125 = 1.25: the lower fall-off gives way, or the upper one while the upper
        // thumb is held.
        {true, 0, tooLong, {0.3125, 0.3125, 0.5, 0.3125, 0.0625 - hair}},
        {true, kCircularPartUpper, tooLong, {0.0625 - hair, 0.3125, 0.5, 0.3125, 0.3125}},
        {false, 0, {0.5, 0.25, 0.5, 0.125, 0.5}, {0.25, 0.25, 0.5, 0.125, 0.375}},
        {false, 0, {0.125, 0.5, 0.75, 0.875, 0.0625}, {0.0, 0.25, 0.75, 0.75, 0.0}},
        {false, 0, {0.125, 0.25, 1.5, 0.25, 0.125}, {0.0, 0.0, 1.0, 0.25, 0.125}},
        {false, 0, {-0.125, -0.25, 0.5, -0.25, -0.125}, {0, 0, 0.5, 0, 0}},
    };
    for (const auto& c : cases) {
        KVCircularSliderModel slider = sliderWith(c.wraps, c.raw);
        if (c.heldPart != 0) { // the clamp looks at the part being dragged
            ASSERT_TRUE(slider.mouseDown(c.heldPart, slider.valueForControlPart(c.heldPart)));
        }
        EXPECT_EQ(slider.clampedOffsets(c.raw), c.clamped) << c.wraps << " " << c.raw.middleValue;
    }
}

TEST(CircularSliderOffsets, FullCircleSpreadIsCutJustUnderOneTurn)
{
    KVCircularSliderModel ring(true);
    ring.setSpreadInDegrees(360.0);
    EXPECT_EQ(offsetSum(ring.offsets()), 2.0); // stored as asked
    const KVSliderOffsets clamped = ring.clampedOffsets(ring.offsets());
    EXPECT_LE(offsetSum(clamped), ringTotal());
    EXPECT_GT(offsetSum(clamped), ringTotal() - 1e-15);
    // The raw lower side (1.0) is reserved first: the upper offset is T - 1.0, a hair below
    // zero, and the upper fall-off takes the other half turn.
    EXPECT_EQ(clamped, (KVSliderOffsets{0.5, -100.0 * ulpBelowOne(), 0.0, 0.5, 0.0}));
}

TEST(CircularSliderOffsets, HiddenBoundsReadAsAllOnTheMiddle)
{
    KVCircularSliderModel ring(true);
    ring.takeValues(KVSliderValues{0.875, 0.75, 0.5, 0.25, 0.125});
    ring.setShowsUpperLowerThumbs(false);
    EXPECT_EQ(ring.sliderValues(), (KVSliderValues{0.5, 0.5, 0.5, 0.5, 0.5}));
    ring.setShowsUpperLowerThumbs(true);
    ring.setShowsUpperLowerFalloffThumbs(false);
    EXPECT_EQ(ring.sliderValues(), (KVSliderValues{0.75, 0.75, 0.5, 0.25, 0.25}));
}

// On a straight scale 0..1 (T = 1) offsets totalling 1.5 lose 0.5; those totalling 2.0 lose 1.0
// through three of the four.
TEST(CircularSliderOffsets, CollapsedByEachMethod)
{
    const struct {
        int method;
        KVSliderOffsets raw, collapsed;
    } cases[] = {
        {kCollapseLowerSideFirst, {0.5, 0.25, 0.5, 0.25, 0.5}, {0.5, 0.25, 0.5, 0.25, 0.0}},
        {kCollapseUpperSideFirst, {0.5, 0.25, 0.5, 0.25, 0.5}, {0.0, 0.25, 0.5, 0.25, 0.5}},
        {kCollapseLowerSideFirst, {0.5, 0.75, 0.5, 0.5, 0.25}, {0.25, 0.75, 0.5, 0.0, 0.0}},
        {kCollapseUpperSideFirst, {0.5, 0.75, 0.5, 0.5, 0.25}, {0.0, 0.25, 0.5, 0.5, 0.25}},
        {kCollapseLowerSideFirst, {-0.25, 2.0, 0.5, 0.0, 0.0}, {0.0, 1.0, 0.5, 0.0, 0.0}},
    };
    KVCircularSliderModel straight(false);
    straight.setCenterThumbWithinOffsets(false);
    for (const auto& c : cases) {
        EXPECT_EQ(straight.collapsedOffsetsFromOffsets(c.raw, c.method), c.collapsed) << c.method;
    }
    const KVSliderOffsets scaled =
        straight.collapsedOffsetsFromOffsets({0.5, 0.25, 0.5, 0.25, 0.5}, kCollapseProportionally);
    EXPECT_DOUBLE_EQ(scaled.upperFalloffOffset, 1.0 / 3.0);
    EXPECT_DOUBLE_EQ(scaled.upperOffset, 1.0 / 6.0);
    EXPECT_DOUBLE_EQ(scaled.lowerOffset, 1.0 / 6.0);
    EXPECT_DOUBLE_EQ(scaled.lowerFalloffOffset, 1.0 / 3.0);
}

TEST(CircularSliderOffsets, ScaleChangesCollapseFromTheirOwnSide)
{
    const KVSliderOffsets start{0.125, 0.25, 0.5, 0.25, 0.125};
    KVCircularSliderModel lowered = sliderWith(false, start, false);
    lowered.setMinValue(0.5);
    EXPECT_EQ(lowered.wrapDist(), 0.5);
    EXPECT_EQ(lowered.offsets(), (KVSliderOffsets{0.125, 0.25, 0.5, 0.125, 0.0}));
    KVCircularSliderModel raised = sliderWith(false, start, false);
    raised.setMaxValue(0.5);
    EXPECT_EQ(raised.offsets(), (KVSliderOffsets{0.0, 0.125, 0.5, 0.25, 0.125}));

    // Min and max never cross.
    KVCircularSliderModel straight(false);
    straight.setMinValue(2.0);
    EXPECT_EQ(straight.minValue(), 1.0);
    EXPECT_EQ(straight.middleValue(), 1.0);
    straight.setMaxValue(-3.0);
    EXPECT_EQ(straight.maxValue(), 1.0);

    // Wrapping switched on fits everything into one turn, upper side first.
    KVCircularSliderModel wrapped = sliderWith(false, {0.25, 0.5, 0.5, 0.5, 0.25}, false);
    wrapped.setWrapsAround(true);
    EXPECT_EQ(wrapped.offsets(),
              (KVSliderOffsets{0.0, 0.25 - 100 * ulpBelowOne(), 0.5, 0.5, 0.25}));
}

} // namespace
} // namespace tintorra
