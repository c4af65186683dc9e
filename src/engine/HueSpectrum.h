#pragma once

#include "colour/ColorSpaceModel.h"
#include "engine/ColorTable.h"
#include "engine/TableAllocation.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace tintorra {

// One band of the hue spectrum: the pixels whose hue rounds to one whole degree (bands 0 to
// 359), or the achromatic pixels (band 360). Hue is in the colour table's own unit (radians in
// the LCh modes, a fraction of the circle otherwise); means are weighted by pixel counts.
struct LChSpectrumBand {
    std::uint64_t count;
    float hueMinimum;
    float hueMaximum;
    float hueMean;
    float chromaMinimum;
    float chromaMaximum;
    float chromaMean;
    float lightnessMinimum;
    float lightnessMaximum;
    float lightnessMean;
    float alphaMinimum;
    float alphaMaximum;
    float alphaMean;
};
static_assert(sizeof(LChSpectrumBand) == 56);

inline constexpr std::size_t kSpectrumBandCount = 361;
inline constexpr std::size_t kAchromaticBand = 360;
// Colours of less chroma than this have no meaningful hue and go to the achromatic band.
inline constexpr float kAchromaticChroma = 0.01f;

// The hue spectrum of an image: `count` bands (361 when built, 0 when empty).
struct LChSpectrum {
    std::uint64_t count = 0;
    TableArray<LChSpectrumBand> bands;

    bool empty() const { return count == 0; }
};

// The band of a colour-table entry of a table in `colorSpaceModel`, and the hue it contributes
// in the table's unit; band 360 (hue 0) for chroma below 0.01. A hue that rounds up to 360
// degrees belongs to band 0 with its hue one period lower.
struct SpectrumPlace {
    std::size_t band;
    double hue;
};
SpectrumPlace spectrumPlaceOfEntry(const color_table_lch_entry_info& entry,
                                   ColorSpaceModel colorSpaceModel);

// Summarises a colour table by hue: 361 bands of pixel counts and of minimum, maximum and mean
// hue, chroma, lightness and alpha. Fully transparent colours are left out.
LChSpectrum createLChSpectrumFromLChColorTable(const LChColorTable& table);

} // namespace tintorra
