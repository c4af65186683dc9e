#include "CliRunner.h"
#include "imageio/ImageFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <optional>
#include <ostream>

// Whole command-line runs compared with reference images that were checked by eye when they were
// made. They guard the pipeline as a user meets it (decoding, table, gamut, shift, encoding)
// against silent drift. Set TINTORRA_UPDATE_GOLDEN=1 to rewrite the references after a deliberate
// change.
namespace tintorra::cliTest {
namespace {

const std::filesystem::path kGoldenFolder = TINTORRA_TEST_DATA_DIR "/golden";

struct GoldenCase {
    const char* name;
    const char* input;
    std::vector<std::string> options;
    // Largest difference allowed per sample, in units of the output's last bit.
    unsigned tolerance;
};

void PrintTo(const GoldenCase& golden, std::ostream* out)
{
    *out << golden.name;
}

class GoldenImage : public testing::TestWithParam<GoldenCase> {};

unsigned sampleAt(const KVBitmap& image, std::int64_t x, std::int64_t y, std::int64_t sample)
{
    const std::uint8_t* row = image.bitmapData() + y * image.bytesPerRow();
    const std::int64_t index = x * image.samplesPerPixel() + sample;
    if (image.bitsPerSample() == 8) {
        return row[index];
    }
    std::uint16_t word;
    std::memcpy(&word, row + 2 * index, sizeof word);
    return word;
}

// The largest per-sample difference of two decoded images of the same shape, or nothing when they
// differ in size, depth or samples per pixel.
std::optional<unsigned> largestDifference(const KVBitmap& a, const KVBitmap& b)
{
    if (a.pixelsWide() != b.pixelsWide() || a.pixelsHigh() != b.pixelsHigh() ||
        a.bitsPerSample() != b.bitsPerSample() || a.samplesPerPixel() != b.samplesPerPixel() ||
        a.isPlanar() || b.isPlanar()) {
        return std::nullopt;
    }
    unsigned largest = 0;
    for (std::int64_t y = 0; y < a.pixelsHigh(); ++y) {
        for (std::int64_t x = 0; x < a.pixelsWide(); ++x) {
            for (std::int64_t s = 0; s < a.samplesPerPixel(); ++s) {
                const unsigned left = sampleAt(a, x, y, s);
                const unsigned right = sampleAt(b, x, y, s);
                largest = std::max(largest, left > right ? left - right : right - left);
            }
        }
    }
    return largest;
}

TEST_P(GoldenImage, MatchesItsReference)
{
    const GoldenCase& golden = GetParam();
    ScratchFolder folder;
    const auto output = folder / (std::string(golden.name) + ".png");
    const auto reference = kGoldenFolder / (std::string(golden.name) + ".png");

    std::vector<std::string> arguments{"shift", (kGoldenFolder / golden.input).string(), "-o",
                                       output.string(), "-q"};
    arguments.insert(arguments.end(), golden.options.begin(), golden.options.end());
    const CliRun run = runCli(arguments);
    ASSERT_EQ(run.exitCode, 0) << run.err;

    if (std::getenv("TINTORRA_UPDATE_GOLDEN")) {
        std::filesystem::copy_file(output, reference,
                                   std::filesystem::copy_options::overwrite_existing);
        GTEST_SKIP() << "rewrote " << reference;
    }
    const auto expected = readImageFile(reference);
    const auto actual = readImageFile(output);
    ASSERT_TRUE(expected && actual);
    const auto difference = largestDifference(*expected.value(), *actual.value());
    if (!difference || *difference > golden.tolerance) {
        const auto kept = std::filesystem::temp_directory_path() /
                          ("tintorra-golden-" + std::string(golden.name) + ".png");
        std::filesystem::copy_file(output, kept, std::filesystem::copy_options::overwrite_existing);
        FAIL() << "differs from " << reference << " by "
               << (difference ? std::to_string(*difference) : "its shape") << "; kept " << kept;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Cli, GoldenImage,
    testing::Values(
        GoldenCase{
            "orange-to-blue", "plasma8.png", {"--hue-set", "Orange", "--target-hue", "220"}, 1},
        GoldenCase{"hsb-muted-yellows",
                   "plasma8.png",
                   {"--mode", "hsb", "--hue", "30:45:75:90", "--sat", "0.1:0.2:1:1", "--target-sat",
                    "-0.6", "--target-bri", "0.2"},
                   1},
        GoldenCase{"lchab-curve-preserving-hue",
                   "plasma8.png",
                   {"--mode", "lchab", "--hue-set", "Blue", "--target-hue", "20", "--curve",
                    "0,0.05,0.15,0.3,0.45,0.6,0.7,0.8,0.88,0.95,1", "--preserve-hue"},
                   1},
        GoldenCase{
            "highlight-greens", "plasma8.png", {"--hue-set", "Green", "--view", "highlight"}, 1},
        GoldenCase{"sixteen-bit-hcl",
                   "plasma16.tif",
                   {"--mode", "hcl", "--hue-center", "140", "--hue-spread", "60", "--target-hue",
                    "300", "--blend-to-falloff"},
                   1}),
    [](const testing::TestParamInfo<GoldenCase>& info) {
        std::string name = info.param.name;
        std::replace(name.begin(), name.end(), '-', '_');
        return name;
    });

} // namespace
} // namespace tintorra::cliTest
