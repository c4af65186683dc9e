#pragma once

// Plain byte-level reading and writing of ICC profiles for the tests, kept apart from the code
// under test so that its results can be checked against the file contents themselves.
#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tintorra::test {

using Bytes = std::vector<std::uint8_t>;

// The whole file, or nothing when it cannot be read.
std::optional<Bytes> readFileBytes(const std::string& path);

// The header fields and the tag directory of a profile.
struct ParsedProfile {
    std::uint8_t majorVersion = 0;
    std::string colorSpace;            // four characters, e.g. "RGB "
    std::map<std::string, Bytes> tags; // signature -> the tag's bytes
};
std::optional<ParsedProfile> parseProfile(const Bytes& bytes);

// The three s15.16 numbers of an XYZ tag as exact doubles; nothing when the tag is absent.
std::optional<std::array<double, 3>> xyzTag(const ParsedProfile& profile, const std::string& tag);

// The English (or else first) text of a 'desc' or 'mluc' description tag, in UTF-8.
std::optional<std::string> descriptionText(const ParsedProfile& profile);

// A minimal display profile with the given colour space and tags (raw s15.16 values for XYZ
// tags), enough for a profile reader to open.
struct RawXyzTag {
    std::string signature;
    std::array<std::int32_t, 3> values;
};
Bytes buildProfile(const std::string& colorSpace, const std::vector<RawXyzTag>& xyzTags);

// s15.16 encoding of a double, rounded to nearest.
std::int32_t toFixed(double value);

} // namespace tintorra::test
