#include "common/WorkerPool.h"

#include <algorithm>
#include <atomic>
#include <exception>

namespace tintorra {

struct WorkerPool::Job {
    const Body* body = nullptr;
    unsigned count = 0;
    std::atomic<unsigned> next{0};
    // Guarded by the pool's mutex.
    unsigned finished = 0;
    unsigned visitors = 0;
    std::exception_ptr failure;
};

namespace {
thread_local WorkerPool* poolInUse = nullptr;
} // namespace

WorkerPool::WorkerPool(unsigned threads)
{
    const unsigned total =
        threads != 0 ? threads : std::max(1u, std::thread::hardware_concurrency());
    threads_.reserve(total - 1);
    for (unsigned i = 1; i < total; ++i) {
        threads_.emplace_back([this] { serve(); });
    }
}

WorkerPool::~WorkerPool()
{
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    jobAdded_.notify_all();
    for (std::thread& thread : threads_) {
        thread.join();
    }
}

void WorkerPool::run(unsigned count, const Body& body)
{
    if (count == 0) {
        return;
    }
    Job job;
    job.body = &body;
    job.count = count;
    if (count > 1 && !threads_.empty()) {
        {
            const std::lock_guard lock(mutex_);
            jobs_.push_back(&job);
        }
        jobAdded_.notify_all();
    }
    work(job);
    std::unique_lock lock(mutex_);
    std::erase(jobs_, &job);
    pieceDone_.wait(lock, [&] { return job.finished == job.count && job.visitors == 0; });
    if (job.failure) {
        std::rethrow_exception(job.failure);
    }
}

void WorkerPool::work(Job& job)
{
    for (unsigned index = job.next++; index < job.count; index = job.next++) {
        std::exception_ptr failure;
        try {
            (*job.body)(index);
        } catch (...) {
            failure = std::current_exception();
        }
        const std::lock_guard lock(mutex_);
        if (failure && !job.failure) {
            job.failure = failure;
        }
        if (++job.finished == job.count) {
            pieceDone_.notify_all();
        }
    }
}

WorkerPool::Job* WorkerPool::openJob() const
{
    for (Job* job : jobs_) {
        if (job->next.load() < job->count) {
            return job;
        }
    }
    return nullptr;
}

void WorkerPool::serve()
{
    // Loops nested inside a piece share this pool instead of starting threads of their own.
    poolInUse = this;
    std::unique_lock lock(mutex_);
    for (;;) {
        jobAdded_.wait(lock, [&] { return stopping_ || openJob() != nullptr; });
        Job* job = openJob();
        if (job == nullptr) {
            return; // stopping, and nothing is left to help with
        }
        ++job->visitors;
        lock.unlock();
        work(*job);
        lock.lock();
        --job->visitors;
        pieceDone_.notify_all();
    }
}

UseWorkerPool::UseWorkerPool(WorkerPool& pool) : previous_(poolInUse)
{
    poolInUse = &pool;
}

UseWorkerPool::~UseWorkerPool()
{
    poolInUse = previous_;
}

WorkerPool* currentWorkerPool()
{
    return poolInUse;
}

} // namespace tintorra
