#include "colour/IccProfiles.h"
#include "imageio/DecodedBitmap.h"
#include "imageio/ImageCodec.h"
#include "imageio/PngChunks.h"
#include "imageio/PngImageData.h"
#include "imageio/SampleRows.h"

#include <png.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <optional>
#include <utility>

// libpng reports errors by longjmp. Every function here that calls setjmp holds only plain data
// and pointers, and everything with a destructor lives in its callers, so the jump never skips
// a C++ object's end of life.

namespace tintorra {

namespace {

// libpng's own compression, for callers that ask for zlib settings (EncodeOptions): level 2 with
// the Up filter alone unless told otherwise. On a 12-megapixel 16-bit photograph-like picture
// (bench/image_file_bench) this writes at about 70 MB/s to 38% of the raw size, where level 6
// with adaptive filtering takes ten times as long and, on noisy 16-bit samples, compresses
// worse (45%); level 3 halves the speed for 3% less. Without such settings the image data is
// compressed by writePngImageData, several times faster again.
constexpr int kPngCompressionLevel = 2;
constexpr int kPngFilters = PNG_FILTER_UP;
// The image data is split into IDAT chunks of at most this size.
constexpr std::size_t kLargestIdatBytes = 1u << 20;

struct PngErrorState {
    char message[256] = {};
};

void copyMessage(PngErrorState* state, const char* message)
{
    std::snprintf(state->message, sizeof state->message, "%s", message ? message : "");
}

void onPngError(png_structp png, png_const_charp message)
{
    copyMessage(static_cast<PngErrorState*>(png_get_error_ptr(png)), message);
    png_longjmp(png, 1);
}

void onPngWarning(png_structp, png_const_charp) {}

// ---- reading ----

struct PngSource {
    const std::uint8_t* data = nullptr;
    std::size_t size = 0;
    std::size_t position = 0;
};

void readFromMemory(png_structp png, png_bytep out, png_size_t length)
{
    auto* source = static_cast<PngSource*>(png_get_io_ptr(png));
    if (length > source->size - source->position)
        png_error(png, "the file ends before the image does");
    std::memcpy(out, source->data + source->position, length);
    source->position += length;
}

struct PngHeader {
    png_uint_32 width = 0;
    png_uint_32 height = 0;
    // After the transformations below (palette and low depths expanded, tRNS made alpha).
    int bitDepth = 8;
    int colourType = 0;
    int channels = 0;
    png_size_t rowBytes = 0;
    // As the file stores the samples.
    int fileBitDepth = 8;
    int fileColourType = 0;
    bool interlaced = false;
    bool transparencyChunk = false;
    png_bytep icc = nullptr;
    png_uint_32 iccLength = 0;
    bool sRGB = false;
    png_uint_32 xPixelsPerUnit = 0;
    png_uint_32 yPixelsPerUnit = 0;
    int unit = PNG_RESOLUTION_UNKNOWN;
};

// The chunks up to the image data.
bool readPngInfo(png_structp png, png_infop info)
{
    if (setjmp(png_jmpbuf(png)))
        return false;
    png_read_info(png, info);
    return true;
}

// The layout the decoded pixels will have (8 or 16 bits, grey or RGB, alpha where the file has
// it or a transparency chunk), known from the header alone, so that the size can be checked
// before libpng allocates rows of the declared width.
KVBitmapLayout decodedPngLayout(png_structp png, png_infop info)
{
    const int colourType = png_get_color_type(png, info);
    const bool alpha =
        (colourType & PNG_COLOR_MASK_ALPHA) != 0 || png_get_valid(png, info, PNG_INFO_tRNS) != 0;
    KVBitmapLayout layout;
    layout.pixelsWide = png_get_image_width(png, info);
    layout.pixelsHigh = png_get_image_height(png, info);
    layout.bitsPerSample = png_get_bit_depth(png, info) == 16 ? 16 : 8;
    layout.samplesPerPixel = ((colourType & PNG_COLOR_MASK_COLOR) != 0 ? 3 : 1) + (alpha ? 1 : 0);
    layout.hasAlpha = alpha;
    return layout;
}

bool readPngHeader(png_structp png, png_infop info, PngHeader* header)
{
    if (setjmp(png_jmpbuf(png)))
        return false;
    const int colourType = png_get_color_type(png, info);
    const int bitDepth = png_get_bit_depth(png, info);
    header->fileColourType = colourType;
    header->fileBitDepth = bitDepth;
    header->interlaced = png_get_interlace_type(png, info) != PNG_INTERLACE_NONE;
    header->transparencyChunk = png_get_valid(png, info, PNG_INFO_tRNS) != 0;
    if (colourType == PNG_COLOR_TYPE_PALETTE)
        png_set_palette_to_rgb(png);
    if (colourType == PNG_COLOR_TYPE_GRAY && bitDepth < 8)
        png_set_expand_gray_1_2_4_to_8(png);
    if (header->transparencyChunk)
        png_set_tRNS_to_alpha(png);
    if (bitDepth == 16)
        png_set_swap(png);
    png_set_interlace_handling(png);
    png_read_update_info(png, info);

    header->width = png_get_image_width(png, info);
    header->height = png_get_image_height(png, info);
    header->bitDepth = png_get_bit_depth(png, info);
    header->colourType = png_get_color_type(png, info);
    header->channels = png_get_channels(png, info);
    header->rowBytes = png_get_rowbytes(png, info);
    png_charp name = nullptr;
    int compression = 0;
    if (png_get_iCCP(png, info, &name, &compression, &header->icc, &header->iccLength) == 0) {
        header->icc = nullptr;
        header->iccLength = 0;
    }
    header->sRGB = png_get_valid(png, info, PNG_INFO_sRGB) != 0;
    if (png_get_pHYs(png, info, &header->xPixelsPerUnit, &header->yPixelsPerUnit, &header->unit) ==
        0)
        header->unit = PNG_RESOLUTION_UNKNOWN;
    return true;
}

bool readPngRows(png_structp png, png_bytepp rows)
{
    if (setjmp(png_jmpbuf(png)))
        return false;
    png_read_image(png, rows);
    // Reading to the end checks the rest of the file, so that a damaged or cut-off tail is
    // reported rather than ignored.
    png_read_end(png, nullptr);
    return true;
}

// Images whose rows libpng would hand over unchanged but for the byte order of 16-bit samples
// are decoded here, several times faster: the image data inflated by ISA-L while another thread
// undoes the row filters. Palettes, depths below 8, transparency chunks and interlacing take
// libpng's way, and so does any file whose image data is not perfectly sound, so that what a
// damaged file yields (an error or what libpng recovers) stays libpng's answer.
bool decodesOwnWay(const PngHeader& header)
{
    const bool depth = header.fileBitDepth == 8 || header.fileBitDepth == 16;
    const bool colourType = header.fileColourType == PNG_COLOR_TYPE_GRAY ||
                            header.fileColourType == PNG_COLOR_TYPE_GRAY_ALPHA ||
                            header.fileColourType == PNG_COLOR_TYPE_RGB ||
                            header.fileColourType == PNG_COLOR_TYPE_RGB_ALPHA;
    return depth && colourType && !header.interlaced && !header.transparencyChunk &&
           header.rowBytes <= kLargestPngRowBytes;
}

bool decodeImageDataOwnWay(std::span<const std::uint8_t> data, const PngHeader& header,
                           KVBitmap& bitmap)
{
    if (!decodesOwnWay(header))
        return false;
    PngRowLayout layout;
    layout.rows = header.height;
    layout.rowBytes = header.rowBytes;
    layout.bytesPerPixel = static_cast<unsigned>(header.channels * header.fileBitDepth / 8);
    layout.sixteenBit = header.fileBitDepth == 16;
    try {
        const std::optional<PngImageDataChunks> chunks = pngImageDataChunks(data);
        return chunks && readPngImageData(*chunks, layout, bitmap.bitmapData(),
                                          static_cast<std::size_t>(bitmap.bytesPerRow()));
    } catch (const std::bad_alloc&) {
        // libpng needs less memory beside the bitmap.
        return false;
    }
}

class PngReadStruct {
public:
    explicit PngReadStruct(PngErrorState* errors)
    {
        png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, errors, &onPngError, &onPngWarning);
        if (png_)
            info_ = png_create_info_struct(png_);
    }
    ~PngReadStruct() { png_destroy_read_struct(&png_, info_ ? &info_ : nullptr, nullptr); }
    PngReadStruct(const PngReadStruct&) = delete;
    PngReadStruct& operator=(const PngReadStruct&) = delete;

    png_structp png() const { return png_; }
    png_infop info() const { return info_; }

private:
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
};

PageDescription pngPageDescription(const PngHeader& header)
{
    const bool grey =
        header.colourType == PNG_COLOR_TYPE_GRAY || header.colourType == PNG_COLOR_TYPE_GRAY_ALPHA;
    const bool alpha = (header.colourType & PNG_COLOR_MASK_ALPHA) != 0;
    const KVColorSpaceModel model = grey ? KVColorSpaceModel::gray : KVColorSpaceModel::rgb;
    KVColorSpace colorSpace = deviceColorSpace(model);
    if (header.icc && header.iccLength > 0)
        colorSpace = colorSpaceForDecodedImage(
            model, std::vector<std::uint8_t>(header.icc, header.icc + header.iccLength));
    else if (header.sRGB && !grey)
        colorSpace = sRGBColorSpace();

    KVBitmapLayout layout;
    layout.pixelsWide = header.width;
    layout.pixelsHigh = header.height;
    layout.bitsPerSample = header.bitDepth;
    layout.samplesPerPixel = header.channels;
    layout.hasAlpha = alpha;
    layout.bitmapFormat = alpha ? kBitmapFormatAlphaNonpremultiplied : 0u;
    return {layout, std::move(colorSpace)};
}

// Deflate expands by at most 1032 to 1, and the smallest pixel a PNG stores is one bit.
PlausibleSize plausiblePngSize(std::span<const std::uint8_t> data)
{
    return {data.size(), 1032 * 8};
}

// The header as decoding needs it. An image that cannot be held, or that the file is far too
// small for, is refused before libpng allocates anything for its rows.
IOStatus readCheckedPngHeader(const PngReadStruct& reader, const PngErrorState& errors,
                              std::span<const std::uint8_t> data, PngHeader* header)
{
    const auto damaged = [&] {
        return ioError(std::string("The PNG file is damaged or truncated: ") + errors.message +
                       ".");
    };
    if (!readPngInfo(reader.png(), reader.info()))
        return damaged();
    if (IOStatus size = checkDecodableSize(decodedPngLayout(reader.png(), reader.info()), 0,
                                           plausiblePngSize(data));
        !size)
        return size;
    if (!readPngHeader(reader.png(), reader.info(), header))
        return damaged();
    return ioSuccess();
}

// A PNG being read: libpng's structures over the data, and its checked header.
struct PngReading {
    PngErrorState errors;
    PngReadStruct reader{&errors};
    PngSource source;
    PngHeader header;

    IOStatus open(std::span<const std::uint8_t> data)
    {
        if (!reader.png() || !reader.info())
            return ioError("There is not enough memory to open the image.");
        source = {data.data(), data.size(), 0};
        png_set_read_fn(reader.png(), &source, &readFromMemory);
        // The size check is ours; libpng's own default limit would refuse big photographs.
        png_set_user_limits(reader.png(), 0x7fffffff, 0x7fffffff);
        return readCheckedPngHeader(reader, errors, data, &header);
    }
};

IOResult<PageDescription> describePng(std::span<const std::uint8_t> data)
{
    PngReading png;
    if (IOStatus opened = png.open(data); !opened)
        return opened.error();
    return pngPageDescription(png.header);
}

IOResult<KVBitmapPtr> decodePng(std::span<const std::uint8_t> data)
{
    PngReading png;
    if (IOStatus opened = png.open(data); !opened)
        return opened.error();
    const PngHeader& header = png.header;

    PageDescription page = pngPageDescription(header);
    IOResult<KVBitmapPtr> allocated = allocateBitmapForDecoding(
        page.layout, std::move(page.colorSpace), 0, plausiblePngSize(data));
    if (!allocated)
        return allocated;
    KVBitmapPtr bitmap = allocated.take();
    if (static_cast<std::size_t>(bitmap->bytesPerRow()) < header.rowBytes)
        return ioError("The PNG image has a row layout Tintorra cannot hold.");

    if (!decodeImageDataOwnWay(data, header, *bitmap)) {
        std::vector<png_bytep> rows(header.height);
        for (png_uint_32 y = 0; y < header.height; ++y)
            rows[y] = bitmap->bitmapData() + static_cast<std::size_t>(y) * bitmap->bytesPerRow();
        if (!readPngRows(png.reader.png(), rows.data()))
            return ioError(std::string("The PNG file is damaged or truncated: ") +
                           png.errors.message + ".");
    }

    if (header.unit == PNG_RESOLUTION_METER)
        setBitmapResolution(*bitmap, header.xPixelsPerUnit * 0.0254,
                            header.yPixelsPerUnit * 0.0254);
    return bitmap;
}

class PngImageReader final : public ImageReader {
public:
    explicit PngImageReader(std::span<const std::uint8_t> data) : data_(data) {}
    std::size_t pageCount() const override { return 1; }
    IOResult<KVBitmapPtr> decodePage(std::size_t page) override
    {
        if (page != 0)
            return ioError("A PNG file has one page.");
        return decodePng(data_);
    }
    IOResult<PageDescription> describePage(std::size_t page) override
    {
        if (page != 0)
            return ioError("A PNG file has one page.");
        return describePng(data_);
    }

private:
    std::span<const std::uint8_t> data_;
};

// ---- writing ----

struct PngSink {
    std::vector<std::uint8_t>* bytes = nullptr;
    bool outOfMemory = false;
};

bool appendBytes(PngSink* sink, const std::uint8_t* data, std::size_t length)
{
    try {
        sink->bytes->insert(sink->bytes->end(), data, data + length);
        return true;
    } catch (const std::bad_alloc&) {
        sink->outOfMemory = true;
        return false;
    }
}

void writeToMemory(png_structp png, png_bytep data, png_size_t length)
{
    if (!appendBytes(static_cast<PngSink*>(png_get_io_ptr(png)), data, length))
        png_error(png, "there is not enough memory");
}

void flushNothing(png_structp) {}

struct PngWriteSetup {
    png_uint_32 width = 0;
    png_uint_32 height = 0;
    int bitDepth = 8;
    int colourType = PNG_COLOR_TYPE_RGB;
    const char* iccName = nullptr;
    const std::uint8_t* icc = nullptr;
    png_uint_32 iccLength = 0;
    png_uint_32 pixelsPerMetreX = 0;
    png_uint_32 pixelsPerMetreY = 0;
    int compressionLevel = kPngCompressionLevel;
    int filters = kPngFilters;
};

const std::uint8_t* nextRow(RowPacker* packer, png_uint_32 y)
{
    return packer->row(y);
}

// The header and the chunks before the image data; called where setjmp is set.
void describeImage(png_structp png, png_infop info, const PngWriteSetup* setup)
{
    // A profile libpng finds inconsistent is left out with a warning instead of failing the save.
    png_set_benign_errors(png, 1);
    png_set_IHDR(png, info, setup->width, setup->height, setup->bitDepth, setup->colourType,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (setup->icc)
        png_set_iCCP(png, info, setup->iccName, PNG_COMPRESSION_TYPE_BASE, setup->icc,
                     setup->iccLength);
    if (setup->pixelsPerMetreX > 0 && setup->pixelsPerMetreY > 0)
        png_set_pHYs(png, info, setup->pixelsPerMetreX, setup->pixelsPerMetreY,
                     PNG_RESOLUTION_METER);
}

// libpng writes everything, compressing with zlib.
bool writePng(png_structp png, png_infop info, const PngWriteSetup* setup, RowPacker* packer)
{
    if (setjmp(png_jmpbuf(png)))
        return false;
    describeImage(png, info, setup);
    png_set_compression_level(png, setup->compressionLevel);
    png_set_filter(png, PNG_FILTER_TYPE_BASE, setup->filters);
    png_write_info(png, info);
    if (setup->bitDepth == 16)
        png_set_swap(png);
    for (png_uint_32 y = 0; y < setup->height; ++y)
        png_write_row(png, nextRow(packer, y));
    png_write_end(png, info);
    return true;
}

// libpng writes the signature, the header, the other chunks and the chunk framing around image
// data compressed beforehand. png_write_end would refuse, as libpng saw no image data of its own,
// so IEND is written as a plain chunk.
bool writePngAroundImageData(png_structp png, png_infop info, const PngWriteSetup* setup,
                             const std::vector<PngStreamPiece>* pieces)
{
    if (setjmp(png_jmpbuf(png)))
        return false;
    describeImage(png, info, setup);
    png_write_info(png, info);
    for (const PngStreamPiece& piece : *pieces) {
        for (std::size_t offset = 0; offset < piece.size; offset += kLargestIdatBytes)
            png_write_chunk(png, reinterpret_cast<png_const_bytep>("IDAT"),
                            piece.bytes.get() + offset,
                            std::min(kLargestIdatBytes, piece.size - offset));
    }
    png_write_chunk(png, reinterpret_cast<png_const_bytep>("IEND"), nullptr, 0);
    return true;
}

// The rows as PNG stores them, for writePngImageData.
PngRowSource pngRows(const KVBitmap& bitmap, const RowPacker& packer)
{
    const bool direct = packer.isDirect() && packer.bitsPerSample() == 8;
    const bool sixteenBit = packer.bitsPerSample() == 16;
    const std::size_t rowBytes = packer.rowBytes();
    return
        [&bitmap, &packer, direct, sixteenBit, rowBytes](std::uint32_t y, std::uint8_t* scratch) {
            if (direct)
                return bitmap.bitmapData() + static_cast<std::size_t>(y) * bitmap.bytesPerRow();
            packer.packRow(y, scratch);
            // PNG samples are big-endian.
            if (sixteenBit) {
                for (std::size_t i = 0; i + 1 < rowBytes; i += 2)
                    std::swap(scratch[i], scratch[i + 1]);
            }
            return static_cast<const std::uint8_t*>(scratch);
        };
}

// An upper estimate of the file size, so that the bytes are copied into place only once.
std::size_t expectedFileBytes(const std::vector<PngStreamPiece>& pieces, const PngWriteSetup& setup)
{
    constexpr std::size_t kChunkFraming = 12;
    std::size_t bytes = 8 + 4096 + 2 * setup.iccLength;
    for (const PngStreamPiece& piece : pieces)
        bytes += piece.size + (piece.size / kLargestIdatBytes + 1) * kChunkFraming;
    return bytes;
}

class PngWriteStruct {
public:
    explicit PngWriteStruct(PngErrorState* errors)
    {
        png_ = png_create_write_struct(PNG_LIBPNG_VER_STRING, errors, &onPngError, &onPngWarning);
        if (png_)
            info_ = png_create_info_struct(png_);
    }
    ~PngWriteStruct() { png_destroy_write_struct(&png_, info_ ? &info_ : nullptr); }
    PngWriteStruct(const PngWriteStruct&) = delete;
    PngWriteStruct& operator=(const PngWriteStruct&) = delete;

    png_structp png() const { return png_; }
    png_infop info() const { return info_; }

private:
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
};

// A profile name PNG accepts: 1 to 79 printable Latin-1 characters without leading, trailing or
// doubled spaces.
std::string iccProfileKeyword(const std::string& name)
{
    std::string keyword;
    for (const char c : name) {
        const bool printable = c > ' ' && c <= '~';
        if (printable)
            keyword += c;
        else if (c == ' ' && !keyword.empty() && keyword.back() != ' ')
            keyword += ' ';
    }
    while (!keyword.empty() && keyword.back() == ' ')
        keyword.pop_back();
    if (keyword.size() > 79)
        keyword.resize(79);
    while (!keyword.empty() && keyword.back() == ' ')
        keyword.pop_back();
    return keyword.empty() ? "ICC profile" : keyword;
}

IOResult<std::vector<std::uint8_t>> encodePng(const KVBitmap& bitmap, const EncodeOptions& options)
{
    const KVColorSpaceModel model = bitmap.colorSpace().model();
    if (model != KVColorSpaceModel::rgb && model != KVColorSpaceModel::gray)
        return ioError("PNG holds only RGB and grey images.");
    if (bitmap.bitsPerSample() != 8 && bitmap.bitsPerSample() != 16)
        return ioError("PNG images are written with 8 or 16 bits per sample.");

    RowPacking packing;
    packing.bitsPerSample = static_cast<int>(bitmap.bitsPerSample());
    packing.keepAlpha = true;
    // PNG alpha is unassociated.
    packing.unpremultiply = true;
    RowPacker packer(bitmap, packing);
    const bool grey = model == KVColorSpaceModel::gray;
    if (packer.colourSamples() != (grey ? 1 : 3))
        return ioError("The image's sample count does not match its colour model.");

    PngWriteSetup setup;
    setup.width = static_cast<png_uint_32>(bitmap.pixelsWide());
    setup.height = static_cast<png_uint_32>(bitmap.pixelsHigh());
    setup.bitDepth = packer.bitsPerSample();
    setup.colourType = grey ? (packer.hasAlpha() ? PNG_COLOR_TYPE_GRAY_ALPHA : PNG_COLOR_TYPE_GRAY)
                            : (packer.hasAlpha() ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB);
    const std::string keyword = iccProfileKeyword(bitmap.colorSpace().name());
    const std::vector<std::uint8_t>& icc = bitmap.colorSpace().iccProfile();
    if (!icc.empty()) {
        setup.iccName = keyword.c_str();
        setup.icc = icc.data();
        setup.iccLength = static_cast<png_uint_32>(icc.size());
    }
    double horizontalDpi = 72.0;
    double verticalDpi = 72.0;
    bitmapResolution(bitmap, horizontalDpi, verticalDpi);
    setup.pixelsPerMetreX = static_cast<png_uint_32>(horizontalDpi / 0.0254 + 0.5);
    setup.pixelsPerMetreY = static_cast<png_uint_32>(verticalDpi / 0.0254 + 0.5);
    setup.compressionLevel =
        std::clamp(options.pngCompressionLevel.value_or(kPngCompressionLevel), 0, 9);
    setup.filters = options.pngFilters.value_or(kPngFilters) & PNG_ALL_FILTERS;
    if (setup.filters == 0)
        setup.filters = PNG_FILTER_NONE;

    const bool libpngCompresses = options.pngCompressionLevel || options.pngFilters ||
                                  packer.rowBytes() > kLargestPngRowBytes;
    std::optional<std::vector<PngStreamPiece>> imageData;
    std::vector<std::uint8_t> bytes;
    if (!libpngCompresses) {
        PngRowLayout layout;
        layout.rows = setup.height;
        layout.rowBytes = packer.rowBytes();
        layout.bytesPerPixel =
            static_cast<unsigned>(packer.samplesPerPixel() * packer.bitsPerSample() / 8);
        layout.sixteenBit = packer.bitsPerSample() == 16;
        imageData = writePngImageData(layout, pngRows(bitmap, packer));
        if (!imageData)
            return ioError("There is not enough memory to write the image.");
        try {
            bytes.reserve(expectedFileBytes(*imageData, setup));
        } catch (const std::bad_alloc&) {
            return ioError("There is not enough memory to write the image.");
        }
    }

    PngSink sink{&bytes, false};
    PngErrorState errors;
    PngWriteStruct writer(&errors);
    if (!writer.png() || !writer.info())
        return ioError("There is not enough memory to write the image.");
    png_set_write_fn(writer.png(), &sink, &writeToMemory, &flushNothing);
    const bool written =
        imageData ? writePngAroundImageData(writer.png(), writer.info(), &setup, &*imageData)
                  : writePng(writer.png(), writer.info(), &setup, &packer);
    if (!written)
        return ioError(std::string("The PNG file could not be written: ") + errors.message + ".");
    return bytes;
}

class PngCodec final : public ImageCodec {
public:
    ImageFormat format() const override { return ImageFormat::png; }
    std::string_view name() const override { return "PNG"; }
    bool sniff(std::span<const std::uint8_t> head) const override
    {
        static constexpr std::uint8_t signature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
        return head.size() >= 8 && std::equal(signature, signature + 8, head.begin());
    }
    IOResult<std::unique_ptr<ImageReader>> open(std::span<const std::uint8_t> data) const override
    {
        if (!sniff(data))
            return ioError("The file is not a PNG file.");
        return std::unique_ptr<ImageReader>(std::make_unique<PngImageReader>(data));
    }
    IOResult<std::vector<std::uint8_t>> encode(const KVBitmap& bitmap,
                                               const EncodeOptions& options) const override
    {
        return encodePng(bitmap, options);
    }
};

} // namespace

const ImageCodec& pngCodec()
{
    static const PngCodec codec;
    return codec;
}

} // namespace tintorra
