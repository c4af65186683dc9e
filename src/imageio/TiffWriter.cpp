#include "imageio/TiffWriter.h"

#include "imageio/DecodedBitmap.h"
#include "imageio/SampleRows.h"

#include <algorithm>
#include <cstring>

namespace tintorra {

namespace {

// Strips of about this many bytes keep the per-strip overhead small without large buffers.
constexpr std::size_t kStripBytes = 256 * 1024;

struct Photometric {
    std::uint16_t value = PHOTOMETRIC_RGB;
    std::uint16_t inkSet = 0;
};

std::optional<Photometric> photometricFor(const KVBitmap& bitmap)
{
    switch (bitmap.colorSpace().model()) {
    case KVColorSpaceModel::gray:
        return Photometric{PHOTOMETRIC_MINISBLACK};
    case KVColorSpaceModel::rgb:
        return Photometric{PHOTOMETRIC_RGB};
    case KVColorSpaceModel::cmyk:
        return Photometric{PHOTOMETRIC_SEPARATED, INKSET_CMYK};
    case KVColorSpaceModel::deviceN:
        return Photometric{PHOTOMETRIC_SEPARATED, INKSET_MULTIINK};
    case KVColorSpaceModel::lab:
        return Photometric{PHOTOMETRIC_CIELAB};
    default:
        return std::nullopt;
    }
}

} // namespace

std::optional<std::string> tiffPageProblem(const KVBitmap& bitmap)
{
    if (bitmap.bitsPerSample() != 8 && bitmap.bitsPerSample() != 16)
        return "TIFF pages are written with 8 or 16 bits per sample.";
    if (bitmap.bitmapFormat() & kBitmapFormatFloatingPointSamples)
        return "Floating-point samples cannot be written.";
    if (!photometricFor(bitmap))
        return "The image's colour model cannot be written as TIFF.";
    return std::nullopt;
}

bool needsBigTiff(const std::vector<const KVBitmap*>& bitmaps)
{
    // LZW can expand incompressible data by half; stay well clear of the 32-bit offsets.
    std::uint64_t total = 0;
    for (const KVBitmap* bitmap : bitmaps) {
        if (bitmap)
            total += static_cast<std::uint64_t>(bitmap->bytesPerRow()) *
                     static_cast<std::uint64_t>(bitmap->pixelsHigh()) *
                     static_cast<std::uint64_t>(bitmap->numberOfPlanes());
    }
    return total > (std::uint64_t{1} << 31);
}

TiffWriter::TiffWriter(bool bigTiff) : tiff_(openTiffSink(sink_, bigTiff))
{
    failed_ = !tiff_;
}

IOStatus TiffWriter::fail(const std::string& message)
{
    failed_ = true;
    std::string text = message;
    if (sink_.outOfMemory)
        text += " There is not enough memory.";
    else if (!sink_.lastError.empty())
        text += " " + sink_.lastError;
    return ioError(text);
}

IOStatus TiffWriter::writeExifDirectory(const std::string& dateTimeDigitized, std::uint64_t& offset)
{
    TIFF* tiff = tiff_.get();
    // The EXIF directory is written before the page's own directory, which then points at it;
    // custom directories are not linked into the chain of pages.
    if (TIFFCreateEXIFDirectory(tiff) != 0 ||
        !TIFFSetField(tiff, EXIFTAG_DATETIMEDIGITIZED, dateTimeDigitized.c_str()) ||
        !TIFFWriteCustomDirectory(tiff, &offset))
        return fail("The EXIF properties could not be written.");
    // Freeing the EXIF directory before starting the page's own releases the EXIF field
    // definitions, which TIFFCreateDirectory alone would leak.
    TIFFFreeDirectory(tiff);
    if (TIFFCreateDirectory(tiff) != 0)
        return fail("The TIFF page could not be started.");
    return ioSuccess();
}

IOStatus TiffWriter::addPage(const KVBitmap& bitmap, const TiffPageProperties& properties)
{
    if (!tiff_)
        return fail("The TIFF file could not be created.");
    if (const std::optional<std::string> problem = tiffPageProblem(bitmap))
        return fail(*problem);
    const std::optional<Photometric> photometric = photometricFor(bitmap);

    TIFF* tiff = tiff_.get();
    std::uint64_t exifOffset = 0;
    if (properties.dateTimeDigitized) {
        IOStatus exif = writeExifDirectory(*properties.dateTimeDigitized, exifOffset);
        if (!exif)
            return exif;
    }

    const bool planar = bitmap.isPlanar() && bitmap.samplesPerPixel() > 1;
    const bool alpha = bitmap.hasAlpha() && bitmap.samplesPerPixel() > 1;
    const bool premultiplied =
        alpha && (bitmap.bitmapFormat() & kBitmapFormatAlphaNonpremultiplied) == 0;
    const bool alphaFirst = alpha && (bitmap.bitmapFormat() & kBitmapFormatAlphaFirst) != 0;
    const auto width = static_cast<std::uint32_t>(bitmap.pixelsWide());
    const auto height = static_cast<std::uint32_t>(bitmap.pixelsHigh());
    const auto samples = static_cast<std::uint16_t>(bitmap.samplesPerPixel());
    const auto bits = static_cast<std::uint16_t>(bitmap.bitsPerSample());
    const std::size_t sampleBytes = bits / 8u;
    const std::size_t rowBytes =
        static_cast<std::size_t>(width) * sampleBytes * (planar ? 1u : samples);
    const std::uint32_t rowsPerStrip = static_cast<std::uint32_t>(
        std::clamp<std::size_t>(kStripBytes / std::max<std::size_t>(rowBytes, 1), 1, height));

    bool tagged = TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, width) &&
                  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, height) &&
                  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, bits) &&
                  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, samples) &&
                  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, photometric->value) &&
                  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG,
                               planar ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG) &&
                  TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_LZW) &&
                  TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL) &&
                  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, rowsPerStrip) &&
                  TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    if (photometric->inkSet != 0)
        tagged = tagged && TIFFSetField(tiff, TIFFTAG_INKSET, photometric->inkSet);
    if (alpha) {
        const std::uint16_t extra[] = {static_cast<std::uint16_t>(
            premultiplied ? EXTRASAMPLE_ASSOCALPHA : EXTRASAMPLE_UNASSALPHA)};
        tagged = tagged && TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, extra);
    }
    const std::vector<std::uint8_t>& icc = bitmap.colorSpace().iccProfile();
    if (!icc.empty())
        tagged = tagged && TIFFSetField(tiff, TIFFTAG_ICCPROFILE,
                                        static_cast<std::uint32_t>(icc.size()), icc.data());
    double horizontalDpi = 72.0;
    double verticalDpi = 72.0;
    bitmapResolution(bitmap, horizontalDpi, verticalDpi);
    tagged = tagged && TIFFSetField(tiff, TIFFTAG_XRESOLUTION, horizontalDpi) &&
             TIFFSetField(tiff, TIFFTAG_YRESOLUTION, verticalDpi) &&
             TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    if (properties.software)
        tagged = tagged && TIFFSetField(tiff, TIFFTAG_SOFTWARE, properties.software->c_str());
    if (properties.artist)
        tagged = tagged && TIFFSetField(tiff, TIFFTAG_ARTIST, properties.artist->c_str());
    if (properties.dateTimeDigitized)
        tagged = tagged && TIFFSetField(tiff, TIFFTAG_EXIFIFD, exifOffset);
    if (!tagged)
        return fail("The TIFF page properties could not be set.");

    std::vector<std::uint8_t> strip;
    try {
        strip.resize(rowBytes * rowsPerStrip);
    } catch (const std::bad_alloc&) {
        return fail("There is not enough memory to write the image.");
    }
    const std::uint32_t stripsPerPlane = (height + rowsPerStrip - 1) / rowsPerStrip;

    if (planar) {
        std::uint8_t* planes[5] = {};
        // Only reads the plane pointers.
        const_cast<KVBitmap&>(bitmap).getBitmapDataPlanes(planes);
        const std::size_t bitmapRowBytes = static_cast<std::size_t>(bitmap.bytesPerRow());
        for (std::uint16_t plane = 0; plane < samples; ++plane) {
            // The file holds alpha last.
            std::uint16_t source = plane;
            if (alphaFirst)
                source = plane + 1 == samples ? 0 : plane + 1;
            for (std::uint32_t s = 0; s < stripsPerPlane; ++s) {
                const std::uint32_t y0 = s * rowsPerStrip;
                const std::uint32_t rows = std::min(rowsPerStrip, height - y0);
                for (std::uint32_t r = 0; r < rows; ++r)
                    std::memcpy(strip.data() + r * rowBytes,
                                planes[source] + (y0 + r) * bitmapRowBytes, rowBytes);
                const tstrip_t index = static_cast<tstrip_t>(plane) * stripsPerPlane + s;
                if (TIFFWriteEncodedStrip(tiff, index, strip.data(),
                                          static_cast<tmsize_t>(rows * rowBytes)) < 0)
                    return fail("The TIFF image data could not be written.");
            }
        }
    } else {
        RowPacking packing;
        packing.bitsPerSample = bits;
        packing.keepAlpha = true;
        packing.unpremultiply = false;
        const RowPacker packer(bitmap, packing);
        for (std::uint32_t s = 0; s < stripsPerPlane; ++s) {
            const std::uint32_t y0 = s * rowsPerStrip;
            const std::uint32_t rows = std::min(rowsPerStrip, height - y0);
            // Horizontal differencing works in place, so rows are always copied first.
            for (std::uint32_t r = 0; r < rows; ++r)
                packer.packRow(y0 + r, strip.data() + r * rowBytes);
            if (TIFFWriteEncodedStrip(tiff, s, strip.data(),
                                      static_cast<tmsize_t>(rows * rowBytes)) < 0)
                return fail("The TIFF image data could not be written.");
        }
    }
    if (!TIFFWriteDirectory(tiff))
        return fail("The TIFF page could not be completed.");
    return ioSuccess();
}

std::vector<std::uint8_t> TiffWriter::finish()
{
    if (tiff_) {
        TIFFFlush(tiff_.get());
        tiff_.reset();
    }
    if (sink_.outOfMemory)
        failed_ = true;
    return std::move(sink_.bytes);
}

} // namespace tintorra
