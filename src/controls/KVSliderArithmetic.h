#pragma once

#include "colour/ColorConversions.h"

#include <cmath>

namespace tintorra {

// x raised by n units in the last place, as a slider keeps a value just clear of a bound.
inline double nudgeUp(double x, double n)
{
    return x - (x - std::nextafter(x, x + 1.0)) * n;
}

// x lowered by n units in the last place.
inline double nudgeDown(double x, double n)
{
    return x - (x - std::nextafter(x, x - 1.0)) * n;
}

// How far `to` lies from `from` when walking one way round a circle of the given period: in
// [0, period) for a positive period, in [period, 0) for a negative one, 0 for a zero period.
inline double forwardDistance(double from, double to, double period)
{
    return wrapIntoRangeOffset(to, from, from + period);
}

} // namespace tintorra
