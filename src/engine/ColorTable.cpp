#include "engine/ColorTable.h"

#include "colour/ColorConversions.h"
#include "colour/ColorMatrices.h"
#include "common/Diagnostics.h"
#include "common/ParallelLoops.h"
#include "engine/ColorTableBuild.h"
#include "engine/ColorTableOrder.h"
#include "engine/PackedSamples.h"
#include "engine/PixelColorGrouping.h"
#include "engine/TableAllocation.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <limits>

namespace tintorra {

namespace {

constexpr std::uint64_t kLargestOffset = std::numeric_limits<std::uint32_t>::max();

// Converts the distinct colours into entries of the table's mode. The samples of pixels that
// are opaque or stored straight are linearised through a table of the 256 possible values, which
// gives exactly what the conversion of each value would.
class EntryConverter {
public:
    EntryConverter(double imageGamma, bool premultiplied, const Matrix3& rgbToXyzMatrix)
        : exponent_(1.0 / imageGamma), premultiplied_(premultiplied), matrix_(rgbToXyzMatrix)
    {
        for (unsigned value = 0; value < 256; ++value) {
            linear_[value] = gammaDecode({value / 255.0, 0.0, 0.0, 1.0}, exponent_).c0;
        }
    }

    // Converts `count` colours in mode `colorSpaceModel`, with the mode's dispatch outside the
    // loop.
    void convert(ColorSpaceModel colorSpaceModel, const DistinctColor* colors, std::size_t count,
                 color_table_lch_entry_info* entries) const
    {
        switch (colorSpaceModel) {
        case ColorSpaceModel::LChuv:
            return convertAll<ColorSpaceModel::LChuv>(colors, count, entries);
        case ColorSpaceModel::LChab:
            return convertAll<ColorSpaceModel::LChab>(colors, count, entries);
        case ColorSpaceModel::HCL:
            return convertAll<ColorSpaceModel::HCL>(colors, count, entries);
        case ColorSpaceModel::HSB:
            return convertAll<ColorSpaceModel::HSB>(colors, count, entries);
        case ColorSpaceModel::HSL:
            break;
        }
        return convertAll<ColorSpaceModel::HSL>(colors, count, entries);
    }

private:
    ColorComponents linearColor(std::uint32_t packed) const
    {
        const unsigned r = packed & 0xFF, g = (packed >> 8) & 0xFF, b = (packed >> 16) & 0xFF;
        const unsigned a = packed >> 24;
        if (premultiplied_ && a != 255) {
            ColorComponents stored{r / 255.0, g / 255.0, b / 255.0, a / 255.0};
            if (stored.alpha > 0.0) {
                stored.c0 /= stored.alpha;
                stored.c1 /= stored.alpha;
                stored.c2 /= stored.alpha;
            }
            return gammaDecode(stored, exponent_);
        }
        return {linear_[r], linear_[g], linear_[b], a / 255.0};
    }

    template <ColorSpaceModel kMode>
    void convertAll(const DistinctColor* colors, std::size_t count,
                    color_table_lch_entry_info* entries) const
    {
        for (std::size_t i = 0; i < count; ++i) {
            const ColorComponents linear = linearColor(colors[i].color);
            color_table_lch_entry_info& entry = entries[i];
            entry.saturation = 0.0f;
            entry.firstLocation = colors[i].firstLocation;
            entry.locationCount = colors[i].locationCount;
            if constexpr (kMode == ColorSpaceModel::LChuv || kMode == ColorSpaceModel::LChab) {
                const ColorComponents lch = kMode == ColorSpaceModel::LChuv
                                                ? rgbToLchuv(linear, matrix_)
                                                : rgbToLchab(linear, matrix_);
                store(entry, lch.c2, lch.c1, lch.c0, lch.alpha);
            } else if constexpr (kMode == ColorSpaceModel::HCL) {
                const HclComponents hcl = rgbToHcl(linear);
                store(entry, hcl.h, hcl.c, hcl.l, hcl.alpha);
                entry.saturation = static_cast<float>(hcl.saturation);
            } else if constexpr (kMode == ColorSpaceModel::HSB) {
                const ColorComponents hsb = rgbToHsb(linear);
                store(entry, hsb.c0, hsb.c1, hsb.c2, hsb.alpha);
            } else {
                const ColorComponents hsl = rgbToHsl(linear);
                store(entry, hsl.c0, hsl.c1, hsl.c2, hsl.alpha);
            }
        }
    }

    static void store(color_table_lch_entry_info& entry, double hue, double chroma,
                      double lightness, double alpha)
    {
        entry.hue = static_cast<float>(hue);
        entry.chroma = static_cast<float>(chroma);
        entry.lightness = static_cast<float>(lightness);
        entry.alpha = static_cast<float>(alpha);
    }

    double exponent_;
    bool premultiplied_;
    Matrix3 matrix_;
    std::array<double, 256> linear_{};
};

void reportGroupingFailure(GroupingFailure failure)
{
    switch (failure) {
    case GroupingFailure::pixelTable:
        diagnostic("Couldn't get memory for sortable pixel table\n");
        break;
    case GroupingFailure::colorList:
        diagnostic("Couldn't get memory for rgb color table\n");
        break;
    case GroupingFailure::locationTable:
        diagnostic("Couldn't get memory for pixel location table\n");
        break;
    case GroupingFailure::none:
        break;
    }
}

} // namespace

bool colorTableCanAddress(std::int64_t pixelsWide, std::int64_t pixelsHigh,
                          std::int64_t bytesPerRow, std::int64_t bytesPerPixel)
{
    if (pixelsWide <= 0 || pixelsHigh <= 0 || bytesPerRow < 0 || bytesPerPixel < 0) {
        return false;
    }
    const auto wide = static_cast<std::uint64_t>(pixelsWide);
    const auto high = static_cast<std::uint64_t>(pixelsHigh);
    if (wide > kLargestOffset || high > kLargestOffset || wide * high > kLargestOffset) {
        return false;
    }
    // Guard both products against overflow before forming them.
    const auto rowBytes = static_cast<std::uint64_t>(bytesPerRow);
    const auto pixelBytes = static_cast<std::uint64_t>(bytesPerPixel);
    if ((high - 1) != 0 && rowBytes > kLargestOffset / (high - 1)) {
        return false;
    }
    if ((wide - 1) != 0 && pixelBytes > kLargestOffset / (wide - 1)) {
        return false;
    }
    return (high - 1) * rowBytes + (wide - 1) * pixelBytes <= kLargestOffset;
}

LChColorTable detail::buildColorTable(const KVBitmapPtr& bitmap, double imageGamma,
                                      ColorSpaceModel colorSpaceModel, unsigned threads)
{
    LChColorTable table;
    table.colorSpaceModel = colorSpaceModel;
    if (!bitmap) {
        return table;
    }
    PackedSampleSource source;
    if (!packedSampleSourceFromBitmap(bitmap, imageGamma, source)) {
        return table;
    }
    if (!colorTableCanAddress(source.pixelsWide, source.pixelsHigh, source.bytesPerRow,
                              source.bytesPerPixel)) {
        diagnostic("Image too large for a table of 32-bit pixel offsets\n");
        return table;
    }

    threads = std::max(1u, threads);
    PixelColorGroups groups = groupPixelsByColor(source, threads);
    if (groups.failure != GroupingFailure::none) {
        reportGroupingFailure(groups.failure);
        return table;
    }

    TableArray<color_table_lch_entry_info> unordered =
        allocateTable<color_table_lch_entry_info>(groups.colorCount);
    TableArray<color_table_lch_entry_info> entries =
        allocateTable<color_table_lch_entry_info>(groups.colorCount);
    if (!unordered || !entries) {
        diagnostic("Couldn't get memory for final color table\n");
        return table;
    }

    Matrix3 rgbToXyz{};
    matrixFromColorSpace(rgbToXyz, nullptr);
    matrixFromColorSpace(rgbToXyz, &bitmap->colorSpace());
    const EntryConverter converter(source.imageGamma, source.hasAlpha && source.premultiplied,
                                   rgbToXyz);
    const std::size_t colorCount = groups.colorCount;
    const std::size_t chunks = std::clamp<std::size_t>(colorCount / 4096, 1, 8 * threads);
    runChunks(threads, chunks, [&](std::size_t chunk, unsigned) {
        const std::size_t first = colorCount * chunk / chunks;
        const std::size_t end = colorCount * (chunk + 1) / chunks;
        converter.convert(colorSpaceModel, groups.colors.get() + first, end - first,
                          unordered.get() + first);
    });
    groups.colors.reset();

    sortColorTableEntries(unordered.get(), entries.get(), colorCount, threads);

    table.count = colorCount;
    table.colors = std::move(entries);
    table.locations = std::move(groups.locations);
    table.locationCount = groups.locationCount;
    return table;
}

LChColorTable createLChColorTableWithImageGamma(const KVBitmapPtr& bitmap, double imageGamma,
                                                ColorSpaceModel colorSpaceModel)
{
    // Two threads at most: the table is built in the background while the interface runs.
    const std::uint64_t pixels =
        bitmap ? static_cast<std::uint64_t>(std::max<std::int64_t>(0, bitmap->pixelsWide())) *
                     static_cast<std::uint64_t>(std::max<std::int64_t>(0, bitmap->pixelsHigh()))
               : 0;
    return detail::buildColorTable(bitmap, imageGamma, colorSpaceModel,
                                   tableThreadCount(pixels, 2, std::size_t{1} << 16));
}

} // namespace tintorra
