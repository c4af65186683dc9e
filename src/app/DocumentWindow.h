#pragma once

#include "image/KVBitmap.h"

#include <QString>
#include <optional>
#include <vector>

class QClipboard;
class QWidget;

namespace tintorra {

// What a document asks of the window that shows it: the images the editor holds (for saving),
// the editor's parameters, and the state of the two image views. MainWindowWC answers these; the
// tests answer them with a window of their own.
class DocumentWindow {
public:
    virtual ~DocumentWindow() = default;

    // The window itself, as parent of the document's dialogs.
    virtual QWidget* widget() = 0;

    virtual KVBitmapPtr inputImageRep() const = 0;
    // The newest shifted image, or null while there is none.
    virtual KVBitmapPtr outputImageRep() const = 0;
    virtual KVBitmapPtr exclusionMaskRep() const = 0;
    virtual KVBitmapPtr inclusionMaskRep() const = 0;

    // The editor's side of handing an image over. While registration is off, nothing the editor
    // does lands on the undo stack.
    virtual void setUndoRegistrationEnabled(bool enabled) = 0;
    virtual void setEditorImageReps(std::vector<KVBitmapPtr> reps) = 0;
    virtual QString hexEncodedStringFromHueShiftParameters() const = 0;
    virtual bool setHueShiftParametersFromHexEncodedString(const QString& encoded) = 0;

    // The source view shows an image (saving is possible).
    virtual bool sourceViewHasImage() const = 0;
    // The output view can copy its image, and does.
    virtual bool canCopyOutput() const = 0;
    virtual void copyOutput(QClipboard* clipboard) = 0;

    // The document's name or modified state changed.
    virtual void synchronizeWindowTitleWithDocumentName() = 0;
    // Shows that the document is reading or writing a file (`message` says which) or is done.
    virtual void setBusy(bool busy, const QString& message) = 0;
};

} // namespace tintorra
