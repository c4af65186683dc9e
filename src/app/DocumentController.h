#pragma once

#include "app/BackgroundJobs.h"
#include "app/DocumentAlerts.h"
#include "image/KVBitmap.h"

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QStringList>
#include <functional>

class QWidget;

namespace tintorra {

class DocumentWindow;
class MainWindowDoc;

// Opens and closes the document windows: one window per document, a file that is already open
// brought to the front instead of opened twice, the recently opened files, and closing them
// all (asking about unsaved changes) when the program quits.
class DocumentController : public QObject {
    Q_OBJECT

public:
    // Makes the window of a document. The window is its own widget (deleting the widget deletes
    // it), tells the document it is gone before it goes (setWindowController(nullptr)), and asks
    // the document's shouldCloseWindow() before it closes.
    using WindowFactory = std::function<DocumentWindow*(MainWindowDoc& document)>;

    explicit DocumentController(WindowFactory makeWindow, QObject* parent = nullptr);
    ~DocumentController() override;

    // Where the documents' questions go (tests answer them); not owned.
    void setPrompts(DocumentPrompts* prompts);

    // A new untitled document in a window of its own.
    MainWindowDoc* newDocument();
    // Opens a file: an open document of that file comes to the front and is returned; otherwise
    // the file is read in the background and documentOpened or openFailed follows (the failure
    // shown in an alert); the answer is then null.
    MainWindowDoc* openDocument(const QString& path);
    // A new untitled document holding an image (refused with the RGB alert when it is not RGB,
    // or null when the bytes hold no image).
    MainWindowDoc* openImageData(KVBitmapPtr image);
    MainWindowDoc* openImageData(const QByteArray& bytes);

    QList<MainWindowDoc*> documents() const;
    QList<QWidget*> windows() const;
    QWidget* windowForDocument(const MainWindowDoc* document) const;
    // The document showing the file at `path` (its own file or its source image's), or null.
    MainWindowDoc* documentForPath(const QString& path) const;
    bool isOpening() const { return jobs_.running(); }

    // Newest first, at most kMaximumRecentDocuments, kept in the settings.
    QStringList recentDocuments() const;
    void noteRecentDocument(const QString& path);
    void clearRecentDocuments();

    // Closes every window, asking about unsaved changes; false when one of them stays open (the
    // user cancelled, or it closes itself once saved).
    bool closeAll();

    static constexpr int kMaximumRecentDocuments = 10;

signals:
    void documentOpened(tintorra::MainWindowDoc* document);
    void openFailed(const QString& path);
    void recentDocumentsChanged();
    void documentClosed();

private:
    MainWindowDoc* makeDocument();
    void showDocument(MainWindowDoc* document);
    void closeUntouchedUntitledDocuments(const MainWindowDoc* except);
    QWidget* activeParent() const;

    WindowFactory makeWindow_;
    DocumentPrompts* prompts_ = &DocumentPrompts::standard();
    QList<MainWindowDoc*> documents_;
    int untitledCount_ = 0;
    // Last: its threads deliver into the members above until they are joined.
    BackgroundJobs jobs_{this};
};

} // namespace tintorra
