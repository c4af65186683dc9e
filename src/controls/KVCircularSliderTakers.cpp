// Setting single values of the range slider, spreading and resetting it.
#include "colour/ColorConversions.h"
#include "controls/KVCircularSliderModel.h"
#include "controls/KVSliderArithmetic.h"

#include <algorithm>

namespace tintorra {

namespace {

// The spread the resets restore: 10° each side, with 10° of fall-off beyond.
constexpr double kResetSpreadInDegrees = 20.0;
constexpr double kRingResetStep = 10.0 / 360.0;
constexpr double kStraightResetStep = 0.1;

// A distance limited to the room there is, and never negative.
double spanWithinRoom(double span, double room)
{
    return std::max(0.0, std::min(span, room));
}

} // namespace

void KVCircularSliderModel::takeMiddleValue(double value)
{
    if (wrapsAround_) {
        // The whole range turns with its middle.
        offsets_.middleValue = wrapIntoRange(value, minValue_, maxAllowableValue());
    } else {
        if (centerThumbWithinOffsets_) {
            const double lowest = minValue_ + offsets_.lowerOffset;
            offsets_.middleValue =
                value < lowest ? lowest : std::min(maxValue_ - offsets_.upperOffset, value);
        } else {
            offsets_.middleValue = clamp(value, minValue_, maxAllowableValue());
        }
        if (!mouseIsDown_) {
            offsets_ = clampedOffsets(offsets_);
        }
    }
    display();
}

void KVCircularSliderModel::takeUpperValue(double value)
{
    if (!boundsShown()) {
        offsets_.upperOffset = offsets_.lowerOffset = 0.0;
        display();
        return;
    }
    if (centerThumbWithinOffsets_) {
        takeUpperValueCentered(value);
    } else {
        takeUpperValueFromMiddle(value);
    }
    if (!mouseIsDown_) {
        limitUpperFalloffToRoomLeft();
    }
    display();
}

void KVCircularSliderModel::takeUpperValueCentered(double value)
{
    // The lower bound stays where it is and the middle follows the upper one.
    const double total = maxAllowableTotalOffsets();
    double lower = lowerValue();
    double limit = maxValue_;
    double room = maxValue_ - lower;
    if (wrapsAround_) {
        const double reference = mouseIsDown_ ? mouseDownValue_ : upperValue();
        lower = wrapIntoRange(lower, reference - wrapDist_, reference);
        const double lowerFalloffEnd =
            wrapIntoRange(lowerFalloffValue(), reference, reference + wrapDist_);
        limit = std::max(lowerFalloffEnd, lower + (total - offsets_.lowerFalloffOffset));
        room = total - offsets_.lowerFalloffOffset;
    }
    const double upper = clamp(value, lower, limit);
    const double span = spanWithinRoom(upper - lower, room);
    offsets_.upperOffset = span / 2.0;
    offsets_.lowerOffset = span - span / 2.0;
    offsets_.middleValue = wrapOrClampIntoScale(lower + offsets_.lowerOffset);
}

void KVCircularSliderModel::takeUpperValueFromMiddle(double value)
{
    const double total = maxAllowableTotalOffsets();
    double middle = middleValue();
    double limit = maxValue_;
    double room = maxValue_ - middle;
    if (wrapsAround_) {
        const double reference = mouseIsDown_ ? mouseDownValue_ : upperValue();
        middle = wrapIntoRange(middle, reference - wrapDist_, reference);
        const double lowerFalloffEnd =
            wrapIntoRange(lowerFalloffValue(), reference, reference + wrapDist_);
        limit = std::max(lowerFalloffEnd, middle + (total - offsets_.lowerFalloffOffset));
        room = total - offsets_.lowerOffset - offsets_.lowerFalloffOffset;
    }
    const double upper = clamp(value, middle, limit);
    offsets_.upperOffset = spanWithinRoom(upper - middle, room);
}

void KVCircularSliderModel::takeLowerValue(double value)
{
    if (!boundsShown()) {
        offsets_.upperOffset = offsets_.lowerOffset = 0.0;
        display();
        return;
    }
    if (centerThumbWithinOffsets_) {
        takeLowerValueCentered(value);
    } else {
        takeLowerValueFromMiddle(value);
    }
    if (!mouseIsDown_) {
        limitLowerFalloffToRoomLeft();
    }
    display();
}

void KVCircularSliderModel::takeLowerValueCentered(double value)
{
    // The upper bound stays where it is and the middle follows the lower one.
    const double total = maxAllowableTotalOffsets();
    double upper = upperValue();
    double limit = minValue_;
    double room = upper - minValue_;
    if (wrapsAround_) {
        const double reference = mouseIsDown_ ? mouseDownValue_ : lowerValue();
        upper = wrapIntoRange(upper, reference, reference + wrapDist_);
        const double upperFalloffEnd =
            wrapIntoRange(upperFalloffValue(), reference - wrapDist_, reference);
        limit = std::min(upper - (total - offsets_.upperFalloffOffset), upperFalloffEnd);
        room = total - offsets_.upperFalloffOffset;
    }
    const double lower = clamp(value, limit, upper);
    const double span = spanWithinRoom(upper - lower, room);
    offsets_.lowerOffset = span / 2.0;
    offsets_.upperOffset = span - span / 2.0;
    offsets_.middleValue = wrapOrClampIntoScale(upper - offsets_.upperOffset);
}

void KVCircularSliderModel::takeLowerValueFromMiddle(double value)
{
    const double total = maxAllowableTotalOffsets();
    double middle = middleValue();
    double limit = minValue_;
    double room = middle - minValue_;
    if (wrapsAround_) {
        const double reference = mouseIsDown_ ? mouseDownValue_ : lowerValue();
        middle = wrapIntoRange(middle, reference, reference + wrapDist_);
        const double upperFalloffEnd =
            wrapIntoRange(upperFalloffValue(), reference - wrapDist_, reference);
        limit = std::min(middle - (total - offsets_.upperFalloffOffset), upperFalloffEnd);
        room = total - offsets_.upperOffset - offsets_.upperFalloffOffset;
    }
    const double lower = clamp(value, limit, middle);
    offsets_.lowerOffset = spanWithinRoom(middle - lower, room);
}

void KVCircularSliderModel::limitUpperFalloffToRoomLeft()
{
    const double room = wrapsAround_ ? maxAllowableTotalOffsets() - offsets_.upperOffset -
                                           offsets_.lowerOffset - offsets_.lowerFalloffOffset
                                     : maxValue_ - offsets_.middleValue - offsets_.upperOffset;
    offsets_.upperFalloffOffset = std::min(offsets_.upperFalloffOffset, std::max(0.0, room));
}

void KVCircularSliderModel::limitLowerFalloffToRoomLeft()
{
    const double room = wrapsAround_ ? maxAllowableTotalOffsets() - offsets_.upperOffset -
                                           offsets_.lowerOffset - offsets_.upperFalloffOffset
                                     : offsets_.middleValue - minValue_ - offsets_.lowerOffset;
    offsets_.lowerFalloffOffset = std::min(offsets_.lowerFalloffOffset, std::max(0.0, room));
}

void KVCircularSliderModel::takeUpperFalloffValue(double value)
{
    if (!boundsShown() || !falloffsShown()) {
        offsets_.upperFalloffOffset = offsets_.lowerFalloffOffset = 0.0;
        display();
        return;
    }
    const double room = maxAllowableTotalOffsets() -
                        (offsets_.upperOffset + offsets_.lowerOffset + offsets_.lowerFalloffOffset);
    double upper = upperValue();
    double distance = value - upper;
    if (wrapsAround_ && !mouseIsDown_) {
        distance = forwardDistance(upper, value, wrapDist_);
    } else if (wrapsAround_) {
        // While dragging, the pointer value is unwrapped around the value at mouse-down.
        upper = wrapIntoRange(upper, mouseDownValue_ - wrapDist_, mouseDownValue_);
        distance = value - upper;
    }
    offsets_.upperFalloffOffset = distance < 0.0 ? 0.0 : std::min(room, distance);
    display();
}

void KVCircularSliderModel::takeLowerFalloffValue(double value)
{
    if (!boundsShown() || !falloffsShown()) {
        offsets_.upperFalloffOffset = offsets_.lowerFalloffOffset = 0.0;
        display();
        return;
    }
    const double room = maxAllowableTotalOffsets() -
                        (offsets_.upperOffset + offsets_.lowerOffset + offsets_.upperFalloffOffset);
    double lower = lowerValue();
    double distance = lower - value;
    if (wrapsAround_ && !mouseIsDown_) {
        distance = -forwardDistance(lower, value, -wrapDist_);
    } else if (wrapsAround_) {
        lower = wrapIntoRange(lower, mouseDownValue_, mouseDownValue_ + wrapDist_);
        distance = lower - value;
    }
    offsets_.lowerFalloffOffset = distance < 0.0 ? 0.0 : std::min(room, distance);
    display();
}

void KVCircularSliderModel::setMiddleValue(double value)
{
    takeMiddleValue(value);
    didChange(kMiddleValueBinding);
}

void KVCircularSliderModel::setUpperValue(double value)
{
    takeUpperValue(value);
    didChange(kUpperValueBinding);
}

void KVCircularSliderModel::setLowerValue(double value)
{
    takeLowerValue(value);
    didChange(kLowerValueBinding);
}

void KVCircularSliderModel::setUpperFalloffValue(double value)
{
    takeUpperFalloffValue(value);
    didChange(kUpperFalloffValueBinding);
}

void KVCircularSliderModel::setLowerFalloffValue(double value)
{
    takeLowerFalloffValue(value);
    didChange(kLowerFalloffValueBinding);
}

void KVCircularSliderModel::setSpreadInDegrees(double degrees)
{
    // Half of the spread on each side of the middle, and as much again of fall-off.
    const double half = degrees / 360.0 * 0.5;
    offsets_.upperOffset = offsets_.lowerOffset = boundsShown() ? half : 0.0;
    offsets_.upperFalloffOffset = offsets_.lowerFalloffOffset = falloffsShown() ? half : 0.0;
    display();
    didChange(kValuesBinding);
}

double KVCircularSliderModel::spreadForSegmentTag(long segmentTag)
{
    if (segmentTag < 1) {
        return 1.0;
    }
    if (static_cast<double>(segmentTag) > 179.9) {
        return 179.0;
    }
    return static_cast<double>(segmentTag);
}

void KVCircularSliderModel::setSpread(long segmentTag)
{
    setSpreadInDegrees(spreadForSegmentTag(segmentTag));
}

void KVCircularSliderModel::resetValues()
{
    if (wrapsAround_) {
        takeMiddleValue(defaultValue_);
        setSpreadInDegrees(kResetSpreadInDegrees);
        return;
    }
    // A straight slider goes back to selecting its whole scale around the default.
    offsets_.middleValue = defaultValue_;
    offsets_.upperOffset = boundsShown() ? maxValue_ - defaultValue_ : 0.0;
    offsets_.lowerOffset = boundsShown() ? defaultValue_ - minValue_ : 0.0;
    offsets_.upperFalloffOffset = offsets_.lowerFalloffOffset = 0.0;
    display();
    didChange(kValuesBinding);
}

void KVCircularSliderModel::resetAllThumbs()
{
    if (wrapsAround_) {
        // Unlike resetValues, the ring keeps its middle.
        setSpreadInDegrees(kResetSpreadInDegrees);
    } else {
        resetValues();
    }
}

double KVCircularSliderModel::resetStep() const
{
    return wrapsAround_ ? kRingResetStep : kStraightResetStep;
}

void KVCircularSliderModel::resetLowerThumb()
{
    setLowerFalloffValue(lowerValue() - resetStep());
    offsets_ = clampedOffsets(offsets_);
    display();
}

void KVCircularSliderModel::resetUpperThumb()
{
    setUpperFalloffValue(upperValue() + resetStep());
}

} // namespace tintorra
