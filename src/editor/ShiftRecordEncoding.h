#pragma once

#include "engine/HueShiftParameters.h"

#include <string>

namespace tintorra {

// The "tolm" parameter string of an engine record: with maskToShow 1 that is the highlight's
// placeholder targets, not the user's.
std::string hexEncodedStringFromHueShiftParameters(const HueShiftParameters& parameters);

} // namespace tintorra
