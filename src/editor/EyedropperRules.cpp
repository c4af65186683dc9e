#include "editor/EyedropperRules.h"

#include "colour/HueAngles.h"

#include <cmath>

namespace tintorra {

namespace {

constexpr double kHuePeriod = 1.0;

// The bounds and the hue unwrapped so that lower <= upper and the hue is not below lower.
struct UnwrappedRange {
    double upper;
    double lower;
    double hue;
};

UnwrappedRange unwrap(double upper, double lower, double hue)
{
    while (upper < lower) {
        upper += kHuePeriod;
    }
    // Bounds from a ring may lie outside [0, 1): the hue is taken on the turn that starts at the
    // lower bound.
    while (hue < lower) {
        hue += kHuePeriod;
    }
    while (hue >= lower + kHuePeriod) {
        hue -= kHuePeriod;
    }
    return {upper, lower, hue};
}

HueBoundMove nearerBoundTo(double upper, double lower, const UnwrappedRange& range)
{
    const double towardsLower = hueDifference(range.lower, range.hue, kHuePeriod);
    const double towardsUpper = hueDifference(range.upper, range.hue, kHuePeriod);
    if (std::fabs(towardsUpper) <= std::fabs(towardsLower)) {
        return {HueBoundMove::Bound::upper, upper + towardsUpper};
    }
    return {HueBoundMove::Bound::lower, lower + towardsLower};
}

} // namespace

HueBoundMove hueBoundToAdd(double upper, double lower, double hue)
{
    const UnwrappedRange range = unwrap(upper, lower, hue);
    if (range.lower <= range.hue && range.hue <= range.upper) {
        return {};
    }
    return nearerBoundTo(upper, lower, range);
}

HueBoundMove hueBoundToSubtract(double upper, double lower, double hue)
{
    const UnwrappedRange range = unwrap(upper, lower, hue);
    if (!(range.lower < range.hue && range.hue < range.upper)) {
        return {};
    }
    return nearerBoundTo(upper, lower, range);
}

} // namespace tintorra
