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

// Below this gap thumbs are only units in the last place apart, and the proportional remapping
// can round them onto one value.
constexpr double kRoundingRegime = 1e-9;

double value(const KVTenSegmentSliderModel& curve, std::size_t i)
{
    return curve.thumb(i).doubleValue;
}

double smallestGap(const KVTenSegmentSliderModel& curve)
{
    double gap = INFINITY;
    for (std::size_t i = 1; i < kTenSegmentThumbCount; ++i) {
        gap = std::min(gap, value(curve, i) - value(curve, i - 1));
    }
    return gap;
}

// The nearest locked thumb on one side of `thumb` (step -1 or +1), or none, and how many free
// thumbs lie before it.
struct Anchor {
    int index = -1;
    int freeBetween = 0;
};

Anchor anchorFrom(const KVTenSegmentSliderModel& curve, std::size_t thumb, int step)
{
    Anchor anchor;
    for (int i = static_cast<int>(thumb) + step; i >= 0 && i <= 10; i += step) {
        if (curve.thumb(static_cast<std::size_t>(i)).locked) {
            anchor.index = i;
            return anchor;
        }
        ++anchor.freeBetween;
    }
    return anchor;
}

// Random drags and unlocks on random strictly increasing curves with random anchors. Gentle
// drags keep the dragged thumb a little inside its anchors; otherwise the pointer is thrown
// anywhere now and then. Counts the states checked for free thumbs on anchors.
void runRandomDrags(bool gentle, int& anchorChecks)
{
    for (int sequence = 0; sequence < kSequences && !testing::Test::HasFailure(); ++sequence) {
        std::mt19937_64 rng(static_cast<std::uint64_t>(sequence));
        std::uniform_real_distribution<double> unit(0.0, 1.0);
        const auto chance = [&](double p) { return std::bernoulli_distribution(p)(rng); };
        KVTenSegmentValues start{};
        std::generate(start.begin(), start.end(), [&] { return unit(rng); });
        std::sort(start.begin(), start.end());
        KVTenSegmentSliderModel curve;
        curve.takeValues(start);
        curve.setContinuous(chance(0.5));
        for (std::size_t i = 0; i < kTenSegmentThumbCount; ++i) {
            curve.setThumbLocked(i, chance(0.25));
        }
        bool squeezed = smallestGap(curve) < kRoundingRegime;

        for (int step = 0; step < kStepsPerSequence && !testing::Test::HasFailure(); ++step) {
            const std::string context =
                "sequence " + std::to_string(sequence) + " step " + std::to_string(step) + ": ";
            const auto thumb = std::uniform_int_distribution<std::size_t>(0, 10)(rng);
            const std::int32_t part = KVTenSegmentSliderModel::controlPartForSliderThumb(thumb);
            if (chance(0.1)) {
                curve.setControlPartUnderMenu(part);
                curve.unlockThumb();
                continue;
            }
            const KVTenSegmentSliderModel before = curve;
            double pointer = value(curve, thumb) + (unit(rng) - 0.5) * 0.05;
            EXPECT_TRUE(curve.mouseDown(part, pointer));
            const Anchor lower = anchorFrom(curve, thumb, -1);
            const Anchor upper = anchorFrom(curve, thumb, +1);
            const double low = lower.index < 0 ? 0.0 : value(curve, lower.index);
            const double high = upper.index < 0 ? 1.0 : value(curve, upper.index);
            const bool roomy = high - low > kRoundingRegime;
            for (int d = std::uniform_int_distribution<int>(1, 8)(rng); d > 0; --d) {
                double target = value(curve, thumb) + (unit(rng) - 0.5) * 0.1;
                if (gentle) {
                    const double margin = 1e-3 * (high - low);
                    target = std::clamp(target, low + margin, high - margin);
                } else if (chance(0.25)) {
                    target = unit(rng) * 3.0 - 1.0;
                }
                pointer = target - curve.mouseDownPointValueOffset();
                curve.mouseDragged(pointer);

                for (std::size_t i = 0; i < kTenSegmentThumbCount; ++i) {
                    ASSERT_TRUE(value(curve, i) >= 0.0 && value(curve, i) <= 1.0) << context << i;
                    ASSERT_TRUE(i == 0 || value(curve, i - 1) <= value(curve, i)) << context << i;
                    // Anchors never move; only the dragged thumb and the free ones do.
                    if (i != thumb && before.thumb(i).locked) {
                        ASSERT_EQ(value(curve, i), value(before, i)) << context << i;
                    }
                }
                // With free thumbs in between, the dragged thumb never reaches its anchor.
                for (const Anchor& anchor : {lower, upper}) {
                    ASSERT_FALSE(roomy && anchor.index >= 0 && anchor.freeBetween > 0 &&
                                 value(curve, thumb) == value(curve, anchor.index))
                        << context << "thumb " << thumb << " on anchor " << anchor.index;
                }
                if (gentle && !squeezed) {
                    ++anchorChecks;
                    for (std::size_t i = 0; i < kTenSegmentThumbCount; ++i) {
                        for (std::size_t j = 0; j < kTenSegmentThumbCount; ++j) {
                            ASSERT_FALSE(!curve.thumb(i).locked && curve.thumb(j).locked &&
                                         value(curve, i) == value(curve, j))
                                << context << "free thumb " << i << " on anchor " << j;
                        }
                    }
                }
            }
            curve.mouseUp(pointer, 1);
            EXPECT_TRUE(curve.thumb(thumb).locked) << context;
            squeezed = squeezed || smallestGap(curve) < kRoundingRegime;
        }
    }
}

TEST(TenSegmentProperties, GentleDragsKeepTheCurveMonotoneWithNoFreeThumbOnAnAnchor)
{
    int anchorChecks = 0;
    runRandomDrags(true, anchorChecks);
    // The anchor rule must really have been exercised, not skipped.
    EXPECT_GT(anchorChecks, kSequences * kStepsPerSequence);
}

TEST(TenSegmentProperties, ThrowsKeepTheCurveMonotoneAndTheAnchorsInPlace)
{
    int anchorChecks = 0;
    runRandomDrags(false, anchorChecks);
}

TEST(TenSegmentProperties, ThumbsRoundedTogetherMoveAsOne)
{
    // Thumbs 3 and 4 one unit in the last place apart; thumb 5 is thrown onto the anchor at 0.2
    // and squeezes both into the 200 units above it, where they round to one value.
    KVTenSegmentValues values = identityTenSegmentValues();
    values[3] = 0.5;
    values[4] = std::nextafter(0.5, 1.0);
    values[5] = 0.55;
    KVTenSegmentSliderModel curve;
    curve.takeValues(values);
    curve.setThumbLocked(2, true);
    curve.takeValue(0.0, 5);
    EXPECT_EQ(value(curve, 5), 0.2 + std::ldexp(200.0, -55));
    EXPECT_EQ(value(curve, 3), value(curve, 4));
    // Grabbing thumb 4 makes it an anchor with the free thumb 3 on it, and 3 follows it.
    ASSERT_TRUE(curve.mouseDown(KVTenSegmentSliderModel::controlPartForSliderThumb(4), 0.2));
    curve.mouseDragged(0.3);
    curve.mouseUp(0.3, 1);
    EXPECT_TRUE(curve.thumb(4).locked);
    EXPECT_FALSE(curve.thumb(3).locked);
    EXPECT_EQ(value(curve, 3), value(curve, 4));
    EXPECT_LE(value(curve, 2), value(curve, 3));
}

} // namespace
} // namespace tintorra
