#pragma once

#include "app/KVEditorToolRules.h"
#include "app/KVFileDropView.h"
#include "app/KVImageDisplayCache.h"
#include "app/KVImageEditorDelegate.h"
#include "app/KVMaskBrush.h"

#include <QPointer>
#include <vector>

class QClipboard;
class QScrollArea;

namespace tintorra {

// Shows one image (the source or the shifted result) in a scroll area, zoomed in fixed steps;
// turns clicks into colour picks for the editor according to the tool and the keys held; paints
// the exclusion mask with the brush; copies or drags the image out as data and as a file. It is
// a drop view too, so files and images can be dropped on it.
class KVImageEditorView : public KVFileDropView {
    Q_OBJECT

public:
    // The view lives inside a scroll area that it makes; the scroll area (scrollWidget()) is
    // what goes into a layout and owns the view.
    explicit KVImageEditorView(QWidget* parent = nullptr);
    ~KVImageEditorView() override;

    QWidget* scrollWidget();

    // [image, mask?]: the image shown and the mask laid over it while the brush is the tool. An
    // image of another size zooms to fit; one of the same size keeps zoom and scroll position.
    void setImageReps(std::vector<KVBitmapPtr> reps);
    const std::vector<KVBitmapPtr>& imageReps() const { return reps_; }
    KVBitmapPtr imageRep() const;

    void setImageEditorDelegate(KVImageEditorDelegate* delegate);
    KVImageEditorDelegate* imageEditorDelegate() const { return delegate_; }
    void setAllowsDrag(bool allows) { allowsDrag_ = allows; }
    bool allowsDrag() const { return allowsDrag_; }

    // Zoom factors count image pixels per logical screen pixel.
    double currentZoomFactor() const { return zoom_; }
    bool zoomedToFit() const { return zoomedToFit_; }
    static double nextZoomFactor(double factor, int direction);
    // `anchor` (image pixels) stays where it is on screen.
    void zoomToFactor(double factor, QPointF anchor);
    // The top-left of the visible part and its centre, in image pixels.
    QPointF visibleOrigin() const;
    QPointF visibleCenterPoint() const;

    // The pixel under a point of the view (see the coordinates note in the source), or (-1, -1).
    QPoint bitmapPointFromLocalPoint(QPointF point) const;

    bool canPutDataOnPasteboard() const;
    bool putDataOnPasteboard(QMimeData* data) const;
    bool putDataOnPasteboard(QClipboard* clipboard) const;

    // The brush's diameter in logical screen pixels; in image pixels it follows the zoom.
    double brushDiameter() const { return brushDiameter_; }
    void setBrushDiameter(double diameter);
    KVModifierKeys modifierKeys() const { return keys_; }

    KVImageDisplayCache& displayCache() { return cache_; }
    // The visible part of the image in the display cache's device pixels, and their scale.
    QRect visibleDeviceRect() const;
    double deviceScale() const { return zoom_ * devicePixelRatioF(); }

public slots:
    void zoomIn();
    void zoomOut();
    void zoomToFit();
    void zoomToActualSize();
    void setVisibleArea(QPointF originInImage, double zoom);
    void copy();

signals:
    void visibleAreaChanged(QPointF originInImage, double zoom);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    int currentTool() const;
    void applyGeometry(QPointF origin);
    QRect visibleLocalRect() const;
    QPointF imagePointFromLocal(QPointF local) const;
    // The centre of the device pixel under a mouse position.
    QPointF pixelCentre(QPointF position) const;
    void performClickAction(KVEditorClickAction action, QPointF local);
    void endPickingGroup();
    void updateCursor();
    void refreshOverlay();
    KVRenderSource renderSource() const;
    void finishBrushStroke();
    void startDragOut(QPointF local);
    void emitVisibleArea();
    void modifierKeysChanged(const QVariantMap& userInfo);

    QScrollArea* scrollArea_ = nullptr;
    QWidget* viewport_ = nullptr;
    KVImageDisplayCache cache_;
    std::vector<KVBitmapPtr> reps_;
    KVImageEditorDelegate* delegate_ = nullptr;
    bool allowsDrag_ = false;
    double zoom_ = 1.0;
    bool zoomedToFit_ = false;
    bool settingGeometry_ = false;

    KVModifierKeys keys_;
    bool mouseDown_ = false;
    QPointF mouseDownPoint_;
    QPointF mouseDownGlobalPoint_;
    QPointF mouseDownOrigin_;
    double mouseDownZoomFactor_ = 1.0;
    bool pickingGroupOpen_ = false;

    bool maskBrushing_ = false;
    KVMaskStroke stroke_;
    double brushDiameter_ = 24.0;
};

} // namespace tintorra
