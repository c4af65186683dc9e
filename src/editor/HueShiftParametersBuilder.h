#pragma once

#include "controls/KVHueShiftParameterSet.h"
#include "engine/ColorTable.h"
#include "engine/HueShiftParameters.h"
#include "engine/HueSpectrum.h"

namespace tintorra {

// The tool whose use keeps the painted masks from limiting the black and white masks.
inline constexpr long kMaskPaintbrushTool = 5;

// What the owner of a parameter set holds besides it and hands to every engine run.
struct HueShiftContext {
    KVColorGamutPtr gamut;
    // Referenced by the record; must outlive the engine run.
    const LChColorTable* colorTable = nullptr;
    const LChSpectrum* spectrum = nullptr;
    KVBitmapPtr inclusionMask;
    KVBitmapPtr exclusionMask;
    // Tag of the current selection tool, -1 for none.
    long currentSelectionTool = -1;
    // The colour hovered in the spectrogram; brightness as a fraction 0..1.
    double hueToHighlight = 0.0;
    double saturationToHighlight = 0.0;
    double brightnessToHighlight = 0.0;
};

// The engine record for one run: the set's values with the selection statistics and both gains
// measured on the context's spectrum and gamut. With maskToShow 1 the targets are replaced by
// the highlight's placeholders: target hue opposite the centre of the hue range, saturation and
// brightness 1, and a curve of four times that hue followed by seven times 1.
HueShiftParameters hueShiftParameters(const KVHueShiftParameterSet& set,
                                      const HueShiftContext& context);

// The hue opposite the centre of a hue range (fractions of the circle), wrapped into [0, 1).
double hueOppositeRangeCentre(double lower, double upper);

} // namespace tintorra
