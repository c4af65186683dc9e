#include "DocumentTestSupport.h"
#include "app/DocumentController.h"
#include "app/KVImageEditorView.h"
#include "app/KVModifierKeyMonitor.h"
#include "app/KVPopupFrame.h"
#include "app/KVProgressSpinner.h"
#include "app/MainWindowDoc.h"
#include "app/MainWindowWC.h"
#include "engine/Engine.h"
#include "imageio/ImageFile.h"
#include "ui/KVNotificationCenter.h"
#include "ui/KVSettings.h"
#include "ui/TintorraVC.h"

#include <QAbstractButton>
#include <QApplication>
#include <QButtonGroup>
#include <QKeyEvent>
#include <QSignalSpy>
#include <QSplitter>
#include <QTest>
#include <QToolButton>

using namespace tintorra;

namespace {

// Red on the left, blue on the right.
KVBitmapPtr twoColourImage()
{
    KVBitmapPtr image = KVBitmap::deviceRGBA8888Rep(64, 32, false);
    for (std::int64_t y = 0; y < 32; ++y) {
        std::uint8_t* row = image->bitmapData() + y * image->bytesPerRow();
        for (std::int64_t x = 0; x < 64; ++x) {
            const bool red = x < 32;
            const std::uint8_t pixel[4] = {std::uint8_t(red ? 210 : 30), 40,
                                           std::uint8_t(red ? 30 : 210), 255};
            std::copy(pixel, pixel + 4, row + x * 4);
        }
    }
    return image;
}

// The program's windows, with the questions answered by the test.
struct Program {
    Program()
        : controller([this](MainWindowDoc& document) {
              return new MainWindowWC(engine, document, controller);
          })
    {
        controller.setPrompts(&prompts);
    }

    // Opens a file and waits until its window shows the shifted image.
    MainWindowWC* open(const QString& path)
    {
        QSignalSpy opened(&controller, &DocumentController::documentOpened);
        controller.openDocument(path);
        if (!opened.wait(20000))
            return nullptr;
        auto* window = qobject_cast<MainWindowWC*>(controller.windows().back());
        if (window &&
            !QTest::qWaitFor([&] { return window->editorViewDst()->imageRep() != nullptr; }, 20000))
            return nullptr;
        return window;
    }

    Engine engine{{2}};
    test::RecordingPrompts prompts;
    DocumentController controller;
};

// Counts the key events that reach a widget.
struct EventCounter : QObject {
    int count = 0;
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease)
            ++count;
        return false;
    }
};

const QString kOwnType = QString::fromUtf8(TintorraTIFFType.data());

} // namespace

class MainWindowWCTests : public QObject {
    Q_OBJECT

    QTemporaryDir folder_;
    QString photo_;

private slots:
    void initTestCase()
    {
        test::useTemporarySettings(folder_);
        photo_ = test::writeImage(folder_, QStringLiteral("two.png"), *twoColourImage(),
                                  ImageFormat::png);
    }

    // An empty window invites a drop above and a drag below; its bars wait for an image.
    void emptyWindowShowsItsPrompts()
    {
        Program program;
        program.controller.newDocument();
        auto* window = qobject_cast<MainWindowWC*>(program.controller.windows().front());
        QVERIFY(window);
        QCOMPARE(window->editorViewSrc()->message(),
                 QStringLiteral("Drop the original image here"));
        QCOMPARE(window->editorViewDst()->message(), QStringLiteral("Drag out the shifted image"));
        QVERIFY(window->editorViewSrc()->acceptsDrop());
        QVERIFY(!window->editorViewDst()->acceptsDrop());
        QVERIFY(!window->spectrogramButton()->isEnabled());
        QVERIFY(!window->maskButtons()->button(0)->isEnabled());
        QCOMPARE(window->spectrogramButton()->toolTip(), QStringLiteral("Show/Hide Spectrogram"));
        QCOMPARE(window->swatchesButton()->toolTip(), QStringLiteral("Show/Hide Swatches"));
        const QStringList tips{
            "Hue Shifted Image",
            "Highlight Selected Pixels\n(bright = fully selected, dark = partially selected)",
            "Black Mask\n(white = selected, black = excluded)",
            "White Mask\n(black = selected, white = excluded)"};
        for (int i = 0; i < 4; ++i)
            QCOMPARE(window->maskButtons()->button(i)->toolTip(), tips[i]);
        QVERIFY(!window->action(QStringLiteral("save"))->isEnabled());
        window->toggleHistogram();
        QVERIFY(!window->spectrumPopup()->isVisible());
    }

    // A plain image file opens shifted, and the shifted result counts as unsaved work; saved in
    // each format, the file holds what the window shows.
    void shiftsAndSavesInEveryFormat()
    {
        Program program;
        MainWindowWC* window = program.open(photo_);
        QVERIFY(window);
        QVERIFY(window->document().isModified());
        QVERIFY(!window->progressIndicator()->isAnimating());
        QVERIFY(window->maskButtons()->button(0)->isEnabled());
        QCOMPARE(window->windowTitle(), QStringLiteral("two (hue-shifted).tiff[*]"));

        TintorraVC* vc = window->tintorraVC();
        QSignalSpy processed(vc, &TintorraVC::imageProcessed);
        vc->setTargetHue(0.55);
        QVERIFY(processed.wait(20000));
        const KVBitmapPtr shown = window->editorViewDst()->imageRep();
        QCOMPARE(shown, vc->destinationRep());
        QVERIFY(!test::samePixels(shown, vc->sourceRep(), 8));

        const QList<std::pair<QString, int>> formats{
            {"public.tiff", 0}, {"public.png", 0}, {"public.jpeg", 10}, {"public.jpeg-2000", 0}};
        for (const auto& [type, tolerance] : formats) {
            const QString path = folder_.filePath(QStringLiteral("shifted-%1").arg(tolerance) +
                                                  type.section(QLatin1Char('.'), 1));
            QSignalSpy saved(&window->document(), &MainWindowDoc::saveFinished);
            QVERIFY(window->document().saveToPath(path, type));
            QVERIFY(saved.wait());
            QVERIFY2(saved.at(0).at(0).toBool(), qPrintable(type));
            const IOResult<KVBitmapPtr> read = readImageFile(path.toStdString());
            QVERIFY(read.ok());
            QVERIFY2(test::samePixels(read.value(), shown, tolerance), qPrintable(type));
        }
    }

    // The program's own file reopens with its parameters, unmodified.
    void ownDocumentReopensUnmodified()
    {
        const QString path = folder_.filePath(QStringLiteral("own-window.tiff"));
        QString parameters;
        {
            Program program;
            MainWindowWC* window = program.open(photo_);
            QVERIFY(window);
            QSignalSpy processed(window->tintorraVC(), &TintorraVC::imageProcessed);
            window->tintorraVC()->setTargetHue(0.3);
            QVERIFY(processed.wait(20000));
            parameters = window->hexEncodedStringFromHueShiftParameters();
            QSignalSpy saved(&window->document(), &MainWindowDoc::saveFinished);
            QVERIFY(window->document().saveToPath(path, kOwnType));
            QVERIFY(saved.wait());
            QVERIFY(!window->document().isModified());
        }
        Program program;
        MainWindowWC* window = program.open(path);
        QVERIFY(window);
        QCOMPARE(window->hexEncodedStringFromHueShiftParameters(), parameters);
        QCOMPARE(window->document().undoStack()->count(), 0);
        QVERIFY(!window->document().isModified());
        QCOMPARE(window->windowTitle(), QStringLiteral("own-window.tiff[*]"));
    }

    // A click in the output picks the colour of the same pixel of the source.
    void clicksInTheOutputReadTheSource()
    {
        Program program;
        MainWindowWC* window = program.open(photo_);
        QVERIFY(window);
        TintorraVC* vc = window->tintorraVC();
        QSignalSpy processed(vc, &TintorraVC::imageProcessed);
        vc->setTargetHue(0.55);
        QVERIFY(processed.wait(20000));
        const KVBitmapPtr output = window->editorViewDst()->imageRep();
        const auto middle = [vc] { return vc->parameters().sourceHueRange().middle; };
        window->setSelectionHue(QPoint(4, 4), output);
        const double viaWindow = middle();
        vc->setSelectionHueSliderValue(QPoint(40, 4), vc->sourceRep());
        vc->setSelectionHueSliderValue(QPoint(4, 4), vc->sourceRep());
        QCOMPARE(middle(), viaWindow);
        vc->setSelectionHueSliderValue(QPoint(4, 4), output);
        QVERIFY(std::abs(middle() - viaWindow) > 0.01);
    }

    // The mask bar and the controller's maskToShow follow each other; the layout switch is kept.
    void barsAndLayoutFollowTheSettings()
    {
        Program program;
        MainWindowWC* window = program.open(photo_);
        QVERIFY(window);
        window->maskButtons()->button(2)->click();
        QCOMPARE(window->tintorraVC()->maskToShow(), 2);
        window->tintorraVC()->setMaskToShow(3);
        QVERIFY(window->maskButtons()->button(3)->isChecked());

        auto* split = window->editorViewSrc()->scrollWidget()->parentWidget()->parentWidget();
        QCOMPARE(qobject_cast<QSplitter*>(split)->orientation(), Qt::Vertical);
        window->toggleEditorLayout();
        QCOMPARE(qobject_cast<QSplitter*>(split)->orientation(), Qt::Horizontal);
        QVERIFY(KVSettings::standard().boolValue(kEditorLayoutHorizontalKey));
        window->toggleEditorLayout();

        window->toggleHistogram();
        QVERIFY(window->spectrumPopup()->isVisible());
        QCOMPARE(window->spectrumPopup()->content(), window->tintorraVC()->spectrumView());
        window->toggleSwatches();
        QVERIFY(!window->spectrumPopup()->isVisible());
        QVERIFY(window->swatchesPopup()->isVisible());
        window->toggleSwatches();
        QVERIFY(!window->swatchesPopup()->isVisible());
    }

    // While the window is active, the space bar posts once when pressed and once when released
    // (never for repeats) and goes no further; modifier keys post and pass on.
    void spaceBarAndModifiersAreBroadcast()
    {
        Program program;
        program.controller.newDocument();
        auto* window = qobject_cast<MainWindowWC*>(program.controller.windows().front());
        QVERIFY(QTest::qWaitForWindowActive(window));
        QVERIFY(window->modifierKeyMonitor()->isActive());
        QWidget* target = window->editorViewSrc();
        target->setFocus();
        QTRY_COMPARE(QApplication::focusWidget(), target);

        QList<QVariantMap> posted;
        KVNotificationCenter::defaultCenter().addObserver(kModifierKeysChangedNotification, this,
                                                          [&](const KVNotification& notification) {
                                                              if (notification.object == window)
                                                                  posted << notification.userInfo;
                                                          });
        EventCounter reached;
        target->installEventFilter(&reached);
        const auto send = [&](QEvent::Type type, int key, Qt::KeyboardModifiers modifiers,
                              bool repeat) {
            QKeyEvent event(type, key, modifiers, QString(), repeat);
            QApplication::sendEvent(target, &event);
        };
        send(QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier, false);
        send(QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier, true);
        send(QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier, true);
        send(QEvent::KeyRelease, Qt::Key_Space, Qt::NoModifier, false);
        QCOMPARE(posted.size(), 2);
        QCOMPARE(posted[0].value(QStringLiteral("spacebar")).toBool(), true);
        QCOMPARE(posted[1].value(QStringLiteral("spacebar")).toBool(), false);
        QCOMPARE(reached.count, 0);

        send(QEvent::KeyPress, Qt::Key_Shift, Qt::NoModifier, false);
        QCOMPARE(posted.size(), 3);
        QCOMPARE(posted[2].value(QStringLiteral("shiftKey")).toBool(), true);
        QCOMPARE(posted[2].value(QStringLiteral("commandKey")).toBool(), false);
        QCOMPARE(reached.count, 1);
        window->close();
    }
};

QTEST_MAIN(MainWindowWCTests)
#include "MainWindowWCTests.moc"
