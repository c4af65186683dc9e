#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <type_traits>
#include <vector>

namespace tintorra {

struct TableMemoryOptions {
    // Freed large blocks kept for reuse, at most: enough for the temporaries and the result of
    // one 24-megapixel table.
    std::size_t retainedLimit = std::size_t{512} << 20;
    // Tests only: the allocation after this many successful ones fails, once, so that the
    // out-of-memory paths can be exercised. Negative arms nothing.
    long failAllocationAfter = -1;
};

// The memory of one engine's tables. Large blocks (from 4 MB) are not returned to the system when
// their table is freed but kept for the next table: clearing fresh pages costs more than
// building a table, and a rebuild after a change of colour mode or gamma asks for the same
// sizes. A table may outlive the engine that made it; its block then goes back to the system.
class TableMemory {
public:
    explicit TableMemory(TableMemoryOptions options = {});
    ~TableMemory();
    TableMemory(const TableMemory&) = delete;
    TableMemory& operator=(const TableMemory&) = delete;

    // A block of `bytes` rounded up to whole huge pages (`rounded` receives the size); nullptr
    // when memory runs out.
    void* take(std::size_t bytes, std::size_t& rounded);
    // Takes back a block of take(); kept for reuse unless the memory is closed or full.
    void give(void* block, std::size_t bytes);
    // Gives every kept block back to the system.
    void release();
    // Releases and keeps nothing from now on: the engine is going away.
    void close();
    std::size_t retainedBytes() const;

    // Counts an allocation against the armed failure; true for the one that is to fail.
    bool failsNext();

private:
    struct Block {
        void* memory;
        std::size_t bytes;
    };
    void releaseLocked();

    mutable std::mutex mutex_;
    std::vector<Block> retained_;
    std::size_t retainedBytes_ = 0;
    std::size_t retainedLimit_;
    bool closed_ = false;
    std::atomic<long> allocationsBeforeFailure_;
};

// Frees the arrays of allocateTable: large blocks go back to the memory they came from.
struct TableDeleter {
    std::shared_ptr<TableMemory> memory;
    // The block's whole size; 0 for a small array from malloc.
    std::size_t bytes = 0;
    void operator()(void* table) const;
};

// An owned array of plain records, as the colour table and the spectra hand them out.
template <typename T>
using TableArray = std::unique_ptr<T[], TableDeleter>;

// Makes allocateTable take its blocks from `memory` on this thread while it lives (the engine
// installs its own around each job); without one, tables are allocated afresh and freed at once.
class UseTableMemory {
public:
    explicit UseTableMemory(std::shared_ptr<TableMemory> memory);
    ~UseTableMemory();
    UseTableMemory(const UseTableMemory&) = delete;
    UseTableMemory& operator=(const UseTableMemory&) = delete;

private:
    std::shared_ptr<TableMemory> previous_;
};

namespace detail {
// Whether the memory in use on this thread has an injected failure due now.
bool tableAllocationFails();
// Raw memory for `bytes` and the deleter that frees it; nullptr when memory runs out.
void* allocateTableBytes(std::size_t bytes, TableDeleter& deleter);
} // namespace detail

// Allocates `count` uninitialised plain records without throwing (every table overwrites its
// arrays completely); nullptr when memory runs out or a failure is injected.
template <typename T>
TableArray<T> allocateTable(std::size_t count)
{
    static_assert(std::is_trivially_default_constructible_v<T> &&
                  std::is_trivially_destructible_v<T>);
    if (detail::tableAllocationFails() || count > static_cast<std::size_t>(-1) / sizeof(T)) {
        return nullptr;
    }
    TableDeleter deleter;
    void* const bytes = detail::allocateTableBytes((count == 0 ? 1 : count) * sizeof(T), deleter);
    if (bytes == nullptr) {
        return nullptr;
    }
    return TableArray<T>(static_cast<T*>(bytes), std::move(deleter));
}

} // namespace tintorra
