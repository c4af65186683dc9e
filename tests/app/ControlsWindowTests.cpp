#include "app/ControlsWindow.h"
#include "ui/KVCircularSlider.h"
#include "ui/KVLChSpectrumView.h"
#include "ui/TintorraVC.h"

#include <QLabel>
#include <QTest>
#include <QUndoStack>
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
    // stays as it was; undo brings back the first picture.
    void previewShowsTheShiftedImage()
    {
        Engine engine({2});
        ControlsWindow window(engine, twoColourImage());
        auto* source = window.findChild<KVCircularSlider*>(QStringLiteral("hueSlider"));
        auto* target = window.findChild<KVCircularSlider*>(QStringLiteral("targetHueSlider"));
        auto* preview = window.findChild<QLabel*>(QStringLiteral("preview"));
        QVERIFY(source != nullptr && target != nullptr && preview != nullptr);
        const auto pixel = [&](bool left) {
            const QImage picture = preview->pixmap().toImage();
            return picture.pixelColor(left ? 0 : picture.width() - 1, picture.height() / 2);
        };
        // The first shifted picture, with the parameters the panel starts with.
        TintorraVC* editor = window.editor();
        QTRY_VERIFY(editor->shownShift() > 0 &&
                    editor->shownShift() == editor->lastRequestedShift());
        const std::uint8_t* first = editor->destinationRep()->bitmapData();
        const QColor initial(first[0], first[1], first[2]);
        QTRY_COMPARE(pixel(true), initial);
        source->setMiddleValue(0.03);
        target->setMiddleValue(0.5);
        QTRY_VERIFY(pixel(true).green() > pixel(true).red() &&
                    pixel(true).blue() > pixel(true).red());
        QCOMPARE(pixel(false), QColor(30, 40, 220));
        window.undoStack()->undo();
        window.undoStack()->undo();
        QTRY_COMPARE(pixel(true), initial);
    }
};

QTEST_MAIN(ControlsWindowTests)
#include "ControlsWindowTests.moc"
