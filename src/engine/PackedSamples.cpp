#include "engine/PackedSamples.h"

#include "image/PixelAccess.h"

namespace tintorra {

bool packedSampleSourceFromBitmap(const KVBitmapPtr& bitmap, double imageGamma,
                                  PackedSampleSource& source)
{
    if (!bitmap) {
        return false;
    }
    PixelManipulationOffsets offsets;
    if (!initializePixelManipulationOffsets(offsets, bitmap, imageGamma)) {
        return false;
    }
    if (offsets.pixelsWide <= 0 || offsets.pixelsHigh <= 0 || offsets.bytesPerRow < 0 ||
        offsets.bytesPerPixel <= 0) {
        return false;
    }
    const std::uint64_t highByte = offsets.bitsPerSample == 16 ? 1 : 0;
    source.data = offsets.bitmapData;
    source.pixelsWide = offsets.pixelsWide;
    source.pixelsHigh = offsets.pixelsHigh;
    source.bytesPerRow = offsets.bytesPerRow;
    source.bytesPerPixel = offsets.bytesPerPixel;
    source.redOffset = offsets.redOffset + highByte;
    source.greenOffset = offsets.greenOffset + highByte;
    source.blueOffset = offsets.blueOffset + highByte;
    source.alphaOffset = offsets.alphaOffset + highByte;
    source.hasAlpha = offsets.hasAlpha;
    source.premultiplied = offsets.premultiplied;
    source.imageGamma = offsets.imageGamma;
    return true;
}

} // namespace tintorra
