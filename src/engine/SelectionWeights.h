#pragma once

#include "colour/ColorComponents.h"
#include "colour/HueAngles.h"
#include "colour/KVColorGamut.h"
#include "engine/HueShiftParameters.h"

#include <cstdint>

namespace tintorra {

// Where a value lies relative to a range with a flat top and two linear fall-offs.
enum class SelectionZone : std::uint8_t { outside, inside, lowerFalloff, upperFalloff };

// The selection of one colour: its weight (0 = untouched, 1 = fully selected), the zone its hue
// fell in, and for the LCh modes its relative saturation (chroma over the gamut's largest
// chroma of its hue), which the shift scales its changes by.
struct Selection {
    double weight = 0.0;
    SelectionZone hueZone = SelectionZone::outside;
    double saturation = 0.0;
};

// Colours of less chroma than this are never selected in the LCh modes: their hue means nothing.
inline constexpr double kSelectableChroma = 0.01;

// The hue period of a colour mode: a full turn in radians for the LCh modes, 1 otherwise.
constexpr double hueShiftPeriod(ColorSpaceModel colorSpaceModel)
{
    return isLchColorMode(colorSpaceModel) ? kTwoPi : 1.0;
}

// Brings the record into the form the weights are computed in, once per run on the run's own
// copy: in the LCh modes hue bounds, target hue and hovered hue become radians and lightness
// bounds and hovered brightness 0..100; the hue bounds become an unwrapped non-decreasing chain
// (a range across 0 runs past one period instead of wrapping); the saturation and lightness
// bounds are put in order by raising, never lowering, values.
void normalizeHueShiftParameters(HueShiftParameters& parameters);

namespace selectionDetail {

struct RangeFactor {
    double factor;
    SelectionZone zone;
};

// Inside [lower, upper] first, then the open fall-off intervals; each fall-off is linear from 0
// at its outer end to 1 at its bound. An empty fall-off never divides.
inline RangeFactor rangeFactor(double x, double lowerFalloff, double lower, double upper,
                               double upperFalloff)
{
    if (lower <= x && x <= upper) {
        return {1.0, SelectionZone::inside};
    }
    if (lowerFalloff < x && x < lower) {
        return {(x - lowerFalloff) / (lower - lowerFalloff), SelectionZone::lowerFalloff};
    }
    if (upper < x && x < upperFalloff) {
        return {(upperFalloff - x) / (upperFalloff - upper), SelectionZone::upperFalloff};
    }
    return {0.0, SelectionZone::outside};
}

// Whole periods added while the hue is below both lower ends of the chain, or else taken away
// while it is above both upper ends. Bounds so far away that stepping would take for ever are
// reached in one jump; bounds that no step can reach leave the hue where it got to.
double bringHueIntoChainSlowly(double hue, const HueShiftParameters& p, double period, bool raise);

inline double bringHueIntoChain(double hue, const HueShiftParameters& p, double period)
{
    // The common cases, within a period or two of the chain, stay inline.
    constexpr int kInlineSteps = 4;
    if (hue <= p.hueLowerFalloff && hue < p.hueLower) {
        for (int step = 0; step < kInlineSteps; ++step) {
            hue += period;
            if (!(hue <= p.hueLowerFalloff && hue < p.hueLower)) {
                return hue;
            }
        }
        return bringHueIntoChainSlowly(hue, p, period, true);
    }
    if (hue >= p.hueUpperFalloff && hue > p.hueUpper) {
        for (int step = 0; step < kInlineSteps; ++step) {
            hue -= period;
            if (!(hue >= p.hueUpperFalloff && hue > p.hueUpper)) {
                return hue;
            }
        }
        return bringHueIntoChainSlowly(hue, p, period, false);
    }
    return hue;
}

} // namespace selectionDetail

// The selection of an LCh colour (L, C, h in radians, alpha) under a normalised record.
inline Selection lchSelection(const ColorComponents& lch, const HueShiftParameters& p,
                              const KVColorGamut* gamut)
{
    using selectionDetail::rangeFactor;
    if (lch.alpha == 0.0) {
        return {};
    }
    const double hue = selectionDetail::bringHueIntoChain(lch.c2, p, kTwoPi);
    const auto hueFactor =
        rangeFactor(hue, p.hueLowerFalloff, p.hueLower, p.hueUpper, p.hueUpperFalloff);
    if (hueFactor.zone == SelectionZone::outside) {
        return {};
    }
    const auto lightFactor =
        rangeFactor(lch.c0, p.lightLowerFalloff, p.lightLower, p.lightUpper, p.lightUpperFalloff);
    if (lightFactor.zone == SelectionZone::outside) {
        return {};
    }
    const double chroma = lch.c1;
    if (chroma < kSelectableChroma) {
        return {};
    }
    // The gamut's most chromatic colour of the pixel's own (unadjusted) hue.
    const double maxChroma = gamut != nullptr ? gamut->maxChromaForHue(lch.c2).c1 : 0.0;
    const double s = chroma / (chroma > maxChroma ? chroma : maxChroma);
    const auto satFactor =
        rangeFactor(s, p.satLowerFalloff, p.satLower, p.satUpper, p.satUpperFalloff);
    if (satFactor.zone == SelectionZone::outside) {
        return {};
    }
    return {hueFactor.factor * satFactor.factor * lightFactor.factor, hueFactor.zone, s};
}

// The selection of an HCL, HSB or HSL colour (hue fraction, second and third component, alpha,
// saturation): no chroma gate and no gamut; the lightness test reads the third component, the
// saturation test the fifth value.
inline Selection cylinderSelection(const HclComponents& colour, const HueShiftParameters& p)
{
    using selectionDetail::rangeFactor;
    if (colour.alpha == 0.0) {
        return {};
    }
    const double hue = selectionDetail::bringHueIntoChain(colour.h, p, 1.0);
    const auto hueFactor =
        rangeFactor(hue, p.hueLowerFalloff, p.hueLower, p.hueUpper, p.hueUpperFalloff);
    if (hueFactor.zone == SelectionZone::outside) {
        return {};
    }
    const auto lightFactor =
        rangeFactor(colour.l, p.lightLowerFalloff, p.lightLower, p.lightUpper, p.lightUpperFalloff);
    if (lightFactor.zone == SelectionZone::outside) {
        return {};
    }
    const auto satFactor = rangeFactor(colour.saturation, p.satLowerFalloff, p.satLower, p.satUpper,
                                       p.satUpperFalloff);
    if (satFactor.zone == SelectionZone::outside) {
        return {};
    }
    return {hueFactor.factor * satFactor.factor * lightFactor.factor, hueFactor.zone,
            colour.saturation};
}

// The weight of a colour in the record's mode; with `apply` set and a weight other than 0 the
// colour is replaced by its shifted colour. The record must be normalised.
double selectionWeight(ColorComponents& lch, const HueShiftParameters& p, bool apply);
double selectionWeight(HclComponents& colour, const HueShiftParameters& p, bool apply);

} // namespace tintorra
