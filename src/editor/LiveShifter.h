#pragma once

#include "common/Error.h"
#include "engine/Engine.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <stop_token>
#include <thread>
#include <vector>

namespace tintorra {

// What the live shifter knows of its running shift when a newer request arrives (seconds).
struct RunningShift {
    double running = 0.0;
    double sinceDelivery = 0.0;
    // The average of the last finished shifts; 0 before the first.
    double expected = 0.0;
    // Whether it writes by a plan: only what changed in a picture of its own, or a picture of
    // unknown content when the latest one was written by a plan (it makes the same plan).
    bool buildsOnPlan = false;
};

// Whether a newer request stops the running shift (see setAbandonsStaleRuns).
bool newerRequestStops(const RunningShift& shift);

// Keeps an editor's shifted image up to date without making anyone wait: shifts run one at a
// time on a thread of their own, and requests that arrive while one runs are coalesced, so that
// only the newest of them runs next. Every request gets a number that grows with each submission;
// results are delivered in that order, each newer than the last, and the last one delivered is
// always that of the newest request (unless it was withdrawn).
//
// The shifter remembers what it wrote into the destinations it was given: a request into one of
// them (of the same source and table) writes only what changed since. A destination handed to
// the shifter must therefore be written by nobody else, and the source's samples must not change
// while its pictures are in use.
class LiveShifter {
public:
    // Called on the shifter's thread with the request's number and its result. A request that
    // was withdrawn, or stopped because its picture went away, delivers nothing.
    using Delivery = std::function<void(std::uint64_t request, Result<KVBitmapPtr> result)>;

    LiveShifter(Engine& engine, Delivery deliver);
    // Stops a running shift and waits for the thread.
    ~LiveShifter();
    LiveShifter(const LiveShifter&) = delete;
    LiveShifter& operator=(const LiveShifter&) = delete;

    // Queues a shift in place of any that waits; returns its number. A request without a
    // destination takes over that of the request it replaces.
    std::uint64_t submit(ShiftRequest request);

    // Drops what waits and stops what runs (for a picture that is being replaced); returns
    // once nothing of theirs will be delivered.
    void withdrawAll();
    // The same without waiting: what waits is dropped and what runs is asked to stop. A result
    // that was already on its way may still be delivered; its number tells it apart.
    void abandonAll();

    // When on, a request that arrives while a long shift runs (the last finished ones were long)
    // stops it: its picture would be stale, and starting afresh shows the newest one soonest, one
    // shift's time after the last change. Only while no picture has been delivered for three
    // shifts' time is the running shift left to finish, so that a long drag still shows pictures
    // now and then. Short shifts are never stopped, and neither is a shift that writes only what
    // changed in a picture of its own by a plan: a stop would save little and leave that
    // picture to be written whole next time.
    void setAbandonsStaleRuns(bool abandons);

private:
    void serve(std::stop_token stop);
    // What the shifter last wrote into `destination`, forgotten now that it is written again.
    ShiftFootprintPtr takeFootprint(const KVBitmapPtr& destination);
    void keepFootprint(ShiftFootprintPtr footprint);

    Engine& engine_;
    Delivery deliver_;
    std::mutex mutex_;
    std::condition_variable_any changed_;
    std::optional<ShiftRequest> waiting_;
    std::uint64_t waitingNumber_ = 0;
    std::uint64_t lastNumber_ = 0;
    // The running shift's own stop, so that withdrawing stops it without ending the thread.
    std::stop_source running_;
    bool busy_ = false;
    bool abandonsStaleRuns_ = false;
    // Whether the running shift builds on what the shifter wrote into its destination before,
    // with a write plan.
    bool runBuildsOnFootprint_ = false;
    std::chrono::steady_clock::time_point runStarted_;
    std::chrono::steady_clock::time_point lastDelivery_;
    // Seconds; 0 until a shift has finished.
    double expectedRunSeconds_ = 0.0;
    // Of the latest pictures; touched only on the shifter's thread.
    std::vector<ShiftFootprintPtr> footprints_;
    std::jthread thread_;
};

} // namespace tintorra
