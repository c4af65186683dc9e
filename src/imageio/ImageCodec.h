#pragma once

#include "image/KVBitmap.h"
#include "imageio/ImageIOResult.h"
#include "imageio/ImageTypes.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tintorra {

// What a page holds, without its samples: the layout a decode gives and its colour space.
struct PageDescription {
    KVBitmapLayout layout;
    KVColorSpace colorSpace;
};

// An image file opened for reading. The bytes it was opened on must outlive it.
class ImageReader {
public:
    virtual ~ImageReader() = default;

    // Pages (TIFF directories); 1 for single-image formats.
    virtual std::size_t pageCount() const = 0;

    // Decodes one page into a new bitmap in the layout the file holds (chunky or planar, 8 or 16
    // bits), with the file's colour space and embedded ICC profile.
    virtual IOResult<KVBitmapPtr> decodePage(std::size_t page) = 0;

    // The page as decodePage would give it, less its samples. Formats whose headers say it all
    // answer without decoding (a quick look at a large photograph); the others decode.
    virtual IOResult<PageDescription> describePage(std::size_t page)
    {
        IOResult<KVBitmapPtr> bitmap = decodePage(page);
        if (!bitmap)
            return bitmap.error();
        return PageDescription{bitmap.value()->layout(), bitmap.value()->colorSpace()};
    }

    // A text property of the first page (a TIFF ASCII tag such as Software or Artist); nothing
    // when the format or the file has none.
    virtual std::optional<std::string> stringProperty(int tiffTag) const
    {
        (void)tiffTag;
        return std::nullopt;
    }
};

// What an encoder may be told besides the bitmap.
struct EncodeOptions {
    // JPEG quality in [0, 1]; values outside are clamped.
    double quality = 0.9;
    // JPEG 2000: a bare codestream (.j2k) instead of a .jp2 file with boxes.
    bool jpeg2000Codestream = false;
    // PNG: zlib level (0 to 9) and row filters (libpng's PNG_FILTER_ flags). Either one makes
    // libpng compress the image data with zlib (level 2 and the Up filter alone where not given)
    // instead of the default, the Average filter compressed by ISA-L on every processor, which is
    // several times faster. For measurements and special needs.
    std::optional<int> pngCompressionLevel;
    std::optional<int> pngFilters;
};

// One image format: recognises its files, opens them for reading and encodes bitmaps.
class ImageCodec {
public:
    virtual ~ImageCodec() = default;

    virtual ImageFormat format() const = 0;
    virtual std::string_view name() const = 0;

    // True when the first bytes of a file are this format's signature.
    virtual bool sniff(std::span<const std::uint8_t> head) const = 0;

    virtual IOResult<std::unique_ptr<ImageReader>>
    open(std::span<const std::uint8_t> data) const = 0;

    // The file bytes of `bitmap` in this format, with its ICC profile and its depth wherever the
    // format holds them.
    virtual IOResult<std::vector<std::uint8_t>> encode(const KVBitmap& bitmap,
                                                       const EncodeOptions& options) const = 0;
};

const ImageCodec& tiffCodec();
const ImageCodec& pngCodec();
const ImageCodec& jpegCodec();
const ImageCodec& jpeg2000Codec();
const ImageCodec& bmpCodec();
const ImageCodec& gifCodec();

} // namespace tintorra
