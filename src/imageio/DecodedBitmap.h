#pragma once

#include "image/KVBitmap.h"
#include "imageio/ImageIOResult.h"

#include <cstdint>
#include <vector>

namespace tintorra {

// The most pixels `dataBytes` of a format can expand to, for formats whose compression has a
// largest ratio (0 where it has none worth checking).
struct PlausibleSize {
    std::uint64_t dataBytes = 0;
    std::uint64_t pixelsPerByte = 0;
};

// Checks, before anything is allocated, that an image of this layout can be held (see
// checkImageDimensions) and, when `plausible` says how far the format's data can expand, that
// the file is not far too small for the image it declares.
IOStatus checkDecodableSize(const KVBitmapLayout& layout, std::uint64_t extraBytesPerSample = 0,
                            PlausibleSize plausible = {});

// Allocates the bitmap a decoder fills, after checking that its size can be held at all (see
// checkImageDimensions) and, when `plausible` says how far the format's data can expand, that
// the file is not far too small for the image it declares (a damaged or malicious header must
// not make a few bytes ask for gigabytes). `extraBytesPerSample` is what the decoder needs
// beside the bitmap.
IOResult<KVBitmapPtr> allocateBitmapForDecoding(const KVBitmapLayout& layout,
                                                KVColorSpace colorSpace,
                                                std::uint64_t extraBytesPerSample = 0,
                                                PlausibleSize plausible = {});

// The untagged space of a model ("Device RGB", "Device Gray", "Device CMYK", ...).
KVColorSpace deviceColorSpace(KVColorSpaceModel model);

// The colour space of decoded samples of `model`: the embedded profile's when it parses and
// describes that model, otherwise the device space (a profile that contradicts the samples would
// mislead every later colour computation, so it is not kept).
KVColorSpace colorSpaceForDecodedImage(KVColorSpaceModel model, std::vector<std::uint8_t> icc);

// Sets the bitmap's size in points from a resolution in pixels per inch; ignores resolutions that
// are not positive and finite.
void setBitmapResolution(KVBitmap& bitmap, double horizontalDpi, double verticalDpi);

// The bitmap's resolution in pixels per inch (72 when its size says nothing sensible).
void bitmapResolution(const KVBitmap& bitmap, double& horizontalDpi, double& verticalDpi);

} // namespace tintorra
