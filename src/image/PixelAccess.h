#pragma once

#include "colour/ColorComponents.h"
#include "colour/KVColorSpace.h"
#include "image/KVBitmap.h"

#include <cmath>
#include <cstdint>
#include <cstring>

namespace tintorra {

// Where the samples of every pixel of one bitmap lie and how they are encoded. Filled once per
// bitmap and then shared, read-only, by every thread that reads or writes its pixels.
//
// Channel c of pixel (x, y) is at bitmapData + x * bytesPerPixel + y * bytesPerRow + offset(c),
// rows counted from the top. The offsets are in bytes from the start of the pixel (chunky) or
// from bitmapData (planar).
struct PixelManipulationOffsets {
    KVBitmapPtr rep;
    bool supported = false;
    std::int64_t pixelsWide = 0;
    std::int64_t pixelsHigh = 0;
    std::int64_t bitsPerSample = 0;
    std::int64_t samplesPerPixel = 0;
    std::int64_t bytesPerRow = 0;
    std::int64_t bitsPerPixel = 0;
    std::int64_t bytesPerPixel = 0;
    bool hasAlpha = false;
    unsigned bitmapFormat = 0;
    bool premultiplied = false;
    bool isPlanar = false;
    std::int64_t numberOfPlanes = 0;
    KVColorSpace colorSpace;
    std::int64_t colorSpaceModel = 0;
    double imageGamma = 1.0;
    std::uint64_t redOffset = 0;
    std::uint64_t greenOffset = 0;
    std::uint64_t blueOffset = 0;
    std::uint64_t greyOffset = 0;
    std::uint64_t alphaOffset = 0;
    std::uint8_t* bitmapData = nullptr;
    std::uint8_t* planes[5] = {nullptr, nullptr, nullptr, nullptr, nullptr};
};

// The stored samples of a pixel at 8 bits, r g b a.
struct PixelChars {
    std::uint8_t r = 0;
    std::uint8_t g = 0;
    std::uint8_t b = 0;
    std::uint8_t a = 0;

    friend constexpr bool operator==(const PixelChars&, const PixelChars&) = default;
};

// The stored samples of a pixel at 16 bits, r g b a.
struct PixelWords {
    std::uint16_t r = 0;
    std::uint16_t g = 0;
    std::uint16_t b = 0;
    std::uint16_t a = 0;

    friend constexpr bool operator==(const PixelWords&, const PixelWords&) = default;
};

// The stored encoding exponent is kept inside [1/3, 1].
inline constexpr double kMinimumImageGamma = 1.0 / 3.0;
inline constexpr double kMaximumImageGamma = 1.0;

// Fills the record for the bitmap and returns its `supported`. Only grey and RGB bitmaps of
// 1 to 4 samples per pixel are supported; for other colour models only rep, colorSpace and
// colorSpaceModel are filled and every other field keeps its default.
bool initializePixelManipulationOffsets(PixelManipulationOffsets& record, const KVBitmapPtr& bitmap,
                                        double imageGamma);
PixelManipulationOffsets pixelManipulationOffsetsWithImageGamma(const KVBitmapPtr& bitmap,
                                                                double imageGamma);

namespace pixelDetail {

// Writers meet a depth they cannot encode; kept out of line so the hot path stays small.
void reportUnsupportedPixelFormat();

inline std::uint8_t* pixelAddress(std::int64_t x, std::int64_t y,
                                  const PixelManipulationOffsets& offsets)
{
    return offsets.bitmapData + x * offsets.bytesPerPixel + y * offsets.bytesPerRow;
}

inline std::uint16_t loadWord(const std::uint8_t* address)
{
    std::uint16_t value;
    std::memcpy(&value, address, sizeof value);
    return value;
}

inline void storeWord(std::uint8_t* address, std::uint16_t value)
{
    std::memcpy(address, &value, sizeof value);
}

// Rounds half up by truncation; callers deliver 0..1, so no clamping. The detour through a
// wide integer keeps slightly out-of-range values defined.
inline std::uint8_t encodeChar(double value)
{
    return static_cast<std::uint8_t>(static_cast<std::int64_t>(value * 255.0 + 0.5));
}

inline std::uint16_t encodeWord(double value)
{
    return static_cast<std::uint16_t>(static_cast<std::int64_t>(value * 65535.0 + 0.5));
}

} // namespace pixelDetail

// The stored samples as bytes; of 16-bit samples the high (second, little-endian) byte. Without
// alpha the alpha reads 255. Other depths leave `colour` untouched.
inline void readGammaChars(std::int64_t x, std::int64_t y, const PixelManipulationOffsets& offsets,
                           PixelChars& colour)
{
    const std::uint8_t* const pixel = pixelDetail::pixelAddress(x, y, offsets);
    std::uint64_t high = 0;
    if (offsets.bitsPerSample == 16) {
        high = 1;
    } else if (offsets.bitsPerSample != 8) {
        return;
    }
    colour.r = pixel[offsets.redOffset + high];
    colour.g = pixel[offsets.greenOffset + high];
    colour.b = pixel[offsets.blueOffset + high];
    colour.a = offsets.hasAlpha ? pixel[offsets.alphaOffset + high] : 255;
}

// The stored samples as 16-bit values; 8-bit samples are shifted up, so 255 reads as 65280.
// Without alpha the alpha reads 65535. Other depths leave `colour` untouched.
inline void readGammaWords(std::int64_t x, std::int64_t y, const PixelManipulationOffsets& offsets,
                           PixelWords& colour)
{
    using pixelDetail::loadWord;
    const std::uint8_t* const pixel = pixelDetail::pixelAddress(x, y, offsets);
    if (offsets.bitsPerSample == 8) {
        colour.r = static_cast<std::uint16_t>(pixel[offsets.redOffset] << 8);
        colour.g = static_cast<std::uint16_t>(pixel[offsets.greenOffset] << 8);
        colour.b = static_cast<std::uint16_t>(pixel[offsets.blueOffset] << 8);
        colour.a = offsets.hasAlpha ? static_cast<std::uint16_t>(pixel[offsets.alphaOffset] << 8)
                                    : std::uint16_t{65535};
    } else if (offsets.bitsPerSample == 16) {
        colour.r = loadWord(pixel + offsets.redOffset);
        colour.g = loadWord(pixel + offsets.greenOffset);
        colour.b = loadWord(pixel + offsets.blueOffset);
        colour.a = offsets.hasAlpha ? loadWord(pixel + offsets.alphaOffset) : std::uint16_t{65535};
    }
}

// The stored (gamma-encoded, possibly premultiplied) samples scaled to 0..1. Without alpha the
// alpha reads 1. Other depths leave `colour` untouched.
inline void readGammaFloats(std::int64_t x, std::int64_t y, const PixelManipulationOffsets& offsets,
                            ColorComponents& colour)
{
    using pixelDetail::loadWord;
    const std::uint8_t* const pixel = pixelDetail::pixelAddress(x, y, offsets);
    if (offsets.bitsPerSample == 8) {
        colour.c0 = pixel[offsets.redOffset] / 255.0;
        colour.c1 = pixel[offsets.greenOffset] / 255.0;
        colour.c2 = pixel[offsets.blueOffset] / 255.0;
        colour.alpha = offsets.hasAlpha ? pixel[offsets.alphaOffset] / 255.0 : 1.0;
    } else if (offsets.bitsPerSample == 16) {
        colour.c0 = loadWord(pixel + offsets.redOffset) / 65535.0;
        colour.c1 = loadWord(pixel + offsets.greenOffset) / 65535.0;
        colour.c2 = loadWord(pixel + offsets.blueOffset) / 65535.0;
        colour.alpha = offsets.hasAlpha ? loadWord(pixel + offsets.alphaOffset) / 65535.0 : 1.0;
    }
}

// Linear, straight-alpha colour: un-premultiplies (unless alpha is 0) and decodes r, g, b with
// 1 / imageGamma. For other depths the un-premultiplication and decoding are applied to what
// `colour` already held.
inline void readLinearFloats(std::int64_t x, std::int64_t y,
                             const PixelManipulationOffsets& offsets, ColorComponents& colour)
{
    readGammaFloats(x, y, offsets, colour);
    if (offsets.hasAlpha && offsets.premultiplied && colour.alpha > 0.0) {
        colour.c0 /= colour.alpha;
        colour.c1 /= colour.alpha;
        colour.c2 /= colour.alpha;
    }
    // x^1 is x exactly, so linear images skip the three powers.
    if (offsets.imageGamma != 1.0) {
        const double exponent = 1.0 / offsets.imageGamma;
        colour.c0 = std::pow(colour.c0, exponent);
        colour.c1 = std::pow(colour.c1, exponent);
        colour.c2 = std::pow(colour.c2, exponent);
    }
}

// Stores r, g, b (and alpha when the bitmap has it) from 0..1, rounding half up. Other depths
// write nothing and say so on standard error.
inline void writeGammaFloats(std::int64_t x, std::int64_t y,
                             const PixelManipulationOffsets& offsets, const ColorComponents& colour)
{
    using pixelDetail::encodeChar;
    using pixelDetail::encodeWord;
    using pixelDetail::storeWord;
    std::uint8_t* const pixel = pixelDetail::pixelAddress(x, y, offsets);
    if (offsets.bitsPerSample == 8) {
        pixel[offsets.redOffset] = encodeChar(colour.c0);
        pixel[offsets.greenOffset] = encodeChar(colour.c1);
        pixel[offsets.blueOffset] = encodeChar(colour.c2);
        if (offsets.hasAlpha) {
            pixel[offsets.alphaOffset] = encodeChar(colour.alpha);
        }
    } else if (offsets.bitsPerSample == 16) {
        storeWord(pixel + offsets.redOffset, encodeWord(colour.c0));
        storeWord(pixel + offsets.greenOffset, encodeWord(colour.c1));
        storeWord(pixel + offsets.blueOffset, encodeWord(colour.c2));
        if (offsets.hasAlpha) {
            storeWord(pixel + offsets.alphaOffset, encodeWord(colour.alpha));
        }
    } else {
        pixelDetail::reportUnsupportedPixelFormat();
    }
}

// Stores a linear, straight-alpha colour: encodes r, g, b with imageGamma, premultiplies when
// the bitmap is premultiplied, then writes as gamma floats.
inline void writeLinearFloats(std::int64_t x, std::int64_t y,
                              const PixelManipulationOffsets& offsets, ColorComponents colour)
{
    if (offsets.imageGamma != 1.0) {
        colour.c0 = std::pow(colour.c0, offsets.imageGamma);
        colour.c1 = std::pow(colour.c1, offsets.imageGamma);
        colour.c2 = std::pow(colour.c2, offsets.imageGamma);
    }
    if (offsets.hasAlpha && offsets.premultiplied) {
        colour.c0 *= colour.alpha;
        colour.c1 *= colour.alpha;
        colour.c2 *= colour.alpha;
    }
    writeGammaFloats(x, y, offsets, colour);
}

// Copies the r, g, b samples of pixel (x, y) from one 8-bit bitmap to the same pixel of another,
// and alpha when both have it. Other depths copy nothing and say so on standard error.
inline void copyPixel(std::int64_t x, std::int64_t y, const PixelManipulationOffsets& source,
                      const PixelManipulationOffsets& destination)
{
    if (source.bitsPerSample != 8 || destination.bitsPerSample != 8) {
        pixelDetail::reportUnsupportedPixelFormat();
        return;
    }
    const std::uint8_t* const from = pixelDetail::pixelAddress(x, y, source);
    std::uint8_t* const to = pixelDetail::pixelAddress(x, y, destination);
    to[destination.redOffset] = from[source.redOffset];
    to[destination.greenOffset] = from[source.greenOffset];
    to[destination.blueOffset] = from[source.blueOffset];
    if (source.hasAlpha && destination.hasAlpha) {
        to[destination.alphaOffset] = from[source.alphaOffset];
    }
}

// a at t = 0 and b at t = 1 exactly, so fully selected and unselected pixels are copied bit for
// bit; in between a * (1 - t) + b * t per channel.
inline ColorComponents mixColors(const ColorComponents& a, const ColorComponents& b, double t)
{
    if (t == 1.0) {
        return b;
    }
    if (t == 0.0) {
        return a;
    }
    const double s = 1.0 - t;
    return {a.c0 * s + b.c0 * t, a.c1 * s + b.c1 * t, a.c2 * s + b.c2 * t,
            a.alpha * s + b.alpha * t};
}

} // namespace tintorra
