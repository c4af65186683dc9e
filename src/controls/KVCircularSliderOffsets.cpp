// The offset arithmetic of the range slider: turning values into offsets, keeping the offsets on
// the scale and shrinking them when the scale changes.
#include "colour/ColorConversions.h"
#include "controls/KVCircularSliderModel.h"
#include "controls/KVSliderArithmetic.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tintorra {

namespace {

// `offset` limited to `room`, or 0 for a negative offset.
double limitedOffset(double offset, double room)
{
    return offset < 0.0 ? 0.0 : std::min(room, offset);
}

// Takes `excess` from the offsets in the given order, each down to no less than 0.
void shrinkInOrder(double excess, const std::array<double*, 4>& order)
{
    for (double* offset : order) {
        if (excess <= 0.0) {
            break;
        }
        const double taken = std::min(excess, *offset);
        *offset -= taken;
        excess -= taken;
    }
}

} // namespace

double KVCircularSliderModel::maxAllowableValue() const
{
    return wrapsAround_ ? nudgeDown(maxValue_, 100.0) : maxValue_;
}

double KVCircularSliderModel::maxAllowableTotalOffsets() const
{
    return maxAllowableValue() - minValue_;
}

KVSliderOffsets KVCircularSliderModel::offsetsFromValues(const KVSliderValues& values) const
{
    KVSliderOffsets offsets;
    if (wrapsAround_) {
        offsets.middleValue = wrapIntoRange(values.middle, minValue_, maxValue_);
        // Measured one way round from the wrapped middle; a lower bound equal to the middle is a
        // whole turn below it, an upper bound equal to the middle no distance at all.
        offsets.upperOffset =
            std::fabs(forwardDistance(offsets.middleValue, values.upper, wrapDist_));
        offsets.lowerOffset =
            std::fabs(forwardDistance(offsets.middleValue, values.lower, -wrapDist_));
        offsets.upperFalloffOffset =
            std::fabs(forwardDistance(values.upper, values.upperFalloff, wrapDist_));
        offsets.lowerFalloffOffset =
            std::fabs(forwardDistance(values.lower, values.lowerFalloff, -wrapDist_));
    } else {
        // The distances are taken from the raw middle, only the stored middle is clamped.
        const double m = values.middle;
        offsets.middleValue = clamp(m, minValue_, maxValue_);
        offsets.upperOffset =
            values.upper - m < 0.0 ? 0.0 : std::min(maxValue_ - m, values.upper - m);
        offsets.lowerOffset =
            m - values.lower < 0.0 ? 0.0 : std::min(m - minValue_, m - values.lower);
        offsets.upperFalloffOffset =
            values.upperFalloff - values.upper < 0.0
                ? 0.0
                : std::min(maxValue_ - values.upper, values.upperFalloff - values.upper);
        offsets.lowerFalloffOffset =
            values.lower - values.lowerFalloff < 0.0
                ? 0.0
                : std::min(values.lower - minValue_, values.lower - values.lowerFalloff);
    }
    if (!boundsShown()) {
        offsets.upperOffset = 0.0;
        offsets.lowerOffset = 0.0;
    }
    if (!falloffsShown()) {
        offsets.upperFalloffOffset = 0.0;
        offsets.lowerFalloffOffset = 0.0;
    }
    return centerThumbWithinOffsets_ ? offsetsWithMiddleValueCenteredWithinOffsets(offsets)
                                     : offsets;
}

KVSliderOffsets KVCircularSliderModel::offsetsWithMiddleValueCenteredWithinOffsets(
    const KVSliderOffsets& offsets) const
{
    KVSliderOffsets centered = offsets;
    const double half = (offsets.upperOffset + offsets.lowerOffset) / 2.0;
    const double middle = (offsets.middleValue - offsets.lowerOffset) + half;
    // The upper offset is measured before the middle is wrapped, so that it stays the half span.
    centered.upperOffset = (offsets.middleValue + offsets.upperOffset) - middle;
    centered.lowerOffset = half;
    centered.middleValue = wrapsAround_ ? wrapIntoRange(middle, minValue_, maxValue_) : middle;
    if (!boundsShown()) {
        centered.upperOffset = 0.0;
        centered.lowerOffset = 0.0;
    }
    if (!falloffsShown()) {
        centered.upperFalloffOffset = 0.0;
        centered.lowerFalloffOffset = 0.0;
    }
    return centered;
}

KVSliderOffsets KVCircularSliderModel::clampedOffsets(const KVSliderOffsets& offsets) const
{
    KVSliderOffsets clamped = offsets;
    clamped.middleValue = wrapOrClampIntoScale(offsets.middleValue);
    if (!boundsShown()) {
        clamped.upperOffset = clamped.lowerOffset = 0.0;
        clamped.upperFalloffOffset = clamped.lowerFalloffOffset = 0.0;
        return clamped;
    }
    const double ufo = falloffsShown() ? offsets.upperFalloffOffset : 0.0;
    const double lfo = falloffsShown() ? offsets.lowerFalloffOffset : 0.0;

    if (wrapsAround_) {
        const double total = maxAllowableTotalOffsets();
        // The raw lower side is reserved first, then the sides share what is left.
        clamped.upperOffset = limitedOffset(offsets.upperOffset, total - offsets.lowerOffset - lfo);
        clamped.lowerOffset = limitedOffset(offsets.lowerOffset, total - clamped.upperOffset - ufo);
        const double bounds = clamped.upperOffset + clamped.lowerOffset;
        if (!falloffsShown()) {
            clamped.upperFalloffOffset = clamped.lowerFalloffOffset = 0.0;
        } else if (controlPart_ == kCircularPartUpper) {
            // While the upper thumb is held, the upper fall-off is fitted first against the raw
            // lower one and so gives way; in every other case the lower fall-off gives way.
            clamped.upperFalloffOffset = limitedOffset(ufo, total - bounds - lfo);
            clamped.lowerFalloffOffset =
                limitedOffset(lfo, total - clamped.upperFalloffOffset - bounds);
        } else {
            clamped.lowerFalloffOffset = limitedOffset(lfo, total - bounds - ufo);
            clamped.upperFalloffOffset =
                limitedOffset(ufo, total - clamped.lowerFalloffOffset - bounds);
        }
        return clamped;
    }

    const double middle = clamped.middleValue;
    clamped.upperOffset = std::max(0.0, std::min(maxValue_ - middle, offsets.upperOffset));
    clamped.lowerOffset = std::max(0.0, std::min(middle - minValue_, offsets.lowerOffset));
    if (falloffsShown()) {
        clamped.upperFalloffOffset =
            std::max(0.0, std::min(maxValue_ - middle - clamped.upperOffset, ufo));
        clamped.lowerFalloffOffset =
            std::max(0.0, std::min(middle - minValue_ - clamped.lowerOffset, lfo));
    } else {
        clamped.upperFalloffOffset = clamped.lowerFalloffOffset = 0.0;
    }
    return clamped;
}

KVSliderOffsets KVCircularSliderModel::collapsedOffsetsFromOffsets(const KVSliderOffsets& offsets,
                                                                   int method) const
{
    const double total = maxAllowableTotalOffsets();
    KVSliderOffsets collapsed = offsets;
    double* const uf = &collapsed.upperFalloffOffset;
    double* const u = &collapsed.upperOffset;
    double* const l = &collapsed.lowerOffset;
    double* const lf = &collapsed.lowerFalloffOffset;
    for (double* offset : {uf, u, l, lf}) {
        *offset = clamp(*offset, 0.0, total);
    }
    const double sum = *uf + *u + *l + *lf;
    if (sum > total) {
        switch (method) {
        case kCollapseLowerSideFirst:
            shrinkInOrder(sum - total, {lf, l, uf, u});
            break;
        case kCollapseUpperSideFirst:
            shrinkInOrder(sum - total, {uf, u, lf, l});
            break;
        default: {
            const double factor = total / sum;
            for (double* offset : {uf, u, l, lf}) {
                *offset *= factor;
            }
            break;
        }
        }
    }
    return centerThumbWithinOffsets_ ? offsetsWithMiddleValueCenteredWithinOffsets(collapsed)
                                     : collapsed;
}

double KVCircularSliderModel::wrapOrClampIntoScale(double value) const
{
    return wrapsAround_ ? wrapIntoRange(value, minValue_, maxValue_)
                        : clamp(value, minValue_, maxValue_);
}

} // namespace tintorra
