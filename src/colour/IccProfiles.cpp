#include "colour/IccProfiles.h"

#include "colour/LcmsProfile.h"
#include "colour/WorkingSpaces.h"

#include <string>

namespace tintorra {

namespace {

// The colour space field of a profile's header (bytes 16 to 19, big-endian), read from the bytes
// themselves: a hostile profile can put any number there, which lcms's enumeration cannot hold.
std::uint32_t headerColorSpace(const std::vector<std::uint8_t>& bytes)
{
    if (bytes.size() < 20) {
        return 0;
    }
    return static_cast<std::uint32_t>(bytes[16]) << 24 |
           static_cast<std::uint32_t>(bytes[17]) << 16 |
           static_cast<std::uint32_t>(bytes[18]) << 8 | bytes[19];
}

KVColorSpaceModel modelFromSignature(std::uint32_t signature)
{
    switch (signature) {
    case cmsSigGrayData:
        return KVColorSpaceModel::gray;
    case cmsSigRgbData:
        return KVColorSpaceModel::rgb;
    case cmsSigCmykData:
        return KVColorSpaceModel::cmyk;
    case cmsSigLabData:
        return KVColorSpaceModel::lab;
    case cmsSigMCH2Data:
    case cmsSigMCH3Data:
    case cmsSigMCH4Data:
    case cmsSigMCH5Data:
    case cmsSigMCH6Data:
    case cmsSigMCH7Data:
    case cmsSigMCH8Data:
    case cmsSigMCH9Data:
    case cmsSigMCHAData:
    case cmsSigMCHBData:
    case cmsSigMCHCData:
    case cmsSigMCHDData:
    case cmsSigMCHEData:
    case cmsSigMCHFData:
    case cmsSig2colorData:
    case cmsSig3colorData:
    case cmsSig4colorData:
    case cmsSig5colorData:
    case cmsSig6colorData:
    case cmsSig7colorData:
    case cmsSig8colorData:
    case cmsSig9colorData:
    case cmsSig10colorData:
    case cmsSig11colorData:
    case cmsSig12colorData:
    case cmsSig13colorData:
    case cmsSig14colorData:
    case cmsSig15colorData:
        return KVColorSpaceModel::deviceN;
    default:
        return KVColorSpaceModel::unknown;
    }
}

void appendUtf8(std::string& text, char32_t c)
{
    if (c < 0x80) {
        text += static_cast<char>(c);
    } else if (c < 0x800) {
        text += static_cast<char>(0xC0 | (c >> 6));
        text += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        text += static_cast<char>(0xE0 | (c >> 12));
        text += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        text += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x110000) {
        text += static_cast<char>(0xF0 | (c >> 18));
        text += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        text += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        text += static_cast<char>(0x80 | (c & 0x3F));
    }
}

// The description in UTF-8; Little CMS falls back to any language when there is no English one.
std::string profileDescription(cmsHPROFILE profile)
{
    const cmsUInt32Number byteCount =
        cmsGetProfileInfo(profile, cmsInfoDescription, "en", "US", nullptr, 0);
    if (byteCount == 0) {
        return {};
    }
    std::vector<wchar_t> wide(byteCount / sizeof(wchar_t) + 1, L'\0');
    cmsGetProfileInfo(profile, cmsInfoDescription, "en", "US", wide.data(),
                      static_cast<cmsUInt32Number>(wide.size() * sizeof(wchar_t)));
    std::string text;
    for (const wchar_t c : wide) {
        if (c == L'\0') {
            break;
        }
        appendUtf8(text, static_cast<char32_t>(c));
    }
    return text;
}

KVColorSpace makeSRGBColorSpace()
{
    const LcmsProfileHandle profile(cmsCreate_sRGBProfile());
    // Written the way version 2 sRGB profiles are: colourants adapted to D50, but the media white
    // point the real D65 white. The matrix code scales the primaries to that tag, so a v4-style
    // D50 white would turn our own sRGB files into a skewed space; with D65 they read back as the
    // sRGB row of the working-space table.
    if (profile) {
        const IlluminantRecord& d65 = illuminantD65();
        const cmsCIEXYZ white{d65.x2 / d65.y2, 1.0, (1.0 - d65.x2 - d65.y2) / d65.y2};
        cmsSetProfileVersion(profile.get(), 2.1);
        cmsWriteTag(profile.get(), cmsSigMediaWhitePointTag, &white);
    }
    // Without bytes the space is still sRGB: the matrix code falls back to the sRGB row.
    return {KVColorSpaceModel::rgb, "sRGB", saveLcmsProfile(profile.get())};
}

} // namespace

std::optional<KVColorSpace> colorSpaceFromIccProfile(std::vector<std::uint8_t> bytes)
{
    const LcmsProfileHandle profile = openLcmsProfile(bytes);
    if (!profile) {
        return std::nullopt;
    }
    const KVColorSpaceModel model = modelFromSignature(headerColorSpace(bytes));
    std::string name = profileDescription(profile.get());
    return KVColorSpace(model, std::move(name), std::move(bytes));
}

KVColorSpace sRGBColorSpace()
{
    static const KVColorSpace space = makeSRGBColorSpace();
    return space;
}

std::optional<KVColorSpace> colorSpaceForMainScreen()
{
    return std::nullopt;
}

} // namespace tintorra
