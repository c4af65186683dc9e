#pragma once

#include "colour/ColorSpaceModel.h"
#include "colour/KVColorGamut.h"
#include "controls/KVSliderValues.h"
#include "engine/HueShiftParameters.h"
#include "engine/HueSpectrum.h"

#include <cstddef>

namespace tintorra {

// The members of a spectrum band that can be averaged over a run of bands.
enum class SpectrumBandMember : std::size_t {
    hueMinimum,
    hueMaximum,
    hueMean,
    chromaMinimum,
    chromaMaximum,
    chromaMean,
    lightnessMinimum,
    lightnessMaximum,
    lightnessMean,
    alphaMinimum,
    alphaMaximum,
    alphaMean,
};

// The pixel-count-weighted mean of one band member over the bands of the fully selected hue
// range (lower to upper, in whole degrees, rounded half up; the achromatic band is never
// included). 0 when the range holds no pixels or the spectrum has no bands.
double averageSpectrumBandMemberValuesAtOffset(const LChSpectrum& spectrum,
                                               const KVSliderValues& hueRange,
                                               SpectrumBandMember member);

// The statistics of the selection: means of the band members and the ratios of the chroma
// values to the gamut's largest chroma at the mean hue (no gamut: that chroma is 0 and the
// divisions are left to give infinities).
SelectionStatistics selectionStatistics(const LChSpectrum* spectrum, const KVSliderValues& hueRange,
                                        const KVColorGamut* gamut);

// 1 / (mean chroma / Cmax) + 1, unguarded: infinite for a mean chroma of 0 with a gamut, 1
// without a gamut (and NaN when neither gamut nor chroma is there).
double saturationGain(const SelectionStatistics& statistics);

// 1 / s + 1 for a positive mean lightness s (divided by 100 in the LCh modes), else 1.
double curveGain(const SelectionStatistics& statistics, ColorSpaceModel colorSpaceModel);

} // namespace tintorra
