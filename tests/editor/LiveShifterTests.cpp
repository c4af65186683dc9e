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

    // The same, each delivery first waiting until `gate` is free: a test holds it while it
    // submits, so that its requests meet however busy the machine.
    LiveShifter::Delivery sinkBehind(std::mutex& gate)
    {
        return [this, &gate, sink = sink()](std::uint64_t number, Result<KVBitmapPtr> result) {
            const std::lock_guard pass(gate);
            sink(number, std::move(result));
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
        // The first delivery waits for the whole burst.
        std::mutex gate;
        std::unique_lock closed(gate);
        LiveShifter shifter(engine, deliveries.sinkBehind(gate));
        for (int i = 0; i < 40; ++i) {
            last = shifter.submit(requestTowards(source, i / 40.0));
        }
        closed.unlock();
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

// A request that replaces a waiting one without a destination of its own writes into the
// replaced request's destination instead of a fresh copy.
TEST(LiveShifter, AReplacedRequestHandsOnItsDestination)
{
    Engine engine({2});
    const KVBitmapPtr source = picture(256);
    const KVBitmapPtr kept = source->copy();
    Deliveries deliveries;
    // The first delivery waits until the next two requests have met.
    std::mutex gate;
    std::unique_lock closed(gate);
    LiveShifter shifter(engine, deliveries.sinkBehind(gate));
    shifter.submit(requestTowards(source, 0.25));
    ShiftRequest replaced = requestTowards(source, 0.5);
    replaced.destination = kept;
    shifter.submit(replaced);
    const std::uint64_t last = shifter.submit(requestTowards(source, 0.75));
    closed.unlock();
    ASSERT_TRUE(deliveries.waitFor(last));
    const std::lock_guard lock(deliveries.mutex);
    EXPECT_EQ(deliveries.last, kept);
}

// An 8-bit picture with many colours, each on pixels all over it.
KVBitmapPtr manyColoursPicture(std::int64_t side)
{
    KVBitmapLayout layout;
    layout.pixelsWide = side;
    layout.pixelsHigh = side;
    layout.bitsPerSample = 8;
    layout.samplesPerPixel = 3;
    layout.hasAlpha = false;
    KVBitmapPtr bitmap = KVBitmap::create(layout);
    for (std::int64_t y = 0; y < side; ++y) {
        std::uint8_t* row = bitmap->bitmapData() + y * bitmap->bytesPerRow();
        for (std::int64_t x = 0; x < side; ++x) {
            const auto k = static_cast<unsigned>((x * 7 + y * 13) % 4093);
            row[x * 3 + 0] = static_cast<std::uint8_t>(k);
            row[x * 3 + 1] = static_cast<std::uint8_t>(k >> 4);
            row[x * 3 + 2] = static_cast<std::uint8_t>(k * 5);
        }
    }
    return bitmap;
}

// Two destinations used in turn, as an editor does: the shifter writes into each only what
// changed since it last wrote it, and every picture equals a full shift, also after a run was
// stopped (wherever the stop came, the destination is rewritten whole next time).
TEST(LiveShifter, KeptDestinationsHoldFullShifts)
{
    Engine engine({2});
    const KVBitmapPtr source = manyColoursPicture(1024);
    ShiftRequest base = requestTowards(source, 0.0);
    base.colorTable =
        engine.buildColorTable(source, base.parameters.imageGamma, base.parameters.colorSpaceModel)
            .take();
    const KVBitmapPtr buffers[2] = {source->copy(), source->copy()};
    Deliveries deliveries;
    LiveShifter shifter(engine, deliveries.sink());
    const double hueWindows[][2] = {{0.1, 0.4}, {0.1, 0.4}, {0.0, 0.7}, {0.3, 0.35},
                                    {0.2, 0.5}, {0.6, 0.9}, {0.2, 0.3}};
    for (std::size_t step = 0; step < std::size(hueWindows); ++step) {
        ShiftRequest request = base;
        request.destination = buffers[step % 2];
        request.parameters.hueLowerFalloff = request.parameters.hueLower = hueWindows[step][0];
        request.parameters.hueUpperFalloff = request.parameters.hueUpper = hueWindows[step][1];
        request.parameters.targetHue = 0.1 * static_cast<double>(step);
        if (step >= 3) {
            // A shift of everything, stopped somewhere in its run (or before or after it: the
            // time is not ours).
            ShiftRequest everything = request;
            everything.parameters.hueLower = everything.parameters.hueLowerFalloff = 0.0;
            everything.parameters.hueUpper = everything.parameters.hueUpperFalloff = 1.0;
            shifter.submit(everything);
            std::this_thread::sleep_for(std::chrono::milliseconds(2 << (step - 3)));
            shifter.withdrawAll();
        }
        ASSERT_TRUE(deliveries.waitFor(shifter.submit(request)));
        request.destination = nullptr;
        const Result<KVBitmapPtr> expected = engine.shift(request);
        ASSERT_TRUE(expected.ok());
        const std::lock_guard lock(deliveries.mutex);
        EXPECT_EQ(deliveries.last, buffers[step % 2]);
        EXPECT_TRUE(sameSamples(deliveries.last, expected.value())) << "step " << step;
    }
}

// Which running shifts a newer request stops: only long ones, and only while pictures still
// come now and then, never one that rewrites its own picture by a plan.
TEST(LiveShifter, NewerRequestsStopOnlyLongShiftsEarlyOn)
{
    struct Case {
        const char* name;
        RunningShift shift;
        bool stops;
    };
    const Case cases[] = {
        {"long, early, pictures coming", {0.02, 0.1, 0.2, false}, true},
        {"long, nearly done", {0.19, 0.5, 0.2, false}, true},
        {"long, no picture for three shifts' time", {0.02, 0.61, 0.2, false}, false},
        {"long, by a plan", {0.02, 0.1, 0.2, true}, false},
        {"short", {0.005, 0.03, 0.03, false}, false},
        {"nothing finished yet", {0.001, 1e9, 0.0, false}, false},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(newerRequestStops(c.shift), c.stops) << c.name;
    }
}

} // namespace
} // namespace tintorra
