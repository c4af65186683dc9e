#pragma once

#include "colour/ColorBlending.h"
#include "colour/ColorComponents.h"
#include "colour/KVColorGamut.h"
#include "controls/HueShiftParameters.h"
#include "engine/SelectionWeights.h"

#include <cmath>

namespace tintorra {

// The shift of one selected colour towards the record's targets. Pure functions of the colour,
// its selection and the normalised record; the engine calls them per distinct colour (8-bit
// images) or per pixel.

namespace shift_detail {

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

} // namespace shift_detail

// LCh (L, C, h in radians, alpha): new hue, lightness by the brightness change or the curve,
// chroma kept at its place between grey and the gamut boundary, then the saturation change, and
// for a partial weight a blend from the unshifted colour.
inline ColorComponents shiftLchColor(const ColorComponents& lch, const Selection& selection,
                                     const HueShiftParameters& p, const KVColorGamut* gamut)
{
    using namespace shift_detail;
    const double L = lch.c0;
    const double C = lch.c1;
    const double h = lch.c2;
    const double s = selection.saturation;
    const double w = selection.weight;
    const double gamma = p.imageGamma;

    double newHue = p.targetHue;
    double newL = L;
    if (p.targetBri != 0.0) {
        const double t = p.targetBri * s * w;
        // The factor 2 is deliberate. Lightness a hair above 100 (white through a matrix whose
        // rows round up) has no room left above it rather than a NaN.
        if (p.targetBri > 0.0) {
            const double room = std::fmax(1.0 - L / 100.0, 0.0);
            newL = L + 2.0 * 100.0 * std::pow(room, gamma) * t;
        } else {
            newL = L + 2.0 * 100.0 * std::pow(L / 100.0, gamma) * t;
        }
    } else {
        double y;
        const double x = std::pow(L / 100.0, gamma) * 10.0;
        if (curveAt(p.targetBriTenVals, x, y)) {
            newL = applyChange(L, (100.0 * std::pow(y, 1.0 / gamma) - L) * s * w * p.curveGain);
        }
    }
    newL = clampTo(newL, 0.0, 100.0);

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

// HCL, HSB and HSL (hue fraction, second component S, third component V, alpha, saturation):
// the same steps in the mode's own components, every clamp to [0, 1], no gamut. HCL doubles the
// brightness change and scales the curve by the saturation value; HSB and HSL scale both by S.
// Raising saturation doubles the change, lowering does not; the asymmetry is deliberate.
inline HclComponents shiftCylinderColor(const HclComponents& colour, const Selection& selection,
                                        const HueShiftParameters& p)
{
    using namespace shift_detail;
    const bool hcl = p.colorSpaceModel == kColorModeHCL;
    const double S = colour.c;
    const double V = colour.l;
    const double w = selection.weight;
    const double gamma = p.imageGamma;

    double newHue = p.targetHue;
    double newV = V;
    if (p.targetBri != 0.0) {
        const double t = p.targetBri * S * w;
        const double base = p.targetBri > 0.0 ? std::fmax(1.0 - V, 0.0) : V;
        newV = hcl ? V + 2.0 * std::pow(base, gamma) * t : V + std::pow(base, gamma) * t;
    } else {
        double y;
        const double x = std::pow(V, gamma) * 10.0;
        if (curveAt(p.targetBriTenVals, x, y)) {
            const double scale = hcl ? colour.saturation : S;
            newV = applyChange(V, (std::pow(y, 1.0 / gamma) - V) * scale * w);
        }
    }
    newV = clampTo(newV, 0.0, 1.0);

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
    const HclComponents from{blendStartHue(colour.h, newHue, selection.hueZone, p), S, V,
                             colour.alpha, colour.saturation};
    return blendColors(blendMode(p), from, shifted, w);
}

} // namespace tintorra
