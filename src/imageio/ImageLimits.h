#pragma once

#include "imageio/ImageIOResult.h"

#include <cstdint>
#include <optional>

namespace tintorra {

// The colour table records pixel locations as 32-bit byte offsets, so no image may hold more
// sample bytes than that addresses.
inline constexpr std::uint64_t kMaxImageSampleBytes = std::uint64_t{1} << 32;

// The bytes of samples an image of this size would need, or nothing when the product does not
// fit in 64 bits.
std::optional<std::uint64_t> imageSampleBytes(std::uint64_t pixelsWide, std::uint64_t pixelsHigh,
                                              std::uint64_t samplesPerPixel,
                                              std::uint64_t bitsPerSample);

// Checks, before anything is allocated, that an image of this size can be held: at least one
// pixel, no more sample bytes than the colour table addresses, and no more than this machine's
// memory. `extraBytesPerSample` counts what a decoder needs beside the bitmap for each sample
// (OpenJPEG's 32-bit component buffers, for instance).
IOStatus checkImageDimensions(std::uint64_t pixelsWide, std::uint64_t pixelsHigh,
                              std::uint64_t samplesPerPixel, std::uint64_t bitsPerSample,
                              std::uint64_t extraBytesPerSample = 0);

// The physical memory of this machine in bytes (0 when unknown).
std::uint64_t physicalMemoryBytes();

} // namespace tintorra
