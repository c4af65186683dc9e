#pragma once

#include "colour/ColorComponents.h"
#include "colour/ColorMatrices.h"
#include "colour/WorkingSpaces.h"

#include <algorithm>
#include <cmath>

namespace tintorra::testing {

// The sRGB working space's matrices, built the way the program builds them.
// The largest error of fastAtan2 against atan2, measured over a sweep of 36000 directions:
// 0.01015 rad (0.58 degrees), reached near +-97 degrees.
inline constexpr double kFastAtan2MaxError = 0.0102;

inline Matrix3 srgbToXyzMatrix()
{
    return matrixFromChromaticities(sRGBChromaticities());
}

inline Matrix3 xyzToSrgbMatrix()
{
    Matrix3 inverse{};
    invertMatrix3(inverse, srgbToXyzMatrix());
    return inverse;
}

// Calls visit(rgb) for every point of an n x n x n grid over the RGB unit cube.
template <typename Visit>
void forEachGridColor(int n, Visit visit)
{
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j) {
            for (int k = 0; k < n; ++k) {
                visit(
                    ColorComponents{i / double(n - 1), j / double(n - 1), k / double(n - 1), 1.0});
            }
        }
    }
}

inline double largestChannelError(ColorComponents a, ColorComponents b)
{
    return std::max({std::fabs(a.c0 - b.c0), std::fabs(a.c1 - b.c1), std::fabs(a.c2 - b.c2),
                     std::fabs(a.alpha - b.alpha)});
}

} // namespace tintorra::testing
