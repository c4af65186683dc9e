#include "colour/ColorConversions.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>

namespace tintorra {
namespace {

TEST(ComponentPacking, IntegersToComponents)
{
    EXPECT_EQ(componentsFromBytes(255, 0, 51, 102), (ColorComponents{1.0, 0.0, 0.2, 0.4}));
    EXPECT_EQ(componentsFromBytes(10, 20, 30),
              (ColorComponents{10 / 255.0, 20 / 255.0, 30 / 255.0, 1.0}));
    EXPECT_EQ(componentsFromWords(65535, 0, 13107), (ColorComponents{1.0, 0.0, 0.2, 1.0}));
    // Packed: r in the low byte, alpha in the high byte.
    EXPECT_EQ(componentsFromBytes(std::uint32_t{0x80ff4020}),
              (ColorComponents{0x20 / 255.0, 0x40 / 255.0, 1.0, 0x80 / 255.0}));
}

TEST(ComponentPacking, EverySampleValueSurvivesTheRoundTrip)
{
    for (int v = 0; v < 256; ++v) {
        std::uint8_t r = 0, g = 0, b = 0, a = 0;
        const auto byte = static_cast<std::uint8_t>(v);
        bytesFromComponents(componentsFromBytes(byte, byte, byte, byte), r, g, b, &a);
        ASSERT_EQ(r, v);
        ASSERT_EQ(g, v);
        ASSERT_EQ(b, v);
        ASSERT_EQ(a, v);
    }
    for (int v = 0; v < 65536; ++v) {
        std::uint16_t r = 0, g = 0, b = 0, a = 0;
        const auto word = static_cast<std::uint16_t>(v);
        wordsFromComponents(componentsFromWords(word, word, word, word), r, g, b, &a);
        ASSERT_EQ(r, v);
        ASSERT_EQ(a, v);
    }
}

TEST(ComponentPacking, RoundingAndOptionalAlpha)
{
    std::uint8_t r = 0, g = 0, b = 0;
    bytesFromComponents({0.5, 0.498, 1.0, 0.0}, r, g, b);
    EXPECT_EQ(r, 128); // 127.5 rounds up
    EXPECT_EQ(g, 127);
    EXPECT_EQ(b, 255);
    std::uint16_t wr = 0, wg = 0, wb = 0, wa = 7;
    wordsFromComponents({0.5, 0.0, 1.0, 0.25}, wr, wg, wb);
    EXPECT_EQ(wr, 32768);
    EXPECT_EQ(wa, 7); // no destination for alpha given
    wordsFromComponents({0.5, 0.0, 1.0, 0.25}, wr, wg, wb, &wa);
    EXPECT_EQ(wa, 16384);
    // Out-of-range input is limited rather than wrapped.
    bytesFromComponents({-0.5, 1.5, 0.0, 1.0}, r, g, b);
    EXPECT_EQ(r, 0);
    EXPECT_EQ(g, 255);
}

TEST(ComponentPacking, PackedLayoutIsLowByteFirst)
{
    EXPECT_EQ(packedFromComponents({1.0, 0.0, 0.0, 0.0}), 0x000000ffu);
    EXPECT_EQ(packedFromComponents({0.0, 1.0, 0.0, 0.0}), 0x0000ff00u);
    EXPECT_EQ(packedFromComponents({0.0, 0.0, 1.0, 0.0}), 0x00ff0000u);
    EXPECT_EQ(packedFromComponents({0.0, 0.0, 0.0, 1.0}), 0xff000000u);
    // A quarter is the lower edge of byte 64's share; the factor just below 256 puts it in 63.
    const std::uint32_t packed = packedFromComponents({0.25, 0.5, 0.75, 1.0});
    EXPECT_EQ(packed, 0xffbf7f3fu);
    EXPECT_EQ(packedFromComponents({0.2501, 0.5001, 0.7501, 1.0}), 0xffc08040u);
}

TEST(ComponentPacking, EqualShareQuantisationGivesEveryIntegerTheSameWidth)
{
    // Sample 0..1 densely: each byte value must receive the same number of samples, and 1.0
    // still lands on the top value.
    constexpr int kSamples = 256 * 64;
    std::array<int, 256> packedCounts{};
    std::array<int, 256> byteCounts{};
    for (int i = 0; i < kSamples; ++i) {
        const double value = (i + 0.5) / kSamples;
        ++packedCounts[packedFromComponents({value, 0.0, 0.0, 0.0}) & 0xffu];
        ++byteCounts[byteFromComponent(value)];
    }
    for (int v = 0; v < 256; ++v) {
        EXPECT_EQ(packedCounts[v], 64) << v;
        EXPECT_EQ(byteCounts[v], 64) << v;
    }
    EXPECT_EQ(packedFromComponents({1.0, 1.0, 1.0, 1.0}), 0xffffffffu);
    EXPECT_EQ(byteFromComponent(1.0), 255);
    EXPECT_EQ(byteFromComponent(0.0), 0);
    EXPECT_EQ(wordFromComponent(1.0), 65535);
    EXPECT_EQ(wordFromComponent(0.5), 32767);
    EXPECT_EQ(wordFromComponent(0.5 + 1.0 / 65536.0), 32768);
}

TEST(ComponentPacking, RequantiseRepairsOnlyRoundingNoise)
{
    struct Case {
        ColorComponents in;
        ColorComponents expected;
    };
    const Case cases[] = {
        {{-1e-7, 0.5, 1.0000001, 0.5}, {0.0, 0.5, 1.0, 0.5}},
        {{0.3, 1.0 + 0.4 / 65535.0, 0.7, 1.0}, {0.3, 1.0, 0.7, 1.0}},
        // In range: untouched, not snapped.
        {{0.123456789, 0.5, 0.987654321, 1.0}, {0.123456789, 0.5, 0.987654321, 1.0}},
        // Genuinely out of range: black, alpha kept.
        {{-0.01, 0.5, 0.5, 0.8}, {0.0, 0.0, 0.0, 0.8}},
        {{0.2, 0.5, 1.0 + 0.6 / 65535.0, 0.8}, {0.0, 0.0, 0.0, 0.8}},
    };
    for (const Case& c : cases) {
        const ColorComponents out = requantiseOutOfRange(c.in);
        EXPECT_EQ(out, c.expected) << c.in.c0 << " " << c.in.c1 << " " << c.in.c2;
    }
}

TEST(ComponentPacking, NormaliseToUnitRange)
{
    const ColorComponents inRange{0.2, 0.4, 0.6, 0.5};
    EXPECT_EQ(normaliseToUnitRange(inRange), inRange);
    const ColorComponents below = normaliseToUnitRange({-0.5, 0.5, 1.0, 0.5});
    EXPECT_DOUBLE_EQ(below.c0, 0.0);
    EXPECT_DOUBLE_EQ(below.c1, 2.0 / 3.0);
    EXPECT_DOUBLE_EQ(below.c2, 1.0);
    EXPECT_EQ(normaliseToUnitRange({0.2, 0.5, 2.0, 0.5}), (ColorComponents{0.1, 0.25, 1.0, 0.5}));

    const ColorComponents stretched = normaliseToUnitRangeStretched(inRange);
    EXPECT_DOUBLE_EQ(stretched.c0, 0.0);
    EXPECT_DOUBLE_EQ(stretched.c1, 0.5);
    EXPECT_DOUBLE_EQ(stretched.c2, 1.0);
    EXPECT_EQ(normaliseToUnitRangeStretched({0.3, 0.3, 0.3, 0.5}),
              (ColorComponents{0.0, 0.0, 0.0, 0.5}));
}

TEST(ComponentPacking, Unpremultiply)
{
    EXPECT_EQ(unpremultiply({0.25, 0.5, 0.1, 0.5}), (ColorComponents{0.5, 1.0, 0.2, 0.5}));
    EXPECT_EQ(unpremultiply({0.25, 0.5, 0.1, 0.0}), (ColorComponents{0.25, 0.5, 0.1, 0.0}));
}

TEST(ColorMath, Remap)
{
    struct Case {
        double x, inLow, inHigh, outLow, outHigh, expected;
    };
    const Case cases[] = {
        {5.0, 0.0, 10.0, 100.0, 200.0, 150.0},
        {-5.0, 0.0, 10.0, 100.0, 200.0, 50.0}, // extrapolates
        {0.25, 0.0, 1.0, 1.0, 0.0, 0.75},      // reversed output
        {3.0, 3.0, 3.0, 10.0, 20.0, 20.0},     // collapsed input, x on it
        {4.0, 3.0, 3.0, 10.0, 20.0, 10.0},     // collapsed input, x elsewhere
        {4.0, 0.0, 8.0, 7.0, 7.0, 7.0},        // collapsed output
    };
    for (const Case& c : cases) {
        EXPECT_DOUBLE_EQ(remap(c.x, c.inLow, c.inHigh, c.outLow, c.outHigh), c.expected) << c.x;
    }
}

} // namespace
} // namespace tintorra
