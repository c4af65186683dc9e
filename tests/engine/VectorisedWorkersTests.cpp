#include "HueShiftTestSupport.h"
#include "VectorisedRecords.h"
#include "engine/BatchMath.h"
#include "engine/HueShiftWorkers.h"
#include "engine/SelectionWeights.h"

#include <gtest/gtest.h>

#include <string>

namespace tintorra {
namespace {

using test::AlphaLayout;
using test::sameSamples;

// The workers' four-lane stages against their scalar steps: whole pictures shifted both ways
// must agree bit for bit, whatever the record asks for. 16-bit pictures go through the row
// worker, 8-bit ones through the colour-table worker.

KVBitmapPtr shifted(const KVBitmapPtr& source, const HueShiftParameters& p, bool vectorised)
{
    rowWorkerPaths().vectorised = vectorised;
    tableWorkerPaths().vectorised = vectorised;
    const KVBitmapPtr result = test::runShift(source, p).result;
    rowWorkerPaths().vectorised = true;
    tableWorkerPaths().vectorised = true;
    return result;
}

class VectorisedWorkersRecords : public testing::TestWithParam<test::RecordCase> {};

TEST_P(VectorisedWorkersRecords, PaintWhatTheScalarStepsPaint)
{
    if (!batch::vectorised()) {
        GTEST_SKIP() << "no AVX2: the scalar steps are the only ones";
    }
    const test::RecordCase& c = GetParam();
    HueShiftParameters p = test::selectEverything(c.model);
    c.adjust(p);
    for (const std::int64_t bits : {16, 8}) {
        for (const AlphaLayout alpha : {AlphaLayout::none, AlphaLayout::straight,
                                        AlphaLayout::premultiplied, AlphaLayout::alphaFirst}) {
            const KVBitmapPtr source = test::noisePicture(bits, alpha);
            const KVBitmapPtr scalar = shifted(source, p, false);
            const KVBitmapPtr fourLanes = shifted(source, p, true);
            ASSERT_NE(scalar, nullptr);
            const std::string where =
                std::to_string(bits) + " bits, alpha " + std::to_string(static_cast<int>(alpha));
            // The record does something to the picture, so that agreeing means something.
            EXPECT_FALSE(sameSamples(scalar, source)) << where;
            EXPECT_TRUE(sameSamples(fourLanes, scalar)) << where;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, VectorisedWorkersRecords, testing::ValuesIn(test::kRecordCases),
                         test::recordCaseName);

// In place, into a given bitmap that holds something else, and into a fresh copy.
TEST(VectorisedRows, EveryDestinationGetsTheScalarPicture)
{
    if (!batch::vectorised()) {
        GTEST_SKIP() << "no AVX2: the scalar steps are the only ones";
    }
    HueShiftParameters p = test::selectEverything(0);
    test::softBand(p);
    const KVBitmapPtr source = test::noisePicture(16, AlphaLayout::straight);
    const KVBitmapPtr expected = shifted(source, p, false);

    const KVBitmapPtr given = test::noisePicture(16, AlphaLayout::straight, 77);
    EXPECT_TRUE(sameSamples(test::runShift(source, p, given).result, expected));

    const KVBitmapPtr inPlace = source->copy();
    EXPECT_TRUE(sameSamples(test::runShift(inPlace, p, inPlace).result, expected));
    EXPECT_TRUE(sameSamples(inPlace, expected));
}

// Colours only, none grey or transparent, so that whole stretches are selected; where there is
// alpha, every seventh pixel half transparent, which ones depending on the noise.
KVBitmapPtr colourfulPicture(AlphaLayout alpha, std::uint32_t noise)
{
    constexpr std::int64_t kWide = 601;
    constexpr std::int64_t kHigh = 3;
    const KVBitmapPtr bitmap =
        test::makeRgbBitmap(kWide, kHigh, 16, alpha != AlphaLayout::none,
                            alpha == AlphaLayout::premultiplied, alpha == AlphaLayout::alphaFirst);
    std::uint32_t lcg = noise;
    const auto next = [&] {
        lcg = lcg * 1664525u + 1013904223u;
        return lcg >> 16;
    };
    for (std::int64_t y = 0; y < kHigh; ++y) {
        for (std::int64_t x = 0; x < kWide; ++x) {
            std::uint32_t rgb[3] = {next(), next(), next()};
            const std::uint32_t a =
                alpha != AlphaLayout::none && (x + noise) % 7 == 3 ? 32768 : 65535;
            for (std::uint32_t& sample : rgb) {
                sample = alpha == AlphaLayout::premultiplied ? sample * a / 65535 : sample;
            }
            test::setWords(bitmap, x, y,
                           {static_cast<std::uint16_t>(rgb[0]), static_cast<std::uint16_t>(rgb[1]),
                            static_cast<std::uint16_t>(rgb[2]), static_cast<std::uint16_t>(a)});
        }
    }
    return bitmap;
}

// A stretch whose every pixel is selected is written without the source's samples under it:
// a destination holding another picture must still end with every byte of the scalar picture,
// alpha included.
TEST(VectorisedRows, WholeSelectedStretchesKeepNothingOfTheDestination)
{
    if (!batch::vectorised()) {
        GTEST_SKIP() << "no AVX2: the scalar steps are the only ones";
    }
    const HueShiftParameters p = test::selectEverything(0);
    for (const AlphaLayout alpha : {AlphaLayout::none, AlphaLayout::straight,
                                    AlphaLayout::premultiplied, AlphaLayout::alphaFirst}) {
        const KVBitmapPtr source = colourfulPicture(alpha, 12);
        const KVBitmapPtr expected = shifted(source, p, false);
        const std::string where = "alpha " + std::to_string(static_cast<int>(alpha));
        EXPECT_FALSE(sameSamples(expected, source)) << where;
        const KVBitmapPtr given = colourfulPicture(alpha, 7);
        EXPECT_TRUE(sameSamples(test::runShift(source, p, given).result, expected)) << where;
    }
}

} // namespace
} // namespace tintorra
