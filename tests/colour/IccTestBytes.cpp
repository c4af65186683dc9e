#include "IccTestBytes.h"

#include <cmath>
#include <fstream>
#include <iterator>

namespace tintorra::test {

namespace {

std::uint32_t readU32(const Bytes& bytes, std::size_t at)
{
    return (std::uint32_t{bytes[at]} << 24) | (std::uint32_t{bytes[at + 1]} << 16) |
           (std::uint32_t{bytes[at + 2]} << 8) | std::uint32_t{bytes[at + 3]};
}

std::uint16_t readU16(const Bytes& bytes, std::size_t at)
{
    return static_cast<std::uint16_t>((bytes[at] << 8) | bytes[at + 1]);
}

void writeU32(Bytes& bytes, std::size_t at, std::uint32_t value)
{
    bytes[at] = static_cast<std::uint8_t>(value >> 24);
    bytes[at + 1] = static_cast<std::uint8_t>(value >> 16);
    bytes[at + 2] = static_cast<std::uint8_t>(value >> 8);
    bytes[at + 3] = static_cast<std::uint8_t>(value);
}

void writeText(Bytes& bytes, std::size_t at, const std::string& text)
{
    for (std::size_t i = 0; i < text.size(); ++i) {
        bytes[at + i] = static_cast<std::uint8_t>(text[i]);
    }
}

std::string textAt(const Bytes& bytes, std::size_t at, std::size_t length)
{
    return std::string(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                       bytes.begin() + static_cast<std::ptrdiff_t>(at + length));
}

void appendUtf8(std::string& text, std::uint32_t c)
{
    if (c < 0x80) {
        text += static_cast<char>(c);
    } else if (c < 0x800) {
        text += static_cast<char>(0xC0 | (c >> 6));
        text += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        text += static_cast<char>(0xE0 | (c >> 12));
        text += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        text += static_cast<char>(0x80 | (c & 0x3F));
    }
}

} // namespace

std::optional<Bytes> readFileBytes(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return std::nullopt;
    }
    return Bytes(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

std::optional<ParsedProfile> parseProfile(const Bytes& bytes)
{
    if (bytes.size() < 132 || textAt(bytes, 36, 4) != "acsp") {
        return std::nullopt;
    }
    ParsedProfile profile;
    profile.majorVersion = bytes[8];
    profile.colorSpace = textAt(bytes, 16, 4);
    const std::uint32_t count = readU32(bytes, 128);
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::size_t entry = 132 + 12 * std::size_t{i};
        if (entry + 12 > bytes.size()) {
            return std::nullopt;
        }
        const std::uint32_t offset = readU32(bytes, entry + 4);
        const std::uint32_t size = readU32(bytes, entry + 8);
        if (std::size_t{offset} + size > bytes.size()) {
            return std::nullopt;
        }
        profile.tags[textAt(bytes, entry, 4)] =
            Bytes(bytes.begin() + offset, bytes.begin() + offset + size);
    }
    return profile;
}

std::optional<std::array<double, 3>> xyzTag(const ParsedProfile& profile, const std::string& tag)
{
    const auto found = profile.tags.find(tag);
    if (found == profile.tags.end() || found->second.size() < 20) {
        return std::nullopt;
    }
    std::array<double, 3> xyz{};
    for (int i = 0; i < 3; ++i) {
        const auto raw = static_cast<std::int32_t>(readU32(found->second, 8 + 4 * i));
        xyz[i] = raw / 65536.0;
    }
    return xyz;
}

std::optional<std::string> descriptionText(const ParsedProfile& profile)
{
    const auto found = profile.tags.find("desc");
    if (found == profile.tags.end() || found->second.size() < 12) {
        return std::nullopt;
    }
    const Bytes& tag = found->second;
    const std::string type = textAt(tag, 0, 4);
    if (type == "desc") {
        // ASCII count including the terminating zero, then the text.
        const std::uint32_t count = readU32(tag, 8);
        if (count == 0 || 12 + std::size_t{count} > tag.size()) {
            return std::nullopt;
        }
        std::string text = textAt(tag, 12, count);
        return text.substr(0, text.find('\0'));
    }
    if (type == "mluc") {
        const std::uint32_t records = readU32(tag, 8);
        if (records == 0) {
            return std::nullopt;
        }
        std::size_t chosen = 16;
        for (std::uint32_t i = 0; i < records; ++i) {
            const std::size_t record = 16 + 12 * std::size_t{i};
            if (textAt(tag, record, 2) == "en") {
                chosen = record;
                break;
            }
        }
        const std::uint32_t length = readU32(tag, chosen + 4);
        const std::uint32_t offset = readU32(tag, chosen + 8);
        std::string text;
        for (std::uint32_t i = 0; i + 1 < length; i += 2) {
            appendUtf8(text, readU16(tag, offset + i));
        }
        return text;
    }
    return std::nullopt;
}

std::int32_t toFixed(double value)
{
    return static_cast<std::int32_t>(std::lround(value * 65536.0));
}

Bytes buildProfile(const std::string& colorSpace, const std::vector<RawXyzTag>& xyzTags)
{
    const std::size_t directory = 132 + 12 * xyzTags.size();
    const std::size_t size = directory + 20 * xyzTags.size();
    Bytes bytes(size, 0);
    writeU32(bytes, 0, static_cast<std::uint32_t>(size));
    writeU32(bytes, 8, 0x02100000);
    writeText(bytes, 12, "mntr");
    writeText(bytes, 16, colorSpace);
    writeText(bytes, 20, "XYZ ");
    writeText(bytes, 36, "acsp");
    // Profile connection space illuminant: D50.
    writeU32(bytes, 68, 0x0000F6D6);
    writeU32(bytes, 72, 0x00010000);
    writeU32(bytes, 76, 0x0000D32D);
    writeU32(bytes, 128, static_cast<std::uint32_t>(xyzTags.size()));
    for (std::size_t i = 0; i < xyzTags.size(); ++i) {
        const std::size_t entry = 132 + 12 * i;
        const std::size_t offset = directory + 20 * i;
        writeText(bytes, entry, xyzTags[i].signature);
        writeU32(bytes, entry + 4, static_cast<std::uint32_t>(offset));
        writeU32(bytes, entry + 8, 20);
        writeText(bytes, offset, "XYZ ");
        for (int k = 0; k < 3; ++k) {
            writeU32(bytes, offset + 8 + 4 * k, static_cast<std::uint32_t>(xyzTags[i].values[k]));
        }
    }
    return bytes;
}

} // namespace tintorra::test
