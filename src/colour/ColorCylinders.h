#pragma once

#include "colour/ColorComponents.h"
#include "colour/ColorMath.h"

#include <cmath>

namespace tintorra {

// The RGB-derived cylinders HSB, HSL and HCL, with the hue as a fraction of the circle. The
// forward conversions return pure red as hue 1.0 rather than 0.0; the reverse conversions wrap
// any hue into [0, 1) first, so both name the same colour. Per-pixel code, kept inline.

// Luma with the weights HCL uses (sRGB / Rec. 709 primaries).
constexpr double lumaHcl(double r, double g, double b)
{
    return 0.212671 * r + 0.71516 * g + 0.072169 * b;
}

// Luma with SMPTE 240M weights.
constexpr double lumaSmpte240(double r, double g, double b)
{
    return 0.2124 * r + 0.7011 * g + 0.0866 * b;
}

// Luma with the program's Rec. 601-style weights; 0.5864 and 0.1146 are the values the program
// has always used, not a typo for 0.587 and 0.114.
constexpr double lumaRec601(double r, double g, double b)
{
    return 0.299 * r + 0.5864 * g + 0.1146 * b;
}

namespace detail {

// The hue of a colour with delta = max - min > 0, in sixths of the circle, in (0, 6]: the
// sector is chosen by which channel is the minimum. Red falls into the last branch and gives 6.
constexpr double hueSixths(double r, double g, double b, double minimum, double delta)
{
    if (r == minimum) {
        return 3.0 - (g - b) / delta;
    }
    if (g != minimum) {
        return 1.0 - (r - g) / delta;
    }
    return 5.0 - (b - r) / delta;
}

// Any hue fraction into [0, 1) by whole turns; non-finite values are left for the sector test to
// reject.
inline double wrapHueFraction(double h)
{
    if (!std::isfinite(h)) {
        return h;
    }
    if (h < -1.0e6 || h >= 1.0e6) {
        h = std::fmod(h, 1.0);
    }
    while (h < 0.0) {
        h += 1.0;
    }
    while (h >= 1.0) {
        h -= 1.0;
    }
    return h;
}

// The fully saturated colour of chroma c at hue h (a fraction in [0, 1)) with its minimum at 0.
// A hue outside the six sectors (NaN) gives black.
inline ColorComponents hueChromaToRgb(double h, double c, double alpha)
{
    const double x6 = 6.0 * h;
    // fmod(x6, 2) for x6 in [0, 6), computed exactly without the cost of fmod (the halving,
    // floor and subtraction are all exact there; NaN stays NaN).
    const double x6Mod2 = x6 - 2.0 * std::floor(0.5 * x6);
    const double x = c * (1.0 - std::fabs(x6Mod2 - 1.0));
    if (x6 >= 0.0 && x6 < 1.0) {
        return {c, x, 0.0, alpha};
    }
    if (x6 >= 1.0 && x6 < 2.0) {
        return {x, c, 0.0, alpha};
    }
    if (x6 >= 2.0 && x6 < 3.0) {
        return {0.0, c, x, alpha};
    }
    if (x6 >= 3.0 && x6 < 4.0) {
        return {0.0, x, c, alpha};
    }
    if (x6 >= 4.0 && x6 < 5.0) {
        return {x, 0.0, c, alpha};
    }
    if (x6 >= 5.0 && x6 < 6.0) {
        return {c, 0.0, x, alpha};
    }
    return {0.0, 0.0, 0.0, alpha};
}

} // namespace detail

inline ColorComponents rgbToHsb(ColorComponents rgba)
{
    const double maximum = max3(rgba.c0, rgba.c1, rgba.c2);
    const double minimum = min3(rgba.c0, rgba.c1, rgba.c2);
    const double delta = maximum - minimum;
    if (delta == 0.0) {
        return {0.0, 0.0, maximum, rgba.alpha};
    }
    const double h = detail::hueSixths(rgba.c0, rgba.c1, rgba.c2, minimum, delta) / 6.0;
    return {h, delta / maximum, maximum, rgba.alpha};
}

inline ColorComponents hsbToRgb(ColorComponents hsba)
{
    const double h = detail::wrapHueFraction(hsba.c0);
    const double chroma = hsba.c1 * hsba.c2;
    const double m = hsba.c2 - chroma;
    const ColorComponents pure = detail::hueChromaToRgb(h, chroma, hsba.alpha);
    return {pure.c0 + m, pure.c1 + m, pure.c2 + m, hsba.alpha};
}

inline ColorComponents rgbToHsl(ColorComponents rgba)
{
    const double maximum = max3(rgba.c0, rgba.c1, rgba.c2);
    const double minimum = min3(rgba.c0, rgba.c1, rgba.c2);
    const double delta = maximum - minimum;
    const double l = 0.5 * (maximum + minimum);
    if (delta == 0.0) {
        return {0.0, 0.0, l, rgba.alpha};
    }
    const double h = detail::hueSixths(rgba.c0, rgba.c1, rgba.c2, minimum, delta) / 6.0;
    const double s = l < 0.5 ? delta / (maximum + minimum) : delta / (2.0 - maximum - minimum);
    return {h, s, l, rgba.alpha};
}

inline ColorComponents hslToRgb(ColorComponents hsla)
{
    const double h = detail::wrapHueFraction(hsla.c0);
    const double l = hsla.c2;
    const double chroma = (1.0 - std::fabs(2.0 * l - 1.0)) * hsla.c1;
    const double m = l - 0.5 * chroma;
    const ColorComponents pure = detail::hueChromaToRgb(h, chroma, hsla.alpha);
    return {pure.c0 + m, pure.c1 + m, pure.c2 + m, hsla.alpha};
}

// HCL: hue as in HSB, chroma max - min, luma with the HCL weights, and the HSB saturation of the
// same pixel as the fifth value (the selection's saturation test reads it).
inline HclComponents rgbToHcl(ColorComponents rgba)
{
    const double maximum = max3(rgba.c0, rgba.c1, rgba.c2);
    const double minimum = min3(rgba.c0, rgba.c1, rgba.c2);
    const double delta = maximum - minimum;
    const double luma = lumaHcl(rgba.c0, rgba.c1, rgba.c2);
    if (delta == 0.0) {
        return {0.0, 0.0, luma, rgba.alpha, 0.0};
    }
    const double h = detail::hueSixths(rgba.c0, rgba.c1, rgba.c2, minimum, delta) / 6.0;
    return {h, delta, luma, rgba.alpha, delta / maximum};
}

// Keeps the luma exactly and gives up chroma where the colour would leave 0..1: the pure colour
// of the hue and chroma is lifted by the missing luma, and scaled towards grey when that lift
// would push a channel below 0 or above 1.
inline ColorComponents hclToRgb(ColorComponents hcla)
{
    const double h = detail::wrapHueFraction(hcla.c0);
    const double chroma = hcla.c1;
    const double luma = hcla.c2;
    const ColorComponents pure = detail::hueChromaToRgb(h, chroma, hcla.alpha);
    double m = luma - lumaHcl(pure.c0, pure.c1, pure.c2);
    double scale = 1.0;
    if (m < 0.0) {
        scale = luma / (luma - m);
        m = 0.0;
    } else if (m + chroma > 1.0) {
        scale = (1.0 - luma) / (m + chroma - luma);
        m = 1.0 - chroma * scale;
    }
    return {pure.c0 * scale + m, pure.c1 * scale + m, pure.c2 * scale + m, hcla.alpha};
}

} // namespace tintorra
