#pragma once

#include "image/KVBitmap.h"

#include <cstddef>
#include <cstdint>

namespace tintorra {

// Where the four bytes of each pixel lie: byte (x, y, channel) is at
// data + y * bytesPerRow + x * bytesPerPixel + channel offset. Pixels without alpha read as 255.
struct PackedSampleSource {
    const std::uint8_t* data = nullptr;
    std::int64_t pixelsWide = 0;
    std::int64_t pixelsHigh = 0;
    std::int64_t bytesPerRow = 0;
    std::int64_t bytesPerPixel = 0;
    std::uint64_t redOffset = 0;
    std::uint64_t greenOffset = 0;
    std::uint64_t blueOffset = 0;
    std::uint64_t alphaOffset = 0;
    bool hasAlpha = false;
    // Colour samples are stored multiplied by alpha.
    bool premultiplied = false;
    // The pixel layer's clamped encoding exponent.
    double imageGamma = 1.0;
};

// A pixel's samples packed low byte first: r | g << 8 | b << 16 | a << 24.
inline std::uint32_t packColor(std::uint8_t r, std::uint8_t g, std::uint8_t b, std::uint8_t a)
{
    return std::uint32_t{r} | std::uint32_t{g} << 8 | std::uint32_t{b} << 16 |
           std::uint32_t{a} << 24;
}

inline std::uint32_t readPackedColor(const PackedSampleSource& source, std::int64_t x,
                                     std::int64_t y)
{
    const std::uint8_t* pixel = source.data + y * source.bytesPerRow + x * source.bytesPerPixel;
    return packColor(pixel[source.redOffset], pixel[source.greenOffset], pixel[source.blueOffset],
                     source.hasAlpha ? pixel[source.alphaOffset] : 0xFF);
}

// Describes the bytes of an image of grey or RGB pixels from its pixel manipulation offsets, with
// 16-bit samples read by their high byte as the 8-bit pixel readers do. False for a layout the
// pixel layer does not support. (The bitmap keeps every address the offsets form inside its
// samples, also the doubled plane distances of planar 16-bit data.)
bool packedSampleSourceFromBitmap(const KVBitmapPtr& bitmap, double imageGamma,
                                  PackedSampleSource& source);

} // namespace tintorra
