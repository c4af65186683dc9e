#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <stop_token>

namespace tintorra {

// Reports the done fraction of a long run, 0 to 1, on the thread that started it.
using ProgressCallback = std::function<void(double fraction)>;

// What the workers of one run consult between pieces of work: whether the caller has asked them
// to stop, and where to count what they have done. Shared by all workers of the run.
class RunControl {
public:
    RunControl(std::stop_token stop, ProgressCallback progress)
        : stop_(std::move(stop)), progress_(std::move(progress))
    {}

    bool stopRequested() const { return stop_.stop_requested(); }

    void setTotal(std::uint64_t items) { total_ = items; }

    // Counts `items` as done; the worker on the caller's thread (index 0) also reports.
    void advance(std::uint64_t items, unsigned long workerIndex) const
    {
        const std::uint64_t done = done_.fetch_add(items, std::memory_order_relaxed) + items;
        if (workerIndex == 0 && progress_ && total_ != 0) {
            progress_(static_cast<double>(std::min(done, total_)) / static_cast<double>(total_));
        }
    }

private:
    std::stop_token stop_;
    ProgressCallback progress_;
    std::uint64_t total_ = 0;
    mutable std::atomic<std::uint64_t> done_{0};
};

} // namespace tintorra
