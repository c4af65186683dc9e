#pragma once

#include "common/WorkerPool.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <thread>
#include <vector>

namespace tintorra {

// The number of threads a whole-image table pass may use: the processors available, at most
// `limit`, and one for small jobs where starting threads costs more than it saves.
inline unsigned tableThreadCount(std::size_t workItems, unsigned limit,
                                 std::size_t minimumPerThread)
{
    const WorkerPool* pool = currentWorkerPool();
    const unsigned available =
        pool != nullptr ? pool->size() : std::max(1u, std::thread::hardware_concurrency());
    const std::size_t byWork =
        std::max<std::size_t>(1, workItems / std::max<std::size_t>(1, minimumPerThread));
    return static_cast<unsigned>(std::min<std::size_t>({available, limit, byWork}));
}

// Runs body(index) for index 0 .. count - 1 at the same time: on the worker pool in use on this
// thread (the engine's), or else with index 0 on the calling thread and the others on joinable
// threads that are joined before returning. A thread that cannot be started runs its share on the
// calling thread instead, so the work is always done and nothing throws.
template <typename Body>
void runOnThreads(unsigned count, const Body& body)
{
    if (WorkerPool* pool = currentWorkerPool(); pool != nullptr && count > 1) {
        pool->run(count, [&body](unsigned index) { body(index); });
        return;
    }
    std::vector<std::thread> threads;
    std::vector<unsigned> notStarted;
    try {
        threads.reserve(count > 0 ? count - 1 : 0);
        notStarted.reserve(count);
    } catch (...) {
        for (unsigned index = 0; index < count; ++index) {
            body(index);
        }
        return;
    }
    for (unsigned index = 1; index < count; ++index) {
        try {
            threads.emplace_back([&body, index] { body(index); });
        } catch (...) {
            notStarted.push_back(index);
        }
    }
    if (count > 0) {
        body(0u);
    }
    for (const unsigned index : notStarted) {
        body(index);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

// Runs body(chunk, thread) for chunk 0 .. chunks - 1 on `threads` threads (thread is the index
// of the running thread, for its own scratch memory), each thread taking the next chunk not yet
// taken. Which thread runs a chunk is left to chance, so a thread that the system holds up does
// not hold up the others; results must depend on the chunk only.
template <typename Body>
void runChunks(unsigned threads, std::size_t chunks, const Body& body)
{
    std::atomic<std::size_t> next{0};
    runOnThreads(std::max(1u, threads), [&](unsigned thread) {
        for (std::size_t chunk = next++; chunk < chunks; chunk = next++) {
            body(chunk, thread);
        }
    });
}

} // namespace tintorra
