#include "colour/ColorBlending.h"

#include "colour/ColorMath.h"
#include "colour/HueAngles.h"

#include <cmath>

namespace tintorra {

namespace {

struct HueChroma {
    double hue;
    double chroma;
};

// Blends hue and chroma; `period` is 1 for hue fractions and 2 pi for radians.
HueChroma blendHueChroma(int mode, HueChroma from, HueChroma to, double t, double period)
{
    if (mode == kBlendCartesian) {
        const double toRadians = kTwoPi / period;
        const double angleFrom = from.hue * toRadians;
        const double angleTo = to.hue * toRadians;
        const double x = lerp(from.chroma * std::cos(angleFrom), to.chroma * std::cos(angleTo), t);
        const double y = lerp(from.chroma * std::sin(angleFrom), to.chroma * std::sin(angleTo), t);
        const double hue = fastAtan2(y, x) / toRadians;
        return {std::fmod(hue + period, period), std::hypot(x, y)};
    }
    if (mode != kBlendThroughGrey) {
        return {from.hue + t * hueDifference(from.hue, to.hue, period),
                lerp(from.chroma, to.chroma, t)};
    }
    // Through grey: the first colour's share of the whole chroma path decides which hue the
    // result is on.
    const double total = from.chroma + to.chroma;
    if (total > 0.0 && from.chroma / total > t) {
        return {from.hue, from.chroma - total * t};
    }
    return {to.hue, to.chroma - (1.0 - t) * total};
}

} // namespace

ColorComponents blendColors(int mode, ColorComponents from, ColorComponents to, double t)
{
    const HueChroma hc = blendHueChroma(mode, {from.c0, from.c1}, {to.c0, to.c1}, t, 1.0);
    return {hc.hue, hc.chroma, lerp(from.c2, to.c2, t), lerp(from.alpha, to.alpha, t)};
}

HclComponents blendColors(int mode, HclComponents from, HclComponents to, double t)
{
    const HueChroma hc = blendHueChroma(mode, {from.h, from.c}, {to.h, to.c}, t, 1.0);
    return {hc.hue, hc.chroma, lerp(from.l, to.l, t), lerp(from.alpha, to.alpha, t),
            lerp(from.saturation, to.saturation, t)};
}

ColorComponents blendColorsLch(int mode, ColorComponents from, ColorComponents to, double t)
{
    const HueChroma hc = blendHueChroma(mode, {from.c2, from.c1}, {to.c2, to.c1}, t, kTwoPi);
    return {lerp(from.c0, to.c0, t), hc.chroma, hc.hue, lerp(from.alpha, to.alpha, t)};
}

} // namespace tintorra
