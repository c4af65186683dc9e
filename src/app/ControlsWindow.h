#pragma once

#include "controls/KVHueShiftParameterSet.h"
#include "editor/LiveShifter.h"
#include "engine/Engine.h"
#include "ui/KVLChSpectrumView.h"

#include <QLabel>
#include <QMainWindow>
#include <thread>

namespace tintorra {

class KVCircularSlider;
class KVTenSegmentSlider;

// The editor's controls on their own, bound to a live parameter set: the selection's hue,
// saturation and brightness ranges, the target hue, the brightness curve and the spectrogram of
// an image, with the image shifted live beside them. It stands in for the document window until
// that window exists.
class ControlsWindow : public QMainWindow {
    Q_OBJECT

public:
    ControlsWindow(Engine& engine, KVBitmapPtr image, QWidget* parent = nullptr);
    ~ControlsWindow() override;

private:
    void buildControls();
    // Builds the gamut, colour table and spectrum of the image on a thread of its own and hands
    // them to the main thread when done.
    void describeImageInBackground();
    void showImageDescription(KVColorGamutPtr gamut, ColorTablePtr table, LChSpectrumPtr spectrum);
    void parametersChanged();
    // Asks for the image shifted with the current parameters; the newest answer is shown.
    void requestShift();
    void showShifted(std::uint64_t request, const QImage& preview);

    Engine& engine_;
    KVBitmapPtr image_;
    KVHueShiftParameterSet parameters_;
    KVCircularSlider* sourceHue_ = nullptr;
    KVCircularSlider* targetHue_ = nullptr;
    KVCircularSlider* sourceSaturation_ = nullptr;
    KVCircularSlider* sourceBrightness_ = nullptr;
    KVTenSegmentSlider* brightnessCurve_ = nullptr;
    KVLChSpectrumView* spectrum_ = nullptr;
    QLabel* summary_ = nullptr;
    QLabel* preview_ = nullptr;
    KVColorGamutPtr gamut_;
    ColorTablePtr table_;
    LChSpectrumPtr spectrumData_;
    std::uint64_t shownRequest_ = 0;
    // Declared last: its thread delivers into the members above until it is gone.
    LiveShifter shifter_;
    std::jthread describing_;
};

} // namespace tintorra
