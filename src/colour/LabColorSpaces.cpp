#include "colour/LabColorSpaces.h"

#include "colour/WorkingSpaces.h"

#include <lcms2.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace tintorra {

namespace {

struct ProfileCloser {
    void operator()(void* profile) const { cmsCloseProfile(profile); }
};
using ProfileHandle = std::unique_ptr<void, ProfileCloser>;

KVColorSpace makeLabColorSpace(const IlluminantRecord& illuminant, std::string name)
{
    const cmsCIExyY white = {illuminant.x2, illuminant.y2, 1.0};
    std::vector<std::uint8_t> bytes;
    const ProfileHandle profile(cmsCreateLab4Profile(&white));
    // Little CMS gives its Lab profiles the connection space white whatever white they are made
    // for; the white point tag is what tells readers which white the Lab values refer to.
    const cmsCIEXYZ whiteXyz = {illuminant.x2 / illuminant.y2, 1.0,
                                (1.0 - illuminant.x2 - illuminant.y2) / illuminant.y2};
    cmsUInt32Number size = 0;
    if (profile && cmsWriteTag(profile.get(), cmsSigMediaWhitePointTag, &whiteXyz) &&
        cmsSaveProfileToMem(profile.get(), nullptr, &size) && size > 0) {
        bytes.resize(size);
        if (!cmsSaveProfileToMem(profile.get(), bytes.data(), &size)) {
            bytes.clear();
        }
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
