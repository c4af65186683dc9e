#include "editor/LiveShifter.h"
#include "image/PixelAccess.h"

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <vector>

namespace tintorra {
namespace {

using namespace std::chrono_literals;

// A 16-bit picture whose every pixel differs, shifted pixel by pixel (no colour table needed).
KVBitmapPtr picture(std::int64_t side)
{
    KVBitmapLayout layout;
    layout.pixelsWide = side;
    layout.pixelsHigh = side;
    layout.bitsPerSample = 16;
    layout.samplesPerPixel = 3;
    layout.hasAlpha = false;
    KVBitmapPtr bitmap = KVBitmap::create(layout);
    for (std::int64_t y = 0; y < side; ++y) {
        auto* row =
            reinterpret_cast<std::uint16_t*>(bitmap->bitmapData() + y * bitmap->bytesPerRow());
        for (std::int64_t x = 0; x < side; ++x) {
            row[x * 3 + 0] = static_cast<std::uint16_t>(x * 65535 / side);
            row[x * 3 + 1] = static_cast<std::uint16_t>(y * 65535 / side);
            row[x * 3 + 2] = static_cast<std::uint16_t>((x + y) * 32767 / side);
        }
    }
    return bitmap;
}

ShiftRequest requestTowards(const KVBitmapPtr& source, double targetHue)
{
    ShiftRequest request{source, nullptr, {}, nullptr};
    HueShiftParameters& p = request.parameters;
    p.colorSpaceModel = ColorSpaceModel::HSB; // HSB: no gamut needed
    p.hueLowerFalloff = 0.0;
    p.hueLower = 0.0;
    p.hueUpper = 1.0;
    p.hueUpperFalloff = 1.0;
    p.targetHue = targetHue;
    return request;
}

bool sameSamples(const KVBitmapPtr& a, const KVBitmapPtr& b)
{
    return a->sampleBytes() == b->sampleBytes() &&
           std::memcmp(a->bitmapData(), b->bitmapData(), a->sampleBytes()) == 0;
}

// What the shifter delivered, in order, with a way to wait for a given request.
struct Deliveries {
    std::mutex mutex;
    std::condition_variable arrived;
    std::vector<std::uint64_t> numbers;
    KVBitmapPtr last;

    LiveShifter::Delivery sink()
    {
        return [this](std::uint64_t number, Result<KVBitmapPtr> result) {
            const std::lock_guard lock(mutex);
            numbers.push_back(number);
            last = result ? result.value() : nullptr;
            arrived.notify_all();
        };
    }

    bool waitFor(std::uint64_t number)
    {
        std::unique_lock lock(mutex);
        return arrived.wait_for(lock, 30s,
                                [&] { return !numbers.empty() && numbers.back() >= number; });
    }
};

// A burst of changes ends in exactly the picture of the last one, and what is shown on the way
// only ever gets newer.
TEST(LiveShifter, ABurstEndsInThePictureOfTheLastRequest)
{
    Engine engine({2});
    const KVBitmapPtr source = picture(256);
    Deliveries deliveries;
    std::uint64_t last = 0;
    {
        LiveShifter shifter(engine, deliveries.sink());
        for (int i = 0; i < 40; ++i) {
            last = shifter.submit(requestTowards(source, i / 40.0));
        }
        ASSERT_TRUE(deliveries.waitFor(last));
    }
    const Result<KVBitmapPtr> expected = engine.shift(requestTowards(source, 39 / 40.0));
    ASSERT_TRUE(expected.ok());
    const std::lock_guard lock(deliveries.mutex);
    EXPECT_EQ(deliveries.numbers.back(), last);
    EXPECT_TRUE(std::is_sorted(deliveries.numbers.begin(), deliveries.numbers.end()));
    EXPECT_EQ(std::adjacent_find(deliveries.numbers.begin(), deliveries.numbers.end()),
              deliveries.numbers.end());
    // Coalesced: far fewer runs than requests.
    EXPECT_LT(deliveries.numbers.size(), 40u);
    EXPECT_TRUE(sameSamples(deliveries.last, expected.value()));
}

// Withdrawn work delivers nothing, and a running shift is stopped rather than waited for.
TEST(LiveShifter, WithdrawnWorkDeliversNothing)
{
    Engine engine({2});
    const KVBitmapPtr big = picture(2048);
    Deliveries deliveries;
    LiveShifter shifter(engine, deliveries.sink());
    shifter.submit(requestTowards(big, 0.25));
    shifter.submit(requestTowards(big, 0.5));
    shifter.withdrawAll();
    std::this_thread::sleep_for(50ms);
    const std::lock_guard lock(deliveries.mutex);
    EXPECT_TRUE(deliveries.numbers.empty());
}

} // namespace
} // namespace tintorra
