#pragma once

#include <array>
#include <cstdint>
#include <optional>

namespace tintorra {

// The colour mode the engine measures and shifts in. The numbers are those of the parameter
// string and the settings, so they must not change.
enum class ColorSpaceModel : int {
    LChuv = 0,
    LChab = 1,
    HCL = 2,
    HSB = 3,
    HSL = 4,
};

inline constexpr std::array<ColorSpaceModel, 5> kColorSpaceModels{
    ColorSpaceModel::LChuv, ColorSpaceModel::LChab, ColorSpaceModel::HCL, ColorSpaceModel::HSB,
    ColorSpaceModel::HSL};

// The number a mode is stored as.
constexpr int colorSpaceModelNumber(ColorSpaceModel model)
{
    return static_cast<int>(model);
}

// The mode a stored number names; nothing for a number outside the enumeration.
constexpr std::optional<ColorSpaceModel> colorSpaceModelFromNumber(std::int64_t number)
{
    if (number < colorSpaceModelNumber(ColorSpaceModel::LChuv) ||
        number > colorSpaceModelNumber(ColorSpaceModel::HSL)) {
        return std::nullopt;
    }
    return static_cast<ColorSpaceModel>(number);
}

// The modes whose hue is an angle in radians, whose lightness runs 0..100 and which use a gamut.
constexpr bool isLchColorMode(ColorSpaceModel model)
{
    return model == ColorSpaceModel::LChuv || model == ColorSpaceModel::LChab;
}

} // namespace tintorra
