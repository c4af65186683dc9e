#include "HueShiftTestSupport.h"
#include "VectorisedRecords.h"
#include "engine/BatchMath.h"
#include "engine/HueShiftWorkers.h"

#include <gtest/gtest.h>

#include <cstring>

namespace tintorra {
namespace {

// The colour-table worker's four-lane stages against its scalar steps: 8-bit pictures shifted
// both ways must agree byte for byte, whatever the record asks for.

enum class AlphaLayout { none, straight, premultiplied };

// An 8-bit picture as wide as the records' painted masks, more colours than one stretch of the
// stages: noise over the whole cube, with greys, black, white and, where there is alpha,
// transparent and half-transparent pixels. Some colours repeat, so that entries stand for
// several pixels.
KVBitmapPtr noisePicture(AlphaLayout alpha)
{
    constexpr std::int64_t kWide = 601;
    constexpr std::int64_t kHigh = 5;
    const KVBitmapPtr bitmap = test::makeRgbBitmap(kWide, kHigh, 8, alpha != AlphaLayout::none,
                                                   alpha == AlphaLayout::premultiplied);
    std::uint32_t lcg = 4711;
    const auto next = [&] {
        lcg = lcg * 1664525u + 1013904223u;
        return static_cast<std::uint8_t>(lcg >> 24);
    };
    for (std::int64_t y = 0; y < kHigh; ++y) {
        for (std::int64_t x = 0; x < kWide; ++x) {
            std::uint8_t r = next();
            std::uint8_t g = next();
            std::uint8_t b = next();
            if (x % 50 == 0) {
                g = r;
                b = r;
            } else if (x % 97 == 1) {
                r = g = b = 0;
            } else if (x % 89 == 2) {
                r = g = b = 255;
            } else if (x % 11 == 4) {
                r = 200;
                g = 40;
                b = static_cast<std::uint8_t>(y * 20);
            }
            std::uint8_t a = 255;
            if (alpha != AlphaLayout::none && x % 7 == 3) {
                a = 128;
            } else if (alpha != AlphaLayout::none && x % 13 == 5) {
                a = 0;
            }
            if (alpha == AlphaLayout::premultiplied) {
                const auto times = [&](std::uint8_t v) {
                    return static_cast<std::uint8_t>(v * a / 255);
                };
                r = times(r);
                g = times(g);
                b = times(b);
            }
            test::setChars(bitmap, x, y, {r, g, b, a});
        }
    }
    return bitmap;
}

KVBitmapPtr shifted(const KVBitmapPtr& source, const HueShiftParameters& p, bool vectorised)
{
    tableWorkerPaths().vectorised = vectorised;
    const KVBitmapPtr result = test::runShift(source, p).result;
    tableWorkerPaths().vectorised = true;
    return result;
}

bool sameSamples(const KVBitmapPtr& a, const KVBitmapPtr& b)
{
    return a != nullptr && b != nullptr && a->sampleBytes() == b->sampleBytes() &&
           std::memcmp(a->bitmapData(), b->bitmapData(), a->sampleBytes()) == 0;
}

class VectorisedTableRecords : public testing::TestWithParam<test::RecordCase> {};

TEST_P(VectorisedTableRecords, StoreWhatTheScalarStepsStore)
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

INSTANTIATE_TEST_SUITE_P(Cases, VectorisedTableRecords, testing::ValuesIn(test::kRecordCases),
                         test::recordCaseName);

} // namespace
} // namespace tintorra
