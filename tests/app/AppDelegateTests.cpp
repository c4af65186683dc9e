#include "DocumentTestSupport.h"
#include "app/AppDelegate.h"
#include "app/DocumentController.h"
#include "app/KVWelcomeAssistant.h"
#include "app/MainWindowDoc.h"
#include "ui/KVSettings.h"

#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QTest>

using namespace tintorra;

namespace {

QStringList menuTexts(const QMenu* menu)
{
    QStringList texts;
    for (const QAction* item : menu->actions())
        if (!item->isSeparator())
            texts.append(item->text());
    return texts;
}

} // namespace

class AppDelegateTests : public QObject {
    Q_OBJECT

    QTemporaryDir folder_;
    test::RecordingPrompts prompts_;
    DocumentController documents_{
        [](MainWindowDoc& document) { return new test::TestDocumentWindow(document); }};
    AppDelegate delegate_{documents_};

    void closeEverything()
    {
        documents_.closeAll();
        delete KVWelcomeAssistant::existingAssistant();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

private slots:
    void initTestCase()
    {
        test::useTemporarySettings(folder_);
        AppDelegate::registerDefaults();
        documents_.setPrompts(&prompts_);
        prompts_.saveChangesAnswer = SaveChangesChoice::discard;
    }
    void cleanup() { closeEverything(); }

    void sampleImageIsTheIconInRGB()
    {
        MainWindowDoc* document = delegate_.openSampleImage();
        QVERIFY(document);
        QCOMPARE(documents_.documents().size(), 1);
        QCOMPARE(document->imageReps().size(), std::size_t{1});
        const KVBitmapPtr& source = document->imageReps().front();
        QCOMPARE(source->pixelsWide(), 1024);
        QCOMPARE(source->pixelsHigh(), 1024);
        QVERIFY(source->isRGB());
        QVERIFY(prompts_.errors.empty());
    }

    void launchOpensTheWelcomeTourOnlyWhenSet_data()
    {
        QTest::addColumn<bool>("showWelcome");
        QTest::newRow("shown") << true;
        QTest::newRow("turned off") << false;
    }
    void launchOpensTheWelcomeTourOnlyWhenSet()
    {
        QFETCH(bool, showWelcome);
        KVSettings::standard().setValue(kShowWelcomeWindowKey, showWelcome);
        delegate_.applicationDidFinishLaunching({});
        QCOMPARE(documents_.documents().size(), 1);
        QCOMPARE(documents_.documents().front()->imageReps().front()->pixelsWide(), 1024);
        QCOMPARE(KVWelcomeAssistant::existingAssistant() != nullptr, showWelcome);
        if (showWelcome)
            QCOMPARE(KVWelcomeAssistant::existingAssistant()->pdfName(),
                     QStringLiteral("Welcome to Tintorra"));
    }

    void documentWindowsGetTheApplicationMenus()
    {
        QMainWindow window;
        QMenu* file = window.menuBar()->addMenu(QStringLiteral("File"));
        file->setObjectName(QStringLiteral("fileMenu"));
        file->addAction(QStringLiteral("Open"));
        file->addSeparator();
        file->addAction(QStringLiteral("Close"));
        delegate_.addApplicationMenus(window);

        QCOMPARE(menuTexts(file),
                 QStringList({QStringLiteral("Open"), QStringLiteral("Open Sample Image"),
                              QStringLiteral("Close")}));
        auto* help = window.findChild<QMenu*>(QStringLiteral("helpMenu"));
        QVERIFY(help);
        QCOMPARE(menuTexts(help), QStringList({QStringLiteral("Welcome to Tintorra"),
                                               QStringLiteral("Tintorra Home Page"),
                                               QStringLiteral("About Tintorra")}));

        // The Window menu lists the document windows open when it is shown.
        delegate_.openSampleImage();
        documents_.windows().front()->setWindowTitle(QStringLiteral("Sample[*]"));
        auto* windowMenu = window.findChild<QMenu*>(QStringLiteral("windowMenu"));
        QVERIFY(windowMenu);
        emit windowMenu->aboutToShow();
        QCOMPARE(menuTexts(windowMenu),
                 QStringList({QStringLiteral("Minimize"), QStringLiteral("Sample")}));
        QCOMPARE(windowMenu->actions().front()->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_M));

        // Open Sample Image opens one more document.
        file->actions().at(1)->trigger();
        QCOMPARE(documents_.documents().size(), 2);
    }
};

QTEST_MAIN(AppDelegateTests)
#include "AppDelegateTests.moc"
