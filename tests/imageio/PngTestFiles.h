#pragma once

// PNG files made and read by libpng itself, and their chunks taken apart and put together again,
// for checking our own PNG image data reading and writing against an independent implementation.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tintorra::test {

// An image as PNG lays out its rows (colour samples then alpha, tightly packed), 16-bit samples
// in the machine's byte order.
struct PngPixels {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    int bitDepth = 8;
    int colourType = 0;
    std::vector<std::uint8_t> rows;
    std::vector<std::uint8_t> iccProfile;
    std::uint32_t pixelsPerMetre = 0;

    int channels() const;
    std::size_t rowBytes() const;
};

// Samples with a photograph's mix of smooth ramps and noise, so that every row filter has work.
PngPixels makePngPixels(std::uint32_t width, std::uint32_t height, int bitDepth, int colourType);

// The file libpng writes with the given row filters (libpng's PNG_FILTER_ flags).
std::vector<std::uint8_t> writeWithLibpng(const PngPixels& pixels, int filters);

// libpng's own reading of a file; nothing when libpng refuses it.
std::optional<PngPixels> readWithLibpng(const std::vector<std::uint8_t>& file);

struct PngChunk {
    std::string type;
    std::vector<std::uint8_t> data;
};

// The chunks of a sound file, in order.
std::vector<PngChunk> pngChunksOf(const std::vector<std::uint8_t>& file);

// A file of these chunks, each with its correct CRC (computed by zlib).
std::vector<std::uint8_t> pngFileOf(const std::vector<PngChunk>& chunks);

// The zlib stream that the IDAT chunks hold together.
std::vector<std::uint8_t> imageDataStreamOf(const std::vector<PngChunk>& chunks);

// The chunks with their IDAT chunks replaced by `stream` cut into IDAT chunks of the sizes given
// (repeated as needed; a size of 0 makes an empty chunk).
std::vector<PngChunk> withImageDataStream(const std::vector<PngChunk>& chunks,
                                          const std::vector<std::uint8_t>& stream,
                                          const std::vector<std::size_t>& pieceSizes);

// `filteredRows` (each row its filter number then its bytes) compressed by zlib.
std::vector<std::uint8_t> zlibStreamOf(const std::vector<std::uint8_t>& filteredRows);

// Rows with filter 0 (none) before each.
std::vector<std::uint8_t> unfilteredImageData(const PngPixels& pixels);

} // namespace tintorra::test
