#include "CircularSliderTestSupport.h"
#include "colour/HueAngles.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>

namespace tintorra {
namespace {

using testing_support::offsetSum;

constexpr int kSequences = 400;
constexpr int kStepsPerSequence = 150;

// Random takes, spreads, resets, dictionary writes and whole drags on one slider.
class RandomSliderSession {
public:
    RandomSliderSession(std::uint64_t seed, bool circular) : rng_(seed), slider_(circular)
    {
        slider_.setCenterThumbWithinOffsets(coin(0.5));
        slider_.setShowsUpperLowerFalloffThumbs(coin(0.8));
        slider_.setShowsUpperLowerThumbs(coin(0.9));
        slider_.setContinuous(coin(0.7));
    }

    KVCircularSliderModel& slider() { return slider_; }

    // Runs one random step and returns its name, for failure messages.
    template <typename Check>
    std::string step(const Check& checkDuringDrag)
    {
        const double m = slider_.middleValue();
        switch (std::uniform_int_distribution<int>(0, 9)(rng_)) {
        case 0:
            slider_.setMiddleValue(uniform(-3.0, 4.0));
            return "setMiddleValue";
        case 1:
            slider_.setUpperValue(m + uniform(-1.5, 1.5));
            return "setUpperValue";
        case 2:
            slider_.setLowerValue(m + uniform(-1.5, 1.5));
            return "setLowerValue";
        case 3:
            slider_.setUpperFalloffValue(slider_.upperValue() + uniform(-1.5, 1.5));
            return "setUpperFalloffValue";
        case 4:
            slider_.setLowerFalloffValue(slider_.lowerValue() + uniform(-1.5, 1.5));
            return "setLowerFalloffValue";
        case 5:
            slider_.setSpreadInDegrees(uniform(0.0, 400.0));
            return "setSpreadInDegrees";
        case 6:
            switch (std::uniform_int_distribution<int>(0, 3)(rng_)) {
            case 0:
                slider_.resetAllThumbs();
                return "resetAllThumbs";
            case 1:
                slider_.resetUpperThumb();
                return "resetUpperThumb";
            case 2:
                slider_.resetLowerThumb();
                return "resetLowerThumb";
            default:
                slider_.resetValues();
                return "resetValues";
            }
        case 7: {
            const double middle = uniform(-2.0, 3.0);
            const double upper = middle + uniform(0.0, 0.6);
            const double lower = middle - uniform(0.0, 0.6);
            slider_.setValues(KVSliderValues{upper + uniform(0.0, 0.4), upper, middle, lower,
                                             lower - uniform(0.0, 0.4)});
            return "setValues";
        }
        default:
            return drag(checkDuringDrag);
        }
    }

private:
    bool coin(double p) { return std::bernoulli_distribution(p)(rng_); }
    double uniform(double a, double b)
    {
        return std::uniform_real_distribution<double>(a, b)(rng_);
    }

    template <typename Check>
    std::string drag(const Check& checkDuringDrag)
    {
        const int part = std::uniform_int_distribution<int>(1, 6)(rng_);
        double pointer = uniform(0.0, 1.0);
        if (!slider_.mouseDown(part, pointer)) {
            return "mouseDown refused";
        }
        const int drags = std::uniform_int_distribution<int>(0, 12)(rng_);
        for (int i = 0; i < drags; ++i) {
            // The widget's pointer values lie on the scale; a fast hand may jump far.
            pointer = wrapIntoRange(pointer + uniform(-0.45, 0.45), 0.0, 1.0);
            slider_.mouseDragged(pointer);
            checkDuringDrag();
        }
        slider_.mouseUp(pointer, coin(0.1) ? 2 : 1);
        return "drag of part " + std::to_string(part);
    }

    std::mt19937_64 rng_;
    KVCircularSliderModel slider_;
};

bool allFinite(const KVSliderOffsets& o)
{
    return std::isfinite(o.upperFalloffOffset) && std::isfinite(o.upperOffset) &&
           std::isfinite(o.middleValue) && std::isfinite(o.lowerOffset) &&
           std::isfinite(o.lowerFalloffOffset);
}

TEST(RingProperties, ClampedOffsetsNeverExceedTheAllowableTotalAndValuesWrapConsistently)
{
    int roundTrips = 0;
    int overfullSides = 0;
    for (int sequence = 0; sequence < kSequences; ++sequence) {
        RandomSliderSession session(static_cast<std::uint64_t>(sequence), true);
        KVCircularSliderModel& ring = session.slider();
        const double total = ring.maxAllowableTotalOffsets();
        const auto checkDrag = [&] {
            ASSERT_LE(std::fabs(ring.lastMouseValue() - ring.mouseDownValue()), 100.0);
        };
        for (int step = 0; step < kStepsPerSequence; ++step) {
            const std::string what = session.step(checkDrag);
            const std::string context = "sequence " + std::to_string(sequence) + " step " +
                                        std::to_string(step) + " " + what;

            const KVSliderOffsets stored = ring.offsets();
            ASSERT_TRUE(allFinite(stored)) << context;
            ASSERT_GE(stored.middleValue, 0.0) << context;
            ASSERT_LT(stored.middleValue, 1.0) << context;

            const KVSliderOffsets clamped = ring.clampedOffsets(stored);
            // The clamp fits each offset against T; adding the four up again may round a unit
            // or two past it, still far from a whole turn.
            ASSERT_LE(offsetSum(clamped), total + 4.0 * std::ldexp(1.0, -53)) << context;
            ASSERT_LT(offsetSum(clamped), ring.wrapDist()) << context;

            // The values read are the clamped offsets laid out around the wrapped middle.
            const KVSliderValues read = ring.sliderValues();
            ASSERT_EQ(read.middle, clamped.middleValue) << context;
            ASSERT_LE(read.upperFalloff - read.lowerFalloff, total + 1e-12) << context;

            // Laid out in order, give or take the rounding of the clamp. The clamp fits each
            // offset against the raw values of the other side; when one raw side alone is more
            // than T (a spread of 360° or more, a fall-off left long during a drag), an offset
            // comes out negative and the order is lost, so such states are left out.
            const bool falloffs = ring.showsUpperLowerFalloffThumbs();
            const double rawLowerSide =
                stored.lowerOffset + (falloffs ? stored.lowerFalloffOffset : 0.0);
            const double rawUpperSide =
                stored.upperOffset + (falloffs ? stored.upperFalloffOffset : 0.0);
            if (rawLowerSide > total || rawUpperSide > total) {
                ++overfullSides;
                continue;
            }
            ASSERT_LE(read.lowerFalloff, read.lower + 1e-12) << context;
            ASSERT_LE(read.lower, read.middle + 1e-12) << context;
            ASSERT_LE(read.middle, read.upper + 1e-12) << context;
            ASSERT_LE(read.upper, read.upperFalloff + 1e-12) << context;

            // Written back and read again, the range keeps its place on the circle. Left out: a
            // lower bound (or lower fall-off end) sitting exactly on its inner neighbour, which
            // is read back as a whole turn away, and, with centring on, a range the clamp has cut
            // unevenly, whose middle is re-centred when it is taken back.
            const bool lowerSideOpen =
                !ring.showsUpperLowerThumbs() ||
                (clamped.lowerOffset > 1e-9 &&
                 (!ring.showsUpperLowerFalloffThumbs() || clamped.lowerFalloffOffset > 1e-9));
            const bool centredAsRead = !ring.centerThumbWithinOffsets() ||
                                       std::fabs(clamped.upperOffset - clamped.lowerOffset) < 1e-12;
            if (!lowerSideOpen || !centredAsRead) {
                continue;
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
        }
    }
    // The round trip must really have been exercised, not skipped.
    EXPECT_GT(roundTrips, kSequences * kStepsPerSequence / 4);
    EXPECT_LT(overfullSides, kSequences * kStepsPerSequence / 4);
}

TEST(StraightProperties, RangeStaysOnTheScale)
{
    for (int sequence = 0; sequence < kSequences; ++sequence) {
        RandomSliderSession session(static_cast<std::uint64_t>(sequence) + 100000u, false);
        KVCircularSliderModel& straight = session.slider();
        const auto checkDrag = [&] {
            ASSERT_GE(straight.lastMouseValue(), 0.0);
            ASSERT_LE(straight.lastMouseValue(), 1.0);
        };
        for (int step = 0; step < kStepsPerSequence; ++step) {
            const std::string what = session.step(checkDrag);
            const std::string context = "sequence " + std::to_string(sequence) + " step " +
                                        std::to_string(step) + " " + what;
            const KVSliderValues read = straight.sliderValues();
            ASSERT_GE(read.lowerFalloff, 0.0) << context;
            ASSERT_LE(read.lowerFalloff, read.lower) << context;
            ASSERT_LE(read.lower, read.middle) << context;
            ASSERT_LE(read.middle, read.upper) << context;
            ASSERT_LE(read.upper, read.upperFalloff) << context;
            ASSERT_LE(read.upperFalloff, 1.0) << context;
        }
    }
}

} // namespace
} // namespace tintorra
