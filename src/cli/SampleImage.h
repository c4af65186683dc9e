#pragma once

#include <cstdint>
#include <span>

namespace tintorra {

// The application icon at 1024 x 1024 pixels as a PNG file, built into the program: the sample
// image that `demo` works on.
extern const std::span<const std::uint8_t> kSampleImagePng;

} // namespace tintorra
