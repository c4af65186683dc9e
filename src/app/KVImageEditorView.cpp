// Coordinates used in this file:
//
//  - image pixels: the bitmap's own grid, x to the right and y downwards from its top-left
//    corner; zoom anchors, the visible origin and brush strokes are kept in these.
//  - image points: the bitmap's size in points (72 per inch); the pixel point rule is written in
//    them, measuring rows from the bottom edge (see KVImagePointRule.h).
//  - view (local) coordinates: logical pixels of this widget, which is the whole image scaled by
//    the zoom factor: local = image pixel * zoom_. Mouse events and painting use them.
//  - device pixels: local * devicePixelRatio; the display cache renders and keeps its buffers in
//    device pixels of the whole scaled image, so a buffer blits one to one.
//  - scroll position: the scroll bars' values are the local coordinates of the viewport's
//    top-left corner; when the image is smaller than the viewport it is centred and the
//    visible origin is 0,0.
//  - global points: screen coordinates of the pointer, used for drag distances, which must not
//    change while a pan or a zoom moves the view under the pointer.
#include "app/KVImageEditorView.h"

#include "app/KVDisplayProfile.h"
#include "app/KVEditorCursors.h"
#include "app/KVImageExport.h"
#include "app/KVImagePointRule.h"
#include "app/KVZoomSteps.h"
#include "ui/KVNotificationCenter.h"
#include "ui/KVSettings.h"

#include <QApplication>
#include <QClipboard>
#include <QDrag>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>
#include <QPainterPath>
#include <QScrollArea>
#include <QScrollBar>
#include <QThreadPool>
#include <QUndoStack>
#include <algorithm>
#include <cmath>

namespace tintorra {

namespace {

// A drag-out starts once the pointer has left a square of this half-width around the press.
constexpr double kDragOutDistance = 3.0;
constexpr double kBrushStep = 1.25;
constexpr double kMinimumBrush = 4.0;
constexpr double kMaximumBrush = 256.0;
constexpr int kThumbnailSide = 256;

bool sameFactor(double a, double b)
{
    return std::abs(a - b) <= 1e-9 * std::max(a, b);
}

} // namespace

KVImageEditorView::KVImageEditorView(QWidget* parent) : KVFileDropView(nullptr)
{
    scrollArea_ = new QScrollArea(parent);
    scrollArea_->setWidgetResizable(false);
    scrollArea_->setAlignment(Qt::AlignCenter);
    scrollArea_->setBackgroundRole(QPalette::Dark);
    scrollArea_->setWidget(this);
    viewport_ = scrollArea_->viewport();
    viewport_->installEventFilter(this);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_OpaquePaintEvent, false);
    registerForDraggedImages();

    // Read on the main thread, before any render asks for it.
    displayIccProfile();

    connect(&cache_, &KVImageDisplayCache::updated, this, qOverload<>(&QWidget::update));
    connect(scrollArea_->horizontalScrollBar(), &QScrollBar::valueChanged, this,
            &KVImageEditorView::emitVisibleArea);
    connect(scrollArea_->verticalScrollBar(), &QScrollBar::valueChanged, this,
            &KVImageEditorView::emitVisibleArea);

    KVNotificationCenter& center = KVNotificationCenter::defaultCenter();
    center.addObserver(kModifierKeysChangedNotification, this,
                       [this](const KVNotification& notification) {
                           if (!notification.object || notification.object == window())
                               modifierKeysChanged(notification.userInfo);
                       });
    center.addObserver(kToolButtonPressedNotification, this, [this](const KVNotification&) {
        refreshOverlay();
        updateCursor();
    });
    center.addObserver(kImageNeedsDisplayNotification, this, [this](const KVNotification&) {
        refreshOverlay();
        update();
    });
}

KVImageEditorView::~KVImageEditorView()
{
    endPickingGroup();
}

QWidget* KVImageEditorView::scrollWidget()
{
    return scrollArea_;
}

KVBitmapPtr KVImageEditorView::imageRep() const
{
    return reps_.empty() ? nullptr : reps_.front();
}

void KVImageEditorView::setImageEditorDelegate(KVImageEditorDelegate* delegate)
{
    delegate_ = delegate;
    refreshOverlay();
}

int KVImageEditorView::currentTool() const
{
    return delegate_ ? delegate_->currentSelectionTool() : 0;
}

KVRenderSource KVImageEditorView::renderSource() const
{
    KVRenderSource source;
    source.image = imageRep();
    source.mask = reps_.size() > 1 ? reps_[1] : nullptr;
    if (source.mask && delegate_ && currentTool() == kToolMaskBrush) {
        const int view = delegate_->maskToShow();
        source.overlay = view == 2 || view == 3 ? KVMaskOverlay::red : KVMaskOverlay::darken;
    }
    if (source.image)
        source.transform = KVDisplayTransform::forImage(
            source.image->colorSpace(), source.image->bitsPerSample() == 16, displayIccProfile());
    source.checkerSize = static_cast<int>(std::lround(8 * devicePixelRatioF()));
    return source;
}

void KVImageEditorView::setImageReps(std::vector<KVBitmapPtr> reps)
{
    const KVBitmapPtr old = imageRep();
    reps_ = std::move(reps);
    const KVBitmapPtr image = imageRep();
    const bool newSize = image && (!old || old->pixelsWide() != image->pixelsWide() ||
                                   old->pixelsHigh() != image->pixelsHigh());
    cache_.setSource(renderSource());
    if (!image) {
        resize(scrollArea_->viewport()->size());
        zoomedToFit_ = false;
    } else if (newSize) {
        zoom_ = 0.0; // so that the fit always lays the view out anew
        zoomToFit();
    }
    // A same-size image repaints when its pixels arrive from the display cache.
    if (!image || newSize)
        update();
}

void KVImageEditorView::refreshOverlay()
{
    const KVRenderSource wanted = renderSource();
    const KVRenderSource& current = cache_.source();
    if (wanted.overlay != current.overlay || wanted.mask != current.mask)
        cache_.setSource(wanted);
}

double KVImageEditorView::nextZoomFactor(double factor, int direction)
{
    return nextZoomStep(factor, direction);
}

QPointF KVImageEditorView::visibleOrigin() const
{
    if (!(zoom_ > 0.0))
        return {};
    return QPointF(scrollArea_->horizontalScrollBar()->value() / zoom_,
                   scrollArea_->verticalScrollBar()->value() / zoom_);
}

QRect KVImageEditorView::visibleLocalRect() const
{
    const QWidget* viewport = scrollArea_->viewport();
    return QRect(mapFrom(viewport, QPoint(0, 0)), viewport->size()).intersected(rect());
}

QRect KVImageEditorView::visibleDeviceRect() const
{
    const qreal dpr = devicePixelRatioF();
    const QRect visible = visibleLocalRect();
    return QRectF(visible.x() * dpr, visible.y() * dpr, visible.width() * dpr,
                  visible.height() * dpr)
        .toAlignedRect();
}

QPointF KVImageEditorView::visibleCenterPoint() const
{
    const QRectF visible = visibleLocalRect();
    return imagePointFromLocal(visible.center());
}

void KVImageEditorView::applyGeometry(QPointF origin)
{
    const KVBitmapPtr image = imageRep();
    if (!image)
        return;
    settingGeometry_ = true;
    const QSize size(std::max(1, static_cast<int>(std::lround(image->pixelsWide() * zoom_))),
                     std::max(1, static_cast<int>(std::lround(image->pixelsHigh() * zoom_))));
    resize(size);
    // The scroll area would set these ranges itself, but only later; the origin needs them now.
    QScrollBar* horizontal = scrollArea_->horizontalScrollBar();
    QScrollBar* vertical = scrollArea_->verticalScrollBar();
    const QSize viewport = scrollArea_->viewport()->size();
    horizontal->setRange(0, std::max(0, size.width() - viewport.width()));
    vertical->setRange(0, std::max(0, size.height() - viewport.height()));
    horizontal->setValue(static_cast<int>(std::lround(origin.x() * zoom_)));
    vertical->setValue(static_cast<int>(std::lround(origin.y() * zoom_)));
    settingGeometry_ = false;
    update();
}

void KVImageEditorView::zoomToFactor(double factor, QPointF anchor)
{
    if (!imageRep() || !(factor > 0.0) || sameFactor(factor, zoom_))
        return;
    const double old = zoom_;
    const QPointF origin =
        old > 0.0 ? anchoredZoomOrigin(anchor, visibleOrigin(), old, factor) : QPointF(0, 0);
    zoom_ = factor;
    applyGeometry(origin);
    zoomedToFit_ = false;
    updateCursor();
    emitVisibleArea();
}

void KVImageEditorView::zoomIn()
{
    zoomToFactor(nextZoomStep(zoom_, 1), visibleCenterPoint());
}

void KVImageEditorView::zoomOut()
{
    zoomToFactor(nextZoomStep(zoom_, -1), visibleCenterPoint());
}

void KVImageEditorView::zoomToActualSize()
{
    zoomToFactor(1.0, visibleCenterPoint());
}

void KVImageEditorView::zoomToFit()
{
    const KVBitmapPtr image = imageRep();
    if (!image)
        return;
    const double factor = fitZoomFactor(QSizeF(image->pixelsWide(), image->pixelsHigh()),
                                        scrollArea_->maximumViewportSize());
    if (sameFactor(factor, zoom_))
        applyGeometry(QPointF(0, 0));
    else
        zoomToFactor(factor, QPointF(0, 0));
    zoomedToFit_ = true;
}

void KVImageEditorView::setVisibleArea(QPointF originInImage, double zoom)
{
    if (!imageRep() || !(zoom > 0.0))
        return;
    const bool sameArea =
        sameFactor(zoom, zoom_) && (visibleOrigin() - originInImage).manhattanLength() * zoom < 0.5;
    if (sameArea)
        return;
    zoom_ = zoom;
    settingGeometry_ = true;
    applyGeometry(originInImage);
    settingGeometry_ = false;
    zoomedToFit_ = false;
}

void KVImageEditorView::emitVisibleArea()
{
    if (!settingGeometry_ && imageRep())
        emit visibleAreaChanged(visibleOrigin(), zoom_);
}

QPointF KVImageEditorView::imagePointFromLocal(QPointF local) const
{
    return zoom_ > 0.0 ? local / zoom_ : QPointF();
}

QPointF KVImageEditorView::pixelCentre(QPointF position) const
{
    const qreal dpr = devicePixelRatioF();
    return QPointF((std::floor(position.x() * dpr) + 0.5) / dpr,
                   (std::floor(position.y() * dpr) + 0.5) / dpr);
}

QPoint KVImageEditorView::bitmapPointFromLocalPoint(QPointF point) const
{
    const KVBitmapPtr image = imageRep();
    if (!image || !(zoom_ > 0.0))
        return {-1, -1};
    const QSizeF points(image->width(), image->height());
    const QSize pixels(static_cast<int>(image->pixelsWide()),
                       static_cast<int>(image->pixelsHigh()));
    const QPointF inPixels = imagePointFromLocal(point);
    const QPointF inPoints(inPixels.x() * points.width() / pixels.width(),
                           inPixels.y() * points.height() / pixels.height());
    return pixelPointForImagePoint(inPoints, points, pixels);
}

void KVImageEditorView::performClickAction(KVEditorClickAction action, QPointF local)
{
    using Action = KVEditorClickAction;
    if (action == Action::zoomIn || action == Action::zoomOut) {
        zoomToFactor(nextZoomStep(zoom_, action == Action::zoomIn ? 1 : -1),
                     imagePointFromLocal(local));
        return;
    }
    const QPoint pixel = bitmapPointFromLocalPoint(local);
    if (action == Action::none || !delegate_ || pixel.x() < 0 || pixel.y() < 0)
        return;
    const KVBitmapPtr image = imageRep();
    // One press, drag and release is one undo step, however many colours it sampled; the group
    // opens with the first sample so that a click beside the image leaves no empty step.
    const int tool = currentTool();
    if (!pickingGroupOpen_ && tool >= kToolPickSelectionHue && tool <= kToolPickTargetHue &&
        delegate_->undoStack()) {
        delegate_->undoStack()->beginMacro(tool == kToolPickTargetHue ? tr("Target Hue")
                                                                      : tr("Selection Hue"));
        pickingGroupOpen_ = true;
    }
    switch (action) {
    case Action::setSelectionHue:
        delegate_->setSelectionHue(pixel, image);
        break;
    case Action::addSelectionHue:
        delegate_->addSelectionHue(pixel, image);
        break;
    case Action::subtractSelectionHue:
        delegate_->subtractSelectionHue(pixel, image);
        break;
    case Action::setTargetHue:
        delegate_->setTargetHue(pixel, image);
        break;
    case Action::debugPixel:
        delegate_->debugPixel(pixel, image);
        break;
    default:
        break;
    }
}

void KVImageEditorView::endPickingGroup()
{
    if (!pickingGroupOpen_)
        return;
    pickingGroupOpen_ = false;
    if (delegate_ && delegate_->undoStack())
        delegate_->undoStack()->endMacro();
}

void KVImageEditorView::modifierKeysChanged(const QVariantMap& userInfo)
{
    keys_.spacebar = userInfo.value(QStringLiteral("spacebar")).toBool();
    keys_.shift = userInfo.value(QStringLiteral("shiftKey")).toBool();
    keys_.control = userInfo.value(QStringLiteral("controlKey")).toBool();
    keys_.option = userInfo.value(QStringLiteral("optionKey")).toBool();
    keys_.command = userInfo.value(QStringLiteral("commandKey")).toBool();
    keys_.function = userInfo.value(QStringLiteral("functionKey")).toBool();
    updateCursor();
}

void KVImageEditorView::updateCursor()
{
    if (!imageRep()) {
        unsetCursor();
        return;
    }
    const KVEditorCursorKind kind = editorCursorKind(currentTool(), keys_, mouseDown_);
    setCursor(editorCursor(kind, brushDiameter_, devicePixelRatioF()));
}

void KVImageEditorView::setBrushDiameter(double diameter)
{
    brushDiameter_ = std::clamp(diameter, kMinimumBrush, kMaximumBrush);
    updateCursor();
}

void KVImageEditorView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !imageRep()) {
        KVFileDropView::mousePressEvent(event);
        return;
    }
    setFocus(Qt::MouseFocusReason);
    keys_ = KVModifierKeys::fromQt(event->modifiers(), keys_.spacebar);
    mouseDown_ = true;
    mouseDownPoint_ = pixelCentre(event->position());
    mouseDownGlobalPoint_ = event->globalPosition();
    mouseDownOrigin_ = visibleOrigin();
    mouseDownZoomFactor_ = zoom_;
    const int tool = currentTool();
    if (brushStrokeStarts(tool, keys_)) {
        maskBrushing_ = true;
        stroke_ = {};
        stroke_.radius = brushDiameter_ / 2.0 / zoom_;
        stroke_.erase = keys_.onlyOption();
        stroke_.points.append(imagePointFromLocal(mouseDownPoint_));
        update();
    }
    updateCursor();
}

void KVImageEditorView::mouseMoveEvent(QMouseEvent* event)
{
    const QPointF local = pixelCentre(event->position());
    if (!mouseDown_) {
        keys_ = KVModifierKeys::fromQt(event->modifiers(), keys_.spacebar);
        if (delegate_ && imageRep())
            delegate_->hoverOverImage(bitmapPointFromLocalPoint(local), imageRep());
        updateCursor();
        return;
    }
    if (!visibleLocalRect().contains(event->position().toPoint()))
        return;
    const QPointF moved = event->globalPosition() - mouseDownGlobalPoint_;
    switch (editorDragAction(currentTool(), keys_)) {
    case KVEditorDragAction::zoom:
        zoomToFactor(dragZoomFactor(mouseDownZoomFactor_, moved.x()),
                     mouseDownPoint_ / mouseDownZoomFactor_);
        break;
    case KVEditorDragAction::pan:
        applyGeometry(mouseDownOrigin_ - moved / zoom_);
        emitVisibleArea();
        break;
    case KVEditorDragAction::repeatClick:
        performClickAction(editorClickAction(currentTool(), keys_), local);
        break;
    case KVEditorDragAction::brush:
        if (maskBrushing_) {
            stroke_.points.append(imagePointFromLocal(local));
            update();
        }
        break;
    case KVEditorDragAction::dragOut:
        if (allowsDrag_ &&
            (std::abs(moved.x()) > kDragOutDistance || std::abs(moved.y()) > kDragOutDistance))
            startDragOut(mouseDownPoint_);
        break;
    case KVEditorDragAction::none:
        break;
    }
}

void KVImageEditorView::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !mouseDown_) {
        KVFileDropView::mouseReleaseEvent(event);
        return;
    }
    mouseDown_ = false;
    const bool wasBrushing = maskBrushing_;
    maskBrushing_ = false;
    updateCursor();
    const QPointF local = pixelCentre(event->position());
    if (wasBrushing)
        finishBrushStroke();
    else if (visibleLocalRect().contains(event->position().toPoint()) && local == mouseDownPoint_)
        performClickAction(editorClickAction(currentTool(), keys_), local);
    endPickingGroup();
    mouseDownPoint_ = mouseDownGlobalPoint_ = mouseDownOrigin_ = QPointF();
}

void KVImageEditorView::finishBrushStroke()
{
    update();
    if (!delegate_ || stroke_.points.isEmpty())
        return;
    KVBitmapPtr before = delegate_->exclusionMaskForPainting();
    if (!before)
        return;
    // A 24-megapixel mask takes a moment to copy and paint; the worker does it and the stroke
    // lands on the undo stack when it is done.
    QPointer<KVImageEditorView> self(this);
    KVMaskStroke stroke = std::move(stroke_);
    stroke_ = {};
    QThreadPool::globalInstance()->start([self, before, stroke] {
        KVBitmapPtr after = paintMaskStroke(before, stroke);
        if (!after)
            return;
        QMetaObject::invokeMethod(
            qApp,
            [self, before, after] {
                if (self && self->delegate_ && self->delegate_->undoStack())
                    self->delegate_->undoStack()->push(
                        new KVMaskStrokeCommand(self->delegate_, before, after));
            },
            Qt::QueuedConnection);
    });
}

void KVImageEditorView::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Space && !event->isAutoRepeat()) {
        keys_.spacebar = true;
        updateCursor();
        return;
    }
    if (event->modifiers() == Qt::ControlModifier) {
        switch (event->key()) {
        case Qt::Key_Minus:
            zoomOut();
            return;
        case Qt::Key_Equal:
        case Qt::Key_Plus:
            zoomIn();
            return;
        case Qt::Key_0:
            zoomToFit();
            return;
        case Qt::Key_1:
            zoomToActualSize();
            return;
        default:
            break;
        }
    }
    if (currentTool() == kToolMaskBrush &&
        (event->key() == Qt::Key_BracketLeft || event->key() == Qt::Key_BracketRight)) {
        setBrushDiameter(event->key() == Qt::Key_BracketRight ? brushDiameter_ * kBrushStep
                                                              : brushDiameter_ / kBrushStep);
        return;
    }
    keys_ = KVModifierKeys::fromQt(event->modifiers(), keys_.spacebar);
    updateCursor();
    KVFileDropView::keyPressEvent(event);
}

void KVImageEditorView::keyReleaseEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Space && !event->isAutoRepeat()) {
        keys_.spacebar = false;
        updateCursor();
        return;
    }
    keys_ = KVModifierKeys::fromQt(event->modifiers(), keys_.spacebar);
    updateCursor();
    KVFileDropView::keyReleaseEvent(event);
}

void KVImageEditorView::wheelEvent(QWheelEvent* event)
{
    // Ctrl and the wheel zoom about the pointer; the wheel alone scrolls (the scroll area).
    if (imageRep() && event->modifiers() == Qt::ControlModifier && event->angleDelta().y() != 0) {
        zoomToFactor(nextZoomStep(zoom_, event->angleDelta().y() > 0 ? 1 : -1),
                     imagePointFromLocal(event->position()));
        event->accept();
        return;
    }
    event->ignore();
}

void KVImageEditorView::enterEvent(QEnterEvent* event)
{
    keys_ = KVModifierKeys::fromQt(QGuiApplication::queryKeyboardModifiers(), keys_.spacebar);
    updateCursor();
    KVFileDropView::enterEvent(event);
}

void KVImageEditorView::leaveEvent(QEvent* event)
{
    if (delegate_ && imageRep())
        delegate_->hoverOverImage(QPoint(-1, -1), imageRep());
    KVFileDropView::leaveEvent(event);
}

bool KVImageEditorView::eventFilter(QObject* watched, QEvent* event)
{
    // Compared with the kept pointer: while the scroll area is being destroyed its viewport still
    // sends events, and the scroll area can no longer be asked for it.
    if (watched == viewport_ && event->type() == QEvent::Resize) {
        if (!imageRep())
            resize(viewport_->size());
        else if (zoomedToFit_)
            zoomToFit();
    }
    return KVFileDropView::eventFilter(watched, event);
}

void KVImageEditorView::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    const KVBitmapPtr image = imageRep();
    if (!image) {
        paintDropPrompt(painter);
        return;
    }
    const QRect visible = visibleLocalRect();
    cache_.require(visibleDeviceRect(), deviceScale());
    cache_.paint(painter, event->rect(), zoom_);

    if (maskBrushing_ && !stroke_.points.isEmpty()) {
        // The stroke as it will land, until the painted mask comes back.
        painter.setRenderHint(QPainter::Antialiasing);
        QPen pen(stroke_.erase ? QColor(255, 0, 0, 110) : QColor(255, 255, 255, 140),
                 brushDiameter_, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
        painter.setPen(pen);
        QPainterPath path(stroke_.points.front() * zoom_);
        for (const QPointF& point : stroke_.points)
            path.lineTo(point * zoom_);
        if (stroke_.points.size() == 1)
            painter.drawPoint(stroke_.points.front() * zoom_);
        else
            painter.drawPath(path);
    }
    if (dragInProgress()) {
        painter.setPen(QPen(Qt::red, 4));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(QRectF(visible).adjusted(2, 2, -2, -2));
    }
}

bool KVImageEditorView::canPutDataOnPasteboard() const
{
    return imageRep() != nullptr && delegate_ != nullptr;
}

bool KVImageEditorView::putDataOnPasteboard(QMimeData* data) const
{
    if (!canPutDataOnPasteboard() || !data)
        return false;
    const int tag = KVSettings::standard().intValue(kSaveAsFileTypeTagKey);
    const QByteArray bytes = delegate_->dataForSaveFormat(tag);
    const auto identity = reinterpret_cast<quint64>(imageRep().get());
    const QByteArray nativeIdentity(reinterpret_cast<const char*>(&identity), sizeof identity);
    return fillExportMimeData(data, nativeIdentity, bytes, delegate_->documentDisplayName(), tag);
}

bool KVImageEditorView::putDataOnPasteboard(QClipboard* clipboard) const
{
    if (!clipboard)
        return false;
    auto* data = new QMimeData;
    if (!putDataOnPasteboard(data)) {
        delete data;
        return false;
    }
    clipboard->setMimeData(data);
    return true;
}

void KVImageEditorView::copy()
{
    putDataOnPasteboard(QGuiApplication::clipboard());
}

void KVImageEditorView::startDragOut(QPointF local)
{
    auto* data = new QMimeData;
    if (!putDataOnPasteboard(data)) {
        delete data;
        return;
    }
    mouseDown_ = false;
    auto* drag = new QDrag(this);
    drag->setMimeData(data);
    // A small picture of the image, held where the pointer holds the image.
    const KVBitmapPtr image = imageRep();
    const double scale =
        std::min(1.0, kThumbnailSide /
                          static_cast<double>(std::max(image->pixelsWide(), image->pixelsHigh())));
    KVRenderSource source = cache_.source();
    source.overlay = KVMaskOverlay::none;
    const QRect thumbRect(0, 0, static_cast<int>(std::ceil(image->pixelsWide() * scale)),
                          static_cast<int>(std::ceil(image->pixelsHigh() * scale)));
    const QImage thumbnail = renderImageRegion(source, thumbRect, scale);
    if (!thumbnail.isNull()) {
        drag->setPixmap(QPixmap::fromImage(thumbnail));
        drag->setHotSpot((imagePointFromLocal(local) * scale).toPoint());
    }
    drag->exec(Qt::CopyAction);
    updateCursor();
}

} // namespace tintorra
