#pragma once

#include "colour/ColorSpaceModel.h"
#include "controls/KVSliderValues.h"
#include "controls/KVTenSegmentValues.h"
#include "controls/KVValueDictionary.h"
#include "controls/MaskView.h"

#include <cstdint>

namespace tintorra {

// Everything the user has chosen that decides how an image is shifted: the three selection
// ranges, the targets, the brightness curve, the colour mode, the switches and the display
// gamma. A plain value: copyable and comparable, so that an owner can keep the previous value of
// a member for undo before calling a setter.
//
// The setters apply the value rules (clamping, precision) and nothing else; whoever owns the set
// adds undo registration and recomputation around them. Their names are those the parameter
// string decoder calls (applyDecodedHueShiftParameters), so an owner that wraps them with the
// same names can be handed to the decoder directly.
class KVHueShiftParameterSet {
public:
    // The values of a freshly created set of sliders: the hue ring centred on 0 with 10 degree
    // bounds and fall-offs, straight saturation and brightness sliders over the whole scale,
    // targets 0, the identity curve, display gamma 2.2 (kept, like every display gamma, at
    // single precision), LCh over Luv, both switches off, the shifted image shown.
    KVHueShiftParameterSet();

    // Selection ranges, as records and in the dictionary form of the sliders. Setting from a
    // dictionary converts with valuesFromDictionary, so a dictionary of bounds alone gets its
    // middle derived.
    const KVSliderValues& sourceHueRange() const { return sourceHueValues_; }
    const KVSliderValues& sourceSatRange() const { return sourceSatValues_; }
    const KVSliderValues& sourceBriRange() const { return sourceBriValues_; }
    KVValueDictionary sourceHueValues() const { return dictionaryFromValues(sourceHueValues_); }
    KVValueDictionary sourceSatValues() const { return dictionaryFromValues(sourceSatValues_); }
    KVValueDictionary sourceBriValues() const { return dictionaryFromValues(sourceBriValues_); }
    void setSourceHueValues(const KVValueDictionary& values);
    void setSourceSatValues(const KVValueDictionary& values);
    void setSourceBriValues(const KVValueDictionary& values);
    void setSourceHueRange(const KVSliderValues& values) { sourceHueValues_ = values; }
    void setSourceSatRange(const KVSliderValues& values) { sourceSatValues_ = values; }
    void setSourceBriRange(const KVSliderValues& values) { sourceBriValues_ = values; }

    // Normalized hue, 1.0 = 360 degrees; stored as given.
    double targetHue() const { return targetHue_; }
    void setTargetHue(double hue) { targetHue_ = hue; }
    // -1 .. 1, 0 = no change; the setters clamp.
    double targetSat() const { return targetSatModifier_; }
    void setTargetSat(double saturation);
    double targetBri() const { return targetBriModifier_; }
    void setTargetBri(double brightness);

    // The brightness curve in the curve slider's dictionary form, kept exactly as passed.
    const KVValueDictionary& targetBriTenVals() const { return targetBriTenVals_; }
    void setTargetBriTenVals(const KVValueDictionary& values) { targetBriTenVals_ = values; }
    // The eleven curve outputs (a missing key reads as 0).
    KVTenSegmentValues targetBriCurve() const;

    // Read at single precision, as the gamma control delivers it. The engine and the parameter
    // string carry the reciprocal.
    double displayGamma() const { return displayGamma_; }
    void setDisplayGamma(double gamma);

    ColorSpaceModel colorSpaceModel() const { return colorSpaceModel_; }
    void setColorSpaceModel(ColorSpaceModel model) { colorSpaceModel_ = model; }

    bool preserveHue() const { return preserveHue_ != 0; }
    void setPreserveHue(bool preserve) { preserveHue_ = preserve ? 1 : 0; }
    bool blendToFalloffHues() const { return blendToFalloffHues_ != 0; }
    void setBlendToFalloffHues(bool blend) { blendToFalloffHues_ = blend ? 1 : 0; }

    MaskView maskToShow() const { return maskToShow_; }
    void setMaskToShow(MaskView mask) { maskToShow_ = mask; }

    friend bool operator==(const KVHueShiftParameterSet&, const KVHueShiftParameterSet&) = default;

private:
    KVSliderValues sourceHueValues_;
    KVSliderValues sourceSatValues_;
    KVSliderValues sourceBriValues_;
    double targetHue_ = 0.0;
    double targetSatModifier_ = 0.0;
    double targetBriModifier_ = 0.0;
    KVValueDictionary targetBriTenVals_;
    double displayGamma_ = 0.0;
    ColorSpaceModel colorSpaceModel_ = ColorSpaceModel::LChuv;
    std::uint8_t preserveHue_ = 0;
    std::uint8_t blendToFalloffHues_ = 0;
    MaskView maskToShow_ = MaskView::shiftedImage;
};

// The display gamma a fresh parameter set starts with.
inline constexpr double kDefaultDisplayGamma = 2.2;

} // namespace tintorra
