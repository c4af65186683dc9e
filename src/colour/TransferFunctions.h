#pragma once

#include "colour/CieConstants.h"
#include "colour/ColorComponents.h"

#include <cmath>

namespace tintorra {

// Transfer curves between encoded and linear RGB, and the L* curve. Per-pixel code, kept inline.
// None of the curves clamps: the callers hand in 0..1.

// Plain power-law gamma on r, g and b; alpha is left alone. Negative input is not guarded (the
// program never produces any) and gives NaN from pow.
inline ColorComponents gammaDecode(ColorComponents rgb, double gamma)
{
    return {std::pow(rgb.c0, gamma), std::pow(rgb.c1, gamma), std::pow(rgb.c2, gamma), rgb.alpha};
}

inline ColorComponents gammaEncode(ColorComponents rgb, double gamma)
{
    const double exponent = 1.0 / gamma;
    return {std::pow(rgb.c0, exponent), std::pow(rgb.c1, exponent), std::pow(rgb.c2, exponent),
            rgb.alpha};
}

// sRGB: linear toe below 0.04045 (encoded) / 0.0031308 (linear), power 2.4 above.
inline double srgbDecode(double c)
{
    return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
}

inline double srgbEncode(double c)
{
    constexpr double kInverseExponent = 0.4166666666666667; // 1 / 2.4
    return c <= 0.0031308 ? 12.92 * c : 1.055 * std::pow(c, kInverseExponent) - 0.055;
}

inline ColorComponents srgbDecode(ColorComponents rgb)
{
    return {srgbDecode(rgb.c0), srgbDecode(rgb.c1), srgbDecode(rgb.c2), rgb.alpha};
}

inline ColorComponents srgbEncode(ColorComponents rgb)
{
    return {srgbEncode(rgb.c0), srgbEncode(rgb.c1), srgbEncode(rgb.c2), rgb.alpha};
}

// Rec. 709: linear toe below 0.081 (encoded) / 0.018 (linear), power 0.45 above.
inline double rec709Decode(double c)
{
    constexpr double kExponent = 2.2222222222222223; // 1 / 0.45
    return c <= 0.081 ? c / 4.5 : std::pow((c + 0.099) / 1.099, kExponent);
}

inline double rec709Encode(double c)
{
    return c <= 0.018 ? 4.5 * c : 1.099 * std::pow(c, 0.45) - 0.099;
}

inline ColorComponents rec709Decode(ColorComponents rgb)
{
    return {rec709Decode(rgb.c0), rec709Decode(rgb.c1), rec709Decode(rgb.c2), rgb.alpha};
}

inline ColorComponents rec709Encode(ColorComponents rgb)
{
    return {rec709Encode(rgb.c0), rec709Encode(rgb.c1), rec709Encode(rgb.c2), rgb.alpha};
}

// CIE L* of the luminance Y relative to the white Yn, scaled to 0..1 (L* / 100).
inline double luminanceToLightness(double Y, double Yn)
{
    const double t = Y / Yn;
    return t <= kCieEpsilon ? t * kCieKappa / 100.0 : 1.16 * std::cbrt(t) - 0.16;
}

// The inverse of luminanceToLightness (with Yn = 1) for 0..1, written as a polynomial so that
// the hot paths avoid a power: ((l + 0.16) / 1.16)^3 expanded, and a straight line on the toe.
constexpr double lightnessToLuminanceFast(double l)
{
    if (l > 0.08) {
        return ((0.6406576735413507 * l + 0.3075156832998482) * l + 0.04920250932797572) * l +
               0.002624133830825372;
    }
    return 0.1107419712070875 * l;
}

} // namespace tintorra
