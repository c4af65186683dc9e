#include "imageio/PngImageData.h"
#include "imageio/PngRowFilters.h"

#include <algorithm>
#include <atomic>
#include <isa-l/igzip_lib.h>
#include <memory>
#include <optional>
#include <system_error>
#include <thread>

namespace tintorra {

namespace {

// Filtered rows in flight between inflating and unfiltering: small enough to stay in the cache,
// large enough that neither side waits for the other on every row.
constexpr std::size_t kRingBytes = 1u << 20;
// Output of one inflate call on the inflating thread; after each the rows finished so far are
// handed over, so that unfiltering starts early.
constexpr std::size_t kInflateStep = 64u << 10;
// Below this much image data a second thread costs more than it saves.
constexpr std::uint64_t kSmallestPipelinedBytes = 1u << 20;
// Marks a side that gave up, in place of its row count.
constexpr std::uint32_t kStopped = 0xffffffffu;

// The zlib stream spread over the IDAT payloads, inflated by ISA-L.
class ImageDataStream {
public:
    explicit ImageDataStream(const PngImageDataChunks& chunks) : chunks_(chunks) {}

    // Reads the two-byte zlib header; false when it is not one PNG allows (deflate, a window of
    // at most 32 KiB, no preset dictionary).
    bool start()
    {
        state_ = std::make_unique<inflate_state>();
        isal_inflate_init(state_.get());
        std::uint8_t header[2];
        for (std::uint8_t& byte : header) {
            if (!nextInputByte(byte))
                return false;
        }
        const unsigned method = header[0] & 0x0fu;
        const unsigned windowBits = (header[0] >> 4) + 8u;
        const bool checked = ((header[0] << 8) | header[1]) % 31 == 0;
        const bool presetDictionary = (header[1] & 0x20u) != 0;
        if (method != 8 || windowBits > 15 || !checked || presetDictionary)
            return false;
        // The deflate data follows; ISA-L checks the Adler-32 after it. A distance beyond the
        // declared window is damage, as zlib sees it.
        state_->crc_flag = ISAL_ZLIB_NO_HDR_VER;
        state_->hist_bits = windowBits;
        state_->next_in = const_cast<std::uint8_t*>(chunks_[chunk_].data()) + offset_;
        state_->avail_in = static_cast<std::uint32_t>(chunks_[chunk_].size() - offset_);
        ++chunk_;
        return true;
    }

    // Inflates up to `capacity` bytes into `out`: the count written (short only at the end of
    // the stream or of the data), or nothing when the stream is damaged.
    std::optional<std::size_t> inflate(std::uint8_t* out, std::size_t capacity)
    {
        state_->next_out = out;
        state_->avail_out = static_cast<std::uint32_t>(capacity);
        while (state_->avail_out > 0 && state_->block_state != ISAL_BLOCK_FINISH) {
            // Without input left, ISA-L may still hold inflated bytes to hand out.
            if (state_->avail_in == 0)
                feedNextChunk();
            const std::uint32_t inputBefore = state_->avail_in;
            const std::uint32_t outputBefore = state_->avail_out;
            if (isal_inflate(state_.get()) != ISAL_DECOMP_OK)
                return std::nullopt;
            if (state_->avail_in == inputBefore && state_->avail_out == outputBefore &&
                state_->block_state != ISAL_BLOCK_FINISH)
                break;
        }
        return capacity - state_->avail_out;
    }

    // After the image's last byte: true when the stream ends there with a matching checksum and
    // the image data ends with it.
    bool endsCleanly()
    {
        std::uint8_t surplus[64];
        const std::optional<std::size_t> more = inflate(surplus, sizeof surplus);
        if (!more || *more > 0 || state_->block_state != ISAL_BLOCK_FINISH)
            return false;
        if (state_->avail_in > 0)
            return false;
        for (; chunk_ < chunks_.size(); ++chunk_) {
            if (!chunks_[chunk_].empty())
                return false;
        }
        return true;
    }

private:
    bool nextInputByte(std::uint8_t& byte)
    {
        while (chunk_ < chunks_.size() && offset_ == chunks_[chunk_].size()) {
            ++chunk_;
            offset_ = 0;
        }
        if (chunk_ == chunks_.size())
            return false;
        byte = chunks_[chunk_][offset_++];
        return true;
    }

    bool feedNextChunk()
    {
        while (chunk_ < chunks_.size() && chunks_[chunk_].empty())
            ++chunk_;
        if (chunk_ == chunks_.size())
            return false;
        state_->next_in = const_cast<std::uint8_t*>(chunks_[chunk_].data());
        state_->avail_in = static_cast<std::uint32_t>(chunks_[chunk_].size());
        ++chunk_;
        return true;
    }

    const PngImageDataChunks& chunks_;
    std::size_t chunk_ = 0;
    std::size_t offset_ = 0;
    std::unique_ptr<inflate_state> state_;
};

void swapSampleBytes(std::uint8_t* row, std::size_t bytes)
{
    for (std::size_t i = 0; i + 1 < bytes; i += 2)
        std::swap(row[i], row[i + 1]);
}

// Inflating fills a ring of filtered rows; unfiltering empties it into the bitmap. With two
// threads the two overlap, the inflating one ahead; each side publishes how many rows it has
// done, and the other waits on that count.
class RowPipeline {
public:
    RowPipeline(const PngImageDataChunks& chunks, const PngRowLayout& layout, std::uint8_t* rows,
                std::size_t stride)
        : stream_(chunks), layout_(layout), rows_(rows), stride_(stride),
          filteredStride_(layout.rowBytes + 1),
          totalBytes_(static_cast<std::uint64_t>(layout.rows) * filteredStride_),
          ringRows_(std::clamp<std::size_t>(kRingBytes / filteredStride_,
                                            std::min<std::size_t>(2, layout.rows), layout.rows))
    {}

    bool run()
    {
        if (!stream_.start())
            return false;
        ring_ = std::make_unique_for_overwrite<std::uint8_t[]>(ringRows_ * filteredStride_);
        if (!inflateAndUnfilter())
            return false;
        if (layout_.sixteenBit)
            swapSampleBytes(rows_ + static_cast<std::size_t>(layout_.rows - 1) * stride_,
                            layout_.rowBytes);
        return true;
    }

private:
    enum class Progress { advanced, ringFull, complete, failed };

    // Inflates up to `limit` bytes into the part of the ring already unfiltered.
    Progress inflateSome(std::size_t limit)
    {
        if (produced_ == totalBytes_)
            return Progress::complete;
        const std::uint32_t taken = unfilteredRows_.load(std::memory_order_acquire);
        if (taken == kStopped)
            return Progress::failed;
        takenSeen_ = taken;
        const std::uint64_t ringBytes = ringRows_ * filteredStride_;
        const std::uint64_t free =
            static_cast<std::uint64_t>(taken) * filteredStride_ + ringBytes - produced_;
        if (free == 0)
            return Progress::ringFull;
        const std::uint64_t offset = produced_ % ringBytes;
        const auto wanted = static_cast<std::size_t>(
            std::min({ringBytes - offset, free, totalBytes_ - produced_,
                      static_cast<std::uint64_t>(std::min(limit, kLargestPngRowBytes))}));
        const std::optional<std::size_t> written = stream_.inflate(ring_.get() + offset, wanted);
        if (!written || *written < wanted)
            return Progress::failed;
        produced_ += *written;
        inflatedRows_.store(static_cast<std::uint32_t>(produced_ / filteredStride_),
                            std::memory_order_release);
        inflatedRows_.notify_one();
        return Progress::advanced;
    }

    void inflateAll()
    {
        for (;;) {
            switch (inflateSome(kInflateStep)) {
            case Progress::advanced:
                break;
            case Progress::ringFull:
                unfilteredRows_.wait(takenSeen_, std::memory_order_acquire);
                break;
            case Progress::complete:
                inflatedCleanly_ = stream_.endsCleanly();
                return;
            case Progress::failed:
                inflatedRows_.store(kStopped, std::memory_order_release);
                inflatedRows_.notify_one();
                return;
            }
        }
    }

    // Unfilters rows up to `end` (exclusive) out of the ring, two at a time where it can.
    bool unfilterRows(std::uint32_t end)
    {
        while (nextRow_ < end) {
            const std::uint32_t y = nextRow_;
            const bool pair = y > 0 && y + 1 < end;
            std::uint8_t* out = rows_ + static_cast<std::size_t>(y) * stride_;
            const std::uint8_t* previous = y > 0 ? out - stride_ : nullptr;
            const std::uint8_t* filtered = filteredRow(y);
            if (pair) {
                const std::uint8_t* next = filteredRow(y + 1);
                const std::uint8_t types[2] = {filtered[0], next[0]};
                if (!unfilterRowPair(types, filtered + 1, next + 1, previous, layout_.rowBytes,
                                     layout_.bytesPerPixel, out, out + stride_))
                    return false;
            } else if (!unfilterRow(filtered[0], filtered + 1, previous, layout_.rowBytes,
                                    layout_.bytesPerPixel, out)) {
                return false;
            }
            // The filters work on the file's big-endian bytes, so a row changes to the
            // machine's order only once the row below it no longer looks at it.
            if (layout_.sixteenBit && previous)
                swapSampleBytes(out - stride_, layout_.rowBytes);
            if (layout_.sixteenBit && pair)
                swapSampleBytes(out, layout_.rowBytes);
            nextRow_ = y + (pair ? 2 : 1);
            unfilteredRows_.store(nextRow_, std::memory_order_release);
            unfilteredRows_.notify_one();
        }
        return true;
    }

    const std::uint8_t* filteredRow(std::uint32_t y) const
    {
        return ring_.get() + (y % ringRows_) * filteredStride_;
    }

    bool unfilterAll()
    {
        while (nextRow_ < layout_.rows) {
            const std::uint32_t inflated = inflatedRows_.load(std::memory_order_acquire);
            if (inflated == kStopped)
                return false;
            if (inflated <= nextRow_) {
                inflatedRows_.wait(inflated, std::memory_order_acquire);
                continue;
            }
            if (!unfilterRows(inflated)) {
                unfilteredRows_.store(kStopped, std::memory_order_release);
                unfilteredRows_.notify_one();
                return false;
            }
        }
        return true;
    }

    bool inflateAndUnfilter()
    {
        const bool pipelined =
            std::thread::hardware_concurrency() > 1 && totalBytes_ >= kSmallestPipelinedBytes;
        if (pipelined) {
            try {
                std::thread inflating([this] { inflateAll(); });
                const bool unfiltered = unfilterAll();
                inflating.join();
                return unfiltered && inflatedCleanly_;
            } catch (const std::system_error&) {
                // No thread to be had: do it all here.
            }
        }
        return runOnOneThread();
    }

    bool runOnOneThread()
    {
        for (;;) {
            Progress progress = Progress::advanced;
            while (progress == Progress::advanced)
                progress = inflateSome(ringRows_ * filteredStride_);
            if (progress == Progress::failed)
                return false;
            if (!unfilterRows(inflatedRows_.load(std::memory_order_relaxed)))
                return false;
            if (progress == Progress::complete && nextRow_ == layout_.rows)
                return stream_.endsCleanly();
        }
    }

    ImageDataStream stream_;
    const PngRowLayout layout_;
    std::uint8_t* const rows_;
    const std::size_t stride_;
    const std::size_t filteredStride_;
    const std::uint64_t totalBytes_;
    const std::size_t ringRows_;
    std::unique_ptr<std::uint8_t[]> ring_;

    // Inflating side.
    std::uint64_t produced_ = 0;
    std::uint32_t takenSeen_ = 0;
    bool inflatedCleanly_ = false;
    // Unfiltering side.
    std::uint32_t nextRow_ = 0;
    // The hand-over between the two.
    std::atomic<std::uint32_t> inflatedRows_{0};
    std::atomic<std::uint32_t> unfilteredRows_{0};
};

} // namespace

bool readPngImageData(const PngImageDataChunks& chunks, const PngRowLayout& layout,
                      std::uint8_t* rows, std::size_t stride)
{
    if (layout.rows == 0 || layout.rowBytes == 0 || layout.rowBytes > kLargestPngRowBytes ||
        layout.bytesPerPixel == 0 || layout.bytesPerPixel > 8 || layout.rows == kStopped)
        return false;
    RowPipeline pipeline(chunks, layout, rows, stride);
    return pipeline.run();
}

} // namespace tintorra
