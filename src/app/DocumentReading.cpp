#include "app/DocumentReading.h"

#include "imageio/DecodedBitmap.h"
#include "imageio/ImageFile.h"
#include "imageio/ImageTypes.h"

#include <QColorSpace>
#include <QFileInfo>
#include <QImage>
#include <QMimeData>
#include <algorithm>
#include <cstring>
#include <fstream>

namespace tintorra {

namespace {

std::span<const std::uint8_t> bytesOf(const QByteArray& bytes)
{
    return {reinterpret_cast<const std::uint8_t*>(bytes.constData()),
            static_cast<std::size_t>(bytes.size())};
}

// The first bytes of a file, enough for every codec's signature.
std::vector<std::uint8_t> fileHead(const QString& path)
{
    std::vector<std::uint8_t> head(64);
    std::ifstream file(std::filesystem::path(path.toStdString()), std::ios::binary);
    file.read(reinterpret_cast<char*>(head.data()), static_cast<std::streamsize>(head.size()));
    head.resize(static_cast<std::size_t>(std::max<std::streamsize>(file.gcount(), 0)));
    return head;
}

} // namespace

std::string typeOfImageData(std::span<const std::uint8_t> data, const std::filesystem::path& path)
{
    if (const ImageCodec* codec = codecForData(data))
        return std::string(typeForFormat(codec->format()));
    if (std::optional<std::string> type = typeForExtension(path.extension().string()))
        return *type;
    return std::string(kTypeImage);
}

DocumentReadResult readDocumentFile(const std::filesystem::path& path)
{
    DocumentReadResult result;
    IOResult<std::vector<std::uint8_t>> bytes = readWholeFile(path);
    if (!bytes) {
        result.failureReason = bytes.error().message;
        return result;
    }
    result.type = typeOfImageData(bytes.value(), path);
    KVError error;
    // Reading logs its own failure; the reason is asked for again only to show it.
    result.reps = readFromData(bytes.value(), result.type, &error);
    if (!result.reps) {
        if (!error.domain.empty())
            result.error = error;
        else
            result.failureReason = imageRepsWithData(bytes.value(), result.type).failureReason;
    }
    return result;
}

QList<QUrl> imageFileUrls(const QMimeData* data)
{
    QList<QUrl> urls;
    if (!data || !data->hasUrls())
        return urls;
    for (const QUrl& url : data->urls()) {
        if (!url.isLocalFile())
            continue;
        const QFileInfo info(url.toLocalFile());
        if (info.isFile() && codecForData(fileHead(info.filePath())) != nullptr)
            urls << url;
    }
    return urls;
}

quint64 nativeImageIdentity(const QMimeData* data)
{
    const QString mime =
        QString::fromUtf8(TintorraNativeImageMimeType.data(),
                          static_cast<qsizetype>(TintorraNativeImageMimeType.size()));
    if (!data || !data->hasFormat(mime))
        return 0;
    const QByteArray bytes = data->data(mime);
    if (bytes.size() < static_cast<qsizetype>(sizeof(quint64)))
        return 0;
    quint64 identity = 0;
    std::memcpy(&identity, bytes.constData(), sizeof identity);
    return identity;
}

quint64 nativeImageIdentityOf(const KVBitmapPtr& bitmap)
{
    return static_cast<quint64>(reinterpret_cast<quintptr>(bitmap.get()));
}

namespace {

// Encoded images among the formats of `data`, in the order offered.
QStringList encodedImageFormats(const QMimeData* data)
{
    QStringList formats;
    for (const QString& format : data->formats()) {
        if (format.startsWith(QLatin1String("image/")))
            formats << format;
    }
    return formats;
}

} // namespace

bool hasImageObject(const QMimeData* data)
{
    if (!data)
        return false;
    if (data->hasImage())
        return true;
    for (const QString& format : encodedImageFormats(data)) {
        if (codecForData(bytesOf(data->data(format))) != nullptr)
            return true;
    }
    return false;
}

KVBitmapPtr bitmapFromImageObject(const QMimeData* data)
{
    if (!data)
        return nullptr;
    for (const QString& format : encodedImageFormats(data)) {
        const QByteArray bytes = data->data(format);
        if (codecForData(bytesOf(bytes)) == nullptr)
            continue;
        IOResult<KVBitmapPtr> bitmap = decodeImage(bytesOf(bytes));
        if (bitmap)
            return bitmap.take();
    }
    if (data->hasImage())
        return bitmapFromQImage(qvariant_cast<QImage>(data->imageData()));
    return nullptr;
}

KVBitmapPtr bitmapFromQImage(const QImage& image)
{
    if (image.isNull())
        return nullptr;
    std::vector<std::uint8_t> icc;
    if (image.colorSpace().isValid()) {
        const QByteArray profile = image.colorSpace().iccProfile();
        icc.assign(profile.begin(), profile.end());
    }
    if (image.isGrayscale() && !image.hasAlphaChannel()) {
        const QImage grey = image.convertToFormat(QImage::Format_Grayscale8);
        KVBitmapPtr bitmap = KVBitmap::deviceWhite8Rep(grey.width(), grey.height());
        if (!bitmap)
            return nullptr;
        for (int y = 0; y < grey.height(); ++y)
            std::memcpy(bitmap->bitmapData() + y * bitmap->bytesPerRow(), grey.constScanLine(y),
                        static_cast<std::size_t>(grey.width()));
        return bitmap;
    }
    const QImage rgba = image.convertToFormat(QImage::Format_RGBA8888);
    KVBitmapPtr bitmap = KVBitmap::deviceRGBA8888Rep(rgba.width(), rgba.height(), false);
    if (!bitmap)
        return nullptr;
    for (int y = 0; y < rgba.height(); ++y)
        std::memcpy(bitmap->bitmapData() + y * bitmap->bytesPerRow(), rgba.constScanLine(y),
                    static_cast<std::size_t>(rgba.width()) * 4);
    if (!icc.empty())
        bitmap->setColorSpace(colorSpaceForDecodedImage(KVColorSpaceModel::rgb, std::move(icc)));
    return bitmap;
}

} // namespace tintorra
