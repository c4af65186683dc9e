// Damaged, truncated and oversized files of every format: a clear error, never a crash (these
// tests run under the address and undefined-behaviour sanitizers too) and never a huge
// allocation for a tiny file.

#include "ImageTestSupport.h"
#include "imageio/ImageFile.h"
#include "imageio/ImageLimits.h"

#include <gtest/gtest.h>
#include <tiffio.h>

#include <algorithm>
#include <cstring>
#include <string_view>

namespace tintorra {
namespace {

using test::fixtureBytes;

const char* const kSamples[] = {
    "rgb8-chunky.tif",
    "rgb16-planar-lzw.tif",
    "rgb8-tiled-deflate.tif",
    "rgb8-jpeg-ycbcr.tif",
    "palette.tif",
    "bilevel.tif",
    "rgba16.png",
    "rgb8-interlaced.png",
    "palette-trns.png",
    "rgb.jpg",
    "progressive.jpg",
    "cmyk.jpg",
    "rgb8.jp2",
    "rgb8.j2k",
    "rgba16.jp2",
    "rgb24.bmp",
    "palette8.bmp",
    "rgba32.bmp",
    "interlaced.gif",
    "transparent.gif",
};

class DamagedFileTest : public ::testing::TestWithParam<const char*> {};

std::vector<std::uint8_t> firstBytes(const std::vector<std::uint8_t>& bytes, std::size_t count)
{
    return {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count)};
}

TEST_P(DamagedFileTest, TruncatedFilesGiveAClearError)
{
    const std::vector<std::uint8_t> bytes = fixtureBytes(GetParam());
    ASSERT_GT(bytes.size(), 64u);
    // Cut inside the header, then inside the image data at several places.
    const std::size_t cuts[] = {
        0, 3, 12, bytes.size() / 4, bytes.size() / 2, bytes.size() * 3 / 4,
    };
    for (const std::size_t cut : cuts) {
        IOResult<KVBitmapPtr> decoded = decodeImage(firstBytes(bytes, cut));
        EXPECT_FALSE(decoded.ok()) << GetParam() << " cut at " << cut;
        EXPECT_FALSE(decoded.error().message.empty()) << GetParam() << " cut at " << cut;
    }
}

TEST_P(DamagedFileTest, ALostTailIsAnErrorOrLostNothingOfTheImage)
{
    // The last bytes of a file may be image data or only properties (a TIFF may keep its
    // chromaticities there): either the file is refused or the image is the complete one,
    // never a silently damaged picture.
    const std::vector<std::uint8_t> bytes = fixtureBytes(GetParam());
    IOResult<KVBitmapPtr> whole = decodeImage(bytes);
    ASSERT_TRUE(whole.ok()) << whole.error().message;
    for (const std::size_t lost : {1, 20}) {
        IOResult<KVBitmapPtr> decoded = decodeImage(firstBytes(bytes, bytes.size() - lost));
        if (decoded.ok()) {
            EXPECT_EQ(test::allSamples(*decoded.value()), test::allSamples(*whole.value()))
                << GetParam() << " without its last " << lost << " bytes";
        } else {
            EXPECT_FALSE(decoded.error().message.empty());
        }
    }
}

TEST_P(DamagedFileTest, CorruptedBytesNeverCrash)
{
    const std::vector<std::uint8_t> bytes = fixtureBytes(GetParam());
    // Overwrite runs of bytes all through the file with values that break lengths, offsets
    // and codes; whatever comes out must be an error or a sane image.
    for (std::size_t start = 8; start + 4 < bytes.size(); start += bytes.size() / 23 + 1) {
        for (const std::uint8_t value :
             {std::uint8_t{0x00}, std::uint8_t{0xFF}, std::uint8_t{0x7F}}) {
            std::vector<std::uint8_t> damaged = bytes;
            std::memset(damaged.data() + start, value, 4);
            IOResult<KVBitmapPtr> decoded = decodeImage(damaged);
            if (decoded.ok()) {
                ASSERT_TRUE(decoded.value());
                EXPECT_GT(decoded.value()->pixelsWide(), 0);
                EXPECT_GT(decoded.value()->pixelsHigh(), 0);
            } else {
                EXPECT_FALSE(decoded.error().message.empty());
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(EveryFormat, DamagedFileTest, ::testing::ValuesIn(kSamples),
                         [](const ::testing::TestParamInfo<const char*>& info) {
                             std::string name = info.param;
                             for (char& ch : name)
                                 if (!std::isalnum(static_cast<unsigned char>(ch)))
                                     ch = '_';
                             return name;
                         });

TEST(DamagedFile, DataOfNoKnownFormat)
{
    const std::vector<std::vector<std::uint8_t>> cases = {
        {},
        {'G', 'I', 'F'},
        {'%', 'P', 'D', 'F', '-', '1', '.', '4'},
        {0x89, 'P', 'N', 'G'},
        std::vector<std::uint8_t>(100, 0),
    };
    for (const auto& bytes : cases) {
        IOResult<KVBitmapPtr> decoded = decodeImage(bytes);
        EXPECT_FALSE(decoded.ok());
        EXPECT_FALSE(decoded.error().message.empty());
    }
}

// ---- sizes that cannot be held ----

void expectTooLarge(const std::vector<std::uint8_t>& bytes, const char* what)
{
    IOResult<KVBitmapPtr> decoded = decodeImage(bytes);
    ASSERT_FALSE(decoded.ok()) << what;
    EXPECT_NE(decoded.error().message.find("too large"), std::string::npos)
        << what << ": " << decoded.error().message;
}

std::uint32_t crc32(const std::uint8_t* data, std::size_t length)
{
    std::uint32_t crc = 0xFFFFFFFFu;
    for (std::size_t i = 0; i < length; ++i) {
        crc ^= data[i];
        for (int k = 0; k < 8; ++k)
            crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1u)));
    }
    return ~crc;
}

void putBig32(std::vector<std::uint8_t>& out, std::uint32_t v)
{
    for (int i = 3; i >= 0; --i)
        out.push_back(static_cast<std::uint8_t>(v >> (8 * i)));
}

// A PNG signature, an IHDR chunk and the start of the image data.
std::vector<std::uint8_t> pngHeader(std::uint32_t width, std::uint32_t height, std::uint8_t bits,
                                    std::uint8_t colourType)
{
    std::vector<std::uint8_t> png = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    std::vector<std::uint8_t> chunk = {'I', 'H', 'D', 'R'};
    putBig32(chunk, width);
    putBig32(chunk, height);
    chunk.insert(chunk.end(), {bits, colourType, 0, 0, 0});
    putBig32(png, 13);
    png.insert(png.end(), chunk.begin(), chunk.end());
    putBig32(png, crc32(chunk.data(), chunk.size()));
    // The start of the image data, where libpng stops reading the header.
    const std::vector<std::uint8_t> data = {'I', 'D', 'A', 'T', 0x78, 0x9C};
    putBig32(png, 2);
    png.insert(png.end(), data.begin(), data.end());
    putBig32(png, crc32(data.data(), data.size()));
    return png;
}

std::vector<std::uint8_t> jpegWithFrameSize(std::uint16_t width, std::uint16_t height)
{
    std::vector<std::uint8_t> jpeg = fixtureBytes("rgb.jpg");
    // The baseline frame header holds the height and width after its length and precision.
    for (std::size_t i = 0; i + 9 < jpeg.size(); ++i) {
        if (jpeg[i] == 0xFF && jpeg[i + 1] == 0xC0) {
            jpeg[i + 5] = static_cast<std::uint8_t>(height >> 8);
            jpeg[i + 6] = static_cast<std::uint8_t>(height);
            jpeg[i + 7] = static_cast<std::uint8_t>(width >> 8);
            jpeg[i + 8] = static_cast<std::uint8_t>(width);
            break;
        }
    }
    return jpeg;
}

std::vector<std::uint8_t> gifWithFrameSize(std::uint16_t width, std::uint16_t height)
{
    const auto low = [](std::uint16_t v) { return static_cast<std::uint8_t>(v); };
    const auto high = [](std::uint16_t v) { return static_cast<std::uint8_t>(v >> 8); };
    // Header, a screen with a two-colour table, an image descriptor covering the screen, then a
    // minimal LZW stream and the trailer.
    return {'G',          'I',  'F', '8', '9',  'a',  low(width), high(width), low(height),
            high(height), 0x80, 0,   0,   0,    0,    0,          255,         255,
            255,          0x2C, 0,   0,   0,    0,    low(width), high(width), low(height),
            high(height), 0,    2,   2,   0x4C, 0x01, 0,          0x3B};
}

TEST(OversizedImage, PngHeaderOfTenBillionPixels)
{
    // 100000 x 100000 16-bit RGBA pixels: 80 GB of samples.
    expectTooLarge(pngHeader(100000, 100000, 16, 6), "PNG");
    // One row of 2^31 - 1 such pixels: refused before a 16 GB row buffer is asked for.
    expectTooLarge(pngHeader(0x7fffffff, 1, 16, 6), "PNG row");
}

TEST(OversizedImage, JpegFrameOf65500Squared)
{
    expectTooLarge(jpegWithFrameSize(65500, 65500), "JPEG");
}

TEST(OversizedImage, TiffDirectoryOf70000Squared)
{
    test::TemporaryFolder folder;
    const std::filesystem::path path = folder.path() / "huge.tif";
    TIFF* tiff = TIFFOpen(path.c_str(), "w");
    ASSERT_NE(tiff, nullptr);
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, 70000u);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, 70000u);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 16);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 3);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 70000u);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_LZW);
    std::uint8_t strip[16] = {};
    TIFFWriteRawStrip(tiff, 0, strip, sizeof strip);
    TIFFWriteDirectory(tiff);
    TIFFClose(tiff);
    IOResult<std::vector<std::uint8_t>> bytes = readWholeFile(path);
    ASSERT_TRUE(bytes.ok());
    expectTooLarge(bytes.value(), "TIFF");
}

TEST(OversizedImage, GifFrameOf65535Squared)
{
    expectTooLarge(gifWithFrameSize(65535, 65535), "GIF");
}

// A run-length BMP with its header's size changed: a kilobyte of runs.
std::vector<std::uint8_t> runLengthBmpOfSize(std::uint32_t side)
{
    std::vector<std::uint8_t> bmp = fixtureBytes("palette8.bmp");
    std::memcpy(&bmp[18], &side, 4);
    std::memcpy(&bmp[22], &side, 4);
    return bmp;
}

// A JPEG 2000 file of a small picture whose headers (the image header box and the codestream's
// size marker) declare another size, in one tile.
std::vector<std::uint8_t> jpeg2000WithSize(std::uint32_t side)
{
    const KVBitmapPtr picture = KVBitmap::deviceRGBA8888Rep(24, 16, false);
    std::vector<std::uint8_t> jp2 = encodeImage(*picture, ImageFormat::jpeg2000).take();
    const auto put = [&](std::string_view marker, std::initializer_list<std::ptrdiff_t> offsets) {
        const auto at = std::search(
            jp2.begin(), jp2.end(), marker.begin(), marker.end(),
            [](std::uint8_t byte, char c) { return byte == static_cast<std::uint8_t>(c); });
        ASSERT_NE(at, jp2.end()) << marker;
        for (const std::ptrdiff_t offset : offsets) {
            for (int i = 0; i < 4; ++i) {
                at[offset + i] = static_cast<std::uint8_t>(side >> (24 - 8 * i));
            }
        }
    };
    put("ihdr", {4, 8});              // height, width
    put("\xFF\x51", {6, 10, 22, 26}); // Xsiz, Ysiz, XTsiz, YTsiz
    return jp2;
}

TEST(OversizedImage, AFewBytesCannotHoldAHugePicture)
{
    // 20000 x 20000 RGB pixels (1.2 GB) would fit in memory, but these files are far too small
    // to hold them whatever their compression.
    const std::vector<std::uint8_t> files[] = {
        pngHeader(20000, 20000, 8, 2),  jpegWithFrameSize(20000, 20000),
        gifWithFrameSize(20000, 20000), runLengthBmpOfSize(20000),
        jpeg2000WithSize(20000),
    };
    for (const std::vector<std::uint8_t>& bytes : files) {
        IOResult<KVBitmapPtr> decoded = decodeImage(bytes);
        ASSERT_FALSE(decoded.ok());
        EXPECT_NE(decoded.error().message.find("far too small for the 20000 × 20000 pixels"),
                  std::string::npos)
            << decoded.error().message;
    }
}

TEST(OversizedImage, GifFrameFarOutOnItsScreenIsDecodedAtItsOwnSize)
{
    // Move the first frame of a real file to (32512, 32639): the picture is still the frame.
    std::vector<std::uint8_t> gif = fixtureBytes("interlaced.gif");
    const std::vector<std::uint8_t> reference = fixtureBytes("ref-interlaced-gif.raw");
    std::size_t descriptor = 0;
    for (std::size_t i = 13; i + 10 < gif.size() && descriptor == 0; ++i) {
        if (gif[i] == 0x2C && gif[i + 5] == 24 && gif[i + 7] == 16)
            descriptor = i;
    }
    ASSERT_NE(descriptor, 0u);
    gif[descriptor + 2] = 0x7F;
    gif[descriptor + 3] = 0x7F;
    gif[descriptor + 4] = 0x7F;
    IOResult<KVBitmapPtr> decoded = decodeImage(gif);
    ASSERT_TRUE(decoded.ok()) << decoded.error().message;
    EXPECT_EQ(decoded.value()->pixelsWide(), 24);
    EXPECT_EQ(decoded.value()->pixelsHigh(), 16);
    EXPECT_EQ(test::allSamples(*decoded.value()),
              std::vector<std::uint32_t>(reference.begin(), reference.end()));
}

TEST(OversizedImage, RunLengthBmpOf40000Squared)
{
    expectTooLarge(runLengthBmpOfSize(40000), "BMP");
}

TEST(ImageLimits, SampleBytesAgainstTheColourTable)
{
    struct Case {
        std::uint64_t width, height, samples, bits;
        bool fits;
    };
    const Case cases[] = {
        {8000, 6000, 3, 16, true},   // a 48-megapixel 16-bit photograph: 288 MB
        {32768, 32768, 4, 8, true},  // exactly 4 GiB
        {32768, 32769, 4, 8, false}, // one row more
        {65536, 65536, 1, 8, true},  // 4 GiB of grey
        {100000, 100000, 3, 8, false},
        {0xFFFFFFFFu, 0xFFFFFFFFu, 5, 16, false}, // overflows 64 bits
        {0, 10, 3, 8, false},
        {10, 10, 0, 8, false},
    };
    const std::uint64_t memory = physicalMemoryBytes();
    for (const Case& c : cases) {
        const std::optional<std::uint64_t> bytes =
            imageSampleBytes(c.width, c.height, c.samples, c.bits);
        const bool expected = c.fits && bytes && (memory == 0 || *bytes <= memory);
        const IOStatus status = checkImageDimensions(c.width, c.height, c.samples, c.bits);
        EXPECT_EQ(status.ok(), expected)
            << c.width << " x " << c.height << ": " << status.error().message;
    }
    EXPECT_EQ(imageSampleBytes(8000, 6000, 3, 16), 288000000u);
    EXPECT_EQ(imageSampleBytes(3, 1, 1, 1), 1u);
    EXPECT_FALSE(imageSampleBytes(0xFFFFFFFFu, 0xFFFFFFFFu, 5, 16).has_value());
}

} // namespace
} // namespace tintorra
