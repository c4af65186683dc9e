#include "engine/HueCandidates.h"

#include "colour/CieConstants.h"
#include "colour/HueAngles.h"
#include "engine/SelectionWeights.h"

#include <algorithm>
#include <cmath>

namespace tintorra {

namespace {

// Far beyond the rounding of any hue computation (about 1e-15 of a turn), far below anything a
// slider can set.
constexpr double kMarginTurns = 1e-7;

} // namespace

HueArc selectableHueArc(const HueShiftParameters& p)
{
    HueArc arc;
    arc.period = hueShiftPeriod(p.colorSpaceModel);
    const double bounds[4] = {p.hueLowerFalloff, p.hueLower, p.hueUpper, p.hueUpperFalloff};
    const double low = *std::min_element(std::begin(bounds), std::end(bounds));
    const double high = *std::max_element(std::begin(bounds), std::end(bounds));
    const double margin = kMarginTurns * arc.period;
    const double width = high - low + 2.0 * margin;
    // Non-finite bounds, or a range of a whole turn or more, rule nothing out.
    if (!std::isfinite(width) || width >= arc.period) {
        return arc;
    }
    arc.wholeCircle = false;
    arc.centre = wrapIntoRange(0.5 * (low + high), 0.0, arc.period);
    arc.halfWidth = 0.5 * width;
    return arc;
}

std::vector<std::pair<std::uint64_t, std::uint64_t>>
entriesOnHueArc(const color_table_lch_entry_info* colors, std::uint64_t first, std::uint64_t end,
                const HueArc& arc)
{
    std::vector<std::pair<std::uint64_t, std::uint64_t>> ranges;
    if (first >= end) {
        return ranges;
    }
    if (arc.wholeCircle) {
        ranges.emplace_back(first, end);
        return ranges;
    }
    const double lowestHue = colors[first].hue;
    const double highestHue = colors[end - 1].hue;
    if (!std::isfinite(lowestHue) || !std::isfinite(highestHue)) {
        ranges.emplace_back(first, end);
        return ranges;
    }
    const auto hueOf = [](const color_table_lch_entry_info& e) {
        return static_cast<double>(e.hue);
    };
    // Every whole turn k for which the arc, moved by k turns, meets the run's hues.
    const double arcLow = arc.centre - arc.halfWidth;
    const double arcHigh = arc.centre + arc.halfWidth;
    const double firstTurn = std::floor((lowestHue - arcHigh) / arc.period);
    const double lastTurn = std::ceil((highestHue - arcLow) / arc.period);
    for (double k = firstTurn; k <= lastTurn; k += 1.0) {
        const double low = arcLow + k * arc.period;
        const double high = arcHigh + k * arc.period;
        const auto begin = std::partition_point(colors + first, colors + end,
                                                [&](const auto& e) { return hueOf(e) < low; });
        const auto stop = std::partition_point(begin, colors + end,
                                               [&](const auto& e) { return hueOf(e) <= high; });
        if (begin < stop) {
            ranges.emplace_back(static_cast<std::uint64_t>(begin - colors),
                                static_cast<std::uint64_t>(stop - colors));
        }
    }
    std::sort(ranges.begin(), ranges.end());
    return ranges;
}

LuvHueFilter::LuvHueFilter(const HueArc& arc, const Matrix3& M)
{
    if (arc.wholeCircle || arc.period != kTwoPi) {
        return;
    }
    k_.everything = false;
    // (4 - 4 u'n... ) written out: u-direction 4X - u'n (X + 15Y + 3Z), v-direction
    // 9Y - v'n (X + 15Y + 3Z), each a linear form in r, g, b through the rows of M.
    const double uX = 4.0 - kLuvWhiteU;
    const double uY = -15.0 * kLuvWhiteU;
    const double uZ = -3.0 * kLuvWhiteU;
    const double vX = -kLuvWhiteV;
    const double vY = 9.0 - 15.0 * kLuvWhiteV;
    const double vZ = -3.0 * kLuvWhiteV;
    for (int c = 0; c < 3; ++c) {
        k_.u[c] = uX * M[c] + uY * M[3 + c] + uZ * M[6 + c];
        k_.v[c] = vX * M[c] + vY * M[3 + c] + vZ * M[6 + c];
    }
    k_.centreCos = std::cos(arc.centre);
    k_.centreSin = std::sin(arc.centre);
    k_.cosHalfWidth = std::cos(arc.halfWidth);
    k_.cosSquared = k_.cosHalfWidth * k_.cosHalfWidth;

    // The box test's forms: n . (u, v) for the inward normals n of the widened arc's edges, or,
    // for an arc wider than a half turn, the negated inward normals of the wedge left over.
    const double halfWidth = arc.halfWidth + kBoxAngle;
    if (!(halfWidth < kPi)) {
        return;
    }
    box_.active = true;
    box_.bothForms = halfWidth > 0.5 * kPi;
    double n1[2];
    double n2[2];
    if (!box_.bothForms) {
        const double lower = arc.centre - halfWidth;
        const double upper = arc.centre + halfWidth;
        n1[0] = -std::sin(lower);
        n1[1] = std::cos(lower);
        n2[0] = std::sin(upper);
        n2[1] = -std::cos(upper);
    } else {
        // The wedge runs from centre + halfWidth to centre - halfWidth + a turn.
        const double lower = arc.centre + halfWidth;
        const double upper = arc.centre - halfWidth;
        n1[0] = std::sin(lower);
        n1[1] = -std::cos(lower);
        n2[0] = -std::sin(upper);
        n2[1] = std::cos(upper);
    }
    for (int c = 0; c < 3; ++c) {
        box_.w1[c] = n1[0] * k_.u[c] + n1[1] * k_.v[c];
        box_.w2[c] = n2[0] * k_.u[c] + n2[1] * k_.v[c];
    }
}

} // namespace tintorra
