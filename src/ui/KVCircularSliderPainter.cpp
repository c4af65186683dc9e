#include "ui/KVCircularSliderPainter.h"

#include "controls/KVCircularSliderModel.h"
#include "ui/KVCircularSliderGeometry.h"
#include "ui/KVSliderBackground.h"

#include <QFontMetricsF>
#include <QLinearGradient>
#include <QPainter>
#include <algorithm>
#include <ranges>

namespace tintorra {

namespace {

// Two stops this close make a hard edge (a bound without fall-off).
constexpr double kHardEdge = 1.0e-4;
constexpr double kDisabledOpacity = 0.45;

const QColor kThumbFace(255, 255, 255);
const QColor kThumbEdge(0, 0, 0, 170);
const QColor kFalloffThumbFace(40, 40, 40, 230);

QColor transparentOf(QColor colour)
{
    colour.setAlpha(0);
    return colour;
}

// The selection's strength along a gradient: `none` before a, rising to `full` at b, `full` to
// c, falling back to `none` at d (ascending fractions of the gradient). Equal positions make a
// hard edge; whatever lies past the last stop keeps its colour.
QGradientStops selectionStops(double a, double b, double c, double d, const QColor& full,
                              const QColor& none)
{
    QGradientStops stops;
    const auto add = [&stops](double position, const QColor& colour) {
        if (!stops.isEmpty() && position <= stops.last().first) {
            position = stops.last().first + kHardEdge;
        }
        if (position > 1.0) {
            if (!stops.isEmpty() && stops.last().first >= 1.0) {
                return;
            }
            position = 1.0;
        }
        stops.append({std::max(0.0, position), colour});
    };
    add(a, none);
    add(b, full);
    add(c, full);
    add(d, none);
    return stops;
}

void paintStraightSelection(QPainter& painter, const KVCircularSliderGeometry& geometry,
                            const KVSliderValues& values, const KVCircularSliderLook& look)
{
    QLinearGradient track(geometry.minimumPoint(), geometry.maximumPoint());
    track.setStops(selectionStops(
        geometry.fractionOfScale(values.lowerFalloff), geometry.fractionOfScale(values.lower),
        geometry.fractionOfScale(values.upper), geometry.fractionOfScale(values.upperFalloff),
        look.selection, transparentOf(look.selection)));
    painter.setPen(Qt::NoPen);
    painter.setBrush(track);
    for (const bool leading : {true, false}) {
        const QRectF rect = geometry.trackRect(leading);
        const double corner = std::min(rect.width(), rect.height()) / 2.0;
        painter.drawRoundedRect(rect, corner, corner);
    }
}

void paintThumb(QPainter& painter, QPointF center, double radius, int part, const QColor& fill)
{
    switch (part) {
    case kCircularPartMiddle:
        // A white rim round the colour under the thumb.
        painter.setPen(QPen(kThumbEdge, 1.0));
        painter.setBrush(kThumbFace);
        painter.drawEllipse(center, radius, radius);
        if (radius > 4.0) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(fill);
            painter.drawEllipse(center, radius - 2.5, radius - 2.5);
        }
        break;
    case kCircularPartUpper:
    case kCircularPartLower:
        painter.setPen(QPen(kThumbEdge, 1.0));
        painter.setBrush(kThumbFace);
        painter.drawEllipse(center, radius, radius);
        break;
    default:
        painter.setPen(QPen(kThumbFace, 1.2));
        painter.setBrush(kFalloffThumbFace);
        painter.drawEllipse(center, radius, radius);
        break;
    }
}

void paintLabel(QPainter& painter, const KVCircularSliderGeometry& geometry, double value,
                const KVCircularSliderLook& look)
{
    const QString text = circularSliderLabel(value);
    painter.setFont(look.labelFont);
    const QFontMetricsF metrics(look.labelFont);
    const QSizeF textSize(metrics.horizontalAdvance(text) + 8.0, metrics.height() + 2.0);
    const QRectF box(QPointF(geometry.size().width() - textSize.width(),
                             geometry.size().height() - textSize.height()) /
                         2.0,
                     textSize);
    if (!geometry.isCircular()) {
        // Over the slot the label needs a ground of its own.
        painter.setPen(Qt::NoPen);
        painter.setBrush(look.veil);
        painter.drawRoundedRect(box, 3.0, 3.0);
    }
    painter.setPen(look.text);
    painter.drawText(box, Qt::AlignCenter, text);
}

} // namespace

QString circularSliderLabel(double value)
{
    return QString::asprintf("%.1f°", value * 360.0);
}

void paintCircularSlider(QPainter& painter, const KVCircularSliderGeometry& geometry,
                         const KVCircularSliderModel& model, KVSliderBackground& background,
                         const KVCircularSliderLook& look, bool drawLabel)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    if (!look.enabled) {
        painter.setOpacity(kDisabledOpacity);
    }
    const KVSliderValues values = model.sliderValues();
    const bool showsSelection = model.showsUpperLowerThumbs() && model.wrapDist() > 0.0;
    if (showsSelection && geometry.isCircular()) {
        // Unwrapped and less than a turn from end to end, as the model clamps them.
        const KVRingSelection selection{
            geometry.fractionOfScale(values.lowerFalloff), geometry.fractionOfScale(values.lower),
            geometry.fractionOfScale(values.upper), geometry.fractionOfScale(values.upperFalloff)};
        painter.drawImage(QPointF(0.0, 0.0),
                          background.ringFrame(selection, look.selection, look.veil));
    } else {
        painter.drawImage(QPointF(0.0, 0.0), background.image());
        if (showsSelection) {
            paintStraightSelection(painter, geometry, values, look);
        }
    }

    // Drawn in the reverse of the hit-testing order, so that the thumb the pointer finds first
    // lies on top.
    for (const int part : model.hitTestOrder() | std::views::reverse) {
        if (part == kCircularPartSlot) {
            continue;
        }
        const double value = thumbValue(values, part);
        paintThumb(painter, geometry.pointForValue(value), geometry.thumbRadius(part), part,
                   background.colorAt(geometry.fractionOfScale(value)));
    }

    painter.setOpacity(1.0);
    if (drawLabel) {
        paintLabel(painter, geometry, model.displayedValue(), look);
    }
    painter.restore();
}

} // namespace tintorra
