#include "controls/KVCircularSliderModel.h"
#include "controls/KVHueShiftParameterSet.h"
#include "controls/KVTenSegmentSliderModel.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <ostream>

namespace tintorra {
namespace {

// A fresh set holds what freshly created sliders report, not numbers copied from somewhere.
TEST(HueShiftParameterSet, StartsWithTheValuesOfFreshSliders)
{
    const KVHueShiftParameterSet set;
    EXPECT_EQ(set.sourceHueRange(), KVCircularSliderModel(true).sliderValues());
    EXPECT_EQ(set.sourceSatRange(), KVCircularSliderModel(false).sliderValues());
    EXPECT_EQ(set.sourceBriRange(), KVCircularSliderModel(false).sliderValues());
    EXPECT_EQ(set.targetBriTenVals(), KVTenSegmentSliderModel::defaultValues());
    EXPECT_EQ(set.targetHue(), 0.0);
    EXPECT_EQ(set.targetSat(), 0.0);
    EXPECT_EQ(set.targetBri(), 0.0);
    EXPECT_EQ(set.colorSpaceModel(), ColorSpaceModel::LChuv);
    EXPECT_EQ(set.maskToShow(), MaskView::shiftedImage);
    EXPECT_FALSE(set.preserveHue());
    EXPECT_FALSE(set.blendToFalloffHues());
    EXPECT_EQ(set.displayGamma(), static_cast<double>(2.2f));

    // Ten degrees each way, fall-offs ten more: the ring crosses 0.
    EXPECT_DOUBLE_EQ(set.sourceHueRange().upper, 10.0 / 360.0);
    EXPECT_DOUBLE_EQ(set.sourceHueRange().lowerFalloff, -20.0 / 360.0);
    EXPECT_EQ(set.sourceSatRange(), (KVSliderValues{1.0, 1.0, 0.5, 0.0, 0.0}));
}

struct ClampCase {
    double given;
    double stored;
};

void PrintTo(const ClampCase& c, std::ostream* os)
{
    *os << "{given=" << c.given << " stored=" << c.stored << "}";
}

class TargetModifierClamp : public testing::TestWithParam<ClampCase> {};

TEST_P(TargetModifierClamp, SaturationAndBrightnessStayWithinMinusOneToOne)
{
    KVHueShiftParameterSet set;
    set.setTargetSat(GetParam().given);
    set.setTargetBri(GetParam().given);
    EXPECT_EQ(set.targetSat(), GetParam().stored);
    EXPECT_EQ(set.targetBri(), GetParam().stored);
}

INSTANTIATE_TEST_SUITE_P(Values, TargetModifierClamp,
                         testing::Values(ClampCase{1.7, 1.0}, ClampCase{-3.0, -1.0},
                                         ClampCase{0.25, 0.25}, ClampCase{-1.0, -1.0},
                                         ClampCase{1.0, 1.0}));

TEST(HueShiftParameterSet, TargetHueIsStoredAsGiven)
{
    KVHueShiftParameterSet set;
    set.setTargetHue(1.75);
    EXPECT_EQ(set.targetHue(), 1.75);
}

TEST(HueShiftParameterSet, DisplayGammaIsKeptAtSinglePrecision)
{
    KVHueShiftParameterSet set;
    set.setDisplayGamma(1.8);
    EXPECT_EQ(set.displayGamma(), static_cast<double>(1.8f));
    EXPECT_NE(set.displayGamma(), 1.8);
    set.setDisplayGamma(std::numeric_limits<double>::infinity());
    EXPECT_TRUE(std::isinf(set.displayGamma()));
}

TEST(HueShiftParameterSet, RangeDictionariesRoundTripAndDeriveAMissingMiddle)
{
    KVHueShiftParameterSet set;
    const KVSliderValues range{0.75, 0.625, 0.5, 0.375, 0.25};
    set.setSourceSatValues(dictionaryFromValues(range));
    EXPECT_EQ(set.sourceSatRange(), range);
    EXPECT_EQ(valuesFromDictionary(set.sourceSatValues()), range);

    // A saved-set style hue range across 0 without a middle: the middle is the wrapped midpoint.
    set.setSourceHueValues(
        {{"upperFalloff", 0.1}, {"upper", 0.05}, {"lower", 0.95}, {"lowerFalloff", 0.9}});
    EXPECT_NEAR(set.sourceHueRange().middle, 0.0, 1e-15);
    EXPECT_EQ(set.sourceHueRange().lower, 0.95);
}

TEST(HueShiftParameterSet, CurveIsKeptAsPassedAndReadWithMissingKeysAsZero)
{
    KVHueShiftParameterSet set;
    const KVValueDictionary partial = {{"thumb_000", 0.25}, {"thumb_100", 0.75}, {"extra", 9.0}};
    set.setTargetBriTenVals(partial);
    EXPECT_EQ(set.targetBriTenVals(), partial);
    const KVTenSegmentValues curve = set.targetBriCurve();
    EXPECT_EQ(curve[0], 0.25);
    EXPECT_EQ(curve[10], 0.75);
    for (std::size_t i = 1; i < 10; ++i) {
        EXPECT_EQ(curve[i], 0.0) << i;
    }
}

TEST(HueShiftParameterSet, SwitchesAndCodesAreStored)
{
    KVHueShiftParameterSet set;
    set.setPreserveHue(true);
    set.setBlendToFalloffHues(true);
    set.setColorSpaceModel(ColorSpaceModel::HCL);
    set.setMaskToShow(MaskView::whiteMask);
    EXPECT_TRUE(set.preserveHue());
    EXPECT_TRUE(set.blendToFalloffHues());
    EXPECT_EQ(set.colorSpaceModel(), ColorSpaceModel::HCL);
    EXPECT_EQ(set.maskToShow(), MaskView::whiteMask);
    EXPECT_NE(set, KVHueShiftParameterSet());
}

} // namespace
} // namespace tintorra
