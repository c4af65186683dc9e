#include "app/KVWelcomeAssistant.h"
#include "ui/KVSettings.h"

#include <QApplication>
#include <QLabel>
#include <QPainter>
#include <QPdfPageNavigator>
#include <QPdfView>
#include <QPdfWriter>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QWheelEvent>

using namespace tintorra;

namespace {

const QString kTour = QStringLiteral("Tour");
constexpr int kTourPages = 4;

void writeTour(const QString& path)
{
    QPdfWriter writer(path);
    writer.setPageSize(QPageSize(QSizeF(300, 200), QPageSize::Point));
    QPainter painter(&writer);
    for (int page = 1; page <= kTourPages; ++page) {
        if (page > 1) {
            writer.newPage();
        }
        painter.drawText(QPointF(100, 100), QString::number(page));
    }
}

KVSettings& settings()
{
    return KVSettings::standard();
}

void expectStep(const KVWelcomeAssistant* assistant, qint64 step)
{
    QCOMPARE(assistant->currentStep(), step);
    QCOMPARE(assistant->pdfView()->pageNavigator()->currentPage() + 1, step);
    QCOMPARE(assistant->stepLabel()->text(), QStringLiteral("%1 of %2").arg(step).arg(kTourPages));
    QCOMPARE(assistant->nextButton()->text(),
             step == kTourPages ? QStringLiteral("Close") : QStringLiteral("Next"));
    QCOMPARE(assistant->previousButton()->isEnabled(), step != 1);
    QCOMPARE(settings().intValue(kLastShownWelcomeStepKey), step);
}

} // namespace

class WelcomeAssistantTests : public QObject {
    Q_OBJECT

    QTemporaryDir folder_;

private slots:
    void initTestCase()
    {
        KVSettings::redirectStandard(folder_.filePath("settings.ini"));
        writeTour(folder_.filePath(kTour + ".pdf"));
        KVWelcomeAssistant::setDocumentFolder(folder_.path());
    }

    void init()
    {
        settings().remove(kShowWelcomeWindowKey);
        settings().remove(kLastShownWelcomeStepKey);
    }

    void cleanup() { delete KVWelcomeAssistant::existingAssistant(); }

    // Where the tour opens, from the stored step and whether it was finished before.
    void opensAtTheStoredStep_data()
    {
        QTest::addColumn<int>("stored");
        QTest::addColumn<bool>("showAtLaunch");
        QTest::addColumn<int>("expected");
        QTest::newRow("never shown") << 0 << true << 1;
        QTest::newRow("left halfway") << 2 << true << 2;
        QTest::newRow("below the first") << -3 << true << 1;
        QTest::newRow("beyond the last") << 99 << true << kTourPages;
        QTest::newRow("finished, opened by hand") << kTourPages << false << 1;
        QTest::newRow("beyond, finished") << 99 << false << 1;
        QTest::newRow("left halfway, not at launch") << 3 << false << 3;
    }
    void opensAtTheStoredStep()
    {
        QFETCH(int, stored);
        QFETCH(bool, showAtLaunch);
        QFETCH(int, expected);
        settings().setValue(kLastShownWelcomeStepKey, stored);
        settings().setValue(kShowWelcomeWindowKey, showAtLaunch);
        const KVWelcomeAssistant* assistant = KVWelcomeAssistant::sharedAssistant(kTour);
        QCOMPARE(assistant->windowTitle(), kTour);
        QVERIFY(assistant->isWindowVisible());
        expectStep(assistant, expected);
    }

    // Next walks to the last page, which stops the tour opening at launch for good; Next there
    // closes the window.
    void nextReachesTheEndAndCloses()
    {
        KVWelcomeAssistant* assistant = KVWelcomeAssistant::sharedAssistant(kTour);
        expectStep(assistant, 1);
        for (int step = 2; step <= kTourPages; ++step) {
            QVERIFY(settings().boolValue(kShowWelcomeWindowKey));
            QTest::mouseClick(assistant->nextButton(), Qt::LeftButton);
            expectStep(assistant, step);
        }
        QVERIFY(!settings().boolValue(kShowWelcomeWindowKey));
        QTest::mouseClick(assistant->previousButton(), Qt::LeftButton);
        expectStep(assistant, kTourPages - 1);
        QVERIFY(!settings().boolValue(kShowWelcomeWindowKey));
        QTest::mouseClick(assistant->nextButton(), Qt::LeftButton);
        QTest::mouseClick(assistant->nextButton(), Qt::LeftButton);
        QVERIFY(!assistant->isWindowVisible());
        QTRY_VERIFY(KVWelcomeAssistant::existingAssistant() == nullptr);
        QCOMPARE(settings().intValue(kLastShownWelcomeStepKey), kTourPages);
    }

    // A second request only brings the open tour forward, whatever it names.
    void onlyOneAssistant()
    {
        settings().setValue(kLastShownWelcomeStepKey, 2);
        KVWelcomeAssistant* first = KVWelcomeAssistant::sharedAssistant(kTour);
        first->showStep(3);
        KVWelcomeAssistant* second = KVWelcomeAssistant::sharedAssistant(QStringLiteral("Other"));
        QCOMPARE(second, first);
        QCOMPARE(second->windowTitle(), kTour);
        expectStep(second, 3);
    }

    // Pages turned inside the view, not through the buttons, still move the step.
    void pagingInsideTheViewUpdatesTheStep()
    {
        KVWelcomeAssistant* assistant = KVWelcomeAssistant::sharedAssistant(kTour);
        assistant->pdfView()->pageNavigator()->jump(2, QPointF(), 1.0);
        expectStep(assistant, 3);
        QWidget* viewport = assistant->pdfView()->viewport();
        const QPointF centre = QRectF(viewport->rect()).center();
        QWheelEvent down(centre, viewport->mapToGlobal(centre), QPoint(), QPoint(0, -120),
                         Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(viewport, &down);
        expectStep(assistant, 4);
        QTest::keyClick(assistant->pdfView(), Qt::Key_PageUp);
        expectStep(assistant, 3);
        assistant->pdfView()->setZoomFactor(2.5);
        QCOMPARE(assistant->pdfView()->zoomFactor(), 1.0);
    }

    void keysThatClose_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("modifiers");
        QTest::addColumn<bool>("closes");
        QTest::newRow("Ctrl+W") << int(Qt::Key_W) << int(Qt::ControlModifier) << true;
        QTest::newRow("Delete") << int(Qt::Key_Delete) << int(Qt::NoModifier) << true;
        QTest::newRow("Escape") << int(Qt::Key_Escape) << int(Qt::NoModifier) << true;
        QTest::newRow("Ctrl+Delete") << int(Qt::Key_Delete) << int(Qt::ControlModifier) << false;
        QTest::newRow("W") << int(Qt::Key_W) << int(Qt::NoModifier) << false;
    }
    void keysThatClose()
    {
        QFETCH(int, key);
        QFETCH(int, modifiers);
        QFETCH(bool, closes);
        KVWelcomeAssistant* assistant = KVWelcomeAssistant::sharedAssistant(kTour);
        QTest::keyClick(assistant->pdfView(), Qt::Key(key), Qt::KeyboardModifiers(modifiers));
        QCOMPARE(!assistant->isWindowVisible(), closes);
    }

    // Without its document the tour has one empty step and says nothing.
    void missingDocumentGivesOneStep()
    {
        const KVWelcomeAssistant* assistant =
            KVWelcomeAssistant::sharedAssistant(QStringLiteral("Nowhere"));
        QCOMPARE(assistant->lastStep(), 1);
        QCOMPARE(assistant->stepLabel()->text(), QStringLiteral("1 of 1"));
        QCOMPARE(assistant->nextButton()->text(), QStringLiteral("Close"));
    }

    // The program's own tour is built into it.
    void builtInTourIsEmbedded()
    {
        KVWelcomeAssistant::setDocumentFolder(QStringLiteral(":/welcome"));
        const KVWelcomeAssistant* assistant =
            KVWelcomeAssistant::sharedAssistant(QStringLiteral("Welcome to Tintorra"));
        KVWelcomeAssistant::setDocumentFolder(folder_.path());
        QVERIFY2(assistant->lastStep() >= 4, qPrintable(assistant->stepLabel()->text()));
    }
};

QTEST_MAIN(WelcomeAssistantTests)
#include "WelcomeAssistantTests.moc"
