#include "app/KVMaskBrush.h"

#include "app/KVImageEditorDelegate.h"

#include <QCoreApplication>
#include <QImage>
#include <QPainter>

namespace tintorra {

KVBitmapPtr paintMaskStroke(const KVBitmapPtr& mask, const KVMaskStroke& stroke)
{
    if (!mask || mask->bitsPerSample() != 8 || mask->samplesPerPixel() != 1 || mask->isPlanar() ||
        stroke.points.isEmpty())
        return nullptr;
    KVBitmapPtr painted = mask->copy();
    if (!painted)
        return nullptr;
    // Painted in place through a QImage over the copy's samples.
    QImage canvas(painted->bitmapData(), static_cast<int>(painted->pixelsWide()),
                  static_cast<int>(painted->pixelsHigh()),
                  static_cast<qsizetype>(painted->bytesPerRow()), QImage::Format_Grayscale8);
    QPainter painter(&canvas);
    painter.setRenderHint(QPainter::Antialiasing);
    QPen pen(stroke.erase ? Qt::black : Qt::white, 2.0 * stroke.radius, Qt::SolidLine, Qt::RoundCap,
             Qt::RoundJoin);
    painter.setPen(pen);
    if (stroke.points.size() == 1)
        painter.drawPoint(stroke.points.front());
    else
        painter.drawPolyline(stroke.points.data(), static_cast<int>(stroke.points.size()));
    return painted;
}

KVMaskStrokeCommand::KVMaskStrokeCommand(KVImageEditorDelegate* delegate, KVBitmapPtr before,
                                         KVBitmapPtr after)
    : QUndoCommand(QCoreApplication::translate("KVImageEditorView", "Paint Mask")),
      delegate_(delegate), before_(std::move(before)), after_(std::move(after))
{}

void KVMaskStrokeCommand::undo()
{
    delegate_->exclusionMaskPainted(before_);
}

void KVMaskStrokeCommand::redo()
{
    delegate_->exclusionMaskPainted(after_);
}

} // namespace tintorra
