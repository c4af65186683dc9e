#include "ColorTableTestSupport.h"
#include "colour/ColorConversions.h"
#include "colour/ColorMatrices.h"
#include "colour/WorkingSpaces.h"
#include "engine/ColorHistogram.h"
#include "engine/MedianCut.h"
#include "engine/QuantisedSpectrum.h"
#include "engine/TableAllocation.h"
#include "support/DiagnosticsCapture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <map>
#include <numbers>
#include <string>
#include <tuple>
#include <vector>

namespace tintorra {
namespace {

using test::kTableLayouts;
using test::makeTableBitmap;
using RGB = std::tuple<int, int, int>;

// An image of rectangles of solid colour, one pixel row per entry, `width` pixels each.
KVBitmapPtr stripes(const std::vector<std::pair<test::Samples, int>>& rows, std::int64_t width,
                    const test::TableLayout& layout = kTableLayouts[7])
{
    std::int64_t height = 0;
    for (const auto& row : rows) {
        height += row.second;
    }
    const KVBitmapPtr bitmap = makeTableBitmap(layout, width, height);
    const PixelManipulationOffsets offsets = pixelManipulationOffsetsWithImageGamma(bitmap, 1.0);
    std::int64_t y = 0;
    for (const auto& [samples, count] : rows) {
        for (int k = 0; k < count; ++k, ++y) {
            for (std::int64_t x = 0; x < width; ++x) {
                test::writeSamples(offsets, x, y, samples);
            }
        }
    }
    return bitmap;
}

std::map<RGB, std::uint64_t> hashContents(const ColorHashTable& table)
{
    std::map<RGB, std::uint64_t> contents;
    table.forEach([&](std::uint8_t r, std::uint8_t g, std::uint8_t b, std::uint64_t count) {
        EXPECT_TRUE(contents.emplace(RGB{r, g, b}, count).second) << "colour listed twice";
    });
    return contents;
}

TEST(ColorHash, CountsColoursWeightedByAlpha)
{
    for (const test::TableLayout& layout : {kTableLayouts[3], kTableLayouts[7], kTableLayouts[8]}) {
        SCOPED_TRACE(layout.name);
        const KVBitmapPtr bitmap = makeTableBitmap(layout, 31, 17);
        test::fillRandom(bitmap, 41, 20, layout.hasAlpha);
        const PixelManipulationOffsets offsets =
            pixelManipulationOffsetsWithImageGamma(bitmap, 1.0);

        // Brute force through the pixel layer: straight colours rounded to bytes, weight = alpha.
        std::map<RGB, std::uint64_t> expected;
        for (std::int64_t y = 0; y < 17; ++y) {
            for (std::int64_t x = 0; x < 31; ++x) {
                PixelChars chars;
                readGammaChars(x, y, offsets, chars);
                if (!layout.hasAlpha) {
                    expected[{chars.r, chars.g, chars.b}] += 1;
                    continue;
                }
                if (chars.a == 0) {
                    continue;
                }
                int r = chars.r, g = chars.g, b = chars.b;
                if (layout.premultiplied) {
                    const auto straight = [&](int v) {
                        return std::min(255, static_cast<int>(std::lround(v * 255.0 / chars.a)));
                    };
                    r = straight(r), g = straight(g), b = straight(b);
                }
                expected[{r, g, b}] += chars.a;
            }
        }

        PackedSampleSource source;
        ASSERT_TRUE(packedSampleSourceFromBitmap(bitmap, 1.0, source));
        ColorHashTable table;
        ASSERT_TRUE(collectImageColors(source, table));
        EXPECT_EQ(table.colorCount(), expected.size());
        EXPECT_EQ(hashContents(table), expected);
    }
}

TEST(ColorHash, CollidingColoursStayApart)
{
    // Find colours that share a bucket and add them in turn.
    const std::size_t bucket = ColorHashTable::bucketOf(0x102030);
    std::vector<std::uint32_t> colliding;
    for (std::uint32_t rgb = 0; rgb < (1u << 24) && colliding.size() < 4; ++rgb) {
        if (ColorHashTable::bucketOf(rgb) == bucket) {
            colliding.push_back(rgb);
        }
    }
    ASSERT_EQ(colliding.size(), 4u);
    ColorHashTable table;
    ASSERT_TRUE(table.allocate());
    for (std::size_t i = 0; i < colliding.size(); ++i) {
        for (std::size_t k = 0; k <= i; ++k) {
            ASSERT_TRUE(
                table.add(colliding[i] & 0xFF, (colliding[i] >> 8) & 0xFF, colliding[i] >> 16, 10));
        }
    }
    const auto contents = hashContents(table);
    ASSERT_EQ(contents.size(), 4u);
    for (std::size_t i = 0; i < colliding.size(); ++i) {
        const RGB rgb{colliding[i] & 0xFF, (colliding[i] >> 8) & 0xFF, colliding[i] >> 16};
        EXPECT_EQ(contents.at(rgb), 10 * (i + 1));
    }
}

TEST(ColorHistogram, NoColoursIsReported)
{
    // Every pixel transparent: nothing to count.
    const KVBitmapPtr bitmap = stripes({{{10, 20, 30, 0}, 3}}, 4);
    PackedSampleSource source;
    ASSERT_TRUE(packedSampleSourceFromBitmap(bitmap, 1.0, source));
    ColorHashTable table;
    ASSERT_TRUE(collectImageColors(source, table));
    test::captureDiagnostics();
    const ColorHistogram histogram = histogramFromColorHash(table);
    EXPECT_EQ(test::capturedDiagnostics(), "\nzero colors specified for histogram");
    EXPECT_EQ(histogram.count, 0u);
}

ColorHistogram histogramOf(const std::vector<HistogramColor>& colors)
{
    ColorHistogram histogram;
    histogram.colors = allocateTable<HistogramColor>(colors.size());
    std::copy(colors.begin(), colors.end(), histogram.colors.get());
    histogram.count = colors.size();
    return histogram;
}

TEST(MedianCut, FewColoursAreKeptExactly)
{
    ColorHistogram histogram = histogramOf({{1, 2, 3, 5}, {200, 100, 0, 1}, {9, 9, 9, 2}});
    const Colormap colormap = medianCutColormap(histogram, 8);
    ASSERT_EQ(colormap.count, 3u);
    std::map<RGB, std::uint64_t> found;
    for (std::size_t i = 0; i < colormap.count; ++i) {
        const ColormapEntry& entry = colormap.colors[i];
        found[{entry.r, entry.g, entry.b}] = entry.count;
    }
    EXPECT_EQ(found,
              (std::map<RGB, std::uint64_t>{{{1, 2, 3}, 5}, {{200, 100, 0}, 1}, {{9, 9, 9}, 2}}));
}

TEST(MedianCut, SplitsAlongTheLargestLumaWeightedRange)
{
    // Red spans 100 (weighted 21.3), green 40 (weighted 28.6): the cut separates green levels.
    ColorHistogram histogram =
        histogramOf({{0, 0, 0, 1}, {100, 0, 0, 1}, {0, 40, 0, 1}, {100, 40, 0, 1}});
    const Colormap colormap = medianCutColormap(histogram, 2);
    ASSERT_EQ(colormap.count, 2u);
    std::map<RGB, std::uint64_t> found;
    for (std::size_t i = 0; i < 2; ++i) {
        found[{colormap.colors[i].r, colormap.colors[i].g, colormap.colors[i].b}] =
            colormap.colors[i].count;
    }
    EXPECT_EQ(found, (std::map<RGB, std::uint64_t>{{{50, 0, 0}, 2}, {{50, 40, 0}, 2}}));
}

TEST(MedianCut, KeepsEveryPixelAndSeparatesClusters)
{
    // Two tight clusters far apart, of 200 pixels each, so the median falls between them.
    const std::vector<HistogramColor> colors = {{10, 20, 30, 100},
                                                {240, 200, 10, 100},
                                                {11, 20, 30, 50},
                                                {240, 202, 10, 100},
                                                {12, 20, 30, 50}};
    ColorHistogram histogram = histogramOf(colors);
    for (const std::size_t size : {1u, 2u, 4u, 5u, 64u}) {
        ColorHistogram copy = histogramOf(colors);
        const Colormap colormap = medianCutColormap(copy, size);
        ASSERT_EQ(colormap.count, std::min<std::size_t>(size, colors.size()));
        std::uint64_t total = 0;
        for (std::size_t i = 0; i < colormap.count; ++i) {
            total += colormap.colors[i].count;
        }
        EXPECT_EQ(total, 400u) << size;
    }
    const Colormap two = medianCutColormap(histogram, 2);
    ASSERT_EQ(two.count, 2u);
    std::map<RGB, std::uint64_t> found;
    for (std::size_t i = 0; i < 2; ++i) {
        found[{two.colors[i].r, two.colors[i].g, two.colors[i].b}] = two.colors[i].count;
    }
    // Count-weighted means: red (1000 + 550 + 600) / 200 = 10.75, green (200 + 202) / 2.
    EXPECT_EQ(found, (std::map<RGB, std::uint64_t>{{{11, 20, 30}, 200}, {{240, 201, 10}, 200}}));
}

TEST(ColorSpectrum, PutsEachColourInTheBandOfItsLuvHue)
{
    const std::vector<std::pair<test::Samples, int>> rows = {
        {{220, 40, 30, 255}, 3}, {{30, 60, 210, 255}, 2}, {{128, 128, 128, 255}, 1}};
    const KVBitmapPtr bitmap = stripes(rows, 10, kTableLayouts[3]);
    const ColorSpectrum spectrum = createColorSpectrum(bitmap, 16);
    ASSERT_EQ(spectrum.count, 361u);

    const Matrix3 matrix = matrixFromChromaticities(sRGBChromaticities());
    std::uint64_t total = 0;
    for (std::size_t i = 0; i < 361; ++i) {
        total += spectrum.bands[i].quantity;
    }
    EXPECT_EQ(total, 60u);
    for (const auto& [samples, count] : rows) {
        // Decode with gamma 2.2 and take the Luv hue, with the library's atan2.
        const auto linear = [](int v) { return std::pow(v / 255.0, 2.2); };
        const ColorComponents xyz =
            rgbToXyz({linear(samples.r), linear(samples.g), linear(samples.b), 1.0}, matrix);
        const ColorComponents luv = xyzToLuv(xyz);
        const double chroma = std::hypot(luv.c1, luv.c2);
        std::size_t band = 360;
        if (chroma >= 0.01) {
            const double degrees = std::atan2(luv.c2, luv.c1) * 180.0 / std::numbers::pi;
            band =
                static_cast<std::size_t>(std::floor(std::fmod(degrees + 360.0, 360.0) + 0.5)) % 360;
        }
        const ColorSpectrumBand& found = spectrum.bands[band];
        EXPECT_EQ(found.quantity, static_cast<std::uint64_t>(count) * 10) << "band " << band;
        EXPECT_EQ(found.colors, 1u);
        EXPECT_NEAR(found.L, luv.c0, 1e-9);
        EXPECT_NEAR(found.u, luv.c1, 1e-9);
        EXPECT_NEAR(found.v, luv.c2, 1e-9);
        EXPECT_NEAR(found.chroma, chroma, 1e-9);
        EXPECT_NEAR(found.red, samples.r / 255.0, 1e-12);
    }
}

TEST(ColorSpectrum, RefusesBadParameters)
{
    const KVBitmapPtr bitmap = stripes({{{1, 2, 3, 255}, 1}}, 2);
    const KVBitmapPtr cmyk =
        makeTableBitmap(kTableLayouts[7], 2, 2, 8, KVColorSpace(KVColorSpaceModel::cmyk, "CMYK"));
    const struct {
        KVBitmapPtr bitmap;
        std::size_t size;
    } cases[] = {{nullptr, 16}, {bitmap, 0}, {bitmap, 4097}, {cmyk, 16}};
    for (const auto& c : cases) {
        test::captureDiagnostics();
        const ColorSpectrum spectrum = createColorSpectrum(c.bitmap, c.size);
        EXPECT_EQ(test::capturedDiagnostics(), "\nbad color spectrum parameter");
        EXPECT_TRUE(spectrum.empty());
    }
}

TEST(ColorSpectrum, DumpsOneLinePerBand)
{
    // Mid grey decoded with gamma 2.2: Y = 0.50196^2.2 = 0.21953, so L* = 116 Y^(1/3) - 16.
    const KVBitmapPtr bitmap = stripes({{{128, 128, 128, 255}, 2}}, 3, kTableLayouts[3]);
    const ColorSpectrum spectrum = createColorSpectrum(bitmap, 4);
    std::FILE* file = std::tmpfile();
    ASSERT_NE(file, nullptr);
    printColorSpectrum(spectrum, file);
    std::rewind(file);
    std::string text;
    for (int c = std::fgetc(file); c != EOF; c = std::fgetc(file)) {
        text += static_cast<char>(c);
    }
    std::fclose(file);

    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 361);
    EXPECT_EQ(text.rfind("\nspectrum[0] luv:0.000000,0.000000,0.000000 H,C,L: ", 0), 0u);
    const std::size_t last = text.rfind("\nspectrum[360] ");
    ASSERT_NE(last, std::string::npos);
    long index = 0;
    double L, u, v, H, C, lightness;
    unsigned long quantity = 0;
    ASSERT_EQ(std::sscanf(text.c_str() + last,
                          "\nspectrum[%ld] luv:%lf,%lf,%lf H,C,L: %lf,%lf,%lf qty:%lu", &index, &L,
                          &u, &v, &H, &C, &lightness, &quantity),
              8);
    const double expectedL = 116.0 * std::cbrt(std::pow(128.0 / 255.0, 2.2)) - 16.0;
    EXPECT_EQ(index, 360);
    EXPECT_NEAR(L, expectedL, 1e-5);
    EXPECT_NEAR(lightness, expectedL, 1e-5);
    EXPECT_NEAR(u, 0.0, 0.01);
    EXPECT_NEAR(v, 0.0, 0.01);
    EXPECT_EQ(quantity, 6u);
}

TEST(DominantColors, ChooseFrequentDistinctColourfulColours)
{
    const test::Samples red{200, 30, 30, 255}, nearRed{204, 32, 30, 255}, blue{30, 40, 200, 255},
        green{40, 180, 50, 255}, grey{120, 120, 120, 255}, darkBlue{5, 5, 30, 255};
    const KVBitmapPtr bitmap =
        stripes({{red, 10}, {grey, 8}, {blue, 6}, {nearRed, 5}, {green, 4}, {darkBlue, 9}}, 12);
    const auto rgbOf = [](const DominantColor& color) {
        return RGB{static_cast<int>(std::lround(color.rgb.c0 * 255)),
                   static_cast<int>(std::lround(color.rgb.c1 * 255)),
                   static_cast<int>(std::lround(color.rgb.c2 * 255))};
    };
    const RGB redRGB{200, 30, 30}, blueRGB{30, 40, 200}, greenRGB{40, 180, 50},
        nearRedRGB{204, 32, 30};

    // Grey fails the saturation floor and dark blue the lightness floor; the near red is within
    // 5 of red and is skipped.
    std::vector<DominantColor> colors = createDominantColorsWithCount(bitmap, 3, 0.3, 0.2, 5.0);
    ASSERT_EQ(colors.size(), 3u);
    EXPECT_EQ(rgbOf(colors[0]), redRGB);
    EXPECT_EQ(rgbOf(colors[1]), blueRGB);
    EXPECT_EQ(rgbOf(colors[2]), greenRGB);
    EXPECT_EQ(colors[0].quantity, 10u * 12 * 255);

    // Without a difference floor the near red counts as a colour of its own.
    colors = createDominantColorsWithCount(bitmap, 3, 0.3, 0.2, 0.0);
    ASSERT_EQ(colors.size(), 3u);
    EXPECT_EQ(rgbOf(colors[2]), nearRedRGB);

    // Asking for more than there are gives what there is.
    colors = createDominantColorsWithCount(bitmap, 10, 0.3, 0.2, 5.0);
    EXPECT_EQ(colors.size(), 3u);
    colors = createDominantColorsWithCount(bitmap, 10, 0.0, 0.0, 0.0);
    EXPECT_EQ(colors.size(), 6u);
    EXPECT_TRUE(createDominantColorsWithCount(bitmap, 0, 0.0, 0.0, 0.0).empty());

    // The Lab and LCh values are those of the colour decoded with gamma 2.2.
    const Matrix3 matrix = matrixFromChromaticities(sRGBChromaticities());
    const ColorComponents xyz =
        rgbToXyz(gammaDecode({200 / 255.0, 30 / 255.0, 30 / 255.0, 1.0}, 2.2), matrix);
    const ColorComponents lab = xyzToLab(xyz);
    EXPECT_NEAR(colors[0].lab.c0, lab.c0, 1e-9);
    EXPECT_NEAR(colors[0].lab.c1, lab.c1, 1e-9);
    EXPECT_NEAR(colors[0].lch.c0, lab.c0, 1e-9);
}

TEST(QuantisedSpectrum, ReportsEachAllocationThatFails)
{
    const KVBitmapPtr bitmap = stripes({{{200, 30, 30, 255}, 2}, {{20, 30, 230, 255}, 2}}, 4);
    // Allocations in order: hash buckets, the first chunk of nodes, the histogram, the boxes and
    // the colours of the colormap, the spectrum's bands.
    const char* const messages[] = {
        "\nout of memory allocating hash table", "\nout of memory computing hash table",
        "\nout of memory generating histogram",  "\nout of memory making colormap",
        "\nout of memory making colormap",       "\nout of memory making color spectrum",
    };
    for (long successful = 0; successful < static_cast<long>(std::size(messages)); ++successful) {
        const UseTableMemory failing(
            std::make_shared<TableMemory>(TableMemoryOptions{.failAllocationAfter = successful}));
        test::captureDiagnostics();
        const ColorSpectrum spectrum = createColorSpectrum(bitmap, 8);
        const std::string printed = test::capturedDiagnostics();
        EXPECT_TRUE(spectrum.empty());
        EXPECT_EQ(printed, messages[successful]) << successful;
    }
}

} // namespace
} // namespace tintorra
