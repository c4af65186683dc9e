#pragma once

#include "image/KVBitmap.h"
#include "imageio/ImageIOResult.h"
#include "imageio/TiffIO.h"

#include <optional>
#include <string>
#include <vector>

namespace tintorra {

// Text properties a page may carry besides its image.
struct TiffPageProperties {
    std::optional<std::string> software;
    std::optional<std::string> artist;
    // EXIF DateTimeDigitized, "yyyy:MM:dd HH:mm:ss".
    std::optional<std::string> dateTimeDigitized;
};

// Builds a TIFF file in memory, one page per bitmap, each LZW-compressed with horizontal
// differencing, in the bitmap's own layout (planar stays planar, 16 bits stay 16 bits,
// associated alpha stays associated), with its ICC profile and resolution.
class TiffWriter {
public:
    // `bigTiff` for files that may pass 4 GiB.
    explicit TiffWriter(bool bigTiff = false);
    TiffWriter(const TiffWriter&) = delete;
    TiffWriter& operator=(const TiffWriter&) = delete;

    // False when the file could not even be started.
    bool isOpen() const { return tiff_ != nullptr; }

    IOStatus addPage(const KVBitmap& bitmap, const TiffPageProperties& properties = {});

    // Completes the file and hands over its bytes; what was written so far even after a failure.
    std::vector<std::uint8_t> finish();

    // True when a page failed or the file could not be completed.
    bool failed() const { return failed_; }

private:
    IOStatus writeExifDirectory(const std::string& dateTimeDigitized, std::uint64_t& offset);
    IOStatus fail(const std::string& message);

    TiffMemorySink sink_;
    TiffHandle tiff_;
    bool failed_ = false;
};

// Why the bitmap cannot be a TIFF page (depth, sample format or colour model); nothing when it
// can.
std::optional<std::string> tiffPageProblem(const KVBitmap& bitmap);

// Whether the bitmaps' samples together may make a TIFF file larger than 4 GiB.
bool needsBigTiff(const std::vector<const KVBitmap*>& bitmaps);

} // namespace tintorra
