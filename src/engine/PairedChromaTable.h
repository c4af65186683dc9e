#pragma once

#include "colour/KVColorGamut.h"

#include <memory>
#include <vector>

namespace tintorra {

// A gamut's chroma table laid out for lookups of many colours at once: one block in which entry
// (i, j) holds the pair T(i, j), T(i + 1, j) (row 719 pairs with row 0), at
// 2 (i x KVColorGamut::kLightnessCount + j). The four entries that a bilinear lookup between rows
// i and i + 1 and columns j and j + 1 reads are then four consecutive doubles. A gamut without
// tables has none. The engine's caches keep one per gamut while the gamut lives.
std::shared_ptr<const std::vector<double>> makePairedChromaTable(const KVColorGamut& gamut);

} // namespace tintorra
