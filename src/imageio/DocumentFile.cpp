#include "imageio/DocumentFile.h"

#include "common/Diagnostics.h"
#include "imageio/AtomicFileWriter.h"
#include "imageio/ImageTypes.h"
#include "imageio/TiffWriter.h"

#include <tiffio.h>

#include <cstdio>
#include <ctime>

namespace tintorra {

namespace {

void logLine(const char* text)
{
    diagnostic("%s\n", text);
}

bool beginsWith(const std::optional<std::string>& text, std::string_view prefix)
{
    return text && text->compare(0, prefix.size(), prefix) == 0;
}

bool isEmpty(const std::optional<std::string>& text)
{
    return !text || text->empty();
}

IOResult<std::vector<std::uint8_t>> plainEncoding(const DocumentImages& images, ImageFormat format)
{
    if (!images.outputImageRep)
        return ioError("There is no shifted image.");
    return encodeImage(*images.outputImageRep, format);
}

} // namespace

DocumentImageReps imageRepsWithData(std::span<const std::uint8_t> data, std::string_view type)
{
    if (typeConformsTo(type, kTypeTIFF))
        return imageRepsWithTIFFData(data);
    DocumentImageReps reps;
    IOResult<KVBitmapPtr> bitmap = decodeImage(data);
    if (bitmap)
        reps.imageReps.push_back(bitmap.take());
    else
        reps.failureReason = bitmap.error().message;
    return reps;
}

std::optional<std::string> stringFromTag(int tiffTag, const ImageSource* source)
{
    if (!source)
        return std::nullopt;
    return source->stringProperty(tiffTag);
}

DocumentImageReps imageRepsWithTIFFData(std::span<const std::uint8_t> data)
{
    DocumentImageReps reps;
    IOResult<ImageSource> opened = ImageSource::open(data);
    if (!opened) {
        reps.failureReason = opened.error().message;
        return reps;
    }
    ImageSource& source = opened.value();
    const std::size_t pages = source.pageCount();

    std::size_t page = 0;
    if (pages >= 2 && stringFromTag(TIFFTAG_SOFTWARE, &source) == kTintorraSoftware) {
        std::optional<std::string> artist = stringFromTag(TIFFTAG_ARTIST, &source);
        if (beginsWith(artist, kHueShiftParametersPrefix)) {
            reps.artistTag = std::move(artist);
            reps.fileType = std::string(TintorraTIFFType);
            page = 1;
        }
    }

    IOResult<KVBitmapPtr> first = source.decodePage(page);
    if (!first) {
        reps.failureReason = first.error().message;
        return reps;
    }
    reps.imageReps.push_back(first.take());
    if (page == 1) {
        // Masks: page 2 (exclusion), then page 3 (inclusion) only after page 2.
        for (std::size_t mask = 2; mask <= 3 && mask < pages; ++mask) {
            IOResult<KVBitmapPtr> bitmap = source.decodePage(mask);
            if (!bitmap)
                break;
            reps.imageReps.push_back(bitmap.take());
        }
    }
    return reps;
}

std::optional<DocumentImageReps> readFromData(std::span<const std::uint8_t> data,
                                              std::string_view type, KVError* error)
{
    DocumentImageReps reps = imageRepsWithData(data, type);
    if (reps.imageReps.empty() || !reps.imageReps.front()) {
        logLine(kNoBitmapFromDataMessage);
        return std::nullopt;
    }
    if (!reps.imageReps.front()->isRGB()) {
        if (error)
            *error = notRGBImageFileError();
        return std::nullopt;
    }
    return reps;
}

bool isTintorraTIFF(std::string_view fileType, const std::optional<std::string>& artistTag)
{
    return fileType == TintorraTIFFType || !isEmpty(artistTag);
}

std::string exifDateTimeString(std::time_t time)
{
    std::tm local{};
    localtime_r(&time, &local);
    char text[32];
    std::strftime(text, sizeof text, "%Y:%m:%d %H:%M:%S", &local);
    return text;
}

std::optional<std::vector<std::uint8_t>>
multiPageTIFFRepresentationWithMetadata(const DocumentImages& images)
{
    return multiPageTIFFRepresentationWithMetadata(images, std::time(nullptr));
}

std::optional<std::vector<std::uint8_t>>
multiPageTIFFRepresentationWithMetadata(const DocumentImages& images, std::time_t savedAt)
{
    const auto writable = [](const KVBitmapPtr& bitmap) {
        return bitmap && !tiffPageProblem(*bitmap);
    };
    if (!writable(images.outputImageRep) || !writable(images.inputImageRep))
        return std::nullopt;
    std::vector<const KVBitmap*> pages{images.outputImageRep.get(), images.inputImageRep.get()};
    // An inclusion mask is kept only after an exclusion mask, as the reader takes page 3 only
    // after page 2.
    if (writable(images.exclusionMaskRep)) {
        pages.push_back(images.exclusionMaskRep.get());
        if (writable(images.inclusionMaskRep))
            pages.push_back(images.inclusionMaskRep.get());
    }

    TiffWriter writer(needsBigTiff(pages));
    if (!writer.isOpen()) {
        logLine(kNoImageDestinationMessage);
        return writer.finish();
    }
    TiffPageProperties properties;
    properties.dateTimeDigitized = exifDateTimeString(savedAt);
    properties.software = std::string(kTintorraSoftware);
    properties.artist = images.hueShiftParameters;
    bool written = writer.addPage(*pages[0], properties).ok();
    for (std::size_t i = 1; written && i < pages.size(); ++i)
        written = writer.addPage(*pages[i]).ok();
    std::vector<std::uint8_t> bytes = writer.finish();
    if (!written || writer.failed())
        logLine(kNoDataFromDestinationMessage);
    return bytes;
}

std::optional<std::vector<std::uint8_t>> dataForUTI(std::string_view type,
                                                    const DocumentImages& images)
{
    if (typeConformsTo(type, TintorraTIFFType))
        return multiPageTIFFRepresentationWithMetadata(images);
    ImageFormat format = ImageFormat::tiff;
    if (typeConformsTo(type, kTypeTIFF))
        format = ImageFormat::tiff;
    else if (typeConformsTo(type, kTypePNG))
        format = ImageFormat::png;
    else if (typeConformsTo(type, kTypeJPEG))
        format = ImageFormat::jpeg;
    else if (typeConformsTo(type, kTypeJPEG2000))
        format = ImageFormat::jpeg2000;
    else
        return std::nullopt;
    IOResult<std::vector<std::uint8_t>> bytes = plainEncoding(images, format);
    if (!bytes)
        return std::nullopt;
    return bytes.take();
}

std::optional<std::vector<std::uint8_t>> dataOfType(std::string_view type,
                                                    const DocumentImages* images, KVError* error)
{
    if (!images)
        return std::nullopt;
    std::optional<std::vector<std::uint8_t>> data = dataForUTI(type, *images);
    if (data)
        return data;
    if (error)
        *error = cannotSaveInFormatError();
    return std::nullopt;
}

bool saveDocument(const std::filesystem::path& path, std::string_view type,
                  const DocumentImages& images,
                  const std::vector<std::filesystem::path>& protectedFiles, KVError* error)
{
    const std::optional<std::vector<std::uint8_t>> data = dataOfType(type, &images, error);
    if (!data)
        return false;
    const IOStatus written = writeFileAtomically(path, *data, protectedFiles);
    if (!written && error)
        *error = {TintorraErrorDomain, kTintorraErrorCannotSave, "The file could not be written.",
                  written.error().message};
    return written.ok();
}

} // namespace tintorra
