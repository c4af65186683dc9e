#include "HueShiftTestSupport.h"
#include "colour/ColorConversions.h"
#include "engine/HueShift.h"
#include "engine/HueShiftWorkers.h"
#include "engine/SelectionMasks.h"
#include "support/DiagnosticsCapture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

namespace tintorra {
namespace {

KVBitmapPtr rainbow(bool premultiplied)
{
    const KVBitmapPtr bitmap = test::makeRgbBitmap(37, 23, 8, true, premultiplied);
    for (std::int64_t y = 0; y < 23; ++y) {
        for (std::int64_t x = 0; x < 37; ++x) {
            const ColorComponents c =
                hsbToRgb({(x * 7 + y * 3) % 50 / 50.0, 0.3 + 0.02 * y, 0.4 + 0.015 * x, 1.0});
            const auto a = static_cast<std::uint8_t>(x == 4 ? 90 : 255);
            const auto byte = [&](double v) {
                const auto stored = static_cast<unsigned>(v * 255 + 0.5);
                return static_cast<std::uint8_t>(premultiplied ? stored * a / 255 : stored);
            };
            test::setChars(bitmap, x, y, {byte(c.c0), byte(c.c1), byte(c.c2), a});
        }
    }
    return bitmap;
}

HueShiftParameters shiftOf(MaskView mask)
{
    HueShiftParameters p = test::selectEverything(ColorSpaceModel::LChuv);
    p.hueLowerFalloff = 0.2;
    p.hueLower = 0.3;
    p.hueUpper = 0.6;
    p.hueUpperFalloff = 0.75;
    p.targetHue = 0.95;
    p.targetSat = 0.2;
    p.maskToShow = mask;
    p.inclusionMask = KVBitmap::deviceWhite8Rep(37, 23);
    std::memset(p.inclusionMask->bitmapData(), 255, p.inclusionMask->sampleBytes());
    p.inclusionMask->bitmapData()[5] = 0;
    p.inclusionMask->bitmapData()[p.inclusionMask->bytesPerRow() * 7 + 9] = 77;
    return p;
}

// Blocks of a row or two and waves of a few dozen writes give the same picture as one block.
TEST(TableColorWriter, BlocksAndWavesDoNotChangeThePicture)
{
    for (const bool premultiplied : {false, true}) {
        for (const MaskView mask : {MaskView::shiftedImage, MaskView::selectionHighlight,
                                    MaskView::blackMask, MaskView::whiteMask}) {
            const KVBitmapPtr source = rainbow(premultiplied);
            const KVBitmapPtr reference = test::runShift(source, shiftOf(mask)).result;
            for (const auto& [block, wave] : {std::pair<std::uint64_t, std::uint64_t>{1, 40},
                                              {300, 7},
                                              {10000, 1},
                                              {150, 100000}}) {
                const TableWriteLimits limits{block, wave};
                for (const unsigned processors : {1u, 3u}) {
                    const KVBitmapPtr given = source->copy();
                    std::memset(given->bitmapData(), 0x5A, given->sampleBytes());
                    const KVBitmapPtr result =
                        test::runShift(source, shiftOf(mask), given, processors, limits).result;
                    ASSERT_EQ(result, given);
                    EXPECT_TRUE(test::sameSamples(result, reference))
                        << premultiplied << " " << maskViewNumber(mask) << " " << block << " "
                        << wave;
                    EXPECT_TRUE(test::sameSamples(
                        test::runShift(source, shiftOf(mask), nullptr, processors, limits).result,
                        reference));
                }
            }
        }
    }
}

// A table whose locations do not ascend within a colour (not one the builder makes) is still
// written completely.
TEST(TableColorWriter, WritesTablesWhoseLocationsDoNotAscend)
{
    const KVBitmapPtr source = rainbow(false);
    HueShiftParameters p = shiftOf(MaskView::shiftedImage);
    const KVBitmapPtr reference = test::runShift(source, p).result;

    LChColorTable table =
        createLChColorTableWithImageGamma(source, p.imageGamma, ColorSpaceModel::LChuv);
    std::vector<std::uint32_t> reversed(table.locations.get(),
                                        table.locations.get() + table.locationCount);
    for (std::uint64_t i = 0; i < table.count; ++i) {
        const auto& e = table.colors[i];
        std::reverse(reversed.begin() + e.firstLocation,
                     reversed.begin() + e.firstLocation + e.locationCount);
    }
    p.colorTable = ColorTableRef::of(table);
    p.colorTable.locations = reversed.data();
    for (const auto& [block, wave] :
         {std::pair<std::uint64_t, std::uint64_t>{1, 40}, {1u << 18, 8u << 20}}) {
        const KVBitmapPtr given = source->copy();
        std::memset(given->bitmapData(), 0, given->sampleBytes());
        test::captureDiagnostics();
        const KVBitmapPtr result = detail::hueShift(source, given, p, 2, EngineKernels::best,
                                                    nullptr, {nullptr, {block, wave}});
        test::capturedDiagnostics();
        EXPECT_TRUE(test::sameSamples(result, reference)) << block;
    }
}

} // namespace
} // namespace tintorra
