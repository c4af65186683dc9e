#include "editor/SelectionStatistics.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace tintorra {

namespace {

// x raised by whole steps until it is no longer below `bound`. Values a million steps or more
// away are brought near in one go first, so that no input can keep the loop going for ever.
double raiseBySteps(double x, double bound, double step)
{
    constexpr double kLargestSteppedGap = 1.0e6;
    if (bound - x > kLargestSteppedGap * step) {
        x += std::floor((bound - x) / step) * step;
    }
    while (x < bound) {
        const double next = x + step;
        if (next == x) {
            return bound;
        }
        x = next;
    }
    return x;
}

// A run longer than this many bands covers the circle thousands of times over; it is cut here.
constexpr std::int64_t kLongestBandRun = 1000000;

double bandMember(const LChSpectrumBand& band, SpectrumBandMember member)
{
    switch (member) {
    case SpectrumBandMember::hueMinimum:
        return band.hueMinimum;
    case SpectrumBandMember::hueMaximum:
        return band.hueMaximum;
    case SpectrumBandMember::hueMean:
        return band.hueMean;
    case SpectrumBandMember::chromaMinimum:
        return band.chromaMinimum;
    case SpectrumBandMember::chromaMaximum:
        return band.chromaMaximum;
    case SpectrumBandMember::chromaMean:
        return band.chromaMean;
    case SpectrumBandMember::lightnessMinimum:
        return band.lightnessMinimum;
    case SpectrumBandMember::lightnessMaximum:
        return band.lightnessMaximum;
    case SpectrumBandMember::lightnessMean:
        return band.lightnessMean;
    case SpectrumBandMember::alphaMinimum:
        return band.alphaMinimum;
    case SpectrumBandMember::alphaMaximum:
        return band.alphaMaximum;
    case SpectrumBandMember::alphaMean:
        return band.alphaMean;
    }
    return 0.0;
}

} // namespace

double averageSpectrumBandMemberValuesAtOffset(const LChSpectrum& spectrum,
                                               const KVSliderValues& hueRange,
                                               SpectrumBandMember member)
{
    if (spectrum.bands == nullptr || spectrum.count < kAchromaticBand) {
        return 0.0;
    }
    double lo = hueRange.lower * 360.0;
    double hi = hueRange.upper * 360.0;
    if (!std::isfinite(lo) || !std::isfinite(hi)) {
        return 0.0;
    }
    lo = raiseBySteps(lo, 0.0, 360.0);
    hi = raiseBySteps(hi, lo, 360.0);
    lo = std::floor(lo + 0.5);
    hi = std::floor(hi + 0.5);
    if (lo > hi) {
        return 0.0;
    }
    const auto first = static_cast<std::int64_t>(lo);
    const std::int64_t last = first + std::min(static_cast<std::int64_t>(hi - lo), kLongestBandRun);

    double mean = 0.0;
    double total = 0.0;
    for (std::int64_t i = first; i <= last; ++i) {
        const LChSpectrumBand& band = spectrum.bands[static_cast<std::size_t>(i % 360)];
        const double previousTotal = total;
        total += static_cast<double>(band.count);
        if (total != 0.0) {
            mean = (mean * previousTotal +
                    static_cast<double>(band.count) * bandMember(band, member)) /
                   total;
        }
    }
    return mean;
}

SelectionStatistics selectionStatistics(const LChSpectrum* spectrum, const KVSliderValues& hueRange,
                                        const KVColorGamut* gamut)
{
    SelectionStatistics statistics;
    if (spectrum != nullptr) {
        const auto average = [&](SpectrumBandMember member) {
            return averageSpectrumBandMemberValuesAtOffset(*spectrum, hueRange, member);
        };
        statistics.meanHue = average(SpectrumBandMember::hueMean);
        statistics.meanLightness = average(SpectrumBandMember::lightnessMean);
        statistics.lightnessMinimum = average(SpectrumBandMember::lightnessMinimum);
        statistics.lightnessMaximum = average(SpectrumBandMember::lightnessMaximum);
        statistics.meanChroma = average(SpectrumBandMember::chromaMean);
        statistics.chromaMinimum = average(SpectrumBandMember::chromaMinimum);
        statistics.chromaMaximum = average(SpectrumBandMember::chromaMaximum);
    }
    const double maxChroma = gamut != nullptr && gamut->hasTables()
                                 ? gamut->maxChromaForHue(statistics.meanHue).c1
                                 : 0.0;
    statistics.meanChromaRatio = statistics.meanChroma / maxChroma;
    statistics.chromaMinimumRatio = statistics.chromaMinimum / maxChroma;
    statistics.chromaMaximumRatio = statistics.chromaMaximum / maxChroma;
    return statistics;
}

double saturationGain(const SelectionStatistics& statistics)
{
    return 1.0 / statistics.meanChromaRatio + 1.0;
}

double curveGain(const SelectionStatistics& statistics, ColorSpaceModel colorSpaceModel)
{
    // The LCh models measure lightness on 0..100.
    const double s = isLchColorMode(colorSpaceModel) ? statistics.meanLightness / 100.0
                                                     : statistics.meanLightness;
    return s > 0.0 ? 1.0 / s + 1.0 : 1.0;
}

} // namespace tintorra
