#include "engine/TableAllocation.h"

#include <cstdlib>
#include <new>
#include <sys/mman.h>

namespace tintorra {

namespace {

constexpr std::size_t kHugePage = std::size_t{2} << 20;

} // namespace

std::atomic<long> detail::tableAllocationsBeforeFailure{-1};

void TableDeleter::operator()(void* table) const
{
    std::free(table);
}

void* detail::allocateTableBytes(std::size_t bytes)
{
    if (bytes < 4 * kHugePage) {
        return std::malloc(bytes);
    }
    const std::size_t rounded = (bytes + kHugePage - 1) / kHugePage * kHugePage;
    void* table = std::aligned_alloc(kHugePage, rounded);
#ifdef MADV_HUGEPAGE
    if (table != nullptr) {
        // Advice only: without transparent huge pages the table works as well, just slower.
        madvise(table, rounded, MADV_HUGEPAGE);
    }
#endif
    return table;
}

void failTableAllocationAfter(long successfulAllocations)
{
    detail::tableAllocationsBeforeFailure.store(successfulAllocations < 0 ? -1
                                                                          : successfulAllocations);
}

} // namespace tintorra
