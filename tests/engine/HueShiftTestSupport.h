#pragma once

// Shared pieces of the engine's shift tests: the sRGB gamuts, small bitmaps, records that select
// everything, and the engine run with its thread trace kept off the test output.

#include "colour/KVColorGamut.h"
#include "colour/WorkingSpaces.h"
#include "engine/ColorTable.h"
#include "engine/HueShift.h"
#include "engine/HueShiftParameters.h"
#include "image/PixelAccess.h"
#include "support/DiagnosticsCapture.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

namespace tintorra::test {

// One gamut per LCh model, built once for all tests.
inline KVColorGamutPtr sRGBGamut(ColorSpaceModel model)
{
    static const KVColorGamutPtr luv =
        std::make_shared<const KVColorGamut>(sRGBChromaticities(), ColorSpaceModel::LChuv);
    static const KVColorGamutPtr lab =
        std::make_shared<const KVColorGamut>(sRGBChromaticities(), ColorSpaceModel::LChab);
    return model == ColorSpaceModel::LChab ? lab : luv;
}

inline KVBitmapPtr makeRgbBitmap(std::int64_t wide, std::int64_t high, std::int64_t bits,
                                 bool hasAlpha, bool premultiplied = false, bool alphaFirst = false)
{
    KVBitmapLayout layout;
    layout.pixelsWide = wide;
    layout.pixelsHigh = high;
    layout.bitsPerSample = bits;
    layout.samplesPerPixel = hasAlpha ? 4 : 3;
    layout.hasAlpha = hasAlpha;
    layout.bitmapFormat = (premultiplied ? 0u : kBitmapFormatAlphaNonpremultiplied) |
                          (alphaFirst ? kBitmapFormatAlphaFirst : 0u);
    return KVBitmap::create(layout);
}

// Stored 16-bit samples; an 8-bit bitmap gets their high bytes.
inline void setWords(const KVBitmapPtr& bitmap, std::int64_t x, std::int64_t y, PixelWords words)
{
    const PixelManipulationOffsets offsets = pixelManipulationOffsetsWithImageGamma(bitmap, 1.0);
    const double scale = 1.0 / 65535.0;
    if (bitmap->bitsPerSample() == 8) {
        writeGammaFloats(x, y, offsets,
                         {(words.r >> 8) / 255.0, (words.g >> 8) / 255.0, (words.b >> 8) / 255.0,
                          (words.a >> 8) / 255.0});
        return;
    }
    writeGammaFloats(x, y, offsets,
                     {words.r * scale, words.g * scale, words.b * scale, words.a * scale});
}

// 8-bit samples, stored as c * 257 in 16-bit bitmaps so that both depths hold the same colour.
inline void setChars(const KVBitmapPtr& bitmap, std::int64_t x, std::int64_t y, PixelChars c)
{
    const auto word = [](std::uint8_t v) { return static_cast<std::uint16_t>(v * 257); };
    setWords(bitmap, x, y, {word(c.r), word(c.g), word(c.b), word(c.a)});
}

inline PixelWords wordsAt(const KVBitmapPtr& bitmap, std::int64_t x, std::int64_t y)
{
    PixelWords words;
    readGammaWords(x, y, pixelManipulationOffsetsWithImageGamma(bitmap, 1.0), words);
    return words;
}

inline PixelChars charsAt(const KVBitmapPtr& bitmap, std::int64_t x, std::int64_t y)
{
    PixelChars chars;
    readGammaChars(x, y, pixelManipulationOffsetsWithImageGamma(bitmap, 1.0), chars);
    return chars;
}

// Whether two bitmaps hold the same samples, byte for byte.
inline bool sameSamples(const KVBitmapPtr& a, const KVBitmapPtr& b)
{
    return a != nullptr && b != nullptr && a->sampleBytes() == b->sampleBytes() &&
           std::memcmp(a->bitmapData(), b->bitmapData(), a->sampleBytes()) == 0;
}

// Every hue, saturation and lightness selected, nothing changed but what a test sets.
inline HueShiftParameters selectEverything(ColorSpaceModel model)
{
    HueShiftParameters p;
    p.colorSpaceModel = model;
    p.hueLowerFalloff = 0.0;
    p.hueLower = 0.0;
    p.hueUpper = 1.0;
    p.hueUpperFalloff = 1.0;
    if (isLchColorMode(model)) {
        p.gamut = sRGBGamut(model);
    }
    return p;
}

// The engine run on an image, with its colour table when the image has 8-bit samples. The
// table lives as long as the result is needed.
struct ShiftRun {
    LChColorTable table;
    KVBitmapPtr result;
};

inline ShiftRun runShift(const KVBitmapPtr& source, HueShiftParameters p,
                         const KVBitmapPtr& destination = nullptr, unsigned processors = 0,
                         const TableWriteLimits& writeLimits = {})
{
    ShiftRun run;
    if (source->bitsPerSample() == 8) {
        run.table = createLChColorTableWithImageGamma(source, p.imageGamma, p.colorSpaceModel);
        p.colorTable = ColorTableRef::of(run.table);
    }
    test::captureDiagnostics();
    run.result = tintorra::detail::hueShift(source, destination, std::move(p), processors,
                                            EngineKernels::best, nullptr, {nullptr, writeLimits});
    test::capturedDiagnostics();
    return run;
}

} // namespace tintorra::test
