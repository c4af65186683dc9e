// Self-tests of a gamut that print what they find on standard error. Nothing calls them in normal
// operation; they are for looking at a colour space whose tables seem wrong.
#include "colour/ColorConversions.h"
#include "colour/KVColorGamut.h"
#include "common/Diagnostics.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace tintorra {

namespace {

constexpr double kRoundTripThreshold = 0.001;

unsigned long asLong(std::size_t value)
{
    return static_cast<unsigned long>(value);
}

} // namespace

void KVColorGamut::testRGBColors() const
{
    diagnostic("Color gamut matrices:\n");
    printMatrix(M, "RGB->XYZ matrix");
    printMatrix(MI, "XYZ->RGB matrix (inverse RGB->XYZ)");
    diagnostic("Testing rgb values with threshold of %f...\n", kRoundTripThreshold);
    const bool lab = colorSpaceModel_ == ColorSpaceModel::LChab;
    for (std::size_t i = 0; i < rgbColors_.size(); ++i) {
        const ColorComponents& rgb = rgbColors_[i];
        const ColorComponents back =
            lab ? lchabToRgb(rgbToLchab(rgb, M), MI) : lchuvToRgb(rgbToLchuv(rgb, M), MI);
        const double error = std::max({std::fabs(back.c0 - rgb.c0), std::fabs(back.c1 - rgb.c1),
                                       std::fabs(back.c2 - rgb.c2)});
        if (error > kRoundTripThreshold) {
            diagnostic("rgb[%lu]->LCh->rgb max error: %f\n", asLong(i), error);
        }
    }
    diagnostic("Finished testing rgb values.\n");
}

void KVColorGamut::testLuvColors() const
{
    diagnostic("Testing Luv values...\n");
    for (std::size_t i = 0; i < LuvColors_.size() && i < rgbColors_.size(); ++i) {
        const ColorComponents& luv = LuvColors_[i];
        const ColorComponents& before = rgbColors_[i];
        const ColorComponents after = xyzToRgb(luvToXyz(luv), MI);
        diagnostic("Luv[%lu]: %f, %f, %f\n", asLong(i), luv.c0, luv.c1, luv.c2);
        diagnostic("rgb[%lu] before: %f, %f, %f\n", asLong(i), before.c0, before.c1, before.c2);
        diagnostic("rgb[%lu]  after: %f, %f, %f\n", asLong(i), after.c0, after.c1, after.c2);
        diagnostic("rgb errors: %f, %f, %f\n", after.c0 - before.c0, after.c1 - before.c1,
                   after.c2 - before.c2);
    }
    diagnostic("Finished testing Luv values.\n");
}

void KVColorGamut::testChromaLUT(std::size_t hueStride, std::size_t lightnessStride) const
{
    diagnostic("Testing chroma LUT values...\n");
    if (hasTables()) {
        const bool lab = colorSpaceModel_ == ColorSpaceModel::LChab;
        hueStride = std::max<std::size_t>(hueStride, 1);
        lightnessStride = std::max<std::size_t>(lightnessStride, 1);
        for (std::size_t i = 0; i < kHueCount; i += hueStride) {
            const double hue = radiansFromDegrees(static_cast<double>(i) * 0.5);
            for (std::size_t j = 0; j < kLightnessCount; j += lightnessStride) {
                const double chroma = chromasLUT_[i][j];
                const ColorComponents lch{static_cast<double>(j) * 0.5, chroma, hue, 1.0};
                const ColorComponents rgb = lab ? lchabToRgb(lch, MI) : lchuvToRgb(lch, MI);
                diagnostic("chroma[%lu,%lu] = %f rgb: %f, %f, %f\n", asLong(i), asLong(j), chroma,
                           rgb.c0, rgb.c1, rgb.c2);
            }
        }
    }
    diagnostic("Finished testing chroma LUT values.\n");
}

void KVColorGamut::testMaxChromaLUT() const
{
    diagnostic("Testing maxChroma LUT values...\n");
    if (hasTables()) {
        const bool lab = colorSpaceModel_ == ColorSpaceModel::LChab;
        for (std::size_t i = 0; i < kHueCount; ++i) {
            const ColorComponents& record = maxChromasLUT_[i];
            const ColorComponents lch{record.c0, record.c1, record.c2, 1.0};
            const ColorComponents rgb = lab ? lchabToRgb(lch, MI) : lchuvToRgb(lch, MI);
            diagnostic("hue: %f rgb: %f, %f, %f\n", degreesFromRadians(record.c2), rgb.c0, rgb.c1,
                       rgb.c2);
        }
    }
    diagnostic("Finished testing maxChroma LUT values.\n");
}

} // namespace tintorra
