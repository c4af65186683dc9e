#pragma once

#include "controls/KVSliderValues.h"

#include <QImage>
#include <QPixmap>
#include <QString>
#include <array>
#include <memory>
#include <optional>

namespace tintorra {

// The pictures the welcome pages show, made by the program's own controls and engine rather
// than drawn by hand, so that the pages look like the program: the sample image (the application
// icon) before and after a shift, its black mask, and the controls set for that shift. Needs a
// QApplication; everything is computed at once on the calling thread.
class WelcomeIllustrations {
public:
    WelcomeIllustrations();
    ~WelcomeIllustrations();

    QImage sourceImage() const;
    QImage shiftedImage() const;
    QImage maskImage() const;
    // The "tolm" parameter string of the shift, as a document keeps it.
    QString parameterString() const;

    // The controls at the given size in points, rendered at twice that for print. The
    // selection ring shows `values` (the shift's own range when none are given).
    QPixmap selectionHueRing(int side, std::optional<KVSliderValues> values = {}) const;
    // Where the selection ring's middle, upper and upper fall-off thumbs sit in it.
    std::array<QPointF, 3> selectionThumbs(int side, const KVSliderValues& values) const;
    QPixmap targetHueRing(int side) const;
    QPixmap saturationSlider(QSize size) const;
    QPixmap brightnessCurve(QSize size) const;
    QPixmap spectrogram(QSize size) const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace tintorra
