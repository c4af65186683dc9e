#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace tintorra::cli {

// "-" stands for standard input where a file is read and standard output where one is written.
inline constexpr const char* kStandardStreamName = "-";

bool isStandardStream(const std::string& path);

// The whole file, or all of standard input for "-". Throws a processing CliFailure naming the
// file when it cannot be read.
std::vector<std::uint8_t> readInputBytes(const std::string& path);

// Writes the bytes to standard output and flushes it; throws a processing CliFailure when the
// stream refuses them (a closed pipe, a full disc).
void writeStandardOutput(std::span<const std::uint8_t> bytes);

} // namespace tintorra::cli
