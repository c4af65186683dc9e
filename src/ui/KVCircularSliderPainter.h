#pragma once

#include <QColor>
#include <QFont>
#include <QString>

class QPainter;

namespace tintorra {

class KVCircularSliderGeometry;
class KVCircularSliderModel;
class KVSliderBackground;

// The colours and font of the moving parts, taken from the widget's palette.
struct KVCircularSliderLook {
    QColor selection; // the track along the selected span
    QColor veil;      // laid over the hues outside the selection
    QColor text;
    QFont labelFont;
    bool enabled = true;
};

// The value label: "%.1f°" of the value times 360.
QString circularSliderLabel(double value);

// One frame of a range slider over its prepared background: the selection (a track fading out
// across the fall-offs, and on a ring a veil over the hues outside it), the thumbs, and the value
// label when `drawLabel` is set.
void paintCircularSlider(QPainter& painter, const KVCircularSliderGeometry& geometry,
                         const KVCircularSliderModel& model, KVSliderBackground& background,
                         const KVCircularSliderLook& look, bool drawLabel);

} // namespace tintorra
