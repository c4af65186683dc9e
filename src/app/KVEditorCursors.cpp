#include "app/KVEditorCursors.h"

#include <QHash>
#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>
#include <algorithm>
#include <cmath>

namespace tintorra {

namespace {

constexpr int kCursorSize = 24;

struct CursorDrawing {
    const char* name;
    QPoint hotSpot; // in the 24-unit drawing
};

CursorDrawing drawingFor(KVEditorCursorKind kind)
{
    switch (kind) {
    case KVEditorCursorKind::picker:
        return {"picker", {4, 20}};
    case KVEditorCursorKind::pickerPlus:
        return {"picker-plus", {4, 20}};
    case KVEditorCursorKind::pickerMinus:
        return {"picker-minus", {4, 20}};
    case KVEditorCursorKind::zoomIn:
        return {"zoom-in", {9, 9}};
    case KVEditorCursorKind::zoomOut:
        return {"zoom-out", {9, 9}};
    default:
        return {nullptr, {}};
    }
}

QCursor svgCursor(const CursorDrawing& drawing, qreal devicePixelRatio)
{
    const bool doubleDensity = devicePixelRatio > 1.0;
    const QString file =
        QStringLiteral(":/cursors/%1%2.svg")
            .arg(QLatin1String(drawing.name), doubleDensity ? QStringLiteral("@2x") : QString());
    static QHash<QString, QCursor> cache;
    if (const auto found = cache.constFind(file); found != cache.constEnd())
        return *found;
    QSvgRenderer renderer(file);
    const int scale = doubleDensity ? 2 : 1;
    QPixmap pixmap(kCursorSize * scale, kCursorSize * scale);
    pixmap.fill(Qt::transparent);
    {
        QPainter painter(&pixmap);
        renderer.render(&painter);
    }
    pixmap.setDevicePixelRatio(scale);
    const QCursor cursor(pixmap, drawing.hotSpot.x(), drawing.hotSpot.y());
    cache.insert(file, cursor);
    return cursor;
}

// A ring of the brush's size, light inside dark so it shows on any image.
QCursor brushCursor(double diameter, qreal devicePixelRatio)
{
    const double clamped = std::clamp(diameter, 3.0, 256.0);
    const int side = static_cast<int>(std::ceil(clamped)) + 4;
    QPixmap pixmap(QSize(side, side) * devicePixelRatio);
    pixmap.setDevicePixelRatio(devicePixelRatio);
    pixmap.fill(Qt::transparent);
    {
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        const QRectF circle((side - clamped) / 2, (side - clamped) / 2, clamped, clamped);
        painter.setPen(QPen(QColor(0, 0, 0, 200), 2.0));
        painter.drawEllipse(circle);
        painter.setPen(QPen(QColor(255, 255, 255, 230), 1.0));
        painter.drawEllipse(circle);
    }
    return QCursor(pixmap, side / 2, side / 2);
}

} // namespace

QCursor editorCursor(KVEditorCursorKind kind, double brushDiameter, qreal devicePixelRatio)
{
    switch (kind) {
    case KVEditorCursorKind::arrow:
        return Qt::ArrowCursor;
    case KVEditorCursorKind::openHand:
        return Qt::OpenHandCursor;
    case KVEditorCursorKind::closedHand:
        return Qt::ClosedHandCursor;
    case KVEditorCursorKind::brush:
        return brushCursor(brushDiameter, devicePixelRatio);
    default:
        return svgCursor(drawingFor(kind), devicePixelRatio);
    }
}

} // namespace tintorra
