#include "app/KVImageExport.h"

#include "imageio/ImageTypes.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMimeData>
#include <QSaveFile>
#include <QUrl>
#include <cstdio>

namespace tintorra {

namespace {

// Tags outside the four formats read as TIFF, the default format.
int knownTag(int tag)
{
    return tag >= 0 && tag <= 3 ? tag : 0;
}

// Enough tries for any folder a person keeps; beyond it something else is wrong.
constexpr int kMaximumNameTries = 10000;

} // namespace

QString extensionForSaveFormat(int tag)
{
    const auto type = UTIForTag(knownTag(tag));
    const auto extension = type ? extensionForUTI(*type) : std::nullopt;
    return QString::fromStdString(extension.value_or("tiff"));
}

QString mimeTypeForSaveFormat(int tag)
{
    static const char* const types[] = {"image/tiff", "image/png", "image/jpeg", "image/jp2"};
    return QString::fromLatin1(types[knownTag(tag)]);
}

QString exportFileName(const QString& displayName, int tag)
{
    const QFileInfo info(displayName.isEmpty() ? QStringLiteral("Untitled") : displayName);
    const QString base = info.suffix().isEmpty() ? info.fileName() : info.completeBaseName();
    return base + QLatin1Char('.') + extensionForSaveFormat(tag);
}

QString uniqueFileName(const QString& folder, const QString& name)
{
    const QDir directory(folder);
    if (!directory.exists(name))
        return name;
    const QFileInfo info(name);
    const QString base = info.completeBaseName();
    const QString suffix = info.suffix().isEmpty() ? QString() : QLatin1Char('.') + info.suffix();
    for (int number = 2; number < kMaximumNameTries; ++number) {
        const QString candidate = QStringLiteral("%1 %2%3").arg(base).arg(number).arg(suffix);
        if (!directory.exists(candidate))
            return candidate;
    }
    return {};
}

QString writeExportFile(const QByteArray& bytes, const QString& displayName, int tag)
{
    const QString folder = QDir::temp().filePath(QStringLiteral("tintorra-exports"));
    QDir().mkpath(folder);
    const QString name = uniqueFileName(folder, exportFileName(displayName, tag));
    if (name.isEmpty()) {
        std::fprintf(stderr,
                     "Couldn't create unique file name for document named %s at destination %s\n",
                     qPrintable(displayName), qPrintable(folder));
        return {};
    }
    const QString path = QDir(folder).filePath(name);
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
        std::fprintf(stderr, "Couldn't create new file URL for file named %s at destination %s\n",
                     qPrintable(name), qPrintable(folder));
        return {};
    }
    return path;
}

bool fillExportMimeData(QMimeData* data, const QByteArray& nativeIdentity, const QByteArray& bytes,
                        const QString& displayName, int tag)
{
    if (!data || bytes.isEmpty())
        return false;
    data->setData(kNativeImageMimeType, nativeIdentity);
    data->setData(mimeTypeForSaveFormat(tag), bytes);
    const QString path = writeExportFile(bytes, displayName, tag);
    if (!path.isEmpty())
        data->setUrls({QUrl::fromLocalFile(path)});
    return true;
}

} // namespace tintorra
