#include "CircularSliderTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace tintorra {
namespace {

using namespace testSupport;

TEST(CircularSliderHitTest, VisibleThumbsMiddleFirstSlotLast)
{
    const struct {
        bool bounds, falloffs;
        std::vector<int> order;
    } cases[] = {{true, true, {2, 4, 3, 6, 5, 1}},
                 {false, true, {2, 6, 5, 1}},
                 {true, false, {2, 4, 3, 1}},
                 {false, false, {2, 1}}};
    for (const auto& c : cases) {
        KVCircularSliderModel ring(true);
        ring.setShowsUpperLowerThumbs(c.bounds);
        ring.setShowsUpperLowerFalloffThumbs(c.falloffs);
        EXPECT_EQ(ring.hitTestOrder(), c.order) << c.bounds << c.falloffs;
    }
    const KVCircularSliderModel ring(true);
    EXPECT_EQ(ring.hitTest([](int part) { return part == 3 || part == 5 || part == 1; }), 3);
    EXPECT_EQ(ring.hitTest([](int part) { return part == 6 || part == 4; }), 4);
    EXPECT_EQ(ring.hitTest([](int) { return false; }), 0);
}

TEST(CircularSliderMouse, PressesThatStartNothingAndSlotPress)
{
    KVCircularSliderModel ring = sliderWith(true, kRingAtHalf);
    EXPECT_FALSE(ring.mouseDown(kCircularPartNone, 0.2));
    EXPECT_FALSE(ring.mouseIsDown());
    ring.setEnabled(false);
    EXPECT_FALSE(ring.mouseDown(kCircularPartMiddle, 0.5));
    ring.setEnabled(true);
    // A press on the slot grabs the middle and brings it to the pointer at once.
    ASSERT_TRUE(ring.mouseDown(kCircularPartSlot, 0.8125));
    EXPECT_EQ(ring.controlPart(), kCircularPartMiddle);
    EXPECT_EQ(ring.middleValue(), 0.8125);
    EXPECT_EQ(ring.offsets().upperOffset, 0.125);
    EXPECT_EQ(ring.displayedValue(), 0.8125);
}

TEST(CircularSliderMouse, MiddleDragCrossesTheSeamUnwrapped)
{
    KVCircularSliderModel ring = sliderWith(true, {0.0625, 0.0625, 0.9375, 0.0625, 0.0625});
    ASSERT_TRUE(ring.mouseDown(kCircularPartMiddle, 0.90625));
    EXPECT_EQ(ring.mouseDownPointValueOffset(), 0.03125); // the grip, kept for the drag
    ring.mouseDragged(0.96875);
    EXPECT_EQ(ring.lastMouseValue(), 1.0);
    ring.mouseDragged(0.03125);
    EXPECT_EQ(ring.lastMouseValue(), 1.0625);
    EXPECT_EQ(ring.middleValue(), 0.0625 + 100 * ulpBelowOne());
    EXPECT_TRUE(ring.mouseUp(0.03125, 1));
    EXPECT_EQ(ring.controlPart(), kCircularPartNone);
    EXPECT_FALSE(ring.mouseIsDown());
}

TEST(CircularSliderMouse, WindingStopsAHundredTurnsFromTheStart)
{
    KVCircularSliderModel ring = sliderWith(true, {0.0625, 0.0625, 0.0, 0.0625, 0.0625});
    ASSERT_TRUE(ring.mouseDown(kCircularPartMiddle, 0.0));
    const double pointers[] = {0.25, 0.5, 0.75, 0.0};
    double highest = 0.0;
    double lowest = 0.0;
    for (int step = 0; step < 3000; ++step) {
        // A thousand quarter turns forwards, then two thousand back.
        ring.mouseDragged(step < 1000 ? pointers[step % 4] : pointers[3 - step % 4]);
        highest = std::max(highest, ring.lastMouseValue());
        lowest = std::min(lowest, ring.lastMouseValue());
        ASSERT_TRUE(ring.middleValue() >= 0.0 && ring.middleValue() < 1.0);
    }
    EXPECT_EQ(highest, 100.0);
    EXPECT_EQ(lowest, -100.0);
}

TEST(CircularSliderMouse, DragsOfBoundsAndFalloffs)
{
    KVCircularSliderModel ring = sliderWith(true, kRingAtHalf);
    ASSERT_TRUE(ring.mouseDown(kCircularPartUpper, 0.625));
    ring.mouseDragged(0.75);
    EXPECT_EQ(ring.offsets(), (KVSliderOffsets{0.0625, 0.1875, 0.5625, 0.1875, 0.0625}));
    ring.mouseDragged(0.875);
    EXPECT_EQ(ring.offsets(), (KVSliderOffsets{0.0625, 0.25, 0.625, 0.25, 0.0625}));
    ring.mouseUp(0.875, 1);
    ASSERT_TRUE(ring.mouseDown(kCircularPartUpperFalloff, 0.9375));
    ring.mouseDragged(1.0); // fall-off end at 1.0, a quarter past the upper bound 0.875
    EXPECT_EQ(ring.offsets().upperFalloffOffset, 0.125);
    ring.mouseDragged(0.8);
    EXPECT_EQ(ring.offsets().upperFalloffOffset, 0.0);
    ring.mouseUp(0.8, 1);
    ASSERT_TRUE(ring.mouseDown(kCircularPartLowerFalloff, 0.3125));
    ring.mouseDragged(0.125);
    EXPECT_EQ(ring.offsets().lowerFalloffOffset, 0.25);

    KVCircularSliderModel straight = sliderWith(false, {0, 0, 0.5, 0, 0}, false);
    ASSERT_TRUE(straight.mouseDown(kCircularPartMiddle, 0.5));
    straight.mouseDragged(1.75);
    EXPECT_EQ(straight.lastMouseValue(), 1.0); // clamped to the scale
    EXPECT_EQ(straight.middleValue(), 1.0);
}

TEST(CircularSliderMouse, ActionOnEveryDragOnlyWhenContinuous)
{
    for (const bool continuous : {true, false}) {
        KVCircularSliderModel ring = sliderWith(true, kRingAtHalf);
        ring.setContinuous(continuous);
        int actions = 0;
        int pushes = 0;
        ring.bindings().setAction([&] { ++actions; });
        ring.bindings().bind("middleValue", [&] { ++pushes; });
        ASSERT_TRUE(ring.mouseDown(kCircularPartMiddle, 0.5));
        for (int i = 1; i <= 5; ++i) {
            ring.mouseDragged(0.5 + i / 64.0);
        }
        EXPECT_EQ(actions, continuous ? 5 : 0);
        EXPECT_EQ(pushes, 5); // bindings follow the drag either way
        ring.mouseUp(0.5 + 6 / 64.0, 1);
        EXPECT_EQ(actions, continuous ? 5 : 1);
        // Not continuous: the final position is applied at mouse-up.
        EXPECT_EQ(ring.middleValue(), 0.5 + (continuous ? 5 : 6) / 64.0);
    }
}

TEST(CircularSliderMouse, DoubleClickResetsWhatThePartStandsFor)
{
    const double ten = 10.0 / 360.0;
    const double d = 1.0 / 36.0;
    const struct {
        int part;
        KVSliderOffsets offsets;
    } cases[] = {{kCircularPartUpper, {ten, 0.125, 0.5, 0.125, 0.25}},
                 {kCircularPartLower, {0.25, 0.125, 0.5, 0.125, ten}},
                 {kCircularPartMiddle, {d, d, 0.5, d, d}},
                 {kCircularPartUpperFalloff, {0.25, 0.125, 0.5, 0.125, 0.25}}};
    for (const auto& c : cases) {
        KVCircularSliderModel ring = sliderWith(true, {0.25, 0.125, 0.5, 0.125, 0.25});
        ASSERT_TRUE(ring.mouseDown(c.part, ring.valueForControlPart(c.part)));
        ring.mouseUp(ring.valueForControlPart(c.part), 2);
        const KVSliderOffsets o = ring.offsets();
        EXPECT_NEAR(o.upperFalloffOffset, c.offsets.upperFalloffOffset, 1e-15) << c.part;
        EXPECT_NEAR(o.upperOffset, c.offsets.upperOffset, 1e-15) << c.part;
        EXPECT_EQ(o.middleValue, c.offsets.middleValue) << c.part;
        EXPECT_NEAR(o.lowerOffset, c.offsets.lowerOffset, 1e-15) << c.part;
        EXPECT_NEAR(o.lowerFalloffOffset, c.offsets.lowerFalloffOffset, 1e-15) << c.part;
    }
}

TEST(CircularSliderMouse, MouseUpClampsWithTheHeldPartDecidingWhichFalloffGivesWay)
{
    const KVSliderOffsets tooLong{0.3125, 0.3125, 0.5, 0.3125, 0.3125};
    for (const int part : {kCircularPartMiddle, kCircularPartUpper}) {
        KVCircularSliderModel ring = sliderWith(true, tooLong);
        ASSERT_TRUE(ring.mouseDown(part, ring.valueForControlPart(part)));
        EXPECT_EQ(ring.offsets(), tooLong); // nothing clamped before mouse-up
        ring.mouseUp(ring.valueForControlPart(part), 1);
        EXPECT_LE(offsetSum(ring.offsets()), ringTotal());
        const double yielding = part == kCircularPartUpper ? ring.offsets().upperFalloffOffset
                                                           : ring.offsets().lowerFalloffOffset;
        EXPECT_EQ(yielding, 0.0625 - 100 * ulpBelowOne()) << part;
    }
}

TEST(CircularSliderMouse, WideUpperDragWithALongUpperFalloffLeavesTheLowerOffsetNegative)
{
    // The fall-off is not shortened while the upper thumb is dragged, so the upper side alone
    // ends up longer than T; the mouse-up clamp fits the lower offset against the raw upper
    // fall-off and it comes out negative: the lower bound lands above the middle.
    KVCircularSliderModel ring = sliderWith(true, {0.625, 0.0625, 0.5, 0.0625, 0.0});
    ASSERT_TRUE(ring.mouseDown(kCircularPartUpper, 0.5625));
    ring.mouseDragged(0.9375);
    ring.mouseDragged(0.3125); // unwrapped to 1.3125
    EXPECT_EQ(ring.offsets(), (KVSliderOffsets{0.625, 0.4375, 0.875, 0.4375, 0.0}));
    ring.mouseUp(0.3125, 1);
    EXPECT_EQ(ring.offsets(),
              (KVSliderOffsets{0.625, 0.4375, 0.875, -(0.0625 + 100 * ulpBelowOne()), 0.0}));
    EXPECT_GT(ring.lowerValue(), ring.middleValue());
}

TEST(CircularSliderMenu, TitlesAndActions)
{
    const char* titles[] = {nullptr,
                            "Reset Slider",
                            "Reset Slider",
                            "Reset Lower Falloff",
                            "Reset Upper Falloff",
                            "Reset Slider",
                            "Reset Slider"};
    for (int part = 0; part <= 6; ++part) {
        const auto items = KVCircularSliderModel::contextualMenuItems(part);
        if (titles[part] == nullptr) {
            EXPECT_TRUE(items.empty());
        } else {
            EXPECT_EQ(items, (std::vector<KVContextMenuItem>{{titles[part]}})) << part;
        }
    }
    KVCircularSliderModel ring = sliderWith(true, {0.25, 0.125, 0.5, 0.125, 0.25});
    ring.setControlPartUnderMenu(kCircularPartLower);
    ring.performContextualMenuItem();
    EXPECT_NEAR(ring.offsets().lowerFalloffOffset, 10.0 / 360.0, 1e-15);
    EXPECT_EQ(ring.offsets().upperFalloffOffset, 0.25);
    ring.setControlPartUnderMenu(kCircularPartSlot);
    ring.performContextualMenuItem();
    EXPECT_DOUBLE_EQ(ring.offsets().upperFalloffOffset, 1.0 / 36.0);
}

TEST(CircularSliderValueField, ArrowKeysStepByOneOrTenDegreesAndWrap)
{
    const struct {
        double degrees;
        KVNudgeCommand command;
        double expected;
    } cases[] = {{359.5, KVNudgeCommand::up, 0.5},         {90.0, KVNudgeCommand::up, 91.0},
                 {90.0, KVNudgeCommand::upLarge, 100.0},   {355.0, KVNudgeCommand::upLarge, 5.0},
                 {0.0, KVNudgeCommand::down, 359.0},       {4.0, KVNudgeCommand::downLarge, 354.0},
                 {180.0, KVNudgeCommand::downLarge, 170.0}};
    for (const auto& c : cases) {
        const double nudged = KVCircularSliderModel::nudgedValue(c.degrees / 360.0, c.command);
        EXPECT_TRUE(nudged >= 0.0 && nudged < 1.0) << c.degrees;
        EXPECT_NEAR(nudged * 360.0, c.expected, 1e-4) << c.degrees; // read in single precision
    }
    KVCircularSliderModel ring = sliderWith(true, kRingAtHalf);
    int actions = 0;
    ring.bindings().setAction([&] { ++actions; });
    ring.nudgeMiddleValue(KVNudgeCommand::upLarge);
    EXPECT_NEAR(ring.middleValue(), 0.5 + 10.0 / 360.0, 1e-12);
    EXPECT_EQ(actions, 1);
}

TEST(CircularSliderBindings, SettersPushTheirKeyThenItsDependencies)
{
    using Keys = std::vector<std::string>;
    const struct {
        void (*set)(KVCircularSliderModel&);
        Keys pushed;
    } cases[] = {
        {[](KVCircularSliderModel& s) {
             s.setValues({0.25, 0.125, 0.0, -0.125, -0.25});
         },
         {"values", "middleValue", "upperValue", "lowerValue", "upperFalloffValue",
          "lowerFalloffValue"}},
        {[](KVCircularSliderModel& s) { s.setMiddleValue(0.25); },
         {"middleValue", "values", "upperValue", "lowerValue"}},
        {[](KVCircularSliderModel& s) { s.setUpperValue(0.125); },
         {"upperValue", "values", "middleValue"}},
        {[](KVCircularSliderModel& s) { s.setLowerValue(-0.125); },
         {"lowerValue", "values", "middleValue"}},
        {[](KVCircularSliderModel& s) { s.setUpperFalloffValue(0.125); },
         {"upperFalloffValue", "values", "middleValue", "upperValue"}},
        {[](KVCircularSliderModel& s) { s.setLowerFalloffValue(-0.125); },
         {"lowerFalloffValue", "values", "middleValue", "lowerValue"}},
    };
    for (const auto& c : cases) {
        KVCircularSliderModel ring(true);
        Keys pushed;
        for (const char* key : {"values", "middleValue", "upperValue", "lowerValue",
                                "upperFalloffValue", "lowerFalloffValue"}) {
            ring.bindings().bind(key, [&pushed, key] { pushed.push_back(key); });
        }
        int actions = 0;
        ring.bindings().setAction([&] { ++actions; });
        c.set(ring);
        EXPECT_EQ(pushed, c.pushed) << c.pushed.front();
        EXPECT_EQ(actions, 1) << c.pushed.front();
    }
}

TEST(CircularSliderBindings, ReverseTableAndObservers)
{
    // The keys that change with each key, written out from the forward table by hand.
    const auto affected = [](const char* key) {
        const auto& keys =
            dependentKeys(KVCircularSliderModel::keyPathsForValuesAffectedByValueForKey(), key);
        return std::set<std::string>(keys.begin(), keys.end());
    };
    using Keys = std::set<std::string>;
    EXPECT_EQ(affected("values"), (Keys{"middleValue", "upperValue", "lowerValue",
                                        "upperFalloffValue", "lowerFalloffValue"}));
    EXPECT_EQ(affected("middleValue"), (Keys{"values", "upperValue", "lowerValue",
                                             "upperFalloffValue", "lowerFalloffValue"}));
    EXPECT_EQ(affected("upperValue"), (Keys{"values", "middleValue", "upperFalloffValue"}));
    EXPECT_EQ(affected("lowerFalloffValue"), (Keys{"values"}));
    EXPECT_EQ(affected("unknown"), Keys{});

    KVCircularSliderModel ring(true);
    KVValueDictionary observed;
    int calls = 0;
    ring.bindings().bind("values", [&] {
        observed = ring.values(); // the observer reads the new value
        ++calls;
        ring.bindings().unbind("values"); // and may unbind itself
    });
    ring.setSpreadInDegrees(90.0);
    ring.setSpreadInDegrees(20.0);
    EXPECT_EQ(observed, dictionaryFromValues(KVSliderValues{0.25, 0.125, 0.0, -0.125, -0.25}));
    EXPECT_EQ(calls, 1);
}

TEST(CircularSliderDebugDescription, OneLinePerOffsetWithTheExactValue)
{
    const KVCircularSliderModel ring = sliderWith(true, {0.1, 0.2, 0.3, 0.4, 0.5});
    std::istringstream lines(ring.debugDescription());
    const char* labels[] = {"upperFalloffOffset", "upperOffset", "middleValue", "lowerOffset",
                            "lowerFalloffOffset"};
    std::string line;
    for (int i = 0; i < 5; ++i) {
        ASSERT_TRUE(std::getline(lines, line));
        const std::string label = std::string("offsets_.") + labels[i] + ": ";
        ASSERT_EQ(line.rfind(label, 0), 0u) << line;
        EXPECT_EQ(line.size() - label.size(), 66u); // "d." + 60 digits + "e-01"
        EXPECT_EQ(std::strtod(line.c_str() + label.size(), nullptr), (i + 1) / 10.0);
    }
    EXPECT_FALSE(std::getline(lines, line));
}

} // namespace
} // namespace tintorra
