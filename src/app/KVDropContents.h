#pragma once

#include <QImage>
#include <QList>
#include <QString>
#include <QStringList>
#include <QUrl>

class QMimeData;

namespace tintorra {

// What a drop view accepts: a list of MIME types of its own, or one of the four kinds below.
enum class KVDropRegistration : int {
    custom = 0,
    files = 1,
    folders = 2,
    filesAndFolders = 3,
    images = 4,
};

// Which local file URLs a drop counts.
enum class KVUrlReading {
    filesOnly,
    foldersOnly,
    filesAndFolders,
    imageFiles, // files whose content is an image
};

// The prompt for a registration, singular for a count of 1 and plural otherwise; empty for a
// custom registration, whose prompt stays whatever it was.
QString dropPrompt(KVDropRegistration registration, int acceptableCount);

// The local file URLs of the data that pass `reading`, in their order. Files dragged from other
// programs arrive as text/uri-list on this platform; what is not a local file is skipped.
QList<QUrl> readFileUrls(const QMimeData* data, KVUrlReading reading);

// The images offered as image data (not as files): Qt's own image type or an encoded image/*
// type that Qt can read.
QList<QImage> readImageData(const QMimeData* data);

// The number of items being dragged: the URLs when there are any, else one for image data.
int draggedItemCount(const QMimeData* data);

// Whether a drop with this registration has something to hand over: files or folders as the
// registration reads them, image files or else image data for images, or any of `customTypes`.
bool dataMatchesRegistration(const QMimeData* data, KVDropRegistration registration,
                             const QStringList& customTypes);

// The images of a drop for the images registration: loaded from the image files when there are
// any (files that do not load are skipped), else the image data.
QList<QImage> readDroppedImages(const QMimeData* data);

} // namespace tintorra
