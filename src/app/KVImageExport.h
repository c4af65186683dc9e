#pragma once

#include <QByteArray>
#include <QString>

class QMimeData;

namespace tintorra {

// The MIME type under which the program recognises its own image on the clipboard: eight bytes
// naming the bitmap, so that a paste into the same program needs no decoding.
inline const QString kNativeImageMimeType = QStringLiteral("application/x-tintorra-native-image");

// The save formats by their tag: 0 TIFF, 1 PNG, 2 JPEG, 3 JPEG 2000 (others read as TIFF).
QString extensionForSaveFormat(int tag);
QString mimeTypeForSaveFormat(int tag);

// `displayName` with its extension (if any) replaced by the format's.
QString exportFileName(const QString& displayName, int tag);

// `name` if nothing in `folder` has it, else "base 2.ext", "base 3.ext", ...; empty when no
// free name is found.
QString uniqueFileName(const QString& folder, const QString& name);

// Writes `bytes` under a unique name in the program's folder for exported files (inside the
// temporary folder) and returns the file's path; empty, after saying why on standard error,
// when it cannot.
QString writeExportFile(const QByteArray& bytes, const QString& displayName, int tag);

// Fills `data` for a copy or a drag: the native identity, the encoded bytes under the format's
// MIME type, and the written file as a URL, so that file managers get a file and image programs
// the data. Returns false when there are no bytes.
bool fillExportMimeData(QMimeData* data, const QByteArray& nativeIdentity, const QByteArray& bytes,
                        const QString& displayName, int tag);

} // namespace tintorra
