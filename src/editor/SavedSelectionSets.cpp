#include "editor/SavedSelectionSets.h"

#include <cstdio>

namespace tintorra {

namespace {

constexpr int kBoundDegrees = 10;
constexpr int kFalloffDegrees = 20;

double normalizedDegrees(double degrees)
{
    while (degrees < 0.0) {
        degrees += 360.0;
    }
    return degrees / 360.0;
}

} // namespace

std::string namedHueSetName(const NamedHue& hue)
{
    char digits[16];
    std::snprintf(digits, sizeof digits, "%03d", hue.degrees);
    return std::string(digits) + "\u00B0 " + std::string(hue.name);
}

KVSliderValues namedHueRange(int degrees)
{
    const double d = degrees;
    return {normalizedDegrees(d + kFalloffDegrees), normalizedDegrees(d + kBoundDegrees),
            normalizedDegrees(d), normalizedDegrees(d - kBoundDegrees),
            normalizedDegrees(d - kFalloffDegrees)};
}

KVSliderValues fullSelectionRange()
{
    return {1.0, 1.0, 0.5, 0.0, 0.0};
}

} // namespace tintorra
