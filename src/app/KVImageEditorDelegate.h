#pragma once

#include "image/KVBitmap.h"

#include <QByteArray>
#include <QPoint>
#include <QString>

class QUndoStack;

namespace tintorra {

// What an image editor view asks of the window that shows it: the tool and mask settings, the
// colour-picking messages (pixel coordinates in `image`, the bitmap the view shows), the
// exclusion mask for the brush, and the output's bytes for copying and dragging out.
class KVImageEditorDelegate {
public:
    virtual ~KVImageEditorDelegate() = default;

    virtual int currentSelectionTool() const = 0; // 1..5, anything else means no tool
    virtual int maskToShow() const = 0;
    virtual QUndoStack* undoStack() const = 0;

    virtual void setSelectionHue(QPoint pixel, const KVBitmapPtr& image) = 0;
    virtual void addSelectionHue(QPoint pixel, const KVBitmapPtr& image) = 0;
    virtual void subtractSelectionHue(QPoint pixel, const KVBitmapPtr& image) = 0;
    virtual void setTargetHue(QPoint pixel, const KVBitmapPtr& image) = 0;
    virtual void hoverOverImage(QPoint pixel, const KVBitmapPtr& image) = 0; // (-1,-1): outside
    virtual void debugPixel(QPoint pixel, const KVBitmapPtr& image) = 0;

    // The mask the brush starts from; the view paints into a copy and never changes this one.
    virtual KVBitmapPtr exclusionMaskForPainting() = 0;
    // A finished stroke (or its undo): the new mask replaces the old one.
    virtual void exclusionMaskPainted(KVBitmapPtr mask) = 0;

    // The output encoded in a save format (0 TIFF, 1 PNG, 2 JPEG, 3 JPEG 2000); empty when it
    // cannot be had.
    virtual QByteArray dataForSaveFormat(int tag) const = 0;
    virtual QString documentDisplayName() const = 0;
};

} // namespace tintorra
