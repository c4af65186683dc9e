#pragma once

#include "image/KVBitmap.h"

#include <cstdint>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

namespace tintorra::test {

// The bytes of a file under tests/data/imageio.
std::vector<std::uint8_t> fixtureBytes(const std::string& name);
std::filesystem::path fixturePath(const std::string& name);

// A raw reference made by ImageMagick: 8-bit samples, or big-endian 16-bit samples.
std::vector<std::uint32_t> rawReference(const std::string& name, int bitsPerSample);

// Sample `channel` of pixel (x, y), channels counted colour first and alpha last whatever the
// bitmap's layout (chunky or planar, alpha first or last, padded pixels).
std::uint32_t sampleAt(const KVBitmap& bitmap, std::int64_t x, std::int64_t y, int channel);
void setSampleAt(KVBitmap& bitmap, std::int64_t x, std::int64_t y, int channel,
                 std::uint32_t value);

// All samples in the order of a raw reference: row by row, pixel by pixel, channel by channel.
std::vector<std::uint32_t> allSamples(const KVBitmap& bitmap);

// The largest difference between two sample lists of equal length (or a huge value when the
// lengths differ).
std::uint32_t largestDifference(const std::vector<std::uint32_t>& a,
                                const std::vector<std::uint32_t>& b);

// A layout for synthetic test images.
struct TestLayout {
    const char* name;
    int bitsPerSample;
    int samplesPerPixel;
    bool hasAlpha;
    bool isPlanar;
    unsigned bitmapFormat;
    KVColorSpaceModel model;
    // Bits per pixel (0: tight); a value above the samples' bits pads every pixel.
    int bitsPerPixel = 0;
};

inline void PrintTo(const TestLayout& layout, std::ostream* out)
{
    *out << layout.name;
}

// A bitmap of that layout with smooth, distinct values in every channel (premultiplied colour
// never exceeds alpha) and `iccProfile` in its colour space when given.
KVBitmapPtr makeTestBitmap(const TestLayout& layout, std::int64_t width, std::int64_t height,
                           std::vector<std::uint8_t> iccProfile = {});

// A small ICC profile from the system's colour profiles.
std::vector<std::uint8_t> systemProfile(const std::string& path);

// A fresh, empty folder removed again with everything in it at the end of the test.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    const std::filesystem::path& path() const { return path_; }
    // The names in the folder, sorted.
    std::vector<std::string> entries() const;

private:
    std::filesystem::path path_;
};

void writeBytes(const std::filesystem::path& path, const std::vector<std::uint8_t>& bytes);

} // namespace tintorra::test
