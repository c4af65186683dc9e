#include "app/MainWindowWC.h"

#include "app/DocumentController.h"
#include "app/KVImageEditorView.h"
#include "app/KVModifierKeyMonitor.h"
#include "app/KVPopupFrame.h"
#include "app/KVProgressSpinner.h"
#include "app/KVSwatchGrid.h"
#include "app/MainWindowDoc.h"
#include "app/SaveDialog.h"
#include "ui/KVSettings.h"
#include "ui/TintorraVC.h"

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QButtonGroup>
#include <QClipboard>
#include <QCloseEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenuBar>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QSplitter>
#include <QToolButton>
#include <QUndoStack>

namespace tintorra {

namespace {

// The bars of buttons over the two images.
constexpr int kButtonBarHeight = 22;

struct MaskButton {
    const char* icon;
    const char* toolTip;
    const char* menuText;
};

// The views of the output, in the order of maskToShow.
constexpr std::array<MaskButton, 4> kMaskButtons{{
    {"colorMask", QT_TRANSLATE_NOOP("MainWindowWC", "Hue Shifted Image"),
     QT_TRANSLATE_NOOP("MainWindowWC", "Hue Shifted Image")},
    {"selectedMask",
     QT_TRANSLATE_NOOP("MainWindowWC", "Highlight Selected Pixels\n(bright = fully selected, dark "
                                       "= partially selected)"),
     QT_TRANSLATE_NOOP("MainWindowWC", "Highlight Selected Pixels")},
    {"blackMask",
     QT_TRANSLATE_NOOP("MainWindowWC", "Black Mask\n(white = selected, black = excluded)"),
     QT_TRANSLATE_NOOP("MainWindowWC", "Black Mask")},
    {"whiteMask",
     QT_TRANSLATE_NOOP("MainWindowWC", "White Mask\n(black = selected, white = excluded)"),
     QT_TRANSLATE_NOOP("MainWindowWC", "White Mask")},
}};

QIcon barIcon(const QString& name)
{
    return QIcon(QStringLiteral(":/window/%1.svg").arg(name));
}

QToolButton* barButton(const QString& icon, const QString& toolTip, QWidget* parent)
{
    auto* button = new QToolButton(parent);
    button->setIcon(barIcon(icon));
    button->setToolTip(toolTip);
    button->setAutoRaise(true);
    button->setFixedSize(kButtonBarHeight + 6, kButtonBarHeight);
    button->setIconSize(QSize(16, 16));
    return button;
}

QWidget* buttonBar(QWidget* parent)
{
    auto* bar = new QWidget(parent);
    bar->setFixedHeight(kButtonBarHeight);
    auto* layout = new QHBoxLayout(bar);
    layout->setContentsMargins(4, 0, 4, 0);
    layout->setSpacing(2);
    return bar;
}

} // namespace

void MainWindowWC::registerDefaults()
{
    KVSettings::standard().registerDefaults({{kEditorLayoutHorizontalKey, false}});
}

MainWindowWC::MainWindowWC(Engine& engine, MainWindowDoc& document, DocumentController& controller,
                           QWidget* parent)
    : QMainWindow(parent), engine_(engine), document_(document), controller_(controller)
{
    registerDefaults();
    setAttribute(Qt::WA_DeleteOnClose);
    tintorraVC_ = new TintorraVC(engine_, document_.undoStack());
    keyMonitor_ = new KVModifierKeyMonitor(this);
    buildViews();
    buildMenus();
    editorLayoutHorizontal_ = KVSettings::standard().boolValue(kEditorLayoutHorizontalKey);
    layoutSubviews();

    connect(tintorraVC_, &TintorraVC::imageLoaded, this, &MainWindowWC::imageLoaded);
    connect(tintorraVC_, &TintorraVC::imageProcessed, this, &MainWindowWC::imageProcessed);
    connect(tintorraVC_, &TintorraVC::processingStarted, this, &MainWindowWC::processingStarted);
    connect(tintorraVC_, &TintorraVC::maskToShowChanged, this, &MainWindowWC::maskToShowChanged);
    connect(tintorraVC_, &TintorraVC::imageColorsChanged, this,
            [this] { swatchGrid_->setColors(tintorraVC_->imageColors()); });
    connect(&document_, &MainWindowDoc::modifiedChanged, this, &MainWindowWC::updateActions);
    connect(&document_, &MainWindowDoc::busyChanged, this, &MainWindowWC::updateActions);
    connect(document_.undoStack(), &QUndoStack::indexChanged, this, &MainWindowWC::updateActions);
    connect(QGuiApplication::clipboard(), &QClipboard::dataChanged, this,
            &MainWindowWC::updateActions);
    connect(&controller_, &DocumentController::recentDocumentsChanged, this,
            &MainWindowWC::buildRecentMenu);

    placeOnScreen();
    synchronizeWindowTitleWithDocumentName();
    updateActions();
}

MainWindowWC::~MainWindowWC()
{
    // The key monitor and the pop-ups go first: they point into the views.
    keyMonitor_->setActive(false);
    document_.setWindowController(nullptr);
}

void MainWindowWC::placeOnScreen()
{
    // Large enough for a photograph and the panel, never larger than the screen; a new window
    // steps down and right from the active one so that both stay visible.
    const QWidget* active = QApplication::activeWindow();
    const QScreen* screen = active ? active->screen() : QGuiApplication::primaryScreen();
    const QRect available = screen ? screen->availableGeometry() : QRect(0, 0, 1280, 800);
    const QSize size(std::min(1200, available.width() * 9 / 10),
                     std::min(820, available.height() * 9 / 10));
    resize(size);
    QPoint origin = available.topLeft() + QPoint((available.width() - size.width()) / 2,
                                                 (available.height() - size.height()) / 2);
    if (active && active != this)
        origin = active->pos() + QPoint(28, 28);
    if (!available.contains(QRect(origin, size)))
        origin = available.topLeft();
    move(origin);
}

void MainWindowWC::buildViews()
{
    editorViewSrc_ = new KVImageEditorView;
    editorViewSrc_->setObjectName(QStringLiteral("editorViewSrc"));
    editorViewSrc_->registerForDraggedImages();
    editorViewSrc_->setShowBorder(true);
    editorViewSrc_->setShowArrow(true);
    editorViewSrc_->setMessage(tr("Drop the original image here"));
    editorViewSrc_->setPrimaryColor(palette().color(QPalette::WindowText));
    editorViewSrc_->setDropDelegate(&document_);
    editorViewSrc_->setImageEditorDelegate(this);

    editorViewDst_ = new KVImageEditorView;
    editorViewDst_->setObjectName(QStringLiteral("editorViewDst"));
    editorViewDst_->setAllowsDrag(true);
    editorViewDst_->setAcceptsDrop(false);
    editorViewDst_->setShowArrow(true);
    editorViewDst_->setFlipArrow(true);
    editorViewDst_->setShowBorder(true);
    editorViewDst_->setMessage(tr("Drag out the shifted image"));
    editorViewDst_->setPrimaryColor(palette().color(QPalette::WindowText));
    editorViewDst_->setImageEditorDelegate(this);

    connect(editorViewSrc_, &KVImageEditorView::visibleAreaChanged, this,
            [this](QPointF origin, double zoom) {
                if (!scrollingSynchronised_ || relayingScroll_)
                    return;
                relayingScroll_ = true;
                editorViewDst_->setVisibleArea(origin, zoom);
                relayingScroll_ = false;
            });
    connect(editorViewDst_, &KVImageEditorView::visibleAreaChanged, this,
            [this](QPointF origin, double zoom) {
                if (!scrollingSynchronised_ || relayingScroll_)
                    return;
                relayingScroll_ = true;
                editorViewSrc_->setVisibleArea(origin, zoom);
                relayingScroll_ = false;
            });

    imagesSplitView_ = new QSplitter;
    imagesSplitView_->setChildrenCollapsible(false);
    imagesSplitView_->addWidget(buildSourcePane());
    imagesSplitView_->addWidget(buildOutputPane());

    controlsScrollView_ = new QScrollArea;
    controlsScrollView_->setObjectName(QStringLiteral("controlsScrollView"));
    controlsScrollView_->setWidget(tintorraVC_);
    controlsScrollView_->setWidgetResizable(true);
    controlsScrollView_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    controlsScrollView_->setFrameShape(QFrame::NoFrame);
    controlsScrollView_->setMinimumWidth(
        tintorraVC_->sizeHint().width() +
        controlsScrollView_->verticalScrollBar()->sizeHint().width());

    controlsSplitView_ = new QSplitter(Qt::Horizontal);
    controlsSplitView_->setChildrenCollapsible(false);
    controlsSplitView_->addWidget(imagesSplitView_);
    controlsSplitView_->addWidget(controlsScrollView_);
    controlsSplitView_->setStretchFactor(0, 1);
    controlsSplitView_->setStretchFactor(1, 0);
    setCentralWidget(controlsSplitView_);

    spectrumPopup_ = new KVPopupFrame(this);
    spectrumPopup_->setObjectName(QStringLiteral("spectrumPopup"));
    swatchesPopup_ = new KVPopupFrame(this);
    swatchesPopup_->setObjectName(QStringLiteral("swatchesPopup"));
    swatchGrid_ = new KVSwatchGrid;
    swatchesPopup_->setContent(swatchGrid_);
}

QWidget* MainWindowWC::buildSourcePane()
{
    auto* pane = new QWidget;
    auto* layout = new QVBoxLayout(pane);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    evSrcTabBar_ = buttonBar(pane);
    auto* bar = static_cast<QHBoxLayout*>(evSrcTabBar_->layout());
    spectrogramButton_ =
        barButton(QStringLiteral("spectrogramIcon"), tr("Show/Hide Spectrogram"), evSrcTabBar_);
    spectrogramButton_->setProperty("tag", 0);
    swatchesButton_ =
        barButton(QStringLiteral("swatchesIcon"), tr("Show/Hide Swatches"), evSrcTabBar_);
    swatchesButton_->setProperty("tag", 1);
    connect(spectrogramButton_, &QToolButton::clicked, this, &MainWindowWC::toggleHistogram);
    connect(swatchesButton_, &QToolButton::clicked, this, &MainWindowWC::toggleSwatches);
    bar->addWidget(spectrogramButton_);
    bar->addWidget(swatchesButton_);
    bar->addStretch(1);
    busyLabel_ = new QLabel(evSrcTabBar_);
    busyIndicator_ = new KVProgressSpinner(evSrcTabBar_);
    bar->addWidget(busyLabel_);
    bar->addWidget(busyIndicator_);
    evSrcTabBar_->setEnabled(false);
    layout->addWidget(evSrcTabBar_);
    layout->addWidget(editorViewSrc_->scrollWidget(), 1);
    return pane;
}

QWidget* MainWindowWC::buildOutputPane()
{
    auto* pane = new QWidget;
    auto* layout = new QVBoxLayout(pane);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    evDstTabBar_ = buttonBar(pane);
    auto* bar = static_cast<QHBoxLayout*>(evDstTabBar_->layout());
    maskButtons_ = new QButtonGroup(this);
    maskButtons_->setExclusive(true);
    for (int index = 0; index < static_cast<int>(kMaskButtons.size()); ++index) {
        const MaskButton& entry = kMaskButtons[static_cast<std::size_t>(index)];
        QToolButton* button =
            barButton(QString::fromLatin1(entry.icon), tr(entry.toolTip), evDstTabBar_);
        button->setCheckable(true);
        button->setObjectName(QString::fromLatin1(entry.icon));
        maskButtons_->addButton(button, index);
        bar->addWidget(button);
    }
    maskButtons_->button(0)->setChecked(true);
    connect(maskButtons_, &QButtonGroup::idClicked, this,
            [this](int view) { tintorraVC_->setMaskToShow(view); });
    bar->addStretch(1);
    progressIndicator_ = new KVProgressSpinner(evDstTabBar_);
    progressIndicator_->setToolTip(tr("Shifting the image\u2026"));
    bar->addWidget(progressIndicator_);
    evDstTabBar_->setEnabled(false);
    layout->addWidget(evDstTabBar_);
    layout->addWidget(editorViewDst_->scrollWidget(), 1);
    return pane;
}

void MainWindowWC::buildMenus()
{
    const auto add = [this](QMenu* menu, const QString& name, const QString& text,
                            const QKeySequence& shortcut, auto slot) {
        QAction* item = menu->addAction(text);
        item->setObjectName(name);
        if (!shortcut.isEmpty())
            item->setShortcut(shortcut);
        connect(item, &QAction::triggered, this, slot);
        return item;
    };

    QMenu* file = menuBar()->addMenu(tr("&File"));
    add(file, QStringLiteral("new"), tr("&New"), QKeySequence::New,
        [this] { controller_.newDocument(); });
    add(file, QStringLiteral("open"), tr("&Open\u2026"), QKeySequence::Open,
        [this] { openFile(); });
    recentMenu_ = file->addMenu(tr("Open &Recent"));
    connect(recentMenu_, &QMenu::aboutToShow, this, &MainWindowWC::buildRecentMenu);
    buildRecentMenu();
    file->addSeparator();
    add(file, QStringLiteral("close"), tr("&Close"), QKeySequence::Close, [this] { close(); });
    add(file, QStringLiteral("save"), tr("&Save"), QKeySequence::Save,
        [this] { document_.save(); });
    add(file, QStringLiteral("saveAs"), tr("Save &As\u2026"), QKeySequence::SaveAs,
        [this] { document_.saveAs(); });
    add(file, QStringLiteral("revert"), tr("Re&vert to Saved"), QKeySequence(),
        [this] { document_.revertToSaved(); });
    file->addSeparator();
    QAction* quit = add(file, QStringLiteral("quit"), tr("&Quit"), QKeySequence::Quit,
                        [this] { controller_.closeAll(); });
    quit->setMenuRole(QAction::QuitRole);

    QMenu* edit = menuBar()->addMenu(tr("&Edit"));
    QAction* undo = document_.undoStack()->createUndoAction(this, tr("&Undo"));
    undo->setObjectName(QStringLiteral("undo"));
    undo->setShortcut(QKeySequence::Undo);
    QAction* redo = document_.undoStack()->createRedoAction(this, tr("&Redo"));
    redo->setObjectName(QStringLiteral("redo"));
    redo->setShortcut(QKeySequence::Redo);
    edit->addAction(undo);
    edit->addAction(redo);
    edit->addSeparator();
    add(edit, QStringLiteral("copy"), tr("&Copy"), QKeySequence::Copy,
        [this] { document_.copy(); });
    add(edit, QStringLiteral("paste"), tr("&Paste"), QKeySequence::Paste,
        [this] { document_.paste(); });

    QMenu* view = menuBar()->addMenu(tr("&View"));
    QAction* zoomIn = add(view, QStringLiteral("zoomIn"), tr("Zoom &In"), QKeySequence::ZoomIn,
                          [this] { editorViewSrc_->zoomIn(); });
    zoomIn->setShortcuts({QKeySequence::ZoomIn, QKeySequence(Qt::CTRL | Qt::Key_Equal)});
    add(view, QStringLiteral("zoomOut"), tr("Zoom &Out"), QKeySequence::ZoomOut,
        [this] { editorViewSrc_->zoomOut(); });
    add(view, QStringLiteral("zoomToFit"), tr("Zoom to &Fit"), QKeySequence(Qt::CTRL | Qt::Key_0),
        [this] { editorViewSrc_->zoomToFit(); });
    add(view, QStringLiteral("actualSize"), tr("&Actual Size"), QKeySequence(Qt::CTRL | Qt::Key_1),
        [this] { editorViewSrc_->zoomToActualSize(); });
    view->addSeparator();
    QAction* layout = add(view, QStringLiteral("toggleEditorLayout"), tr("Images &Side by Side"),
                          QKeySequence(), [this] { toggleEditorLayout(); });
    layout->setCheckable(true);
    view->addSeparator();
    maskActions_ = new QActionGroup(this);
    for (int index = 0; index < static_cast<int>(kMaskButtons.size()); ++index) {
        QAction* item = add(view, QStringLiteral("mask%1").arg(index),
                            tr(kMaskButtons[static_cast<std::size_t>(index)].menuText),
                            QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key(Qt::Key_1 + index)),
                            [this, index] { tintorraVC_->setMaskToShow(index); });
        item->setCheckable(true);
        item->setChecked(index == 0);
        maskActions_->addAction(item);
    }
    view->addSeparator();
    add(view, QStringLiteral("toggleHistogram"), tr("Show/Hide Spectrogram"), QKeySequence(),
        [this] { toggleHistogram(); });
    add(view, QStringLiteral("toggleSwatches"), tr("Show/Hide Swatches"), QKeySequence(),
        [this] { toggleSwatches(); });

    for (QMenu* menu : {file, edit, view})
        connect(menu, &QMenu::aboutToShow, this, &MainWindowWC::updateActions);
}

QAction* MainWindowWC::action(const QString& name) const
{
    return findChild<QAction*>(name);
}

void MainWindowWC::buildRecentMenu()
{
    recentMenu_->clear();
    const QStringList recent = controller_.recentDocuments();
    for (const QString& path : recent) {
        QAction* item = recentMenu_->addAction(QFileInfo(path).fileName());
        item->setToolTip(path);
        connect(item, &QAction::triggered, this, [this, path] { controller_.openDocument(path); });
    }
    if (!recent.isEmpty())
        recentMenu_->addSeparator();
    QAction* clear = recentMenu_->addAction(tr("Clear Menu"));
    clear->setEnabled(!recent.isEmpty());
    connect(clear, &QAction::triggered, this, [this] { controller_.clearRecentDocuments(); });
}

void MainWindowWC::openFile()
{
    QStringList patterns;
    for (const char* pattern : {"*.tiff", "*.tif", "*.png", "*.jpg", "*.jpeg", "*.jpe", "*.jp2",
                                "*.j2k", "*.bmp", "*.gif"})
        patterns << QString::fromLatin1(pattern);
    const QStringList paths = QFileDialog::getOpenFileNames(
        this, tr("Open"), QString(),
        tr("Images (%1);;All files (*)").arg(patterns.join(QLatin1Char(' '))));
    for (const QString& path : paths)
        controller_.openDocument(path);
}

void MainWindowWC::updateActions()
{
    const auto enable = [this](const char* name, bool enabled) {
        if (QAction* item = action(QString::fromLatin1(name)))
            item->setEnabled(enabled);
    };
    enable("save", document_.validateAction(DocumentAction::save));
    enable("saveAs", document_.validateAction(DocumentAction::saveAs));
    enable("revert", document_.validateAction(DocumentAction::revert));
    enable("copy", document_.validateAction(DocumentAction::copy));
    enable("paste", document_.validateAction(DocumentAction::paste));
    const bool hasImage = sourceViewHasImage();
    for (const char* name : {"zoomIn", "zoomOut", "zoomToFit", "actualSize"})
        enable(name, hasImage);
    enable("toggleHistogram", imageLoaded_);
    enable("toggleSwatches", imageLoaded_);
    const bool hasOutput = editorViewDst_->imageRep() != nullptr;
    for (QAction* item : maskActions_->actions())
        item->setEnabled(hasOutput);
    if (QAction* layout = action(QStringLiteral("toggleEditorLayout")))
        layout->setChecked(editorLayoutHorizontal_);
}

void MainWindowWC::setEditorLayoutHorizontal(bool horizontal)
{
    editorLayoutHorizontal_ = horizontal;
    KVSettings::standard().setValue(kEditorLayoutHorizontalKey, horizontal);
    layoutSubviews();
    updateActions();
}

void MainWindowWC::toggleEditorLayout()
{
    setEditorLayoutHorizontal(!editorLayoutHorizontal_);
}

void MainWindowWC::layoutSubviews()
{
    // One above the other by default: wide photographs use the window's width that way.
    imagesSplitView_->setOrientation(editorLayoutHorizontal_ ? Qt::Horizontal : Qt::Vertical);
    const int extent =
        editorLayoutHorizontal_ ? imagesSplitView_->width() : imagesSplitView_->height();
    const int half = std::max(1, extent / 2);
    imagesSplitView_->setSizes({half, half});
}

void MainWindowWC::resizeEvent(QResizeEvent* event)
{
    closeHistogram();
    closeSwatches();
    QMainWindow::resizeEvent(event);
}

void MainWindowWC::toggleHistogram()
{
    if (spectrumPopup_->isVisible()) {
        closeHistogram();
        return;
    }
    closeSwatches();
    if (!imageLoaded_ || !tintorraVC_->spectrumView())
        return;
    if (spectrumPopup_->content() != tintorraVC_->spectrumView()) {
        tintorraVC_->spectrumView()->setMinimumSize(480, 220);
        spectrumPopup_->setContent(tintorraVC_->spectrumView());
    }
    spectrumPopup_->showBelow(spectrogramButton_);
}

void MainWindowWC::toggleSwatches()
{
    if (swatchesPopup_->isVisible()) {
        closeSwatches();
        return;
    }
    closeHistogram();
    if (!imageLoaded_)
        return;
    swatchGrid_->setColors(tintorraVC_->imageColors());
    swatchesPopup_->showBelow(swatchesButton_);
}

void MainWindowWC::closeHistogram()
{
    spectrumPopup_->hide();
}

void MainWindowWC::closeSwatches()
{
    swatchesPopup_->hide();
}

void MainWindowWC::setScrollingSynchronised(bool synchronised)
{
    scrollingSynchronised_ = synchronised;
    if (synchronised && editorViewDst_->imageRep() && editorViewSrc_->imageRep()) {
        relayingScroll_ = true;
        editorViewDst_->setVisibleArea(editorViewSrc_->visibleOrigin(),
                                       editorViewSrc_->currentZoomFactor());
        relayingScroll_ = false;
    }
}

void MainWindowWC::imageLoaded()
{
    setScrollingSynchronised(false);
    std::vector<KVBitmapPtr> reps{tintorraVC_->sourceRep()};
    if (KVBitmapPtr mask = tintorraVC_->exMaskRep())
        reps.push_back(std::move(mask));
    editorViewSrc_->setImageReps(std::move(reps));
    editorViewDst_->setImageReps({});
    progressIndicator_->startAnimation();
    imageLoaded_ = true;
    evSrcTabBar_->setEnabled(true);
    swatchGrid_->setColors(tintorraVC_->imageColors());
    updateActions();
}

void MainWindowWC::imageProcessed(const KVBitmapPtr& output)
{
    progressIndicator_->stopAnimation();
    if (output) {
        std::vector<KVBitmapPtr> reps{output};
        if (KVBitmapPtr exclusion = tintorraVC_->exMaskRep()) {
            reps.push_back(std::move(exclusion));
            if (KVBitmapPtr inclusion = tintorraVC_->inMaskRep())
                reps.push_back(std::move(inclusion));
        }
        editorViewDst_->setImageReps(std::move(reps));
    } else {
        editorViewDst_->setImageReps({});
    }
    evDstTabBar_->setEnabled(output != nullptr);
    setScrollingSynchronised(true);
    // A result made from a plain image file is unsaved work; the program's own file, reopened,
    // stays unchanged until the user changes something.
    if (output && !document_.hasOwnDocumentFile() && !document_.undoStack()->canUndo())
        document_.updateChangeCountDone();
    updateActions();
}

void MainWindowWC::processingStarted()
{
    progressIndicator_->startAnimation();
}

void MainWindowWC::maskToShowChanged(int view)
{
    if (QAbstractButton* button = maskButtons_->button(view))
        button->setChecked(true);
    const QList<QAction*> items = maskActions_->actions();
    if (view >= 0 && view < items.size())
        items[view]->setChecked(true);
}

KVBitmapPtr MainWindowWC::sourceImage() const
{
    return editorViewSrc_->imageRep();
}

KVBitmapPtr MainWindowWC::inputImageRep() const
{
    return tintorraVC_->sourceRep();
}

KVBitmapPtr MainWindowWC::outputImageRep() const
{
    return tintorraVC_->destinationRep();
}

KVBitmapPtr MainWindowWC::exclusionMaskRep() const
{
    return tintorraVC_->exMaskRep();
}

KVBitmapPtr MainWindowWC::inclusionMaskRep() const
{
    return tintorraVC_->inMaskRep();
}

void MainWindowWC::setUndoRegistrationEnabled(bool enabled)
{
    tintorraVC_->setUndoRegistrationEnabled(enabled);
}

void MainWindowWC::setEditorImageReps(std::vector<KVBitmapPtr> reps)
{
    if (reps.empty()) {
        imageLoaded_ = false;
        evSrcTabBar_->setEnabled(false);
        evDstTabBar_->setEnabled(false);
    }
    tintorraVC_->setImageReps(std::move(reps));
}

QString MainWindowWC::hexEncodedStringFromHueShiftParameters() const
{
    return tintorraVC_->hexEncodedStringFromHueShiftParameters();
}

bool MainWindowWC::setHueShiftParametersFromHexEncodedString(const QString& encoded)
{
    return tintorraVC_->setHueShiftParametersFromHexEncodedString(encoded);
}

bool MainWindowWC::sourceViewHasImage() const
{
    return editorViewSrc_->imageRep() != nullptr;
}

bool MainWindowWC::canCopyOutput() const
{
    return editorViewDst_->canPutDataOnPasteboard();
}

void MainWindowWC::copyOutput(QClipboard* clipboard)
{
    editorViewDst_->putDataOnPasteboard(clipboard);
}

void MainWindowWC::synchronizeWindowTitleWithDocumentName()
{
    setWindowTitle(document_.displayName() + QStringLiteral("[*]"));
    setWindowModified(document_.isModified());
}

void MainWindowWC::setBusy(bool busy, const QString& message)
{
    busyLabel_->setText(busy ? message : QString());
    if (busy)
        busyIndicator_->startAnimation();
    else
        busyIndicator_->stopAnimation();
    updateActions();
}

int MainWindowWC::currentSelectionTool() const
{
    return tintorraVC_->currentSelectionTool();
}

int MainWindowWC::maskToShow() const
{
    return tintorraVC_->maskToShow();
}

QUndoStack* MainWindowWC::undoStack() const
{
    return document_.undoStack();
}

void MainWindowWC::setSelectionHue(QPoint pixel, const KVBitmapPtr&)
{
    tintorraVC_->setSelectionHueSliderValue(pixel, sourceImage());
}

void MainWindowWC::addSelectionHue(QPoint pixel, const KVBitmapPtr&)
{
    tintorraVC_->addSelectionHueSliderValue(pixel, sourceImage());
}

void MainWindowWC::subtractSelectionHue(QPoint pixel, const KVBitmapPtr&)
{
    tintorraVC_->subtractSelectionHueSliderValue(pixel, sourceImage());
}

void MainWindowWC::setTargetHue(QPoint pixel, const KVBitmapPtr&)
{
    tintorraVC_->setTargetHueSliderValue(pixel, sourceImage());
}

void MainWindowWC::hoverOverImage(QPoint pixel, const KVBitmapPtr& image)
{
    tintorraVC_->mouseMovedOverImage(pixel, image);
}

void MainWindowWC::debugPixel(QPoint pixel, const KVBitmapPtr& image)
{
    tintorraVC_->debugImagePixel(pixel, image);
}

KVBitmapPtr MainWindowWC::exclusionMaskForPainting()
{
    return tintorraVC_->exclusionMaskForPainting();
}

void MainWindowWC::exclusionMaskPainted(KVBitmapPtr mask)
{
    tintorraVC_->setExclusionMask(mask);
    editorViewSrc_->setImageReps({tintorraVC_->sourceRep(), std::move(mask)});
}

QByteArray MainWindowWC::dataForSaveFormat(int tag) const
{
    return document_.dataForSaveFormat(tag);
}

QString MainWindowWC::documentDisplayName() const
{
    return document_.displayName();
}

void MainWindowWC::closeEvent(QCloseEvent* event)
{
    closeHistogram();
    closeSwatches();
    if (document_.shouldCloseWindow())
        event->accept();
    else
        event->ignore();
}

void MainWindowWC::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::ActivationChange)
        keyMonitor_->setActive(isActiveWindow());
    QMainWindow::changeEvent(event);
}

} // namespace tintorra
