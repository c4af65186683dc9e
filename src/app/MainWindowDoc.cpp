#include "app/MainWindowDoc.h"

#include "app/DocumentWindow.h"
#include "app/SaveDialog.h"
#include "common/Diagnostics.h"
#include "imageio/AtomicFileWriter.h"
#include "imageio/ImageFile.h"
#include "imageio/ImageTypes.h"
#include "imageio/ShiftedFileName.h"

#include <QClipboard>
#include <QFileInfo>
#include <QGuiApplication>
#include <QUndoCommand>
#include <QUrl>

namespace tintorra {

namespace {

QString qstring(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

// Loading images into the document, undone by loading the old ones back.
class LoadImageCommand : public QUndoCommand {
public:
    using Apply =
        std::function<void(const std::vector<KVBitmapPtr>&, const QString&, const QString&)>;

    struct State {
        std::vector<KVBitmapPtr> reps;
        QString fileURL;
        QString type;
    };

    LoadImageCommand(const QString& name, State before, State after, Apply apply)
        : QUndoCommand(name), before_(std::move(before)), after_(std::move(after)),
          apply_(std::move(apply))
    {}

    void undo() override { apply_(before_.reps, before_.fileURL, before_.type); }
    void redo() override { apply_(after_.reps, after_.fileURL, after_.type); }

private:
    State before_;
    State after_;
    Apply apply_;
};

} // namespace

MainWindowDoc::MainWindowDoc(QObject* parent) : QObject(parent)
{
    connect(&undoStack_, &QUndoStack::cleanChanged, this, [this] { notifyModified(); });
    connect(&undoStack_, &QUndoStack::indexChanged, this, [this] { notifyModified(); });
}

MainWindowDoc::~MainWindowDoc() = default;

void MainWindowDoc::setWindowController(DocumentWindow* window)
{
    window_ = window;
}

void MainWindowDoc::windowControllerDidLoad()
{
    propagateImageReps();
}

bool MainWindowDoc::takeReadResult(const QString& path, DocumentReadResult result, KVError* error)
{
    if (!result.reps) {
        if (error) {
            *error = result.error.value_or(
                KVError{{}, 0, "The file could not be opened.", result.failureReason});
        }
        return false;
    }
    DocumentImageReps& reps = *result.reps;
    artistTag_ = std::move(reps.artistTag);
    const QString type = reps.fileType ? qstring(*reps.fileType) : qstring(result.type);
    fileType_ = type;
    imageFileURL_ = QFileInfo(path).absoluteFilePath();
    imageFileType_ = type;
    setImageReps(std::move(reps.imageReps));
    if (isTintorraTIFF())
        setFileName(imageFileURL_, qstring(TintorraTIFFType));
    else
        synchronizeFileURLAndFileType();
    return true;
}

bool MainWindowDoc::readFromFile(const QString& path, KVError* error)
{
    return takeReadResult(path, readDocumentFile(path.toStdString()), error);
}

void MainWindowDoc::setImageReps(std::vector<KVBitmapPtr> reps)
{
    const std::lock_guard guard(lock_);
    if (imageReps_.empty()) {
        applyImageReps(std::move(reps));
        return;
    }
    undoStack_.push(
        new LoadImageCommand(tr("Load Image"), {imageReps_, imageFileURL_, imageFileType_},
                             {std::move(reps), imageFileURL_, imageFileType_},
                             [this](const std::vector<KVBitmapPtr>& images, const QString&,
                                    const QString&) { applyImageReps(images); }));
}

void MainWindowDoc::setImageReps(std::vector<KVBitmapPtr> reps, const QString& fileURL,
                                 const QString& type)
{
    const std::lock_guard guard(lock_);
    const KVBitmapPtr current = imageReps_.empty() ? nullptr : imageReps_.front();
    const KVBitmapPtr arriving = reps.empty() ? nullptr : reps.front();
    if (current == arriving)
        return;
    if (!current) {
        applyImageReps(std::move(reps), fileURL, type);
        return;
    }
    undoStack_.push(new LoadImageCommand(
        fileURL.isEmpty() ? tr("Load Image") : tr("Load Image File"),
        {imageReps_, imageFileURL_, imageFileType_}, {std::move(reps), fileURL, type},
        [this](const std::vector<KVBitmapPtr>& images, const QString& url, const QString& kind) {
            applyImageReps(images, url, kind);
        }));
}

void MainWindowDoc::applyImageReps(std::vector<KVBitmapPtr> reps)
{
    const std::lock_guard guard(lock_);
    imageReps_ = std::move(reps);
    propagateImageReps();
}

void MainWindowDoc::applyImageReps(std::vector<KVBitmapPtr> reps, const QString& fileURL,
                                   const QString& type)
{
    const std::lock_guard guard(lock_);
    imageFileURL_ = fileURL;
    imageFileType_ = type;
    imageReps_ = std::move(reps);
    synchronizeFileURLAndFileType();
    propagateImageReps();
}

void MainWindowDoc::propagateImageReps()
{
    if (!window_ || imageReps_.empty())
        return;
    window_->setUndoRegistrationEnabled(false);
    // The parameters are restored while no image is loaded, so that no shift is computed for a
    // half-restored set.
    if (isTintorraTIFF() && artistTag_ && artistTag_->starts_with(kHueShiftParametersPrefix)) {
        window_->setEditorImageReps({});
        window_->setHueShiftParametersFromHexEncodedString(QString::fromStdString(*artistTag_));
    }
    window_->setEditorImageReps(imageReps_);
    window_->setUndoRegistrationEnabled(true);
}

bool MainWindowDoc::isTintorraTIFF() const
{
    return tintorra::isTintorraTIFF(fileType_.toStdString(), artistTag_);
}

bool MainWindowDoc::hasOwnDocumentFile() const
{
    return (artistTag_ && !artistTag_->empty()) ||
           (!fileName_.isEmpty() && fileType_ == qstring(TintorraTIFFType));
}

void MainWindowDoc::synchronizeFileURLAndFileType()
{
    // A plain image file leaves the document untitled, so that the first save asks for a name
    // and never writes over the source image.
    const QString ownType = qstring(TintorraTIFFType);
    setFileName(imageFileType_ == ownType ? imageFileURL_ : QString(), ownType);
}

void MainWindowDoc::setFileName(const QString& fileName, const QString& fileType)
{
    fileName_ = fileName;
    fileType_ = fileType;
    notifyDisplayName();
}

void MainWindowDoc::notifyDisplayName()
{
    const QString name = displayName();
    if (name == lastDisplayName_)
        return;
    lastDisplayName_ = name;
    emit displayNameChanged();
    if (window_)
        window_->synchronizeWindowTitleWithDocumentName();
}

QString MainWindowDoc::displayName() const
{
    if (fileName_.isEmpty() && !imageFileURL_.isEmpty()) {
        return QString::fromStdString(
            shiftedFileNameForPath(imageFileURL_.toStdString(), TintorraTIFFType));
    }
    if (!fileName_.isEmpty())
        return QFileInfo(fileName_).fileName();
    return untitledName_.isEmpty() ? tr("Untitled") : untitledName_;
}

void MainWindowDoc::setUntitledName(const QString& name)
{
    untitledName_ = name;
    notifyDisplayName();
}

bool MainWindowDoc::isModified() const
{
    return !undoStack_.isClean() || changeDone_;
}

void MainWindowDoc::updateChangeCountDone()
{
    changeDone_ = true;
    notifyModified();
}

void MainWindowDoc::notifyModified()
{
    const bool modified = isModified();
    if (modified == lastModified_)
        return;
    lastModified_ = modified;
    emit modifiedChanged(modified);
    if (window_)
        window_->synchronizeWindowTitleWithDocumentName();
}

DocumentImages MainWindowDoc::documentImages() const
{
    DocumentImages images;
    if (!window_)
        return images;
    images.outputImageRep = window_->outputImageRep();
    images.inputImageRep = window_->inputImageRep();
    images.exclusionMaskRep = window_->exclusionMaskRep();
    images.inclusionMaskRep = window_->inclusionMaskRep();
    images.hueShiftParameters = window_->hexEncodedStringFromHueShiftParameters().toStdString();
    return images;
}

namespace {

std::optional<std::vector<std::uint8_t>> encodeDocument(const DocumentImages* images,
                                                        const std::string& type, KVError* error,
                                                        const EncodeOptions& options)
{
    // JPEG is the one plain format with a setting of its own; the rest use the core's defaults.
    if (images && typeConformsTo(type, kTypeJPEG) && images->outputImageRep) {
        IOResult<std::vector<std::uint8_t>> bytes =
            encodeImage(*images->outputImageRep, ImageFormat::jpeg, options);
        if (bytes)
            return bytes.take();
        if (error)
            *error = cannotSaveInFormatError();
        return std::nullopt;
    }
    return tintorra::dataOfType(type, images, error);
}

} // namespace

std::optional<std::vector<std::uint8_t>>
MainWindowDoc::dataOfType(const QString& type, KVError* error, const EncodeOptions& options) const
{
    if (!window_)
        return std::nullopt;
    const DocumentImages images = documentImages();
    return encodeDocument(&images, type.toStdString(), error, options);
}

QByteArray MainWindowDoc::dataForSaveFormat(int tag) const
{
    const std::optional<std::string> type = UTIForTag(tag);
    if (!type)
        return {};
    const std::optional<std::vector<std::uint8_t>> data =
        dataOfType(QString::fromStdString(*type), nullptr);
    if (!data)
        return {};
    return QByteArray(reinterpret_cast<const char*>(data->data()),
                      static_cast<qsizetype>(data->size()));
}

bool MainWindowDoc::saveToPath(const QString& path, const QString& type,
                               const EncodeOptions& options)
{
    if (saving_ || !window_)
        return false;
    // The bitmaps are never changed once handed out, so the worker may read them while the
    // editor goes on making new ones.
    DocumentImages images = documentImages();
    std::vector<std::filesystem::path> protectedFiles;
    // The source image's file is never written over, unless it is the document's own file.
    if (!imageFileURL_.isEmpty() && imageFileURL_ != fileName_)
        protectedFiles.emplace_back(imageFileURL_.toStdString());
    saving_ = true;
    setBusy(true, tr("Saving \u201c%1\u201d\u2026").arg(QFileInfo(path).fileName()));
    const std::string target = path.toStdString();
    const std::string kind = type.toStdString();
    jobs_.start<std::optional<KVError>>(
        [images = std::move(images), protectedFiles = std::move(protectedFiles), target, kind,
         options]() -> std::optional<KVError> {
            KVError error;
            const std::optional<std::vector<std::uint8_t>> data =
                encodeDocument(&images, kind, &error, options);
            if (!data)
                return error;
            const IOStatus written = writeFileAtomically(target, *data, protectedFiles);
            if (!written) {
                return KVError{TintorraErrorDomain, kTintorraErrorCannotSave,
                               "The file could not be written.", written.error().message};
            }
            return std::nullopt;
        },
        [this, path, type, options](std::optional<KVError> error) {
            lastSaveOptions_ = options;
            finishSave(path, type, error);
        });
    return true;
}

void MainWindowDoc::finishSave(const QString& path, const QString& type,
                               const std::optional<KVError>& error)
{
    saving_ = false;
    setBusy(false, {});
    if (error) {
        closeWhenSaved_ = false;
        prompts_->showError(parentWidget(), *error);
        emit saveFinished(false);
        return;
    }
    changeDone_ = false;
    undoStack_.setClean();
    setFileName(QFileInfo(path).absoluteFilePath(), type);
    notifyModified();
    emit saveFinished(true);
    if (closeWhenSaved_) {
        closeWhenSaved_ = false;
        emit closeRequested();
    }
}

void MainWindowDoc::setBusy(bool busy, const QString& message)
{
    if (window_)
        window_->setBusy(busy, message);
    emit busyChanged(busy);
}

QWidget* MainWindowDoc::parentWidget() const
{
    return window_ ? window_->widget() : nullptr;
}

void MainWindowDoc::save()
{
    if (!validateAction(DocumentAction::save))
        return;
    if (fileName_.isEmpty() || !saveFormatForType(fileType_)) {
        saveAs();
        return;
    }
    saveToPath(fileName_, fileType_, lastSaveOptions_);
}

void MainWindowDoc::saveAs()
{
    if (!validateAction(DocumentAction::saveAs)) {
        closeWhenSaved_ = false;
        return;
    }
    const std::optional<SaveTarget> target =
        prompts_->askSaveTarget(parentWidget(), displayName(), fileType_);
    if (!target || !saveToPath(target->path, target->type, target->options))
        closeWhenSaved_ = false;
}

void MainWindowDoc::revertToSaved()
{
    if (!validateAction(DocumentAction::revert) ||
        !prompts_->askRevert(parentWidget(), displayName()))
        return;
    const QString path = fileName_;
    setBusy(true, tr("Opening \u201c%1\u201d\u2026").arg(QFileInfo(path).fileName()));
    const std::uint64_t generation = ++readGeneration_;
    jobs_.start<DocumentReadResult>([file = path.toStdString()] { return readDocumentFile(file); },
                                    [this, path, generation](DocumentReadResult result) {
                                        setBusy(false, {});
                                        if (generation != readGeneration_)
                                            return;
                                        KVError error;
                                        const bool read =
                                            takeReadResult(path, std::move(result), &error);
                                        if (read) {
                                            undoStack_.clear();
                                            changeDone_ = false;
                                            notifyModified();
                                        } else {
                                            prompts_->showError(parentWidget(), error);
                                        }
                                        emit readingFinished(read);
                                    });
}

void MainWindowDoc::copy()
{
    if (validateAction(DocumentAction::copy))
        window_->copyOutput(QGuiApplication::clipboard());
}

void MainWindowDoc::paste()
{
    dropViewTakeData(nullptr, QGuiApplication::clipboard()->mimeData());
}

bool MainWindowDoc::validateAction(DocumentAction action) const
{
    switch (action) {
    case DocumentAction::save:
    case DocumentAction::saveAs:
        return window_ && window_->sourceViewHasImage() && !saving_;
    case DocumentAction::revert:
        return !fileName_.isEmpty() && isModified() && !saving_;
    case DocumentAction::copy:
        return window_ && window_->canCopyOutput();
    case DocumentAction::paste:
        return const_cast<MainWindowDoc*>(this)->dropViewCanTakeData(
            nullptr, QGuiApplication::clipboard()->mimeData());
    }
    return false;
}

bool MainWindowDoc::shouldCloseWindow()
{
    if (saving_) {
        // The window closes once the file is written.
        closeWhenSaved_ = true;
        return false;
    }
    if (!isModified())
        return true;
    switch (prompts_->askSaveChanges(parentWidget(), displayName())) {
    case SaveChangesChoice::discard:
        return true;
    case SaveChangesChoice::cancel:
        return false;
    case SaveChangesChoice::save:
        closeWhenSaved_ = true;
        save();
        return false;
    }
    return false;
}

bool MainWindowDoc::dropViewCanTakeData(KVFileDropView*, const QMimeData* data)
{
    return !imageFileUrls(data).isEmpty() || hasImageObject(data);
}

void MainWindowDoc::runRGBImageAlert()
{
    prompts_->showError(parentWidget(), notRGBImageUseError());
}

void MainWindowDoc::dropViewTakeData(KVFileDropView*, const QMimeData* data)
{
    if (!data)
        return;
    const bool hasSource = !imageReps_.empty();
    const quint64 nativeId = nativeImageIdentity(data);
    if (nativeId == 0) {
        const QList<QUrl> urls = imageFileUrls(data);
        if (!urls.isEmpty()) {
            const QString path = urls.front().toLocalFile();
            if (hasSource) {
                switch (prompts_->askReplaceImage(parentWidget())) {
                case ReplaceImageChoice::cancel:
                    return;
                case ReplaceImageChoice::openInNewWindow:
                    emit openFileInNewWindowRequested(path);
                    return;
                case ReplaceImageChoice::replaceImage:
                    break;
                }
            }
            replaceWithFile(path);
            return;
        }
    }

    // The document's own result dropped or pasted back onto it becomes its source, masks kept,
    // without a question.
    const KVBitmapPtr output = window_ ? window_->outputImageRep() : nullptr;
    if (hasSource && output && nativeId == nativeImageIdentityOf(output)) {
        std::vector<KVBitmapPtr> reps = imageReps_;
        reps.front() = output;
        setImageReps(std::move(reps));
        return;
    }
    const KVBitmapPtr bitmap = bitmapFromImageObject(data);
    if (!bitmap)
        return;
    if (!bitmap->isRGB()) {
        runRGBImageAlert();
        return;
    }
    if (hasSource) {
        switch (prompts_->askReplaceImage(parentWidget())) {
        case ReplaceImageChoice::cancel:
            return;
        case ReplaceImageChoice::openInNewWindow:
            emit openImageInNewWindowRequested(bitmap);
            return;
        case ReplaceImageChoice::replaceImage:
            break;
        }
    }
    setImageReps({bitmap}, QString(), qstring(kTypeTIFF));
}

void MainWindowDoc::replaceWithFile(const QString& path)
{
    setBusy(true, tr("Opening \u201c%1\u201d\u2026").arg(QFileInfo(path).fileName()));
    const std::uint64_t generation = ++readGeneration_;
    struct Loaded {
        KVBitmapPtr bitmap;
        std::string type;
    };
    jobs_.start<Loaded>(
        [file = path.toStdString()]() -> Loaded {
            // A dropped file counts as one image: its first page, whatever else it holds.
            IOResult<std::vector<std::uint8_t>> bytes = readWholeFile(file);
            if (!bytes)
                return {};
            IOResult<KVBitmapPtr> bitmap = decodeImage(bytes.value());
            if (!bitmap)
                return {};
            return {bitmap.take(), typeOfImageData(bytes.value(), file)};
        },
        [this, path, generation](Loaded loaded) {
            setBusy(false, {});
            if (generation != readGeneration_)
                return;
            // A file that cannot be loaded is ignored.
            if (loaded.bitmap && !loaded.bitmap->isRGB())
                runRGBImageAlert();
            else if (loaded.bitmap)
                setImageReps({loaded.bitmap}, QFileInfo(path).absoluteFilePath(),
                             QString::fromStdString(loaded.type));
            emit readingFinished(loaded.bitmap && loaded.bitmap->isRGB());
        });
}

} // namespace tintorra
