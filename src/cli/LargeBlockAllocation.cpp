// The tool's allocation function: the heap's, with photograph-sized blocks advised for
// transparent huge pages. A run reads, decodes, shifts and encodes a photograph once, each step
// into fresh buffers of tens of megabytes (the file's bytes, the colour lists, the compressed
// output); with 4 KB pages their first touch costs one fault per page, most of a cold run's
// system time. Sanitizer builds keep their own allocator.
#include "common/LargeMemory.h"

#include <cstdint>
#include <cstdlib>
#include <new>

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

void* operator new(std::size_t bytes)
{
    void* memory = nullptr;
    using tintorra::kHugePageBytes;
    if (bytes >= tintorra::kLargeMemoryThreshold && bytes <= SIZE_MAX - kHugePageBytes) {
        // Whole huge pages from end to end; the heap frees aligned blocks like any other.
        const std::size_t whole = (bytes + kHugePageBytes - 1) / kHugePageBytes * kHugePageBytes;
        memory = std::aligned_alloc(kHugePageBytes, whole);
        if (memory != nullptr) {
            tintorra::adviseHugePages(memory, whole);
        }
    } else {
        memory = std::malloc(bytes == 0 ? 1 : bytes);
    }
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

#endif
