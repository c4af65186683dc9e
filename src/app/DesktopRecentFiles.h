#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

namespace tintorra {

// The desktop's shared list of recently used files (the freedesktop.org bookmark file,
// recently-used.xbel, that file choosers and launchers read). Adding a file keeps every other
// entry and every other program's data as it was and replaces the list in one step, so that a
// reader never sees half a file and a failed write leaves the old list.
class DesktopRecentFiles {
public:
    // $XDG_DATA_HOME/recently-used.xbel (~/.local/share when unset).
    static QString defaultPath();

    explicit DesktopRecentFiles(QString xbelPath = defaultPath());

    // Records that this program used the file now: a new entry, or the existing one with its
    // times and our use count updated. The MIME type is looked up when empty. False, with
    // errorString() saying why, when the list cannot be read (a damaged list is left alone) or
    // written.
    bool addFile(const QString& filePath, const QString& mimeType = QString(),
                 const QDateTime& when = QDateTime::currentDateTimeUtc());

    // The local files on the list, most recently modified first.
    QStringList files() const;

    QString errorString() const { return error_; }

private:
    QString path_;
    QString error_;
};

} // namespace tintorra
