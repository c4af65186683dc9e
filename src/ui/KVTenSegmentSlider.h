#pragma once

#include "controls/KVTenSegmentSliderModel.h"
#include "ui/KVUndoGrouping.h"

#include <QColor>
#include <QWidget>
#include <cstdint>
#include <memory>

class QMenu;

namespace tintorra {

class KVTenSegmentSliderGeometry;

// The eleven-thumb curve slider: a shaded slot with the curve's eleven outputs as thumbs along
// it. Dragging a thumb anchors it and stretches the free thumbs up to the next anchors; a double
// click on a thumb resets the curve. The value rules live in the model; this widget turns points
// into values, finds the part under the pointer, paints, and tells the outside world through
// signals named after the binding keys, the action signal and the hover notification
// "N_MouseMovedOverTenSegmentSliderThumbSlot".
class KVTenSegmentSlider : public QWidget {
    Q_OBJECT

public:
    explicit KVTenSegmentSlider(QWidget* parent = nullptr);

    KVTenSegmentSliderModel& model() { return model_; }
    const KVTenSegmentSliderModel& model() const { return model_; }

    KVValueDictionary values() const { return model_.values(); }
    // Replaces the curve, unlocking the thumbs that move; pushes "values" and sends the action.
    void setValues(const KVValueDictionary& values) { model_.setValues(values); }
    // Only stores the curve, as a binding writes back into the slider.
    void takeValues(const KVValueDictionary& values) { model_.takeValues(values); }
    double minValue() const { return model_.minValue(); }
    void setMinValue(double value);
    double maxValue() const { return model_.maxValue(); }
    void setMaxValue(double value);

    // The ends of the slot's shading; an invalid middle colour leaves the middle to the blend.
    QColor lowerColor() const { return lowerColor_; }
    void setLowerColor(const QColor& color);
    QColor middleColor() const { return middleColor_; }
    void setMiddleColor(const QColor& color);
    QColor upperColor() const { return upperColor_; }
    void setUpperColor(const QColor& color);

    void setUndoGrouping(KVUndoGrouping grouping) { undoGrouping_ = std::move(grouping); }

    // The part under a point: 0 none, 1 the slot, 2 to 12 the thumbs.
    std::int32_t controlPartAt(QPointF point) const;
    // The menu for the part under a point, or none where there is no part.
    std::unique_ptr<QMenu> createContextMenu(QPointF point);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    void valuesChanged(const tintorra::KVValueDictionary& values);
    void minValueChanged(double minValue);
    void maxValueChanged(double maxValue);
    // The slider's action: sent on every drag step while continuous, and when values are set.
    void actionTriggered();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    KVTenSegmentSliderGeometry geometry() const;
    void press(QMouseEvent* event, int clickCount);
    void postPointerOverSlot(QPointF point);

    KVTenSegmentSliderModel model_;
    KVUndoGrouping undoGrouping_;
    bool undoGroupOpen_ = false;
    int clickCount_ = 1;
    QColor lowerColor_ = Qt::black;
    QColor middleColor_;
    QColor upperColor_ = Qt::white;
};

} // namespace tintorra
