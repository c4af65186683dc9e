#include "colour/KVLChColor.h"

#include "colour/ColorConversions.h"

#include <algorithm>

namespace tintorra {

ColorComponents KVLChColor::rgbUsingMatrix(const Matrix3& MI) const
{
    const ColorComponents rgb = lchuvToRgb(lchColor(), MI);
    const auto unit = [](double c) { return std::clamp(c, 0.0, 1.0); };
    return {unit(rgb.c0), unit(rgb.c1), unit(rgb.c2), unit(rgb.alpha)};
}

} // namespace tintorra
