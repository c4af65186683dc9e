#include "engine/SelectionWeights.h"

#include "engine/ShiftColor.h"

#include <algorithm>
#include <cmath>

namespace tintorra {

namespace {

// Lower bound, bound, upper bound, upper fall-off end raised into order.
void raiseIntoOrder(double& lowerFalloff, double& lower, double& upper, double& upperFalloff)
{
    lower = std::max(lower, lowerFalloff);
    upper = std::max(upper, lower);
    upperFalloff = std::max(upperFalloff, upper);
}

} // namespace

void normalizeHueShiftParameters(HueShiftParameters& p)
{
    const double period = hueShiftPeriod(p.colorSpaceModel);
    if (isLchColorMode(p.colorSpaceModel)) {
        for (double* angle : {&p.hueLowerFalloff, &p.hueLower, &p.hueUpper, &p.hueUpperFalloff,
                              &p.targetHue, &p.hueToHighlight}) {
            *angle *= kTwoPi;
        }
        for (double* lightness : {&p.lightLowerFalloff, &p.lightLower, &p.lightUpper,
                                  &p.lightUpperFalloff, &p.brightnessToHighlight}) {
            *lightness *= 100.0;
        }
    }
    // Each test against the value just adjusted, one period at most.
    if (p.hueLowerFalloff > p.hueLower) {
        p.hueLower += period;
    }
    if (p.hueLower > p.hueUpper) {
        p.hueUpper += period;
    }
    if (p.hueUpper > p.hueUpperFalloff) {
        p.hueUpperFalloff += period;
    }
    raiseIntoOrder(p.satLowerFalloff, p.satLower, p.satUpper, p.satUpperFalloff);
    raiseIntoOrder(p.lightLowerFalloff, p.lightLower, p.lightUpper, p.lightUpperFalloff);
}

namespace selectionDetail {

double bringHueIntoChainSlowly(double hue, const HueShiftParameters& p, double period, bool raise)
{
    const auto beyond = [&](double h) {
        return raise ? h <= p.hueLowerFalloff && h < p.hueLower
                     : h >= p.hueUpperFalloff && h > p.hueUpper;
    };
    const double step = raise ? period : -period;
    constexpr int kSteps = 64;
    for (int pass = 0; pass < 2; ++pass) {
        for (int i = 0; i < kSteps; ++i) {
            const double next = hue + step;
            if (next == hue) {
                return hue;
            }
            hue = next;
            if (!beyond(hue)) {
                return hue;
            }
        }
        if (pass == 1) {
            break;
        }
        // Still far away: jump to a period short of the nearer end and step from there.
        const double end = raise ? std::min(p.hueLowerFalloff, p.hueLower)
                                 : std::max(p.hueUpperFalloff, p.hueUpper);
        const double turns = std::floor(std::fabs(end - hue) / period) - 1.0;
        if (!std::isfinite(turns)) {
            return hue;
        }
        if (turns > 0.0) {
            hue += turns * step;
        }
    }
    return hue;
}

} // namespace selectionDetail

double selectionWeight(ColorComponents& lch, const HueShiftParameters& p, bool apply)
{
    const KVColorGamut* const gamut = p.gamut.get();
    const Selection selection = lchSelection(lch, p, gamut);
    if (apply && selection.weight != 0.0) {
        lch = shiftLchColor(lch, selection, p, gamut);
    }
    return selection.weight;
}

double selectionWeight(HclComponents& colour, const HueShiftParameters& p, bool apply)
{
    const Selection selection = cylinderSelection(colour, p);
    if (apply && selection.weight != 0.0) {
        colour = shiftCylinderColor(colour, selection, p);
    }
    return selection.weight;
}

} // namespace tintorra
