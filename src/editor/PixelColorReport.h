#pragma once

#include "colour/ColorComponents.h"
#include "colour/ColorSpaceModel.h"
#include "colour/KVColorGamut.h"
#include "image/KVBitmap.h"

#include <cstdint>
#include <optional>

namespace tintorra {

// One pixel of an image in every form the editor shows or measures it in: the stored samples,
// the linear colour and each colour model's components. LCh hues are radians as the conversions
// give them; the cylinder hues are fractions.
struct PixelColorReport {
    std::int64_t x = 0;
    std::int64_t y = 0;
    // The stored samples, 8 or 16 bits wide; an image without alpha reads as fully opaque.
    std::int64_t bitsPerSample = 8;
    std::uint32_t red = 0;
    std::uint32_t green = 0;
    std::uint32_t blue = 0;
    std::uint32_t alpha = 0;
    double opacity = 1.0;
    // The samples as fractions (r'g'b') and linearised (rgb).
    ColorComponents encodedRgb;
    ColorComponents linearRgb;
    ColorComponents hsb;
    ColorComponents hsl;
    ColorComponents encodedHsb;
    ColorComponents encodedHsl;
    HclComponents hcl;
    ColorComponents lab;
    ColorComponents lchab;
    ColorComponents luv;
    ColorComponents lchuv;
    // Chroma over the largest chroma the gamut allows at the colour's hue and lightness, known
    // only for the LCh model of the gamut at hand.
    std::optional<double> lchabSaturation;
    std::optional<double> lchuvSaturation;
};

// The report of pixel (x, y), or nothing outside the image or for a layout the pixel readers do
// not address. `imageGamma` is the encoding exponent (1 / display gamma).
std::optional<PixelColorReport> pixelColorReport(const KVBitmapPtr& image, std::int64_t x,
                                                 std::int64_t y, double imageGamma,
                                                 const KVColorGamut* gamut);

// The hue of an interface colour (its samples as fractions, encoded with `imageGamma`) in a
// colour model, read as if it were a pixel of an image in `colorSpace` (sRGB when none).
double normalizedHueOfEncodedColor(const ColorComponents& encoded, double imageGamma,
                                   const KVColorSpace* colorSpace, ColorSpaceModel colorSpaceModel);

// The pixel's hue in a colour model as a fraction in [0, 1), as the hue sliders take it.
double normalizedHueForColorModel(const PixelColorReport& report, ColorSpaceModel colorSpaceModel);

} // namespace tintorra
