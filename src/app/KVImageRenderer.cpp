#include "app/KVImageRenderer.h"

#include "image/PixelAccess.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <thread>
#include <vector>

namespace tintorra {

namespace {

// Where each output column or row samples the image: two source positions each (the same one
// when enlarging), so four samples make an output pixel.
struct SamplePositions {
    std::vector<std::int64_t> first;
    std::vector<std::int64_t> second;
};

SamplePositions samplePositions(int start, int count, double scale, std::int64_t limit)
{
    SamplePositions positions;
    positions.first.resize(static_cast<std::size_t>(count));
    positions.second.resize(static_cast<std::size_t>(count));
    const auto clampIndex = [limit](double value) {
        return std::clamp<std::int64_t>(static_cast<std::int64_t>(std::floor(value)), 0, limit - 1);
    };
    for (int i = 0; i < count; ++i) {
        const double at = start + i;
        if (scale >= 1.0) {
            positions.first[i] = positions.second[i] = clampIndex((at + 0.5) / scale);
        } else {
            positions.first[i] = clampIndex((at + 0.25) / scale);
            positions.second[i] = clampIndex((at + 0.75) / scale);
        }
    }
    return positions;
}

// Byte offsets of the channels r, g, b, a within a pixel (grey images read one sample thrice).
struct Channels {
    std::uint64_t offset[4];
};

Channels channelsOf(const PixelManipulationOffsets& offsets)
{
    if (offsets.colorSpaceModel == 0)
        return {{offsets.greyOffset, offsets.greyOffset, offsets.greyOffset, offsets.alphaOffset}};
    return {{offsets.redOffset, offsets.greenOffset, offsets.blueOffset, offsets.alphaOffset}};
}

// A 4 x 4 ordered-dither matrix, in sixteenths.
constexpr int kBayer[4][4] = {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};

struct RenderJob {
    const KVRenderSource& source;
    PixelManipulationOffsets image;
    PixelManipulationOffsets mask;
    Channels channels{};
    SamplePositions columns;
    SamplePositions rows;
    std::vector<std::int64_t> maskColumns;
    std::vector<std::int64_t> maskRows;
    QRect deviceRect;
    QImage* output = nullptr;

    template <typename Sample>
    void readRow(int row, Sample* out) const;
    void renderRows(int begin, int end) const;
    void finishPixel(std::uint8_t* bgra, int x, int y, std::uint8_t alpha) const;
};

template <typename Sample>
Sample loadSample(const std::uint8_t* address)
{
    Sample value;
    std::memcpy(&value, address, sizeof value);
    return value;
}

// One output row as r g b a samples of the image's depth, straight alpha.
template <typename Sample>
void RenderJob::readRow(int row, Sample* out) const
{
    const std::uint8_t* const rowA = image.bitmapData + rows.first[row] * image.bytesPerRow;
    const std::uint8_t* const rowB = image.bitmapData + rows.second[row] * image.bytesPerRow;
    const int width = deviceRect.width();
    const std::int64_t step = image.bytesPerPixel;
    constexpr std::uint32_t maximum = sizeof(Sample) == 1 ? 255u : 65535u;
    const int channelCount = image.hasAlpha ? 4 : 3;
    for (int x = 0; x < width; ++x) {
        const std::uint8_t* const pixels[4] = {
            rowA + columns.first[x] * step, rowA + columns.second[x] * step,
            rowB + columns.first[x] * step, rowB + columns.second[x] * step};
        std::uint32_t sums[4] = {0, 0, 0, maximum * 4};
        for (int c = 0; c < channelCount; ++c) {
            const std::uint64_t offset = channels.offset[c];
            sums[c] = std::uint32_t{loadSample<Sample>(pixels[0] + offset)} +
                      loadSample<Sample>(pixels[1] + offset) +
                      loadSample<Sample>(pixels[2] + offset) +
                      loadSample<Sample>(pixels[3] + offset);
        }
        Sample* const pixel = out + 4 * x;
        const std::uint32_t alpha = (sums[3] + 2) / 4;
        for (int c = 0; c < 3; ++c) {
            std::uint32_t value = (sums[c] + 2) / 4;
            if (image.premultiplied && alpha > 0 && alpha < maximum)
                value = std::min(maximum, (value * maximum + alpha / 2) / alpha);
            pixel[c] = static_cast<Sample>(value);
        }
        pixel[3] = static_cast<Sample>(alpha);
    }
}

// Transparency over the checkerboard, then the mask overlay; `bgra` holds the display colour.
void RenderJob::finishPixel(std::uint8_t* bgra, int x, int y, std::uint8_t alpha) const
{
    if (alpha != 255) {
        const int squares =
            (deviceRect.x() + x) / source.checkerSize + (deviceRect.y() + y) / source.checkerSize;
        const int background = squares % 2 == 0 ? 255 : 204;
        for (int c = 0; c < 3; ++c)
            bgra[c] = static_cast<std::uint8_t>(
                (bgra[c] * alpha + background * (255 - alpha) + 127) / 255);
    }
    if (source.overlay != KVMaskOverlay::none && mask.supported) {
        const std::uint8_t* const sample = mask.bitmapData + maskRows[y] * mask.bytesPerRow +
                                           maskColumns[x] * mask.bytesPerPixel + mask.greyOffset +
                                           (mask.bitsPerSample == 16 ? 1 : 0);
        const int value = *sample;
        if (source.overlay == KVMaskOverlay::darken) {
            // 60 % of the colour stays; the other 40 % is multiplied by the mask.
            const int keep = 153 + (102 * value + 127) / 255;
            for (int c = 0; c < 3; ++c)
                bgra[c] = static_cast<std::uint8_t>((bgra[c] * keep + 127) / 255);
        } else {
            const int cover = (255 - value + 1) / 2; // 50 % where the mask is black
            for (int c = 0; c < 3; ++c) {
                const int red = c == 2 ? 255 : 0;
                bgra[c] =
                    static_cast<std::uint8_t>((bgra[c] * (255 - cover) + red * cover + 127) / 255);
            }
        }
    }
    bgra[3] = 255;
}

void RenderJob::renderRows(int begin, int end) const
{
    const int width = deviceRect.width();
    const KVDisplayTransform* const transform = source.transform.get();
    if (image.bitsPerSample == 16) {
        std::vector<std::uint16_t> buffer(static_cast<std::size_t>(width) * 4);
        for (int y = begin; y < end; ++y) {
            readRow(y, buffer.data());
            if (transform)
                transform->transform16(buffer.data(), buffer.data(), width);
            std::uint8_t* const out = output->scanLine(y);
            const int* const dither = kBayer[(deviceRect.y() + y) & 3];
            for (int x = 0; x < width; ++x) {
                const std::uint16_t* const in = buffer.data() + 4 * x;
                // The threshold spreads the 256 levels between two bytes over a 4 x 4 pattern.
                const std::uint32_t threshold =
                    (static_cast<std::uint32_t>(dither[(deviceRect.x() + x) & 3]) * 2 + 1) * 65535 /
                    32;
                std::uint8_t* const pixel = out + 4 * x;
                for (int c = 0; c < 3; ++c)
                    pixel[2 - c] = static_cast<std::uint8_t>((in[c] * 255u + threshold) / 65535u);
                finishPixel(pixel, x, y, static_cast<std::uint8_t>(in[3] >> 8));
            }
        }
        return;
    }
    std::vector<std::uint8_t> buffer(static_cast<std::size_t>(width) * 4);
    for (int y = begin; y < end; ++y) {
        readRow(y, buffer.data());
        if (transform)
            transform->transform8(buffer.data(), buffer.data(), width);
        std::uint8_t* const out = output->scanLine(y);
        for (int x = 0; x < width; ++x) {
            const std::uint8_t* const in = buffer.data() + 4 * x;
            std::uint8_t* const pixel = out + 4 * x;
            pixel[0] = in[2];
            pixel[1] = in[1];
            pixel[2] = in[0];
            finishPixel(pixel, x, y, in[3]);
        }
    }
}

std::vector<std::int64_t> maskPositions(const std::vector<std::int64_t>& imagePositions,
                                        std::int64_t imageSize, std::int64_t maskSize)
{
    std::vector<std::int64_t> positions(imagePositions.size());
    for (std::size_t i = 0; i < positions.size(); ++i)
        positions[i] = std::min(maskSize - 1, imagePositions[i] * maskSize / imageSize);
    return positions;
}

} // namespace

QImage renderImageRegion(const KVRenderSource& source, QRect deviceRect, double scale, int threads)
{
    if (!source.image || deviceRect.isEmpty() || !(scale > 0.0))
        return {};
    RenderJob job{source,     pixelManipulationOffsetsWithImageGamma(source.image, 1.0),
                  {},         {},
                  {},         {},
                  {},         {},
                  deviceRect, nullptr};
    if (!job.image.supported || (job.image.bitsPerSample != 8 && job.image.bitsPerSample != 16))
        return {};
    job.channels = channelsOf(job.image);
    job.columns = samplePositions(deviceRect.x(), deviceRect.width(), scale, job.image.pixelsWide);
    job.rows = samplePositions(deviceRect.y(), deviceRect.height(), scale, job.image.pixelsHigh);
    if (source.overlay != KVMaskOverlay::none && source.mask) {
        job.mask = pixelManipulationOffsetsWithImageGamma(source.mask, 1.0);
        if (job.mask.supported) {
            job.maskColumns =
                maskPositions(job.columns.first, job.image.pixelsWide, job.mask.pixelsWide);
            job.maskRows = maskPositions(job.rows.first, job.image.pixelsHigh, job.mask.pixelsHigh);
        }
    }
    QImage output(deviceRect.size(), QImage::Format_RGB32);
    if (output.isNull())
        return {};
    job.output = &output;

    const int height = deviceRect.height();
    // Fewer than 64 rows a thread would cost more to start than it saves.
    const int parts = std::clamp(std::min(threads, height / 64), 1, 16);
    if (parts == 1) {
        job.renderRows(0, height);
        return output;
    }
    std::vector<std::thread> workers;
    workers.reserve(static_cast<std::size_t>(parts - 1));
    for (int part = 1; part < parts; ++part)
        workers.emplace_back([&job, part, parts, height] {
            job.renderRows(height * part / parts, height * (part + 1) / parts);
        });
    job.renderRows(0, height / parts);
    for (std::thread& worker : workers)
        worker.join();
    return output;
}

} // namespace tintorra
