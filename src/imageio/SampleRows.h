#pragma once

#include "image/KVBitmap.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace tintorra {

// 16-bit samples live in the machine's byte order; these read and write them from byte memory
// without assuming alignment.
inline std::uint16_t loadSample16(const std::uint8_t* p)
{
    std::uint16_t v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

inline void storeSample16(std::uint8_t* p, std::uint16_t v)
{
    std::memcpy(p, &v, sizeof v);
}

// The nearest 8-bit value of a 16-bit sample, and the 16-bit value of an 8-bit one (255 becomes
// 65535).
inline std::uint8_t narrowSample(std::uint16_t v)
{
    return static_cast<std::uint8_t>((static_cast<std::uint32_t>(v) * 255u + 32767u) / 65535u);
}

inline std::uint16_t widenSample(std::uint8_t v)
{
    return static_cast<std::uint16_t>(v * 257u);
}

// How an encoder wants its rows: chunky, colour samples in the bitmap's order followed by alpha,
// tightly packed, in the machine's byte order.
struct RowPacking {
    // 8 or 16 bits per output sample.
    int bitsPerSample = 8;
    // Whether the output keeps the bitmap's alpha (when it has one).
    bool keepAlpha = true;
    // Turn premultiplied colour into straight colour, for formats whose alpha is unassociated.
    // A pixel with alpha 0 keeps its colour as stored.
    bool unpremultiply = false;
};

// Hands out the rows of a bitmap in the packing an encoder asks for. Whatever the bitmap's
// layout (planar, alpha first, padded pixels, premultiplied, 8 or 16 bits), the conversion is
// chosen once here; a bitmap that already has the packed layout is handed out in place.
class RowPacker {
public:
    RowPacker(const KVBitmap& bitmap, const RowPacking& packing);

    int colourSamples() const { return colourSamples_; }
    bool hasAlpha() const { return outputAlpha_; }
    int samplesPerPixel() const { return colourSamples_ + (outputAlpha_ ? 1 : 0); }
    int bitsPerSample() const { return outputBits_; }
    std::size_t rowBytes() const { return rowBytes_; }
    // True when rows come straight from the bitmap's memory.
    bool isDirect() const { return direct_; }

    // Row y (from the top), valid until the next call.
    const std::uint8_t* row(std::int64_t y);

    // Packs row y into `destination` (rowBytes() bytes).
    void packRow(std::int64_t y, std::uint8_t* destination) const;

private:
    using PackFunction = void (*)(const RowPacker&, std::int64_t, std::uint8_t*);

    template <typename In, typename Out, bool Unpremultiply>
    static void packGeneric(const RowPacker& packer, std::int64_t y, std::uint8_t* destination);

    const KVBitmap& bitmap_;
    int colourSamples_ = 0;
    bool outputAlpha_ = false;
    int outputBits_ = 8;
    std::size_t rowBytes_ = 0;
    bool direct_ = false;
    // Where each output sample comes from: its plane (0 when chunky) and its byte offset within
    // the pixel.
    int sourcePlane_[5] = {};
    std::size_t sourceOffset_[5] = {};
    std::size_t pixelStride_ = 0;
    const std::uint8_t* planes_[5] = {};
    PackFunction pack_ = nullptr;
    std::vector<std::uint8_t> scratch_;
};

} // namespace tintorra
