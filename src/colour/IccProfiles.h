#pragma once

#include "colour/KVColorSpace.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace tintorra {

// The colour space an embedded ICC profile describes: the model from the profile's data colour
// space, the name from its description (English where there is a choice), and the bytes kept as
// given. Nothing when the bytes do not parse as a profile.
std::optional<KVColorSpace> colorSpaceFromIccProfile(std::vector<std::uint8_t> bytes);

// An RGB space named "sRGB" carrying the sRGB profile Little CMS builds in. Made once; safe to call
// from any thread.
KVColorSpace sRGBColorSpace();

// The colour space of the main display's profile. The core has no display: this always returns
// nothing, and the desktop layer, which can ask the window system for the screen's profile, turns
// that profile into a space with colorSpaceFromIccProfile.
std::optional<KVColorSpace> colorSpaceForMainScreen();

} // namespace tintorra
