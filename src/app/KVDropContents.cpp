#include "app/KVDropContents.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QImageReader>
#include <QMimeData>
#include <QMimeDatabase>

namespace tintorra {

namespace {

bool isImageFile(const QString& path)
{
    static const QMimeDatabase database;
    return database.mimeTypeForFile(path, QMimeDatabase::MatchContent)
        .name()
        .startsWith(QLatin1String("image/"));
}

bool passes(const QFileInfo& info, KVUrlReading reading)
{
    if (!info.exists())
        return false;
    switch (reading) {
    case KVUrlReading::filesOnly:
        return info.isFile();
    case KVUrlReading::foldersOnly:
        return info.isDir();
    case KVUrlReading::filesAndFolders:
        return info.isFile() || info.isDir();
    case KVUrlReading::imageFiles:
        return info.isFile() && isImageFile(info.filePath());
    }
    return false;
}

QString tr(const char* text)
{
    return QCoreApplication::translate("KVFileDropView", text);
}

} // namespace

QString dropPrompt(KVDropRegistration registration, int acceptableCount)
{
    const bool one = acceptableCount == 1;
    switch (registration) {
    case KVDropRegistration::files:
        return one ? tr("Drop a file here") : tr("Drop files here");
    case KVDropRegistration::folders:
        return one ? tr("Drop a folder here") : tr("Drop folders here");
    case KVDropRegistration::filesAndFolders:
        return one ? tr("Drop a file or folder here") : tr("Drop files or folders here");
    case KVDropRegistration::images:
        return one ? tr("Drop an image here") : tr("Drop images here");
    case KVDropRegistration::custom:
        break;
    }
    return {};
}

QList<QUrl> readFileUrls(const QMimeData* data, KVUrlReading reading)
{
    QList<QUrl> urls;
    if (!data || !data->hasUrls())
        return urls;
    for (const QUrl& url : data->urls()) {
        if (url.isLocalFile() && passes(QFileInfo(url.toLocalFile()), reading))
            urls.append(url);
    }
    return urls;
}

QList<QImage> readImageData(const QMimeData* data)
{
    QList<QImage> images;
    if (!data)
        return images;
    if (data->hasImage()) {
        const QImage image = qvariant_cast<QImage>(data->imageData());
        if (!image.isNull())
            images.append(image);
        return images;
    }
    const QList<QByteArray> readable = QImageReader::supportedMimeTypes();
    for (const QString& format : data->formats()) {
        if (!format.startsWith(QLatin1String("image/")) || !readable.contains(format.toLatin1()))
            continue;
        QImage image;
        if (image.loadFromData(data->data(format))) {
            images.append(image);
            break;
        }
    }
    return images;
}

int draggedItemCount(const QMimeData* data)
{
    if (!data)
        return 0;
    if (data->hasUrls())
        return static_cast<int>(data->urls().size());
    return data->formats().isEmpty() ? 0 : 1;
}

bool dataMatchesRegistration(const QMimeData* data, KVDropRegistration registration,
                             const QStringList& customTypes)
{
    if (!data)
        return false;
    switch (registration) {
    case KVDropRegistration::files:
        return !readFileUrls(data, KVUrlReading::filesOnly).isEmpty();
    case KVDropRegistration::folders:
        return !readFileUrls(data, KVUrlReading::foldersOnly).isEmpty();
    case KVDropRegistration::filesAndFolders:
        return !readFileUrls(data, KVUrlReading::filesAndFolders).isEmpty();
    case KVDropRegistration::images:
        if (!readFileUrls(data, KVUrlReading::imageFiles).isEmpty())
            return true;
        if (data->hasImage())
            return true;
        for (const QString& format : data->formats()) {
            if (format.startsWith(QLatin1String("image/")) &&
                QImageReader::supportedMimeTypes().contains(format.toLatin1()))
                return true;
        }
        return false;
    case KVDropRegistration::custom:
        for (const QString& type : customTypes) {
            if (data->hasFormat(type))
                return true;
        }
        return false;
    }
    return false;
}

QList<QImage> readDroppedImages(const QMimeData* data)
{
    const QList<QUrl> files = readFileUrls(data, KVUrlReading::imageFiles);
    if (files.isEmpty())
        return readImageData(data);
    QList<QImage> images;
    for (const QUrl& url : files) {
        QImage image(url.toLocalFile());
        if (!image.isNull())
            images.append(image);
    }
    return images;
}

} // namespace tintorra
