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
    RenderJob(const KVRenderSource& renderSource, QRect rect)
        : source(renderSource), image(pixelManipulationOffsetsWithImageGamma(source.image, 1.0)),
          deviceRect(rect)
    {}

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

    // Byte offsets of the sample columns, so the inner loop does no multiplication.
    std::vector<std::int64_t> columnBytesA;
    std::vector<std::int64_t> columnBytesB;

    template <typename Sample>
    void readRow(int row, Sample* out) const;
    template <typename Sample, int Channels>
    void readRowOf(int row, Sample* out) const;
    // The common case, 8-bit r g b (a) in one plane, as packed r g b a words.
    bool packedRgb8() const;
    template <bool FourByteLoads>
    void readPackedRow(int row, std::uint32_t* out) const;
    // The same for 16-bit r g b (a): eight-byte loads, channels summed in 32-bit halves.
    bool packedRgb16() const;
    template <bool EightByteLoads>
    void readPackedRow16(int row, std::uint16_t* out) const;
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

// One output row as r g b a samples of the image's depth, straight alpha; dispatched once per
// row on the channel count so the loop over the pixels knows it.
template <typename Sample>
void RenderJob::readRow(int row, Sample* out) const
{
    if (image.hasAlpha)
        readRowOf<Sample, 4>(row, out);
    else
        readRowOf<Sample, 3>(row, out);
}

template <typename Sample, int Channels>
void RenderJob::readRowOf(int row, Sample* out) const
{
    const std::uint8_t* const rowA = image.bitmapData + rows.first[row] * image.bytesPerRow;
    const std::uint8_t* const rowB = image.bitmapData + rows.second[row] * image.bytesPerRow;
    const int width = deviceRect.width();
    constexpr std::uint32_t maximum = sizeof(Sample) == 1 ? 255u : 65535u;
    const std::int64_t* const columnA = columnBytesA.data();
    const std::int64_t* const columnB = columnBytesB.data();
    std::uint64_t offsets[4];
    for (int c = 0; c < 4; ++c)
        offsets[c] = channels.offset[c];
    const bool premultiplied = image.premultiplied;
    for (int x = 0; x < width; ++x) {
        const std::uint8_t* const p0 = rowA + columnA[x];
        const std::uint8_t* const p1 = rowA + columnB[x];
        const std::uint8_t* const p2 = rowB + columnA[x];
        const std::uint8_t* const p3 = rowB + columnB[x];
        std::uint32_t sums[4] = {0, 0, 0, maximum * 4};
        for (int c = 0; c < Channels; ++c) {
            const std::uint64_t offset = offsets[c];
            sums[c] = std::uint32_t{loadSample<Sample>(p0 + offset)} +
                      loadSample<Sample>(p1 + offset) + loadSample<Sample>(p2 + offset) +
                      loadSample<Sample>(p3 + offset);
        }
        Sample* const pixel = out + 4 * x;
        const std::uint32_t alpha = (sums[3] + 2) / 4;
        for (int c = 0; c < 3; ++c) {
            std::uint32_t value = (sums[c] + 2) / 4;
            if (Channels == 4 && premultiplied && alpha > 0 && alpha < maximum)
                value = std::min(maximum, (value * maximum + alpha / 2) / alpha);
            pixel[c] = static_cast<Sample>(value);
        }
        pixel[3] = static_cast<Sample>(alpha);
    }
}

bool RenderJob::packedRgb8() const
{
    return image.bitsPerSample == 8 && !image.isPlanar && image.colorSpaceModel == 1 &&
           image.redOffset == 0 && image.greenOffset == 1 && image.blueOffset == 2 &&
           (image.bytesPerPixel == 3 || image.bytesPerPixel == 4) &&
           (!image.hasAlpha ||
            (image.bytesPerPixel == 4 && image.alphaOffset == 3 && !image.premultiplied));
}

// Four samples a pixel summed two channels at a time in the halves of a word: the sums of four
// bytes fit in 16 bits, so r and b share one word and g and a another.
template <bool FourByteLoads>
void RenderJob::readPackedRow(int row, std::uint32_t* out) const
{
    const std::uint8_t* const rowA = image.bitmapData + rows.first[row] * image.bytesPerRow;
    const std::uint8_t* const rowB = image.bitmapData + rows.second[row] * image.bytesPerRow;
    const std::int64_t* const columnA = columnBytesA.data();
    const std::int64_t* const columnB = columnBytesB.data();
    const auto load = [](const std::uint8_t* pixel) {
        if constexpr (FourByteLoads) {
            std::uint32_t word;
            std::memcpy(&word, pixel, sizeof word);
            return word;
        } else {
            return std::uint32_t{pixel[0]} | std::uint32_t{pixel[1]} << 8 |
                   std::uint32_t{pixel[2]} << 16;
        }
    };
    constexpr std::uint32_t kLanes = 0x00FF00FFu;
    constexpr std::uint32_t kRounding = 0x00020002u;
    const std::uint32_t opaque = image.hasAlpha ? 0u : 0xFF000000u;
    const int width = deviceRect.width();
    for (int x = 0; x < width; ++x) {
        const std::uint32_t p0 = load(rowA + columnA[x]);
        const std::uint32_t p1 = load(rowA + columnB[x]);
        const std::uint32_t p2 = load(rowB + columnA[x]);
        const std::uint32_t p3 = load(rowB + columnB[x]);
        const std::uint32_t redBlue = (p0 & kLanes) + (p1 & kLanes) + (p2 & kLanes) + (p3 & kLanes);
        const std::uint32_t greenAlpha = ((p0 >> 8) & kLanes) + ((p1 >> 8) & kLanes) +
                                         ((p2 >> 8) & kLanes) + ((p3 >> 8) & kLanes);
        out[x] = (((redBlue + kRounding) >> 2) & kLanes) |
                 ((((greenAlpha + kRounding) >> 2) & kLanes) << 8) | opaque;
    }
}

bool RenderJob::packedRgb16() const
{
    return image.bitsPerSample == 16 && !image.isPlanar && image.colorSpaceModel == 1 &&
           image.redOffset == 0 && image.greenOffset == 2 && image.blueOffset == 4 &&
           (image.bytesPerPixel == 6 || image.bytesPerPixel == 8) &&
           (!image.hasAlpha ||
            (image.bytesPerPixel == 8 && image.alphaOffset == 6 && !image.premultiplied));
}

template <bool EightByteLoads>
void RenderJob::readPackedRow16(int row, std::uint16_t* out) const
{
    const std::uint8_t* const rowA = image.bitmapData + rows.first[row] * image.bytesPerRow;
    const std::uint8_t* const rowB = image.bitmapData + rows.second[row] * image.bytesPerRow;
    const std::int64_t* const columnA = columnBytesA.data();
    const std::int64_t* const columnB = columnBytesB.data();
    const auto load = [](const std::uint8_t* pixel) {
        std::uint64_t word = 0;
        std::memcpy(&word, pixel, EightByteLoads ? 8 : 6);
        return word;
    };
    constexpr std::uint64_t kLanes = 0x0000FFFF0000FFFFull;
    const bool opaque = !image.hasAlpha;
    const int width = deviceRect.width();
    for (int x = 0; x < width; ++x) {
        const std::uint64_t p0 = load(rowA + columnA[x]);
        const std::uint64_t p1 = load(rowA + columnB[x]);
        const std::uint64_t p2 = load(rowB + columnA[x]);
        const std::uint64_t p3 = load(rowB + columnB[x]);
        const std::uint64_t redBlue = (p0 & kLanes) + (p1 & kLanes) + (p2 & kLanes) + (p3 & kLanes);
        const std::uint64_t greenAlpha = ((p0 >> 16) & kLanes) + ((p1 >> 16) & kLanes) +
                                         ((p2 >> 16) & kLanes) + ((p3 >> 16) & kLanes);
        std::uint16_t* const pixel = out + 4 * x;
        pixel[0] = static_cast<std::uint16_t>(((redBlue & 0xFFFFFFFFu) + 2) >> 2);
        pixel[1] = static_cast<std::uint16_t>(((greenAlpha & 0xFFFFFFFFu) + 2) >> 2);
        pixel[2] = static_cast<std::uint16_t>(((redBlue >> 32) + 2) >> 2);
        pixel[3] = opaque ? std::uint16_t{65535}
                          : static_cast<std::uint16_t>(((greenAlpha >> 32) + 2) >> 2);
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
    // Opaque images without an overlay need no second look at their pixels.
    const bool needsFinish =
        image.hasAlpha || (source.overlay != KVMaskOverlay::none && mask.supported);
    if (image.bitsPerSample == 16) {
        std::vector<std::uint16_t> buffer(static_cast<std::size_t>(width) * 4);
        const bool packed = packedRgb16();
        const std::int64_t lastRow = image.pixelsHigh - 1;
        for (int y = begin; y < end; ++y) {
            if (!packed) {
                readRow(y, buffer.data());
            } else if (image.bytesPerPixel == 8 ||
                       (rows.first[y] != lastRow && rows.second[y] != lastRow)) {
                // Six-byte pixels read two bytes on, which only the last row cannot spare.
                readPackedRow16<true>(y, buffer.data());
            } else {
                readPackedRow16<false>(y, buffer.data());
            }
            if (transform)
                transform->transform16(buffer.data(), buffer.data(), width);
            auto* const out = reinterpret_cast<std::uint32_t*>(output->scanLine(y));
            // The thresholds spread the 256 levels between two bytes over a 4 x 4 pattern.
            std::uint32_t thresholds[4];
            for (int k = 0; k < 4; ++k)
                thresholds[k] =
                    (static_cast<std::uint32_t>(kBayer[(deviceRect.y() + y) & 3][k]) * 2 + 1) *
                    65535 / 32;
            const int phase = deviceRect.x();
            for (int x = 0; x < width; ++x) {
                const std::uint16_t* const in = buffer.data() + 4 * x;
                const std::uint32_t threshold = thresholds[(phase + x) & 3];
                const auto level = [threshold](std::uint32_t value) {
                    return (value * 255u + threshold) / 65535u;
                };
                out[x] = 0xFF000000u | level(in[0]) << 16 | level(in[1]) << 8 | level(in[2]);
            }
            if (needsFinish) {
                auto* const bytes = reinterpret_cast<std::uint8_t*>(out);
                for (int x = 0; x < width; ++x)
                    finishPixel(bytes + 4 * x, x, y,
                                static_cast<std::uint8_t>(buffer[4 * x + 3] >> 8));
            }
        }
        return;
    }
    if (packedRgb8()) {
        // Words of r g b a in memory order become the image's b g r a words.
        const auto toBgra = [](std::uint32_t rgba) {
            return (rgba & 0xFF00FF00u) | (rgba & 0xFFu) << 16 | ((rgba >> 16) & 0xFFu);
        };
        const std::int64_t lastRow = image.pixelsHigh - 1;
        std::vector<std::uint32_t> buffer(static_cast<std::size_t>(width));
        for (int y = begin; y < end; ++y) {
            auto* const out = reinterpret_cast<std::uint32_t*>(output->scanLine(y));
            // A four-byte load of a three-byte pixel reads one byte on; only the image's last
            // row has nothing after it.
            const bool wide =
                image.bytesPerPixel == 4 || (rows.first[y] != lastRow && rows.second[y] != lastRow);
            wide ? readPackedRow<true>(y, buffer.data()) : readPackedRow<false>(y, buffer.data());
            if (transform) {
                auto* const bytes = reinterpret_cast<std::uint8_t*>(buffer.data());
                transform->transform8(bytes, bytes, width);
            }
            for (int x = 0; x < width; ++x)
                out[x] = toBgra(buffer[x]) | 0xFF000000u;
            if (needsFinish) {
                auto* const bytes = reinterpret_cast<std::uint8_t*>(out);
                for (int x = 0; x < width; ++x)
                    finishPixel(bytes + 4 * x, x, y, static_cast<std::uint8_t>(buffer[x] >> 24));
            }
        }
        return;
    }
    std::vector<std::uint8_t> buffer(static_cast<std::size_t>(width) * 4);
    for (int y = begin; y < end; ++y) {
        readRow(y, buffer.data());
        if (transform)
            transform->transform8(buffer.data(), buffer.data(), width);
        auto* const out = reinterpret_cast<std::uint32_t*>(output->scanLine(y));
        const std::uint8_t* const in = buffer.data();
        for (int x = 0; x < width; ++x)
            out[x] = 0xFF000000u | std::uint32_t{in[4 * x]} << 16 |
                     std::uint32_t{in[4 * x + 1]} << 8 | in[4 * x + 2];
        if (needsFinish) {
            auto* const bytes = reinterpret_cast<std::uint8_t*>(out);
            for (int x = 0; x < width; ++x)
                finishPixel(bytes + 4 * x, x, y, in[4 * x + 3]);
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
    RenderJob job(source, deviceRect);
    if (!job.image.supported || (job.image.bitsPerSample != 8 && job.image.bitsPerSample != 16))
        return {};
    job.channels = channelsOf(job.image);
    job.columns = samplePositions(deviceRect.x(), deviceRect.width(), scale, job.image.pixelsWide);
    job.rows = samplePositions(deviceRect.y(), deviceRect.height(), scale, job.image.pixelsHigh);
    job.columnBytesA.resize(job.columns.first.size());
    job.columnBytesB.resize(job.columns.second.size());
    for (std::size_t i = 0; i < job.columns.first.size(); ++i) {
        job.columnBytesA[i] = job.columns.first[i] * job.image.bytesPerPixel;
        job.columnBytesB[i] = job.columns.second[i] * job.image.bytesPerPixel;
    }
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
