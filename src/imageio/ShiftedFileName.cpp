#include "imageio/ShiftedFileName.h"

#include "imageio/ImageTypes.h"

#include <unicode/regex.h>
#include <unicode/unistr.h>

#include <charconv>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <memory>

namespace tintorra {

namespace {

// The last component of a path, trailing slashes ignored.
std::string_view lastPathComponent(std::string_view path)
{
    while (path.size() > 1 && path.back() == '/')
        path.remove_suffix(1);
    const std::size_t slash = path.rfind('/');
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

// The component without its extension; a leading dot starts no extension.
std::string_view deletingPathExtension(std::string_view component)
{
    const std::size_t dot = component.rfind('.');
    if (dot == std::string_view::npos || dot == 0)
        return component;
    return component.substr(0, dot);
}

std::string_view folderOfPath(std::string_view path)
{
    while (path.size() > 1 && path.back() == '/')
        path.remove_suffix(1);
    const std::size_t slash = path.rfind('/');
    if (slash == std::string_view::npos)
        return {};
    return path.substr(0, slash == 0 ? 1 : slash);
}

// The shift count in the name: decimal digits read as a signed 64-bit integer that saturates,
// as a string's integer value does.
std::uint64_t shiftCount(const std::string& digits)
{
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error == std::errc::result_out_of_range)
        return static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    return static_cast<std::uint64_t>(value);
}

std::string toUtf8(const icu::UnicodeString& text)
{
    std::string result;
    text.toUTF8String(result);
    return result;
}

} // namespace

std::string shiftedFileNameForPath(std::string_view path)
{
    const std::string base(deletingPathExtension(lastPathComponent(path)));
    const std::string suffix(kShiftedFileNameSuffix);

    UErrorCode status = U_ZERO_ERROR;
    static const std::unique_ptr<icu::RegexPattern> pattern = [] {
        UErrorCode compileStatus = U_ZERO_ERROR;
        UParseError parseError;
        return std::unique_ptr<icu::RegexPattern>(icu::RegexPattern::compile(
            icu::UnicodeString::fromUTF8(std::string(kShiftedFileNamePattern)), parseError,
            compileStatus));
    }();
    if (!pattern)
        return base + suffix;

    const icu::UnicodeString name = icu::UnicodeString::fromUTF8(base);
    const std::unique_ptr<icu::RegexMatcher> matcher(pattern->matcher(name, status));
    if (U_FAILURE(status) || !matcher->find(status) || U_FAILURE(status))
        return base + suffix;

    const int32_t start = matcher->start(status);
    const icu::UnicodeString digits = matcher->group(2, status);
    if (U_FAILURE(status))
        return base + suffix;

    icu::UnicodeString head(name, 0, start);
    std::string result = toUtf8(head) + suffix;
    if (!digits.isEmpty())
        result.append("-").append(std::to_string(shiftCount(toUtf8(digits)) + 1));
    else
        result += "-1";
    return result;
}

std::string shiftedFileNameForPath(std::string_view path, std::string_view fileType)
{
    std::string name = shiftedFileNameForPath(path);
    if (const std::optional<std::string> extension = preferredExtensionForType(fileType))
        name.append(".").append(*extension);
    return name;
}

std::string shiftedPathForPath(std::string_view path, std::string_view fileType)
{
    const std::string name = shiftedFileNameForPath(path, fileType);
    const std::string_view folder = folderOfPath(path);
    if (folder.empty())
        return name;
    std::string result(folder);
    if (folder != "/")
        result.append("/");
    return result.append(name);
}

} // namespace tintorra
