#include "cli/JsonOutput.h"

#include <cmath>
#include <cstdio>

namespace tintorra::cli {

void printJson(const Json& value, std::FILE* stream)
{
    // Names go through jsonFileName; replacing is only the last guard against a stray byte.
    const std::string text = value.dump(-1, ' ', false, Json::error_handler_t::replace);
    std::fwrite(text.data(), 1, text.size(), stream);
    std::fputc('\n', stream);
    std::fflush(stream);
}

namespace {

// The length of the valid UTF-8 sequence at `i`, or 0 when the byte there begins none.
std::size_t utf8SequenceLength(const std::string& text, std::size_t i)
{
    const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(text[k]); };
    const unsigned char lead = byte(i);
    std::size_t length = 0;
    unsigned char low = 0x80;
    unsigned char high = 0xBF;
    if (lead < 0x80) {
        return 1;
    } else if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        low = lead == 0xE0 ? 0xA0 : 0x80;
        high = lead == 0xED ? 0x9F : 0xBF;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        low = lead == 0xF0 ? 0x90 : 0x80;
        high = lead == 0xF4 ? 0x8F : 0xBF;
    } else {
        return 0;
    }
    if (i + length > text.size() || byte(i + 1) < low || byte(i + 1) > high) {
        return 0;
    }
    for (std::size_t k = 2; k < length; ++k) {
        if (byte(i + k) < 0x80 || byte(i + k) > 0xBF) {
            return 0;
        }
    }
    return length;
}

} // namespace

std::string jsonFileName(const std::string& name)
{
    std::string text;
    for (std::size_t i = 0; i < name.size();) {
        const std::size_t length = utf8SequenceLength(name, i);
        if (length == 0) {
            char escaped[5];
            std::snprintf(escaped, sizeof escaped, "\\x%02X", static_cast<unsigned char>(name[i]));
            text += escaped;
            ++i;
        } else {
            text.append(name, i, length);
            i += length;
        }
    }
    return text;
}

Json jsonNumber(double value)
{
    if (!std::isfinite(value)) {
        return nullptr;
    }
    return value;
}

} // namespace tintorra::cli
