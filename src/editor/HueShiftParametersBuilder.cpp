#include "editor/HueShiftParametersBuilder.h"

#include "colour/HueAngles.h"
#include "editor/SelectionStatistics.h"

namespace tintorra {

namespace {

// How many leading curve entries the highlight placeholder fills with its hue.
constexpr std::size_t kHighlightCurveHueEntries = 4;

} // namespace

double hueOppositeRangeCentre(double lower, double upper)
{
    return wrapIntoRange(lower + hueDifference(lower, upper, 1.0) / 2.0 + 0.5, 0.0, 1.0);
}

HueShiftParameters hueShiftParameters(const KVHueShiftParameterSet& set,
                                      const HueShiftContext& context)
{
    HueShiftParameters p;
    p.imageGamma = 1.0 / set.displayGamma();
    p.targetHue = set.targetHue();
    p.targetSat = set.targetSat();
    p.targetBri = set.targetBri();
    p.targetBriTenVals = set.targetBriCurve();

    const KVSliderValues& hue = set.sourceHueRange();
    p.hueUpper = hue.upper;
    p.hueLower = hue.lower;
    p.hueUpperFalloff = hue.upperFalloff;
    p.hueLowerFalloff = hue.lowerFalloff;
    const KVSliderValues& sat = set.sourceSatRange();
    p.satUpperFalloff = sat.upperFalloff;
    p.satUpper = sat.upper;
    p.satLower = sat.lower;
    p.satLowerFalloff = sat.lowerFalloff;
    const KVSliderValues& bri = set.sourceBriRange();
    p.lightUpperFalloff = bri.upperFalloff;
    p.lightUpper = bri.upper;
    p.lightLower = bri.lower;
    p.lightLowerFalloff = bri.lowerFalloff;

    p.statistics = selectionStatistics(context.spectrum, hue, context.gamut.get());
    p.saturationGain = saturationGain(p.statistics);
    p.curveGain = curveGain(p.statistics, set.colorSpaceModel());

    p.preserveHue = set.preserveHue() ? 1 : 0;
    p.colorSpaceModel = set.colorSpaceModel();
    p.blendToFalloffHues = set.blendToFalloffHues() ? 1 : 0;
    p.maskToShow = set.maskToShow();

    if (p.maskToShow == MaskView::selectionHighlight) {
        const double opposite = hueOppositeRangeCentre(hue.lower, hue.upper);
        p.targetBri = 1.0;
        p.targetSat = 1.0;
        p.targetHue = opposite;
        for (std::size_t i = 0; i < p.targetBriTenVals.size(); ++i) {
            p.targetBriTenVals[i] = i < kHighlightCurveHueEntries ? opposite : 1.0;
        }
    }

    p.gamut = context.gamut;
    if (context.colorTable != nullptr) {
        p.colorTable = ColorTableRef::of(*context.colorTable);
    }
    p.inclusionMask = context.inclusionMask;
    p.exclusionMask = context.exclusionMask;
    p.paintMaskLimitsMasks = context.currentSelectionTool == kMaskPaintbrushTool ? 0 : 1;
    p.hueToHighlight = context.hueToHighlight;
    p.saturationToHighlight = context.saturationToHighlight;
    p.brightnessToHighlight = context.brightnessToHighlight;
    return p;
}

} // namespace tintorra
