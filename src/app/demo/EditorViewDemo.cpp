// Shows the drop view and two editor views (one at fit, one at 200 %) side by side, for looking at
// them while they are being built: tintorra-view-demo [image file] [--brush]
// With --brush the mask brush is the tool and a round mask lies over the 200 % view; with --drag
// an image is being dragged over the drop view.
#include "app/KVFileDropView.h"
#include "app/KVImageEditorView.h"
#include "imageio/ImageFile.h"

#include <QApplication>
#include <QDragEnterEvent>
#include <QHBoxLayout>
#include <QMimeData>
#include <QUndoStack>
#include <cmath>

using namespace tintorra;

namespace {

class DemoDelegate : public KVImageEditorDelegate {
public:
    int tool = 0;
    QUndoStack stack;
    KVBitmapPtr mask;
    int currentSelectionTool() const override { return tool; }
    int maskToShow() const override { return 0; }
    QUndoStack* undoStack() const override { return const_cast<QUndoStack*>(&stack); }
    void setSelectionHue(QPoint, const KVBitmapPtr&) override {}
    void addSelectionHue(QPoint, const KVBitmapPtr&) override {}
    void subtractSelectionHue(QPoint, const KVBitmapPtr&) override {}
    void setTargetHue(QPoint, const KVBitmapPtr&) override {}
    void hoverOverImage(QPoint, const KVBitmapPtr&) override {}
    void debugPixel(QPoint, const KVBitmapPtr&) override {}
    KVBitmapPtr exclusionMaskForPainting() override { return mask; }
    void exclusionMaskPainted(KVBitmapPtr painted) override { mask = std::move(painted); }
    QByteArray dataForSaveFormat(int) const override { return {}; }
    QString documentDisplayName() const override { return QStringLiteral("Demo"); }
};

// Sky, sea and a sun: smooth gradients and one sharp edge, like a photograph.
KVBitmapPtr syntheticPhoto(int wide, int high)
{
    KVBitmapPtr image = KVBitmap::deviceRGBA8888Rep(wide, high, false);
    for (int y = 0; y < high; ++y) {
        std::uint8_t* row = image->bitmapData() + y * image->bytesPerRow();
        const double v = static_cast<double>(y) / high;
        for (int x = 0; x < wide; ++x) {
            const double u = static_cast<double>(x) / wide;
            const double sun = std::hypot(u - 0.7, v - 0.35);
            double r = v < 0.6 ? 0.95 - 0.5 * v : 0.1 + 0.2 * u;
            double g = v < 0.6 ? 0.55 + 0.2 * v : 0.3 + 0.1 * std::sin(40 * u + 9 * v);
            double b = v < 0.6 ? 0.4 + 0.5 * v : 0.5;
            if (sun < 0.08)
                r = 1.0, g = 0.9, b = 0.5;
            row[4 * x] = static_cast<std::uint8_t>(255 * std::clamp(r, 0.0, 1.0));
            row[4 * x + 1] = static_cast<std::uint8_t>(255 * std::clamp(g, 0.0, 1.0));
            row[4 * x + 2] = static_cast<std::uint8_t>(255 * std::clamp(b, 0.0, 1.0));
            row[4 * x + 3] = 255;
        }
    }
    return image;
}

KVBitmapPtr roundMask(const KVBitmapPtr& image)
{
    KVBitmapPtr mask = KVBitmap::deviceWhite8Rep(image->pixelsWide(), image->pixelsHigh());
    const double radius = 0.3 * std::min(image->pixelsWide(), image->pixelsHigh());
    for (std::int64_t y = 0; y < mask->pixelsHigh(); ++y)
        for (std::int64_t x = 0; x < mask->pixelsWide(); ++x)
            mask->bitmapData()[y * mask->bytesPerRow() + x] =
                std::hypot(x - mask->pixelsWide() / 2.0, y - mask->pixelsHigh() / 2.0) < radius
                    ? 255
                    : 0;
    return mask;
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    const QStringList arguments = application.arguments().mid(1);
    const bool brush = arguments.contains(QStringLiteral("--brush"));
    KVBitmapPtr image;
    for (const QString& argument : arguments) {
        if (!argument.startsWith(QLatin1String("--"))) {
            auto read = readImageFile(argument.toStdString());
            if (read)
                image = read.value();
        }
    }
    if (!image)
        image = syntheticPhoto(1200, 800);

    QWidget window;
    window.setWindowTitle(QStringLiteral("Editor views"));
    auto* layout = new QHBoxLayout(&window);
    auto* drop = new KVFileDropView;
    drop->registerForDraggedImages();
    layout->addWidget(drop, 1);

    DemoDelegate delegate;
    delegate.tool = brush ? 5 : 0;
    auto* fit = new KVImageEditorView;
    fit->setImageEditorDelegate(&delegate);
    layout->addWidget(fit->scrollWidget(), 2);
    auto* zoomed = new KVImageEditorView;
    zoomed->setImageEditorDelegate(&delegate);
    layout->addWidget(zoomed->scrollWidget(), 2);
    window.resize(1340, 700);
    window.show();

    fit->setImageReps({image});
    if (brush)
        delegate.mask = roundMask(image);
    zoomed->setImageReps(brush ? std::vector<KVBitmapPtr>{image, delegate.mask}
                               : std::vector<KVBitmapPtr>{image});
    zoomed->zoomToFactor(2.0, QPointF(image->pixelsWide() * 0.6, image->pixelsHigh() * 0.4));
    QMimeData dragged;
    if (arguments.contains(QStringLiteral("--drag"))) {
        QImage picture(8, 8, QImage::Format_RGB32);
        picture.fill(Qt::darkCyan);
        dragged.setImageData(picture);
        QDragEnterEvent enter(QPoint(40, 40), Qt::CopyAction, &dragged, Qt::LeftButton,
                              Qt::NoModifier);
        QCoreApplication::sendEvent(drop, &enter);
    }
    return application.exec();
}
