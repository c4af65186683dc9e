#pragma once

#include "colour/ColorSpaceModel.h"
#include "controls/KVHueShiftParameterSet.h"

#include <CLI/CLI.hpp>
#include <optional>
#include <string>

namespace tintorra::cli {

// The selection and target options shared by `shift` and `params encode`, as typed.
struct ParameterOptions {
    std::optional<std::string> mode;
    std::optional<std::string> hue;
    std::optional<double> hueCenter;
    double hueSpread = 20.0;
    std::optional<std::string> hueSet;
    std::optional<std::string> sat;
    std::optional<std::string> light;
    std::optional<double> targetHue;
    std::optional<double> targetSat;
    std::optional<double> targetBri;
    std::optional<std::string> curve;
    bool preserveHue = false;
    bool blendToFalloff = false;
    std::optional<double> gamma;
    std::optional<std::string> params;
    std::optional<std::string> paramsFrom;
};

void addParameterOptions(CLI::App& command, ParameterOptions& options);

// The parameter set the options describe: the defaults, or the set of --params / --params-from,
// with every other given option applied over it. Throws CliFailure (usage for malformed values,
// processing for an unreadable --params-from file).
KVHueShiftParameterSet parameterSetFromOptions(const ParameterOptions& options);

// The colour mode number of a name ("lchuv" 0 ... "hsl" 4); nothing for other names.
std::optional<ColorSpaceModel> colorModeNamed(const std::string& name);
const char* colorModeName(ColorSpaceModel mode);

// Four numbers "a:b:c:d" (lowerFalloff, lower, upper, upperFalloff); throws a usage failure
// naming `option` when the text is not four numbers.
struct RangeBounds {
    double lowerFalloff;
    double lower;
    double upper;
    double upperFalloff;
};
RangeBounds parseRangeBounds(const std::string& text, const std::string& option);

// The hue range of the saved set of a named hue ("Red" ... "Raspberry", case-insensitive);
// nothing for another name.
std::optional<KVValueDictionary> namedHueSet(const std::string& name);

// Throws a usage failure unless `text` is "tolm" and the exact number of hexadecimal digits a
// parameter string has; `what` names where the user typed it ("--params", or empty).
void checkParameterString(const std::string& text, const std::string& what);

// The parameter string of a Tintorra document; throws a processing failure when the file cannot
// be read or carries none.
std::string parametersOfDocument(const std::string& path);

} // namespace tintorra::cli
