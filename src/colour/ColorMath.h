#pragma once

namespace tintorra {

// Scalar helpers shared by the conversions. They are called per pixel, so they stay inline and
// constexpr; none of them checks its input beyond what is written.

constexpr double lerp(double a, double b, double t)
{
    return a + (b - a) * t;
}

constexpr float lerp(float a, float b, float t)
{
    return a + (b - a) * t;
}

constexpr double min3(double a, double b, double c)
{
    const double ab = a < b ? a : b;
    return ab < c ? ab : c;
}

constexpr double max3(double a, double b, double c)
{
    const double ab = a > b ? a : b;
    return ab > c ? ab : c;
}

constexpr double clamp(double value, double low, double high)
{
    return value < low ? low : (value > high ? high : value);
}

// Maps x linearly from [inLow, inHigh] onto [outLow, outHigh]. A collapsed input range has no
// slope: x at that point gives outHigh, anything else outLow. A collapsed output range gives
// outLow whatever x is.
constexpr double remap(double x, double inLow, double inHigh, double outLow, double outHigh)
{
    if (outLow == outHigh) {
        return outLow;
    }
    if (inLow == inHigh) {
        return x == inHigh ? outHigh : outLow;
    }
    return outLow + (outHigh - outLow) * (x - inLow) / (inHigh - inLow);
}

} // namespace tintorra
