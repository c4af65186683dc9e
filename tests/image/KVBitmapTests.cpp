#include "common/Diagnostics.h"
#include "image/KVBitmap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>

namespace tintorra {
namespace {

KVBitmapLayout layoutOf(std::int64_t wide, std::int64_t high, std::int64_t bits,
                        std::int64_t samples, bool alpha, bool planar = false, unsigned format = 0,
                        std::int64_t rowBytes = 0, std::int64_t pixelBits = 0)
{
    return {wide, high, bits, samples, alpha, planar, format, rowBytes, pixelBits};
}

TEST(KVBitmapCreate, RejectsInconsistentLayouts)
{
    constexpr std::int64_t huge = std::int64_t{1} << 40;
    const struct {
        const char* name;
        KVBitmapLayout layout;
    } cases[] = {
        {"no columns", layoutOf(0, 4, 8, 4, true)},
        {"negative rows", layoutOf(4, -1, 8, 4, true)},
        {"no samples", layoutOf(4, 4, 8, 0, false)},
        {"six samples", layoutOf(4, 4, 8, 6, true)},
        {"12-bit samples", layoutOf(4, 4, 12, 3, false)},
        {"32-bit samples", layoutOf(4, 4, 32, 3, false)},
        {"alpha alone", layoutOf(4, 4, 8, 1, true)},
        {"float samples", layoutOf(4, 4, 16, 4, true, false, kBitmapFormatFloatingPointSamples)},
        {"unknown format flag", layoutOf(4, 4, 8, 4, true, false, 8u)},
        {"rows too short", layoutOf(5, 4, 8, 3, false, false, 0, 14)},
        {"pixel bits below samples", layoutOf(4, 4, 8, 4, true, false, 0, 0, 24)},
        {"pixel bits not whole bytes", layoutOf(4, 4, 8, 3, false, false, 0, 0, 28)},
        {"planar pixel bits below one sample", layoutOf(4, 4, 16, 3, false, true, 0, 0, 8)},
        {"row bits overflow", layoutOf(std::int64_t{1} << 60, 1, 16, 4, true)},
        {"plane bytes overflow", layoutOf(huge, huge, 8, 1, false)},
        // Four planes fit in 63 bits, but not the seven plane lengths of doubled 16-bit distances.
        {"planar slack overflows",
         layoutOf(std::int64_t{3} << 28, std::int64_t{1} << 30, 16, 4, true, true)},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(KVBitmap::create(c.layout), nullptr) << c.name;
    }
#if !defined(__SANITIZE_ADDRESS__) // the sanitizer aborts on impossible allocations
    // 2^50 bytes passes every overflow check but no machine has them.
    EXPECT_EQ(KVBitmap::create(layoutOf(std::int64_t{1} << 24, std::int64_t{1} << 24, 8, 4, true)),
              nullptr);
#endif
}

TEST(KVBitmapCreate, ComputesTightRowsAndPixelBits)
{
    const struct {
        const char* name;
        KVBitmapLayout layout;
        std::int64_t bitsPerPixel, bytesPerRow, planes;
    } cases[] = {
        {"grey 8", layoutOf(7, 3, 8, 1, false), 8, 7, 1},
        {"grey alpha 16", layoutOf(7, 3, 16, 2, true), 32, 28, 1},
        {"RGB 8", layoutOf(7, 3, 8, 3, false), 24, 21, 1},
        {"RGBA 16", layoutOf(7, 3, 16, 4, true), 64, 56, 1},
        {"RGB 8 planar", layoutOf(7, 3, 8, 3, false, true), 8, 7, 3},
        {"RGBA 16 planar", layoutOf(7, 3, 16, 4, true, true), 16, 14, 4},
        {"RGB padded to 32 bits", layoutOf(7, 3, 8, 3, false, false, 0, 0, 32), 32, 28, 1},
        {"rows padded", layoutOf(7, 3, 8, 4, true, false, 0, 32), 32, 32, 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const auto bitmap = KVBitmap::create(c.layout);
        ASSERT_NE(bitmap, nullptr);
        EXPECT_EQ(bitmap->bitsPerPixel(), c.bitsPerPixel);
        EXPECT_EQ(bitmap->bytesPerRow(), c.bytesPerRow);
        EXPECT_EQ(bitmap->numberOfPlanes(), c.planes);
        EXPECT_EQ(bitmap->planeBytes(), static_cast<std::size_t>(c.bytesPerRow * 3));
    }
}

TEST(KVBitmapConstructors, MakeTheirLayouts)
{
    constexpr unsigned first = kBitmapFormatAlphaFirst;
    constexpr unsigned straight = kBitmapFormatAlphaNonpremultiplied;
    const struct {
        KVBitmapPtr bitmap;
        std::int64_t samples;
        unsigned format;
    } cases[] = {
        {KVBitmap::deviceWhite8Rep(5, 3), 1, 0},
        {KVBitmap::deviceWhiteAlpha88Rep(5, 3, true), 2, 0},
        {KVBitmap::deviceWhiteAlpha88Rep(5, 3, false), 2, straight},
        {KVBitmap::deviceRGBA8888Rep(5, 3, true), 4, 0},
        {KVBitmap::deviceRGBA8888Rep(5, 3, false), 4, straight},
        {KVBitmap::deviceARGB8888Rep(5, 3, true), 4, first},
        {KVBitmap::deviceARGB8888Rep(5, 3, false), 4, first | straight},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.samples * 10 + c.format);
        ASSERT_NE(c.bitmap, nullptr);
        EXPECT_EQ(c.bitmap->pixelsWide(), 5);
        EXPECT_EQ(c.bitmap->pixelsHigh(), 3);
        EXPECT_EQ(c.bitmap->bitsPerSample(), 8);
        EXPECT_EQ(c.bitmap->samplesPerPixel(), c.samples);
        EXPECT_EQ(c.bitmap->hasAlpha(), c.samples % 2 == 0);
        EXPECT_EQ(c.bitmap->bitmapFormat(), c.format);
        EXPECT_FALSE(c.bitmap->isPlanar());
        EXPECT_EQ(c.bitmap->isRGB(), c.samples == 4);
        EXPECT_EQ(c.bitmap->bytesPerRow(), 5 * c.samples);
    }
    EXPECT_EQ(KVBitmap::deviceRGBA8888Rep(0, 3, true), nullptr);
}

TEST(KVBitmapSamples, StartZeroedInPlanesWithRoomForDoubledDistances)
{
    std::uint8_t* planes[5];
    const auto chunky = KVBitmap::deviceRGBA8888Rep(3, 2, false);
    chunky->getBitmapDataPlanes(planes);
    EXPECT_EQ(planes[0], chunky->bitmapData());
    EXPECT_EQ(planes[1], nullptr);
    EXPECT_EQ(chunky->sampleBytes(), chunky->planeBytes());

    for (const std::int64_t bits : {8, 16}) {
        SCOPED_TRACE(bits);
        const auto bitmap = KVBitmap::create(layoutOf(5, 3, bits, 4, true, true));
        ASSERT_NE(bitmap, nullptr);
        bitmap->getBitmapDataPlanes(planes);
        const std::size_t planeBytes = bitmap->planeBytes();
        EXPECT_EQ(planeBytes, static_cast<std::size_t>(5 * 3 * bits / 8));
        for (std::size_t k = 0; k < 4; ++k) {
            EXPECT_EQ(planes[k], bitmap->bitmapData() + k * planeBytes) << "plane " << k;
        }
        EXPECT_EQ(planes[4], nullptr);
        // 16-bit planes at doubled distances reach 7 plane lengths in (the sanitizer checks).
        EXPECT_EQ(bitmap->sampleBytes(), (bits == 16 ? 7 : 4) * planeBytes);
        for (std::size_t i = 0; i < bitmap->sampleBytes(); ++i) {
            ASSERT_EQ(bitmap->bitmapData()[i], 0) << "byte " << i;
        }
    }
}

TEST(KVBitmapSamples, StartZeroedAfterLargeBitmapsWereFreed)
{
    // Photograph-sized buffers come from the system or from freed memory; both must read zero.
    for (int round = 0; round < 3; ++round) {
        const auto bitmap = KVBitmap::deviceRGBA8888Rep(1024, 1536 + round, false);
        ASSERT_NE(bitmap, nullptr);
        const std::uint8_t* const bytes = bitmap->bitmapData();
        EXPECT_EQ(std::count(bytes, bytes + bitmap->sampleBytes(), 0),
                  static_cast<std::ptrdiff_t>(bitmap->sampleBytes()))
            << "round " << round;
        std::fill(bitmap->bitmapData(), bitmap->bitmapData() + bitmap->sampleBytes(), 0xAB);
    }
}

TEST(KVBitmapCopy, IsDeepAndKeepsEverything)
{
    const auto original = KVBitmap::create(layoutOf(4, 3, 16, 4, true, true),
                                           KVColorSpace(KVColorSpaceModel::rgb, "Test", {1, 2, 3}));
    ASSERT_NE(original, nullptr);
    original->setPixelsPerInch(144.0);
    for (std::size_t i = 0; i < original->sampleBytes(); ++i) {
        original->bitmapData()[i] = static_cast<std::uint8_t>(i * 37 + 11);
    }
    const auto duplicate = original->copy();
    ASSERT_NE(duplicate, nullptr);
    EXPECT_NE(duplicate->bitmapData(), original->bitmapData());
    EXPECT_EQ(duplicate->colorSpace(), original->colorSpace());
    EXPECT_EQ(duplicate->bytesPerRow(), original->bytesPerRow());
    EXPECT_EQ(duplicate->bitmapFormat(), original->bitmapFormat());
    EXPECT_TRUE(duplicate->isPlanar());
    EXPECT_DOUBLE_EQ(duplicate->width(), 2.0);
    EXPECT_DOUBLE_EQ(duplicate->height(), 1.5);
    ASSERT_EQ(duplicate->sampleBytes(), original->sampleBytes());
    for (std::size_t i = 0; i < original->sampleBytes(); ++i) {
        ASSERT_EQ(duplicate->bitmapData()[i], original->bitmapData()[i]) << "byte " << i;
    }
    duplicate->bitmapData()[0] ^= 0xFF;
    EXPECT_NE(duplicate->bitmapData()[0], original->bitmapData()[0]);
}

TEST(KVBitmapResolution, SettersScaleTheSizeInPoints)
{
    const auto bitmap = KVBitmap::deviceRGBA8888Rep(600, 300, false);
    const auto expectResolution = [&bitmap](double horizontal, double vertical) {
        double h = 0.0;
        double v = 0.0;
        bitmap->pixelsPerInch(h, v);
        EXPECT_DOUBLE_EQ(h, horizontal);
        EXPECT_DOUBLE_EQ(v, vertical);
        bitmap->pixelsPerPicaPoint(h, v);
        EXPECT_DOUBLE_EQ(h, horizontal / 72.0);
        EXPECT_DOUBLE_EQ(v, vertical / 72.0);
    };
    // By default one point per pixel, 72 dots per inch.
    EXPECT_DOUBLE_EQ(bitmap->width(), 600.0);
    EXPECT_DOUBLE_EQ(bitmap->height(), 300.0);
    expectResolution(72.0, 72.0);
    // 600 px at 300 dpi is 2 inches, 144 points.
    for (const double dpi : {300.0, 72.0, 144.0}) {
        SCOPED_TRACE(dpi);
        bitmap->setPixelsPerInch(dpi);
        EXPECT_DOUBLE_EQ(bitmap->width(), 600.0 * 72.0 / dpi);
        EXPECT_DOUBLE_EQ(bitmap->height(), 300.0 * 72.0 / dpi);
        expectResolution(dpi, dpi);
    }
    bitmap->setPixelsPerPicaPoint(4.0);
    EXPECT_DOUBLE_EQ(bitmap->width(), 150.0);
    expectResolution(288.0, 288.0);
    bitmap->setSize(300.0, 300.0); // unequal sizes give unequal resolutions
    expectResolution(144.0, 72.0);
}

// A resolution not above zero is refused with its message, and the size stays.
TEST(KVBitmapResolutionTest, RefusesValuesNotAboveZero)
{
    std::string said;
    setDiagnosticsSink([&](std::string_view text) { said += text; });
    const auto bitmap = KVBitmap::deviceWhite8Rep(4, 4);
    bitmap->setSize(8.0, 8.0);
    EXPECT_FALSE(bitmap->setPixelsPerInch(0.0));
    EXPECT_FALSE(bitmap->setPixelsPerInch(std::numeric_limits<double>::quiet_NaN()));
    EXPECT_FALSE(bitmap->setPixelsPerPicaPoint(-2.0));
    setDiagnosticsSink(nullptr);
    EXPECT_DOUBLE_EQ(bitmap->width(), 8.0);
    EXPECT_EQ(said.substr(0, said.find('\n')),
              "Dots-per-inch should be greater than zero, but was actually 0.000000");
    EXPECT_NE(said.find("Dots-per-point should be greater than zero, but was actually -2.000000"),
              std::string::npos);
}

} // namespace
} // namespace tintorra
