#include "colour/LabColorSpaces.h"

#include "colour/LcmsProfile.h"
#include "colour/WorkingSpaces.h"

#include <string>

namespace tintorra {

namespace {

KVColorSpace makeLabColorSpace(const IlluminantRecord& illuminant, std::string name)
{
    const cmsCIExyY white = {illuminant.x2, illuminant.y2, 1.0};
    const LcmsProfileHandle profile(cmsCreateLab4Profile(&white));
    // Little CMS gives its Lab profiles the connection space white whatever white they are made
    // for; the white point tag is what tells readers which white the Lab values refer to.
    const cmsCIEXYZ whiteXyz = {illuminant.x2 / illuminant.y2, 1.0,
                                (1.0 - illuminant.x2 - illuminant.y2) / illuminant.y2};
    std::vector<std::uint8_t> bytes;
    if (profile && cmsWriteTag(profile.get(), cmsSigMediaWhitePointTag, &whiteXyz)) {
        bytes = saveLcmsProfile(profile.get());
    }
    return {KVColorSpaceModel::lab, std::move(name), std::move(bytes)};
}

} // namespace

const KVColorSpace& calibratedD50LabColorSpace()
{
    static const KVColorSpace space = makeLabColorSpace(illuminantD50(), "Calibrated D50 Lab");
    return space;
}

const KVColorSpace& calibratedD65LabColorSpace()
{
    static const KVColorSpace space = makeLabColorSpace(illuminantD65(), "Calibrated D65 Lab");
    return space;
}

} // namespace tintorra
