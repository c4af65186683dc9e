#include "controls/ParameterEncoding.h"

#include "controls/KVSliderValues.h"
#include "controls/KVTenSegmentValues.h"

#include <algorithm>
#include <bit>

namespace tintorra {

namespace {

int hexValue(char c)
{
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    return -1;
}

// Reads the fields one after another from just behind the prefix. A field whose position has
// fewer than two characters left is not read and keeps its slot's value.
class FieldReader {
public:
    explicit FieldReader(std::string_view text)
        : text_(text), position_(kHueShiftParameterPrefix.size())
    {}

    void readByte(std::uint8_t& slot)
    {
        if (fieldFits()) {
            slot = readPair();
        }
    }

    void readDouble(double& slot)
    {
        if (!fieldFits()) {
            return;
        }
        std::uint64_t bits = 0;
        for (int byte = 0; byte < 8; ++byte) {
            bits = (bits << 8) | readPair();
        }
        slot = std::bit_cast<double>(bits);
    }

private:
    bool fieldFits() const { return position_ <= text_.size() && text_.size() - position_ >= 2; }

    // Up to two hex digits; the position moves by the digits read.
    std::uint8_t readPair()
    {
        unsigned value = 0;
        for (int digits = 0; digits < 2 && position_ < text_.size(); ++digits) {
            const int digit = hexValue(text_[position_]);
            if (digit < 0) {
                break;
            }
            value = value * 16 + static_cast<unsigned>(digit);
            ++position_;
        }
        return static_cast<std::uint8_t>(value);
    }

    std::string_view text_;
    std::size_t position_;
};

bool isAscii(std::string_view text)
{
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

KVValueDictionary boundsDictionary(const std::array<double, 4>& bounds)
{
    return {
        {kSliderUpperFalloffKey, bounds[0]},
        {kSliderUpperKey, bounds[1]},
        {kSliderLowerKey, bounds[2]},
        {kSliderLowerFalloffKey, bounds[3]},
    };
}

} // namespace

void appendHexByte(std::string& out, std::uint8_t byte)
{
    constexpr char kHexDigits[] = "0123456789ABCDEF";
    out.push_back(kHexDigits[byte >> 4]);
    out.push_back(kHexDigits[byte & 0x0F]);
}

void appendHexDouble(std::string& out, double value)
{
    const auto bits = std::bit_cast<std::uint64_t>(value);
    for (int shift = 56; shift >= 0; shift -= 8) {
        appendHexByte(out, static_cast<std::uint8_t>(bits >> shift));
    }
}

std::optional<DecodedHueShiftParameters> decodeHueShiftParameters(std::string_view text)
{
    if (!text.starts_with(kHueShiftParameterPrefix)) {
        return std::nullopt;
    }
    // A string that is not all ASCII has no ASCII form to read from: every slot keeps its
    // starting value.
    FieldReader reader(isAscii(text) ? text : std::string_view{});

    std::uint8_t byteSlot = 0;
    double doubleSlot = 0.0;
    KVTenSegmentValues curveSlots{};
    std::array<double, 4> rangeSlots{};

    DecodedHueShiftParameters decoded;
    reader.readByte(byteSlot);
    decoded.version = byteSlot;
    reader.readDouble(doubleSlot);
    decoded.gamma = doubleSlot;
    reader.readByte(byteSlot);
    decoded.colorSpaceModel = byteSlot;
    reader.readByte(byteSlot);
    decoded.preserveHue = byteSlot;
    reader.readByte(byteSlot);
    decoded.blendToFalloffHues = byteSlot;
    reader.readByte(byteSlot);
    decoded.maskToShow = byteSlot;
    reader.readDouble(doubleSlot);
    decoded.targetHue = doubleSlot;
    reader.readDouble(doubleSlot);
    decoded.targetSat = doubleSlot;
    reader.readDouble(doubleSlot);
    decoded.targetBri = doubleSlot;
    for (double& slot : curveSlots) {
        reader.readDouble(slot);
    }
    decoded.targetBriTenVals = dictionaryFromTenSegmentValues(curveSlots);
    for (KVValueDictionary* range :
         {&decoded.sourceHueValues, &decoded.sourceSatValues, &decoded.sourceBriValues}) {
        for (double& slot : rangeSlots) {
            reader.readDouble(slot);
        }
        *range = boundsDictionary(rangeSlots);
    }
    return decoded;
}

bool setHueShiftParametersFromHexEncodedString(KVHueShiftParameterSet& set, std::string_view text)
{
    const std::optional<DecodedHueShiftParameters> decoded = decodeHueShiftParameters(text);
    if (!decoded || text.empty()) {
        return false;
    }
    return applyDecodedHueShiftParameters(*decoded, set);
}

} // namespace tintorra
