#include "ui/KVLChSpectrumView.h"

#include "ui/KVCapsLock.h"
#include "ui/KVLChColorMetaType.h"
#include "ui/KVNotificationCenter.h"
#include "ui/KVSpectrumClickRules.h"

#include <QEvent>
#include <QMouseEvent>
#include <QPainter>

namespace tintorra {

namespace {

// The small system font is two points below the regular one.
constexpr qreal kSmallFontReduction = 2.0;
constexpr qreal kSmallestLabelPointSize = 7.0;

// Two device pixels per band at the usual ratio keep every hue visible.
constexpr int kPreferredBandWidth = 2;
constexpr int kPreferredHeight = 180;

KVSpectrumGraphType steppedGraphType(KVSpectrumGraphType type, int step)
{
    const int next =
        (static_cast<int>(type) + step + kSpectrumGraphTypeCount) % kSpectrumGraphTypeCount;
    return static_cast<KVSpectrumGraphType>(next);
}

} // namespace

KVLChSpectrumView::KVLChSpectrumView(QWidget* parent)
    : QWidget(parent), capsLockProbe_(capsLockIsOn)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void KVLChSpectrumView::setSpectrum(LChSpectrumPtr spectrum)
{
    spectrum_ = std::move(spectrum);
    invalidateGraph();
}

void KVLChSpectrumView::setColorGamut(KVColorGamutPtr gamut)
{
    colorGamut_ = std::move(gamut);
    invalidateGraph();
}

void KVLChSpectrumView::setColorSpaceModel(ColorSpaceModel colorSpaceModel)
{
    colorSpaceModel_ = colorSpaceModel;
    invalidateGraph();
}

void KVLChSpectrumView::setGraphType(KVSpectrumGraphType graphType)
{
    graphType_ = graphType;
    invalidateGraph();
}

void KVLChSpectrumView::setDrawLog(bool drawLog)
{
    drawLog_ = drawLog;
    invalidateGraph();
}

QString KVLChSpectrumView::graphTypeLabel() const
{
    switch (graphType_) {
    case KVSpectrumGraphType::spectrogram: {
        const QString logScale = tr("log(10)");
        const QString linearScale = tr("linear");
        return tr("Spectrogram (%1, option-click for %2)")
            .arg(drawLog_ ? logScale : linearScale, drawLog_ ? linearScale : logScale);
    }
    case KVSpectrumGraphType::lightness:
        return tr("Lightness");
    case KVSpectrumGraphType::chroma:
        return tr("Chroma");
    case KVSpectrumGraphType::saturation:
        return tr("Saturation");
    }
    return {};
}

QSize KVLChSpectrumView::sizeHint() const
{
    return {static_cast<int>(kSpectrumBandCount) * kPreferredBandWidth, kPreferredHeight};
}

QSize KVLChSpectrumView::minimumSizeHint() const
{
    return {static_cast<int>(kSpectrumBandCount), kPreferredHeight / 2};
}

void KVLChSpectrumView::invalidateGraph()
{
    graphValid_ = false;
    update();
}

const QImage& KVLChSpectrumView::graphImage()
{
    const qreal ratio = devicePixelRatioF();
    const QSize pixels = (QSizeF(size()) * ratio).toSize();
    if (!graphValid_ || graph_.size() != pixels || graph_.devicePixelRatio() != ratio) {
        const KVSpectrumGraphContent content{spectrum_.get(), colorGamut_.get(), colorSpaceModel_,
                                             graphType_, drawLog_};
        graph_ = renderSpectrumGraph(content, size(), ratio, palette().color(QPalette::Base));
        graphValid_ = true;
    }
    return graph_;
}

void KVLChSpectrumView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.drawImage(QPointF(0, 0), graphImage());
    drawGraphTypeLabel(painter);
}

void KVLChSpectrumView::drawGraphTypeLabel(QPainter& painter) const
{
    QFont small = font();
    if (small.pointSizeF() > 0) {
        small.setPointSizeF(
            std::max(small.pointSizeF() - kSmallFontReduction, kSmallestLabelPointSize));
    }
    painter.setFont(small);
    painter.setPen(palette().color(QPalette::WindowText));
    const QRectF line(0, kSpectrumGraphMargin, width(), painter.fontMetrics().height());
    painter.drawText(line, Qt::AlignHCenter | Qt::AlignTop, graphTypeLabel());
}

void KVLChSpectrumView::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::PaletteChange) {
        invalidateGraph();
    }
    QWidget::changeEvent(event);
}

bool KVLChSpectrumView::capsLockOn() const
{
    return capsLockProbe_ && capsLockProbe_();
}

void KVLChSpectrumView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        QWidget::mousePressEvent(event);
        return;
    }
    if (!undoGroupOpen_) {
        undoGrouping_.beginGroup();
        undoGroupOpen_ = true;
    }
    respondToPress(*event);
}

void KVLChSpectrumView::respondToPress(const QMouseEvent& event)
{
    switch (spectrumClickEffect(event.modifiers(), capsLockOn())) {
    case KVSpectrumClickEffect::pick:
        pickColorAt(event.position().x(), event.modifiers().testFlag(Qt::ShiftModifier));
        break;
    case KVSpectrumClickEffect::toggleLogScale:
        if (graphType_ == KVSpectrumGraphType::spectrogram) {
            setDrawLog(!drawLog_);
        }
        break;
    case KVSpectrumClickEffect::nextGraphType:
        setGraphType(steppedGraphType(graphType_, +1));
        break;
    case KVSpectrumClickEffect::previousGraphType:
        setGraphType(steppedGraphType(graphType_, -1));
        break;
    case KVSpectrumClickEffect::nothing:
        break;
    }
}

void KVLChSpectrumView::mouseDoubleClickEvent(QMouseEvent* event)
{
    // The second press of a double click has already arrived as a press of its own; answering
    // the double click too would step the graph or toggle the scale a third time.
    event->accept();
}

void KVLChSpectrumView::mouseMoveEvent(QMouseEvent* event)
{
    // Dragging picks again, so a sweep across the hues sends a stream of colours; the graph
    // and its scale change only once per press.
    if (!undoGroupOpen_ || !event->buttons().testFlag(Qt::LeftButton)) {
        QWidget::mouseMoveEvent(event);
        return;
    }
    if (spectrumClickEffect(event->modifiers(), capsLockOn()) == KVSpectrumClickEffect::pick) {
        pickColorAt(event->position().x(), event->modifiers().testFlag(Qt::ShiftModifier));
    }
}

void KVLChSpectrumView::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !undoGroupOpen_) {
        QWidget::mouseReleaseEvent(event);
        return;
    }
    undoGroupOpen_ = false;
    undoGrouping_.endGroup();
}

void KVLChSpectrumView::pickColorAt(double x, bool shiftHeld)
{
    // Without a spectrum there is nothing under the pointer to pick.
    const std::size_t index = spectrumBandAtX(x, width());
    if (!spectrum_ || index >= spectrum_->count) {
        return;
    }
    const LChSpectrumBand& band = spectrum_->bands[index];
    const KVLChColor color(band.lightnessMean, band.chromaMean, band.hueMean, 1.0);
    const QVariantMap userInfo{
        {kSpectrumColorKey, QVariant::fromValue(color)},
        {kSpectrumWindowKey, QVariant::fromValue(controllerWindow())},
    };
    KVNotificationCenter::defaultCenter().post(shiftHeld ? kUserShiftClickedOnLChColorNotification
                                                         : kUserClickedOnLChColorNotification,
                                               this, userInfo);
}

QWidget* KVLChSpectrumView::controllerWindow() const
{
    QWidget* const own = window();
    QWidget* const owner = own->parentWidget();
    return owner ? owner->window() : own;
}

} // namespace tintorra
