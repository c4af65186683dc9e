// Our own reading of PNG image data (ISA-L inflate and our row unfiltering) against libpng's
// reading of files libpng wrote, sound and damaged.

#include "PngTestFiles.h"
#include "imageio/ImageFile.h"
#include "imageio/PngChunks.h"
#include "imageio/PngImageData.h"

#include <gtest/gtest.h>
#include <png.h>

#include <cstring>
#include <zlib.h>

namespace tintorra {
namespace {

using test::PngChunk;
using test::PngPixels;

struct SampleFormat {
    const char* name;
    int bitDepth;
    int colourType;
};

void PrintTo(const SampleFormat& format, std::ostream* out)
{
    *out << format.name;
}

// Every layout the own reader takes; their pixel sizes (1, 2, 3, 4, 6 and 8 bytes) cover the
// byte-wise and the pixel-wise filter code.
const SampleFormat kSampleFormats[] = {
    {"grey8", 8, PNG_COLOR_TYPE_GRAY},      {"grey16", 16, PNG_COLOR_TYPE_GRAY},
    {"greyAlpha8", 8, PNG_COLOR_TYPE_GA},   {"greyAlpha16", 16, PNG_COLOR_TYPE_GA},
    {"rgb8", 8, PNG_COLOR_TYPE_RGB},        {"rgb16", 16, PNG_COLOR_TYPE_RGB},
    {"rgba8", 8, PNG_COLOR_TYPE_RGB_ALPHA}, {"rgba16", 16, PNG_COLOR_TYPE_RGB_ALPHA},
};

struct FilterChoice {
    const char* name;
    int flags;
};

const FilterChoice kFilterChoices[] = {
    {"none", PNG_FILTER_NONE},   {"sub", PNG_FILTER_SUB},     {"up", PNG_FILTER_UP},
    {"average", PNG_FILTER_AVG}, {"paeth", PNG_FILTER_PAETH}, {"adaptive", PNG_ALL_FILTERS},
};

struct Size {
    std::uint32_t width;
    std::uint32_t height;
};

// One pixel, one row, one column, odd sizes; the pixel-wise code switches to exact loads for
// the last pixels of a row, so short and long rows both matter.
const Size kSizes[] = {{1, 1}, {9, 1}, {1, 6}, {2, 3}, {13, 9}, {67, 5}};

PngRowLayout rowLayoutOf(const PngPixels& pixels)
{
    PngRowLayout layout;
    layout.rows = pixels.height;
    layout.rowBytes = pixels.rowBytes();
    layout.bytesPerPixel = static_cast<unsigned>(pixels.channels() * pixels.bitDepth / 8);
    layout.sixteenBit = pixels.bitDepth == 16;
    return layout;
}

// Our reading of the image data alone; nothing when it refuses the file.
std::optional<std::vector<std::uint8_t>> readOwnWay(const std::vector<std::uint8_t>& file,
                                                    const PngPixels& like)
{
    const std::optional<PngImageDataChunks> chunks = pngImageDataChunks(file);
    if (!chunks)
        return std::nullopt;
    std::vector<std::uint8_t> rows(like.rowBytes() * like.height, 0xA5);
    if (!readPngImageData(*chunks, rowLayoutOf(like), rows.data(), like.rowBytes()))
        return std::nullopt;
    return rows;
}

// The decoded bitmap's rows, tightly packed.
std::vector<std::uint8_t> rowsOf(const KVBitmap& bitmap, std::size_t rowBytes)
{
    std::vector<std::uint8_t> rows;
    for (std::int64_t y = 0; y < bitmap.pixelsHigh(); ++y) {
        const std::uint8_t* row = bitmap.bitmapData() + y * bitmap.bytesPerRow();
        rows.insert(rows.end(), row, row + rowBytes);
    }
    return rows;
}

// What decodeImage makes of a file must be what libpng makes of it: the same rows, or an error
// (one line of text) where libpng refuses the file.
void expectDecodingAsLibpng(const std::vector<std::uint8_t>& file, const PngPixels& like,
                            const std::string& what)
{
    const std::optional<PngPixels> reference = test::readWithLibpng(file);
    IOResult<KVBitmapPtr> decoded = decodeImage(file);
    ASSERT_EQ(decoded.ok(), reference.has_value())
        << what << ": " << (decoded.ok() ? "decoded" : decoded.error().message);
    if (decoded.ok()) {
        EXPECT_EQ(rowsOf(*decoded.value(), like.rowBytes()), reference->rows) << what;
    } else {
        EXPECT_FALSE(decoded.error().message.empty()) << what;
        EXPECT_EQ(decoded.error().message.find('\n'), std::string::npos) << what;
    }
}

class PngImageDataReading : public ::testing::TestWithParam<SampleFormat> {};

TEST_P(PngImageDataReading, EqualsLibpngForEveryFilterAndSize)
{
    const SampleFormat format = GetParam();
    for (const Size size : kSizes) {
        const PngPixels pixels =
            test::makePngPixels(size.width, size.height, format.bitDepth, format.colourType);
        for (const FilterChoice filter : kFilterChoices) {
            const std::string what = std::string(filter.name) + " " + std::to_string(size.width) +
                                     "x" + std::to_string(size.height);
            const std::vector<std::uint8_t> file = test::writeWithLibpng(pixels, filter.flags);
            const std::optional<PngPixels> reference = test::readWithLibpng(file);
            ASSERT_TRUE(reference) << what;
            ASSERT_EQ(reference->rows, pixels.rows) << what;

            const std::optional<std::vector<std::uint8_t>> own = readOwnWay(file, pixels);
            ASSERT_TRUE(own) << what;
            EXPECT_EQ(*own, reference->rows) << what;
            expectDecodingAsLibpng(file, pixels, what);
        }
    }
}

TEST_P(PngImageDataReading, TakesImageDataInChunksOfAnySize)
{
    const SampleFormat format = GetParam();
    const PngPixels pixels = test::makePngPixels(23, 7, format.bitDepth, format.colourType);
    const std::vector<PngChunk> chunks =
        test::pngChunksOf(test::writeWithLibpng(pixels, PNG_ALL_FILTERS));
    const std::vector<std::uint8_t> stream = test::imageDataStreamOf(chunks);
    // A one-byte chunk splits the zlib header; empty chunks are allowed anywhere.
    const std::vector<std::vector<std::size_t>> cuttings = {
        {1}, {1, 2, 0, 5}, {0, 3, 7, 11}, {stream.size() - 1}, {2, 0, 0, 9999}};
    for (const std::vector<std::size_t>& pieceSizes : cuttings) {
        const std::vector<std::uint8_t> file =
            test::pngFileOf(test::withImageDataStream(chunks, stream, pieceSizes));
        const std::optional<std::vector<std::uint8_t>> own = readOwnWay(file, pixels);
        ASSERT_TRUE(own) << "first piece " << pieceSizes[0];
        EXPECT_EQ(*own, pixels.rows) << "first piece " << pieceSizes[0];
        expectDecodingAsLibpng(file, pixels, "cut image data");
    }
}

INSTANTIATE_TEST_SUITE_P(SampleFormats, PngImageDataReading, ::testing::ValuesIn(kSampleFormats),
                         [](const ::testing::TestParamInfo<SampleFormat>& info) {
                             return std::string(info.param.name);
                         });

// Big enough for the two-thread pipeline, whose ring of filtered rows then wraps around many
// times.
TEST(PngImageDataReadingLarge, PipelinedReadingEqualsLibpng)
{
    for (const SampleFormat format : {SampleFormat{"rgb8", 8, PNG_COLOR_TYPE_RGB},
                                      SampleFormat{"rgba16", 16, PNG_COLOR_TYPE_RGB_ALPHA}}) {
        const PngPixels pixels =
            test::makePngPixels(format.bitDepth == 8 ? 701 : 401, format.bitDepth == 8 ? 613 : 409,
                                format.bitDepth, format.colourType);
        ASSERT_GT(pixels.rows.size(), 1u << 20);
        const std::vector<std::uint8_t> file = test::writeWithLibpng(pixels, PNG_ALL_FILTERS);
        const std::optional<std::vector<std::uint8_t>> own = readOwnWay(file, pixels);
        ASSERT_TRUE(own) << format.name;
        EXPECT_TRUE(*own == pixels.rows) << format.name;
    }
}

TEST(PngChunkCrc, MatchesZlib)
{
    const std::vector<std::vector<std::uint8_t>> inputs = {
        {}, {'I', 'E', 'N', 'D'}, {0}, {0xff, 0xff, 0xff}, std::vector<std::uint8_t>(1000, 0x5a)};
    for (const std::vector<std::uint8_t>& input : inputs) {
        EXPECT_EQ(pngCrc(input), crc32(0, input.data(), static_cast<uInt>(input.size())))
            << input.size() << " bytes";
    }
    // IEND's CRC as every PNG file ends with it.
    const std::uint8_t iend[] = {'I', 'E', 'N', 'D'};
    EXPECT_EQ(pngCrc(iend), 0xAE426082u);
}

// ---- damaged files ----

class DamagedPngImageData : public ::testing::Test {
protected:
    DamagedPngImageData()
        : pixels_(test::makePngPixels(31, 17, 8, PNG_COLOR_TYPE_RGB)),
          file_(test::writeWithLibpng(pixels_, PNG_ALL_FILTERS)), chunks_(test::pngChunksOf(file_))
    {}

    // The file with its image data replaced by `stream` in IDAT chunks of 100 bytes.
    std::vector<std::uint8_t> withStream(const std::vector<std::uint8_t>& stream) const
    {
        return test::pngFileOf(test::withImageDataStream(chunks_, stream, {100}));
    }

    // The chunks with `extra` inserted before the chunk at `index`.
    std::vector<std::uint8_t> withChunkAt(std::size_t index, const PngChunk& extra) const
    {
        std::vector<PngChunk> chunks = chunks_;
        chunks.insert(chunks.begin() + static_cast<std::ptrdiff_t>(index), extra);
        return test::pngFileOf(chunks);
    }

    std::size_t indexOf(const std::string& type) const
    {
        for (std::size_t i = 0; i < chunks_.size(); ++i) {
            if (chunks_[i].type == type)
                return i;
        }
        return chunks_.size();
    }

    PngPixels pixels_;
    std::vector<std::uint8_t> file_;
    std::vector<PngChunk> chunks_;
};

TEST_F(DamagedPngImageData, ACrcMismatchIsAnError)
{
    const std::vector<std::uint8_t> stream = test::imageDataStreamOf(chunks_);
    std::vector<std::uint8_t> file = withStream(stream);
    // The last byte of the first IDAT chunk's CRC: 8 signature, 25 IHDR, 8 + 100 IDAT.
    ASSERT_EQ(std::string(file.begin() + 37, file.begin() + 41), "IDAT");
    file[33 + 8 + 100 + 3] ^= 0x10;
    EXPECT_FALSE(pngImageDataChunks(file));
    IOResult<KVBitmapPtr> decoded = decodeImage(file);
    ASSERT_FALSE(decoded.ok());
    EXPECT_NE(decoded.error().message.find("CRC"), std::string::npos) << decoded.error().message;
    expectDecodingAsLibpng(file, pixels_, "IDAT CRC");
}

TEST_F(DamagedPngImageData, DamagedDeflateDataIsAnErrorOrWhatLibpngRecovers)
{
    // Any changed byte of the stream (with the chunk CRCs made right again): our reader may
    // refuse what libpng would take (libpng then reads the file), but the outcome is libpng's.
    const std::vector<std::uint8_t> stream = test::imageDataStreamOf(chunks_);
    int refused = 0;
    for (std::size_t at = 0; at < stream.size(); at += 5) {
        for (const std::uint8_t flip : {0x01, 0x80, 0xff}) {
            std::vector<std::uint8_t> damaged = stream;
            damaged[at] ^= flip;
            const std::vector<std::uint8_t> file = withStream(damaged);
            const std::string what = "byte " + std::to_string(at) + " ^ " + std::to_string(flip);
            const std::optional<std::vector<std::uint8_t>> own = readOwnWay(file, pixels_);
            const std::optional<PngPixels> reference = test::readWithLibpng(file);
            if (own) {
                ASSERT_TRUE(reference) << what;
                EXPECT_EQ(*own, reference->rows) << what;
            } else {
                ++refused;
            }
            expectDecodingAsLibpng(file, pixels_, what);
        }
    }
    EXPECT_GT(refused, 0);
}

TEST_F(DamagedPngImageData, TruncatedFilesAreErrors)
{
    for (std::size_t length = 0; length < file_.size(); length += 7) {
        const std::vector<std::uint8_t> cut(file_.begin(),
                                            file_.begin() + static_cast<std::ptrdiff_t>(length));
        EXPECT_FALSE(pngImageDataChunks(cut)) << length;
        IOResult<KVBitmapPtr> decoded = decodeImage(cut);
        ASSERT_FALSE(decoded.ok()) << length;
        EXPECT_FALSE(decoded.error().message.empty());
        EXPECT_EQ(decoded.error().message.find('\n'), std::string::npos) << decoded.error().message;
    }
}

TEST_F(DamagedPngImageData, StreamsThatAreNotExactlyTheImageAreRefused)
{
    // Streams made by zlib from rows we lay out ourselves.
    const std::vector<std::uint8_t> rows = test::unfilteredImageData(pixels_);
    const std::size_t filteredRow = pixels_.rowBytes() + 1;
    std::vector<std::uint8_t> unknownFilter = rows;
    unknownFilter[5 * filteredRow] = 5;
    std::vector<std::uint8_t> wrongChecksum = test::zlibStreamOf(rows);
    wrongChecksum.back() ^= 1;
    std::vector<std::uint8_t> trailingBytes = test::zlibStreamOf(rows);
    trailingBytes.insert(trailingBytes.end(), {0, 0, 0});
    std::vector<std::uint8_t> noChecksum = test::zlibStreamOf(rows);
    noChecksum.resize(noChecksum.size() - 4);
    std::vector<std::uint8_t> presetDictionary = test::zlibStreamOf(rows);
    presetDictionary[1] = 0xBB; // FDICT set, check bits right: 0x78BB is a multiple of 31.
    std::vector<std::uint8_t> rowTooMany = rows;
    rowTooMany.insert(rowTooMany.end(), rows.begin(),
                      rows.begin() + static_cast<std::ptrdiff_t>(filteredRow));

    const struct {
        const char* what;
        std::vector<std::uint8_t> stream;
    } cases[] = {
        {"a byte short", test::zlibStreamOf({rows.begin(), rows.end() - 1})},
        {"a row too many", test::zlibStreamOf(rowTooMany)},
        {"unknown filter", test::zlibStreamOf(unknownFilter)},
        {"wrong checksum", wrongChecksum},
        {"bytes after the stream", trailingBytes},
        {"no checksum", noChecksum},
        {"preset dictionary", presetDictionary},
        {"no stream", {}},
        {"not a zlib stream", {rows.begin(), rows.begin() + 20}},
    };
    // The sound stream, for comparison.
    const std::optional<std::vector<std::uint8_t>> sound =
        readOwnWay(withStream(test::zlibStreamOf(rows)), pixels_);
    ASSERT_TRUE(sound);
    EXPECT_EQ(*sound, pixels_.rows);
    for (const auto& damaged : cases) {
        const std::vector<std::uint8_t> file = withStream(damaged.stream);
        EXPECT_FALSE(readOwnWay(file, pixels_)) << damaged.what;
        expectDecodingAsLibpng(file, pixels_, damaged.what);
    }
}

TEST_F(DamagedPngImageData, ChunksAfterTheImageData)
{
    const std::size_t iend = indexOf("IEND");
    const std::size_t idat = indexOf("IDAT");
    ASSERT_LT(idat, iend);
    // Text after the image data is common and harmless.
    const std::vector<std::uint8_t> text = withChunkAt(iend, {"tEXt", {'a', 0, 'b'}});
    ASSERT_TRUE(readOwnWay(text, pixels_));
    EXPECT_EQ(*readOwnWay(text, pixels_), pixels_.rows);
    expectDecodingAsLibpng(text, pixels_, "text after the image");

    std::vector<std::uint8_t> noEnd = file_;
    noEnd.resize(noEnd.size() - 12);
    std::vector<PngChunk> splitImageData =
        test::withImageDataStream(chunks_, test::imageDataStreamOf(chunks_), {50});
    splitImageData.insert(splitImageData.begin() + static_cast<std::ptrdiff_t>(idat) + 1,
                          {"tEXt", {'a', 0, 'b'}});
    const struct {
        const char* what;
        std::vector<std::uint8_t> file;
    } cases[] = {
        {"critical chunk after the image data", withChunkAt(iend, {"PLTE", {0, 0, 0}})},
        {"unknown critical chunk", withChunkAt(iend, {"ABCD", {1}})},
        {"invalid chunk type", withChunkAt(iend, {"a1cd", {1}})},
        {"no IEND", noEnd},
        {"IDAT after another chunk", test::pngFileOf(splitImageData)},
    };
    for (const auto& odd : cases) {
        EXPECT_FALSE(pngImageDataChunks(odd.file)) << odd.what;
        expectDecodingAsLibpng(odd.file, pixels_, odd.what);
    }
}

} // namespace
} // namespace tintorra
