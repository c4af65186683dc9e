#include "HueShiftTestSupport.h"
#include "engine/Engine.h"
#include "engine/TableAllocation.h"
#include "support/DiagnosticsCapture.h"

#include <gtest/gtest.h>

#include <stop_token>

namespace tintorra {
namespace {

// A picture with a different colour in every pixel, tall enough that a run has many rows.
KVBitmapPtr gradientPicture(std::int64_t bits)
{
    const KVBitmapPtr picture = test::makeRgbBitmap(64, 256, bits, false);
    for (std::int64_t y = 0; y < 256; ++y) {
        for (std::int64_t x = 0; x < 64; ++x) {
            const auto r = static_cast<std::uint16_t>(x * 1024 + y);
            const auto g = static_cast<std::uint16_t>(y * 256);
            const auto b = static_cast<std::uint16_t>(65535 - x * 1024);
            if (bits == 16) {
                test::setWords(picture, x, y, {r, g, b, 65535});
            } else {
                test::setChars(picture, x, y,
                               {static_cast<std::uint8_t>(r >> 8), static_cast<std::uint8_t>(y),
                                static_cast<std::uint8_t>(b >> 8), 255});
            }
        }
    }
    return picture;
}

ShiftRequest requestFor(Engine& engine, const KVBitmapPtr& picture)
{
    ShiftRequest request{picture, nullptr, test::selectEverything(ColorSpaceModel::LChuv), nullptr};
    request.parameters.targetHue = 0.5;
    if (picture->bitsPerSample() == 8) {
        request.colorTable =
            engine.buildColorTable(picture, request.parameters.imageGamma, ColorSpaceModel::LChuv)
                .take();
    }
    return request;
}

class EngineRuns : public testing::TestWithParam<std::int64_t> {};

// A stop asked for while the workers run ends the run early as cancelled, with no picture.
TEST_P(EngineRuns, StopMidwayIsCancelledWithoutAPicture)
{
    Engine engine({2});
    const ShiftRequest request = requestFor(engine, gradientPicture(GetParam()));
    std::stop_source stop;
    int reports = 0;
    const auto stopAtFirstReport = [&](double fraction) {
        ++reports;
        EXPECT_LT(fraction, 1.0);
        stop.request_stop();
    };
    const Result<KVBitmapPtr> result = engine.shift(request, stop.get_token(), stopAtFirstReport);
    ASSERT_FALSE(result.ok());
    EXPECT_EQ(result.error().code, ErrorCode::cancelled);
    EXPECT_EQ(reports, 1);
}

// The request's colour table lives until the run ends, even when its owners let go midway: the
// picture is the one a run with the table held throughout gives.
TEST_P(EngineRuns, SharedTableOutlivesItsOwnersDuringARun)
{
    Engine engine({2});
    const KVBitmapPtr picture = gradientPicture(GetParam());
    const Result<KVBitmapPtr> reference = engine.shift(requestFor(engine, picture));
    ASSERT_TRUE(reference.ok());

    ShiftRequest request = requestFor(engine, picture);
    const Result<KVBitmapPtr> result =
        engine.shift(request, {}, [&](double) { request.colorTable.reset(); });
    ASSERT_TRUE(result.ok()) << result.error().message;
    EXPECT_TRUE(test::sameSamples(result.value(), reference.value()));
    EXPECT_FALSE(test::sameSamples(result.value(), picture));
}

INSTANTIATE_TEST_SUITE_P(Depths, EngineRuns, testing::Values(8, 16),
                         [](const testing::TestParamInfo<std::int64_t>& info) {
                             return std::to_string(info.param) + "bit";
                         });

// Running out of memory is an error that says so, never an empty table or a missing gamut.
TEST(Engine, AllocationFailuresAreErrorsWithTheirMessage)
{
    Engine engine(
        {.threads = 2, .tableMemory = {.failAllocationAfter = 0}, .failGamutAllocation = 0});
    // Another engine's injected failures are its own.
    Engine healthy({.threads = 2});
    test::captureDiagnostics();
    const auto table =
        engine.buildColorTable(gradientPicture(8), 1.0 / 2.2, ColorSpaceModel::LChuv);
    const auto gamut = engine.buildGamut(KVColorSpace::deviceRGB(), ColorSpaceModel::LChuv);
    EXPECT_TRUE(healthy.buildColorTable(gradientPicture(8), 1.0 / 2.2, ColorSpaceModel::LChuv));
    EXPECT_TRUE(healthy.buildGamut(KVColorSpace::deviceRGB(), ColorSpaceModel::LChuv));
    test::capturedDiagnostics();

    ASSERT_FALSE(table.ok());
    EXPECT_EQ(table.error().code, ErrorCode::outOfMemory);
    EXPECT_EQ(table.error().message, "There is not enough memory for the image's colour table; "
                                     "close other documents or programs and try again.");
    ASSERT_FALSE(gamut.ok());
    EXPECT_EQ(gamut.error().code, ErrorCode::outOfMemory);
    EXPECT_EQ(gamut.error().message, "There is not enough memory for the gamut tables; close "
                                     "other documents or programs and try again.");
}

// Each engine keeps the large blocks of its own tables, and a table that outlives its engine
// still frees its memory.
TEST(Engine, KeepsTableMemoryOfItsOwnAndNoLongerThanItLives)
{
    const KVBitmapPtr picture = test::makeRgbBitmap(1500, 1500, 8, false);
    ColorTablePtr survivor;
    Engine other({.threads = 1});
    {
        Engine engine({.threads = 1});
        survivor = engine.buildColorTable(picture, 1.0, ColorSpaceModel::LChuv).take();
        ASSERT_NE(survivor, nullptr);
        // The grouping's temporaries came back to this engine and to no other.
        EXPECT_GT(engine.retainedTableMemory(), 0u);
        EXPECT_EQ(other.retainedTableMemory(), 0u);
        engine.releaseRetainedTableMemory();
        EXPECT_EQ(engine.retainedTableMemory(), 0u);
    }
    EXPECT_EQ(survivor->count, 1u);
    survivor.reset();
    EXPECT_EQ(other.retainedTableMemory(), 0u);
}

// Requests the engine cannot serve are refused before any work.
TEST(Engine, RefusesRequestsItCannotServe)
{
    Engine engine({1});
    EXPECT_EQ(engine.shift({}).error().code, ErrorCode::invalidRequest);
    const ShiftRequest withoutTable{
        gradientPicture(8), nullptr, test::selectEverything(ColorSpaceModel::LChuv), {}};
    EXPECT_EQ(engine.shift(withoutTable).error().code, ErrorCode::invalidRequest);
    std::stop_source stopped;
    stopped.request_stop();
    EXPECT_EQ(
        engine.buildColorTable(gradientPicture(8), 1.0, ColorSpaceModel::LChuv, stopped.get_token())
            .error()
            .code,
        ErrorCode::cancelled);
}

} // namespace
} // namespace tintorra
