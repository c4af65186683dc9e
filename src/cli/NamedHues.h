#pragma once

#include <array>
#include <string_view>

namespace tintorra::cli {

struct NamedHue {
    int degrees;
    std::string_view name;
};

// The eighteen hues the editor's saved selection sets are named after, every 20 degrees.
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

} // namespace tintorra::cli
