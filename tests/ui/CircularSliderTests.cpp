#include "colour/ColorConversions.h"
#include "colour/KVColorGamut.h"
#include "ui/KVCircularSlider.h"
#include "ui/KVCircularSliderGeometry.h"
#include "ui/KVNotificationCenter.h"

#include <QLineEdit>
#include <QLocale>
#include <QMenu>
#include <QTest>
#include <cmath>
#include <memory>

using namespace tintorra;

namespace {

constexpr double kDegree = 1.0 / 360.0;

// A range written in degrees, in the record's order.
KVSliderValues degrees(double upperFalloff, double upper, double middle, double lower,
                       double lowerFalloff)
{
    return {upperFalloff * kDegree, upper * kDegree, middle * kDegree, lower * kDegree,
            lowerFalloff * kDegree};
}

bool near(const KVSliderValues& a, const KVSliderValues& b, double tolerance)
{
    return std::abs(a.upperFalloff - b.upperFalloff) <= tolerance &&
           std::abs(a.upper - b.upper) <= tolerance && std::abs(a.middle - b.middle) <= tolerance &&
           std::abs(a.lower - b.lower) <= tolerance &&
           std::abs(a.lowerFalloff - b.lowerFalloff) <= tolerance;
}

QByteArray describe(const KVSliderValues& v)
{
    return QString::asprintf("{%.4f %.4f %.4f %.4f %.4f}", v.upperFalloff, v.upper, v.middle,
                             v.lower, v.lowerFalloff)
        .toUtf8();
}

std::unique_ptr<KVCircularSlider> shownSlider(QSize size)
{
    auto slider = std::make_unique<KVCircularSlider>(size);
    slider->show();
    if (!QTest::qWaitForWindowExposed(slider.get())) {
        return nullptr;
    }
    return slider;
}

// Where the thumb of a value is drawn: on the ring at its angle, on a straight slider at its
// place along the slot.
QPoint pointFor(const KVCircularSlider& slider, double value)
{
    return KVCircularSliderGeometry(slider.size(), slider.model()).pointForValue(value).toPoint();
}

} // namespace

class CircularSliderTests : public QObject {
    Q_OBJECT

private slots:
    void theFormFollowsTheAspect_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<bool>("circular");
        QTest::newRow("square") << QSize(200, 200) << true;
        QTest::newRow("1.2 wide") << QSize(120, 100) << true;
        QTest::newRow("wider") << QSize(121, 100) << false;
        QTest::newRow("taller") << QSize(100, 121) << false;
        QTest::newRow("slot") << QSize(200, 26) << false;
    }

    // A new slider takes its form from its frame, a resized one again from its new size, keeping
    // a range that was set; only rings have the degree field.
    void theFormFollowsTheAspect()
    {
        QFETCH(QSize, size);
        QFETCH(bool, circular);
        QCOMPARE(KVCircularSlider(size).model().isCircular(), circular);

        const auto slider = shownSlider(QSize(120, 120));
        QVERIFY(slider);
        slider->setMiddleValue(0.3);
        slider->resize(size);
        QCOMPARE(slider->model().isCircular(), circular);
        QCOMPARE(slider->valueField()->isHidden(), !circular);
        QCOMPARE(slider->middleValue(), 0.3);
    }

    void aPressOnTheSlotBringsTheMiddle_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<KVSliderValues>("start");
        QTest::addColumn<double>("pressed");
        QTest::newRow("ring") << QSize(200, 200) << degrees(20, 10, 0, -10, -20) << 100 * kDegree;
        QTest::newRow("ring past 180°")
            << QSize(120, 120) << degrees(20, 10, 0, -10, -20) << 300 * kDegree;
        QTest::newRow("straight") << QSize(200, 26) << KVSliderValues{0.6, 0.55, 0.5, 0.45, 0.4}
                                  << 0.25;
        QTest::newRow("vertical") << QSize(26, 200) << KVSliderValues{0.6, 0.55, 0.5, 0.45, 0.4}
                                  << 0.8;
    }

    void aPressOnTheSlotBringsTheMiddle()
    {
        QFETCH(QSize, size);
        QFETCH(KVSliderValues, start);
        QFETCH(double, pressed);
        const auto slider = shownSlider(size);
        QVERIFY(slider);
        slider->setValues(start);
        const double span = start.upper - start.lower;

        QTest::mousePress(slider.get(), Qt::LeftButton, {}, pointFor(*slider, pressed));
        // Within the pixel that the pointer fell on.
        QVERIFY(std::abs(slider->middleValue() - pressed) < 0.003);
        QTest::mouseRelease(slider.get(), Qt::LeftButton, {}, pointFor(*slider, pressed));
        const KVSliderValues values = slider->values();
        QVERIFY(std::abs(values.upper - values.lower - span) < 1e-9);
    }

    void aDragAcrossZeroWraps_data()
    {
        QTest::addColumn<double>("from");
        QTest::addColumn<double>("step");
        QTest::newRow("backwards") << 20.0 << -10.0;
        QTest::newRow("forwards") << 340.0 << 10.0;
    }

    // Four steps of 10° from 20° end at 340°, and the other way round: the middle is wrapped
    // into [0, 1) while the bounds stay relative to it.
    void aDragAcrossZeroWraps()
    {
        QFETCH(double, from);
        QFETCH(double, step);
        const auto slider = shownSlider(QSize(200, 200));
        QVERIFY(slider);
        slider->setMiddleValue(from * kDegree);

        QTest::mousePress(slider.get(), Qt::LeftButton, {}, pointFor(*slider, from * kDegree));
        double angle = from;
        for (int i = 0; i < 4; ++i) {
            angle += step;
            QTest::mouseMove(slider.get(), pointFor(*slider, angle * kDegree));
        }
        QTest::mouseRelease(slider.get(), Qt::LeftButton, {}, pointFor(*slider, angle * kDegree));

        const double end = std::fmod(angle + 360.0, 360.0);
        const KVSliderValues values = slider->values();
        QVERIFY2(near(values, degrees(end + 20, end + 10, end, end - 10, end - 20), 0.6 * kDegree),
                 describe(values));
    }

    void aDoubleClickResets_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<KVSliderValues>("start");
        QTest::addColumn<int>("part");
        QTest::addColumn<KVSliderValues>("expected");
        QTest::newRow("ring middle: 20° spread, middle kept")
            << QSize(200, 200) << degrees(160, 130, 100, 70, 40) << int(kCircularPartMiddle)
            << degrees(120, 110, 100, 90, 80);
        QTest::newRow("ring upper: its fall-off 10° out")
            << QSize(200, 200) << degrees(120, 120, 100, 80, 60) << int(kCircularPartUpper)
            << degrees(130, 120, 100, 80, 60);
        QTest::newRow("ring lower: its fall-off 10° out")
            << QSize(200, 200) << degrees(140, 120, 100, 80, 75) << int(kCircularPartLower)
            << degrees(140, 120, 100, 80, 70);
        QTest::newRow("straight middle: the whole scale")
            << QSize(200, 26) << KVSliderValues{0.6, 0.55, 0.3, 0.05, 0.0}
            << int(kCircularPartMiddle) << KVSliderValues{1.0, 1.0, 0.5, 0.0, 0.0};
    }

    void aDoubleClickResets()
    {
        QFETCH(QSize, size);
        QFETCH(KVSliderValues, start);
        QFETCH(int, part);
        QFETCH(KVSliderValues, expected);
        const auto slider = shownSlider(size);
        QVERIFY(slider);
        slider->setValues(start);
        const QPoint thumb = pointFor(*slider, thumbValue(start, part));

        // As the platform delivers it: press, release, double click, release.
        QTest::mouseClick(slider.get(), Qt::LeftButton, {}, thumb);
        QTest::mouseDClick(slider.get(), Qt::LeftButton, {}, thumb);
        QTest::mouseRelease(slider.get(), Qt::LeftButton, {}, thumb);
        QVERIFY2(near(slider->values(), expected, 1e-9), describe(slider->values()));
    }

    void theValueFieldNudges_data()
    {
        QTest::addColumn<double>("start");
        QTest::addColumn<int>("key");
        QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
        QTest::addColumn<double>("expected");
        QTest::newRow("up") << 100.0 << int(Qt::Key_Up) << Qt::KeyboardModifiers() << 101.0;
        QTest::newRow("shift up") << 100.0 << int(Qt::Key_Up)
                                  << Qt::KeyboardModifiers(Qt::ShiftModifier) << 110.0;
        QTest::newRow("down") << 100.0 << int(Qt::Key_Down) << Qt::KeyboardModifiers() << 99.0;
        QTest::newRow("shift down past 0")
            << 5.0 << int(Qt::Key_Down) << Qt::KeyboardModifiers(Qt::ShiftModifier) << 355.0;
        QTest::newRow("up past 360") << 359.5 << int(Qt::Key_Up) << Qt::KeyboardModifiers() << 0.5;
    }

    void theValueFieldNudges()
    {
        QFETCH(double, start);
        QFETCH(int, key);
        QFETCH(Qt::KeyboardModifiers, modifiers);
        QFETCH(double, expected);
        KVCircularSlider slider(QSize(200, 200));
        slider.setMiddleValue(start * kDegree);
        int actions = 0;
        connect(&slider, &KVCircularSlider::triggered, this, [&] { ++actions; });

        QTest::keyClick(slider.valueField(), Qt::Key(key), modifiers);
        // The field hands the value over in single precision.
        QVERIFY(std::abs(slider.middleValue() - expected * kDegree) < 1e-6);
        QCOMPARE(actions, 1);
        QCOMPARE(slider.valueField()->text(), QLocale().toString(expected, 'f', 1) + "°");
    }

    void typedDegreesSetTheMiddle()
    {
        const auto slider = shownSlider(QSize(200, 200));
        QVERIFY(slider);
        QLineEdit* field = slider->valueField();
        field->setFocus();
        field->selectAll();
        QTest::keyClicks(field, "45");
        QTest::keyClick(field, Qt::Key_Return);
        QCOMPARE(slider->middleValue(), 45.0 * kDegree);
        QCOMPARE(field->text(), QLocale().toString(45.0, 'f', 1) + "°");
    }

    // Moving over the slot tells listeners the value under the pointer, measured along the
    // width even on a ring; leaving tells them nothing more.
    void hoveringTheSlotIsPosted()
    {
        const auto slider = shownSlider(QSize(200, 200));
        QVERIFY(slider);
        QList<KVNotification> heard;
        QObject listener;
        KVNotificationCenter::defaultCenter().addObserver(
            kMouseMovedOverCircularSliderThumbSlotNotification, &listener,
            [&](const KVNotification& n) { heard << n; });

        const QPoint onSlot = pointFor(*slider, 200 * kDegree);
        QTest::mouseMove(slider.get(), onSlot);
        QTRY_COMPARE(heard.size(), 1);
        QCOMPARE(heard[0].object.data(), slider.get());
        QCOMPARE(heard[0].userInfo.keys(), QStringList{"value"});
        QCOMPARE(heard[0].userInfo["value"].toDouble(), (onSlot.x() - 13.0) / (200.0 - 26.0));

        QEvent leave(QEvent::Leave);
        QCoreApplication::sendEvent(slider.get(), &leave);
        QTRY_COMPARE(heard.size(), 2);
        QVERIFY(heard[1].userInfo.isEmpty());
    }

    void oneUndoGroupPerPress_data()
    {
        QTest::addColumn<double>("pressed");
        QTest::addColumn<QStringList>("expected");
        const QStringList group{"begin", "change", "end"};
        QTest::newRow("drag the middle") << 0.0 << group;
        QTest::newRow("press the slot") << 0.5 << group;
        QTest::newRow("press the hole") << -1.0 << QStringList{};
    }

    // Every change made in answer to one press, drag and release lies inside one group, the jump
    // of a press on the slot included.
    void oneUndoGroupPerPress()
    {
        QFETCH(double, pressed);
        QFETCH(QStringList, expected);
        const auto slider = shownSlider(QSize(200, 200));
        QVERIFY(slider);
        QStringList calls;
        slider->setUndoGrouping({[&] { calls << "begin"; }, [&] { calls << "end"; }});
        connect(slider.get(), &KVCircularSlider::valuesChanged, this, [&] {
            if (calls.isEmpty() || calls.last() != "change") {
                calls << "change";
            }
        });

        const QPoint press = pressed < 0.0 ? slider->rect().center() : pointFor(*slider, pressed);
        QTest::mousePress(slider.get(), Qt::LeftButton, {}, press);
        QTest::mouseMove(slider.get(), pointFor(*slider, 0.7));
        QTest::mouseMove(slider.get(), pointFor(*slider, 0.8));
        QTest::mouseRelease(slider.get(), Qt::LeftButton, {}, pointFor(*slider, 0.8));
        QCOMPARE(calls, expected);
    }

    void theContextMenuNamesItsReset_data()
    {
        QTest::addColumn<int>("part");
        QTest::addColumn<QString>("item");
        QTest::newRow("none") << int(kCircularPartNone) << QString();
        QTest::newRow("lower") << int(kCircularPartLower) << "Reset Lower Falloff";
        QTest::newRow("upper") << int(kCircularPartUpper) << "Reset Upper Falloff";
        QTest::newRow("middle") << int(kCircularPartMiddle) << "Reset Slider";
        QTest::newRow("slot") << int(kCircularPartSlot) << "Reset Slider";
    }

    // One item with no shortcut; choosing it is one undoable step.
    void theContextMenuNamesItsReset()
    {
        QFETCH(int, part);
        QFETCH(QString, item);
        KVCircularSlider slider(QSize(200, 200));
        QStringList calls;
        slider.setUndoGrouping({[&] { calls << "begin"; }, [&] { calls << "end"; }});
        const std::unique_ptr<QMenu> menu = slider.createContextMenu(part);
        QCOMPARE(menu == nullptr, item.isEmpty());
        if (!menu) {
            return;
        }
        QCOMPARE(menu->title(), "Contextual Menu");
        QCOMPARE(menu->actions().size(), 1);
        QCOMPARE(menu->actions()[0]->text(), item);
        QVERIFY(menu->actions()[0]->shortcut().isEmpty());
        menu->actions()[0]->trigger();
        QCOMPARE(calls, (QStringList{"begin", "end"}));
    }

    void theRingShowsTheHuesOfItsModel_data()
    {
        QTest::addColumn<ColorSpaceModel>("model");
        QTest::addColumn<qreal>("dpr");
        QTest::newRow("LCh over Luv") << ColorSpaceModel::LChuv << qreal(1.0);
        QTest::newRow("LCh over Lab, dpr 2") << ColorSpaceModel::LChab << qreal(2.0);
        QTest::newRow("HSB, dpr 2") << ColorSpaceModel::HSB << qreal(2.0);
    }

    // Colours read off the rendered ring, against the colour the gamut (or the HSB cylinder)
    // gives for the hue at that angle; the background is built once for all repaints.
    void theRingShowsTheHuesOfItsModel()
    {
        QFETCH(ColorSpaceModel, model);
        QFETCH(qreal, dpr);
        const auto gamut = std::make_shared<const KVColorGamut>(sRGBChromaticities(), model);
        KVCircularSlider slider(QSize(200, 200));
        slider.setColorSpaceModel(model);
        slider.setColorGamut(gamut);
        // Only the middle thumb, at 180°: nothing veils the ring.
        slider.model().setShowsUpperLowerThumbs(false);
        slider.setMiddleValue(0.5);
        QImage image(QSize(200, 200) * dpr, QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(dpr);
        slider.render(&image);
        slider.setMiddleValue(0.55);
        slider.render(&image);
        QCOMPARE(slider.backgroundBuildCount(), 1);

        Matrix3 MI{};
        gamut->copy_XYZ_to_RGB_matrix(MI);
        const KVCircularSliderGeometry geometry(slider.size(), slider.model());
        for (const double hue : {10.0, 45.0, 100.0, 150.0, 250.0, 300.0, 350.0}) {
            const QPointF point = geometry.pointForValue(hue * kDegree) * dpr;
            const QColor drawn = image.pixelColor(int(point.x()), int(point.y()));
            const double radians = hue * kDegree * 2.0 * std::numbers::pi;
            ColorComponents truth = hsbToRgb({hue * kDegree, 1.0, 1.0, 1.0});
            if (model != ColorSpaceModel::HSB) {
                const ColorComponents peak = gamut->maxChromaForHue(radians);
                truth = gammaEncode(model == ColorSpaceModel::LChab ? lchabToRgb(peak, MI)
                                                                    : lchuvToRgb(peak, MI),
                                    2.2);
            }
            const double error =
                std::max({std::abs(drawn.redF() - truth.c0), std::abs(drawn.greenF() - truth.c1),
                          std::abs(drawn.blueF() - truth.c2)});
            QVERIFY2(error < 0.03, qPrintable(QString("hue %1: drawn %2, expected %3 %4 %5")
                                                  .arg(hue)
                                                  .arg(drawn.name())
                                                  .arg(truth.c0)
                                                  .arg(truth.c1)
                                                  .arg(truth.c2)));
        }
    }
};

QTEST_MAIN(CircularSliderTests)
#include "CircularSliderTests.moc"
