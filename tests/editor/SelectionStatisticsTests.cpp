#include "colour/KVColorGamut.h"
#include "colour/WorkingSpaces.h"
#include "editor/SelectionStatistics.h"
#include "engine/TableAllocation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <ostream>

namespace tintorra {
namespace {

LChSpectrum emptySpectrum()
{
    LChSpectrum spectrum;
    spectrum.count = kSpectrumBandCount;
    spectrum.bands = allocateTable<LChSpectrumBand>(kSpectrumBandCount);
    std::memset(spectrum.bands.get(), 0, kSpectrumBandCount * sizeof(LChSpectrumBand));
    return spectrum;
}

void setBand(LChSpectrum& spectrum, std::size_t index, std::uint64_t count, float hue, float chroma,
             float lightness)
{
    LChSpectrumBand& band = spectrum.bands[index];
    band.count = count;
    band.hueMean = hue;
    band.chromaMean = chroma;
    band.chromaMinimum = chroma - 1.0f;
    band.chromaMaximum = chroma + 1.0f;
    band.lightnessMean = lightness;
    band.lightnessMinimum = lightness - 2.0f;
    band.lightnessMaximum = lightness + 2.0f;
}

KVSliderValues hueRange(double lowerDegrees, double upperDegrees)
{
    return {0.0, upperDegrees / 360.0, 0.0, lowerDegrees / 360.0, 0.0};
}

const std::shared_ptr<const KVColorGamut>& sRGBGamut()
{
    static const auto gamut =
        std::make_shared<const KVColorGamut>(sRGBChromaticities(), ColorSpaceModel::LChuv);
    return gamut;
}

TEST(SpectrumBandAverage, WeightsBandsByPixelCountOverTheFullySelectedDegrees)
{
    LChSpectrum spectrum = emptySpectrum();
    setBand(spectrum, 20, 1, 0.3f, 10.0f, 40.0f);
    setBand(spectrum, 25, 3, 0.4f, 30.0f, 60.0f);
    setBand(spectrum, 31, 100, 0.5f, 90.0f, 90.0f); // just outside 20..30
    const double mean = averageSpectrumBandMemberValuesAtOffset(spectrum, hueRange(20, 30),
                                                                SpectrumBandMember::chromaMean);
    EXPECT_DOUBLE_EQ(mean, (1 * 10.0 + 3 * 30.0) / 4.0);
}

TEST(SpectrumBandAverage, RunsAcrossZeroAndNeverCountsTheAchromaticBand)
{
    LChSpectrum spectrum = emptySpectrum();
    setBand(spectrum, 355, 2, 6.2f, 20.0f, 50.0f);
    setBand(spectrum, 4, 2, 0.1f, 40.0f, 50.0f);
    setBand(spectrum, kAchromaticBand, 1000, 0.0f, 0.0f, 50.0f);
    // -10 to 10 degrees, as a ring slider delivers a range across 0.
    const double mean = averageSpectrumBandMemberValuesAtOffset(spectrum, hueRange(-10, 10),
                                                                SpectrumBandMember::chromaMean);
    EXPECT_DOUBLE_EQ(mean, 30.0);
    // The same range as a saved set has it, bounds each in [0, 1).
    EXPECT_DOUBLE_EQ(averageSpectrumBandMemberValuesAtOffset(spectrum, hueRange(350, 10),
                                                             SpectrumBandMember::chromaMean),
                     30.0);
}

TEST(SpectrumBandAverage, RoundsBoundsHalfUpAndIsZeroWithoutPixels)
{
    LChSpectrum spectrum = emptySpectrum();
    setBand(spectrum, 10, 1, 0.2f, 50.0f, 50.0f);
    // 9.5 degrees rounds up to 10, 10.49 down to 10: one band.
    EXPECT_DOUBLE_EQ(averageSpectrumBandMemberValuesAtOffset(spectrum, hueRange(9.5, 10.49),
                                                             SpectrumBandMember::chromaMean),
                     50.0);
    // 10.5 rounds up to 11: the band is left out.
    EXPECT_EQ(averageSpectrumBandMemberValuesAtOffset(spectrum, hueRange(10.5, 20),
                                                      SpectrumBandMember::chromaMean),
              0.0);
    EXPECT_EQ(averageSpectrumBandMemberValuesAtOffset(LChSpectrum{}, hueRange(0, 90),
                                                      SpectrumBandMember::chromaMean),
              0.0);
}

TEST(SelectionStatistics, RatiosAndGainsFollowTheGamutsLargestChroma)
{
    LChSpectrum spectrum = emptySpectrum();
    const float hue = 0.5f; // radians
    setBand(spectrum, 28, 4, hue, 40.0f, 50.0f);
    const KVColorGamut& gamut = *sRGBGamut();
    const SelectionStatistics s = selectionStatistics(&spectrum, hueRange(20, 40), &gamut);
    const double cmax = gamut.maxChromaForHue(s.meanHue).c1;
    ASSERT_GT(cmax, 0.0);
    EXPECT_DOUBLE_EQ(s.meanHue, static_cast<double>(hue));
    EXPECT_DOUBLE_EQ(s.meanChroma, 40.0);
    EXPECT_DOUBLE_EQ(s.chromaMinimum, 39.0);
    EXPECT_DOUBLE_EQ(s.chromaMaximum, 41.0);
    EXPECT_DOUBLE_EQ(s.lightnessMinimum, 48.0);
    EXPECT_DOUBLE_EQ(s.lightnessMaximum, 52.0);
    EXPECT_DOUBLE_EQ(s.meanChromaRatio, 40.0 / cmax);
    EXPECT_DOUBLE_EQ(s.chromaMinimumRatio, 39.0 / cmax);
    EXPECT_DOUBLE_EQ(s.chromaMaximumRatio, 41.0 / cmax);
    EXPECT_NEAR(saturationGain(s), cmax / 40.0 + 1.0, 1e-12);
    // Mean lightness 50 on the LCh scale is s = 0.5: gain 1 / 0.5 + 1.
    EXPECT_DOUBLE_EQ(curveGain(s, ColorSpaceModel::LChuv), 3.0);
}

TEST(SelectionStatistics, UnguardedDivisionsGiveTheirInfinities)
{
    LChSpectrum spectrum = emptySpectrum();
    setBand(spectrum, 100, 7, 1.7f, 25.0f, 30.0f);
    const KVSliderValues range = hueRange(90, 110);

    const SelectionStatistics withoutGamut = selectionStatistics(&spectrum, range, nullptr);
    EXPECT_TRUE(std::isinf(withoutGamut.meanChromaRatio));
    EXPECT_TRUE(std::isinf(withoutGamut.chromaMaximumRatio));
    EXPECT_EQ(saturationGain(withoutGamut), 1.0);

    // An empty selection with a gamut: mean chroma 0, gain infinite.
    const SelectionStatistics empty =
        selectionStatistics(&spectrum, hueRange(200, 220), sRGBGamut().get());
    EXPECT_EQ(empty.meanChroma, 0.0);
    EXPECT_EQ(empty.meanChromaRatio, 0.0);
    EXPECT_EQ(saturationGain(empty), std::numeric_limits<double>::infinity());
    EXPECT_EQ(curveGain(empty, ColorSpaceModel::LChab), 1.0);

    // Neither gamut nor chroma: 0 / 0.
    EXPECT_TRUE(std::isnan(saturationGain(selectionStatistics(nullptr, range, nullptr))));
}

struct CurveGainCase {
    ColorSpaceModel model;
    double meanLightness;
    double gain;
};

void PrintTo(const CurveGainCase& c, std::ostream* os)
{
    *os << "{model=" << colorSpaceModelNumber(c.model) << " meanLightness=" << c.meanLightness
        << " gain=" << c.gain << "}";
}

class CurveGain : public testing::TestWithParam<CurveGainCase> {};

TEST_P(CurveGain, IsOneOverTheMeanLightnessPlusOne)
{
    SelectionStatistics s;
    s.meanLightness = GetParam().meanLightness;
    EXPECT_DOUBLE_EQ(curveGain(s, GetParam().model), GetParam().gain);
}

INSTANTIATE_TEST_SUITE_P(Models, CurveGain,
                         testing::Values(CurveGainCase{ColorSpaceModel::LChuv, 25.0, 5.0},
                                         CurveGainCase{ColorSpaceModel::LChab, 100.0, 2.0},
                                         CurveGainCase{ColorSpaceModel::HSB, 0.25, 5.0},
                                         CurveGainCase{ColorSpaceModel::HSL, 0.5, 3.0},
                                         CurveGainCase{ColorSpaceModel::HCL, 0.0, 1.0},
                                         CurveGainCase{ColorSpaceModel::LChuv, -5.0, 1.0}));

} // namespace
} // namespace tintorra
