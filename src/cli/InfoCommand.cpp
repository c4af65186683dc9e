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
    const auto page = source.decodePage(0);
    if (!page) {
        failProcessing(withHint(path + ": " + page.error().message, ""));
    }
    const KVBitmap& bitmap = *page.value();
    const auto artist = source.stringProperty(kTiffTagArtist);
    const bool hasParameters = artist && artist->rfind(kHueShiftParametersPrefix, 0) == 0;
    bool document = false;
    if (source.format() == ImageFormat::tiff) {
        const DocumentImageReps reps = imageRepsWithTIFFData(data);
        // A single page that carries a parameter string has no source to go with it.
        document = source.pageCount() > 1 && reps.fileType.has_value() &&
                   isTintorraTIFF(*reps.fileType, reps.artistTag);
    }
    Json matrix = nullptr;
    if (bitmap.isRGB()) {
        Matrix3 m{};
        matrixFromColorSpace(m, &bitmap.colorSpace());
        matrix = Json::array();
        for (const double v : m) {
            matrix.push_back(jsonNumber(v));
        }
    }
    return {{"file", jsonFileName(path)},
            {"format", formatName(source.format())},
            {"pixelsWide", bitmap.pixelsWide()},
            {"pixelsHigh", bitmap.pixelsHigh()},
            {"bitsPerSample", bitmap.bitsPerSample()},
            {"samplesPerPixel", bitmap.samplesPerPixel()},
            {"hasAlpha", bitmap.hasAlpha()},
            {"premultiplied", bitmap.hasAlpha() && (bitmap.bitmapFormat() &
                                                    kBitmapFormatAlphaNonpremultiplied) == 0},
            {"planar", bitmap.isPlanar()},
            {"colorModel", colorModelName(bitmap.colorSpace().model())},
            {"isRGB", bitmap.isRGB()},
            {"profile", bitmap.colorSpace().hasIccProfile() ? Json(bitmap.colorSpace().name())
                                                            : Json(nullptr)},
            {"rgbToXyz", matrix},
            {"document", document},
            {"pages", source.pageCount()},
            {"params", document && hasParameters ? Json(*artist) : Json(nullptr)}};
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
