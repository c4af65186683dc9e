#include "imageio/DecodedBitmap.h"

#include "colour/IccProfiles.h"
#include "imageio/ImageLimits.h"

#include <cmath>
#include <string>

namespace tintorra {

IOStatus checkDecodableSize(const KVBitmapLayout& layout, std::uint64_t extraBytesPerSample,
                            PlausibleSize plausible)
{
    if (layout.pixelsWide <= 0 || layout.pixelsHigh <= 0)
        return ioError("The image has no pixels.");
    IOStatus fits =
        checkImageDimensions(static_cast<std::uint64_t>(layout.pixelsWide),
                             static_cast<std::uint64_t>(layout.pixelsHigh),
                             static_cast<std::uint64_t>(layout.samplesPerPixel),
                             static_cast<std::uint64_t>(layout.bitsPerSample), extraBytesPerSample);
    if (!fits)
        return ioError(fits.error().message);
    if (plausible.pixelsPerByte > 0) {
        const auto pixels = static_cast<std::uint64_t>(layout.pixelsWide) *
                            static_cast<std::uint64_t>(layout.pixelsHigh);
        if (pixels / plausible.pixelsPerByte > plausible.dataBytes)
            return ioError("The file is damaged or truncated: it is far too small for the " +
                           std::to_string(layout.pixelsWide) + " × " +
                           std::to_string(layout.pixelsHigh) + " pixels it declares.");
    }
    return ioSuccess();
}

IOResult<KVBitmapPtr> allocateBitmapForDecoding(const KVBitmapLayout& layout,
                                                KVColorSpace colorSpace,
                                                std::uint64_t extraBytesPerSample,
                                                PlausibleSize plausible)
{
    if (IOStatus size = checkDecodableSize(layout, extraBytesPerSample, plausible); !size)
        return size.error();
    KVBitmapPtr bitmap = KVBitmap::create(layout, std::move(colorSpace));
    if (!bitmap)
        return ioError("There is not enough memory to open the image.");
    return bitmap;
}

KVColorSpace deviceColorSpace(KVColorSpaceModel model)
{
    switch (model) {
    case KVColorSpaceModel::gray:
        return KVColorSpace::deviceGray();
    case KVColorSpaceModel::rgb:
        return KVColorSpace::deviceRGB();
    case KVColorSpaceModel::cmyk:
        return {KVColorSpaceModel::cmyk, "Device CMYK"};
    case KVColorSpaceModel::lab:
        return {KVColorSpaceModel::lab, "Lab"};
    case KVColorSpaceModel::deviceN:
        return {KVColorSpaceModel::deviceN, "DeviceN"};
    default:
        return {model, "Unknown"};
    }
}

KVColorSpace colorSpaceForDecodedImage(KVColorSpaceModel model, std::vector<std::uint8_t> icc)
{
    if (!icc.empty()) {
        std::optional<KVColorSpace> embedded = colorSpaceFromIccProfile(std::move(icc));
        if (embedded && embedded->model() == model)
            return *std::move(embedded);
    }
    return deviceColorSpace(model);
}

void setBitmapResolution(KVBitmap& bitmap, double horizontalDpi, double verticalDpi)
{
    const auto usable = [](double dpi) { return std::isfinite(dpi) && dpi > 0.0; };
    if (!usable(horizontalDpi) || !usable(verticalDpi))
        return;
    bitmap.setSize(static_cast<double>(bitmap.pixelsWide()) * 72.0 / horizontalDpi,
                   static_cast<double>(bitmap.pixelsHigh()) * 72.0 / verticalDpi);
}

void bitmapResolution(const KVBitmap& bitmap, double& horizontalDpi, double& verticalDpi)
{
    horizontalDpi = 72.0;
    verticalDpi = 72.0;
    if (bitmap.width() > 0.0 && bitmap.height() > 0.0) {
        const double h = static_cast<double>(bitmap.pixelsWide()) / bitmap.width() * 72.0;
        const double v = static_cast<double>(bitmap.pixelsHigh()) / bitmap.height() * 72.0;
        if (std::isfinite(h) && std::isfinite(v) && h > 0.0 && v > 0.0) {
            horizontalDpi = h;
            verticalDpi = v;
        }
    }
}

} // namespace tintorra
