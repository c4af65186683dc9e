#include "imageio/DecodedBitmap.h"
#include "imageio/ImageCodec.h"
#include "imageio/MedianCut.h"
#include "imageio/SampleRows.h"

#include <algorithm>
#include <cstring>
#include <gif_lib.h>
#include <new>

namespace tintorra {

namespace {

// The application extension that carries an ICC profile in a GIF file.
constexpr char kIccExtensionId[] = "ICCRGBG1012";
constexpr int kIccExtensionIdLength = 11;
// Pixels less opaque than this become the transparent palette entry.
constexpr std::uint8_t kTransparencyThreshold = 128;

std::string gifError(const char* what, int code)
{
    const char* reason = GifErrorString(code);
    std::string message = std::string(what);
    if (reason)
        message += std::string(" (") + reason + ")";
    return message + ".";
}

// ---- reading ----

struct GifSource {
    std::span<const std::uint8_t> data;
    std::size_t position = 0;
};

int readFromMemory(GifFileType* gif, GifByteType* out, int length)
{
    auto* source = static_cast<GifSource*>(gif->UserData);
    const std::size_t n = std::min<std::size_t>(static_cast<std::size_t>(std::max(length, 0)),
                                                source->data.size() - source->position);
    std::memcpy(out, source->data.data() + source->position, n);
    source->position += n;
    return static_cast<int>(n);
}

struct GifReadCloser {
    void operator()(GifFileType* gif) const
    {
        int error = 0;
        DGifCloseFile(gif, &error);
    }
};
using GifReadHandle = std::unique_ptr<GifFileType, GifReadCloser>;

// The first image of the file. Later frames of an animation are not read.
IOResult<KVBitmapPtr> decodeGif(std::span<const std::uint8_t> data)
{
    GifSource source{data, 0};
    int error = 0;
    GifReadHandle gif(DGifOpen(&source, &readFromMemory, &error));
    if (!gif)
        return ioError(gifError("The GIF file is damaged", error));

    int transparent = -1;
    std::vector<std::uint8_t> icc;
    bool inIccExtension = false;
    for (;;) {
        GifRecordType record = UNDEFINED_RECORD_TYPE;
        if (DGifGetRecordType(gif.get(), &record) == GIF_ERROR)
            return ioError(gifError("The GIF file is damaged or truncated", gif->Error));
        if (record == TERMINATE_RECORD_TYPE)
            return ioError("The GIF file holds no image.");
        if (record == EXTENSION_RECORD_TYPE) {
            int code = 0;
            GifByteType* block = nullptr;
            if (DGifGetExtension(gif.get(), &code, &block) == GIF_ERROR)
                return ioError(gifError("The GIF file is damaged or truncated", gif->Error));
            if (code == GRAPHICS_EXT_FUNC_CODE && block && block[0] >= 4) {
                GraphicsControlBlock control;
                if (DGifExtensionToGCB(block[0], block + 1, &control) == GIF_OK)
                    transparent = control.TransparentColor;
            }
            inIccExtension = code == APPLICATION_EXT_FUNC_CODE && block &&
                             block[0] == kIccExtensionIdLength &&
                             std::memcmp(block + 1, kIccExtensionId, kIccExtensionIdLength) == 0;
            if (inIccExtension)
                icc.clear();
            while (block) {
                if (DGifGetExtensionNext(gif.get(), &block) == GIF_ERROR)
                    return ioError(gifError("The GIF file is damaged or truncated", gif->Error));
                if (block && inIccExtension)
                    icc.insert(icc.end(), block + 1, block + 1 + block[0]);
            }
            continue;
        }
        if (record != IMAGE_DESC_RECORD_TYPE)
            continue;
        if (DGifGetImageDesc(gif.get()) == GIF_ERROR)
            return ioError(gifError("The GIF file is damaged or truncated", gif->Error));
        break;
    }

    // The first frame is the picture, at its own size; the logical screen around it and the
    // frame's place on it only matter for animations (and a damaged screen size must not make
    // a small file ask for a huge canvas).
    const GifImageDesc& frame = gif->Image;
    const ColorMapObject* map = frame.ColorMap ? frame.ColorMap : gif->SColorMap;
    if (!map || map->ColorCount <= 0)
        return ioError("The GIF image has no colour table.");
    if (frame.Width <= 0 || frame.Height <= 0)
        return ioError("The GIF image has no pixels.");
    const bool alpha = transparent >= 0;

    KVBitmapLayout layout;
    layout.pixelsWide = frame.Width;
    layout.pixelsHigh = frame.Height;
    layout.bitsPerSample = 8;
    layout.samplesPerPixel = alpha ? 4 : 3;
    layout.hasAlpha = alpha;
    layout.bitmapFormat = alpha ? kBitmapFormatAlphaNonpremultiplied : 0u;
    // An LZW code takes at least 3 bits and stands for at most 4096 pixels.
    IOResult<KVBitmapPtr> allocated = allocateBitmapForDecoding(
        layout, colorSpaceForDecodedImage(KVColorSpaceModel::rgb, std::move(icc)), 0,
        {data.size(), 4096 * 8 / 3});
    if (!allocated)
        return allocated;
    KVBitmapPtr bitmap = allocated.take();

    std::vector<GifPixelType> line(static_cast<std::size_t>(frame.Width));
    const int samples = alpha ? 4 : 3;
    const auto writeLine = [&](int row) {
        std::uint8_t* out =
            bitmap->bitmapData() + static_cast<std::size_t>(row) * bitmap->bytesPerRow();
        for (int x = 0; x < frame.Width; ++x, out += samples) {
            const int index = line[static_cast<std::size_t>(x)];
            const GifColorType colour = map->Colors[std::min(index, map->ColorCount - 1)];
            out[0] = colour.Red;
            out[1] = colour.Green;
            out[2] = colour.Blue;
            if (alpha)
                out[3] = index == transparent ? 0 : 255;
        }
    };
    if (frame.Interlace) {
        // Rows arrive in four passes: every 8th from 0, every 8th from 4, every 4th from 2,
        // every 2nd from 1.
        static constexpr int starts[4] = {0, 4, 2, 1};
        static constexpr int steps[4] = {8, 8, 4, 2};
        for (int pass = 0; pass < 4; ++pass) {
            for (int row = starts[pass]; row < frame.Height; row += steps[pass]) {
                if (DGifGetLine(gif.get(), line.data(), frame.Width) == GIF_ERROR)
                    return ioError(gifError("The GIF file is damaged or truncated", gif->Error));
                writeLine(row);
            }
        }
    } else {
        for (int row = 0; row < frame.Height; ++row) {
            if (DGifGetLine(gif.get(), line.data(), frame.Width) == GIF_ERROR)
                return ioError(gifError("The GIF file is damaged or truncated", gif->Error));
            writeLine(row);
        }
    }
    return bitmap;
}

class GifImageReader final : public ImageReader {
public:
    explicit GifImageReader(std::span<const std::uint8_t> data) : data_(data) {}
    std::size_t pageCount() const override { return 1; }
    IOResult<KVBitmapPtr> decodePage(std::size_t page) override
    {
        if (page != 0)
            return ioError("Only the first image of a GIF file is opened.");
        return decodeGif(data_);
    }

private:
    std::span<const std::uint8_t> data_;
};

// ---- writing ----

struct GifSink {
    std::vector<std::uint8_t>* bytes = nullptr;
};

int writeToMemory(GifFileType* gif, const GifByteType* data, int length)
{
    auto* sink = static_cast<GifSink*>(gif->UserData);
    try {
        sink->bytes->insert(sink->bytes->end(), data, data + length);
    } catch (const std::bad_alloc&) {
        return 0;
    }
    return length;
}

struct GifWriteCloser {
    void operator()(GifFileType* gif) const
    {
        int error = 0;
        EGifCloseFile(gif, &error);
    }
};
using GifWriteHandle = std::unique_ptr<GifFileType, GifWriteCloser>;

struct MapCloser {
    void operator()(ColorMapObject* map) const { GifFreeMapObject(map); }
};

// The image as palette indices: every pixel's colour is looked up once per distinct value.
struct IndexedImage {
    std::vector<PaletteColour> palette;
    std::vector<std::uint8_t> indices;
    int transparentIndex = -1;
};

// Exact colours when there are few enough, otherwise a median-cut palette.
IndexedImage indexImage(const KVBitmap& bitmap)
{
    RowPacking packing;
    packing.bitsPerSample = 8;
    packing.keepAlpha = true;
    packing.unpremultiply = true;
    RowPacker packer(bitmap, packing);
    const std::size_t width = static_cast<std::size_t>(bitmap.pixelsWide());
    const std::size_t height = static_cast<std::size_t>(bitmap.pixelsHigh());
    const int samples = packer.samplesPerPixel();
    const bool grey = packer.colourSamples() == 1;
    const bool alpha = packer.hasAlpha();

    const auto colourAt = [&](const std::uint8_t* pixel) -> PaletteColour {
        return grey ? PaletteColour{pixel[0], pixel[0], pixel[0]}
                    : PaletteColour{pixel[0], pixel[1], pixel[2]};
    };
    const auto isTransparent = [&](const std::uint8_t* pixel) {
        return alpha && pixel[samples - 1] < kTransparencyThreshold;
    };

    IndexedImage indexed;
    bool anyTransparent = false;
    std::vector<bool> seen(std::size_t{1} << 24, false);
    std::vector<std::uint32_t> exact;
    bool fitsExactly = true;
    ColourHistogram histogram;
    for (std::size_t y = 0; y < height; ++y) {
        const std::uint8_t* row = packer.row(static_cast<std::int64_t>(y));
        for (std::size_t x = 0; x < width; ++x) {
            const std::uint8_t* pixel = row + x * static_cast<std::size_t>(samples);
            if (isTransparent(pixel)) {
                anyTransparent = true;
                continue;
            }
            const PaletteColour c = colourAt(pixel);
            histogram.add(c[0], c[1], c[2]);
            const std::uint32_t key =
                (std::uint32_t{c[0]} << 16) | (std::uint32_t{c[1]} << 8) | c[2];
            if (fitsExactly && !seen[key]) {
                seen[key] = true;
                exact.push_back(key);
                fitsExactly = exact.size() <= 256;
            }
        }
    }
    const std::size_t available = anyTransparent ? 255 : 256;
    fitsExactly = exact.size() <= available;

    std::vector<std::uint8_t> exactIndex;
    MedianCutPalette cut;
    if (fitsExactly) {
        std::sort(exact.begin(), exact.end());
        for (const std::uint32_t key : exact)
            indexed.palette.push_back({static_cast<std::uint8_t>(key >> 16),
                                       static_cast<std::uint8_t>(key >> 8),
                                       static_cast<std::uint8_t>(key)});
    } else {
        cut = medianCutPalette(histogram, available);
        indexed.palette = cut.colours;
    }
    if (indexed.palette.empty())
        indexed.palette.push_back({0, 0, 0});
    if (anyTransparent) {
        indexed.transparentIndex = static_cast<int>(indexed.palette.size());
        indexed.palette.push_back({0, 0, 0});
    }

    indexed.indices.resize(width * height);
    for (std::size_t y = 0; y < height; ++y) {
        const std::uint8_t* row = packer.row(static_cast<std::int64_t>(y));
        std::uint8_t* out = indexed.indices.data() + y * width;
        for (std::size_t x = 0; x < width; ++x) {
            const std::uint8_t* pixel = row + x * static_cast<std::size_t>(samples);
            if (isTransparent(pixel)) {
                out[x] = static_cast<std::uint8_t>(indexed.transparentIndex);
                continue;
            }
            const PaletteColour c = colourAt(pixel);
            if (fitsExactly) {
                const std::uint32_t key =
                    (std::uint32_t{c[0]} << 16) | (std::uint32_t{c[1]} << 8) | c[2];
                out[x] = static_cast<std::uint8_t>(
                    std::lower_bound(exact.begin(), exact.end(), key) - exact.begin());
            } else {
                out[x] = static_cast<std::uint8_t>(cut.indexOfBin[static_cast<std::size_t>(
                    ColourHistogram::binOf(c[0], c[1], c[2]))]);
            }
        }
    }
    return indexed;
}

IOResult<std::vector<std::uint8_t>> encodeGif(const KVBitmap& bitmap)
{
    const KVColorSpaceModel model = bitmap.colorSpace().model();
    if (model != KVColorSpaceModel::rgb && model != KVColorSpaceModel::gray)
        return ioError("GIF holds only RGB and grey images.");
    if (bitmap.bitsPerSample() != 8 && bitmap.bitsPerSample() != 16)
        return ioError("GIF images are written from 8- or 16-bit samples.");
    if (bitmap.pixelsWide() > 65535 || bitmap.pixelsHigh() > 65535)
        return ioError("The image is too large for GIF, which holds at most 65535 pixels in each "
                       "direction.");

    IndexedImage indexed;
    try {
        indexed = indexImage(bitmap);
    } catch (const std::bad_alloc&) {
        return ioError("There is not enough memory to write the image.");
    }

    int mapSize = 2;
    while (mapSize < static_cast<int>(indexed.palette.size()))
        mapSize *= 2;
    std::vector<GifColorType> colours(static_cast<std::size_t>(mapSize), GifColorType{0, 0, 0});
    for (std::size_t i = 0; i < indexed.palette.size(); ++i)
        colours[i] = {indexed.palette[i][0], indexed.palette[i][1], indexed.palette[i][2]};
    std::unique_ptr<ColorMapObject, MapCloser> map(GifMakeMapObject(mapSize, colours.data()));
    if (!map)
        return ioError("There is not enough memory to write the image.");

    std::vector<std::uint8_t> bytes;
    GifSink sink{&bytes};
    int error = 0;
    GifWriteHandle gif(EGifOpen(&sink, &writeToMemory, &error));
    if (!gif)
        return ioError(gifError("The GIF file could not be started", error));
    EGifSetGifVersion(gif.get(), true);
    const int width = static_cast<int>(bitmap.pixelsWide());
    const int height = static_cast<int>(bitmap.pixelsHigh());
    const auto failed = [&gif]() {
        return ioError(gifError("The GIF file could not be written", gif->Error));
    };
    if (EGifPutScreenDesc(gif.get(), width, height, 8, 0, map.get()) == GIF_ERROR)
        return failed();

    const std::vector<std::uint8_t>& icc = bitmap.colorSpace().iccProfile();
    if (!icc.empty()) {
        if (EGifPutExtensionLeader(gif.get(), APPLICATION_EXT_FUNC_CODE) == GIF_ERROR ||
            EGifPutExtensionBlock(gif.get(), kIccExtensionIdLength, kIccExtensionId) == GIF_ERROR)
            return failed();
        for (std::size_t offset = 0; offset < icc.size(); offset += 255) {
            const int length = static_cast<int>(std::min<std::size_t>(255, icc.size() - offset));
            if (EGifPutExtensionBlock(gif.get(), length, icc.data() + offset) == GIF_ERROR)
                return failed();
        }
        if (EGifPutExtensionTrailer(gif.get()) == GIF_ERROR)
            return failed();
    }
    if (indexed.transparentIndex >= 0) {
        GraphicsControlBlock control{};
        control.DisposalMode = DISPOSAL_UNSPECIFIED;
        control.UserInputFlag = false;
        control.DelayTime = 0;
        control.TransparentColor = indexed.transparentIndex;
        GifByteType extension[4];
        const std::size_t length = EGifGCBToExtension(&control, extension);
        if (EGifPutExtension(gif.get(), GRAPHICS_EXT_FUNC_CODE, static_cast<int>(length),
                             extension) == GIF_ERROR)
            return failed();
    }
    if (EGifPutImageDesc(gif.get(), 0, 0, width, height, false, nullptr) == GIF_ERROR)
        return failed();
    for (int y = 0; y < height; ++y) {
        GifPixelType* line = indexed.indices.data() + static_cast<std::size_t>(y) * width;
        if (EGifPutLine(gif.get(), line, width) == GIF_ERROR)
            return failed();
    }
    GifFileType* raw = gif.release();
    if (EGifCloseFile(raw, &error) == GIF_ERROR)
        return ioError(gifError("The GIF file could not be completed", error));
    return bytes;
}

class GifCodec final : public ImageCodec {
public:
    ImageFormat format() const override { return ImageFormat::gif; }
    std::string_view name() const override { return "GIF"; }
    bool sniff(std::span<const std::uint8_t> head) const override
    {
        return head.size() >= 6 && std::memcmp(head.data(), "GIF8", 4) == 0 &&
               (head[4] == '7' || head[4] == '9') && head[5] == 'a';
    }
    IOResult<std::unique_ptr<ImageReader>> open(std::span<const std::uint8_t> data) const override
    {
        if (!sniff(data))
            return ioError("The file is not a GIF file.");
        return std::unique_ptr<ImageReader>(std::make_unique<GifImageReader>(data));
    }
    IOResult<std::vector<std::uint8_t>> encode(const KVBitmap& bitmap,
                                               const EncodeOptions&) const override
    {
        return encodeGif(bitmap);
    }
};

} // namespace

const ImageCodec& gifCodec()
{
    static const GifCodec codec;
    return codec;
}

} // namespace tintorra
