#include "cli/CliFailure.h"
#include "cli/Commands.h"
#include "cli/ImageJob.h"
#include "cli/OutputFormats.h"
#include "cli/ParameterOptions.h"
#include "cli/SampleImage.h"
#include "cli/SpectrumPlot.h"
#include "controls/ParameterEncoding.h"
#include "editor/ShiftRecordEncoding.h"
#include "imageio/AtomicFileWriter.h"
#include "imageio/ImageFile.h"

#include <cstdio>
#include <filesystem>
#include <memory>

namespace tintorra::cli {

namespace {

// The demo's selection: the arc the icon lifts out of its hue ring (15 to 75 degrees), moved to
// the blue of the icon's centre.
KVHueShiftParameterSet demoParameters()
{
    ParameterOptions options;
    options.hue = "5:15:75:85";
    options.targetHue = 250.0;
    return parameterSetFromOptions(options);
}

} // namespace

CommandRunner addDemoCommand(CLI::App& tool, const GlobalOptions& global)
{
    auto folder = std::make_shared<std::string>("tintorra-demo");
    CLI::App* command = tool.add_subcommand(
        "demo", "Run the main job on the built-in sample image (the application icon) and write "
                "the source, the shifted result, the three mask views, a spectrogram plot and a "
                "Tintorra document into DIR");
    command->add_option("DIR", *folder, "output folder (default ./tintorra-demo)");

    return [folder, &global]() -> int {
        const std::filesystem::path dir = *folder;
        std::error_code error;
        std::filesystem::create_directories(dir, error);
        if (error) {
            failProcessing(dir.string() + ": cannot create the folder (" + error.message() +
                           "); choose a writable folder");
        }
        const auto report = [&global](const std::filesystem::path& path, const char* what) {
            if (!global.quiet) {
                std::printf("%-28s %s\n", path.string().c_str(), what);
                std::fflush(stdout);
            }
        };

        const auto sourcePath = dir / "source.png";
        const IOStatus copied = writeFileAtomically(sourcePath, kSampleImagePng);
        if (!copied) {
            failProcessing(sourcePath.string() + ": " + copied.error().message);
        }
        report(sourcePath, "the sample image (the application icon, 1024 x 1024)");

        const LoadedImage image = loadImageData(kSampleImagePng, "the sample image");
        Engine engine;
        ShiftJob job(engine, image.source, demoParameters());
        job.buildColorTable();
        job.buildGamut();

        const auto png = *outputFormatNamed("png");
        struct View {
            MaskView mask;
            const char* file;
            const char* what;
        };
        const View views[] = {
            {MaskView::shiftedImage, "shifted.png", "hues 15..75 degrees moved to 250 degrees"},
            {MaskView::selectionHighlight, "highlight.png", "the selection highlighted"},
            {MaskView::blackMask, "black-mask.png", "the selection as a black mask"},
            {MaskView::whiteMask, "white-mask.png", "the selection as a white mask"},
        };
        KVBitmapPtr shifted;
        for (const View& view : views) {
            const HueShiftParameters record = job.engineRecord(view.mask);
            const KVBitmapPtr result = job.shift(record, nullptr);
            if (view.mask == MaskView::shiftedImage) {
                shifted = result;
            }
            const auto path = dir / view.file;
            writeOutput(path, png, {result, image.source, nullptr, nullptr, ""}, 0.9, {});
            report(path, view.what);
        }

        const auto plotPath = dir / "spectrogram.png";
        const KVBitmapPtr plot =
            drawSpectrumPlot(job.spectrum(), *job.gamut(), image.source->colorSpace(),
                             SpectrumGraph::spectrogram, true);
        if (!plot) {
            failProcessing("not enough memory for the spectrogram plot");
        }
        const IOStatus plotted = writeImageFile(plotPath, *plot, ImageFormat::png);
        if (!plotted) {
            failProcessing(plotPath.string() + ": " + plotted.error().message);
        }
        report(plotPath, "the hue spectrum of the sample image (log10 scale)");

        const auto documentPath = dir / "document.tiff";
        writeOutput(
            documentPath, *outputFormatNamed("document"),
            {shifted, image.source, nullptr, nullptr,
             hexEncodedStringFromHueShiftParameters(job.engineRecord(MaskView::shiftedImage))},
            0.9, {});
        report(documentPath, "a Tintorra document (shifted, source, parameters)");
        return kExitSuccess;
    };
}

} // namespace tintorra::cli
