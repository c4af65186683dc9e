#include "engine/HueSpectrum.h"

#include "colour/ColorConversions.h"
#include "engine/TableAllocation.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tintorra {

namespace {

double huePeriod(ColorSpaceModel colorSpaceModel)
{
    return isLchColorMode(colorSpaceModel) ? 2.0 * std::numbers::pi : 1.0;
}

// Folds one value into a band's minimum, maximum and count-weighted mean.
void accumulate(float& minimum, float& maximum, float& mean, double value, bool first,
                double oldCount, double addedCount)
{
    const float stored = static_cast<float>(value);
    if (first) {
        minimum = maximum = stored;
    } else {
        minimum = std::min(minimum, stored);
        maximum = std::max(maximum, stored);
    }
    mean = static_cast<float>((mean * oldCount + value * addedCount) / (oldCount + addedCount));
}

} // namespace

SpectrumPlace spectrumPlaceOfEntry(const color_table_lch_entry_info& entry,
                                   ColorSpaceModel colorSpaceModel)
{
    if (entry.chroma < kAchromaticChroma) {
        return {kAchromaticBand, 0.0};
    }
    const double period = huePeriod(colorSpaceModel);
    double hue = period == 1.0 ? fractionalPart(entry.hue) : wrapRadians(entry.hue);
    // A hue a hair below zero can wrap to exactly one period in double arithmetic.
    if (hue >= period) {
        hue = 0.0;
    }
    const double degrees = wrapDegrees(period == 1.0 ? hue * 360.0 : degreesFromRadians(hue));
    const double band = std::floor(degrees + 0.5);
    if (band >= 360.0) {
        return {0, hue - period};
    }
    return {static_cast<std::size_t>(band), hue};
}

LChSpectrum createLChSpectrumFromLChColorTable(const LChColorTable& table)
{
    LChSpectrum spectrum;
    spectrum.bands = allocateTable<LChSpectrumBand>(kSpectrumBandCount);
    if (!spectrum.bands) {
        return spectrum;
    }
    std::fill(spectrum.bands.get(), spectrum.bands.get() + kSpectrumBandCount, LChSpectrumBand{});
    spectrum.count = kSpectrumBandCount;

    for (std::uint64_t i = 0; i < table.count; ++i) {
        const color_table_lch_entry_info& entry = table.colors[i];
        if (entry.alpha == 0.0f) {
            continue;
        }
        const SpectrumPlace place = spectrumPlaceOfEntry(entry, table.colorSpaceModel);
        LChSpectrumBand& band = spectrum.bands[place.band];
        const bool first = band.count == 0;
        const double oldCount = static_cast<double>(band.count);
        const double added = static_cast<double>(entry.locationCount);
        accumulate(band.hueMinimum, band.hueMaximum, band.hueMean, place.hue, first, oldCount,
                   added);
        accumulate(band.chromaMinimum, band.chromaMaximum, band.chromaMean, entry.chroma, first,
                   oldCount, added);
        accumulate(band.lightnessMinimum, band.lightnessMaximum, band.lightnessMean,
                   entry.lightness, first, oldCount, added);
        accumulate(band.alphaMinimum, band.alphaMaximum, band.alphaMean, entry.alpha, first,
                   oldCount, added);
        band.count += entry.locationCount;
    }
    return spectrum;
}

} // namespace tintorra
