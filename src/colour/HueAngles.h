#pragma once

#include <cmath>
#include <numbers>

namespace tintorra {

// Angle arithmetic for hues: LCh hues are radians, cylinder hues and parameters are fractions of
// the circle, text shows degrees. All inline: the engine wraps and compares hues per pixel.

inline constexpr double kPi = std::numbers::pi;
inline constexpr double kTwoPi = 2.0 * std::numbers::pi;

// A point in the plane, for angles measured between rays.
struct AnglePoint {
    double x = 0.0;
    double y = 0.0;
};

namespace detail {

// Brings x into [low, high) by adding or subtracting the width, the way stored hues have always
// been wrapped. Values so far out that repeated steps would never finish are first brought near
// by fmod; NaN and infinities are handed back unchanged.
inline double wrapBySteps(double x, double low, double high)
{
    if (!std::isfinite(x)) {
        return x;
    }
    const double width = high - low;
    constexpr double kMaxSteps = 1.0e6;
    if (x < low - kMaxSteps * width || x >= high + kMaxSteps * width) {
        x = low + std::fmod(x - low, width);
    }
    while (x < low) {
        x += width;
    }
    while (x >= high) {
        x -= width;
    }
    return x;
}

// x - floor(x / period) * period, with the rounding cases of a tiny negative x sent to 0 so that
// the result really is in [0, period): the sum can land on the period itself, and where
// x / period rounds to -0 the floor leaves x as it is.
inline double wrapByFloor(double x, double period)
{
    const double wrapped = x - std::floor(x / period) * period;
    return wrapped >= period || wrapped < 0.0 ? 0.0 : wrapped;
}

// The same shifted to [-half, half).
inline double wrapSignedByFloor(double x, double period)
{
    const double half = 0.5 * period;
    const double wrapped = x - std::floor((x + half) / period) * period;
    return wrapped >= half ? wrapped - period : wrapped;
}

} // namespace detail

constexpr double degreesFromRadians(double radians)
{
    return radians * 180.0 / kPi;
}

constexpr double radiansFromDegrees(double degrees)
{
    return degrees * kPi / 180.0;
}

// [0, 360)
inline double wrapDegrees(double degrees)
{
    return detail::wrapByFloor(degrees, 360.0);
}

// [-180, 180)
inline double wrapDegreesSigned(double degrees)
{
    return detail::wrapSignedByFloor(degrees, 360.0);
}

// [0, 2 pi)
inline double wrapRadians(double radians)
{
    return detail::wrapByFloor(radians, kTwoPi);
}

// [-pi, pi)
inline double wrapRadiansSigned(double radians)
{
    return detail::wrapSignedByFloor(radians, kTwoPi);
}

inline double fractionalPart(double x)
{
    return x - std::floor(x);
}

// An LCh hue (radians, usually -pi..pi from atan2) as a fraction of the circle. Only negative
// angles are brought up; positive ones are divided as they are.
inline double hueFraction(double radians)
{
    if (radians < 0.0) {
        radians = detail::wrapBySteps(radians, 0.0, kTwoPi);
    }
    return radians / kTwoPi;
}

// The signed way from hue a to hue b along the shorter arc, in (-period/2, period/2]. Period 1.0
// for hue fractions, 2 pi for radians.
inline double hueDifference(double a, double b, double period)
{
    double d = detail::wrapByFloor(b, period) - detail::wrapByFloor(a, period);
    if (d <= -0.5 * period) {
        d += period;
    } else if (d > 0.5 * period) {
        d -= period;
    }
    return d;
}

// x brought into [low, high), low and high being the smaller and larger of a and b, by whole
// turns of (high - low). Equal bounds give a.
inline double wrapIntoRange(double x, double a, double b)
{
    if (a == b) {
        return a;
    }
    return a < b ? detail::wrapBySteps(x, a, b) : detail::wrapBySteps(x, b, a);
}

// The circular slider's form: the wrapped value measured from the first bound; 0 when the bounds
// are equal.
inline double wrapIntoRangeOffset(double x, double a, double b)
{
    if (a == b) {
        return 0.0;
    }
    return wrapIntoRange(x, a, b) - a;
}

// The nearest multiple of step, halves rounded up.
inline double roundToStep(double x, double step)
{
    return std::floor((x + 0.5 * step) / step) * step;
}

// The signed angle at p0 from the ray towards p1 to the ray towards p2, in -pi..pi
// (counter-clockwise positive in a y-up plane).
inline double angleBetween(AnglePoint p0, AnglePoint p1, AnglePoint p2)
{
    const double x1 = p1.x - p0.x, y1 = p1.y - p0.y;
    const double x2 = p2.x - p0.x, y2 = p2.y - p0.y;
    return std::atan2(x1 * y2 - y1 * x2, x1 * x2 + y1 * y2);
}

// A cubic approximation of atan2 used where speed matters more than the last digits (the LChab
// forward path and the blends). Its error reaches 0.0102 rad (0.58 degrees) near +-97 degrees
// and vanishes on the diagonals. The 1e-10 keeps (0, 0) away from
// 0/0: it then gives pi/2 plus the approximation's own error, never NaN.
constexpr double fastAtan2(double y, double x)
{
    const double ay = (y < 0.0 ? -y : y) + 1e-10;
    double angle;
    if (x >= 0.0) {
        const double r = (x - ay) / (x + ay);
        angle = 0.1963 * r * r * r - 0.9817 * r + 0.25 * kPi;
    } else {
        const double r = (x + ay) / (ay - x);
        angle = 0.1963 * r * r * r - 0.9817 * r + 0.75 * kPi;
    }
    return y < 0.0 ? -angle : angle;
}

// A coarser rational approximation of atan2 (error up to about 0.3 degrees).
constexpr double fastAtan2Coarse(double y, double x)
{
    constexpr double kCoefficient = static_cast<double>(0.28f); // stored in single precision
    if (x == 0.0) {
        if (y > 0.0) {
            return 0.5 * kPi;
        }
        return y == 0.0 ? 0.0 : -0.5 * kPi;
    }
    const double z = y / x;
    if ((z < 0.0 ? -z : z) < 1.0) {
        const double angle = z / (1.0 + kCoefficient * z * z);
        if (x < 0.0) {
            return y < 0.0 ? angle - kPi : angle + kPi;
        }
        return angle;
    }
    const double angle = 0.5 * kPi - z / (z * z + kCoefficient);
    return y < 0.0 ? angle - kPi : angle;
}

} // namespace tintorra
