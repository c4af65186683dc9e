#include "cli/SpectrumPlot.h"

#include "cli/PlotText.h"
#include "colour/ColorConversions.h"
#include "image/PixelAccess.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

namespace tintorra::cli {

namespace {

constexpr double kMargin = 4.0;
// The chroma graph's top.
constexpr double kChromaScaleTop = 220.0;

// Line colours, from the view's palette of components 0.67, 0.5, 0 and 1.
constexpr ColorComponents kMinimumLine{0.0, 0.5, 1.0, 1.0};
constexpr ColorComponents kMeanLine{1.0, 1.0, 1.0, 1.0};
constexpr ColorComponents kMaximumLine{1.0, 0.5, 0.0, 1.0};
constexpr ColorComponents kGamutLine{0.67, 0.67, 0.67, 1.0};
constexpr ColorComponents kBackground{0.12, 0.12, 0.12, 1.0};
constexpr ColorComponents kAxis{0.8, 0.8, 0.8, 1.0};
constexpr int kTextScale = 2;

class Canvas {
public:
    Canvas(const KVBitmapPtr& bitmap)
        : offsets_(pixelManipulationOffsetsWithImageGamma(bitmap, 1.0)),
          width_(bitmap->pixelsWide()), height_(bitmap->pixelsHigh())
    {}

    // Gamma-encoded colour; x from the graph area's left edge, y upwards from its bottom edge.
    void set(std::int64_t x, double y, const ColorComponents& colour) const
    {
        const auto row = static_cast<std::int64_t>(
            std::lround(kSpectrumPlotTop + kSpectrumPlotAreaHeight - 1 - y));
        if (x >= 0 && x < kSpectrumPlotWidth - kSpectrumPlotLeft && row >= 0 && row < height_) {
            pixel(kSpectrumPlotLeft + x, row, colour);
        }
    }

    // Whole-picture coordinates, y downwards: for the axes and the text around the graph.
    void pixel(std::int64_t x, std::int64_t y, const ColorComponents& colour) const
    {
        if (x >= 0 && x < width_ && y >= 0 && y < height_) {
            writeGammaFloats(x, y, offsets_, colour);
        }
    }

    void text(std::string_view text, std::int64_t left, std::int64_t top,
              const ColorComponents& colour) const
    {
        drawPlotText(text, static_cast<int>(left), static_cast<int>(top), kTextScale,
                     [&](int x, int y) { pixel(x, y, colour); });
    }

    void fill(const ColorComponents& colour) const
    {
        for (std::int64_t y = 0; y < height_; ++y) {
            for (std::int64_t x = 0; x < width_; ++x) {
                writeGammaFloats(x, y, offsets_, colour);
            }
        }
    }

    // A one-pixel line between two points.
    void line(double x0, double y0, double x1, double y1, const ColorComponents& colour) const
    {
        const double steps = std::max({std::fabs(x1 - x0), std::fabs(y1 - y0), 1.0});
        for (int i = 0; i <= static_cast<int>(steps); ++i) {
            const double t = i / steps;
            set(std::lround(x0 + (x1 - x0) * t), y0 + (y1 - y0) * t, colour);
        }
    }

private:
    PixelManipulationOffsets offsets_;
    std::int64_t width_;
    std::int64_t height_;
};

ColorComponents encoded(ColorComponents linear)
{
    return gammaEncode(linear, 2.2);
}

ColorComponents bandColour(const LChSpectrumBand& band, const KVColorGamut& gamut)
{
    Matrix3 MI{};
    gamut.copy_XYZ_to_RGB_matrix(MI);
    const ColorComponents lch{band.lightnessMean, band.chromaMean, band.hueMean, 1.0};
    return encoded(gamut.colorSpaceModel() == ColorSpaceModel::LChab ? lchabToRgb(lch, MI)
                                                                     : lchuvToRgb(lch, MI));
}

double relativeSaturation(double chroma, double hue, double lightness, const KVColorGamut& gamut)
{
    const double limit = gamut.chromaForHue(hue, lightness);
    return limit > 0.0 ? std::min(chroma / limit, 1.0) : 0.0;
}

// Minimum, mean and maximum of a band on the graph's own scale (0..1 of the plot height).
std::array<double, 3> bandValues(const LChSpectrumBand& b, SpectrumGraph graph,
                                 const KVColorGamut& gamut)
{
    switch (graph) {
    case SpectrumGraph::lightness:
        return {b.lightnessMinimum / 100.0, b.lightnessMean / 100.0, b.lightnessMaximum / 100.0};
    case SpectrumGraph::chroma:
        return {b.chromaMinimum / kChromaScaleTop, b.chromaMean / kChromaScaleTop,
                b.chromaMaximum / kChromaScaleTop};
    case SpectrumGraph::saturation:
        return {relativeSaturation(b.chromaMinimum, b.hueMean, b.lightnessMean, gamut),
                relativeSaturation(b.chromaMean, b.hueMean, b.lightnessMean, gamut),
                relativeSaturation(b.chromaMaximum, b.hueMean, b.lightnessMean, gamut)};
    case SpectrumGraph::spectrogram:
        break;
    }
    return {0.0, 0.0, 0.0};
}

// The gamut's limit at a band's hue on the graph's scale: the lightness and the chroma of the
// most chromatic colour, or full saturation.
double gamutLimit(std::size_t band, SpectrumGraph graph, const KVColorGamut& gamut)
{
    const double hue = static_cast<double>(band) * 3.14159265358979323846 / 180.0;
    const ColorComponents peak = gamut.maxChromaForHue(hue);
    switch (graph) {
    case SpectrumGraph::lightness:
        return peak.c0 / 100.0;
    case SpectrumGraph::chroma:
        return peak.c1 / kChromaScaleTop;
    default:
        return 1.0;
    }
}

std::string numberText(double value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.4g", value);
    return text;
}

// The value axis's top and label: the graph's scale in its own unit.
struct ValueAxis {
    double top;
    std::string label;
    std::string unit;
};

ValueAxis valueAxisFor(SpectrumGraph graph, double largestCount, bool drawLog)
{
    switch (graph) {
    case SpectrumGraph::lightness:
        return {100.0, "lightness", ""};
    case SpectrumGraph::chroma:
        return {kChromaScaleTop, "chroma", ""};
    case SpectrumGraph::saturation:
        return {100.0, "saturation", "%"};
    case SpectrumGraph::spectrogram:
        break;
    }
    return {largestCount, drawLog ? "pixels (log10)" : "pixels", ""};
}

// Hue axis in degrees below the graph, value axis at its left, legend above.
void drawAxesAndLegend(const Canvas& canvas, SpectrumGraph graph, const ValueAxis& axis)
{
    const std::int64_t left = kSpectrumPlotLeft - 1;
    const std::int64_t bottom = kSpectrumPlotTop + kSpectrumPlotAreaHeight;
    const std::int64_t right =
        kSpectrumPlotLeft + static_cast<std::int64_t>(kSpectrumBandCount) * kSpectrumPlotBandWidth;
    for (std::int64_t x = left; x < right; ++x) {
        canvas.pixel(x, bottom, kAxis);
    }
    for (std::int64_t y = kSpectrumPlotTop; y <= bottom; ++y) {
        canvas.pixel(left, y, kAxis);
    }
    const int glyphHeight = kPlotGlyphHeight * kTextScale;
    for (int degrees = 0; degrees <= 360; degrees += 30) {
        const std::int64_t x =
            kSpectrumPlotLeft + degrees * kSpectrumPlotBandWidth + kSpectrumPlotBandWidth / 2;
        for (std::int64_t y = bottom; y < bottom + (degrees % 90 == 0 ? 6 : 3); ++y) {
            canvas.pixel(x, y, kAxis);
        }
        if (degrees % 90 == 0) {
            const std::string label = std::to_string(degrees);
            canvas.text(label, x - plotTextWidth(label, kTextScale) / 2, bottom + 8, kAxis);
        }
    }
    const std::string hueLabel = "hue in degrees (360 achromatic)";
    canvas.text(hueLabel, (left + right - plotTextWidth(hueLabel, kTextScale)) / 2,
                bottom + 10 + glyphHeight, kAxis);

    const double usable = static_cast<double>(kSpectrumPlotAreaHeight) - 2.0 * kMargin;
    for (int step = 0; step <= 4; ++step) {
        const std::int64_t y =
            bottom - 1 - std::lround(kMargin + usable * static_cast<double>(step) / 4.0);
        for (std::int64_t x = left - 4; x < left; ++x) {
            canvas.pixel(x, y, kAxis);
        }
        if (step % 2 == 0) {
            const std::string label = numberText(axis.top * step / 4.0) + axis.unit;
            canvas.text(label, left - 6 - plotTextWidth(label, kTextScale), y - glyphHeight / 2,
                        kAxis);
        }
    }
    canvas.text(axis.label, 4, 6, kAxis);

    if (graph == SpectrumGraph::spectrogram) {
        canvas.text("bars: pixels per degree of hue in their mean colour", kSpectrumPlotLeft + 160,
                    6, kAxis);
        return;
    }
    const std::array<std::pair<const char*, ColorComponents>, 4> entries{
        {{"min", kMinimumLine},
         {"mean", kMeanLine},
         {"max", kMaximumLine},
         {"gamut limit", kGamutLine}}};
    std::int64_t x = kSpectrumPlotLeft + 160;
    for (const auto& [name, colour] : entries) {
        for (std::int64_t dx = 0; dx < 20; ++dx) {
            canvas.pixel(x + dx, 6 + glyphHeight / 2, colour);
            canvas.pixel(x + dx, 7 + glyphHeight / 2, colour);
        }
        canvas.text(name, x + 26, 6, colour);
        x += 26 + plotTextWidth(name, kTextScale) + 24;
    }
}

} // namespace

KVBitmapPtr drawSpectrumPlot(const LChSpectrum& spectrum, const KVColorGamut& gamut,
                             const KVColorSpace& colorSpace, SpectrumGraph graph, bool drawLog)
{
    KVBitmapPtr bitmap =
        KVBitmap::deviceRGBA8888Rep(kSpectrumPlotWidth, kSpectrumPlotHeight, false);
    if (!bitmap) {
        return nullptr;
    }
    bitmap->setColorSpace(colorSpace);
    const Canvas canvas(bitmap);
    canvas.fill(kBackground);
    const double usable = static_cast<double>(kSpectrumPlotAreaHeight) - 2.0 * kMargin;
    const std::size_t bands = std::min<std::uint64_t>(spectrum.count, kSpectrumBandCount);

    if (graph == SpectrumGraph::spectrogram) {
        double maximum = 0.0;
        for (std::size_t i = 0; i < bands; ++i) {
            maximum = std::max(maximum, static_cast<double>(spectrum.bands[i].count));
        }
        if (drawLog) {
            maximum = std::log10(maximum);
        }
        drawAxesAndLegend(canvas, graph, valueAxisFor(graph, maximum, drawLog));
        if (!(maximum > 0.0)) {
            return bitmap;
        }
        const double scale = usable / maximum;
        for (std::size_t i = 0; i < bands; ++i) {
            const LChSpectrumBand& band = spectrum.bands[i];
            if (band.count == 0) {
                continue;
            }
            const double value = drawLog ? std::log10(static_cast<double>(band.count))
                                         : static_cast<double>(band.count);
            const double height = value * scale;
            const ColorComponents colour = bandColour(band, gamut);
            for (std::int64_t dx = 0; dx < kSpectrumPlotBandWidth; ++dx) {
                for (double y = 0.0; y < height; y += 1.0) {
                    canvas.set(static_cast<std::int64_t>(i) * kSpectrumPlotBandWidth + dx,
                               kMargin + y, colour);
                }
            }
        }
        return bitmap;
    }

    const auto x = [](std::size_t band) {
        return static_cast<double>(band) * kSpectrumPlotBandWidth + kSpectrumPlotBandWidth / 2;
    };
    const auto y = [usable](double fraction) {
        return kMargin + std::clamp(fraction, 0.0, 1.0) * usable;
    };
    drawAxesAndLegend(canvas, graph, valueAxisFor(graph, 0.0, drawLog));
    // The gamut's limit across the hues, under the image's lines.
    for (std::size_t i = 0; i + 1 < kAchromaticBand; ++i) {
        canvas.line(x(i), y(gamutLimit(i, graph, gamut)), x(i + 1),
                    y(gamutLimit(i + 1, graph, gamut)), kGamutLine);
    }
    std::optional<std::array<double, 3>> previous;
    std::size_t previousBand = 0;
    const std::array<ColorComponents, 3> colours{kMinimumLine, kMeanLine, kMaximumLine};
    for (std::size_t i = 0; i < std::min<std::size_t>(bands, kAchromaticBand); ++i) {
        if (spectrum.bands[i].count == 0) {
            // A hue without pixels breaks the lines.
            previous.reset();
            continue;
        }
        const auto values = bandValues(spectrum.bands[i], graph, gamut);
        for (std::size_t k = 0; k < 3; ++k) {
            if (previous) {
                canvas.line(x(previousBand), y((*previous)[k]), x(i), y(values[k]), colours[k]);
            } else {
                canvas.set(static_cast<std::int64_t>(x(i)), y(values[k]), colours[k]);
            }
        }
        previous = values;
        previousBand = i;
    }
    return bitmap;
}

} // namespace tintorra::cli
