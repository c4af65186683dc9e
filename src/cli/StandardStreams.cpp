#include "cli/StandardStreams.h"

#include "cli/CliFailure.h"
#include "imageio/ImageFile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace tintorra::cli {

bool isStandardStream(const std::string& path)
{
    return path == kStandardStreamName;
}

std::vector<std::uint8_t> readInputBytes(const std::string& path)
{
    if (!isStandardStream(path)) {
        auto data = readWholeFile(path);
        if (!data) {
            failProcessing(withHint(path + ": " + data.error().message, ""));
        }
        return data.take();
    }
    std::vector<std::uint8_t> bytes;
    std::uint8_t buffer[1 << 16];
    for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, stdin)) > 0;) {
        bytes.insert(bytes.end(), buffer, buffer + n);
    }
    if (std::ferror(stdin)) {
        failProcessing(std::string("standard input cannot be read (") + std::strerror(errno) + ")");
    }
    if (bytes.empty()) {
        failProcessing("standard input is empty; pipe an image into the tool, e.g. "
                       "'tintorra-cli shift - -o out.png < photo.png'");
    }
    return bytes;
}

void writeStandardOutput(std::span<const std::uint8_t> bytes)
{
    const std::size_t written = std::fwrite(bytes.data(), 1, bytes.size(), stdout);
    if (written != bytes.size() || std::fflush(stdout) != 0) {
        failProcessing(std::string("standard output refused the image (") + std::strerror(errno) +
                       "); write to a file with -o FILE instead");
    }
}

} // namespace tintorra::cli
