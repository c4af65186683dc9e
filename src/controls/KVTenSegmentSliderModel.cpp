#include "controls/KVTenSegmentSliderModel.h"

#include "colour/ColorConversions.h"
#include "controls/KVSliderArithmetic.h"

#include <algorithm>

namespace tintorra {

namespace {

// Room, in units in the last place, that every free thumb keeps from an anchor.
constexpr double kFreeThumbRoom = 100.0;

// Maps a free thumb from [a, b] onto [c, d]. When the old span has collapsed, the thumbs go to
// the end that stayed put, d only when that end is b itself: free thumbs resting on an anchor
// stay on it instead of jumping to the dragged thumb.
double remapFreeThumb(double x, double a, double b, double c, double d)
{
    if (a == b) {
        return d == b ? d : c;
    }
    if (c == d) {
        return c;
    }
    const double mapped = c + (x - a) / (b - a) * (d - c);
    // A thumb inside the old span stays inside the new one: rounding could otherwise carry a thumb
    // resting on an anchor one unit past it and break the curve's order.
    if (x >= std::min(a, b) && x <= std::max(a, b)) {
        return std::clamp(mapped, std::min(c, d), std::max(c, d));
    }
    return mapped;
}

} // namespace

KVTenSegmentSliderModel::KVTenSegmentSliderModel()
{
    takeValues(identityTenSegmentValues());
}

KVValueDictionary KVTenSegmentSliderModel::defaultValues()
{
    return dictionaryFromTenSegmentValues(identityTenSegmentValues());
}

std::optional<std::size_t> KVTenSegmentSliderModel::previousThumb(std::size_t index)
{
    if (index == 0 || index >= kTenSegmentThumbCount) {
        return std::nullopt;
    }
    return index - 1;
}

std::optional<std::size_t> KVTenSegmentSliderModel::nextThumb(std::size_t index)
{
    if (index + 1 >= kTenSegmentThumbCount) {
        return std::nullopt;
    }
    return index + 1;
}

void KVTenSegmentSliderModel::setThumbLocked(std::size_t index, bool locked)
{
    thumbs_.at(index).locked = locked;
    display();
}

void KVTenSegmentSliderModel::setMinValue(double value)
{
    minValue_ = value;
    maxValue_ = std::max(maxValue_, value);
    sequenceValues();
    display();
}

void KVTenSegmentSliderModel::setMaxValue(double value)
{
    maxValue_ = value;
    minValue_ = std::min(minValue_, value);
    sequenceValues();
    display();
}

void KVTenSegmentSliderModel::setEnabled(bool enabled)
{
    enabled_ = enabled;
    display();
}

void KVTenSegmentSliderModel::setShowsValueIndicator(bool shows)
{
    showsValueIndicator_ = shows;
    display();
}

void KVTenSegmentSliderModel::setIndicatedValue(double value)
{
    indicatedValue_ = value;
    display();
}

KVTenSegmentValues KVTenSegmentSliderModel::tenSegmentValues() const
{
    KVTenSegmentValues values{};
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i] = thumbs_[i].doubleValue;
    }
    return values;
}

KVValueDictionary KVTenSegmentSliderModel::values() const
{
    return dictionaryFromTenSegmentValues(tenSegmentValues());
}

void KVTenSegmentSliderModel::takeValues(const KVTenSegmentValues& values)
{
    for (std::size_t i = 0; i < values.size(); ++i) {
        thumbs_[i].doubleValue = values[i];
    }
    display();
}

void KVTenSegmentSliderModel::takeValues(const KVValueDictionary& dictionary)
{
    takeValues(tenSegmentValuesFromDictionary(dictionary));
}

void KVTenSegmentSliderModel::setValues(const KVTenSegmentValues& values)
{
    for (std::size_t i = 0; i < values.size(); ++i) {
        // A thumb whose value is replaced is no longer where the user anchored it.
        if (!(thumbs_[i].doubleValue == values[i])) {
            thumbs_[i].locked = false;
        }
    }
    takeValues(values);
    propagateValuesForBinding(kTenSegmentValuesBinding);
    sendActionToTarget();
}

void KVTenSegmentSliderModel::setValues(const KVValueDictionary& dictionary)
{
    setValues(tenSegmentValuesFromDictionary(dictionary));
}

void KVTenSegmentSliderModel::takeValue(double value, std::size_t index)
{
    // The free thumbs on each side, up to the first anchor (or the end of the chain).
    std::vector<std::size_t> upperFree;
    std::optional<std::size_t> upperAnchor;
    for (auto next = nextThumb(index); next; next = nextThumb(*next)) {
        if (thumbs_[*next].locked) {
            upperAnchor = next;
            break;
        }
        upperFree.push_back(*next);
    }
    std::vector<std::size_t> lowerFree;
    std::optional<std::size_t> lowerAnchor;
    for (auto previous = previousThumb(index); previous; previous = previousThumb(*previous)) {
        if (thumbs_[*previous].locked) {
            lowerAnchor = previous;
            break;
        }
        lowerFree.push_back(*previous);
    }

    const double old = thumbs_.at(index).doubleValue;
    const double low = lowerAnchor ? thumbs_[*lowerAnchor].doubleValue : minValue_;
    const double high = upperAnchor ? thumbs_[*upperAnchor].doubleValue : maxValue_;
    // Each free thumb in between keeps some room, so none of them lands on an anchor.
    const double lowLimit = nudgeUp(low, kFreeThumbRoom * static_cast<double>(lowerFree.size()));
    const double highLimit =
        nudgeDown(high, kFreeThumbRoom * static_cast<double>(upperFree.size()));
    double moved = clamp(value, lowLimit, highLimit);
    if (lowLimit > highLimit) {
        // The anchors are closer together than the room the free thumbs between them would
        // need (they were squeezed before some of those thumbs were unlocked); the limits cross,
        // and the thumb must still not pass an anchor.
        moved = clamp(moved, low, high);
    }
    thumbs_[index].doubleValue = moved;

    for (const std::size_t u : upperFree) {
        thumbs_[u].doubleValue = remapFreeThumb(thumbs_[u].doubleValue, old, high, moved, high);
    }
    for (const std::size_t l : lowerFree) {
        thumbs_[l].doubleValue = remapFreeThumb(thumbs_[l].doubleValue, low, old, low, moved);
    }
    display();
}

void KVTenSegmentSliderModel::setValue(double value, std::size_t index)
{
    takeValue(value, index);
    propagateValuesForBinding(kTenSegmentValuesBinding);
    sendActionToTarget();
}

void KVTenSegmentSliderModel::sequenceValues()
{
    for (std::size_t i = 0; i < thumbs_.size(); ++i) {
        const auto previous = previousThumb(i);
        const auto next = nextThumb(i);
        const double lo = previous ? thumbs_[*previous].doubleValue : minValue_;
        const double hi = next ? thumbs_[*next].doubleValue : maxValue_;
        double& value = thumbs_[i].doubleValue;
        value = value < lo ? lo : std::min(hi, value);
    }
}

void KVTenSegmentSliderModel::resetAllThumbs()
{
    for (KVSliderThumb& thumb : thumbs_) {
        thumb.locked = false;
    }
    setValues(identityTenSegmentValues());
}

void KVTenSegmentSliderModel::unlockThumb()
{
    if (const auto index = sliderThumbForControlPart(controlPartUnderMenu_)) {
        thumbs_[*index].locked = false;
    }
    display();
}

std::optional<std::size_t> KVTenSegmentSliderModel::sliderThumbForControlPart(std::int32_t part)
{
    if (part < kTenSegmentPartFirstThumb || part > kTenSegmentPartLastThumb) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(part - kTenSegmentPartFirstThumb);
}

std::int32_t KVTenSegmentSliderModel::controlPartForSliderThumb(std::size_t index)
{
    if (index >= kTenSegmentThumbCount) {
        return kTenSegmentPartNone;
    }
    return static_cast<std::int32_t>(index) + kTenSegmentPartFirstThumb;
}

double KVTenSegmentSliderModel::valueForControlPart(std::int32_t part) const
{
    const auto index = sliderThumbForControlPart(part);
    return index ? thumbs_[*index].doubleValue : 0.0;
}

std::vector<std::int32_t> KVTenSegmentSliderModel::hitTestOrder(double pointerValue) const
{
    // Thumbs may overlap; the one nearer the pointer's end of the scale is found first.
    std::vector<std::int32_t> order;
    for (std::int32_t part = kTenSegmentPartSlot; part <= kTenSegmentPartLast; ++part) {
        order.push_back(part);
    }
    if (pointerValue < (minValue_ + maxValue_) / 2.0) {
        std::reverse(order.begin(), order.end());
    }
    return order;
}

std::int32_t KVTenSegmentSliderModel::hitTest(
    double pointerValue, const std::function<bool(std::int32_t part)>& partContainsPoint) const
{
    for (const std::int32_t part : hitTestOrder(pointerValue)) {
        if (partContainsPoint(part)) {
            return part;
        }
    }
    return kTenSegmentPartNone;
}

bool KVTenSegmentSliderModel::mouseDown(std::int32_t part, double pointerValue)
{
    if (!enabled_) {
        return false;
    }
    controlPart_ = part;
    if (part == kTenSegmentPartNone) {
        return false;
    }
    mouseIsDown_ = true;
    if (const auto index = sliderThumbForControlPart(part)) {
        // A grabbed thumb becomes an anchor for every later drag.
        mouseDownValue_ = thumbs_[*index].doubleValue;
        thumbs_[*index].locked = true;
    } else {
        mouseDownValue_ = pointerValue;
    }
    mouseDownPointValueOffset_ = mouseDownValue_ - pointerValue;
    lastMouseValue_ = mouseDownValue_;
    display();
    return true;
}

void KVTenSegmentSliderModel::mouseDragged(double pointerValue)
{
    if (!mouseIsDown_ || controlPart_ == kTenSegmentPartNone) {
        return;
    }
    const double value = pointerValue + mouseDownPointValueOffset_;
    if (const auto index = sliderThumbForControlPart(controlPart_)) {
        takeValue(value, *index);
        propagateValuesForBinding(kTenSegmentValuesBinding);
    }
    lastMouseValue_ = value;
    if (continuous_) {
        sendActionToTarget();
    }
}

bool KVTenSegmentSliderModel::mouseUp(double pointerValue, int clickCount)
{
    if (controlPart_ == kTenSegmentPartNone) {
        mouseIsDown_ = false;
        return false;
    }
    const auto index = sliderThumbForControlPart(controlPart_);
    if (clickCount == 2 && index) {
        resetAllThumbs();
    } else if (!continuous_) {
        const double value = pointerValue + mouseDownPointValueOffset_;
        if (index) {
            takeValue(value, *index);
            propagateValuesForBinding(kTenSegmentValuesBinding);
        }
        sendActionToTarget();
    }
    controlPart_ = kTenSegmentPartNone;
    mouseIsDown_ = false;
    mouseDownValue_ = 0.0;
    mouseDownPointValueOffset_ = 0.0;
    lastMouseValue_ = 0.0;
    display();
    return true;
}

std::vector<KVContextMenuItem> KVTenSegmentSliderModel::contextualMenuItems(std::int32_t part) const
{
    if (part == kTenSegmentPartNone) {
        return {};
    }
    std::vector<KVContextMenuItem> items;
    const auto index = sliderThumbForControlPart(part);
    if (index && thumbs_[*index].locked) {
        items.push_back({"Unlock Thumb"});
        items.push_back({"", true});
    }
    items.push_back({"Reset Slider"});
    return items;
}

const KVKeyDependencyTable& KVTenSegmentSliderModel::keyPathsForValuesAffectingValueForKey()
{
    static const KVKeyDependencyTable table = {
        {kTenSegmentMinValueBinding, {kTenSegmentMaxValueBinding}},
        {kTenSegmentMaxValueBinding, {kTenSegmentMinValueBinding}},
    };
    return table;
}

void KVTenSegmentSliderModel::propagateValuesForBinding(std::string_view key) const
{
    bindings_.propagate(key, keyPathsForValuesAffectingValueForKey());
}

void KVTenSegmentSliderModel::sendActionToTarget() const
{
    bindings_.sendAction();
}

std::string KVTenSegmentSliderModel::debugDescription() const
{
    std::string text;
    for (std::size_t i = 0; i < thumbs_.size(); ++i) {
        char line[160];
        std::snprintf(line, sizeof line, "Thumb %ld: %.60e locked: %d\n", static_cast<long>(i),
                      thumbs_[i].doubleValue, thumbs_[i].locked ? 1 : 0);
        text += line;
    }
    return text;
}

void KVTenSegmentSliderModel::logValues(std::FILE* stream) const
{
    std::fprintf(stream, "%s\n", debugDescription().c_str());
}

} // namespace tintorra
