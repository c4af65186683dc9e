#include "CircularSliderTestSupport.h"
#include "colour/HueAngles.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace tintorra {
namespace {

using testSupport::offsetSum;
using testSupport::ulpBelowOne;

constexpr int kSequences = 400;
constexpr int kStepsPerSequence = 150;

// Runs random takes, spreads, resets, value writes and whole drags (with random switches) on a
// fresh slider per sequence, calling `check` after every step and every drag event.
void runRandomSessions(
    bool circular,
    const std::function<void(const KVCircularSliderModel&, const std::string&)>& check)
{
    for (int sequence = 0; sequence < kSequences && !testing::Test::HasFailure(); ++sequence) {
        std::mt19937_64 rng(static_cast<std::uint64_t>(sequence) + (circular ? 0u : 100000u));
        const auto uniform = [&](double a, double b) {
            return std::uniform_real_distribution<double>(a, b)(rng);
        };
        const auto coin = [&](double p) { return std::bernoulli_distribution(p)(rng); };
        KVCircularSliderModel s(circular);
        s.setCenterThumbWithinOffsets(coin(0.5));
        s.setShowsUpperLowerFalloffThumbs(coin(0.8));
        s.setShowsUpperLowerThumbs(coin(0.9));
        s.setContinuous(coin(0.7));

        const std::vector<std::pair<const char*, std::function<void()>>> operations = {
            {"setMiddleValue", [&] { s.setMiddleValue(uniform(-3.0, 4.0)); }},
            {"setUpperValue", [&] { s.setUpperValue(s.middleValue() + uniform(-1.5, 1.5)); }},
            {"setLowerValue", [&] { s.setLowerValue(s.middleValue() + uniform(-1.5, 1.5)); }},
            {"setUpperFalloffValue",
             [&] { s.setUpperFalloffValue(s.upperValue() + uniform(-1.5, 1.5)); }},
            {"setLowerFalloffValue",
             [&] { s.setLowerFalloffValue(s.lowerValue() + uniform(-1.5, 1.5)); }},
            {"setSpreadInDegrees", [&] { s.setSpreadInDegrees(uniform(0.0, 400.0)); }},
            {"resets",
             [&] {
                 const int which = std::uniform_int_distribution<int>(0, 3)(rng);
                 which == 0   ? s.resetAllThumbs()
                 : which == 1 ? s.resetUpperThumb()
                 : which == 2 ? s.resetLowerThumb()
                              : s.resetValues();
             }},
            {"setValues",
             [&] {
                 const double middle = uniform(-2.0, 3.0);
                 const double upper = middle + uniform(0.0, 0.6);
                 const double lower = middle - uniform(0.0, 0.6);
                 s.setValues(KVSliderValues{upper + uniform(0.0, 0.4), upper, middle, lower,
                                            lower - uniform(0.0, 0.4)});
             }},
        };
        for (int step = 0; step < kStepsPerSequence && !testing::Test::HasFailure(); ++step) {
            const std::string context =
                "sequence " + std::to_string(sequence) + " step " + std::to_string(step) + " ";
            const std::size_t op = std::uniform_int_distribution<std::size_t>(0, 9)(rng);
            if (op < operations.size()) {
                operations[op].second();
                check(s, context + operations[op].first);
                continue;
            }
            // A whole drag; the widget's pointer values lie on the scale, a fast hand jumps far.
            const int part = std::uniform_int_distribution<int>(1, 6)(rng);
            double pointer = uniform(0.0, 1.0);
            if (s.mouseDown(part, pointer)) {
                for (int d = std::uniform_int_distribution<int>(0, 12)(rng); d > 0; --d) {
                    pointer = wrapIntoRange(pointer + uniform(-0.45, 0.45), 0.0, 1.0);
                    s.mouseDragged(pointer);
                    check(s, context + "drag of part " + std::to_string(part));
                }
                s.mouseUp(pointer, coin(0.1) ? 2 : 1);
            }
            check(s, context + "mouse up of part " + std::to_string(part));
        }
    }
}

TEST(CircularSliderProperties, RingOffsetsNeverSumPastTAndValuesWrapConsistently)
{
    int roundTrips = 0;
    int overfull = 0;
    int states = 0;
    runRandomSessions(true, [&](const KVCircularSliderModel& ring, const std::string& context) {
        ++states;
        const double total = ring.maxAllowableTotalOffsets();
        const KVSliderOffsets stored = ring.offsets();
        const KVSliderOffsets clamped = ring.clampedOffsets(stored);
        const KVSliderValues read = ring.sliderValues();
        for (const double v : {stored.upperFalloffOffset, stored.upperOffset, stored.lowerOffset,
                               stored.lowerFalloffOffset, read.upperFalloff, read.lowerFalloff}) {
            ASSERT_TRUE(std::isfinite(v)) << context;
        }
        ASSERT_TRUE(stored.middleValue >= 0.0 && stored.middleValue < 1.0) << context;
        ASSERT_EQ(read.middle, clamped.middleValue) << context;
        // Adding the four up again may round a unit or two past T, never to a whole turn.
        ASSERT_LE(offsetSum(clamped), total + 4 * ulpBelowOne()) << context;
        ASSERT_LT(offsetSum(clamped), ring.wrapDist()) << context;
        if (ring.mouseIsDown()) {
            ASSERT_LE(std::fabs(ring.lastMouseValue() - ring.mouseDownValue()), 100.0) << context;
        }

        // The clamp fits each offset against the raw values of the other side; when one raw
        // side alone is longer than T (a spread of 360° or more, a fall-off left long during a
        // drag) an offset comes out negative and the order is lost. Such states are counted.
        const bool falloffs = ring.showsUpperLowerFalloffThumbs();
        if (stored.lowerOffset + (falloffs ? stored.lowerFalloffOffset : 0.0) > total ||
            stored.upperOffset + (falloffs ? stored.upperFalloffOffset : 0.0) > total) {
            ++overfull;
            return;
        }
        ASSERT_LE(read.lowerFalloff, read.lower + 1e-12) << context;
        ASSERT_LE(read.lower, read.middle + 1e-12) << context;
        ASSERT_LE(read.middle, read.upper + 1e-12) << context;
        ASSERT_LE(read.upper, read.upperFalloff + 1e-12) << context;

        // Written back and read again, the range keeps its place on the circle. Left out: an
        // empty side (a bound or fall-off end on its inner neighbour, or a rounding hair before
        // it, is taken back as up to a whole turn away) and, with centring on, a range the clamp
        // cut unevenly (its middle is re-centred).
        const bool open = !ring.showsUpperLowerThumbs() ||
                          (clamped.lowerOffset > 1e-9 && clamped.upperOffset > 1e-9 &&
                           (!falloffs || (clamped.lowerFalloffOffset > 1e-9 &&
                                          clamped.upperFalloffOffset > 1e-9)));
        if (!open || (ring.centerThumbWithinOffsets() &&
                      std::fabs(clamped.upperOffset - clamped.lowerOffset) > 1e-12)) {
            return;
        }
        ++roundTrips;
        KVCircularSliderModel copy = ring;
        copy.takeValues(read);
        const KVSliderValues again = copy.sliderValues();
        for (const auto& [a, b] : {std::pair{read.middle, again.middle},
                                   {read.upper, again.upper},
                                   {read.lower, again.lower},
                                   {read.upperFalloff, again.upperFalloff},
                                   {read.lowerFalloff, again.lowerFalloff}}) {
            ASSERT_NEAR(hueDifference(a, b, 1.0), 0.0, 1e-9) << context;
        }
    });
    // Both checks must really have run, not been skipped.
    EXPECT_GT(roundTrips, states / 2);
    EXPECT_LT(overfull, states / 10);
}

TEST(CircularSliderProperties, StraightRangeStaysOrderedOnTheScale)
{
    runRandomSessions(false, [](const KVCircularSliderModel& straight, const std::string& context) {
        const KVSliderValues read = straight.sliderValues();
        ASSERT_GE(read.lowerFalloff, 0.0) << context;
        ASSERT_LE(read.lowerFalloff, read.lower) << context;
        ASSERT_LE(read.lower, read.middle) << context;
        ASSERT_LE(read.middle, read.upper) << context;
        ASSERT_LE(read.upper, read.upperFalloff) << context;
        ASSERT_LE(read.upperFalloff, 1.0) << context;
        if (straight.mouseIsDown()) {
            ASSERT_TRUE(straight.lastMouseValue() >= 0.0 && straight.lastMouseValue() <= 1.0);
        }
    });
}

} // namespace
} // namespace tintorra
