#include "app/KVEditorToolRules.h"
#include "app/KVImagePointRule.h"
#include "app/KVZoomSteps.h"

#include <QTest>

using namespace tintorra;

namespace {

KVModifierKeys keys(const char* held)
{
    KVModifierKeys k;
    const QByteArray names(held);
    k.spacebar = names.contains("space");
    k.shift = names.contains("shift");
    k.control = names.contains("control");
    k.option = names.contains("option");
    k.command = names.contains("command");
    return k;
}

} // namespace

class ImageEditorRulesTests : public QObject {
    Q_OBJECT

private slots:
    void zoomSteps_data()
    {
        QTest::addColumn<double>("factor");
        QTest::addColumn<double>("in");
        QTest::addColumn<double>("out");
        QTest::newRow("one") << 1.0 << 1.5 << 2.0 / 3.0;
        QTest::newRow("near one counts as one") << 1.05 << 1.5 << 2.0 / 3.0;
        QTest::newRow("bottom clamps") << 0.02 << 0.03 << 0.02;
        QTest::newRow("below the table") << 0.001 << 0.02 << 0.02;
        QTest::newRow("top clamps") << 64.0 << 64.0 << 32.0;
        QTest::newRow("above the table") << 100.0 << 64.0 << 64.0;
        QTest::newRow("a fit between steps") << 0.2 << 0.25 << 1.0 / 6.0;
        QTest::newRow("a third") << 1.0 / 3.0 << 0.5 << 0.25;
    }
    void zoomSteps()
    {
        QFETCH(double, factor);
        QFETCH(double, in);
        QFETCH(double, out);
        QCOMPARE(nextZoomStep(factor, 1), in);
        QCOMPARE(nextZoomStep(factor, -1), out);
    }

    // Walking the table up and down visits all 24 steps in order.
    void stepsWalkTheWholeTable()
    {
        double factor = kZoomSteps.front();
        for (std::size_t k = 1; k < kZoomSteps.size(); ++k) {
            factor = nextZoomStep(factor, 1);
            QCOMPARE(factor, kZoomSteps[k]);
        }
        for (std::size_t k = kZoomSteps.size() - 1; k-- > 0;) {
            factor = nextZoomStep(factor, -1);
            QCOMPARE(factor, kZoomSteps[k]);
        }
    }

    // The anchor is at the same distance from the visible origin on screen before and after.
    void anchoredZoomKeepsTheAnchorInPlace()
    {
        const QPointF anchor(300, 200);
        const QPointF origin(100, 50);
        const QPointF after = anchoredZoomOrigin(anchor, origin, 1.0, 2.0);
        QCOMPARE(after, QPointF(200, 125));
        QCOMPARE((anchor - after) * 2.0, (anchor - origin) * 1.0);
        QCOMPARE(dragZoomFactor(1.0, 75.0), 2.0);
        QCOMPARE(dragZoomFactor(1.0, -150.0), 0.25);
        QCOMPARE(dragZoomFactor(1.0, 10000.0), 64.0);
    }

    void pixelPoints_data()
    {
        QTest::addColumn<QPointF>("point");
        QTest::addColumn<QPoint>("pixel");
        // A 100 x 50 point image of 200 x 100 pixels.
        QTest::newRow("left edge") << QPointF(0, 25) << QPoint(0, 50);
        QTest::newRow("inside") << QPointF(10.3, 10.3) << QPoint(20, 20);
        QTest::newRow("bottom edge is one past the last row") << QPointF(5, 50) << QPoint(10, 100);
        QTest::newRow("just above the bottom edge") << QPointF(5, 49.9) << QPoint(10, 99);
        QTest::newRow("top edge is outside") << QPointF(5, 0) << QPoint(-1, -1);
        QTest::newRow("right edge is outside") << QPointF(100, 10) << QPoint(-1, -1);
        QTest::newRow("left of the image") << QPointF(-0.1, 10) << QPoint(-1, -1);
        QTest::newRow("below the image") << QPointF(5, 50.1) << QPoint(-1, -1);
    }
    void pixelPoints()
    {
        QFETCH(QPointF, point);
        QFETCH(QPoint, pixel);
        QCOMPARE(pixelPointForImagePoint(point, QSizeF(100, 50), QSize(200, 100)), pixel);
    }

    void cursors_data()
    {
        QTest::addColumn<int>("tool");
        QTest::addColumn<QString>("held");
        QTest::addColumn<bool>("mouseDown");
        QTest::addColumn<int>("kind");
        using K = KVEditorCursorKind;
        const auto row = [](const char* name, int tool, const char* held, bool down, K kind) {
            QTest::newRow(name) << tool << QString::fromLatin1(held) << down
                                << static_cast<int>(kind);
        };
        row("space: open hand", 1, "space", false, K::openHand);
        row("space pressed: closed hand", 4, "space", true, K::closedHand);
        row("space command: zoom in", 0, "space command", false, K::zoomIn);
        row("space command option: zoom out", 5, "space command option", false, K::zoomOut);
        row("space shift falls to the tool", 1, "space shift", false, K::picker);
        row("space option with tool 1", 1, "space option", false, K::pickerMinus);
        row("tool 1", 1, "", false, K::picker);
        row("tool 1 shift", 1, "shift", false, K::pickerPlus);
        row("tool 1 option", 1, "option", false, K::pickerMinus);
        row("tool 1 shift option", 1, "shift option", false, K::picker);
        row("tool 2", 2, "", false, K::pickerPlus);
        row("tool 2 option", 2, "option", false, K::pickerMinus);
        row("tool 2 space option", 2, "space option", false, K::pickerPlus);
        row("tool 3", 3, "", false, K::pickerMinus);
        row("tool 3 shift", 3, "shift", false, K::pickerPlus);
        row("tool 4 with anything", 4, "shift option command", false, K::picker);
        row("brush", 5, "", false, K::brush);
        row("brush shift", 5, "shift", false, K::brush);
        row("brush option", 5, "option", false, K::brush);
        row("brush command", 5, "command", false, K::arrow);
        row("no tool", 0, "shift", false, K::arrow);
    }
    void cursors()
    {
        QFETCH(int, tool);
        QFETCH(QString, held);
        QFETCH(bool, mouseDown);
        QFETCH(int, kind);
        QCOMPARE(static_cast<int>(editorCursorKind(tool, keys(qPrintable(held)), mouseDown)), kind);
    }

    void clicks_data()
    {
        QTest::addColumn<int>("tool");
        QTest::addColumn<QString>("held");
        QTest::addColumn<int>("action");
        using A = KVEditorClickAction;
        const auto row = [](const char* name, int tool, const char* held, A action) {
            QTest::newRow(name) << tool << QString::fromLatin1(held) << static_cast<int>(action);
        };
        row("tool 1 replaces", 1, "", A::setSelectionHue);
        row("tool 1 shift adds", 1, "shift", A::addSelectionHue);
        row("tool 1 option subtracts", 1, "option", A::subtractSelectionHue);
        row("tool 1 shift and option replace", 1, "shift option", A::setSelectionHue);
        row("tool 2 adds", 2, "", A::addSelectionHue);
        row("tool 2 option subtracts", 2, "option", A::subtractSelectionHue);
        row("tool 3 subtracts", 3, "", A::subtractSelectionHue);
        row("tool 3 shift adds", 3, "shift", A::addSelectionHue);
        row("tool 4 targets", 4, "option", A::setTargetHue);
        row("brush has no click", 5, "", A::none);
        row("space command zooms in", 2, "space command", A::zoomIn);
        row("space command option zooms out", 0, "space command option", A::zoomOut);
        row("other space clicks do nothing", 1, "space shift", A::none);
        row("no tool, command option control", 0, "command option control", A::debugPixel);
        row("no tool with shift too", 0, "command option control shift", A::none);
        row("no tool", 0, "", A::none);
    }
    void clicks()
    {
        QFETCH(int, tool);
        QFETCH(QString, held);
        QFETCH(int, action);
        QCOMPARE(static_cast<int>(editorClickAction(tool, keys(qPrintable(held)))), action);
    }

    void drags_data()
    {
        QTest::addColumn<int>("tool");
        QTest::addColumn<QString>("held");
        QTest::addColumn<int>("action");
        using A = KVEditorDragAction;
        const auto row = [](const char* name, int tool, const char* held, A action) {
            QTest::newRow(name) << tool << QString::fromLatin1(held) << static_cast<int>(action);
        };
        row("space command zooms", 1, "space command", A::zoom);
        row("space command option zooms", 1, "space command option", A::zoom);
        row("space pans", 5, "space", A::pan);
        row("picking repeats", 3, "shift", A::repeatClick);
        row("brush paints", 5, "shift", A::brush);
        row("brush with command does not", 5, "command", A::none);
        row("no tool drags out", 0, "", A::dragOut);
        row("no tool with a key", 0, "shift", A::none);
    }
    void drags()
    {
        QFETCH(int, tool);
        QFETCH(QString, held);
        QFETCH(int, action);
        QCOMPARE(static_cast<int>(editorDragAction(tool, keys(qPrintable(held)))), action);
    }
};

QTEST_GUILESS_MAIN(ImageEditorRulesTests)
#include "ImageEditorRulesTests.moc"
