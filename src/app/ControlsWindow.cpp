#include "app/ControlsWindow.h"

#include "ui/KVBitmapPreview.h"
#include "ui/TintorraVC.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenuBar>
#include <QMouseEvent>
#include <QPointer>
#include <QScreen>
#include <QThreadPool>
#include <QUndoStack>
#include <QVBoxLayout>

namespace tintorra {

namespace {
constexpr int kPreviewSide = 900;
} // namespace

ControlsWindow::ControlsWindow(Engine& engine, KVBitmapPtr image, QWidget* parent)
    : QMainWindow(parent), undoStack_(new QUndoStack(this))
{
    setWindowTitle(tr("Tintorra"));
    auto* central = new QWidget(this);
    auto* columns = new QHBoxLayout(central);
    editor_ = new TintorraVC(engine, undoStack_, central);
    columns->addWidget(editor_);

    auto* imageColumn = new QVBoxLayout;
    preview_ = new QLabel(central);
    preview_->setObjectName(QStringLiteral("preview"));
    preview_->setToolTip(tr("The image with the selection shifted"));
    preview_->setAlignment(Qt::AlignCenter);
    preview_->setMinimumSize(320, 240);
    preview_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
    preview_->setMouseTracking(true);
    preview_->installEventFilter(this);
    imageColumn->addWidget(preview_, 1);
    // The document window shows the spectrogram in a pop-up; here it sits under the picture.
    KVLChSpectrumView* spectrum = editor_->spectrumView();
    spectrum->setParent(central);
    spectrum->setMinimumHeight(120);
    spectrum->setMaximumHeight(160);
    imageColumn->addWidget(spectrum);
    columns->addLayout(imageColumn, 1);
    setCentralWidget(central);

    QMenu* edit = menuBar()->addMenu(tr("&Edit"));
    QAction* undo = undoStack_->createUndoAction(this, tr("&Undo"));
    undo->setShortcut(QKeySequence::Undo);
    QAction* redo = undoStack_->createRedoAction(this, tr("&Redo"));
    redo->setShortcut(QKeySequence::Redo);
    edit->addAction(undo);
    edit->addAction(redo);

    connect(editor_, &TintorraVC::imageProcessed, this, [this](const KVBitmapPtr& output) {
        showPicture(output ? output : editor_->sourceRep());
    });
    editor_->setImageReps({image});
    showPicture(image);
    if (const QScreen* screen = QGuiApplication::primaryScreen()) {
        resize(screen->availableSize());
    }
}

ControlsWindow::~ControlsWindow() = default;

QPoint ControlsWindow::pixelAt(QPointF point) const
{
    const KVBitmapPtr source = editor_->sourceRep();
    const QSize shown = preview_->pixmap().deviceIndependentSize().toSize();
    if (source == nullptr || shown.isEmpty()) {
        return {-1, -1};
    }
    // The picture is centred in the label.
    const QPointF origin((preview_->width() - shown.width()) / 2.0,
                         (preview_->height() - shown.height()) / 2.0);
    const QPointF inPicture = point - origin;
    const auto x = static_cast<int>(inPicture.x() * double(source->pixelsWide()) / shown.width());
    const auto y = static_cast<int>(inPicture.y() * double(source->pixelsHigh()) / shown.height());
    if (inPicture.x() < 0 || inPicture.y() < 0 || x >= source->pixelsWide() ||
        y >= source->pixelsHigh()) {
        return {-1, -1};
    }
    return {x, y};
}

bool ControlsWindow::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != preview_) {
        return QMainWindow::eventFilter(watched, event);
    }
    const KVBitmapPtr source = editor_->sourceRep();
    if (event->type() == QEvent::MouseMove) {
        editor_->mouseMovedOverImage(pixelAt(static_cast<QMouseEvent*>(event)->position()), source);
    } else if (event->type() == QEvent::Leave) {
        editor_->mouseMovedOverImage({-1, -1}, source);
    } else if (event->type() == QEvent::MouseButtonPress) {
        const QPoint pixel = pixelAt(static_cast<QMouseEvent*>(event)->position());
        if (pixel.x() >= 0) {
            switch (editor_->currentSelectionTool()) {
            case kToolSetSelectionHue:
                editor_->setSelectionHueSliderValue(pixel, source);
                break;
            case kToolAddSelectionHue:
                editor_->addSelectionHueSliderValue(pixel, source);
                break;
            case kToolSubtractSelectionHue:
                editor_->subtractSelectionHueSliderValue(pixel, source);
                break;
            case kToolSetTargetHue:
                editor_->setTargetHueSliderValue(pixel, source);
                break;
            default:
                break;
            }
        }
    }
    return QMainWindow::eventFilter(watched, event);
}

void ControlsWindow::showPicture(const KVBitmapPtr& bitmap)
{
    if (bitmap == nullptr) {
        return;
    }
    const std::uint64_t number = ++picturesAsked_;
    QPointer<ControlsWindow> window(this);
    QThreadPool::globalInstance()->start([window, bitmap, number] {
        QImage picture = previewImage(bitmap, kPreviewSide);
        // Checked on the main thread, where the window may have gone meanwhile.
        QMetaObject::invokeMethod(
            qApp,
            [window, number, picture = std::move(picture)] {
                if (window == nullptr || number <= window->pictureShown_) {
                    return;
                }
                window->pictureShown_ = number;
                window->preview_->setPixmap(QPixmap::fromImage(picture).scaled(
                    window->preview_->size(), Qt::KeepAspectRatio, Qt::SmoothTransformation));
            },
            Qt::QueuedConnection);
    });
}

} // namespace tintorra
