#include "imageio/DecodedBitmap.h"
#include "imageio/ImageCodec.h"
#include "imageio/SampleRows.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <new>

namespace tintorra {

namespace {

constexpr std::uint32_t kFileHeaderSize = 14;
constexpr std::uint32_t kInfoHeaderSize = 40;
constexpr std::uint32_t kV5HeaderSize = 124;
constexpr std::uint32_t kCompressionRGB = 0;
constexpr std::uint32_t kCompressionRLE8 = 1;
constexpr std::uint32_t kCompressionRLE4 = 2;
// A run of one colour covers at most 255 pixels with two bytes; the escapes that skip pixels can
// cover more, but a file that relies on them for most of a large image is damaged or hostile.
constexpr std::uint64_t kRunLengthPixelsPerByte = 512;
constexpr std::uint32_t kCompressionBitfields = 3;
constexpr std::uint32_t kCompressionAlphaBitfields = 6;
// Colour space types of the version 5 header.
constexpr std::uint32_t kSpaceSRGB = 0x73524742;     // 'sRGB'
constexpr std::uint32_t kSpaceEmbedded = 0x4D424544; // 'MBED'
constexpr std::uint32_t kIntentImages = 4;

std::uint16_t read16(const std::uint8_t* p)
{
    return static_cast<std::uint16_t>(p[0] | (p[1] << 8));
}

std::uint32_t read32(const std::uint8_t* p)
{
    return static_cast<std::uint32_t>(p[0]) | (static_cast<std::uint32_t>(p[1]) << 8) |
           (static_cast<std::uint32_t>(p[2]) << 16) | (static_cast<std::uint32_t>(p[3]) << 24);
}

// One channel of a pixel packed under a bit mask, brought to 8 bits.
struct MaskedChannel {
    std::uint32_t mask = 0;
    int shift = 0;
    std::uint32_t maximum = 0;

    explicit MaskedChannel(std::uint32_t m = 0) : mask(m)
    {
        if (mask != 0) {
            shift = std::countr_zero(mask);
            maximum = mask >> shift;
        }
    }
    bool contiguous() const { return mask == 0 || (maximum & (maximum + 1)) == 0; }
    std::uint8_t operator()(std::uint32_t pixel) const
    {
        if (maximum == 0)
            return 0;
        return static_cast<std::uint8_t>((((pixel & mask) >> shift) * 255u + maximum / 2) /
                                         maximum);
    }
};

// Expands run-length encoded palette indices (8 or 4 bits) into one index per pixel, rows from
// the bottom as the file stores them. Pixels the encoding skips keep index 0. False when the
// data ends early.
bool expandRunLengths(std::span<const std::uint8_t> data, std::uint64_t at, std::int64_t width,
                      std::int64_t height, int bits, std::vector<std::uint8_t>& indices)
{
    indices.assign(static_cast<std::size_t>(width * height), 0);
    std::int64_t x = 0;
    std::int64_t y = 0;
    const auto next = [&](std::uint8_t& byte) {
        if (at >= data.size())
            return false;
        byte = data[at++];
        return true;
    };
    const auto put = [&](std::uint8_t index) {
        if (x < width && y < height)
            indices[static_cast<std::size_t>(y * width + x)] = index;
        ++x;
    };
    while (y < height) {
        std::uint8_t count = 0;
        std::uint8_t value = 0;
        if (!next(count) || !next(value))
            return false;
        if (count > 0) {
            for (int i = 0; i < count; ++i)
                put(bits == 8 ? value
                              : static_cast<std::uint8_t>(i % 2 == 0 ? value >> 4 : value & 15));
            continue;
        }
        if (value == 0) {
            x = 0;
            ++y;
        } else if (value == 1) {
            return true;
        } else if (value == 2) {
            std::uint8_t dx = 0;
            std::uint8_t dy = 0;
            if (!next(dx) || !next(dy))
                return false;
            x += dx;
            y += dy;
        } else {
            // Absolute run: `value` indices, padded to a 16-bit boundary.
            const int bytes = bits == 8 ? value : (value + 1) / 2;
            std::uint8_t byte = 0;
            for (int i = 0; i < value; ++i) {
                if ((bits == 8 || i % 2 == 0) && !next(byte))
                    return false;
                put(bits == 8 ? byte
                              : static_cast<std::uint8_t>(i % 2 == 0 ? byte >> 4 : byte & 15));
            }
            if (bytes % 2 == 1 && !next(byte))
                return false;
        }
    }
    return true;
}

IOResult<KVBitmapPtr> decodeBmp(std::span<const std::uint8_t> data)
{
    const auto truncated = []() { return ioError("The BMP file is damaged or truncated."); };
    if (data.size() < kFileHeaderSize + 12 || data[0] != 'B' || data[1] != 'M')
        return truncated();
    const std::uint32_t pixelOffset = read32(&data[10]);
    const std::uint8_t* info = &data[kFileHeaderSize];
    const std::uint32_t headerSize = read32(info);
    if (headerSize < 12 || kFileHeaderSize + static_cast<std::uint64_t>(headerSize) > data.size())
        return truncated();

    std::int64_t width = 0;
    std::int64_t height = 0;
    std::uint16_t bitCount = 0;
    std::uint32_t compression = kCompressionRGB;
    std::uint32_t coloursUsed = 0;
    std::uint32_t masks[4] = {};
    std::uint32_t paletteEntryBytes = 4;
    double dpi[2] = {0, 0};
    std::vector<std::uint8_t> icc;
    if (headerSize == 12) {
        width = read16(info + 4);
        height = read16(info + 6);
        bitCount = read16(info + 10);
        paletteEntryBytes = 3;
    } else {
        if (headerSize < kInfoHeaderSize)
            return truncated();
        width = static_cast<std::int32_t>(read32(info + 4));
        height = static_cast<std::int32_t>(read32(info + 8));
        bitCount = read16(info + 14);
        compression = read32(info + 16);
        dpi[0] = read32(info + 24) * 0.0254;
        dpi[1] = read32(info + 28) * 0.0254;
        coloursUsed = read32(info + 32);
        if (compression == kCompressionBitfields || compression == kCompressionAlphaBitfields) {
            // The masks follow a 40-byte header and are part of every longer one.
            const std::uint32_t count = compression == kCompressionAlphaBitfields ? 4 : 3;
            const std::uint32_t inHeader = headerSize >= 56 ? 4 : (headerSize >= 52 ? 3 : 0);
            if (inHeader < count &&
                kFileHeaderSize + static_cast<std::uint64_t>(kInfoHeaderSize) + 4 * count >
                    data.size())
                return truncated();
            for (std::uint32_t i = 0; i < std::max(count, inHeader); ++i)
                masks[i] = read32(info + kInfoHeaderSize + 4 * i);
        }
        if (headerSize >= kV5HeaderSize && read32(info + 56) == kSpaceEmbedded) {
            const std::uint64_t at =
                kFileHeaderSize + static_cast<std::uint64_t>(read32(info + 112));
            const std::uint64_t size = read32(info + 116);
            if (size > 0 && at + size <= data.size())
                icc.assign(data.begin() + static_cast<std::ptrdiff_t>(at),
                           data.begin() + static_cast<std::ptrdiff_t>(at + size));
        }
    }
    const bool topDown = height < 0;
    height = std::abs(height);
    if (width <= 0 || height <= 0)
        return ioError("The BMP image has no pixels.");
    const bool runLengths = (compression == kCompressionRLE8 && bitCount == 8) ||
                            (compression == kCompressionRLE4 && bitCount == 4);
    if (compression != kCompressionRGB && compression != kCompressionBitfields &&
        compression != kCompressionAlphaBitfields && !runLengths)
        return ioError("The BMP image is compressed in a way Tintorra cannot open.");
    if (runLengths && topDown)
        return truncated();

    const bool indexed = bitCount == 1 || bitCount == 4 || bitCount == 8;
    if (!indexed && bitCount != 16 && bitCount != 24 && bitCount != 32)
        return ioError("The BMP image has " + std::to_string(bitCount) +
                       " bits per pixel, which Tintorra cannot open.");
    if (!indexed && compression == kCompressionRGB) {
        if (bitCount == 16) {
            masks[0] = 0x7C00;
            masks[1] = 0x03E0;
            masks[2] = 0x001F;
        } else {
            masks[0] = 0x00FF0000;
            masks[1] = 0x0000FF00;
            masks[2] = 0x000000FF;
            // The fourth byte of a plain 32-bit pixel is padding, not alpha.
            masks[3] = 0;
        }
    }
    const MaskedChannel channels[4] = {MaskedChannel(masks[0]), MaskedChannel(masks[1]),
                                       MaskedChannel(masks[2]), MaskedChannel(masks[3])};
    for (const MaskedChannel& channel : channels) {
        if (!channel.contiguous())
            return ioError("The BMP image has colour masks Tintorra cannot read.");
    }
    const bool alpha = !indexed && masks[3] != 0;

    std::vector<std::array<std::uint8_t, 3>> colours;
    if (indexed) {
        const std::uint32_t entries =
            coloursUsed == 0 || coloursUsed > (1u << bitCount) ? (1u << bitCount) : coloursUsed;
        const std::uint64_t at = kFileHeaderSize + static_cast<std::uint64_t>(headerSize);
        if (at + static_cast<std::uint64_t>(entries) * paletteEntryBytes > data.size())
            return truncated();
        for (std::uint32_t i = 0; i < entries; ++i) {
            const std::uint8_t* entry =
                &data[at + static_cast<std::uint64_t>(i) * paletteEntryBytes];
            colours.push_back({entry[2], entry[1], entry[0]});
        }
    }

    const std::uint64_t stride = ((static_cast<std::uint64_t>(width) * bitCount + 31) / 32) * 4;
    if (pixelOffset > data.size() ||
        (!runLengths && stride * static_cast<std::uint64_t>(height) > data.size() - pixelOffset))
        return truncated();

    KVBitmapLayout layout;
    layout.pixelsWide = width;
    layout.pixelsHigh = height;
    layout.bitsPerSample = 8;
    layout.samplesPerPixel = alpha ? 4 : 3;
    layout.hasAlpha = alpha;
    layout.bitmapFormat = alpha ? kBitmapFormatAlphaNonpremultiplied : 0u;
    // Runs are expanded to a byte per pixel before they are coloured.
    const PlausibleSize plausible =
        runLengths ? PlausibleSize{data.size() - pixelOffset, kRunLengthPixelsPerByte}
                   : PlausibleSize{};
    IOResult<KVBitmapPtr> allocated = allocateBitmapForDecoding(
        layout, colorSpaceForDecodedImage(KVColorSpaceModel::rgb, std::move(icc)),
        runLengths ? 1 : 0, plausible);
    if (!allocated)
        return allocated;
    KVBitmapPtr bitmap = allocated.take();

    std::vector<std::uint8_t> expanded;
    if (runLengths && !expandRunLengths(data, pixelOffset, width, height, bitCount, expanded))
        return truncated();

    const int samples = alpha ? 4 : 3;
    for (std::int64_t y = 0; y < height; ++y) {
        const std::int64_t fileRow = topDown ? y : height - 1 - y;
        std::uint8_t* out = bitmap->bitmapData() + y * bitmap->bytesPerRow();
        if (runLengths) {
            const std::uint8_t* in = expanded.data() + fileRow * width;
            for (std::int64_t x = 0; x < width; ++x, out += samples) {
                const auto& colour = in[x] < colours.size() ? colours[in[x]] : colours.back();
                std::memcpy(out, colour.data(), 3);
            }
            continue;
        }
        const std::uint8_t* in = &data[pixelOffset + static_cast<std::uint64_t>(fileRow) * stride];
        for (std::int64_t x = 0; x < width; ++x, out += samples) {
            if (indexed) {
                const std::uint64_t bit = static_cast<std::uint64_t>(x) * bitCount;
                const unsigned shift = 8u - bitCount - static_cast<unsigned>(bit % 8);
                const std::uint32_t index = (in[bit / 8] >> shift) & ((1u << bitCount) - 1u);
                const auto& colour = index < colours.size() ? colours[index] : colours.back();
                std::memcpy(out, colour.data(), 3);
                continue;
            }
            std::uint32_t pixel = 0;
            const std::uint8_t* p = in + x * (bitCount / 8);
            if (bitCount == 16)
                pixel = read16(p);
            else if (bitCount == 24)
                pixel = static_cast<std::uint32_t>(p[0]) | (static_cast<std::uint32_t>(p[1]) << 8) |
                        (static_cast<std::uint32_t>(p[2]) << 16);
            else
                pixel = read32(p);
            for (int c = 0; c < samples; ++c)
                out[c] = channels[c](pixel);
        }
    }
    setBitmapResolution(*bitmap, dpi[0], dpi[1]);
    return bitmap;
}

class BmpImageReader final : public ImageReader {
public:
    explicit BmpImageReader(std::span<const std::uint8_t> data) : data_(data) {}
    std::size_t pageCount() const override { return 1; }
    IOResult<KVBitmapPtr> decodePage(std::size_t page) override
    {
        if (page != 0)
            return ioError("A BMP file has one page.");
        return decodeBmp(data_);
    }

private:
    std::span<const std::uint8_t> data_;
};

// ---- writing ----

void put16(std::vector<std::uint8_t>& out, std::size_t at, std::uint32_t v)
{
    out[at] = static_cast<std::uint8_t>(v);
    out[at + 1] = static_cast<std::uint8_t>(v >> 8);
}

void put32(std::vector<std::uint8_t>& out, std::size_t at, std::uint32_t v)
{
    for (int i = 0; i < 4; ++i)
        out[at + static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(v >> (8 * i));
}

IOResult<std::vector<std::uint8_t>> encodeBmp(const KVBitmap& bitmap)
{
    const KVColorSpaceModel model = bitmap.colorSpace().model();
    if (model != KVColorSpaceModel::rgb && model != KVColorSpaceModel::gray)
        return ioError("BMP holds only RGB and grey images.");
    if (bitmap.bitsPerSample() != 8 && bitmap.bitsPerSample() != 16)
        return ioError("BMP images are written from 8- or 16-bit samples.");

    // BMP holds 8 bits per channel and straight alpha.
    RowPacking packing;
    packing.bitsPerSample = 8;
    packing.keepAlpha = true;
    packing.unpremultiply = true;
    RowPacker packer(bitmap, packing);
    const bool grey = packer.colourSamples() == 1;
    const bool alpha = packer.hasAlpha();
    const std::vector<std::uint8_t>& icc = bitmap.colorSpace().iccProfile();
    const bool v5 = alpha || !icc.empty();
    const std::uint32_t headerSize = v5 ? kV5HeaderSize : kInfoHeaderSize;
    const std::uint32_t bitCount = alpha ? 32 : 24;
    const std::uint64_t width = static_cast<std::uint64_t>(bitmap.pixelsWide());
    const std::uint64_t height = static_cast<std::uint64_t>(bitmap.pixelsHigh());
    const std::uint64_t stride = ((width * bitCount + 31) / 32) * 4;
    const std::uint64_t pixelOffset = kFileHeaderSize + headerSize;
    const std::uint64_t imageBytes = stride * height;
    const std::uint64_t fileSize = pixelOffset + imageBytes + icc.size();
    if (fileSize > 0xFFFFFFFFull || width > 0x7FFFFFFF || height > 0x7FFFFFFF)
        return ioError("The image is too large for BMP, whose files hold at most 4 GiB.");

    std::vector<std::uint8_t> out;
    try {
        out.assign(fileSize, 0);
    } catch (const std::bad_alloc&) {
        return ioError("There is not enough memory to write the image.");
    }
    out[0] = 'B';
    out[1] = 'M';
    put32(out, 2, static_cast<std::uint32_t>(fileSize));
    put32(out, 10, static_cast<std::uint32_t>(pixelOffset));
    const std::size_t h = kFileHeaderSize;
    put32(out, h, headerSize);
    put32(out, h + 4, static_cast<std::uint32_t>(width));
    // Positive height: rows stored bottom-up, which every reader understands.
    put32(out, h + 8, static_cast<std::uint32_t>(height));
    put16(out, h + 12, 1);
    put16(out, h + 14, bitCount);
    put32(out, h + 16, alpha ? kCompressionBitfields : kCompressionRGB);
    put32(out, h + 20, static_cast<std::uint32_t>(imageBytes));
    double horizontalDpi = 72.0;
    double verticalDpi = 72.0;
    bitmapResolution(bitmap, horizontalDpi, verticalDpi);
    put32(out, h + 24, static_cast<std::uint32_t>(std::lround(horizontalDpi / 0.0254)));
    put32(out, h + 28, static_cast<std::uint32_t>(std::lround(verticalDpi / 0.0254)));
    if (v5) {
        if (alpha) {
            put32(out, h + 40, 0x00FF0000);
            put32(out, h + 44, 0x0000FF00);
            put32(out, h + 48, 0x000000FF);
            put32(out, h + 52, 0xFF000000);
        }
        put32(out, h + 56, icc.empty() ? kSpaceSRGB : kSpaceEmbedded);
        put32(out, h + 108, kIntentImages);
        if (!icc.empty()) {
            // The profile offset counts from the start of this header.
            put32(out, h + 112, static_cast<std::uint32_t>(headerSize + imageBytes));
            put32(out, h + 116, static_cast<std::uint32_t>(icc.size()));
            std::copy(icc.begin(), icc.end(),
                      out.begin() + static_cast<std::ptrdiff_t>(pixelOffset + imageBytes));
        }
    }

    const int samples = packer.samplesPerPixel();
    for (std::uint64_t y = 0; y < height; ++y) {
        const std::uint8_t* row = packer.row(static_cast<std::int64_t>(y));
        std::uint8_t* pixel = out.data() + pixelOffset + (height - 1 - y) * stride;
        for (std::uint64_t x = 0; x < width; ++x, row += samples) {
            const std::uint8_t r = row[0];
            const std::uint8_t g = grey ? row[0] : row[1];
            const std::uint8_t b = grey ? row[0] : row[2];
            *pixel++ = b;
            *pixel++ = g;
            *pixel++ = r;
            if (alpha)
                *pixel++ = row[samples - 1];
        }
    }
    return out;
}

class BmpCodec final : public ImageCodec {
public:
    ImageFormat format() const override { return ImageFormat::bmp; }
    std::string_view name() const override { return "BMP"; }
    bool sniff(std::span<const std::uint8_t> head) const override
    {
        if (head.size() < 18 || head[0] != 'B' || head[1] != 'M')
            return false;
        const std::uint32_t headerSize = read32(&head[14]);
        return headerSize == 12 || headerSize == 40 || headerSize == 52 || headerSize == 56 ||
               headerSize == 64 || headerSize == 108 || headerSize == 124;
    }
    IOResult<std::unique_ptr<ImageReader>> open(std::span<const std::uint8_t> data) const override
    {
        if (!sniff(data))
            return ioError("The file is not a BMP file.");
        return std::unique_ptr<ImageReader>(std::make_unique<BmpImageReader>(data));
    }
    IOResult<std::vector<std::uint8_t>> encode(const KVBitmap& bitmap,
                                               const EncodeOptions&) const override
    {
        return encodeBmp(bitmap);
    }
};

} // namespace

const ImageCodec& bmpCodec()
{
    static const BmpCodec codec;
    return codec;
}

} // namespace tintorra
