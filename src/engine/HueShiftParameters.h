#pragma once

#include "colour/ColorSpaceModel.h"
#include "colour/KVColorGamut.h"
#include "controls/KVTenSegmentValues.h"
#include "controls/MaskView.h"
#include "engine/ColorTable.h"
#include "image/KVBitmap.h"

#include <cstdint>

namespace tintorra {

// What the selection statistics measure over the fully selected hue range of the image's hue
// spectrum. Hue is in the spectrum's own unit (radians in the LCh modes, a fraction otherwise);
// lightness and chroma are the spectrum's values. The three ratios divide by the largest chroma
// of the gamut at the mean hue and are left unguarded: without a gamut they are infinite.
struct SelectionStatistics {
    double meanHue = 0.0;
    double meanLightness = 0.0;
    double lightnessMinimum = 0.0;
    double lightnessMaximum = 0.0;
    double meanChroma = 0.0;
    double chromaMinimum = 0.0;
    double chromaMaximum = 0.0;
    double meanChromaRatio = 0.0;
    double chromaMinimumRatio = 0.0;
    double chromaMaximumRatio = 0.0;

    friend bool operator==(const SelectionStatistics&, const SelectionStatistics&) = default;
};

// The colour table as the engine reads it. Not owned: the table must stay alive and unchanged
// while a shift runs.
struct ColorTableRef {
    ColorSpaceModel colorSpaceModel = ColorSpaceModel::LChuv;
    std::uint64_t count = 0;
    const color_table_lch_entry_info* colors = nullptr;
    const std::uint32_t* locations = nullptr;
    // Pixels described by `locations`.
    std::uint64_t locationCount = 0;
    // Whether the entries are in ascending order of hue, as the table builder leaves them; lets
    // the engine skip runs of hues that cannot be selected.
    bool sortedByHue = false;

    static ColorTableRef of(const LChColorTable& table)
    {
        return {table.colorSpaceModel, table.count,         table.colors.get(),
                table.locations.get(), table.locationCount, true};
    }
};

// The record handed to the pixel engine for one run, built afresh from the parameter set each
// time (hueShiftParameters) and passed by value; the parameter string is written from it too.
//
// Hue bounds and targets are fractions of the circle and lightness bounds fractions of the
// scale, as the sliders deliver them; the engine rescales them on its own copy. Note the hue
// range's order (bounds first, then fall-offs) differs from the other two ranges.
struct HueShiftParameters {
    // Encoding exponent of the samples: 1 / display gamma.
    double imageGamma = 1.0 / 2.2;
    double targetHue = 0.0;
    // -1 .. 1; exactly -1 removes all colour.
    double targetSat = 0.0;
    // Multiplies the saturation increase: Cmax / mean chroma + 1.
    double saturationGain = 1.0;
    // -1 .. 1; exactly 0 selects the brightness curve.
    double targetBri = 0.0;
    // Multiplies the curve's lightness change: 1, or 1 / mean lightness + 1.
    double curveGain = 1.0;
    // Output lightness at the inputs 0, 0.1, ... 1.
    KVTenSegmentValues targetBriTenVals = identityTenSegmentValues();

    double hueUpper = 0.0;
    double hueLower = 0.0;
    double hueUpperFalloff = 0.0;
    double hueLowerFalloff = 0.0;

    double satUpperFalloff = 1.0;
    double satUpper = 1.0;
    double satLower = 0.0;
    double satLowerFalloff = 0.0;

    double lightUpperFalloff = 1.0;
    double lightUpper = 1.0;
    double lightLower = 0.0;
    double lightLowerFalloff = 0.0;

    // Travels with the record for diagnostics; the engine reads only the two gains.
    SelectionStatistics statistics;

    std::uint8_t preserveHue = 0;
    ColorSpaceModel colorSpaceModel = ColorSpaceModel::LChuv;
    std::uint8_t blendToFalloffHues = 0;
    MaskView maskToShow = MaskView::shiftedImage;

    // For the LCh modes; may be absent.
    KVColorGamutPtr gamut;
    // For 8-bit images.
    ColorTableRef colorTable;
    // Painted coverage, 8-bit grey bitmaps of the image's size (255 = painted); either may be
    // absent. Painting the inclusion mask limits the shift to what is painted; painting the
    // exclusion mask keeps the shift away from it.
    KVBitmapPtr inclusionMask;
    KVBitmapPtr exclusionMask;

    // Whether the black and white masks are limited by the painted masks: set unless the mask
    // brush is the current tool.
    std::uint8_t paintMaskLimitsMasks = 1;

    // The colour hovered in the spectrogram. The brightness is a fraction 0..1 in every mode.
    double hueToHighlight = 0.0;
    double saturationToHighlight = 0.0;
    double brightnessToHighlight = 0.0;
};

} // namespace tintorra
