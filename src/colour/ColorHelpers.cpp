#include "colour/ColorHelpers.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace tintorra {

namespace {

int hexDigitValue(char c)
{
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1;
}

bool isSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

// Reads a hexadecimal integer as a text scanner does: white space skipped, an optional 0x, then
// digits; saturates at the largest 32-bit value; 0 when there are no digits.
std::uint32_t scanHexInt(std::string_view text)
{
    std::size_t at = 0;
    while (at < text.size() && isSpace(text[at])) {
        ++at;
    }
    const bool prefixed = text.size() - at >= 3 && text[at] == '0' &&
                          (text[at + 1] == 'x' || text[at + 1] == 'X') &&
                          hexDigitValue(text[at + 2]) >= 0;
    if (prefixed) {
        at += 2;
    }
    std::uint64_t value = 0;
    bool saturated = false;
    for (; at < text.size() && hexDigitValue(text[at]) >= 0; ++at) {
        value = value * 16 + static_cast<std::uint64_t>(hexDigitValue(text[at]));
        if (value > std::numeric_limits<std::uint32_t>::max()) {
            saturated = true;
            value = std::numeric_limits<std::uint32_t>::max();
        }
    }
    return saturated ? std::numeric_limits<std::uint32_t>::max()
                     : static_cast<std::uint32_t>(value);
}

double channelFromByte(std::uint32_t value, int shift)
{
    return static_cast<double>(static_cast<float>((value >> shift) & 0xFFu) / 255.0f);
}

} // namespace

RgbaColor colorFromHexRGB(std::string_view hex)
{
    const std::uint32_t value = scanHexInt(hex);
    return RgbaColor::calibratedRgb(channelFromByte(value, 16), channelFromByte(value, 8),
                                    channelFromByte(value, 0), 1.0);
}

RgbaColor colorFromHexRGB(const char* hex)
{
    return hex == nullptr ? colorFromHexRGB(std::string_view{})
                          : colorFromHexRGB(std::string_view{hex});
}

double brightness(const RgbaColor& color)
{
    // A grey converts to RGB as (w, w, w), so its brightness is its level.
    return std::max({color.red, color.green, color.blue});
}

RgbaColor contrastingBlackOrWhite(const RgbaColor& color)
{
    const double grey = brightness(color) < 0.73 ? 1.0 : 0.0;
    return color.isDevice() ? RgbaColor::deviceWhite(grey, 1.0)
                            : RgbaColor::calibratedWhite(grey, 1.0);
}

} // namespace tintorra
