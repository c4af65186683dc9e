#pragma once

#include "image/KVBitmap.h"
#include "imageio/ImageErrors.h"
#include "imageio/ImageFile.h"
#include "imageio/ImageIOResult.h"

#include <cstdint>
#include <ctime>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// The image document's file layer: what the document reads from image data, and the data it
// writes, including the program's own multi-page TIFF that keeps source, masks and parameters.

namespace tintorra {

// The TIFF Software property that marks the program's own file.
inline constexpr std::string_view kTintorraSoftware = "Tintorra by velmora";
// Every parameter string begins with this key.
inline constexpr std::string_view kHueShiftParametersPrefix = "tolm";

inline constexpr const char* kNoBitmapFromDataMessage = "Couldn't get bitmap image from image data";
inline constexpr const char* kNoImageDestinationMessage =
    "***Could not create image destination ***";
inline constexpr const char* kNoDataFromDestinationMessage =
    "***Could not create data from image destination ***";

// What reading image data gives the document.
struct DocumentImageReps {
    // The source image, then (from the program's own file) the exclusion and inclusion masks.
    std::vector<KVBitmapPtr> imageReps;
    // The parameter string of the program's own file (its TIFF Artist property).
    std::optional<std::string> artistTag;
    // TintorraTIFFType when the data is the program's own file; the document takes it as its
    // file type.
    std::optional<std::string> fileType;
    // Why no image came out, for callers that can show it (the document itself only logs).
    std::string failureReason;
};

// A type conforming to TIFF goes to imageRepsWithTIFFData; any other gives the first image of
// the data (recognised by content), or nothing.
DocumentImageReps imageRepsWithData(std::span<const std::uint8_t> data, std::string_view type);

// The program's own file (at least 2 pages, Software exactly kTintorraSoftware, Artist beginning
// with "tolm") opens with page 1 as source and pages 2 and 3 as masks, in order, ending silently
// at the first that fails; any other file opens with its page 0 alone.
DocumentImageReps imageRepsWithTIFFData(std::span<const std::uint8_t> data);

// A copy of a TIFF text property of page 0, or nothing (also when there is no source).
std::optional<std::string> stringFromTag(int tiffTag, const ImageSource* source);

// The document's reading: the image reps when the first one is RGB. When the data gives no
// bitmap, logs kNoBitmapFromDataMessage and fails without an error of its own; when the image is
// not RGB, fails with notRGBImageFileError() (written to `error` when given).
std::optional<DocumentImageReps> readFromData(std::span<const std::uint8_t> data,
                                              std::string_view type, KVError* error);

// True when the document's file type is the program's own, or a parameter string was read.
bool isTintorraTIFF(std::string_view fileType, const std::optional<std::string>& artistTag);

// The images and parameters a document saves.
struct DocumentImages {
    KVBitmapPtr outputImageRep;
    KVBitmapPtr inputImageRep;
    KVBitmapPtr exclusionMaskRep;
    KVBitmapPtr inclusionMaskRep;
    // The editor's encoded parameters (they begin with "tolm").
    std::string hueShiftParameters;
};

// "yyyy:MM:dd HH:mm:ss" in local time, as EXIF writes dates.
std::string exifDateTimeString(std::time_t time);

// The program's own file: page 0 the shifted image with EXIF DateTimeDigitized (`savedAt`),
// TIFF Software and Artist (the parameters); page 1 the source; page 2 the exclusion mask if
// there is one; page 3 the inclusion mask only after an exclusion mask. Every page LZW. Nothing
// when the output or the input cannot be had; after a failure while writing, what was written.
std::optional<std::vector<std::uint8_t>>
multiPageTIFFRepresentationWithMetadata(const DocumentImages& images, std::time_t savedAt);
std::optional<std::vector<std::uint8_t>>
multiPageTIFFRepresentationWithMetadata(const DocumentImages& images);

// The data the document saves for a type: its own file for TintorraTIFFType, the shifted image
// as LZW TIFF, PNG, JPEG (quality 0.9) or JPEG 2000 for those types, nothing for any other.
std::optional<std::vector<std::uint8_t>> dataForUTI(std::string_view type,
                                                    const DocumentImages& images);

// The document's writing. No images (no window yet) gives nothing and no error; a type that
// gives no data fails with cannotSaveInFormatError() (written to `error` when given).
std::optional<std::vector<std::uint8_t>> dataOfType(std::string_view type,
                                                    const DocumentImages* images, KVError* error);

// dataOfType written atomically to `path`. `protectedFiles` (the source image's file, for
// instance) are never overwritten. On failure `error` holds the save-format error, or the reason
// the file could not be written.
bool saveDocument(const std::filesystem::path& path, std::string_view type,
                  const DocumentImages& images,
                  const std::vector<std::filesystem::path>& protectedFiles, KVError* error);

} // namespace tintorra
