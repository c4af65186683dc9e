#include "imageio/ImageFile.h"

#include "imageio/AtomicFileWriter.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace tintorra {

namespace {

std::string systemMessage(int error)
{
    return std::generic_category().message(error);
}

} // namespace

std::span<const ImageCodec* const> imageCodecs()
{
    static const std::array<const ImageCodec*, 6> codecs{
        &tiffCodec(), &pngCodec(), &jpegCodec(), &jpeg2000Codec(), &bmpCodec(), &gifCodec()};
    return codecs;
}

const ImageCodec& codecForFormat(ImageFormat format)
{
    for (const ImageCodec* codec : imageCodecs()) {
        if (codec->format() == format)
            return *codec;
    }
    return tiffCodec();
}

const ImageCodec* codecForData(std::span<const std::uint8_t> data)
{
    for (const ImageCodec* codec : imageCodecs()) {
        if (codec->sniff(data))
            return codec;
    }
    return nullptr;
}

std::optional<ImageFormat> formatForPath(const std::filesystem::path& path)
{
    const std::optional<std::string> type = typeForExtension(path.extension().string());
    if (!type)
        return std::nullopt;
    return formatForType(*type);
}

IOResult<ImageSource> ImageSource::open(std::span<const std::uint8_t> data)
{
    const ImageCodec* codec = codecForData(data);
    if (!codec)
        return ioError(data.empty() ? "The file is empty."
                                    : "The file is not an image in a format Tintorra reads "
                                      "(TIFF, PNG, JPEG, JPEG 2000, BMP or GIF).");
    IOResult<std::unique_ptr<ImageReader>> reader = codec->open(data);
    if (!reader)
        return ioError(reader.error().message);
    return ImageSource(codec->format(), reader.take());
}

IOResult<KVBitmapPtr> decodeImage(std::span<const std::uint8_t> data)
{
    IOResult<ImageSource> source = ImageSource::open(data);
    if (!source)
        return ioError(source.error().message);
    return source.value().decodePage(0);
}

IOResult<std::vector<std::uint8_t>> encodeImage(const KVBitmap& bitmap, ImageFormat format,
                                                const EncodeOptions& options)
{
    return codecForFormat(format).encode(bitmap, options);
}

IOResult<std::vector<std::uint8_t>> readWholeFile(const std::filesystem::path& path)
{
    const std::string name = path.string();
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return ioError("Cannot open “" + name + "”: " + systemMessage(errno) + ".");
    struct stat info {};
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
        ::close(fd);
        return ioError("Cannot open “" + name + "”: it is not a regular file.");
    }
    std::vector<std::uint8_t> bytes;
    try {
        bytes.resize(static_cast<std::size_t>(info.st_size));
    } catch (const std::bad_alloc&) {
        ::close(fd);
        return ioError("Cannot open “" + name + "”: not enough memory to read it.");
    }
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::read(fd, bytes.data() + done, bytes.size() - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0) {
            const int readError = n < 0 ? errno : EIO;
            ::close(fd);
            return ioError("Cannot read “" + name + "”: " + systemMessage(readError) + ".");
        }
        done += static_cast<std::size_t>(n);
    }
    ::close(fd);
    return bytes;
}

IOResult<KVBitmapPtr> readImageFile(const std::filesystem::path& path)
{
    IOResult<std::vector<std::uint8_t>> bytes = readWholeFile(path);
    if (!bytes)
        return ioError(bytes.error().message);
    return decodeImage(bytes.value());
}

IOStatus writeImageFile(const std::filesystem::path& path, const KVBitmap& bitmap,
                        std::optional<ImageFormat> format, const EncodeOptions& options,
                        const std::vector<std::filesystem::path>& protectedFiles)
{
    if (!format)
        format = formatForPath(path);
    if (!format)
        return ioError("Cannot write “" + path.string() +
                       "”: its extension names no format Tintorra writes.");
    IOResult<std::vector<std::uint8_t>> bytes = encodeImage(bitmap, *format, options);
    if (!bytes)
        return ioError(bytes.error().message);
    return writeFileAtomically(path, bytes.value(), protectedFiles);
}

} // namespace tintorra
