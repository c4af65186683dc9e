#include "PngTestFiles.h"

#include <gtest/gtest.h>
#include <png.h>

#include <algorithm>
#include <cstring>
#include <zlib.h>

namespace tintorra::test {

namespace {

std::uint32_t big32(const std::uint8_t* p)
{
    return (std::uint32_t{p[0]} << 24) | (std::uint32_t{p[1]} << 16) | (std::uint32_t{p[2]} << 8) |
           p[3];
}

void appendBig32(std::vector<std::uint8_t>& bytes, std::uint32_t value)
{
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes.push_back(static_cast<std::uint8_t>(value >> shift));
}

void appendToVector(png_structp png, png_bytep data, png_size_t length)
{
    auto* bytes = static_cast<std::vector<std::uint8_t>*>(png_get_io_ptr(png));
    bytes->insert(bytes->end(), data, data + length);
}

struct Reading {
    const std::vector<std::uint8_t>* file = nullptr;
    std::size_t position = 0;
};

void readFromVector(png_structp png, png_bytep out, png_size_t length)
{
    auto* reading = static_cast<Reading*>(png_get_io_ptr(png));
    if (length > reading->file->size() - reading->position)
        png_error(png, "read past the end");
    std::memcpy(out, reading->file->data() + reading->position, length);
    reading->position += length;
}

void ignoreWarning(png_structp, png_const_charp) {}

bool writeRows(png_structp png, png_infop info, const PngPixels* pixels, int filters)
{
    if (setjmp(png_jmpbuf(png)))
        return false;
    png_set_IHDR(png, info, pixels->width, pixels->height, pixels->bitDepth, pixels->colourType,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_filter(png, PNG_FILTER_TYPE_BASE, filters);
    png_write_info(png, info);
    if (pixels->bitDepth == 16)
        png_set_swap(png);
    for (std::uint32_t y = 0; y < pixels->height; ++y)
        png_write_row(png, pixels->rows.data() + y * pixels->rowBytes());
    png_write_end(png, info);
    return true;
}

bool readRows(png_structp png, png_infop info, PngPixels* pixels)
{
    if (setjmp(png_jmpbuf(png)))
        return false;
    png_read_info(png, info);
    pixels->width = png_get_image_width(png, info);
    pixels->height = png_get_image_height(png, info);
    pixels->bitDepth = png_get_bit_depth(png, info);
    pixels->colourType = png_get_color_type(png, info);
    png_charp name = nullptr;
    int compression = 0;
    png_bytep profile = nullptr;
    png_uint_32 profileLength = 0;
    if (png_get_iCCP(png, info, &name, &compression, &profile, &profileLength))
        pixels->iccProfile.assign(profile, profile + profileLength);
    png_uint_32 perMetreY = 0;
    int unit = 0;
    png_get_pHYs(png, info, &pixels->pixelsPerMetre, &perMetreY, &unit);
    if (pixels->bitDepth == 16)
        png_set_swap(png);
    png_read_update_info(png, info);
    pixels->rows.assign(pixels->rowBytes() * pixels->height, 0);
    for (std::uint32_t y = 0; y < pixels->height; ++y)
        png_read_row(png, pixels->rows.data() + y * pixels->rowBytes(), nullptr);
    png_read_end(png, nullptr);
    return true;
}

} // namespace

int PngPixels::channels() const
{
    switch (colourType) {
    case PNG_COLOR_TYPE_GRAY:
        return 1;
    case PNG_COLOR_TYPE_GRAY_ALPHA:
        return 2;
    case PNG_COLOR_TYPE_RGB:
        return 3;
    default:
        return 4;
    }
}

std::size_t PngPixels::rowBytes() const
{
    return std::size_t{width} * static_cast<std::size_t>(channels() * bitDepth / 8);
}

PngPixels makePngPixels(std::uint32_t width, std::uint32_t height, int bitDepth, int colourType)
{
    PngPixels pixels;
    pixels.width = width;
    pixels.height = height;
    pixels.bitDepth = bitDepth;
    pixels.colourType = colourType;
    const int channels = pixels.channels();
    const std::uint32_t maximum = bitDepth == 16 ? 65535u : 255u;
    std::uint32_t noise = 2463534242u;
    std::vector<std::uint32_t> samples;
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            for (int c = 0; c < channels; ++c) {
                noise ^= noise << 13;
                noise ^= noise >> 17;
                noise ^= noise << 5;
                // Ramps in different directions per channel, a little noise, and now and then
                // a sample far off, so that the predictors disagree.
                const std::uint32_t ramp = (x * (3u + c) + y * (5u + 2u * c)) * maximum / 97u;
                std::uint32_t value = (ramp + noise % 7u) % (maximum + 1);
                if (noise % 13u == 0)
                    value = noise % (maximum + 1);
                samples.push_back(value);
            }
        }
    }
    pixels.rows.resize(samples.size() * static_cast<std::size_t>(bitDepth / 8));
    for (std::size_t i = 0; i < samples.size(); ++i) {
        if (bitDepth == 16) {
            const auto value = static_cast<std::uint16_t>(samples[i]);
            std::memcpy(pixels.rows.data() + 2 * i, &value, 2);
        } else {
            pixels.rows[i] = static_cast<std::uint8_t>(samples[i]);
        }
    }
    return pixels;
}

std::vector<std::uint8_t> writeWithLibpng(const PngPixels& pixels, int filters)
{
    std::vector<std::uint8_t> file;
    png_structp png =
        png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, &ignoreWarning);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(png, &file, &appendToVector, nullptr);
    const bool written = writeRows(png, info, &pixels, filters);
    png_destroy_write_struct(&png, &info);
    EXPECT_TRUE(written);
    return file;
}

std::optional<PngPixels> readWithLibpng(const std::vector<std::uint8_t>& file)
{
    PngPixels pixels;
    png_structp png =
        png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, &ignoreWarning);
    png_infop info = png_create_info_struct(png);
    Reading reading{&file, 0};
    png_set_read_fn(png, &reading, &readFromVector);
    const bool read = readRows(png, info, &pixels);
    png_destroy_read_struct(&png, &info, nullptr);
    if (!read)
        return std::nullopt;
    return pixels;
}

std::vector<PngChunk> pngChunksOf(const std::vector<std::uint8_t>& file)
{
    std::vector<PngChunk> chunks;
    std::size_t offset = 8;
    while (offset + 12 <= file.size()) {
        const std::uint32_t length = big32(file.data() + offset);
        PngChunk chunk;
        chunk.type.assign(reinterpret_cast<const char*>(file.data() + offset + 4), 4);
        const auto* data = file.data() + offset + 8;
        chunk.data.assign(data, data + length);
        chunks.push_back(std::move(chunk));
        offset += 12 + std::size_t{length};
    }
    return chunks;
}

std::vector<std::uint8_t> pngFileOf(const std::vector<PngChunk>& chunks)
{
    std::vector<std::uint8_t> file = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    for (const PngChunk& chunk : chunks) {
        appendBig32(file, static_cast<std::uint32_t>(chunk.data.size()));
        const std::size_t typeAt = file.size();
        file.insert(file.end(), chunk.type.begin(), chunk.type.end());
        file.insert(file.end(), chunk.data.begin(), chunk.data.end());
        appendBig32(file, static_cast<std::uint32_t>(crc32(
                              0, file.data() + typeAt, static_cast<uInt>(file.size() - typeAt))));
    }
    return file;
}

std::vector<std::uint8_t> imageDataStreamOf(const std::vector<PngChunk>& chunks)
{
    std::vector<std::uint8_t> stream;
    for (const PngChunk& chunk : chunks) {
        if (chunk.type == "IDAT")
            stream.insert(stream.end(), chunk.data.begin(), chunk.data.end());
    }
    return stream;
}

std::vector<PngChunk> withImageDataStream(const std::vector<PngChunk>& chunks,
                                          const std::vector<std::uint8_t>& stream,
                                          const std::vector<std::size_t>& pieceSizes)
{
    std::vector<PngChunk> result;
    bool placed = false;
    for (const PngChunk& chunk : chunks) {
        if (chunk.type != "IDAT") {
            result.push_back(chunk);
            continue;
        }
        if (placed)
            continue;
        placed = true;
        std::size_t offset = 0;
        for (std::size_t piece = 0; offset < stream.size(); ++piece) {
            const std::size_t size =
                std::min(pieceSizes[piece % pieceSizes.size()], stream.size() - offset);
            result.push_back({"IDAT",
                              {stream.begin() + static_cast<std::ptrdiff_t>(offset),
                               stream.begin() + static_cast<std::ptrdiff_t>(offset + size)}});
            offset += size;
        }
    }
    return result;
}

std::vector<std::uint8_t> zlibStreamOf(const std::vector<std::uint8_t>& filteredRows)
{
    uLongf length = compressBound(static_cast<uLong>(filteredRows.size()));
    std::vector<std::uint8_t> stream(length);
    EXPECT_EQ(compress2(stream.data(), &length, filteredRows.data(),
                        static_cast<uLong>(filteredRows.size()), 6),
              Z_OK);
    stream.resize(length);
    return stream;
}

std::vector<std::uint8_t> unfilteredImageData(const PngPixels& pixels)
{
    std::vector<std::uint8_t> data;
    for (std::uint32_t y = 0; y < pixels.height; ++y) {
        data.push_back(0);
        const std::uint8_t* row = pixels.rows.data() + y * pixels.rowBytes();
        for (std::size_t i = 0; i < pixels.rowBytes(); ++i) {
            // The file's 16-bit samples are big-endian.
            const std::size_t from = pixels.bitDepth == 16 ? (i ^ 1u) : i;
            data.push_back(row[from]);
        }
    }
    return data;
}

} // namespace tintorra::test
