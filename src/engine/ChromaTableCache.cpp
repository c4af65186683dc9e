#include "engine/ChromaTableCache.h"

#include <algorithm>
#include <mutex>

namespace tintorra {

std::shared_ptr<const std::vector<double>> pairedChromaTable(const KVColorGamutPtr& gamut)
{
    if (gamut == nullptr || !gamut->hasTables()) {
        return nullptr;
    }
    struct Entry {
        // Held weakly: the entry dies with its gamut, and its control block stays while the
        // entry does, so no later gamut can be mistaken for it.
        std::weak_ptr<const KVColorGamut> gamut;
        std::shared_ptr<const std::vector<double>> table;
    };
    static std::mutex mutex;
    static std::vector<Entry> cache;
    const std::lock_guard<std::mutex> lock(mutex);
    std::erase_if(cache, [](const Entry& e) { return e.gamut.expired(); });
    for (const Entry& e : cache) {
        if (e.gamut.lock() == gamut) {
            return e.table;
        }
    }
    constexpr std::size_t kRows = KVColorGamut::kHueCount;
    constexpr std::size_t kColumns = KVColorGamut::kLightnessCount;
    auto table = std::make_shared<std::vector<double>>(2 * kRows * kColumns);
    for (std::size_t i = 0; i < kRows; ++i) {
        const double* const row = gamut->chromaRow(i);
        const double* const next = gamut->chromaRow((i + 1) % kRows);
        double* const pairs = table->data() + 2 * i * kColumns;
        for (std::size_t j = 0; j < kColumns; ++j) {
            pairs[2 * j] = row[j];
            pairs[2 * j + 1] = next[j];
        }
    }
    cache.push_back({gamut, table});
    return table;
}

} // namespace tintorra
