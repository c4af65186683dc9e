#include "common/LargeMemory.h"

#include <cstdint>
#include <sys/mman.h>

namespace tintorra {

namespace {

constexpr std::size_t roundUp(std::size_t bytes, std::size_t step)
{
    return (bytes + step - 1) / step * step;
}

} // namespace

void* allocateLargeMemory(std::size_t bytes)
{
    if (bytes == 0 || bytes > SIZE_MAX - 2 * kHugePageBytes) {
        return nullptr;
    }
    const std::size_t size = roundUp(bytes, kHugePageBytes);
    // mmap aligns to 4 KB only: map one huge page more and give back the ragged ends.
    const std::size_t mapped = size + kHugePageBytes;
    void* region =
        mmap(nullptr, mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (region == MAP_FAILED) {
        return nullptr;
    }
    const auto start = reinterpret_cast<std::uintptr_t>(region);
    const std::uintptr_t aligned = roundUp(start, kHugePageBytes);
    if (aligned > start) {
        munmap(region, aligned - start);
    }
    const std::uintptr_t end = start + mapped;
    if (end > aligned + size) {
        munmap(reinterpret_cast<void*>(aligned + size), end - (aligned + size));
    }
    void* memory = reinterpret_cast<void*>(aligned);
#ifdef MADV_HUGEPAGE
    // Only advice: where the kernel keeps huge pages off, the block works with small ones.
    madvise(memory, size, MADV_HUGEPAGE);
#endif
    return memory;
}

void adviseHugePages(void* memory, std::size_t bytes)
{
#ifdef MADV_HUGEPAGE
    const auto start = reinterpret_cast<std::uintptr_t>(memory);
    const std::uintptr_t first = roundUp(start, kHugePageBytes);
    const std::uintptr_t end = (start + bytes) / kHugePageBytes * kHugePageBytes;
    if (memory != nullptr && end > first) {
        madvise(reinterpret_cast<void*>(first), end - first, MADV_HUGEPAGE);
    }
#else
    (void)memory;
    (void)bytes;
#endif
}

void freeLargeMemory(void* memory, std::size_t bytes)
{
    if (memory != nullptr) {
        munmap(memory, roundUp(bytes, kHugePageBytes));
    }
}

} // namespace tintorra
