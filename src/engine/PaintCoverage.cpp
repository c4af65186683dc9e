#include "engine/PaintCoverage.h"

#include "image/PixelAccess.h"

namespace tintorra {

namespace {

bool usableMask(const KVBitmapPtr& mask, const PixelManipulationOffsets& offsets,
                std::int64_t pixelsWide, std::int64_t pixelsHigh)
{
    return mask != nullptr && offsets.supported && offsets.pixelsWide == pixelsWide &&
           offsets.pixelsHigh == pixelsHigh;
}

} // namespace

PaintCoverage combinePaintMasks(const KVBitmapPtr& inclusionMask, const KVBitmapPtr& exclusionMask,
                                std::int64_t pixelsWide, std::int64_t pixelsHigh)
{
    // The coverage bytes are stored samples, so the masks are read without any decoding.
    const PixelManipulationOffsets inclusion =
        pixelManipulationOffsetsWithImageGamma(inclusionMask, 1.0);
    const PixelManipulationOffsets exclusion =
        pixelManipulationOffsetsWithImageGamma(exclusionMask, 1.0);
    const bool include = usableMask(inclusionMask, inclusion, pixelsWide, pixelsHigh);
    const bool exclude = usableMask(exclusionMask, exclusion, pixelsWide, pixelsHigh);
    PaintCoverage coverage;
    if (!include && !exclude) {
        return coverage;
    }
    coverage.bytesPerRow = pixelsWide;
    coverage.bytes.resize(static_cast<std::size_t>(pixelsWide * pixelsHigh));
    for (std::int64_t y = 0; y < pixelsHigh; ++y) {
        for (std::int64_t x = 0; x < pixelsWide; ++x) {
            unsigned c = 255;
            PixelChars sample;
            if (include) {
                readGammaChars(x, y, inclusion, sample);
                c = sample.r;
            }
            if (exclude) {
                readGammaChars(x, y, exclusion, sample);
                c = c * (255u - sample.r) / 255u;
            }
            coverage.bytes[static_cast<std::size_t>(y * pixelsWide + x)] =
                static_cast<std::uint8_t>(c);
        }
    }
    return coverage;
}

} // namespace tintorra
