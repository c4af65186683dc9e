#include "app/DesktopRecentFiles.h"

#include <QDomDocument>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace tintorra;

namespace {

// Another program's entry, with an element of its own that must survive our writes.
const QByteArray kOtherProgramsList = R"(<?xml version="1.0" encoding="UTF-8"?>
<xbel version="1.0" xmlns:bookmark="http://www.freedesktop.org/standards/desktop-bookmarks"
      xmlns:mime="http://www.freedesktop.org/standards/shared-mime-info">
  <bookmark href="file:///home/u/letter.odt" added="2024-01-02T10:00:00Z"
            modified="2024-01-02T10:00:00Z" visited="2024-01-02T10:00:00Z">
    <info>
      <metadata owner="http://freedesktop.org">
        <mime:mime-type type="application/vnd.oasis.opendocument.text"/>
        <bookmark:groups><bookmark:group>Office</bookmark:group></bookmark:groups>
        <bookmark:applications>
          <bookmark:application name="Writer" exec="'writer %u'" modified="2024-01-02T10:00:00Z" count="3"/>
        </bookmark:applications>
      </metadata>
    </info>
  </bookmark>
</xbel>
)";

QDomDocument read(const QString& path)
{
    QFile file(path);
    QDomDocument document;
    if (file.open(QIODevice::ReadOnly)) {
        document.setContent(&file, true);
    }
    return document;
}

const QString kBookmarks = QStringLiteral("http://www.freedesktop.org/standards/desktop-bookmarks");

// Our application's element in the entry for `href`, or a null element.
QDomElement ourApplication(QDomDocument& document, const QString& href)
{
    const QDomNodeList bookmarks = document.elementsByTagName(QStringLiteral("bookmark"));
    for (int i = 0; i < bookmarks.count(); ++i) {
        const QDomElement bookmark = bookmarks.at(i).toElement();
        if (bookmark.attribute(QStringLiteral("href")) != href) {
            continue;
        }
        const QDomNodeList apps =
            bookmark.elementsByTagNameNS(kBookmarks, QStringLiteral("application"));
        for (int j = 0; j < apps.count(); ++j) {
            if (apps.at(j).toElement().attribute(QStringLiteral("name")) == "Tintorra") {
                return apps.at(j).toElement();
            }
        }
    }
    return {};
}

} // namespace

class DesktopRecentFilesTests : public QObject {
    Q_OBJECT

private slots:
    // A first use makes a list only the user can read, with the file's URL escaped.
    void firstUseCreatesTheList()
    {
        QTemporaryDir home;
        const QString list = home.filePath("share/recently-used.xbel");
        DesktopRecentFiles recent(list);
        const QString photo = home.filePath("my photo #1.tintorra.tiff");
        QVERIFY2(recent.addFile(photo, "application/x-tintorra-document",
                                QDateTime(QDate(2025, 3, 4), QTime(5, 6, 7), Qt::UTC)),
                 qPrintable(recent.errorString()));
        QCOMPARE(recent.files(), QStringList{photo});
        const QFileDevice::Permissions others =
            QFileDevice::ReadGroup | QFileDevice::ReadOther | QFileDevice::WriteOther;
        QVERIFY((QFile::permissions(list) & others) == 0);
        QDomDocument document = read(list);
        const QString href = QUrl::fromLocalFile(photo).toEncoded();
        QVERIFY(href.contains("%20") && href.contains("%23"));
        const QDomElement app = ourApplication(document, href);
        QCOMPARE(app.attribute("count"), QStringLiteral("1"));
        QCOMPARE(app.attribute("modified"), QStringLiteral("2025-03-04T05:06:07.000Z"));
        QCOMPARE(document
                     .elementsByTagNameNS("http://www.freedesktop.org/standards/shared-mime-info",
                                          "mime-type")
                     .at(0)
                     .toElement()
                     .attribute("type"),
                 QStringLiteral("application/x-tintorra-document"));
    }

    // Using files again counts up one entry per file, newest first, and another program's
    // entry keeps all it had; a file another program used gets our use beside its own.
    void othersEntriesSurviveAndUsesCount()
    {
        QTemporaryDir home;
        const QString list = home.filePath("recently-used.xbel");
        QFile file(list);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(kOtherProgramsList);
        file.close();
        DesktopRecentFiles recent(list);
        const QDateTime t0(QDate(2025, 1, 1), QTime(0, 0), Qt::UTC);
        QVERIFY(recent.addFile("/pictures/a.png", "image/png", t0));
        QVERIFY(recent.addFile("/pictures/b.jpg", "image/jpeg", t0.addSecs(60)));
        QVERIFY(recent.addFile("/pictures/a.png", "image/png", t0.addSecs(120)));
        QVERIFY(recent.addFile("/home/u/letter.odt", "application/x-other", t0.addSecs(180)));
        QCOMPARE(recent.files(),
                 (QStringList{"/home/u/letter.odt", "/pictures/a.png", "/pictures/b.jpg"}));
        QDomDocument document = read(list);
        QCOMPARE(document.elementsByTagName("bookmark").count(), 3);
        QCOMPARE(ourApplication(document, "file:///pictures/a.png").attribute("count"), "2");
        QCOMPARE(ourApplication(document, "file:///home/u/letter.odt").attribute("count"), "1");
        const QDomNodeList apps = document.elementsByTagNameNS(kBookmarks, "application");
        bool writerKept = false;
        for (int i = 0; i < apps.count(); ++i) {
            const QDomElement app = apps.at(i).toElement();
            writerKept |= app.attribute("name") == "Writer" && app.attribute("count") == "3";
        }
        QVERIFY(writerKept);
        QCOMPARE(document.elementsByTagNameNS(kBookmarks, "group").at(0).toElement().text(),
                 QStringLiteral("Office"));
    }

    // A list that cannot be read is not replaced by ours.
    void damagedListIsLeftAlone()
    {
        QTemporaryDir home;
        const QString list = home.filePath("recently-used.xbel");
        QFile file(list);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("<xbel><bookmark href=");
        file.close();
        DesktopRecentFiles recent(list);
        QVERIFY(!recent.addFile("/pictures/a.png", "image/png"));
        QVERIFY(!recent.errorString().isEmpty());
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), QByteArray("<xbel><bookmark href="));
    }
};

QTEST_MAIN(DesktopRecentFilesTests)
#include "DesktopRecentFilesTests.moc"
