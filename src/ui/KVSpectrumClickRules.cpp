#include "ui/KVSpectrumClickRules.h"

#include "engine/HueSpectrum.h"

#include <cmath>

namespace tintorra {

KVSpectrumClickEffect spectrumClickEffect(Qt::KeyboardModifiers modifiers, bool capsLockOn)
{
    if (capsLockOn) {
        return KVSpectrumClickEffect::nothing;
    }
    const Qt::KeyboardModifiers held = modifiers & ~(Qt::KeypadModifier | Qt::GroupSwitchModifier);
    if (held == Qt::NoModifier || held == Qt::ShiftModifier) {
        return KVSpectrumClickEffect::pick;
    }
    if (held == Qt::AltModifier) {
        return KVSpectrumClickEffect::toggleLogScale;
    }
    if (held == Qt::ControlModifier) {
        return KVSpectrumClickEffect::nextGraphType;
    }
    if (held == (Qt::ControlModifier | Qt::ShiftModifier)) {
        return KVSpectrumClickEffect::previousGraphType;
    }
    return KVSpectrumClickEffect::nothing;
}

std::size_t spectrumBandAtX(double x, double width)
{
    constexpr double lastPickable = static_cast<double>(kAchromaticBand - 1);
    const double bandWidth = width / static_cast<double>(kSpectrumBandCount);
    const double band = std::trunc(x / bandWidth);
    // Also catches the NaN of a view of no width.
    if (!(band > 0.0)) {
        return 0;
    }
    return static_cast<std::size_t>(band > lastPickable ? lastPickable : band);
}

} // namespace tintorra
