#include "editor/PixelColorReport.h"

#include "colour/ColorConversions.h"
#include "colour/ColorMatrices.h"
#include "image/PixelAccess.h"

#include <algorithm>
#include <cmath>

namespace tintorra {

namespace {

std::optional<double> relativeSaturation(const ColorComponents& lch, const KVColorGamut* gamut,
                                         ColorSpaceModel model)
{
    if (gamut == nullptr || !gamut->hasTables() || gamut->colorSpaceModel() != model) {
        return std::nullopt;
    }
    const double largest = gamut->chromaForHue(lch.c2, lch.c0);
    return largest > 0.0 ? lch.c1 / largest : 0.0;
}

void readStoredSamples(const PixelManipulationOffsets& offsets, PixelColorReport& report)
{
    if (offsets.bitsPerSample == 16) {
        PixelWords words;
        readGammaWords(report.x, report.y, offsets, words);
        report.red = words.r;
        report.green = words.g;
        report.blue = words.b;
        report.alpha = words.a;
        report.opacity = words.a / 65535.0;
    } else {
        PixelChars chars;
        readGammaChars(report.x, report.y, offsets, chars);
        report.red = chars.r;
        report.green = chars.g;
        report.blue = chars.b;
        report.alpha = chars.a;
        report.opacity = chars.a / 255.0;
    }
}

void fillModelComponents(PixelColorReport& report, const KVColorSpace* colorSpace,
                         const KVColorGamut* gamut);

} // namespace

std::optional<PixelColorReport> pixelColorReport(const KVBitmapPtr& image, std::int64_t x,
                                                 std::int64_t y, double imageGamma,
                                                 const KVColorGamut* gamut)
{
    if (image == nullptr || x < 0 || y < 0 || x >= image->pixelsWide() ||
        y >= image->pixelsHigh()) {
        return std::nullopt;
    }
    const PixelManipulationOffsets offsets =
        pixelManipulationOffsetsWithImageGamma(image, imageGamma);
    if (!offsets.supported || (offsets.bitsPerSample != 8 && offsets.bitsPerSample != 16)) {
        return std::nullopt;
    }
    PixelColorReport report;
    report.x = x;
    report.y = y;
    report.bitsPerSample = offsets.bitsPerSample;
    readStoredSamples(offsets, report);
    readGammaFloats(x, y, offsets, report.encodedRgb);
    readLinearFloats(x, y, offsets, report.linearRgb);
    fillModelComponents(report, &image->colorSpace(), gamut);
    return report;
}

double normalizedHueOfEncodedColor(const ColorComponents& encoded, double imageGamma,
                                   const KVColorSpace* colorSpace, ColorSpaceModel colorSpaceModel)
{
    PixelColorReport report;
    report.encodedRgb = encoded;
    const double exponent = 1.0 / std::clamp(imageGamma, kMinimumImageGamma, kMaximumImageGamma);
    report.linearRgb = {std::pow(encoded.c0, exponent), std::pow(encoded.c1, exponent),
                        std::pow(encoded.c2, exponent), encoded.alpha};
    fillModelComponents(report, colorSpace, nullptr);
    return normalizedHueForColorModel(report, colorSpaceModel);
}

namespace {

void fillModelComponents(PixelColorReport& report, const KVColorSpace* colorSpace,
                         const KVColorGamut* gamut)
{
    report.hsb = rgbToHsb(report.linearRgb);
    report.hsl = rgbToHsl(report.linearRgb);
    report.encodedHsb = rgbToHsb(report.encodedRgb);
    report.encodedHsl = rgbToHsl(report.encodedRgb);
    report.hcl = rgbToHcl(report.linearRgb);

    Matrix3 rgbToXyzMatrix{};
    matrixFromColorSpace(rgbToXyzMatrix, nullptr);
    matrixFromColorSpace(rgbToXyzMatrix, colorSpace);
    const ColorComponents xyz = rgbToXyz(report.linearRgb, rgbToXyzMatrix);
    report.lab = xyzToLab(xyz);
    report.lchab = labToLch(report.lab);
    report.luv = xyzToLuv(xyz);
    report.lchuv = luvToLch(report.luv);
    report.lchabSaturation = relativeSaturation(report.lchab, gamut, ColorSpaceModel::LChab);
    report.lchuvSaturation = relativeSaturation(report.lchuv, gamut, ColorSpaceModel::LChuv);
}

} // namespace

double normalizedHueForColorModel(const PixelColorReport& report, ColorSpaceModel colorSpaceModel)
{
    double hue = 0.0;
    switch (colorSpaceModel) {
    case ColorSpaceModel::LChuv:
        hue = hueFraction(report.lchuv.c2);
        break;
    case ColorSpaceModel::LChab:
        hue = hueFraction(report.lchab.c2);
        break;
    case ColorSpaceModel::HCL:
        hue = report.hcl.h;
        break;
    case ColorSpaceModel::HSB:
        hue = report.hsb.c0;
        break;
    case ColorSpaceModel::HSL:
        hue = report.hsl.c0;
        break;
    }
    // The cylinders name pure red 1.0; the sliders want it as 0.
    return fractionalPart(hue);
}

} // namespace tintorra
