#include "engine/PixelAccess.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>

namespace tintorra {
namespace {

KVBitmapPtr makeBitmap(std::int64_t bits, std::int64_t samples, bool hasAlpha, bool planar,
                       unsigned format, std::int64_t bitsPerPixel = 0,
                       KVColorSpace space = KVColorSpace::deviceRGB())
{
    KVBitmapLayout layout;
    layout.pixelsWide = 5;
    layout.pixelsHigh = 3;
    layout.bitsPerSample = bits;
    layout.samplesPerPixel = samples;
    layout.hasAlpha = hasAlpha;
    layout.isPlanar = planar;
    layout.bitmapFormat = format;
    layout.bitsPerPixel = bitsPerPixel;
    return KVBitmap::create(layout, std::move(space));
}

// Expected offsets in slots: samples into the pixel for chunky layouts, planes for planar ones.
struct OffsetCase {
    const char* name;
    std::int64_t samples;
    bool hasAlpha;
    bool planar;
    bool alphaFirst;
    std::int64_t bitsPerPixel8; // 0: tight
    std::uint64_t red, green, blue, grey, alpha;
};

constexpr OffsetCase kOffsetCases[] = {
    {"grey", 1, false, false, false, 0, 0, 0, 0, 0, 0},
    {"grey planar", 1, false, true, false, 0, 0, 0, 0, 0, 0},
    {"grey alpha last", 2, true, false, false, 0, 0, 0, 0, 0, 1},
    {"grey alpha first", 2, true, false, true, 0, 0, 0, 0, 1, 0},
    {"grey alpha last planar", 2, true, true, false, 0, 0, 0, 0, 0, 1},
    {"grey alpha first planar", 2, true, true, true, 0, 0, 0, 0, 1, 0},
    {"RGB", 3, false, false, false, 0, 0, 1, 2, 0, 0},
    {"RGB planar", 3, false, true, false, 0, 0, 1, 2, 0, 0},
    {"RGBA", 4, true, false, false, 0, 0, 1, 2, 0, 3},
    {"ARGB", 4, true, false, true, 0, 1, 2, 3, 0, 0},
    {"RGBA planar", 4, true, true, false, 0, 0, 1, 2, 0, 3},
    {"ARGB planar", 4, true, true, true, 0, 1, 2, 3, 0, 0},
};

TEST(PixelOffsets, EveryLayoutAt8And16Bits)
{
    for (const auto& c : kOffsetCases) {
        for (const std::int64_t bits : {8, 16}) {
            SCOPED_TRACE(std::string(c.name) + " " + std::to_string(bits));
            const unsigned format = c.alphaFirst ? kBitmapFormatAlphaFirst : 0u;
            const auto bitmap = makeBitmap(bits, c.samples, c.hasAlpha, c.planar, format);
            ASSERT_NE(bitmap, nullptr);
            PixelManipulationOffsets record;
            ASSERT_TRUE(initializePixelManipulationOffsets(record, bitmap, 1.0));
            EXPECT_TRUE(record.supported);

            // Every offset is scaled by the bytes of a sample; plane distances too, so 16-bit
            // planes sit at twice their real distance.
            const std::uint64_t bytesPerSample = static_cast<std::uint64_t>(bits / 8);
            const std::uint64_t slot =
                c.planar ? bitmap->planeBytes() * bytesPerSample : bytesPerSample;
            EXPECT_EQ(record.redOffset, c.red * slot);
            EXPECT_EQ(record.greenOffset, c.green * slot);
            EXPECT_EQ(record.blueOffset, c.blue * slot);
            EXPECT_EQ(record.greyOffset, c.grey * slot);
            EXPECT_EQ(record.alphaOffset, c.alpha * slot);

            // The farthest sample the record addresses ends inside the sample memory.
            const std::uint64_t farthestOffset =
                std::max({record.redOffset, record.greenOffset, record.blueOffset,
                          record.greyOffset, record.alphaOffset});
            const std::uint64_t lastPixel =
                static_cast<std::uint64_t>((record.pixelsWide - 1) * record.bytesPerPixel +
                                           (record.pixelsHigh - 1) * record.bytesPerRow);
            EXPECT_LE(lastPixel + farthestOffset + bytesPerSample, bitmap->sampleBytes());

            const std::int64_t pixelSamples = c.planar ? 1 : c.samples;
            EXPECT_EQ(record.bytesPerPixel, pixelSamples * bits / 8);
            EXPECT_EQ(record.numberOfPlanes, c.planar ? c.samples : 1);
            EXPECT_EQ(record.isPlanar, c.planar);
        }
    }
}

TEST(PixelOffsets, CopiesTheBitmapsGeometry)
{
    const auto bitmap = makeBitmap(16, 4, true, true, kBitmapFormatAlphaNonpremultiplied);
    const auto record = pixelManipulationOffsetsWithImageGamma(bitmap, 0.5);
    EXPECT_EQ(record.rep, bitmap);
    EXPECT_TRUE(record.supported);
    EXPECT_EQ(record.pixelsWide, 5);
    EXPECT_EQ(record.pixelsHigh, 3);
    EXPECT_EQ(record.bitsPerSample, 16);
    EXPECT_EQ(record.samplesPerPixel, 4);
    EXPECT_EQ(record.bytesPerRow, 10);
    EXPECT_EQ(record.bitsPerPixel, 16);
    EXPECT_EQ(record.bytesPerPixel, 2);
    EXPECT_TRUE(record.hasAlpha);
    EXPECT_EQ(record.bitmapFormat, kBitmapFormatAlphaNonpremultiplied);
    EXPECT_FALSE(record.premultiplied);
    EXPECT_EQ(record.colorSpace, KVColorSpace::deviceRGB());
    EXPECT_EQ(record.colorSpaceModel, 1);
    EXPECT_EQ(record.imageGamma, 0.5);
    EXPECT_EQ(record.bitmapData, bitmap->bitmapData());
    for (std::size_t k = 0; k < 4; ++k) {
        EXPECT_EQ(record.planes[k], bitmap->bitmapData() + k * bitmap->planeBytes());
    }
    EXPECT_EQ(record.planes[4], nullptr);
}

TEST(PixelOffsets, PaddedRGBNamesThePadByteButHasNoAlpha)
{
    const auto padded = makeBitmap(8, 3, false, false, 0, 32);
    const auto record = pixelManipulationOffsetsWithImageGamma(padded, 1.0);
    EXPECT_TRUE(record.supported);
    EXPECT_EQ(record.bytesPerPixel, 4);
    EXPECT_EQ(record.alphaOffset, 3u);
    EXPECT_FALSE(record.hasAlpha);
    EXPECT_FALSE(record.premultiplied);

    // Padded to 64 bits at 16 bits per sample the pixel is 8 bytes, so no pad offset.
    const auto wide = makeBitmap(16, 3, false, false, 0, 64);
    const auto wideRecord = pixelManipulationOffsetsWithImageGamma(wide, 1.0);
    EXPECT_EQ(wideRecord.bytesPerPixel, 8);
    EXPECT_EQ(wideRecord.alphaOffset, 0u);
    EXPECT_EQ(wideRecord.blueOffset, 4u);
}

TEST(PixelOffsets, PremultipliedOnlyWithAlphaAndWithoutTheStraightFlag)
{
    struct Case {
        std::int64_t samples;
        bool hasAlpha;
        unsigned format;
        bool premultiplied;
    };
    const Case cases[] = {
        {4, true, 0, true},
        {4, true, kBitmapFormatAlphaFirst, true},
        {4, true, kBitmapFormatAlphaNonpremultiplied, false},
        {4, true, kBitmapFormatAlphaFirst | kBitmapFormatAlphaNonpremultiplied, false},
        {3, false, 0, false},
        {3, false, kBitmapFormatAlphaNonpremultiplied, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.format);
        const auto record = pixelManipulationOffsetsWithImageGamma(
            makeBitmap(8, c.samples, c.hasAlpha, false, c.format), 1.0);
        EXPECT_EQ(record.premultiplied, c.premultiplied);
    }
}

TEST(PixelOffsets, OtherColourModelsFillNothingElse)
{
    const KVColorSpace spaces[] = {
        {KVColorSpaceModel::cmyk, "CMYK"},
        {KVColorSpaceModel::lab, "Lab"},
        {KVColorSpaceModel::indexed, "Indexed"},
        {KVColorSpaceModel::unknown, "Unknown"},
    };
    for (const auto& space : spaces) {
        SCOPED_TRACE(space.name());
        const auto bitmap = makeBitmap(8, 4, false, false, 0, 0, space);
        PixelManipulationOffsets record;
        EXPECT_FALSE(initializePixelManipulationOffsets(record, bitmap, 0.5));
        EXPECT_FALSE(record.supported);
        EXPECT_EQ(record.rep, bitmap);
        EXPECT_EQ(record.colorSpace, space);
        EXPECT_EQ(record.colorSpaceModel, static_cast<std::int64_t>(space.model()));
        EXPECT_EQ(record.pixelsWide, 0);
        EXPECT_EQ(record.samplesPerPixel, 0);
        EXPECT_EQ(record.bitmapData, nullptr);
        EXPECT_EQ(record.planes[0], nullptr);
        EXPECT_EQ(record.imageGamma, 1.0);
    }
}

TEST(PixelOffsets, FiveSamplesAreGeometryWithoutSupport)
{
    const auto bitmap = makeBitmap(16, 5, true, false, 0);
    PixelManipulationOffsets record;
    EXPECT_FALSE(initializePixelManipulationOffsets(record, bitmap, 0.5));
    EXPECT_EQ(record.samplesPerPixel, 5);
    EXPECT_EQ(record.bytesPerPixel, 10);
    EXPECT_EQ(record.redOffset + record.greenOffset + record.blueOffset + record.greyOffset +
                  record.alphaOffset,
              0u);
}

TEST(PixelOffsets, NoBitmapIsUnsupported)
{
    PixelManipulationOffsets record;
    EXPECT_FALSE(initializePixelManipulationOffsets(record, nullptr, 1.0));
    EXPECT_EQ(record.rep, nullptr);
}

TEST(PixelOffsets, RefillingForgetsThePreviousBitmap)
{
    PixelManipulationOffsets record;
    ASSERT_TRUE(initializePixelManipulationOffsets(record, makeBitmap(8, 4, true, false, 0), 1.0));
    const auto cmyk = makeBitmap(8, 4, false, false, 0, 0, {KVColorSpaceModel::cmyk, "CMYK"});
    EXPECT_FALSE(initializePixelManipulationOffsets(record, cmyk, 1.0));
    EXPECT_EQ(record.bitmapData, nullptr);
    EXPECT_EQ(record.alphaOffset, 0u);
}

TEST(PixelOffsets, ClampsTheImageGamma)
{
    struct Case {
        double given;
        double used;
    };
    const Case cases[] = {
        {0.25, 1.0 / 3.0},      {-1.0, 1.0 / 3.0}, {0.0, 1.0 / 3.0}, {1.0 / 3.0, 1.0 / 3.0},
        {1.0 / 2.2, 1.0 / 2.2}, {0.5, 0.5},        {1.0, 1.0},       {2.2, 1.0},
    };
    const auto bitmap = makeBitmap(8, 3, false, false, 0);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.given);
        EXPECT_EQ(pixelManipulationOffsetsWithImageGamma(bitmap, c.given).imageGamma, c.used);
    }
}

} // namespace
} // namespace tintorra
