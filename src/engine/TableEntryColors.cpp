#include "engine/TableEntryColors.h"

#include <cmath>

namespace tintorra {

PixelChars encodedColor(ColorComponents c, const PixelManipulationOffsets& destination,
                        const SampleEncodeTable& encode)
{
    using pixelDetail::encodeChar;
    const bool premultiply = destination.hasAlpha && destination.premultiplied;
    if (!premultiply || c.alpha == 1.0) {
        return {static_cast<std::uint8_t>(encode(c.c0)), static_cast<std::uint8_t>(encode(c.c1)),
                static_cast<std::uint8_t>(encode(c.c2)), encodeChar(c.alpha)};
    }
    if (destination.imageGamma != 1.0) {
        c.c0 = std::pow(c.c0, destination.imageGamma);
        c.c1 = std::pow(c.c1, destination.imageGamma);
        c.c2 = std::pow(c.c2, destination.imageGamma);
    }
    return {encodeChar(c.c0 * c.alpha), encodeChar(c.c1 * c.alpha), encodeChar(c.c2 * c.alpha),
            encodeChar(c.alpha)};
}

} // namespace tintorra
