#include "editor/ShiftRecordEncoding.h"

#include "controls/ParameterEncoding.h"

namespace tintorra {

std::string hexEncodedStringFromHueShiftParameters(const HueShiftParameters& p)
{
    std::string out;
    out.reserve(kHueShiftParameterStringLength);
    out.append(kHueShiftParameterPrefix);
    appendHexByte(out, kHueShiftParameterVersion);
    appendHexDouble(out, p.imageGamma);
    appendHexByte(out, static_cast<std::uint8_t>(colorSpaceModelNumber(p.colorSpaceModel)));
    appendHexByte(out, p.preserveHue);
    appendHexByte(out, p.blendToFalloffHues);
    appendHexByte(out, static_cast<std::uint8_t>(maskViewNumber(p.maskToShow)));
    appendHexDouble(out, p.targetHue);
    appendHexDouble(out, p.targetSat);
    appendHexDouble(out, p.targetBri);
    for (const double value : p.targetBriTenVals) {
        appendHexDouble(out, value);
    }
    for (const double value :
         {p.hueUpperFalloff, p.hueUpper, p.hueLower, p.hueLowerFalloff, p.satUpperFalloff,
          p.satUpper, p.satLower, p.satLowerFalloff, p.lightUpperFalloff, p.lightUpper,
          p.lightLower, p.lightLowerFalloff}) {
        appendHexDouble(out, value);
    }
    return out;
}

} // namespace tintorra
