#include "DocumentTestSupport.h"

#include "app/MainWindowDoc.h"
#include "image/PixelAccess.h"
#include "imageio/DecodedBitmap.h"
#include "imageio/ImageFile.h"
#include "ui/KVSettings.h"

#include <QCloseEvent>
#include <cmath>

namespace tintorra::test {

TestDocumentWindow::TestDocumentWindow(MainWindowDoc& document) : document_(document) {}

TestDocumentWindow::~TestDocumentWindow()
{
    document_.setWindowController(nullptr);
}

KVBitmapPtr TestDocumentWindow::inputImageRep() const
{
    return reps_.empty() ? nullptr : reps_[0];
}

KVBitmapPtr TestDocumentWindow::exclusionMaskRep() const
{
    return reps_.size() > 1 ? reps_[1] : nullptr;
}

KVBitmapPtr TestDocumentWindow::inclusionMaskRep() const
{
    return reps_.size() > 2 ? reps_[2] : nullptr;
}

void TestDocumentWindow::setUndoRegistrationEnabled(bool enabled)
{
    calls_ << (enabled ? QStringLiteral("undo:on") : QStringLiteral("undo:off"));
}

void TestDocumentWindow::setEditorImageReps(std::vector<KVBitmapPtr> reps)
{
    calls_ << QStringLiteral("reps:%1").arg(reps.size());
    reps_ = std::move(reps);
    output_ = nullptr;
    if (reps_.empty())
        return;
    output_ = reps_[0]->copy();
    const std::int64_t bytes = output_->bytesPerRow() * output_->pixelsHigh();
    const std::int64_t step = output_->bitsPerSample() / 8;
    const std::int64_t pixel = output_->bitsPerPixel() / 8;
    std::uint8_t* data = output_->bitmapData();
    // Swap the first two colour samples of every pixel.
    for (std::int64_t at = 0; at + 2 * step <= bytes; at += pixel) {
        for (std::int64_t b = 0; b < step; ++b)
            std::swap(data[at + b], data[at + step + b]);
    }
}

bool TestDocumentWindow::setHueShiftParametersFromHexEncodedString(const QString& encoded)
{
    calls_ << QStringLiteral("params");
    parameters_ = encoded;
    return true;
}

void TestDocumentWindow::synchronizeWindowTitleWithDocumentName()
{
    setWindowTitle(document_.displayName() + QStringLiteral("[*]"));
    setWindowModified(document_.isModified());
}

void TestDocumentWindow::closeEvent(QCloseEvent* event)
{
    if (document_.shouldCloseWindow())
        event->accept();
    else
        event->ignore();
}

ReplaceImageChoice RecordingPrompts::askReplaceImage(QWidget*)
{
    ++replaceQuestions;
    return replaceAnswer;
}

void RecordingPrompts::showError(QWidget*, const KVError& error)
{
    errors.push_back(error);
}

SaveChangesChoice RecordingPrompts::askSaveChanges(QWidget*, const QString&)
{
    ++saveChangesQuestions;
    return saveChangesAnswer;
}

std::optional<SaveTarget> RecordingPrompts::askSaveTarget(QWidget*, const QString& name,
                                                          const QString&)
{
    suggestedName = name;
    return saveTarget;
}

KVBitmapPtr makeImage(int width, int height, int bitsPerSample, bool alpha, bool rgb,
                      std::vector<std::uint8_t> icc)
{
    KVBitmapLayout layout;
    layout.pixelsWide = width;
    layout.pixelsHigh = height;
    layout.bitsPerSample = bitsPerSample;
    layout.samplesPerPixel = (rgb ? 3 : 1) + (alpha ? 1 : 0);
    layout.hasAlpha = alpha;
    layout.bitmapFormat = alpha ? unsigned{kBitmapFormatAlphaNonpremultiplied} : 0U;
    const KVColorSpaceModel model = rgb ? KVColorSpaceModel::rgb : KVColorSpaceModel::gray;
    KVBitmapPtr image =
        KVBitmap::create(layout, icc.empty() ? deviceColorSpace(model)
                                             : colorSpaceForDecodedImage(model, std::move(icc)));
    const std::int64_t samples = layout.samplesPerPixel;
    const std::uint32_t top = bitsPerSample == 16 ? 65535 : 255;
    for (std::int64_t y = 0; y < height; ++y) {
        std::uint8_t* row = image->bitmapData() + y * image->bytesPerRow();
        for (std::int64_t x = 0; x < width; ++x) {
            for (std::int64_t s = 0; s < samples; ++s) {
                const bool isAlpha = alpha && s == samples - 1;
                const std::uint32_t value =
                    isAlpha
                        ? top - static_cast<std::uint32_t>(x * 7 % 64)
                        // Smooth enough for JPEG to keep within a few levels.
                        : static_cast<std::uint32_t>((x * 3 + y * 2 + s * 30) % 256) * top / 255;
                const std::int64_t at = x * samples + s;
                if (bitsPerSample == 16)
                    reinterpret_cast<std::uint16_t*>(row)[at] = static_cast<std::uint16_t>(value);
                else
                    row[at] = static_cast<std::uint8_t>(value);
            }
        }
    }
    return image;
}

QString writeImage(const QTemporaryDir& folder, const QString& name, const KVBitmap& image,
                   ImageFormat format)
{
    const QString path = folder.filePath(name);
    const IOStatus written = writeImageFile(path.toStdString(), image, format);
    return written ? path : QString();
}

bool samePixels(const KVBitmapPtr& a, const KVBitmapPtr& b, int tolerance)
{
    if (!a || !b || a->pixelsWide() != b->pixelsWide() || a->pixelsHigh() != b->pixelsHigh())
        return false;
    const PixelManipulationOffsets first = pixelManipulationOffsetsWithImageGamma(a, 1.0);
    const PixelManipulationOffsets second = pixelManipulationOffsetsWithImageGamma(b, 1.0);
    for (std::int64_t y = 0; y < a->pixelsHigh(); ++y) {
        for (std::int64_t x = 0; x < a->pixelsWide(); ++x) {
            ColorComponents one;
            ColorComponents two;
            readGammaFloats(x, y, first, one);
            readGammaFloats(x, y, second, two);
            const double values[4][2] = {
                {one.c0, two.c0}, {one.c1, two.c1}, {one.c2, two.c2}, {one.alpha, two.alpha}};
            for (const auto& pair : values) {
                if (std::abs(pair[0] - pair[1]) * 255.0 > tolerance + 0.01)
                    return false;
            }
        }
    }
    return true;
}

QString fixturePath(const QString& name)
{
    return QStringLiteral(TINTORRA_TEST_DATA_DIR "/imageio/") + name;
}

void useTemporarySettings(const QTemporaryDir& folder)
{
    KVSettings::redirectStandard(folder.filePath(QStringLiteral("settings.ini")));
}

} // namespace tintorra::test
