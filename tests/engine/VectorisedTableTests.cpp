#include "HueShiftTestSupport.h"
#include "VectorisedRecords.h"
#include "engine/BatchMath.h"
#include "engine/HueShiftWorkers.h"

#include <gtest/gtest.h>


namespace tintorra {
namespace {

using test::AlphaLayout;
using test::sameSamples;

// The colour-table worker's four-lane stages against its scalar steps: 8-bit pictures shifted
// both ways must agree byte for byte, whatever the record asks for.

KVBitmapPtr shifted(const KVBitmapPtr& source, const HueShiftParameters& p, bool vectorised)
{
    tableWorkerPaths().vectorised = vectorised;
    const KVBitmapPtr result = test::runShift(source, p).result;
    tableWorkerPaths().vectorised = true;
    return result;
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
        const KVBitmapPtr source = test::noisePicture(8, alpha);
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
