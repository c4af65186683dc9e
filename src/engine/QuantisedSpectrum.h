#pragma once

#include "colour/ColorComponents.h"
#include "colour/Matrix3.h"
#include "engine/MedianCut.h"
#include "engine/TableAllocation.h"
#include "image/KVBitmap.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <vector>

namespace tintorra {

// One band of the quantised spectrum (96 bytes): the colormap colours whose hue rounds to one
// whole degree (bands 0 to 359) or that are achromatic (band 360), weighted by their counts.
struct ColorSpectrumBand {
    // Count-weighted mean of the members in CIE Luv.
    double L;
    double u;
    double v;
    // The mean's polar form: hue in radians wrapped to [0, 2 pi), chroma, lightness.
    double hue;
    double chroma;
    double lightness;
    // Count-weighted mean of the members' stored (gamma-encoded) RGB, 0..1.
    double red;
    double green;
    double blue;
    // The largest chroma of any member.
    double chromaMaximum;
    // Colormap colours in the band, and their pixels (alpha-weighted for images with alpha).
    std::uint64_t colors;
    std::uint64_t quantity;
};
static_assert(sizeof(ColorSpectrumBand) == 96);

struct ColorSpectrum {
    std::uint64_t count = 0;
    TableArray<ColorSpectrumBand> bands;

    bool empty() const { return count == 0; }
};

// The spectrum's fixed decoding exponent, whatever the image's own gamma.
inline constexpr double kColorSpectrumGamma = 2.2;
inline constexpr std::size_t kDefaultColormapSize = 256;
inline constexpr std::size_t kLargestColormapSize = 4096;

// Adds the colours of a colormap into 361 bands of hue: each colour decoded with gamma 2.2,
// taken through `rgbToXyz` into Luv and LCh. Empty, after "\nout of memory making color
// spectrum" on standard error, when memory runs out.
ColorSpectrum colorSpectrumFromColormap(const Colormap& colormap, const Matrix3& rgbToXyz);

// The quantised spectrum of an image: its colours hashed, listed and cut to a colormap of
// `colormapSize` colours, in the matrix of the image's colour space. Empty, after
// "\nbad color spectrum parameter", for no image, an unsupported layout or a colormap size
// outside 1 .. 4096, and after the step's message when memory runs out.
ColorSpectrum createColorSpectrum(const KVBitmapPtr& bitmap,
                                  std::size_t colormapSize = kDefaultColormapSize);

// The diagnostic dump: one line per band,
// "\nspectrum[%ld] luv:%f,%f,%f H,C,L: %f,%f,%f qty:%lu".
void printColorSpectrum(const ColorSpectrum& spectrum, std::FILE* stream);

// One dominant colour of an image.
struct DominantColor {
    // Stored (gamma-encoded) RGB 0..1, alpha 1.
    ColorComponents rgb;
    // CIE Lab and LCh (L, C, h in radians) of the colour decoded with gamma 2.2.
    ColorComponents lab;
    ColorComponents lch;
    // Pixels represented (alpha-weighted for images with alpha).
    std::uint64_t quantity = 0;
};

// Up to `count` dominant colours of an image, most frequent first: the colours of a median-cut
// colormap (four per requested colour, 32 to 256), leaving out those whose HSB saturation is
// below `minSaturation` or whose lightness L* / 100 is below `minLuminosity`, and each one at
// least `deltaE` (CIEDE2000) from every colour already chosen. Empty when there is nothing to
// choose from.
std::vector<DominantColor> createDominantColorsWithCount(const KVBitmapPtr& bitmap,
                                                         std::size_t count, double minSaturation,
                                                         double minLuminosity, double deltaE);

} // namespace tintorra
