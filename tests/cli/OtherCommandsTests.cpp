#include "CliRunner.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace tintorra::cliTest {
namespace {

std::vector<std::string> splitLines(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::vector<std::string> splitCells(const std::string& line)
{
    std::vector<std::string> cells;
    std::istringstream in(line);
    for (std::string cell; std::getline(in, cell, ',');) {
        cells.push_back(cell);
    }
    return cells;
}

TEST(InfoCommand, DescribesAnImage)
{
    const ScratchFolder folder;
    const auto image = folder / "deep.tif";
    writeTiff(image, *makeBlocksImage(16));
    const CliRun run = runCli({"info", image.string()});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const Json d = run.json();
    const std::vector<std::string> keys{
        "file",     "format",        "pixelsWide", "pixelsHigh", "bitsPerSample", "samplesPerPixel",
        "hasAlpha", "premultiplied", "planar",     "colorModel", "isRGB",         "profile",
        "rgbToXyz", "document",      "pages",      "params"};
    std::vector<std::string> got;
    for (const auto& item : d.items()) {
        got.push_back(item.key());
    }
    EXPECT_EQ(got, keys);
    EXPECT_EQ(d["format"], "tiff");
    EXPECT_EQ(d["pixelsWide"], 32);
    EXPECT_EQ(d["bitsPerSample"], 16);
    EXPECT_EQ(d["samplesPerPixel"], 3);
    EXPECT_FALSE(d["hasAlpha"].get<bool>());
    EXPECT_TRUE(d["isRGB"].get<bool>());
    EXPECT_FALSE(d["document"].get<bool>());
    EXPECT_TRUE(d["params"].is_null());
    // The matrix maps RGB white to the white point: its Y row sums to 1.
    const Json& m = d["rgbToXyz"];
    ASSERT_EQ(m.size(), 9u);
    EXPECT_NEAR(m[3].get<double>() + m[4].get<double>() + m[5].get<double>(), 1.0, 1e-4);

    // A single page with a parameter string in its Artist tag is no document.
    const std::string params = runCli({"params", "encode"}).out;
    const std::string tag =
        "tiffset -s 315 '" + params.substr(0, params.size() - 1) + "' '" + image.string() + "'";
    ASSERT_EQ(std::system(tag.c_str()), 0);
    const Json single = runCli({"info", image.string()}).json();
    EXPECT_FALSE(single["document"].get<bool>());
    EXPECT_TRUE(single["params"].is_null());
}

TEST(InfoCommand, ReportsEachFileAndFailsForTheUnreadable)
{
    const ScratchFolder folder;
    writePng(folder / "a.png", *makeBlocksImage(8));
    std::ofstream(folder / "b.png") << "garbage";
    writePng(folder / "g.png", *KVBitmap::deviceWhite8Rep(2, 2));
    const CliRun run = runCli({"info", (folder / "a.png").string(), (folder / "b.png").string(),
                               (folder / "g.png").string()});
    EXPECT_EQ(run.exitCode, 1);
    const auto objects = run.jsonLines();
    ASSERT_EQ(objects.size(), 2u);
    EXPECT_EQ(objects[0]["format"], "png");
    // A grey image is described, not refused; it is simply not RGB.
    EXPECT_FALSE(objects[1]["isRGB"].get<bool>());
    EXPECT_TRUE(objects[1]["rgbToXyz"].is_null());
    ASSERT_EQ(run.errLines().size(), 1u);
    EXPECT_NE(run.errLines()[0].find("b.png"), std::string::npos);
}

TEST(InfoCommand, ReadsHeadersWithoutDecodingPixels)
{
    // The pixel data cut short: info still describes the file from its header, which shows it
    // never decodes the samples; shift, which needs them, refuses the file.
    const ScratchFolder folder;
    writePng(folder / "whole.png", *makeBlocksImage(8));
    std::ifstream in(folder / "whole.png", std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::ofstream(folder / "cut.png", std::ios::binary) << bytes.substr(0, bytes.size() - 20);
    const CliRun info = runCli({"info", (folder / "cut.png").string()});
    ASSERT_EQ(info.exitCode, 0) << info.err;
    EXPECT_EQ(info.json()["pixelsWide"], 32);
    EXPECT_TRUE(info.json()["isRGB"].get<bool>());
    EXPECT_EQ(runCli({"shift", (folder / "cut.png").string(), "-o", (folder / "o.png").string()})
                  .exitCode,
              1);
}

TEST(SpectrumCommand, CsvCountsEveryPixelOnce)
{
    const ScratchFolder folder;
    const auto image = folder / "blocks.png";
    writePng(image, *makeBlocksImage(8));
    const CliRun run = runCli({"spectrum", image.string(), "--csv"});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const auto lines = splitLines(run.out);
    ASSERT_EQ(lines.size(), 362u);
    EXPECT_EQ(lines[0], "band,count,hueMin,hueMax,hueMean,chromaMin,chromaMax,chromaMean,lightMin,"
                        "lightMax,lightMean,alphaMin,alphaMax,alphaMean");
    unsigned long long total = 0;
    int populated = 0;
    for (std::size_t i = 1; i < lines.size(); ++i) {
        const auto cells = splitCells(lines[i]);
        ASSERT_EQ(cells.size(), 14u);
        EXPECT_EQ(std::stoul(cells[0]), i - 1);
        const auto count = std::stoull(cells[1]);
        total += count;
        populated += count > 0 ? 1 : 0;
    }
    EXPECT_EQ(total, 32u * 8u);
    EXPECT_EQ(populated, 4);
    // The grey block is achromatic: band 360 holds its 64 pixels.
    EXPECT_EQ(splitCells(lines.back())[1], "64");
    // sRGB red sits at 12.17 degrees of LChuv hue (published value), in band 12.
    const auto red = splitCells(lines[1 + 12]);
    EXPECT_EQ(red[1], "64");
    EXPECT_NEAR(std::stod(red[4]), 12.17, 0.05);
    EXPECT_NEAR(std::stod(red[7]), 179.04, 0.5);
    EXPECT_NEAR(std::stod(red[10]), 53.24, 0.5);
}

TEST(SpectrumCommand, JsonAndPlots)
{
    const ScratchFolder folder;
    const auto image = folder / "blocks.png";
    writePng(image, *makeBlocksImage(8));
    const CliRun json = runCli({"spectrum", image.string(), "--mode", "hsb"});
    ASSERT_EQ(json.exitCode, 0) << json.err;
    EXPECT_EQ(json.json()["bands"].size(), 361u);
    EXPECT_EQ(json.json()["mode"], "hsb");
    // HSB puts red at hue 0 and green at 120.
    EXPECT_EQ(json.json()["bands"][120]["count"], 64);

    for (const char* graph : {"spectrogram", "lightness", "chroma", "saturation"}) {
        const auto plot = folder / (std::string(graph) + ".png");
        const CliRun run = runCli(
            {"spectrum", image.string(), "--plot", plot.string(), "--graph", graph, "--log"});
        ASSERT_EQ(run.exitCode, 0) << run.err;
        EXPECT_TRUE(run.out.empty()) << "only the plot, unless asked";
        const KVBitmapPtr drawn = readImage(plot);
        ASSERT_TRUE(drawn) << graph;
        // 361 bands of 3 pixels and 400 rows, with margins for the axes and the legend.
        EXPECT_EQ(drawn->pixelsWide(), 56 + 361 * 3 + 16);
        EXPECT_EQ(drawn->pixelsHigh(), 28 + 400 + 40);
        // The value axis runs up the left margin and the hue axis along the bottom one.
        EXPECT_EQ(samplesAt(*drawn, 55, 200)[0], 204u) << graph;
        EXPECT_EQ(samplesAt(*drawn, 600, 428)[0], 204u) << graph;
        // The legend's first swatch is the minimum line's blue (line graphs only).
        const auto swatch = samplesAt(*drawn, 226, 11);
        EXPECT_EQ(swatch[2] == 255u && swatch[0] == 0u, std::string(graph) != "spectrogram")
            << graph;
    }
    const CliRun asked =
        runCli({"spectrum", image.string(), "--plot", (folder / "p.png").string(), "--json"});
    EXPECT_EQ(asked.json()["bands"].size(), 361u);
    const CliRun hsbPlot = runCli(
        {"spectrum", image.string(), "--mode", "hsb", "--plot", (folder / "x.png").string()});
    EXPECT_EQ(hsbPlot.exitCode, 2);
    EXPECT_FALSE(std::filesystem::exists(folder / "x.png"));
}

TEST(GamutCommand, AnswersChromaQueries)
{
    // Black has no chroma; sRGB red (L 53.24, C 179.04 at 12.17 degrees) lies on the boundary
    // and is its hue's most chromatic colour.
    const CliRun black = runCli({"gamut", "--space", "sRGB", "--hue", "12.17", "--lightness", "0"});
    ASSERT_EQ(black.exitCode, 0) << black.err;
    EXPECT_EQ(std::stod(black.out), 0.0);
    const CliRun atRed =
        runCli({"gamut", "--space", "sRGB", "--hue", "12.17", "--lightness", "53.24"});
    // Red is a corner of the gamut body, which the tables (per half degree and half unit of
    // lightness, interpolated) round off by up to about 2 %.
    EXPECT_NEAR(std::stod(atRed.out), 179.04, 3.5);
    const CliRun peak = runCli({"gamut", "--space", "sRGB", "--max-chroma", "12.17"});
    ASSERT_EQ(peak.exitCode, 0) << peak.err;
    const auto cells = splitCells(splitLines(peak.out).at(0));
    ASSERT_EQ(cells.size(), 2u);
    EXPECT_NEAR(std::stod(cells[0]), 53.24, 1.0);
    EXPECT_NEAR(std::stod(cells[1]), 179.04, 3.5);
    EXPECT_TRUE(black.err.empty()) << black.err;

    // The hull measures the convex hull of the gamut body, so it never gives less chroma than
    // the search at the same hue's peak; neither builder talks on standard error.
    const CliRun hull =
        runCli({"gamut", "--space", "sRGB", "--builder", "hull", "--max-chroma", "12.17"});
    ASSERT_EQ(hull.exitCode, 0) << hull.err;
    EXPECT_TRUE(hull.err.empty()) << hull.err;
    EXPECT_GE(std::stod(splitCells(splitLines(hull.out).at(0))[1]), std::stod(cells[1]) - 0.5);

    // Names match whatever their case and punctuation; no space at all is sRGB.
    const std::vector<std::vector<std::string>> sameAnswers{
        {"--space", "sRGB", "--max-chroma", "12.17"},
        {"--max-chroma", "12.17"},
        {"--space", "s-rgb", "--max-chroma", "12.17"}};
    for (const auto& pair : {std::pair{0, 1}, std::pair{0, 2}}) {
        auto a = sameAnswers[pair.first];
        auto b = sameAnswers[pair.second];
        a.insert(a.begin(), "gamut");
        b.insert(b.begin(), "gamut");
        EXPECT_EQ(runCli(a).out, runCli(b).out) << b[1];
    }
    const CliRun adobe = runCli({"gamut", "--space", "Adobe RGB (1998)", "--max-chroma", "240"});
    ASSERT_EQ(adobe.exitCode, 0) << adobe.err;
    EXPECT_EQ(adobe.out, runCli({"gamut", "--space", "Adobe RGB 1998", "--max-chroma", "240"}).out);
}

TEST(GamutCommand, WritesTheWholeTable)
{
    const ScratchFolder folder;
    const auto table = folder / "t.csv";
    const CliRun run = runCli(
        {"gamut", "--space", "Adobe RGB 1998", "--mode", "lchab", "--table", table.string()});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    std::ifstream in(table);
    std::stringstream text;
    text << in.rdbuf();
    const auto lines = splitLines(text.str());
    ASSERT_EQ(lines.size(), 721u);
    EXPECT_EQ(splitCells(lines[0]).size(), 202u);
    EXPECT_EQ(splitCells(lines[720]).size(), 202u);
    EXPECT_EQ(splitCells(lines[1])[1], "0");
}

TEST(GamutCommand, RefusesWhatItCannotUse)
{
    for (const auto& arguments : std::vector<std::vector<std::string>>{
             {"gamut"},
             {"gamut", "--space", "No Such RGB", "--max-chroma", "10"},
             {"gamut", "--hue", "10"},
             {"gamut", "--hue", "10", "--lightness", "150"},
             {"gamut", "--hue", "10", "--lightness", "-1"},
             {"gamut", "--mode", "hsl", "--max-chroma", "10"},
             {"gamut", "--profile", "/nonexistent.icc", "--max-chroma", "10"}}) {
        const CliRun run = runCli(arguments);
        EXPECT_NE(run.exitCode, 0);
        ASSERT_EQ(run.errLines().size(), 1u) << run.err;
        EXPECT_EQ(run.errLines()[0].find(".;"), std::string::npos) << run.err;
        EXPECT_TRUE(run.out.empty());
    }
}

TEST(DemoCommand, WritesEveryPieceOfTheMainJob)
{
    const ScratchFolder folder;
    const auto dir = folder / "demo";
    const CliRun run = runCli({"demo", dir.string()});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(filesIn(dir), (std::vector<std::string>{"black-mask.png", "document.tiff",
                                                      "highlight.png", "shifted.png", "source.png",
                                                      "spectrogram.png", "white-mask.png"}));
    EXPECT_EQ(splitLines(run.out).size(), 7u);
    const KVBitmapPtr source = readImage(dir / "source.png");
    ASSERT_TRUE(source);
    EXPECT_EQ(source->pixelsWide(), 1024);
    EXPECT_TRUE(source->hasAlpha());
    const CliRun info = runCli({"info", (dir / "document.tiff").string()});
    EXPECT_TRUE(info.json()["document"].get<bool>());
    const CliRun params = runCli({"params", "decode", "--from", (dir / "document.tiff").string()});
    EXPECT_DOUBLE_EQ(params.json()["targetHue"].get<double>(), 250.0 / 360.0);
}

TEST(Usage, HelpForTheToolAndEachCommand)
{
    for (const auto& arguments :
         std::vector<std::vector<std::string>>{{"--help"},
                                               {"shift", "--help"},
                                               {"params", "--help"},
                                               {"params", "encode", "--help"},
                                               {"params", "decode", "--help"},
                                               {"info", "--help"},
                                               {"spectrum", "--help"},
                                               {"gamut", "--help"},
                                               {"demo", "--help"},
                                               {"help"},
                                               {"help", "params", "decode"}}) {
        const CliRun run = runCli(arguments);
        EXPECT_EQ(run.exitCode, 0) << arguments.front();
        EXPECT_NE(run.out.find("Usage"), std::string::npos) << run.out;
    }
    EXPECT_NE(runCli({"shift", "--help"}).out.find("--hue-set"), std::string::npos);
}

TEST(Usage, MistakesAreUsageErrors)
{
    for (const auto& arguments : std::vector<std::vector<std::string>>{
             {}, {"recolour"}, {"--frobnicate"}, {"info"}, {"spectrum"}}) {
        const CliRun run = runCli(arguments);
        EXPECT_EQ(run.exitCode, 2);
        ASSERT_EQ(run.errLines().size(), 1u) << run.err;
        EXPECT_EQ(run.errLines()[0].rfind("tintorra-cli: ", 0), 0u);
    }
}

} // namespace
} // namespace tintorra::cliTest
