#include "HueShiftTestSupport.h"
#include "VectorisedRecords.h"
#include "engine/BatchMath.h"
#include "engine/HueShiftWorkers.h"
#include "engine/SelectionWeights.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace tintorra {
namespace {

// The row worker's four-lane stages against its scalar steps: whole pictures shifted both ways
// must agree bit for bit, whatever the record asks for.

enum class AlphaLayout { none, straight, premultiplied };

// A 16-bit picture wider than one stretch of the four-lane stages and not a multiple of four
// wide: noise over the whole cube of samples, with greys, black, white and, where there is
// alpha, transparent and half-transparent pixels.
KVBitmapPtr noisePicture(AlphaLayout alpha, std::uint32_t noise = 2024)
{
    constexpr std::int64_t kWide = 601;
    constexpr std::int64_t kHigh = 5;
    const KVBitmapPtr bitmap = test::makeRgbBitmap(kWide, kHigh, 16, alpha != AlphaLayout::none,
                                                   alpha == AlphaLayout::premultiplied);
    std::uint32_t lcg = noise;
    const auto next = [&] {
        lcg = lcg * 1664525u + 1013904223u;
        return static_cast<std::uint16_t>(lcg >> 16);
    };
    for (std::int64_t y = 0; y < kHigh; ++y) {
        for (std::int64_t x = 0; x < kWide; ++x) {
            std::uint16_t r = next();
            std::uint16_t g = next();
            std::uint16_t b = next();
            if (x % 50 == 0) {
                g = r;
                b = r;
            } else if (x % 97 == 1) {
                r = g = b = 0;
            } else if (x % 89 == 2) {
                r = g = b = 65535;
            }
            std::uint16_t a = 65535;
            if (alpha != AlphaLayout::none && x % 7 == 3) {
                a = 32768;
            } else if (alpha != AlphaLayout::none && x % 13 == 5) {
                a = 0;
            }
            if (alpha == AlphaLayout::premultiplied) {
                const auto times = [&](std::uint16_t v) {
                    return static_cast<std::uint16_t>(v * static_cast<std::uint32_t>(a) / 65535);
                };
                r = times(r);
                g = times(g);
                b = times(b);
            }
            test::setWords(bitmap, x, y, {r, g, b, a});
        }
    }
    return bitmap;
}

KVBitmapPtr shifted(const KVBitmapPtr& source, const HueShiftParameters& p, bool vectorised)
{
    rowWorkerPaths().vectorised = vectorised;
    const KVBitmapPtr result = test::runShift(source, p).result;
    rowWorkerPaths().vectorised = true;
    return result;
}

bool sameSamples(const KVBitmapPtr& a, const KVBitmapPtr& b)
{
    return a != nullptr && b != nullptr && a->sampleBytes() == b->sampleBytes() &&
           std::memcmp(a->bitmapData(), b->bitmapData(), a->sampleBytes()) == 0;
}

class VectorisedRowsRecords : public testing::TestWithParam<test::RecordCase> {};

TEST_P(VectorisedRowsRecords, PaintWhatTheScalarStepsPaint)
{
    if (!batch::vectorised()) {
        GTEST_SKIP() << "no AVX2: the scalar steps are the only ones";
    }
    const test::RecordCase& c = GetParam();
    HueShiftParameters p = test::selectEverything(c.model);
    c.adjust(p);
    for (const AlphaLayout alpha :
         {AlphaLayout::none, AlphaLayout::straight, AlphaLayout::premultiplied}) {
        const KVBitmapPtr source = noisePicture(alpha);
        const KVBitmapPtr scalar = shifted(source, p, false);
        const KVBitmapPtr fourLanes = shifted(source, p, true);
        ASSERT_NE(scalar, nullptr);
        // The record does something to the picture, so that agreeing means something.
        EXPECT_FALSE(sameSamples(scalar, source)) << static_cast<int>(alpha);
        EXPECT_TRUE(sameSamples(fourLanes, scalar)) << static_cast<int>(alpha);
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, VectorisedRowsRecords, testing::ValuesIn(test::kRecordCases),
                         test::recordCaseName);

// In place, into a given bitmap that holds something else, and into a fresh copy.
TEST(VectorisedRows, EveryDestinationGetsTheScalarPicture)
{
    if (!batch::vectorised()) {
        GTEST_SKIP() << "no AVX2: the scalar steps are the only ones";
    }
    HueShiftParameters p = test::selectEverything(0);
    test::softBand(p);
    const KVBitmapPtr source = noisePicture(AlphaLayout::straight);
    const KVBitmapPtr expected = shifted(source, p, false);

    const KVBitmapPtr given = noisePicture(AlphaLayout::straight, 77);
    EXPECT_TRUE(sameSamples(test::runShift(source, p, given).result, expected));

    const KVBitmapPtr inPlace = source->copy();
    EXPECT_TRUE(sameSamples(test::runShift(inPlace, p, inPlace).result, expected));
    EXPECT_TRUE(sameSamples(inPlace, expected));
}

} // namespace
} // namespace tintorra
