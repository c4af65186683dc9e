#pragma once

#include <QLineF>
#include <QPainterPath>
#include <QPointF>
#include <QRectF>
#include <QSizeF>

namespace tintorra {

// Where the parts of the curve slider lie in a widget of a given size. The slider runs along
// the long axis (vertical when the widget is taller than wide, values growing upwards), 13
// points in from each end. Across it, the slot lies on the top (or left) side and the thumbs
// hang off it, pointing at the slot: slot and thumbs never overlap, so a press is never
// ambiguous between them. The slot's hit area reaches to the widget's edge.
class KVTenSegmentSliderGeometry {
public:
    KVTenSegmentSliderGeometry(QSizeF size, double minValue, double maxValue);

    bool isVertical() const { return vertical_; }

    double valueForPoint(QPointF point) const;
    // The position of a value along the long axis, counted from the minimum's end.
    double alongForValue(double value) const;

    QRectF slotRect() const;
    QPainterPath slotHitPath() const;
    QPainterPath thumbPath(double value) const;
    // The middle of a thumb's body, where a locked thumb carries its dot.
    QPointF thumbCenter(double value) const;
    // Across the slot at a value.
    QLineF indicatorLine(double value) const;
    // The ends of the slot's shading, from the minimum to the maximum.
    QLineF shadingAxis() const;

private:
    QPointF point(double along, double across) const;
    QRectF rect(double alongFrom, double alongTo, double acrossFrom, double acrossTo) const;

    bool vertical_;
    double length_;
    double breadth_;
    double minValue_;
    double maxValue_;
    // Where the slot starts across the widget, so that slot and thumbs sit in the middle.
    double slotAcross_;
};

} // namespace tintorra
