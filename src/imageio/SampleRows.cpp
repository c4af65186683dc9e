#include "imageio/SampleRows.h"

#include <algorithm>
#include <type_traits>

namespace tintorra {

namespace {

template <typename T>
T loadAs(const std::uint8_t* p)
{
    if constexpr (std::is_same_v<T, std::uint8_t>)
        return *p;
    else
        return loadSample16(p);
}

template <typename T>
void storeAs(std::uint8_t* p, T v)
{
    if constexpr (std::is_same_v<T, std::uint8_t>)
        *p = v;
    else
        storeSample16(p, v);
}

template <typename In, typename Out>
Out convertDepth(In v)
{
    if constexpr (std::is_same_v<In, Out>)
        return v;
    else if constexpr (std::is_same_v<Out, std::uint8_t>)
        return narrowSample(v);
    else
        return widenSample(v);
}

} // namespace

RowPacker::RowPacker(const KVBitmap& bitmap, const RowPacking& packing) : bitmap_(bitmap)
{
    const int samples = static_cast<int>(bitmap.samplesPerPixel());
    const bool alpha = bitmap.hasAlpha() && samples > 1;
    const bool alphaFirst = alpha && (bitmap.bitmapFormat() & kBitmapFormatAlphaFirst) != 0;
    const bool premultiplied =
        alpha && (bitmap.bitmapFormat() & kBitmapFormatAlphaNonpremultiplied) == 0;
    const std::size_t sampleBytes = static_cast<std::size_t>(bitmap.bitsPerSample() / 8);

    colourSamples_ = alpha ? samples - 1 : samples;
    outputAlpha_ = alpha && packing.keepAlpha;
    outputBits_ = packing.bitsPerSample == 16 ? 16 : 8;
    rowBytes_ = static_cast<std::size_t>(bitmap.pixelsWide()) *
                static_cast<std::size_t>(samplesPerPixel()) *
                static_cast<std::size_t>(outputBits_ / 8);

    std::uint8_t* planes[5] = {};
    // Only reads the plane pointers.
    const_cast<KVBitmap&>(bitmap).getBitmapDataPlanes(planes);
    std::copy(planes, planes + 5, planes_);

    const bool planar = bitmap.isPlanar();
    pixelStride_ = planar ? sampleBytes : static_cast<std::size_t>(bitmap.bitsPerPixel() / 8);
    for (int k = 0; k < samplesPerPixel(); ++k) {
        int source = k;
        if (alpha && k == colourSamples_)
            source = alphaFirst ? 0 : colourSamples_;
        else if (alphaFirst)
            source = k + 1;
        sourcePlane_[k] = planar ? source : 0;
        sourceOffset_[k] = planar ? 0 : static_cast<std::size_t>(source) * sampleBytes;
    }

    const bool sameDepth = bitmap.bitsPerSample() == outputBits_;
    const bool tight = !planar && bitmap.bitsPerPixel() == samples * bitmap.bitsPerSample();
    const bool unpremultiply = packing.unpremultiply && premultiplied && outputAlpha_;
    direct_ = sameDepth && tight && !alphaFirst && !unpremultiply && (!alpha || outputAlpha_);
    // Allocated once here so that handing out a row never allocates (encoders call row() from
    // code that libpng and libjpeg may leave by longjmp).
    if (!direct_)
        scratch_.resize(rowBytes_);

    const bool in16 = bitmap.bitsPerSample() == 16;
    const bool out16 = outputBits_ == 16;
    if (in16 && out16)
        pack_ = unpremultiply ? &packGeneric<std::uint16_t, std::uint16_t, true>
                              : &packGeneric<std::uint16_t, std::uint16_t, false>;
    else if (in16)
        pack_ = unpremultiply ? &packGeneric<std::uint16_t, std::uint8_t, true>
                              : &packGeneric<std::uint16_t, std::uint8_t, false>;
    else if (out16)
        pack_ = unpremultiply ? &packGeneric<std::uint8_t, std::uint16_t, true>
                              : &packGeneric<std::uint8_t, std::uint16_t, false>;
    else
        pack_ = unpremultiply ? &packGeneric<std::uint8_t, std::uint8_t, true>
                              : &packGeneric<std::uint8_t, std::uint8_t, false>;
}

const std::uint8_t* RowPacker::row(std::int64_t y)
{
    if (direct_)
        return bitmap_.bitmapData() + y * bitmap_.bytesPerRow();
    packRow(y, scratch_.data());
    return scratch_.data();
}

void RowPacker::packRow(std::int64_t y, std::uint8_t* destination) const
{
    if (direct_) {
        std::memcpy(destination, bitmap_.bitmapData() + y * bitmap_.bytesPerRow(), rowBytes_);
        return;
    }
    pack_(*this, y, destination);
}

template <typename In, typename Out, bool Unpremultiply>
void RowPacker::packGeneric(const RowPacker& packer, std::int64_t y, std::uint8_t* destination)
{
    constexpr std::uint32_t inMax = std::is_same_v<In, std::uint8_t> ? 255u : 65535u;
    const int samples = packer.samplesPerPixel();
    const std::size_t rowOffset = static_cast<std::size_t>(y * packer.bitmap_.bytesPerRow());
    const std::uint8_t* sources[5] = {};
    for (int k = 0; k < samples; ++k)
        sources[k] = packer.planes_[packer.sourcePlane_[k]] + rowOffset + packer.sourceOffset_[k];
    const std::size_t stride = packer.pixelStride_;
    const std::int64_t width = packer.bitmap_.pixelsWide();
    const int colours = packer.colourSamples_;

    std::uint8_t* cursor = destination;
    for (std::int64_t x = 0; x < width; ++x) {
        const std::size_t at = static_cast<std::size_t>(x) * stride;
        if constexpr (Unpremultiply) {
            const std::uint32_t a = loadAs<In>(sources[colours] + at);
            for (int k = 0; k < colours; ++k) {
                std::uint32_t c = loadAs<In>(sources[k] + at);
                if (a != 0)
                    c = std::min(inMax, (c * inMax + a / 2) / a);
                storeAs<Out>(cursor, convertDepth<In, Out>(static_cast<In>(c)));
                cursor += sizeof(Out);
            }
            storeAs<Out>(cursor, convertDepth<In, Out>(static_cast<In>(a)));
            cursor += sizeof(Out);
        } else {
            for (int k = 0; k < samples; ++k) {
                storeAs<Out>(cursor, convertDepth<In, Out>(loadAs<In>(sources[k] + at)));
                cursor += sizeof(Out);
            }
        }
    }
}

} // namespace tintorra
