#include "cli/CliFailure.h"
#include "cli/Commands.h"
#include "cli/ImageJob.h"
#include "cli/JsonOutput.h"
#include "cli/ParameterOptions.h"
#include "cli/SpectrumPlot.h"
#include "imageio/ImageFile.h"

#include <cstdio>
#include <map>
#include <memory>

namespace tintorra::cli {

namespace {

struct SpectrumOptions {
    std::string file;
    std::string mode = "lchuv";
    double gamma = 2.2;
    bool csv = false;
    bool json = false;
    std::optional<std::string> plot;
    std::string graph = "spectrogram";
    bool log = false;
};

// Degrees of a hue in the table's unit: radians in the LCh modes, fractions otherwise.
double hueDegrees(double hue, bool lch)
{
    return lch ? hue * 180.0 / 3.14159265358979323846 : hue * 360.0;
}

void printCsv(const LChSpectrum& spectrum, bool lch)
{
    std::printf("band,count,hueMin,hueMax,hueMean,chromaMin,chromaMax,chromaMean,lightMin,"
                "lightMax,lightMean,alphaMin,alphaMax,alphaMean\n");
    for (std::size_t i = 0; i < spectrum.count; ++i) {
        const LChSpectrumBand& b = spectrum.bands[i];
        // %.9g gives every float back exactly.
        std::printf("%zu,%llu,%.9g,%.9g,%.9g,%.9g,%.9g,%.9g,%.9g,%.9g,%.9g,%.9g,%.9g,%.9g\n", i,
                    static_cast<unsigned long long>(b.count), hueDegrees(b.hueMinimum, lch),
                    hueDegrees(b.hueMaximum, lch), hueDegrees(b.hueMean, lch),
                    static_cast<double>(b.chromaMinimum), static_cast<double>(b.chromaMaximum),
                    static_cast<double>(b.chromaMean), static_cast<double>(b.lightnessMinimum),
                    static_cast<double>(b.lightnessMaximum), static_cast<double>(b.lightnessMean),
                    static_cast<double>(b.alphaMinimum), static_cast<double>(b.alphaMaximum),
                    static_cast<double>(b.alphaMean));
    }
}

Json spectrumJson(const std::string& file, ColorSpaceModel mode, const LChSpectrum& spectrum,
                  bool lch)
{
    Json bands = Json::array();
    for (std::size_t i = 0; i < spectrum.count; ++i) {
        const LChSpectrumBand& b = spectrum.bands[i];
        bands.push_back({{"band", i},
                         {"count", b.count},
                         {"hue",
                          {hueDegrees(b.hueMinimum, lch), hueDegrees(b.hueMaximum, lch),
                           hueDegrees(b.hueMean, lch)}},
                         {"chroma", {b.chromaMinimum, b.chromaMaximum, b.chromaMean}},
                         {"lightness", {b.lightnessMinimum, b.lightnessMaximum, b.lightnessMean}},
                         {"alpha", {b.alphaMinimum, b.alphaMaximum, b.alphaMean}}});
    }
    return {{"file", jsonFileName(file)}, {"mode", colorModeName(mode)}, {"bands", bands}};
}

} // namespace

CommandRunner addSpectrumCommand(CLI::App& tool, const GlobalOptions&)
{
    auto options = std::make_shared<SpectrumOptions>();
    SpectrumOptions& o = *options;
    CLI::App* command = tool.add_subcommand(
        "spectrum", "Print an image's 361-band hue spectrum (JSON, or CSV with --csv) and "
                    "optionally plot it as the spectrogram does");
    command->footer("Bands 0..359 are whole degrees of hue, band 360 the achromatic colours. "
                    "Hues are printed in degrees; ranges as min, max, mean.\nExamples:\n"
                    "  tintorra-cli spectrum photo.tif --csv\n"
                    "  tintorra-cli spectrum photo.tif --plot spectrum.png --graph chroma");
    command->add_option("FILE", o.file, "an image file; - reads one from standard input")
        ->required();
    command->add_option("--mode", o.mode, "colour mode: lchuv|lchab|hcl|hsb|hsl (default lchuv)");
    command->add_option("--gamma", o.gamma, "display gamma (default 2.2)")
        ->check(CLI::PositiveNumber);
    command->add_flag("--csv", o.csv,
                      "CSV: band,count,hueMin,hueMax,hueMean,chromaMin,chromaMax,chromaMean,"
                      "lightMin,lightMax,lightMean,alphaMin,alphaMax,alphaMean");
    command->add_flag("--json", o.json, "print the spectrum as JSON (the default without --plot)");
    auto* plot = command->add_option("--plot", o.plot,
                                     "write the spectrogram as a PNG file with a hue axis in "
                                     "degrees, a value axis and a legend; nothing is printed "
                                     "then unless --json or --csv asks for it");
    command->add_option("--graph", o.graph, "spectrogram|lightness|chroma|saturation")
        ->check(CLI::IsMember({"spectrogram", "lightness", "chroma", "saturation"}))
        ->needs(plot);
    command->add_flag("--log", o.log, "spectrogram heights on a log10 scale")->needs(plot);

    return [options]() -> int {
        const SpectrumOptions& o = *options;
        const auto mode = colorModeNamed(o.mode);
        if (!mode) {
            failUsage("--mode '" + o.mode +
                      "' is not a colour mode; use lchuv, lchab, hcl, hsb "
                      "or hsl");
        }
        const bool lch = isLchColorMode(*mode);
        if (o.plot && !lch) {
            failUsage("--plot draws the LCh modes only; use --mode lchuv or lchab");
        }
        const LoadedImage image = loadImageFile(o.file);
        KVHueShiftParameterSet set;
        set.setColorSpaceModel(*mode);
        set.setDisplayGamma(o.gamma);
        Engine engine;
        ShiftJob job(engine, image.source, set);
        job.buildColorTable();
        if (o.plot) {
            job.buildGamut();
            const std::map<std::string, SpectrumGraph> graphs{
                {"spectrogram", SpectrumGraph::spectrogram},
                {"lightness", SpectrumGraph::lightness},
                {"chroma", SpectrumGraph::chroma},
                {"saturation", SpectrumGraph::saturation}};
            const KVBitmapPtr picture =
                drawSpectrumPlot(job.spectrum(), *job.gamut(), image.source->colorSpace(),
                                 graphs.at(o.graph), o.log);
            if (!picture) {
                failProcessing("not enough memory for the plot");
            }
            const IOStatus written =
                writeImageFile(*o.plot, *picture, ImageFormat::png, {}, {o.file});
            if (!written) {
                failProcessing(*o.plot + ": " + written.error().message);
            }
        }
        if (o.csv) {
            printCsv(job.spectrum(), lch);
        } else if (o.json || !o.plot) {
            printJson(spectrumJson(o.file, *mode, job.spectrum(), lch));
        }
        return kExitSuccess;
    };
}

} // namespace tintorra::cli
