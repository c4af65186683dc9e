#include "engine/ShiftCaches.h"

#include "engine/PairedChromaTable.h"

#include <bit>

namespace tintorra {

namespace {

// Tables kept per kind: a session switches between a few gammas at most.
constexpr std::size_t kKeptPerKind = 4;

} // namespace

template <typename Table, typename Make>
std::shared_ptr<const Table> ShiftCaches::cached(std::vector<SampleEntry<Table>>& cache,
                                                 double imageGamma, const Make& make)
{
    const auto bits = std::bit_cast<std::uint64_t>(imageGamma);
    for (const SampleEntry<Table>& entry : cache) {
        if (entry.gammaBits == bits) {
            return entry.table;
        }
    }
    std::shared_ptr<const Table> table = make();
    if (cache.size() == kKeptPerKind) {
        cache.erase(cache.begin());
    }
    cache.push_back({bits, table});
    return table;
}

std::shared_ptr<const WordDecodeTable> ShiftCaches::wordDecodeTable(double imageGamma)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return cached(wordDecode_, imageGamma,
                  [&] { return std::make_shared<const WordDecodeTable>(imageGamma); });
}

std::shared_ptr<const SampleEncodeTable> ShiftCaches::byteEncodeTable(double imageGamma)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return cached(byteEncode_, imageGamma,
                  [&] { return std::make_shared<const SampleEncodeTable>(imageGamma, 255u); });
}

std::shared_ptr<const SampleEncodeTable> ShiftCaches::wordEncodeTable(double imageGamma)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return cached(wordEncode_, imageGamma,
                  [&] { return std::make_shared<const SampleEncodeTable>(imageGamma, 65535u); });
}

std::shared_ptr<const std::vector<double>>
ShiftCaches::pairedChromaTable(const KVColorGamutPtr& gamut)
{
    if (gamut == nullptr || !gamut->hasTables()) {
        return nullptr;
    }
    const std::lock_guard<std::mutex> lock(mutex_);
    std::erase_if(chroma_, [](const ChromaEntry& e) { return e.gamut.expired(); });
    for (const ChromaEntry& e : chroma_) {
        if (e.gamut.lock() == gamut) {
            return e.table;
        }
    }
    std::shared_ptr<const std::vector<double>> table = makePairedChromaTable(*gamut);
    chroma_.push_back({gamut, table});
    return table;
}

} // namespace tintorra
