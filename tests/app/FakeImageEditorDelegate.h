#pragma once

#include "app/KVImageEditorDelegate.h"
#include "imageio/ImageFile.h"

#include <QStringList>
#include <QUndoStack>

namespace tintorra {

// Records what an editor view asks of its window; each colour pick pushes one undo command, as
// the editor controller's setters do.
class FakeImageEditorDelegate : public KVImageEditorDelegate {
public:
    int tool = 0;
    int shownMask = 0;
    QStringList messages;
    QList<QPoint> pixels;
    KVBitmapPtr mask;
    QUndoStack stack;

    int currentSelectionTool() const override { return tool; }
    int maskToShow() const override { return shownMask; }
    QUndoStack* undoStack() const override { return const_cast<QUndoStack*>(&stack); }
    void setSelectionHue(QPoint pixel, const KVBitmapPtr&) override { record("set", pixel); }
    void addSelectionHue(QPoint pixel, const KVBitmapPtr&) override { record("add", pixel); }
    void subtractSelectionHue(QPoint pixel, const KVBitmapPtr&) override
    {
        record("subtract", pixel);
    }
    void setTargetHue(QPoint pixel, const KVBitmapPtr&) override { record("target", pixel); }
    void hoverOverImage(QPoint, const KVBitmapPtr&) override {}
    void debugPixel(QPoint pixel, const KVBitmapPtr&) override { record("debug", pixel); }
    KVBitmapPtr exclusionMaskForPainting() override { return mask; }
    void exclusionMaskPainted(KVBitmapPtr painted) override { mask = std::move(painted); }
    QByteArray dataForSaveFormat(int tag) const override
    {
        const KVBitmapPtr image = KVBitmap::deviceRGBA8888Rep(6, 4, false);
        std::fill(image->bitmapData(), image->bitmapData() + image->sampleBytes(), 0xFF);
        const auto encoded = encodeImage(*image, static_cast<ImageFormat>(tag));
        if (!encoded)
            return {};
        return QByteArray(reinterpret_cast<const char*>(encoded.value().data()),
                          static_cast<qsizetype>(encoded.value().size()));
    }
    QString documentDisplayName() const override { return QStringLiteral("Harbour shifted.tif"); }

private:
    void record(const char* message, QPoint pixel)
    {
        messages.append(QString::fromLatin1(message));
        pixels.append(pixel);
        stack.push(new QUndoCommand(QString::fromLatin1(message)));
    }
};

} // namespace tintorra
