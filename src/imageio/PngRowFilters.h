#pragma once

#include <cstddef>
#include <cstdint>

namespace tintorra {

// The row filters of PNG image data; each filtered row starts with its filter's number.
enum class PngRowFilter : std::uint8_t { none = 0, sub = 1, up = 2, average = 3, paeth = 4 };

// Filters work on bytes: `bytesPerPixel` is the distance to the byte's left neighbour (1 to 8),
// and `previous` is the row above as stored in the file, or nullptr for the first row (which
// PNG treats as having a row of zeros above it).

// Writes row - floor((left + above) / 2) to `out`, rowBytes bytes without the filter number.
void averageFilterRow(const std::uint8_t* row, const std::uint8_t* previous, std::size_t rowBytes,
                      unsigned bytesPerPixel, std::uint8_t* out);

// Undoes filter `type` on `filtered` (rowBytes bytes without the filter number) into `out`, which
// must not overlap either input. False when `type` is no PNG filter.
bool unfilterRow(std::uint8_t type, const std::uint8_t* filtered, const std::uint8_t* previous,
                 std::size_t rowBytes, unsigned bytesPerPixel, std::uint8_t* out);

// Undoes the filters of two consecutive rows (types[0] and types[1]); the second row's row above
// is `outFirst`. Paeth on both rows of 3- or 4-byte pixels goes about twice as fast as two calls
// of unfilterRow, since each Paeth pixel waits for its left neighbour.
bool unfilterRowPair(const std::uint8_t* types, const std::uint8_t* filteredFirst,
                     const std::uint8_t* filteredSecond, const std::uint8_t* previous,
                     std::size_t rowBytes, unsigned bytesPerPixel, std::uint8_t* outFirst,
                     std::uint8_t* outSecond);

} // namespace tintorra
