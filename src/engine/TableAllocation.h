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
// Raw memory for `bytes`; large blocks are aligned to and advised as huge pages, because the
// per-pixel tables are written in scattered order and would otherwise miss the TLB on nearly
// every store. nullptr when memory runs out.
void* allocateTableBytes(std::size_t bytes);
} // namespace detail

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
