#include "editor/LiveShifter.h"

namespace tintorra {

LiveShifter::LiveShifter(Engine& engine, Delivery deliver)
    : engine_(engine), deliver_(std::move(deliver)),
      thread_([this](std::stop_token stop) { serve(stop); })
{}

LiveShifter::~LiveShifter()
{
    {
        const std::lock_guard lock(mutex_);
        running_.request_stop();
    }
    thread_.request_stop();
    changed_.notify_all();
}

std::uint64_t LiveShifter::submit(ShiftRequest request)
{
    std::uint64_t number = 0;
    {
        const std::lock_guard lock(mutex_);
        number = ++lastNumber_;
        waiting_ = std::move(request);
        waitingNumber_ = number;
        if (abandonsStaleRuns_ && busy_ && expectedRunSeconds_ > 0.0) {
            const auto now = std::chrono::steady_clock::now();
            const std::chrono::duration<double> running = now - runStarted_;
            const std::chrono::duration<double> sinceDelivery = now - lastDelivery_;
            if (running.count() < 0.5 * expectedRunSeconds_ &&
                sinceDelivery.count() < expectedRunSeconds_) {
                running_.request_stop();
            }
        }
    }
    changed_.notify_all();
    return number;
}

void LiveShifter::withdrawAll()
{
    std::unique_lock lock(mutex_);
    waiting_.reset();
    running_.request_stop();
    changed_.wait(lock, [&] { return !busy_; });
}

void LiveShifter::abandonAll()
{
    const std::lock_guard lock(mutex_);
    waiting_.reset();
    running_.request_stop();
}

void LiveShifter::setAbandonsStaleRuns(bool abandons)
{
    const std::lock_guard lock(mutex_);
    abandonsStaleRuns_ = abandons;
}

void LiveShifter::serve(std::stop_token stop)
{
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, stop, [&] { return waiting_.has_value(); });
        if (stop.stop_requested()) {
            return;
        }
        ShiftRequest request = std::move(*waiting_);
        waiting_.reset();
        const std::uint64_t number = waitingNumber_;
        running_ = std::stop_source();
        const std::stop_token runStop = running_.get_token();
        busy_ = true;
        runStarted_ = std::chrono::steady_clock::now();
        lock.unlock();

        Result<KVBitmapPtr> result = engine_.shift(request, runStop);
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - runStarted_;
        // A stopped run's picture is half done; nobody may see it.
        const bool finished = !runStop.stop_requested();
        if (finished) {
            deliver_(number, std::move(result));
        }

        lock.lock();
        if (finished) {
            lastDelivery_ = std::chrono::steady_clock::now();
            // Weighted towards the latest runs: the selection, and with it the work, changes.
            constexpr double kLatestWeight = 0.5;
            expectedRunSeconds_ =
                expectedRunSeconds_ == 0.0
                    ? took.count()
                    : kLatestWeight * took.count() + (1.0 - kLatestWeight) * expectedRunSeconds_;
        }
        busy_ = false;
        changed_.notify_all();
    }
}

} // namespace tintorra
