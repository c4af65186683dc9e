#pragma once

#include "controls/KVCircularSliderModel.h"

#include <cmath>

namespace tintorra::testSupport {

// 2^-53: one unit in the last place just below 1.0.
inline double ulpBelowOne()
{
    return std::ldexp(1.0, -53);
}

// The largest total of the offsets on the default ring, worked out independently: 1.0 lowered by
// 100 units in the last place.
inline double ringTotal()
{
    return 1.0 - 100.0 * ulpBelowOne();
}

inline double offsetSum(const KVSliderOffsets& o)
{
    return o.upperFalloffOffset + o.upperOffset + o.lowerOffset + o.lowerFalloffOffset;
}

// A slider holding the given offsets, with or without centring.
inline KVCircularSliderModel sliderWith(bool wraps, const KVSliderOffsets& offsets,
                                        bool centering = true)
{
    KVCircularSliderModel slider(wraps);
    slider.setCenterThumbWithinOffsets(centering);
    slider.setOffsets(offsets);
    return slider;
}

// The ring at 0.5 with bounds 0.125 and fall-offs 0.0625 on each side.
inline const KVSliderOffsets kRingAtHalf{0.0625, 0.125, 0.5, 0.125, 0.0625};

} // namespace tintorra::testSupport
