#pragma once

#include "image/KVBitmap.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tintorra::cli {

// What `shift` can write: an image format, or the Tintorra document.
struct OutputFormat {
    // The file type (a public image type or the document's own type).
    std::string type;
    // The extension the type's files get.
    std::string extension;
};

// Whether the format is the document, which keeps the source beside the shifted image.
bool isDocumentFormat(const OutputFormat& format);

// Whether files of both formats are encoded alike (a document is a TIFF).
bool sameFileFormat(const OutputFormat& a, const OutputFormat& b);

// "tiff", "png", "jpeg", "jp2" or "document"; nothing for other names.
std::optional<OutputFormat> outputFormatNamed(const std::string& name);
// The format a file name's extension stands for; nothing for an unknown extension.
std::optional<OutputFormat> outputFormatForPath(const std::filesystem::path& path);

class PhotoMetadata;

struct OutputImages {
    KVBitmapPtr shifted;
    KVBitmapPtr source;
    KVBitmapPtr exclusionMask;
    KVBitmapPtr inclusionMask;
    std::string parameters;
    // The input's EXIF, XMP and IPTC, added to the file when given.
    const PhotoMetadata* metadata = nullptr;
};

// Writes the shifted image (or the document) atomically, or to standard output for "-"; never
// over one of `inputs`. Throws a
// processing CliFailure naming the file on failure, having written nothing.
void writeOutput(const std::filesystem::path& path, const OutputFormat& format,
                 const OutputImages& images, double quality,
                 const std::vector<std::filesystem::path>& inputs);

} // namespace tintorra::cli
