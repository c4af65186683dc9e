#pragma once

// Bitmaps of every layout the colour table reads, filled with repeatable random colours, and a
// brute-force reference of their distinct colours built through the pixel layer's own readers.

#include "colour/ColorConversions.h"
#include "engine/ColorTable.h"
#include "image/PixelAccess.h"

#include <cstdint>
#include <map>
#include <random>
#include <vector>

namespace tintorra::test {

struct TableLayout {
    const char* name;
    std::int64_t samples;
    bool hasAlpha;
    bool planar;
    bool alphaFirst;
    bool premultiplied;
    std::int64_t padSamples; // unused samples after each chunky pixel
    std::int64_t rowPadding; // unused bytes after each row
};

inline constexpr TableLayout kTableLayouts[] = {
    {"grey", 1, false, false, false, false, 0, 0},
    {"grey alpha", 2, true, false, false, false, 0, 3},
    {"grey alpha first premultiplied", 2, true, false, true, true, 0, 0},
    {"RGB", 3, false, false, false, false, 0, 0},
    {"RGB padded rows", 3, false, false, false, false, 0, 5},
    {"RGB with pad byte", 3, false, false, false, false, 1, 0},
    {"RGB planar", 3, false, true, false, false, 0, 2},
    {"RGBA", 4, true, false, false, false, 0, 0},
    {"RGBA premultiplied", 4, true, false, false, true, 0, 4},
    {"ARGB", 4, true, false, true, false, 0, 0},
    {"ARGB premultiplied", 4, true, false, true, true, 0, 0},
    {"RGBA planar premultiplied", 4, true, true, false, true, 0, 0},
};

inline KVBitmapPtr makeTableBitmap(const TableLayout& layout, std::int64_t wide, std::int64_t high,
                                   std::int64_t bits = 8,
                                   KVColorSpace colorSpace = KVColorSpace::deviceRGB())
{
    KVBitmapLayout geometry;
    geometry.pixelsWide = wide;
    geometry.pixelsHigh = high;
    geometry.bitsPerSample = bits;
    geometry.samplesPerPixel = layout.samples;
    geometry.hasAlpha = layout.hasAlpha;
    geometry.isPlanar = layout.planar;
    geometry.bitmapFormat = (layout.alphaFirst ? kBitmapFormatAlphaFirst : 0u) |
                            (layout.premultiplied ? 0u : kBitmapFormatAlphaNonpremultiplied);
    const std::int64_t pixelSamples = layout.planar ? 1 : layout.samples + layout.padSamples;
    geometry.bitsPerPixel = pixelSamples * bits;
    geometry.bytesPerRow = wide * pixelSamples * bits / 8 + layout.rowPadding;
    if (layout.samples < 3) {
        colorSpace = KVColorSpace::deviceGray();
    }
    return KVBitmap::create(geometry, std::move(colorSpace));
}

// Stored samples of one pixel, written through the pixel layer so that every layout gets them
// where its readers look.
struct Samples {
    std::uint8_t r, g, b, a;
};

inline void writeSamples(const PixelManipulationOffsets& offsets, std::int64_t x, std::int64_t y,
                         Samples samples)
{
    if (offsets.samplesPerPixel < 3) {
        samples.g = samples.b = samples.r;
    }
    const double scale = offsets.bitsPerSample == 16 ? 257.0 / 65535.0 : 1.0 / 255.0;
    writeGammaFloats(x, y, offsets,
                     {samples.r * scale, samples.g * scale, samples.b * scale, samples.a * scale});
}

// Fills a bitmap from a small palette (so that colours repeat) with some colours of their own.
// With `varyAlpha` false every pixel is opaque.
inline void fillRandom(const KVBitmapPtr& bitmap, std::uint32_t start, int paletteSize,
                       bool varyAlpha)
{
    std::mt19937 random(start);
    std::uniform_int_distribution<int> byte(0, 255);
    const auto alphaOf = [&]() -> std::uint8_t {
        if (!varyAlpha) {
            return 255;
        }
        const int pick = byte(random);
        return pick < 40 ? 0 : pick < 128 ? 255 : static_cast<std::uint8_t>(byte(random));
    };
    std::vector<Samples> palette;
    for (int i = 0; i < paletteSize; ++i) {
        palette.push_back({static_cast<std::uint8_t>(byte(random)),
                           static_cast<std::uint8_t>(byte(random)),
                           static_cast<std::uint8_t>(byte(random)), alphaOf()});
    }
    const PixelManipulationOffsets offsets = pixelManipulationOffsetsWithImageGamma(bitmap, 1.0);
    std::uniform_int_distribution<int> pick(0, paletteSize + paletteSize / 4);
    for (std::int64_t y = 0; y < bitmap->pixelsHigh(); ++y) {
        for (std::int64_t x = 0; x < bitmap->pixelsWide(); ++x) {
            const int index = pick(random);
            Samples samples = index < paletteSize
                                  ? palette[static_cast<std::size_t>(index)]
                                  : Samples{static_cast<std::uint8_t>(byte(random)),
                                            static_cast<std::uint8_t>(byte(random)),
                                            static_cast<std::uint8_t>(byte(random)), alphaOf()};
            writeSamples(offsets, x, y, samples);
        }
    }
}

inline std::uint32_t packedAt(const PixelManipulationOffsets& offsets, std::int64_t x,
                              std::int64_t y)
{
    PixelChars chars;
    readGammaChars(x, y, offsets, chars);
    return std::uint32_t{chars.r} | std::uint32_t{chars.g} << 8 | std::uint32_t{chars.b} << 16 |
           std::uint32_t{chars.a} << 24;
}

inline std::uint32_t packedAtOffset(const PixelManipulationOffsets& offsets, std::uint32_t offset)
{
    return packedAt(offsets, (offset % offsets.bytesPerRow) / offsets.bytesPerPixel,
                    offset / offsets.bytesPerRow);
}

// Every distinct colour of an image: its pixel offsets in scan order and its linear colour as the
// pixel layer reads it.
struct ReferenceColor {
    std::vector<std::uint32_t> offsets;
    ColorComponents linear;
};

inline std::map<std::uint32_t, ReferenceColor>
referenceColors(const PixelManipulationOffsets& offsets)
{
    std::map<std::uint32_t, ReferenceColor> colors;
    for (std::int64_t y = 0; y < offsets.pixelsHigh; ++y) {
        for (std::int64_t x = 0; x < offsets.pixelsWide; ++x) {
            ReferenceColor& color = colors[packedAt(offsets, x, y)];
            if (color.offsets.empty()) {
                readLinearFloats(x, y, offsets, color.linear);
            }
            color.offsets.push_back(
                static_cast<std::uint32_t>(y * offsets.bytesPerRow + x * offsets.bytesPerPixel));
        }
    }
    return colors;
}

// The entry a linear colour should have in a mode, straight from the public conversions.
struct ExpectedEntry {
    double hue, chroma, lightness, alpha, saturation;
};

inline ExpectedEntry expectedEntry(const ColorComponents& linear, ColorSpaceModel mode,
                                   const Matrix3& matrix)
{
    switch (mode) {
    case ColorSpaceModel::LChuv: {
        const ColorComponents lch = rgbToLchuv(linear, matrix);
        return {lch.c2, lch.c1, lch.c0, lch.alpha, 0.0};
    }
    case ColorSpaceModel::LChab: {
        const ColorComponents lch = rgbToLchab(linear, matrix);
        return {lch.c2, lch.c1, lch.c0, lch.alpha, 0.0};
    }
    case ColorSpaceModel::HCL: {
        const HclComponents hcl = rgbToHcl(linear);
        return {hcl.h, hcl.c, hcl.l, hcl.alpha, hcl.saturation};
    }
    case ColorSpaceModel::HSB: {
        const ColorComponents hsb = rgbToHsb(linear);
        return {hsb.c0, hsb.c1, hsb.c2, hsb.alpha, 0.0};
    }
    case ColorSpaceModel::HSL:
        break;
    }
    const ColorComponents hsl = rgbToHsl(linear);
    return {hsl.c0, hsl.c1, hsl.c2, hsl.alpha, 0.0};
}

} // namespace tintorra::test
