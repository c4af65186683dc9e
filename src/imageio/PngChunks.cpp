#include "imageio/PngChunks.h"

#include <cstring>
#include <isa-l/crc.h>

namespace tintorra {

namespace {

constexpr std::size_t kSignatureBytes = 8;
// Length and type before the data, CRC after it.
constexpr std::size_t kChunkHeaderBytes = 8;
constexpr std::size_t kChunkCrcBytes = 4;
constexpr std::uint32_t kLargestChunkLength = 0x7fffffffu;

std::uint32_t big32(const std::uint8_t* p)
{
    return (static_cast<std::uint32_t>(p[0]) << 24) | (static_cast<std::uint32_t>(p[1]) << 16) |
           (static_cast<std::uint32_t>(p[2]) << 8) | static_cast<std::uint32_t>(p[3]);
}

bool isLetter(std::uint8_t c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

struct Chunk {
    const std::uint8_t* type = nullptr;
    std::span<const std::uint8_t> data;
    std::uint32_t crc = 0;

    bool is(const char* name) const { return std::memcmp(type, name, 4) == 0; }
    // Ancillary chunks have a lower-case first letter.
    bool isCritical() const { return (type[0] & 0x20) == 0; }
    bool hasValidType() const
    {
        return isLetter(type[0]) && isLetter(type[1]) && isLetter(type[2]) && isLetter(type[3]);
    }
    bool crcMatches() const { return pngCrc({type, kChunkHeaderBytes - 4 + data.size()}) == crc; }
};

// The chunk at `offset`, when it lies wholly inside the file.
std::optional<Chunk> chunkAt(std::span<const std::uint8_t> file, std::size_t offset)
{
    if (file.size() - offset < kChunkHeaderBytes)
        return std::nullopt;
    const std::uint32_t length = big32(file.data() + offset);
    if (length > kLargestChunkLength)
        return std::nullopt;
    const std::size_t dataOffset = offset + kChunkHeaderBytes;
    if (file.size() - dataOffset < static_cast<std::size_t>(length) + kChunkCrcBytes)
        return std::nullopt;
    Chunk chunk;
    chunk.type = file.data() + offset + 4;
    chunk.data = file.subspan(dataOffset, length);
    chunk.crc = big32(file.data() + dataOffset + length);
    return chunk;
}

std::size_t nextOffset(const Chunk& chunk, std::span<const std::uint8_t> file)
{
    return static_cast<std::size_t>(chunk.data.data() - file.data()) + chunk.data.size() +
           kChunkCrcBytes;
}

} // namespace

std::uint32_t pngCrc(std::span<const std::uint8_t> bytes)
{
    return crc32_gzip_refl(0, bytes.data(), bytes.size());
}

std::optional<PngImageDataChunks> pngImageDataChunks(std::span<const std::uint8_t> file)
{
    if (file.size() < kSignatureBytes)
        return std::nullopt;
    std::size_t offset = kSignatureBytes;
    std::optional<Chunk> chunk = chunkAt(file, offset);
    while (chunk && !chunk->is("IDAT")) {
        offset = nextOffset(*chunk, file);
        chunk = chunkAt(file, offset);
    }
    PngImageDataChunks imageData;
    while (chunk && chunk->is("IDAT")) {
        if (!chunk->crcMatches())
            return std::nullopt;
        imageData.push_back(chunk->data);
        offset = nextOffset(*chunk, file);
        chunk = chunkAt(file, offset);
    }
    if (imageData.empty())
        return std::nullopt;
    // libpng reads on to IEND and refuses a damaged critical chunk there; ancillary chunks after
    // the image (text, times) it takes or skips without touching the pixels.
    for (; chunk; chunk = chunkAt(file, nextOffset(*chunk, file))) {
        if (!chunk->hasValidType() || !chunk->crcMatches())
            return std::nullopt;
        if (chunk->is("IEND"))
            return chunk->data.empty() ? std::optional(std::move(imageData)) : std::nullopt;
        if (chunk->isCritical())
            return std::nullopt;
    }
    return std::nullopt;
}

} // namespace tintorra
