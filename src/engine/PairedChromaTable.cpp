#include "engine/PairedChromaTable.h"

namespace tintorra {

std::shared_ptr<const std::vector<double>> makePairedChromaTable(const KVColorGamut& gamut)
{
    if (!gamut.hasTables()) {
        return nullptr;
    }
    constexpr std::size_t kRows = KVColorGamut::kHueCount;
    constexpr std::size_t kColumns = KVColorGamut::kLightnessCount;
    auto table = std::make_shared<std::vector<double>>(2 * kRows * kColumns);
    for (std::size_t i = 0; i < kRows; ++i) {
        const double* const row = gamut.chromaRow(i);
        const double* const next = gamut.chromaRow((i + 1) % kRows);
        double* const pairs = table->data() + 2 * i * kColumns;
        for (std::size_t j = 0; j < kColumns; ++j) {
            pairs[2 * j] = row[j];
            pairs[2 * j + 1] = next[j];
        }
    }
    return table;
}

} // namespace tintorra
