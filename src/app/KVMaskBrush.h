#pragma once

#include "image/KVBitmap.h"

#include <QList>
#include <QPointF>
#include <QUndoCommand>

namespace tintorra {

class KVImageEditorDelegate;

// One press-drag-release of the mask brush, in image pixels.
struct KVMaskStroke {
    QList<QPointF> points;
    double radius = 8.0;
    bool erase = false; // paints "not excluded" (0) instead of "excluded" (255)
};

// A copy of `mask` (8-bit grey, one sample a pixel) with the stroke painted in, round and
// antialiased; null when the mask has another layout. The mask itself is left alone: masks are
// shared and never change once handed over.
KVBitmapPtr paintMaskStroke(const KVBitmapPtr& mask, const KVMaskStroke& stroke);

// A finished stroke on the undo stack: doing it hands the new mask to the delegate, undoing it
// the old one.
class KVMaskStrokeCommand : public QUndoCommand {
public:
    KVMaskStrokeCommand(KVImageEditorDelegate* delegate, KVBitmapPtr before, KVBitmapPtr after);
    void undo() override;
    void redo() override;

private:
    KVImageEditorDelegate* delegate_;
    KVBitmapPtr before_;
    KVBitmapPtr after_;
};

} // namespace tintorra
