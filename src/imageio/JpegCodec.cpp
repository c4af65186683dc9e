#include "imageio/DecodedBitmap.h"
#include "imageio/ImageCodec.h"
#include "imageio/SampleRows.h"

#include <csetjmp>
#include <cstdio>

// jpeglib.h needs FILE and size_t declared first.
#include <jpeglib.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <jerror.h>
#include <new>

// libjpeg reports errors by longjmp. Every function here that calls setjmp holds only plain data
// and pointers, and everything with a destructor lives in its callers, so the jump never skips
// a C++ object's end of life.

namespace tintorra {

namespace {

struct JpegErrorManager {
    jpeg_error_mgr manager;
    std::jmp_buf jump;
    char message[JMSG_LENGTH_MAX];
};

void onJpegError(j_common_ptr info)
{
    auto* errors = reinterpret_cast<JpegErrorManager*>(info->err);
    (*info->err->format_message)(info, errors->message);
    std::longjmp(errors->jump, 1);
}

void onJpegMessage(j_common_ptr info, int level)
{
    // A file that ends early would otherwise decode with its missing rows filled grey; it is
    // treated as the damaged file it is. Other warnings (extraneous bytes and the like) are
    // harmless and ignored.
    if (level < 0 && info->err->msg_code == JWRN_JPEG_EOF)
        onJpegError(info);
}

void installErrorManager(JpegErrorManager& errors)
{
    jpeg_std_error(&errors.manager);
    errors.manager.error_exit = &onJpegError;
    errors.manager.emit_message = &onJpegMessage;
    errors.message[0] = 0;
}

// ---- reading ----

struct JpegHeader {
    const std::uint8_t* data = nullptr;
    unsigned long size = 0;
    JDIMENSION width = 0;
    JDIMENSION height = 0;
    int components = 0;
    J_COLOR_SPACE outputSpace = JCS_UNKNOWN;
    bool adobeMarker = false;
    JOCTET* icc = nullptr;
    unsigned int iccLength = 0;
    int densityUnit = 0;
    unsigned int xDensity = 0;
    unsigned int yDensity = 0;
};

bool readJpegHeader(jpeg_decompress_struct* info, JpegErrorManager* errors, JpegHeader* header)
{
    if (setjmp(errors->jump))
        return false;
    jpeg_mem_src(info, header->data, header->size);
    jpeg_save_markers(info, JPEG_APP0 + 2, 0xFFFF);
    jpeg_read_header(info, TRUE);
    switch (info->jpeg_color_space) {
    case JCS_GRAYSCALE:
        info->out_color_space = JCS_GRAYSCALE;
        break;
    case JCS_CMYK:
    case JCS_YCCK:
        info->out_color_space = JCS_CMYK;
        break;
    default:
        info->out_color_space = JCS_RGB;
        break;
    }
    if (!jpeg_read_icc_profile(info, &header->icc, &header->iccLength)) {
        header->icc = nullptr;
        header->iccLength = 0;
    }
    jpeg_calc_output_dimensions(info);
    header->width = info->output_width;
    header->height = info->output_height;
    header->components = info->output_components;
    header->outputSpace = info->out_color_space;
    header->adobeMarker = info->saw_Adobe_marker != 0;
    if (info->saw_JFIF_marker) {
        header->densityUnit = info->density_unit;
        header->xDensity = info->X_density;
        header->yDensity = info->Y_density;
    }
    return true;
}

bool readJpegRows(jpeg_decompress_struct* info, JpegErrorManager* errors, JSAMPARRAY rows)
{
    if (setjmp(errors->jump))
        return false;
    jpeg_start_decompress(info);
    while (info->output_scanline < info->output_height)
        jpeg_read_scanlines(info, rows + info->output_scanline,
                            info->output_height - info->output_scanline);
    jpeg_finish_decompress(info);
    return true;
}

class JpegDecompressor {
public:
    JpegDecompressor()
    {
        installErrorManager(errors_);
        info_.err = &errors_.manager;
    }
    ~JpegDecompressor()
    {
        if (created_)
            jpeg_destroy_decompress(&info_);
    }
    JpegDecompressor(const JpegDecompressor&) = delete;
    JpegDecompressor& operator=(const JpegDecompressor&) = delete;

    bool create() { return createDecompressor(&info_, &errors_, &created_); }

    jpeg_decompress_struct* info() { return &info_; }
    JpegErrorManager* errors() { return &errors_; }

private:
    static bool createDecompressor(jpeg_decompress_struct* info, JpegErrorManager* errors,
                                   bool* created)
    {
        if (setjmp(errors->jump))
            return false;
        jpeg_create_decompress(info);
        *created = true;
        return true;
    }

    jpeg_decompress_struct info_{};
    JpegErrorManager errors_{};
    bool created_ = false;
};

PageDescription jpegPageDescription(const JpegHeader& header, std::vector<std::uint8_t> icc)
{
    KVColorSpaceModel model = KVColorSpaceModel::rgb;
    if (header.outputSpace == JCS_GRAYSCALE)
        model = KVColorSpaceModel::gray;
    else if (header.outputSpace == JCS_CMYK)
        model = KVColorSpaceModel::cmyk;
    KVBitmapLayout layout;
    layout.pixelsWide = header.width;
    layout.pixelsHigh = header.height;
    layout.bitsPerSample = 8;
    layout.samplesPerPixel = header.components;
    layout.hasAlpha = false;
    return {layout, colorSpaceForDecodedImage(model, std::move(icc))};
}

// Starts reading a JPEG: the header and what the page will be.
IOStatus openJpeg(JpegDecompressor& decompressor, std::span<const std::uint8_t> data,
                  JpegHeader& header, PageDescription& page)
{
    if (!decompressor.create())
        return ioError("There is not enough memory to open the image.");
    header.data = data.data();
    header.size = static_cast<unsigned long>(data.size());
    const bool headerRead = readJpegHeader(decompressor.info(), decompressor.errors(), &header);
    // The profile was allocated by libjpeg with malloc.
    std::vector<std::uint8_t> icc;
    if (header.icc) {
        icc.assign(header.icc, header.icc + header.iccLength);
        std::free(header.icc);
    }
    if (!headerRead)
        return ioError(std::string("The JPEG file is damaged or truncated: ") +
                       decompressor.errors()->message + ".");
    page = jpegPageDescription(header, std::move(icc));
    return ioSuccess();
}

IOResult<PageDescription> describeJpeg(std::span<const std::uint8_t> data)
{
    JpegDecompressor decompressor;
    JpegHeader header;
    PageDescription page;
    if (IOStatus opened = openJpeg(decompressor, data, header, page); !opened)
        return opened.error();
    return page;
}

IOResult<KVBitmapPtr> decodeJpeg(std::span<const std::uint8_t> data)
{
    JpegDecompressor decompressor;
    JpegHeader header;
    PageDescription page;
    if (IOStatus opened = openJpeg(decompressor, data, header, page); !opened)
        return opened.error();
    const KVColorSpaceModel model = page.colorSpace.model();
    // Every 8 x 8 block of the fullest component takes at least one bit.
    IOResult<KVBitmapPtr> allocated = allocateBitmapForDecoding(
        page.layout, std::move(page.colorSpace), 0, {data.size(), 64 * 8});
    if (!allocated)
        return allocated;
    KVBitmapPtr bitmap = allocated.take();

    std::vector<JSAMPROW> rows(header.height);
    for (JDIMENSION y = 0; y < header.height; ++y)
        rows[y] = bitmap->bitmapData() + static_cast<std::size_t>(y) * bitmap->bytesPerRow();
    if (!readJpegRows(decompressor.info(), decompressor.errors(), rows.data()))
        return ioError(std::string("The JPEG file is damaged or truncated: ") +
                       decompressor.errors()->message + ".");

    // Adobe's applications write CMYK inverted (0 is full ink) and mark the file with their
    // APP14 segment; turn the samples back into ink amounts.
    if (model == KVColorSpaceModel::cmyk && header.adobeMarker) {
        for (JDIMENSION y = 0; y < header.height; ++y) {
            std::uint8_t* row = rows[y];
            for (std::size_t i = 0; i < static_cast<std::size_t>(header.width) * 4; ++i)
                row[i] = static_cast<std::uint8_t>(255 - row[i]);
        }
    }
    if (header.densityUnit == 1)
        setBitmapResolution(*bitmap, header.xDensity, header.yDensity);
    else if (header.densityUnit == 2)
        setBitmapResolution(*bitmap, header.xDensity * 2.54, header.yDensity * 2.54);
    return bitmap;
}

class JpegImageReader final : public ImageReader {
public:
    explicit JpegImageReader(std::span<const std::uint8_t> data) : data_(data) {}
    std::size_t pageCount() const override { return 1; }
    IOResult<KVBitmapPtr> decodePage(std::size_t page) override
    {
        if (page != 0)
            return ioError("A JPEG file has one page.");
        return decodeJpeg(data_);
    }
    IOResult<PageDescription> describePage(std::size_t page) override
    {
        if (page != 0)
            return ioError("A JPEG file has one page.");
        return describeJpeg(data_);
    }

private:
    std::span<const std::uint8_t> data_;
};

// ---- writing ----

constexpr std::size_t kOutputChunk = 64 * 1024;

struct JpegSink {
    jpeg_destination_mgr manager;
    std::vector<std::uint8_t>* bytes;
    std::size_t used;
};

bool growSink(JpegSink* sink)
{
    try {
        sink->bytes->resize(sink->bytes->size() + std::max(kOutputChunk, sink->bytes->size() / 2));
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

void initDestination(j_compress_ptr info)
{
    auto* sink = reinterpret_cast<JpegSink*>(info->dest);
    sink->manager.next_output_byte = sink->bytes->data();
    sink->manager.free_in_buffer = sink->bytes->size();
}

boolean emptyOutputBuffer(j_compress_ptr info)
{
    auto* sink = reinterpret_cast<JpegSink*>(info->dest);
    // libjpeg asks only when the whole buffer is full.
    const std::size_t used = sink->bytes->size();
    if (!growSink(sink))
        ERREXIT1(info, JERR_OUT_OF_MEMORY, 0);
    sink->manager.next_output_byte = sink->bytes->data() + used;
    sink->manager.free_in_buffer = sink->bytes->size() - used;
    return TRUE;
}

void termDestination(j_compress_ptr info)
{
    auto* sink = reinterpret_cast<JpegSink*>(info->dest);
    sink->used = sink->bytes->size() - sink->manager.free_in_buffer;
}

struct JpegWriteSetup {
    JDIMENSION width = 0;
    JDIMENSION height = 0;
    int components = 3;
    J_COLOR_SPACE space = JCS_RGB;
    int quality = 90;
    bool fullChroma = false;
    bool invertInk = false;
    const std::uint8_t* icc = nullptr;
    unsigned int iccLength = 0;
    UINT16 density = 72;
};

bool writeJpeg(jpeg_compress_struct* info, JpegErrorManager* errors, const JpegWriteSetup* setup,
               RowPacker* packer, std::uint8_t* invertedRow)
{
    if (setjmp(errors->jump))
        return false;
    info->image_width = setup->width;
    info->image_height = setup->height;
    info->input_components = setup->components;
    info->in_color_space = setup->space;
    jpeg_set_defaults(info);
    jpeg_set_quality(info, setup->quality, TRUE);
    if (setup->fullChroma && setup->space == JCS_RGB) {
        for (int c = 0; c < info->num_components; ++c) {
            info->comp_info[c].h_samp_factor = 1;
            info->comp_info[c].v_samp_factor = 1;
        }
    }
    info->density_unit = 1;
    info->X_density = setup->density;
    info->Y_density = setup->density;
    jpeg_start_compress(info, TRUE);
    if (setup->icc)
        jpeg_write_icc_profile(info, setup->icc, setup->iccLength);
    const std::size_t rowBytes = static_cast<std::size_t>(setup->width) * setup->components;
    for (JDIMENSION y = 0; y < setup->height; ++y) {
        const std::uint8_t* row = packer->row(y);
        if (setup->invertInk) {
            for (std::size_t i = 0; i < rowBytes; ++i)
                invertedRow[i] = static_cast<std::uint8_t>(255 - row[i]);
            row = invertedRow;
        }
        JSAMPROW rows[1] = {const_cast<JSAMPROW>(row)};
        jpeg_write_scanlines(info, rows, 1);
    }
    jpeg_finish_compress(info);
    return true;
}

class JpegCompressor {
public:
    JpegCompressor()
    {
        installErrorManager(errors_);
        info_.err = &errors_.manager;
    }
    ~JpegCompressor()
    {
        if (created_)
            jpeg_destroy_compress(&info_);
    }
    JpegCompressor(const JpegCompressor&) = delete;
    JpegCompressor& operator=(const JpegCompressor&) = delete;

    bool create() { return createCompressor(&info_, &errors_, &created_); }
    jpeg_compress_struct* info() { return &info_; }
    JpegErrorManager* errors() { return &errors_; }

private:
    static bool createCompressor(jpeg_compress_struct* info, JpegErrorManager* errors,
                                 bool* created)
    {
        if (setjmp(errors->jump))
            return false;
        jpeg_create_compress(info);
        *created = true;
        return true;
    }

    jpeg_compress_struct info_{};
    JpegErrorManager errors_{};
    bool created_ = false;
};

IOResult<std::vector<std::uint8_t>> encodeJpeg(const KVBitmap& bitmap, double quality)
{
    JpegWriteSetup setup;
    switch (bitmap.colorSpace().model()) {
    case KVColorSpaceModel::gray:
        setup.space = JCS_GRAYSCALE;
        setup.components = 1;
        break;
    case KVColorSpaceModel::rgb:
        setup.space = JCS_RGB;
        setup.components = 3;
        break;
    case KVColorSpaceModel::cmyk:
        setup.space = JCS_CMYK;
        setup.components = 4;
        // Written the way Adobe's applications write and the reader expects (see decodeJpeg).
        setup.invertInk = true;
        break;
    default:
        return ioError("JPEG holds only RGB, grey and CMYK images.");
    }
    if (bitmap.bitsPerSample() != 8 && bitmap.bitsPerSample() != 16)
        return ioError("JPEG images are written from 8- or 16-bit samples.");
    if (bitmap.pixelsWide() > JPEG_MAX_DIMENSION || bitmap.pixelsHigh() > JPEG_MAX_DIMENSION)
        return ioError("The image is too large for JPEG, which holds at most 65500 pixels in "
                       "each direction.");

    // JPEG holds 8 bits and no alpha: 16-bit samples are rounded, alpha is left out (a
    // premultiplied image thus appears as over black).
    RowPacking packing;
    packing.bitsPerSample = 8;
    packing.keepAlpha = false;
    RowPacker packer(bitmap, packing);
    if (packer.colourSamples() != setup.components)
        return ioError("The image's sample count does not match its colour model.");

    const double clamped = std::clamp(std::isnan(quality) ? 0.9 : quality, 0.0, 1.0);
    setup.quality = std::max(1, static_cast<int>(std::lround(clamped * 100.0)));
    // Chroma subsampling would blur exactly the hue edits this program makes; high qualities
    // keep full chroma resolution.
    setup.fullChroma = clamped >= 0.9;
    setup.width = static_cast<JDIMENSION>(bitmap.pixelsWide());
    setup.height = static_cast<JDIMENSION>(bitmap.pixelsHigh());
    const std::vector<std::uint8_t>& icc = bitmap.colorSpace().iccProfile();
    if (!icc.empty()) {
        setup.icc = icc.data();
        setup.iccLength = static_cast<unsigned int>(icc.size());
    }
    double horizontalDpi = 72.0;
    double verticalDpi = 72.0;
    bitmapResolution(bitmap, horizontalDpi, verticalDpi);
    setup.density = static_cast<UINT16>(std::clamp(std::lround(horizontalDpi), 1L, 65535L));

    std::vector<std::uint8_t> bytes;
    std::vector<std::uint8_t> invertedRow;
    try {
        bytes.resize(kOutputChunk);
        if (setup.invertInk)
            invertedRow.resize(static_cast<std::size_t>(setup.width) * setup.components);
    } catch (const std::bad_alloc&) {
        return ioError("There is not enough memory to write the image.");
    }
    JpegSink sink{};
    sink.bytes = &bytes;
    sink.manager.init_destination = &initDestination;
    sink.manager.empty_output_buffer = &emptyOutputBuffer;
    sink.manager.term_destination = &termDestination;

    JpegCompressor compressor;
    if (!compressor.create())
        return ioError("There is not enough memory to write the image.");
    compressor.info()->dest = &sink.manager;
    if (!writeJpeg(compressor.info(), compressor.errors(), &setup, &packer, invertedRow.data()))
        return ioError(std::string("The JPEG file could not be written: ") +
                       compressor.errors()->message + ".");
    bytes.resize(sink.used);
    return bytes;
}

class JpegCodec final : public ImageCodec {
public:
    ImageFormat format() const override { return ImageFormat::jpeg; }
    std::string_view name() const override { return "JPEG"; }
    bool sniff(std::span<const std::uint8_t> head) const override
    {
        return head.size() >= 3 && head[0] == 0xFF && head[1] == 0xD8 && head[2] == 0xFF;
    }
    IOResult<std::unique_ptr<ImageReader>> open(std::span<const std::uint8_t> data) const override
    {
        if (!sniff(data))
            return ioError("The file is not a JPEG file.");
        return std::unique_ptr<ImageReader>(std::make_unique<JpegImageReader>(data));
    }
    IOResult<std::vector<std::uint8_t>> encode(const KVBitmap& bitmap,
                                               const EncodeOptions& options) const override
    {
        return encodeJpeg(bitmap, options.quality);
    }
};

} // namespace

const ImageCodec& jpegCodec()
{
    static const JpegCodec codec;
    return codec;
}

} // namespace tintorra
