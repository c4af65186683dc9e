#pragma once

#include "colour/ColorBlending.h"
#include "colour/ColorComponents.h"
#include "colour/KVColorGamut.h"
#include "engine/HueShiftParameters.h"
#include "engine/SelectionWeights.h"

#include <cmath>

namespace tintorra {

// The shift of one selected colour towards the record's targets. Pure functions of the colour,
// its selection and the normalised record; the engine calls them per distinct colour (8-bit
// images) or per pixel.

namespace shiftDetail {

// value + change, except that a change which cannot be computed (0 x infinity from an
// unguarded gain) leaves the value as it is.
inline double applyChange(double value, double change)
{
    return std::isnan(change) ? value : value + change;
}

inline double clampTo(double value, double low, double high)
{
    return value < low ? low : (value > high ? high : value);
}

// The brightness curve at x in tenths of the input scale: linear between the two points around
// x; the top segment also serves x up to 11. False when x lies outside, or is NaN.
inline bool curveAt(const KVTenSegmentValues& curve, double x, double& y)
{
    if (!(x > -1.0 && x < 11.0)) {
        return false;
    }
    int i = static_cast<int>(x);
    if (i == 10) {
        i = 9;
    }
    y = curve[i] + (curve[i + 1] - curve[i]) * (x - i);
    return true;
}

// The hue the unshifted colour blends from: with blendToFalloffHues, the end of the fall-off the
// hue lay in, or the new hue when it lay inside the range.
inline double blendStartHue(double hue, double newHue, SelectionZone zone,
                            const HueShiftParameters& p)
{
    if (p.blendToFalloffHues == 0) {
        return hue;
    }
    switch (zone) {
    case SelectionZone::lowerFalloff:
        return p.hueLowerFalloff;
    case SelectionZone::upperFalloff:
        return p.hueUpperFalloff;
    default:
        return newHue;
    }
}

inline int blendMode(const HueShiftParameters& p)
{
    return p.preserveHue != 0 ? kBlendThroughGrey : kBlendCartesian;
}

// The gamut's limit, or none without a gamut.
inline double gamutChroma(const KVColorGamut* gamut, double hue, double lightness)
{
    return gamut != nullptr ? gamut->chromaForHue(hue, lightness) : 0.0;
}

} // namespace shiftDetail

// The lightness steps need up to two powers: the first of a base derived from the lightness
// (the room above or below it for a brightness change, the lightness itself for the curve), the
// second of the curve's output. They are split out so that a run of colours can have its
// powers computed together; the single-colour functions below compose the same steps.

// Whether the lightness steps leave every lightness as it is: no brightness change and the
// identity curve, which gives back the first power's result, so that the second power only
// undoes the first. Both powers are then skipped rather than left to add rounding.
inline bool keepsLightness(const HueShiftParameters& p)
{
    if (p.targetBri != 0.0) {
        return false;
    }
    for (std::size_t i = 0; i < p.targetBriTenVals.size(); ++i) {
        if (p.targetBriTenVals[i] != static_cast<double>(i) / 10.0) {
            return false;
        }
    }
    return true;
}

// The base of the first power, raised to imageGamma; `level` is L / 100 in the LCh modes and the
// third component in the others.
inline double lightnessPowerBase(double level, const HueShiftParameters& p)
{
    if (p.targetBri > 0.0) {
        // Lightness a hair above the top (white through a matrix whose rows round up) has no
        // room left above it rather than a NaN.
        return std::fmax(1.0 - level, 0.0);
    }
    return level;
}

// For the curve: its output at the first power's result, the base of the second power (raised
// to 1 / imageGamma); false where the curve leaves the lightness alone.
inline bool curveOutput(double firstPower, const HueShiftParameters& p, double& y)
{
    return p.targetBri == 0.0 && shiftDetail::curveAt(p.targetBriTenVals, firstPower * 10.0, y);
}

// LCh lightness from the powers: the doubled brightness change, or the curve scaled by
// saturation, weight and gain; clamped to 0..100.
inline double lchShiftedLightness(double L, const Selection& selection, const HueShiftParameters& p,
                                  double firstPower, bool curveApplies, double secondPower)
{
    const double s = selection.saturation;
    const double w = selection.weight;
    double newL = L;
    if (p.targetBri != 0.0) {
        // The factor 2 is deliberate.
        const double t = p.targetBri * s * w;
        newL = L + 2.0 * 100.0 * firstPower * t;
    } else if (curveApplies) {
        newL = shiftDetail::applyChange(L, (100.0 * secondPower - L) * s * w * p.curveGain);
    }
    return shiftDetail::clampTo(newL, 0.0, 100.0);
}

// The rest of the LCh shift once the new lightness is known: chroma kept at its place between
// grey and the gamut boundary, the saturation change, and for a partial weight the blend from
// the unshifted colour.
inline ColorComponents finishLchShift(const ColorComponents& lch, const Selection& selection,
                                      const HueShiftParameters& p, const KVColorGamut* gamut,
                                      double newL)
{
    using namespace shiftDetail;
    const double L = lch.c0;
    const double C = lch.c1;
    const double h = lch.c2;
    const double s = selection.saturation;
    const double w = selection.weight;

    double newHue = p.targetHue;
    const double oldLimit = std::fmax(C, gamutChroma(gamut, h, L));
    const double newLimit = gamutChroma(gamut, newHue, newL);
    double newC = oldLimit > newLimit ? C * newLimit / oldLimit : C;

    if (p.targetSat > 0.0) {
        // The room left is never negative; a colour that rounding has put a hair beyond the limit
        // has none, so that an infinite gain cannot flip it to minus infinity and grey.
        const double room = newLimit > newC ? newLimit - newC : 0.0;
        newC = applyChange(newC, room * p.targetSat * w * s * p.saturationGain);
        newC = clampTo(newC, 0.0, newLimit);
    } else if (p.targetSat == -1.0) {
        newC = 0.0;
        newHue = 0.0;
    } else if (p.targetSat < 0.0) {
        newC = clampTo(newC + p.targetSat * w * newC, 0.0, newLimit);
    }

    const ColorComponents shifted{newL, newC, newHue, lch.alpha};
    if (w == 1.0) {
        return shifted;
    }
    const ColorComponents from{L, C, blendStartHue(h, newHue, selection.hueZone, p), lch.alpha};
    return blendColorsLch(blendMode(p), from, shifted, w);
}

// LCh (L, C, h in radians, alpha): new hue, lightness by the brightness change or the curve,
// chroma kept at its place between grey and the gamut boundary, then the saturation change, and
// for a partial weight a blend from the unshifted colour.
inline ColorComponents shiftLchColor(const ColorComponents& lch, const Selection& selection,
                                     const HueShiftParameters& p, const KVColorGamut* gamut)
{
    const bool keep = keepsLightness(p);
    const double firstPower =
        keep ? 0.0 : std::pow(lightnessPowerBase(lch.c0 / 100.0, p), p.imageGamma);
    double y = 0.0;
    const bool curveApplies = !keep && curveOutput(firstPower, p, y);
    const double secondPower = curveApplies ? std::pow(y, 1.0 / p.imageGamma) : 0.0;
    const double newL =
        lchShiftedLightness(lch.c0, selection, p, firstPower, curveApplies, secondPower);
    return finishLchShift(lch, selection, p, gamut, newL);
}

// Cylinder lightness (third component) from the powers: HCL doubles the brightness change and
// scales the curve by the saturation value, HSB and HSL scale both by S; clamped to 0..1.
inline double cylinderShiftedLevel(const HclComponents& colour, const Selection& selection,
                                   const HueShiftParameters& p, double firstPower,
                                   bool curveApplies, double secondPower)
{
    const bool hcl = p.colorSpaceModel == ColorSpaceModel::HCL;
    const double S = colour.c;
    const double V = colour.l;
    const double w = selection.weight;
    double newV = V;
    if (p.targetBri != 0.0) {
        const double t = p.targetBri * S * w;
        newV = hcl ? V + 2.0 * firstPower * t : V + firstPower * t;
    } else if (curveApplies) {
        const double scale = hcl ? colour.saturation : S;
        newV = shiftDetail::applyChange(V, (secondPower - V) * scale * w);
    }
    return shiftDetail::clampTo(newV, 0.0, 1.0);
}

// The rest of the cylinder shift: the saturation change (raising doubles it, lowering does not;
// the asymmetry is deliberate) and the blend for a partial weight.
inline HclComponents finishCylinderShift(const HclComponents& colour, const Selection& selection,
                                         const HueShiftParameters& p, double newV)
{
    using namespace shiftDetail;
    const double S = colour.c;
    const double w = selection.weight;
    double newHue = p.targetHue;
    double newS = S;
    if (p.targetSat > 0.0) {
        newS = clampTo(S + 2.0 * p.targetSat * w * S, 0.0, 1.0);
    } else if (p.targetSat == -1.0) {
        newS = 0.0;
        newHue = 0.0;
    } else if (p.targetSat < 0.0) {
        newS = clampTo(S + p.targetSat * w * S, 0.0, 1.0);
    }

    const HclComponents shifted{newHue, newS, newV, colour.alpha, colour.saturation};
    if (w == 1.0) {
        return shifted;
    }
    const HclComponents from{blendStartHue(colour.h, newHue, selection.hueZone, p), S, colour.l,
                             colour.alpha, colour.saturation};
    return blendColors(blendMode(p), from, shifted, w);
}

// HCL, HSB and HSL (hue fraction, second component S, third component V, alpha, saturation):
// the same steps in the mode's own components, every clamp to [0, 1], no gamut.
inline HclComponents shiftCylinderColor(const HclComponents& colour, const Selection& selection,
                                        const HueShiftParameters& p)
{
    const bool keep = keepsLightness(p);
    const double firstPower = keep ? 0.0 : std::pow(lightnessPowerBase(colour.l, p), p.imageGamma);
    double y = 0.0;
    const bool curveApplies = !keep && curveOutput(firstPower, p, y);
    const double secondPower = curveApplies ? std::pow(y, 1.0 / p.imageGamma) : 0.0;
    const double newV =
        cylinderShiftedLevel(colour, selection, p, firstPower, curveApplies, secondPower);
    return finishCylinderShift(colour, selection, p, newV);
}

} // namespace tintorra
