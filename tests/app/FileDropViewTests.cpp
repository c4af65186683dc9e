#include "app/KVFileDropView.h"

#include <QDir>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QTemporaryDir>
#include <QTest>

using namespace tintorra;

namespace {

class RecordingDropDelegate : public KVFileDropDelegate {
public:
    bool answer = true;
    int asked = 0;
    int taken = 0;
    bool dropViewCanTakeData(KVFileDropView*, const QMimeData*) override
    {
        ++asked;
        return answer;
    }
    void dropViewTakeData(KVFileDropView*, const QMimeData*) override { ++taken; }
};

bool dragEnters(KVFileDropView& view, const QMimeData& data)
{
    QDragEnterEvent event(QPoint(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    event.ignore();
    QCoreApplication::sendEvent(&view, &event);
    return event.isAccepted();
}

} // namespace

class FileDropViewTests : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(folder_.isValid());
        QDir(folder_.path()).mkdir(QStringLiteral("folder"));
        QImage image(4, 3, QImage::Format_RGB32);
        image.fill(Qt::blue);
        QVERIFY(image.save(path("photo.png")));
        QFile text(path("notes.txt"));
        QVERIFY(text.open(QIODevice::WriteOnly));
        text.write("not an image");
    }

    // Each registration counts what it should of a drag holding a file, a folder and an image.
    void registrationsReadTheirKind_data()
    {
        QTest::addColumn<QString>("dropped");
        QTest::addColumn<int>("registration");
        QTest::addColumn<bool>("accepted");
        const auto row = [](const char* name, const char* dropped, KVDropRegistration r,
                            bool accepted) {
            QTest::newRow(name) << QString::fromLatin1(dropped) << static_cast<int>(r) << accepted;
        };
        row("files take a file", "notes.txt", KVDropRegistration::files, true);
        row("files refuse a folder", "folder", KVDropRegistration::files, false);
        row("folders take a folder", "folder", KVDropRegistration::folders, true);
        row("folders refuse a file", "photo.png", KVDropRegistration::folders, false);
        row("both take a folder", "folder", KVDropRegistration::filesAndFolders, true);
        row("images take an image file", "photo.png", KVDropRegistration::images, true);
        row("images refuse text", "notes.txt", KVDropRegistration::images, false);
        row("a missing file is nothing", "gone.png", KVDropRegistration::files, false);
    }
    void registrationsReadTheirKind()
    {
        QFETCH(QString, dropped);
        QFETCH(int, registration);
        QFETCH(bool, accepted);
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(path(dropped))});
        QCOMPARE(dataMatchesRegistration(&data, static_cast<KVDropRegistration>(registration), {}),
                 accepted);
    }

    // Image data offered directly (as a browser does) is an image drop too; files win when both
    // are there.
    void imagesComeFromFilesFirstThenData()
    {
        QMimeData data;
        QImage red(2, 2, QImage::Format_RGB32);
        red.fill(Qt::red);
        data.setImageData(red);
        QVERIFY(dataMatchesRegistration(&data, KVDropRegistration::images, {}));
        QList<QImage> images = readDroppedImages(&data);
        QCOMPARE(images.size(), 1);
        QCOMPARE(images.front().size(), QSize(2, 2));

        data.setUrls(
            {QUrl::fromLocalFile(path("photo.png")), QUrl::fromLocalFile(path("notes.txt"))});
        images = readDroppedImages(&data);
        QCOMPARE(images.size(), 1);
        QCOMPARE(images.front().size(), QSize(4, 3));

        QMimeData encoded;
        QByteArray png;
        QFile file(path("photo.png"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        encoded.setData(QStringLiteral("image/png"), file.readAll());
        QCOMPARE(readDroppedImages(&encoded).size(), 1);
    }

    // Too many items are refused before the delegate is asked; otherwise the delegate decides,
    // and a drop goes to it.
    void dragCountAndDelegate()
    {
        KVFileDropView view;
        view.registerForDraggedFiles();
        RecordingDropDelegate delegate;
        view.setDropDelegate(&delegate);
        QMimeData two;
        two.setUrls(
            {QUrl::fromLocalFile(path("photo.png")), QUrl::fromLocalFile(path("notes.txt"))});
        QVERIFY(!dragEnters(view, two));
        QCOMPARE(delegate.asked, 0);

        view.setAcceptableDragCount(2);
        QCOMPARE(view.message(), QStringLiteral("Drop files here"));
        QVERIFY(dragEnters(view, two));
        QVERIFY(view.dragInProgress());
        QDropEvent drop(QPointF(10, 10), Qt::CopyAction, &two, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&view, &drop);
        QCOMPARE(delegate.taken, 1);
        QVERIFY(!view.dragInProgress());

        delegate.answer = false;
        QVERIFY(!dragEnters(view, two));
        view.setAcceptsDrop(false);
        delegate.answer = true;
        QVERIFY(!dragEnters(view, two));
    }

    void promptsFollowRegistrationAndCount()
    {
        KVFileDropView view;
        view.registerForDraggedImages();
        QCOMPARE(view.message(), QStringLiteral("Drop an image here"));
        view.setAcceptableDragCount(5);
        QCOMPARE(view.message(), QStringLiteral("Drop images here"));
        view.registerForDraggedFilesAndFolders();
        QCOMPARE(view.message(), QStringLiteral("Drop files or folders here"));
        view.setAcceptableDragTypes({QStringLiteral("text/plain")});
        view.setAcceptableDragCount(1);
        QCOMPARE(view.message(), QStringLiteral("Drop files or folders here"));
    }

private:
    QString path(const QString& name) const { return QDir(folder_.path()).filePath(name); }
    QTemporaryDir folder_;
};

QTEST_MAIN(FileDropViewTests)
#include "FileDropViewTests.moc"
