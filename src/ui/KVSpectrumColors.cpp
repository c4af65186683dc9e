#include "ui/KVSpectrumColors.h"

#include "colour/ColorConversions.h"

#include <algorithm>
#include <cstdio>

namespace tintorra {

namespace {

// The spectrogram shows the colours as a display would, whatever the image's own encoding.
constexpr double kSpectrumDisplayGamma = 2.2;

QColor qColorFromComponents(const ColorComponents& rgba)
{
    return QColor::fromRgbF(static_cast<float>(rgba.c0), static_cast<float>(rgba.c1),
                            static_cast<float>(rgba.c2), static_cast<float>(rgba.alpha));
}

void reportUnsupportedKind(long kind)
{
    std::fprintf(stderr, "SpectrumView colorspace not supported: %ld", kind);
}

std::optional<ColorComponents> linearRgb(const KVAnythingColor& color, const Matrix3& MI)
{
    const ColorComponents& c = color.components;
    switch (color.kind) {
    case kSpectrumColorLChuv:
        return lchuvToRgb(c, MI);
    case kSpectrumColorLChab:
        return lchabToRgb(c, MI);
    case kSpectrumColorHCL:
        return hclToRgb(c);
    case kSpectrumColorHSB:
        return hsbToRgb(c);
    case kSpectrumColorHSL:
        return hslToRgb(c);
    default:
        return std::nullopt;
    }
}

} // namespace

long spectrumColorKindForModel(ColorSpaceModel colorSpaceModel)
{
    switch (colorSpaceModel) {
    case ColorSpaceModel::LChuv:
        return kSpectrumColorLChuv;
    case ColorSpaceModel::LChab:
        return kSpectrumColorLChab;
    default:
        return colorSpaceModelNumber(colorSpaceModel);
    }
}

std::optional<QColor> colorFromAnythingColor(const KVAnythingColor& color, const Matrix3& MI)
{
    if (const auto rgb = linearRgb(color, MI)) {
        // The cylinders can leave the unit cube by rounding, and a power of a negative number
        // is no colour at all.
        const auto unit = [](double v) { return std::clamp(v, 0.0, 1.0); };
        const ColorComponents inCube{unit(rgb->c0), unit(rgb->c1), unit(rgb->c2), unit(rgb->alpha)};
        return qColorFromComponents(gammaEncode(inCube, kSpectrumDisplayGamma));
    }
    reportUnsupportedKind(color.kind);
    if (color.kind == kSpectrumColorRGB) {
        return qColorFromComponents(color.components);
    }
    return std::nullopt;
}

std::optional<QColor> colorForLightness(double lightness, double chroma, double hue, double alpha,
                                        ColorSpaceModel colorSpaceModel, const Matrix3& MI)
{
    const long kind = spectrumColorKindForModel(colorSpaceModel);
    const bool lch = kind == kSpectrumColorLChab || kind == kSpectrumColorLChuv;
    const ColorComponents components = lch ? ColorComponents{lightness, chroma, hue, alpha}
                                           : ColorComponents{hue, chroma, lightness, alpha};
    return colorFromAnythingColor({components, kind}, MI);
}

} // namespace tintorra
