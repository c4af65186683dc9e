#include "image/KVBitmap.h"

#include "common/Diagnostics.h"

#include <cstdio>
#include <new>
#include <optional>
#include <stdexcept>

namespace tintorra {

namespace {

constexpr std::int64_t kMaxSamplesPerPixel = 5;
constexpr double kPointsPerInch = 72.0;

// a * b, or nothing when the product does not fit.
std::optional<std::int64_t> checkedMultiply(std::int64_t a, std::int64_t b)
{
    std::int64_t product = 0;
    if (__builtin_mul_overflow(a, b, &product)) {
        return std::nullopt;
    }
    return product;
}

// Fills in the computed row bytes and pixel bits and works out how many bytes the samples
// need; nothing when the layout cannot describe a bitmap.
std::optional<std::size_t> resolveLayout(KVBitmapLayout& layout)
{
    if (layout.pixelsWide <= 0 || layout.pixelsHigh <= 0) {
        return std::nullopt;
    }
    if (layout.samplesPerPixel < 1 || layout.samplesPerPixel > kMaxSamplesPerPixel) {
        return std::nullopt;
    }
    if (layout.bitsPerSample != 8 && layout.bitsPerSample != 16) {
        return std::nullopt;
    }
    // A lone alpha sample has no colour to go with it.
    if (layout.hasAlpha && layout.samplesPerPixel < 2) {
        return std::nullopt;
    }
    // Floating-point samples are converted to integers when an image is read; the pixel
    // routines would take them for integers.
    constexpr unsigned knownFlags = kBitmapFormatAlphaFirst | kBitmapFormatAlphaNonpremultiplied;
    if ((layout.bitmapFormat & ~knownFlags) != 0) {
        return std::nullopt;
    }

    // Planar pixels step by one sample in each plane; chunky pixels by all of them.
    const std::int64_t minimumBitsPerPixel =
        layout.isPlanar ? layout.bitsPerSample : layout.bitsPerSample * layout.samplesPerPixel;
    if (layout.bitsPerPixel == 0) {
        layout.bitsPerPixel = minimumBitsPerPixel;
    }
    if (layout.bitsPerPixel < minimumBitsPerPixel || layout.bitsPerPixel % 8 != 0) {
        return std::nullopt;
    }

    const auto rowBits = checkedMultiply(layout.pixelsWide, layout.bitsPerPixel);
    if (!rowBits) {
        return std::nullopt;
    }
    const std::int64_t tightRowBytes = *rowBits / 8;
    if (layout.bytesPerRow == 0) {
        layout.bytesPerRow = tightRowBytes;
    }
    if (layout.bytesPerRow < tightRowBytes) {
        return std::nullopt;
    }

    const auto planeBytes = checkedMultiply(layout.bytesPerRow, layout.pixelsHigh);
    if (!planeBytes) {
        return std::nullopt;
    }
    // The pixel routines address 16-bit planes at twice their distance from the first plane,
    // so plane k of a 16-bit bitmap is read at 2k plane lengths. Zeroed slack after the last
    // plane keeps those reads and writes inside the allocation.
    std::int64_t planeSlots = 1;
    if (layout.isPlanar) {
        const std::int64_t bytesPerSample = (layout.bitsPerSample + 7) / 8;
        planeSlots = (layout.samplesPerPixel - 1) * bytesPerSample + 1;
    }
    const auto totalBytes = checkedMultiply(*planeBytes, planeSlots);
    if (!totalBytes) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(*totalBytes);
}

KVBitmapLayout eightBitLayout(std::int64_t pixelsWide, std::int64_t pixelsHigh,
                              std::int64_t samplesPerPixel, bool hasAlpha, unsigned bitmapFormat)
{
    KVBitmapLayout layout;
    layout.pixelsWide = pixelsWide;
    layout.pixelsHigh = pixelsHigh;
    layout.bitsPerSample = 8;
    layout.samplesPerPixel = samplesPerPixel;
    layout.hasAlpha = hasAlpha;
    layout.isPlanar = false;
    layout.bitmapFormat = bitmapFormat;
    return layout;
}

} // namespace

KVBitmap::KVBitmap(const KVBitmapLayout& layout, KVColorSpace colorSpace,
                   std::size_t allocationBytes)
    : layout_(layout), colorSpace_(std::move(colorSpace)), samples_(allocationBytes),
      width_(static_cast<double>(layout.pixelsWide)),
      height_(static_cast<double>(layout.pixelsHigh))
{}

std::shared_ptr<KVBitmap> KVBitmap::create(const KVBitmapLayout& layout, KVColorSpace colorSpace)
{
    KVBitmapLayout resolved = layout;
    const auto allocationBytes = resolveLayout(resolved);
    if (!allocationBytes) {
        return nullptr;
    }
    try {
        return std::shared_ptr<KVBitmap>(
            new KVBitmap(resolved, std::move(colorSpace), *allocationBytes));
    } catch (const std::bad_alloc&) {
        return nullptr;
    } catch (const std::length_error&) {
        return nullptr;
    }
}

std::shared_ptr<KVBitmap> KVBitmap::deviceWhite8Rep(std::int64_t pixelsWide,
                                                    std::int64_t pixelsHigh)
{
    return create(eightBitLayout(pixelsWide, pixelsHigh, 1, false, 0), KVColorSpace::deviceGray());
}

std::shared_ptr<KVBitmap> KVBitmap::deviceWhiteAlpha88Rep(std::int64_t pixelsWide,
                                                          std::int64_t pixelsHigh,
                                                          bool premultiplyAlpha)
{
    const unsigned format = premultiplyAlpha ? 0u : kBitmapFormatAlphaNonpremultiplied;
    return create(eightBitLayout(pixelsWide, pixelsHigh, 2, true, format),
                  KVColorSpace::deviceGray());
}

std::shared_ptr<KVBitmap>
KVBitmap::deviceRGBA8888Rep(std::int64_t pixelsWide, std::int64_t pixelsHigh, bool premultiplyAlpha)
{
    const unsigned format = premultiplyAlpha ? 0u : kBitmapFormatAlphaNonpremultiplied;
    return create(eightBitLayout(pixelsWide, pixelsHigh, 4, true, format),
                  KVColorSpace::deviceRGB());
}

std::shared_ptr<KVBitmap>
KVBitmap::deviceARGB8888Rep(std::int64_t pixelsWide, std::int64_t pixelsHigh, bool premultiplyAlpha)
{
    const unsigned format =
        kBitmapFormatAlphaFirst | (premultiplyAlpha ? 0u : kBitmapFormatAlphaNonpremultiplied);
    return create(eightBitLayout(pixelsWide, pixelsHigh, 4, true, format),
                  KVColorSpace::deviceRGB());
}

std::shared_ptr<KVBitmap> KVBitmap::copy() const
{
    try {
        std::shared_ptr<KVBitmap> duplicate(new KVBitmap(layout_, colorSpace_, 0));
        duplicate->samples_ = samples_;
        duplicate->width_ = width_;
        duplicate->height_ = height_;
        return duplicate;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void KVBitmap::getBitmapDataPlanes(std::uint8_t* planes[5])
{
    for (int k = 0; k < 5; ++k) {
        planes[k] = nullptr;
    }
    std::uint8_t* const data = samples_.data();
    if (!layout_.isPlanar) {
        planes[0] = data;
        return;
    }
    const std::size_t bytes = planeBytes();
    for (std::int64_t k = 0; k < layout_.samplesPerPixel; ++k) {
        planes[k] = data + static_cast<std::size_t>(k) * bytes;
    }
}

std::size_t KVBitmap::planeBytes() const
{
    return static_cast<std::size_t>(layout_.bytesPerRow) *
           static_cast<std::size_t>(layout_.pixelsHigh);
}

void KVBitmap::setSize(double width, double height)
{
    width_ = width;
    height_ = height;
}

void KVBitmap::pixelsPerInch(double& horizontal, double& vertical) const
{
    horizontal = static_cast<double>(layout_.pixelsWide) / width_ * kPointsPerInch;
    vertical = static_cast<double>(layout_.pixelsHigh) / height_ * kPointsPerInch;
}

bool KVBitmap::setPixelsPerInch(double dotsPerInch)
{
    if (!(dotsPerInch > 0.0)) {
        diagnostic("Dots-per-inch should be greater than zero, but was actually %f\n", dotsPerInch);
        return false;
    }
    setSize(static_cast<double>(layout_.pixelsWide) * kPointsPerInch / dotsPerInch,
            static_cast<double>(layout_.pixelsHigh) * kPointsPerInch / dotsPerInch);
    return true;
}

void KVBitmap::pixelsPerPicaPoint(double& horizontal, double& vertical) const
{
    horizontal = static_cast<double>(layout_.pixelsWide) / width_;
    vertical = static_cast<double>(layout_.pixelsHigh) / height_;
}

bool KVBitmap::setPixelsPerPicaPoint(double pixelsPerPoint)
{
    if (!(pixelsPerPoint > 0.0)) {
        diagnostic("Dots-per-point should be greater than zero, but was actually %f\n",
                   pixelsPerPoint);
        return false;
    }
    setSize(static_cast<double>(layout_.pixelsWide) / pixelsPerPoint,
            static_cast<double>(layout_.pixelsHigh) / pixelsPerPoint);
    return true;
}

} // namespace tintorra
