#include "ui/KVLChSpectrumGraph.h"

#include "ui/KVSpectrumColors.h"

#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <optional>

namespace tintorra {

namespace {

// Tops of the line graphs' scales: LCh lightness runs to 100 and chroma, in practice, to 220; the
// cylinders' components and every relative saturation run to 1.
constexpr double kLChLightnessScaleTop = 100.0;
constexpr double kLChChromaScaleTop = 220.0;

// Line colours, mixed from the components 0.67, 0.5, 0 and 1 so that each reads on a light and
// a dark background alike.
const QColor kMinimumLineColor = QColor::fromRgbF(0.0f, 0.5f, 1.0f);
const QColor kMeanLineColor = QColor::fromRgbF(0.0f, 0.67f, 0.0f);
const QColor kMaximumLineColor = QColor::fromRgbF(1.0f, 0.5f, 0.0f);
const QColor kGamutLineColor = QColor::fromRgbF(0.5f, 0.5f, 0.5f);

bool isLChModel(ColorSpaceModel colorSpaceModel)
{
    return colorSpaceModel == ColorSpaceModel::LChuv || colorSpaceModel == ColorSpaceModel::LChab;
}

// The graph's frame in device pixels.
struct Plot {
    double width;
    double height;
    double margin;

    double bandWidth() const { return width / static_cast<double>(kSpectrumBandCount); }
    double baseline() const { return height - margin; }
    double usableHeight() const { return height - 2.0 * margin; }
    // A value on the graph's 0..1 scale, kept inside the frame.
    double y(double fraction) const
    {
        return baseline() - std::clamp(fraction, 0.0, 1.0) * usableHeight();
    }
};

Matrix3 xyzToRgbMatrix(const KVColorGamut* gamut)
{
    Matrix3 MI{};
    if (gamut) {
        gamut->copy_XYZ_to_RGB_matrix(MI);
    }
    return MI;
}

void drawBars(QPainter& painter, const KVSpectrumGraphContent& content, const Plot& plot)
{
    const LChSpectrum& spectrum = *content.spectrum;
    const std::size_t bands = std::min<std::uint64_t>(spectrum.count, kSpectrumBandCount);
    double maximum = 0.0;
    for (std::size_t i = 0; i < bands; ++i) {
        maximum = std::max(maximum, static_cast<double>(spectrum.bands[i].count));
    }
    if (content.drawLog) {
        maximum = std::log10(maximum);
    }
    if (!(maximum > 0.0)) {
        return;
    }
    const double scale = plot.usableHeight() / maximum;
    const Matrix3 MI = xyzToRgbMatrix(content.gamut);
    for (std::size_t i = 0; i < bands; ++i) {
        const LChSpectrumBand& band = spectrum.bands[i];
        if (band.count == 0) {
            continue;
        }
        const auto count = static_cast<double>(band.count);
        const double height = (content.drawLog ? std::log10(count) : count) * scale;
        const std::optional<QColor> color = colorForLightness(
            band.lightnessMean, band.chromaMean, band.hueMean, 1.0, content.colorSpaceModel, MI);
        if (!color) {
            // The kind is the same for every band; it has been reported once.
            return;
        }
        // Edges rounded to whole pixels, so that neighbouring bars neither overlap nor part.
        const double left = std::round(static_cast<double>(i) * plot.bandWidth());
        const double right =
            std::max(left + 1.0, std::round(static_cast<double>(i + 1) * plot.bandWidth()));
        const double top = std::round(plot.baseline() - height);
        painter.fillRect(QRectF(left, top, right - left, plot.baseline() - top), *color);
    }
}

// A band's minimum, mean and maximum on the graph's 0..1 scale; none when they cannot be told.
std::optional<std::array<double, 3>> bandLineValues(const LChSpectrumBand& b,
                                                    const KVSpectrumGraphContent& content)
{
    const bool lch = isLChModel(content.colorSpaceModel);
    switch (content.graphType) {
    case KVSpectrumGraphType::lightness: {
        const double top = lch ? kLChLightnessScaleTop : 1.0;
        return std::array{b.lightnessMinimum / top, b.lightnessMean / top,
                          b.lightnessMaximum / top};
    }
    case KVSpectrumGraphType::chroma: {
        const double top = lch ? kLChChromaScaleTop : 1.0;
        return std::array{b.chromaMinimum / top, b.chromaMean / top, b.chromaMaximum / top};
    }
    case KVSpectrumGraphType::saturation: {
        if (!lch) {
            // The cylinders' second component is already relative to what the colour allows.
            return std::array<double, 3>{b.chromaMinimum, b.chromaMean, b.chromaMaximum};
        }
        if (!content.gamut) {
            return std::nullopt;
        }
        const double limit = content.gamut->chromaForHue(b.hueMean, b.lightnessMean);
        if (!(limit > 0.0)) {
            return std::array{0.0, 0.0, 0.0};
        }
        return std::array{b.chromaMinimum / limit, b.chromaMean / limit, b.chromaMaximum / limit};
    }
    case KVSpectrumGraphType::spectrogram:
        break;
    }
    return std::nullopt;
}

// Where the gamut ends at the hue of a band, on the graph's scale: the lightness and the chroma
// of the hue's most chromatic colour, and full saturation.
double gamutLimitForBand(std::size_t band, const KVSpectrumGraphContent& content)
{
    const double hue = static_cast<double>(band) * std::numbers::pi / 180.0;
    switch (content.graphType) {
    case KVSpectrumGraphType::lightness:
        return content.gamut->maxChromaForHue(hue).c0 / kLChLightnessScaleTop;
    case KVSpectrumGraphType::chroma:
        return content.gamut->maxChromaForHue(hue).c1 / kLChChromaScaleTop;
    default:
        return 1.0;
    }
}

void strokeLine(QPainter& painter, const QPainterPath& path, const QColor& color, double width)
{
    painter.setPen(QPen(color, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(path);
}

void drawLines(QPainter& painter, const KVSpectrumGraphContent& content, const Plot& plot,
               double lineWidth)
{
    const LChSpectrum& spectrum = *content.spectrum;
    const auto x = [&plot](std::size_t band) {
        return (static_cast<double>(band) + 0.5) * plot.bandWidth();
    };
    painter.setRenderHint(QPainter::Antialiasing, true);

    if (content.gamut && isLChModel(content.colorSpaceModel)) {
        QPainterPath boundary;
        boundary.moveTo(x(0), plot.y(gamutLimitForBand(0, content)));
        for (std::size_t i = 1; i < kAchromaticBand; ++i) {
            boundary.lineTo(x(i), plot.y(gamutLimitForBand(i, content)));
        }
        strokeLine(painter, boundary, kGamutLineColor, lineWidth);
    }

    // Minimum, mean and maximum; a hue without pixels breaks the lines. The achromatic band has
    // no hue to stand at and is left out.
    std::array<QPainterPath, 3> paths;
    bool joined = false;
    const std::size_t bands = std::min<std::uint64_t>(spectrum.count, kAchromaticBand);
    for (std::size_t i = 0; i < bands; ++i) {
        const auto values = spectrum.bands[i].count == 0
                                ? std::nullopt
                                : bandLineValues(spectrum.bands[i], content);
        if (!values) {
            joined = false;
            continue;
        }
        for (std::size_t k = 0; k < paths.size(); ++k) {
            const QPointF point(x(i), plot.y((*values)[k]));
            if (joined) {
                paths[k].lineTo(point);
            } else {
                // A lone band still shows, as a dot.
                paths[k].moveTo(point);
                paths[k].lineTo(point);
            }
        }
        joined = true;
    }
    const std::array colors{kMinimumLineColor, kMeanLineColor, kMaximumLineColor};
    for (std::size_t k = 0; k < paths.size(); ++k) {
        strokeLine(painter, paths[k], colors[k], lineWidth);
    }
}

} // namespace

QImage renderSpectrumGraph(const KVSpectrumGraphContent& content, QSize size,
                           qreal devicePixelRatio, const QColor& background)
{
    const QSize pixels = (QSizeF(size) * devicePixelRatio).toSize();
    QImage image(pixels.expandedTo(QSize(1, 1)), QImage::Format_ARGB32_Premultiplied);
    image.fill(background);
    if (content.spectrum && !content.spectrum->empty() && !pixels.isEmpty()) {
        // Drawn in device pixels: the geometry is scaled, not the painter, which is why the
        // ratio is given to the image only once it is drawn.
        QPainter painter(&image);
        const Plot plot{static_cast<double>(pixels.width()), static_cast<double>(pixels.height()),
                        kSpectrumGraphMargin * devicePixelRatio};
        if (content.graphType == KVSpectrumGraphType::spectrogram) {
            drawBars(painter, content, plot);
        } else {
            drawLines(painter, content, plot, devicePixelRatio);
        }
    }
    image.setDevicePixelRatio(devicePixelRatio);
    return image;
}

} // namespace tintorra
