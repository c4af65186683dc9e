#include "HueShiftTestSupport.h"
#include "colour/ColorConversions.h"
#include "engine/HueShift.h"
#include "engine/ShiftOutcome.h"
#include "support/DiagnosticsCapture.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <set>
#include <sstream>
#include <string>

namespace tintorra {
namespace {

using test::charsAt;
using test::makeRgbBitmap;
using test::runShift;
using test::sameSamples;
using test::selectEverything;
using test::setChars;
using test::wordsAt;

// A small picture of many hues, saturations and lightnesses, with a few greys and, when it has
// alpha, a transparent and a half-transparent pixel. Every colour is stored as 8-bit samples
// (times 257 at 16 bits), so that both depths hold the same picture.
KVBitmapPtr testPicture(std::int64_t bits, bool hasAlpha = false, bool premultiplied = false)
{
    constexpr std::int64_t kWide = 24;
    constexpr std::int64_t kHigh = 9;
    const KVBitmapPtr bitmap = makeRgbBitmap(kWide, kHigh, bits, hasAlpha, premultiplied);
    for (std::int64_t y = 0; y < kHigh; ++y) {
        for (std::int64_t x = 0; x < kWide; ++x) {
            const double s = y == 0 ? 0.0 : 0.25 + 0.75 * (y % 4) / 3.0;
            const double v = 0.35 + 0.6 * ((y + x) % 5) / 4.0;
            const ColorComponents rgb = hsbToRgb({x / double(kWide), s, v, 1.0});
            const auto byte = [](double c) { return static_cast<std::uint8_t>(c * 255.0 + 0.5); };
            std::uint8_t a = 255;
            if (hasAlpha && x == 3 && y == 4) {
                a = 0;
            } else if (hasAlpha && x == 5) {
                a = 128;
            }
            const auto stored = [&](double c) {
                return premultiplied ? static_cast<std::uint8_t>(byte(c) * a / 255) : byte(c);
            };
            setChars(bitmap, x, y, {stored(rgb.c0), stored(rgb.c1), stored(rgb.c2), a});
        }
    }
    return bitmap;
}

// A shift that changes hue, saturation and lightness of a band of hues with soft edges.
HueShiftParameters bandShift(ColorSpaceModel model)
{
    HueShiftParameters p = selectEverything(model);
    p.hueLowerFalloff = 0.05;
    p.hueLower = 0.15;
    p.hueUpper = 0.35;
    p.hueUpperFalloff = 0.5;
    p.satLowerFalloff = 0.1;
    p.satLower = 0.3;
    p.targetHue = 0.6;
    p.targetSat = 0.4;
    p.saturationGain = 1.3;
    p.targetBri = -0.2;
    return p;
}

TEST(HueShift, RefusesSourcesItCannotShift)
{
    const HueShiftParameters p = selectEverything(ColorSpaceModel::HSB);
    EXPECT_EQ(runShift(KVBitmap::deviceWhiteAlpha88Rep(4, 4, false), p).result, nullptr);
    EXPECT_EQ(runShift(KVBitmap::deviceWhite8Rep(4, 4), p).result, nullptr);
    EXPECT_EQ(hueShift(nullptr, nullptr, p), nullptr);
    // An 8-bit image needs the colour table of its mode.
    const KVBitmapPtr picture = testPicture(8);
    HueShiftParameters wrongTable = p;
    LChColorTable table =
        createLChColorTableWithImageGamma(picture, p.imageGamma, ColorSpaceModel::HSL);
    wrongTable.colorTable = ColorTableRef::of(table);
    test::captureDiagnostics();
    EXPECT_EQ(hueShift(picture, nullptr, wrongTable), nullptr);
    test::capturedDiagnostics();
    // Without a table there is nothing to shift: a copy of the source comes back.
    const KVBitmapPtr copy = hueShift(picture, nullptr, p);
    ASSERT_NE(copy, nullptr);
    EXPECT_NE(copy, picture);
    EXPECT_TRUE(sameSamples(copy, picture));
}

TEST(HueShift, ShiftsInPlaceWhenTheDestinationIsTheSource)
{
    for (const std::int64_t bits : {8, 16}) {
        const KVBitmapPtr source = testPicture(bits);
        const KVBitmapPtr untouched = source->copy();
        const auto run = runShift(source, bandShift(ColorSpaceModel::LChuv), source);
        EXPECT_EQ(run.result, source) << bits;
        EXPECT_FALSE(sameSamples(source, untouched)) << bits;
        const auto fresh = runShift(untouched, bandShift(ColorSpaceModel::LChuv));
        EXPECT_TRUE(sameSamples(source, fresh.result)) << bits;
    }
}

TEST(HueShift, ADestinationOfAnotherLayoutIsReplacedByACopy)
{
    const KVBitmapPtr source = testPicture(16);
    const KVBitmapPtr other = makeRgbBitmap(5, 5, 16, false);
    const KVBitmapPtr withAlpha =
        makeRgbBitmap(source->pixelsWide(), source->pixelsHigh(), 16, true);
    for (const KVBitmapPtr& given : {other, withAlpha}) {
        const auto run = runShift(source, bandShift(ColorSpaceModel::HCL), given);
        ASSERT_NE(run.result, nullptr);
        EXPECT_NE(run.result, given);
        EXPECT_NE(run.result, source);
        EXPECT_EQ(run.result->pixelsWide(), source->pixelsWide());
        EXPECT_EQ(run.result->hasAlpha(), source->hasAlpha());
    }
}

TEST(HueShift, AMatchingDestinationIsUsedWhateverItHeld)
{
    for (const std::int64_t bits : {8, 16}) {
        const KVBitmapPtr source = testPicture(bits, true);
        const KVBitmapPtr given =
            makeRgbBitmap(source->pixelsWide(), source->pixelsHigh(), bits, true);
        std::memset(given->bitmapData(), 0xA5, given->sampleBytes());
        const auto run = runShift(source, bandShift(ColorSpaceModel::LChab), given);
        EXPECT_EQ(run.result, given) << bits;
        EXPECT_TRUE(sameSamples(given, runShift(source, bandShift(ColorSpaceModel::LChab)).result))
            << bits;
    }
}

TEST(HueShift, ResultsDoNotDependOnTheNumberOfThreads)
{
    for (const std::int64_t bits : {8, 16}) {
        for (const ColorSpaceModel model : kColorSpaceModels) {
            const KVBitmapPtr source = testPicture(bits, true, true);
            const KVBitmapPtr single = runShift(source, bandShift(model), nullptr, 1).result;
            // More threads than rows (9) or, at 8 bits, close to the number of colours.
            for (const unsigned processors : {2u, 3u, 16u, 500u}) {
                EXPECT_TRUE(sameSamples(
                    single, runShift(source, bandShift(model), nullptr, processors).result))
                    << bits << " " << colorSpaceModelNumber(model) << " " << processors;
            }
        }
    }
}

TEST(HueShift, UnselectedPixelsAreCopiedBitForBit)
{
    for (const std::int64_t bits : {8, 16}) {
        for (const ColorSpaceModel model : {ColorSpaceModel::LChuv, ColorSpaceModel::HSB}) {
            const KVBitmapPtr source = testPicture(bits, true, true);
            HueShiftParameters p = bandShift(model);
            const KVBitmapPtr result = runShift(source, p, source->copy()).result;
            normalizeHueShiftParameters(p);
            const PixelManipulationOffsets offsets =
                pixelManipulationOffsetsWithImageGamma(source, p.imageGamma);
            Matrix3 M{};
            if (p.gamut) {
                p.gamut->copy_RGB_to_XYZ_matrix(M);
            }
            int unselected = 0;
            for (std::int64_t y = 0; y < source->pixelsHigh(); ++y) {
                for (std::int64_t x = 0; x < source->pixelsWide(); ++x) {
                    ColorComponents linear;
                    readLinearFloats(x, y, offsets, linear);
                    const double w =
                        isLchColorMode(model)
                            ? lchSelection(lchFromLinearRgb(linear, model, M), p, p.gamut.get())
                                  .weight
                            : cylinderSelection(cylinderFromLinearRgb(linear, model), p).weight;
                    if (w == 0.0) {
                        ++unselected;
                        EXPECT_EQ(wordsAt(result, x, y), wordsAt(source, x, y)) << x << "," << y;
                    }
                }
            }
            EXPECT_GT(unselected, 50);
        }
    }
}

// An image of one colour shifted to its own hue, nothing else changed, comes back within one
// code value in every mode and at both depths.
TEST(HueShift, AColourShiftedToItsOwnHueComesBack)
{
    const PixelChars colours[] = {{200, 40, 30, 255},
                                  {30, 160, 90, 255},
                                  {70, 80, 220, 255},
                                  {240, 220, 60, 255},
                                  {128, 30, 160, 255}};
    for (const PixelChars& colour : colours) {
        for (const ColorSpaceModel model : kColorSpaceModels) {
            for (const std::int64_t bits : {8, 16}) {
                const KVBitmapPtr source = makeRgbBitmap(3, 2, bits, false);
                for (std::int64_t y = 0; y < 2; ++y) {
                    for (std::int64_t x = 0; x < 3; ++x) {
                        setChars(source, x, y, colour);
                    }
                }
                HueShiftParameters p = selectEverything(model);
                ColorComponents linear;
                readLinearFloats(0, 0, pixelManipulationOffsetsWithImageGamma(source, p.imageGamma),
                                 linear);
                Matrix3 M{};
                if (p.gamut) {
                    p.gamut->copy_RGB_to_XYZ_matrix(M);
                }
                p.targetHue = isLchColorMode(model)
                                  ? hueFraction(lchFromLinearRgb(linear, model, M).c2)
                                  : cylinderFromLinearRgb(linear, model).h;
                const KVBitmapPtr result = runShift(source, p).result;
                ASSERT_NE(result, nullptr);
                const PixelWords in = wordsAt(source, 1, 1);
                const PixelWords out = wordsAt(result, 1, 1);
                // LChab reads hues with the fast arctangent (up to 0.58 degrees off) and writes
                // them exactly, so its colours may move by up to two 8-bit codes.
                const int code = bits == 8 ? 256 : 257;
                const int tolerance =
                    model == ColorSpaceModel::LChab ? 2 * code : (bits == 8 ? code : 1);
                EXPECT_LE(std::abs(in.r - out.r), tolerance)
                    << colorSpaceModelNumber(model) << " " << bits;
                EXPECT_LE(std::abs(in.g - out.g), tolerance)
                    << colorSpaceModelNumber(model) << " " << bits;
                EXPECT_LE(std::abs(in.b - out.b), tolerance)
                    << colorSpaceModelNumber(model) << " " << bits;
            }
        }
    }
}

// The colour-table path (8 bits) and the per-pixel path (16 bits) give the same picture within
// one 8-bit code value.
TEST(HueShift, EightAndSixteenBitPathsAgree)
{
    for (const ColorSpaceModel model : kColorSpaceModels) {
        for (const int variant : {0, 1, 2, 3}) {
            HueShiftParameters p = bandShift(model);
            p.preserveHue = variant == 1 ? 1 : 0;
            p.blendToFalloffHues = variant == 2 ? 1 : 0;
            if (variant == 3) {
                p.targetBri = 0.0;
                p.targetSat = -0.6;
                for (std::size_t k = 0; k < p.targetBriTenVals.size(); ++k) {
                    p.targetBriTenVals[k] = std::sqrt(k / 10.0);
                }
                p.curveGain = 1.4;
            }
            for (const MaskView mask : {MaskView::shiftedImage, MaskView::blackMask,
                                        MaskView::whiteMask, MaskView::hoverHighlight}) {
                // The LCh hover highlight shows partial selection differently on purpose.
                if (mask == MaskView::hoverHighlight && isLchColorMode(model)) {
                    continue;
                }
                p.maskToShow = mask;
                p.brightnessToHighlight = 0.6;
                const auto eight = runShift(testPicture(8, true), p);
                const auto sixteen = runShift(testPicture(16, true), p);
                int worst = 0;
                for (std::int64_t y = 0; y < 9; ++y) {
                    for (std::int64_t x = 0; x < 24; ++x) {
                        const PixelChars a = charsAt(eight.result, x, y);
                        const PixelWords b = wordsAt(sixteen.result, x, y);
                        const auto to8 = [](std::uint16_t w) {
                            return static_cast<int>(w / 257.0 + 0.5);
                        };
                        worst = std::max({worst, std::abs(a.r - to8(b.r)), std::abs(a.g - to8(b.g)),
                                          std::abs(a.b - to8(b.b))});
                    }
                }
                EXPECT_LE(worst, 1) << "model " << colorSpaceModelNumber(model) << " variant "
                                    << variant << " mask " << maskViewNumber(mask);
            }
        }
    }
}

TEST(HueShift, EveryWorkerTracesItsIndexOnStandardOutput)
{
    const KVBitmapPtr source = testPicture(16);
    test::captureDiagnostics();
    ASSERT_NE(hueShift(source, nullptr, bandShift(ColorSpaceModel::HSB), 3), nullptr);
    const std::string trace = test::capturedDiagnostics();
    std::istringstream lines(trace);
    std::multiset<std::string> seen;
    for (std::string line; std::getline(lines, line);) {
        seen.insert(line);
    }
    EXPECT_EQ(seen, (std::multiset<std::string>{"thread: 0", "thread: 1", "thread: 2"}));
    EXPECT_EQ(trace.size(), 3 * std::string("thread: 0\n").size());
}

TEST(HueShift, MinusOneSaturationGreysTheSelection)
{
    HueShiftParameters p = selectEverything(ColorSpaceModel::HSB);
    p.targetSat = -1.0;
    const KVBitmapPtr result = runShift(testPicture(16), p).result;
    for (std::int64_t x = 0; x < 24; ++x) {
        const PixelWords w = wordsAt(result, x, 5);
        EXPECT_EQ(w.r, w.g);
        EXPECT_EQ(w.g, w.b);
    }
}

} // namespace
} // namespace tintorra
