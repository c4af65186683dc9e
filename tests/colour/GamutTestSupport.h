#pragma once

// Textbook CIE conversions for checking gamut tables, written out independently of the program's
// own conversions and with the exact CIE constants instead of the rounded ones the chroma search
// uses. Nothing is clamped, so a colour outside the RGB cube shows as a channel outside 0..1.

#include "colour/ColorComponents.h"
#include "colour/Matrix3.h"

#include <algorithm>
#include <cmath>

namespace tintorra::testSupport {

inline constexpr double kEpsilon = 216.0 / 24389.0;
inline constexpr double kKappa = 24389.0 / 27.0;
inline constexpr double kXn = 0.95047;
inline constexpr double kZn = 1.08883;
// u', v' of the D65 white x = 0.31271, y = 0.32902.
inline constexpr double kUnPrime = 4.0 * 0.31271 / (-2.0 * 0.31271 + 12.0 * 0.32902 + 3.0);
inline constexpr double kVnPrime = 9.0 * 0.32902 / (-2.0 * 0.31271 + 12.0 * 0.32902 + 3.0);

struct Rgb {
    double r;
    double g;
    double b;

    double smallest() const { return std::min({r, g, b}); }
    double largest() const { return std::max({r, g, b}); }
    bool within(double low, double high) const { return smallest() >= low && largest() <= high; }
};

inline Rgb xyzToLinearRgb(double X, double Y, double Z, const Matrix3& MI)
{
    return {MI[0] * X + MI[1] * Y + MI[2] * Z, MI[3] * X + MI[4] * Y + MI[5] * Z,
            MI[6] * X + MI[7] * Y + MI[8] * Z};
}

inline double luminanceOfLightness(double L)
{
    return L > kKappa * kEpsilon ? std::pow((L + 16.0) / 116.0, 3.0) : L / kKappa;
}

inline Rgb lchabToLinearRgb(double L, double C, double h, const Matrix3& MI)
{
    const double a = C * std::cos(h);
    const double b = C * std::sin(h);
    const double fy = (L + 16.0) / 116.0;
    const double fx = fy + a / 500.0;
    const double fz = fy - b / 200.0;
    const auto inverse = [](double f) {
        const double f3 = f * f * f;
        return f3 > kEpsilon ? f3 : (116.0 * f - 16.0) / kKappa;
    };
    return xyzToLinearRgb(kXn * inverse(fx), luminanceOfLightness(L), kZn * inverse(fz), MI);
}

inline Rgb lchuvToLinearRgb(double L, double C, double h, const Matrix3& MI)
{
    const double u = C * std::cos(h);
    const double v = C * std::sin(h);
    const double uPrime = u / (13.0 * L) + kUnPrime;
    const double vPrime = v / (13.0 * L) + kVnPrime;
    const double Y = luminanceOfLightness(L);
    const double X = Y * 9.0 * uPrime / (4.0 * vPrime);
    const double Z = Y * (12.0 - 3.0 * uPrime - 20.0 * vPrime) / (4.0 * vPrime);
    return xyzToLinearRgb(X, Y, Z, MI);
}

inline Rgb lchToLinearRgb(bool lab, double L, double C, double h, const Matrix3& MI)
{
    return lab ? lchabToLinearRgb(L, C, h, MI) : lchuvToLinearRgb(L, C, h, MI);
}

// LCh (hue in radians, -pi..pi) of a linear RGB colour.
inline ColorComponents linearRgbToLch(bool lab, double r, double g, double b, const Matrix3& M)
{
    const double X = M[0] * r + M[1] * g + M[2] * b;
    const double Y = M[3] * r + M[4] * g + M[5] * b;
    const double Z = M[6] * r + M[7] * g + M[8] * b;
    const auto f = [](double t) {
        return t > kEpsilon ? std::cbrt(t) : (kKappa * t + 16.0) / 116.0;
    };
    const double L = 116.0 * f(Y) - 16.0;
    double c1 = 0.0;
    double c2 = 0.0;
    if (lab) {
        c1 = 500.0 * (f(X / kXn) - f(Y));
        c2 = 200.0 * (f(Y) - f(Z / kZn));
    } else {
        const double d = X + 15.0 * Y + 3.0 * Z;
        c1 = 13.0 * L * (4.0 * X / d - kUnPrime);
        c2 = 13.0 * L * (9.0 * Y / d - kVnPrime);
    }
    return {L, std::hypot(c1, c2), std::atan2(c2, c1), 1.0};
}

} // namespace tintorra::testSupport
