#pragma once

#include "app/DocumentWindow.h"
#include "app/KVImageEditorDelegate.h"

#include <QMainWindow>
#include <QPointer>
#include <array>

class QAction;
class QActionGroup;
class QButtonGroup;
class QLabel;
class QMenu;
class QScrollArea;
class QSplitter;
class QToolButton;

namespace tintorra {

class DocumentController;
class Engine;
class KVImageEditorView;
class KVModifierKeyMonitor;
class KVPopupFrame;
class KVProgressSpinner;
class KVSwatchGrid;
class MainWindowDoc;
class TintorraVC;

// The window of one document: the source image above (or beside) the shifted one, each in an
// editor view with a bar of buttons over it, the editing panel at the side, and the menus. It
// owns the editor controller, keeps the two views scrolled and zoomed alike, shows a spinner
// while a shift runs, relays clicks in either image to the controller as clicks in the source,
// tracks the modifier keys and the space bar while it is active, and opens the spectrogram and
// the swatches in pop-ups.
class MainWindowWC : public QMainWindow, public DocumentWindow, public KVImageEditorDelegate {
    Q_OBJECT

public:
    MainWindowWC(Engine& engine, MainWindowDoc& document, DocumentController& controller,
                 QWidget* parent = nullptr);
    ~MainWindowWC() override;

    // The window's default: images one above the other.
    static void registerDefaults();

    MainWindowDoc& document() const { return document_; }
    TintorraVC* tintorraVC() const { return tintorraVC_; }
    KVImageEditorView* editorViewSrc() const { return editorViewSrc_; }
    KVImageEditorView* editorViewDst() const { return editorViewDst_; }
    KVProgressSpinner* progressIndicator() const { return progressIndicator_; }
    KVModifierKeyMonitor* modifierKeyMonitor() const { return keyMonitor_; }
    QButtonGroup* maskButtons() const { return maskButtons_; }
    QToolButton* spectrogramButton() const { return spectrogramButton_; }
    QToolButton* swatchesButton() const { return swatchesButton_; }
    KVPopupFrame* spectrumPopup() const { return spectrumPopup_; }
    KVPopupFrame* swatchesPopup() const { return swatchesPopup_; }
    KVSwatchGrid* swatchGrid() const { return swatchGrid_; }
    bool isImageLoaded() const { return imageLoaded_; }
    // The window's action of a menu command by its object name ("save", "zoomIn", ...).
    QAction* action(const QString& name) const;

    bool editorLayoutHorizontal() const { return editorLayoutHorizontal_; }
    void setEditorLayoutHorizontal(bool horizontal);
    void toggleEditorLayout();
    void toggleHistogram();
    void toggleSwatches();
    void closeHistogram();
    void closeSwatches();

    // DocumentWindow
    QWidget* widget() override { return this; }
    KVBitmapPtr inputImageRep() const override;
    KVBitmapPtr outputImageRep() const override;
    KVBitmapPtr exclusionMaskRep() const override;
    KVBitmapPtr inclusionMaskRep() const override;
    void setUndoRegistrationEnabled(bool enabled) override;
    void setEditorImageReps(std::vector<KVBitmapPtr> reps) override;
    QString hexEncodedStringFromHueShiftParameters() const override;
    bool setHueShiftParametersFromHexEncodedString(const QString& encoded) override;
    bool sourceViewHasImage() const override;
    bool canCopyOutput() const override;
    void copyOutput(QClipboard* clipboard) override;
    void synchronizeWindowTitleWithDocumentName() override;
    void setBusy(bool busy, const QString& message) override;

    // KVImageEditorDelegate: clicks in either view act on the same pixel of the source image.
    int currentSelectionTool() const override;
    int maskToShow() const override;
    QUndoStack* undoStack() const override;
    void setSelectionHue(QPoint pixel, const KVBitmapPtr& image) override;
    void addSelectionHue(QPoint pixel, const KVBitmapPtr& image) override;
    void subtractSelectionHue(QPoint pixel, const KVBitmapPtr& image) override;
    void setTargetHue(QPoint pixel, const KVBitmapPtr& image) override;
    void hoverOverImage(QPoint pixel, const KVBitmapPtr& image) override;
    void debugPixel(QPoint pixel, const KVBitmapPtr& image) override;
    KVBitmapPtr exclusionMaskForPainting() override;
    void exclusionMaskPainted(KVBitmapPtr mask) override;
    QByteArray dataForSaveFormat(int tag) const override;
    QString documentDisplayName() const override;

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void placeOnScreen();
    void buildViews();
    QWidget* buildSourcePane();
    QWidget* buildOutputPane();
    void buildMenus();
    void buildRecentMenu();
    void layoutSubviews();
    void updateActions();
    void openFile();

    void imageLoaded();
    void imageProcessed(const KVBitmapPtr& output);
    void processingStarted();
    void maskToShowChanged(int view);
    void setScrollingSynchronised(bool synchronised);
    KVBitmapPtr sourceImage() const;

    Engine& engine_;
    MainWindowDoc& document_;
    DocumentController& controller_;
    TintorraVC* tintorraVC_ = nullptr;
    QSplitter* controlsSplitView_ = nullptr;
    QSplitter* imagesSplitView_ = nullptr;
    QScrollArea* controlsScrollView_ = nullptr;
    KVImageEditorView* editorViewSrc_ = nullptr;
    KVImageEditorView* editorViewDst_ = nullptr;
    QWidget* evSrcTabBar_ = nullptr;
    QWidget* evDstTabBar_ = nullptr;
    QToolButton* spectrogramButton_ = nullptr;
    QToolButton* swatchesButton_ = nullptr;
    QButtonGroup* maskButtons_ = nullptr;
    KVProgressSpinner* progressIndicator_ = nullptr;
    KVProgressSpinner* busyIndicator_ = nullptr;
    QLabel* busyLabel_ = nullptr;
    KVPopupFrame* spectrumPopup_ = nullptr;
    KVPopupFrame* swatchesPopup_ = nullptr;
    KVSwatchGrid* swatchGrid_ = nullptr;
    KVModifierKeyMonitor* keyMonitor_ = nullptr;
    QMenu* recentMenu_ = nullptr;
    QActionGroup* maskActions_ = nullptr;
    bool imageLoaded_ = false;
    bool editorLayoutHorizontal_ = false;
    bool scrollingSynchronised_ = true;
    bool relayingScroll_ = false;
};

} // namespace tintorra
