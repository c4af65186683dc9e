#include "imageio/ImageLimits.h"

#include <cstdio>
#include <string>
#include <unistd.h>

namespace tintorra {

namespace {

bool multiplyChecked(std::uint64_t a, std::uint64_t b, std::uint64_t& product)
{
    return !__builtin_mul_overflow(a, b, &product);
}

std::string gibibytes(std::uint64_t bytes)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.1f GiB", static_cast<double>(bytes) / (1u << 30));
    return text;
}

std::string sizeText(std::uint64_t pixelsWide, std::uint64_t pixelsHigh,
                     std::uint64_t samplesPerPixel, std::uint64_t bitsPerSample)
{
    return std::to_string(pixelsWide) + " × " + std::to_string(pixelsHigh) + " pixels with " +
           std::to_string(samplesPerPixel) + " samples of " + std::to_string(bitsPerSample) +
           " bits";
}

} // namespace

std::optional<std::uint64_t> imageSampleBytes(std::uint64_t pixelsWide, std::uint64_t pixelsHigh,
                                              std::uint64_t samplesPerPixel,
                                              std::uint64_t bitsPerSample)
{
    std::uint64_t pixels = 0;
    std::uint64_t samples = 0;
    std::uint64_t bits = 0;
    if (!multiplyChecked(pixelsWide, pixelsHigh, pixels) ||
        !multiplyChecked(pixels, samplesPerPixel, samples) ||
        !multiplyChecked(samples, bitsPerSample, bits))
        return std::nullopt;
    return bits / 8 + (bits % 8 != 0);
}

std::uint64_t physicalMemoryBytes()
{
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long pageSize = sysconf(_SC_PAGE_SIZE);
    if (pages <= 0 || pageSize <= 0)
        return 0;
    return static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(pageSize);
}

IOStatus checkImageDimensions(std::uint64_t pixelsWide, std::uint64_t pixelsHigh,
                              std::uint64_t samplesPerPixel, std::uint64_t bitsPerSample,
                              std::uint64_t extraBytesPerSample)
{
    if (pixelsWide == 0 || pixelsHigh == 0 || samplesPerPixel == 0 || bitsPerSample == 0)
        return ioError("The image has no pixels.");

    const std::string size = sizeText(pixelsWide, pixelsHigh, samplesPerPixel, bitsPerSample);
    const std::optional<std::uint64_t> bytes =
        imageSampleBytes(pixelsWide, pixelsHigh, samplesPerPixel, bitsPerSample);
    if (!bytes || *bytes > kMaxImageSampleBytes)
        return ioError("The image is too large: " + size + " need more than the " +
                       gibibytes(kMaxImageSampleBytes) + " of samples Tintorra can address.");

    std::uint64_t extra = 0;
    std::uint64_t needed = 0;
    if (!multiplyChecked(pixelsWide * pixelsHigh, samplesPerPixel * extraBytesPerSample, extra) ||
        __builtin_add_overflow(*bytes, extra, &needed))
        return ioError("The image is too large: " + size + " cannot be decoded in memory.");
    const std::uint64_t memory = physicalMemoryBytes();
    if (memory != 0 && needed > memory)
        return ioError("The image is too large: " + size + " need " + gibibytes(needed) +
                       ", more than the " + gibibytes(memory) + " of memory of this computer.");
    return ioSuccess();
}

} // namespace tintorra
