#include "colour/KVLChColor.h"

#include "colour/ColorConversions.h"

namespace tintorra {

ColorComponents KVLChColor::rgbUsingMatrix(const Matrix3& MI) const
{
    // The conversion ends in xyzToRgb, which clamps every channel and alpha to 0..1.
    return lchuvToRgb(lchColor(), MI);
}

} // namespace tintorra
