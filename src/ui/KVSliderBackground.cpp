#include "ui/KVSliderBackground.h"

#include "colour/ColorConversions.h"
#include "ui/KVCircularSliderGeometry.h"

#include <QLinearGradient>
#include <QPainter>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace tintorra {

namespace {

// The spectrogram's display encoding of the gamut's linear colours.
constexpr double kDisplayGamma = 2.2;
// The gamut tabulates hues per half degree; so does the ring's colour table.
constexpr int kHueSteps = 720;
// The selection is laid over the ring in steps of a 4096th of a turn (under a tenth of a degree).
constexpr int kAngleSteps = 4096;

QRgb rgbFromComponents(const ColorComponents& rgb)
{
    const auto byte = [](double v) {
        return static_cast<int>(std::clamp(v, 0.0, 1.0) * 255.0 + 0.5);
    };
    return qRgb(byte(rgb.c0), byte(rgb.c1), byte(rgb.c2));
}

// Coverage of a pixel centre at `distance` by the band between the radii, with a one-pixel
// smooth edge on each side.
double bandCoverage(double distance, double inner, double outer)
{
    return std::clamp(outer - distance + 0.5, 0.0, 1.0) *
           std::clamp(distance - inner + 0.5, 0.0, 1.0);
}

std::uint8_t coverageByte(double coverage)
{
    return static_cast<std::uint8_t>(coverage * 255.0 + 0.5);
}

// A colour of this opacity (0..255), premultiplied.
QRgb premultiplied(QRgb colour, int opacity)
{
    const auto scaled = [opacity](int v) { return (v * opacity + 127) / 255; };
    return qRgba(scaled(qRed(colour)), scaled(qGreen(colour)), scaled(qBlue(colour)), opacity);
}

// All four channels of a premultiplied pixel times a / 255, two at a time.
inline QRgb scaledPixel(QRgb pixel, std::uint32_t a)
{
    std::uint32_t redBlue = (pixel & 0xff00ffu) * a;
    redBlue = ((redBlue + ((redBlue >> 8) & 0xff00ffu) + 0x800080u) >> 8) & 0xff00ffu;
    std::uint32_t alphaGreen = ((pixel >> 8) & 0xff00ffu) * a;
    alphaGreen = (alphaGreen + ((alphaGreen >> 8) & 0xff00ffu) + 0x800080u) & 0xff00ff00u;
    return alphaGreen | redBlue;
}

} // namespace

std::optional<ColorComponents> hueRingColor(double hueFraction, ColorSpaceModel colorSpaceModel,
                                            const KVColorGamut* gamut)
{
    if (colorSpaceModel == ColorSpaceModel::LChuv || colorSpaceModel == ColorSpaceModel::LChab) {
        if (gamut == nullptr || !gamut->hasTables()) {
            return std::nullopt;
        }
        Matrix3 MI{};
        gamut->copy_XYZ_to_RGB_matrix(MI);
        const ColorComponents peak = gamut->maxChromaForHue(hueFraction * kTwoPi);
        // The table speaks the gamut's own model, whichever mode the slider was last told.
        const ColorComponents linear = gamut->colorSpaceModel() == ColorSpaceModel::LChab
                                           ? lchabToRgb(peak, MI)
                                           : lchuvToRgb(peak, MI);
        return gammaEncode(linear, kDisplayGamma);
    }
    return hsbToRgb({hueFraction, 1.0, 1.0, 1.0});
}

void KVSliderBackground::prepare(const KVSliderBackgroundInputs& inputs,
                                 const KVCircularSliderGeometry& geometry)
{
    if (!inputs_ || *inputs_ != inputs) {
        inputs_ = inputs;
        build(geometry);
    }
}

void KVSliderBackground::build(const KVCircularSliderGeometry& geometry)
{
    ++buildCount_;
    const KVSliderBackgroundInputs& in = *inputs_;
    const QSize devicePixels(static_cast<int>(std::ceil(in.size.width() * in.devicePixelRatio)),
                             static_cast<int>(std::ceil(in.size.height() * in.devicePixelRatio)));
    image_ = QImage(devicePixels, QImage::Format_ARGB32_Premultiplied);
    image_.setDevicePixelRatio(in.devicePixelRatio);
    image_.fill(Qt::transparent);
    hueColors_.clear();
    bandPixels_.clear();
    trackPixels_.clear();
    if (in.circular) {
        if (hueRingColor(0.0, in.colorSpaceModel, in.gamut.get())) {
            hueColors_.reserve(kHueSteps);
            for (int i = 0; i < kHueSteps; ++i) {
                const double fraction = static_cast<double>(i) / kHueSteps;
                hueColors_.push_back(
                    rgbFromComponents(*hueRingColor(fraction, in.colorSpaceModel, in.gamut.get())));
            }
        }
        fillRing(geometry);
    } else {
        paintSlot(geometry);
    }
}

void KVSliderBackground::fillRing(const KVCircularSliderGeometry& geometry)
{
    const double dpr = inputs_->devicePixelRatio;
    const double cx = geometry.center().x() * dpr;
    const double cy = geometry.center().y() * dpr;
    const double outer = geometry.outerRadius() * dpr;
    const double inner = geometry.innerRadius() * dpr;
    const double trackOuter = geometry.trackOuterRadius() * dpr;
    const double trackInner = geometry.trackInnerRadius() * dpr;
    const QRgb neutral = inputs_->neutralColor.rgb();
    const double reach = outer + 1.0;
    const int top = std::max(0, static_cast<int>(std::floor(cy - reach)));
    const int bottom = std::min(image_.height(), static_cast<int>(std::ceil(cy + reach)));
    const int left = std::max(0, static_cast<int>(std::floor(cx - reach)));
    const int right = std::min(image_.width(), static_cast<int>(std::ceil(cx + reach)));
    auto* pixels = reinterpret_cast<QRgb*>(image_.bits());
    const int stride = static_cast<int>(image_.bytesPerLine() / sizeof(QRgb));
    for (int y = top; y < bottom; ++y) {
        const double dy = y + 0.5 - cy;
        for (int x = left; x < right; ++x) {
            const double dx = x + 0.5 - cx;
            const double distance = std::sqrt(dx * dx + dy * dy);
            const std::uint8_t band = coverageByte(bandCoverage(distance, inner, outer));
            const std::uint8_t track = coverageByte(bandCoverage(distance, trackInner, trackOuter));
            if (band == 0 && track == 0) {
                continue;
            }
            // Counter-clockwise from 3 o'clock as the eye sees it.
            double turns = std::atan2(-dy, dx) / kTwoPi;
            if (turns < 0.0) {
                turns += 1.0;
            }
            const auto offset = static_cast<std::uint32_t>(y * stride + x);
            const auto angle = static_cast<std::uint16_t>(static_cast<int>(turns * kAngleSteps) &
                                                          (kAngleSteps - 1));
            if (band != 0) {
                const QRgb colour =
                    hueColors_.empty()
                        ? neutral
                        : hueColors_[static_cast<int>(turns * kHueSteps + 0.5) % kHueSteps];
                pixels[offset] = premultiplied(colour, band);
                bandPixels_.push_back({offset, angle, band});
            }
            if (track != 0) {
                trackPixels_.push_back({offset, angle, track});
            }
        }
    }
    // Hairlines give the band an edge on backgrounds close to its own colours.
    QPainter painter(&image_);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(inputs_->outlineColor, 1.0));
    painter.setBrush(Qt::NoBrush);
    for (const double radius : {geometry.outerRadius(), geometry.innerRadius()}) {
        painter.drawEllipse(geometry.center(), radius, radius);
    }
}

const QImage& KVSliderBackground::ringFrame(const KVRingSelection& selection, const QColor& track,
                                            const QColor& veil)
{
    // Per step of the turn, measured from the lower fall-off's end, how strongly it is selected:
    // rising across the lower fall-off, full between the bounds, falling across the upper
    // fall-off. From that, the premultiplied veil and track colours of the step.
    const double rise = selection.lower - selection.lowerFalloff;
    const double top = selection.upper - selection.lowerFalloff;
    const double end = selection.upperFalloff - selection.lowerFalloff;
    const QRgb veilColour = veil.rgb();
    const QRgb trackColour = track.rgb();
    const double veilAlpha = veil.alpha();
    const double trackAlpha = track.alpha();
    std::array<QRgb, kAngleSteps> veils;
    std::array<QRgb, kAngleSteps> tracks;
    for (int i = 0; i < kAngleSteps; ++i) {
        double t = (i + 0.5) / kAngleSteps - selection.lowerFalloff;
        t -= std::floor(t);
        const double strength = t < rise   ? t / rise
                                : t <= top ? 1.0
                                : t < end  ? (end - t) / (end - top)
                                           : 0.0;
        veils[i] = premultiplied(veilColour, qRound(veilAlpha * (1.0 - strength)));
        tracks[i] = premultiplied(trackColour, qRound(trackAlpha * strength));
    }

    if (frame_.size() != image_.size()) {
        frame_ = QImage(image_.size(), image_.format());
    }
    frame_.setDevicePixelRatio(image_.devicePixelRatio());
    std::memcpy(frame_.bits(), image_.constBits(), static_cast<std::size_t>(image_.sizeInBytes()));
    auto* pixels = reinterpret_cast<QRgb*>(frame_.bits());
    // The veil lies on the hues and nowhere else (source atop): its colour within the band's
    // coverage, the hue beneath let through by what the veil leaves.
    for (const RingPixel& pixel : bandPixels_) {
        const QRgb over = veils[pixel.angle];
        pixels[pixel.offset] = scaledPixel(over, pixel.coverage) +
                               scaledPixel(pixels[pixel.offset], 255u - qAlpha(over));
    }
    // The track stands on empty ground inside the band.
    for (const RingPixel& pixel : trackPixels_) {
        pixels[pixel.offset] = scaledPixel(tracks[pixel.angle], pixel.coverage);
    }
    return frame_;
}

void KVSliderBackground::paintSlot(const KVCircularSliderGeometry& geometry)
{
    const KVSliderBackgroundInputs& in = *inputs_;
    QLinearGradient gradient(geometry.minimumPoint(), geometry.maximumPoint());
    gradient.setColorAt(0.0, in.lowerColor);
    if (in.middleColor.isValid()) {
        gradient.setColorAt(0.5, in.middleColor);
    }
    gradient.setColorAt(1.0, in.upperColor);
    QPainter painter(&image_);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(in.outlineColor, 1.0));
    painter.setBrush(gradient);
    const QRectF slot = geometry.slotRect().adjusted(0.5, 0.5, -0.5, -0.5);
    const double corner = std::min(slot.width(), slot.height()) / 2.0;
    painter.drawRoundedRect(slot, corner, corner);
}

QColor KVSliderBackground::colorAt(double fraction) const
{
    if (!inputs_) {
        return {};
    }
    if (inputs_->circular) {
        if (hueColors_.empty()) {
            return inputs_->neutralColor;
        }
        fraction -= std::floor(fraction);
        return QColor(hueColors_[static_cast<int>(fraction * kHueSteps + 0.5) % kHueSteps]);
    }
    const auto mix = [](const QColor& a, const QColor& b, double t) {
        return QColor::fromRgbF(static_cast<float>(a.redF() + (b.redF() - a.redF()) * t),
                                static_cast<float>(a.greenF() + (b.greenF() - a.greenF()) * t),
                                static_cast<float>(a.blueF() + (b.blueF() - a.blueF()) * t));
    };
    fraction = std::clamp(fraction, 0.0, 1.0);
    if (!inputs_->middleColor.isValid()) {
        return mix(inputs_->lowerColor, inputs_->upperColor, fraction);
    }
    return fraction < 0.5 ? mix(inputs_->lowerColor, inputs_->middleColor, fraction * 2.0)
                          : mix(inputs_->middleColor, inputs_->upperColor, fraction * 2.0 - 1.0);
}

} // namespace tintorra
