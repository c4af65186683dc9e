#include "controls/KVTenSegmentSliderModel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>

namespace tintorra {
namespace {

constexpr int kSequences = 500;
constexpr int kStepsPerSequence = 60;

// Below this gap two thumbs are only units in the last place apart and the proportional
// remapping rounds them together.
constexpr double kRoundingRegime = 1e-9;

testing::AssertionResult isMonotoneOnTheScale(const KVTenSegmentSliderModel& curve)
{
    for (std::size_t i = 0; i < kTenSegmentThumbCount; ++i) {
        const double value = curve.thumb(i).doubleValue;
        if (!(value >= curve.minValue() && value <= curve.maxValue())) {
            return testing::AssertionFailure() << "thumb " << i << " off the scale: " << value;
        }
        if (i > 0 && curve.thumb(i - 1).doubleValue > value) {
            return testing::AssertionFailure() << "thumb " << i << " below its predecessor";
        }
    }
    return testing::AssertionSuccess();
}

testing::AssertionResult hasNoFreeThumbOnAnAnchor(const KVTenSegmentSliderModel& curve)
{
    for (std::size_t i = 0; i < kTenSegmentThumbCount; ++i) {
        for (std::size_t j = 0; j < kTenSegmentThumbCount; ++j) {
            if (!curve.thumb(i).locked && curve.thumb(j).locked &&
                curve.thumb(i).doubleValue == curve.thumb(j).doubleValue) {
                return testing::AssertionFailure() << "free thumb " << i << " on anchor " << j;
            }
        }
    }
    return testing::AssertionSuccess();
}

double smallestGap(const KVTenSegmentSliderModel& curve)
{
    double gap = INFINITY;
    for (std::size_t i = 1; i < kTenSegmentThumbCount; ++i) {
        gap = std::min(gap, curve.thumb(i).doubleValue - curve.thumb(i - 1).doubleValue);
    }
    return gap;
}

// The dragged thumb keeps clear of an anchor whenever a free thumb lies between them.
testing::AssertionResult draggedThumbKeepsRoom(const KVTenSegmentSliderModel& curve,
                                               std::size_t dragged)
{
    const double value = curve.thumb(dragged).doubleValue;
    for (std::size_t j = 0; j < kTenSegmentThumbCount; ++j) {
        const bool separated = (j + 1 < dragged || j > dragged + 1);
        if (j != dragged && separated && curve.thumb(j).locked) {
            bool freeBetween = true;
            for (std::size_t k = std::min(j, dragged) + 1; k < std::max(j, dragged); ++k) {
                freeBetween = freeBetween && !curve.thumb(k).locked;
            }
            if (freeBetween && curve.thumb(j).doubleValue == value) {
                return testing::AssertionFailure()
                       << "dragged thumb " << dragged << " reached anchor " << j;
            }
        }
    }
    return testing::AssertionSuccess();
}

// Random drags (and unlocks) on random monotone curves with random anchors. Returns how many
// states were checked for free thumbs on anchors.
int runRandomDrags(double throwChance)
{
    int anchorChecks = 0;
    for (int sequence = 0; sequence < kSequences; ++sequence) {
        std::mt19937_64 rng(static_cast<std::uint64_t>(sequence));
        std::uniform_real_distribution<double> unit(0.0, 1.0);
        const auto chance = [&](double p) { return std::bernoulli_distribution(p)(rng); };

        // A strictly increasing start, some thumbs already anchored.
        KVTenSegmentValues start{};
        for (double& value : start) {
            value = unit(rng);
        }
        std::sort(start.begin(), start.end());
        KVTenSegmentSliderModel curve;
        curve.setContinuous(chance(0.5));
        curve.takeValues(start);
        if (smallestGap(curve) < kRoundingRegime) {
            continue;
        }
        for (std::size_t i = 0; i < kTenSegmentThumbCount; ++i) {
            curve.setThumbLocked(i, chance(0.25));
        }

        // Once a drag has squeezed thumbs to within units in the last place of each other, the
        // remapping may round two of them onto one value; from then on a grabbed thumb can
        // carry a free one on it, and anchors may sit closer than the room the rule keeps for
        // the free thumbs between them. Only the order is checked in that regime.
        bool squeezed = false;
        const auto check = [&](const std::string& context) {
            EXPECT_TRUE(isMonotoneOnTheScale(curve)) << context;
            squeezed = squeezed || smallestGap(curve) < kRoundingRegime;
            if (!squeezed) {
                ++anchorChecks;
                EXPECT_TRUE(hasNoFreeThumbOnAnAnchor(curve)) << context;
            }
        };

        for (int step = 0; step < kStepsPerSequence; ++step) {
            const std::string context =
                "sequence " + std::to_string(sequence) + " step " + std::to_string(step);
            const auto thumb = std::uniform_int_distribution<std::size_t>(0, 10)(rng);
            if (chance(0.1)) {
                curve.setControlPartUnderMenu(
                    KVTenSegmentSliderModel::controlPartForSliderThumb(thumb));
                curve.unlockThumb();
                check(context + " unlock");
                continue;
            }
            double pointer = curve.thumb(thumb).doubleValue + (unit(rng) - 0.5) * 0.05;
            EXPECT_TRUE(curve.mouseDown(KVTenSegmentSliderModel::controlPartForSliderThumb(thumb),
                                        pointer));
            const int drags = std::uniform_int_distribution<int>(1, 8)(rng);
            for (int d = 0; d < drags; ++d) {
                // Mostly small moves, now and then a throw past the ends of the scale.
                pointer =
                    chance(throwChance) ? unit(rng) * 3.0 - 1.0 : pointer + (unit(rng) - 0.5) * 0.1;
                curve.mouseDragged(pointer);
                check(context + " drag");
                if (!squeezed) {
                    EXPECT_TRUE(draggedThumbKeepsRoom(curve, thumb)) << context;
                }
            }
            curve.mouseUp(pointer, 1);
            EXPECT_TRUE(curve.thumb(thumb).locked) << context;
            check(context + " mouse up");
            if (testing::Test::HasFailure()) {
                return anchorChecks; // the first failure says enough
            }
        }
    }
    return anchorChecks;
}

TEST(TenSegmentProperties, GentleDragsKeepTheCurveMonotoneWithNoFreeThumbOnAnAnchor)
{
    const int anchorChecks = runRandomDrags(0.0);
    // The anchor rule must really have been exercised, not skipped.
    EXPECT_GT(anchorChecks, kSequences * kStepsPerSequence / 4);
}

TEST(TenSegmentProperties, ThrowsPastTheEndsKeepTheCurveMonotone)
{
    runRandomDrags(0.25);
}

TEST(TenSegmentSqueeze, ThumbsRoundedTogetherMoveAsOne)
{
    // Thumbs 3 and 4 one unit in the last place apart; thumb 5 is thrown onto the anchor at 0.2
    // and squeezes both into 200 units above it, where they round to the same value.
    KVTenSegmentValues values = identityTenSegmentValues();
    values[3] = 0.5;
    values[4] = std::nextafter(0.5, 1.0);
    values[5] = 0.55;
    KVTenSegmentSliderModel curve;
    curve.takeValues(values);
    curve.setThumbLocked(2, true);
    curve.takeValue(0.0, 5);
    EXPECT_EQ(curve.thumb(5).doubleValue, 0.2 + std::ldexp(200.0, -55));
    EXPECT_EQ(curve.thumb(3).doubleValue, curve.thumb(4).doubleValue);
    // Grabbing thumb 4 makes it an anchor with the free thumb 3 on it, and 3 follows it.
    ASSERT_TRUE(curve.mouseDown(KVTenSegmentSliderModel::controlPartForSliderThumb(4), 0.2));
    curve.mouseDragged(0.3);
    curve.mouseUp(0.3, 1);
    EXPECT_FALSE(hasNoFreeThumbOnAnAnchor(curve));
    EXPECT_EQ(curve.thumb(3).doubleValue, curve.thumb(4).doubleValue);
    EXPECT_TRUE(isMonotoneOnTheScale(curve));
}

} // namespace
} // namespace tintorra
