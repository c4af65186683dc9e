#include "ColorTableTestSupport.h"
#include "colour/ColorMatrices.h"
#include "colour/IccProfiles.h"
#include "colour/WorkingSpaces.h"
#include "engine/ColorTable.h"
#include "engine/ColorTableBuild.h"
#include "engine/ColorTableOrder.h"
#include "engine/TableAllocation.h"
#include "support/DiagnosticsCapture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <numbers>
#include <ostream>
#include <string>
#include <vector>

namespace tintorra {
namespace {

using test::kTableLayouts;
using test::makeTableBitmap;
using test::TableLayout;

Matrix3 sRGBMatrix()
{
    return matrixFromChromaticities(sRGBChromaticities());
}

// Checks a table against the brute-force reference of its image: one entry per distinct colour,
// with the colour's offsets in scan order as its run, the conversion of the colour as its
// values, the runs laid out in packed colour order, and the entries in the table order.
void expectTableMatchesReference(const LChColorTable& table, const KVBitmapPtr& bitmap,
                                 double gamma, ColorSpaceModel mode, const Matrix3& matrix)
{
    const PixelManipulationOffsets offsets = pixelManipulationOffsetsWithImageGamma(bitmap, gamma);
    const auto reference = test::referenceColors(offsets);
    const std::uint64_t pixels =
        static_cast<std::uint64_t>(bitmap->pixelsWide() * bitmap->pixelsHigh());

    EXPECT_EQ(table.colorSpaceModel, mode);
    ASSERT_EQ(table.count, reference.size());
    ASSERT_EQ(table.locationCount, pixels);

    std::uint64_t counted = 0;
    std::vector<std::pair<std::uint32_t, std::uint32_t>> runStartAndColor;
    for (std::uint64_t i = 0; i < table.count; ++i) {
        const color_table_lch_entry_info& entry = table.colors[i];
        ASSERT_GT(entry.locationCount, 0u);
        ASSERT_LE(std::uint64_t{entry.firstLocation} + entry.locationCount, pixels);
        counted += entry.locationCount;

        const std::uint32_t* run = table.locations.get() + entry.firstLocation;
        const std::uint32_t packed = test::packedAtOffset(offsets, run[0]);
        const auto found = reference.find(packed);
        ASSERT_NE(found, reference.end());
        const std::vector<std::uint32_t> locations(run, run + entry.locationCount);
        EXPECT_EQ(locations, found->second.offsets) << "colour " << std::hex << packed;
        runStartAndColor.emplace_back(entry.firstLocation, packed);

        const test::ExpectedEntry expected =
            test::expectedEntry(found->second.linear, mode, matrix);
        EXPECT_FLOAT_EQ(entry.hue, static_cast<float>(expected.hue));
        EXPECT_FLOAT_EQ(entry.chroma, static_cast<float>(expected.chroma));
        EXPECT_FLOAT_EQ(entry.lightness, static_cast<float>(expected.lightness));
        EXPECT_FLOAT_EQ(entry.alpha, static_cast<float>(expected.alpha));
        EXPECT_FLOAT_EQ(entry.saturation, static_cast<float>(expected.saturation));

        if (i > 0) {
            const color_table_lch_entry_info& previous = table.colors[i - 1];
            EXPECT_TRUE(colorTableEntryLess(previous, entry)) << "entries " << i - 1 << ", " << i;
            EXPECT_LE(previous.hue, entry.hue);
            if (previous.hue == entry.hue) {
                EXPECT_LE(previous.lightness, entry.lightness);
                if (previous.lightness == entry.lightness) {
                    EXPECT_LE(previous.chroma, entry.chroma);
                }
            }
        }
    }
    EXPECT_EQ(counted, pixels);

    // The runs tile the locations in ascending packed colour order.
    std::sort(runStartAndColor.begin(), runStartAndColor.end());
    for (std::size_t i = 1; i < runStartAndColor.size(); ++i) {
        EXPECT_LT(runStartAndColor[i - 1].second, runStartAndColor[i].second);
    }
}

struct LayoutCase {
    TableLayout layout;
    bool varyAlpha;
};

void PrintTo(const LayoutCase& c, std::ostream* os)
{
    *os << c.layout.name << (c.varyAlpha ? ", varying alpha" : "");
}

class ColorTableLayouts : public testing::TestWithParam<LayoutCase> {};

TEST_P(ColorTableLayouts, MatchesTheBruteForceReferenceInEveryMode)
{
    const LayoutCase& param = GetParam();
    const KVBitmapPtr bitmap = makeTableBitmap(param.layout, 37, 23);
    ASSERT_TRUE(bitmap);
    test::fillRandom(bitmap, 17, 12, param.varyAlpha);
    for (const ColorSpaceModel mode : kColorSpaceModels) {
        for (const double gamma : {1.0 / 2.2, 1.0}) {
            SCOPED_TRACE(testing::Message() << param.layout.name << " mode "
                                            << colorSpaceModelNumber(mode) << " gamma " << gamma);
            const LChColorTable table = createLChColorTableWithImageGamma(bitmap, gamma, mode);
            expectTableMatchesReference(table, bitmap, gamma, mode, sRGBMatrix());
        }
    }
}

std::vector<LayoutCase> layoutCases()
{
    std::vector<LayoutCase> cases;
    for (const TableLayout& layout : kTableLayouts) {
        cases.push_back({layout, false});
        if (layout.hasAlpha) {
            cases.push_back({layout, true});
        }
    }
    return cases;
}

INSTANTIATE_TEST_SUITE_P(AllLayouts, ColorTableLayouts, testing::ValuesIn(layoutCases()),
                         [](const testing::TestParamInfo<LayoutCase>& info) {
                             std::string name = info.param.layout.name;
                             name += info.param.varyAlpha ? " varying alpha" : "";
                             for (char& c : name) {
                                 if (!std::isalnum(static_cast<unsigned char>(c))) {
                                     c = '_';
                                 }
                             }
                             return name;
                         });

TEST(ColorTable, DoesNotDependOnTheNumberOfThreads)
{
    for (const bool varyAlpha : {false, true}) {
        const KVBitmapPtr bitmap = makeTableBitmap(kTableLayouts[7], 61, 47);
        test::fillRandom(bitmap, 5, 40, varyAlpha);
        const LChColorTable single =
            detail::buildColorTable(bitmap, 0.45, ColorSpaceModel::LChuv, 1);
        ASSERT_GT(single.count, 1u);
        for (const unsigned threads : {2u, 3u, 5u}) {
            SCOPED_TRACE(testing::Message() << threads << " threads, varying alpha " << varyAlpha);
            const LChColorTable split =
                detail::buildColorTable(bitmap, 0.45, ColorSpaceModel::LChuv, threads);
            ASSERT_EQ(split.count, single.count);
            ASSERT_EQ(split.locationCount, single.locationCount);
            EXPECT_TRUE(std::equal(single.locations.get(),
                                   single.locations.get() + single.locationCount,
                                   split.locations.get()));
            EXPECT_EQ(0, std::memcmp(single.colors.get(), split.colors.get(),
                                     single.count * sizeof(color_table_lch_entry_info)));
        }
    }
}

TEST(ColorTable, CrowdedColourNeighbourhoodsAndConstantAlpha)
{
    // Every pixel shares blue and the high bits of green, so all of them fall together while the
    // table sorts them; and a constant alpha other than 255.
    const struct {
        TableLayout layout;
        std::uint8_t alpha;
    } cases[] = {{kTableLayouts[3], 255}, {kTableLayouts[7], 77}, {kTableLayouts[9], 200}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.layout.name);
        const KVBitmapPtr bitmap = makeTableBitmap(c.layout, 80, 60);
        const PixelManipulationOffsets offsets =
            pixelManipulationOffsetsWithImageGamma(bitmap, 1.0);
        std::mt19937 random(99);
        std::uniform_int_distribution<int> byte(0, 255);
        for (std::int64_t y = 0; y < 60; ++y) {
            for (std::int64_t x = 0; x < 80; ++x) {
                // Few enough reds that colours repeat.
                const auto red = static_cast<std::uint8_t>(byte(random) & 0x3C);
                const auto green = static_cast<std::uint8_t>(0x50 | (byte(random) & 0x3));
                test::writeSamples(offsets, x, y, {red, green, 0x80, c.alpha});
            }
        }
        for (const ColorSpaceModel mode : {ColorSpaceModel::LChuv, ColorSpaceModel::HSB}) {
            const LChColorTable table = createLChColorTableWithImageGamma(bitmap, 1.0, mode);
            expectTableMatchesReference(table, bitmap, 1.0, mode, sRGBMatrix());
            EXPECT_EQ(table.count, 64u);
        }
    }
}

TEST(ColorTable, SingleColourImageHasOneEntryOfEveryPixel)
{
    const KVBitmapPtr bitmap = makeTableBitmap(kTableLayouts[3], 9, 7);
    const PixelManipulationOffsets offsets = pixelManipulationOffsetsWithImageGamma(bitmap, 1.0);
    for (std::int64_t y = 0; y < 7; ++y) {
        for (std::int64_t x = 0; x < 9; ++x) {
            test::writeSamples(offsets, x, y, {200, 40, 10, 255});
        }
    }
    const LChColorTable table =
        createLChColorTableWithImageGamma(bitmap, 1.0, ColorSpaceModel::HSB);
    ASSERT_EQ(table.count, 1u);
    EXPECT_EQ(table.colors[0].firstLocation, 0u);
    EXPECT_EQ(table.colors[0].locationCount, 63u);
    for (std::uint32_t i = 0; i < 63; ++i) {
        EXPECT_EQ(table.locations[i], (i / 9) * 27 + (i % 9) * 3);
    }
    // HSB of (200, 40, 10) / 255 by hand: red is the maximum and blue the minimum, so the hue is
    // (40 - 10) / (200 - 10) / 6, saturation 190 / 200, brightness 200 / 255.
    EXPECT_FLOAT_EQ(table.colors[0].hue, static_cast<float>(30.0 / 190.0 / 6.0));
    EXPECT_FLOAT_EQ(table.colors[0].chroma, 0.95f);
    EXPECT_FLOAT_EQ(table.colors[0].lightness, static_cast<float>(200.0 / 255.0));
    EXPECT_EQ(table.colors[0].alpha, 1.0f);
}

TEST(ColorTable, OnePixelImageHasOneColour)
{
    const KVBitmapPtr bitmap = makeTableBitmap(kTableLayouts[7], 1, 1);
    const LChColorTable table =
        createLChColorTableWithImageGamma(bitmap, 1.0, ColorSpaceModel::LChuv);
    ASSERT_EQ(table.count, 1u);
    EXPECT_EQ(table.colors[0].locationCount, 1u);
    EXPECT_EQ(table.locations[0], 0u);
}

TEST(ColorTable, TransparentPixelKeepsItsEntry)
{
    const KVBitmapPtr bitmap = makeTableBitmap(kTableLayouts[7], 4, 1);
    const PixelManipulationOffsets offsets = pixelManipulationOffsetsWithImageGamma(bitmap, 1.0);
    test::writeSamples(offsets, 0, 0, {10, 200, 30, 255});
    test::writeSamples(offsets, 1, 0, {10, 200, 30, 0});
    test::writeSamples(offsets, 2, 0, {10, 200, 30, 255});
    test::writeSamples(offsets, 3, 0, {10, 200, 30, 0});
    const LChColorTable table =
        createLChColorTableWithImageGamma(bitmap, 1.0, ColorSpaceModel::LChuv);
    ASSERT_EQ(table.count, 2u);
    // Same colour, so the same hue, lightness and chroma: the transparent run (packed colour
    // with alpha 0, so the lower one) comes first.
    EXPECT_EQ(table.colors[0].alpha, 0.0f);
    EXPECT_EQ(table.colors[1].alpha, 1.0f);
    EXPECT_EQ(table.colors[0].firstLocation, 0u);
    EXPECT_EQ(table.locations[0], 4u);
    EXPECT_EQ(table.locations[1], 12u);
    EXPECT_EQ(table.locations[2], 0u);
    EXPECT_EQ(table.locations[3], 8u);
}

TEST(ColorTable, PremultipliedSamplesAreDividedByAlpha)
{
    // Stored (64, 32, 16) at alpha 128 is the straight colour (127.5, 63.75, 31.875) / 255.
    const KVBitmapPtr bitmap = makeTableBitmap(kTableLayouts[8], 1, 1);
    test::writeSamples(pixelManipulationOffsetsWithImageGamma(bitmap, 1.0), 0, 0,
                       {64, 32, 16, 128});
    const LChColorTable table =
        createLChColorTableWithImageGamma(bitmap, 1.0, ColorSpaceModel::HSB);
    ASSERT_EQ(table.count, 1u);
    EXPECT_FLOAT_EQ(table.colors[0].lightness, 0.5f);
    EXPECT_FLOAT_EQ(table.colors[0].chroma, 0.75f);
    EXPECT_FLOAT_EQ(table.colors[0].alpha, static_cast<float>(128.0 / 255.0));
}

TEST(ColorTable, LinearisesWithTheClampedGamma)
{
    // Gamma 0.25 is used as 1/3, so a stored 0.5 becomes 0.5^3 = 0.125 linear; grey, so the HSB
    // brightness shows it.
    const KVBitmapPtr bitmap = makeTableBitmap(kTableLayouts[0], 2, 2);
    const PixelManipulationOffsets offsets = pixelManipulationOffsetsWithImageGamma(bitmap, 1.0);
    for (std::int64_t i = 0; i < 4; ++i) {
        test::writeSamples(offsets, i % 2, i / 2, {51, 51, 51, 255});
    }
    const LChColorTable table =
        createLChColorTableWithImageGamma(bitmap, 0.25, ColorSpaceModel::HSB);
    ASSERT_EQ(table.count, 1u);
    EXPECT_FLOAT_EQ(table.colors[0].lightness, static_cast<float>(std::pow(0.2, 3.0)));
    EXPECT_EQ(table.colors[0].locationCount, 4u);
}

TEST(ColorTable, UsesTheMatrixOfTheImagesColourSpace)
{
    std::ifstream file("/usr/share/color/icc/compatibleWithAdobeRGB1998.icc", std::ios::binary);
    if (!file) {
        GTEST_SKIP() << "the Adobe RGB compatible profile of icc-profiles-free is not installed";
    }
    const std::vector<std::uint8_t> bytes((std::istreambuf_iterator<char>(file)),
                                          std::istreambuf_iterator<char>());
    const std::optional<KVColorSpace> space = colorSpaceFromIccProfile(bytes);
    ASSERT_TRUE(space);
    Matrix3 matrix{};
    matrixFromColorSpace(matrix, &*space);
    ASSERT_NE(matrix, sRGBMatrix());

    const KVBitmapPtr bitmap = makeTableBitmap(kTableLayouts[3], 13, 11, 8, *space);
    test::fillRandom(bitmap, 3, 8, false);
    for (const ColorSpaceModel mode : {ColorSpaceModel::LChuv, ColorSpaceModel::LChab}) {
        const LChColorTable table = createLChColorTableWithImageGamma(bitmap, 1.0 / 2.2, mode);
        expectTableMatchesReference(table, bitmap, 1.0 / 2.2, mode, matrix);
    }
}

TEST(ColorTable, SixteenBitSamplesAreReadByTheirHighBytes)
{
    for (const TableLayout& layout : {kTableLayouts[3], kTableLayouts[7]}) {
        SCOPED_TRACE(layout.name);
        const KVBitmapPtr wide = makeTableBitmap(layout, 19, 8, 16);
        const KVBitmapPtr narrow = makeTableBitmap(layout, 19, 8, 8);
        test::fillRandom(wide, 11, 6, layout.hasAlpha);
        test::fillRandom(narrow, 11, 6, layout.hasAlpha);
        // Samples are written as byte * 257, so their low bytes equal the high ones; break that
        // so a reader of low bytes would be seen.
        for (std::size_t i = 0; i < wide->planeBytes(); i += 2) {
            wide->bitmapData()[i] ^= 0x5A;
        }
        const LChColorTable wideTable =
            createLChColorTableWithImageGamma(wide, 0.5, ColorSpaceModel::LChab);
        const LChColorTable narrowTable =
            createLChColorTableWithImageGamma(narrow, 0.5, ColorSpaceModel::LChab);
        ASSERT_EQ(wideTable.count, narrowTable.count);
        for (std::uint64_t i = 0; i < wideTable.count; ++i) {
            const color_table_lch_entry_info& a = wideTable.colors[i];
            const color_table_lch_entry_info& b = narrowTable.colors[i];
            EXPECT_EQ(a.hue, b.hue);
            EXPECT_EQ(a.chroma, b.chroma);
            EXPECT_EQ(a.lightness, b.lightness);
            EXPECT_EQ(a.alpha, b.alpha);
            ASSERT_EQ(a.locationCount, b.locationCount);
            for (std::uint32_t k = 0; k < a.locationCount; ++k) {
                // Same pixel: the 16-bit offset is twice the 8-bit one (no row padding here).
                EXPECT_EQ(wideTable.locations[a.firstLocation + k],
                          2 * narrowTable.locations[b.firstLocation + k]);
            }
        }
    }
}

TEST(ColorTable, UnsupportedImagesGiveAnEmptyTableOfTheirMode)
{
    const LChColorTable none =
        createLChColorTableWithImageGamma(nullptr, 1.0, ColorSpaceModel::HCL);
    EXPECT_TRUE(none.empty());
    EXPECT_EQ(none.colorSpaceModel, ColorSpaceModel::HCL);

    const KVBitmapPtr cmyk =
        makeTableBitmap(kTableLayouts[7], 4, 4, 8, KVColorSpace(KVColorSpaceModel::cmyk, "CMYK"));
    ASSERT_TRUE(cmyk);
    const LChColorTable table =
        createLChColorTableWithImageGamma(cmyk, 1.0, ColorSpaceModel::LChab);
    EXPECT_TRUE(table.empty());
    EXPECT_EQ(table.colorSpaceModel, ColorSpaceModel::LChab);
    EXPECT_EQ(table.colors, nullptr);
    EXPECT_EQ(table.locations, nullptr);
}

TEST(ColorTable, ThirtyTwoBitOffsetsBoundTheImage)
{
    constexpr std::int64_t kLast = 0xFFFFFFFFLL;
    const struct {
        std::int64_t wide, high, bytesPerRow, bytesPerPixel;
        bool addressable;
    } cases[] = {
        {6000, 4000, 24000, 4, true},
        {1, 1, 4, 4, true},
        // The last pixel's offset is exactly the largest 32-bit value, or one beyond it.
        {1, 2, kLast, 1, true},
        {1, 2, kLast + 1, 1, false},
        {2, 1, 8, kLast, true},
        {2, 1, 8, kLast + 1, false},
        // 32767 rows of 2^17 bytes and 32767 pixels of 4 bytes: 2^32 - 4.
        {32768, 32768, 131072, 4, true},
        {32768, 32769, 131072, 4, false},
        // 2^32 one-byte pixels would fit their offsets but not a 32-bit pixel count.
        {65536, 65536, 65536, 1, false},
        {65535, 65537, 65535, 1, true},
        {0, 10, 10, 1, false},
        {10, 0, 10, 1, false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(colorTableCanAddress(c.wide, c.high, c.bytesPerRow, c.bytesPerPixel),
                  c.addressable)
            << c.wide << " x " << c.high << ", " << c.bytesPerRow << " bytes per row";
    }
}

TEST(ColorTable, ReportsEachAllocationThatFails)
{
    const KVBitmapPtr bitmap = makeTableBitmap(kTableLayouts[7], 16, 16);
    test::fillRandom(bitmap, 9, 10, false);
    // Allocations in order on one thread: bucket counts, the low colour bits of every pixel, the
    // locations, the scatter's line buffers and band starts, the distinct colours, a bucket's
    // scratch and counters, and the entries twice (the second buffer is the sort's).
    const char* const messages[] = {
        "Couldn't get memory for sortable pixel table\n",
        "Couldn't get memory for sortable pixel table\n",
        "Couldn't get memory for pixel location table\n",
        "Couldn't get memory for sortable pixel table\n",
        "Couldn't get memory for sortable pixel table\n",
        "Couldn't get memory for rgb color table\n",
        "Couldn't get memory for sortable pixel table\n",
        "Couldn't get memory for sortable pixel table\n",
        "Couldn't get memory for final color table\n",
        "Couldn't get memory for final color table\n",
    };
    for (long successful = 0; successful < static_cast<long>(std::size(messages)); ++successful) {
        SCOPED_TRACE(successful);
        const UseTableMemory failing(
            std::make_shared<TableMemory>(TableMemoryOptions{.failAllocationAfter = successful}));
        test::captureDiagnostics();
        const LChColorTable table = detail::buildColorTable(bitmap, 1.0, ColorSpaceModel::LChuv, 1);
        const std::string printed = test::capturedDiagnostics();
        EXPECT_TRUE(table.empty());
        EXPECT_EQ(table.colors, nullptr);
        EXPECT_EQ(table.locations, nullptr);
        EXPECT_EQ(printed, messages[successful]);
    }
    // With every allocation granted the table is complete.
    const UseTableMemory granting(std::make_shared<TableMemory>(
        TableMemoryOptions{.failAllocationAfter = static_cast<long>(std::size(messages))}));
    const LChColorTable table = detail::buildColorTable(bitmap, 1.0, ColorSpaceModel::LChuv, 1);
    EXPECT_FALSE(table.empty());
}

TEST(ColorTableOrder, FloatKeysOrderLikeTheFloats)
{
    const float values[] = {-INFINITY, -3.5f, -1e-30f, -0.0f, 0.0f, 1e-30f, 0.25f, 3.5f, INFINITY};
    for (std::size_t i = 0; i < std::size(values); ++i) {
        for (std::size_t k = 0; k < std::size(values); ++k) {
            EXPECT_EQ(orderedFloatBits(values[i]) < orderedFloatBits(values[k]),
                      values[i] < values[k])
                << values[i] << " vs " << values[k];
        }
    }
}

TEST(ColorTableOrder, SortsByHueThenLightnessThenChroma)
{
    // Random keys from a few values, so that many entries tie on hue and on lightness.
    std::mt19937 random(23);
    std::uniform_int_distribution<int> small(0, 5);
    const float hues[] = {-3.0f, -0.0f, 0.0f, 0.5f, 3.0f, 3.1f};
    std::vector<color_table_lch_entry_info> entries;
    // Enough entries that the radix passes split them into several runs.
    for (std::uint32_t i = 0; i < 40000; ++i) {
        entries.push_back({hues[small(random)], static_cast<float>(small(random)),
                           static_cast<float>(small(random)) * 10.0f, 1.0f, 0.0f, i, 1});
    }
    std::shuffle(entries.begin(), entries.end(), random);
    std::vector<color_table_lch_entry_info> expected = entries;
    std::stable_sort(expected.begin(), expected.end(), [](const auto& a, const auto& b) {
        if (a.hue != b.hue) {
            return a.hue < b.hue;
        }
        if (a.lightness != b.lightness) {
            return a.lightness < b.lightness;
        }
        if (a.chroma != b.chroma) {
            return a.chroma < b.chroma;
        }
        return a.firstLocation < b.firstLocation;
    });
    for (const unsigned threads : {1u, 2u, 3u}) {
        std::vector<color_table_lch_entry_info> source = entries;
        std::vector<color_table_lch_entry_info> sorted(entries.size());
        sortColorTableEntries(source.data(), sorted.data(), sorted.size(), threads);
        for (std::size_t i = 0; i < sorted.size(); ++i) {
            ASSERT_EQ(sorted[i].firstLocation, expected[i].firstLocation) << "at " << i;
        }
    }
}

} // namespace
} // namespace tintorra
