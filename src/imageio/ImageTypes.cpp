#include "imageio/ImageTypes.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <utility>

namespace tintorra {

namespace {

struct ExtensionType {
    std::string_view extension;
    std::string_view type;
};

constexpr std::array kExtensions{
    ExtensionType{"tiff", kTypeTIFF},    ExtensionType{"tif", kTypeTIFF},
    ExtensionType{"png", kTypePNG},      ExtensionType{"jpeg", kTypeJPEG},
    ExtensionType{"jpg", kTypeJPEG},     ExtensionType{"jpe", kTypeJPEG},
    ExtensionType{"jp2", kTypeJPEG2000}, ExtensionType{"j2k", kTypeJPEG2000},
    ExtensionType{"j2c", kTypeJPEG2000}, ExtensionType{"jpf", kTypeJPEG2000},
    ExtensionType{"bmp", kTypeBMP},      ExtensionType{"gif", kTypeGIF},
};

constexpr std::array kFormatTypes{
    std::pair{ImageFormat::tiff, kTypeTIFF}, std::pair{ImageFormat::png, kTypePNG},
    std::pair{ImageFormat::jpeg, kTypeJPEG}, std::pair{ImageFormat::jpeg2000, kTypeJPEG2000},
    std::pair{ImageFormat::bmp, kTypeBMP},   std::pair{ImageFormat::gif, kTypeGIF},
};

} // namespace

bool typeConformsTo(std::string_view type, std::string_view parent)
{
    if (type == parent)
        return true;
    if (type == TintorraTIFFType)
        return parent == kTypeTIFF || parent == kTypeImage;
    if (parent == kTypeImage)
        return formatForType(type).has_value();
    return false;
}

std::optional<std::string> UTIForTag(long tag)
{
    switch (tag) {
    case 0:
        return std::string(kTypeTIFF);
    case 1:
        return std::string(kTypePNG);
    case 2:
        return std::string(kTypeJPEG);
    case 3:
        return std::string(kTypeJPEG2000);
    default:
        return std::nullopt;
    }
}

std::optional<std::string> extensionForUTI(std::string_view type)
{
    if (typeConformsTo(type, kTypeTIFF))
        return "tiff";
    if (typeConformsTo(type, kTypePNG))
        return "png";
    if (typeConformsTo(type, kTypeJPEG))
        return "jpeg";
    if (typeConformsTo(type, kTypeJPEG2000))
        return "jp2";
    return std::nullopt;
}

std::optional<std::string> preferredExtensionForType(std::string_view type)
{
    if (std::optional<std::string> extension = extensionForUTI(type))
        return extension;
    if (typeConformsTo(type, kTypeBMP))
        return "bmp";
    if (typeConformsTo(type, kTypeGIF))
        return "gif";
    return std::nullopt;
}

std::optional<std::string> typeForExtension(std::string_view extension)
{
    if (!extension.empty() && extension.front() == '.')
        extension.remove_prefix(1);
    std::string lower(extension);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    for (const ExtensionType& entry : kExtensions) {
        if (entry.extension == lower)
            return std::string(entry.type);
    }
    return std::nullopt;
}

std::optional<ImageFormat> formatForType(std::string_view type)
{
    if (type == TintorraTIFFType)
        return ImageFormat::tiff;
    for (const auto& [format, formatType] : kFormatTypes) {
        if (formatType == type)
            return format;
    }
    return std::nullopt;
}

std::string_view typeForFormat(ImageFormat format)
{
    for (const auto& [candidate, type] : kFormatTypes) {
        if (candidate == format)
            return type;
    }
    return kTypeTIFF;
}

} // namespace tintorra
