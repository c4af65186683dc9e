#include "colour/ColorConversions.h"
#include "engine/ColorTable.h"
#include "ui/KVLChColorMetaType.h"
#include "ui/KVLChSpectrumView.h"
#include "ui/KVNotificationCenter.h"

#include <QTest>
#include <cmath>
#include <numbers>

using namespace tintorra;

Q_DECLARE_METATYPE(Qt::KeyboardModifiers)
Q_DECLARE_METATYPE(tintorra::KVSpectrumGraphType)

namespace {

// Band i carries lightness i, so that a picked colour tells which band it came from.
LChSpectrumPtr numberedSpectrum()
{
    auto spectrum = std::make_shared<LChSpectrum>();
    spectrum->count = kSpectrumBandCount;
    spectrum->bands = allocateTable<LChSpectrumBand>(kSpectrumBandCount);
    for (std::size_t i = 0; i < kSpectrumBandCount; ++i) {
        const auto f = static_cast<float>(i);
        const float hue = f * std::numbers::pi_v<float> / 180.0f;
        spectrum->bands[i] = {i + 1, hue, hue, hue, 20, 20, 20, f, f, f, 1, 1, 1};
    }
    return spectrum;
}

// An image of two colours, `firstCount` pixels of the first and the rest of the second.
KVBitmapPtr twoColourImage(QColor first, QColor second, int firstCount)
{
    KVBitmapPtr bitmap = KVBitmap::deviceRGBA8888Rep(7, 6, false);
    for (int i = 0; i < 42; ++i) {
        const QColor c = i < firstCount ? first : second;
        std::uint8_t* const pixel =
            bitmap->bitmapData() + (i / 7) * bitmap->bytesPerRow() + (i % 7) * 4;
        pixel[0] = static_cast<std::uint8_t>(c.red());
        pixel[1] = static_cast<std::uint8_t>(c.green());
        pixel[2] = static_cast<std::uint8_t>(c.blue());
        pixel[3] = 255;
    }
    return bitmap;
}

bool near(QColor a, QColor b, int tolerance)
{
    return std::abs(a.red() - b.red()) <= tolerance &&
           std::abs(a.green() - b.green()) <= tolerance &&
           std::abs(a.blue() - b.blue()) <= tolerance;
}

struct Heard {
    QString name;
    KVLChColor color;
    QWidget* window = nullptr;
};

} // namespace

class SpectrumViewTests : public QObject {
    Q_OBJECT

    QList<Heard> heard_;

    void listen(KVLChSpectrumView* view)
    {
        heard_.clear();
        for (const QString& name :
             {kUserClickedOnLChColorNotification, kUserShiftClickedOnLChColorNotification}) {
            KVNotificationCenter::defaultCenter().addObserver(
                name, view, [this, view](const KVNotification& n) {
                    if (n.object == view)
                        heard_ << Heard{n.name,
                                        n.userInfo.value(kSpectrumColorKey).value<KVLChColor>(),
                                        n.userInfo.value(kSpectrumWindowKey).value<QWidget*>()};
                });
        }
    }

private slots:
    // The right edge picks the last hue band, never the achromatic one; a drag out past the left
    // edge picks band 0. The colour is the band's mean with full alpha, and "window" is the
    // window the view's pop-up belongs to.
    void edgesPickTheOuterHueBands()
    {
        QWidget owner;
        KVLChSpectrumView view(&owner);
        view.setWindowFlag(Qt::Tool);
        view.setFixedSize(722, 120);
        view.setSpectrum(numberedSpectrum());
        listen(&view);

        QTest::mouseClick(&view, Qt::LeftButton, {}, QPoint(721, 60));
        QTest::mousePress(&view, Qt::LeftButton, {}, QPoint(100, 60));
        QTest::mouseMove(&view, QPoint(-30, 60));
        QTest::mouseRelease(&view, Qt::LeftButton, {}, QPoint(-30, 60));

        QCOMPARE(heard_.size(), 3);
        QCOMPARE(heard_[0].color.lightness(), 359.0);
        QCOMPARE(heard_[0].color.hue(), double(359.0f * std::numbers::pi_v<float> / 180.0f));
        QCOMPARE(heard_[0].color.chroma(), 20.0);
        QCOMPARE(heard_[0].color.alpha(), 1.0);
        QCOMPARE(heard_[1].color.lightness(), 50.0);
        QCOMPARE(heard_[2].color.lightness(), 0.0);
        QCOMPARE(heard_[2].window, &owner);
    }

    void modifiersDecideWhatAClickDoes_data()
    {
        QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
        QTest::addColumn<bool>("capsLock");
        QTest::addColumn<KVSpectrumGraphType>("graphBefore");
        QTest::addColumn<QString>("notification");
        QTest::addColumn<KVSpectrumGraphType>("graphAfter");
        QTest::addColumn<bool>("logAfter");
        using G = KVSpectrumGraphType;
        const Qt::KeyboardModifiers none;
        const QString nothing;
        QTest::newRow("plain picks") << none << false << G::chroma
                                     << kUserClickedOnLChColorNotification << G::chroma << false;
        QTest::newRow("shift picks")
            << Qt::KeyboardModifiers(Qt::ShiftModifier) << false << G::spectrogram
            << kUserShiftClickedOnLChColorNotification << G::spectrogram << false;
        QTest::newRow("alt toggles log") << Qt::KeyboardModifiers(Qt::AltModifier) << false
                                         << G::spectrogram << nothing << G::spectrogram << true;
        QTest::newRow("alt elsewhere") << Qt::KeyboardModifiers(Qt::AltModifier) << false
                                       << G::lightness << nothing << G::lightness << false;
        QTest::newRow("ctrl next") << Qt::KeyboardModifiers(Qt::ControlModifier) << false
                                   << G::spectrogram << nothing << G::lightness << false;
        QTest::newRow("ctrl wraps") << Qt::KeyboardModifiers(Qt::ControlModifier) << false
                                    << G::saturation << nothing << G::spectrogram << false;
        QTest::newRow("ctrl shift back") << (Qt::ControlModifier | Qt::ShiftModifier) << false
                                         << G::spectrogram << nothing << G::saturation << false;
        QTest::newRow("ctrl alt") << (Qt::ControlModifier | Qt::AltModifier) << false
                                  << G::spectrogram << nothing << G::spectrogram << false;
        QTest::newRow("alt shift") << (Qt::AltModifier | Qt::ShiftModifier) << false
                                   << G::spectrogram << nothing << G::spectrogram << false;
        QTest::newRow("meta") << Qt::KeyboardModifiers(Qt::MetaModifier) << false << G::spectrogram
                              << nothing << G::spectrogram << false;
        QTest::newRow("caps lock")
            << none << true << G::spectrogram << nothing << G::spectrogram << false;
        QTest::newRow("caps lock ctrl") << Qt::KeyboardModifiers(Qt::ControlModifier) << true
                                        << G::chroma << nothing << G::chroma << false;
    }

    // Every click, whatever it does, is one undo group.
    void modifiersDecideWhatAClickDoes()
    {
        QFETCH(Qt::KeyboardModifiers, modifiers);
        QFETCH(bool, capsLock);
        QFETCH(KVSpectrumGraphType, graphBefore);
        QFETCH(QString, notification);
        QFETCH(KVSpectrumGraphType, graphAfter);
        QFETCH(bool, logAfter);
        KVLChSpectrumView view;
        view.resize(361, 100);
        view.setSpectrum(numberedSpectrum());
        view.setGraphType(graphBefore);
        view.setCapsLockProbe([capsLock] { return capsLock; });
        int begun = 0, ended = 0;
        view.setUndoGrouping({[&] { ++begun; }, [&] { ++ended; }});
        listen(&view);

        QTest::mouseClick(&view, Qt::LeftButton, modifiers, QPoint(30, 50));

        QCOMPARE(heard_.size(), notification.isEmpty() ? 0 : 1);
        if (!notification.isEmpty())
            QCOMPARE(heard_[0].name, notification);
        QCOMPARE(view.graphType(), graphAfter);
        QCOMPARE(view.drawLog(), logAfter);
        QCOMPARE(begun, 1);
        QCOMPARE(ended, 1);
    }

    // A double click is two presses, however the window system reports the second one.
    void controlDoubleClickStepsTwice()
    {
        KVLChSpectrumView view;
        view.resize(361, 100);
        const QPoint point(30, 50);
        QTest::mouseClick(&view, Qt::LeftButton, Qt::ControlModifier, point);
        QTest::mousePress(&view, Qt::LeftButton, Qt::ControlModifier, point);
        QTest::mouseDClick(&view, Qt::LeftButton, Qt::ControlModifier, point);
        QTest::mouseRelease(&view, Qt::LeftButton, Qt::ControlModifier, point);
        QCOMPARE(view.graphType(), KVSpectrumGraphType::chroma);
    }

    void barsShowCountsInTheBandColours_data()
    {
        QTest::addColumn<ColorSpaceModel>("model");
        QTest::addColumn<bool>("log");
        QTest::newRow("LChuv, linear") << ColorSpaceModel::LChuv << false;
        QTest::newRow("LChuv, log") << ColorSpaceModel::LChuv << true;
        QTest::newRow("LChab, linear") << ColorSpaceModel::LChab << false;
    }

    // Each bar stands count x (height - 8) / largest count tall (log10 of both on the log
    // scale) on the bottom margin, in the colour of the image pixels it counts.
    void barsShowCountsInTheBandColours()
    {
        QFETCH(ColorSpaceModel, model);
        QFETCH(bool, log);
        const QColor red(230, 20, 10), blue(40, 120, 220);
        const KVBitmapPtr image = twoColourImage(red, blue, 30);
        const LChColorTable table = createLChColorTableWithImageGamma(image, 1.0 / 2.2, model);
        auto spectrum = std::make_shared<LChSpectrum>(createLChSpectrumFromLChColorTable(table));
        KVLChSpectrumView view;
        view.setColorSpaceModel(model);
        view.setColorGamut(std::make_shared<const KVColorGamut>(&image->colorSpace(), model));
        view.setDrawLog(log);
        view.setSpectrum(spectrum);
        view.resize(3 * 361, 208);
        const QImage shot = view.grab().toImage();

        const auto value = [log](double count) { return log ? std::log10(count) : count; };
        const double scale = (208 - 8) / value(30);
        int bars = 0;
        for (std::size_t band = 0; band < kSpectrumBandCount; ++band) {
            const std::uint64_t count = spectrum->bands[band].count;
            if (count == 0)
                continue;
            ++bars;
            const int x = static_cast<int>(3 * band + 1);
            const QColor bar = shot.pixelColor(x, 208 - 5);
            int height = 0;
            while (height < 208 && shot.pixelColor(x, 208 - 5 - height) == bar)
                ++height;
            QVERIFY(std::abs(height - value(double(count)) * scale) <= 1.0);
            // The band's mean colour as the colour core turns it back into display RGB, and
            // close to it, the image's own colour (the Lab path's fast arctangent moves the
            // hue a little).
            const LChSpectrumBand& b = spectrum->bands[band];
            const ColorComponents lch{b.lightnessMean, b.chromaMean, b.hueMean, 1.0};
            Matrix3 MI{};
            view.colorGamut()->copy_XYZ_to_RGB_matrix(MI);
            const ColorComponents rgb = gammaEncode(
                model == ColorSpaceModel::LChuv ? lchuvToRgb(lch, MI) : lchabToRgb(lch, MI), 2.2);
            const QColor core = QColor::fromRgbF(float(rgb.c0), float(rgb.c1), float(rgb.c2));
            QVERIFY2(near(bar, core, 1), qPrintable(bar.name() + " for " + core.name()));
            QVERIFY(near(bar, count == 30 ? red : blue, 5));
        }
        QCOMPARE(bars, 2);
    }
};

QTEST_MAIN(SpectrumViewTests)
#include "SpectrumViewTests.moc"
