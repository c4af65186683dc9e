#include "engine/KVBitmap.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

namespace tintorra {
namespace {

KVBitmapLayout layoutOf(std::int64_t wide, std::int64_t high, std::int64_t bitsPerSample,
                        std::int64_t samplesPerPixel, bool hasAlpha, bool isPlanar = false)
{
    KVBitmapLayout layout;
    layout.pixelsWide = wide;
    layout.pixelsHigh = high;
    layout.bitsPerSample = bitsPerSample;
    layout.samplesPerPixel = samplesPerPixel;
    layout.hasAlpha = hasAlpha;
    layout.isPlanar = isPlanar;
    return layout;
}

struct RejectedLayout {
    const char* name;
    KVBitmapLayout layout;
};

KVBitmapLayout withFormat(KVBitmapLayout layout, unsigned format)
{
    layout.bitmapFormat = format;
    return layout;
}

KVBitmapLayout withRowBytes(KVBitmapLayout layout, std::int64_t bytesPerRow)
{
    layout.bytesPerRow = bytesPerRow;
    return layout;
}

KVBitmapLayout withPixelBits(KVBitmapLayout layout, std::int64_t bitsPerPixel)
{
    layout.bitsPerPixel = bitsPerPixel;
    return layout;
}

TEST(KVBitmapCreate, RejectsInconsistentLayouts)
{
    constexpr std::int64_t huge = std::int64_t{1} << 40;
    const RejectedLayout cases[] = {
        {"no columns", layoutOf(0, 4, 8, 4, true)},
        {"negative rows", layoutOf(4, -1, 8, 4, true)},
        {"no samples", layoutOf(4, 4, 8, 0, false)},
        {"six samples", layoutOf(4, 4, 8, 6, true)},
        {"12-bit samples", layoutOf(4, 4, 12, 3, false)},
        {"32-bit samples", layoutOf(4, 4, 32, 3, false)},
        {"alpha alone", layoutOf(4, 4, 8, 1, true)},
        {"float samples",
         withFormat(layoutOf(4, 4, 16, 4, true), kBitmapFormatFloatingPointSamples)},
        {"unknown format flag", withFormat(layoutOf(4, 4, 8, 4, true), 8u)},
        {"rows too short", withRowBytes(layoutOf(5, 4, 8, 3, false), 14)},
        {"pixel bits below samples", withPixelBits(layoutOf(4, 4, 8, 4, true), 24)},
        {"pixel bits not whole bytes", withPixelBits(layoutOf(4, 4, 8, 3, false), 28)},
        {"planar pixel bits below one sample",
         withPixelBits(layoutOf(4, 4, 16, 3, false, true), 8)},
        {"row bits overflow", layoutOf(std::int64_t{1} << 60, 1, 16, 4, true)},
        {"plane bytes overflow", layoutOf(huge, huge, 8, 1, false)},
        // Four planes of 3 * 2^59 bytes would fit in 63 bits; with the slack for doubled
        // 16-bit plane distances (seven plane lengths) they do not.
        {"planar slack overflows",
         layoutOf(std::int64_t{3} << 28, std::int64_t{1} << 30, 16, 4, true, true)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(KVBitmap::create(c.layout), nullptr);
    }
}

TEST(KVBitmapCreate, ReturnsNullWhenMemoryCannotBeHad)
{
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the address sanitizer aborts on impossible allocations instead of failing";
#else
    // 2^50 bytes passes every overflow check but no machine has them.
    EXPECT_EQ(KVBitmap::create(layoutOf(std::int64_t{1} << 24, std::int64_t{1} << 24, 8, 4, true)),
              nullptr);
#endif
}

struct ComputedGeometry {
    const char* name;
    KVBitmapLayout layout;
    std::int64_t bitsPerPixel;
    std::int64_t bytesPerRow;
    std::int64_t numberOfPlanes;
};

TEST(KVBitmapCreate, ComputesTightRowsAndPixelBits)
{
    const ComputedGeometry cases[] = {
        {"grey 8", layoutOf(7, 3, 8, 1, false), 8, 7, 1},
        {"grey alpha 16", layoutOf(7, 3, 16, 2, true), 32, 28, 1},
        {"RGB 8", layoutOf(7, 3, 8, 3, false), 24, 21, 1},
        {"RGBA 16", layoutOf(7, 3, 16, 4, true), 64, 56, 1},
        {"RGB 8 planar", layoutOf(7, 3, 8, 3, false, true), 8, 7, 3},
        {"RGBA 16 planar", layoutOf(7, 3, 16, 4, true, true), 16, 14, 4},
        {"RGB padded to 32 bits", withPixelBits(layoutOf(7, 3, 8, 3, false), 32), 32, 28, 1},
        {"rows padded", withRowBytes(layoutOf(7, 3, 8, 4, true), 32), 32, 32, 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const auto bitmap = KVBitmap::create(c.layout);
        ASSERT_NE(bitmap, nullptr);
        EXPECT_EQ(bitmap->bitsPerPixel(), c.bitsPerPixel);
        EXPECT_EQ(bitmap->bytesPerRow(), c.bytesPerRow);
        EXPECT_EQ(bitmap->numberOfPlanes(), c.numberOfPlanes);
        EXPECT_EQ(bitmap->planeBytes(), static_cast<std::size_t>(c.bytesPerRow * 3));
        if (!c.layout.isPlanar) {
            EXPECT_EQ(bitmap->sampleBytes(), bitmap->planeBytes());
        }
    }
}

struct ConstructorCase {
    const char* name;
    KVBitmapPtr bitmap;
    std::int64_t samplesPerPixel;
    bool hasAlpha;
    unsigned bitmapFormat;
    KVColorSpaceModel model;
};

TEST(KVBitmapConstructors, MakeTheirLayouts)
{
    constexpr unsigned first = kBitmapFormatAlphaFirst;
    constexpr unsigned straight = kBitmapFormatAlphaNonpremultiplied;
    const auto grey = KVColorSpaceModel::gray;
    const auto rgb = KVColorSpaceModel::rgb;
    const ConstructorCase cases[] = {
        {"white 8", KVBitmap::deviceWhite8Rep(5, 3), 1, false, 0, grey},
        {"white alpha premultiplied", KVBitmap::deviceWhiteAlpha88Rep(5, 3, true), 2, true, 0,
         grey},
        {"white alpha straight", KVBitmap::deviceWhiteAlpha88Rep(5, 3, false), 2, true, straight,
         grey},
        {"RGBA premultiplied", KVBitmap::deviceRGBA8888Rep(5, 3, true), 4, true, 0, rgb},
        {"RGBA straight", KVBitmap::deviceRGBA8888Rep(5, 3, false), 4, true, straight, rgb},
        {"ARGB premultiplied", KVBitmap::deviceARGB8888Rep(5, 3, true), 4, true, first, rgb},
        {"ARGB straight", KVBitmap::deviceARGB8888Rep(5, 3, false), 4, true, first | straight, rgb},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ASSERT_NE(c.bitmap, nullptr);
        EXPECT_EQ(c.bitmap->pixelsWide(), 5);
        EXPECT_EQ(c.bitmap->pixelsHigh(), 3);
        EXPECT_EQ(c.bitmap->bitsPerSample(), 8);
        EXPECT_EQ(c.bitmap->samplesPerPixel(), c.samplesPerPixel);
        EXPECT_EQ(c.bitmap->hasAlpha(), c.hasAlpha);
        EXPECT_EQ(c.bitmap->bitmapFormat(), c.bitmapFormat);
        EXPECT_FALSE(c.bitmap->isPlanar());
        EXPECT_EQ(c.bitmap->colorSpace().model(), c.model);
        EXPECT_EQ(c.bitmap->isRGB(), c.model == rgb);
        EXPECT_EQ(c.bitmap->bitsPerPixel(), 8 * c.samplesPerPixel);
        EXPECT_EQ(c.bitmap->bytesPerRow(), 5 * c.samplesPerPixel);
    }
    EXPECT_EQ(KVBitmap::deviceRGBA8888Rep(0, 3, true), nullptr);
}

TEST(KVBitmapSamples, StartZeroed)
{
    const auto bitmap = KVBitmap::create(layoutOf(9, 4, 16, 3, false, true));
    ASSERT_NE(bitmap, nullptr);
    const std::uint8_t* data = bitmap->bitmapData();
    for (std::size_t i = 0; i < bitmap->sampleBytes(); ++i) {
        ASSERT_EQ(data[i], 0) << "byte " << i;
    }
}

TEST(KVBitmapSamples, ChunkyBitmapsHaveOnePlane)
{
    const auto bitmap = KVBitmap::deviceRGBA8888Rep(3, 2, false);
    std::uint8_t* planes[5];
    bitmap->getBitmapDataPlanes(planes);
    EXPECT_EQ(planes[0], bitmap->bitmapData());
    for (int k = 1; k < 5; ++k) {
        EXPECT_EQ(planes[k], nullptr) << "plane " << k;
    }
}

TEST(KVBitmapSamples, PlanesFollowOneAnotherAndLeaveRoomForDoubledDistances)
{
    for (const std::int64_t bits : {8, 16}) {
        SCOPED_TRACE(bits);
        const auto bitmap = KVBitmap::create(layoutOf(5, 3, bits, 4, true, true));
        ASSERT_NE(bitmap, nullptr);
        std::uint8_t* planes[5];
        bitmap->getBitmapDataPlanes(planes);
        const std::size_t planeBytes = bitmap->planeBytes();
        EXPECT_EQ(planeBytes, static_cast<std::size_t>(5 * 3 * bits / 8));
        for (std::size_t k = 0; k < 4; ++k) {
            EXPECT_EQ(planes[k], bitmap->bitmapData() + k * planeBytes) << "plane " << k;
        }
        EXPECT_EQ(planes[4], nullptr);

        // The last plane at a doubled distance ends 7 plane lengths in for 16 bits; touching
        // its last byte must stay inside the allocation (the address sanitizer checks).
        const std::size_t slots = bits == 16 ? 7 : 4;
        EXPECT_EQ(bitmap->sampleBytes(), slots * planeBytes);
        std::uint8_t* const lastByte = bitmap->bitmapData() + slots * planeBytes - 1;
        *lastByte = 0xA5;
        EXPECT_EQ(*lastByte, 0xA5);
    }
}

TEST(KVBitmapCopy, IsDeepAndKeepsEverything)
{
    const auto original = KVBitmap::create(layoutOf(4, 3, 16, 4, true, true),
                                           KVColorSpace(KVColorSpaceModel::rgb, "Test", {1, 2, 3}));
    ASSERT_NE(original, nullptr);
    original->setPixelsPerInch(144.0);
    const std::size_t bytes = original->sampleBytes();
    ASSERT_EQ(bytes, original->planeBytes() * 7);
    for (std::size_t i = 0; i < bytes; ++i) {
        original->bitmapData()[i] = static_cast<std::uint8_t>(i * 37 + 11);
    }

    const auto duplicate = original->copy();
    ASSERT_NE(duplicate, nullptr);
    EXPECT_NE(duplicate->bitmapData(), original->bitmapData());
    EXPECT_EQ(duplicate->colorSpace(), original->colorSpace());
    EXPECT_EQ(duplicate->bytesPerRow(), original->bytesPerRow());
    EXPECT_EQ(duplicate->bitsPerPixel(), original->bitsPerPixel());
    EXPECT_EQ(duplicate->bitmapFormat(), original->bitmapFormat());
    EXPECT_TRUE(duplicate->isPlanar());
    EXPECT_DOUBLE_EQ(duplicate->width(), 2.0);
    EXPECT_DOUBLE_EQ(duplicate->height(), 1.5);
    for (std::size_t i = 0; i < bytes; ++i) {
        ASSERT_EQ(duplicate->bitmapData()[i], original->bitmapData()[i]) << "byte " << i;
    }

    duplicate->bitmapData()[0] ^= 0xFF;
    EXPECT_NE(duplicate->bitmapData()[0], original->bitmapData()[0]);
}

TEST(KVBitmapResolution, DefaultsToSeventyTwoDotsPerInch)
{
    const auto bitmap = KVBitmap::deviceWhite8Rep(640, 480);
    EXPECT_DOUBLE_EQ(bitmap->width(), 640.0);
    EXPECT_DOUBLE_EQ(bitmap->height(), 480.0);
    double horizontal = 0.0;
    double vertical = 0.0;
    bitmap->pixelsPerInch(horizontal, vertical);
    EXPECT_DOUBLE_EQ(horizontal, 72.0);
    EXPECT_DOUBLE_EQ(vertical, 72.0);
    bitmap->pixelsPerPicaPoint(horizontal, vertical);
    EXPECT_DOUBLE_EQ(horizontal, 1.0);
    EXPECT_DOUBLE_EQ(vertical, 1.0);
}

TEST(KVBitmapResolution, SettersScaleTheSizeInPoints)
{
    struct Case {
        double dotsPerInch;
        double width;  // points for 600 pixels
        double height; // points for 300 pixels
    };
    // 600 px at 300 dpi is 2 inches, 144 points.
    const Case cases[] = {{300.0, 144.0, 72.0}, {72.0, 600.0, 300.0}, {144.0, 300.0, 150.0}};
    const auto bitmap = KVBitmap::deviceRGBA8888Rep(600, 300, false);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.dotsPerInch);
        bitmap->setPixelsPerInch(c.dotsPerInch);
        EXPECT_DOUBLE_EQ(bitmap->width(), c.width);
        EXPECT_DOUBLE_EQ(bitmap->height(), c.height);
        double horizontal = 0.0;
        double vertical = 0.0;
        bitmap->pixelsPerInch(horizontal, vertical);
        EXPECT_DOUBLE_EQ(horizontal, c.dotsPerInch);
        EXPECT_DOUBLE_EQ(vertical, c.dotsPerInch);
        bitmap->pixelsPerPicaPoint(horizontal, vertical);
        EXPECT_DOUBLE_EQ(horizontal, c.dotsPerInch / 72.0);
        EXPECT_DOUBLE_EQ(vertical, c.dotsPerInch / 72.0);
    }

    bitmap->setPixelsPerPicaPoint(4.0);
    EXPECT_DOUBLE_EQ(bitmap->width(), 150.0);
    EXPECT_DOUBLE_EQ(bitmap->height(), 75.0);
    double horizontal = 0.0;
    double vertical = 0.0;
    bitmap->pixelsPerInch(horizontal, vertical);
    EXPECT_DOUBLE_EQ(horizontal, 288.0);
    EXPECT_DOUBLE_EQ(vertical, 288.0);

    // Unequal sizes give unequal resolutions.
    bitmap->setSize(300.0, 300.0);
    bitmap->pixelsPerInch(horizontal, vertical);
    EXPECT_DOUBLE_EQ(horizontal, 144.0);
    EXPECT_DOUBLE_EQ(vertical, 72.0);
}

TEST(KVBitmapResolutionDeathTest, RefusesDotsPerInchNotAboveZero)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto bitmap = KVBitmap::deviceWhite8Rep(4, 4);
    EXPECT_DEATH(bitmap->setPixelsPerInch(0.0),
                 "Dots-per-inch should be greater than zero, but was actually 0\\.000000");
    EXPECT_DEATH(bitmap->setPixelsPerInch(-72.5),
                 "Dots-per-inch should be greater than zero, but was actually -72\\.500000");
    EXPECT_DEATH(bitmap->setPixelsPerInch(std::numeric_limits<double>::quiet_NaN()),
                 "Dots-per-inch should be greater than zero, but was actually -?nan");
}

TEST(KVBitmapResolutionDeathTest, RefusesDotsPerPointNotAboveZero)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto bitmap = KVBitmap::deviceWhite8Rep(4, 4);
    EXPECT_DEATH(bitmap->setPixelsPerPicaPoint(0.0),
                 "Dots-per-point should be greater than zero, but was actually 0\\.000000");
    EXPECT_DEATH(bitmap->setPixelsPerPicaPoint(-2.0),
                 "Dots-per-point should be greater than zero, but was actually -2\\.000000");
}

} // namespace
} // namespace tintorra
