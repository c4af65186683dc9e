#include "colour/LcmsProfile.h"

#include <limits>

namespace tintorra {

LcmsProfileHandle openLcmsProfile(const std::vector<std::uint8_t>& bytes)
{
    if (bytes.empty() || bytes.size() > std::numeric_limits<cmsUInt32Number>::max()) {
        return LcmsProfileHandle{};
    }
    return LcmsProfileHandle(
        cmsOpenProfileFromMem(bytes.data(), static_cast<cmsUInt32Number>(bytes.size())));
}

std::vector<std::uint8_t> saveLcmsProfile(cmsHPROFILE profile)
{
    cmsUInt32Number size = 0;
    if (profile == nullptr || !cmsSaveProfileToMem(profile, nullptr, &size) || size == 0) {
        return {};
    }
    std::vector<std::uint8_t> bytes(size);
    if (!cmsSaveProfileToMem(profile, bytes.data(), &size)) {
        return {};
    }
    bytes.resize(size);
    return bytes;
}

} // namespace tintorra
