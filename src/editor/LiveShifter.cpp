#include "editor/LiveShifter.h"

#include <algorithm>

namespace tintorra {

namespace {

// Enough for the pictures an editor shows, writes and keeps waiting, and one to spare.
constexpr std::size_t kKeptFootprints = 4;

// While the finished shifts take less (seconds), none is stopped: a few frames' time is less
// than a stop would save, and a picture stopped midway must be written whole next time.
constexpr double kLongRunSeconds = 0.08;

// Long shifts are stopped for newer requests until no picture has come for this many shifts'
// time; the next one is then let through, so that a long drag still shows pictures.
constexpr double kShiftsWithoutPicture = 3.0;

} // namespace

bool newerRequestStops(const RunningShift& shift)
{
    return !shift.buildsOnPlan && shift.expected >= kLongRunSeconds &&
           shift.sinceDelivery < kShiftsWithoutPicture * shift.expected;
}

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
        // The replaced request never runs: a request without a destination of its own takes its
        // destination, rather than a fresh copy of the source, when both are of one source.
        if (request.destination == nullptr && waiting_ && waiting_->source == request.source) {
            request.destination = std::move(waiting_->destination);
        }
        waiting_ = std::move(request);
        waitingNumber_ = number;
        if (abandonsStaleRuns_ && busy_) {
            const auto now = std::chrono::steady_clock::now();
            const RunningShift shift{std::chrono::duration<double>(now - runStarted_).count(),
                                     std::chrono::duration<double>(now - lastDelivery_).count(),
                                     expectedRunSeconds_, runBuildsOnFootprint_};
            if (newerRequestStops(shift)) {
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

ShiftFootprintPtr LiveShifter::takeFootprint(const KVBitmapPtr& destination)
{
    ShiftFootprintPtr found;
    if (destination == nullptr) {
        return found;
    }
    std::erase_if(footprints_, [&](const ShiftFootprintPtr& footprint) {
        const KVBitmapPtr written = footprint->destination.lock();
        if (written == destination) {
            found = footprint;
        }
        return written == nullptr || written == destination;
    });
    return found;
}

void LiveShifter::keepFootprint(ShiftFootprintPtr footprint)
{
    takeFootprint(footprint->destination.lock());
    if (footprints_.size() == kKeptFootprints) {
        footprints_.erase(footprints_.begin());
    }
    footprints_.push_back(std::move(footprint));
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
        // Forgotten whatever becomes of this run: a stopped one leaves the destination unknown.
        ShiftFootprintPtr footprint = takeFootprint(request.destination);
        if (request.destinationFootprint == nullptr) {
            request.destinationFootprint = std::move(footprint);
        }
        // A picture of unknown content is planned afresh when the latest one was written by a
        // plan: a stop would only make the next run plan the same colours again.
        const bool latestPlanned = !footprints_.empty() && footprints_.back()->plan != nullptr &&
                                   footprints_.back()->source.lock() == request.source;
        runBuildsOnFootprint_ = request.destinationFootprint != nullptr
                                    ? request.destinationFootprint->plan != nullptr
                                    : latestPlanned;
        busy_ = true;
        runStarted_ = std::chrono::steady_clock::now();
        lock.unlock();

        Result<TrackedShift> result = engine_.shiftTracked(request, runStop);
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - runStarted_;
        if (result && result.value().footprint != nullptr) {
            keepFootprint(result.value().footprint);
        }
        // A stopped run's picture is half done; nobody may see it.
        const bool finished = !runStop.stop_requested();
        if (finished) {
            deliver_(number, result ? Result<KVBitmapPtr>(result.take().image)
                                    : Result<KVBitmapPtr>(result.error()));
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
