#pragma once

#include "imageio/ImageCodec.h"

namespace tintorra {

// Opens a TIFF file (classic or BigTIFF) held in memory: every page, strips or tiles, chunky or
// planar, 1 to 16 bits, RGB, grey, palette, CMYK, Lab and JPEG-compressed YCbCr, with alpha
// (associated alpha stays premultiplied) and the embedded ICC profile.
IOResult<std::unique_ptr<ImageReader>> openTiff(std::span<const std::uint8_t> data);

} // namespace tintorra
