#pragma once

#include <cstddef>

namespace tintorra {

// Blocks of a few megabytes and more straight from the kernel, aligned to 2 MB and advised for
// transparent huge pages. A fresh photograph-sized buffer otherwise costs one page fault per
// 4 KB on first touch (about 25,000 for a 24 MP RGB image), which dominates a cold run; with
// huge pages it is one per 2 MB. The memory reads as zeros.
inline constexpr std::size_t kHugePageBytes = std::size_t{2} << 20;
inline constexpr std::size_t kLargeMemoryThreshold = kHugePageBytes;

// nullptr when the kernel refuses.
void* allocateLargeMemory(std::size_t bytes);
// `bytes` must be what was asked of allocateLargeMemory.
void freeLargeMemory(void* memory, std::size_t bytes);

// Advises the whole huge pages inside [memory, memory + bytes) for transparent huge pages, for
// a block that came from elsewhere (the heap) and has not been touched yet.
void adviseHugePages(void* memory, std::size_t bytes);

} // namespace tintorra
