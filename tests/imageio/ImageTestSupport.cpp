#include "ImageTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <random>

namespace tintorra::test {

std::filesystem::path fixturePath(const std::string& name)
{
    return std::filesystem::path(TINTORRA_TEST_DATA_DIR) / "imageio" / name;
}

std::vector<std::uint8_t> fixtureBytes(const std::string& name)
{
    std::ifstream file(fixturePath(name), std::ios::binary);
    EXPECT_TRUE(file.good()) << "missing fixture " << name;
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::vector<std::uint32_t> rawReference(const std::string& name, int bitsPerSample)
{
    const std::vector<std::uint8_t> bytes = fixtureBytes(name);
    std::vector<std::uint32_t> samples;
    if (bitsPerSample == 16) {
        for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
            samples.push_back((std::uint32_t{bytes[i]} << 8) | bytes[i + 1]);
    } else {
        samples.assign(bytes.begin(), bytes.end());
    }
    return samples;
}

namespace {

// Where sample `channel` of pixel (x, y) lies.
std::uint8_t* sampleAddress(const KVBitmap& bitmap, std::int64_t x, std::int64_t y, int channel)
{
    std::uint8_t* planes[5] = {};
    const_cast<KVBitmap&>(bitmap).getBitmapDataPlanes(planes);
    const int samples = static_cast<int>(bitmap.samplesPerPixel());
    const bool alphaFirst =
        bitmap.hasAlpha() && (bitmap.bitmapFormat() & kBitmapFormatAlphaFirst) != 0;
    int stored = channel;
    if (alphaFirst)
        stored = channel == samples - 1 ? 0 : channel + 1;
    const std::int64_t sampleBytes = bitmap.bitsPerSample() / 8;
    if (bitmap.isPlanar())
        return planes[stored] + y * bitmap.bytesPerRow() + x * sampleBytes;
    return planes[0] + y * bitmap.bytesPerRow() + x * (bitmap.bitsPerPixel() / 8) +
           stored * sampleBytes;
}

} // namespace

std::uint32_t sampleAt(const KVBitmap& bitmap, std::int64_t x, std::int64_t y, int channel)
{
    const std::uint8_t* p = sampleAddress(bitmap, x, y, channel);
    if (bitmap.bitsPerSample() == 16) {
        std::uint16_t v;
        std::memcpy(&v, p, 2);
        return v;
    }
    return *p;
}

void setSampleAt(KVBitmap& bitmap, std::int64_t x, std::int64_t y, int channel, std::uint32_t value)
{
    std::uint8_t* p = sampleAddress(bitmap, x, y, channel);
    if (bitmap.bitsPerSample() == 16) {
        const auto v = static_cast<std::uint16_t>(value);
        std::memcpy(p, &v, 2);
    } else {
        *p = static_cast<std::uint8_t>(value);
    }
}

std::vector<std::uint32_t> allSamples(const KVBitmap& bitmap)
{
    std::vector<std::uint32_t> samples;
    for (std::int64_t y = 0; y < bitmap.pixelsHigh(); ++y)
        for (std::int64_t x = 0; x < bitmap.pixelsWide(); ++x)
            for (int c = 0; c < bitmap.samplesPerPixel(); ++c)
                samples.push_back(sampleAt(bitmap, x, y, c));
    return samples;
}

std::uint32_t largestDifference(const std::vector<std::uint32_t>& a,
                                const std::vector<std::uint32_t>& b)
{
    if (a.size() != b.size())
        return 0xFFFFFFFFu;
    std::uint32_t largest = 0;
    for (std::size_t i = 0; i < a.size(); ++i)
        largest = std::max(largest, a[i] > b[i] ? a[i] - b[i] : b[i] - a[i]);
    return largest;
}

KVBitmapPtr makeTestBitmap(const TestLayout& layout, std::int64_t width, std::int64_t height,
                           std::vector<std::uint8_t> iccProfile)
{
    KVBitmapLayout bitmapLayout;
    bitmapLayout.pixelsWide = width;
    bitmapLayout.pixelsHigh = height;
    bitmapLayout.bitsPerSample = layout.bitsPerSample;
    bitmapLayout.samplesPerPixel = layout.samplesPerPixel;
    bitmapLayout.hasAlpha = layout.hasAlpha;
    bitmapLayout.isPlanar = layout.isPlanar;
    bitmapLayout.bitmapFormat = layout.bitmapFormat;
    bitmapLayout.bitsPerPixel = layout.bitsPerPixel;
    const char* names[] = {"Device Gray", "Device RGB", "Device CMYK", "Lab"};
    const int model = static_cast<int>(layout.model);
    KVColorSpace space(layout.model, model >= 0 && model < 4 ? names[model] : "Other",
                       std::move(iccProfile));
    KVBitmapPtr bitmap = KVBitmap::create(bitmapLayout, std::move(space));
    if (!bitmap)
        return nullptr;
    const std::uint32_t maximum = layout.bitsPerSample == 16 ? 65535u : 255u;
    const bool premultiplied =
        layout.hasAlpha && (layout.bitmapFormat & kBitmapFormatAlphaNonpremultiplied) == 0;
    const int colours = layout.samplesPerPixel - (layout.hasAlpha ? 1 : 0);
    for (std::int64_t y = 0; y < height; ++y) {
        for (std::int64_t x = 0; x < width; ++x) {
            // Gradients that differ per channel, plus a fine ripple so that 16-bit values use
            // their low byte.
            const double u = static_cast<double>(x) / std::max<std::int64_t>(1, width - 1);
            const double v = static_cast<double>(y) / std::max<std::int64_t>(1, height - 1);
            std::uint32_t alpha = maximum;
            if (layout.hasAlpha) {
                alpha = static_cast<std::uint32_t>((0.25 + 0.75 * (1.0 - u * v)) * maximum);
                setSampleAt(*bitmap, x, y, colours, alpha);
            }
            for (int c = 0; c < colours; ++c) {
                const double mix = c == 0 ? u : c == 1 ? v : c == 2 ? 1.0 - u : (u + v) / 2;
                std::uint32_t value =
                    static_cast<std::uint32_t>(mix * (maximum - 40)) + (x * 7 + y * 3 + c) % 37;
                if (premultiplied)
                    value = value * alpha / maximum;
                setSampleAt(*bitmap, x, y, c, std::min(value, maximum));
            }
        }
    }
    return bitmap;
}

std::vector<std::uint8_t> systemProfile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file.good()) << "missing profile " << path;
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

TemporaryFolder::TemporaryFolder()
{
    std::random_device entropy;
    const std::filesystem::path base = std::filesystem::temp_directory_path();
    for (;;) {
        path_ = base / ("tintorra-imageio-" + std::to_string(entropy()));
        if (std::filesystem::create_directory(path_))
            break;
    }
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    std::filesystem::permissions(path_, std::filesystem::perms::owner_all,
                                 std::filesystem::perm_options::add, ignored);
    std::filesystem::remove_all(path_, ignored);
}

std::vector<std::string> TemporaryFolder::entries() const
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path_))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

void writeBytes(const std::filesystem::path& path, const std::vector<std::uint8_t>& bytes)
{
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
}

} // namespace tintorra::test
