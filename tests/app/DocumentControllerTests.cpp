#include "DocumentTestSupport.h"
#include "app/DocumentController.h"
#include "app/MainWindowDoc.h"

#include <QSignalSpy>
#include <QTest>

using namespace tintorra;
using tintorra::test::RecordingPrompts;
using tintorra::test::TestDocumentWindow;

namespace {

DocumentController::WindowFactory testWindows()
{
    return [](MainWindowDoc& document) { return new TestDocumentWindow(document); };
}

} // namespace

class DocumentControllerTests : public QObject {
    Q_OBJECT

    QTemporaryDir folder_;
    QString photo_;

private slots:
    void initTestCase()
    {
        test::useTemporarySettings(folder_);
        photo_ = test::writeImage(folder_, QStringLiteral("photo.png"),
                                  *test::makeImage(12, 8, 8, false), ImageFormat::png);
    }

    // A file opens once: asking again brings its window back; the empty window the program
    // started with gives way to it.
    void opensAFileOnce()
    {
        DocumentController controller(testWindows());
        RecordingPrompts prompts;
        controller.setPrompts(&prompts);
        controller.clearRecentDocuments();
        controller.newDocument();
        QSignalSpy opened(&controller, &DocumentController::documentOpened);
        QCOMPARE(controller.openDocument(photo_), nullptr);
        QVERIFY(opened.wait());
        MainWindowDoc* document = controller.documentForPath(photo_);
        QVERIFY(document != nullptr);
        QTRY_COMPARE(controller.documents().size(), 1);
        QCOMPARE(controller.documents().front(), document);
        QCOMPARE(controller.openDocument(photo_), document);
        QCOMPARE(controller.windows().size(), 1);
        QCOMPARE(controller.windows().front()->windowTitle(),
                 QStringLiteral("photo (hue-shifted).tiff[*]"));
        QCOMPARE(controller.recentDocuments(), QStringList{photo_});
    }

    // Files that cannot be opened give an alert and no window: the RGB refusal, and a file
    // that holds no image.
    void refusesWhatItCannotOpen()
    {
        DocumentController controller(testWindows());
        RecordingPrompts prompts;
        controller.setPrompts(&prompts);
        QSignalSpy failed(&controller, &DocumentController::openFailed);
        controller.openDocument(test::fixturePath(QStringLiteral("cmyk.jpg")));
        QVERIFY(failed.wait());
        QCOMPARE(prompts.errors.size(), std::size_t{1});
        QCOMPARE(prompts.errors[0].localizedDescription,
                 std::string("The image file could not be opened. Tintorra only supports RGB "
                             "images at this time."));
        const QString text = folder_.filePath(QStringLiteral("notes.png"));
        QFile file(text);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("not an image");
        file.close();
        controller.openDocument(text);
        QVERIFY(failed.wait());
        QCOMPARE(prompts.errors.size(), std::size_t{2});
        QCOMPARE(prompts.errors[1].localizedDescription,
                 std::string("The document \u201cnotes.png\u201d could not be opened."));
        QVERIFY(controller.documents().isEmpty());
        QVERIFY(controller.openImageData(test::makeImage(4, 4, 8, false, false)) == nullptr);
        QCOMPARE(prompts.errors[2].code, 256);
    }

    // Untitled windows are numbered; a dropped image chosen to go to a new window gets one.
    void newWindowsAndImagesFromElsewhere()
    {
        DocumentController controller(testWindows());
        RecordingPrompts prompts;
        controller.setPrompts(&prompts);
        MainWindowDoc* first = controller.newDocument();
        MainWindowDoc* second = controller.newDocument();
        QCOMPARE(first->displayName(), QStringLiteral("Untitled"));
        QCOMPARE(second->displayName(), QStringLiteral("Untitled 2"));
        emit first->openImageInNewWindowRequested(test::makeImage(5, 5, 8, false));
        QCOMPARE(controller.documents().size(), 3);
        QCOMPARE(controller.documents().back()->imageReps().front()->pixelsWide(), 5);
    }

    // Quitting closes every window but stops at one whose unsaved work the user keeps.
    void closeAllAsksAboutUnsavedWork()
    {
        DocumentController controller(testWindows());
        RecordingPrompts prompts;
        controller.setPrompts(&prompts);
        controller.newDocument();
        MainWindowDoc* changed = controller.openImageData(test::makeImage(4, 4, 8, false));
        changed->updateChangeCountDone();
        prompts.saveChangesAnswer = SaveChangesChoice::cancel;
        QVERIFY(!controller.closeAll());
        QCOMPARE(prompts.saveChangesQuestions, 1);
        QTRY_COMPARE(controller.documents().size(), 1);
        prompts.saveChangesAnswer = SaveChangesChoice::discard;
        QVERIFY(controller.closeAll());
        QTRY_VERIFY(controller.documents().isEmpty());
    }

    // The recent list is newest first, without repeats, and no longer than its limit.
    void remembersRecentDocuments()
    {
        DocumentController controller(testWindows());
        controller.clearRecentDocuments();
        for (int i = 0; i < 12; ++i)
            controller.noteRecentDocument(QStringLiteral("/p/%1.png").arg(i));
        controller.noteRecentDocument(QStringLiteral("/p/5.png"));
        const QStringList recent = controller.recentDocuments();
        QCOMPARE(recent.size(), DocumentController::kMaximumRecentDocuments);
        QCOMPARE(recent.front(), QStringLiteral("/p/5.png"));
        QCOMPARE(recent.count(QStringLiteral("/p/5.png")), 1);
        QCOMPARE(recent.back(), QStringLiteral("/p/2.png"));
    }
};

QTEST_MAIN(DocumentControllerTests)
#include "DocumentControllerTests.moc"
