#include "ui/KVCircularSlider.h"

#include "ui/KVCircularSliderGeometry.h"
#include "ui/KVCircularSliderPainter.h"
#include "ui/KVNotificationCenter.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QLocale>
#include <QMenu>
#include <QPaintEngine>
#include <QPainter>
#include <optional>

namespace tintorra {

namespace {

constexpr QSize kRingSize(120, 120);
// The degree field in the middle of a ring.
constexpr int kValueFieldWidth = 48;
constexpr int kValueFieldHeight = 14;
// The small system font, relative to the widget's own.
constexpr double kSmallFontScale = 0.85;
constexpr int kVeilAlpha = 170;
constexpr int kOutlineAlpha = 70;

const QString kDegreeSuffix = QStringLiteral("°");

// The field's number format: one fraction digit, at least one integer digit, the suffix "°"
// for positive and negative numbers alike.
QString degreesText(double value)
{
    return QLocale().toString(value * 360.0, 'f', 1) + kDegreeSuffix;
}

// What the user typed, with or without the suffix, in the user's or the C locale.
std::optional<double> valueFromDegreesText(QString text)
{
    text = text.trimmed();
    if (text.endsWith(kDegreeSuffix)) {
        text = text.chopped(kDegreeSuffix.size()).trimmed();
    }
    bool ok = false;
    double degrees = QLocale().toDouble(text, &ok);
    if (!ok) {
        degrees = QLocale::c().toDouble(text, &ok);
    }
    return ok ? std::optional<double>(degrees / 360.0) : std::nullopt;
}

QFont smallFont(QFont font)
{
    if (font.pointSizeF() > 0.0) {
        font.setPointSizeF(font.pointSizeF() * kSmallFontScale);
    } else {
        font.setPixelSize(std::max(1, qRound(font.pixelSize() * kSmallFontScale)));
    }
    return font;
}

QColor withAlpha(QColor color, int alpha)
{
    color.setAlpha(alpha);
    return color;
}

} // namespace

KVCircularSlider::KVCircularSlider(QWidget* parent) : KVCircularSlider(kRingSize, parent) {}

KVCircularSlider::KVCircularSlider(const QSize& frameSize, QWidget* parent)
    : QWidget(parent),
      model_(KVCircularSliderModel::isCircularFrame(frameSize.width(), frameSize.height()))
{
    // Hover over the slot is reported to whoever listens.
    setMouseTracking(true);
    valueField_ = new QLineEdit(this);
    valueField_->setFrame(false);
    valueField_->setAlignment(Qt::AlignCenter);
    valueField_->setFont(smallFont(font()));
    valueField_->installEventFilter(this);
    connect(valueField_, &QLineEdit::editingFinished, this, &KVCircularSlider::takeValueFieldText);
    installBindings();
    resize(frameSize);
    valueField_->setHidden(!model_.isCircular());
    placeValueField();
    updateValueField();
}

KVCircularSlider::~KVCircularSlider()
{
    // The field outlives this part of the slider: closing the window takes its focus, and the
    // editing it then finishes must not reach a slider that is half gone.
    valueField_->removeEventFilter(this);
    valueField_->disconnect(this);
}

void KVCircularSlider::installBindings()
{
    KVSliderBindings& bindings = model_.bindings();
    bindings.setDisplayHandler([this] {
        update();
        updateValueField();
    });
    bindings.setAction([this] { emit triggered(); });
    bindings.bind(kValuesBinding, [this] { emit valuesChanged(model_.sliderValues()); });
    bindings.bind(kMiddleValueBinding, [this] { emit middleValueChanged(model_.middleValue()); });
    bindings.bind(kUpperValueBinding, [this] { emit upperValueChanged(model_.upperValue()); });
    bindings.bind(kLowerValueBinding, [this] { emit lowerValueChanged(model_.lowerValue()); });
    bindings.bind(kUpperFalloffValueBinding,
                  [this] { emit upperFalloffValueChanged(model_.upperFalloffValue()); });
    bindings.bind(kLowerFalloffValueBinding,
                  [this] { emit lowerFalloffValueChanged(model_.lowerFalloffValue()); });
}

void KVCircularSlider::setColorGamut(KVColorGamutPtr gamut)
{
    gamut_ = std::move(gamut);
    update();
}

void KVCircularSlider::setLowerColor(const QColor& color)
{
    lowerColor_ = color;
    update();
}

void KVCircularSlider::setMiddleColor(const QColor& color)
{
    middleColor_ = color;
    update();
}

void KVCircularSlider::setUpperColor(const QColor& color)
{
    upperColor_ = color;
    update();
}

QSize KVCircularSlider::sizeHint() const
{
    if (model_.isCircular()) {
        return kRingSize;
    }
    return height() > width() ? QSize(24, 160) : QSize(160, 24);
}

KVCircularSliderGeometry KVCircularSlider::sliderGeometry() const
{
    return KVCircularSliderGeometry(size(), model_);
}

int KVCircularSlider::partAt(const KVCircularSliderGeometry& geometry, QPointF point) const
{
    const KVSliderValues values = model_.sliderValues();
    return model_.hitTest([&](int part) {
        return part == kCircularPartSlot
                   ? geometry.slotContains(point)
                   : geometry.thumbContains(part, thumbValue(values, part), point);
    });
}

// --- Form and value field -------------------------------------------------------------------

void KVCircularSlider::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    chooseForm();
    placeValueField();
}

void KVCircularSlider::chooseForm()
{
    const bool circular = KVCircularSliderModel::isCircularFrame(width(), height());
    if (circular == model_.isCircular() || model_.mouseIsDown()) {
        return;
    }
    // A model of either form with this slider's settings, as a new slider would have them.
    const auto configured = [this](bool form) {
        KVCircularSliderModel model(form);
        if (model_.minValue() < model.maxValue()) {
            model.setMinValue(model_.minValue());
            model.setMaxValue(model_.maxValue());
        } else {
            model.setMaxValue(model_.maxValue());
            model.setMinValue(model_.minValue());
        }
        model.setShowsUpperLowerThumbs(model_.showsUpperLowerThumbs());
        model.setShowsUpperLowerFalloffThumbs(model_.showsUpperLowerFalloffThumbs());
        model.setCenterThumbWithinOffsets(model_.centerThumbWithinOffsets());
        model.setShowsValueIndicator(model_.showsValueIndicator());
        model.setIndicatedValue(model_.indicatedValue());
        model.setEnabled(model_.isEnabled());
        model.setContinuous(model_.isContinuous());
        model.setColorSpaceModel(model_.colorSpaceModel());
        model.setMouseMovedNotificationKey(model_.mouseMovedNotificationKey());
        return model;
    };
    KVCircularSliderModel next = configured(circular);
    // A range somebody set survives the change of form; one nobody has touched starts where a
    // new slider of the new form would.
    const KVCircularSliderModel untouched = configured(model_.isCircular());
    if (model_.offsets() != untouched.offsets()) {
        next.takeValues(model_.sliderValues());
    }
    if (model_.defaultValue() != untouched.defaultValue()) {
        next.setDefaultValue(model_.defaultValue());
    }
    model_ = std::move(next);
    installBindings();
    valueField_->setHidden(!circular);
    updateValueField();
    update();
}

void KVCircularSlider::placeValueField()
{
    const int height = std::max(kValueFieldHeight, valueField_->fontMetrics().height() + 2);
    valueField_->setGeometry((width() - kValueFieldWidth) / 2, (this->height() - height) / 2,
                             kValueFieldWidth, height);
}

void KVCircularSlider::updateValueField()
{
    // Text the user is typing is left alone until it is taken or abandoned.
    if (valueField_->hasFocus() && valueField_->isModified()) {
        return;
    }
    const QString text = degreesText(model_.middleValue());
    if (valueField_->text() != text) {
        valueField_->setText(text);
    }
}

void KVCircularSlider::takeValueFieldText()
{
    if (!valueField_->isModified()) {
        return;
    }
    valueField_->setModified(false);
    if (const std::optional<double> value = valueFromDegreesText(valueField_->text())) {
        model_.setMiddleValue(*value);
    }
    updateValueField();
}

bool KVCircularSlider::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == valueField_ && event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        const bool large = key->modifiers().testFlag(Qt::ShiftModifier);
        if (key->key() == Qt::Key_Up) {
            model_.nudgeMiddleValue(large ? KVNudgeCommand::upLarge : KVNudgeCommand::up);
            return true;
        }
        if (key->key() == Qt::Key_Down) {
            model_.nudgeMiddleValue(large ? KVNudgeCommand::downLarge : KVNudgeCommand::down);
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

// --- Painting -------------------------------------------------------------------------------

bool KVCircularSlider::drawsLabel() const
{
    // The label stands in for the degree field wherever the field is not showing.
    return valueField_->isHidden() &&
           (model_.controlPart() != kCircularPartNone || model_.showsValueIndicator());
}

void KVCircularSlider::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    // The device really painted on: the window's backing store, or the image that render()
    // draws into, whose pixel ratio may differ from the screen's.
    const qreal dpr = painter.paintEngine()->paintDevice()->devicePixelRatio();
    const KVCircularSliderGeometry geometry = sliderGeometry();
    const QPalette& colours = palette();
    const KVSliderBackgroundInputs inputs{
        size(),
        dpr,
        model_.isCircular(),
        model_.colorSpaceModel(),
        gamut_,
        lowerColor_,
        middleColor_,
        upperColor_,
        colours.color(QPalette::Mid),
        withAlpha(colours.color(QPalette::WindowText), kOutlineAlpha),
    };
    background_.prepare(inputs, geometry);
    const KVCircularSliderLook look{
        colours.color(QPalette::Highlight),
        withAlpha(colours.color(QPalette::Window), kVeilAlpha),
        colours.color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::WindowText),
        smallFont(font()),
        isEnabled(),
    };
    paintCircularSlider(painter, geometry, model_, background_, look, drawsLabel());
}

void KVCircularSlider::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::EnabledChange) {
        model_.setEnabled(isEnabled());
        // A disabled widget hears no release: the drag ends where the pointer last was.
        if (!isEnabled() &&
            model_.mouseUp(model_.lastMouseValue() - model_.mouseDownPointValueOffset(), 1)) {
            valueField_->setHidden(!model_.isCircular());
            undoGrouping_.endGroup();
        }
    } else if (event->type() == QEvent::FontChange) {
        valueField_->setFont(smallFont(font()));
        placeValueField();
    }
    QWidget::changeEvent(event);
}

// --- Mouse ----------------------------------------------------------------------------------

void KVCircularSlider::pressAt(QPointF point, int clickCount)
{
    clickCount_ = clickCount;
    if (model_.mouseIsDown()) {
        // A double click whose second press was delivered as well: the double-click event only
        // counts the clicks for the release.
        return;
    }
    const KVCircularSliderGeometry geometry = sliderGeometry();
    const int part = partAt(geometry, point);
    // The group opens before the model moves anything: a press on the slot moves the middle at
    // once. The model starts a drag exactly when it is enabled and a part was hit.
    if (model_.isEnabled() && part != kCircularPartNone) {
        undoGrouping_.beginGroup();
    }
    if (model_.mouseDown(part, geometry.valueAtPoint(point))) {
        valueField_->hide();
    }
}

void KVCircularSlider::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        QWidget::mousePressEvent(event);
        return;
    }
    pressAt(event->position(), 1);
}

void KVCircularSlider::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        QWidget::mouseDoubleClickEvent(event);
        return;
    }
    pressAt(event->position(), 2);
}

void KVCircularSlider::mouseMoveEvent(QMouseEvent* event)
{
    const KVCircularSliderGeometry geometry = sliderGeometry();
    if (model_.mouseIsDown()) {
        model_.mouseDragged(geometry.valueAtPoint(event->position()));
        return;
    }
    if (event->buttons() == Qt::NoButton &&
        partAt(geometry, event->position()) == kCircularPartSlot) {
        // Measured along the long axis on rings too, as the listeners have always had it.
        const QVariantMap userInfo{{QString::fromStdString(model_.mouseMovedNotificationKey()),
                                    geometry.straightValueAtPoint(event->position())}};
        KVNotificationCenter::defaultCenter().postLater(
            kMouseMovedOverCircularSliderThumbSlotNotification, this, userInfo);
    }
}

void KVCircularSlider::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        QWidget::mouseReleaseEvent(event);
        return;
    }
    if (model_.mouseUp(sliderGeometry().valueAtPoint(event->position()), clickCount_)) {
        valueField_->setHidden(!model_.isCircular());
        undoGrouping_.endGroup();
    }
    clickCount_ = 1;
    // A resize during the drag may have asked for the other form.
    chooseForm();
}

void KVCircularSlider::leaveEvent(QEvent* event)
{
    KVNotificationCenter::defaultCenter().postLater(
        kMouseMovedOverCircularSliderThumbSlotNotification, this);
    QWidget::leaveEvent(event);
}

// --- Contextual menu ------------------------------------------------------------------------

std::unique_ptr<QMenu> KVCircularSlider::createContextMenu(int part)
{
    const std::vector<KVContextMenuItem> items = KVCircularSliderModel::contextualMenuItems(part);
    if (items.empty()) {
        return nullptr;
    }
    auto menu = std::make_unique<QMenu>(tr(kContextualMenuTitle), this);
    model_.setControlPartUnderMenu(part);
    for (const KVContextMenuItem& item : items) {
        if (item.isSeparator) {
            menu->addSeparator();
            continue;
        }
        menu->addAction(tr(item.title.c_str()), this, [this] {
            undoGrouping_.beginGroup();
            model_.performContextualMenuItem();
            undoGrouping_.endGroup();
        });
    }
    return menu;
}

void KVCircularSlider::contextMenuEvent(QContextMenuEvent* event)
{
    if (const std::unique_ptr<QMenu> menu =
            createContextMenu(partAt(sliderGeometry(), event->pos()))) {
        menu->exec(event->globalPos());
    }
}

} // namespace tintorra
