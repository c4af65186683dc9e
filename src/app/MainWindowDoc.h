#pragma once

#include "app/BackgroundJobs.h"
#include "app/DocumentAlerts.h"
#include "app/DocumentReading.h"
#include "app/KVFileDropView.h"
#include "imageio/DocumentFile.h"

#include <QObject>
#include <QString>
#include <QUndoStack>
#include <mutex>
#include <optional>
#include <vector>

class QClipboard;
class QMimeData;

namespace tintorra {

class DocumentWindow;

// The actions of a document window whose state the document decides.
enum class DocumentAction { save, saveAs, revert, copy, paste };

// One image document: the source image and up to two masks, shown by exactly one window. It
// reads RGB images of every format the program decodes (and the program's own multi-page TIFF,
// whose parameters it hands to the editor), saves the shifted image in the plain formats or
// the program's own document, takes images dropped or pasted onto it, and names an unsaved
// result after its source file. It is modified while its undo stack is away from the clean
// state, or when a shift of a plain image file has not been saved yet.
class MainWindowDoc : public QObject, public KVFileDropDelegate {
    Q_OBJECT

public:
    explicit MainWindowDoc(QObject* parent = nullptr);
    ~MainWindowDoc() override;

    // The window that shows the document; the document does not own it.
    void setWindowController(DocumentWindow* window);
    DocumentWindow* windowController() const { return window_; }
    // Called once the window is built: hands it the images.
    void windowControllerDidLoad();

    // Where the document's questions go (the standard dialogs unless changed; not owned).
    void setPrompts(DocumentPrompts* prompts) { prompts_ = prompts; }
    DocumentPrompts& prompts() const { return *prompts_; }

    // Reading a file: what readDocumentFile gave (on any thread) is taken in on the main thread.
    // On failure the document is unchanged and `error` (when given) says why: the RGB refusal,
    // or an error of no domain holding the reason the file gave no image.
    bool takeReadResult(const QString& path, DocumentReadResult result, KVError* error = nullptr);
    // Both steps at once, for callers that can wait.
    bool readFromFile(const QString& path, KVError* error = nullptr);

    const std::vector<KVBitmapPtr>& imageReps() const { return imageReps_; }
    // New images; undoable as "Load Image" when the document had images.
    void setImageReps(std::vector<KVBitmapPtr> reps);
    // New images from a file (or from no file); undoable as "Load Image File" or "Load Image".
    // The same first bitmap again changes nothing.
    void setImageReps(std::vector<KVBitmapPtr> reps, const QString& fileURL, const QString& type);
    // Hands the images (and, for the program's own file, first its parameters) to the editor.
    void propagateImageReps();

    bool isTintorraTIFF() const;
    // True when the document is a file of the program's own kind: read from one (it had
    // parameters) or saved as one. Every document has the program's type, so the type alone
    // cannot tell a reopened document from a plain image file turned untitled.
    bool hasOwnDocumentFile() const;
    // The parameter string read from the program's own file.
    const std::optional<std::string>& artistTag() const { return artistTag_; }
    // The document's own file (empty while untitled) and its type.
    QString fileName() const { return fileName_; }
    QString fileType() const { return fileType_; }
    // The file the source image came from, and its type.
    QString imageFileName() const { return imageFileURL_; }
    QString imageFileType() const { return imageFileType_; }

    // The shifted name of the source file while the document is untitled and came from a file;
    // the file's name once it has one; else its untitled name.
    QString displayName() const;
    void setUntitledName(const QString& name);

    QUndoStack* undoStack() { return &undoStack_; }
    bool isModified() const;
    // Counts a result made from a plain image file as unsaved work.
    void updateChangeCountDone();

    // What would be saved in `type`, with the error the document reports when it cannot be.
    std::optional<std::vector<std::uint8_t>> dataOfType(const QString& type, KVError* error,
                                                        const EncodeOptions& options = {}) const;
    // The shifted image in a save format tag (0 TIFF, 1 PNG, 2 JPEG, 3 JPEG 2000); empty when
    // there is none or the tag names no format.
    QByteArray dataForSaveFormat(int tag) const;

    // Writes the document atomically on a background thread; saveFinished tells how it went.
    // False (and nothing started) when a save is already running or there is nothing to save.
    bool saveToPath(const QString& path, const QString& type, const EncodeOptions& options = {});
    bool isSaving() const { return saving_; }

    // The menu commands. save() asks for a place when the document has none.
    void save();
    void saveAs();
    void revertToSaved();
    void copy();
    void paste();
    bool validateAction(DocumentAction action) const;

    // Asks about unsaved changes. True when the window may close now; false when the user
    // cancelled, or chose to save (the document then asks to close once saved: closeRequested).
    bool shouldCloseWindow();

    // The drop view's questions (a view of the window, or no view for a paste).
    bool dropViewCanTakeData(KVFileDropView* view, const QMimeData* data) override;
    void dropViewTakeData(KVFileDropView* view, const QMimeData* data) override;

signals:
    void displayNameChanged();
    void modifiedChanged(bool modified);
    void busyChanged(bool busy);
    void saveFinished(bool saved);
    // The window may close now (after a save chosen in the close question).
    void closeRequested();
    // An image dropped on a document that has one goes to a window of its own.
    void openFileInNewWindowRequested(const QString& path);
    void openImageInNewWindowRequested(tintorra::KVBitmapPtr image);
    // A reading that the document started (a revert, a dropped file) ended.
    void readingFinished(bool ok);

private:
    DocumentImages documentImages() const;
    void synchronizeFileURLAndFileType();
    void setFileName(const QString& fileName, const QString& fileType);
    void notifyModified();
    void notifyDisplayName();
    void runRGBImageAlert();
    void replaceWithFile(const QString& path);
    void applyImageReps(std::vector<KVBitmapPtr> reps);
    void applyImageReps(std::vector<KVBitmapPtr> reps, const QString& fileURL, const QString& type);
    void finishSave(const QString& path, const QString& type, const std::optional<KVError>& error);
    QWidget* parentWidget() const;
    void setBusy(bool busy, const QString& message);

    std::vector<KVBitmapPtr> imageReps_;
    std::optional<std::string> artistTag_;
    QString imageFileURL_;
    QString imageFileType_;

    QString fileName_;
    QString fileType_;
    QString untitledName_;
    QString lastDisplayName_;
    QUndoStack undoStack_;
    bool changeDone_ = false;
    bool lastModified_ = false;
    bool saving_ = false;
    bool closeWhenSaved_ = false;
    EncodeOptions lastSaveOptions_;
    // Readings of dropped files: only the newest is taken in.
    std::uint64_t readGeneration_ = 0;
    std::recursive_mutex lock_;
    DocumentWindow* window_ = nullptr;
    DocumentPrompts* prompts_ = &DocumentPrompts::standard();
    // Last: its threads deliver into the members above until they are joined.
    BackgroundJobs jobs_{this};
};

} // namespace tintorra
