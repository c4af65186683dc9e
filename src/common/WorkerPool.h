#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace tintorra {

// A fixed set of threads, started once, that run the numbered pieces of parallel jobs. The thread
// that hands in a job works on it too and returns when every piece is done, so a pool of one
// thread runs everything on the caller. Jobs from several callers may run at once; each caller
// waits only for its own pieces.
class WorkerPool {
public:
    using Body = std::function<void(unsigned index)>;

    // `threads` counts the caller: a pool of n starts n - 1 threads (0 means one per processor).
    explicit WorkerPool(unsigned threads = 0);
    ~WorkerPool();
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;

    // The most pieces that run at the same time.
    unsigned size() const { return static_cast<unsigned>(threads_.size()) + 1; }

    // Runs body(index) for index 0 .. count - 1 and returns once all have returned. An exception
    // from a piece is rethrown here after the others have finished.
    void run(unsigned count, const Body& body);

private:
    struct Job;

    void serve();
    void work(Job& job);
    Job* openJob() const;

    std::vector<std::thread> threads_;
    mutable std::mutex mutex_;
    std::condition_variable jobAdded_;
    std::condition_variable pieceDone_;
    std::deque<Job*> jobs_;
    bool stopping_ = false;
};

// Makes the parallel loops below run on `pool` while it lives, on this thread and in what it
// calls; without one they start threads of their own.
class UseWorkerPool {
public:
    explicit UseWorkerPool(WorkerPool& pool);
    ~UseWorkerPool();
    UseWorkerPool(const UseWorkerPool&) = delete;
    UseWorkerPool& operator=(const UseWorkerPool&) = delete;

private:
    WorkerPool* previous_;
};

// The pool in use on this thread, or nullptr.
WorkerPool* currentWorkerPool();

} // namespace tintorra
