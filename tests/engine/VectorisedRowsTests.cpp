#include "HueShiftTestSupport.h"
#include "engine/BatchMath.h"
#include "engine/HueShiftWorkers.h"
#include "engine/SelectionWeights.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace tintorra {
namespace {

// The row worker's four-lane stages against its scalar steps: whole pictures shifted both ways
// must agree bit for bit, whatever the record asks for.

enum class AlphaLayout { none, straight, premultiplied };

// A 16-bit picture wider than one stretch of the four-lane stages and not a multiple of four
// wide: noise over the whole cube of samples, with greys, black, white and, where there is
// alpha, transparent and half-transparent pixels.
KVBitmapPtr noisePicture(AlphaLayout alpha, std::uint32_t noise = 2024)
{
    constexpr std::int64_t kWide = 601;
    constexpr std::int64_t kHigh = 5;
    const KVBitmapPtr bitmap = test::makeRgbBitmap(kWide, kHigh, 16, alpha != AlphaLayout::none,
                                                   alpha == AlphaLayout::premultiplied);
    std::uint32_t lcg = noise;
    const auto next = [&] {
        lcg = lcg * 1664525u + 1013904223u;
        return static_cast<std::uint16_t>(lcg >> 16);
    };
    for (std::int64_t y = 0; y < kHigh; ++y) {
        for (std::int64_t x = 0; x < kWide; ++x) {
            std::uint16_t r = next();
            std::uint16_t g = next();
            std::uint16_t b = next();
            if (x % 50 == 0) {
                g = r;
                b = r;
            } else if (x % 97 == 1) {
                r = g = b = 0;
            } else if (x % 89 == 2) {
                r = g = b = 65535;
            }
            std::uint16_t a = 65535;
            if (alpha != AlphaLayout::none && x % 7 == 3) {
                a = 32768;
            } else if (alpha != AlphaLayout::none && x % 13 == 5) {
                a = 0;
            }
            if (alpha == AlphaLayout::premultiplied) {
                const auto times = [&](std::uint16_t v) {
                    return static_cast<std::uint16_t>(v * static_cast<std::uint32_t>(a) / 65535);
                };
                r = times(r);
                g = times(g);
                b = times(b);
            }
            test::setWords(bitmap, x, y, {r, g, b, a});
        }
    }
    return bitmap;
}

// Coverage of every value 0..255 over the picture.
KVBitmapPtr paintedMask()
{
    const KVBitmapPtr mask = KVBitmap::deviceWhite8Rep(601, 5);
    for (std::int64_t y = 0; y < 5; ++y) {
        std::uint8_t* row = mask->bitmapData() + y * mask->bytesPerRow();
        for (std::int64_t x = 0; x < 601; ++x) {
            row[x] = static_cast<std::uint8_t>(x % 3 == 0 ? 255 : (x * 7 + y) % 256);
        }
    }
    return mask;
}

KVBitmapPtr shifted(const KVBitmapPtr& source, const HueShiftParameters& p, bool vectorised)
{
    rowWorkerPaths().vectorised = vectorised;
    const KVBitmapPtr result = test::runShift(source, p).result;
    rowWorkerPaths().vectorised = true;
    return result;
}

bool sameSamples(const KVBitmapPtr& a, const KVBitmapPtr& b)
{
    return a != nullptr && b != nullptr && a->sampleBytes() == b->sampleBytes() &&
           std::memcmp(a->bitmapData(), b->bitmapData(), a->sampleBytes()) == 0;
}

struct RecordCase {
    const char* name;
    std::int64_t model;
    void (*adjust)(HueShiftParameters&);
};

std::string caseName(const testing::TestParamInfo<RecordCase>& info)
{
    return info.param.name;
}

// A band of hues with soft edges on every range, shifted, saturated and darkened.
void softBand(HueShiftParameters& p)
{
    p.hueLowerFalloff = 0.1;
    p.hueLower = 0.2;
    p.hueUpper = 0.55;
    p.hueUpperFalloff = 0.7;
    p.lightLowerFalloff = 0.05;
    p.lightLower = 0.2;
    p.lightUpper = 0.8;
    p.lightUpperFalloff = 0.95;
    p.satLowerFalloff = 0.02;
    p.satLower = 0.1;
    p.satUpper = 0.9;
    p.satUpperFalloff = 0.97;
    p.targetHue = 0.85;
    p.targetSat = 0.4;
    p.saturationGain = 1.2;
}

const RecordCase kCases[] = {
    {"LuvEverything", 0, [](HueShiftParameters& p) { p.targetHue = 0.3; }},
    {"LuvSharpBand", 0,
     [](HueShiftParameters& p) {
         p.hueLowerFalloff = p.hueLower = 0.2;
         p.hueUpperFalloff = p.hueUpper = 0.35;
         p.targetHue = 0.7;
         p.targetSat = 0.3;
         p.saturationGain = 1.5;
     }},
    {"LuvSoftCartesian", 0, [](HueShiftParameters& p) { softBand(p); }},
    {"LuvSoftThroughGrey", 0,
     [](HueShiftParameters& p) {
         softBand(p);
         p.preserveHue = 1;
     }},
    {"LuvSoftToFalloffHues", 0,
     [](HueShiftParameters& p) {
         softBand(p);
         p.blendToFalloffHues = 1;
     }},
    {"LuvThroughGreyToFalloffHues", 0,
     [](HueShiftParameters& p) {
         softBand(p);
         p.preserveHue = 1;
         p.blendToFalloffHues = 1;
     }},
    {"LuvAcrossZero", 0,
     [](HueShiftParameters& p) {
         p.hueLowerFalloff = 0.85;
         p.hueLower = 0.95;
         p.hueUpper = 0.05;
         p.hueUpperFalloff = 0.15;
         p.targetHue = 0.5;
     }},
    // Bounds many turns away: hues are brought to them beyond the inline steps.
    {"LuvFarBounds", 0,
     [](HueShiftParameters& p) {
         p.hueLowerFalloff = 5.2;
         p.hueLower = 5.3;
         p.hueUpper = 5.5;
         p.hueUpperFalloff = 5.6;
         p.targetHue = 0.1;
     }},
    {"LuvBelowBounds", 0,
     [](HueShiftParameters& p) {
         p.hueLowerFalloff = -6.3;
         p.hueLower = -6.2;
         p.hueUpper = -6.0;
         p.hueUpperFalloff = -5.9;
         p.targetHue = 0.1;
     }},
    {"LuvGreyed", 0,
     [](HueShiftParameters& p) {
         softBand(p);
         p.targetSat = -1.0;
     }},
    {"LuvDesaturated", 0,
     [](HueShiftParameters& p) {
         softBand(p);
         p.targetSat = -0.5;
     }},
    {"LuvSaturatedHard", 0,
     [](HueShiftParameters& p) {
         p.targetSat = 0.9;
         p.saturationGain = 4.0;
     }},
    {"LuvBrighter", 0,
     [](HueShiftParameters& p) {
         softBand(p);
         p.targetBri = 0.3;
     }},
    {"LuvDarker", 0,
     [](HueShiftParameters& p) {
         softBand(p);
         p.targetBri = -0.4;
     }},
    {"LuvCurve", 0,
     [](HueShiftParameters& p) {
         softBand(p);
         p.targetBriTenVals = {0.0, 0.2, 0.3, 0.45, 0.5, 0.55, 0.7, 0.75, 0.9, 0.95, 1.0};
         p.curveGain = 1.7;
     }},
    {"LuvWithoutGamut", 0,
     [](HueShiftParameters& p) {
         softBand(p);
         // Without a gamut every colour has saturation 1.
         p.satUpper = p.satUpperFalloff = 1.0;
         p.gamut = nullptr;
     }},
    {"LuvLinearSamples", 0,
     [](HueShiftParameters& p) {
         softBand(p);
         p.imageGamma = 1.0;
     }},
    {"LuvGammaPointEight", 0,
     [](HueShiftParameters& p) {
         softBand(p);
         p.imageGamma = 0.8;
     }},
    {"LuvPainted", 0,
     [](HueShiftParameters& p) {
         softBand(p);
         p.inclusionMask = paintedMask();
     }},
    {"LuvHighlight", 0,
     [](HueShiftParameters& p) {
         softBand(p);
         p.maskToShow = 1;
     }},
    {"LuvBlackMask", 0,
     [](HueShiftParameters& p) {
         softBand(p);
         p.maskToShow = 2;
         p.inclusionMask = paintedMask();
     }},
    {"LuvWhiteMask", 0,
     [](HueShiftParameters& p) {
         softBand(p);
         p.maskToShow = 3;
     }},
    {"LuvHoverHighlight", 0,
     [](HueShiftParameters& p) {
         softBand(p);
         p.maskToShow = 4;
         p.brightnessToHighlight = 0.45;
     }},
    {"LabEverything", 1, [](HueShiftParameters& p) { p.targetHue = 0.3; }},
    {"LabSoftCartesian", 1, [](HueShiftParameters& p) { softBand(p); }},
    {"LabSoftThroughGreyToFalloffHues", 1,
     [](HueShiftParameters& p) {
         softBand(p);
         p.preserveHue = 1;
         p.blendToFalloffHues = 1;
     }},
    {"LabAcrossZeroGreyed", 1,
     [](HueShiftParameters& p) {
         p.hueLowerFalloff = 0.85;
         p.hueLower = 0.95;
         p.hueUpper = 0.05;
         p.hueUpperFalloff = 0.15;
         p.targetSat = -1.0;
     }},
    {"LabBrighterPainted", 1,
     [](HueShiftParameters& p) {
         softBand(p);
         p.targetBri = 0.6;
         p.inclusionMask = paintedMask();
     }},
    {"LabCurveLinear", 1,
     [](HueShiftParameters& p) {
         softBand(p);
         p.targetBriTenVals = {0.1, 0.1, 0.3, 0.35, 0.5, 0.6, 0.6, 0.8, 0.9, 0.9, 0.95};
         p.imageGamma = 1.0;
     }},
    {"LabWithoutGamut", 1,
     [](HueShiftParameters& p) {
         softBand(p);
         // Without a gamut every colour has saturation 1.
         p.satUpper = p.satUpperFalloff = 1.0;
         p.gamut = nullptr;
     }},
    {"LabHighlight", 1,
     [](HueShiftParameters& p) {
         softBand(p);
         p.maskToShow = 1;
     }},
    {"HclSoft", 2, [](HueShiftParameters& p) { softBand(p); }},
    {"HsbSoftThroughGrey", 3,
     [](HueShiftParameters& p) {
         softBand(p);
         p.preserveHue = 1;
     }},
    {"HslDarkerPainted", 4,
     [](HueShiftParameters& p) {
         softBand(p);
         p.targetBri = -0.3;
         p.inclusionMask = paintedMask();
     }},
    {"HsbWhiteMask", 3,
     [](HueShiftParameters& p) {
         softBand(p);
         p.maskToShow = 3;
     }},
    {"UnknownModeShiftsAsHsl", 7, [](HueShiftParameters& p) { softBand(p); }},
};

class VectorisedRowsRecords : public testing::TestWithParam<RecordCase> {};

TEST_P(VectorisedRowsRecords, PaintWhatTheScalarStepsPaint)
{
    if (!batch::vectorised()) {
        GTEST_SKIP() << "no AVX2: the scalar steps are the only ones";
    }
    const RecordCase& c = GetParam();
    HueShiftParameters p = test::selectEverything(c.model);
    c.adjust(p);
    for (const AlphaLayout alpha :
         {AlphaLayout::none, AlphaLayout::straight, AlphaLayout::premultiplied}) {
        const KVBitmapPtr source = noisePicture(alpha);
        const KVBitmapPtr scalar = shifted(source, p, false);
        const KVBitmapPtr fourLanes = shifted(source, p, true);
        ASSERT_NE(scalar, nullptr);
        // The record does something to the picture, so that agreeing means something.
        EXPECT_FALSE(sameSamples(scalar, source)) << static_cast<int>(alpha);
        EXPECT_TRUE(sameSamples(fourLanes, scalar)) << static_cast<int>(alpha);
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, VectorisedRowsRecords, testing::ValuesIn(kCases), caseName);

// In place, into a given bitmap that holds something else, and into a fresh copy.
TEST(VectorisedRows, EveryDestinationGetsTheScalarPicture)
{
    if (!batch::vectorised()) {
        GTEST_SKIP() << "no AVX2: the scalar steps are the only ones";
    }
    HueShiftParameters p = test::selectEverything(0);
    softBand(p);
    const KVBitmapPtr source = noisePicture(AlphaLayout::straight);
    const KVBitmapPtr expected = shifted(source, p, false);

    const KVBitmapPtr given = noisePicture(AlphaLayout::straight, 77);
    EXPECT_TRUE(sameSamples(test::runShift(source, p, given).result, expected));

    const KVBitmapPtr inPlace = source->copy();
    EXPECT_TRUE(sameSamples(test::runShift(inPlace, p, inPlace).result, expected));
    EXPECT_TRUE(sameSamples(inPlace, expected));
}

} // namespace
} // namespace tintorra
