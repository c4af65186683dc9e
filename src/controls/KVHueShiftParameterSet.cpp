#include "controls/KVHueShiftParameterSet.h"

#include <algorithm>

namespace tintorra {

namespace {

// A new hue ring: middle 0 with 10 degrees to each bound and 10 more to each fall-off end.
KVSliderValues initialRingValues()
{
    constexpr double kTenDegrees = 10.0 / 360.0;
    return valuesFromOffsets({kTenDegrees, kTenDegrees, 0.0, kTenDegrees, kTenDegrees});
}

// A new straight slider on 0..1: middle 0.5, the range over the whole scale, no fall-offs.
KVSliderValues initialStraightValues()
{
    return valuesFromOffsets({0.0, 0.5, 0.5, 0.5, 0.0});
}

double singlePrecision(double value)
{
    return static_cast<double>(static_cast<float>(value));
}

} // namespace

KVHueShiftParameterSet::KVHueShiftParameterSet()
    : sourceHueValues_(initialRingValues()), sourceSatValues_(initialStraightValues()),
      sourceBriValues_(initialStraightValues()),
      targetBriTenVals_(dictionaryFromTenSegmentValues(identityTenSegmentValues())),
      displayGamma_(singlePrecision(kDefaultDisplayGamma))
{}

void KVHueShiftParameterSet::setSourceHueValues(const KVValueDictionary& values)
{
    sourceHueValues_ = valuesFromDictionary(values);
}

void KVHueShiftParameterSet::setSourceSatValues(const KVValueDictionary& values)
{
    sourceSatValues_ = valuesFromDictionary(values);
}

void KVHueShiftParameterSet::setSourceBriValues(const KVValueDictionary& values)
{
    sourceBriValues_ = valuesFromDictionary(values);
}

void KVHueShiftParameterSet::setTargetSat(double saturation)
{
    targetSatModifier_ = std::clamp(saturation, -1.0, 1.0);
}

void KVHueShiftParameterSet::setTargetBri(double brightness)
{
    targetBriModifier_ = std::clamp(brightness, -1.0, 1.0);
}

KVTenSegmentValues KVHueShiftParameterSet::targetBriCurve() const
{
    return tenSegmentValuesFromDictionary(targetBriTenVals_);
}

void KVHueShiftParameterSet::setDisplayGamma(double gamma)
{
    displayGamma_ = singlePrecision(gamma);
}

} // namespace tintorra
