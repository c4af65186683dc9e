// Our own PNG image data writing (Average filter, ISA-L in parallel pieces) read back by plain
// libpng, and compared with what libpng's own compression path writes.

#include "ImageTestSupport.h"
#include "PngTestFiles.h"
#include "imageio/ImageFile.h"
#include "imageio/PngImageData.h"

#include <gtest/gtest.h>
#include <png.h>

#include <cstring>
#include <zlib.h>

namespace tintorra {
namespace {

using test::PngPixels;
using test::TestLayout;

constexpr auto rgb = KVColorSpaceModel::rgb;
constexpr auto grey = KVColorSpaceModel::gray;
constexpr unsigned straight = kBitmapFormatAlphaNonpremultiplied;

std::vector<std::uint8_t> encodedPng(const KVBitmap& bitmap, const EncodeOptions& options = {})
{
    IOResult<std::vector<std::uint8_t>> bytes = encodeImage(bitmap, ImageFormat::png, options);
    EXPECT_TRUE(bytes.ok()) << bytes.error().message;
    return bytes.ok() ? bytes.value() : std::vector<std::uint8_t>{};
}

// libpng's own compression, asked for through explicit zlib settings.
EncodeOptions libpngCompression()
{
    EncodeOptions options;
    options.pngCompressionLevel = 6;
    options.pngFilters = PNG_ALL_FILTERS;
    return options;
}

const TestLayout kLayouts[] = {
    {"grey8", 8, 1, false, false, 0, grey},
    {"grey16", 16, 1, false, false, 0, grey},
    {"greyAlpha8", 8, 2, true, false, straight, grey},
    {"rgb8", 8, 3, false, false, 0, rgb},
    {"rgb16", 16, 3, false, false, 0, rgb},
    {"rgba8", 8, 4, true, false, straight, rgb},
    {"rgba16", 16, 4, true, false, straight, rgb},
    // Layouts PNG does not store as they are: planar, alpha first, premultiplied, padded.
    {"rgb8_planar", 8, 3, false, true, 0, rgb},
    {"argb16", 16, 4, true, false, straight | kBitmapFormatAlphaFirst, rgb},
    {"rgba8_premultiplied", 8, 4, true, false, 0, rgb},
    {"rgbx8", 8, 3, false, false, 0, rgb, 32},
};

class PngImageDataWriting : public ::testing::TestWithParam<TestLayout> {};

TEST_P(PngImageDataWriting, LibpngReadsBackWhatLibpngsOwnCompressionWrites)
{
    const TestLayout layout = GetParam();
    const std::pair<int, int> sizes[] = {{1, 1}, {37, 1}, {1, 5}, {13, 9}, {70, 21}};
    for (const auto& [width, height] : sizes) {
        const KVBitmapPtr source = test::makeTestBitmap(layout, width, height);
        ASSERT_TRUE(source);
        const std::optional<PngPixels> own = test::readWithLibpng(encodedPng(*source));
        const std::optional<PngPixels> reference =
            test::readWithLibpng(encodedPng(*source, libpngCompression()));
        ASSERT_TRUE(own) << width << "x" << height;
        ASSERT_TRUE(reference);
        EXPECT_EQ(own->width, reference->width);
        EXPECT_EQ(own->bitDepth, reference->bitDepth);
        EXPECT_EQ(own->colourType, reference->colourType);
        EXPECT_EQ(own->rows, reference->rows) << width << "x" << height;
    }
}

INSTANTIATE_TEST_SUITE_P(Layouts, PngImageDataWriting, ::testing::ValuesIn(kLayouts),
                         [](const ::testing::TestParamInfo<TestLayout>& info) {
                             return std::string(info.param.name);
                         });

// Straight samples, whatever their layout, are stored as they are.
TEST(PngImageDataWritingSamples, StraightSamplesComeBackExactly)
{
    for (const TestLayout& layout : kLayouts) {
        const bool premultiplied = layout.hasAlpha && (layout.bitmapFormat & straight) == 0;
        if (premultiplied)
            continue;
        const KVBitmapPtr source = test::makeTestBitmap(layout, 29, 11);
        ASSERT_TRUE(source);
        const std::optional<PngPixels> read = test::readWithLibpng(encodedPng(*source));
        ASSERT_TRUE(read) << layout.name;
        const int channels = layout.samplesPerPixel;
        const std::size_t sampleBytes = static_cast<std::size_t>(layout.bitsPerSample / 8);
        for (std::uint32_t y = 0; y < 11; ++y) {
            for (std::uint32_t x = 0; x < 29; ++x) {
                for (int c = 0; c < channels; ++c) {
                    const std::size_t sample =
                        x * static_cast<std::size_t>(channels) + static_cast<std::size_t>(c);
                    const std::uint8_t* at =
                        read->rows.data() + y * read->rowBytes() + sample * sampleBytes;
                    std::uint32_t value = *at;
                    if (sampleBytes == 2) {
                        std::uint16_t word;
                        std::memcpy(&word, at, 2);
                        value = word;
                    }
                    ASSERT_EQ(value, test::sampleAt(*source, x, y, c))
                        << layout.name << " " << x << "," << y << "," << c;
                }
            }
        }
    }
}

// A 16-bit RGBA picture of several megabytes, filled directly (faster than sample by sample).
KVBitmapPtr largeBitmap(std::int64_t width, std::int64_t height)
{
    KVBitmapLayout layout;
    layout.pixelsWide = width;
    layout.pixelsHigh = height;
    layout.bitsPerSample = 16;
    layout.samplesPerPixel = 4;
    layout.hasAlpha = true;
    layout.bitmapFormat = straight;
    KVBitmapPtr bitmap = KVBitmap::create(layout);
    if (!bitmap)
        return nullptr;
    std::uint32_t noise = 88172645u;
    for (std::int64_t y = 0; y < height; ++y) {
        auto* row =
            reinterpret_cast<std::uint16_t*>(bitmap->bitmapData() + y * bitmap->bytesPerRow());
        for (std::int64_t i = 0; i < width * 4; ++i) {
            noise ^= noise << 13;
            noise ^= noise >> 17;
            noise ^= noise << 5;
            row[i] = static_cast<std::uint16_t>(i * 37 + y * 101 + (noise & 0xff));
        }
    }
    return bitmap;
}

TEST(PngImageDataWritingLarge, PiecesCompressedApartMakeOneStream)
{
    // 5.6 MB of rows: several pieces, compressed on as many threads as there are processors.
    const KVBitmapPtr source = largeBitmap(1000, 700);
    ASSERT_TRUE(source);
    const std::vector<std::uint8_t> file = encodedPng(*source);
    const std::optional<PngPixels> read = test::readWithLibpng(file);
    ASSERT_TRUE(read);
    ASSERT_EQ(read->rows.size(), static_cast<std::size_t>(source->bytesPerRow() * 700));
    EXPECT_TRUE(std::memcmp(read->rows.data(), source->bitmapData(), read->rows.size()) == 0);

    // The pieces one by one: more than one, and zlib inflates them joined to every row (any
    // bytes do as rows here).
    PngRowLayout layout;
    layout.rows = 700;
    layout.rowBytes = 8000;
    layout.bytesPerPixel = 8;
    layout.sixteenBit = true;
    const std::optional<std::vector<PngStreamPiece>> pieces = writePngImageData(
        layout, [&](std::uint32_t y, std::uint8_t*) { return source->bitmapData() + y * 8000; });
    ASSERT_TRUE(pieces);
    EXPECT_GT(pieces->size(), 1u);
    std::vector<std::uint8_t> stream;
    for (const PngStreamPiece& piece : *pieces)
        stream.insert(stream.end(), piece.bytes.get(), piece.bytes.get() + piece.size);
    uLongf inflatedBytes = 700 * 8001;
    std::vector<std::uint8_t> inflated(inflatedBytes + 1);
    EXPECT_EQ(uncompress(inflated.data(), &inflatedBytes, stream.data(),
                         static_cast<uLong>(stream.size())),
              Z_OK);
    EXPECT_EQ(inflatedBytes, 700u * 8001u);

    // And our own reader takes the file back too.
    IOResult<KVBitmapPtr> decoded = decodeImage(file);
    ASSERT_TRUE(decoded.ok()) << decoded.error().message;
    EXPECT_TRUE(
        std::memcmp(decoded.value()->bitmapData(), source->bitmapData(), read->rows.size()) == 0);
}

TEST(PngImageDataWritingMetadata, ProfileAndResolutionSurvive)
{
    const std::vector<std::uint8_t> profile =
        test::systemProfile("/usr/share/color/icc/compatibleWithAdobeRGB1998.icc");
    ASSERT_FALSE(profile.empty());
    const KVBitmapPtr source =
        test::makeTestBitmap({"rgb8", 8, 3, false, false, 0, rgb}, 17, 5, profile);
    ASSERT_TRUE(source);
    source->setPixelsPerInch(300.0);
    const std::optional<PngPixels> read = test::readWithLibpng(encodedPng(*source));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->iccProfile, profile);
    // 300 pixels per inch, rounded to whole pixels per metre.
    EXPECT_EQ(read->pixelsPerMetre, 11811u);
}

} // namespace
} // namespace tintorra
