#include "colour/IccProfiles.h"
#include "imageio/DecodedBitmap.h"
#include "imageio/ImageCodec.h"
#include "imageio/ImageLimits.h"
#include "imageio/SampleRows.h"

#include <openjpeg.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <thread>

namespace tintorra {

namespace {

// Rows per tile when writing: tiles span the full width, so each band of rows is packed once,
// and OpenJPEG's working memory stays one band instead of the whole image.
constexpr std::uint32_t kTileRows = 512;

constexpr std::uint8_t kJp2Signature[12] = {0,   0,   0,    12,   'j',  'P',
                                            ' ', ' ', '\r', '\n', 0x87, '\n'};
constexpr std::uint8_t kCodestreamSignature[4] = {0xFF, 0x4F, 0xFF, 0x51};

bool startsWith(std::span<const std::uint8_t> data, const std::uint8_t* signature, std::size_t n)
{
    return data.size() >= n && std::equal(signature, signature + n, data.begin());
}

int workerThreads()
{
    return static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
}

struct OpenJpegMessages {
    std::string lastError;
};

void keepError(const char* message, void* userData)
{
    std::string& lastError = static_cast<OpenJpegMessages*>(userData)->lastError;
    lastError = message ? message : "";
    while (!lastError.empty() && (lastError.back() == '\n' || lastError.back() == ' '))
        lastError.pop_back();
}

void ignoreMessage(const char*, void*) {}

struct CodecCloser {
    void operator()(opj_codec_t* codec) const { opj_destroy_codec(codec); }
};
struct StreamCloser {
    void operator()(opj_stream_t* stream) const { opj_stream_destroy(stream); }
};
struct ImageCloser {
    void operator()(opj_image_t* image) const { opj_image_destroy(image); }
};
// The most pixels a byte of codestream is taken to describe. Real pictures compress far less
// than this; a few bytes that declare a huge picture only make the decoder work and allocate.
constexpr std::uint64_t kMostPixelsPerByte = 8192;
// More tiles than this cost the decoder more than any picture it could hold needs.
constexpr std::uint64_t kMostTiles = 65536;

using CodecHandle = std::unique_ptr<opj_codec_t, CodecCloser>;
using StreamHandle = std::unique_ptr<opj_stream_t, StreamCloser>;
using ImageHandle = std::unique_ptr<opj_image_t, ImageCloser>;

void installHandlers(opj_codec_t* codec, OpenJpegMessages& messages)
{
    opj_set_error_handler(codec, &keepError, &messages);
    opj_set_warning_handler(codec, &ignoreMessage, nullptr);
    opj_set_info_handler(codec, &ignoreMessage, nullptr);
}

// ---- reading ----

struct MemoryInput {
    std::span<const std::uint8_t> data;
    std::uint64_t position = 0;
};

OPJ_SIZE_T readInput(void* buffer, OPJ_SIZE_T count, void* userData)
{
    auto& input = *static_cast<MemoryInput*>(userData);
    if (input.position >= input.data.size())
        return static_cast<OPJ_SIZE_T>(-1);
    const std::uint64_t n = std::min<std::uint64_t>(count, input.data.size() - input.position);
    std::memcpy(buffer, input.data.data() + input.position, n);
    input.position += n;
    return static_cast<OPJ_SIZE_T>(n);
}

OPJ_OFF_T skipInput(OPJ_OFF_T count, void* userData)
{
    auto& input = *static_cast<MemoryInput*>(userData);
    if (count < 0) {
        if (static_cast<std::uint64_t>(-count) > input.position)
            return -1;
        input.position -= static_cast<std::uint64_t>(-count);
        return count;
    }
    const std::uint64_t n = std::min<std::uint64_t>(
        static_cast<std::uint64_t>(count),
        input.data.size() - std::min<std::uint64_t>(input.position, input.data.size()));
    input.position += n;
    return static_cast<OPJ_OFF_T>(n);
}

OPJ_BOOL seekInput(OPJ_OFF_T position, void* userData)
{
    auto& input = *static_cast<MemoryInput*>(userData);
    if (position < 0 || static_cast<std::uint64_t>(position) > input.data.size())
        return OPJ_FALSE;
    input.position = static_cast<std::uint64_t>(position);
    return OPJ_TRUE;
}

// Where one output sample of a row comes from and how it is brought to the bitmap's depth.
struct ComponentReader {
    const opj_image_comp_t* component = nullptr;
    std::int32_t offset = 0;
    std::int32_t maximum = 0;
    std::uint32_t dx = 1;
    std::uint32_t dy = 1;

    std::int32_t at(std::uint32_t imageX, std::uint32_t imageY) const
    {
        const std::uint32_t cx =
            std::min(component->w - 1, imageX / dx - std::min(imageX / dx, component->x0));
        const std::uint32_t cy =
            std::min(component->h - 1, imageY / dy - std::min(imageY / dy, component->y0));
        const std::int32_t v =
            component->data[static_cast<std::size_t>(cy) * component->w + cx] + offset;
        return std::clamp(v, 0, maximum);
    }
};

std::uint32_t scaleTo(std::int32_t value, std::int32_t maximum, std::uint32_t outputMaximum)
{
    if (static_cast<std::uint32_t>(maximum) == outputMaximum)
        return static_cast<std::uint32_t>(value);
    return static_cast<std::uint32_t>((static_cast<std::uint64_t>(value) * outputMaximum +
                                       static_cast<std::uint64_t>(maximum) / 2) /
                                      static_cast<std::uint64_t>(maximum));
}

IOResult<KVBitmapPtr> decodeJpeg2000(std::span<const std::uint8_t> data)
{
    const bool codestream = startsWith(data, kCodestreamSignature, 4);
    OpenJpegMessages messages;
    CodecHandle codec(opj_create_decompress(codestream ? OPJ_CODEC_J2K : OPJ_CODEC_JP2));
    if (!codec)
        return ioError("There is not enough memory to open the image.");
    installHandlers(codec.get(), messages);
    opj_dparameters_t parameters;
    opj_set_default_decoder_parameters(&parameters);
    if (!opj_setup_decoder(codec.get(), &parameters))
        return ioError("The JPEG 2000 decoder could not be set up.");
    // A truncated codestream is an error, not an image with missing detail.
    opj_decoder_set_strict_mode(codec.get(), OPJ_TRUE);
    opj_codec_set_threads(codec.get(), workerThreads());

    MemoryInput input{data, 0};
    StreamHandle stream(opj_stream_create(64 * 1024, OPJ_TRUE));
    if (!stream)
        return ioError("There is not enough memory to open the image.");
    opj_stream_set_user_data(stream.get(), &input, nullptr);
    opj_stream_set_user_data_length(stream.get(), data.size());
    opj_stream_set_read_function(stream.get(), &readInput);
    opj_stream_set_skip_function(stream.get(), &skipInput);
    opj_stream_set_seek_function(stream.get(), &seekInput);

    const auto damaged = [&messages]() {
        std::string message = "The JPEG 2000 file is damaged or truncated.";
        if (!messages.lastError.empty())
            message += " " + messages.lastError;
        return ioError(message);
    };

    opj_image_t* rawImage = nullptr;
    if (!opj_read_header(stream.get(), codec.get(), &rawImage)) {
        opj_image_destroy(rawImage);
        return damaged();
    }
    ImageHandle image(rawImage);
    if (image->x1 <= image->x0 || image->y1 <= image->y0 || image->numcomps == 0)
        return ioError("The JPEG 2000 image has no pixels.");
    const std::uint32_t width = image->x1 - image->x0;
    const std::uint32_t height = image->y1 - image->y0;

    if (image->numcomps > 5)
        return ioError("The JPEG 2000 image has more channels than colour and one alpha channel, "
                       "which Tintorra cannot open.");
    std::uint32_t precision = 0;
    for (std::uint32_t c = 0; c < image->numcomps; ++c) {
        if (image->comps[c].prec == 0 || image->comps[c].prec > 16)
            return ioError("The JPEG 2000 image has components of more than 16 bits, which "
                           "Tintorra cannot open.");
        if (image->comps[c].dx == 0 || image->comps[c].dy == 0)
            return damaged();
        precision = std::max(precision, image->comps[c].prec);
    }
    const int bits = precision <= 8 ? 8 : 16;
    // OpenJPEG decodes into 32-bit integers per sample beside the bitmap: check before it
    // allocates them.
    KVBitmapLayout declared;
    declared.pixelsWide = width;
    declared.pixelsHigh = height;
    declared.samplesPerPixel = image->numcomps;
    declared.bitsPerSample = bits;
    if (IOStatus fits =
            checkDecodableSize(declared, sizeof(OPJ_INT32), {data.size(), kMostPixelsPerByte});
        !fits)
        return fits.error();
    // Each tile costs the decoder its own buffers and passes, however little it holds: a
    // header that cuts the image into a great many tiles keeps it busy for nothing.
    if (opj_codestream_info_v2_t* info = opj_get_cstr_info(codec.get())) {
        const std::uint64_t tiles = static_cast<std::uint64_t>(info->tw) * info->th;
        opj_destroy_cstr_info(&info);
        if (tiles > kMostTiles)
            return ioError("The JPEG 2000 image is cut into " + std::to_string(tiles) +
                           " tiles, more than Tintorra opens; save it with fewer, larger tiles.");
    }

    if (!opj_decode(codec.get(), stream.get(), image.get()) ||
        !opj_end_decompress(codec.get(), stream.get()))
        return damaged();

    // The colour box, the profile and the channel definitions are applied to the
    // image while decoding, so they are read only now.
    const OPJ_COLOR_SPACE space = image->color_space;
    const std::uint32_t components = image->numcomps;
    if (space == OPJ_CLRSPC_EYCC)
        return ioError("The JPEG 2000 image is encoded as e-YCC, which Tintorra cannot open.");
    int colours = 0;
    KVColorSpaceModel model = KVColorSpaceModel::rgb;
    switch (space) {
    case OPJ_CLRSPC_GRAY:
        model = KVColorSpaceModel::gray;
        colours = 1;
        break;
    case OPJ_CLRSPC_CMYK:
        model = KVColorSpaceModel::cmyk;
        colours = 4;
        break;
    case OPJ_CLRSPC_SRGB:
    case OPJ_CLRSPC_SYCC:
        colours = 3;
        break;
    default:
        colours = components <= 2 ? 1 : 3;
        model = components <= 2 ? KVColorSpaceModel::gray : KVColorSpaceModel::rgb;
        // OpenJPEG marks a CIELab colour box with parameters but no profile.
        if (image->icc_profile_buf && image->icc_profile_len == 0)
            model = KVColorSpaceModel::lab;
        break;
    }
    if (components < static_cast<std::uint32_t>(colours))
        return ioError("The JPEG 2000 image has fewer components than its colour space needs.");
    if (components > static_cast<std::uint32_t>(colours) + 1)
        return ioError("The JPEG 2000 image has more channels than colour and one alpha channel, "
                       "which Tintorra cannot open.");
    const bool alpha = components == static_cast<std::uint32_t>(colours) + 1;

    KVBitmapLayout layout;
    layout.pixelsWide = width;
    layout.pixelsHigh = height;
    layout.bitsPerSample = bits;
    layout.samplesPerPixel = static_cast<std::int64_t>(components);
    layout.hasAlpha = alpha;
    const bool premultiplied = alpha && image->comps[components - 1].alpha == 2;
    layout.bitmapFormat = alpha && !premultiplied ? kBitmapFormatAlphaNonpremultiplied : 0u;

    std::vector<std::uint8_t> icc;
    if (image->icc_profile_buf && image->icc_profile_len > 0)
        icc.assign(image->icc_profile_buf, image->icc_profile_buf + image->icc_profile_len);
    KVColorSpace colorSpace = colorSpaceForDecodedImage(model, std::move(icc));
    if (space == OPJ_CLRSPC_SRGB && !colorSpace.hasIccProfile())
        colorSpace = sRGBColorSpace();
    IOResult<KVBitmapPtr> allocated = allocateBitmapForDecoding(layout, std::move(colorSpace));
    if (!allocated)
        return allocated;
    KVBitmapPtr bitmap = allocated.take();

    ComponentReader readers[5];
    for (std::uint32_t c = 0; c < components; ++c) {
        const opj_image_comp_t& component = image->comps[c];
        if (!component.data || component.w == 0 || component.h == 0)
            return damaged();
        readers[c].component = &component;
        readers[c].offset = component.sgnd ? (1 << (component.prec - 1)) : 0;
        readers[c].maximum = static_cast<std::int32_t>((1u << component.prec) - 1u);
        readers[c].dx = component.dx;
        readers[c].dy = component.dy;
    }

    const std::uint32_t outputMaximum = bits == 8 ? 255u : 65535u;
    const bool ycc = space == OPJ_CLRSPC_SYCC;
    const std::size_t sampleBytes = static_cast<std::size_t>(bits / 8);
    for (std::uint32_t y = 0; y < height; ++y) {
        std::uint8_t* row =
            bitmap->bitmapData() + static_cast<std::size_t>(y) * bitmap->bytesPerRow();
        const std::uint32_t imageY = image->y0 + y;
        for (std::uint32_t x = 0; x < width; ++x) {
            const std::uint32_t imageX = image->x0 + x;
            std::uint32_t values[5] = {};
            for (std::uint32_t c = 0; c < components; ++c)
                values[c] =
                    scaleTo(readers[c].at(imageX, imageY), readers[c].maximum, outputMaximum);
            if (ycc) {
                const double half = (outputMaximum + 1) / 2.0;
                const double luma = values[0];
                const double cb = values[1] - half;
                const double cr = values[2] - half;
                const double rgb[3] = {luma + 1.402 * cr, luma - 0.344136 * cb - 0.714136 * cr,
                                       luma + 1.772 * cb};
                for (int c = 0; c < 3; ++c)
                    values[c] = static_cast<std::uint32_t>(
                        std::clamp(std::lround(rgb[c]), 0L, static_cast<long>(outputMaximum)));
            }
            std::uint8_t* pixel = row + static_cast<std::size_t>(x) * components * sampleBytes;
            for (std::uint32_t c = 0; c < components; ++c) {
                if (bits == 8)
                    pixel[c] = static_cast<std::uint8_t>(values[c]);
                else
                    storeSample16(pixel + 2 * c, static_cast<std::uint16_t>(values[c]));
            }
        }
    }
    return bitmap;
}

class Jpeg2000ImageReader final : public ImageReader {
public:
    explicit Jpeg2000ImageReader(std::span<const std::uint8_t> data) : data_(data) {}
    std::size_t pageCount() const override { return 1; }
    IOResult<KVBitmapPtr> decodePage(std::size_t page) override
    {
        if (page != 0)
            return ioError("A JPEG 2000 file has one page.");
        return decodeJpeg2000(data_);
    }

private:
    std::span<const std::uint8_t> data_;
};

// ---- writing ----

// The codestream is written after `base` bytes of file header, so OpenJPEG's stream positions
// are offset by it.
struct MemoryOutput {
    std::vector<std::uint8_t> bytes;
    std::uint64_t base = 0;
    std::uint64_t position = 0;
    bool outOfMemory = false;
};

OPJ_SIZE_T writeOutput(void* buffer, OPJ_SIZE_T count, void* userData)
{
    auto& output = *static_cast<MemoryOutput*>(userData);
    const std::uint64_t end = output.position + count;
    try {
        if (end > output.bytes.size())
            output.bytes.resize(end);
    } catch (const std::bad_alloc&) {
        output.outOfMemory = true;
        return static_cast<OPJ_SIZE_T>(-1);
    }
    std::memcpy(output.bytes.data() + output.position, buffer, count);
    output.position = end;
    return count;
}

OPJ_OFF_T skipOutput(OPJ_OFF_T count, void* userData)
{
    auto& output = *static_cast<MemoryOutput*>(userData);
    if (count < 0 && static_cast<std::uint64_t>(-count) > output.position)
        return -1;
    output.position += static_cast<std::uint64_t>(count);
    return count;
}

OPJ_BOOL seekOutput(OPJ_OFF_T position, void* userData)
{
    if (position < 0)
        return OPJ_FALSE;
    auto& output = *static_cast<MemoryOutput*>(userData);
    output.position = output.base + static_cast<std::uint64_t>(position);
    return OPJ_TRUE;
}

void appendBig(std::vector<std::uint8_t>& out, std::uint64_t value, int bytes)
{
    for (int i = bytes - 1; i >= 0; --i)
        out.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

void appendBoxHeader(std::vector<std::uint8_t>& out, std::uint32_t length, const char* type)
{
    appendBig(out, length, 4);
    out.insert(out.end(), type, type + 4);
}

// The boxes of a .jp2 file up to and including the header of the codestream box, whose length
// is filled in once the codestream is written. The colour box holds the image's ICC
// profile when it has one, otherwise the enumerated space of its model; a channel definition
// marks alpha as plain or premultiplied opacity.
std::vector<std::uint8_t> jp2Header(std::uint32_t width, std::uint32_t height,
                                    std::uint32_t components, std::uint32_t bits,
                                    OPJ_COLOR_SPACE space, const std::vector<std::uint8_t>& icc,
                                    bool alpha, bool premultiplied)
{
    std::vector<std::uint8_t> out(kJp2Signature, kJp2Signature + sizeof kJp2Signature);
    appendBoxHeader(out, 20, "ftyp");
    out.insert(out.end(), {'j', 'p', '2', ' ', 0, 0, 0, 0, 'j', 'p', '2', ' '});

    const std::uint32_t ihdr = 8 + 14;
    const std::uint32_t colr = 8 + 3 + static_cast<std::uint32_t>(icc.empty() ? 4 : icc.size());
    const std::uint32_t cdef = alpha ? 8 + 2 + 6 * components : 0;
    appendBoxHeader(out, 8 + ihdr + colr + cdef, "jp2h");
    appendBoxHeader(out, ihdr, "ihdr");
    appendBig(out, height, 4);
    appendBig(out, width, 4);
    appendBig(out, components, 2);
    out.push_back(static_cast<std::uint8_t>(bits - 1)); // unsigned samples
    out.push_back(7);                                   // wavelet compression
    out.push_back(0);                                   // colour space is known
    out.push_back(0);                                   // no intellectual property box
    appendBoxHeader(out, colr, "colr");
    if (icc.empty()) {
        out.insert(out.end(), {1, 0, 0});
        const std::uint32_t enumerated = space == OPJ_CLRSPC_GRAY   ? 17
                                         : space == OPJ_CLRSPC_CMYK ? 12
                                                                    : 16;
        appendBig(out, enumerated, 4);
    } else {
        out.insert(out.end(), {2, 0, 0});
        out.insert(out.end(), icc.begin(), icc.end());
    }
    if (alpha) {
        appendBoxHeader(out, cdef, "cdef");
        appendBig(out, components, 2);
        for (std::uint32_t c = 0; c < components; ++c) {
            const bool isAlpha = c + 1 == components;
            appendBig(out, c, 2);
            appendBig(out, isAlpha ? (premultiplied ? 2 : 1) : 0, 2);
            // Colour channel c describes colour c + 1; alpha belongs to the whole image.
            appendBig(out, isAlpha ? 0 : c + 1, 2);
        }
    }
    // The codestream box; its length is set when the codestream is complete.
    appendBoxHeader(out, 0, "jp2c");
    return out;
}

IOResult<std::vector<std::uint8_t>> encodeJpeg2000(const KVBitmap& bitmap,
                                                   const EncodeOptions& options)
{
    OPJ_COLOR_SPACE space = OPJ_CLRSPC_SRGB;
    switch (bitmap.colorSpace().model()) {
    case KVColorSpaceModel::gray:
        space = OPJ_CLRSPC_GRAY;
        break;
    case KVColorSpaceModel::rgb:
        space = OPJ_CLRSPC_SRGB;
        break;
    case KVColorSpaceModel::cmyk:
        space = OPJ_CLRSPC_CMYK;
        break;
    default:
        return ioError("JPEG 2000 files are written from RGB, grey and CMYK images.");
    }
    if (bitmap.bitsPerSample() != 8 && bitmap.bitsPerSample() != 16)
        return ioError("JPEG 2000 images are written from 8- or 16-bit samples.");

    RowPacking packing;
    packing.bitsPerSample = static_cast<int>(bitmap.bitsPerSample());
    packing.keepAlpha = true;
    RowPacker packer(bitmap, packing);
    const std::uint32_t components = static_cast<std::uint32_t>(packer.samplesPerPixel());
    const std::uint32_t width = static_cast<std::uint32_t>(bitmap.pixelsWide());
    const std::uint32_t height = static_cast<std::uint32_t>(bitmap.pixelsHigh());
    const std::uint32_t bits = static_cast<std::uint32_t>(packer.bitsPerSample());
    const std::size_t sampleBytes = bits / 8;
    const bool premultiplied =
        packer.hasAlpha() && (bitmap.bitmapFormat() & kBitmapFormatAlphaNonpremultiplied) == 0;

    opj_image_cmptparm_t parameters[5];
    std::memset(parameters, 0, sizeof parameters);
    for (std::uint32_t c = 0; c < components; ++c) {
        parameters[c].dx = 1;
        parameters[c].dy = 1;
        parameters[c].w = width;
        parameters[c].h = height;
        parameters[c].prec = bits;
        parameters[c].sgnd = 0;
    }
    ImageHandle image(opj_image_tile_create(components, parameters, space));
    if (!image)
        return ioError("There is not enough memory to write the image.");
    image->x0 = 0;
    image->y0 = 0;
    image->x1 = width;
    image->y1 = height;
    if (packer.hasAlpha())
        image->comps[components - 1].alpha = premultiplied ? 2 : 1;

    const std::uint32_t tileRows = std::min(kTileRows, height);
    opj_cparameters_t encoding;
    opj_set_default_encoder_parameters(&encoding);
    // Lossless: the reversible 5/3 wavelet, one quality layer.
    encoding.irreversible = 0;
    encoding.tcp_numlayers = 1;
    encoding.tcp_rates[0] = 0;
    encoding.cp_disto_alloc = 1;
    encoding.tcp_mct = space == OPJ_CLRSPC_SRGB ? 1 : 0;
    encoding.tile_size_on = OPJ_TRUE;
    encoding.cp_tx0 = 0;
    encoding.cp_ty0 = 0;
    encoding.cp_tdx = static_cast<int>(width);
    encoding.cp_tdy = static_cast<int>(tileRows);
    // Every resolution level halves the smallest tile side; it must stay at least one sample.
    const std::uint32_t smallest = std::min(width, tileRows);
    int resolutions = 1;
    while (resolutions < 6 && (smallest >> resolutions) > 0)
        ++resolutions;
    encoding.numresolution = resolutions;

    OpenJpegMessages messages;
    // OpenJPEG writes the codestream; the .jp2 boxes around it are our own, since this
    // OpenJPEG's own box writer cannot carry an ICC profile.
    CodecHandle codec(opj_create_compress(OPJ_CODEC_J2K));
    if (!codec)
        return ioError("There is not enough memory to write the image.");
    installHandlers(codec.get(), messages);

    const auto failed = [&messages](const char* what) {
        std::string message =
            std::string("The JPEG 2000 file could not be written (") + what + ").";
        if (!messages.lastError.empty())
            message += " " + messages.lastError;
        return ioError(message);
    };
    if (!opj_setup_encoder(codec.get(), &encoding, image.get()))
        return failed("set-up");
    opj_codec_set_threads(codec.get(), workerThreads());

    MemoryOutput output;
    if (!options.jpeg2000Codestream) {
        try {
            output.bytes =
                jp2Header(width, height, components, bits, space, bitmap.colorSpace().iccProfile(),
                          packer.hasAlpha(), premultiplied);
        } catch (const std::bad_alloc&) {
            return ioError("There is not enough memory to write the image.");
        }
        output.base = output.bytes.size();
        output.position = output.base;
    }
    StreamHandle stream(opj_stream_create(1024 * 1024, OPJ_FALSE));
    if (!stream)
        return ioError("There is not enough memory to write the image.");
    opj_stream_set_user_data(stream.get(), &output, nullptr);
    opj_stream_set_write_function(stream.get(), &writeOutput);
    opj_stream_set_skip_function(stream.get(), &skipOutput);
    opj_stream_set_seek_function(stream.get(), &seekOutput);
    if (!opj_start_compress(codec.get(), image.get(), stream.get()))
        return failed("start");

    std::vector<std::uint8_t> tile;
    try {
        tile.resize(static_cast<std::size_t>(width) * tileRows * components * sampleBytes);
    } catch (const std::bad_alloc&) {
        return ioError("There is not enough memory to write the image.");
    }
    const std::uint32_t tiles = (height + tileRows - 1) / tileRows;
    for (std::uint32_t t = 0; t < tiles; ++t) {
        const std::uint32_t y0 = t * tileRows;
        const std::uint32_t rows = std::min(tileRows, height - y0);
        const std::size_t planeBytes = static_cast<std::size_t>(width) * rows * sampleBytes;
        // Tile data is component after component, each row after row.
        for (std::uint32_t r = 0; r < rows; ++r) {
            const std::uint8_t* row = packer.row(y0 + r);
            for (std::uint32_t c = 0; c < components; ++c) {
                std::uint8_t* out = tile.data() + c * planeBytes +
                                    static_cast<std::size_t>(r) * width * sampleBytes;
                if (sampleBytes == 1) {
                    for (std::uint32_t x = 0; x < width; ++x)
                        out[x] = row[static_cast<std::size_t>(x) * components + c];
                } else {
                    for (std::uint32_t x = 0; x < width; ++x)
                        std::memcpy(out + 2 * static_cast<std::size_t>(x),
                                    row + 2 * (static_cast<std::size_t>(x) * components + c), 2);
                }
            }
        }
        if (!opj_write_tile(codec.get(), t, tile.data(),
                            static_cast<OPJ_UINT32>(planeBytes * components), stream.get()))
            return failed("image data");
    }
    if (!opj_end_compress(codec.get(), stream.get()))
        return failed("end");
    if (output.outOfMemory)
        return ioError("There is not enough memory to write the image.");
    stream.reset();
    if (!options.jpeg2000Codestream) {
        const std::uint64_t boxLength = output.bytes.size() - output.base + 8;
        if (boxLength > 0xFFFFFFFFu)
            return ioError("The image is too large for a JPEG 2000 file.");
        for (int i = 0; i < 4; ++i)
            output.bytes[output.base - 8 + static_cast<std::size_t>(i)] =
                static_cast<std::uint8_t>(boxLength >> (8 * (3 - i)));
    }
    return std::move(output.bytes);
}

class Jpeg2000Codec final : public ImageCodec {
public:
    ImageFormat format() const override { return ImageFormat::jpeg2000; }
    std::string_view name() const override { return "JPEG 2000"; }
    bool sniff(std::span<const std::uint8_t> head) const override
    {
        return startsWith(head, kJp2Signature, sizeof kJp2Signature) ||
               startsWith(head, kCodestreamSignature, sizeof kCodestreamSignature);
    }
    IOResult<std::unique_ptr<ImageReader>> open(std::span<const std::uint8_t> data) const override
    {
        if (!sniff(data))
            return ioError("The file is not a JPEG 2000 file.");
        return std::unique_ptr<ImageReader>(std::make_unique<Jpeg2000ImageReader>(data));
    }
    IOResult<std::vector<std::uint8_t>> encode(const KVBitmap& bitmap,
                                               const EncodeOptions& options) const override
    {
        return encodeJpeg2000(bitmap, options);
    }
};

} // namespace

const ImageCodec& jpeg2000Codec()
{
    static const Jpeg2000Codec codec;
    return codec;
}

} // namespace tintorra
