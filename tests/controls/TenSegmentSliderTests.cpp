#include "controls/KVTenSegmentSliderModel.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

namespace tintorra {
namespace {

std::int32_t partOf(std::size_t thumb)
{
    return KVTenSegmentSliderModel::controlPartForSliderThumb(thumb);
}

TEST(TenSegmentValues, KeysDefaultsAndChain)
{
    const char* keys[] = {"thumb_000", "thumb_010", "thumb_020", "thumb_030",
                          "thumb_040", "thumb_050", "thumb_060", "thumb_070",
                          "thumb_080", "thumb_090", "thumb_100"};
    const KVValueDictionary defaults = KVTenSegmentSliderModel::defaultValues();
    ASSERT_EQ(defaults.size(), 11u);
    const double identity[] = {0.0, 0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7, 0.8, 0.9, 1.0};
    const KVTenSegmentSliderModel curve;
    for (std::size_t i = 0; i < kTenSegmentThumbCount; ++i) {
        EXPECT_EQ(tenSegmentThumbKey(i), keys[i]);
        EXPECT_EQ(defaults.at(keys[i]), identity[i]);
        EXPECT_EQ(curve.thumb(i).doubleValue, identity[i]);
        EXPECT_FALSE(curve.thumb(i).locked);
    }
    EXPECT_FALSE(KVTenSegmentSliderModel::previousThumb(0).has_value());
    EXPECT_EQ(KVTenSegmentSliderModel::nextThumb(0), 1u);
    EXPECT_EQ(KVTenSegmentSliderModel::previousThumb(10), 9u);
    EXPECT_FALSE(KVTenSegmentSliderModel::nextThumb(10).has_value());
}

TEST(TenSegmentValues, TakeStoresAsGivenMissingKeyReadsZero)
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

TEST(TenSegmentValues, SetUnlocksOnlyTheThumbsThatChangeNaNNeverEquals)
{
    KVTenSegmentSliderModel curve;
    for (std::size_t i = 0; i < kTenSegmentThumbCount; ++i) {
        curve.setThumbLocked(i, true);
    }
    int actions = 0;
    curve.bindings().setAction([&] { ++actions; });
    curve.setValues(curve.values());
    KVTenSegmentValues changed = identityTenSegmentValues();
    changed[4] = 0.45;
    changed[7] = NAN;
    curve.setValues(changed);
    curve.setValues(changed); // the NaN differs from itself and unlocks again
    for (std::size_t i = 0; i < kTenSegmentThumbCount; ++i) {
        EXPECT_EQ(curve.thumb(i).locked, i != 4 && i != 7) << i;
    }
    EXPECT_EQ(actions, 3);
}

TEST(TenSegmentDrag, IdentityCurveStretchesBothSidesProportionally)
{
    KVTenSegmentSliderModel curve;
    ASSERT_TRUE(curve.mouseDown(partOf(5), 0.5));
    curve.mouseDragged(0.7);
    curve.mouseUp(0.7, 1);
    EXPECT_EQ(curve.thumb(5).doubleValue, 0.7);
    EXPECT_TRUE(curve.thumb(5).locked);
    // [0.5, 1.0] onto [0.7, 1.0] (slope 0.6) and [0.0, 0.5] onto [0.0, 0.7] (slope 1.4).
    for (std::size_t i = 0; i < kTenSegmentThumbCount; ++i) {
        const double expected = i > 5 ? 0.7 + (i / 10.0 - 0.5) * 0.6 : i / 10.0 * 1.4;
        EXPECT_NEAR(curve.thumb(i).doubleValue, expected, 1e-15) << i;
        EXPECT_EQ(curve.thumb(i).locked, i == 5) << i;
    }
    EXPECT_EQ(curve.thumb(0).doubleValue, 0.0);
    EXPECT_EQ(curve.thumb(10).doubleValue, 1.0);
}

// Units in the last place: 2^-54 just above 0.3, 2^-53 just below 0.7 and 1.0.
TEST(TenSegmentDrag, DraggedThumbStopsShortOfItsAnchorByTheRoomOfTheFreeThumbs)
{
    const struct {
        const char* name;
        std::vector<std::size_t> locked;
        std::size_t dragged;
        double value, expected;
    } cases[] = {
        {"one free thumb below", {3, 7}, 5, 0.0, 0.3 + std::ldexp(100, -54)},
        {"one free thumb above", {3, 7}, 5, 0.9, 0.7 - std::ldexp(100, -53)},
        {"neighbour anchor", {4}, 5, 0.0, 0.4},
        {"three free thumbs to the end", {}, 7, 2.0, 1.0 - std::ldexp(300, -53)},
        {"last thumb to the end", {}, 10, 2.0, 1.0},
        {"inside the room", {3, 7}, 5, 0.625, 0.625},
    };
    for (const auto& c : cases) {
        KVTenSegmentSliderModel curve;
        for (const std::size_t index : c.locked) {
            curve.setThumbLocked(index, true);
        }
        curve.takeValue(c.value, c.dragged);
        EXPECT_EQ(curve.thumb(c.dragged).doubleValue, c.expected) << c.name;
    }
}

TEST(TenSegmentDrag, AnchorsHoldAndFreeThumbsOnACollapsedSpanStay)
{
    KVTenSegmentSliderModel curve;
    curve.setThumbLocked(3, true);
    curve.setThumbLocked(7, true);
    curve.takeValue(0.35, 5);
    const KVTenSegmentValues identity = identityTenSegmentValues();
    for (const std::size_t i : {0u, 1u, 2u, 3u, 7u, 8u, 9u, 10u}) {
        EXPECT_EQ(curve.thumb(i).doubleValue, identity[i]) << i;
    }
    EXPECT_NEAR(curve.thumb(4).doubleValue, 0.325, 1e-15); // [0.3, 0.5] onto [0.3, 0.35]
    EXPECT_NEAR(curve.thumb(6).doubleValue, 0.525, 1e-15); // [0.5, 0.7] onto [0.35, 0.7]

    // Thumbs 0 to 3 all on 0: dragging thumb 3 up leaves 0 to 2 where they are.
    KVTenSegmentValues values = identity;
    values[1] = values[2] = values[3] = 0.0;
    KVTenSegmentSliderModel flat;
    flat.takeValues(values);
    flat.setThumbLocked(4, true);
    flat.takeValue(0.25, 3);
    EXPECT_EQ(flat.tenSegmentValues(),
              (KVTenSegmentValues{0.0, 0.0, 0.0, 0.25, 0.4, 0.5, 0.6, 0.7, 0.8, 0.9, 1.0}));
}

TEST(TenSegmentSequence, OnePassUpwardsAndTheScaleSetters)
{
    KVTenSegmentSliderModel curve;
    curve.takeValues(KVTenSegmentValues{-0.5, 0.3, 0.2, 0.4, 0.4, 2.0, 0.6, 0.7, 0.8, 0.9, 1.5});
    curve.sequenceValues();
    EXPECT_EQ(curve.tenSegmentValues(),
              (KVTenSegmentValues{0.0, 0.2, 0.2, 0.4, 0.4, 0.6, 0.6, 0.7, 0.8, 0.9, 1.0}));

    const struct {
        bool setMin;
        double value, minValue, maxValue;
        KVTenSegmentValues values;
    } cases[] = {
        {true, 0.2, 0.2, 1.0, {0.2, 0.2, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7, 0.8, 0.9, 1.0}},
        // Each thumb is limited by the next one's unprocessed value, so a lowered maximum only
        // reaches the last thumb: the ones below keep their values and the order is lost.
        {false, 0.5, 0.0, 0.5, {0.0, 0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7, 0.8, 0.9, 0.5}},
        {true, 2.0, 2.0, 2.0, {2.0, 2.0, 2.0, 2.0, 2.0, 2.0, 2.0, 2.0, 2.0, 2.0, 2.0}},
        {false, -1.0, -1.0, -1.0, {0.0, 0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7, 0.8, 0.9, -1.0}},
    };
    for (const auto& c : cases) {
        KVTenSegmentSliderModel scaled;
        c.setMin ? scaled.setMinValue(c.value) : scaled.setMaxValue(c.value);
        EXPECT_EQ(scaled.minValue(), c.minValue) << c.value;
        EXPECT_EQ(scaled.maxValue(), c.maxValue) << c.value;
        EXPECT_EQ(scaled.tenSegmentValues(), c.values) << c.value;
    }
}

TEST(TenSegmentReset, ResetAndUnlock)
{
    KVTenSegmentSliderModel curve;
    curve.setThumbLocked(2, true);
    curve.setThumbLocked(4, true);
    curve.takeValue(0.9, 5);
    curve.setControlPartUnderMenu(kTenSegmentPartSlot); // not a thumb: nothing to unlock
    curve.unlockThumb();
    EXPECT_TRUE(curve.thumb(4).locked);
    curve.setControlPartUnderMenu(partOf(4));
    curve.unlockThumb();
    EXPECT_FALSE(curve.thumb(4).locked);
    EXPECT_TRUE(curve.thumb(2).locked);

    int pushes = 0;
    curve.bindings().bind("values", [&] { ++pushes; });
    curve.resetAllThumbs();
    EXPECT_EQ(curve.tenSegmentValues(), identityTenSegmentValues());
    EXPECT_FALSE(curve.thumb(2).locked);
    EXPECT_EQ(pushes, 1);
}

TEST(TenSegmentParts, ThumbsAreParts2To12)
{
    const KVTenSegmentSliderModel curve;
    const struct {
        std::int32_t part;
        int thumb; // -1: none
    } cases[] = {{-1, -1}, {0, -1}, {1, -1}, {2, 0}, {7, 5}, {12, 10}, {13, -1}, {14, -1}};
    for (const auto& c : cases) {
        const auto thumb = KVTenSegmentSliderModel::sliderThumbForControlPart(c.part);
        EXPECT_EQ(thumb.has_value(), c.thumb >= 0) << c.part;
        EXPECT_EQ(curve.valueForControlPart(c.part), c.thumb < 0 ? 0.0 : c.thumb / 10.0);
        if (thumb) {
            EXPECT_EQ(*thumb, static_cast<std::size_t>(c.thumb));
            EXPECT_EQ(partOf(*thumb), c.part);
        }
    }
    EXPECT_EQ(partOf(11), 0);
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
    EXPECT_EQ(curve.hitTestOrder(0.4999), descending);
    curve.setMaxValue(3.0);
    EXPECT_EQ(curve.hitTestOrder(1.25), descending);
    EXPECT_EQ(curve.hitTestOrder(1.5), ascending);
    const auto overlap = [](std::int32_t part) { return part == 6 || part == 7; };
    EXPECT_EQ(curve.hitTest(2.0, overlap), 6);
    EXPECT_EQ(curve.hitTest(0.5, overlap), 7);
    EXPECT_EQ(curve.hitTest(0.5, [](std::int32_t) { return false; }), 0);
}

TEST(TenSegmentMouse, GripSlotDisabledAndDoubleClick)
{
    KVTenSegmentSliderModel curve;
    ASSERT_TRUE(curve.mouseDown(partOf(2), 0.25));
    EXPECT_EQ(curve.mouseDownValue(), 0.2);
    curve.mouseDragged(0.45); // the grip of -0.05 is kept
    EXPECT_NEAR(curve.thumb(2).doubleValue, 0.4, 1e-15);
    EXPECT_TRUE(curve.mouseUp(0.45, 1));
    EXPECT_EQ(curve.controlPart(), kTenSegmentPartNone);
    EXPECT_FALSE(curve.mouseIsDown());

    const KVTenSegmentValues afterDrag = curve.tenSegmentValues();
    ASSERT_TRUE(curve.mouseDown(kTenSegmentPartSlot, 0.33)); // the slot moves no thumb
    curve.mouseDragged(0.9);
    curve.mouseUp(0.9, 2);
    EXPECT_EQ(curve.tenSegmentValues(), afterDrag);

    ASSERT_TRUE(curve.mouseDown(partOf(8), 0.8)); // a double click on a thumb resets
    curve.mouseUp(0.8, 2);
    EXPECT_EQ(curve.tenSegmentValues(), identityTenSegmentValues());
    EXPECT_FALSE(curve.thumb(2).locked);

    curve.setEnabled(false);
    EXPECT_FALSE(curve.mouseDown(partOf(0), 0.0));
    EXPECT_FALSE(curve.thumb(0).locked);
}

TEST(TenSegmentMouse, ActionOnEveryDragOnlyWhenContinuous)
{
    for (const bool continuous : {true, false}) {
        KVTenSegmentSliderModel curve;
        curve.setContinuous(continuous);
        int actions = 0;
        curve.bindings().setAction([&] { ++actions; });
        ASSERT_TRUE(curve.mouseDown(partOf(5), 0.5));
        for (const double pointer : {0.55, 0.6, 0.625}) {
            curve.mouseDragged(pointer);
        }
        EXPECT_EQ(actions, continuous ? 3 : 0);
        curve.mouseUp(0.75, 1);
        EXPECT_EQ(actions, continuous ? 3 : 1);
        EXPECT_EQ(curve.thumb(5).doubleValue, continuous ? 0.625 : 0.75);
    }
}

TEST(TenSegmentMenu, UnlockOnlyOverALockedThumbResetAlwaysLast)
{
    KVTenSegmentSliderModel curve;
    curve.setThumbLocked(6, true);
    using Items = std::vector<KVContextMenuItem>;
    EXPECT_EQ(curve.contextualMenuItems(partOf(6)),
              (Items{{"Unlock Thumb"}, {"", true}, {"Reset Slider"}}));
    EXPECT_EQ(curve.contextualMenuItems(partOf(5)), (Items{{"Reset Slider"}}));
    EXPECT_EQ(curve.contextualMenuItems(kTenSegmentPartSlot), (Items{{"Reset Slider"}}));
    EXPECT_TRUE(curve.contextualMenuItems(kTenSegmentPartNone).empty());
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
        EXPECT_EQ(std::strtod(line.c_str() + prefix.size(), &end), i / 10.0);
        EXPECT_EQ(std::string(end), i == 4 ? " locked: 1" : " locked: 0");
    }
    EXPECT_FALSE(std::getline(lines, line));
}

} // namespace
} // namespace tintorra
