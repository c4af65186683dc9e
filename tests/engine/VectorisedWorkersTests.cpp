#include "HueShiftTestSupport.h"
#include "VectorisedRecords.h"
#include "engine/BatchMath.h"
#include "engine/Engine.h"
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
    Engine engine({0, vectorised ? EngineKernels::best : EngineKernels::plain});
    ShiftRequest request{source, nullptr, p, nullptr};
    if (source->bitsPerSample() == 8) {
        auto table = engine.buildColorTable(source, p.imageGamma, p.colorSpaceModel);
        EXPECT_TRUE(table.ok());
        request.colorTable = table.value();
    }
    auto result = engine.shift(request);
    return result ? result.value() : nullptr;
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
    HueShiftParameters p = test::selectEverything(ColorSpaceModel::LChuv);
    test::softBand(p);
    const KVBitmapPtr source = test::noisePicture(16, AlphaLayout::straight);
    const KVBitmapPtr expected = shifted(source, p, false);

    const KVBitmapPtr given = test::noisePicture(16, AlphaLayout::straight, 77);
    EXPECT_TRUE(sameSamples(test::runShift(source, p, given).result, expected));

    const KVBitmapPtr inPlace = source->copy();
    EXPECT_TRUE(sameSamples(test::runShift(inPlace, p, inPlace).result, expected));
    EXPECT_TRUE(sameSamples(inPlace, expected));
}

// A stretch whose every pixel is selected is written without the source's samples under it:
// a destination holding another picture must still end with every byte of the scalar picture,
// alpha included.
TEST(VectorisedRows, WholeSelectedStretchesKeepNothingOfTheDestination)
{
    if (!batch::vectorised()) {
        GTEST_SKIP() << "no AVX2: the scalar steps are the only ones";
    }
    const HueShiftParameters p = test::selectEverything(ColorSpaceModel::LChuv);
    for (const AlphaLayout alpha : {AlphaLayout::none, AlphaLayout::straight,
                                    AlphaLayout::premultiplied, AlphaLayout::alphaFirst}) {
        const KVBitmapPtr source = test::noisePicture(16, alpha, 12, test::Variety::coloursOnly);
        const KVBitmapPtr expected = shifted(source, p, false);
        const std::string where = "alpha " + std::to_string(static_cast<int>(alpha));
        EXPECT_FALSE(sameSamples(expected, source)) << where;
        const KVBitmapPtr given = test::noisePicture(16, alpha, 7, test::Variety::coloursOnly);
        EXPECT_TRUE(sameSamples(test::runShift(source, p, given).result, expected)) << where;
    }
}

} // namespace
} // namespace tintorra
