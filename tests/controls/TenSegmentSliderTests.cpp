#include "controls/KVTenSegmentSliderModel.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

namespace tintorra {
namespace {

TEST(TenSegmentKeys, InputPositionInHundredths)
{
    const char* expected[] = {"thumb_000", "thumb_010", "thumb_020", "thumb_030",
                              "thumb_040", "thumb_050", "thumb_060", "thumb_070",
                              "thumb_080", "thumb_090", "thumb_100"};
    for (std::size_t i = 0; i < kTenSegmentThumbCount; ++i) {
        EXPECT_EQ(tenSegmentThumbKey(i), expected[i]);
    }
}

TEST(TenSegmentDefaults, IdentityCurve)
{
    const KVValueDictionary defaults = KVTenSegmentSliderModel::defaultValues();
    ASSERT_EQ(defaults.size(), 11u);
    EXPECT_EQ(defaults.at("thumb_000"), 0.0);
    EXPECT_EQ(defaults.at("thumb_030"), 0.3);
    EXPECT_EQ(defaults.at("thumb_070"), 0.7);
    EXPECT_EQ(defaults.at("thumb_100"), 1.0);
    const KVTenSegmentSliderModel curve;
    EXPECT_EQ(curve.values(), defaults);
    for (std::size_t i = 0; i < kTenSegmentThumbCount; ++i) {
        EXPECT_FALSE(curve.thumb(i).locked);
    }
}

TEST(TenSegmentChain, FirstHasNoPreviousLastHasNoNext)
{
    EXPECT_FALSE(KVTenSegmentSliderModel::previousThumb(0).has_value());
    EXPECT_EQ(KVTenSegmentSliderModel::nextThumb(0), 1u);
    EXPECT_EQ(KVTenSegmentSliderModel::previousThumb(10), 9u);
    EXPECT_FALSE(KVTenSegmentSliderModel::nextThumb(10).has_value());
}

TEST(TenSegmentTakeValues, MissingKeyReadsAsZeroAndNothingIsOrdered)
{
    KVValueDictionary dictionary = KVTenSegmentSliderModel::defaultValues();
    dictionary.erase("thumb_050");
    dictionary["thumb_020"] = 0.9;
    KVTenSegmentSliderModel curve;
    curve.takeValues(dictionary);
    EXPECT_EQ(curve.thumb(5).doubleValue, 0.0);
    EXPECT_EQ(curve.thumb(2).doubleValue, 0.9);
    EXPECT_EQ(curve.thumb(6).doubleValue, 0.6);
}

TEST(TenSegmentSetValues, UnlocksOnlyTheThumbsThatChange)
{
    KVTenSegmentSliderModel curve;
    for (std::size_t i = 0; i < kTenSegmentThumbCount; ++i) {
        curve.setThumbLocked(i, true);
    }
    int actions = 0;
    curve.bindings().setAction([&] { ++actions; });
    curve.setValues(curve.values());
    for (std::size_t i = 0; i < kTenSegmentThumbCount; ++i) {
        EXPECT_TRUE(curve.thumb(i).locked) << i;
    }
    KVValueDictionary changed = curve.values();
    changed["thumb_040"] = 0.45;
    curve.setValues(changed);
    for (std::size_t i = 0; i < kTenSegmentThumbCount; ++i) {
        EXPECT_EQ(curve.thumb(i).locked, i != 4) << i;
    }
    EXPECT_EQ(curve.thumb(4).doubleValue, 0.45);
    EXPECT_EQ(actions, 2);
}

TEST(TenSegmentSetValues, NaNNeverEqualsAndUnlocks)
{
    KVTenSegmentSliderModel curve;
    KVTenSegmentValues values = identityTenSegmentValues();
    values[3] = NAN;
    curve.takeValues(values);
    curve.setThumbLocked(3, true);
    curve.setValues(values);
    EXPECT_FALSE(curve.thumb(3).locked);
}

TEST(TenSegmentDrag, IdentityCurveStretchesBothSidesProportionally)
{
    KVTenSegmentSliderModel curve;
    ASSERT_TRUE(curve.mouseDown(kTenSegmentPartFirstThumb + 5, 0.5));
    curve.mouseDragged(0.7);
    curve.mouseUp(0.7, 1);
    EXPECT_EQ(curve.thumb(5).doubleValue, 0.7);
    EXPECT_TRUE(curve.thumb(5).locked);
    // [0.5, 1.0] onto [0.7, 1.0]: slope 0.6; [0.0, 0.5] onto [0.0, 0.7]: slope 1.4.
    for (std::size_t i = 6; i <= 10; ++i) {
        EXPECT_NEAR(curve.thumb(i).doubleValue, 0.7 + (i / 10.0 - 0.5) * 0.6, 1e-15) << i;
        EXPECT_FALSE(curve.thumb(i).locked);
    }
    for (std::size_t i = 0; i <= 4; ++i) {
        EXPECT_NEAR(curve.thumb(i).doubleValue, i / 10.0 * 1.4, 1e-15) << i;
    }
    EXPECT_NEAR(curve.thumb(6).doubleValue, 0.76, 1e-15);
    EXPECT_NEAR(curve.thumb(1).doubleValue, 0.14, 1e-15);
    EXPECT_EQ(curve.thumb(10).doubleValue, 1.0);
    EXPECT_EQ(curve.thumb(0).doubleValue, 0.0);
}

struct AnchorCase {
    const char* name;
    std::vector<std::size_t> locked;
    std::size_t dragged;
    double value;
    double expected;
};

class TenSegmentAnchors : public testing::TestWithParam<AnchorCase> {};

// The dragged thumb stops 100 units in the last place per free thumb short of its anchor.
TEST_P(TenSegmentAnchors, DraggedThumbStopsShortOfTheAnchor)
{
    const AnchorCase& c = GetParam();
    KVTenSegmentSliderModel curve;
    for (const std::size_t index : c.locked) {
        curve.setThumbLocked(index, true);
    }
    curve.takeValue(c.value, c.dragged);
    EXPECT_EQ(curve.thumb(c.dragged).doubleValue, c.expected) << c.name;
    for (std::size_t i = 1; i < kTenSegmentThumbCount; ++i) {
        EXPECT_LE(curve.thumb(i - 1).doubleValue, curve.thumb(i).doubleValue) << c.name << i;
    }
}

// Units in the last place: 2^-54 just above 0.3, 2^-53 just below 0.7 and 1.0.
INSTANTIATE_TEST_SUITE_P(
    Cases, TenSegmentAnchors,
    testing::Values(AnchorCase{"one free thumb below", {3, 7}, 5, 0.0, 0.3 + std::ldexp(100, -54)},
                    AnchorCase{"one free thumb above", {3, 7}, 5, 0.9, 0.7 - std::ldexp(100, -53)},
                    AnchorCase{"neighbour anchor", {4}, 5, 0.0, 0.4},
                    AnchorCase{
                        "three free thumbs to the end", {}, 7, 2.0, 1.0 - std::ldexp(300, -53)},
                    AnchorCase{"last thumb to the end", {}, 10, 2.0, 1.0},
                    AnchorCase{"inside the room", {3, 7}, 5, 0.625, 0.625}));

TEST(TenSegmentDrag, AnchorsAndOutsideThumbsStayPut)
{
    KVTenSegmentSliderModel curve;
    curve.setThumbLocked(3, true);
    curve.setThumbLocked(7, true);
    curve.takeValue(0.35, 5);
    const KVTenSegmentValues identity = identityTenSegmentValues();
    for (const std::size_t i : {0u, 1u, 2u, 3u, 7u, 8u, 9u, 10u}) {
        EXPECT_EQ(curve.thumb(i).doubleValue, identity[i]) << i;
    }
    // [0.3, 0.5] onto [0.3, 0.35] and [0.5, 0.7] onto [0.35, 0.7].
    EXPECT_NEAR(curve.thumb(4).doubleValue, 0.325, 1e-15);
    EXPECT_NEAR(curve.thumb(6).doubleValue, 0.525, 1e-15);
}

TEST(TenSegmentDrag, FreeThumbsOnACollapsedSpanStayOnTheirAnchor)
{
    // Thumbs 0 to 3 all rest on 0; dragging thumb 3 up leaves 0 to 2 where they are.
    KVTenSegmentSliderModel curve;
    KVTenSegmentValues values = identityTenSegmentValues();
    values[1] = values[2] = values[3] = 0.0;
    curve.takeValues(values);
    curve.takeValue(0.5, 3);
    EXPECT_EQ(curve.thumb(3).doubleValue, 0.5);
    EXPECT_EQ(curve.thumb(0).doubleValue, 0.0);
    EXPECT_EQ(curve.thumb(1).doubleValue, 0.0);
    EXPECT_EQ(curve.thumb(2).doubleValue, 0.0);
}

TEST(TenSegmentSequence, OnePassFromFirstToLast)
{
    KVTenSegmentSliderModel curve;
    curve.takeValues(KVTenSegmentValues{-0.5, 0.3, 0.2, 0.4, 0.4, 2.0, 0.6, 0.7, 0.8, 0.9, 1.5});
    curve.sequenceValues();
    EXPECT_EQ(curve.tenSegmentValues(),
              (KVTenSegmentValues{0.0, 0.2, 0.2, 0.4, 0.4, 0.6, 0.6, 0.7, 0.8, 0.9, 1.0}));
}

struct ScaleCase {
    bool setMin;
    double value;
    double minValue;
    double maxValue;
    KVTenSegmentValues values;
};

class TenSegmentScale : public testing::TestWithParam<ScaleCase> {};

TEST_P(TenSegmentScale, SettersKeepMinBelowMaxAndResequence)
{
    const ScaleCase& c = GetParam();
    KVTenSegmentSliderModel curve;
    if (c.setMin) {
        curve.setMinValue(c.value);
    } else {
        curve.setMaxValue(c.value);
    }
    EXPECT_EQ(curve.minValue(), c.minValue);
    EXPECT_EQ(curve.maxValue(), c.maxValue);
    EXPECT_EQ(curve.tenSegmentValues(), c.values);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, TenSegmentScale,
    testing::Values(
        ScaleCase{true, 0.2, 0.2, 1.0, {0.2, 0.2, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7, 0.8, 0.9, 1.0}},
        // One pass upwards: each thumb is limited by the unprocessed value of the next, so a
        // lowered maximum only reaches the last thumb; the ones below it keep their values.
        ScaleCase{false, 0.5, 0.0, 0.5, {0.0, 0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7, 0.8, 0.9, 0.5}},
        ScaleCase{true, 2.0, 2.0, 2.0, {2.0, 2.0, 2.0, 2.0, 2.0, 2.0, 2.0, 2.0, 2.0, 2.0, 2.0}},
        ScaleCase{
            false, -1.0, -1.0, -1.0, {0.0, 0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7, 0.8, 0.9, -1.0}}));

TEST(TenSegmentReset, UnlocksEverythingAndRestoresTheIdentity)
{
    KVTenSegmentSliderModel curve;
    curve.setThumbLocked(2, true);
    curve.takeValue(0.9, 5);
    int pushes = 0;
    curve.bindings().bind("values", [&] { ++pushes; });
    curve.resetAllThumbs();
    EXPECT_EQ(curve.tenSegmentValues(), identityTenSegmentValues());
    for (std::size_t i = 0; i < kTenSegmentThumbCount; ++i) {
        EXPECT_FALSE(curve.thumb(i).locked);
    }
    EXPECT_EQ(pushes, 1);
}

TEST(TenSegmentUnlock, OnlyThumbPartsUnderTheMenu)
{
    KVTenSegmentSliderModel curve;
    curve.setThumbLocked(4, true);
    curve.setControlPartUnderMenu(kTenSegmentPartSlot);
    curve.unlockThumb();
    EXPECT_TRUE(curve.thumb(4).locked);
    curve.setControlPartUnderMenu(KVTenSegmentSliderModel::controlPartForSliderThumb(4));
    curve.unlockThumb();
    EXPECT_FALSE(curve.thumb(4).locked);
}

struct PartCase {
    std::int32_t part;
    int thumb; // -1: none
};

class TenSegmentParts : public testing::TestWithParam<PartCase> {};

TEST_P(TenSegmentParts, ThumbsAreParts2To12)
{
    const PartCase& c = GetParam();
    const auto thumb = KVTenSegmentSliderModel::sliderThumbForControlPart(c.part);
    const KVTenSegmentSliderModel curve;
    if (c.thumb < 0) {
        EXPECT_FALSE(thumb.has_value());
        EXPECT_EQ(curve.valueForControlPart(c.part), 0.0);
    } else {
        ASSERT_TRUE(thumb.has_value());
        EXPECT_EQ(*thumb, static_cast<std::size_t>(c.thumb));
        EXPECT_EQ(KVTenSegmentSliderModel::controlPartForSliderThumb(*thumb), c.part);
        EXPECT_EQ(curve.valueForControlPart(c.part), c.thumb / 10.0);
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, TenSegmentParts,
                         testing::Values(PartCase{-1, -1}, PartCase{0, -1}, PartCase{1, -1},
                                         PartCase{2, 0}, PartCase{7, 5}, PartCase{12, 10},
                                         PartCase{13, -1}, PartCase{14, -1}));

TEST(TenSegmentParts, IndexPastTheLastThumbIsNoPart)
{
    EXPECT_EQ(KVTenSegmentSliderModel::controlPartForSliderThumb(11), 0);
}

TEST(TenSegmentHitTest, OrderFollowsTheSideOfTheScale)
{
    KVTenSegmentSliderModel curve;
    std::vector<std::int32_t> ascending;
    for (std::int32_t part = 1; part <= 13; ++part) {
        ascending.push_back(part);
    }
    const std::vector<std::int32_t> descending(ascending.rbegin(), ascending.rend());
    EXPECT_EQ(curve.hitTestOrder(0.5), ascending);
    EXPECT_EQ(curve.hitTestOrder(0.75), ascending);
    EXPECT_EQ(curve.hitTestOrder(0.4999), descending);
    curve.setMaxValue(3.0);
    EXPECT_EQ(curve.hitTestOrder(1.25), descending);
    EXPECT_EQ(curve.hitTestOrder(1.5), ascending);
    // Overlapping thumbs: the one nearer the pointer's end wins.
    const auto overlap = [](std::int32_t part) { return part == 6 || part == 7; };
    EXPECT_EQ(curve.hitTest(2.0, overlap), 6);
    EXPECT_EQ(curve.hitTest(0.5, overlap), 7);
    EXPECT_EQ(curve.hitTest(0.5, [](std::int32_t) { return false; }), 0);
}

TEST(TenSegmentMouse, GripOffsetIsKeptForTheWholeDrag)
{
    KVTenSegmentSliderModel curve;
    ASSERT_TRUE(curve.mouseDown(KVTenSegmentSliderModel::controlPartForSliderThumb(2), 0.25));
    EXPECT_EQ(curve.mouseDownValue(), 0.2);
    EXPECT_NEAR(curve.mouseDownPointValueOffset(), -0.05, 1e-15);
    curve.mouseDragged(0.45);
    EXPECT_NEAR(curve.thumb(2).doubleValue, 0.4, 1e-15);
    EXPECT_NEAR(curve.lastMouseValue(), 0.4, 1e-15);
    EXPECT_TRUE(curve.mouseUp(0.45, 1));
    EXPECT_EQ(curve.controlPart(), kTenSegmentPartNone);
    EXPECT_FALSE(curve.mouseIsDown());
}

TEST(TenSegmentMouse, SlotPressChangesNoValueAndDisabledSliderIgnoresPresses)
{
    KVTenSegmentSliderModel curve;
    ASSERT_TRUE(curve.mouseDown(kTenSegmentPartSlot, 0.33));
    EXPECT_EQ(curve.mouseDownValue(), 0.33);
    curve.mouseDragged(0.9);
    curve.mouseUp(0.9, 1);
    EXPECT_EQ(curve.tenSegmentValues(), identityTenSegmentValues());
    curve.setEnabled(false);
    EXPECT_FALSE(curve.mouseDown(kTenSegmentPartFirstThumb, 0.0));
    EXPECT_FALSE(curve.thumb(0).locked);
}

TEST(TenSegmentMouse, DoubleClickOnAThumbResets)
{
    KVTenSegmentSliderModel curve;
    curve.takeValue(0.9, 5);
    curve.setThumbLocked(8, true);
    ASSERT_TRUE(curve.mouseDown(KVTenSegmentSliderModel::controlPartForSliderThumb(3), 0.3));
    curve.mouseUp(0.3, 2);
    EXPECT_EQ(curve.tenSegmentValues(), identityTenSegmentValues());
    EXPECT_FALSE(curve.thumb(3).locked);
    EXPECT_FALSE(curve.thumb(8).locked);
}

struct CurveActionCase {
    bool continuous;
    int actionsDuringDrag;
    int actionsAfterMouseUp;
};

class TenSegmentActions : public testing::TestWithParam<CurveActionCase> {};

TEST_P(TenSegmentActions, ContinuousSendsEveryDragOtherwiseOnlyAtMouseUp)
{
    const CurveActionCase& c = GetParam();
    KVTenSegmentSliderModel curve;
    curve.setContinuous(c.continuous);
    int actions = 0;
    curve.bindings().setAction([&] { ++actions; });
    ASSERT_TRUE(curve.mouseDown(KVTenSegmentSliderModel::controlPartForSliderThumb(5), 0.5));
    curve.mouseDragged(0.55);
    curve.mouseDragged(0.6);
    curve.mouseDragged(0.625);
    EXPECT_EQ(actions, c.actionsDuringDrag);
    curve.mouseUp(0.75, 1);
    EXPECT_EQ(actions, c.actionsAfterMouseUp);
    EXPECT_EQ(curve.thumb(5).doubleValue, c.continuous ? 0.625 : 0.75);
}

INSTANTIATE_TEST_SUITE_P(Modes, TenSegmentActions,
                         testing::Values(CurveActionCase{true, 3, 3},
                                         CurveActionCase{false, 0, 1}));

TEST(TenSegmentMenu, UnlockOnlyOverALockedThumbResetAlwaysLast)
{
    KVTenSegmentSliderModel curve;
    curve.setThumbLocked(6, true);
    const auto titles = [&](std::int32_t part) {
        std::vector<std::string> result;
        for (const KVContextMenuItem& item : curve.contextualMenuItems(part)) {
            result.push_back(item.isSeparator ? "-" : item.title);
        }
        return result;
    };
    EXPECT_EQ(titles(8), (std::vector<std::string>{"Unlock Thumb", "-", "Reset Slider"}));
    EXPECT_EQ(titles(7), (std::vector<std::string>{"Reset Slider"}));
    EXPECT_EQ(titles(1), (std::vector<std::string>{"Reset Slider"}));
    EXPECT_EQ(titles(0), (std::vector<std::string>{}));
}

TEST(TenSegmentDebugDescription, OneLinePerThumbWithLockState)
{
    KVTenSegmentSliderModel curve;
    curve.setThumbLocked(4, true);
    std::istringstream lines(curve.debugDescription());
    std::string line;
    for (long i = 0; i < 11; ++i) {
        ASSERT_TRUE(std::getline(lines, line));
        const std::string prefix = "Thumb " + std::to_string(i) + ": ";
        ASSERT_EQ(line.rfind(prefix, 0), 0u) << line;
        char* end = nullptr;
        const double value = std::strtod(line.c_str() + prefix.size(), &end);
        EXPECT_EQ(value, i / 10.0);
        EXPECT_EQ(std::string(end), i == 4 ? " locked: 1" : " locked: 0");
    }
    EXPECT_FALSE(std::getline(lines, line));
}

} // namespace
} // namespace tintorra
