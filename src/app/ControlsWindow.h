#pragma once

#include "engine/Engine.h"

#include <QMainWindow>
#include <cstdint>

class QLabel;
class QUndoStack;

namespace tintorra {

class TintorraVC;

// The editing panel beside the image it shifts, with the spectrogram under the image. It stands
// in for the document window until that window exists.
class ControlsWindow : public QMainWindow {
    Q_OBJECT

public:
    ControlsWindow(Engine& engine, KVBitmapPtr image, QWidget* parent = nullptr);
    ~ControlsWindow() override;

    TintorraVC* editor() const { return editor_; }
    QUndoStack* undoStack() const { return undoStack_; }

protected:
    // The picture answers the pointer as the document window's image view will: the readout
    // follows it, and a click with a tool on uses the tool.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // The source pixel under a point of the picture, or (-1, -1).
    QPoint pixelAt(QPointF point) const;
    // Scales the picture off the main thread; the newest one asked for is shown.
    void showPicture(const KVBitmapPtr& bitmap);

    QUndoStack* undoStack_ = nullptr;
    TintorraVC* editor_ = nullptr;
    QLabel* preview_ = nullptr;
    std::uint64_t picturesAsked_ = 0;
    std::uint64_t pictureShown_ = 0;
};

} // namespace tintorra
