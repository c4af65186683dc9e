#include "CircularSliderTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <numbers>
#include <sstream>
#include <string>
#include <vector>

namespace tintorra {
namespace {

using testing_support::offsetSum;
using testing_support::ringAtHalf;
using testing_support::ringTotal;
using testing_support::straightAtHalf;

struct HitOrderCase {
    bool bounds;
    bool falloffs;
    std::vector<int> order;
};

class HitTestOrder : public testing::TestWithParam<HitOrderCase> {};

TEST_P(HitTestOrder, ListsOnlyTheVisibleThumbsMiddleFirstSlotLast)
{
    const HitOrderCase& c = GetParam();
    KVCircularSliderModel ring(true);
    ring.setShowsUpperLowerThumbs(c.bounds);
    ring.setShowsUpperLowerFalloffThumbs(c.falloffs);
    EXPECT_EQ(ring.hitTestOrder(), c.order);
}

INSTANTIATE_TEST_SUITE_P(Switches, HitTestOrder,
                         testing::Values(HitOrderCase{true, true, {2, 4, 3, 6, 5, 1}},
                                         HitOrderCase{false, true, {2, 6, 5, 1}},
                                         HitOrderCase{true, false, {2, 4, 3, 1}},
                                         HitOrderCase{false, false, {2, 1}}));

TEST(HitTest, FirstContainingPartInOrderWins)
{
    const KVCircularSliderModel ring(true);
    EXPECT_EQ(ring.hitTest([](int part) { return part == 3 || part == 5 || part == 1; }), 3);
    EXPECT_EQ(ring.hitTest([](int part) { return part == 6 || part == 4; }), 4);
    EXPECT_EQ(ring.hitTest([](int) { return false; }), 0);
}

TEST(PointerMapping, AngleRunsCounterClockwiseFromTheRight)
{
    KVCircularSliderModel ring(true);
    EXPECT_EQ(ring.valueFromAngle(0.0), 0.0);
    EXPECT_DOUBLE_EQ(ring.valueFromAngle(std::numbers::pi / 2), 0.25);
    EXPECT_DOUBLE_EQ(ring.valueFromAngle(-std::numbers::pi / 2), 0.75);
    KVCircularSliderModel straight(false);
    EXPECT_EQ(straight.valueFromTrackPosition(13.0, 126.0), 0.0);
    EXPECT_EQ(straight.valueFromTrackPosition(63.0, 126.0), 0.5);
    EXPECT_EQ(straight.valueFromTrackPosition(113.0, 126.0), 1.0);
    EXPECT_EQ(straight.trackPositionFromValue(0.25, 126.0), 38.0);
}

TEST(MouseDown, DisabledOrNoPartStartsNothing)
{
    KVCircularSliderModel ring = ringAtHalf();
    EXPECT_FALSE(ring.mouseDown(kCircularPartNone, 0.2));
    EXPECT_FALSE(ring.mouseIsDown());
    ring.setEnabled(false);
    EXPECT_FALSE(ring.mouseDown(kCircularPartMiddle, 0.5));
    EXPECT_EQ(ring.controlPart(), kCircularPartNone);
}

TEST(MouseDown, SlotPressBringsTheMiddleToThePointer)
{
    KVCircularSliderModel ring = ringAtHalf();
    ASSERT_TRUE(ring.mouseDown(kCircularPartSlot, 0.8125));
    EXPECT_EQ(ring.controlPart(), kCircularPartMiddle);
    EXPECT_EQ(ring.mouseDownValue(), 0.8125);
    EXPECT_EQ(ring.middleValue(), 0.8125);
    EXPECT_EQ(ring.offsets().upperOffset, 0.125);
}

TEST(MouseDown, GripOffsetIsTheShortWayRoundOnARing)
{
    KVCircularSliderModel ring(true);
    ring.setOffsets({0.0625, 0.0625, 0.0, 0.0625, 0.0625});
    // Pointer at 0.96875, just below the middle at 0 across the seam.
    ASSERT_TRUE(ring.mouseDown(kCircularPartMiddle, 0.96875));
    EXPECT_EQ(ring.mouseDownPointValueOffset(), 0.03125);
    EXPECT_EQ(ring.lastMouseValue(), 0.0);
    KVCircularSliderModel straight = straightAtHalf();
    ASSERT_TRUE(straight.mouseDown(kCircularPartUpper, 0.625));
    EXPECT_EQ(straight.mouseDownPointValueOffset(), 0.125);
}

TEST(MouseDrag, MiddleDragCrossesTheSeamUnwrapped)
{
    KVCircularSliderModel ring(true);
    ring.setOffsets({0.0625, 0.0625, 0.9375, 0.0625, 0.0625});
    ASSERT_TRUE(ring.mouseDown(kCircularPartMiddle, 0.90625));
    ring.mouseDragged(0.96875);
    EXPECT_EQ(ring.lastMouseValue(), 1.0);
    ring.mouseDragged(0.03125);
    EXPECT_EQ(ring.lastMouseValue(), 1.0625);
    // The middle is wrapped by the allowable span, 100 ulp short of a turn.
    EXPECT_EQ(ring.middleValue(), 0.0625 + std::ldexp(100.0, -53));
    ring.mouseUp(0.03125, 1);
    EXPECT_EQ(ring.controlPart(), kCircularPartNone);
    EXPECT_FALSE(ring.mouseIsDown());
}

TEST(MouseDrag, WindingStopsAHundredTurnsFromTheStart)
{
    KVCircularSliderModel ring(true);
    ring.setOffsets({0.0625, 0.0625, 0.0, 0.0625, 0.0625});
    ASSERT_TRUE(ring.mouseDown(kCircularPartMiddle, 0.0));
    const double pointers[] = {0.25, 0.5, 0.75, 0.0};
    for (int step = 0; step < 1000; ++step) {
        ring.mouseDragged(pointers[step % 4]);
        EXPECT_LE(ring.lastMouseValue(), 100.0);
    }
    EXPECT_EQ(ring.lastMouseValue(), 100.0);
    EXPECT_GE(ring.middleValue(), 0.0);
    EXPECT_LT(ring.middleValue(), 1.0);
    double lowest = ring.lastMouseValue();
    for (int step = 0; step < 2000; ++step) {
        ring.mouseDragged(pointers[3 - step % 4]);
        EXPECT_GE(ring.lastMouseValue(), -100.0);
        lowest = std::min(lowest, ring.lastMouseValue());
    }
    EXPECT_EQ(lowest, -100.0);
}

TEST(MouseDrag, StraightPointerIsClampedToTheScale)
{
    KVCircularSliderModel straight(false);
    straight.setCenterThumbWithinOffsets(false);
    straight.setOffsets({0.0, 0.0, 0.5, 0.0, 0.0});
    ASSERT_TRUE(straight.mouseDown(kCircularPartMiddle, 0.5));
    straight.mouseDragged(1.75);
    EXPECT_EQ(straight.lastMouseValue(), 1.0);
    EXPECT_EQ(straight.middleValue(), 1.0);
}

TEST(MouseDrag, UpperThumbDragMeasuresFromTheValueAtMouseDown)
{
    KVCircularSliderModel ring = ringAtHalf();
    ASSERT_TRUE(ring.mouseDown(kCircularPartUpper, 0.625));
    ring.mouseDragged(0.75);
    EXPECT_EQ(ring.offsets(), (KVSliderOffsets{0.0625, 0.1875, 0.5625, 0.1875, 0.0625}));
    ring.mouseDragged(0.875);
    EXPECT_EQ(ring.offsets(), (KVSliderOffsets{0.0625, 0.25, 0.625, 0.25, 0.0625}));
}

TEST(MouseDrag, FalloffDragOnTheRing)
{
    KVCircularSliderModel ring = ringAtHalf();
    ASSERT_TRUE(ring.mouseDown(kCircularPartUpperFalloff, 0.6875));
    ring.mouseDragged(0.8125);
    EXPECT_EQ(ring.offsets().upperFalloffOffset, 0.1875);
    ring.mouseDragged(0.5);
    EXPECT_EQ(ring.offsets().upperFalloffOffset, 0.0);
    ring.mouseUp(0.5, 1);

    ASSERT_TRUE(ring.mouseDown(kCircularPartLowerFalloff, 0.3125));
    ring.mouseDragged(0.125);
    EXPECT_EQ(ring.offsets().lowerFalloffOffset, 0.25);
}

struct ActionCountCase {
    bool continuous;
    int drags;
    int actionsDuringDrag;
    int actionsAfterMouseUp;
};

class ActionsWhileDragging : public testing::TestWithParam<ActionCountCase> {};

TEST_P(ActionsWhileDragging, ContinuousSendsEveryDragOtherwiseOnlyAtMouseUp)
{
    const ActionCountCase& c = GetParam();
    KVCircularSliderModel ring = ringAtHalf();
    ring.setContinuous(c.continuous);
    int actions = 0;
    int pushes = 0;
    ring.bindings().setAction([&] { ++actions; });
    ring.bindings().bind("middleValue", [&] { ++pushes; });
    ASSERT_TRUE(ring.mouseDown(kCircularPartMiddle, 0.5));
    for (int i = 1; i <= c.drags; ++i) {
        ring.mouseDragged(0.5 + i / 64.0);
    }
    EXPECT_EQ(actions, c.actionsDuringDrag);
    EXPECT_EQ(pushes, c.drags); // bindings follow the drag either way
    ring.mouseUp(0.5 + c.drags / 64.0 + 1.0 / 64.0, 1);
    EXPECT_EQ(actions, c.actionsAfterMouseUp);
    if (!c.continuous) {
        // The final position is applied at mouse-up.
        EXPECT_EQ(ring.middleValue(), 0.5 + (c.drags + 1) / 64.0);
    }
}

INSTANTIATE_TEST_SUITE_P(Modes, ActionsWhileDragging,
                         testing::Values(ActionCountCase{true, 5, 5, 5},
                                         ActionCountCase{false, 5, 0, 1},
                                         ActionCountCase{false, 0, 0, 1}));

struct DoubleClickCase {
    int part;
    KVSliderOffsets offsets;
};

class DoubleClick : public testing::TestWithParam<DoubleClickCase> {};

TEST_P(DoubleClick, ResetsWhatThePartStandsFor)
{
    const DoubleClickCase& c = GetParam();
    KVCircularSliderModel ring(true);
    ring.setOffsets({0.25, 0.125, 0.5, 0.125, 0.25});
    ASSERT_TRUE(ring.mouseDown(c.part, ring.valueForControlPart(c.part)));
    EXPECT_TRUE(ring.mouseUp(ring.valueForControlPart(c.part), 2));
    const KVSliderOffsets offsets = ring.offsets();
    EXPECT_NEAR(offsets.upperFalloffOffset, c.offsets.upperFalloffOffset, 1e-15);
    EXPECT_NEAR(offsets.upperOffset, c.offsets.upperOffset, 1e-15);
    EXPECT_NEAR(offsets.middleValue, c.offsets.middleValue, 1e-15);
    EXPECT_NEAR(offsets.lowerOffset, c.offsets.lowerOffset, 1e-15);
    EXPECT_NEAR(offsets.lowerFalloffOffset, c.offsets.lowerFalloffOffset, 1e-15);
}

INSTANTIATE_TEST_SUITE_P(
    Parts, DoubleClick,
    testing::Values(DoubleClickCase{kCircularPartUpper, {10.0 / 360, 0.125, 0.5, 0.125, 0.25}},
                    DoubleClickCase{kCircularPartLower, {0.25, 0.125, 0.5, 0.125, 10.0 / 360}},
                    DoubleClickCase{kCircularPartMiddle,
                                    {1.0 / 36, 1.0 / 36, 0.5, 1.0 / 36, 1.0 / 36}},
                    DoubleClickCase{kCircularPartUpperFalloff, {0.25, 0.125, 0.5, 0.125, 0.25}}));

TEST(MouseUp, ClampsTheStoredOffsets)
{
    KVCircularSliderModel ring(true);
    ring.setOffsets({0.3125, 0.3125, 0.5, 0.3125, 0.3125});
    ASSERT_TRUE(ring.mouseDown(kCircularPartMiddle, 0.5));
    EXPECT_EQ(offsetSum(ring.offsets()), 1.25);
    ring.mouseUp(0.5, 1);
    EXPECT_EQ(ring.offsets(), ring.clampedOffsets({0.3125, 0.3125, 0.5, 0.3125, 0.3125}));
    EXPECT_LE(offsetSum(ring.offsets()), ringTotal());
}

TEST(MouseUp, HeldUpperThumbDecidesWhichFalloffGivesWay)
{
    KVCircularSliderModel ring(true);
    ring.setOffsets({0.3125, 0.3125, 0.5, 0.3125, 0.3125});
    ASSERT_TRUE(ring.mouseDown(kCircularPartUpper, 0.8125));
    ring.mouseUp(0.8125, 1);
    EXPECT_EQ(ring.offsets().lowerFalloffOffset, 0.3125);
    EXPECT_LT(ring.offsets().upperFalloffOffset, 0.0625);
}

TEST(DisplayedValue, PartWhileDraggingElseIndicatorOrMiddle)
{
    KVCircularSliderModel ring = ringAtHalf();
    EXPECT_EQ(ring.displayedValue(), 0.5);
    ring.setIndicatedValue(0.75);
    EXPECT_EQ(ring.displayedValue(), 0.5);
    ring.setShowsValueIndicator(true);
    EXPECT_EQ(ring.displayedValue(), 0.75);
    ASSERT_TRUE(ring.mouseDown(kCircularPartLower, 0.375));
    EXPECT_EQ(ring.displayedValue(), 0.375);
}

struct MenuCase {
    int part;
    std::vector<std::string> titles;
};

class ContextualMenu : public testing::TestWithParam<MenuCase> {};

TEST_P(ContextualMenu, OneItemPerPart)
{
    const MenuCase& c = GetParam();
    std::vector<std::string> titles;
    for (const KVContextMenuItem& item : KVCircularSliderModel::contextualMenuItems(c.part)) {
        EXPECT_FALSE(item.isSeparator);
        titles.push_back(item.title);
    }
    EXPECT_EQ(titles, c.titles);
}

INSTANTIATE_TEST_SUITE_P(
    Parts, ContextualMenu,
    testing::Values(MenuCase{0, {}}, MenuCase{1, {"Reset Slider"}}, MenuCase{2, {"Reset Slider"}},
                    MenuCase{3, {"Reset Lower Falloff"}}, MenuCase{4, {"Reset Upper Falloff"}},
                    MenuCase{5, {"Reset Slider"}}, MenuCase{6, {"Reset Slider"}}));

TEST(ContextualMenu, ItemActsOnThePartUnderTheMenu)
{
    KVCircularSliderModel ring(true);
    ring.setOffsets({0.25, 0.125, 0.5, 0.125, 0.25});
    ring.setControlPartUnderMenu(kCircularPartLower);
    ring.performContextualMenuItem();
    EXPECT_NEAR(ring.offsets().lowerFalloffOffset, 10.0 / 360.0, 1e-15);
    EXPECT_EQ(ring.offsets().upperFalloffOffset, 0.25);
    ring.setControlPartUnderMenu(kCircularPartSlot);
    ring.performContextualMenuItem();
    EXPECT_DOUBLE_EQ(ring.offsets().upperFalloffOffset, 1.0 / 36.0);
}

struct NudgeCase {
    double degrees;
    KVNudgeCommand command;
    double expectedDegrees;
};

class Nudge : public testing::TestWithParam<NudgeCase> {};

TEST_P(Nudge, StepsByOneOrTenDegreesAndWraps)
{
    const NudgeCase& c = GetParam();
    const double nudged = KVCircularSliderModel::nudgedValue(c.degrees / 360.0, c.command);
    EXPECT_GE(nudged, 0.0);
    EXPECT_LT(nudged, 1.0);
    // Single precision of the field's value: a few 1e-5 degrees.
    EXPECT_NEAR(nudged * 360.0, c.expectedDegrees, 1e-4);
}

INSTANTIATE_TEST_SUITE_P(Commands, Nudge,
                         testing::Values(NudgeCase{359.5, KVNudgeCommand::up, 0.5},
                                         NudgeCase{90.0, KVNudgeCommand::up, 91.0},
                                         NudgeCase{90.0, KVNudgeCommand::upLarge, 100.0},
                                         NudgeCase{355.0, KVNudgeCommand::upLarge, 5.0},
                                         NudgeCase{0.0, KVNudgeCommand::down, 359.0},
                                         NudgeCase{4.0, KVNudgeCommand::downLarge, 354.0},
                                         NudgeCase{180.0, KVNudgeCommand::downLarge, 170.0}));

TEST(Nudge, MiddleValueIsWrittenThroughItsSetter)
{
    KVCircularSliderModel ring = ringAtHalf();
    int actions = 0;
    ring.bindings().setAction([&] { ++actions; });
    ring.nudgeMiddleValue(KVNudgeCommand::upLarge);
    EXPECT_NEAR(ring.middleValue(), 0.5 + 10.0 / 360.0, 1e-12);
    EXPECT_EQ(actions, 1);
}

TEST(DebugDescription, OneLinePerOffsetWithTheFullValue)
{
    KVCircularSliderModel ring(true);
    ring.setOffsets({0.1, 0.2, 0.3, 0.4, 0.5});
    std::istringstream lines(ring.debugDescription());
    const char* labels[] = {
        "offsets_.upperFalloffOffset: ", "offsets_.upperOffset: ", "offsets_.middleValue: ",
        "offsets_.lowerOffset: ", "offsets_.lowerFalloffOffset: "};
    const double values[] = {0.1, 0.2, 0.3, 0.4, 0.5};
    std::string line;
    for (int i = 0; i < 5; ++i) {
        ASSERT_TRUE(std::getline(lines, line));
        ASSERT_EQ(line.rfind(labels[i], 0), 0u) << line;
        const std::string number = line.substr(std::string(labels[i]).size());
        // Sixty digits after the point: more than enough to give back the same double.
        EXPECT_EQ(number.size(), std::string("1.").size() + 60 + std::string("e-01").size());
        EXPECT_EQ(std::strtod(number.c_str(), nullptr), values[i]);
    }
    EXPECT_FALSE(std::getline(lines, line));
}

} // namespace
} // namespace tintorra

namespace tintorra {
namespace {

TEST(MouseUp, WideUpperDragWithALongUpperFalloffLeavesTheLowerOffsetNegative)
{
    // The fall-off is not shortened while the upper thumb is dragged, so the upper side alone
    // ends up longer than T; the clamp at mouse-up fits the lower offset against the raw upper
    // fall-off and it comes out negative: the lower bound lands above the middle.
    KVCircularSliderModel ring(true);
    ring.setOffsets({0.625, 0.0625, 0.5, 0.0625, 0.0});
    ASSERT_TRUE(ring.mouseDown(kCircularPartUpper, 0.5625));
    ring.mouseDragged(0.9375);
    ring.mouseDragged(0.3125); // unwrapped to 1.3125
    EXPECT_EQ(ring.offsets(), (KVSliderOffsets{0.625, 0.4375, 0.875, 0.4375, 0.0}));
    ring.mouseUp(0.3125, 1);
    EXPECT_EQ(ring.offsets(),
              (KVSliderOffsets{0.625, 0.4375, 0.875, -(0.0625 + std::ldexp(100.0, -53)), 0.0}));
    EXPECT_GT(ring.lowerValue(), ring.middleValue());
}

} // namespace
} // namespace tintorra
