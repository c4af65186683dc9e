#include "ui/KVTenSegmentSlider.h"

#include "ui/KVNotificationCenter.h"
#include "ui/KVTenSegmentSliderGeometry.h"

#include <QContextMenuEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>

namespace tintorra {

namespace {

constexpr double kLockedDotRadius = 1.75;
const QColor kLockedDotColor(64, 64, 64);
// Thumbs stay light in every theme, like knobs, so that the dark dot of a locked one shows.
const QColor kThumbFill(245, 245, 245);
const QColor kPressedThumbFill(180, 180, 180);
const QColor kThumbOutline(96, 96, 96);
constexpr double kSlotCornerRadius = 3.0;

} // namespace

KVTenSegmentSlider::KVTenSegmentSlider(QWidget* parent) : QWidget(parent)
{
    setMouseTracking(true);
    KVSliderBindings& bindings = model_.bindings();
    bindings.bind(kTenSegmentValuesBinding, [this] { emit valuesChanged(model_.values()); });
    bindings.bind(kTenSegmentMinValueBinding, [this] { emit minValueChanged(model_.minValue()); });
    bindings.bind(kTenSegmentMaxValueBinding, [this] { emit maxValueChanged(model_.maxValue()); });
    bindings.setAction([this] { emit actionTriggered(); });
    bindings.setDisplayHandler([this] { update(); });
}

void KVTenSegmentSlider::setMinValue(double value)
{
    model_.setMinValue(value);
    model_.propagateValuesForBinding(kTenSegmentMinValueBinding);
}

void KVTenSegmentSlider::setMaxValue(double value)
{
    model_.setMaxValue(value);
    model_.propagateValuesForBinding(kTenSegmentMaxValueBinding);
}

void KVTenSegmentSlider::setLowerColor(const QColor& color)
{
    lowerColor_ = color;
    update();
}

void KVTenSegmentSlider::setMiddleColor(const QColor& color)
{
    middleColor_ = color;
    update();
}

void KVTenSegmentSlider::setUpperColor(const QColor& color)
{
    upperColor_ = color;
    update();
}

KVTenSegmentSliderGeometry KVTenSegmentSlider::geometry() const
{
    return KVTenSegmentSliderGeometry(QSizeF(size()), model_.minValue(), model_.maxValue());
}

std::int32_t KVTenSegmentSlider::controlPartAt(QPointF point) const
{
    const KVTenSegmentSliderGeometry layout = geometry();
    return model_.hitTest(layout.valueForPoint(point), [&](std::int32_t part) {
        if (part == kTenSegmentPartSlot) {
            return layout.slotHitPath().contains(point);
        }
        if (const auto thumb = KVTenSegmentSliderModel::sliderThumbForControlPart(part)) {
            return layout.thumbPath(model_.thumb(*thumb).doubleValue).contains(point);
        }
        // The last part has no area of its own here.
        return false;
    });
}

QSize KVTenSegmentSlider::sizeHint() const
{
    return {240, 26};
}

QSize KVTenSegmentSlider::minimumSizeHint() const
{
    return {120, 22};
}

// --- Mouse ---------------------------------------------------------------------------------------

void KVTenSegmentSlider::mousePressEvent(QMouseEvent* event)
{
    press(event, 1);
}

void KVTenSegmentSlider::mouseDoubleClickEvent(QMouseEvent* event)
{
    press(event, 2);
}

void KVTenSegmentSlider::press(QMouseEvent* event, int clickCount)
{
    if (event->button() != Qt::LeftButton) {
        QWidget::mousePressEvent(event);
        return;
    }
    clickCount_ = clickCount;
    const QPointF point = event->position();
    const double pointerValue = geometry().valueForPoint(point);
    if (model_.mouseDown(controlPartAt(point), pointerValue) && !undoGroupOpen_) {
        undoGrouping_.beginGroup();
        undoGroupOpen_ = true;
    }
}

void KVTenSegmentSlider::mouseMoveEvent(QMouseEvent* event)
{
    const QPointF point = event->position();
    if (model_.mouseIsDown()) {
        model_.mouseDragged(geometry().valueForPoint(point));
    } else if (event->buttons() == Qt::NoButton) {
        postPointerOverSlot(point);
    }
}

void KVTenSegmentSlider::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        QWidget::mouseReleaseEvent(event);
        return;
    }
    model_.mouseUp(geometry().valueForPoint(event->position()), clickCount_);
    clickCount_ = 1;
    if (undoGroupOpen_) {
        undoGroupOpen_ = false;
        undoGrouping_.endGroup();
    }
}

void KVTenSegmentSlider::postPointerOverSlot(QPointF point)
{
    if (controlPartAt(point) != kTenSegmentPartSlot) {
        return;
    }
    const QString key = QString::fromStdString(model_.mouseMovedNotificationKey());
    KVNotificationCenter::defaultCenter().postLater(
        kMouseMovedOverTenSegmentSliderThumbSlotNotification, this,
        {{key, geometry().valueForPoint(point)}});
}

void KVTenSegmentSlider::leaveEvent(QEvent* event)
{
    KVNotificationCenter::defaultCenter().postLater(
        kMouseMovedOverTenSegmentSliderThumbSlotNotification, this);
    QWidget::leaveEvent(event);
}

// --- Contextual menu ---------------------------------------------------------------------------

std::unique_ptr<QMenu> KVTenSegmentSlider::createContextMenu(QPointF point)
{
    const std::int32_t part = controlPartAt(point);
    const std::vector<KVContextMenuItem> items = model_.contextualMenuItems(part);
    if (items.empty()) {
        return nullptr;
    }
    model_.setControlPartUnderMenu(part);
    auto menu = std::make_unique<QMenu>(tr(kContextualMenuTitle), this);
    for (const KVContextMenuItem& item : items) {
        if (item.isSeparator) {
            menu->addSeparator();
            continue;
        }
        QAction* const action = menu->addAction(tr(item.title.c_str()));
        if (item.title == "Unlock Thumb") {
            connect(action, &QAction::triggered, this, [this] { model_.unlockThumb(); });
        } else if (item.title == "Reset Slider") {
            connect(action, &QAction::triggered, this, [this] { model_.resetAllThumbs(); });
        }
    }
    return menu;
}

void KVTenSegmentSlider::contextMenuEvent(QContextMenuEvent* event)
{
    if (const std::unique_ptr<QMenu> menu = createContextMenu(event->pos())) {
        menu->exec(event->globalPos());
    }
}

void KVTenSegmentSlider::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::EnabledChange) {
        model_.setEnabled(isEnabled());
    }
    QWidget::changeEvent(event);
}

// --- Painting ----------------------------------------------------------------------------------

void KVTenSegmentSlider::paintEvent(QPaintEvent*)
{
    const KVTenSegmentSliderGeometry layout = geometry();
    const QPalette& colors = palette();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (!isEnabled()) {
        painter.setOpacity(0.5);
    }

    const QLineF axis = layout.shadingAxis();
    QLinearGradient shading(axis.p1(), axis.p2());
    shading.setColorAt(0.0, lowerColor_);
    if (middleColor_.isValid()) {
        shading.setColorAt(0.5, middleColor_);
    }
    shading.setColorAt(1.0, upperColor_);
    painter.setPen(QPen(colors.color(QPalette::Dark), 1.0));
    painter.setBrush(shading);
    painter.drawRoundedRect(layout.slotRect(), kSlotCornerRadius, kSlotCornerRadius);

    if (model_.showsValueIndicator() && !model_.mouseIsDown()) {
        painter.setPen(QPen(colors.color(QPalette::Highlight), 2.0));
        painter.drawLine(layout.indicatorLine(model_.indicatedValue()));
    }

    // The dragged thumb is drawn last, on top of any it passes.
    const auto pressed = KVTenSegmentSliderModel::sliderThumbForControlPart(model_.controlPart());
    const auto drawThumb = [&](std::size_t index) {
        const KVSliderThumb& thumb = model_.thumb(index);
        const bool isPressed = pressed == index;
        painter.setPen(QPen(kThumbOutline, 1.0));
        painter.setBrush(isPressed ? kPressedThumbFill : kThumbFill);
        painter.drawPath(layout.thumbPath(thumb.doubleValue));
        if (thumb.locked) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(kLockedDotColor);
            painter.drawEllipse(layout.thumbCenter(thumb.doubleValue), kLockedDotRadius,
                                kLockedDotRadius);
        }
    };
    for (std::size_t i = 0; i < kTenSegmentThumbCount; ++i) {
        if (pressed != i) {
            drawThumb(i);
        }
    }
    if (pressed) {
        drawThumb(*pressed);
    }
}

} // namespace tintorra
