#include "ColorTableTestSupport.h"
#include "colour/ColorMatrices.h"
#include "colour/WorkingSpaces.h"
#include "engine/ColorTable.h"
#include "engine/HueSpectrum.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <vector>

namespace tintorra {
namespace {

constexpr double kPi = std::numbers::pi;

color_table_lch_entry_info entry(float hue, float chroma, float lightness, float alpha,
                                 std::uint32_t count)
{
    return {hue, chroma, lightness, alpha, 0.0f, 0, count};
}

LChColorTable tableOf(ColorSpaceModel mode, const std::vector<color_table_lch_entry_info>& entries)
{
    LChColorTable table;
    table.colorSpaceModel = mode;
    table.count = entries.size();
    table.colors = allocateTable<color_table_lch_entry_info>(entries.size());
    std::copy(entries.begin(), entries.end(), table.colors.get());
    return table;
}

TEST(HueSpectrumPlace, RoundsWholeDegreesHalfUpAndWrapsToBandZero)
{
    const float radians10 = static_cast<float>(10.0 * kPi / 180.0);
    const float radians3596 = static_cast<float>(359.6 * kPi / 180.0);
    const float radians3594 = static_cast<float>(359.4 * kPi / 180.0);
    const float minusQuarter = static_cast<float>(-kPi / 2);
    const float minusFifthDegree = static_cast<float>(-0.2 * kPi / 180.0);
    const struct {
        ColorSpaceModel mode;
        float hue;
        float chroma;
        std::size_t band;
        double hueInBand;
    } cases[] = {
        {ColorSpaceModel::LChuv, radians10, 5.0f, 10, radians10},
        {ColorSpaceModel::LChab, minusQuarter, 5.0f, 270,
         static_cast<double>(minusQuarter) + 2 * kPi},
        // 359.6 degrees rounds to 360, which is band 0 one period lower.
        {ColorSpaceModel::LChuv, radians3596, 5.0f, 0, static_cast<double>(radians3596) - 2 * kPi},
        {ColorSpaceModel::LChuv, radians3594, 5.0f, 359, radians3594},
        {ColorSpaceModel::LChab, minusFifthDegree, 5.0f, 0, minusFifthDegree},
        // Fractions of the circle: 0.0625 is 22.5 degrees exactly, which rounds up.
        {ColorSpaceModel::HCL, 0.0625f, 0.5f, 23, 0.0625},
        {ColorSpaceModel::HSB, 0.1875f, 0.5f, 68, 0.1875},
        {ColorSpaceModel::HSB, 1.0f, 0.5f, 0, 0.0},
        {ColorSpaceModel::HSL, -0.25f, 0.5f, 270, 0.75},
        {ColorSpaceModel::HSB, 0.999f, 0.5f, 0, static_cast<double>(0.999f) - 1.0},
        // Less chroma than 0.01 is achromatic, with hue 0; 0.01 itself is not.
        {ColorSpaceModel::LChuv, radians10, 0.0099f, 360, 0.0},
        {ColorSpaceModel::HSB, 0.5f, 0.0f, 360, 0.0},
        {ColorSpaceModel::LChuv, radians10, 0.01f, 10, radians10},
    };
    for (const auto& c : cases) {
        const SpectrumPlace place = spectrumPlaceOfEntry(entry(c.hue, c.chroma, 50, 1, 1), c.mode);
        EXPECT_EQ(place.band, c.band)
            << "mode " << colorSpaceModelNumber(c.mode) << " hue " << c.hue;
        EXPECT_NEAR(place.hue, c.hueInBand, 1e-12)
            << "mode " << colorSpaceModelNumber(c.mode) << " hue " << c.hue;
    }
}

TEST(HueSpectrum, BandsHoldCountWeightedStatistics)
{
    const float hue = static_cast<float>(100.2 * kPi / 180.0);
    const float nearHue = static_cast<float>(99.7 * kPi / 180.0);
    const LChSpectrum spectrum = createLChSpectrumFromLChColorTable(tableOf(
        ColorSpaceModel::LChuv, {entry(hue, 20, 10, 1.0f, 1), entry(nearHue, 40, 50, 0.5f, 3),
                                 entry(hue, 60, 90, 0.0f, 100), entry(1.0f, 0.001f, 30, 1.0f, 7)}));
    ASSERT_EQ(spectrum.count, 361u);
    const LChSpectrumBand& band = spectrum.bands[100];
    // The transparent entry adds nothing.
    EXPECT_EQ(band.count, 4u);
    EXPECT_FLOAT_EQ(band.lightnessMinimum, 10.0f);
    EXPECT_FLOAT_EQ(band.lightnessMaximum, 50.0f);
    EXPECT_FLOAT_EQ(band.lightnessMean, 40.0f);
    EXPECT_FLOAT_EQ(band.chromaMinimum, 20.0f);
    EXPECT_FLOAT_EQ(band.chromaMaximum, 40.0f);
    EXPECT_FLOAT_EQ(band.chromaMean, 35.0f);
    EXPECT_FLOAT_EQ(band.alphaMinimum, 0.5f);
    EXPECT_FLOAT_EQ(band.alphaMaximum, 1.0f);
    EXPECT_FLOAT_EQ(band.alphaMean, 0.625f);
    EXPECT_FLOAT_EQ(band.hueMinimum, nearHue);
    EXPECT_FLOAT_EQ(band.hueMaximum, hue);
    EXPECT_FLOAT_EQ(band.hueMean, static_cast<float>((hue + 3.0 * nearHue) / 4.0));

    const LChSpectrumBand& grey = spectrum.bands[360];
    EXPECT_EQ(grey.count, 7u);
    EXPECT_EQ(grey.hueMean, 0.0f);
    EXPECT_FLOAT_EQ(grey.lightnessMean, 30.0f);

    std::uint64_t total = 0;
    for (std::size_t i = 0; i < 361; ++i) {
        total += spectrum.bands[i].count;
    }
    EXPECT_EQ(total, 11u);
}

TEST(HueSpectrum, EmptyTableGivesZeroBands)
{
    const LChSpectrum spectrum = createLChSpectrumFromLChColorTable(LChColorTable{});
    ASSERT_EQ(spectrum.count, 361u);
    for (std::size_t i = 0; i < 361; ++i) {
        EXPECT_EQ(spectrum.bands[i].count, 0u);
        EXPECT_EQ(spectrum.bands[i].lightnessMean, 0.0f);
    }
}

// The band of a pixel worked out from its linear colour, independently of the table: degrees of
// the hue by the library's fmod, rounded half up, 360 folded to 0; 360 for chroma below 0.01.
std::size_t referenceBand(double hue, double chroma, ColorSpaceModel mode)
{
    if (static_cast<float>(chroma) < 0.01f) {
        return 360;
    }
    double degrees = isLchColorMode(mode) ? static_cast<float>(hue) * 180.0 / kPi
                                          : static_cast<float>(hue) * 360.0;
    degrees = std::fmod(std::fmod(degrees, 360.0) + 360.0, 360.0);
    const auto band = static_cast<std::size_t>(std::floor(degrees + 0.5));
    return band == 360 ? 0 : band;
}

TEST(HueSpectrum, AgreesWithPixelByPixelStatisticsOfAnImage)
{
    const KVBitmapPtr bitmap = test::makeTableBitmap(test::kTableLayouts[7], 41, 29);
    test::fillRandom(bitmap, 31, 60, true);
    const Matrix3 matrix = matrixFromChromaticities(sRGBChromaticities());
    const PixelManipulationOffsets offsets = pixelManipulationOffsetsWithImageGamma(bitmap, 0.45);
    const auto reference = test::referenceColors(offsets);

    for (const ColorSpaceModel mode : kColorSpaceModels) {
        SCOPED_TRACE(colorSpaceModelNumber(mode));
        struct Expected {
            std::uint64_t count = 0;
            double lightnessSum = 0.0;
            float lightnessMinimum = INFINITY, lightnessMaximum = -INFINITY;
            float chromaMinimum = INFINITY, chromaMaximum = -INFINITY;
        };
        std::array<Expected, 361> expected{};
        std::uint64_t transparent = 0;
        for (const auto& [packed, color] : reference) {
            const test::ExpectedEntry values = test::expectedEntry(color.linear, mode, matrix);
            if (static_cast<float>(values.alpha) == 0.0f) {
                transparent += color.offsets.size();
                continue;
            }
            Expected& band = expected[referenceBand(values.hue, values.chroma, mode)];
            const float lightness = static_cast<float>(values.lightness);
            const float chroma = static_cast<float>(values.chroma);
            band.count += color.offsets.size();
            band.lightnessSum += lightness * static_cast<double>(color.offsets.size());
            band.lightnessMinimum = std::min(band.lightnessMinimum, lightness);
            band.lightnessMaximum = std::max(band.lightnessMaximum, lightness);
            band.chromaMinimum = std::min(band.chromaMinimum, chroma);
            band.chromaMaximum = std::max(band.chromaMaximum, chroma);
        }
        ASSERT_GT(transparent, 0u);

        const LChColorTable table = createLChColorTableWithImageGamma(bitmap, 0.45, mode);
        const LChSpectrum spectrum = createLChSpectrumFromLChColorTable(table);
        ASSERT_EQ(spectrum.count, 361u);
        std::uint64_t total = 0;
        for (std::size_t i = 0; i < 361; ++i) {
            const LChSpectrumBand& band = spectrum.bands[i];
            total += band.count;
            ASSERT_EQ(band.count, expected[i].count) << "band " << i;
            if (band.count == 0) {
                continue;
            }
            EXPECT_EQ(band.lightnessMinimum, expected[i].lightnessMinimum);
            EXPECT_EQ(band.lightnessMaximum, expected[i].lightnessMaximum);
            EXPECT_EQ(band.chromaMinimum, expected[i].chromaMinimum);
            EXPECT_EQ(band.chromaMaximum, expected[i].chromaMaximum);
            const double mean = expected[i].lightnessSum / static_cast<double>(expected[i].count);
            EXPECT_NEAR(band.lightnessMean, mean, 1e-5 * std::max(1.0, mean));
        }
        EXPECT_EQ(total + transparent, static_cast<std::uint64_t>(41 * 29));
    }
}

TEST(HueSpectrum, GreyPixelsLandInTheAchromaticBand)
{
    const KVBitmapPtr bitmap = test::makeTableBitmap(test::kTableLayouts[3], 5, 3);
    const PixelManipulationOffsets offsets = pixelManipulationOffsetsWithImageGamma(bitmap, 1.0);
    for (std::int64_t i = 0; i < 15; ++i) {
        const auto level = static_cast<std::uint8_t>(i * 17);
        test::writeSamples(offsets, i % 5, i / 5, {level, level, level, 255});
    }
    for (const ColorSpaceModel mode : kColorSpaceModels) {
        const LChSpectrum spectrum = createLChSpectrumFromLChColorTable(
            createLChColorTableWithImageGamma(bitmap, 1.0, mode));
        EXPECT_EQ(spectrum.bands[360].count, 15u) << "mode " << colorSpaceModelNumber(mode);
        EXPECT_EQ(spectrum.bands[360].hueMaximum, 0.0f);
    }
}

} // namespace
} // namespace tintorra
