#include "controls/KVSliderValues.h"

#include "colour/ColorConversions.h"

#include <cmath>

namespace tintorra {

namespace {

// Beyond this gap the bounds are not a real hue range; stepping by whole turns would take too
// long (or, once the step no longer changes the sum, never end), so the turns are added at once.
constexpr double kLargestSteppedGap = 1.0e6;

} // namespace

KVValueDictionary dictionaryFromValues(const KVSliderValues& values)
{
    return {
        {kSliderUpperFalloffKey, values.upperFalloff},
        {kSliderUpperKey, values.upper},
        {kSliderMiddleKey, values.middle},
        {kSliderLowerKey, values.lower},
        {kSliderLowerFalloffKey, values.lowerFalloff},
    };
}

double middleFromBounds(double upper, double lower)
{
    double m = upper;
    if (lower - m > kLargestSteppedGap) {
        m += std::ceil(lower - m);
        // Bounds of wildly different sizes lose the turns to rounding: stepping from there
        // would count up to the lower bound one turn at a time.
        if (lower - m > kLargestSteppedGap) {
            m = lower;
        }
    }
    while (lower > m) {
        const double next = m + 1.0;
        if (next == m) {
            m = lower;
            break;
        }
        m = next;
    }
    return wrapIntoRange((m + lower) / 2.0, 0.0, 1.0);
}

KVSliderValues valuesFromDictionary(const KVValueDictionary& dictionary)
{
    KVSliderValues values;
    values.upperFalloff = doubleForKey(dictionary, kSliderUpperFalloffKey);
    values.upper = doubleForKey(dictionary, kSliderUpperKey);
    values.lower = doubleForKey(dictionary, kSliderLowerKey);
    values.lowerFalloff = doubleForKey(dictionary, kSliderLowerFalloffKey);
    const auto middle = dictionary.find(std::string_view(kSliderMiddleKey));
    values.middle =
        middle != dictionary.end() ? middle->second : middleFromBounds(values.upper, values.lower);
    return values;
}

KVSliderValues valuesFromOffsets(const KVSliderOffsets& offsets)
{
    KVSliderValues values;
    values.middle = offsets.middleValue;
    values.upper = values.middle + offsets.upperOffset;
    values.lower = values.middle - offsets.lowerOffset;
    values.upperFalloff = values.upper + offsets.upperFalloffOffset;
    values.lowerFalloff = values.lower - offsets.lowerFalloffOffset;
    return values;
}

} // namespace tintorra
