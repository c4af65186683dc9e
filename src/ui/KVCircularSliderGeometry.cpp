#include "ui/KVCircularSliderGeometry.h"

#include "colour/HueAngles.h"
#include "controls/KVCircularSliderModel.h"

#include <algorithm>
#include <cmath>

namespace tintorra {

namespace {

// Room around the ring for the middle thumb, which stands a little proud of the band.
constexpr double kRingMargin = 2.5;
// Small thumbs are grabbed within this radius.
constexpr double kMinimumGrabRadius = 6.0;
// The slot is hit a little beyond its drawn edges.
constexpr double kSlotTolerance = 2.0;

} // namespace

KVCircularSliderGeometry::KVCircularSliderGeometry(QSizeF size, const KVCircularSliderModel& model)
    : size_(size), circular_(model.isCircular()), vertical_(size.height() > size.width()),
      minValue_(model.minValue()), maxValue_(model.maxValue()),
      center_(size.width() / 2.0, size.height() / 2.0)
{
    const double shortSide = std::min(size.width(), size.height());
    if (circular_) {
        const double halfSide = shortSide / 2.0;
        outerRadius_ = std::max(0.0, halfSide - kRingMargin);
        innerRadius_ = std::max(0.0, outerRadius_ - std::clamp(halfSide * 0.2, 8.0, 22.0));
        middleThumbRadius_ = bandWidth() / 2.0 + 1.0;
        return;
    }
    middleThumbRadius_ = std::clamp(shortSide * 0.3, 5.0, 9.0);
    const double thickness = std::clamp(shortSide * 0.28, 4.0, 8.0);
    const double length = vertical_ ? size.height() : size.width();
    const double start = kEndInset - thickness / 2.0;
    const double extent = std::max(0.0, length - 2.0 * kEndInset) + thickness;
    const double across = shortSide / 2.0 - thickness / 2.0;
    slotRect_ = vertical_ ? QRectF(across, size.height() - start - extent, thickness, extent)
                          : QRectF(start, across, extent, thickness);
}

double KVCircularSliderGeometry::fractionOfScale(double value) const
{
    const double span = scaleSpan();
    return span > 0.0 ? (value - minValue_) / span : 0.0;
}

double KVCircularSliderGeometry::axisPosition(QPointF point) const
{
    // Measured from the minimum's end: the left, or the bottom of a vertical slider.
    return vertical_ ? size_.height() - point.y() : point.x();
}

double KVCircularSliderGeometry::valueForAxisPosition(double position) const
{
    const double length = (vertical_ ? size_.height() : size_.width()) - 2.0 * kEndInset;
    if (length <= 0.0) {
        return minValue_;
    }
    return minValue_ + (position - kEndInset) / length * scaleSpan();
}

double KVCircularSliderGeometry::straightValueAtPoint(QPointF point) const
{
    return valueForAxisPosition(axisPosition(point));
}

double KVCircularSliderGeometry::valueAtPoint(QPointF point) const
{
    if (!circular_) {
        return straightValueAtPoint(point);
    }
    // Counter-clockwise from 3 o'clock as the eye sees it, so y is turned upwards.
    double angle = std::atan2(center_.y() - point.y(), point.x() - center_.x());
    if (angle < 0.0) {
        angle += kTwoPi;
    }
    return minValue_ + angle / kTwoPi * scaleSpan();
}

QPointF KVCircularSliderGeometry::pointForValue(double value) const
{
    const double fraction = fractionOfScale(value);
    if (circular_) {
        const double angle = fraction * kTwoPi;
        const double radius = (outerRadius_ + innerRadius_) / 2.0;
        return {center_.x() + radius * std::cos(angle), center_.y() - radius * std::sin(angle)};
    }
    const double length = (vertical_ ? size_.height() : size_.width()) - 2.0 * kEndInset;
    const double position = kEndInset + fraction * std::max(0.0, length);
    const double across = std::min(size_.width(), size_.height()) / 2.0;
    return vertical_ ? QPointF(across, size_.height() - position) : QPointF(position, across);
}

QRectF KVCircularSliderGeometry::trackRect(bool leadingSide) const
{
    const double offset = kTrackGap + kTrackWidth;
    if (vertical_) {
        const double x = leadingSide ? slotRect_.left() - offset : slotRect_.right() + kTrackGap;
        return {x, slotRect_.top(), kTrackWidth, slotRect_.height()};
    }
    const double y = leadingSide ? slotRect_.top() - offset : slotRect_.bottom() + kTrackGap;
    return {slotRect_.left(), y, slotRect_.width(), kTrackWidth};
}

double KVCircularSliderGeometry::thumbRadius(int part) const
{
    switch (part) {
    case kCircularPartMiddle:
        return middleThumbRadius_;
    case kCircularPartUpper:
    case kCircularPartLower:
        return circular_ ? bandWidth() * 0.3 + 1.0 : middleThumbRadius_ * 0.72;
    case kCircularPartUpperFalloff:
    case kCircularPartLowerFalloff:
        return circular_ ? bandWidth() * 0.2 + 1.0 : middleThumbRadius_ * 0.55;
    default:
        return 0.0;
    }
}

bool KVCircularSliderGeometry::slotContains(QPointF point) const
{
    if (circular_) {
        const double distance = std::hypot(point.x() - center_.x(), point.y() - center_.y());
        return distance >= innerRadius_ - kSlotTolerance &&
               distance <= outerRadius_ + kSlotTolerance;
    }
    // Across its length the slot is as easy to hit as the middle thumb that runs along it.
    const double halfAcross = std::max(middleThumbRadius_, kMinimumGrabRadius);
    const QPointF middle = slotRect_.center();
    const QRectF area = vertical_
                            ? QRectF(middle.x() - halfAcross, slotRect_.top() - kSlotTolerance,
                                     2.0 * halfAcross, slotRect_.height() + 2.0 * kSlotTolerance)
                            : QRectF(slotRect_.left() - kSlotTolerance, middle.y() - halfAcross,
                                     slotRect_.width() + 2.0 * kSlotTolerance, 2.0 * halfAcross);
    return area.contains(point);
}

bool KVCircularSliderGeometry::thumbContains(int part, double value, QPointF point) const
{
    const QPointF thumb = pointForValue(value);
    const double radius = std::max(thumbRadius(part), kMinimumGrabRadius);
    return std::hypot(point.x() - thumb.x(), point.y() - thumb.y()) <= radius;
}

double thumbValue(const KVSliderValues& values, int part)
{
    switch (part) {
    case kCircularPartUpper:
        return values.upper;
    case kCircularPartLower:
        return values.lower;
    case kCircularPartUpperFalloff:
        return values.upperFalloff;
    case kCircularPartLowerFalloff:
        return values.lowerFalloff;
    default:
        return values.middle;
    }
}

} // namespace tintorra
