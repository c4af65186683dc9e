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
    everything_ = false;
    // (4 - 4 u'n... ) written out: u-direction 4X - u'n (X + 15Y + 3Z), v-direction
    // 9Y - v'n (X + 15Y + 3Z), each a linear form in r, g, b through the rows of M.
    const double uX = 4.0 - kLuvWhiteU;
    const double uY = -15.0 * kLuvWhiteU;
    const double uZ = -3.0 * kLuvWhiteU;
    const double vX = -kLuvWhiteV;
    const double vY = 9.0 - 15.0 * kLuvWhiteV;
    const double vZ = -3.0 * kLuvWhiteV;
    for (int c = 0; c < 3; ++c) {
        a_[c] = uX * M[c] + uY * M[3 + c] + uZ * M[6 + c];
        b_[c] = vX * M[c] + vY * M[3 + c] + vZ * M[6 + c];
    }
    centreCos_ = std::cos(arc.centre);
    centreSin_ = std::sin(arc.centre);
    cosHalfWidth_ = std::cos(arc.halfWidth);
    cosSquared_ = cosHalfWidth_ * cosHalfWidth_;
}

} // namespace tintorra
