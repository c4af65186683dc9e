#include "ui/KVNotificationCenter.h"
#include "ui/KVTenSegmentSlider.h"
#include "ui/KVTenSegmentSliderGeometry.h"

#include <QHBoxLayout>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>

using namespace tintorra;

namespace {

// The scale's ends lie 13 points in from the widget's ends; values grow rightwards or upwards.
constexpr double kEndInset = 13.0;

double scaleLength(QSize size)
{
    return std::max(size.width(), size.height()) - 2.0 * kEndInset;
}

// A step of `along` points along the slider's axis, in widget coordinates.
QPoint stepAlong(QSize size, int along)
{
    return size.height() > size.width() ? QPoint(0, -along) : QPoint(along, 0);
}

QPoint thumbPoint(const KVTenSegmentSlider& slider, std::size_t index)
{
    const KVTenSegmentSliderGeometry layout(QSizeF(slider.size()), 0.0, 1.0);
    return layout.thumbCenter(slider.model().thumb(index).doubleValue).toPoint();
}

} // namespace

class TenSegmentSliderTests : public QObject {
    Q_OBJECT

private slots:
    void dragMovesTheGrabbedThumb_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<int>("thumb");
        QTest::addColumn<int>("along");
        QTest::newRow("horizontal, middle thumb up") << QSize(250, 40) << 5 << 45;
        QTest::newRow("horizontal, last thumb down") << QSize(250, 40) << 10 << -60;
        QTest::newRow("vertical, low thumb down") << QSize(40, 250) << 2 << -20;
        QTest::newRow("vertical, first thumb up") << QSize(40, 250) << 0 << 30;
    }

    // The thumb under the press follows the pointer by the distance dragged, and the last values
    // pushed out are the model's.
    void dragMovesTheGrabbedThumb()
    {
        QFETCH(QSize, size);
        QFETCH(int, thumb);
        QFETCH(int, along);
        KVTenSegmentSlider slider;
        slider.resize(size);
        QSignalSpy pushed(&slider, &KVTenSegmentSlider::valuesChanged);
        QSignalSpy actions(&slider, &KVTenSegmentSlider::actionTriggered);
        const auto index = static_cast<std::size_t>(thumb);
        const double before = slider.model().thumb(index).doubleValue;

        const QPoint start = thumbPoint(slider, index);
        QTest::mousePress(&slider, Qt::LeftButton, {}, start);
        QTest::mouseMove(&slider, start + stepAlong(size, along / 2));
        QTest::mouseMove(&slider, start + stepAlong(size, along));
        QTest::mouseRelease(&slider, Qt::LeftButton, {}, start + stepAlong(size, along));

        const double expected = before + along / scaleLength(size);
        QCOMPARE(slider.model().thumb(index).doubleValue, expected);
        QVERIFY(slider.model().thumb(index).locked);
        QCOMPARE(pushed.size(), 2);
        QCOMPARE(actions.size(), 2);
        const auto last = pushed.last().first().value<KVValueDictionary>();
        QCOMPARE(last.at(tenSegmentThumbKey(index)), expected);
    }

    // Hovering over the slot reports the value under the pointer, later; over a thumb nothing is
    // reported; leaving the slider reports without user info.
    void hoverReportsTheValueAndTheLeave()
    {
        QWidget window;
        auto* const layout = new QHBoxLayout(&window);
        layout->setContentsMargins(20, 20, 20, 20);
        auto* const slider = new KVTenSegmentSlider;
        slider->setFixedSize(250, 40);
        layout->addWidget(slider);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QList<QVariantMap> heard;
        KVNotificationCenter::defaultCenter().addObserver(
            kMouseMovedOverTenSegmentSliderThumbSlotNotification, this,
            [&](const KVNotification& n) {
                if (n.object == slider)
                    heard << n.userInfo;
            });

        const QPoint overSlot(13 + 56, 12);
        QTest::mouseMove(slider, thumbPoint(*slider, 3));
        QTest::mouseMove(slider, overSlot);
        QTRY_COMPARE(heard.size(), 1);
        QCOMPARE(heard[0].value("value").toDouble(), 56.0 / scaleLength(slider->size()));

        QTest::mouseMove(&window, QPoint(5, 5));
        QTRY_COMPARE(heard.size(), 2);
        QVERIFY(heard[1].isEmpty());
    }

    // One press, drag and release is one undo group, around every change it makes; a press
    // beside the parts opens none.
    void pressDragReleaseIsOneUndoGroup()
    {
        KVTenSegmentSlider slider;
        slider.resize(250, 40);
        QStringList log;
        slider.setUndoGrouping({[&] { log << "begin"; }, [&] { log << "end"; }});
        connect(&slider, &KVTenSegmentSlider::valuesChanged, this, [&] { log << "values"; });

        QTest::mouseClick(&slider, Qt::LeftButton, {}, QPoint(2, 38));
        QVERIFY(log.isEmpty());

        const QPoint start = thumbPoint(slider, 7);
        QTest::mousePress(&slider, Qt::LeftButton, {}, start);
        for (int step = 1; step <= 4; ++step)
            QTest::mouseMove(&slider, start - QPoint(5 * step, 0));
        QTest::mouseRelease(&slider, Qt::LeftButton, {}, start - QPoint(20, 0));
        QCOMPARE(log, QStringList({"begin", "values", "values", "values", "values", "end"}));
    }

    // A double click on a thumb restores the identity curve and frees every thumb; the menu over
    // a locked thumb offers to unlock just that one.
    void doubleClickResetsAndTheMenuUnlocks()
    {
        KVTenSegmentSlider slider;
        slider.resize(250, 40);
        for (const std::size_t index : {3u, 6u}) {
            const QPoint start = thumbPoint(slider, index);
            QTest::mousePress(&slider, Qt::LeftButton, {}, start);
            QTest::mouseMove(&slider, start + QPoint(8, 0));
            QTest::mouseRelease(&slider, Qt::LeftButton, {}, start + QPoint(8, 0));
        }
        const std::unique_ptr<QMenu> menu = slider.createContextMenu(thumbPoint(slider, 3));
        QVERIFY(menu);
        QCOMPARE(menu->actions().size(), 3);
        menu->actions().first()->trigger();
        QVERIFY(!slider.model().thumb(3).locked);
        QVERIFY(slider.model().thumb(6).locked);

        // What a window system delivers for a double click: click, press, double click, release.
        const QPoint onThumb = thumbPoint(slider, 6);
        QTest::mouseClick(&slider, Qt::LeftButton, {}, onThumb);
        QTest::mousePress(&slider, Qt::LeftButton, {}, onThumb);
        QTest::mouseDClick(&slider, Qt::LeftButton, {}, onThumb);
        QTest::mouseRelease(&slider, Qt::LeftButton, {}, onThumb);
        QCOMPARE(slider.values(), KVTenSegmentSliderModel::defaultValues());
        for (std::size_t i = 0; i < kTenSegmentThumbCount; ++i)
            QVERIFY(!slider.model().thumb(i).locked);
    }
};

QTEST_MAIN(TenSegmentSliderTests)
#include "TenSegmentSliderTests.moc"
