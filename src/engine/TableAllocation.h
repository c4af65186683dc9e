#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <type_traits>

namespace tintorra {

// Frees the arrays of allocateTable.
struct TableDeleter {
    void operator()(void* table) const;
};

// An owned array of plain records, as the colour table and the spectra hand them out.
template <typename T>
using TableArray = std::unique_ptr<T[], TableDeleter>;

namespace detail {
// Counts down to an injected allocation failure; negative when none is armed.
extern std::atomic<long> tableAllocationsBeforeFailure;
// Raw memory for `bytes`, from malloc or, for large blocks, from the blocks kept for reuse.
// nullptr when memory runs out.
void* allocateTableBytes(std::size_t bytes);
} // namespace detail

// Large table blocks (from 4 MB) are not returned to the system when freed but kept, up to
// 512 MB, for the next table: clearing fresh pages costs more than building a table, and a
// rebuild after a change of colour mode or gamma asks for the same sizes. This gives the kept
// memory back, for when no table will be built for a while (the last document closes).
void releaseRetainedTableMemory();
// Bytes currently kept for reuse.
std::size_t retainedTableMemory();

// Makes the table allocation after `successfulAllocations` further ones fail, once, so that the
// out-of-memory paths of the colour table and the quantised spectrum can be exercised. Negative
// disarms. Meant for tests; the engine never arms it.
void failTableAllocationAfter(long successfulAllocations);

// Allocates `count` uninitialised plain records without throwing (every table overwrites its
// arrays completely); nullptr when memory runs out or a failure is injected.
template <typename T>
TableArray<T> allocateTable(std::size_t count)
{
    static_assert(std::is_trivially_default_constructible_v<T> &&
                  std::is_trivially_destructible_v<T>);
    long remaining = detail::tableAllocationsBeforeFailure.load(std::memory_order_relaxed);
    while (remaining >= 0) {
        if (detail::tableAllocationsBeforeFailure.compare_exchange_weak(remaining, remaining - 1)) {
            if (remaining == 0) {
                return nullptr;
            }
            break;
        }
    }
    if (count > static_cast<std::size_t>(-1) / sizeof(T)) {
        return nullptr;
    }
    return TableArray<T>(
        static_cast<T*>(detail::allocateTableBytes((count == 0 ? 1 : count) * sizeof(T))));
}

} // namespace tintorra
