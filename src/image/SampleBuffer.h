#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace tintorra {

// The bytes of a bitmap's samples. A new buffer reads as zeros without being written: large
// blocks come straight from the system as zero pages (huge ones where the kernel allows), so
// decoding a photograph into one touches each page once instead of clearing it first and
// writing it again.
class SampleBuffer {
public:
    SampleBuffer() = default;
    // Zeroed bytes; throws std::bad_alloc when there is no memory.
    explicit SampleBuffer(std::size_t bytes);

    SampleBuffer(const SampleBuffer& other);
    SampleBuffer& operator=(const SampleBuffer& other);
    SampleBuffer(SampleBuffer&&) noexcept = default;
    SampleBuffer& operator=(SampleBuffer&&) noexcept = default;
    ~SampleBuffer() = default;

    std::uint8_t* data() { return bytes_.get(); }
    const std::uint8_t* data() const { return bytes_.get(); }
    std::size_t size() const { return size_; }

private:
    struct Free {
        std::size_t bytes = 0;
        void operator()(std::uint8_t* memory) const;
    };
    std::unique_ptr<std::uint8_t[], Free> bytes_;
    std::size_t size_ = 0;
};

} // namespace tintorra
