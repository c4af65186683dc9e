#include "app/ControlsWindow.h"
#include "ui/KVCircularSlider.h"
#include "ui/KVLChSpectrumView.h"

#include <QLabel>
#include <QTest>
#include <algorithm>

using namespace tintorra;

namespace {

// Half red, half blue: two bands in the spectrum.
KVBitmapPtr twoColourImage()
{
    KVBitmapPtr image = KVBitmap::deviceRGBA8888Rep(32, 8, false);
    for (std::int64_t y = 0; y < 8; ++y) {
        std::uint8_t* row = image->bitmapData() + y * image->bytesPerRow();
        for (std::int64_t x = 0; x < 32; ++x) {
            const bool red = x < 16;
            const std::uint8_t pixel[4] = {std::uint8_t(red ? 220 : 30), 40,
                                           std::uint8_t(red ? 30 : 220), 255};
            std::copy(pixel, pixel + 4, row + x * 4);
        }
    }
    return image;
}

} // namespace

class ControlsWindowTests : public QObject {
    Q_OBJECT

private slots:
    // The image's description is built off the main thread and arrives in the spectrogram.
    void spectrumArrivesFromTheBackground()
    {
        Engine engine({2});
        ControlsWindow window(engine, twoColourImage());
        window.show();
        auto* spectrum = window.findChild<KVLChSpectrumView*>();
        QVERIFY(spectrum != nullptr);
        QTRY_VERIFY(spectrum->spectrum() != nullptr);
        int occupied = 0;
        for (std::uint64_t band = 0; band < spectrum->spectrum()->count; ++band) {
            occupied += spectrum->spectrum()->bands[band].count > 0 ? 1 : 0;
        }
        QCOMPARE(occupied, 2);
    }

    // Moving the target shows the image shifted: the red half turns towards cyan, the blue half
    // stays as it was.
    void previewShowsTheShiftedImage()
    {
        Engine engine({2});
        ControlsWindow window(engine, twoColourImage());
        auto* source = window.findChild<KVCircularSlider*>(QStringLiteral("sourceHue"));
        auto* target = window.findChild<KVCircularSlider*>(QStringLiteral("targetHue"));
        auto* preview = window.findChild<QLabel*>(QStringLiteral("preview"));
        QVERIFY(source != nullptr && target != nullptr && preview != nullptr);
        const auto pixel = [&](int x) { return preview->pixmap().toImage().pixelColor(x, 0); };
        QCOMPARE(pixel(0), QColor(220, 40, 30));
        source->setMiddleValue(0.03);
        target->setMiddleValue(0.5);
        QTRY_VERIFY(pixel(0).green() > pixel(0).red() && pixel(0).blue() > pixel(0).red());
        QCOMPARE(pixel(31), QColor(30, 40, 220));
    }

    // What the rings say reaches the parameter set the window shows.
    void ringsDriveTheParameterSet()
    {
        Engine engine({1});
        ControlsWindow window(engine, twoColourImage());
        auto* source = window.findChild<KVCircularSlider*>(QStringLiteral("sourceHue"));
        auto* target = window.findChild<KVCircularSlider*>(QStringLiteral("targetHue"));
        auto* summary = window.findChild<QLabel*>(QStringLiteral("summary"));
        QVERIFY(source != nullptr && target != nullptr && summary != nullptr);
        source->setMiddleValue(0.25);
        target->setMiddleValue(0.5);
        QVERIFY2(summary->text().contains(QStringLiteral("hue 90.0° (80.0° to 100.0°")),
                 qPrintable(summary->text()));
        QVERIFY2(summary->text().contains(QStringLiteral("Target hue: 180.0°")),
                 qPrintable(summary->text()));
    }
};

QTEST_MAIN(ControlsWindowTests)
#include "ControlsWindowTests.moc"
