#pragma once

#include "image/KVBitmap.h"

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace tintorra::cliTest {

using Json = nlohmann::ordered_json;

// What one run of the tool gave.
struct CliRun {
    int exitCode = -1;
    std::string out;
    std::string err;

    std::vector<std::string> errLines() const;
    // Standard output as one JSON value (or each line as one, for several).
    Json json() const;
    std::vector<Json> jsonLines() const;
};

// Runs tintorra-cli with the arguments (no shell involved in their meaning: each is quoted),
// standard input read from `standardInput`.
CliRun runCli(const std::vector<std::string>& arguments,
              const std::filesystem::path& standardInput = "/dev/null");

// Runs tintorra-cli as runCli does, but with standard error on a pseudo-terminal, as in an
// interactive shell; `err` is what the terminal received.
CliRun runCliOnTerminal(const std::vector<std::string>& arguments);
// Whether this machine can open a pseudo-terminal (containers may have none).
bool pseudoTerminalAvailable();

// A fresh, empty folder for one test, removed when the object goes.
class ScratchFolder {
public:
    ScratchFolder();
    ~ScratchFolder();
    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

private:
    std::filesystem::path path_;
};

// Test images. Blocks of 8 x 8 pixels, left to right: sRGB red, green, blue, mid grey (so 4
// distinct colours, 64 pixels each), untagged (device RGB, read as sRGB), 8 or 16 bits, no alpha.
KVBitmapPtr makeBlocksImage(int bitsPerSample);
void writePng(const std::filesystem::path& path, const KVBitmap& bitmap);
void writeTiff(const std::filesystem::path& path, const KVBitmap& bitmap);
KVBitmapPtr readImage(const std::filesystem::path& path);
// The stored samples of pixel (x, y), r g b (and a), as integers.
std::vector<unsigned> samplesAt(const KVBitmap& bitmap, int x, int y);

// Files in a folder, by name.
std::vector<std::string> filesIn(const std::filesystem::path& folder);

} // namespace tintorra::cliTest
