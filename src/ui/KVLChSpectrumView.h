#pragma once

#include "colour/KVColorGamut.h"
#include "engine/HueSpectrum.h"
#include "ui/KVLChSpectrumGraph.h"
#include "ui/KVUndoGrouping.h"

#include <QImage>
#include <QString>
#include <QWidget>
#include <functional>
#include <memory>

namespace tintorra {

// User-info keys of the two click notifications.
inline const QString kSpectrumColorKey = QStringLiteral("color");
inline const QString kSpectrumWindowKey = QStringLiteral("window");

using LChSpectrumPtr = std::shared_ptr<const LChSpectrum>;

// The spectrogram of an image's hues: 361 bands across the width (each whole degree of hue and
// the achromatic colours) drawn as bars of pixel counts or as lines of lightness, chroma or
// saturation. A click picks a band's mean colour and tells whoever listens: plainly with
// "N_UserClickedOnLChColor", with shift held "N_UserShiftClickedOnLChColor". Alt-click switches
// the bars between a linear and a log scale; Control-click steps to the next graph and
// Control-Shift-click to the previous one.
class KVLChSpectrumView : public QWidget {
    Q_OBJECT

public:
    explicit KVLChSpectrumView(QWidget* parent = nullptr);

    const LChSpectrumPtr& spectrum() const { return spectrum_; }
    void setSpectrum(LChSpectrumPtr spectrum);
    const KVColorGamutPtr& colorGamut() const { return colorGamut_; }
    void setColorGamut(KVColorGamutPtr gamut);
    ColorSpaceModel colorSpaceModel() const { return colorSpaceModel_; }
    void setColorSpaceModel(ColorSpaceModel colorSpaceModel);
    KVSpectrumGraphType graphType() const { return graphType_; }
    void setGraphType(KVSpectrumGraphType graphType);
    bool drawLog() const { return drawLog_; }
    void setDrawLog(bool drawLog);

    // Opened on a press and closed on its release: whatever a click and its drag change is
    // undone at once.
    void setUndoGrouping(KVUndoGrouping grouping) { undoGrouping_ = std::move(grouping); }
    // Tells whether caps lock is on; by default the platform is asked (see capsLockIsOn).
    void setCapsLockProbe(std::function<bool()> probe) { capsLockProbe_ = std::move(probe); }

    // "Spectrogram (log(10), option-click for linear)" and its mirror, "Lightness", "Chroma" or
    // "Saturation".
    QString graphTypeLabel() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void respondToPress(const QMouseEvent& event);
    void pickColorAt(double x, bool shiftHeld);
    // The window whose controller the clicks are meant for: the one the view's own (pop-up)
    // window belongs to, or the view's own window when it has no parent.
    QWidget* controllerWindow() const;
    bool capsLockOn() const;
    void drawGraphTypeLabel(QPainter& painter) const;
    void invalidateGraph();
    const QImage& graphImage();

    LChSpectrumPtr spectrum_;
    KVColorGamutPtr colorGamut_;
    ColorSpaceModel colorSpaceModel_ = ColorSpaceModel::LChuv;
    KVSpectrumGraphType graphType_ = KVSpectrumGraphType::spectrogram;
    bool drawLog_ = false;

    KVUndoGrouping undoGrouping_;
    std::function<bool()> capsLockProbe_;
    bool undoGroupOpen_ = false;

    // The bars or lines at the current size and device pixel ratio; the label is drawn live.
    QImage graph_;
    bool graphValid_ = false;
};

} // namespace tintorra
