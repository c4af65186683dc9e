#pragma once

#include "imageio/ImageIOResult.h"

#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

namespace tintorra {

// Writes `data` to `path` so that the file either appears complete or not at all: the bytes go to
// a temporary file in the target folder, which is synced and then renamed over the target. A
// failure removes the temporary file and leaves an existing target untouched. When the target is
// (a link to) one of `protectedFiles` (the images the data was made from) nothing is written, so
// that an input is never overwritten. A replaced file keeps its permissions.
IOStatus writeFileAtomically(const std::filesystem::path& path, std::span<const std::uint8_t> data,
                             const std::vector<std::filesystem::path>& protectedFiles = {});

} // namespace tintorra
