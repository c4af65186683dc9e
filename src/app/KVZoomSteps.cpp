#include "app/KVZoomSteps.h"

#include <algorithm>
#include <cmath>

namespace tintorra {

namespace {
// About 7 %: closer than this to a step counts as being on it.
constexpr double kStepTolerance = 0.1;
constexpr double kDragPointsPerDoubling = 75.0;
constexpr double kDragExponentLimit = 6.0;
} // namespace

double nextZoomStep(double factor, int direction)
{
    const double current = std::log2(factor);
    const auto n = static_cast<int>(kZoomSteps.size());
    if (direction < 0) {
        for (int k = n - 1; k >= 1; --k) {
            if (std::log2(kZoomSteps[k]) + kStepTolerance < current)
                return kZoomSteps[k];
        }
        return kZoomSteps.front();
    }
    for (int k = 0; k <= n - 2; ++k) {
        if (current < std::log2(kZoomSteps[k]) - kStepTolerance)
            return kZoomSteps[k];
    }
    return kZoomSteps.back();
}

QPointF anchoredZoomOrigin(QPointF anchor, QPointF oldOrigin, double oldFactor, double newFactor)
{
    return anchor - (anchor - oldOrigin) * (oldFactor / newFactor);
}

double dragZoomFactor(double factorAtPress, double horizontalMovement)
{
    const double exponent =
        std::clamp(std::log2(factorAtPress) + horizontalMovement / kDragPointsPerDoubling,
                   -kDragExponentLimit, kDragExponentLimit);
    return std::exp2(exponent);
}

} // namespace tintorra
