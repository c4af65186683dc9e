#include "image/SampleBuffer.h"

#include "common/LargeMemory.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace tintorra {

namespace {

bool isLarge(std::size_t bytes)
{
    return bytes >= kLargeMemoryThreshold;
}

// One byte at least, so that an empty buffer still has an address, as vector data would not.
std::uint8_t* allocateBytes(std::size_t bytes, bool zeroed)
{
    const std::size_t size = bytes == 0 ? 1 : bytes;
    void* memory = isLarge(size) ? allocateLargeMemory(size)
                   : zeroed      ? std::calloc(size, 1)
                                 : std::malloc(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return static_cast<std::uint8_t*>(memory);
}

} // namespace

void SampleBuffer::Free::operator()(std::uint8_t* memory) const
{
    if (isLarge(bytes)) {
        freeLargeMemory(memory, bytes);
    } else {
        std::free(memory);
    }
}

SampleBuffer::SampleBuffer(std::size_t bytes)
    : bytes_(allocateBytes(bytes, true), Free{bytes}), size_(bytes)
{}

SampleBuffer::SampleBuffer(const SampleBuffer& other)
    : bytes_(allocateBytes(other.size_, false), Free{other.size_}), size_(other.size_)
{
    if (size_ != 0) {
        std::memcpy(bytes_.get(), other.bytes_.get(), size_);
    }
}

SampleBuffer& SampleBuffer::operator=(const SampleBuffer& other)
{
    if (this != &other) {
        SampleBuffer copy(other);
        *this = std::move(copy);
    }
    return *this;
}

} // namespace tintorra
