#include "ui/KVTenSegmentSliderGeometry.h"

#include <QPolygonF>
#include <algorithm>

namespace tintorra {

namespace {

// The scale's ends lie this far in from the widget's ends, so that end thumbs stay whole.
constexpr double kEndInset = 13.0;
constexpr double kSlotThickness = 6.0;
// The slot's rounded ends reach this far past the scale's ends.
constexpr double kSlotOverhang = 3.0;
constexpr double kThumbGap = 1.0;
constexpr double kThumbDepth = 12.0;
constexpr double kThumbHalfWidth = 5.0;
// The pointed part of a thumb, from its tip to its shoulders.
constexpr double kThumbTipDepth = 5.0;
constexpr double kGroupDepth = kSlotThickness + kThumbGap + kThumbDepth;

} // namespace

KVTenSegmentSliderGeometry::KVTenSegmentSliderGeometry(QSizeF size, double minValue,
                                                       double maxValue)
    : vertical_(size.height() > size.width()), length_(vertical_ ? size.height() : size.width()),
      breadth_(vertical_ ? size.width() : size.height()), minValue_(minValue), maxValue_(maxValue),
      slotAcross_(std::max(0.0, (breadth_ - kGroupDepth) / 2.0))
{}

double KVTenSegmentSliderGeometry::valueForPoint(QPointF point) const
{
    const double along = vertical_ ? length_ - point.y() : point.x();
    const double span = length_ - 2.0 * kEndInset;
    if (span <= 0.0) {
        return minValue_;
    }
    return minValue_ + (along - kEndInset) / span * (maxValue_ - minValue_);
}

double KVTenSegmentSliderGeometry::alongForValue(double value) const
{
    const double range = maxValue_ - minValue_;
    const double fraction = range == 0.0 ? 0.0 : (value - minValue_) / range;
    return kEndInset + fraction * (length_ - 2.0 * kEndInset);
}

QPointF KVTenSegmentSliderGeometry::point(double along, double across) const
{
    return vertical_ ? QPointF(across, length_ - along) : QPointF(along, across);
}

QRectF KVTenSegmentSliderGeometry::rect(double alongFrom, double alongTo, double acrossFrom,
                                        double acrossTo) const
{
    return QRectF(point(alongFrom, acrossFrom), point(alongTo, acrossTo)).normalized();
}

QRectF KVTenSegmentSliderGeometry::slotRect() const
{
    return rect(kEndInset - kSlotOverhang, length_ - kEndInset + kSlotOverhang, slotAcross_,
                slotAcross_ + kSlotThickness);
}

QPainterPath KVTenSegmentSliderGeometry::slotHitPath() const
{
    QPainterPath path;
    path.addRect(rect(kEndInset - kSlotOverhang, length_ - kEndInset + kSlotOverhang, 0.0,
                      slotAcross_ + kSlotThickness));
    return path;
}

QPainterPath KVTenSegmentSliderGeometry::thumbPath(double value) const
{
    const double a = alongForValue(value);
    const double tip = slotAcross_ + kSlotThickness + kThumbGap;
    const double shoulder = tip + kThumbTipDepth;
    const double base = tip + kThumbDepth;
    QPainterPath path;
    path.addPolygon(QPolygonF{point(a, tip), point(a + kThumbHalfWidth, shoulder),
                              point(a + kThumbHalfWidth, base), point(a - kThumbHalfWidth, base),
                              point(a - kThumbHalfWidth, shoulder), point(a, tip)});
    path.closeSubpath();
    return path;
}

QPointF KVTenSegmentSliderGeometry::thumbCenter(double value) const
{
    const double tip = slotAcross_ + kSlotThickness + kThumbGap;
    return point(alongForValue(value), tip + (kThumbTipDepth + kThumbDepth) / 2.0);
}

QLineF KVTenSegmentSliderGeometry::indicatorLine(double value) const
{
    const double a = alongForValue(value);
    return QLineF(point(a, slotAcross_ - 2.0), point(a, slotAcross_ + kSlotThickness + 2.0));
}

QLineF KVTenSegmentSliderGeometry::shadingAxis() const
{
    const double middle = slotAcross_ + kSlotThickness / 2.0;
    return QLineF(point(alongForValue(minValue_), middle), point(alongForValue(maxValue_), middle));
}

} // namespace tintorra
