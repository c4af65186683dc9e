#include "editor/HueShiftParametersBuilder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <ostream>

namespace tintorra {
namespace {

TEST(HueShiftParametersBuilder, CopiesTheSetIntoTheRecordsFields)
{
    KVHueShiftParameterSet set;
    set.setDisplayGamma(2.0);
    set.setTargetHue(0.6);
    set.setTargetSat(0.25);
    set.setTargetBri(-0.5);
    set.setSourceHueValues(dictionaryFromValues({0.5, 0.4, 0.3, 0.2, 0.1}));
    set.setSourceSatValues(dictionaryFromValues({0.95, 0.85, 0.75, 0.65, 0.55}));
    set.setSourceBriValues(dictionaryFromValues({0.45, 0.35, 0.25, 0.15, 0.05}));
    set.setColorSpaceModel(ColorSpaceModel::HCL);
    set.setPreserveHue(true);
    set.setMaskToShow(MaskView::whiteMask);
    const HueShiftParameters p = hueShiftParameters(set, {});
    EXPECT_EQ(p.imageGamma, 0.5);
    EXPECT_EQ(p.targetHue, 0.6);
    EXPECT_EQ(p.targetSat, 0.25);
    EXPECT_EQ(p.targetBri, -0.5);
    EXPECT_EQ(p.targetBriTenVals, identityTenSegmentValues());
    EXPECT_EQ((std::array{p.hueUpper, p.hueLower, p.hueUpperFalloff, p.hueLowerFalloff}),
              (std::array{0.4, 0.2, 0.5, 0.1}));
    EXPECT_EQ((std::array{p.satUpperFalloff, p.satUpper, p.satLower, p.satLowerFalloff}),
              (std::array{0.95, 0.85, 0.65, 0.55}));
    EXPECT_EQ((std::array{p.lightUpperFalloff, p.lightUpper, p.lightLower, p.lightLowerFalloff}),
              (std::array{0.45, 0.35, 0.15, 0.05}));
    EXPECT_EQ(p.colorSpaceModel, ColorSpaceModel::HCL);
    EXPECT_EQ(p.preserveHue, 1);
    EXPECT_EQ(p.blendToFalloffHues, 0);
    EXPECT_EQ(p.maskToShow, MaskView::whiteMask);
    EXPECT_EQ(p.colorTable.count, 0u);
    EXPECT_EQ(p.gamut, nullptr);
}

TEST(HueShiftParametersBuilder, ReferencesTheContext)
{
    LChColorTable table;
    table.colorSpaceModel = ColorSpaceModel::HCL;
    table.count = 5;
    HueShiftContext context;
    context.colorTable = &table;
    context.inclusionMask = KVBitmap::deviceWhite8Rep(2, 2);
    context.brightnessToHighlight = 0.25;
    context.currentSelectionTool = 2;
    HueShiftParameters p = hueShiftParameters(KVHueShiftParameterSet(), context);
    EXPECT_EQ(p.colorTable.count, 5u);
    EXPECT_EQ(p.colorTable.colorSpaceModel, ColorSpaceModel::HCL);
    EXPECT_EQ(p.inclusionMask, context.inclusionMask);
    EXPECT_EQ(p.exclusionMask, nullptr);
    EXPECT_EQ(p.brightnessToHighlight, 0.25);
    EXPECT_EQ(p.paintMaskLimitsMasks, 1);

    context.currentSelectionTool = kMaskPaintbrushTool;
    p = hueShiftParameters(KVHueShiftParameterSet(), context);
    EXPECT_EQ(p.paintMaskLimitsMasks, 0);
}

struct OppositeCase {
    double lower;
    double upper;
    double opposite;
};

void PrintTo(const OppositeCase& c, std::ostream* os)
{
    *os << "{lower=" << c.lower << " upper=" << c.upper << " opposite=" << c.opposite << "}";
}

class HighlightPlaceholder : public testing::TestWithParam<OppositeCase> {};

// The target hue of the highlight view lies opposite the middle of the shorter arc from lower to
// upper.
TEST_P(HighlightPlaceholder, TargetsTheHueOppositeTheRangesCentre)
{
    const OppositeCase& c = GetParam();
    EXPECT_NEAR(hueOppositeRangeCentre(c.lower, c.upper), c.opposite, 1e-15);

    KVHueShiftParameterSet set;
    set.setSourceHueValues({{"upper", c.upper}, {"lower", c.lower}});
    set.setTargetHue(0.123);
    set.setTargetBriTenVals({{"thumb_050", 0.3}});
    set.setMaskToShow(MaskView::selectionHighlight);
    const HueShiftParameters p = hueShiftParameters(set, {});
    EXPECT_NEAR(p.targetHue, c.opposite, 1e-15);
    EXPECT_EQ(p.targetSat, 1.0);
    EXPECT_EQ(p.targetBri, 1.0);
    for (std::size_t i = 0; i < p.targetBriTenVals.size(); ++i) {
        EXPECT_EQ(p.targetBriTenVals[i], i < 4 ? p.targetHue : 1.0) << i;
    }
}

INSTANTIATE_TEST_SUITE_P(Ranges, HighlightPlaceholder,
                         testing::Values(OppositeCase{-10.0 / 360, 10.0 / 360, 0.5},
                                         OppositeCase{0.95, 0.05, 0.5},
                                         OppositeCase{0.25, 0.375, 0.8125},
                                         OppositeCase{0.625, 0.75, 0.1875},
                                         OppositeCase{0.75, 0.25, 0.5}));

TEST(HueShiftParametersBuilder, OtherMasksKeepTheUsersTargets)
{
    KVHueShiftParameterSet set;
    set.setTargetHue(0.2);
    set.setMaskToShow(MaskView::blackMask);
    EXPECT_EQ(hueShiftParameters(set, {}).targetHue, 0.2);
}

} // namespace
} // namespace tintorra
