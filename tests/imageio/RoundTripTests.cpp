// Every encoder against every bitmap layout: what our decoder reads back is what was written,
// within what the format can hold (depth, alpha, colour model), exactly for lossless formats.

#include "ImageTestSupport.h"
#include "imageio/ImageFile.h"

#include <gtest/gtest.h>

#include <cmath>
#include <tuple>

namespace tintorra {
namespace {

using test::TestLayout;

constexpr auto rgb = KVColorSpaceModel::rgb;
constexpr auto grey = KVColorSpaceModel::gray;
constexpr auto cmyk = KVColorSpaceModel::cmyk;
constexpr unsigned straight = kBitmapFormatAlphaNonpremultiplied;
constexpr unsigned first = kBitmapFormatAlphaFirst;

const TestLayout kLayouts[] = {
    {"rgb8", 8, 3, false, false, 0, rgb},
    {"rgb16", 16, 3, false, false, 0, rgb},
    {"rgba8_straight", 8, 4, true, false, straight, rgb},
    {"rgba8_premultiplied", 8, 4, true, false, 0, rgb},
    {"rgba16_straight", 16, 4, true, false, straight, rgb},
    {"rgba16_premultiplied", 16, 4, true, false, 0, rgb},
    {"argb8_straight", 8, 4, true, false, first | straight, rgb},
    {"argb16_premultiplied", 16, 4, true, false, first, rgb},
    {"rgb8_planar", 8, 3, false, true, 0, rgb},
    {"rgb16_planar", 16, 3, false, true, 0, rgb},
    {"rgba16_planar_straight", 16, 4, true, true, straight, rgb},
    {"argb8_planar_premultiplied", 8, 4, true, true, first, rgb},
    {"rgb8_padded", 8, 3, false, false, 0, rgb, 32},
    {"grey8", 8, 1, false, false, 0, grey},
    {"grey16", 16, 1, false, false, 0, grey},
    {"greya8_straight", 8, 2, true, false, straight, grey},
    {"greya16_premultiplied", 16, 2, true, false, 0, grey},
    {"cmyk8", 8, 4, false, false, 0, cmyk},
    {"cmyk16_planar", 16, 4, false, true, 0, cmyk},
};

// What a format keeps of a layout.
struct FormatTraits {
    ImageFormat format;
    const char* name;
    bool keeps16Bits;
    bool keepsAlpha;
    bool keepsAssociatedAlpha;
    bool keepsPlanar;
    bool keepsGrey;
    bool holdsCmyk;
    // Largest difference allowed on 8-bit samples (lossy formats).
    std::uint32_t tolerance;
};

const FormatTraits kFormats[] = {
    {ImageFormat::tiff, "TIFF", true, true, true, true, true, true, 0},
    {ImageFormat::png, "PNG", true, true, false, false, true, false, 0},
    {ImageFormat::jpeg2000, "JPEG2000", true, true, true, false, true, true, 0},
    // Quality 1.0: every quantiser step is 1, so only rounding remains: up to about 1.5 levels
    // in each of Y and Cb (conversion and integer DCT), which blue = Y + 1.772 Cb turns into
    // up to 1.5 + 1.772 x 1.5 = 4.2.
    {ImageFormat::jpeg, "JPEG", false, false, false, false, true, true, 4},
    {ImageFormat::bmp, "BMP", false, true, false, false, false, false, 0},
};

bool isPremultiplied(const KVBitmap& bitmap)
{
    return bitmap.hasAlpha() && (bitmap.bitmapFormat() & kBitmapFormatAlphaNonpremultiplied) == 0;
}

// The sample value a format holds for `value` of `bits` bits when it stores `outBits`.
std::uint32_t atDepth(std::uint32_t value, int bits, int outBits)
{
    if (bits == outBits)
        return value;
    if (outBits == 8)
        return static_cast<std::uint32_t>(std::lround(value * 255.0 / 65535.0));
    return value * 257;
}

void PrintTo(const FormatTraits& traits, std::ostream* out)
{
    *out << traits.name;
}

class RoundTripTest : public ::testing::TestWithParam<std::tuple<FormatTraits, TestLayout>> {};

TEST_P(RoundTripTest, DecodesWhatWasEncoded)
{
    const auto& [traits, layout] = GetParam();
    const std::vector<std::uint8_t> profile =
        layout.model == rgb
            ? test::systemProfile("/usr/share/color/icc/compatibleWithAdobeRGB1998.icc")
            : std::vector<std::uint8_t>{};
    const KVBitmapPtr source = test::makeTestBitmap(layout, 37, 23, profile);
    ASSERT_TRUE(source);
    EncodeOptions options;
    options.quality = 1.0;
    IOResult<std::vector<std::uint8_t>> encoded = encodeImage(*source, traits.format, options);

    if (layout.model == cmyk && !traits.holdsCmyk) {
        EXPECT_FALSE(encoded.ok());
        EXPECT_FALSE(encoded.error().message.empty());
        return;
    }
    ASSERT_TRUE(encoded.ok()) << encoded.error().message;
    IOResult<ImageSource> opened = ImageSource::open(encoded.value());
    ASSERT_TRUE(opened.ok()) << opened.error().message;
    EXPECT_EQ(opened.value().format(), traits.format);
    IOResult<KVBitmapPtr> decoded = opened.value().decodePage(0);
    ASSERT_TRUE(decoded.ok()) << decoded.error().message;
    const KVBitmap& result = *decoded.value();

    const bool greyKept = layout.model != grey || traits.keepsGrey;
    const int outBits = traits.keeps16Bits ? layout.bitsPerSample : 8;
    const bool alphaKept = layout.hasAlpha && traits.keepsAlpha;
    const int colours = layout.samplesPerPixel - (layout.hasAlpha ? 1 : 0);
    const int outColours = greyKept ? colours : 3;
    EXPECT_EQ(result.pixelsWide(), 37);
    EXPECT_EQ(result.pixelsHigh(), 23);
    EXPECT_EQ(result.bitsPerSample(), outBits);
    EXPECT_EQ(result.hasAlpha(), alphaKept);
    EXPECT_EQ(result.samplesPerPixel(), outColours + (alphaKept ? 1 : 0));
    EXPECT_EQ(result.colorSpace().model(), greyKept ? layout.model : rgb);
    EXPECT_EQ(result.isPlanar(), layout.isPlanar && traits.keepsPlanar);
    EXPECT_EQ(result.colorSpace().iccProfile(), profile);
    if (alphaKept) {
        EXPECT_EQ(isPremultiplied(result), isPremultiplied(*source) && traits.keepsAssociatedAlpha);
    }

    const std::uint32_t maximum = outBits == 16 ? 65535u : 255u;
    // Undoing and redoing the association rounds twice.
    const bool unpremultiplied = isPremultiplied(*source) && alphaKept && !isPremultiplied(result);
    const std::uint32_t tolerance = traits.tolerance + (unpremultiplied ? 1u : 0u);
    std::uint32_t largest = 0;
    for (std::int64_t y = 0; y < 23; ++y) {
        for (std::int64_t x = 0; x < 37; ++x) {
            const std::uint32_t alpha =
                alphaKept ? test::sampleAt(result, x, y, outColours) : maximum;
            if (alphaKept) {
                const std::uint32_t expectedAlpha =
                    atDepth(test::sampleAt(*source, x, y, colours), layout.bitsPerSample, outBits);
                ASSERT_EQ(alpha, expectedAlpha) << x << "," << y;
            }
            for (int c = 0; c < outColours; ++c) {
                const int sourceChannel = greyKept ? c : 0;
                const std::uint32_t expected = atDepth(test::sampleAt(*source, x, y, sourceChannel),
                                                       layout.bitsPerSample, outBits);
                std::uint32_t actual = test::sampleAt(result, x, y, c);
                if (unpremultiplied)
                    actual = static_cast<std::uint32_t>(
                        std::lround(static_cast<double>(actual) * alpha / maximum));
                largest =
                    std::max(largest, actual > expected ? actual - expected : expected - actual);
            }
        }
    }
    EXPECT_LE(largest, tolerance);
}

INSTANTIATE_TEST_SUITE_P(EveryFormatAndLayout, RoundTripTest,
                         ::testing::Combine(::testing::ValuesIn(kFormats),
                                            ::testing::ValuesIn(kLayouts)),
                         [](const ::testing::TestParamInfo<RoundTripTest::ParamType>& info) {
                             return std::string(std::get<0>(info.param).name) + "_" +
                                    std::get<1>(info.param).name;
                         });

TEST(RoundTrip, JpegQualityIsClampedAndChangesTheFile)
{
    const KVBitmapPtr source = test::makeTestBitmap(kLayouts[0], 64, 48);
    const auto sizeAt = [&](double quality) {
        EncodeOptions options;
        options.quality = quality;
        IOResult<std::vector<std::uint8_t>> bytes =
            encodeImage(*source, ImageFormat::jpeg, options);
        EXPECT_TRUE(bytes.ok()) << bytes.error().message;
        return bytes.ok() ? bytes.value() : std::vector<std::uint8_t>{};
    };
    EXPECT_EQ(sizeAt(-3.0), sizeAt(0.0));
    EXPECT_EQ(sizeAt(7.0), sizeAt(1.0));
    EXPECT_LT(sizeAt(0.2).size(), sizeAt(0.9).size());
    EXPECT_LT(sizeAt(0.9).size(), sizeAt(1.0).size());
    // The default quality is 0.9.
    EXPECT_EQ(encodeImage(*source, ImageFormat::jpeg).value(), sizeAt(0.9));
}

TEST(RoundTrip, GifKeepsUpTo256ColoursExactly)
{
    // 16 x 16 pixels of 256 different colours.
    KVBitmapPtr source = KVBitmap::create({16, 16, 8, 3, false, false, 0, 0, 0});
    ASSERT_TRUE(source);
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x) {
            test::setSampleAt(*source, x, y, 0, static_cast<std::uint32_t>(x * 16 + 3));
            test::setSampleAt(*source, x, y, 1, static_cast<std::uint32_t>(y * 15));
            test::setSampleAt(*source, x, y, 2, static_cast<std::uint32_t>((x * y) % 251));
        }
    IOResult<std::vector<std::uint8_t>> encoded = encodeImage(*source, ImageFormat::gif);
    ASSERT_TRUE(encoded.ok()) << encoded.error().message;
    IOResult<KVBitmapPtr> decoded = decodeImage(encoded.value());
    ASSERT_TRUE(decoded.ok()) << decoded.error().message;
    EXPECT_EQ(test::allSamples(*decoded.value()), test::allSamples(*source));
}

TEST(RoundTrip, GifOfManyColoursStaysCloseThroughTheMedianCut)
{
    const KVBitmapPtr source = test::makeTestBitmap(kLayouts[0], 97, 61);
    IOResult<std::vector<std::uint8_t>> encoded = encodeImage(*source, ImageFormat::gif);
    ASSERT_TRUE(encoded.ok()) << encoded.error().message;
    IOResult<KVBitmapPtr> decoded = decodeImage(encoded.value());
    ASSERT_TRUE(decoded.ok()) << decoded.error().message;
    const std::vector<std::uint32_t> before = test::allSamples(*source);
    const std::vector<std::uint32_t> after = test::allSamples(*decoded.value());
    ASSERT_EQ(before.size(), after.size());
    double squares = 0;
    for (std::size_t i = 0; i < before.size(); ++i)
        squares += std::pow(static_cast<double>(before[i]) - after[i], 2);
    // The test picture fills a volume of about 215 x 215 x 37 levels (two gradients and a
    // ripple); cut into 256 boxes of about 22 levels a side, uniform quantisation alone leaves
    // 22 / sqrt(12) = 6.4 levels per sample, plus the histogram's 8-level bins. No colour may
    // end up far away.
    EXPECT_LT(std::sqrt(squares / before.size()), 8.5);
    EXPECT_LT(test::largestDifference(before, after), 40u);
}

TEST(RoundTrip, GifTransparencyIsOnOrOff)
{
    const KVBitmapPtr source = test::makeTestBitmap(kLayouts[2], 20, 20);
    // Make the top-left quarter fully transparent.
    for (int y = 0; y < 10; ++y)
        for (int x = 0; x < 10; ++x)
            test::setSampleAt(*source, x, y, 3, 0);
    IOResult<std::vector<std::uint8_t>> encoded = encodeImage(*source, ImageFormat::gif);
    ASSERT_TRUE(encoded.ok()) << encoded.error().message;
    IOResult<KVBitmapPtr> decoded = decodeImage(encoded.value());
    ASSERT_TRUE(decoded.ok()) << decoded.error().message;
    ASSERT_TRUE(decoded.value()->hasAlpha());
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 20; ++x) {
            const std::uint32_t expected = test::sampleAt(*source, x, y, 3) < 128 ? 0u : 255u;
            ASSERT_EQ(test::sampleAt(*decoded.value(), x, y, 3), expected) << x << "," << y;
        }
}

TEST(RoundTrip, ResolutionSurvivesEveryFormatThatHoldsOne)
{
    KVBitmapPtr source = test::makeTestBitmap(kLayouts[0], 30, 20);
    source->setPixelsPerInch(300.0);
    for (const ImageFormat format :
         {ImageFormat::tiff, ImageFormat::png, ImageFormat::jpeg, ImageFormat::bmp}) {
        IOResult<std::vector<std::uint8_t>> encoded = encodeImage(*source, format);
        ASSERT_TRUE(encoded.ok()) << encoded.error().message;
        IOResult<KVBitmapPtr> decoded = decodeImage(encoded.value());
        ASSERT_TRUE(decoded.ok()) << decoded.error().message;
        double horizontal = 0;
        double vertical = 0;
        decoded.value()->pixelsPerInch(horizontal, vertical);
        // PNG and BMP store pixels per metre as integers.
        EXPECT_NEAR(horizontal, 300.0, 0.02) << static_cast<int>(format);
        EXPECT_NEAR(vertical, 300.0, 0.02) << static_cast<int>(format);
    }
}

} // namespace
} // namespace tintorra
