#pragma once

#include "image/KVBitmap.h"

#include <cstdint>
#include <vector>

namespace tintorra {

// The painted coverage the workers read: one byte per pixel of the image, 0 = untouched, 255 =
// full effect. Empty when nothing is painted.
struct PaintCoverage {
    std::vector<std::uint8_t> bytes;
    std::int64_t bytesPerRow = 0;

    bool present() const { return !bytes.empty(); }
    std::uint8_t at(std::int64_t x, std::int64_t y) const
    {
        return bytes[static_cast<std::size_t>(y * bytesPerRow + x)];
    }
};

// Combines the inclusion and exclusion masks (grey coverage, 255 = painted; the first sample of
// other layouts, the high byte of 16-bit samples) into one coverage: where an inclusion mask
// exists only its painted parts are covered, and whatever the exclusion mask paints is taken
// away again, c = inclusion x (255 - exclusion) / 255 in integers. A mask whose size differs
// from the image's, or whose layout the pixel routines cannot address, is ignored.
PaintCoverage combinePaintMasks(const KVBitmapPtr& inclusionMask, const KVBitmapPtr& exclusionMask,
                                std::int64_t pixelsWide, std::int64_t pixelsHigh);

} // namespace tintorra
