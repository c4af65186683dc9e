#include "image/PixelAccess.h"
#include "support/DiagnosticsCapture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>
#include <string>
#include <vector>

namespace tintorra {
namespace {

// A layout the pixel routines round-trip, with the sample slot of each channel: the sample
// index within the pixel (chunky) or the plane index (planar); -1 for a channel that is not
// stored.
struct Layout {
    const char* name;
    std::int64_t samples;
    bool hasAlpha, planar, alphaFirst;
    std::int64_t padSamples; // unused samples after each chunky pixel
    int red, green, blue, alpha;
    bool grey;
};

constexpr Layout kLayouts[] = {
    {"grey", 1, false, false, false, 0, 0, 0, 0, -1, true},
    {"grey planar", 1, false, true, false, 0, 0, 0, 0, -1, true},
    {"grey alpha", 2, true, false, false, 0, 0, 0, 0, 1, true},
    {"grey alpha planar", 2, true, true, false, 0, 0, 0, 0, 1, true},
    {"RGB", 3, false, false, false, 0, 0, 1, 2, -1, false},
    {"RGB padded", 3, false, false, false, 1, 0, 1, 2, -1, false},
    {"RGB planar", 3, false, true, false, 0, 0, 1, 2, -1, false},
    {"RGBA", 4, true, false, false, 0, 0, 1, 2, 3, false},
    {"ARGB", 4, true, false, true, 0, 1, 2, 3, 0, false},
    {"RGBA planar", 4, true, true, false, 0, 0, 1, 2, 3, false},
    {"ARGB planar", 4, true, true, true, 0, 1, 2, 3, 0, false},
};

constexpr std::int64_t kRowPadding = 6;

KVBitmapPtr makeBitmap(const Layout& layout, std::int64_t bits, std::int64_t side,
                       bool premultiplied)
{
    const std::int64_t pixelSamples = layout.planar ? 1 : layout.samples + layout.padSamples;
    const unsigned format = (layout.alphaFirst ? kBitmapFormatAlphaFirst : 0u) |
                            (premultiplied ? 0u : kBitmapFormatAlphaNonpremultiplied);
    return KVBitmap::create({side, side, bits, layout.samples, layout.hasAlpha, layout.planar,
                             format, side * pixelSamples * bits / 8 + kRowPadding,
                             pixelSamples * bits},
                            layout.grey ? KVColorSpace::deviceGray() : KVColorSpace::deviceRGB());
}

// Where a sample must lie, worked out from the layout alone. Planes of 16-bit samples are
// addressed at twice their distance from the first.
std::uint8_t* sampleAddress(const KVBitmapPtr& bitmap, const Layout& layout, int slot,
                            std::int64_t x, std::int64_t y)
{
    const std::int64_t bytesPerSample = bitmap->bitsPerSample() / 8;
    std::uint8_t* row = bitmap->bitmapData() + y * bitmap->bytesPerRow();
    if (layout.planar) {
        return row + slot * static_cast<std::int64_t>(bitmap->planeBytes()) * bytesPerSample +
               x * bytesPerSample;
    }
    const std::int64_t pixelBytes = (layout.samples + layout.padSamples) * bytesPerSample;
    return row + x * pixelBytes + slot * bytesPerSample;
}

unsigned storedCode(const KVBitmapPtr& bitmap, const Layout& layout, int slot, std::int64_t x,
                    std::int64_t y)
{
    const std::uint8_t* sample = sampleAddress(bitmap, layout, slot, x, y);
    return bitmap->bitsPerSample() == 8 ? sample[0] : sample[0] | (unsigned{sample[1]} << 8);
}

void storeCode(const KVBitmapPtr& bitmap, const Layout& layout, int slot, std::int64_t x,
               std::int64_t y, unsigned code)
{
    std::uint8_t* sample = sampleAddress(bitmap, layout, slot, x, y);
    sample[0] = static_cast<std::uint8_t>(code & 0xFF);
    if (bitmap->bitsPerSample() == 16) {
        sample[1] = static_cast<std::uint8_t>(code >> 8);
    }
}

struct Codes {
    unsigned r, g, b, a;
};

// Distinct codes per pixel that together visit every code of the depth in every channel.
Codes codesFor(std::int64_t index, unsigned maximum, const Layout& layout)
{
    const auto i = static_cast<unsigned>(index);
    const unsigned count = maximum + 1;
    Codes codes{i % count, (i * 7919u + 13u) % count, (maximum - i % count), (i * 40503u) % count};
    if (layout.grey) {
        codes.g = codes.r;
        codes.b = codes.r;
    }
    return codes;
}

// 16 x 16 pixels visit all 8-bit codes, 256 x 256 all 16-bit ones.
constexpr std::int64_t sideFor(std::int64_t bits)
{
    return bits == 8 ? 16 : 256;
}

TEST(PixelGammaRoundTrip, EveryCodeOfEveryLayoutAt8And16Bits)
{
    for (const auto& layout : kLayouts) {
        for (const std::int64_t bits : {8, 16}) {
            SCOPED_TRACE(std::string(layout.name) + " " + std::to_string(bits));
            const std::int64_t side = sideFor(bits);
            const unsigned maximum = bits == 8 ? 255u : 65535u;
            const auto bitmap = makeBitmap(layout, bits, side, false);
            ASSERT_NE(bitmap, nullptr);
            const auto offsets = pixelManipulationOffsetsWithImageGamma(bitmap, 1.0);
            ASSERT_TRUE(offsets.supported);

            for (std::int64_t y = 0; y < side; ++y) {
                for (std::int64_t x = 0; x < side; ++x) {
                    const Codes codes = codesFor(y * side + x, maximum, layout);
                    writeGammaFloats(x, y, offsets,
                                     {codes.r / double(maximum), codes.g / double(maximum),
                                      codes.b / double(maximum), codes.a / double(maximum)});
                }
            }

            for (std::int64_t y = 0; y < side; ++y) {
                for (std::int64_t x = 0; x < side; ++x) {
                    const Codes codes = codesFor(y * side + x, maximum, layout);
                    const unsigned alpha = layout.hasAlpha ? codes.a : maximum;
                    ASSERT_EQ(storedCode(bitmap, layout, layout.red, x, y), codes.r);
                    ASSERT_EQ(storedCode(bitmap, layout, layout.green, x, y), codes.g);
                    ASSERT_EQ(storedCode(bitmap, layout, layout.blue, x, y), codes.b);
                    if (layout.hasAlpha) {
                        ASSERT_EQ(storedCode(bitmap, layout, layout.alpha, x, y), codes.a);
                    }
                    if (layout.padSamples > 0) {
                        ASSERT_EQ(storedCode(bitmap, layout, 3, x, y), 0u) << "pad written";
                    }

                    ColorComponents floats{-1.0, -1.0, -1.0, -1.0};
                    readGammaFloats(x, y, offsets, floats);
                    ASSERT_NEAR(floats.c0 * maximum, codes.r, 1e-9);
                    ASSERT_NEAR(floats.c1 * maximum, codes.g, 1e-9);
                    ASSERT_NEAR(floats.c2 * maximum, codes.b, 1e-9);
                    ASSERT_NEAR(floats.alpha * maximum, alpha, 1e-9);

                    // Bytes are the high halves of 16-bit codes, words 8-bit codes shifted up.
                    const auto asChar = [bits](unsigned code) {
                        return static_cast<std::uint8_t>(bits == 8 ? code : code >> 8);
                    };
                    const auto asWord = [bits](unsigned code) {
                        return static_cast<std::uint16_t>(bits == 8 ? code << 8 : code);
                    };
                    PixelChars chars;
                    readGammaChars(x, y, offsets, chars);
                    ASSERT_EQ(chars,
                              (PixelChars{asChar(codes.r), asChar(codes.g), asChar(codes.b),
                                          layout.hasAlpha ? asChar(codes.a) : std::uint8_t{255}}));
                    PixelWords words;
                    readGammaWords(x, y, offsets, words);
                    ASSERT_EQ(words, (PixelWords{asWord(codes.r), asWord(codes.g), asWord(codes.b),
                                                 layout.hasAlpha ? asWord(codes.a)
                                                                 : std::uint16_t{65535}}));
                }
            }
        }
    }
}

// Reading linear floats and writing them back must leave every stored code as it was, for
// every layout, depth, alpha mode and gamma: unselected pixels pass through the engine this way.
TEST(PixelLinearRoundTrip, ReadThenWriteKeepsEveryCode)
{
    for (const auto& layout : kLayouts) {
        for (const std::int64_t bits : {8, 16}) {
            for (const bool premultiplied : {false, true}) {
                if (premultiplied && !layout.hasAlpha) {
                    continue;
                }
                const std::int64_t side = sideFor(bits);
                const unsigned maximum = bits == 8 ? 255u : 65535u;
                const auto bitmap = makeBitmap(layout, bits, side, premultiplied);
                ASSERT_NE(bitmap, nullptr);
                std::vector<Codes> stored;
                for (std::int64_t y = 0; y < side; ++y) {
                    for (std::int64_t x = 0; x < side; ++x) {
                        Codes codes = codesFor(y * side + x, maximum, layout);
                        if (premultiplied) {
                            // Premultiplied colour never exceeds its alpha.
                            codes.r %= codes.a + 1;
                            codes.g = layout.grey ? codes.r : codes.g % (codes.a + 1);
                            codes.b = layout.grey ? codes.r : codes.b % (codes.a + 1);
                        }
                        storeCode(bitmap, layout, layout.red, x, y, codes.r);
                        storeCode(bitmap, layout, layout.green, x, y, codes.g);
                        storeCode(bitmap, layout, layout.blue, x, y, codes.b);
                        if (layout.hasAlpha) {
                            storeCode(bitmap, layout, layout.alpha, x, y, codes.a);
                        }
                        stored.push_back(codes);
                    }
                }

                for (const double gamma : {1.0 / 3.0, 1.0 / 2.2, 0.8, 1.0}) {
                    SCOPED_TRACE(std::string(layout.name) + " " + std::to_string(bits) +
                                 (premultiplied ? " premultiplied " : " straight ") +
                                 std::to_string(gamma));
                    const auto offsets = pixelManipulationOffsetsWithImageGamma(bitmap, gamma);
                    for (std::int64_t y = 0; y < side; ++y) {
                        for (std::int64_t x = 0; x < side; ++x) {
                            ColorComponents colour;
                            readLinearFloats(x, y, offsets, colour);
                            writeLinearFloats(x, y, offsets, colour);
                            const Codes& codes = stored[static_cast<std::size_t>(y * side + x)];
                            ASSERT_EQ(storedCode(bitmap, layout, layout.red, x, y), codes.r);
                            ASSERT_EQ(storedCode(bitmap, layout, layout.green, x, y), codes.g);
                            ASSERT_EQ(storedCode(bitmap, layout, layout.blue, x, y), codes.b);
                            if (layout.hasAlpha) {
                                ASSERT_EQ(storedCode(bitmap, layout, layout.alpha, x, y), codes.a);
                            }
                        }
                    }
                }
            }
        }
    }
}

// Hand-worked values of the linear routines, 8 bits.
TEST(PixelLinearFloats, WriteEncodesAndPremultipliesReadUndoesIt)
{
    const struct {
        const char* name;
        bool premultiplied;
        double gamma;
        ColorComponents linear;
        PixelChars stored;
    } cases[] = {
        // 0.5 * 255 + 0.5 = 128; 0.25 * 255 + 0.5 = 64.25 truncates to 64.
        {"premultiplied linear", true, 1.0, {1.0, 0.5, 0.0, 0.5}, {128, 64, 0, 128}},
        {"straight linear", false, 1.0, {1.0, 0.5, 0.0, 0.5}, {255, 128, 0, 128}},
        // 0.5^(1/2.2) = 0.72974, times alpha 0.5, times 255, plus 0.5 = 93.54.
        {"premultiplied gamma", true, 1.0 / 2.2, {0.5, 0.0, 1.0, 0.5}, {93, 0, 128, 128}},
        // 0.2^(1/2.2) = 0.48116, * 255 + 0.5 = 123.19.
        {"straight gamma", false, 1.0 / 2.2, {0.2, 0.2, 0.2, 1.0}, {123, 123, 123, 255}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const auto bitmap = KVBitmap::deviceRGBA8888Rep(2, 2, c.premultiplied);
        const auto offsets = pixelManipulationOffsetsWithImageGamma(bitmap, c.gamma);
        writeLinearFloats(1, 1, offsets, c.linear);
        const std::uint8_t* pixel = bitmap->bitmapData() + bitmap->bytesPerRow() + 4;
        EXPECT_EQ((PixelChars{pixel[0], pixel[1], pixel[2], pixel[3]}), c.stored);
    }

    const auto bitmap = KVBitmap::deviceRGBA8888Rep(1, 1, true);
    std::uint8_t* pixel = bitmap->bitmapData();
    const std::uint8_t stored[] = {128, 64, 0, 128};
    std::copy(std::begin(stored), std::end(stored), pixel);
    ColorComponents colour;
    readLinearFloats(0, 0, pixelManipulationOffsetsWithImageGamma(bitmap, 1.0), colour);
    EXPECT_EQ(colour.c0, 1.0);
    EXPECT_DOUBLE_EQ(colour.c1, 0.5);
    EXPECT_EQ(colour.c2, 0.0);
    EXPECT_DOUBLE_EQ(colour.alpha, 128.0 / 255.0);

    // Premultiplied with alpha 0: the stored colour is kept, not divided.
    pixel[0] = 100;
    pixel[1] = 50;
    pixel[2] = 25;
    pixel[3] = 0;
    readLinearFloats(0, 0, pixelManipulationOffsetsWithImageGamma(bitmap, 1.0), colour);
    EXPECT_DOUBLE_EQ(colour.c0, 100.0 / 255.0);
    EXPECT_DOUBLE_EQ(colour.c2, 25.0 / 255.0);
    EXPECT_EQ(colour.alpha, 0.0);
    readLinearFloats(0, 0, pixelManipulationOffsetsWithImageGamma(bitmap, 0.5), colour);
    EXPECT_NEAR(colour.c0, 0.15378700499807765, 1e-15);
}

TEST(PixelLinearFloats, SixteenBitsAndTheClampedGamma)
{
    // 16 bits, straight, gamma 0.5: 0.25 stores sqrt as 32768, read back as (32768 / 65535)^2.
    const auto deep = KVBitmap::create({1, 1, 16, 3, false});
    const auto deepOffsets = pixelManipulationOffsetsWithImageGamma(deep, 0.5);
    writeLinearFloats(0, 0, deepOffsets, {0.25, 0.0, 1.0, 1.0});
    const std::uint8_t* samples = deep->bitmapData();
    EXPECT_EQ(samples[0] | (samples[1] << 8), 32768);
    EXPECT_EQ(samples[4] | (samples[5] << 8), 65535);
    ColorComponents colour;
    readLinearFloats(0, 0, deepOffsets, colour);
    EXPECT_NEAR(colour.c0, 0.2500076295691578, 1e-15);
    EXPECT_EQ(colour.c2, 1.0);
    EXPECT_EQ(colour.alpha, 1.0);

    // 2.2 is used as 1 (stored = linear); 0.25 as 1/3 (linear = stored cubed).
    const auto grey = KVBitmap::deviceWhite8Rep(1, 1);
    grey->bitmapData()[0] = 51; // 0.2
    const struct {
        double gamma, linear;
    } cases[] = {{2.2, 0.2}, {1.0, 0.2}, {0.5, 0.04}, {0.25, 0.008}, {0.1, 0.008}};
    for (const auto& c : cases) {
        readLinearFloats(0, 0, pixelManipulationOffsetsWithImageGamma(grey, c.gamma), colour);
        EXPECT_NEAR(colour.c0, c.linear, 1e-14) << c.gamma;
        EXPECT_NEAR(colour.c2, c.linear, 1e-14) << c.gamma;
    }
}

TEST(PixelReaders, BytesAreHighHalvesOfWordsAndWordsAre256TimesBytes)
{
    const auto deep = KVBitmap::create({2, 1, 16, 4, true});
    // Pixel 1, little-endian: 0x12AB, 0x00FF, 0xFF00, 0x8001.
    const std::uint8_t bytes[] = {0xAB, 0x12, 0xFF, 0x00, 0x00, 0xFF, 0x01, 0x80};
    std::copy(std::begin(bytes), std::end(bytes), deep->bitmapData() + 8);
    const auto offsets = pixelManipulationOffsetsWithImageGamma(deep, 1.0);
    PixelChars chars;
    readGammaChars(1, 0, offsets, chars);
    EXPECT_EQ(chars, (PixelChars{0x12, 0x00, 0xFF, 0x80}));
    PixelWords words;
    readGammaWords(1, 0, offsets, words);
    EXPECT_EQ(words, (PixelWords{0x12AB, 0x00FF, 0xFF00, 0x8001}));

    const auto bitmap = KVBitmap::deviceARGB8888Rep(1, 1, false);
    const std::uint8_t argb[] = {255, 1, 0, 128};
    std::copy(std::begin(argb), std::end(argb), bitmap->bitmapData());
    readGammaWords(0, 0, pixelManipulationOffsetsWithImageGamma(bitmap, 1.0), words);
    // 255 deliberately reads as 65280, not 65535.
    EXPECT_EQ(words, (PixelWords{256, 0, 32768, 65280}));
}

TEST(PixelReaders, TwoSampleGreyAlphaFirstReadsAlphaAsColour)
{
    // Red, green and blue stay at offset 0, which with alpha first is the alpha sample.
    const auto bitmap = KVBitmap::create(
        {1, 1, 8, 2, true, false, kBitmapFormatAlphaFirst | kBitmapFormatAlphaNonpremultiplied},
        KVColorSpace::deviceGray());
    bitmap->bitmapData()[0] = 40;  // alpha
    bitmap->bitmapData()[1] = 200; // grey
    const auto offsets = pixelManipulationOffsetsWithImageGamma(bitmap, 1.0);
    EXPECT_TRUE(offsets.supported);
    EXPECT_EQ(offsets.greyOffset, 1u);
    PixelChars chars;
    readGammaChars(0, 0, offsets, chars);
    EXPECT_EQ(chars, (PixelChars{40, 40, 40, 40}));
    // Writing puts colour and then alpha into the alpha sample; the grey sample is untouched.
    writeGammaFloats(0, 0, offsets, {1.0, 1.0, 1.0, 0.0});
    EXPECT_EQ(bitmap->bitmapData()[0], 0);
    EXPECT_EQ(bitmap->bitmapData()[1], 200);
}

// A record whose samples the routines cannot address (32-bit floats, say).
TEST(PixelUnsupportedDepth, ReadersLeaveTheirResultWritersWriteNothingAndSaySo)
{
    const auto bitmap = KVBitmap::deviceRGBA8888Rep(1, 1, true);
    std::fill_n(bitmap->bitmapData(), 4, std::uint8_t{200});
    auto offsets = pixelManipulationOffsetsWithImageGamma(bitmap, 0.5);
    offsets.bitsPerSample = 32;

    PixelChars chars{1, 2, 3, 4};
    readGammaChars(0, 0, offsets, chars);
    EXPECT_EQ(chars, (PixelChars{1, 2, 3, 4}));
    PixelWords words{5, 6, 7, 8};
    readGammaWords(0, 0, offsets, words);
    EXPECT_EQ(words, (PixelWords{5, 6, 7, 8}));
    ColorComponents floats{0.1, 0.2, 0.3, 0.4};
    readGammaFloats(0, 0, offsets, floats);
    EXPECT_EQ(floats, (ColorComponents{0.1, 0.2, 0.3, 0.4}));
    // The linear reader still un-premultiplies and decodes what it held.
    ColorComponents linear{0.25, 0.5, 1.0, 0.5};
    readLinearFloats(0, 0, offsets, linear);
    EXPECT_EQ(linear, (ColorComponents{0.25, 1.0, 4.0, 0.5}));

    test::captureDiagnostics();
    writeGammaFloats(0, 0, offsets, {0.0, 0.0, 0.0, 0.0});
    EXPECT_EQ(test::capturedDiagnostics(), "Unsupported pixel format");
    test::captureDiagnostics();
    writeLinearFloats(0, 0, offsets, {0.0, 0.0, 0.0, 0.0});
    EXPECT_EQ(test::capturedDiagnostics(), "Unsupported pixel format");
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(bitmap->bitmapData()[i], 200) << "sample " << i;
    }
}

TEST(PixelCopy, CopiesColourAndAlphaOnlyWhenBothHaveIt)
{
    const auto rgba = [] { return KVBitmap::deviceRGBA8888Rep(2, 2, false); };
    const auto rgb = [](std::int64_t pixelBits) {
        return KVBitmap::create({2, 2, 8, 3, false, false, 0, 0, pixelBits});
    };
    const struct {
        const char* name;
        KVBitmapPtr source, destination;
        std::vector<std::uint8_t> expected; // destination pixel (1, 1) after the copy
    } cases[] = {
        {"RGBA to ARGB", rgba(), KVBitmap::deviceARGB8888Rep(2, 2, false), {40, 10, 20, 30}},
        {"RGBA to RGBA", rgba(), rgba(), {10, 20, 30, 40}},
        {"RGBA to padded RGB", rgba(), rgb(32), {10, 20, 30, 99}},
        {"RGB to RGBA", rgb(0), rgba(), {10, 20, 30, 99}},
        // One grey sample takes red, green and blue in turn; blue is written last.
        {"RGBA to grey", rgba(), KVBitmap::deviceWhite8Rep(2, 2), {30}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const auto source = pixelManipulationOffsetsWithImageGamma(c.source, 1.0);
        const auto destination = pixelManipulationOffsetsWithImageGamma(c.destination, 1.0);
        std::fill_n(c.destination->bitmapData(), c.destination->planeBytes(), std::uint8_t{99});
        writeGammaFloats(1, 1, source, {10 / 255.0, 20 / 255.0, 30 / 255.0, 40 / 255.0});

        copyPixel(1, 1, source, destination);

        const std::uint8_t* pixel =
            c.destination->bitmapData() + c.destination->bytesPerRow() + destination.bytesPerPixel;
        const std::vector<std::uint8_t> copied(pixel, pixel + c.expected.size());
        EXPECT_EQ(copied, c.expected);
        // Nothing else of the destination changes.
        EXPECT_EQ(c.destination->bitmapData()[0], 99);
    }
}

TEST(PixelCopy, SixteenBitsAreNotCopied)
{
    const KVBitmapLayout deep{1, 1, 16, 4, true};
    const auto source = KVBitmap::create(deep);
    const auto destination = KVBitmap::create(deep);
    std::fill_n(source->bitmapData(), 8, std::uint8_t{0xEE});
    test::captureDiagnostics();
    copyPixel(0, 0, pixelManipulationOffsetsWithImageGamma(source, 1.0),
              pixelManipulationOffsetsWithImageGamma(destination, 1.0));
    EXPECT_EQ(test::capturedDiagnostics(), "Unsupported pixel format");
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(destination->bitmapData()[i], 0) << "byte " << i;
    }
}

// Planes of 16-bit samples are addressed at doubled distances: green lands where the third
// plane would be, blue and alpha in the slack beyond the fourth. Every pixel of an odd-sized
// bitmap is touched so that the address sanitizer sees the far end.
TEST(PixelPlanar16, DoubledPlaneDistancesStayInsideTheBitmap)
{
    const KVBitmapLayout layout{37, 23, 16, 4, true, true, kBitmapFormatAlphaNonpremultiplied};
    const auto bitmap = KVBitmap::create(layout);
    ASSERT_NE(bitmap, nullptr);
    const auto offsets = pixelManipulationOffsetsWithImageGamma(bitmap, 1.0 / 2.2);

    const ColorComponents colour{1.0, 1.0, 1.0, 1.0};
    for (std::int64_t y = 0; y < layout.pixelsHigh; ++y) {
        for (std::int64_t x = 0; x < layout.pixelsWide; ++x) {
            writeLinearFloats(x, y, offsets, colour);
            ColorComponents read;
            readLinearFloats(x, y, offsets, read);
            ASSERT_EQ(read, colour);
        }
    }

    // Planes 0, 2, 4 and 6 (in plane lengths) are full, 1, 3 and 5 untouched.
    const std::size_t planeBytes = bitmap->planeBytes();
    for (std::size_t slot = 0; slot < 7; ++slot) {
        const std::uint8_t* plane = bitmap->bitmapData() + slot * planeBytes;
        const std::uint8_t expected = slot % 2 == 0 ? 0xFF : 0x00;
        for (std::size_t i = 0; i < planeBytes; ++i) {
            ASSERT_EQ(plane[i], expected) << "slot " << slot << " byte " << i;
        }
    }
}

TEST(MixColors, EndsAreExactAndTheMiddleIsLinear)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    const ColorComponents a{0.1, 0.2, 0.3, 1.0};
    const ColorComponents b{0.9, 0.6, 0.3, 0.5};
    // Blending through the formula would spread the other colour's NaN or infinity, or lose -0.
    const ColorComponents poisoned{nan, inf, -inf, nan};
    EXPECT_EQ(mixColors(a, poisoned, 0.0), a);
    EXPECT_EQ(mixColors(poisoned, b, 1.0), b);
    EXPECT_TRUE(std::signbit(mixColors(a, {-0.0, -0.0, -0.0, -0.0}, 1.0).alpha));
    for (const double t : {0.25, 0.5, 0.75}) {
        const ColorComponents m = mixColors(a, b, t);
        EXPECT_NEAR(m.c0, 0.1 + 0.8 * t, 1e-15) << t;
        EXPECT_NEAR(m.c1, 0.2 + 0.4 * t, 1e-15) << t;
        EXPECT_NEAR(m.c2, 0.3, 1e-15) << t;
        EXPECT_NEAR(m.alpha, 1.0 - 0.5 * t, 1e-15) << t;
    }
}

} // namespace
} // namespace tintorra
