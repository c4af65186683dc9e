#include "app/DesktopRecentFiles.h"

#include <QDir>
#include <QDomDocument>
#include <QFile>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QSaveFile>
#include <QUrl>
#include <algorithm>
#include <utility>

namespace tintorra {

namespace {

// Names as they appear in the file; the document is read without namespace processing, so
// that every prefix and every other program's element is written back exactly as it was.
const QString kApplicationName = QStringLiteral("Tintorra");
const QString kApplicationExec = QStringLiteral("'tintorra %u'");
const QString kEmptyList = QStringLiteral(
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<xbel version=\"1.0\"\n"
    "      xmlns:bookmark=\"http://www.freedesktop.org/standards/desktop-bookmarks\"\n"
    "      xmlns:mime=\"http://www.freedesktop.org/standards/shared-mime-info\"\n"
    "></xbel>\n");

QString timestamp(const QDateTime& when)
{
    return when.toUTC().toString(Qt::ISODateWithMs);
}

QDomElement child(QDomElement parent, const QString& name)
{
    QDomElement element = parent.firstChildElement(name);
    if (element.isNull()) {
        element = parent.ownerDocument().createElement(name);
        parent.appendChild(element);
    }
    return element;
}

QDomElement findBookmark(const QDomElement& root, const QString& href)
{
    for (QDomElement bookmark = root.firstChildElement(QStringLiteral("bookmark"));
         !bookmark.isNull(); bookmark = bookmark.nextSiblingElement(QStringLiteral("bookmark"))) {
        if (bookmark.attribute(QStringLiteral("href")) == href) {
            return bookmark;
        }
    }
    return {};
}

// The freedesktop metadata block of a bookmark, made when missing.
QDomElement freedesktopMetadata(QDomElement bookmark)
{
    QDomElement info = child(bookmark, QStringLiteral("info"));
    for (QDomElement metadata = info.firstChildElement(QStringLiteral("metadata"));
         !metadata.isNull(); metadata = metadata.nextSiblingElement(QStringLiteral("metadata"))) {
        if (metadata.attribute(QStringLiteral("owner")) ==
            QStringLiteral("http://freedesktop.org")) {
            return metadata;
        }
    }
    QDomElement metadata = bookmark.ownerDocument().createElement(QStringLiteral("metadata"));
    metadata.setAttribute(QStringLiteral("owner"), QStringLiteral("http://freedesktop.org"));
    info.appendChild(metadata);
    return metadata;
}

void recordUse(QDomElement metadata, const QString& mimeType, const QString& stamp)
{
    QDomElement mime = child(metadata, QStringLiteral("mime:mime-type"));
    mime.setAttribute(QStringLiteral("type"), mimeType);
    QDomElement applications = child(metadata, QStringLiteral("bookmark:applications"));
    QDomElement ours;
    for (QDomElement app = applications.firstChildElement(QStringLiteral("bookmark:application"));
         !app.isNull(); app = app.nextSiblingElement(QStringLiteral("bookmark:application"))) {
        if (app.attribute(QStringLiteral("name")) == kApplicationName) {
            ours = app;
        }
    }
    if (ours.isNull()) {
        ours = metadata.ownerDocument().createElement(QStringLiteral("bookmark:application"));
        ours.setAttribute(QStringLiteral("name"), kApplicationName);
        applications.appendChild(ours);
    }
    ours.setAttribute(QStringLiteral("exec"), kApplicationExec);
    ours.setAttribute(QStringLiteral("modified"), stamp);
    ours.setAttribute(QStringLiteral("count"),
                      ours.attribute(QStringLiteral("count"), QStringLiteral("0")).toInt() + 1);
}

} // namespace

QString DesktopRecentFiles::defaultPath()
{
    QString dataHome = qEnvironmentVariable("XDG_DATA_HOME");
    if (dataHome.isEmpty() || QDir::isRelativePath(dataHome)) {
        dataHome = QDir::homePath() + QStringLiteral("/.local/share");
    }
    return dataHome + QStringLiteral("/recently-used.xbel");
}

DesktopRecentFiles::DesktopRecentFiles(QString xbelPath) : path_(std::move(xbelPath)) {}

bool DesktopRecentFiles::addFile(const QString& filePath, const QString& mimeType,
                                 const QDateTime& when)
{
    error_.clear();
    QDomDocument document;
    QFile existing(path_);
    const bool isNew = !existing.exists();
    if (!isNew) {
        if (!existing.open(QIODevice::ReadOnly)) {
            error_ = existing.errorString();
            return false;
        }
        const auto parsed = document.setContent(&existing, false, &error_);
        if (!parsed || document.documentElement().tagName() != QStringLiteral("xbel")) {
            error_ = QStringLiteral("%1 is not a bookmark file: %2").arg(path_, error_);
            return false;
        }
    } else {
        document.setContent(kEmptyList, false);
    }

    const QString absolute = QFileInfo(filePath).absoluteFilePath();
    const QString href = QString::fromUtf8(QUrl::fromLocalFile(absolute).toEncoded());
    const QString stamp = timestamp(when);
    QDomElement root = document.documentElement();
    QDomElement bookmark = findBookmark(root, href);
    if (bookmark.isNull()) {
        bookmark = document.createElement(QStringLiteral("bookmark"));
        bookmark.setAttribute(QStringLiteral("href"), href);
        bookmark.setAttribute(QStringLiteral("added"), stamp);
        root.appendChild(bookmark);
    }
    bookmark.setAttribute(QStringLiteral("modified"), stamp);
    bookmark.setAttribute(QStringLiteral("visited"), stamp);
    const QString type =
        mimeType.isEmpty() ? QMimeDatabase().mimeTypeForFile(absolute).name() : mimeType;
    recordUse(freedesktopMetadata(bookmark), type, stamp);

    QDir().mkpath(QFileInfo(path_).absolutePath());
    QSaveFile out(path_);
    if (!out.open(QIODevice::WriteOnly)) {
        error_ = out.errorString();
        return false;
    }
    out.write(document.toByteArray(2));
    if (!out.commit()) {
        error_ = out.errorString();
        return false;
    }
    // The list says what the user opened: for the user's eyes only, as other programs make it.
    if (isNew) {
        QFile::setPermissions(path_, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    }
    return true;
}

QStringList DesktopRecentFiles::files() const
{
    QFile file(path_);
    QDomDocument document;
    if (!file.open(QIODevice::ReadOnly) || !document.setContent(&file, false)) {
        return {};
    }
    QList<std::pair<QString, QString>> entries; // modified, path
    const QDomElement root = document.documentElement();
    for (QDomElement bookmark = root.firstChildElement(QStringLiteral("bookmark"));
         !bookmark.isNull(); bookmark = bookmark.nextSiblingElement(QStringLiteral("bookmark"))) {
        const QUrl url = QUrl::fromEncoded(bookmark.attribute(QStringLiteral("href")).toUtf8());
        if (url.isLocalFile()) {
            entries.append({bookmark.attribute(QStringLiteral("modified")), url.toLocalFile()});
        }
    }
    // ISO 8601 times in UTC sort as text.
    std::stable_sort(entries.begin(), entries.end(),
                     [](const auto& a, const auto& b) { return a.first > b.first; });
    QStringList paths;
    for (const auto& entry : entries) {
        paths.append(entry.second);
    }
    return paths;
}

} // namespace tintorra
