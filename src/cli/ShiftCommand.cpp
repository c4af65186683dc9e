#include "cli/CliFailure.h"
#include "cli/Commands.h"
#include "cli/ImageJob.h"
#include "cli/JsonOutput.h"
#include "cli/OutputFormats.h"
#include "cli/ParameterOptions.h"
#include "cli/ProgressBar.h"
#include "cli/StandardStreams.h"
#include "cli/Stopwatch.h"
#include "controls/ParameterEncoding.h"
#include "editor/ShiftRecordEncoding.h"
#include "imageio/ShiftedFileName.h"

#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>

namespace tintorra::cli {

namespace {

struct ShiftOptions {
    ParameterOptions parameters;
    std::vector<std::string> inputs;
    std::optional<std::string> output;
    std::optional<std::string> directory;
    std::string view = "shifted";
    std::optional<std::string> format;
    double quality = 90.0;
    std::optional<std::string> exclusionMask;
    std::optional<std::string> inclusionMask;
    unsigned threads = 0;
    bool json = false;
    bool noClobber = false;
    unsigned repeat = 0;
};

const std::map<std::string, MaskView> kViews{{"shifted", MaskView::shiftedImage},
                                             {"highlight", MaskView::selectionHighlight},
                                             {"black-mask", MaskView::blackMask},
                                             {"white-mask", MaskView::whiteMask}};

// Steps of one image on the progress bar.
constexpr std::size_t kStepsPerImage = 5;

OutputFormat formatFor(const ShiftOptions& o, const std::filesystem::path& input)
{
    if (o.format) {
        const auto named = outputFormatNamed(*o.format);
        if (!named) {
            failUsage("--format '" + *o.format +
                      "' is not an output format; use tiff, png, jpeg, jp2 or document");
        }
        const auto byName = o.output ? outputFormatForPath(*o.output) : std::nullopt;
        if (byName && !sameFileFormat(*byName, *named)) {
            failUsage("--format " + *o.format + " disagrees with the extension of '" + *o.output +
                      "'; end the file in ." + named->extension + " or leave out --format");
        }
        return *named;
    }
    if (o.output && isStandardStream(*o.output)) {
        failUsage("-o - needs --format tiff, png, jpeg, jp2 or document; standard output has no "
                  "extension to tell the format by");
    }
    if (o.output) {
        const auto byName = outputFormatForPath(*o.output);
        if (!byName) {
            failUsage("cannot tell the format from '" + *o.output +
                      "'; end it in .tif, .png, .jpg or .jp2, or give --format");
        }
        return *byName;
    }
    // Into a folder without --format: the input's own format where it can be written, else TIFF.
    const auto byInput = outputFormatForPath(input);
    return byInput ? *byInput : *outputFormatNamed("tiff");
}

std::filesystem::path outputPathFor(const ShiftOptions& o, const std::string& input,
                                    const OutputFormat& format)
{
    if (o.output) {
        return *o.output;
    }
    return std::filesystem::path(*o.directory) /
           (shiftedFileNameForPath(input) + "." + format.extension);
}

Json shiftOne(Engine& engine, const ShiftOptions& o, const KVHueShiftParameterSet& set,
              const std::string& input, ProgressBar& progress, std::size_t index)
{
    const std::string name = std::filesystem::path(input).filename().string();
    const std::size_t first = index * kStepsPerImage;
    const OutputFormat format = formatFor(o, input);
    const std::filesystem::path output = outputPathFor(o, input, format);

    std::error_code absent;
    if (o.noClobber && !isStandardStream(output.string()) &&
        std::filesystem::exists(output, absent)) {
        return {{"input", jsonFileName(input)},
                {"output", jsonFileName(output.string())},
                {"skipped", true}};
    }
    Stopwatch clock;
    progress.update(first, "loading " + name);
    LoadedImage image = loadImageFile(input);
    KVBitmapPtr exclusion = image.exclusionMask;
    KVBitmapPtr inclusion = image.inclusionMask;
    if (o.exclusionMask) {
        exclusion =
            loadMaskFile(*o.exclusionMask, image.source->pixelsWide(), image.source->pixelsHigh());
    }
    if (o.inclusionMask) {
        inclusion =
            loadMaskFile(*o.inclusionMask, image.source->pixelsWide(), image.source->pixelsHigh());
    }
    const double loadMs = clock.lap();

    progress.update(first + 1, "colour table " + name);
    ShiftJob job(engine, image.source, set);
    job.setMasks(exclusion, inclusion);
    job.buildColorTable();
    const double tableMs = clock.lap();

    progress.update(first + 2, "gamut " + name);
    job.buildGamut();
    const double gamutMs = clock.lap();

    const HueShiftParameters record = job.engineRecord(kViews.at(o.view));
    // Counted before the source may be shifted in place; outside the timed steps. Mostly a pass
    // over the table, cheap enough to warn of an empty selection.
    const auto selection = job.countSelection(record, o.json);
    clock.lap();

    progress.update(first + 3, "shifting " + name);
    // Only a document or a re-shift needs the source once shifted; otherwise the source is
    // shifted in place, which spares a copy of the whole image and its fresh memory.
    const bool keepSource = isDocumentFormat(format) || o.repeat > 0;
    KVBitmapPtr result = job.shift(record, keepSource ? nullptr : image.source);
    const double shiftMs = clock.lap();

    std::vector<double> reshifts;
    for (unsigned i = 0; i < o.repeat; ++i) {
        // As the editor does on every slider change: table, gamut and destination kept.
        const HueShiftParameters again = job.engineRecord(kViews.at(o.view));
        clock.lap();
        result = job.shift(again, result);
        reshifts.push_back(clock.lap());
    }

    progress.update(first + 4, "saving " + name);
    clock.lap();
    std::vector<std::filesystem::path> inputs(o.inputs.begin(), o.inputs.end());
    for (const auto* mask : {&o.exclusionMask, &o.inclusionMask}) {
        if (*mask) {
            inputs.emplace_back(**mask);
        }
    }
    writeOutput(output, format,
                {result, image.source, exclusion, inclusion,
                 hexEncodedStringFromHueShiftParameters(record), &image.metadata},
                o.quality > 1.0 ? o.quality / 100.0 : o.quality, inputs);
    const double saveMs = clock.lap();
    progress.update(first + kStepsPerImage, "wrote " + output.filename().string());

    if (!o.json) {
        return {{"output", output.string()}, {"selectedPixels", selection.pixels}};
    }
    Json ms = {{"load", loadMs},
               {"table", tableMs},
               {"gamut", gamutMs},
               {"shift", shiftMs},
               {"save", saveMs}};
    if (!reshifts.empty()) {
        ms["reshift"] = median(reshifts);
    }
    return {{"input", jsonFileName(input)},
            {"output", jsonFileName(output.string())},
            {"width", image.source->pixelsWide()},
            {"height", image.source->pixelsHigh()},
            {"bitsPerSample", image.source->bitsPerSample()},
            {"distinctColors", selection.distinctColors},
            {"selectedColors", selection.colors},
            {"selectedPixels", selection.pixels},
            {"ms", ms}};
}

// Refuses, before anything is written, a folder run in which two inputs would be written to the
// same file (inputs of the same name from different folders, or one input given twice).
void refuseSharedOutputNames(const ShiftOptions& o)
{
    std::map<std::filesystem::path, std::string> claimed;
    for (const std::string& input : o.inputs) {
        const std::filesystem::path output =
            outputPathFor(o, input, formatFor(o, input)).lexically_normal();
        const auto [earlier, fresh] = claimed.emplace(output, input);
        if (!fresh) {
            failUsage("'" + earlier->second + "' and '" + input + "' would both be written to '" +
                      output.string() +
                      "'; shift them into different folders or rename one, nothing was written");
        }
    }
}

} // namespace

CommandRunner addShiftCommand(CLI::App& tool, const GlobalOptions& global)
{
    auto options = std::make_shared<ShiftOptions>();
    CLI::App* command = tool.add_subcommand(
        "shift", "Recolour images: move the selected hues towards the target and write the "
                 "results (or a view of the selection, or a Tintorra document)");
    command->footer(
        "Examples:\n  tintorra-cli shift photo.jpg -o photo-blue.png --hue-set Orange "
        "--target-hue 220\n  tintorra-cli shift *.tif -d shifted --hue 340:350:10:20 "
        "--target-hue 120 --format document --no-clobber\n  tintorra-cli shift - -o - --format "
        "png --hue-set Green --target-sat -0.5 < photo.png > muted.png\nWithout --target-hue the "
        "hues stay where they are; a run that selects no pixel warns on standard error. The "
        "input's "
        "EXIF, XMP and IPTC metadata are copied into the output, the pixels and their Orientation "
        "tag kept as they are. With --json, file names that are not valid UTF-8 are printed "
        "with each stray byte as \\xNN.");
    ShiftOptions& o = *options;
    command
        ->add_option("INPUT", o.inputs,
                     "image files (TIFF, PNG, JPEG, JPEG 2000, or a Tintorra document); - reads "
                     "one from standard input (with -o)")
        ->required();
    auto* out = command->add_option("-o,--output", o.output,
                                    "output file (one input only), - for standard output (with "
                                    "--format; messages then go to standard error); an existing "
                                    "file is replaced unless --no-clobber is given");
    auto* dir = command->add_option(
        "-d,--directory", o.directory,
        "output folder; each file is named after its input with \" (hue-shifted)\" and the "
        "format's extension, existing files are replaced unless --no-clobber is given, and a run "
        "in which two inputs would get the same name is refused before anything is written");
    command->add_flag("--no-clobber", o.noClobber,
                      "never replace an existing output file: skip that input and say so");
    out->excludes(dir);
    command->add_option("--view", o.view, "what to write: shifted|highlight|black-mask|white-mask")
        ->check(CLI::IsMember({"shifted", "highlight", "black-mask", "white-mask"}));
    command->add_option("--format", o.format,
                        "tiff|png|jpeg|jp2|document (default from the output's extension; "
                        "document = multi-page TIFF with source, masks and parameters)");
    command->add_option("--quality", o.quality,
                        "JPEG quality 0-100 (default 90); a value up to 1 is taken as a fraction, "
                        "so 0.8 is 80 and 1 is 100");
    command->add_option("--exclusion-mask", o.exclusionMask,
                        "image of the areas to keep unchanged (white = painted)");
    command->add_option("--inclusion-mask", o.inclusionMask,
                        "image of the only areas to change (white = painted)");
    command->add_option("--threads", o.threads, "worker threads (default: all processors)")
        ->check(CLI::Range(1u, 1024u));
    command->add_flag("--json", o.json, "print one JSON object of figures per image");
    command
        ->add_option("--repeat", o.repeat,
                     "re-run the shift N more times as the editor does on every change and "
                     "report their median as ms.reshift")
        ->check(CLI::Range(0u, 1000u));
    addParameterOptions(*command, o.parameters);

    return [command, options, &global]() -> int {
        const ShiftOptions& o = *options;
        if (!o.output && !o.directory) {
            failUsage("shift needs -o OUT or -d DIR");
        }
        if (o.output && o.inputs.size() > 1) {
            failUsage("-o takes one input, got " + std::to_string(o.inputs.size()) +
                      "; use -d DIR for several");
        }
        for (const std::string& input : o.inputs) {
            if (isStandardStream(input) && o.directory) {
                failUsage("standard input ('-') has no name to name an output after in -d DIR; "
                          "use -o FILE");
            }
        }
        if (!(o.quality >= 0.0 && o.quality <= 100.0)) {
            failUsage("--quality " + CLI::detail::to_string(o.quality) +
                      " is outside 0-100; give e.g. --quality 85");
        }
        const KVHueShiftParameterSet set = parameterSetFromOptions(o.parameters);
        // Usage errors in the format and clashing names are found before any work is done.
        formatFor(o, o.inputs.front());
        if (o.directory) {
            refuseSharedOutputNames(o);
        }
        if (o.directory) {
            std::error_code error;
            std::filesystem::create_directories(*o.directory, error);
            if (error) {
                failProcessing(*o.directory + ": cannot create the folder (" + error.message() +
                               "); choose a writable folder");
            }
        }
        ProgressBar progress(o.inputs.size() * kStepsPerImage, global.quiet || o.json);
        // With the image on standard output, figures and status lines go to standard error.
        std::FILE* messages = o.output && isStandardStream(*o.output) ? stderr : stdout;
        int status = kExitSuccess;
        Engine engine({o.threads});
        for (std::size_t i = 0; i < o.inputs.size(); ++i) {
            try {
                const Json figures = shiftOne(engine, o, set, o.inputs[i], progress, i);
                progress.clear();
                if (figures.contains("skipped")) {
                    if (o.json) {
                        printJson(figures, messages);
                    } else if (!global.quiet) {
                        printError(figures["output"].get<std::string>() +
                                   " exists, so it was kept and " + o.inputs[i] +
                                   " skipped (--no-clobber)");
                    }
                    continue;
                }
                if (figures["selectedPixels"] == 0 && !global.quiet) {
                    printError(
                        "warning: " + o.inputs[i] +
                        ": the selection takes no pixel, so the image is unchanged; widen "
                        "--hue, --sat or --light (see 'tintorra-cli spectrum' for its hues)");
                }
                if (o.json) {
                    printJson(figures, messages);
                } else if (!global.quiet) {
                    std::fprintf(messages, "%s -> %s\n", o.inputs[i].c_str(),
                                 figures["output"].get<std::string>().c_str());
                    std::fflush(messages);
                }
            } catch (const CliFailure& failure) {
                progress.clear();
                if (failure.exitCode() == kExitUsageError) {
                    throw;
                }
                printError(failure.what());
                status = kExitProcessingFailure;
            }
        }
        (void)command;
        return status;
    };
}

} // namespace tintorra::cli
