#pragma once

#include <string>
#include <string_view>

namespace tintorra {

// What is appended to the name of an image that was shifted.
inline constexpr std::string_view kShiftedFileNameSuffix = " (hue-shifted)";
// What is looked for at the end of a name to count shifts. It is deliberately not the suffix
// above: a name this program made never matches again, so a second shift appends a second
// suffix instead of counting.
inline constexpr std::string_view kShiftedFileNamePattern = "-shifted(-([0-9]+))?$";

// The name, without extension, under which the shifted image of the file at `path` is offered:
// "photo.jpg" gives "photo (hue-shifted)", "photo-shifted-3.tif" gives "photo (hue-shifted)-4".
std::string shiftedFileNameForPath(std::string_view path);

// The same name with the extension that a save in `fileType` uses (no extension for a type the
// program cannot write).
std::string shiftedFileNameForPath(std::string_view path, std::string_view fileType);

// That name placed in the folder of `path`.
std::string shiftedPathForPath(std::string_view path, std::string_view fileType);

} // namespace tintorra
