#pragma once

#include <map>
#include <string>
#include <string_view>

namespace tintorra {

// The dictionary form in which slider values travel between the sliders, the controller, saved
// settings and documents: plain numbers under fixed text keys.
using KVValueDictionary = std::map<std::string, double, std::less<>>;

// The number under `key`, or 0.0 when the key is missing (a missing number reads as zero).
inline double doubleForKey(const KVValueDictionary& dictionary, std::string_view key)
{
    const auto found = dictionary.find(key);
    return found == dictionary.end() ? 0.0 : found->second;
}

} // namespace tintorra
