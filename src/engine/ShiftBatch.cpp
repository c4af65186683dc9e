#include "engine/ShiftBatch.h"

#include "colour/CieConversions.h"
#include "engine/BatchMath.h"
#include "engine/SelectionMasks.h"

#include <algorithm>

namespace tintorra {

namespace {

// The mode colour each selected member is painted with, its lightness powers taken together.
template <typename Colour, typename Level, typename Finish, typename Highlight>
void paintedColors(ShiftBatch& s, std::size_t count, const HueShiftParameters& p,
                   std::vector<Colour>& colours, const Level& levelOf, const Finish& finish,
                   const Highlight& highlight)
{
    if (p.maskToShow == MaskView::selectionHighlight) {
        for (std::size_t k = 0; k < count; ++k) {
            const std::uint32_t j = s.selected[k];
            colours[j] = highlight(colours[j], s.selection[k]);
        }
        return;
    }
    const bool keep = keepsLightness(p);
    if (keep) {
        std::fill_n(s.a.begin(), count, 0.0);
    } else {
        for (std::size_t k = 0; k < count; ++k) {
            s.a[k] = lightnessPowerBase(levelOf(colours[s.selected[k]]), p);
        }
        batch::pow(s.a.data(), p.imageGamma, s.a.data(), count);
    }
    bool anyCurve = false;
    for (std::size_t k = 0; k < count; ++k) {
        double y = 0.0;
        const bool applies = !keep && curveOutput(s.a[k], p, y);
        s.c[k] = applies ? 1.0 : 0.0;
        s.b[k] = y;
        anyCurve = anyCurve || applies;
    }
    if (anyCurve) {
        batch::pow(s.b.data(), 1.0 / p.imageGamma, s.b.data(), count);
    }
    for (std::size_t k = 0; k < count; ++k) {
        const std::uint32_t j = s.selected[k];
        colours[j] = finish(colours[j], s.selection[k], s.a[k], s.c[k] != 0.0, s.b[k]);
    }
}

} // namespace

void ShiftBatch::reserve(std::size_t n)
{
    lch.resize(n);
    cylinder.resize(n);
    selected.resize(n);
    selection.resize(n);
    rgb.resize(n);
    a.resize(n);
    b.resize(n);
    c.resize(n);
}

void lchOfLinearColors(const ColorComponents* linear, std::size_t count, ColorSpaceModel mode,
                       const Matrix3& M, ShiftBatch& s)
{
    // Working arrays of this step alone, grown on first use.
    if (s.xyz.size() < count) {
        s.xyz.resize(count);
        s.d.resize(count);
    }
    std::vector<ColorComponents>& xyz = s.xyz;
    std::vector<double>& dd = s.d;
    for (std::size_t j = 0; j < count; ++j) {
        xyz[j] = rgbToXyz(linear[j], M);
    }
    if (mode == ColorSpaceModel::LChuv) {
        for (std::size_t j = 0; j < count; ++j) {
            s.a[j] = xyz[j].c1;
        }
        batch::cbrt(s.a.data(), s.a.data(), count);
        for (std::size_t j = 0; j < count; ++j) {
            const double X = xyz[j].c0;
            const double Y = xyz[j].c1;
            const double Z = xyz[j].c2;
            if (X == 0.0 && Y == 0.0 && Z == 0.0) {
                s.b[j] = 0.0; // u
                s.c[j] = 0.0; // v
                s.lch[j] = {0.0, 0.0, 0.0, xyz[j].alpha};
                continue;
            }
            const double d = X + 15.0 * Y + 3.0 * Z;
            const double uPrime = 4.0 * X / d;
            const double vPrime = 9.0 * Y / d;
            const double L = Y > kCieEpsilon ? 116.0 * s.a[j] - 16.0 : kCieKappa * Y;
            s.b[j] = 13.0 * L * (uPrime - kLuvWhiteU);
            s.c[j] = 13.0 * L * (vPrime - kLuvWhiteV);
            s.lch[j] = {L, std::sqrt(s.b[j] * s.b[j] + s.c[j] * s.c[j]), 0.0, xyz[j].alpha};
        }
        batch::atan2(s.c.data(), s.b.data(), dd.data(), count);
        for (std::size_t j = 0; j < count; ++j) {
            s.lch[j].c2 = dd[j];
        }
        return;
    }
    for (std::size_t j = 0; j < count; ++j) {
        s.a[j] = xyz[j].c0 / kLabWhiteX;
        s.b[j] = xyz[j].c1;
        s.c[j] = xyz[j].c2 / kLabWhiteZ;
    }
    batch::cbrt(s.a.data(), dd.data(), count);
    const auto f = [](double t, double root) {
        return t > kCieEpsilon ? root : (kCieKappa * t + 16.0) / 116.0;
    };
    for (std::size_t j = 0; j < count; ++j) {
        s.a[j] = f(s.a[j], dd[j]);
    }
    batch::cbrt(s.b.data(), dd.data(), count);
    for (std::size_t j = 0; j < count; ++j) {
        s.b[j] = f(s.b[j], dd[j]);
    }
    batch::cbrt(s.c.data(), dd.data(), count);
    for (std::size_t j = 0; j < count; ++j) {
        s.c[j] = f(s.c[j], dd[j]);
    }
    for (std::size_t j = 0; j < count; ++j) {
        const ColorComponents& v = xyz[j];
        if (v.c0 == 0.0 && v.c1 == 0.0 && v.c2 == 0.0) {
            s.lch[j] = labToLchFast({0.0, 0.0, 0.0, v.alpha});
            continue;
        }
        const double fx = s.a[j];
        const double fy = s.b[j];
        const double fz = s.c[j];
        s.lch[j] = labToLchFast({116.0 * fy - 16.0, 500.0 * (fx - fy), 200.0 * (fy - fz), v.alpha});
    }
}

void paintSelectedLch(ShiftBatch& s, std::size_t count, const OutcomeContext& context)
{
    const HueShiftParameters& p = *context.parameters;
    const ColorSpaceModel mode = p.colorSpaceModel;
    const auto highlightOf = [&](const ColorComponents& c, const Selection& selection) {
        return lchHighlightColor(c.c2, selection.weight == 1.0, context.partialHighlight,
                                 context.gamut);
    };
    paintedColors(
        s, count, p, s.lch, [](const ColorComponents& c) { return c.c0 / 100.0; },
        [&](const ColorComponents& c, const Selection& selection, double first, bool curve,
            double second) {
            if (p.maskToShow == MaskView::hoverHighlight && isHoveredLightness(c.c0, p)) {
                return highlightOf(c, selection);
            }
            const double newL = lchShiftedLightness(c.c0, selection, p, first, curve, second);
            return finishLchShift(c, selection, p, context.gamut, newL);
        },
        highlightOf);
    // Back to linear RGB as lchuvToRgb and lchabToRgb do, the sines and cosines together.
    for (std::size_t k = 0; k < count; ++k) {
        s.a[k] = s.lch[s.selected[k]].c2;
    }
    batch::sincos(s.a.data(), s.b.data(), s.c.data(), count);
    for (std::size_t k = 0; k < count; ++k) {
        const ColorComponents& c = s.lch[s.selected[k]];
        const ColorComponents cartesian{c.c0, c.c1 * s.c[k], c.c1 * s.b[k], c.alpha};
        const ColorComponents xyz =
            mode == ColorSpaceModel::LChuv ? luvToXyz(cartesian) : labToXyz(cartesian);
        s.rgb[k] = outcomeDetail::unitColor(xyzToRgb(xyz, context.MI));
    }
}

void paintSelectedCylinders(ShiftBatch& s, std::size_t count, const OutcomeContext& context)
{
    const HueShiftParameters& p = *context.parameters;
    const ColorSpaceModel mode = p.colorSpaceModel;
    const bool hcl = mode == ColorSpaceModel::HCL;
    paintedColors(
        s, count, p, s.cylinder, [](const HclComponents& c) { return c.l; },
        [&](const HclComponents& c, const Selection& selection, double first, bool curve,
            double second) {
            const double newV = cylinderShiftedLevel(c, selection, p, first, curve, second);
            HclComponents result = finishCylinderShift(c, selection, p, newV);
            if (p.maskToShow == MaskView::hoverHighlight && isHoveredLightness(c.l, p)) {
                result.h = wrapIntoRange(result.h + 0.5, 0.0, 1.0);
                result.alpha = 1.0;
                if (hcl) {
                    result.l = 0.5;
                }
            }
            return result;
        },
        [&](const HclComponents& c, const Selection& selection) {
            if (hcl) {
                return hclHighlightColor(c);
            }
            const ColorComponents h = hsbHighlightColor(c.h, selection.weight == 1.0);
            return HclComponents{h.c0, h.c1, h.c2, h.alpha, h.c1};
        });
    for (std::size_t k = 0; k < count; ++k) {
        s.rgb[k] = outcomeDetail::cylinderToLinearRgb(s.cylinder[s.selected[k]], mode);
    }
}

} // namespace tintorra
