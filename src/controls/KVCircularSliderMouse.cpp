// What the pointer, the contextual menu and the value field's arrow keys do to the range slider,
// in scale values; the widget supplies the values under the pointer.
#include "colour/ColorConversions.h"
#include "controls/KVCircularSliderModel.h"

#include <cmath>

namespace tintorra {

namespace {

// A drag may wind the ring this many turns either way from where it started, and no further.
constexpr double kMaximumDragTurns = 100.0;

constexpr double kNudgeStep = 1.0 / 360.0;
constexpr double kLargeNudgeStep = 10.0 / 360.0;

} // namespace

std::vector<int> KVCircularSliderModel::hitTestOrder() const
{
    // The middle wins over everything that may lie under it, bounds over their fall-offs.
    std::vector<int> order = {kCircularPartMiddle};
    if (boundsShown()) {
        order.push_back(kCircularPartUpper);
        order.push_back(kCircularPartLower);
    }
    if (falloffsShown()) {
        order.push_back(kCircularPartUpperFalloff);
        order.push_back(kCircularPartLowerFalloff);
    }
    order.push_back(kCircularPartSlot);
    return order;
}

int KVCircularSliderModel::hitTest(const std::function<bool(int part)>& partContainsPoint) const
{
    for (const int part : hitTestOrder()) {
        if (partContainsPoint(part)) {
            return part;
        }
    }
    return kCircularPartNone;
}

double KVCircularSliderModel::valueForControlPart(int part) const
{
    switch (part) {
    case kCircularPartMiddle:
        return middleValue();
    case kCircularPartLower:
        return lowerValue();
    case kCircularPartUpper:
        return upperValue();
    case kCircularPartLowerFalloff:
        return lowerFalloffValue();
    case kCircularPartUpperFalloff:
        return upperFalloffValue();
    default:
        return 0.0;
    }
}

double KVCircularSliderModel::displayedValue() const
{
    if (controlPart_ != kCircularPartNone) {
        return valueForControlPart(controlPart_);
    }
    return showsValueIndicator_ ? indicatedValue_ : middleValue();
}

bool KVCircularSliderModel::mouseDown(int part, double pointerValue)
{
    if (!enabled_) {
        return false;
    }
    controlPart_ = part;
    if (part == kCircularPartNone) {
        return false;
    }
    mouseIsDown_ = true;
    mouseDownValue_ = part == kCircularPartSlot ? pointerValue : valueForControlPart(part);
    // The grip: where on the thumb the pointer took hold, kept for the whole drag.
    mouseDownPointValueOffset_ = circular_ ? hueDifference(pointerValue, mouseDownValue_, wrapDist_)
                                           : mouseDownValue_ - pointerValue;
    lastMouseValue_ = mouseDownValue_;
    if (part == kCircularPartSlot) {
        // A press on the track grabs the middle and brings it to the pointer at once.
        controlPart_ = kCircularPartMiddle;
        mouseDragged(pointerValue);
    }
    display();
    return true;
}

double KVCircularSliderModel::unwrappedDragValue(double pointerValue) const
{
    double value = pointerValue + mouseDownPointValueOffset_;
    if (circular_) {
        // Follow the pointer round the ring by the short way from where it was last, so a drag
        // may pass the scale's ends and wind on.
        value = lastMouseValue_ + hueDifference(lastMouseValue_, value, wrapDist_);
        const double reach = kMaximumDragTurns * wrapDist_;
        value = clamp(value, mouseDownValue_ - reach, mouseDownValue_ + reach);
    } else if (!wrapsAround_) {
        value = clamp(value, minValue_, maxValue_);
    }
    return value;
}

void KVCircularSliderModel::applyPartValue(int part, double value)
{
    const char* key = nullptr;
    switch (part) {
    case kCircularPartMiddle:
        takeMiddleValue(value);
        key = kMiddleValueBinding;
        break;
    case kCircularPartLower:
        takeLowerValue(value);
        key = kLowerValueBinding;
        break;
    case kCircularPartUpper:
        takeUpperValue(value);
        key = kUpperValueBinding;
        break;
    case kCircularPartLowerFalloff:
        takeLowerFalloffValue(value);
        key = kLowerFalloffValueBinding;
        break;
    case kCircularPartUpperFalloff:
        takeUpperFalloffValue(value);
        key = kUpperFalloffValueBinding;
        break;
    default:
        return;
    }
    propagateValuesForBinding(key);
}

void KVCircularSliderModel::mouseDragged(double pointerValue)
{
    if (!mouseIsDown_ || controlPart_ == kCircularPartNone) {
        return;
    }
    const double value = unwrappedDragValue(pointerValue);
    applyPartValue(controlPart_, value);
    lastMouseValue_ = value;
    if (continuous_) {
        sendActionToTarget();
    }
}

bool KVCircularSliderModel::mouseUp(double pointerValue, int clickCount)
{
    if (controlPart_ == kCircularPartNone) {
        mouseIsDown_ = false;
        return false;
    }
    if (clickCount == 2) {
        // The resets run as if nothing were held, so that they measure from the current range.
        mouseIsDown_ = false;
        switch (controlPart_) {
        case kCircularPartUpper:
            resetUpperThumb();
            break;
        case kCircularPartLower:
            resetLowerThumb();
            break;
        case kCircularPartMiddle:
            resetAllThumbs();
            break;
        default:
            break;
        }
    } else if (!continuous_) {
        const double value = unwrappedDragValue(pointerValue);
        applyPartValue(controlPart_, value);
        lastMouseValue_ = value;
        sendActionToTarget();
    }
    mouseIsDown_ = false;
    // Clamped while the part is still known: the held upper thumb keeps its own fall-off.
    offsets_ = clampedOffsets(offsets_);
    controlPart_ = kCircularPartNone;
    mouseDownValue_ = 0.0;
    mouseDownPointValueOffset_ = 0.0;
    lastMouseValue_ = 0.0;
    display();
    return true;
}

std::vector<KVContextMenuItem> KVCircularSliderModel::contextualMenuItems(int part)
{
    switch (part) {
    case kCircularPartNone:
        return {};
    case kCircularPartLower:
        return {{"Reset Lower Falloff"}};
    case kCircularPartUpper:
        return {{"Reset Upper Falloff"}};
    default:
        return {{"Reset Slider"}};
    }
}

void KVCircularSliderModel::performContextualMenuItem()
{
    switch (controlPartUnderMenu_) {
    case kCircularPartNone:
        return;
    case kCircularPartLower:
        resetLowerThumb();
        break;
    case kCircularPartUpper:
        resetUpperThumb();
        break;
    default:
        resetAllThumbs();
        break;
    }
}

double KVCircularSliderModel::nudgedValue(double value, KVNudgeCommand command)
{
    // The field's binding hands the value over in single precision.
    const double start = static_cast<float>(value);
    double step = kNudgeStep;
    switch (command) {
    case KVNudgeCommand::up:
        break;
    case KVNudgeCommand::upLarge:
        step = kLargeNudgeStep;
        break;
    case KVNudgeCommand::down:
        step = -kNudgeStep;
        break;
    case KVNudgeCommand::downLarge:
        step = -kLargeNudgeStep;
        break;
    }
    return wrapIntoRange(start + step, 0.0, 1.0);
}

void KVCircularSliderModel::nudgeMiddleValue(KVNudgeCommand command)
{
    setMiddleValue(nudgedValue(middleValue(), command));
}

} // namespace tintorra
