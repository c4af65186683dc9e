// Any text as a "tolm" parameter string, decoded and applied to a parameter set, as opening a
// document or `tintorra-cli params decode` does.
#include "controls/KVHueShiftParameterSet.h"
#include "controls/ParameterEncoding.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    tintorra::KVHueShiftParameterSet set;
    (void)tintorra::setHueShiftParametersFromHexEncodedString(set, text);
    return 0;
}
