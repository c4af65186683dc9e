#pragma once

#include "controls/KVValueDictionary.h"

namespace tintorra {

// The five absolute values of a range on a slider's scale. On the hue ring the bounds are
// relative to the (wrapped) middle and may leave [0, 1): an upper bound of 1.05 stays 1.05.
struct KVSliderValues {
    double upperFalloff = 0.0;
    double upper = 0.0;
    double middle = 0.0;
    double lower = 0.0;
    double lowerFalloff = 0.0;

    friend constexpr bool operator==(const KVSliderValues&, const KVSliderValues&) = default;
};

// How a range slider stores its range: the absolute middle and four non-negative distances
// (middle up to upper, upper up to upperFalloff, middle down to lower, lower down to
// lowerFalloff). Bounds are always derived, never stored.
struct KVSliderOffsets {
    double upperFalloffOffset = 0.0;
    double upperOffset = 0.0;
    double middleValue = 0.0;
    double lowerOffset = 0.0;
    double lowerFalloffOffset = 0.0;

    friend constexpr bool operator==(const KVSliderOffsets&, const KVSliderOffsets&) = default;
};

inline constexpr const char* kSliderUpperFalloffKey = "upperFalloff";
inline constexpr const char* kSliderUpperKey = "upper";
inline constexpr const char* kSliderMiddleKey = "middle";
inline constexpr const char* kSliderLowerKey = "lower";
inline constexpr const char* kSliderLowerFalloffKey = "lowerFalloff";

// The five numbers under "upperFalloff", "upper", "middle", "lower" and "lowerFalloff", exactly as
// the record holds them.
KVValueDictionary dictionaryFromValues(const KVSliderValues& values);

// The reverse. A missing number reads as 0.0, except the middle: without "middle" it is derived
// from the bounds on a scale of period 1.0 (saved settings and the parameter string carry only
// the bounds), as the midpoint of lower and the first upper at or above it, wrapped into [0, 1).
KVSliderValues valuesFromDictionary(const KVValueDictionary& dictionary);

// The middle derived from a pair of bounds on a circle of period 1.0.
double middleFromBounds(double upper, double lower);

// The bounds derived from offsets: upper = middle + upperOffset, upperFalloff = upper +
// upperFalloffOffset, and the mirror for the lower side. Nothing is wrapped or clamped.
KVSliderValues valuesFromOffsets(const KVSliderOffsets& offsets);

} // namespace tintorra
