#include "cli/CliFailure.h"
#include "cli/Commands.h"
#include "cli/JsonOutput.h"
#include "cli/ParameterOptions.h"
#include "controls/ParameterEncoding.h"
#include "editor/HueShiftParametersBuilder.h"
#include "editor/ShiftRecordEncoding.h"

#include <cstdio>
#include <memory>

namespace tintorra::cli {

namespace {

struct ParamsOptions {
    ParameterOptions encode;
    std::optional<std::string> text;
    std::optional<std::string> from;
};

Json rangeJson(const KVValueDictionary& bounds)
{
    const KVSliderValues v = valuesFromDictionary(bounds);
    return {{"upperFalloff", jsonNumber(v.upperFalloff)},
            {"upper", jsonNumber(v.upper)},
            {"middle", jsonNumber(v.middle)},
            {"lower", jsonNumber(v.lower)},
            {"lowerFalloff", jsonNumber(v.lowerFalloff)}};
}

Json decodedJson(const DecodedHueShiftParameters& d)
{
    Json curve = Json::array();
    for (const double v : tenSegmentValuesFromDictionary(d.targetBriTenVals)) {
        curve.push_back(jsonNumber(v));
    }
    return {{"version", d.version},
            {"gamma", jsonNumber(d.gamma)},
            {"displayGamma", jsonNumber(1.0 / d.gamma)},
            {"colorSpaceModel", d.colorSpaceModel},
            {"preserveHue", d.preserveHue != 0},
            {"blendToFalloffHues", d.blendToFalloffHues != 0},
            {"maskToShow", d.maskToShow},
            {"targetHue", jsonNumber(d.targetHue)},
            {"targetSat", jsonNumber(d.targetSat)},
            {"targetBri", jsonNumber(d.targetBri)},
            {"curve", curve},
            {"hue", rangeJson(d.sourceHueValues)},
            {"saturation", rangeJson(d.sourceSatValues)},
            {"lightness", rangeJson(d.sourceBriValues)}};
}

} // namespace

CommandRunner addParamsCommand(CLI::App& tool, const GlobalOptions&)
{
    auto options = std::make_shared<ParamsOptions>();
    CLI::App* command = tool.add_subcommand(
        "params", "Encode and decode the \"tolm\" parameter strings that documents carry");
    command->require_subcommand(1);
    command->footer("Examples:\n  tintorra-cli params encode --hue-set Orange --target-hue 220\n"
                    "  tintorra-cli params decode --from photo.tiff\nA string is \"tolm\" and 442 "
                    "hexadecimal digits; anything else is refused.");
    CLI::App* encode = command->add_subcommand(
        "encode", "Print the 446-character parameter string of the given options");
    addParameterOptions(*encode, options->encode);
    CLI::App* decode = command->add_subcommand(
        "decode", "Print a parameter string (or a document's) as JSON; hues as fractions of the "
                  "circle");
    auto* text = decode->add_option("STRING", options->text, "a \"tolm\" parameter string");
    auto* from = decode->add_option("--from", options->from, "a Tintorra document");
    text->excludes(from);

    return [encode, decode, options]() -> int {
        if (encode->parsed()) {
            const KVHueShiftParameterSet set = parameterSetFromOptions(options->encode);
            // No image: the statistics are empty, which the string does not carry anyway.
            const HueShiftParameters record = hueShiftParameters(set, HueShiftContext{});
            std::printf("%s\n", hexEncodedStringFromHueShiftParameters(record).c_str());
            return kExitSuccess;
        }
        if (decode->parsed()) {
            if (!options->text && !options->from) {
                failUsage("params decode needs a STRING or --from FILE");
            }
            const std::string string =
                options->from ? parametersOfDocument(*options->from) : *options->text;
            if (options->text) {
                checkParameterString(string, "");
            }
            const auto decoded = decodeHueShiftParameters(string);
            if (!decoded) {
                failProcessing(*options->from + ": its parameters cannot be read");
            }
            printJson(decodedJson(*decoded));
            return kExitSuccess;
        }
        failUsage("params needs 'encode' or 'decode'");
    };
}

} // namespace tintorra::cli
