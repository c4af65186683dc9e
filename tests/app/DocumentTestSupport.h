#pragma once

#include "app/DocumentAlerts.h"
#include "app/DocumentWindow.h"
#include "imageio/ImageTypes.h"

#include <QTemporaryDir>
#include <QWidget>
#include <optional>
#include <string>
#include <vector>

namespace tintorra {

class MainWindowDoc;

namespace test {

// A window for a document that stands in for the editor: it keeps what it is handed, records
// the order of the hand-over, and makes an "output" of the source with its colour channels
// rotated, which is as good as a shift for what the document does with it.
class TestDocumentWindow : public QWidget, public DocumentWindow {
public:
    explicit TestDocumentWindow(MainWindowDoc& document);
    ~TestDocumentWindow() override;

    QWidget* widget() override { return this; }
    KVBitmapPtr inputImageRep() const override;
    KVBitmapPtr outputImageRep() const override { return output_; }
    KVBitmapPtr exclusionMaskRep() const override;
    KVBitmapPtr inclusionMaskRep() const override;
    void setUndoRegistrationEnabled(bool enabled) override;
    void setEditorImageReps(std::vector<KVBitmapPtr> reps) override;
    QString hexEncodedStringFromHueShiftParameters() const override { return parameters_; }
    bool setHueShiftParametersFromHexEncodedString(const QString& encoded) override;
    bool sourceViewHasImage() const override { return !reps_.empty(); }
    bool canCopyOutput() const override { return output_ != nullptr; }
    void copyOutput(QClipboard*) override {}
    void synchronizeWindowTitleWithDocumentName() override;
    void setBusy(bool busy, const QString&) override { busy_ = busy; }

    std::vector<KVBitmapPtr> reps_;
    KVBitmapPtr output_;
    QString parameters_;
    // "reps:N", "params", "undo:on", "undo:off" in the order they happened.
    QStringList calls_;
    bool busy_ = false;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    MainWindowDoc& document_;
};

// Answers the document's questions with what the test set, and records what was asked.
class RecordingPrompts : public DocumentPrompts {
public:
    ReplaceImageChoice askReplaceImage(QWidget*) override;
    void showError(QWidget*, const KVError& error) override;
    SaveChangesChoice askSaveChanges(QWidget*, const QString& displayName) override;
    bool askRevert(QWidget*, const QString&) override { return true; }
    std::optional<SaveTarget> askSaveTarget(QWidget*, const QString& suggestedName,
                                            const QString& currentType) override;

    ReplaceImageChoice replaceAnswer = ReplaceImageChoice::cancel;
    SaveChangesChoice saveChangesAnswer = SaveChangesChoice::cancel;
    std::optional<SaveTarget> saveTarget;
    int replaceQuestions = 0;
    int saveChangesQuestions = 0;
    std::vector<KVError> errors;
    QString suggestedName;
};

// An image with smooth, distinct samples; 8 or 16 bits, with or without alpha, RGB or grey,
// with an ICC profile when given.
KVBitmapPtr makeImage(int width, int height, int bitsPerSample, bool alpha, bool rgb = true,
                      std::vector<std::uint8_t> icc = {});

// Encodes `image` with the program's codecs into `folder` under `name`.
QString writeImage(const QTemporaryDir& folder, const QString& name, const KVBitmap& image,
                   ImageFormat format);

// True when two bitmaps have the same size and samples no further apart than `tolerance`
// (8-bit units), channel by channel, colour and alpha.
bool samePixels(const KVBitmapPtr& a, const KVBitmapPtr& b, int tolerance);

QString fixturePath(const QString& name);

// Points the program's settings at a file of their own in `folder`.
void useTemporarySettings(const QTemporaryDir& folder);

} // namespace test
} // namespace tintorra
