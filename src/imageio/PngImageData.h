#pragma once

#include "imageio/PngChunks.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tintorra {

// The image data of a non-interlaced PNG image of 8 or 16 bits per sample: its rows, each
// filtered and preceded by its filter's number, in one zlib stream.

// Rows up to this size are read and written here; longer ones, far beyond any photograph's,
// are left to libpng, so that every count fits ISA-L's 32-bit sizes.
inline constexpr std::size_t kLargestPngRowBytes = std::size_t{1} << 28;

// How the rows are stored.
struct PngRowLayout {
    std::uint32_t rows = 0;
    // Bytes of one row without its filter number.
    std::size_t rowBytes = 0;
    // 1 to 8: the distance the row filters look left.
    unsigned bytesPerPixel = 0;
    // 16-bit samples, which the file stores big-endian.
    bool sixteenBit = false;
};

// Inflates the zlib stream in `chunks`, undoes the row filters and writes row y (from the top) to
// rows + y * stride, 16-bit samples in the machine's byte order. False when the data is not
// exactly the image's rows in a sound zlib stream: a bad header or Huffman code, too few or too
// many bytes, an unknown filter, a wrong Adler-32, data after the end of the stream. The rows
// are then undefined.
bool readPngImageData(const PngImageDataChunks& chunks, const PngRowLayout& layout,
                      std::uint8_t* rows, std::size_t stride);

// Row y of the image as the file stores it (16-bit samples big-endian): either memory that
// already holds it or `scratch` (rowBytes bytes) filled with it. Called from several threads at
// once.
using PngRowSource = std::function<const std::uint8_t*(std::uint32_t y, std::uint8_t* scratch)>;

// A run of bytes of the zlib stream.
struct PngStreamPiece {
    std::unique_ptr<std::uint8_t[]> bytes;
    std::size_t size = 0;
    std::size_t capacity = 0;
};

// The image data of the rows `source` hands out, as pieces of one zlib stream to be stored one
// after another. Nothing when memory runs out.
std::optional<std::vector<PngStreamPiece>> writePngImageData(const PngRowLayout& layout,
                                                             const PngRowSource& source);

} // namespace tintorra
