#pragma once

#include "colour/KVColorSpace.h"
#include "image/SampleBuffer.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>

namespace tintorra {

// Flags of KVBitmap::bitmapFormat().
enum KVBitmapFormat : unsigned {
    kBitmapFormatAlphaFirst = 1,
    kBitmapFormatAlphaNonpremultiplied = 2,
    kBitmapFormatFloatingPointSamples = 4,
};

// Everything that fixes the layout of a bitmap's samples. Zero bytesPerRow or bitsPerPixel
// means "compute the tightest value".
struct KVBitmapLayout {
    std::int64_t pixelsWide = 0;
    std::int64_t pixelsHigh = 0;
    std::int64_t bitsPerSample = 8;
    std::int64_t samplesPerPixel = 4;
    bool hasAlpha = true;
    bool isPlanar = false;
    unsigned bitmapFormat = 0;
    std::int64_t bytesPerRow = 0;
    std::int64_t bitsPerPixel = 0;
};

// An image in memory: it owns its samples, chunky (all samples of a pixel together) or planar
// (one plane per sample), 8 or 16 bits per sample, rows from the top. Samples of 16 bits are
// stored in the machine's byte order (little-endian here).
//
// Bitmaps are shared between the document, the editor and the engine through shared_ptr; the
// recursive lock serialises whole-image operations on one bitmap.
class KVBitmap {
public:
    // Returns nullptr when the layout is inconsistent (no pixels, a sample count outside 1..5,
    // a depth other than 8 or 16 bits, row bytes too small) or the memory cannot be had.
    static std::shared_ptr<KVBitmap> create(const KVBitmapLayout& layout,
                                            KVColorSpace colorSpace = KVColorSpace::deviceRGB());

    // The four constructors of common layouts (device grey or device RGB, row bytes computed).
    static std::shared_ptr<KVBitmap> deviceWhite8Rep(std::int64_t pixelsWide,
                                                     std::int64_t pixelsHigh);
    static std::shared_ptr<KVBitmap>
    deviceWhiteAlpha88Rep(std::int64_t pixelsWide, std::int64_t pixelsHigh, bool premultiplyAlpha);
    static std::shared_ptr<KVBitmap>
    deviceRGBA8888Rep(std::int64_t pixelsWide, std::int64_t pixelsHigh, bool premultiplyAlpha);
    static std::shared_ptr<KVBitmap>
    deviceARGB8888Rep(std::int64_t pixelsWide, std::int64_t pixelsHigh, bool premultiplyAlpha);

    // A deep copy with the same layout, colour space, size and samples.
    std::shared_ptr<KVBitmap> copy() const;

    KVBitmap(const KVBitmap&) = delete;
    KVBitmap& operator=(const KVBitmap&) = delete;

    const KVBitmapLayout& layout() const { return layout_; }
    std::int64_t pixelsWide() const { return layout_.pixelsWide; }
    std::int64_t pixelsHigh() const { return layout_.pixelsHigh; }
    std::int64_t bitsPerSample() const { return layout_.bitsPerSample; }
    std::int64_t samplesPerPixel() const { return layout_.samplesPerPixel; }
    std::int64_t bytesPerRow() const { return layout_.bytesPerRow; }
    std::int64_t bitsPerPixel() const { return layout_.bitsPerPixel; }
    bool hasAlpha() const { return layout_.hasAlpha; }
    unsigned bitmapFormat() const { return layout_.bitmapFormat; }
    bool isPlanar() const { return layout_.isPlanar; }
    std::int64_t numberOfPlanes() const { return layout_.isPlanar ? layout_.samplesPerPixel : 1; }

    const KVColorSpace& colorSpace() const { return colorSpace_; }
    void setColorSpace(KVColorSpace colorSpace) { colorSpace_ = std::move(colorSpace); }
    // The model as the pixel layer numbers it: 0 grey, 1 RGB, others as KVColorSpaceModel.
    int colorSpaceModel() const { return static_cast<int>(colorSpace_.model()); }
    bool isRGB() const { return colorSpace_.model() == KVColorSpaceModel::rgb; }

    // First byte of sample memory (of plane 0 when planar).
    std::uint8_t* bitmapData() { return samples_.data(); }
    const std::uint8_t* bitmapData() const { return samples_.data(); }
    // Fills five plane pointers: one per plane when planar, else the data pointer and nulls.
    void getBitmapDataPlanes(std::uint8_t* planes[5]);
    // Bytes of one plane (of the whole image when chunky).
    std::size_t planeBytes() const;
    // Bytes of sample memory from bitmapData(): the planes and, for planar bitmaps of 16-bit
    // samples, the zeroed slack that the pixel routines' doubled plane distances reach into.
    std::size_t sampleBytes() const { return samples_.size(); }

    // The size in points; 72 points per inch, so by default one point per pixel.
    double width() const { return width_; }
    double height() const { return height_; }
    void setSize(double width, double height);

    // Resolution. The setters refuse a value not above zero: the size stays and they say so.
    void pixelsPerInch(double& horizontal, double& vertical) const;
    bool setPixelsPerInch(double dotsPerInch);
    void pixelsPerPicaPoint(double& horizontal, double& vertical) const;
    bool setPixelsPerPicaPoint(double pixelsPerPoint);

    std::recursive_mutex& lock() const { return lock_; }

private:
    KVBitmap(const KVBitmapLayout& layout, KVColorSpace colorSpace, std::size_t allocationBytes);

    KVBitmapLayout layout_;
    KVColorSpace colorSpace_;
    SampleBuffer samples_;
    double width_ = 0.0;
    double height_ = 0.0;
    mutable std::recursive_mutex lock_;
};

using KVBitmapPtr = std::shared_ptr<KVBitmap>;

} // namespace tintorra
