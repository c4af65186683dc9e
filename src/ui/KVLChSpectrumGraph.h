#pragma once

#include "colour/KVColorGamut.h"
#include "engine/HueSpectrum.h"

#include <QColor>
#include <QImage>
#include <QSize>

namespace tintorra {

// The four ways the spectrogram shows a spectrum.
enum class KVSpectrumGraphType : int {
    spectrogram = 0,
    lightness = 1,
    chroma = 2,
    saturation = 3,
};
inline constexpr int kSpectrumGraphTypeCount = 4;

// Everything the picture depends on, apart from its size.
struct KVSpectrumGraphContent {
    const LChSpectrum* spectrum = nullptr;
    const KVColorGamut* gamut = nullptr;
    ColorSpaceModel colorSpaceModel = ColorSpaceModel::LChuv;
    KVSpectrumGraphType graphType = KVSpectrumGraphType::spectrogram;
    bool drawLog = false;
};

// Space kept free below and above the graph, in points.
inline constexpr double kSpectrumGraphMargin = 4.0;

// Draws the bars or the lines of a spectrum on `background`, into an image of `size` points at
// `devicePixelRatio`, so that every edge falls on a device pixel. The label is not part of it:
// it follows the palette and the font, the picture only the spectrum.
QImage renderSpectrumGraph(const KVSpectrumGraphContent& content, QSize size,
                           qreal devicePixelRatio, const QColor& background);

} // namespace tintorra
