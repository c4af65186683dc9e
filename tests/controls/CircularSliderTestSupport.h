#pragma once

#include "controls/KVCircularSliderModel.h"

#include <cmath>

namespace tintorra::testing_support {

// The largest total of the offsets on the default ring, worked out independently: 1.0 lowered by
// 100 units in the last place below 1.0 (2^-53 each).
inline double ringTotal()
{
    return 1.0 - std::ldexp(100.0, -53);
}

inline double offsetSum(const KVSliderOffsets& o)
{
    return o.upperFalloffOffset + o.upperOffset + o.lowerOffset + o.lowerFalloffOffset;
}

// A ring whose middle sits at 0.5 with bounds 0.125 and fall-offs 0.0625 on each side.
inline KVCircularSliderModel ringAtHalf(bool centering = true)
{
    KVCircularSliderModel ring(true);
    ring.setCenterThumbWithinOffsets(centering);
    ring.setOffsets({0.0625, 0.125, 0.5, 0.125, 0.0625});
    return ring;
}

// A straight slider with the middle at 0.5, bounds 0.25 and no fall-offs.
inline KVCircularSliderModel straightAtHalf(bool centering = true)
{
    KVCircularSliderModel straight(false);
    straight.setCenterThumbWithinOffsets(centering);
    straight.setOffsets({0.0, 0.25, 0.5, 0.25, 0.0});
    return straight;
}

} // namespace tintorra::testing_support
