#pragma once

#include <QPointF>
#include <array>

namespace tintorra {

// The zoom factors an editor view steps through, ascending.
inline constexpr std::array<double, 24> kZoomSteps = {
    0.02, 0.03, 0.04, 0.05, 0.0625, 1.0 / 12.0, 0.125, 1.0 / 6.0, 0.25, 1.0 / 3.0, 0.5,  2.0 / 3.0,
    1.0,  1.5,  2.0,  3.0,  4.0,    5.0,        6.0,   8.0,       12.0, 16.0,      32.0, 64.0};

// The next step from `factor` in `direction` (< 0 out, >= 0 in). A factor within a tenth of a
// binary order of magnitude of a step counts as that step, so a zoom always moves visibly;
// factors beyond the table clamp to its ends.
double nextZoomStep(double factor, int direction);

// The top-left corner of the visible area after a zoom from `oldFactor` to `newFactor` that keeps
// `anchor` where it was on screen. All points in image coordinates.
QPointF anchoredZoomOrigin(QPointF anchor, QPointF oldOrigin, double oldFactor, double newFactor);

// The zoom of a press-and-drag zoom: 75 points of horizontal movement double (or halve) the
// factor at the press, within 2^-6 .. 2^6.
double dragZoomFactor(double factorAtPress, double horizontalMovement);

} // namespace tintorra
