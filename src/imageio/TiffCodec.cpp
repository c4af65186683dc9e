#include "imageio/ImageCodec.h"
#include "imageio/TiffReader.h"
#include "imageio/TiffWriter.h"

namespace tintorra {

namespace {

class TiffCodec final : public ImageCodec {
public:
    ImageFormat format() const override { return ImageFormat::tiff; }
    std::string_view name() const override { return "TIFF"; }

    bool sniff(std::span<const std::uint8_t> head) const override
    {
        if (head.size() < 4)
            return false;
        const bool little =
            head[0] == 'I' && head[1] == 'I' && head[3] == 0 && (head[2] == 42 || head[2] == 43);
        const bool big =
            head[0] == 'M' && head[1] == 'M' && head[2] == 0 && (head[3] == 42 || head[3] == 43);
        return little || big;
    }

    IOResult<std::unique_ptr<ImageReader>> open(std::span<const std::uint8_t> data) const override
    {
        return openTiff(data);
    }

    IOResult<std::vector<std::uint8_t>> encode(const KVBitmap& bitmap,
                                               const EncodeOptions&) const override
    {
        TiffWriter writer(needsBigTiff({&bitmap}));
        IOStatus page = writer.addPage(bitmap);
        std::vector<std::uint8_t> bytes = writer.finish();
        if (!page)
            return ioError(page.error().message);
        if (writer.failed())
            return ioError("The TIFF file could not be completed.");
        return bytes;
    }
};

} // namespace

const ImageCodec& tiffCodec()
{
    static const TiffCodec codec;
    return codec;
}

} // namespace tintorra
