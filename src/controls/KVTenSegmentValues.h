#pragma once

#include "controls/KVValueDictionary.h"

#include <array>
#include <cstddef>
#include <string>

namespace tintorra {

// Curve points at the inputs 0.0, 0.1, ... 1.0.
inline constexpr std::size_t kTenSegmentThumbCount = 11;

// The outputs of a ten-segment curve, value i at input i/10.
using KVTenSegmentValues = std::array<double, kTenSegmentThumbCount>;

// The key of thumb `index`: "thumb_000", "thumb_010", ... "thumb_100" (the input in hundredths).
std::string tenSegmentThumbKey(std::size_t index);

KVValueDictionary dictionaryFromTenSegmentValues(const KVTenSegmentValues& values);

// A missing key reads as 0.0.
KVTenSegmentValues tenSegmentValuesFromDictionary(const KVValueDictionary& dictionary);

// The identity curve: value i is i/10.
KVTenSegmentValues identityTenSegmentValues();

} // namespace tintorra
