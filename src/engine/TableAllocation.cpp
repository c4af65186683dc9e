#include "engine/TableAllocation.h"

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <new>
#include <vector>

namespace tintorra {

namespace {

constexpr std::size_t kHugePage = std::size_t{2} << 20;
// Blocks from this size on are aligned to huge pages and recycled.
constexpr std::size_t kLargeBlock = 2 * kHugePage;

struct Block {
    void* memory;
    std::size_t bytes;
};

// Large blocks in use (their sizes, for the deleter) and freed ones kept for reuse, most recently
// freed last. Fresh memory is expensive: the kernel clears every page on first touch, which for
// the few hundred megabytes of one table costs several times building it. A rebuild (a new colour
// mode, a new gamma) asks for the same sizes again and finds them here.
class BlockPool {
public:
    void* take(std::size_t bytes)
    {
        const std::size_t rounded = (bytes + kHugePage - 1) / kHugePage * kHugePage;
        std::lock_guard<std::mutex> guard(mutex_);
        // The smallest retained block that fits without wasting more than half of it.
        auto best = retained_.end();
        for (auto it = retained_.begin(); it != retained_.end(); ++it) {
            if (it->bytes >= rounded && it->bytes <= 2 * rounded &&
                (best == retained_.end() || it->bytes < best->bytes)) {
                best = it;
            }
        }
        Block block{nullptr, rounded};
        if (best != retained_.end()) {
            block = *best;
            retainedBytes_ -= best->bytes;
            retained_.erase(best);
        } else {
            block.memory = std::aligned_alloc(kHugePage, rounded);
            if (block.memory == nullptr) {
                // Give back what is kept and try once more.
                releaseLocked();
                block.memory = std::aligned_alloc(kHugePage, rounded);
                if (block.memory == nullptr) {
                    return nullptr;
                }
            }
            // No huge-page advice: huge pages would spare TLB misses of the scattered writes
            // (about a tenth of a rebuild's time), but a fresh huge page costs several times
            // its 4 KB pages on first touch, and the first table of an image (every run of
            // the command line tool) is built on fresh memory: 24 megapixels took 0.5 s more
            // of system time with the advice.
        }
        try {
            inUse_.push_back(block);
        } catch (...) {
            std::free(block.memory);
            return nullptr;
        }
        return block.memory;
    }

    // False when the block is not a large one (it came from malloc).
    bool give(void* memory)
    {
        std::lock_guard<std::mutex> guard(mutex_);
        const auto it = std::find_if(inUse_.begin(), inUse_.end(), [memory](const Block& block) {
            return block.memory == memory;
        });
        if (it == inUse_.end()) {
            return false;
        }
        const Block block = *it;
        inUse_.erase(it);
        if (block.bytes > kRetainedLimit) {
            std::free(block.memory);
            return true;
        }
        try {
            retained_.push_back(block);
        } catch (...) {
            std::free(block.memory);
            return true;
        }
        retainedBytes_ += block.bytes;
        while (retainedBytes_ > kRetainedLimit) {
            retainedBytes_ -= retained_.front().bytes;
            std::free(retained_.front().memory);
            retained_.erase(retained_.begin());
        }
        return true;
    }

    void release()
    {
        std::lock_guard<std::mutex> guard(mutex_);
        releaseLocked();
    }

    std::size_t retainedBytes()
    {
        std::lock_guard<std::mutex> guard(mutex_);
        return retainedBytes_;
    }

private:
    // Enough for the temporaries and the result of one 24-megapixel table.
    static constexpr std::size_t kRetainedLimit = std::size_t{512} << 20;

    void releaseLocked()
    {
        for (const Block& block : retained_) {
            std::free(block.memory);
        }
        retained_.clear();
        retainedBytes_ = 0;
    }

    std::mutex mutex_;
    std::vector<Block> inUse_;
    std::vector<Block> retained_;
    std::size_t retainedBytes_ = 0;
};

BlockPool& blockPool()
{
    // Never destroyed: tables may be freed by other static destructors.
    static BlockPool* const pool = new BlockPool;
    return *pool;
}

} // namespace

std::atomic<long> detail::tableAllocationsBeforeFailure{-1};

void TableDeleter::operator()(void* table) const
{
    if (table != nullptr && !blockPool().give(table)) {
        std::free(table);
    }
}

void* detail::allocateTableBytes(std::size_t bytes)
{
    if (bytes < kLargeBlock) {
        return std::malloc(bytes);
    }
    return blockPool().take(bytes);
}

void releaseRetainedTableMemory()
{
    blockPool().release();
}

std::size_t retainedTableMemory()
{
    return blockPool().retainedBytes();
}

void failTableAllocationAfter(long successfulAllocations)
{
    detail::tableAllocationsBeforeFailure.store(successfulAllocations < 0 ? -1
                                                                          : successfulAllocations);
}

} // namespace tintorra
