#pragma once

#include <QMetaObject>
#include <QObject>
#include <functional>
#include <map>
#include <memory>
#include <thread>

namespace tintorra {

// Runs slow file work (decoding, encoding, writing) on threads of its own, so that the window
// keeps answering, and hands each result to a function on the owner's thread. The owner's
// destruction waits for jobs still running; their results are then dropped.
class BackgroundJobs {
public:
    explicit BackgroundJobs(QObject* owner) : owner_(owner) {}
    ~BackgroundJobs() { threads_.clear(); }
    BackgroundJobs(const BackgroundJobs&) = delete;
    BackgroundJobs& operator=(const BackgroundJobs&) = delete;

    template <typename Result>
    void start(std::function<Result()> work, std::function<void(Result)> done)
    {
        const std::uint64_t number = ++lastNumber_;
        threads_.emplace(number, std::jthread([this, number, work = std::move(work),
                                               done = std::move(done)]() mutable {
                             auto result = std::make_shared<Result>(work());
                             QMetaObject::invokeMethod(
                                 owner_,
                                 [this, number, result, done = std::move(done)]() mutable {
                                     finish(number);
                                     done(std::move(*result));
                                 },
                                 Qt::QueuedConnection);
                         }));
    }

    bool running() const { return !threads_.empty(); }

private:
    void finish(std::uint64_t number)
    {
        // The thread has posted its result and is ending; joining it costs next to nothing.
        threads_.erase(number);
    }

    QObject* owner_;
    std::uint64_t lastNumber_ = 0;
    std::map<std::uint64_t, std::jthread> threads_;
};

} // namespace tintorra
