#pragma once

#include "colour/KVColorGamut.h"
#include "engine/HueSpectrum.h"
#include "image/KVBitmap.h"

namespace tintorra::cli {

// What the spectrogram view draws: 0 bars of pixel counts, 1 lightness, 2 chroma, 3 saturation.
enum class SpectrumGraph { spectrogram = 0, lightness = 1, chroma = 2, saturation = 3 };

inline constexpr std::int64_t kSpectrumPlotBandWidth = 3;
// The graph's own area, and the margins around it for the axes and the legend.
inline constexpr std::int64_t kSpectrumPlotAreaHeight = 400;
inline constexpr std::int64_t kSpectrumPlotLeft = 56;
inline constexpr std::int64_t kSpectrumPlotRight = 16;
inline constexpr std::int64_t kSpectrumPlotTop = 28;
inline constexpr std::int64_t kSpectrumPlotBottom = 40;
inline constexpr std::int64_t kSpectrumPlotWidth =
    kSpectrumPlotLeft + static_cast<std::int64_t>(kSpectrumBandCount) * kSpectrumPlotBandWidth +
    kSpectrumPlotRight;
inline constexpr std::int64_t kSpectrumPlotHeight =
    kSpectrumPlotTop + kSpectrumPlotAreaHeight + kSpectrumPlotBottom;

// Draws the hue spectrum of an LCh colour table (mode 0 or 1) as the spectrogram view does, on
// a dark opaque background: one column of kSpectrumPlotBandWidth pixels per band, a 4-pixel
// margin above and below. Bars take the band's mean colour; the line graphs join each band's
// minimum, mean and maximum, with the gamut's limit as a fourth line. `colorSpace` is the space
// the colours are drawn in (the image's). Around the graph: a hue axis in degrees, a value axis
// (pixel count, lightness, chroma or saturation) and a legend naming the lines.
KVBitmapPtr drawSpectrumPlot(const LChSpectrum& spectrum, const KVColorGamut& gamut,
                             const KVColorSpace& colorSpace, SpectrumGraph graph, bool drawLog);

} // namespace tintorra::cli
