#pragma once

#include "colour/KVColorGamut.h"
#include "controls/KVCircularSliderModel.h"
#include "ui/KVSliderBackground.h"
#include "ui/KVUndoGrouping.h"

#include <QColor>
#include <QMetaType>
#include <QWidget>
#include <memory>

class QLineEdit;
class QMenu;

namespace tintorra {

class KVCircularSliderGeometry;

// The range slider: a middle value with bounds and fall-offs on a scale. A roughly square widget
// (neither side more than 1.2 times the other) is a hue ring that wraps around, with an editable
// field in its middle; an elongated one is a straight slider with hard ends. The form is chosen
// again whenever the widget is resized.
//
// The value rules live in the model; this widget turns the pointer into scale values, hit-tests
// its thumbs, paints, and reports changes as signals named after the binding keys ("values",
// "middleValue", ...) plus `triggered` for the action. Everything done in answer to one press,
// drag and release runs inside one undo group.
class KVCircularSlider : public QWidget {
    Q_OBJECT
    Q_PROPERTY(tintorra::KVSliderValues values READ values WRITE setValues NOTIFY valuesChanged)
    Q_PROPERTY(double middleValue READ middleValue WRITE setMiddleValue NOTIFY middleValueChanged)

public:
    // A 120 x 120 ring.
    explicit KVCircularSlider(QWidget* parent = nullptr);
    // Takes its form from the size, as a new slider of that frame.
    explicit KVCircularSlider(const QSize& frameSize, QWidget* parent = nullptr);
    ~KVCircularSlider() override;

    // The value model, for everything not wrapped below (scale, thumbs shown, spread, resets).
    // Its binding callbacks belong to this widget.
    KVCircularSliderModel& model() { return model_; }
    const KVCircularSliderModel& model() const { return model_; }

    KVSliderValues values() const { return model_.sliderValues(); }
    void setValues(const KVSliderValues& values) { model_.setValues(values); }
    double middleValue() const { return model_.middleValue(); }
    void setMiddleValue(double value) { model_.setMiddleValue(value); }

    // The ring's colours: the colour mode's hues, in the LCh modes the gamut's most chromatic
    // colours. Without a gamut an LCh-mode ring is drawn neutral.
    const KVColorGamutPtr& colorGamut() const { return gamut_; }
    void setColorGamut(KVColorGamutPtr gamut);
    ColorSpaceModel colorSpaceModel() const { return model_.colorSpaceModel(); }
    void setColorSpaceModel(ColorSpaceModel model) { model_.setColorSpaceModel(model); }

    // The ends (and, if valid, the middle) of a straight slider's slot gradient.
    QColor lowerColor() const { return lowerColor_; }
    void setLowerColor(const QColor& color);
    QColor middleColor() const { return middleColor_; }
    void setMiddleColor(const QColor& color);
    QColor upperColor() const { return upperColor_; }
    void setUpperColor(const QColor& color);

    // Opened at each press on a part and closed at its release; installed by the controller.
    void setUndoGrouping(KVUndoGrouping grouping) { undoGrouping_ = std::move(grouping); }

    // The ring's degree field; hidden on straight sliders and while a part is dragged.
    QLineEdit* valueField() const { return valueField_; }
    // The contextual menu over a part; none over no part.
    std::unique_ptr<QMenu> createContextMenu(int part);
    // How often the still background has been built (it is cached at device pixels).
    int backgroundBuildCount() const { return background_.buildCount(); }

    QSize sizeHint() const override;

signals:
    void valuesChanged(const tintorra::KVSliderValues& values);
    void middleValueChanged(double middleValue);
    void upperValueChanged(double upperValue);
    void lowerValueChanged(double lowerValue);
    void upperFalloffValueChanged(double upperFalloffValue);
    void lowerFalloffValueChanged(double lowerFalloffValue);
    // The action: sent on every change the user makes (on each drag step while continuous).
    void triggered();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    KVCircularSliderGeometry sliderGeometry() const;
    int partAt(const KVCircularSliderGeometry& geometry, QPointF point) const;
    void pressAt(QPointF point, int clickCount);
    void installBindings();
    void chooseForm();
    void updateValueField();
    void takeValueFieldText();
    void placeValueField();
    bool drawsLabel() const;

    KVCircularSliderModel model_;
    KVColorGamutPtr gamut_;
    QColor lowerColor_ = Qt::black;
    QColor middleColor_;
    QColor upperColor_ = Qt::white;
    KVUndoGrouping undoGrouping_;
    KVSliderBackground background_;
    QLineEdit* valueField_ = nullptr;
    int clickCount_ = 1;
};

} // namespace tintorra

Q_DECLARE_METATYPE(tintorra::KVSliderValues)
