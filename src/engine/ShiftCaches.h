#pragma once

#include "colour/KVColorGamut.h"
#include "engine/SampleTables.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace tintorra {

// The tables one engine's shifts reuse from run to run: the sample tables of the last few gammas
// and the paired chroma table of each gamut still alive. Every table is made once, never changed
// and shared; the caches themselves may be asked from several threads at once.
class ShiftCaches {
public:
    std::shared_ptr<const WordDecodeTable> wordDecodeTable(double imageGamma);
    std::shared_ptr<const SampleEncodeTable> byteEncodeTable(double imageGamma);
    std::shared_ptr<const SampleEncodeTable> wordEncodeTable(double imageGamma);
    // Nothing for a gamut without tables.
    std::shared_ptr<const std::vector<double>> pairedChromaTable(const KVColorGamutPtr& gamut);

private:
    template <typename Table>
    struct SampleEntry {
        std::uint64_t gammaBits;
        std::shared_ptr<const Table> table;
    };
    struct ChromaEntry {
        // Held weakly: the entry dies with its gamut, and its control block stays while the
        // entry does, so no later gamut can be mistaken for it.
        std::weak_ptr<const KVColorGamut> gamut;
        std::shared_ptr<const std::vector<double>> table;
    };

    template <typename Table, typename Make>
    static std::shared_ptr<const Table> cached(std::vector<SampleEntry<Table>>& cache,
                                               double imageGamma, const Make& make);

    std::mutex mutex_;
    std::vector<SampleEntry<WordDecodeTable>> wordDecode_;
    std::vector<SampleEntry<SampleEncodeTable>> byteEncode_;
    std::vector<SampleEntry<SampleEncodeTable>> wordEncode_;
    std::vector<ChromaEntry> chroma_;
};

} // namespace tintorra
