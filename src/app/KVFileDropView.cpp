#include "app/KVFileDropView.h"

#include <QApplication>
#include <QClipboard>
#include <QDragEnterEvent>
#include <QLinearGradient>
#include <QMimeData>
#include <QPainter>
#include <QPainterPath>
#include <cmath>
#include <cstdio>
#include <numbers>

namespace tintorra {

namespace {

constexpr double kFrameInset = 8.0;
constexpr double kCornerRadius = 9.0;
constexpr double kBorderWidth = 4.0;
constexpr double kDashPeriod = 16.0; // 8 on, 8 off
constexpr double kContentInset = 32.0;

// A downward arrow filling `box`: a shaft and a head of the box's full width.
QPainterPath arrowPath(QRectF box)
{
    const double shaftHalf = box.width() * 0.18;
    const double headTop = box.top() + box.height() * 0.5;
    const double middle = box.center().x();
    QPainterPath path;
    path.moveTo(middle - shaftHalf, box.top());
    path.lineTo(middle + shaftHalf, box.top());
    path.lineTo(middle + shaftHalf, headTop);
    path.lineTo(box.right(), headTop);
    path.lineTo(middle, box.bottom());
    path.lineTo(box.left(), headTop);
    path.lineTo(middle - shaftHalf, headTop);
    path.closeSubpath();
    return path;
}

// The text on a transparent image blurred by a scale down and up: a soft shadow.
QImage softShadow(const QString& text, const QFont& font, QSize size, qreal dpr)
{
    constexpr int kBlur = 5;
    QImage sharp((size + QSize(4 * kBlur, 4 * kBlur)) * dpr, QImage::Format_ARGB32_Premultiplied);
    sharp.setDevicePixelRatio(dpr);
    sharp.fill(Qt::transparent);
    {
        QPainter painter(&sharp);
        painter.setFont(font);
        painter.setPen(QColor(0, 0, 0, 110));
        painter.drawText(QRectF(2 * kBlur, 2 * kBlur, size.width(), size.height()),
                         Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, text);
    }
    const QSize small = sharp.size() / kBlur;
    QImage blurred = sharp.scaled(small, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                         .scaled(sharp.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    blurred.setDevicePixelRatio(dpr);
    return blurred;
}

} // namespace

KVFileDropView::KVFileDropView(QWidget* parent) : QWidget(parent)
{
    message_ = dropPrompt(KVDropRegistration::files, 1);
    setAcceptDrops(true);
}

KVFileDropView::~KVFileDropView() = default;

void KVFileDropView::registerFor(KVDropRegistration registration)
{
    registeredTypes_ = registration;
    acceptableDragTypes_.clear();
    setAcceptDrops(true);
    setMessage(dropPrompt(registration, acceptableDragCount_));
}

void KVFileDropView::registerForDraggedFiles()
{
    registerFor(KVDropRegistration::files);
}

void KVFileDropView::registerForDraggedFolders()
{
    registerFor(KVDropRegistration::folders);
}

void KVFileDropView::registerForDraggedFilesAndFolders()
{
    registerFor(KVDropRegistration::filesAndFolders);
}

void KVFileDropView::registerForDraggedImages()
{
    registerFor(KVDropRegistration::images);
}

void KVFileDropView::setAcceptableDragTypes(const QStringList& mimeTypes)
{
    registeredTypes_ = KVDropRegistration::custom;
    acceptableDragTypes_ = mimeTypes;
    setAcceptDrops(true);
}

void KVFileDropView::setAcceptableDragCount(int count)
{
    acceptableDragCount_ = count;
    if (registeredTypes_ != KVDropRegistration::custom)
        setMessage(dropPrompt(registeredTypes_, count));
}

void KVFileDropView::setMessage(const QString& message)
{
    message_ = message;
    update();
}

void KVFileDropView::setShowBorder(bool show)
{
    showBorder_ = show;
    update();
}

void KVFileDropView::setShowArrow(bool show)
{
    showArrow_ = show;
    update();
}

void KVFileDropView::setFlipArrow(bool flip)
{
    flipArrow_ = flip;
    update();
}

void KVFileDropView::setDrawMessageShadow(bool draw)
{
    drawMessageShadow_ = draw;
    update();
}

void KVFileDropView::setAcceptsDrop(bool accepts)
{
    if (accepts == acceptsDrop_)
        return;
    acceptsDrop_ = accepts;
    update();
}

void KVFileDropView::setDragInProgress(bool inProgress)
{
    if (inProgress == dragInProgress_)
        return;
    dragInProgress_ = inProgress;
    update();
}

void KVFileDropView::setPrimaryColor(const QColor& colour)
{
    primaryColor_ = colour;
    update();
}

void KVFileDropView::setBackgroundColor(const QColor& colour)
{
    backgroundColor_ = colour;
    update();
}

bool KVFileDropView::canTakeDataFromPasteboard(const QMimeData* data)
{
    if (!data)
        return false;
    if (dropDelegate_)
        return dropDelegate_->dropViewCanTakeData(this, data);
    return dataMatchesRegistration(data, registeredTypes_, acceptableDragTypes_);
}

void KVFileDropView::takeDataFromPasteboard(const QMimeData* data)
{
    if (dropDelegate_) {
        dropDelegate_->dropViewTakeData(this, data);
        return;
    }
    if (registeredTypes_ == KVDropRegistration::custom) {
        QApplication::beep();
        std::fprintf(stderr, "No delegate method implemented to accept the specified drag types\n");
    }
}

bool KVFileDropView::canPaste()
{
    return acceptsDrop_ && canTakeDataFromPasteboard(QApplication::clipboard()->mimeData());
}

void KVFileDropView::paste()
{
    if (canPaste())
        takeDataFromPasteboard(QApplication::clipboard()->mimeData());
}

void KVFileDropView::dragEnterEvent(QDragEnterEvent* event)
{
    // Too many items are refused before anyone is asked about them.
    if (!acceptsDrop_ || !(event->possibleActions() & Qt::CopyAction) ||
        draggedItemCount(event->mimeData()) > acceptableDragCount_ ||
        !canTakeDataFromPasteboard(event->mimeData())) {
        event->ignore();
        return;
    }
    setDragInProgress(true);
    event->setDropAction(Qt::CopyAction);
    event->accept();
}

void KVFileDropView::dragMoveEvent(QDragMoveEvent* event)
{
    if (!dragInProgress_) {
        event->ignore();
        return;
    }
    event->setDropAction(Qt::CopyAction);
    event->accept();
}

void KVFileDropView::dragLeaveEvent(QDragLeaveEvent* event)
{
    setDragInProgress(false);
    event->accept();
}

void KVFileDropView::dropEvent(QDropEvent* event)
{
    takeDataFromPasteboard(event->mimeData());
    setDragInProgress(false);
    event->setDropAction(Qt::CopyAction);
    event->accept();
}

void KVFileDropView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    paintDropPrompt(painter);
}

void KVFileDropView::paintDropPrompt(QPainter& painter) const
{
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF frame =
        QRectF(rect()).adjusted(kFrameInset, kFrameInset, -kFrameInset, -kFrameInset);
    if (frame.width() <= 2 * kCornerRadius || frame.height() <= 2 * kCornerRadius)
        return;
    QPainterPath rounded;
    rounded.addRoundedRect(frame, kCornerRadius, kCornerRadius);
    if (backgroundColor_.isValid())
        painter.fillPath(rounded, backgroundColor_);
    if (showBorder_) {
        // The dashes are stretched so that whole periods go round the frame without a seam.
        const double perimeter = 2 * frame.width() + 2 * frame.height() - 8 * kCornerRadius +
                                 2 * std::numbers::pi * kCornerRadius;
        const double periods = std::max(1.0, std::round(perimeter / kDashPeriod));
        const double dash = perimeter / periods / 2.0;
        QPen pen(dragInProgress_ ? QColor(Qt::red) : QColor(Qt::gray), kBorderWidth);
        pen.setDashPattern({dash / kBorderWidth, dash / kBorderWidth});
        pen.setCapStyle(Qt::FlatCap);
        pen.setDashOffset(-2.0 / kBorderWidth);
        painter.strokePath(rounded, pen);
    }

    const QRectF content = frame.adjusted(kContentInset - kFrameInset, kContentInset - kFrameInset,
                                          kFrameInset - kContentInset, kFrameInset - kContentInset);
    if (content.width() < 8 || content.height() < 8)
        return;
    QFont font = this->font();
    font.setBold(true);
    font.setPointSizeF(std::clamp(content.height() / 14.0, 11.0, 22.0));
    const QFontMetricsF metrics(font);
    const QRectF textBounds =
        metrics.boundingRect(content, Qt::AlignHCenter | Qt::TextWordWrap, message_);
    const double gap = metrics.height() * 0.6;
    const double arrowHeight =
        std::min(content.height() - textBounds.height() - gap, content.width() * 0.5 / 0.8);
    double textTop = content.center().y() - textBounds.height() / 2;
    if (showArrow_ && arrowHeight >= 24.0) {
        const double blockHeight = arrowHeight + gap + textBounds.height();
        const double top = content.center().y() - blockHeight / 2;
        const double arrowWidth = arrowHeight * 0.8;
        const QRectF box(content.center().x() - arrowWidth / 2, top, arrowWidth, arrowHeight);
        QPainterPath arrow = arrowPath(box);
        if (flipArrow_) {
            QTransform flip;
            flip.translate(0, box.top() + box.bottom());
            flip.scale(1, -1);
            arrow = flip.map(arrow);
        }
        QLinearGradient gradient(box.topLeft(), box.bottomLeft());
        QColor light = primaryColor_;
        light.setAlphaF(0.25);
        gradient.setColorAt(flipArrow_ ? 1.0 : 0.0, light);
        gradient.setColorAt(flipArrow_ ? 0.0 : 1.0, primaryColor_);
        painter.fillPath(arrow, gradient);
        textTop = box.bottom() + gap;
    }
    const QRectF textRect(content.left(), textTop, content.width(), textBounds.height() + 2);
    if (drawMessageShadow_) {
        const QImage shadow = softShadow(message_, font, textRect.size().toSize(),
                                         painter.device()->devicePixelRatioF());
        painter.drawImage(textRect.topLeft() + QPointF(-10, -8), shadow);
    }
    painter.setFont(font);
    painter.setPen(primaryColor_);
    painter.drawText(textRect, Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, message_);
}

} // namespace tintorra
