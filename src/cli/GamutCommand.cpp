#include "cli/CliFailure.h"
#include "cli/Commands.h"
#include "cli/ImageJob.h"
#include "colour/IccProfiles.h"
#include "colour/KVColorGamut.h"
#include "colour/WorkingSpaces.h"
#include "imageio/AtomicFileWriter.h"
#include "imageio/ImageFile.h"

#include <cctype>
#include <cstdio>
#include <memory>

namespace tintorra::cli {

namespace {

constexpr double kPi = 3.14159265358979323846;

struct GamutOptions {
    std::optional<std::string> space;
    std::optional<std::string> profile;
    std::optional<std::string> image;
    std::string mode = "lchuv";
    std::string builder = "search";
    std::optional<double> hue;
    std::optional<double> lightness;
    std::optional<double> maxChroma;
    std::optional<std::string> table;
};

// Letters and digits only, lower case: "Adobe RGB (1998)" and "adobe-rgb-1998" name one space.
std::string nameKey(std::string_view name)
{
    std::string key;
    for (const unsigned char c : name) {
        if (std::isalnum(c)) {
            key.push_back(static_cast<char>(std::tolower(c)));
        }
    }
    return key;
}

const ColorSpaceChromaticities* workingSpaceLike(const std::string& name)
{
    for (const auto& row : workingSpaceTable) {
        if (nameKey(row.name) == nameKey(name)) {
            return &row;
        }
    }
    return nullptr;
}

std::unique_ptr<KVColorGamut> gamutFor(const GamutOptions& o, ColorSpaceModel mode)
{
    if (o.space || (!o.profile && !o.image)) {
        // No space given is sRGB by name, so that both ask for the very same gamut.
        const std::string name = o.space.value_or("sRGB");
        const ColorSpaceChromaticities* space = workingSpaceLike(name);
        if (space == nullptr) {
            std::string names;
            for (const auto& row : workingSpaceTable) {
                names += (names.empty() ? "" : ", ") + std::string(row.name);
            }
            failUsage("--space '" + name + "' is not a working space; use one of " + names);
        }
        return std::make_unique<KVColorGamut>(*space, mode);
    }
    if (o.profile) {
        auto bytes = readWholeFile(*o.profile);
        if (!bytes) {
            failProcessing(*o.profile + ": " + bytes.error().message);
        }
        const auto space = colorSpaceFromIccProfile(bytes.take());
        if (!space || space->model() != KVColorSpaceModel::rgb) {
            failProcessing(*o.profile + ": not an RGB ICC profile; give a matrix RGB profile");
        }
        return std::make_unique<KVColorGamut>(*space, mode);
    }
    if (o.image) {
        const LoadedImage image = loadImageFile(*o.image);
        return std::make_unique<KVColorGamut>(image.source->colorSpace(), mode);
    }
    failUsage("gamut needs --space, --profile or --image");
}

std::string tableCsv(const KVColorGamut& gamut)
{
    // One row per half degree of hue, one column per half unit of lightness.
    std::string text = "hue";
    for (std::size_t j = 0; j < KVColorGamut::kLightnessCount; ++j) {
        char cell[32];
        std::snprintf(cell, sizeof cell, ",L%.1f", static_cast<double>(j) * 0.5);
        text += cell;
    }
    text += '\n';
    for (std::size_t i = 0; i < KVColorGamut::kHueCount; ++i) {
        char cell[40];
        std::snprintf(cell, sizeof cell, "%.1f", static_cast<double>(i) * 0.5);
        text += cell;
        for (std::size_t j = 0; j < KVColorGamut::kLightnessCount; ++j) {
            std::snprintf(cell, sizeof cell, ",%.17g", gamut.tableChroma(i, j));
            text += cell;
        }
        text += '\n';
    }
    return text;
}

} // namespace

CommandRunner addGamutCommand(CLI::App& tool, const GlobalOptions&)
{
    auto options = std::make_shared<GamutOptions>();
    GamutOptions& o = *options;
    CLI::App* command = tool.add_subcommand(
        "gamut", "Query the largest in-gamut chroma of an RGB space (sRGB by default)");
    command->footer("Examples:\n  tintorra-cli gamut --hue 120 --lightness 50\n"
                    "  tintorra-cli gamut --space \"Adobe RGB (1998)\" --max-chroma 240\n"
                    "  tintorra-cli gamut --image photo.tif --mode lchab --table chroma.csv");
    auto* space = command->add_option(
        "--space", o.space,
        "a working space by name, case, spaces and punctuation ignored (default sRGB)");
    auto* profile = command->add_option("--profile", o.profile, "an RGB ICC profile file");
    auto* image = command->add_option("--image", o.image, "the colour space of an image file");
    space->excludes(profile)->excludes(image);
    profile->excludes(image);
    command->add_option("--mode", o.mode, "lchuv|lchab (default lchuv)")
        ->check(CLI::IsMember({"lchuv", "lchab"}));
    command->add_option("--builder", o.builder, "search|hull (default search)")
        ->check(CLI::IsMember({"search", "hull"}));
    auto* hue = command->add_option("--hue", o.hue, "hue in degrees (with --lightness)");
    auto* lightness =
        command->add_option("--lightness", o.lightness, "lightness 0..100 (with --hue)");
    hue->needs(lightness);
    lightness->needs(hue);
    auto* maxChroma = command->add_option("--max-chroma", o.maxChroma,
                                          "print \"lightness,chroma\" of the hue's most chromatic "
                                          "colour (hue in degrees)");
    auto* table = command->add_option("--table", o.table,
                                      "write the 720 x 201 chroma table as CSV (rows: hue per "
                                      "0.5 degree; columns: lightness per 0.5)");
    hue->excludes(maxChroma)->excludes(table);
    maxChroma->excludes(table);

    return [options]() -> int {
        const GamutOptions& o = *options;
        if (!o.hue && !o.maxChroma && !o.table) {
            failUsage("gamut needs --hue DEG --lightness L, --max-chroma DEG or --table OUT.csv");
        }
        if (o.lightness && !(*o.lightness >= 0.0 && *o.lightness <= 100.0)) {
            failUsage("--lightness " + CLI::detail::to_string(*o.lightness) +
                      " is outside 0..100; give a lightness from 0 (black) to 100 (white)");
        }
        const ColorSpaceModel mode =
            o.mode == "lchab" ? ColorSpaceModel::LChab : ColorSpaceModel::LChuv;
        std::unique_ptr<KVColorGamut> gamut;
        {
            gamut = gamutFor(o, mode);
        }
        if (!gamut->hasTables()) {
            failProcessing("not enough memory for the gamut tables");
        }
        if (o.builder == "hull") {
            gamut->buildRGBColors();
            gamut->buildLuvColors();
            gamut->buildChromaLUTsFromPolys();
        }
        if (o.hue) {
            std::printf("%.17g\n", gamut->chromaForHue(*o.hue * kPi / 180.0, *o.lightness));
        } else if (o.maxChroma) {
            const ColorComponents peak = gamut->maxChromaForHue(*o.maxChroma * kPi / 180.0);
            std::printf("%.17g,%.17g\n", peak.c0, peak.c1);
        } else {
            const std::string text = tableCsv(*gamut);
            const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
            const IOStatus written = writeFileAtomically(*o.table, {bytes, text.size()});
            if (!written) {
                failProcessing(*o.table + ": " + written.error().message);
            }
        }
        return kExitSuccess;
    };
}

} // namespace tintorra::cli
