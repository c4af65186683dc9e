#include "cli/OutputFormats.h"

#include "cli/CliFailure.h"
#include "cli/PhotoMetadata.h"
#include "cli/StandardStreams.h"
#include "imageio/AtomicFileWriter.h"
#include "imageio/DocumentFile.h"
#include "imageio/ImageFile.h"
#include "imageio/ImageTypes.h"

#include <algorithm>
#include <cctype>

namespace tintorra::cli {

bool isDocumentFormat(const OutputFormat& format)
{
    return format.type == TintorraTIFFType;
}

bool sameFileFormat(const OutputFormat& a, const OutputFormat& b)
{
    return formatForType(a.type) == formatForType(b.type);
}

std::optional<OutputFormat> outputFormatNamed(const std::string& name)
{
    if (name == "tiff") {
        return OutputFormat{std::string(kTypeTIFF), "tiff"};
    }
    if (name == "png") {
        return OutputFormat{std::string(kTypePNG), "png"};
    }
    if (name == "jpeg") {
        return OutputFormat{std::string(kTypeJPEG), "jpeg"};
    }
    if (name == "jp2") {
        return OutputFormat{std::string(kTypeJPEG2000), "jp2"};
    }
    if (name == "document") {
        return OutputFormat{std::string(TintorraTIFFType), "tiff"};
    }
    return std::nullopt;
}

std::optional<OutputFormat> outputFormatForPath(const std::filesystem::path& path)
{
    std::string extension = path.extension().string();
    if (!extension.empty()) {
        extension.erase(0, 1);
    }
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    const auto type = typeForExtension(extension);
    if (!type || !formatForType(*type)) {
        return std::nullopt;
    }
    const auto format = *formatForType(*type);
    if (format != ImageFormat::tiff && format != ImageFormat::png && format != ImageFormat::jpeg &&
        format != ImageFormat::jpeg2000) {
        return std::nullopt;
    }
    return OutputFormat{*type, extension};
}

namespace {

DocumentImages documentOf(const OutputImages& images)
{
    DocumentImages document;
    document.outputImageRep = images.shifted;
    document.inputImageRep = images.source;
    document.exclusionMaskRep = images.exclusionMask;
    document.inclusionMaskRep = images.inclusionMask;
    document.hueShiftParameters = images.parameters;
    return document;
}

// The file's bytes, for standard output: nothing is written before the whole file is made.
std::vector<std::uint8_t> encodedOutput(const std::string& name, const OutputFormat& format,
                                        const OutputImages& images, double quality)
{
    if (isDocumentFormat(format)) {
        const DocumentImages document = documentOf(images);
        KVError error;
        auto data = dataOfType(format.type, &document, &error);
        if (!data) {
            failProcessing(withHint(name + ": " + error.localizedDescription,
                                    error.localizedRecoverySuggestion));
        }
        return std::move(*data);
    }
    EncodeOptions options;
    options.quality = quality;
    auto bytes = encodeImage(*images.shifted, *formatForType(format.type), options);
    if (!bytes) {
        failProcessing(withHint(name + ": " + bytes.error().message, ""));
    }
    return bytes.take();
}

} // namespace

void writeOutput(const std::filesystem::path& path, const OutputFormat& format,
                 const OutputImages& images, double quality,
                 const std::vector<std::filesystem::path>& inputs)
{
    const bool metadata = images.metadata != nullptr && !images.metadata->empty();
    if (isStandardStream(path.string()) || metadata) {
        const bool toStandardOutput = isStandardStream(path.string());
        const std::string name = toStandardOutput ? "standard output" : path.string();
        std::vector<std::uint8_t> bytes = encodedOutput(name, format, images, quality);
        if (metadata) {
            bytes = images.metadata->addTo(std::move(bytes), format);
        }
        if (toStandardOutput) {
            writeStandardOutput(bytes);
            return;
        }
        const IOStatus written = writeFileAtomically(path, bytes, inputs);
        if (!written) {
            failProcessing(withHint(path.string() + ": " + written.error().message, ""));
        }
        return;
    }
    if (isDocumentFormat(format)) {
        const DocumentImages document = documentOf(images);
        KVError error;
        if (!saveDocument(path, format.type, document, inputs, &error)) {
            failProcessing(withHint(path.string() + ": " + error.localizedDescription,
                                    error.localizedRecoverySuggestion));
        }
        return;
    }
    EncodeOptions options;
    options.quality = quality;
    const IOStatus written =
        writeImageFile(path, *images.shifted, formatForType(format.type), options, inputs);
    if (!written) {
        failProcessing(path.string() + ": " + written.error().message);
    }
}

} // namespace tintorra::cli
