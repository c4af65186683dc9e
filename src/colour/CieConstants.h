#pragma once

namespace tintorra {

// The CIE constants every conversion shares, written exactly as the stored gamut tables and
// parameter sets were produced with.

// 216 / 24389 and 24389 / 27; their product 8.0 is the lightness where L* turns linear.
inline constexpr double kCieEpsilon = 0.008856451679035631;
inline constexpr double kCieKappa = 903.2962962962963;
inline constexpr double kCieLightnessThreshold = 8.0;

// The D65 white of the Lab conversions (Yn = 1).
inline constexpr double kLabWhiteX = 0.95047;
inline constexpr double kLabWhiteY = 1.0;
inline constexpr double kLabWhiteZ = 1.08883;

// The D65 white of the Luv conversions as u', v', computed from the illuminant table's
// x = 0.31271, y = 0.32902. It differs from the Lab white in the fifth decimal; both are kept as
// they are because changing either would move every stored hue.
inline constexpr double kLuvWhiteU = 0.1978294495177785;
inline constexpr double kLuvWhiteV = 0.468332168241386;

} // namespace tintorra
