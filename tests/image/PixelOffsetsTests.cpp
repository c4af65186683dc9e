#include "image/PixelAccess.h"

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
    return KVBitmap::create({5, 3, bits, samples, hasAlpha, planar, format, 0, bitsPerPixel},
                            std::move(space));
}

// Expected offsets in slots: samples into the pixel for chunky layouts, planes for planar ones.
struct OffsetCase {
    const char* name;
    std::int64_t samples;
    bool hasAlpha, planar, alphaFirst;
    std::uint64_t red, green, blue, grey, alpha;
};

constexpr OffsetCase kOffsetCases[] = {
    {"grey", 1, false, false, false, 0, 0, 0, 0, 0},
    {"grey planar", 1, false, true, false, 0, 0, 0, 0, 0},
    {"grey alpha last", 2, true, false, false, 0, 0, 0, 0, 1},
    {"grey alpha first", 2, true, false, true, 0, 0, 0, 1, 0},
    {"grey alpha last planar", 2, true, true, false, 0, 0, 0, 0, 1},
    {"grey alpha first planar", 2, true, true, true, 0, 0, 0, 1, 0},
    {"RGB", 3, false, false, false, 0, 1, 2, 0, 0},
    {"RGB planar", 3, false, true, false, 0, 1, 2, 0, 0},
    {"RGBA", 4, true, false, false, 0, 1, 2, 0, 3},
    {"ARGB", 4, true, false, true, 1, 2, 3, 0, 0},
    {"RGBA planar", 4, true, true, false, 0, 1, 2, 0, 3},
    {"ARGB planar", 4, true, true, true, 1, 2, 3, 0, 0},
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

            // Plane distances are scaled by the bytes of a sample too, so 16-bit planes sit at
            // twice their real distance.
            const auto bytesPerSample = static_cast<std::uint64_t>(bits / 8);
            const std::uint64_t slot =
                c.planar ? bitmap->planeBytes() * bytesPerSample : bytesPerSample;
            EXPECT_EQ(record.redOffset, c.red * slot);
            EXPECT_EQ(record.greenOffset, c.green * slot);
            EXPECT_EQ(record.blueOffset, c.blue * slot);
            EXPECT_EQ(record.greyOffset, c.grey * slot);
            EXPECT_EQ(record.alphaOffset, c.alpha * slot);

            // The farthest sample the record addresses ends inside the sample memory.
            const std::uint64_t farthest =
                std::max({record.redOffset, record.greenOffset, record.blueOffset,
                          record.greyOffset, record.alphaOffset});
            const auto lastPixel =
                static_cast<std::uint64_t>((record.pixelsWide - 1) * record.bytesPerPixel +
                                           (record.pixelsHigh - 1) * record.bytesPerRow);
            EXPECT_LE(lastPixel + farthest + bytesPerSample, bitmap->sampleBytes());
            EXPECT_EQ(record.bytesPerPixel, (c.planar ? 1 : c.samples) * bits / 8);
            EXPECT_EQ(record.numberOfPlanes, c.planar ? c.samples : 1);
        }
    }
}

TEST(PixelOffsets, CopiesTheBitmapsGeometry)
{
    const auto bitmap = makeBitmap(16, 4, true, true, kBitmapFormatAlphaNonpremultiplied);
    const auto record = pixelManipulationOffsetsWithImageGamma(bitmap, 0.5);
    EXPECT_EQ(record.rep, bitmap);
    EXPECT_EQ(record.pixelsWide, 5);
    EXPECT_EQ(record.pixelsHigh, 3);
    EXPECT_EQ(record.bitsPerSample, 16);
    EXPECT_EQ(record.samplesPerPixel, 4);
    EXPECT_EQ(record.bytesPerRow, 10);
    EXPECT_EQ(record.bitsPerPixel, 16);
    EXPECT_TRUE(record.hasAlpha);
    EXPECT_EQ(record.bitmapFormat, kBitmapFormatAlphaNonpremultiplied);
    EXPECT_EQ(record.colorSpace, KVColorSpace::deviceRGB());
    EXPECT_EQ(record.colorSpaceModel, 1);
    EXPECT_EQ(record.imageGamma, 0.5);
    for (std::size_t k = 0; k < 4; ++k) {
        EXPECT_EQ(record.planes[k], bitmap->bitmapData() + k * bitmap->planeBytes());
    }
    EXPECT_EQ(record.planes[4], nullptr);

    // RGB padded to 32 bits names the pad byte as alpha but has none; padded to 64 bits at 16 bits
    // per sample there is no pad offset.
    const auto padded =
        pixelManipulationOffsetsWithImageGamma(makeBitmap(8, 3, false, false, 0, 32), 1.0);
    EXPECT_EQ(padded.bytesPerPixel, 4);
    EXPECT_EQ(padded.alphaOffset, 3u);
    EXPECT_FALSE(padded.hasAlpha);
    const auto wide =
        pixelManipulationOffsetsWithImageGamma(makeBitmap(16, 3, false, false, 0, 64), 1.0);
    EXPECT_EQ(wide.bytesPerPixel, 8);
    EXPECT_EQ(wide.alphaOffset, 0u);
    EXPECT_EQ(wide.blueOffset, 4u);
}

TEST(PixelOffsets, PremultipliedOnlyWithAlphaAndWithoutTheStraightFlag)
{
    constexpr unsigned straight = kBitmapFormatAlphaNonpremultiplied;
    const struct {
        std::int64_t samples;
        unsigned format;
        bool premultiplied;
    } cases[] = {{4, 0, true},         {4, kBitmapFormatAlphaFirst, true},
                 {4, straight, false}, {4, kBitmapFormatAlphaFirst | straight, false},
                 {3, 0, false},        {3, straight, false}};
    for (const auto& c : cases) {
        const auto record = pixelManipulationOffsetsWithImageGamma(
            makeBitmap(8, c.samples, c.samples == 4, false, c.format), 1.0);
        EXPECT_EQ(record.premultiplied, c.premultiplied) << c.samples << " " << c.format;
    }
}

TEST(PixelOffsets, UnsupportedBitmapsFillNothing)
{
    for (const KVColorSpace& space : {KVColorSpace(KVColorSpaceModel::cmyk, "CMYK"),
                                      KVColorSpace(KVColorSpaceModel::lab, "Lab"),
                                      KVColorSpace(KVColorSpaceModel::indexed, "Indexed"),
                                      KVColorSpace(KVColorSpaceModel::unknown, "Unknown")}) {
        SCOPED_TRACE(space.name());
        const auto bitmap = makeBitmap(8, 4, false, false, 0, 0, space);
        PixelManipulationOffsets record;
        // Refilling forgets the previous bitmap.
        ASSERT_TRUE(
            initializePixelManipulationOffsets(record, makeBitmap(8, 4, true, false, 0), 0.5));
        EXPECT_FALSE(initializePixelManipulationOffsets(record, bitmap, 0.5));
        EXPECT_FALSE(record.supported);
        EXPECT_EQ(record.rep, bitmap);
        EXPECT_EQ(record.colorSpace, space);
        EXPECT_EQ(record.colorSpaceModel, static_cast<std::int64_t>(space.model()));
        EXPECT_EQ(record.pixelsWide, 0);
        EXPECT_EQ(record.bitmapData, nullptr);
        EXPECT_EQ(record.planes[0], nullptr);
        EXPECT_EQ(record.alphaOffset, 0u);
        EXPECT_EQ(record.imageGamma, 1.0);
    }

    // Five samples: the geometry is filled, but no offsets and no support.
    PixelManipulationOffsets record;
    EXPECT_FALSE(
        initializePixelManipulationOffsets(record, makeBitmap(16, 5, true, false, 0), 0.5));
    EXPECT_EQ(record.samplesPerPixel, 5);
    EXPECT_EQ(record.bytesPerPixel, 10);
    EXPECT_EQ(record.redOffset + record.greenOffset + record.blueOffset + record.greyOffset +
                  record.alphaOffset,
              0u);
    EXPECT_FALSE(initializePixelManipulationOffsets(record, nullptr, 1.0));
    EXPECT_EQ(record.rep, nullptr);
}

TEST(PixelOffsets, ClampsTheImageGamma)
{
    const struct {
        double given, used;
    } cases[] = {
        {0.25, 1.0 / 3.0},      {-1.0, 1.0 / 3.0}, {0.0, 1.0 / 3.0}, {1.0 / 3.0, 1.0 / 3.0},
        {1.0 / 2.2, 1.0 / 2.2}, {1.0, 1.0},        {2.2, 1.0}};
    const auto bitmap = makeBitmap(8, 3, false, false, 0);
    for (const auto& c : cases) {
        EXPECT_EQ(pixelManipulationOffsetsWithImageGamma(bitmap, c.given).imageGamma, c.used)
            << c.given;
    }
}

} // namespace
} // namespace tintorra
