#include "image/PixelAccess.h"

#include "common/Diagnostics.h"

#include <algorithm>
#include <cstdio>
#include <optional>

namespace tintorra {

namespace pixelDetail {

void reportUnsupportedPixelFormat()
{
    diagnostic("Unsupported pixel format");
}

} // namespace pixelDetail

namespace {

constexpr int kGreyModel = 0;
constexpr int kRGBModel = 1;

struct ChannelOffsets {
    std::uint64_t red = 0;
    std::uint64_t green = 0;
    std::uint64_t blue = 0;
    std::uint64_t grey = 0;
    std::uint64_t alpha = 0;
};

// Offsets in samples for chunky layouts and in bytes from the data to the plane for planar
// ones; nothing for sample counts the pixel routines cannot address.
std::optional<ChannelOffsets> channelOffsets(const PixelManipulationOffsets& record)
{
    const bool alphaFirst = (record.bitmapFormat & kBitmapFormatAlphaFirst) != 0;
    std::uint64_t plane[5] = {};
    for (int k = 0; k < 5; ++k) {
        if (record.planes[k] != nullptr) {
            plane[k] = static_cast<std::uint64_t>(record.planes[k] - record.bitmapData);
        }
    }

    ChannelOffsets offsets;
    switch (record.samplesPerPixel) {
    case 1:
        break;
    case 2:
        if (record.isPlanar) {
            offsets.grey = alphaFirst ? plane[1] : plane[0];
            offsets.alpha = alphaFirst ? plane[0] : plane[1];
        } else {
            offsets.grey = alphaFirst ? 1 : 0;
            offsets.alpha = alphaFirst ? 0 : 1;
        }
        break;
    case 3:
        if (record.isPlanar) {
            offsets.red = plane[0];
            offsets.green = plane[1];
            offsets.blue = plane[2];
        } else {
            offsets.red = 0;
            offsets.green = 1;
            offsets.blue = 2;
            // RGB padded to 32 bits: the alpha offset names the pad byte, which hasAlpha
            // (false) keeps anyone from touching.
            offsets.alpha = record.bytesPerPixel == 4 ? 3 : 0;
        }
        break;
    case 4: {
        const std::uint64_t first = alphaFirst ? 1 : 0;
        const std::uint64_t alpha = alphaFirst ? 0 : 3;
        if (record.isPlanar) {
            offsets.red = plane[first];
            offsets.green = plane[first + 1];
            offsets.blue = plane[first + 2];
            offsets.alpha = plane[alpha];
        } else {
            offsets.red = first;
            offsets.green = first + 1;
            offsets.blue = first + 2;
            offsets.alpha = alpha;
        }
        break;
    }
    default:
        return std::nullopt;
    }
    return offsets;
}

} // namespace

bool initializePixelManipulationOffsets(PixelManipulationOffsets& record, const KVBitmapPtr& bitmap,
                                        double imageGamma)
{
    record = PixelManipulationOffsets{};
    if (!bitmap) {
        return false;
    }
    record.rep = bitmap;
    record.colorSpace = bitmap->colorSpace();
    record.colorSpaceModel = bitmap->colorSpaceModel();
    if (record.colorSpaceModel != kGreyModel && record.colorSpaceModel != kRGBModel) {
        return false;
    }

    record.pixelsWide = bitmap->pixelsWide();
    record.pixelsHigh = bitmap->pixelsHigh();
    record.bitsPerSample = bitmap->bitsPerSample();
    record.samplesPerPixel = bitmap->samplesPerPixel();
    record.bytesPerRow = bitmap->bytesPerRow();
    record.bitsPerPixel = bitmap->bitsPerPixel();
    record.bytesPerPixel = record.bitsPerPixel / 8;
    record.hasAlpha = bitmap->hasAlpha();
    record.bitmapFormat = bitmap->bitmapFormat();
    record.premultiplied =
        record.hasAlpha && (record.bitmapFormat & kBitmapFormatAlphaNonpremultiplied) == 0;
    record.imageGamma = std::clamp(imageGamma, kMinimumImageGamma, kMaximumImageGamma);
    record.bitmapData = bitmap->bitmapData();
    record.isPlanar = bitmap->isPlanar();
    record.numberOfPlanes = bitmap->numberOfPlanes();
    bitmap->getBitmapDataPlanes(record.planes);

    const auto offsets = channelOffsets(record);
    if (!offsets) {
        return false;
    }
    record.supported = true;

    // Samples wider than a byte scale every offset by their byte count, plane distances
    // included: 16-bit planes are addressed at twice their distance, which KVBitmap's planar
    // storage leaves room for.
    const std::uint64_t scale = record.bitsPerSample + 7 >= 16
                                    ? static_cast<std::uint64_t>((record.bitsPerSample + 7) / 8)
                                    : 1;
    record.redOffset = offsets->red * scale;
    record.greenOffset = offsets->green * scale;
    record.blueOffset = offsets->blue * scale;
    record.greyOffset = offsets->grey * scale;
    record.alphaOffset = offsets->alpha * scale;
    return record.supported;
}

PixelManipulationOffsets pixelManipulationOffsetsWithImageGamma(const KVBitmapPtr& bitmap,
                                                                double imageGamma)
{
    PixelManipulationOffsets record;
    initializePixelManipulationOffsets(record, bitmap, imageGamma);
    return record;
}

} // namespace tintorra
