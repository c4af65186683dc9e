#include "controls/ParameterEncoding.h"
#include "editor/HueShiftParametersBuilder.h"
#include "editor/ShiftRecordEncoding.h"

#include <gtest/gtest.h>

#include <bit>
#include <cctype>
#include <cmath>
#include <limits>
#include <string>

namespace tintorra {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

std::uint64_t bits(double value)
{
    return std::bit_cast<std::uint64_t>(value);
}

// A record with a distinct value in every encoded field, special values included.
HueShiftParameters distinctRecord()
{
    HueShiftParameters p;
    p.imageGamma = 1.0 / 1.8;
    p.colorSpaceModel = ColorSpaceModel::HSB;
    p.preserveHue = 1;
    p.blendToFalloffHues = 0;
    p.maskToShow = MaskView::blackMask;
    p.targetHue = 0.1;
    p.targetSat = -0.0;
    p.targetBri = -0.75;
    for (std::size_t i = 0; i < p.targetBriTenVals.size(); ++i) {
        p.targetBriTenVals[i] = std::sqrt(static_cast<double>(i)) / 3.3;
    }
    p.targetBriTenVals[3] = std::numeric_limits<double>::denorm_min();
    p.targetBriTenVals[7] = kInfinity;
    p.hueUpperFalloff = 1.05;
    p.hueUpper = 1.02;
    p.hueLower = 0.97;
    p.hueLowerFalloff = -0.2;
    p.satUpperFalloff = 0.9;
    p.satUpper = 0.8;
    p.satLower = 0.3;
    p.satLowerFalloff = 0.2;
    p.lightUpperFalloff = 0.99;
    p.lightUpper = 0.7;
    p.lightLower = 0.1;
    p.lightLowerFalloff = 0.05;
    return p;
}

std::string field(const std::string& text, std::size_t position, std::size_t length)
{
    return text.substr(position, length);
}

struct FieldCase {
    std::size_t position;
    double value;
};

TEST(ParameterString, PlacesEveryFieldAtItsPosition)
{
    HueShiftParameters p = distinctRecord();
    p.targetHue = 1.0;
    p.targetSat = 0.5;
    p.targetBriTenVals[0] = 1.0;
    p.targetBriTenVals[10] = 0.5;
    p.hueUpperFalloff = -2.0;
    p.lightLowerFalloff = 0.25;
    const std::string s = hexEncodedStringFromHueShiftParameters(p);
    ASSERT_EQ(s.size(), kHueShiftParameterStringLength);
    EXPECT_EQ(field(s, 0, 6), "tolm01");
    EXPECT_EQ(field(s, 22, 8), "03010002");
    // Doubles as their IEEE bits, most significant byte first: 1.0, 0.5, -2.0, 0.25.
    const FieldCase cases[] = {{30, 1.0},  {46, 0.5},   {78, 1.0},
                               {238, 0.5}, {254, -2.0}, {430, 0.25}};
    const char* const expected[] = {"3FF0000000000000", "3FE0000000000000", "3FF0000000000000",
                                    "3FE0000000000000", "C000000000000000", "3FD0000000000000"};
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        EXPECT_EQ(field(s, cases[i].position, 16), expected[i]) << cases[i].position;
    }
    for (const char c : s.substr(4)) {
        EXPECT_TRUE(std::isxdigit(static_cast<unsigned char>(c)) && !std::islower(c)) << c;
    }
}

TEST(ParameterString, DecodesEveryFieldBitForBit)
{
    const HueShiftParameters p = distinctRecord();
    const auto decoded = decodeHueShiftParameters(hexEncodedStringFromHueShiftParameters(p));
    ASSERT_TRUE(decoded.has_value());
    EXPECT_EQ(decoded->version, 1);
    EXPECT_EQ(bits(decoded->gamma), bits(p.imageGamma));
    EXPECT_EQ(decoded->colorSpaceModel, 3);
    EXPECT_EQ(decoded->preserveHue, 1);
    EXPECT_EQ(decoded->blendToFalloffHues, 0);
    EXPECT_EQ(decoded->maskToShow, 2);
    EXPECT_EQ(bits(decoded->targetHue), bits(p.targetHue));
    EXPECT_EQ(bits(decoded->targetSat), bits(-0.0));
    EXPECT_EQ(bits(decoded->targetBri), bits(p.targetBri));
    const KVTenSegmentValues curve = tenSegmentValuesFromDictionary(decoded->targetBriTenVals);
    for (std::size_t i = 0; i < curve.size(); ++i) {
        EXPECT_EQ(bits(curve[i]), bits(p.targetBriTenVals[i])) << i;
    }
    const KVValueDictionary hue = {
        {"upperFalloff", 1.05}, {"upper", 1.02}, {"lower", 0.97}, {"lowerFalloff", -0.2}};
    EXPECT_EQ(decoded->sourceHueValues, hue);
    EXPECT_EQ(decoded->sourceBriValues.at("lowerFalloff"), 0.05);
    EXPECT_EQ(decoded->sourceSatValues.count("middle"), 0u);
}

// Encoding a set and decoding it into another restores every member but the target brightness.
TEST(ParameterString, RoundTripsAParameterSetExceptTheTargetBrightness)
{
    KVHueShiftParameterSet original;
    original.setTargetHue(0.4);
    original.setTargetSat(-0.3);
    original.setTargetBri(0.6);
    original.setDisplayGamma(1.8);
    original.setColorSpaceModel(ColorSpaceModel::LChab);
    original.setPreserveHue(true);
    original.setSourceHueValues(
        {{"upperFalloff", 0.1}, {"upper", 0.05}, {"lower", 0.95}, {"lowerFalloff", 0.9}});
    original.setSourceSatValues(dictionaryFromValues({0.875, 0.75, 0.5, 0.25, 0.125}));
    const std::string text =
        hexEncodedStringFromHueShiftParameters(hueShiftParameters(original, {}));

    KVHueShiftParameterSet decoded;
    decoded.setTargetBri(-0.25);
    decoded.setMaskToShow(MaskView::whiteMask);
    decoded.setBlendToFalloffHues(true);
    ASSERT_TRUE(setHueShiftParametersFromHexEncodedString(decoded, text));
    EXPECT_EQ(decoded.targetBri(), -0.25);
    decoded.setTargetBri(original.targetBri());
    EXPECT_EQ(decoded, original);
}

TEST(ParameterString, RoundTripsTheDefaultSetWithMiddlesAsMidpoints)
{
    const KVHueShiftParameterSet original;
    KVHueShiftParameterSet decoded;
    decoded.setDisplayGamma(1.0);
    decoded.setTargetBriTenVals({});
    decoded.setSourceBriValues(dictionaryFromValues({0.5, 0.4, 0.3, 0.2, 0.1}));
    ASSERT_TRUE(setHueShiftParametersFromHexEncodedString(
        decoded, hexEncodedStringFromHueShiftParameters(hueShiftParameters(original, {}))));
    EXPECT_EQ(decoded, original);
    EXPECT_EQ(decoded.sourceHueRange().middle, 0.0);
    EXPECT_EQ(decoded.sourceBriRange().middle, 0.5);
}

TEST(ParameterString, CarriesTheHighlightPlaceholdersWhenTheSelectionIsShown)
{
    KVHueShiftParameterSet set;
    set.setMaskToShow(MaskView::selectionHighlight);
    set.setTargetHue(0.3);
    set.setTargetSat(-0.5);
    set.setTargetBri(-0.5);
    set.setSourceHueValues(dictionaryFromValues({0.35, 0.3, 0.25, 0.2, 0.15}));
    const auto decoded = decodeHueShiftParameters(
        hexEncodedStringFromHueShiftParameters(hueShiftParameters(set, {})));
    ASSERT_TRUE(decoded.has_value());
    EXPECT_DOUBLE_EQ(decoded->targetHue, 0.75);
    EXPECT_EQ(decoded->targetSat, 1.0);
    EXPECT_EQ(decoded->targetBri, 1.0);
    const KVTenSegmentValues curve = tenSegmentValuesFromDictionary(decoded->targetBriTenVals);
    for (std::size_t i = 0; i < curve.size(); ++i) {
        EXPECT_EQ(curve[i], i < 4 ? decoded->targetHue : 1.0) << i;
    }
}

TEST(ParameterString, RefusesStringsWithoutTheLowerCasePrefix)
{
    const std::string text = hexEncodedStringFromHueShiftParameters(distinctRecord());
    for (const std::string& bad :
         {std::string(), "TOLM" + text.substr(4), "xtolm" + text.substr(4), std::string("tol")}) {
        EXPECT_FALSE(decodeHueShiftParameters(bad).has_value()) << bad;
        KVHueShiftParameterSet set;
        EXPECT_FALSE(setHueShiftParametersFromHexEncodedString(set, bad));
        EXPECT_EQ(set, KVHueShiftParameterSet());
    }
}

TEST(ParameterString, AcceptsHexDigitsOfEitherCase)
{
    const std::string text = hexEncodedStringFromHueShiftParameters(distinctRecord());
    std::string lower = text;
    for (std::size_t i = 4; i < lower.size(); ++i) {
        lower[i] = static_cast<char>(std::tolower(static_cast<unsigned char>(lower[i])));
    }
    ASSERT_NE(lower, text);
    KVHueShiftParameterSet a;
    KVHueShiftParameterSet b;
    setHueShiftParametersFromHexEncodedString(a, text);
    setHueShiftParametersFromHexEncodedString(b, lower);
    EXPECT_EQ(a, b);
}

TEST(ParameterString, ThePrefixAloneAppliesZeroSlots)
{
    KVHueShiftParameterSet set;
    set.setColorSpaceModel(ColorSpaceModel::HSL);
    set.setTargetHue(0.5);
    ASSERT_TRUE(setHueShiftParametersFromHexEncodedString(set, "tolm"));
    EXPECT_EQ(set.displayGamma(), kInfinity);
    EXPECT_EQ(set.colorSpaceModel(), ColorSpaceModel::LChuv);
    EXPECT_EQ(set.targetHue(), 0.0);
    EXPECT_EQ(set.targetBriCurve(), KVTenSegmentValues{});
    EXPECT_EQ(set.sourceSatRange(), KVSliderValues{});
}

TEST(ParameterString, ANonAsciiStringReadsNoField)
{
    const std::string text = hexEncodedStringFromHueShiftParameters(distinctRecord()) + "\xC3\xA9";
    const auto decoded = decodeHueShiftParameters(text);
    ASSERT_TRUE(decoded.has_value());
    EXPECT_EQ(decoded->version, 0);
    EXPECT_EQ(decoded->gamma, 0.0);
    EXPECT_EQ(decoded->maskToShow, 0);
    EXPECT_EQ(decoded->sourceHueValues.at("upper"), 0.0);
}

// A truncated string applies, for each missing field, what was last read into the same slot.
TEST(ParameterString, TruncatedFieldsReuseTheirSlots)
{
    const HueShiftParameters p = distinctRecord();
    const std::string text = hexEncodedStringFromHueShiftParameters(p);

    // Up to and including the gamma: the bytes repeat the version, the doubles the gamma.
    const auto afterGamma = decodeHueShiftParameters(text.substr(0, 22));
    ASSERT_TRUE(afterGamma.has_value());
    EXPECT_EQ(afterGamma->colorSpaceModel, 1);
    EXPECT_EQ(afterGamma->maskToShow, 1);
    EXPECT_EQ(bits(afterGamma->targetHue), bits(p.imageGamma));
    EXPECT_EQ(bits(afterGamma->targetBri), bits(p.imageGamma));
    EXPECT_EQ(afterGamma->targetBriTenVals.at("thumb_050"), 0.0);

    // Up to the end of the hue range: saturation and brightness repeat the hue bounds.
    const auto afterHue = decodeHueShiftParameters(text.substr(0, 318));
    ASSERT_TRUE(afterHue.has_value());
    EXPECT_EQ(afterHue->sourceSatValues, afterHue->sourceHueValues);
    EXPECT_EQ(afterHue->sourceBriValues, afterHue->sourceHueValues);

    // One character left at a field's position: that field is not read.
    const auto oneLeft = decodeHueShiftParameters(text.substr(0, 23));
    ASSERT_TRUE(oneLeft.has_value());
    EXPECT_EQ(oneLeft->colorSpaceModel, 1);
}

// Decoding reports the bytes as written; applying refuses a mode or view that does not exist and
// leaves the set as it was.
TEST(ParameterString, RefusesAColourModeOrMaskViewThatDoesNotExist)
{
    const std::string valid = hexEncodedStringFromHueShiftParameters(distinctRecord());
    const struct {
        std::size_t position;
        const char* byte;
    } cases[] = {{22, "05"}, {22, "FF"}, {28, "05"}, {28, "80"}};
    for (const auto& c : cases) {
        std::string text = valid;
        text.replace(c.position, 2, c.byte);
        const auto decoded = decodeHueShiftParameters(text);
        ASSERT_TRUE(decoded.has_value());
        const unsigned byte = std::stoul(c.byte, nullptr, 16);
        EXPECT_EQ(c.position == 22 ? decoded->colorSpaceModel : decoded->maskToShow, byte);
        KVHueShiftParameterSet set;
        set.setTargetHue(0.25);
        const KVHueShiftParameterSet before = set;
        EXPECT_FALSE(setHueShiftParametersFromHexEncodedString(set, text)) << c.byte;
        EXPECT_EQ(set, before) << c.byte;
    }
}

} // namespace
} // namespace tintorra
