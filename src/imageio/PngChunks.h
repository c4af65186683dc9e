#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace tintorra {

// The payloads of a PNG file's IDAT chunks, in file order; together they hold one zlib stream.
using PngImageDataChunks = std::vector<std::span<const std::uint8_t>>;

// The IDAT payloads of `file` (the whole file, signature included), when the file is sound from
// its first IDAT chunk on: the IDAT chunks follow one another, every chunk up to IEND is complete
// with a matching CRC and has a valid type, and only ancillary chunks stand between the image
// data and IEND. Nothing otherwise. Chunks before the image data are not looked into; libpng has
// read those.
std::optional<PngImageDataChunks> pngImageDataChunks(std::span<const std::uint8_t> file);

// The CRC-32 that PNG chunks carry (over the chunk type and data).
std::uint32_t pngCrc(std::span<const std::uint8_t> bytes);

} // namespace tintorra
