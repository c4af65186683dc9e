#pragma once

#include "colour/ColorComponents.h"

namespace tintorra {

// Blending between an unshifted colour and its shifted result, for partially selected pixels.
// The mode says how hue and chroma travel; the other components and alpha always interpolate
// linearly.
enum ColorBlendMode : int {
    // Chroma runs down to grey along the first hue and up along the second, so every result has
    // one of the two hues.
    kBlendThroughGrey = 0,
    // Hue and chroma as a point in the plane, interpolated on the straight line between them.
    kBlendCartesian = 1,
    // Any other value: the hue turns along the shorter arc, chroma interpolates linearly.
    kBlendAlongHue = 2,
};

// HSB / HSL: (hue fraction, saturation, brightness or lightness, alpha).
ColorComponents blendColors(int mode, ColorComponents from, ColorComponents to, double t);

// The five-value HCL record: (hue fraction, chroma, luma, alpha, saturation).
HclComponents blendColors(int mode, HclComponents from, HclComponents to, double t);

// LCh: (L, C, hue in radians, alpha).
ColorComponents blendColorsLch(int mode, ColorComponents from, ColorComponents to, double t);

} // namespace tintorra
