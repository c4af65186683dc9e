#pragma once

#include <Qt>
#include <cstddef>

namespace tintorra {

// What a press (or drag) on the spectrogram does, decided by the modifier keys alone: Shift,
// Alt and Control stand for the shift, option and command keys the rules were made with.
enum class KVSpectrumClickEffect {
    pick,
    toggleLogScale,
    nextGraphType,
    previousGraphType,
    nothing,
};

// Caps lock counts as a modifier of its own, so with it on a click does nothing. Keypad and
// mode-switch flags say where a key sits, not what the user holds, and are ignored.
KVSpectrumClickEffect spectrumClickEffect(Qt::KeyboardModifiers modifiers, bool capsLockOn);

// The hue band under x for a view `width` wide: 361 bands of equal width, the result truncated
// and kept within 0..359, so that the achromatic band 360 is never picked.
std::size_t spectrumBandAtX(double x, double width);

} // namespace tintorra
