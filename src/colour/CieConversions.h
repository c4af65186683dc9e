#pragma once

#include "colour/CieConstants.h"
#include "colour/ColorComponents.h"
#include "colour/HueAngles.h"
#include "colour/Matrix3.h"
#include "colour/WorkingSpaces.h"

#include <cmath>

namespace tintorra {

// Linear RGB <-> CIE XYZ <-> Lab / Luv <-> LCh. The matrices come from the caller (the working
// space of the image); everything else is the fixed D65 whites of CieConstants.h. Per-pixel code,
// kept inline. LCh hues are radians in -pi..pi as atan2 returns them.

// X, Y, Z = M (r, g, b). Linear RGB in, no clamping.
inline ColorComponents rgbToXyz(ColorComponents rgba, const Matrix3& M)
{
    return {M[0] * rgba.c0 + M[1] * rgba.c1 + M[2] * rgba.c2,
            M[3] * rgba.c0 + M[4] * rgba.c1 + M[5] * rgba.c2,
            M[6] * rgba.c0 + M[7] * rgba.c1 + M[8] * rgba.c2, rgba.alpha};
}

// r, g, b = MI (X, Y, Z), then r, g, b and alpha clamped to 0..1: what leaves here is always a
// writable colour.
inline ColorComponents xyzToRgb(ColorComponents xyza, const Matrix3& MI)
{
    const auto unit = [](double v) { return v < 0.0 ? 0.0 : (v > 1.0 ? 1.0 : v); };
    return {unit(MI[0] * xyza.c0 + MI[1] * xyza.c1 + MI[2] * xyza.c2),
            unit(MI[3] * xyza.c0 + MI[4] * xyza.c1 + MI[5] * xyza.c2),
            unit(MI[6] * xyza.c0 + MI[7] * xyza.c1 + MI[8] * xyza.c2), unit(xyza.alpha)};
}

// The same with the matrix built from a working space first (and inverted for the way back).
// Not for per-pixel use: each call builds the matrix.
ColorComponents rgbToXyzFromChromaticities(ColorComponents rgba,
                                           const ColorSpaceChromaticities& chromaticities);
ColorComponents xyzToRgbFromChromaticities(ColorComponents xyza,
                                           const ColorSpaceChromaticities& chromaticities);

namespace detail {

inline double labF(double t)
{
    return t > kCieEpsilon ? std::cbrt(t) : (kCieKappa * t + 16.0) / 116.0;
}

inline double labFInverse(double f)
{
    const double cube = f * f * f;
    return cube > kCieEpsilon ? cube : (116.0 * f - 16.0) / kCieKappa;
}

// Y from L*: cubic above the threshold 8, linear below (shared by Lab and Luv).
inline double luminanceFromLightness(double L)
{
    if (L > kCieLightnessThreshold) {
        const double f = (L + 16.0) / 116.0;
        return f * f * f;
    }
    return L / kCieKappa;
}

} // namespace detail

inline ColorComponents xyzToLab(ColorComponents xyza)
{
    if (xyza.c0 == 0.0 && xyza.c1 == 0.0 && xyza.c2 == 0.0) {
        return {0.0, 0.0, 0.0, xyza.alpha};
    }
    const double fx = detail::labF(xyza.c0 / kLabWhiteX);
    const double fy = detail::labF(xyza.c1); // Yn = 1
    const double fz = detail::labF(xyza.c2 / kLabWhiteZ);
    return {116.0 * fy - 16.0, 500.0 * (fx - fy), 200.0 * (fy - fz), xyza.alpha};
}

inline ColorComponents labToXyz(ColorComponents laba)
{
    const double fy = (laba.c0 + 16.0) / 116.0;
    const double fx = laba.c1 / 500.0 + fy;
    const double fz = fy - laba.c2 / 200.0;
    return {kLabWhiteX * detail::labFInverse(fx), detail::luminanceFromLightness(laba.c0),
            kLabWhiteZ * detail::labFInverse(fz), laba.alpha};
}

inline ColorComponents xyzToLuv(ColorComponents xyza)
{
    const double X = xyza.c0, Y = xyza.c1, Z = xyza.c2;
    if (X == 0.0 && Y == 0.0 && Z == 0.0) {
        return {0.0, 0.0, 0.0, xyza.alpha};
    }
    const double d = X + 15.0 * Y + 3.0 * Z;
    const double uPrime = 4.0 * X / d;
    const double vPrime = 9.0 * Y / d;
    const double L = Y > kCieEpsilon ? 116.0 * std::cbrt(Y) - 16.0 : kCieKappa * Y;
    return {L, 13.0 * L * (uPrime - kLuvWhiteU), 13.0 * L * (vPrime - kLuvWhiteV), xyza.alpha};
}

// Non-positive lightness is black. X and Z that come out negative (colours outside the spectrum
// locus) are set to 0.
inline ColorComponents luvToXyz(ColorComponents luva)
{
    const double L = luva.c0;
    if (L <= 0.0) {
        return {0.0, 0.0, 0.0, luva.alpha};
    }
    const double uPrime = luva.c1 / (13.0 * L) + kLuvWhiteU;
    const double vPrime = luva.c2 / (13.0 * L) + kLuvWhiteV;
    const double Y = detail::luminanceFromLightness(L);
    const double X = 9.0 * uPrime / (4.0 * vPrime) * Y;
    const double Z = (12.0 - 3.0 * uPrime - 20.0 * vPrime) / (4.0 * vPrime) * Y;
    return {X < 0.0 ? 0.0 : X, Y, Z < 0.0 ? 0.0 : Z, luva.alpha};
}

// The textbook arrangement of the same inversion, without the clamping of X and Z. Non-positive
// lightness is black here too (the formula would divide 0 by 0 there).
inline ColorComponents luvToXyzAlternative(ColorComponents luva)
{
    const double L = luva.c0, u = luva.c1, v = luva.c2;
    if (L <= 0.0) {
        return {0.0, 0.0, 0.0, luva.alpha};
    }
    const double Y = detail::luminanceFromLightness(L);
    const double a = (52.0 * L / (u + 13.0 * L * kLuvWhiteU) - 1.0) / 3.0;
    const double b = -5.0 * Y;
    const double d = Y * (39.0 * L / (v + 13.0 * L * kLuvWhiteV) - 5.0);
    const double X = (d - b) / (a + 1.0 / 3.0);
    return {X, Y, a * X + b, luva.alpha};
}

// Cartesian (L, a, b) or (L, u, v) to polar (L, C, h) with the exact arctangent. Achromatic
// input gets hue 0.
inline ColorComponents labToLch(ColorComponents laba)
{
    return {laba.c0, std::sqrt(laba.c1 * laba.c1 + laba.c2 * laba.c2), std::atan2(laba.c2, laba.c1),
            laba.alpha};
}

inline ColorComponents luvToLch(ColorComponents luva)
{
    return labToLch(luva);
}

// As labToLch with fastAtan2: hue error up to 0.58 degrees, and achromatic input gets
// about pi/2 instead of 0.
inline ColorComponents labToLchFast(ColorComponents laba)
{
    return {laba.c0, std::sqrt(laba.c1 * laba.c1 + laba.c2 * laba.c2), fastAtan2(laba.c2, laba.c1),
            laba.alpha};
}

inline ColorComponents lchToLab(ColorComponents lcha)
{
    return {lcha.c0, lcha.c1 * std::cos(lcha.c2), lcha.c1 * std::sin(lcha.c2), lcha.alpha};
}

inline ColorComponents lchToLuv(ColorComponents lcha)
{
    return lchToLab(lcha);
}

// Chroma relative to lightness, C / L. Black (L <= 0) has no saturation and gets 0.
inline double saturationFromLab(ColorComponents laba)
{
    return laba.c0 > 0.0 ? std::hypot(laba.c1, laba.c2) / laba.c0 : 0.0;
}

inline double chromaFromLab(ColorComponents laba)
{
    return std::hypot(laba.c1, laba.c2);
}

// (L, s, h) with s = C / L (0 for L <= 0) and the exact hue, and back.
inline ColorComponents labToLsh(ColorComponents laba)
{
    return {laba.c0, saturationFromLab(laba), std::atan2(laba.c2, laba.c1), laba.alpha};
}

inline ColorComponents lshToLab(ColorComponents lsha)
{
    const double chroma = lsha.c1 * lsha.c0;
    return {lsha.c0, chroma * std::cos(lsha.c2), chroma * std::sin(lsha.c2), lsha.alpha};
}

// Chromaticity x, y of an XYZ colour; the equal-energy point (1/3, 1/3) for X = Y = Z = 0.
inline void chromaticityFromXyz(double X, double Y, double Z, double& x, double& y)
{
    const double sum = X + Y + Z;
    if (X == 0.0 && Y == 0.0 && Z == 0.0) {
        x = 1.0 / 3.0;
        y = 1.0 / 3.0;
        return;
    }
    x = X / sum;
    y = Y / sum;
}

// The same as an xyY colour (x, y, Y, alpha).
inline ColorComponents chromaticityFromXyz(ColorComponents xyza)
{
    ColorComponents xyY{0.0, 0.0, xyza.c1, xyza.alpha};
    chromaticityFromXyz(xyza.c0, xyza.c1, xyza.c2, xyY.c0, xyY.c1);
    return xyY;
}

// XYZ with Y = 1 of the chromaticity (x, y); all zero when y = 0.
inline ColorComponents xyzFromChromaticity(double x, double y)
{
    if (y == 0.0) {
        return {0.0, 0.0, 0.0, 1.0};
    }
    return {x / y, 1.0, (1.0 - x - y) / y, 1.0};
}

// XYZ of the chromaticity (x, y) at luminance Y. The caller guarantees y != 0.
inline ColorComponents xyzFromChromaticityAndLuminance(double x, double y, double Y)
{
    const double scale = Y / y;
    return {x * scale, Y, (1.0 - x - y) * scale, 1.0};
}

// The same for input that may have y = 0, which gives (0, 0, 0).
inline ColorComponents xyzFromChromaticityAndLuminanceOrBlack(double x, double y, double Y)
{
    if (y == 0.0) {
        return {0.0, 0.0, 0.0, 1.0};
    }
    return xyzFromChromaticityAndLuminance(x, y, Y);
}

// The paths the engine runs per pixel. Forward LChuv uses the exact arctangent, forward LChab the
// fast one; the asymmetry is kept because the stored gamut tables and parameters depend on it.
inline ColorComponents rgbToLchuv(ColorComponents rgba, const Matrix3& M)
{
    return luvToLch(xyzToLuv(rgbToXyz(rgba, M)));
}

inline ColorComponents rgbToLchab(ColorComponents rgba, const Matrix3& M)
{
    return labToLchFast(xyzToLab(rgbToXyz(rgba, M)));
}

inline ColorComponents lchuvToRgb(ColorComponents lcha, const Matrix3& MI)
{
    return xyzToRgb(luvToXyz(lchToLuv(lcha)), MI);
}

inline ColorComponents lchabToRgb(ColorComponents lcha, const Matrix3& MI)
{
    return xyzToRgb(labToXyz(lchToLab(lcha)), MI);
}

} // namespace tintorra
