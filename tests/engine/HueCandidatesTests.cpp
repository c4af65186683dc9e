#include "HueShiftTestSupport.h"
#include "colour/ColorConversions.h"
#include "engine/HueCandidates.h"
#include "engine/SelectionWeights.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace tintorra {
namespace {

// Hue ranges of every kind: narrow, across 0, saved-set form, wide, whole circle.
const double kRanges[][4] = {
    {0.10, 0.12, 0.15, 0.2},    {-0.05, -0.02, 0.02, 0.05}, {0.94, 0.97, 0.03, 0.06},
    {0.3, 0.3, 0.7, 0.7},       {0.5, 0.55, 0.56, 0.9},     {0.0, 0.0, 1.0, 1.0},
    {0.62, 0.625, 0.625, 0.63}, {0.99, 0.995, 0.0, 0.01},
};

HueShiftParameters withRange(ColorSpaceModel model, const double (&range)[4])
{
    HueShiftParameters p = test::selectEverything(model);
    p.hueLowerFalloff = range[0];
    p.hueLower = range[1];
    p.hueUpper = range[2];
    p.hueUpperFalloff = range[3];
    normalizeHueShiftParameters(p);
    return p;
}

// The filter may let anything through, but never a colour whose weight is not 0.
TEST(LuvHueFilter, NeverRulesOutASelectedColour)
{
    const HueShiftParameters base = test::selectEverything(ColorSpaceModel::LChuv);
    Matrix3 M;
    base.gamut->copy_RGB_to_XYZ_matrix(M);
    std::mt19937 random(7);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    for (const auto& range : kRanges) {
        const HueShiftParameters p = withRange(ColorSpaceModel::LChuv, range);
        const LuvHueFilter filter(selectableHueArc(p), M);
        int ruledOut = 0;
        for (int i = 0; i < 40000; ++i) {
            // Dark, light, near-grey and saturated colours alike.
            const double scale = i % 3 == 0 ? 0.02 : 1.0;
            ColorComponents rgb{scale * unit(random), scale * unit(random), scale * unit(random),
                                1.0};
            if (i % 5 == 0) {
                rgb.c1 = rgb.c0 + 1e-4 * unit(random);
                rgb.c2 = rgb.c0;
            }
            if (filter.mayBeSelected(rgb.c0, rgb.c1, rgb.c2)) {
                continue;
            }
            ++ruledOut;
            ASSERT_EQ(lchSelection(rgbToLchuv(rgb, M), p, p.gamut.get()).weight, 0.0)
                << range[0] << " " << rgb.c0 << "," << rgb.c1 << "," << rgb.c2;
        }
        if (range[3] - range[0] < 0.5 && range[3] > range[0]) {
            EXPECT_GT(ruledOut, 10000) << range[0];
        }
    }
}

// Entries of a hue-sorted table: those on the arc, compared with the weights of every entry.
TEST(EntriesOnHueArc, HoldEveryEntryThatCanBeSelected)
{
    for (const ColorSpaceModel model : {ColorSpaceModel::LChuv, ColorSpaceModel::HSB}) {
        std::mt19937 random(11);
        const double low = model == ColorSpaceModel::LChuv ? -kPi : 0.0;
        const double high = model == ColorSpaceModel::LChuv ? kPi : 1.0;
        std::uniform_real_distribution<float> hue(static_cast<float>(low),
                                                  static_cast<float>(high));
        std::vector<color_table_lch_entry_info> colors(3000);
        for (auto& c : colors) {
            c = {hue(random), 30.0f, model == ColorSpaceModel::LChuv ? 50.0f : 0.5f, 1.0f, 0.5f,
                 0,           1};
        }
        colors[0].hue = static_cast<float>(low);
        colors[1].hue = static_cast<float>(high);
        std::sort(colors.begin(), colors.end(),
                  [](const auto& a, const auto& b) { return a.hue < b.hue; });
        for (const auto& range : kRanges) {
            HueShiftParameters p = withRange(model, range);
            p.gamut = nullptr;
            const HueArc arc = selectableHueArc(p);
            for (const auto& [first, end] :
                 {std::pair<std::uint64_t, std::uint64_t>{0, 3000}, {17, 1999}, {2500, 2501}}) {
                std::vector<char> listed(colors.size(), 0);
                for (const auto& [b, e] : entriesOnHueArc(colors.data(), first, end, arc)) {
                    ASSERT_LE(first, b);
                    ASSERT_LE(e, end);
                    for (std::uint64_t i = b; i < e; ++i) {
                        ASSERT_FALSE(listed[i]) << "listed twice";
                        listed[i] = 1;
                    }
                }
                for (std::uint64_t i = first; i < end; ++i) {
                    const auto& c = colors[i];
                    const double w =
                        model == ColorSpaceModel::LChuv
                            ? lchSelection({c.lightness, c.chroma, c.hue, 1.0}, p, nullptr).weight
                            : cylinderSelection({c.hue, c.chroma, c.lightness, 1.0, 0.5}, p).weight;
                    if (w != 0.0) {
                        ASSERT_TRUE(listed[i]) << range[0] << " entry " << i << " hue " << c.hue;
                    }
                }
            }
        }
    }
}

TEST(SelectableHueArc, IsTheWholeCircleForWideOrNonFiniteRanges)
{
    EXPECT_TRUE(selectableHueArc(withRange(ColorSpaceModel::LChuv, kRanges[5])).wholeCircle);
    HueShiftParameters p = withRange(ColorSpaceModel::HSB, kRanges[0]);
    EXPECT_FALSE(selectableHueArc(p).wholeCircle);
    p.hueUpperFalloff = std::numeric_limits<double>::infinity();
    EXPECT_TRUE(selectableHueArc(p).wholeCircle);
    const HueArc narrow = selectableHueArc(withRange(ColorSpaceModel::HSB, kRanges[6]));
    EXPECT_NEAR(narrow.centre, 0.625, 1e-12);
    EXPECT_NEAR(narrow.halfWidth, 0.005, 1e-6);
}

} // namespace
} // namespace tintorra
