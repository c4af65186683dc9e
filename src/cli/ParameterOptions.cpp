#include "cli/ParameterOptions.h"

#include "cli/CliFailure.h"
#include "cli/NamedHues.h"
#include "cli/StandardStreams.h"
#include "controls/KVCircularSliderModel.h"
#include "controls/KVTenSegmentValues.h"
#include "controls/ParameterEncoding.h"
#include "imageio/ImageFile.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <vector>

namespace tintorra::cli {

namespace {

constexpr std::array<const char*, 5> kModeNames{"lchuv", "lchab", "hcl", "hsb", "hsl"};
// The TIFF tag that carries a document's parameter string.
constexpr int kTiffTagArtist = 315;

std::string lowercase(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

std::vector<double> parseNumberList(const std::string& text, char separator,
                                    const std::string& option)
{
    std::vector<double> numbers;
    std::size_t start = 0;
    while (true) {
        const std::size_t end = text.find(separator, start);
        const std::string item =
            text.substr(start, end == std::string::npos ? std::string::npos : end - start);
        double value = 0.0;
        const char* first = item.data();
        const char* last = item.data() + item.size();
        const auto [next, error] = std::from_chars(first, last, value);
        if (item.empty() || error != std::errc() || next != last || !std::isfinite(value)) {
            failUsage(option + ": '" + item + "' in '" + text + "' is not a number");
        }
        numbers.push_back(value);
        if (end == std::string::npos) {
            break;
        }
        start = end + 1;
    }
    return numbers;
}

// A hue in degrees as a fraction of the circle, the way the saved sets store bounds: negative
// angles are brought up by whole turns, larger ones are not reduced (360 degrees is 1.0).
double hueFraction(double degrees)
{
    while (degrees < 0.0) {
        degrees += 360.0;
    }
    return degrees / 360.0;
}

// A fraction of the circle brought into 0 <= f < 1.
double wholeTurnFraction(double turns)
{
    double f = std::fmod(turns, 1.0);
    if (f < 0.0) {
        f += 1.0;
    }
    return f >= 1.0 ? 0.0 : f;
}

KVSliderValues fractionRange(const std::string& text, const std::string& option)
{
    const RangeBounds b = parseRangeBounds(text, option);
    const std::array<double, 4> values{b.lowerFalloff, b.lower, b.upper, b.upperFalloff};
    for (const double v : values) {
        if (v < 0.0 || v > 1.0) {
            failUsage(option + " " + text + ": every bound must lie in 0..1, e.g. 0:0.2:0.8:1");
        }
    }
    if (!(b.lowerFalloff <= b.lower && b.lower <= b.upper && b.upper <= b.upperFalloff)) {
        failUsage(option + " " + text +
                  ": bounds must not decrease (lowerFalloff:lower:upper:upperFalloff), e.g. "
                  "0:0.2:0.8:1");
    }
    return {b.upperFalloff, b.upper, (b.lower + b.upper) / 2.0, b.lower, b.lowerFalloff};
}

// Hue bounds may cross 0 but must run counter-clockwise, lowerFalloff to upperFalloff, around at
// most one turn; anything else would select a different range than the one typed.
void checkHueBounds(const RangeBounds& b, const std::string& text)
{
    for (const double v : {b.lowerFalloff, b.lower, b.upper, b.upperFalloff}) {
        if (v < -360.0 || v > 360.0) {
            failUsage("--hue " + text +
                      ": every bound must lie in -360..360 degrees, e.g. 340:350:10:20");
        }
    }
    const auto step = [](double from, double to) {
        return to < from ? to - from + 360.0 : to - from;
    };
    const double turn =
        step(b.lowerFalloff, b.lower) + step(b.lower, b.upper) + step(b.upper, b.upperFalloff);
    if (turn > 360.0) {
        failUsage("--hue " + text +
                  ": the bounds are out of order; give them counter-clockwise as "
                  "lowerFalloff:lower:upper:upperFalloff, e.g. 340:350:10:20");
    }
}

void applyHueOptions(const ParameterOptions& options, KVHueShiftParameterSet& set)
{
    if (options.hue) {
        const RangeBounds b = parseRangeBounds(*options.hue, "--hue");
        checkHueBounds(b, *options.hue);
        // Bounds only: the middle is derived circularly, so a range across 0 gets its middle
        // where the ring shows it.
        set.setSourceHueValues({{"upperFalloff", hueFraction(b.upperFalloff)},
                                {"upper", hueFraction(b.upper)},
                                {"lower", hueFraction(b.lower)},
                                {"lowerFalloff", hueFraction(b.lowerFalloff)}});
    }
    if (options.hueCenter) {
        if (!std::isfinite(*options.hueCenter)) {
            failUsage("--hue-center must be a finite number of degrees");
        }
        if (options.hueSpread < 0.0 || options.hueSpread > 180.0) {
            failUsage("--hue-spread must lie in 0..180 degrees");
        }
        KVCircularSliderModel ring(true);
        ring.setMiddleValue(hueFraction(std::fmod(*options.hueCenter, 360.0)));
        ring.setSpreadInDegrees(options.hueSpread);
        set.setSourceHueValues(ring.values());
    }
    if (options.hueSet) {
        const auto range = namedHueSet(*options.hueSet);
        if (!range) {
            std::string names;
            for (const NamedHue& hue : kNamedHues) {
                names += (names.empty() ? "" : ", ") + std::string(hue.name);
            }
            failUsage("--hue-set '" + *options.hueSet + "' is not a named hue; use one of " +
                      names);
        }
        set.setSourceHueValues(*range);
    }
}

} // namespace

std::optional<ColorSpaceModel> colorModeNamed(const std::string& name)
{
    const std::string wanted = lowercase(name);
    for (std::size_t i = 0; i < kModeNames.size(); ++i) {
        if (wanted == kModeNames[i]) {
            return colorSpaceModelFromNumber(static_cast<std::int64_t>(i));
        }
    }
    return std::nullopt;
}

const char* colorModeName(ColorSpaceModel mode)
{
    return kModeNames[static_cast<std::size_t>(colorSpaceModelNumber(mode))];
}

RangeBounds parseRangeBounds(const std::string& text, const std::string& option)
{
    const std::vector<double> numbers = parseNumberList(text, ':', option);
    if (numbers.size() != 4) {
        failUsage(option + " '" + text +
                  "' needs four numbers lowerFalloff:lower:upper:upperFalloff");
    }
    return {numbers[0], numbers[1], numbers[2], numbers[3]};
}

std::optional<KVValueDictionary> namedHueSet(const std::string& name)
{
    const std::string wanted = lowercase(name);
    for (const NamedHue& hue : kNamedHues) {
        if (lowercase(std::string(hue.name)) == wanted) {
            const double d = hue.degrees;
            return KVValueDictionary{{"upperFalloff", hueFraction(d + 20.0)},
                                     {"upper", hueFraction(d + 10.0)},
                                     {"middle", hueFraction(d)},
                                     {"lower", hueFraction(d - 10.0)},
                                     {"lowerFalloff", hueFraction(d - 20.0)}};
        }
    }
    return std::nullopt;
}

void checkParameterString(const std::string& text, const std::string& what)
{
    const std::size_t digits = kHueShiftParameterStringLength - kHueShiftParameterPrefix.size();
    const bool prefixed = text.rfind(kHueShiftParameterPrefix, 0) == 0;
    const bool hex =
        prefixed && text.find_first_not_of("0123456789ABCDEFabcdef",
                                           kHueShiftParameterPrefix.size()) == std::string::npos;
    if (!prefixed || !hex || text.size() != kHueShiftParameterStringLength) {
        const std::string shown = text.size() > 24 ? text.substr(0, 24) + "..." : text;
        failUsage((what.empty() ? "" : what + " ") + "'" + shown +
                  "' is not a parameter string: it must be \"tolm\" and " + std::to_string(digits) +
                  " hexadecimal digits, as 'tintorra-cli params encode' prints");
    }
}

std::string parametersOfDocument(const std::string& path)
{
    const std::vector<std::uint8_t> data = readInputBytes(path);
    auto source = ImageSource::open(data);
    if (!source) {
        failProcessing(path + ": " + source.error().message);
    }
    const auto artist = source.value().stringProperty(kTiffTagArtist);
    if (!artist || artist->rfind(kHueShiftParameterPrefix, 0) != 0) {
        failProcessing(path + ": has no Tintorra parameters; give a document written with "
                              "'--format document'");
    }
    return *artist;
}

void addParameterOptions(CLI::App& command, ParameterOptions& o)
{
    const std::string selection = "Selection";
    const std::string target = "Target";
    command.add_option("--mode", o.mode, "colour mode: lchuv|lchab|hcl|hsb|hsl (default lchuv)")
        ->group(selection);
    auto* hue =
        command
            .add_option(
                "--hue", o.hue,
                "selection hue bounds in degrees LF:L:U:UF (lowerFalloff, lower, "
                "upper, upperFalloff), counter-clockwise, each in -360..360; may cross 0, e.g. "
                "340:350:10:20")
            ->group(selection);
    auto* centre =
        command.add_option("--hue-center", o.hueCenter, "middle of the selection hue in degrees")
            ->group(selection);
    command
        .add_option("--hue-spread", o.hueSpread,
                    "spread in degrees around --hue-center: half on each side of the middle and "
                    "as much again of fall-off (default 20)")
        ->needs(centre)
        ->group(selection);
    auto* set = command
                    .add_option("--hue-set", o.hueSet,
                                "a named hue's default set: Red, Rust, Orange, Tangerine, "
                                "Yellow, Lime, Green, Emerald, Aquamarine, Turquoise, Cyan, "
                                "\"Light Blue\", Blue, Indigo, Purple, Violet, Magenta, Raspberry")
                    ->group(selection);
    hue->excludes(centre)->excludes(set);
    centre->excludes(set);
    command
        .add_option("--sat", o.sat,
                    "selection saturation LF:L:U:UF, fractions 0..1 "
                    "(default 0:0:1:1)")
        ->group(selection);
    command
        .add_option("--light", o.light,
                    "selection lightness LF:L:U:UF, fractions 0..1 "
                    "(default 0:0:1:1)")
        ->group(selection);
    command
        .add_option("--target-hue", o.targetHue,
                    "target hue in degrees (default: the middle of the selected hues, so that "
                    "hues stay where they are)")
        ->group(target);
    command.add_option("--target-sat", o.targetSat, "saturation change -1..1, clamped; 0 = none")
        ->group(target);
    command
        .add_option("--target-bri", o.targetBri,
                    "brightness change -1..1, clamped; 0 = the brightness curve is used")
        ->group(target);
    command
        .add_option("--curve", o.curve,
                    "brightness curve v0,...,v10: eleven outputs 0..1 at the inputs 0, 0.1, "
                    "... 1 (default identity)")
        ->group(target);
    command.add_flag("--preserve-hue", o.preserveHue, "keep hues while blending")->group(target);
    command.add_flag("--blend-to-falloff", o.blendToFalloff, "blend the fall-offs to their hues")
        ->group(target);
    command.add_option("--gamma", o.gamma, "display gamma (default 2.2); the engine gets 1/G")
        ->group(selection);
    auto* params = command
                       .add_option("--params", o.params,
                                   "start from a \"tolm\" parameter string; later options "
                                   "override")
                       ->group(selection);
    auto* from = command
                     .add_option("--params-from", o.paramsFrom,
                                 "start from the parameters of a Tintorra document")
                     ->group(selection);
    params->excludes(from);
}

KVHueShiftParameterSet parameterSetFromOptions(const ParameterOptions& options)
{
    KVHueShiftParameterSet set;
    std::optional<std::string> text = options.params;
    if (options.paramsFrom) {
        text = parametersOfDocument(*options.paramsFrom);
    }
    if (options.params) {
        checkParameterString(*options.params, "--params");
    }
    if (text && !setHueShiftParametersFromHexEncodedString(set, *text)) {
        failUsage("the parameter string names a colour mode or mask view that does not exist; use "
                  "a string from 'tintorra-cli params encode'");
    }
    if (options.mode) {
        const auto mode = colorModeNamed(*options.mode);
        if (!mode) {
            failUsage("--mode '" + *options.mode +
                      "' is not a colour mode; use lchuv, lchab, "
                      "hcl, hsb or hsl");
        }
        set.setColorSpaceModel(*mode);
    }
    applyHueOptions(options, set);
    if (options.sat) {
        set.setSourceSatRange(fractionRange(*options.sat, "--sat"));
    }
    if (options.light) {
        set.setSourceBriRange(fractionRange(*options.light, "--light"));
    }
    if (options.targetHue) {
        if (!std::isfinite(*options.targetHue)) {
            failUsage("--target-hue must be a finite number of degrees");
        }
        set.setTargetHue(wholeTurnFraction(*options.targetHue / 360.0));
    } else if (!text) {
        // A run that only changes saturation or brightness must leave hues where they are: the
        // target is the selection's own middle.
        set.setTargetHue(wholeTurnFraction(set.sourceHueRange().middle));
    }
    if (options.targetSat) {
        set.setTargetSat(*options.targetSat);
    }
    if (options.targetBri) {
        set.setTargetBri(*options.targetBri);
    }
    if (options.curve) {
        const std::vector<double> values = parseNumberList(*options.curve, ',', "--curve");
        if (values.size() != kTenSegmentThumbCount) {
            failUsage("--curve needs eleven comma-separated values, got " +
                      std::to_string(values.size()));
        }
        KVTenSegmentValues curve{};
        for (std::size_t i = 0; i < curve.size(); ++i) {
            if (values[i] < 0.0 || values[i] > 1.0) {
                failUsage("--curve values must lie in 0..1");
            }
            curve[i] = values[i];
        }
        set.setTargetBriTenVals(dictionaryFromTenSegmentValues(curve));
    }
    if (options.preserveHue) {
        set.setPreserveHue(true);
    }
    if (options.blendToFalloff) {
        set.setBlendToFalloffHues(true);
    }
    if (options.gamma) {
        if (!(*options.gamma > 0.0) || !std::isfinite(*options.gamma)) {
            failUsage("--gamma must be a positive number such as 2.2");
        }
        set.setDisplayGamma(*options.gamma);
    }
    return set;
}

} // namespace tintorra::cli
