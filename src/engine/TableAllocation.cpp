#include "engine/TableAllocation.h"

#include "common/LargeMemory.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace tintorra {

namespace {

// Blocks from this size on are aligned to huge pages and recycled.
constexpr std::size_t kLargeBlock = 2 * kHugePageBytes;

thread_local std::shared_ptr<TableMemory> memoryInUse;

std::size_t wholeHugePages(std::size_t bytes)
{
    return (bytes + kHugePageBytes - 1) / kHugePageBytes * kHugePageBytes;
}

// Advised for huge pages: one fault per 2 MB instead of per 4 KB on first touch, which is most
// of a cold table build's system time, and fewer TLB misses for the scattered writes.
void* freshBlock(std::size_t rounded)
{
    return allocateLargeMemory(rounded);
}

void freeBlock(void* block, std::size_t rounded)
{
    freeLargeMemory(block, rounded);
}

} // namespace

TableMemory::TableMemory(TableMemoryOptions options)
    : retainedLimit_(options.retainedLimit),
      allocationsBeforeFailure_(options.failAllocationAfter < 0 ? -1 : options.failAllocationAfter)
{}

TableMemory::~TableMemory()
{
    releaseLocked();
}

void* TableMemory::take(std::size_t bytes, std::size_t& rounded)
{
    rounded = wholeHugePages(bytes);
    {
        const std::lock_guard<std::mutex> guard(mutex_);
        // The smallest retained block that fits without wasting more than half of it.
        auto best = retained_.end();
        for (auto it = retained_.begin(); it != retained_.end(); ++it) {
            if (it->bytes >= rounded && it->bytes <= 2 * rounded &&
                (best == retained_.end() || it->bytes < best->bytes)) {
                best = it;
            }
        }
        if (best != retained_.end()) {
            const Block block = *best;
            retainedBytes_ -= block.bytes;
            retained_.erase(best);
            rounded = block.bytes;
            return block.memory;
        }
    }
    void* memory = freshBlock(rounded);
    if (memory == nullptr) {
        // Give back what is kept and try once more.
        release();
        memory = freshBlock(rounded);
    }
    return memory;
}

void TableMemory::give(void* block, std::size_t bytes)
{
    const std::lock_guard<std::mutex> guard(mutex_);
    if (closed_ || bytes > retainedLimit_) {
        freeBlock(block, bytes);
        return;
    }
    try {
        retained_.push_back({block, bytes});
    } catch (...) {
        freeBlock(block, bytes);
        return;
    }
    retainedBytes_ += bytes;
    while (retainedBytes_ > retainedLimit_) {
        retainedBytes_ -= retained_.front().bytes;
        freeBlock(retained_.front().memory, retained_.front().bytes);
        retained_.erase(retained_.begin());
    }
}

void TableMemory::release()
{
    const std::lock_guard<std::mutex> guard(mutex_);
    releaseLocked();
}

void TableMemory::close()
{
    const std::lock_guard<std::mutex> guard(mutex_);
    closed_ = true;
    releaseLocked();
}

std::size_t TableMemory::retainedBytes() const
{
    const std::lock_guard<std::mutex> guard(mutex_);
    return retainedBytes_;
}

bool TableMemory::failsNext()
{
    long remaining = allocationsBeforeFailure_.load(std::memory_order_relaxed);
    while (remaining >= 0) {
        if (allocationsBeforeFailure_.compare_exchange_weak(remaining, remaining - 1)) {
            return remaining == 0;
        }
    }
    return false;
}

void TableMemory::releaseLocked()
{
    for (const Block& block : retained_) {
        freeBlock(block.memory, block.bytes);
    }
    retained_.clear();
    retainedBytes_ = 0;
}

void TableDeleter::operator()(void* table) const
{
    if (table == nullptr) {
        return;
    }
    if (memory != nullptr) {
        memory->give(table, bytes);
    } else if (bytes != 0) {
        freeBlock(table, bytes);
    } else {
        std::free(table);
    }
}

UseTableMemory::UseTableMemory(std::shared_ptr<TableMemory> memory)
    : previous_(std::exchange(memoryInUse, std::move(memory)))
{}

UseTableMemory::~UseTableMemory()
{
    memoryInUse = std::move(previous_);
}

bool detail::tableAllocationFails()
{
    return memoryInUse != nullptr && memoryInUse->failsNext();
}

void* detail::allocateTableBytes(std::size_t bytes, TableDeleter& deleter)
{
    if (bytes < kLargeBlock) {
        return std::malloc(bytes);
    }
    if (memoryInUse == nullptr) {
        const std::size_t rounded = wholeHugePages(bytes);
        void* const block = freshBlock(rounded);
        if (block != nullptr) {
            deleter = {nullptr, rounded};
        }
        return block;
    }
    std::size_t rounded = 0;
    void* const block = memoryInUse->take(bytes, rounded);
    if (block != nullptr) {
        deleter = {memoryInUse, rounded};
    }
    return block;
}

} // namespace tintorra
