#pragma once

#include "colour/CieConversions.h"
#include "colour/ColorComponents.h"
#include "colour/ColorCylinders.h"
#include "colour/HueAngles.h"
#include "colour/KVColorGamut.h"
#include "colour/Matrix3.h"
#include "engine/HueShiftParameters.h"
#include "engine/SelectionMasks.h"
#include "engine/SelectionWeights.h"
#include "engine/ShiftColor.h"

namespace tintorra {

// What one colour of a run becomes, whatever the record asks to show: its weight and, when it
// is to be painted with a colour (weight above 0 and neither of the grey masks), that colour as
// linear straight-alpha RGB inside 0..1.
struct ShiftOutcome {
    double weight = 0.0;
    ColorComponents rgb;
};

// The per-run state every colour of a run is computed with; read-only once made.
struct OutcomeContext {
    // Normalised.
    const HueShiftParameters* parameters = nullptr;
    const KVColorGamut* gamut = nullptr;
    Matrix3 M{};
    Matrix3 MI{};
    PartialHighlight partialHighlight = PartialHighlight::halveLightness;
};

namespace outcomeDetail {

// 0..1, with NaN (only reachable from nonsense parameters) written as 0 rather than left to an
// undefined integer conversion.
inline double unitSample(double v)
{
    return v > 0.0 ? (v < 1.0 ? v : 1.0) : 0.0;
}

inline ColorComponents unitColor(const ColorComponents& c)
{
    return {unitSample(c.c0), unitSample(c.c1), unitSample(c.c2), unitSample(c.alpha)};
}

inline ColorComponents lchToLinearRgb(const ColorComponents& lch, ColorSpaceModel mode,
                                      const Matrix3& MI)
{
    return unitColor(mode == ColorSpaceModel::LChuv ? lchuvToRgb(lch, MI) : lchabToRgb(lch, MI));
}

inline ColorComponents cylinderToLinearRgb(const HclComponents& c, ColorSpaceModel mode)
{
    const ColorComponents components{c.h, c.c, c.l, c.alpha};
    switch (mode) {
    case ColorSpaceModel::HCL:
        return unitColor(hclToRgb(components));
    case ColorSpaceModel::HSB:
        return unitColor(hsbToRgb(components));
    default:
        return unitColor(hslToRgb(components));
    }
}

} // namespace outcomeDetail

// Linear RGB into the record's LCh mode (0 over Luv, 1 over Lab).
inline ColorComponents lchFromLinearRgb(const ColorComponents& rgb, ColorSpaceModel mode,
                                        const Matrix3& M)
{
    return mode == ColorSpaceModel::LChuv ? rgbToLchuv(rgb, M) : rgbToLchab(rgb, M);
}

// Linear RGB into HCL, HSB or (any other mode) HSL, with the saturation the selection tests as
// the fifth value: HCL's own, the S of HSB and HSL.
inline HclComponents cylinderFromLinearRgb(const ColorComponents& rgb, ColorSpaceModel mode)
{
    if (mode == ColorSpaceModel::HCL) {
        return rgbToHcl(rgb);
    }
    const ColorComponents c = mode == ColorSpaceModel::HSB ? rgbToHsb(rgb) : rgbToHsl(rgb);
    return {c.c0, c.c1, c.c2, c.alpha, c.c1};
}

// An LCh colour (L, C, h, alpha) through selection, shift or highlight, back to linear RGB.
inline ShiftOutcome lchOutcome(const ColorComponents& lch, const OutcomeContext& context)
{
    const HueShiftParameters& p = *context.parameters;
    const Selection selection = lchSelection(lch, p, context.gamut);
    if (showsGreyMask(p.maskToShow) || !(selection.weight > 0.0)) {
        return {selection.weight, {}};
    }
    const bool full = selection.weight == 1.0;
    const bool highlight =
        p.maskToShow == MaskView::selectionHighlight ||
        (p.maskToShow == MaskView::hoverHighlight && isHoveredLightness(lch.c0, p));
    const ColorComponents result =
        highlight ? lchHighlightColor(lch.c2, full, context.partialHighlight, context.gamut)
                  : shiftLchColor(lch, selection, p, context.gamut);
    return {selection.weight, outcomeDetail::lchToLinearRgb(result, p.colorSpaceModel, context.MI)};
}

// An HCL, HSB or HSL colour through selection, shift or highlight, back to linear RGB.
inline ShiftOutcome cylinderOutcome(const HclComponents& colour, const OutcomeContext& context)
{
    const HueShiftParameters& p = *context.parameters;
    const Selection selection = cylinderSelection(colour, p);
    if (showsGreyMask(p.maskToShow) || !(selection.weight > 0.0)) {
        return {selection.weight, {}};
    }
    const bool hcl = p.colorSpaceModel == ColorSpaceModel::HCL;
    const bool full = selection.weight == 1.0;
    HclComponents result;
    if (p.maskToShow == MaskView::selectionHighlight) {
        if (hcl) {
            result = hclHighlightColor(colour);
        } else {
            const ColorComponents h = hsbHighlightColor(colour.h, full);
            result = {h.c0, h.c1, h.c2, h.alpha, h.c1};
        }
    } else {
        result = shiftCylinderColor(colour, selection, p);
        if (p.maskToShow == MaskView::hoverHighlight && isHoveredLightness(colour.l, p)) {
            result.h = wrapIntoRange(result.h + 0.5, 0.0, 1.0);
            result.alpha = 1.0;
            if (hcl) {
                result.l = 0.5;
            }
        }
    }
    return {selection.weight, outcomeDetail::cylinderToLinearRgb(result, p.colorSpaceModel)};
}

} // namespace tintorra
