// Files written by other programs (ImageMagick, libtiff's tools), decoded by our readers and
// compared with the other program's own decoding of the same file.

#include "ImageTestSupport.h"
#include "colour/IccProfiles.h"
#include "imageio/ImageFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace tintorra {
namespace {

using test::fixtureBytes;
using test::rawReference;

struct FixtureCase {
    const char* file;
    ImageFormat format;
    KVColorSpaceModel model;
    int samplesPerPixel;
    int bitsPerSample;
    bool planar;
    bool alpha;
    bool premultiplied;
    // ImageMagick's decoding, and how far ours may differ from it (lossy formats decoded by a
    // different path).
    const char* reference;
    int referenceBits;
    std::uint32_t tolerance;
    // The size of the embedded profile, or kSRGB for the sRGB space a JPEG 2000 colour box
    // names by number.
    std::size_t iccBytes;
};

constexpr std::size_t kSRGB = static_cast<std::size_t>(-1);

std::ostream& operator<<(std::ostream& out, const FixtureCase& c)
{
    return out << c.file;
}

constexpr auto rgb = KVColorSpaceModel::rgb;
constexpr auto grey = KVColorSpaceModel::gray;
constexpr auto cmyk = KVColorSpaceModel::cmyk;
constexpr auto tiff = ImageFormat::tiff;
constexpr auto png = ImageFormat::png;
constexpr auto jpeg = ImageFormat::jpeg;
constexpr auto jp2 = ImageFormat::jpeg2000;
constexpr auto bmp = ImageFormat::bmp;
constexpr auto gif = ImageFormat::gif;

const FixtureCase kFixtures[] = {
    // TIFF: layouts, depths and compressions.
    {"rgb8-chunky.tif", tiff, rgb, 3, 8, false, false, false, "ref-rgb8.raw", 8, 0, 0},
    {"rgb8-planar-lzw.tif", tiff, rgb, 3, 8, true, false, false, "ref-rgb8.raw", 8, 0, 0},
    {"rgb8-packbits.tif", tiff, rgb, 3, 8, false, false, false, "ref-rgb8.raw", 8, 0, 0},
    {"rgb8-tiled-deflate.tif", tiff, rgb, 3, 8, false, false, false, "ref-rgb8.raw", 8, 0, 0},
    {"rgb8-tiled-planar-lzw.tif", tiff, rgb, 3, 8, true, false, false, "ref-rgb8.raw", 8, 0, 0},
    {"rgb16-bigendian.tif", tiff, rgb, 3, 16, false, false, false, "ref-rgb16.raw", 16, 0, 0},
    // libtiff's and ImageMagick's YCbCr conversions may round differently.
    {"ycbcr8.tif", tiff, rgb, 3, 8, false, false, false, "ref-ycbcr8-tif.raw", 8, 1, 0},
    {"rgb16-chunky-deflate.tif", tiff, rgb, 3, 16, false, false, false, "ref-rgb16.raw", 16, 0, 0},
    {"rgb16-planar-lzw.tif", tiff, rgb, 3, 16, true, false, false, "ref-rgb16.raw", 16, 0, 0},
    {"rgb8-jpeg.tif", tiff, rgb, 3, 8, false, false, false, "ref-jpeg-tif.raw", 8, 0, 0},
    {"rgb8-jpeg-ycbcr.tif", tiff, rgb, 3, 8, false, false, false, "ref-jpeg-ycbcr-tif.raw", 8, 3,
     0},
    {"rgba16-unassociated.tif", tiff, rgb, 4, 16, false, true, false, "ref-rgba16.raw", 16, 0, 0},
    {"rgba8-associated.tif", tiff, rgb, 4, 8, false, true, true, "ref-rgba8.raw", 8, 1, 0},
    {"rgb8-icc.tif", tiff, rgb, 3, 8, false, false, false, "ref-rgb8.raw", 8, 0, 580},
    // The colour map is 16-bit; ImageMagick's approximate division by 257 and our exact
    // rounding may differ by one.
    {"palette.tif", tiff, rgb, 3, 8, false, false, false, "ref-palette-tif.raw", 8, 1, 0},
    {"multipage.tif", tiff, rgb, 3, 8, false, false, false, "ref-rgb8.raw", 8, 0, 0},
    {"bilevel.tif", tiff, grey, 1, 8, false, false, false, "ref-bilevel.raw", 8, 0, 0},
    {"grey16.tif", tiff, grey, 1, 16, false, false, false, nullptr, 0, 0, 0},
    {"grey8-miniswhite.tif", tiff, grey, 1, 8, false, false, false, "ref-grey8-miniswhite.raw", 8,
     0, 0},
    {"grey16-miniswhite.tif", tiff, grey, 1, 16, false, false, false, "ref-grey16-miniswhite.raw",
     16, 0, 0},
    {"cmyk8.tif", tiff, cmyk, 4, 8, false, false, false, "ref-cmyk8.raw", 8, 0, 0},
    // PNG.
    {"rgb16.png", png, rgb, 3, 16, false, false, false, "ref-rgb16.raw", 16, 0, 0},
    {"rgba16.png", png, rgb, 4, 16, false, true, false, "ref-rgba16.raw", 16, 0, 0},
    {"rgb8.png", png, rgb, 3, 8, false, false, false, "ref-rgb8.raw", 8, 0, 0},
    {"rgb8-interlaced.png", png, rgb, 3, 8, false, false, false, "ref-rgb8.raw", 8, 0, 0},
    {"palette-trns.png", png, rgb, 4, 8, false, true, false, "ref-palette-trns-png.raw", 8, 0, 0},
    {"rgb8-icc.png", png, rgb, 3, 8, false, false, false, "ref-rgb8.raw", 8, 0, 580},
    {"grey8.png", png, grey, 1, 8, false, false, false, nullptr, 0, 0, 0},
    // JPEG.
    {"rgb.jpg", jpeg, rgb, 3, 8, false, false, false, "ref-rgb-jpg.raw", 8, 0, 0},
    {"progressive.jpg", jpeg, rgb, 3, 8, false, false, false, "ref-progressive-jpg.raw", 8, 0, 0},
    {"rgb-icc.jpg", jpeg, rgb, 3, 8, false, false, false, nullptr, 0, 0, 580},
    {"grey.jpg", jpeg, grey, 1, 8, false, false, false, nullptr, 0, 0, 0},
    {"cmyk.jpg", jpeg, cmyk, 4, 8, false, false, false, "ref-cmyk-jpg.raw", 8, 0, 0},
    // JPEG 2000.
    {"rgb8.jp2", jp2, rgb, 3, 8, false, false, false, "ref-rgb8-jp2.raw", 8, 0, kSRGB},
    {"rgb8.j2k", jp2, rgb, 3, 8, false, false, false, "ref-rgb8-j2k.raw", 8, 0, 0},
    {"rgba16.jp2", jp2, rgb, 4, 16, false, true, false, "ref-rgba16-jp2.raw", 16, 0, kSRGB},
    {"grey8.jp2", jp2, grey, 1, 8, false, false, false, nullptr, 0, 0, 0},
    // BMP and GIF.
    {"rgb24.bmp", bmp, rgb, 3, 8, false, false, false, "ref-rgb8.raw", 8, 0, 0},
    {"rgba32.bmp", bmp, rgb, 4, 8, false, true, false, "ref-rgba32-bmp.raw", 8, 0, 0},
    {"palette8.bmp", bmp, rgb, 3, 8, false, false, false, "ref-palette8-bmp.raw", 8, 0, 0},
    {"interlaced.gif", gif, rgb, 3, 8, false, false, false, "ref-interlaced-gif.raw", 8, 0, 0},
    {"transparent.gif", gif, rgb, 4, 8, false, true, false, "ref-transparent-gif.raw", 8, 0, 0},
};

class FixtureDecodeTest : public ::testing::TestWithParam<FixtureCase> {};

TEST_P(FixtureDecodeTest, DecodesTheLayoutTheFileHolds)
{
    const FixtureCase& c = GetParam();
    const std::vector<std::uint8_t> bytes = fixtureBytes(c.file);
    IOResult<ImageSource> source = ImageSource::open(bytes);
    ASSERT_TRUE(source.ok()) << source.error().message;
    EXPECT_EQ(source.value().format(), c.format);
    IOResult<KVBitmapPtr> decoded = source.value().decodePage(0);
    ASSERT_TRUE(decoded.ok()) << decoded.error().message;
    const KVBitmap& bitmap = *decoded.value();

    EXPECT_EQ(bitmap.pixelsWide(), 24);
    EXPECT_EQ(bitmap.pixelsHigh(), 16);
    EXPECT_EQ(bitmap.colorSpace().model(), c.model);
    EXPECT_EQ(bitmap.samplesPerPixel(), c.samplesPerPixel);
    EXPECT_EQ(bitmap.bitsPerSample(), c.bitsPerSample);
    EXPECT_EQ(bitmap.isPlanar(), c.planar);
    EXPECT_EQ(bitmap.hasAlpha(), c.alpha);
    if (c.alpha) {
        EXPECT_EQ((bitmap.bitmapFormat() & kBitmapFormatAlphaNonpremultiplied) == 0,
                  c.premultiplied);
    }
    if (c.iccBytes == kSRGB) {
        EXPECT_EQ(bitmap.colorSpace(), sRGBColorSpace());
    } else {
        EXPECT_EQ(bitmap.colorSpace().iccProfile().size(), c.iccBytes);
    }
}

class FixtureSamplesTest : public ::testing::TestWithParam<FixtureCase> {};

TEST_P(FixtureSamplesTest, SamplesMatchTheOtherProgramsDecoding)
{
    const FixtureCase& c = GetParam();
    const std::vector<std::uint8_t> bytes = fixtureBytes(c.file);
    IOResult<KVBitmapPtr> decoded = decodeImage(bytes);
    ASSERT_TRUE(decoded.ok()) << decoded.error().message;
    const KVBitmap& bitmap = *decoded.value();
    const std::vector<std::uint32_t> samples = test::allSamples(bitmap);
    std::vector<std::uint32_t> reference = rawReference(c.reference, c.referenceBits);
    if (c.premultiplied) {
        // The reference holds straight colour; associate it with its alpha as the file does.
        const auto n = static_cast<std::size_t>(c.samplesPerPixel);
        const double maximum = c.bitsPerSample == 16 ? 65535.0 : 255.0;
        for (std::size_t i = 0; i + n <= reference.size(); i += n) {
            const double alpha = reference[i + n - 1] / maximum;
            for (std::size_t k = 0; k + 1 < n; ++k)
                reference[i + k] =
                    static_cast<std::uint32_t>(std::lround(reference[i + k] * alpha));
        }
    }
    ASSERT_EQ(samples.size(), reference.size());
    EXPECT_LE(test::largestDifference(samples, reference), c.tolerance);
}

std::string caseName(const ::testing::TestParamInfo<FixtureCase>& info)
{
    std::string name = info.param.file;
    std::replace_if(
        name.begin(), name.end(),
        [](char ch) { return !std::isalnum(static_cast<unsigned char>(ch)); }, '_');
    return name;
}

std::vector<FixtureCase> casesWithReference()
{
    std::vector<FixtureCase> cases;
    for (const FixtureCase& c : kFixtures) {
        if (c.reference)
            cases.push_back(c);
    }
    return cases;
}

INSTANTIATE_TEST_SUITE_P(RealFiles, FixtureDecodeTest, ::testing::ValuesIn(kFixtures), caseName);
INSTANTIATE_TEST_SUITE_P(RealFiles, FixtureSamplesTest, ::testing::ValuesIn(casesWithReference()),
                         caseName);

TEST(FixtureDecode, EmbeddedProfileNamesTheColourSpace)
{
    for (const char* file : {"rgb8-icc.tif", "rgb8-icc.png", "rgb-icc.jpg"}) {
        IOResult<KVBitmapPtr> decoded = decodeImage(fixtureBytes(file));
        ASSERT_TRUE(decoded.ok()) << file << ": " << decoded.error().message;
        EXPECT_EQ(decoded.value()->colorSpace().name(), "Compatible with Adobe RGB (1998)") << file;
        EXPECT_EQ(decoded.value()->colorSpace().iccProfile(),
                  test::systemProfile("/usr/share/color/icc/compatibleWithAdobeRGB1998.icc"))
            << file;
    }
}

TEST(FixtureDecode, EveryPageOfAMultiPageTiff)
{
    const std::vector<std::uint8_t> bytes = fixtureBytes("multipage.tif");
    IOResult<ImageSource> source = ImageSource::open(bytes);
    ASSERT_TRUE(source.ok());
    ASSERT_EQ(source.value().pageCount(), 3u);
    const std::vector<std::uint32_t> reference = rawReference("ref-rgb8.raw", 8);
    std::vector<std::vector<std::uint32_t>> pages;
    for (std::size_t page = 0; page < 3; ++page) {
        IOResult<KVBitmapPtr> decoded = source.value().decodePage(page);
        ASSERT_TRUE(decoded.ok()) << decoded.error().message;
        pages.push_back(test::allSamples(*decoded.value()));
    }
    // Page 1 is the negative of page 0, page 2 its mirror image.
    EXPECT_EQ(pages[0], reference);
    for (std::size_t i = 0; i < reference.size(); ++i)
        ASSERT_EQ(pages[1][i], 255 - reference[i]) << i;
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 24; ++x)
            for (int c = 0; c < 3; ++c)
                ASSERT_EQ(pages[2][(y * 24 + x) * 3 + c], reference[(y * 24 + (23 - x)) * 3 + c]);
    EXPECT_FALSE(source.value().decodePage(3).ok());
}

TEST(FixtureDecode, ResolutionBecomesTheSizeInPoints)
{
    // ImageMagick writes 72 pixels per inch into TIFF files, so the size in points is the pixel
    // size.
    IOResult<KVBitmapPtr> decoded = decodeImage(fixtureBytes("rgb8-chunky.tif"));
    ASSERT_TRUE(decoded.ok());
    EXPECT_DOUBLE_EQ(decoded.value()->width(), 24.0);
    EXPECT_DOUBLE_EQ(decoded.value()->height(), 16.0);
}

} // namespace
} // namespace tintorra
