#pragma once

#include "controls/KVSliderValues.h"

#include <array>
#include <string>
#include <string_view>

namespace tintorra {

struct NamedHue {
    int degrees;
    std::string_view name;
};

// The eighteen hues the default saved selection sets are named after, every 20 degrees.
inline constexpr std::array<NamedHue, 18> kNamedHues{{
    {0, "Red"},
    {20, "Rust"},
    {40, "Orange"},
    {60, "Tangerine"},
    {80, "Yellow"},
    {100, "Lime"},
    {120, "Green"},
    {140, "Emerald"},
    {160, "Aquamarine"},
    {180, "Turquoise"},
    {200, "Cyan"},
    {220, "Light Blue"},
    {240, "Blue"},
    {260, "Indigo"},
    {280, "Purple"},
    {300, "Violet"},
    {320, "Magenta"},
    {340, "Raspberry"},
}};

// Keys of a saved set.
inline constexpr const char* kSelectionSetHueKey = "hue";
inline constexpr const char* kSelectionSetSaturationKey = "saturation";
inline constexpr const char* kSelectionSetLightnessKey = "lightness";

// "000° Red": the degrees in three digits, then the name.
std::string namedHueSetName(const NamedHue& hue);

// The hue range of a named hue's set: 10 degrees either side fully selected, 10 more fading.
// Each bound is brought into [0, 1] on its own (negative degrees gain a turn, nothing is reduced
// from above), so the set of 0 degrees has lower bounds above its middle.
KVSliderValues namedHueRange(int degrees);

// Saturation and lightness of every default set: the whole scale.
KVSliderValues fullSelectionRange();

} // namespace tintorra
