#include "colour/CieConversions.h"

#include "colour/ColorMatrices.h"

namespace tintorra {

ColorComponents rgbToXyzFromChromaticities(ColorComponents rgba,
                                           const ColorSpaceChromaticities& chromaticities)
{
    return rgbToXyz(rgba, matrixFromChromaticities(chromaticities));
}

ColorComponents xyzToRgbFromChromaticities(ColorComponents xyza,
                                           const ColorSpaceChromaticities& chromaticities)
{
    Matrix3 inverse{};
    invertMatrix3(inverse, matrixFromChromaticities(chromaticities));
    return xyzToRgb(xyza, inverse);
}

} // namespace tintorra
