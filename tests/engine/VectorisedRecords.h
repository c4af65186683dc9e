#pragma once

// Pictures and records for comparing the workers' four-lane stages with their scalar steps:
// every colour mode, mask, blend, saturation and brightness rule the shift knows, each as a
// change to a record that selects everything.

#include "HueShiftTestSupport.h"
#include "engine/HueShiftParameters.h"
#include "image/KVBitmap.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace tintorra::test {

// Coverage of every value 0..255 over a picture of the given size.
inline KVBitmapPtr paintedMask(std::int64_t wide, std::int64_t high)
{
    const KVBitmapPtr mask = KVBitmap::deviceWhite8Rep(wide, high);
    for (std::int64_t y = 0; y < high; ++y) {
        std::uint8_t* row = mask->bitmapData() + y * mask->bytesPerRow();
        for (std::int64_t x = 0; x < wide; ++x) {
            row[x] = static_cast<std::uint8_t>(x % 3 == 0 ? 255 : (x * 7 + y) % 256);
        }
    }
    return mask;
}

// alphaFirst: straight alpha stored before the colour.
enum class AlphaLayout { none, straight, premultiplied, alphaFirst };

// everyKind: greys, black, white, repeated colours and transparent pixels among the noise;
// coloursOnly: nothing but noise, so that every pixel is selected where everything is.
enum class Variety { everyKind, coloursOnly };

// A picture of 8 or 16 bits as wide as the painted masks below, wider than one stretch of the
// four-lane stages and not a multiple of four wide: noise over the whole cube of samples, with
// (for everyKind) greys, black, white, a colour repeated down the column (so that colour-table
// entries stand for several pixels) and transparent pixels. Where there is alpha, every seventh
// pixel is half transparent; for coloursOnly which ones depends on the noise.
inline KVBitmapPtr noisePicture(std::int64_t bits, AlphaLayout alpha, std::uint32_t noise = 2024,
                                Variety variety = Variety::everyKind)
{
    const bool everyKind = variety == Variety::everyKind;
    const std::uint32_t phase = everyKind ? 0 : noise;
    constexpr std::int64_t kWide = 601;
    constexpr std::int64_t kHigh = 5;
    const KVBitmapPtr bitmap =
        makeRgbBitmap(kWide, kHigh, bits, alpha != AlphaLayout::none,
                      alpha == AlphaLayout::premultiplied, alpha == AlphaLayout::alphaFirst);
    const std::uint32_t maximum = bits == 16 ? 65535 : 255;
    std::uint32_t lcg = noise;
    const auto next = [&] {
        lcg = lcg * 1664525u + 1013904223u;
        return bits == 16 ? lcg >> 16 : lcg >> 24;
    };
    for (std::int64_t y = 0; y < kHigh; ++y) {
        for (std::int64_t x = 0; x < kWide; ++x) {
            std::uint32_t r = next();
            std::uint32_t g = next();
            std::uint32_t b = next();
            if (everyKind) {
                if (x % 50 == 0) {
                    g = r;
                    b = r;
                } else if (x % 97 == 1) {
                    r = g = b = 0;
                } else if (x % 89 == 2) {
                    r = g = b = maximum;
                } else if (x % 11 == 4) {
                    r = maximum / 5 * 4;
                    g = maximum / 5;
                    b = maximum / 17 * static_cast<std::uint32_t>(y);
                }
            }
            std::uint32_t a = maximum;
            if (alpha != AlphaLayout::none && (x + phase) % 7 == 3) {
                a = maximum / 2 + 1;
            } else if (everyKind && alpha != AlphaLayout::none && x % 13 == 5) {
                a = 0;
            }
            if (alpha == AlphaLayout::premultiplied) {
                r = r * a / maximum;
                g = g * a / maximum;
                b = b * a / maximum;
            }
            if (bits == 16) {
                setWords(bitmap, x, y,
                         {static_cast<std::uint16_t>(r), static_cast<std::uint16_t>(g),
                          static_cast<std::uint16_t>(b), static_cast<std::uint16_t>(a)});
            } else {
                setChars(bitmap, x, y,
                         {static_cast<std::uint8_t>(r), static_cast<std::uint8_t>(g),
                          static_cast<std::uint8_t>(b), static_cast<std::uint8_t>(a)});
            }
        }
    }
    return bitmap;
}

struct RecordCase {
    const char* name;
    ColorSpaceModel model;
    void (*adjust)(HueShiftParameters&);
};

inline void PrintTo(const RecordCase& c, std::ostream* os)
{
    *os << c.name;
}

inline std::string recordCaseName(const testing::TestParamInfo<RecordCase>& info)
{
    return info.param.name;
}

// A band of hues with soft edges on every range, shifted, saturated and darkened.
inline void softBand(HueShiftParameters& p)
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

inline const RecordCase kRecordCases[] = {
    {"LuvEverything", ColorSpaceModel::LChuv, [](HueShiftParameters& p) { p.targetHue = 0.3; }},
    {"LuvSharpBand", ColorSpaceModel::LChuv,
     [](HueShiftParameters& p) {
         p.hueLowerFalloff = p.hueLower = 0.2;
         p.hueUpperFalloff = p.hueUpper = 0.35;
         p.targetHue = 0.7;
         p.targetSat = 0.3;
         p.saturationGain = 1.5;
     }},
    {"LuvSoftCartesian", ColorSpaceModel::LChuv, [](HueShiftParameters& p) { softBand(p); }},
    {"LuvSoftThroughGrey", ColorSpaceModel::LChuv,
     [](HueShiftParameters& p) {
         softBand(p);
         p.preserveHue = 1;
     }},
    {"LuvSoftToFalloffHues", ColorSpaceModel::LChuv,
     [](HueShiftParameters& p) {
         softBand(p);
         p.blendToFalloffHues = 1;
     }},
    {"LuvThroughGreyToFalloffHues", ColorSpaceModel::LChuv,
     [](HueShiftParameters& p) {
         softBand(p);
         p.preserveHue = 1;
         p.blendToFalloffHues = 1;
     }},
    {"LuvAcrossZero", ColorSpaceModel::LChuv,
     [](HueShiftParameters& p) {
         p.hueLowerFalloff = 0.85;
         p.hueLower = 0.95;
         p.hueUpper = 0.05;
         p.hueUpperFalloff = 0.15;
         p.targetHue = 0.5;
     }},
    // Bounds many turns away: hues are brought to them beyond the inline steps.
    {"LuvFarBounds", ColorSpaceModel::LChuv,
     [](HueShiftParameters& p) {
         p.hueLowerFalloff = 5.2;
         p.hueLower = 5.3;
         p.hueUpper = 5.5;
         p.hueUpperFalloff = 5.6;
         p.targetHue = 0.1;
     }},
    {"LuvBelowBounds", ColorSpaceModel::LChuv,
     [](HueShiftParameters& p) {
         p.hueLowerFalloff = -6.3;
         p.hueLower = -6.2;
         p.hueUpper = -6.0;
         p.hueUpperFalloff = -5.9;
         p.targetHue = 0.1;
     }},
    {"LuvGreyed", ColorSpaceModel::LChuv,
     [](HueShiftParameters& p) {
         softBand(p);
         p.targetSat = -1.0;
     }},
    {"LuvDesaturated", ColorSpaceModel::LChuv,
     [](HueShiftParameters& p) {
         softBand(p);
         p.targetSat = -0.5;
     }},
    {"LuvSaturatedHard", ColorSpaceModel::LChuv,
     [](HueShiftParameters& p) {
         p.targetSat = 0.9;
         p.saturationGain = 4.0;
     }},
    {"LuvBrighter", ColorSpaceModel::LChuv,
     [](HueShiftParameters& p) {
         softBand(p);
         p.targetBri = 0.3;
     }},
    {"LuvDarker", ColorSpaceModel::LChuv,
     [](HueShiftParameters& p) {
         softBand(p);
         p.targetBri = -0.4;
     }},
    {"LuvCurve", ColorSpaceModel::LChuv,
     [](HueShiftParameters& p) {
         softBand(p);
         p.targetBriTenVals = {0.0, 0.2, 0.3, 0.45, 0.5, 0.55, 0.7, 0.75, 0.9, 0.95, 1.0};
         p.curveGain = 1.7;
     }},
    {"LuvWithoutGamut", ColorSpaceModel::LChuv,
     [](HueShiftParameters& p) {
         softBand(p);
         // Without a gamut every colour has saturation 1.
         p.satUpper = p.satUpperFalloff = 1.0;
         p.gamut = nullptr;
     }},
    {"LuvLinearSamples", ColorSpaceModel::LChuv,
     [](HueShiftParameters& p) {
         softBand(p);
         p.imageGamma = 1.0;
     }},
    {"LuvGammaPointEight", ColorSpaceModel::LChuv,
     [](HueShiftParameters& p) {
         softBand(p);
         p.imageGamma = 0.8;
     }},
    {"LuvPainted", ColorSpaceModel::LChuv,
     [](HueShiftParameters& p) {
         softBand(p);
         p.inclusionMask = paintedMask(601, 5);
     }},
    {"LuvHighlight", ColorSpaceModel::LChuv,
     [](HueShiftParameters& p) {
         softBand(p);
         p.maskToShow = MaskView::selectionHighlight;
     }},
    {"LuvBlackMask", ColorSpaceModel::LChuv,
     [](HueShiftParameters& p) {
         softBand(p);
         p.maskToShow = MaskView::blackMask;
         p.inclusionMask = paintedMask(601, 5);
     }},
    {"LuvWhiteMask", ColorSpaceModel::LChuv,
     [](HueShiftParameters& p) {
         softBand(p);
         p.maskToShow = MaskView::whiteMask;
     }},
    {"LuvHoverHighlight", ColorSpaceModel::LChuv,
     [](HueShiftParameters& p) {
         softBand(p);
         p.maskToShow = MaskView::hoverHighlight;
         p.brightnessToHighlight = 0.45;
     }},
    {"LabEverything", ColorSpaceModel::LChab, [](HueShiftParameters& p) { p.targetHue = 0.3; }},
    {"LabSoftCartesian", ColorSpaceModel::LChab, [](HueShiftParameters& p) { softBand(p); }},
    {"LabSoftThroughGreyToFalloffHues", ColorSpaceModel::LChab,
     [](HueShiftParameters& p) {
         softBand(p);
         p.preserveHue = 1;
         p.blendToFalloffHues = 1;
     }},
    {"LabAcrossZeroGreyed", ColorSpaceModel::LChab,
     [](HueShiftParameters& p) {
         p.hueLowerFalloff = 0.85;
         p.hueLower = 0.95;
         p.hueUpper = 0.05;
         p.hueUpperFalloff = 0.15;
         p.targetSat = -1.0;
     }},
    {"LabBrighterPainted", ColorSpaceModel::LChab,
     [](HueShiftParameters& p) {
         softBand(p);
         p.targetBri = 0.6;
         p.inclusionMask = paintedMask(601, 5);
     }},
    {"LabCurveLinear", ColorSpaceModel::LChab,
     [](HueShiftParameters& p) {
         softBand(p);
         p.targetBriTenVals = {0.1, 0.1, 0.3, 0.35, 0.5, 0.6, 0.6, 0.8, 0.9, 0.9, 0.95};
         p.imageGamma = 1.0;
     }},
    {"LabWithoutGamut", ColorSpaceModel::LChab,
     [](HueShiftParameters& p) {
         softBand(p);
         // Without a gamut every colour has saturation 1.
         p.satUpper = p.satUpperFalloff = 1.0;
         p.gamut = nullptr;
     }},
    {"LabHighlight", ColorSpaceModel::LChab,
     [](HueShiftParameters& p) {
         softBand(p);
         p.maskToShow = MaskView::selectionHighlight;
     }},
    {"HclSoft", ColorSpaceModel::HCL, [](HueShiftParameters& p) { softBand(p); }},
    {"HsbSoftThroughGrey", ColorSpaceModel::HSB,
     [](HueShiftParameters& p) {
         softBand(p);
         p.preserveHue = 1;
     }},
    {"HslDarkerPainted", ColorSpaceModel::HSL,
     [](HueShiftParameters& p) {
         softBand(p);
         p.targetBri = -0.3;
         p.inclusionMask = paintedMask(601, 5);
     }},
    {"HsbWhiteMask", ColorSpaceModel::HSB,
     [](HueShiftParameters& p) {
         softBand(p);
         p.maskToShow = MaskView::whiteMask;
     }},
};

} // namespace tintorra::test
