#pragma once

#include "imageio/DocumentFile.h"

#include <QList>
#include <QString>
#include <QUrl>
#include <filesystem>
#include <optional>
#include <string>

class QImage;
class QMimeData;

namespace tintorra {

// What reading a document's file gave: the images, or why there are none.
struct DocumentReadResult {
    std::optional<DocumentImageReps> reps;
    // Set when the file holds an image the program refuses (not RGB).
    std::optional<KVError> error;
    // Why the file gave no image, when it gave none without an error of its own.
    std::string failureReason;
    // The file's type, told by its content (by its name when the content says nothing).
    std::string type;
};

// Reads and decodes a whole file. Safe on any thread: it touches nothing but the file.
DocumentReadResult readDocumentFile(const std::filesystem::path& path);

// The type of image data: by its content, else by the extension of `path`, else "public.image".
std::string typeOfImageData(std::span<const std::uint8_t> data, const std::filesystem::path& path);

// The local image files among the URLs of `data` (files, not folders, whose content is an image
// the program decodes).
QList<QUrl> imageFileUrls(const QMimeData* data);

// The identity of the output bitmap that the editor put on the clipboard, or 0.
quint64 nativeImageIdentity(const QMimeData* data);

// The identity under which the editor puts `bitmap` on the clipboard (its address).
quint64 nativeImageIdentityOf(const KVBitmapPtr& bitmap);

// True when `data` holds an image object (encoded image data or a QImage).
bool hasImageObject(const QMimeData* data);

// The first image object of `data`: encoded image data decoded by the program's own codecs
// (keeping depth and ICC profile), else the QImage the clipboard holds. Null when there is none.
KVBitmapPtr bitmapFromImageObject(const QMimeData* data);

// A bitmap of a QImage: RGB(A) for colour images, grey for grey ones (which the RGB test then
// refuses); its colour space carries the image's ICC profile.
KVBitmapPtr bitmapFromQImage(const QImage& image);

} // namespace tintorra
