#include "imageio/TiffReader.h"

#include "imageio/DecodedBitmap.h"
#include "imageio/ImageLimits.h"
#include "imageio/SampleRows.h"
#include "imageio/TiffIO.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

namespace tintorra {

namespace {

// What one row (or the part of a row inside a tile) of one plane goes through on its way from
// the file's samples to the bitmap's.
struct RowTransform {
    enum class Kind { copy, invert8, invert16, expandGray, palette };
    Kind kind = Kind::copy;
    // Bytes of one pixel of this plane as the file stores it (copy and invert kinds).
    std::size_t fileBytesPerPixel = 0;
    // Samples per pixel of this plane and which of them is grey (invert kinds).
    int samples = 1;
    // Bits per index or grey value (expand and palette kinds).
    int bits = 8;
    bool invert = false;
    // 8-bit red, green and blue of every palette index.
    const std::vector<std::array<std::uint8_t, 3>>* palette = nullptr;
    // Bytes one pixel takes in the bitmap's plane.
    std::size_t bitmapBytesPerPixel = 0;

    void apply(const std::uint8_t* source, std::uint8_t* destination, std::uint32_t pixels) const;
};

std::uint32_t packedValue(const std::uint8_t* source, std::uint32_t index, int bits)
{
    if (bits == 16)
        return loadSample16(source + 2 * static_cast<std::size_t>(index));
    if (bits == 8)
        return source[index];
    const std::size_t bit = static_cast<std::size_t>(index) * static_cast<std::size_t>(bits);
    const unsigned shift = 8u - static_cast<unsigned>(bits) - static_cast<unsigned>(bit % 8);
    return (source[bit / 8] >> shift) & ((1u << bits) - 1u);
}

void RowTransform::apply(const std::uint8_t* source, std::uint8_t* destination,
                         std::uint32_t pixels) const
{
    switch (kind) {
    case Kind::copy:
        std::memcpy(destination, source, pixels * fileBytesPerPixel);
        return;
    case Kind::invert8:
        std::memcpy(destination, source, pixels * fileBytesPerPixel);
        for (std::uint32_t x = 0; x < pixels; ++x)
            destination[x * static_cast<std::size_t>(samples)] ^= 0xFF;
        return;
    case Kind::invert16:
        std::memcpy(destination, source, pixels * fileBytesPerPixel);
        for (std::uint32_t x = 0; x < pixels; ++x) {
            std::uint8_t* p = destination + x * static_cast<std::size_t>(samples) * 2;
            storeSample16(p, static_cast<std::uint16_t>(~loadSample16(p)));
        }
        return;
    case Kind::expandGray: {
        const std::uint32_t maximum = (1u << bits) - 1u;
        for (std::uint32_t x = 0; x < pixels; ++x) {
            std::uint32_t v = packedValue(source, x, bits) * 255u / maximum;
            destination[x] = static_cast<std::uint8_t>(invert ? 255u - v : v);
        }
        return;
    }
    case Kind::palette:
        for (std::uint32_t x = 0; x < pixels; ++x) {
            const std::uint32_t index = packedValue(source, x, bits);
            const auto& colour = index < palette->size() ? (*palette)[index] : palette->back();
            std::memcpy(destination + 3 * static_cast<std::size_t>(x), colour.data(), 3);
        }
        return;
    }
}

template <typename T>
bool getField(TIFF* tiff, ttag_t tag, T& value)
{
    return TIFFGetField(tiff, tag, &value) == 1;
}

std::optional<std::string> asciiField(TIFF* tiff, ttag_t tag)
{
    const char* text = nullptr;
    if (TIFFGetField(tiff, tag, &text) != 1 || text == nullptr)
        return std::nullopt;
    return std::string(text);
}

// Everything about one directory that decides how its samples are decoded.
struct PageLayout {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint16_t samplesPerPixel = 1;
    std::uint16_t bitsPerSample = 1;
    std::uint16_t photometric = PHOTOMETRIC_MINISBLACK;
    std::uint16_t planarConfig = PLANARCONFIG_CONTIG;
    std::uint16_t compression = COMPRESSION_NONE;
    int colourSamples = 1;
    bool alpha = false;
    bool premultiplied = false;
    KVColorSpaceModel model = KVColorSpaceModel::gray;
    bool useRGBAInterface = false;
};

std::string damaged(const TiffMemorySource& source, const char* what)
{
    std::string message = std::string("The TIFF file is damaged or truncated (") + what + ").";
    if (!source.lastError.empty())
        message += " " + source.lastError;
    return message;
}

class TiffImageReader final : public ImageReader {
public:
    explicit TiffImageReader(std::span<const std::uint8_t> data) { source_.data = data; }

    IOStatus open()
    {
        tiff_ = openTiffSource(source_);
        if (!tiff_)
            return ioError("The file is not a readable TIFF file. " + source_.lastError);
        pages_ = TIFFNumberOfDirectories(tiff_.get());
        if (pages_ == 0)
            return ioError("The TIFF file holds no image.");
        return ioSuccess();
    }

    std::size_t pageCount() const override { return pages_; }

    std::optional<std::string> stringProperty(int tiffTag) const override
    {
        if (!TIFFSetDirectory(tiff_.get(), 0))
            return std::nullopt;
        return asciiField(tiff_.get(), static_cast<ttag_t>(tiffTag));
    }

    IOResult<KVBitmapPtr> decodePage(std::size_t page) override
    {
        IOResult<PageLayout> layout = readLayout(page);
        if (!layout)
            return ioError(layout.error().message);
        return decode(layout.value());
    }

    IOResult<PageDescription> describePage(std::size_t page) override
    {
        IOResult<PageLayout> layout = readLayout(page);
        if (!layout)
            return ioError(layout.error().message);
        return describe(layout.value());
    }

private:
    IOResult<PageLayout> readLayout(std::size_t page);
    IOResult<PageLayout> readLayout();
    PageDescription describe(const PageLayout& layout);
    IOResult<KVBitmapPtr> decode(const PageLayout& layout);
    IOStatus readSamples(const PageLayout& layout, KVBitmap& bitmap);
    IOStatus readThroughRGBA(const PageLayout& layout, KVBitmap& bitmap);
    std::vector<RowTransform> transformsFor(const PageLayout& layout, const KVBitmap& bitmap);

    TiffMemorySource source_;
    TiffHandle tiff_;
    std::size_t pages_ = 0;
    std::vector<std::array<std::uint8_t, 3>> palette_;
};

IOResult<PageLayout> TiffImageReader::readLayout(std::size_t page)
{
    if (page >= pages_)
        return ioError("The TIFF file has no page " + std::to_string(page + 1) + ".");
    source_.lastError.clear();
    if (!TIFFSetDirectory(tiff_.get(), static_cast<tdir_t>(page)))
        return ioError(damaged(source_, "page directory"));
    return readLayout();
}

IOResult<PageLayout> TiffImageReader::readLayout()
{
    TIFF* tiff = tiff_.get();
    PageLayout layout;
    if (!getField(tiff, TIFFTAG_IMAGEWIDTH, layout.width) ||
        !getField(tiff, TIFFTAG_IMAGELENGTH, layout.height) || layout.width == 0 ||
        layout.height == 0)
        return ioError("The TIFF page has no image size.");
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLESPERPIXEL, &layout.samplesPerPixel);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_BITSPERSAMPLE, &layout.bitsPerSample);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_PLANARCONFIG, &layout.planarConfig);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_COMPRESSION, &layout.compression);
    if (!getField(tiff, TIFFTAG_PHOTOMETRIC, layout.photometric))
        layout.photometric = layout.samplesPerPixel >= 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK;
    std::uint16_t sampleFormat = SAMPLEFORMAT_UINT;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLEFORMAT, &sampleFormat);
    if (sampleFormat != SAMPLEFORMAT_UINT && sampleFormat != SAMPLEFORMAT_VOID)
        return ioError("The TIFF image has floating-point or signed samples, which Tintorra "
                       "cannot open.");
    if (!TIFFIsCODECConfigured(layout.compression))
        return ioError("The TIFF image is compressed with a method (" +
                       std::to_string(layout.compression) + ") Tintorra cannot decode.");
    if (layout.samplesPerPixel == 1)
        layout.planarConfig = PLANARCONFIG_CONTIG;

    std::uint16_t inkSet = INKSET_CMYK;
    switch (layout.photometric) {
    case PHOTOMETRIC_MINISBLACK:
    case PHOTOMETRIC_MINISWHITE:
        layout.model = KVColorSpaceModel::gray;
        layout.colourSamples = 1;
        break;
    case PHOTOMETRIC_PALETTE:
        layout.model = KVColorSpaceModel::rgb;
        layout.colourSamples = 1;
        break;
    case PHOTOMETRIC_RGB:
        layout.model = KVColorSpaceModel::rgb;
        layout.colourSamples = 3;
        break;
    case PHOTOMETRIC_YCBCR:
        layout.model = KVColorSpaceModel::rgb;
        layout.colourSamples = 3;
        break;
    case PHOTOMETRIC_SEPARATED:
        // The colour sample count follows from the extra samples below.
        TIFFGetFieldDefaulted(tiff, TIFFTAG_INKSET, &inkSet);
        break;
    case PHOTOMETRIC_CIELAB:
    case PHOTOMETRIC_ICCLAB:
    case PHOTOMETRIC_ITULAB:
        layout.model = KVColorSpaceModel::lab;
        layout.colourSamples = layout.samplesPerPixel >= 3 ? 3 : 1;
        break;
    default:
        return ioError("The TIFF image uses a colour encoding (photometric interpretation " +
                       std::to_string(layout.photometric) + ") Tintorra cannot open.");
    }

    std::uint16_t extraCount = 0;
    std::uint16_t* extraTypes = nullptr;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_EXTRASAMPLES, &extraCount, &extraTypes);
    if (layout.photometric == PHOTOMETRIC_SEPARATED) {
        layout.colourSamples =
            layout.samplesPerPixel - std::min<int>(extraCount, layout.samplesPerPixel - 1);
        layout.model = inkSet == INKSET_CMYK && layout.colourSamples == 4
                           ? KVColorSpaceModel::cmyk
                           : KVColorSpaceModel::deviceN;
    }
    if (layout.samplesPerPixel < layout.colourSamples)
        return ioError(
            "The TIFF image has fewer samples per pixel than its colour encoding needs.");
    const int extras = layout.samplesPerPixel - layout.colourSamples;
    if (extras > 1 || layout.samplesPerPixel > 5)
        return ioError("The TIFF image has more channels than colour and one alpha channel, "
                       "which Tintorra cannot open.");
    layout.alpha = extras == 1;
    layout.premultiplied =
        layout.alpha && extraCount >= 1 && extraTypes && extraTypes[0] == EXTRASAMPLE_ASSOCALPHA;

    // Old-style JPEG and YCbCr that is not JPEG-compressed go through libtiff's RGBA interface,
    // which converts them; JPEG-compressed YCbCr is converted by the JPEG codec itself.
    if (layout.photometric == PHOTOMETRIC_YCBCR || layout.compression == COMPRESSION_OJPEG) {
        if (layout.compression == COMPRESSION_JPEG) {
            TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
        } else {
            layout.useRGBAInterface = true;
            layout.model = KVColorSpaceModel::rgb;
        }
    }

    const int bits = layout.bitsPerSample;
    if (layout.useRGBAInterface) {
        char message[1024] = {};
        if (!TIFFRGBAImageOK(tiff, message))
            return ioError(std::string("The TIFF image cannot be converted: ") + message);
    } else if (layout.photometric == PHOTOMETRIC_PALETTE) {
        if (layout.alpha || (bits != 1 && bits != 2 && bits != 4 && bits != 8 && bits != 16))
            return ioError("The TIFF palette image has a layout Tintorra cannot open.");
    } else if (layout.model == KVColorSpaceModel::gray && bits < 8) {
        if (layout.alpha || (bits != 1 && bits != 2 && bits != 4))
            return ioError("The TIFF grey image has a layout Tintorra cannot open.");
    } else if (bits != 8 && bits != 16) {
        return ioError("The TIFF image has " + std::to_string(bits) +
                       " bits per sample; Tintorra opens 8 and 16 bits.");
    }
    return layout;
}

PageDescription TiffImageReader::describe(const PageLayout& layout)
{
    KVBitmapLayout bitmapLayout;
    bitmapLayout.pixelsWide = layout.width;
    bitmapLayout.pixelsHigh = layout.height;
    bitmapLayout.hasAlpha = layout.alpha;
    bitmapLayout.bitmapFormat =
        layout.alpha && !layout.premultiplied ? kBitmapFormatAlphaNonpremultiplied : 0u;
    if (layout.useRGBAInterface) {
        bitmapLayout.bitsPerSample = 8;
        bitmapLayout.samplesPerPixel = layout.alpha ? 4 : 3;
        // libtiff's RGBA raster delivers premultiplied colour.
        bitmapLayout.bitmapFormat = 0;
    } else if (layout.photometric == PHOTOMETRIC_PALETTE) {
        bitmapLayout.bitsPerSample = 8;
        bitmapLayout.samplesPerPixel = 3;
    } else {
        bitmapLayout.bitsPerSample = std::max<int>(8, layout.bitsPerSample);
        bitmapLayout.samplesPerPixel = layout.colourSamples + (layout.alpha ? 1 : 0);
        bitmapLayout.isPlanar = layout.planarConfig == PLANARCONFIG_SEPARATE;
    }

    std::vector<std::uint8_t> icc;
    std::uint32_t iccSize = 0;
    void* iccData = nullptr;
    if (TIFFGetField(tiff_.get(), TIFFTAG_ICCPROFILE, &iccSize, &iccData) == 1 && iccData &&
        iccSize > 0) {
        const auto* bytes = static_cast<const std::uint8_t*>(iccData);
        icc.assign(bytes, bytes + iccSize);
    }
    return {bitmapLayout, colorSpaceForDecodedImage(layout.model, std::move(icc))};
}

IOResult<KVBitmapPtr> TiffImageReader::decode(const PageLayout& layout)
{
    TIFF* tiff = tiff_.get();
    PageDescription page = describe(layout);
    // libtiff's RGBA raster needs a 32-bit pixel beside the bitmap.
    const std::uint64_t extraBytesPerSample = layout.useRGBAInterface ? 1 : 0;
    IOResult<KVBitmapPtr> allocated =
        allocateBitmapForDecoding(page.layout, std::move(page.colorSpace), extraBytesPerSample);
    if (!allocated)
        return allocated;
    KVBitmapPtr bitmap = allocated.take();

    IOStatus read =
        layout.useRGBAInterface ? readThroughRGBA(layout, *bitmap) : readSamples(layout, *bitmap);
    if (!read)
        return ioError(read.error().message);

    float xResolution = 0;
    float yResolution = 0;
    std::uint16_t unit = RESUNIT_INCH;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_RESOLUTIONUNIT, &unit);
    if (unit != RESUNIT_NONE && getField(tiff, TIFFTAG_XRESOLUTION, xResolution) &&
        getField(tiff, TIFFTAG_YRESOLUTION, yResolution)) {
        const double scale = unit == RESUNIT_CENTIMETER ? 2.54 : 1.0;
        setBitmapResolution(*bitmap, xResolution * scale, yResolution * scale);
    }
    return bitmap;
}

std::vector<RowTransform> TiffImageReader::transformsFor(const PageLayout& layout,
                                                         const KVBitmap& bitmap)
{
    const bool planar = bitmap.isPlanar();
    const int planes = planar ? static_cast<int>(bitmap.samplesPerPixel()) : 1;
    const int samplesInPlane = planar ? 1 : static_cast<int>(bitmap.samplesPerPixel());
    const std::size_t sampleBytes = layout.bitsPerSample == 16 ? 2 : 1;
    std::vector<RowTransform> transforms(static_cast<std::size_t>(planes));
    for (int plane = 0; plane < planes; ++plane) {
        RowTransform& transform = transforms[static_cast<std::size_t>(plane)];
        transform.samples = samplesInPlane;
        transform.fileBytesPerPixel = sampleBytes * static_cast<std::size_t>(samplesInPlane);
        transform.bitmapBytesPerPixel =
            static_cast<std::size_t>(bitmap.bitsPerSample() / 8) *
            static_cast<std::size_t>(layout.photometric == PHOTOMETRIC_PALETTE ? 3
                                                                               : samplesInPlane);
        transform.bits = layout.bitsPerSample;
        if (layout.photometric == PHOTOMETRIC_PALETTE) {
            transform.kind = RowTransform::Kind::palette;
            transform.palette = &palette_;
        } else if (layout.model == KVColorSpaceModel::gray && layout.bitsPerSample < 8) {
            transform.kind = RowTransform::Kind::expandGray;
            transform.invert = layout.photometric == PHOTOMETRIC_MINISWHITE;
        } else if (layout.photometric == PHOTOMETRIC_MINISWHITE && plane == 0) {
            transform.kind = layout.bitsPerSample == 16 ? RowTransform::Kind::invert16
                                                        : RowTransform::Kind::invert8;
        }
    }
    return transforms;
}

IOStatus TiffImageReader::readSamples(const PageLayout& layout, KVBitmap& bitmap)
{
    TIFF* tiff = tiff_.get();
    if (layout.photometric == PHOTOMETRIC_PALETTE) {
        std::uint16_t* red = nullptr;
        std::uint16_t* green = nullptr;
        std::uint16_t* blue = nullptr;
        if (TIFFGetField(tiff, TIFFTAG_COLORMAP, &red, &green, &blue) != 1)
            return ioError("The TIFF palette image has no colour map.");
        const std::size_t entries = std::size_t{1} << layout.bitsPerSample;
        palette_.resize(entries);
        // Colour maps are 16-bit; a few writers store 8-bit values, recognisable because no
        // entry exceeds 255.
        bool eightBit = true;
        for (std::size_t i = 0; i < entries; ++i)
            eightBit = eightBit && red[i] < 256 && green[i] < 256 && blue[i] < 256;
        for (std::size_t i = 0; i < entries; ++i) {
            const auto narrow = [eightBit](std::uint16_t v) {
                return eightBit ? static_cast<std::uint8_t>(v) : narrowSample(v);
            };
            palette_[i] = {narrow(red[i]), narrow(green[i]), narrow(blue[i])};
        }
    }

    const std::vector<RowTransform> transforms = transformsFor(layout, bitmap);
    const bool planar = bitmap.isPlanar();
    const std::uint16_t planes = planar ? layout.samplesPerPixel : 1;
    std::uint8_t* planeData[5] = {};
    bitmap.getBitmapDataPlanes(planeData);
    const std::size_t bitmapRowBytes = static_cast<std::size_t>(bitmap.bytesPerRow());
    std::vector<std::uint8_t> scratch;

    if (TIFFIsTiled(tiff)) {
        std::uint32_t tileWidth = 0;
        std::uint32_t tileHeight = 0;
        TIFFGetField(tiff, TIFFTAG_TILEWIDTH, &tileWidth);
        TIFFGetField(tiff, TIFFTAG_TILELENGTH, &tileHeight);
        const tmsize_t tileSize = TIFFTileSize(tiff);
        const tmsize_t tileRowSize = TIFFTileRowSize(tiff);
        if (tileWidth == 0 || tileHeight == 0 || tileSize <= 0 || tileRowSize <= 0)
            return ioError(damaged(source_, "tile size"));
        scratch.resize(static_cast<std::size_t>(tileSize));
        for (std::uint16_t plane = 0; plane < planes; ++plane) {
            const RowTransform& transform = transforms[plane];
            for (std::uint32_t y0 = 0; y0 < layout.height; y0 += tileHeight) {
                for (std::uint32_t x0 = 0; x0 < layout.width; x0 += tileWidth) {
                    const ttile_t tile = TIFFComputeTile(tiff, x0, y0, 0, plane);
                    if (TIFFReadEncodedTile(tiff, tile, scratch.data(), tileSize) != tileSize)
                        return ioError(damaged(source_, "tile data"));
                    const std::uint32_t rows = std::min(tileHeight, layout.height - y0);
                    const std::uint32_t columns = std::min(tileWidth, layout.width - x0);
                    for (std::uint32_t r = 0; r < rows; ++r) {
                        std::uint8_t* destination = planeData[plane] + (y0 + r) * bitmapRowBytes +
                                                    x0 * transform.bitmapBytesPerPixel;
                        transform.apply(scratch.data() + r * static_cast<std::size_t>(tileRowSize),
                                        destination, columns);
                    }
                }
            }
        }
        return ioSuccess();
    }

    std::uint32_t rowsPerStrip = layout.height;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_ROWSPERSTRIP, &rowsPerStrip);
    rowsPerStrip = std::clamp<std::uint32_t>(rowsPerStrip, 1, layout.height);
    const tmsize_t scanline = TIFFScanlineSize(tiff);
    if (scanline <= 0)
        return ioError(damaged(source_, "row size"));
    const std::uint32_t stripsPerPlane = (layout.height + rowsPerStrip - 1) / rowsPerStrip;
    if (TIFFNumberOfStrips(tiff) < static_cast<std::uint64_t>(stripsPerPlane) * planes)
        return ioError(damaged(source_, "strip count"));
    for (std::uint16_t plane = 0; plane < planes; ++plane) {
        const RowTransform& transform = transforms[plane];
        const bool direct = transform.kind == RowTransform::Kind::copy &&
                            static_cast<std::size_t>(scanline) == bitmapRowBytes;
        for (std::uint32_t strip = 0; strip < stripsPerPlane; ++strip) {
            const std::uint32_t y0 = strip * rowsPerStrip;
            const std::uint32_t rows = std::min(rowsPerStrip, layout.height - y0);
            const tmsize_t expected = static_cast<tmsize_t>(rows) * scanline;
            std::uint8_t* target = planeData[plane] + y0 * bitmapRowBytes;
            if (!direct) {
                scratch.resize(static_cast<std::size_t>(expected));
                target = scratch.data();
            }
            const tstrip_t index = static_cast<tstrip_t>(plane) * stripsPerPlane + strip;
            if (TIFFReadEncodedStrip(tiff, index, target, expected) != expected)
                return ioError(damaged(source_, "strip data"));
            if (direct)
                continue;
            for (std::uint32_t r = 0; r < rows; ++r)
                transform.apply(scratch.data() + r * static_cast<std::size_t>(scanline),
                                planeData[plane] + (y0 + r) * bitmapRowBytes, layout.width);
        }
    }
    return ioSuccess();
}

IOStatus TiffImageReader::readThroughRGBA(const PageLayout& layout, KVBitmap& bitmap)
{
    std::vector<std::uint32_t> raster;
    try {
        raster.resize(static_cast<std::size_t>(layout.width) * layout.height);
    } catch (const std::bad_alloc&) {
        return ioError("There is not enough memory to open the image.");
    }
    if (!TIFFReadRGBAImageOriented(tiff_.get(), layout.width, layout.height, raster.data(),
                                   ORIENTATION_TOPLEFT, 0))
        return ioError(damaged(source_, "image data"));
    const int samples = static_cast<int>(bitmap.samplesPerPixel());
    for (std::uint32_t y = 0; y < layout.height; ++y) {
        std::uint8_t* row =
            bitmap.bitmapData() + y * static_cast<std::size_t>(bitmap.bytesPerRow());
        const std::uint32_t* pixels = raster.data() + static_cast<std::size_t>(y) * layout.width;
        for (std::uint32_t x = 0; x < layout.width; ++x) {
            const std::uint32_t abgr = pixels[x];
            std::uint8_t* p = row + static_cast<std::size_t>(x) * samples;
            p[0] = static_cast<std::uint8_t>(TIFFGetR(abgr));
            p[1] = static_cast<std::uint8_t>(TIFFGetG(abgr));
            p[2] = static_cast<std::uint8_t>(TIFFGetB(abgr));
            if (samples == 4)
                p[3] = static_cast<std::uint8_t>(TIFFGetA(abgr));
        }
    }
    return ioSuccess();
}

} // namespace

IOResult<std::unique_ptr<ImageReader>> openTiff(std::span<const std::uint8_t> data)
{
    auto reader = std::make_unique<TiffImageReader>(data);
    IOStatus opened = reader->open();
    if (!opened)
        return ioError(opened.error().message);
    return std::unique_ptr<ImageReader>(std::move(reader));
}

} // namespace tintorra
