#pragma once

#include <tiffio.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace tintorra {

struct TiffCloser {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using TiffHandle = std::unique_ptr<TIFF, TiffCloser>;

// The bytes of a TIFF file in memory, read through libtiff's client interface. libtiff maps the
// bytes instead of copying strips out of them. Errors libtiff reports for this handle are kept
// here instead of going to the process-wide handler.
struct TiffMemorySource {
    std::span<const std::uint8_t> data;
    std::uint64_t position = 0;
    std::string lastError;
};

// A growing buffer libtiff writes a TIFF file into (it also reads back and seeks while writing
// directories).
struct TiffMemorySink {
    std::vector<std::uint8_t> bytes;
    std::uint64_t position = 0;
    bool outOfMemory = false;
    std::string lastError;
};

// Opens the data for reading; nullptr (with source.lastError set) when it is no TIFF file.
TiffHandle openTiffSource(TiffMemorySource& source);

// Opens an empty TIFF file for writing; BigTIFF when the data may pass 4 GiB.
TiffHandle openTiffSink(TiffMemorySink& sink, bool bigTiff);

} // namespace tintorra
