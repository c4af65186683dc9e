#include "CliRunner.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

namespace tintorra::cliTest {
namespace {

// Metadata is checked with an outside reader, exiftool, which the dependency script installs.
bool exiftoolAvailable()
{
    return std::system("exiftool -ver >/dev/null 2>&1") == 0;
}

int shell(const std::string& command)
{
    return std::system(command.c_str());
}

// The tags a camera and a photographer put in a file, as exiftool reads them (numbers raw).
Json tagsOf(const std::filesystem::path& file, const ScratchFolder& folder,
            const std::string& tags = "-Make -Model -IFD0:Artist -Copyright -Orientation "
                                      "-DateTimeOriginal -XMP-dc:Creator -Keywords")
{
    const auto out = folder / "tags.json";
    EXPECT_EQ(shell("exiftool -j -n " + tags + " '" + file.string() + "' > '" + out.string() + "'"),
              0);
    std::ifstream in(out);
    std::stringstream text;
    text << in.rdbuf();
    return Json::parse(text.str()).at(0);
}

struct MetadataCase {
    std::string extension;
    std::vector<std::string> options;
};

class MetadataRoundTrip : public testing::TestWithParam<MetadataCase> {};

TEST_P(MetadataRoundTrip, OutputKeepsTheCameraFilesMetadataAndOrientation)
{
    if (!exiftoolAvailable()) {
        GTEST_SKIP() << "exiftool is not installed; run scripts/install-deps.sh";
    }
    const ScratchFolder folder;
    const auto plain = folder / "plain.png";
    writePng(plain, *makeBlocksImage(8));
    // A camera-style JPEG: made by the tool, then tagged as a camera and a photographer would.
    const auto camera = folder / "camera.jpg";
    ASSERT_EQ(
        runCli({"shift", plain.string(), "-o", camera.string(), "-q", "--quality", "100"}).exitCode,
        0);
    ASSERT_EQ(shell("exiftool -q -overwrite_original -Make=Kamera -Model='K 1' -Artist='Ann "
                    "Photo' -Copyright='(c) Ann' -Orientation#=6 -DateTimeOriginal='2024:05:01 "
                    "10:00:00' -XMP-dc:Creator='Ann XMP' -IPTC:Keywords=harbour '" +
                    camera.string() + "'"),
              0);

    const MetadataCase& c = GetParam();
    const auto output = folder / ("out." + c.extension);
    std::vector<std::string> arguments{"shift", camera.string(), "-o",  output.string(),
                                       "-q",    "--hue-set",     "Red", "--target-hue",
                                       "200"};
    arguments.insert(arguments.end(), c.options.begin(), c.options.end());
    const CliRun run = runCli(arguments);
    ASSERT_EQ(run.exitCode, 0) << run.err;

    const Json tags = tagsOf(output, folder);
    EXPECT_EQ(tags.value("Make", ""), "Kamera") << tags.dump();
    EXPECT_EQ(tags.value("Model", ""), "K 1");
    EXPECT_EQ(tags.value("Copyright", ""), "(c) Ann");
    EXPECT_EQ(tags.value("DateTimeOriginal", ""), "2024:05:01 10:00:00");
    EXPECT_EQ(tags.value("Creator", ""), "Ann XMP");
    EXPECT_EQ(tags.value("Keywords", ""), "harbour");
    // Pixels are written as they were read, so the tag that says how to show them stays.
    EXPECT_EQ(tags.value("Orientation", 0), 6);
    const KVBitmapPtr written = readImage(output);
    ASSERT_TRUE(written);
    EXPECT_EQ(written->pixelsWide(), 32);
    if (c.options.empty()) {
        EXPECT_EQ(tags.value("Artist", ""), "Ann Photo");
    } else {
        // A document's page 0 Artist is its parameter string, and it is still a document; the
        // photographer's Artist is on the source page.
        EXPECT_EQ(tags.value("Artist", "").rfind("tolm", 0), 0u);
        EXPECT_EQ(tagsOf(output, folder, "-IFD1:Artist").value("Artist", ""), "Ann Photo");
        // Shifted again, the document gives the photographer's Artist back.
        const auto again = folder / "again.jpg";
        ASSERT_EQ(runCli({"shift", output.string(), "-o", again.string(), "-q"}).exitCode, 0);
        EXPECT_EQ(tagsOf(again, folder).value("Artist", ""), "Ann Photo");
        EXPECT_TRUE(runCli({"info", output.string()}).json()["document"].get<bool>());
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, MetadataRoundTrip,
                         testing::Values(MetadataCase{"jpg", {}}, MetadataCase{"tif", {}},
                                         MetadataCase{"png", {}}, MetadataCase{"jp2", {}},
                                         MetadataCase{"tiff", {"--format", "document"}}),
                         [](const testing::TestParamInfo<MetadataCase>& info) {
                             return info.param.options.empty() ? info.param.extension
                                                               : std::string("document");
                         });

TEST(Metadata, LeavesThePixelsAlone)
{
    if (!exiftoolAvailable()) {
        GTEST_SKIP() << "exiftool is not installed; run scripts/install-deps.sh";
    }
    const ScratchFolder folder;
    const auto bare = folder / "bare.png";
    writePng(bare, *makeBlocksImage(8));
    const auto tagged = folder / "tagged.png";
    std::filesystem::copy_file(bare, tagged);
    ASSERT_EQ(shell("exiftool -q -overwrite_original -Artist=Ann -Orientation#=3 '" +
                    tagged.string() + "'"),
              0);
    for (const auto& [input, output] :
         {std::pair{bare, folder / "a.png"}, std::pair{tagged, folder / "b.png"}}) {
        ASSERT_EQ(runCli({"shift", input.string(), "-o", output.string(), "-q", "--hue-set",
                          "Green", "--target-hue", "300"})
                      .exitCode,
                  0);
    }
    const KVBitmapPtr a = readImage(folder / "a.png");
    const KVBitmapPtr b = readImage(folder / "b.png");
    ASSERT_TRUE(a && b);
    ASSERT_EQ(a->sampleBytes(), b->sampleBytes());
    EXPECT_EQ(std::memcmp(a->bitmapData(), b->bitmapData(), a->sampleBytes()), 0);
}

} // namespace
} // namespace tintorra::cliTest
