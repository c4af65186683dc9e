#include "colour/ComponentPacking.h"

#include "colour/ColorMath.h"

#include <cmath>

namespace tintorra {

namespace {

// 0..1 with NaN sent to 0, so that the integer conversions below are always defined.
double unitInterval(double value)
{
    if (!(value > 0.0)) {
        return 0.0;
    }
    return value > 1.0 ? 1.0 : value;
}

// The equal-share factors: computed once on first use. Function-local statics are initialised
// thread-safely, and the value is the same whichever thread gets there first.
double packingFactor()
{
    static const double factor = std::nextafter(256.0, 0.0);
    return factor;
}

double byteFactor()
{
    static const double factor = std::nextafter(256.0f, 0.0f);
    return factor;
}

double wordFactor()
{
    static const double factor = std::nextafter(65536.0f, 0.0f);
    return factor;
}

std::uint8_t roundedByte(double value)
{
    return static_cast<std::uint8_t>(unitInterval(value) * 255.0 + 0.5);
}

std::uint16_t roundedWord(double value)
{
    return static_cast<std::uint16_t>(unitInterval(value) * 65535.0 + 0.5);
}

std::uint32_t packedByte(double value)
{
    return static_cast<std::uint32_t>(unitInterval(value) * packingFactor());
}

// Snaps to a multiple of 1/65535 in single precision, halves rounded up.
double requantised(double value)
{
    const float scaled = static_cast<float>(value) * 65535.0f;
    return static_cast<double>(std::floor(scaled + 0.5f) / 65535.0f);
}

bool outsideUnitRange(double value)
{
    return value < 0.0 || value > 1.0;
}

} // namespace

ColorComponents componentsFromBytes(std::uint8_t r, std::uint8_t g, std::uint8_t b,
                                    std::uint8_t alpha)
{
    return {r / 255.0, g / 255.0, b / 255.0, alpha / 255.0};
}

ColorComponents componentsFromWords(std::uint16_t r, std::uint16_t g, std::uint16_t b,
                                    std::uint16_t alpha)
{
    return {r / 65535.0, g / 65535.0, b / 65535.0, alpha / 65535.0};
}

ColorComponents componentsFromBytes(std::uint32_t packed)
{
    return componentsFromBytes(static_cast<std::uint8_t>(packed & 0xffu),
                               static_cast<std::uint8_t>((packed >> 8) & 0xffu),
                               static_cast<std::uint8_t>((packed >> 16) & 0xffu),
                               static_cast<std::uint8_t>((packed >> 24) & 0xffu));
}

void bytesFromComponents(ColorComponents rgba, std::uint8_t& r, std::uint8_t& g, std::uint8_t& b,
                         std::uint8_t* alpha)
{
    r = roundedByte(rgba.c0);
    g = roundedByte(rgba.c1);
    b = roundedByte(rgba.c2);
    if (alpha != nullptr) {
        *alpha = roundedByte(rgba.alpha);
    }
}

void wordsFromComponents(ColorComponents rgba, std::uint16_t& r, std::uint16_t& g, std::uint16_t& b,
                         std::uint16_t* alpha)
{
    r = roundedWord(rgba.c0);
    g = roundedWord(rgba.c1);
    b = roundedWord(rgba.c2);
    if (alpha != nullptr) {
        *alpha = roundedWord(rgba.alpha);
    }
}

std::uint32_t packedFromComponents(ColorComponents rgba)
{
    return packedByte(rgba.c0) | (packedByte(rgba.c1) << 8) | (packedByte(rgba.c2) << 16) |
           (packedByte(rgba.alpha) << 24);
}

std::uint8_t byteFromComponent(double value)
{
    return static_cast<std::uint8_t>(unitInterval(value) * byteFactor());
}

std::uint16_t wordFromComponent(double value)
{
    return static_cast<std::uint16_t>(unitInterval(value) * wordFactor());
}

ColorComponents clampComponents(ColorComponents rgba)
{
    return {clamp(rgba.c0, 0.0, 1.0), clamp(rgba.c1, 0.0, 1.0), clamp(rgba.c2, 0.0, 1.0),
            clamp(rgba.alpha, 0.0, 1.0)};
}

void clampTriple(double& a, double& b, double& c)
{
    a = clamp(a, 0.0, 1.0);
    b = clamp(b, 0.0, 1.0);
    c = clamp(c, 0.0, 1.0);
}

ColorComponents requantiseOutOfRange(ColorComponents rgb)
{
    double channels[3] = {rgb.c0, rgb.c1, rgb.c2};
    for (double& channel : channels) {
        if (outsideUnitRange(channel)) {
            channel = requantised(channel);
            if (outsideUnitRange(channel)) {
                return {0.0, 0.0, 0.0, rgb.alpha};
            }
        }
    }
    return {channels[0], channels[1], channels[2], rgb.alpha};
}

ColorComponents normaliseToUnitRange(ColorComponents rgb)
{
    const double smallest = min3(rgb.c0, rgb.c1, rgb.c2);
    const double largest = max3(rgb.c0, rgb.c1, rgb.c2);
    if (smallest >= 0.0 && largest <= 1.0) {
        return rgb;
    }
    const double shift = smallest < 0.0 ? smallest : 0.0;
    const double range = (largest > 1.0 ? largest : 1.0) - shift;
    return {(rgb.c0 - shift) / range, (rgb.c1 - shift) / range, (rgb.c2 - shift) / range,
            rgb.alpha};
}

ColorComponents normaliseToUnitRangeStretched(ColorComponents rgb)
{
    const double smallest = min3(rgb.c0, rgb.c1, rgb.c2);
    const double range = max3(rgb.c0, rgb.c1, rgb.c2) - smallest;
    if (range == 0.0) {
        return {0.0, 0.0, 0.0, rgb.alpha};
    }
    return {(rgb.c0 - smallest) / range, (rgb.c1 - smallest) / range, (rgb.c2 - smallest) / range,
            rgb.alpha};
}

ColorComponents unpremultiply(ColorComponents rgba)
{
    if (rgba.alpha > 0.0) {
        return {rgba.c0 / rgba.alpha, rgba.c1 / rgba.alpha, rgba.c2 / rgba.alpha, rgba.alpha};
    }
    return rgba;
}

} // namespace tintorra
