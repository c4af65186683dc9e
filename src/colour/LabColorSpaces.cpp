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
    cmsUInt32Number size = 0;
    if (profile && cmsSaveProfileToMem(profile.get(), nullptr, &size) && size > 0) {
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
