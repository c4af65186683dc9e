#pragma once

#include "colour/ColorComponents.h"
#include "colour/HueAngles.h"
#include "colour/KVColorGamut.h"
#include "engine/HueShiftParameters.h"

#include <cmath>
#include <cstdint>

namespace tintorra {

// How the two workers show a partially selected pixel in the highlight. They differ on purpose:
// the colour-table worker halves the highlight's lightness, the row worker takes a fifth of its
// chroma away.
enum class PartialHighlight { halveLightness, reduceChroma };

// The highlight of an LCh pixel: the gamut's most chromatic colour of the complementary hue, or
// black without a gamut; alpha 1.
inline ColorComponents lchHighlightColor(double hue, bool fullySelected, PartialHighlight partial,
                                         const KVColorGamut* gamut)
{
    if (gamut == nullptr) {
        return {0.0, 0.0, 0.0, 1.0};
    }
    ColorComponents highlight = gamut->maxChromaForHue(hue + kPi);
    highlight.alpha = 1.0;
    if (!fullySelected) {
        if (partial == PartialHighlight::halveLightness) {
            highlight.c0 *= 0.5;
        } else {
            highlight.c1 *= 0.8;
        }
    }
    return highlight;
}

// The highlight of an HSB or HSL pixel: complementary hue, saturation 0.5 (0.4 when partially
// selected), brightness or lightness 0.5, alpha 1.
inline ColorComponents hsbHighlightColor(double hue, bool fullySelected)
{
    return {wrapIntoRange(hue + 0.5, 0.0, 1.0), fullySelected ? 0.5 : 0.4, 0.5, 1.0};
}

// The highlight of an HCL pixel: complementary hue, the pixel's chroma, luma 0.5, alpha 1.
inline HclComponents hclHighlightColor(const HclComponents& colour)
{
    return {wrapIntoRange(colour.h + 0.5, 0.0, 1.0), colour.c, 0.5, 1.0, colour.saturation};
}

// Whether a selected pixel's lightness component is the one hovered in the spectrogram: within
// 1 on the LCh lightness scale, within 0.01 on the 0..1 scales (the record normalised).
inline bool isHoveredLightness(double lightness, const HueShiftParameters& p)
{
    const double tolerance = isLchColorMode(p.colorSpaceModel) ? 1.0 : 0.01;
    return std::fabs(lightness - p.brightnessToHighlight) < tolerance;
}

// The mask sample of a weight on the 8-bit scale, rounded half up.
inline unsigned maskSample(double weight)
{
    return static_cast<unsigned>(weight * 255.0 + 0.5);
}

// The black mask's sample of a weight sample c, and the white mask's, for a pixel of alpha a
// when the bitmap stores premultiplied samples. Integer arithmetic.
inline std::uint8_t premultipliedBlackMaskSample(unsigned c, unsigned a)
{
    return static_cast<std::uint8_t>(c * a / 255);
}

inline std::uint8_t premultipliedWhiteMaskSample(unsigned c, unsigned a)
{
    return static_cast<std::uint8_t>(255 - c * a / 255);
}

// (old x (255 - m) + new x m) / 255: the painted coverage m mixes a written sample with what was
// there. Integer arithmetic.
inline std::uint8_t mixByCoverage(unsigned oldSample, unsigned newSample, unsigned coverage)
{
    return static_cast<std::uint8_t>((oldSample * (255 - coverage) + newSample * coverage) / 255);
}

} // namespace tintorra
