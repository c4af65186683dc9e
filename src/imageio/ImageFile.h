#pragma once

#include "image/KVBitmap.h"
#include "imageio/ImageCodec.h"
#include "imageio/ImageIOResult.h"
#include "imageio/ImageTypes.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tintorra {

// Every codec, in the order their signatures are tried.
std::span<const ImageCodec* const> imageCodecs();

const ImageCodec& codecForFormat(ImageFormat format);

// The codec whose signature the data starts with; nullptr for anything else.
const ImageCodec* codecForData(std::span<const std::uint8_t> data);

// The format a file name's extension stands for.
std::optional<ImageFormat> formatForPath(const std::filesystem::path& path);

// Image data opened for reading, whatever its format (recognised by content, not by name). The
// bytes must outlive it.
class ImageSource {
public:
    static IOResult<ImageSource> open(std::span<const std::uint8_t> data);

    ImageFormat format() const { return format_; }
    std::size_t pageCount() const { return reader_->pageCount(); }
    IOResult<KVBitmapPtr> decodePage(std::size_t page) { return reader_->decodePage(page); }
    IOResult<PageDescription> describePage(std::size_t page) { return reader_->describePage(page); }
    // A TIFF text property of page 0; nothing for other formats.
    std::optional<std::string> stringProperty(int tiffTag) const
    {
        return reader_->stringProperty(tiffTag);
    }

private:
    ImageSource(ImageFormat format, std::unique_ptr<ImageReader> reader)
        : format_(format), reader_(std::move(reader))
    {}

    ImageFormat format_;
    std::unique_ptr<ImageReader> reader_;
};

// The first image of the data.
IOResult<KVBitmapPtr> decodeImage(std::span<const std::uint8_t> data);

IOResult<std::vector<std::uint8_t>> encodeImage(const KVBitmap& bitmap, ImageFormat format,
                                                const EncodeOptions& options = {});

// Reads a whole file into memory.
IOResult<std::vector<std::uint8_t>> readWholeFile(const std::filesystem::path& path);

// The first image of a file.
IOResult<KVBitmapPtr> readImageFile(const std::filesystem::path& path);

// Encodes the bitmap in `format` (by default the one the file name's extension names) and writes
// it atomically; `protectedFiles` are inputs that must not be overwritten.
IOStatus writeImageFile(const std::filesystem::path& path, const KVBitmap& bitmap,
                        std::optional<ImageFormat> format = std::nullopt,
                        const EncodeOptions& options = {},
                        const std::vector<std::filesystem::path>& protectedFiles = {});

} // namespace tintorra
