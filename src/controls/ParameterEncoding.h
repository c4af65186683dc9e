#pragma once

#include "controls/KVHueShiftParameterSet.h"
#include "controls/KVValueDictionary.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tintorra {

// The parameter string saved inside images: "tolm", then upper-case hex of a version byte, the
// gamma, four bytes (colour mode, preserve hue, blend to fall-off hues, mask to show), the three
// targets, the eleven curve values and the three ranges' four bounds each. Doubles are written
// as their 64 IEEE bits, most significant byte first, so every value survives bit for bit.
inline constexpr std::string_view kHueShiftParameterPrefix = "tolm";
inline constexpr std::uint8_t kHueShiftParameterVersion = 1;
inline constexpr std::size_t kHueShiftParameterStringLength = 446;

// The writing half of the format (the engine record's own encoder lives with the code that builds
// the record): a byte as two upper-case hex digits, a double as its 64 bits, high byte first.
void appendHexByte(std::string& out, std::uint8_t byte);
void appendHexDouble(std::string& out, double value);

// What a parameter string yields, in the order the values are applied.
struct DecodedHueShiftParameters {
    std::uint8_t version = 0;
    // The reciprocal of the display gamma; 0 gives an infinite display gamma.
    double gamma = 0.0;
    // The colour mode's and the mask view's numbers as written; they may name nothing.
    std::uint8_t colorSpaceModel = 0;
    std::uint8_t preserveHue = 0;
    std::uint8_t blendToFalloffHues = 0;
    std::uint8_t maskToShow = 0;
    double targetHue = 0.0;
    double targetSat = 0.0;
    // Read, and deliberately never applied: decoding keeps the current target brightness.
    double targetBri = 0.0;
    KVValueDictionary targetBriTenVals;
    // Four bounds each, without "middle", so that the middle is derived again.
    KVValueDictionary sourceHueValues;
    KVValueDictionary sourceSatValues;
    KVValueDictionary sourceBriValues;
};

// Reads a parameter string; nothing when it is empty or does not begin with "tolm" (case
// matters). Everything else is read as far as it goes, with no check of length, version or
// range (applying checks the colour mode and the mask view):
// - a field is read only while at least two characters remain at its position; otherwise it
//   keeps the value last read into its slot (one slot for all bytes, one for the four single
//   doubles, eleven for the curve, four shared by the three ranges; all start at 0);
// - each byte is read from up to two hex digits of either case, advancing by the digits read;
//   a byte without digits reads as 0 and does not advance;
// - a string with any non-ASCII character has no ASCII form: no field is read.
std::optional<DecodedHueShiftParameters> decodeHueShiftParameters(std::string_view text);

// Applies decoded values through the target's setters in their fixed order: display gamma
// (1 / gamma), colour mode, preserve hue, blend to fall-off hues, mask to show, target hue,
// target saturation, curve, then the three ranges. The target brightness is skipped on purpose.
// A colour mode or mask byte that names no mode or view is refused: false, and the target is left
// untouched. An owner that recomputes on every setter should block recomputation around this
// call and recompute once afterwards.
template <typename Target>
bool applyDecodedHueShiftParameters(const DecodedHueShiftParameters& decoded, Target& target)
{
    const std::optional<ColorSpaceModel> model = colorSpaceModelFromNumber(decoded.colorSpaceModel);
    const std::optional<MaskView> mask = maskViewFromNumber(decoded.maskToShow);
    if (!model || !mask) {
        return false;
    }
    target.setDisplayGamma(1.0 / decoded.gamma);
    target.setColorSpaceModel(*model);
    target.setPreserveHue(decoded.preserveHue != 0);
    target.setBlendToFalloffHues(decoded.blendToFalloffHues != 0);
    target.setMaskToShow(*mask);
    target.setTargetHue(decoded.targetHue);
    target.setTargetSat(decoded.targetSat);
    target.setTargetBriTenVals(decoded.targetBriTenVals);
    target.setSourceHueValues(decoded.sourceHueValues);
    target.setSourceSatValues(decoded.sourceSatValues);
    target.setSourceBriValues(decoded.sourceBriValues);
    return true;
}

// Decodes and applies; false (and the set untouched) when the string is not accepted or names a
// colour mode or mask view that does not exist.
bool setHueShiftParametersFromHexEncodedString(KVHueShiftParameterSet& set, std::string_view text);

} // namespace tintorra
