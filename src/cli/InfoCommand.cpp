#include "cli/CliFailure.h"
#include "cli/Commands.h"
#include "cli/JsonOutput.h"
#include "cli/StandardStreams.h"
#include "colour/ColorMatrices.h"
#include "imageio/DocumentFile.h"
#include "imageio/ImageFile.h"

#include <memory>

namespace tintorra::cli {

namespace {

constexpr int kTiffTagSoftware = 305;
constexpr int kTiffTagArtist = 315;

const char* formatName(ImageFormat format)
{
    switch (format) {
    case ImageFormat::tiff:
        return "tiff";
    case ImageFormat::png:
        return "png";
    case ImageFormat::jpeg:
        return "jpeg";
    case ImageFormat::jpeg2000:
        return "jp2";
    case ImageFormat::bmp:
        return "bmp";
    case ImageFormat::gif:
        return "gif";
    }
    return "unknown";
}

const char* colorModelName(KVColorSpaceModel model)
{
    switch (model) {
    case KVColorSpaceModel::gray:
        return "gray";
    case KVColorSpaceModel::rgb:
        return "rgb";
    case KVColorSpaceModel::cmyk:
        return "cmyk";
    case KVColorSpaceModel::lab:
        return "lab";
    case KVColorSpaceModel::deviceN:
        return "deviceN";
    case KVColorSpaceModel::indexed:
        return "indexed";
    case KVColorSpaceModel::pattern:
        return "pattern";
    case KVColorSpaceModel::unknown:
        break;
    }
    return "unknown";
}

Json describeFile(const std::string& path)
{
    const std::vector<std::uint8_t> data = readInputBytes(path);
    auto opened = ImageSource::open(data);
    if (!opened) {
        failProcessing(withHint(path + ": " + opened.error().message, ""));
    }
    ImageSource& source = opened.value();
    // From the headers alone: a large photograph is described without decoding its pixels.
    const auto page = source.describePage(0);
    if (!page) {
        failProcessing(withHint(path + ": " + page.error().message, ""));
    }
    const KVBitmapLayout& layout = page.value().layout;
    const KVColorSpace& colorSpace = page.value().colorSpace;
    const auto artist = source.stringProperty(kTiffTagArtist);
    const bool hasParameters = artist && artist->rfind(kHueShiftParametersPrefix, 0) == 0;
    // The document's own test, less its decoding: a single page that carries a parameter
    // string has no source to go with it.
    const bool document = source.format() == ImageFormat::tiff && source.pageCount() > 1 &&
                          hasParameters &&
                          source.stringProperty(kTiffTagSoftware) == kTintorraSoftware;
    const bool rgb = colorSpace.model() == KVColorSpaceModel::rgb;
    Json matrix = nullptr;
    if (rgb) {
        Matrix3 m{};
        matrixFromColorSpace(m, &colorSpace);
        matrix = Json::array();
        for (const double v : m) {
            matrix.push_back(jsonNumber(v));
        }
    }
    return {{"file", jsonFileName(path)},
            {"format", formatName(source.format())},
            {"pixelsWide", layout.pixelsWide},
            {"pixelsHigh", layout.pixelsHigh},
            {"bitsPerSample", layout.bitsPerSample},
            {"samplesPerPixel", layout.samplesPerPixel},
            {"hasAlpha", layout.hasAlpha},
            {"premultiplied",
             layout.hasAlpha && (layout.bitmapFormat & kBitmapFormatAlphaNonpremultiplied) == 0},
            {"planar", layout.isPlanar},
            {"colorModel", colorModelName(colorSpace.model())},
            {"isRGB", rgb},
            {"profile", colorSpace.hasIccProfile() ? Json(colorSpace.name()) : Json(nullptr)},
            {"rgbToXyz", matrix},
            {"document", document},
            {"pages", source.pageCount()},
            {"params", document ? Json(*artist) : Json(nullptr)}};
}

} // namespace

CommandRunner addInfoCommand(CLI::App& tool, const GlobalOptions&)
{
    auto files = std::make_shared<std::vector<std::string>>();
    CLI::App* command = tool.add_subcommand(
        "info", "Describe image files and Tintorra documents as JSON, one object per file");
    command->add_option("FILE", *files, "image files; - reads one from standard input")->required();
    command->footer("Example:\n  tintorra-cli info photo.tiff\n  tintorra-cli info - < photo.png\n"
                    "File names that are not valid UTF-8 are printed with each stray byte as "
                    "\\xNN.");
    return [files]() -> int {
        int status = kExitSuccess;
        for (const std::string& file : *files) {
            try {
                printJson(describeFile(file));
            } catch (const CliFailure& failure) {
                printError(failure.what());
                status = kExitProcessingFailure;
            }
        }
        return status;
    };
}

} // namespace tintorra::cli
