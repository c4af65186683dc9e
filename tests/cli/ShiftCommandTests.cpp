#include "CliRunner.h"
#include "imageio/ImageFile.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <ostream>

namespace tintorra::cliTest {
namespace {

// sRGB red lies at about 12 degrees of LChuv hue; a selection around it takes the red block
// alone, whatever the target.
const std::vector<std::string> kSelectRed{"--hue", "352:2:22:32", "--target-hue", "130"};

class ShiftCommand : public testing::Test {
protected:
    void SetUp() override
    {
        input8_ = folder_ / "blocks.png";
        writePng(input8_, *makeBlocksImage(8));
    }

    CliRun shift(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin(), "shift");
        return runCli(arguments);
    }

    ScratchFolder folder_;
    std::filesystem::path input8_;
};

TEST_F(ShiftCommand, ChangesTheSelectedBlockOnly)
{
    const auto output = folder_ / "out.png";
    std::vector<std::string> arguments{input8_.string(), "-o", output.string(), "--json"};
    arguments.insert(arguments.end(), kSelectRed.begin(), kSelectRed.end());
    const CliRun run = shift(arguments);
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const Json figures = run.json();
    EXPECT_EQ(figures["input"], input8_.string());
    EXPECT_EQ(figures["output"], output.string());
    EXPECT_EQ(figures["width"], 32);
    EXPECT_EQ(figures["height"], 8);
    EXPECT_EQ(figures["bitsPerSample"], 8);
    EXPECT_EQ(figures["distinctColors"], 4);
    EXPECT_EQ(figures["selectedColors"], 1);
    EXPECT_EQ(figures["selectedPixels"], 64);
    for (const char* step : {"load", "table", "gamut", "shift", "save"}) {
        EXPECT_GE(figures["ms"][step].get<double>(), 0.0) << step;
    }
    EXPECT_FALSE(figures["ms"].contains("reshift"));

    const KVBitmapPtr source = makeBlocksImage(8);
    const KVBitmapPtr result = readImage(output);
    ASSERT_TRUE(result);
    // Green, blue and grey keep their samples; red now leans to green (hue 130 degrees).
    for (const int x : {8, 16, 24}) {
        EXPECT_EQ(samplesAt(*result, x, 3), samplesAt(*source, x, 3)) << "block at " << x;
    }
    const auto shifted = samplesAt(*result, 2, 2);
    EXPECT_GT(shifted[1], shifted[0]);
}

TEST_F(ShiftCommand, BlackAndWhiteMasksAreComplements)
{
    const auto black = folder_ / "black.png";
    const auto white = folder_ / "white.png";
    std::vector<std::string> common = kSelectRed;
    common.push_back("--quiet");
    auto blackArgs = common;
    blackArgs.insert(blackArgs.end(),
                     {input8_.string(), "-o", black.string(), "--view", "black-mask"});
    auto whiteArgs = common;
    whiteArgs.insert(whiteArgs.end(),
                     {input8_.string(), "-o", white.string(), "--view", "white-mask"});
    ASSERT_EQ(shift(blackArgs).exitCode, 0);
    ASSERT_EQ(shift(whiteArgs).exitCode, 0);
    const KVBitmapPtr b = readImage(black);
    const KVBitmapPtr w = readImage(white);
    ASSERT_TRUE(b && w);
    for (int x = 0; x < 32; x += 3) {
        const auto bs = samplesAt(*b, x, 4);
        const auto ws = samplesAt(*w, x, 4);
        for (std::size_t c = 0; c < 3; ++c) {
            EXPECT_EQ(bs[c] + ws[c], 255u) << "x " << x;
        }
    }
    // The selected block is fully selected: white on the black mask, the rest black.
    EXPECT_EQ(samplesAt(*b, 1, 1)[0], 255u);
    EXPECT_EQ(samplesAt(*b, 9, 1)[0], 0u);
}

TEST_F(ShiftCommand, QuietWritesNothingButTheFile)
{
    const auto output = folder_ / "q.tif";
    const CliRun run = shift({input8_.string(), "-o", output.string(), "--quiet"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_TRUE(run.out.empty());
    EXPECT_TRUE(run.err.empty());
    EXPECT_TRUE(std::filesystem::exists(output));
}

TEST_F(ShiftCommand, WithoutATargetHueHuesStayAndAnEmptySelectionIsReported)
{
    // sRGB green (about 128 degrees) lies in the named set Green: desaturated, it stays green.
    const auto output = folder_ / "green.png";
    const CliRun run = shift(
        {input8_.string(), "-o", output.string(), "--hue-set", "Green", "--target-sat", "-0.5"});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_TRUE(run.err.empty()) << run.err;
    const KVBitmapPtr result = readImage(output);
    ASSERT_TRUE(result);
    const auto green = samplesAt(*result, 12, 4);
    EXPECT_GT(green[1], green[0]);
    EXPECT_GT(green[1], green[2]);
    EXPECT_NE(green, samplesAt(*makeBlocksImage(8), 12, 4));

    // No block has a hue near 200 degrees: the run succeeds and says so on standard error.
    const CliRun none = shift(
        {input8_.string(), "-o", (folder_ / "none.png").string(), "--hue", "195:198:202:205"});
    EXPECT_EQ(none.exitCode, 0);
    ASSERT_EQ(none.errLines().size(), 1u) << none.err;
    EXPECT_NE(none.err.find("warning"), std::string::npos) << none.err;
}

TEST_F(ShiftCommand, PipesAndNamesThatAreNotUtf8)
{
    // "-" in and out: the image alone on standard output, the figures on standard error.
    const CliRun piped = runCli({"shift", "-", "-o", "-", "--format", "png", "--json"}, input8_);
    ASSERT_EQ(piped.exitCode, 0) << piped.err;
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(piped.out.data());
    const auto decoded = decodeImage({bytes, piped.out.size()});
    ASSERT_TRUE(decoded.ok());
    EXPECT_EQ(decoded.value()->pixelsWide(), 32);
    EXPECT_EQ(Json::parse(piped.err)["selectedPixels"], 64);
    const CliRun info = runCli({"info", "-"}, input8_);
    ASSERT_EQ(info.exitCode, 0) << info.err;
    EXPECT_EQ(info.json()["pixelsHigh"], 8);

    // A name with bytes that are no UTF-8 is printed with those bytes escaped.
    const auto strange = folder_ / "caf\xE9.png";
    std::filesystem::copy_file(input8_, strange);
    const CliRun named =
        shift({strange.string(), "-o", (folder_ / "out\xFF.png").string(), "--json"});
    ASSERT_EQ(named.exitCode, 0) << named.err;
    EXPECT_EQ(named.json()["input"], (folder_ / "caf\\xE9.png").string());
    EXPECT_EQ(named.json()["output"], (folder_ / "out\\xFF.png").string());
    EXPECT_EQ(runCli({"info", strange.string()}).json()["file"],
              (folder_ / "caf\\xE9.png").string());
}

TEST_F(ShiftCommand, QualityIsAPercentOrAFraction)
{
    const auto sizeAt = [&](const std::string& quality) {
        const auto output = folder_ / ("q" + quality + ".jpg");
        EXPECT_EQ(
            shift({input8_.string(), "-o", output.string(), "-q", "--quality", quality}).exitCode,
            0);
        return std::filesystem::file_size(output);
    };
    EXPECT_EQ(sizeAt("20"), sizeAt("0.2"));
    EXPECT_LT(sizeAt("20"), sizeAt("100"));
}

TEST_F(ShiftCommand, RepeatAddsTheMedianReshift)
{
    const CliRun run = shift({input8_.string(), "-o", (folder_ / "r.png").string(), "--json",
                              "--repeat", "3", "--threads", "2"});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_GE(run.json()["ms"]["reshift"].get<double>(), 0.0);
}

TEST_F(ShiftCommand, InPlaceAndCopiedShiftsAgree)
{
    // A single shift works on the source itself; --repeat keeps the source and re-shifts into
    // the previous result. Both must write the same file.
    for (const int bits : {8, 16}) {
        const auto input = folder_ / ("blocks" + std::to_string(bits) + ".png");
        writePng(input, *makeBlocksImage(bits));
        const auto inPlace = folder_ / "in-place.png";
        const auto copied = folder_ / "copied.png";
        std::vector<std::string> arguments{input.string(), "--target-sat", "0.4", "-q"};
        arguments.insert(arguments.end(), kSelectRed.begin(), kSelectRed.end());
        auto once = arguments;
        once.insert(once.end(), {"-o", inPlace.string()});
        auto repeated = arguments;
        repeated.insert(repeated.end(), {"-o", copied.string(), "--repeat", "2"});
        ASSERT_EQ(shift(once).exitCode, 0);
        ASSERT_EQ(shift(repeated).exitCode, 0);
        const KVBitmapPtr a = readImage(inPlace);
        const KVBitmapPtr b = readImage(copied);
        ASSERT_TRUE(a && b);
        ASSERT_EQ(a->sampleBytes(), b->sampleBytes());
        EXPECT_EQ(std::memcmp(a->bitmapData(), b->bitmapData(), a->sampleBytes()), 0)
            << bits << " bits";
        EXPECT_NE(samplesAt(*a, 2, 2), samplesAt(*makeBlocksImage(bits), 2, 2)) << bits;
    }
}

TEST_F(ShiftCommand, ShowsProgressOnATerminalOnly)
{
    if (!pseudoTerminalAvailable()) {
        GTEST_SKIP() << "no pseudo-terminal on this machine";
    }
    const auto output = folder_ / "out.png";
    const std::vector<std::string> arguments{input8_.string(), "-o", output.string()};

    // On a terminal: the bar is drawn in place through every step, then the line is cleared
    // before the result is named.
    const CliRun shown = runCliOnTerminal([&] {
        auto a = arguments;
        a.insert(a.begin(), "shift");
        return a;
    }());
    ASSERT_EQ(shown.exitCode, 0) << shown.err;
    for (const char* expected : {"\r[", "loading blocks.png", "colour table blocks.png",
                                 "shifting blocks.png", "saving blocks.png", "100%"}) {
        EXPECT_NE(shown.err.find(expected), std::string::npos) << expected << " in " << shown.err;
    }
    EXPECT_EQ(shown.err.back(), '\r');
    EXPECT_EQ(shown.out, input8_.string() + " -> " + output.string() + "\n");

    // Quiet on a terminal, and any run into a file or pipe: nothing on standard error.
    for (const bool terminal : {true, false}) {
        auto quiet = arguments;
        quiet.insert(quiet.begin(), "shift");
        if (terminal) {
            quiet.push_back("--quiet");
        }
        const CliRun run = terminal ? runCliOnTerminal(quiet) : runCli(quiet);
        ASSERT_EQ(run.exitCode, 0) << run.err;
        EXPECT_EQ(run.err, "") << (terminal ? "quiet on a terminal" : "into a file");
    }
}

TEST_F(ShiftCommand, SixteenBitImagesStaySixteenBit)
{
    // Half the red block differs from the rest in a low byte only: a fifth colour, selected too.
    const KVBitmapPtr image = makeBlocksImage(16);
    for (int y = 0; y < 4; ++y) {
        const std::uint16_t green = 0x0050;
        std::memcpy(image->bitmapData() + y * image->bytesPerRow() + 2, &green, 2);
    }
    const auto input = folder_ / "deep.tif";
    writeTiff(input, *image);
    const auto output = folder_ / "deep-out.tiff";
    std::vector<std::string> arguments{input.string(), "-o", output.string(), "--json"};
    arguments.insert(arguments.end(), kSelectRed.begin(), kSelectRed.end());
    const CliRun run = shift(arguments);
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.json()["bitsPerSample"], 16);
    EXPECT_EQ(run.json()["distinctColors"], 5);
    EXPECT_EQ(run.json()["selectedColors"], 2);
    EXPECT_EQ(run.json()["selectedPixels"], 64);
    const KVBitmapPtr result = readImage(output);
    ASSERT_TRUE(result);
    EXPECT_EQ(result->bitsPerSample(), 16);
    EXPECT_EQ(samplesAt(*result, 20, 5), samplesAt(*makeBlocksImage(16), 20, 5));
}

TEST_F(ShiftCommand, DirectoryOutputsAreNamedAfterTheirInputs)
{
    const auto second = folder_ / "photo-shifted-3.tif";
    writeTiff(second, *makeBlocksImage(8));
    const auto out = folder_ / "out";
    const CliRun run = shift({input8_.string(), second.string(), "-d", out.string(), "--quiet"});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    // Without --format each keeps its own format; a counted name counts on.
    EXPECT_EQ(filesIn(out),
              (std::vector<std::string>{"blocks (hue-shifted).png", "photo (hue-shifted)-4.tif"}));

    const auto docs = folder_ / "docs";
    ASSERT_EQ(shift({input8_.string(), "-d", docs.string(), "--format", "document", "-q"}).exitCode,
              0);
    EXPECT_EQ(filesIn(docs), (std::vector<std::string>{"blocks (hue-shifted).tiff"}));
    ASSERT_EQ(shift({input8_.string(), "-d", docs.string(), "--format", "jpeg", "-q"}).exitCode, 0);
    EXPECT_EQ(filesIn(docs).size(), 2u);

    // --no-clobber keeps an existing file, says so, and still writes the others.
    const auto kept = out / "blocks (hue-shifted).png";
    std::ofstream(kept) << "mine";
    std::filesystem::remove(out / "photo (hue-shifted)-4.tif");
    const CliRun careful =
        shift({input8_.string(), second.string(), "-d", out.string(), "--no-clobber"});
    EXPECT_EQ(careful.exitCode, 0) << careful.err;
    EXPECT_EQ(std::filesystem::file_size(kept), 4u);
    EXPECT_TRUE(std::filesystem::exists(out / "photo (hue-shifted)-4.tif"));
    ASSERT_EQ(careful.errLines().size(), 1u) << careful.err;
    EXPECT_NE(careful.err.find("skipped"), std::string::npos) << careful.err;
}

TEST_F(ShiftCommand, DocumentsCarrySourceAndParameters)
{
    const auto document = folder_ / "doc.tiff";
    // sRGB red lies at 40 degrees of LChab hue.
    const std::vector<std::string> options{"--mode",       "lchab", "--hue",        "20:30:50:60",
                                           "--target-hue", "130",   "--target-sat", "0.5"};
    auto arguments = options;
    arguments.insert(arguments.end(),
                     {input8_.string(), "-o", document.string(), "--format", "document", "--json"});
    const CliRun first = shift(arguments);
    ASSERT_EQ(first.exitCode, 0) << first.err;
    EXPECT_EQ(first.json()["selectedPixels"], 64);

    const CliRun info = runCli({"info", document.string()});
    ASSERT_EQ(info.exitCode, 0) << info.err;
    const Json described = info.json();
    EXPECT_TRUE(described["document"].get<bool>());
    EXPECT_EQ(described["pages"], 2);

    // The document's parameters are those `params encode` gives for the same options.
    auto encodeArgs = options;
    encodeArgs.insert(encodeArgs.begin(), {"params", "encode"});
    const CliRun encoded = runCli(encodeArgs);
    EXPECT_EQ(described["params"].get<std::string>() + "\n", encoded.out);
    const CliRun fromFile = runCli({"params", "decode", "--from", document.string()});
    const CliRun fromString = runCli({"params", "decode", described["params"].get<std::string>()});
    ASSERT_EQ(fromFile.exitCode, 0) << fromFile.err;
    EXPECT_EQ(fromFile.out, fromString.out);
    EXPECT_EQ(fromFile.json()["colorSpaceModel"], 1);

    // Shifting the document again, with its own parameters, starts from its source: the same
    // red block is selected, not the shifted one.
    const auto again = folder_ / "again.png";
    const CliRun rerun = shift(
        {document.string(), "-o", again.string(), "--json", "--params-from", document.string()});
    ASSERT_EQ(rerun.exitCode, 0) << rerun.err;
    EXPECT_EQ(rerun.json()["selectedPixels"], 64);
    EXPECT_EQ(rerun.json()["distinctColors"], 4);
}

TEST_F(ShiftCommand, PaintedExclusionKeepsTheImage)
{
    KVBitmapPtr painted = makeBlocksImage(8);
    std::fill(painted->bitmapData(), painted->bitmapData() + painted->planeBytes(), 255);
    const auto mask = folder_ / "mask.png";
    writePng(mask, *painted);
    const auto output = folder_ / "kept.png";
    auto arguments = kSelectRed;
    arguments.insert(arguments.end(), {input8_.string(), "-o", output.string(), "--exclusion-mask",
                                       mask.string(), "-q"});
    ASSERT_EQ(shift(arguments).exitCode, 0);
    const KVBitmapPtr result = readImage(output);
    ASSERT_TRUE(result);
    EXPECT_EQ(samplesAt(*result, 3, 3), samplesAt(*makeBlocksImage(8), 3, 3));
}

struct RefusalCase {
    std::string name;
    std::vector<std::string> arguments;
    int exitCode;
};

void PrintTo(const RefusalCase& c, std::ostream* os)
{
    *os << c.name;
}

class ShiftRefusals : public testing::TestWithParam<RefusalCase> {};

TEST_P(ShiftRefusals, OneLineAndNothingWritten)
{
    const ScratchFolder folder;
    const auto image = folder / "in.png";
    writePng(image, *makeBlocksImage(8));
    // A grey image: not RGB.
    KVBitmapPtr grey = KVBitmap::deviceWhite8Rep(4, 4);
    writePng(folder / "grey.png", *grey);
    // A PNG cut short, and a file that is no image at all.
    {
        std::ifstream in(image, std::ios::binary);
        std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        std::ofstream(folder / "cut.png", std::ios::binary) << bytes.substr(0, bytes.size() / 2);
        std::ofstream(folder / "notes.txt") << "not an image\n";
    }
    writePng(folder / "small.png", *KVBitmap::deviceRGBA8888Rep(3, 3, false));
    std::filesystem::create_directory(folder / "sub");
    writePng(folder / "sub" / "in.png", *makeBlocksImage(8));

    std::vector<std::string> arguments{"shift"};
    for (const std::string& argument : GetParam().arguments) {
        // "@name" stands for a file in the scratch folder.
        arguments.push_back(argument.rfind('@', 0) == 0 ? (folder / argument.substr(1)).string()
                                                        : argument);
    }
    const auto before = filesIn(folder.path());
    const CliRun run = runCli(arguments);
    EXPECT_EQ(run.exitCode, GetParam().exitCode);
    ASSERT_EQ(run.errLines().size(), 1u) << run.err;
    EXPECT_EQ(run.errLines()[0].rfind("tintorra-cli: ", 0), 0u) << run.err;
    EXPECT_TRUE(run.out.empty()) << run.out;
    EXPECT_EQ(filesIn(folder.path()), before);
    // The input is never overwritten.
    EXPECT_EQ(samplesAt(*readImage(image), 0, 0), samplesAt(*makeBlocksImage(8), 0, 0));
}

INSTANTIATE_TEST_SUITE_P(
    Inputs, ShiftRefusals,
    testing::Values(
        RefusalCase{"NotRgb", {"@grey.png", "-o", "@out.png"}, 1},
        RefusalCase{"Truncated", {"@cut.png", "-o", "@out.png"}, 1},
        RefusalCase{"NotAnImage", {"@notes.txt", "-o", "@out.png"}, 1},
        RefusalCase{"Missing", {"@absent.png", "-o", "@out.png"}, 1},
        RefusalCase{"OverwritesInput", {"@in.png", "-o", "@in.png"}, 1},
        RefusalCase{
            "MaskOfOtherSize", {"@in.png", "-o", "@out.png", "--inclusion-mask", "@small.png"}, 1},
        RefusalCase{"NoOutput", {"@in.png"}, 2}, RefusalCase{"NoInput", {"-o", "@out.png"}, 2},
        RefusalCase{"TwoInputsOneOutput", {"@in.png", "@in.png", "-o", "@out.png"}, 2},
        RefusalCase{"UnknownExtension", {"@in.png", "-o", "@out.xyz"}, 2},
        RefusalCase{"UnknownFormat", {"@in.png", "-o", "@out.png", "--format", "gif"}, 2},
        RefusalCase{"UnknownView", {"@in.png", "-o", "@out.png", "--view", "negative"}, 2},
        RefusalCase{"StandardInputIntoAFolder", {"-", "-d", "@out"}, 2},
        RefusalCase{"StandardOutputWithoutFormat", {"@in.png", "-o", "-"}, 2},
        RefusalCase{"SameNameFromTwoFolders", {"@in.png", "@sub/in.png", "-d", "@out"}, 2},
        RefusalCase{"SameInputTwice", {"@in.png", "@sub/../in.png", "-d", "@out"}, 2},
        RefusalCase{"BadQuality", {"@in.png", "-o", "@out.jpg", "--quality", "300"}, 2},
        RefusalCase{"NegativeQuality", {"@in.png", "-o", "@out.jpg", "--quality", "-1"}, 2},
        RefusalCase{"FormatAgainstExtension", {"@in.png", "-o", "@out.jpg", "--format", "png"}, 2},
        RefusalCase{"HueOutOfOrder", {"@in.png", "-o", "@out.png", "--hue", "30:20:40:50"}, 2},
        RefusalCase{"HueOutOfRange", {"@in.png", "-o", "@out.png", "--hue", "0:10:20:720"}, 2},
        RefusalCase{"BadHue", {"@in.png", "-o", "@out.png", "--hue", "1:2"}, 2},
        RefusalCase{"UnknownOption", {"@in.png", "-o", "@out.png", "--colour", "red"}, 2}),
    [](const testing::TestParamInfo<RefusalCase>& info) { return info.param.name; });

} // namespace
} // namespace tintorra::cliTest
