#include "controls/KVCircularSliderModel.h"

#include "colour/ColorConversions.h"

#include <cmath>
#include <limits>

namespace tintorra {

namespace {

// A new ring selects 10° on each side of its middle, with 10° of fall-off beyond.
constexpr double kInitialRingOffset = 10.0 / 360.0;

// Frames whose sides differ by no more than this factor are drawn as rings.
constexpr double kCircularAspectLimit = 1.2;

} // namespace

KVCircularSliderModel::KVCircularSliderModel(bool circular)
    : circular_(circular), wrapsAround_(circular)
{
    if (wrapsAround_) {
        offsets_.middleValue = minValue_;
        offsets_.upperOffset = offsets_.lowerOffset = kInitialRingOffset;
        offsets_.upperFalloffOffset = offsets_.lowerFalloffOffset = kInitialRingOffset;
    } else {
        // A straight slider starts out selecting its whole scale.
        offsets_.middleValue = minValue_ + wrapDist_ / 2.0;
        offsets_.upperOffset = offsets_.lowerOffset = wrapDist_ / 2.0;
    }
    defaultValue_ = offsets_.middleValue;
}

bool KVCircularSliderModel::isCircularFrame(double width, double height)
{
    return !(width > kCircularAspectLimit * height) && !(height > kCircularAspectLimit * width);
}

KVCircularSliderModel KVCircularSliderModel::forFrameSize(double width, double height)
{
    return KVCircularSliderModel(isCircularFrame(width, height));
}

void KVCircularSliderModel::setMinValue(double value)
{
    minValue_ = std::min(value, maxValue_);
    wrapDist_ = maxValue_ - minValue_;
    offsets_.middleValue = clamp(offsets_.middleValue, minValue_, maxValue_);
    offsets_ = collapsedOffsetsFromOffsets(offsets_, kCollapseLowerSideFirst);
    display();
}

void KVCircularSliderModel::setMaxValue(double value)
{
    maxValue_ = std::max(value, minValue_);
    wrapDist_ = maxValue_ - minValue_;
    offsets_.middleValue = clamp(offsets_.middleValue, minValue_, maxValue_);
    offsets_ = collapsedOffsetsFromOffsets(offsets_, kCollapseUpperSideFirst);
    display();
}

void KVCircularSliderModel::setWrapsAround(bool wraps)
{
    wrapsAround_ = wraps;
    if (wraps) {
        offsets_ = collapsedOffsetsFromOffsets(offsets_, kCollapseUpperSideFirst);
    }
    display();
}

void KVCircularSliderModel::setShowsUpperLowerThumbs(bool shows)
{
    showsUpperLowerThumbs_ = shows;
    display();
}

void KVCircularSliderModel::setShowsUpperLowerFalloffThumbs(bool shows)
{
    showsUpperLowerFalloffThumbs_ = shows;
    display();
}

void KVCircularSliderModel::setCenterThumbWithinOffsets(bool centers)
{
    centerThumbWithinOffsets_ = centers;
    display();
}

void KVCircularSliderModel::setShowsValueIndicator(bool shows)
{
    showsValueIndicator_ = shows;
    display();
}

void KVCircularSliderModel::setIndicatedValue(double value)
{
    indicatedValue_ = value;
    display();
}

void KVCircularSliderModel::setEnabled(bool enabled)
{
    enabled_ = enabled;
    display();
}

void KVCircularSliderModel::setColorSpaceModel(ColorSpaceModel model)
{
    colorSpaceModel_ = model;
    display();
}

void KVCircularSliderModel::setOffsets(const KVSliderOffsets& offsets)
{
    offsets_ = offsets;
    display();
}

KVSliderValues KVCircularSliderModel::sliderValues() const
{
    return valuesFromOffsets(clampedOffsets(offsets_));
}

KVValueDictionary KVCircularSliderModel::values() const
{
    return dictionaryFromValues(sliderValues());
}

void KVCircularSliderModel::takeValues(const KVSliderValues& values)
{
    offsets_ = offsetsFromValues(values);
    display();
}

void KVCircularSliderModel::takeValues(const KVValueDictionary& dictionary)
{
    takeValues(valuesFromDictionary(dictionary));
}

void KVCircularSliderModel::setValues(const KVSliderValues& values)
{
    takeValues(values);
    didChange(kValuesBinding);
}

void KVCircularSliderModel::setValues(const KVValueDictionary& dictionary)
{
    setValues(valuesFromDictionary(dictionary));
}

double KVCircularSliderModel::middleValue() const
{
    return offsets_.middleValue;
}

double KVCircularSliderModel::upperValue() const
{
    return middleValue() + offsets_.upperOffset;
}

double KVCircularSliderModel::lowerValue() const
{
    return middleValue() - offsets_.lowerOffset;
}

double KVCircularSliderModel::upperFalloffValue() const
{
    return upperValue() + offsets_.upperFalloffOffset;
}

double KVCircularSliderModel::lowerFalloffValue() const
{
    return lowerValue() - offsets_.lowerFalloffOffset;
}

double KVCircularSliderModel::doubleValueForKey(std::string_view key) const
{
    if (key == kMiddleValueBinding) {
        return middleValue();
    }
    if (key == kUpperValueBinding) {
        return upperValue();
    }
    if (key == kLowerValueBinding) {
        return lowerValue();
    }
    if (key == kUpperFalloffValueBinding) {
        return upperFalloffValue();
    }
    if (key == kLowerFalloffValueBinding) {
        return lowerFalloffValue();
    }
    return std::numeric_limits<double>::quiet_NaN();
}

const KVKeyDependencyTable& KVCircularSliderModel::keyPathsForValuesAffectingValueForKey()
{
    static const KVKeyDependencyTable table = {
        {kValuesBinding,
         {kMiddleValueBinding, kUpperValueBinding, kLowerValueBinding, kUpperFalloffValueBinding,
          kLowerFalloffValueBinding}},
        {kMiddleValueBinding, {kValuesBinding, kUpperValueBinding, kLowerValueBinding}},
        {kUpperValueBinding, {kValuesBinding, kMiddleValueBinding}},
        {kLowerValueBinding, {kValuesBinding, kMiddleValueBinding}},
        {kUpperFalloffValueBinding, {kValuesBinding, kMiddleValueBinding, kUpperValueBinding}},
        {kLowerFalloffValueBinding, {kValuesBinding, kMiddleValueBinding, kLowerValueBinding}},
    };
    return table;
}

const KVKeyDependencyTable& KVCircularSliderModel::keyPathsForValuesAffectedByValueForKey()
{
    static const KVKeyDependencyTable table =
        reversedKeyDependencies(keyPathsForValuesAffectingValueForKey());
    return table;
}

void KVCircularSliderModel::propagateValuesForBinding(std::string_view key) const
{
    bindings_.propagate(key, keyPathsForValuesAffectingValueForKey());
}

void KVCircularSliderModel::propagateValuesAffectedByBinding(std::string_view key) const
{
    bindings_.propagate(key, keyPathsForValuesAffectedByValueForKey());
}

void KVCircularSliderModel::sendActionToTarget() const
{
    bindings_.sendAction();
}

void KVCircularSliderModel::didChange(std::string_view key)
{
    propagateValuesForBinding(key);
    sendActionToTarget();
}

std::string KVCircularSliderModel::debugDescription() const
{
    const struct {
        const char* format;
        double value;
    } lines[] = {
        {"offsets_.upperFalloffOffset: %.60e\n", offsets_.upperFalloffOffset},
        {"offsets_.upperOffset: %.60e\n", offsets_.upperOffset},
        {"offsets_.middleValue: %.60e\n", offsets_.middleValue},
        {"offsets_.lowerOffset: %.60e\n", offsets_.lowerOffset},
        {"offsets_.lowerFalloffOffset: %.60e\n", offsets_.lowerFalloffOffset},
    };
    std::string text;
    for (const auto& line : lines) {
        // %.60e of any double, with the label, fits easily.
        char buffer[160];
        std::snprintf(buffer, sizeof buffer, line.format, line.value);
        text += buffer;
    }
    return text;
}

void KVCircularSliderModel::logValues(std::FILE* stream) const
{
    std::fprintf(stream, "%s\n", debugDescription().c_str());
}

} // namespace tintorra
