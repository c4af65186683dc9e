#include "FakeImageEditorDelegate.h"
#include "app/KVImageEditorView.h"
#include "app/KVImageExport.h"
#include "app/KVImageRenderer.h"
#include "colour/IccProfiles.h"
#include "colour/LcmsProfile.h"
#include "imageio/ImageCodec.h"
#include "ui/KVSettings.h"

#include <QFileInfo>
#include <QMimeData>
#include <QScrollArea>
#include <QTemporaryDir>
#include <QTest>
#include <memory>

using namespace tintorra;

namespace {

// A wide-gamut RGB profile (Adobe RGB primaries, gamma 2.2) as ICC bytes.
QByteArray wideGamutProfile()
{
    const cmsCIExyY white{0.3127, 0.3290, 1.0};
    const cmsCIExyYTRIPLE primaries{{0.64, 0.33, 1.0}, {0.21, 0.71, 1.0}, {0.15, 0.06, 1.0}};
    cmsToneCurve* gamma = cmsBuildGamma(nullptr, 2.2);
    cmsToneCurve* curves[3] = {gamma, gamma, gamma};
    cmsHPROFILE profile = cmsCreateRGBProfile(&white, &primaries, curves);
    const std::vector<std::uint8_t> bytes = saveLcmsProfile(profile);
    cmsCloseProfile(profile);
    cmsFreeToneCurve(gamma);
    return QByteArray(reinterpret_cast<const char*>(bytes.data()), qsizetype(bytes.size()));
}

// One pixel of a solid image as shown on a display with `displayProfile`.
QRgb shownColour(KVColorSpace space, const QByteArray& displayProfile)
{
    KVBitmapPtr image = KVBitmap::deviceRGBA8888Rep(4, 4, false);
    for (int i = 0; i < 16; ++i) {
        const std::uint8_t pixel[4] = {200, 60, 60, 255};
        std::copy(pixel, pixel + 4, image->bitmapData() + 4 * i);
    }
    image->setColorSpace(std::move(space));
    KVRenderSource source;
    source.image = image;
    source.transform = KVDisplayTransform::forImage(image->colorSpace(), false, displayProfile);
    return renderImageRegion(source, QRect(0, 0, 4, 4), 1.0).pixel(1, 1);
}

KVBitmapPtr greyImage(int wide, int high, std::uint8_t value = 128)
{
    KVBitmapPtr image = KVBitmap::deviceRGBA8888Rep(wide, high, false);
    std::fill(image->bitmapData(), image->bitmapData() + image->sampleBytes(), value);
    return image;
}

// A view in a 400 x 300 scroll area, shown, with a fake window behind it.
struct Harness {
    Harness()
    {
        area.reset(view->scrollWidget());
        area->resize(400, 300);
        view->setImageEditorDelegate(&delegate);
        area->show();
    }
    void click(QPoint at, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::mouseClick(view, Qt::LeftButton, modifiers, at);
    }
    FakeImageEditorDelegate delegate;
    KVImageEditorView* view = new KVImageEditorView;
    std::unique_ptr<QWidget> area;
};

} // namespace

class ImageEditorViewTests : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(settingsFolder_.isValid());
        KVSettings::redirectStandard(settingsFolder_.filePath(QStringLiteral("settings.ini")));
    }

    // A new image fits; a same-size one keeps zoom and place; steps and anchors hold on the view.
    void zoomFollowsImagesAndSteps()
    {
        Harness harness;
        KVImageEditorView& view = *harness.view;
        view.setImageReps({greyImage(800, 600)});
        QVERIFY(view.zoomedToFit());
        const QSize area = static_cast<QScrollArea*>(view.scrollWidget())->maximumViewportSize();
        QCOMPARE(view.currentZoomFactor(), std::min(area.width() / 800.0, area.height() / 600.0));

        view.zoomToFactor(2.0, QPointF(400, 300));
        QVERIFY(!view.zoomedToFit());
        QCOMPARE(view.size(), QSize(1600, 1200));
        const QPointF centre = view.visibleCenterPoint();
        view.zoomIn();
        QCOMPARE(view.currentZoomFactor(), 3.0);
        // The centre stayed the centre, within a scroll step of rounding.
        QVERIFY((view.visibleCenterPoint() - centre).manhattanLength() < 1.0);

        view.setImageReps({greyImage(800, 600, 30)});
        QCOMPARE(view.currentZoomFactor(), 3.0);
        view.setImageReps({greyImage(200, 100)});
        QVERIFY(view.zoomedToFit());
    }

    // Clicks become the delegate's messages by tool and keys, at the pixel under the pointer.
    void clicksSendTheToolsMessages_data()
    {
        QTest::addColumn<int>("tool");
        QTest::addColumn<int>("modifiers");
        QTest::addColumn<QString>("message");
        QTest::newRow("pick") << 1 << 0 << "set";
        QTest::newRow("pick with shift") << 1 << int(Qt::ShiftModifier) << "add";
        QTest::newRow("add with alt") << 2 << int(Qt::AltModifier) << "subtract";
        QTest::newRow("subtract with shift") << 3 << int(Qt::ShiftModifier) << "add";
        QTest::newRow("target") << 4 << 0 << "target";
        QTest::newRow("no tool, ctrl alt meta")
            << 0 << int(Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier) << "debug";
    }
    void clicksSendTheToolsMessages()
    {
        QFETCH(int, tool);
        QFETCH(int, modifiers);
        QFETCH(QString, message);
        Harness harness;
        harness.view->setImageReps({greyImage(100, 50)});
        harness.view->zoomToFactor(2.0, QPointF());
        harness.delegate.tool = tool;
        harness.click(QPoint(21, 41), Qt::KeyboardModifiers(modifiers));
        QCOMPARE(harness.delegate.messages, QStringList{message});
        QCOMPARE(harness.delegate.pixels.front(), QPoint(10, 20));
    }

    // A drag with the eyedropper samples all along and is one undo step; a click beside the
    // image (the image is centred in a larger viewport) is no step at all.
    void eyedropperDragIsOneUndoStep()
    {
        Harness harness;
        harness.view->setImageReps({greyImage(200, 100)});
        harness.view->zoomToFactor(1.0, QPointF());
        harness.delegate.tool = 1;
        QTest::mousePress(harness.view, Qt::LeftButton, {}, QPoint(10, 10));
        for (int x = 12; x <= 30; x += 6)
            QTest::mouseMove(harness.view, QPoint(x, 10));
        QTest::mouseRelease(harness.view, Qt::LeftButton, {}, QPoint(30, 10));
        QVERIFY(harness.delegate.messages.size() >= 3);
        QCOMPARE(harness.delegate.stack.count(), 1);
        harness.delegate.stack.undo();
        QCOMPARE(harness.delegate.stack.index(), 0);
        harness.click(QPoint(-5, 10));
        QCOMPARE(harness.delegate.stack.count(), 1);
    }

    // A stroke lands as a new mask; undo gives the old one back, untouched.
    void brushStrokePaintsACopyOfTheMask()
    {
        Harness harness;
        harness.view->setImageReps({greyImage(200, 100)});
        harness.view->zoomToFactor(1.0, QPointF());
        harness.delegate.tool = 5;
        const KVBitmapPtr before = KVBitmap::deviceWhite8Rep(200, 100);
        std::fill(before->bitmapData(), before->bitmapData() + before->sampleBytes(), 0);
        harness.delegate.mask = before;
        QTest::mousePress(harness.view, Qt::LeftButton, {}, QPoint(20, 50));
        QTest::mouseMove(harness.view, QPoint(100, 50));
        QTest::mouseRelease(harness.view, Qt::LeftButton, {}, QPoint(100, 50));
        QTRY_COMPARE(harness.delegate.stack.count(), 1);
        const KVBitmapPtr after = harness.delegate.mask;
        QVERIFY(after != before);
        QCOMPARE(after->bitmapData()[50 * after->bytesPerRow() + 60], std::uint8_t{255});
        QCOMPARE(after->bitmapData()[5 * after->bytesPerRow() + 60], std::uint8_t{0});
        QCOMPARE(before->bitmapData()[50 * before->bytesPerRow() + 60], std::uint8_t{0});
        harness.delegate.stack.undo();
        QCOMPARE(harness.delegate.mask, before);
    }

    // Copy and drag-out carry the chosen format's bytes and a real file of that format.
    void copyWritesAReadableFileOfTheChosenFormat_data()
    {
        QTest::addColumn<int>("tag");
        QTest::addColumn<QString>("suffix");
        QTest::newRow("TIFF") << 0 << "tiff";
        QTest::newRow("PNG") << 1 << "png";
        QTest::newRow("JPEG") << 2 << "jpeg";
        QTest::newRow("JPEG 2000") << 3 << "jp2";
    }
    void copyWritesAReadableFileOfTheChosenFormat()
    {
        QFETCH(int, tag);
        QFETCH(QString, suffix);
        KVSettings::standard().setValue(kSaveAsFileTypeTagKey, tag);
        Harness harness;
        harness.view->setImageReps({greyImage(20, 10)});
        QMimeData data;
        QVERIFY(harness.view->putDataOnPasteboard(&data));
        QCOMPARE(data.data(kNativeImageMimeType).size(), 8);
        QVERIFY(!data.data(mimeTypeForSaveFormat(tag)).isEmpty());
        QCOMPARE(data.urls().size(), 1);
        const QFileInfo file(data.urls().front().toLocalFile());
        QVERIFY(file.completeBaseName().startsWith(QStringLiteral("Harbour shifted")));
        QCOMPARE(file.suffix(), suffix);
        const auto read = readImageFile(file.filePath().toStdString());
        QVERIFY(read);
        QCOMPARE(read.value()->pixelsWide(), 6);
        // The file holds the chosen format by content, not only by name.
        QFile written(file.filePath());
        QVERIFY(written.open(QIODevice::ReadOnly));
        const QByteArray head = written.read(16);
        const ImageCodec* codec = codecForData(std::span(
            reinterpret_cast<const std::uint8_t*>(head.constData()), std::size_t(head.size())));
        QVERIFY(codec != nullptr);
        QCOMPARE(static_cast<int>(codec->format()), tag);
        // A second copy does not overwrite the first file.
        QMimeData again;
        QVERIFY(harness.view->putDataOnPasteboard(&again));
        QVERIFY(again.urls().front() != data.urls().front());
        QFile::remove(file.filePath());
        QFile::remove(again.urls().front().toLocalFile());
    }

    // A smooth 16-bit ramp keeps its in-between values on screen: the dithered pixels of a run
    // that falls between two 8-bit levels average to the value in between.
    void sixteenBitRampIsDitheredNotBanded()
    {
        KVBitmapLayout layout;
        layout.pixelsWide = 64;
        layout.pixelsHigh = 16;
        layout.bitsPerSample = 16;
        layout.samplesPerPixel = 3;
        layout.hasAlpha = false;
        const KVBitmapPtr image = KVBitmap::create(layout);
        // 100.5 in 8-bit terms, everywhere.
        const std::uint16_t value = static_cast<std::uint16_t>(100.5 * 257.0);
        for (std::int64_t y = 0; y < 16; ++y) {
            auto* row =
                reinterpret_cast<std::uint16_t*>(image->bitmapData() + y * image->bytesPerRow());
            std::fill(row, row + 64 * 3, value);
        }
        KVRenderSource source;
        source.image = image;
        const QImage shown = renderImageRegion(source, QRect(0, 0, 64, 16), 1.0);
        double sum = 0.0;
        int distinct = 0;
        QSet<int> levels;
        for (int y = 0; y < 16; ++y)
            for (int x = 0; x < 64; ++x) {
                const int red = qRed(shown.pixel(x, y));
                sum += red;
                levels.insert(red);
            }
        distinct = static_cast<int>(levels.size());
        QCOMPARE(distinct, 2);
        QVERIFY(std::abs(sum / (64 * 16) - 100.5) < 0.05);
    }

    // The image's own profile is honoured and the display's is aimed at; sRGB on an sRGB display
    // and a profile shown on a display of the same profile stay as stored.
    void imagesAreShownThroughTheDisplayProfile()
    {
        const QByteArray wide = wideGamutProfile();
        const auto wideSpace =
            colorSpaceFromIccProfile(std::vector<std::uint8_t>(wide.cbegin(), wide.cend()));
        QVERIFY(wideSpace.has_value());
        const QRgb stored = qRgb(200, 60, 60);
        const auto near = [](QRgb a, QRgb b, int tolerance) {
            return std::abs(qRed(a) - qRed(b)) <= tolerance &&
                   std::abs(qGreen(a) - qGreen(b)) <= tolerance &&
                   std::abs(qBlue(a) - qBlue(b)) <= tolerance;
        };
        QVERIFY(near(shownColour(sRGBColorSpace(), {}), stored, 1));
        QCOMPARE(shownColour(*wideSpace, wide), stored);
        // Wide-gamut red is redder than sRGB's: on an sRGB display it leaves the stored values.
        const QRgb onSrgb = shownColour(*wideSpace, {});
        QVERIFY(qRed(onSrgb) > 210 && !near(onSrgb, stored, 5));
        // An untagged image on a wide-gamut display is toned down instead.
        QVERIFY(qRed(shownColour(KVColorSpace::deviceRGB(), wide)) < 195);
    }

private:
    QTemporaryDir settingsFolder_;
};

QTEST_MAIN(ImageEditorViewTests)
#include "ImageEditorViewTests.moc"
