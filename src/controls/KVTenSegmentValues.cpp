#include "controls/KVTenSegmentValues.h"

#include <cstdio>

namespace tintorra {

std::string tenSegmentThumbKey(std::size_t index)
{
    char key[32];
    // The index as at least two digits followed by a zero: the input position in hundredths.
    // The key format is fixed by saved settings; its '0' flag is redundant next to the precision,
    // which the compiler points out.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat"
    std::snprintf(key, sizeof key, "thumb_%0.2ld0", static_cast<long>(index));
#pragma GCC diagnostic pop
    return key;
}

KVValueDictionary dictionaryFromTenSegmentValues(const KVTenSegmentValues& values)
{
    KVValueDictionary dictionary;
    for (std::size_t i = 0; i < values.size(); ++i) {
        dictionary.emplace(tenSegmentThumbKey(i), values[i]);
    }
    return dictionary;
}

KVTenSegmentValues tenSegmentValuesFromDictionary(const KVValueDictionary& dictionary)
{
    KVTenSegmentValues values{};
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i] = doubleForKey(dictionary, tenSegmentThumbKey(i));
    }
    return values;
}

KVTenSegmentValues identityTenSegmentValues()
{
    KVTenSegmentValues values{};
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i] = static_cast<double>(i) / 10.0;
    }
    return values;
}

} // namespace tintorra
