#include "app/DocumentController.h"

#include "app/DocumentWindow.h"
#include "app/MainWindowDoc.h"
#include "imageio/ImageFile.h"
#include "imageio/ImageTypes.h"
#include "ui/KVSettings.h"

#include <QApplication>
#include <QFileInfo>
#include <QWidget>
#include <utility>

namespace tintorra {

namespace {

const QString kRecentDocumentsKey = QStringLiteral("recentDocuments");

QString canonical(const QString& path)
{
    const QFileInfo info(path);
    const QString resolved = info.canonicalFilePath();
    return resolved.isEmpty() ? info.absoluteFilePath() : resolved;
}

} // namespace

DocumentController::DocumentController(WindowFactory makeWindow, QObject* parent)
    : QObject(parent), makeWindow_(std::move(makeWindow))
{
    qRegisterMetaType<MainWindowDoc*>();
}

DocumentController::~DocumentController()
{
    const QList<MainWindowDoc*> documents = std::exchange(documents_, {});
    for (MainWindowDoc* document : documents) {
        if (QWidget* window = windowForDocument(document)) {
            disconnect(window, nullptr, this, nullptr);
            delete window;
        }
        delete document;
    }
}

void DocumentController::setPrompts(DocumentPrompts* prompts)
{
    prompts_ = prompts;
    for (MainWindowDoc* document : documents_)
        document->setPrompts(prompts);
}

MainWindowDoc* DocumentController::makeDocument()
{
    auto* document = new MainWindowDoc;
    document->setPrompts(prompts_);
    connect(document, &MainWindowDoc::openFileInNewWindowRequested, this,
            [this](const QString& path) { openDocument(path); });
    connect(document, &MainWindowDoc::openImageInNewWindowRequested, this,
            [this](const KVBitmapPtr& image) { openImageData(image); });
    connect(document, &MainWindowDoc::saveFinished, this, [this, document](bool saved) {
        if (saved)
            noteRecentDocument(document->fileName());
    });
    connect(document, &MainWindowDoc::closeRequested, this, [this, document] {
        if (QWidget* window = windowForDocument(document))
            window->close();
    });
    documents_.append(document);
    return document;
}

void DocumentController::showDocument(MainWindowDoc* document)
{
    DocumentWindow* window = makeWindow_(*document);
    document->setWindowController(window);
    QWidget* widget = window->widget();
    widget->setAttribute(Qt::WA_DeleteOnClose);
    connect(widget, &QObject::destroyed, this, [this, document] {
        documents_.removeOne(document);
        document->setWindowController(nullptr);
        document->deleteLater();
        emit documentClosed();
    });
    document->windowControllerDidLoad();
    window->synchronizeWindowTitleWithDocumentName();
    widget->show();
    widget->raise();
    widget->activateWindow();
}

MainWindowDoc* DocumentController::newDocument()
{
    MainWindowDoc* document = makeDocument();
    ++untitledCount_;
    document->setUntitledName(untitledCount_ == 1 ? tr("Untitled")
                                                  : tr("Untitled %1").arg(untitledCount_));
    showDocument(document);
    return document;
}

MainWindowDoc* DocumentController::openDocument(const QString& path)
{
    if (MainWindowDoc* open = documentForPath(path)) {
        if (QWidget* window = windowForDocument(open)) {
            window->show();
            window->raise();
            window->activateWindow();
        }
        return open;
    }
    const QString absolute = QFileInfo(path).absoluteFilePath();
    if (!isOpening())
        QApplication::setOverrideCursor(Qt::BusyCursor);
    jobs_.start<DocumentReadResult>(
        [file = absolute.toStdString()] { return readDocumentFile(file); },
        [this, absolute](DocumentReadResult result) {
            if (!isOpening())
                QApplication::restoreOverrideCursor();
            // The same file may have been opened meanwhile by another request.
            if (MainWindowDoc* open = documentForPath(absolute)) {
                emit documentOpened(open);
                return;
            }
            MainWindowDoc* document = makeDocument();
            KVError error;
            if (!document->takeReadResult(absolute, std::move(result), &error)) {
                documents_.removeOne(document);
                delete document;
                if (error.domain.empty()) {
                    error = {TintorraErrorDomain, 0,
                             tr("The document \u201c%1\u201d could not be opened.")
                                 .arg(QFileInfo(absolute).fileName())
                                 .toStdString(),
                             error.localizedRecoverySuggestion};
                }
                prompts_->showError(activeParent(), error);
                emit openFailed(absolute);
                return;
            }
            closeUntouchedUntitledDocuments(document);
            showDocument(document);
            noteRecentDocument(absolute);
            emit documentOpened(document);
        });
    return nullptr;
}

MainWindowDoc* DocumentController::openImageData(KVBitmapPtr image)
{
    if (!image)
        return nullptr;
    if (!image->isRGB()) {
        prompts_->showError(activeParent(), notRGBImageUseError());
        return nullptr;
    }
    MainWindowDoc* document = newDocument();
    document->setImageReps({std::move(image)}, QString(), QString::fromUtf8(kTypeTIFF.data()));
    return document;
}

MainWindowDoc* DocumentController::openImageData(const QByteArray& bytes)
{
    IOResult<KVBitmapPtr> image =
        decodeImage({reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                     static_cast<std::size_t>(bytes.size())});
    if (!image)
        return nullptr;
    return openImageData(image.take());
}

void DocumentController::closeUntouchedUntitledDocuments(const MainWindowDoc* except)
{
    // The empty window the program starts with gives way to the first file opened.
    for (MainWindowDoc* document : QList<MainWindowDoc*>(documents_)) {
        if (document != except && document->imageReps().empty() && !document->isModified() &&
            document->fileName().isEmpty()) {
            if (QWidget* window = windowForDocument(document))
                window->close();
        }
    }
}

QList<MainWindowDoc*> DocumentController::documents() const
{
    return documents_;
}

QList<QWidget*> DocumentController::windows() const
{
    QList<QWidget*> result;
    for (const MainWindowDoc* document : documents_) {
        if (QWidget* window = windowForDocument(document))
            result << window;
    }
    return result;
}

QWidget* DocumentController::windowForDocument(const MainWindowDoc* document) const
{
    if (!document || !document->windowController())
        return nullptr;
    return document->windowController()->widget();
}

MainWindowDoc* DocumentController::documentForPath(const QString& path) const
{
    const QString wanted = canonical(path);
    for (MainWindowDoc* document : documents_) {
        const QString own = document->fileName();
        const QString source = document->imageFileName();
        if ((!own.isEmpty() && canonical(own) == wanted) ||
            (!source.isEmpty() && canonical(source) == wanted))
            return document;
    }
    return nullptr;
}

QStringList DocumentController::recentDocuments() const
{
    return KVSettings::standard().value(kRecentDocumentsKey).toStringList();
}

void DocumentController::noteRecentDocument(const QString& path)
{
    if (path.isEmpty())
        return;
    const QString absolute = QFileInfo(path).absoluteFilePath();
    QStringList recent = recentDocuments();
    recent.removeAll(absolute);
    recent.prepend(absolute);
    while (recent.size() > kMaximumRecentDocuments)
        recent.removeLast();
    KVSettings::standard().setValue(kRecentDocumentsKey, recent);
    emit recentDocumentsChanged();
}

void DocumentController::clearRecentDocuments()
{
    KVSettings::standard().remove(kRecentDocumentsKey);
    emit recentDocumentsChanged();
}

bool DocumentController::closeAll()
{
    for (MainWindowDoc* document : QList<MainWindowDoc*>(documents_)) {
        QWidget* window = windowForDocument(document);
        if (window && !window->close())
            return false;
    }
    return true;
}

QWidget* DocumentController::activeParent() const
{
    return QApplication::activeWindow();
}

} // namespace tintorra
