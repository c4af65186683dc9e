#pragma once

#include "controls/KVSliderValues.h"

#include <QPointF>
#include <QRectF>
#include <QSizeF>

namespace tintorra {

class KVCircularSliderModel;

// Where everything of a range slider lies, in the widget's logical coordinates (points, y down,
// origin at the top left; device pixels never appear here).
//
// Ring: values run counter-clockwise from 3 o'clock, one turn for the whole scale; every thumb
// sits on the centre line of the hue band.
// Straight: values run along the long axis (left to right, or bottom to top when the widget is
// taller than wide), 13 points in from each end; thumbs sit on the centre line of the slot.
class KVCircularSliderGeometry {
public:
    // The form and the scale are the model's.
    KVCircularSliderGeometry(QSizeF size, const KVCircularSliderModel& model);

    bool isCircular() const { return circular_; }
    bool isVertical() const { return vertical_; }
    QSizeF size() const { return size_; }

    // --- Values and points ----------------------------------------------------------------------
    // The value under a point: its angle about the centre on a ring, its place along the long
    // axis on a straight slider (not clamped: a pointer beyond the ends gives values beyond the
    // scale, for the model to clamp).
    double valueAtPoint(QPointF point) const;
    // The straight mapping whatever the form (the pointer value posted while hovering).
    double straightValueAtPoint(QPointF point) const;
    // Where a thumb of this value sits.
    QPointF pointForValue(double value) const;
    // The value as a fraction of the scale (one turn on a ring).
    double fractionOfScale(double value) const;

    // --- Parts ----------------------------------------------------------------------------------
    // Drawn radius of a part's thumb (0 for the slot and none).
    double thumbRadius(int part) const;
    // Whether a point lies on the slot (the hue band or the straight track), with a little room.
    bool slotContains(QPointF point) const;
    // Whether a point lies on a thumb of this value, drawn for `part`; small thumbs are grabbed
    // within a minimum radius.
    bool thumbContains(int part, double value, QPointF point) const;

    // --- Ring -----------------------------------------------------------------------------------
    QPointF center() const { return center_; }
    double outerRadius() const { return outerRadius_; }
    double innerRadius() const { return innerRadius_; }
    double bandWidth() const { return outerRadius_ - innerRadius_; }
    // The selection track just inside the hue band.
    double trackOuterRadius() const { return innerRadius_ - kTrackGap; }
    double trackInnerRadius() const { return innerRadius_ - kTrackGap - kTrackWidth; }

    // --- Straight -------------------------------------------------------------------------------
    // The slot, ends rounded, reaching half its thickness past the extreme thumb positions.
    QRectF slotRect() const { return slotRect_; }
    // The selection tracks on either side of the slot.
    QRectF trackRect(bool leadingSide) const;
    // The axis from the minimum's point to the maximum's (for gradients along the slot).
    QPointF minimumPoint() const { return pointForValue(minValue_); }
    QPointF maximumPoint() const { return pointForValue(maxValue_); }

    // How far in from each end of a straight slider the scale starts.
    static constexpr double kEndInset = 13.0;
    static constexpr double kTrackGap = 2.0;
    static constexpr double kTrackWidth = 3.0;

private:
    double axisPosition(QPointF point) const;
    double valueForAxisPosition(double position) const;
    double scaleSpan() const { return maxValue_ - minValue_; }

    QSizeF size_;
    bool circular_;
    bool vertical_;
    double minValue_;
    double maxValue_;
    QPointF center_;
    double outerRadius_ = 0.0;
    double innerRadius_ = 0.0;
    double middleThumbRadius_ = 0.0;
    QRectF slotRect_;
};

// The value at which a part's thumb is drawn and hit: the range as the model reports it
// (clamped), so that what the eye sees is what the pointer finds.
double thumbValue(const KVSliderValues& values, int part);

} // namespace tintorra
