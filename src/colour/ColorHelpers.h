#pragma once

#include <string_view>

namespace tintorra {

// Where an interface colour lives: calibrated or device, RGB or grey ("white").
enum class RgbaColorSpace {
    calibratedRgb,
    deviceRgb,
    calibratedWhite,
    deviceWhite,
};

// A plain interface colour. Grey colours keep their level in all three of red, green and blue.
struct RgbaColor {
    double red = 0.0;
    double green = 0.0;
    double blue = 0.0;
    double alpha = 1.0;
    RgbaColorSpace space = RgbaColorSpace::calibratedRgb;

    static RgbaColor calibratedRgb(double red, double green, double blue, double alpha = 1.0)
    {
        return {red, green, blue, alpha, RgbaColorSpace::calibratedRgb};
    }
    static RgbaColor deviceRgb(double red, double green, double blue, double alpha = 1.0)
    {
        return {red, green, blue, alpha, RgbaColorSpace::deviceRgb};
    }
    static RgbaColor calibratedWhite(double white, double alpha = 1.0)
    {
        return {white, white, white, alpha, RgbaColorSpace::calibratedWhite};
    }
    static RgbaColor deviceWhite(double white, double alpha = 1.0)
    {
        return {white, white, white, alpha, RgbaColorSpace::deviceWhite};
    }

    bool isDevice() const
    {
        return space == RgbaColorSpace::deviceRgb || space == RgbaColorSpace::deviceWhite;
    }
    bool isWhite() const
    {
        return space == RgbaColorSpace::calibratedWhite || space == RgbaColorSpace::deviceWhite;
    }

    friend bool operator==(const RgbaColor&, const RgbaColor&) = default;
};

// A calibrated RGB colour from a hexadecimal integer such as "FF8000": red in bits 16-23, green in
// 8-15, blue in 0-7, each divided by 255 in single precision; alpha 1. Leading white space and a
// "0x" prefix are accepted; no string or no digits give black, a value too large for 32 bits white.
RgbaColor colorFromHexRGB(std::string_view hex);
RgbaColor colorFromHexRGB(const char* hex);

// The HSB brightness of a colour (the largest of red, green and blue; a grey's level).
double brightness(const RgbaColor& color);

// White on colours darker than brightness 0.73, black otherwise, opaque; a device grey for a
// device colour, a calibrated grey for any other.
RgbaColor contrastingBlackOrWhite(const RgbaColor& color);

} // namespace tintorra
