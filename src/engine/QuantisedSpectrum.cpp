#include "engine/QuantisedSpectrum.h"

#include "colour/ColorConversions.h"
#include "colour/ColorMatrices.h"
#include "common/Diagnostics.h"
#include "engine/ColorHistogram.h"
#include "engine/HueSpectrum.h"
#include "engine/PackedSamples.h"
#include "engine/TableAllocation.h"

#include <algorithm>
#include <cmath>

namespace tintorra {

namespace {

// A colormap colour in the forms the spectrum and the dominant colours need.
struct MeasuredColor {
    ColorComponents encoded;
    ColorComponents xyz;
    ColorComponents luv;
    ColorComponents lch;
};

MeasuredColor measure(const ColormapEntry& entry, const Matrix3& rgbToXyz)
{
    MeasuredColor color;
    color.encoded = {entry.r / 255.0, entry.g / 255.0, entry.b / 255.0, 1.0};
    color.xyz = tintorra::rgbToXyz(gammaDecode(color.encoded, kColorSpectrumGamma), rgbToXyz);
    color.luv = xyzToLuv(color.xyz);
    color.lch = luvToLch(color.luv);
    return color;
}

// Bands 0 to 359 by the hue rounded half up to whole degrees (360 wraps to 0), 360 for colours
// without a meaningful hue, as in the colour table's spectrum.
std::size_t bandOfLch(const ColorComponents& lch)
{
    if (lch.c1 < kAchromaticChroma) {
        return kAchromaticBand;
    }
    const double degrees = wrapDegrees(degreesFromRadians(wrapRadians(lch.c2)));
    const double band = std::floor(degrees + 0.5);
    return band >= 360.0 ? 0 : static_cast<std::size_t>(band);
}

double runningMean(double mean, double oldWeight, double value, double addedWeight)
{
    return (mean * oldWeight + value * addedWeight) / (oldWeight + addedWeight);
}

Matrix3 matrixOfBitmap(const KVBitmap& bitmap)
{
    Matrix3 matrix{};
    matrixFromColorSpace(matrix, nullptr);
    matrixFromColorSpace(matrix, &bitmap.colorSpace());
    return matrix;
}

// The image's colormap, or an empty one after the failing step's message.
Colormap colormapOfImage(const PackedSampleSource& source, std::size_t colors)
{
    ColorHistogram histogram;
    {
        ColorHashTable table;
        if (!collectImageColors(source, table)) {
            return {};
        }
        histogram = histogramFromColorHash(table);
    }
    if (histogram.count == 0) {
        return {};
    }
    return medianCutColormap(histogram, colors);
}

} // namespace

ColorSpectrum colorSpectrumFromColormap(const Colormap& colormap, const Matrix3& rgbToXyz)
{
    ColorSpectrum spectrum;
    spectrum.bands = allocateTable<ColorSpectrumBand>(kSpectrumBandCount);
    if (!spectrum.bands) {
        diagnostic("\nout of memory making color spectrum");
        return spectrum;
    }
    std::fill(spectrum.bands.get(), spectrum.bands.get() + kSpectrumBandCount, ColorSpectrumBand{});
    spectrum.count = kSpectrumBandCount;

    for (std::size_t i = 0; i < colormap.count; ++i) {
        const ColormapEntry& entry = colormap.colors[i];
        if (entry.count == 0) {
            continue;
        }
        const MeasuredColor color = measure(entry, rgbToXyz);
        ColorSpectrumBand& band = spectrum.bands[bandOfLch(color.lch)];
        const double old = static_cast<double>(band.quantity);
        const double added = static_cast<double>(entry.count);
        band.L = runningMean(band.L, old, color.luv.c0, added);
        band.u = runningMean(band.u, old, color.luv.c1, added);
        band.v = runningMean(band.v, old, color.luv.c2, added);
        band.red = runningMean(band.red, old, color.encoded.c0, added);
        band.green = runningMean(band.green, old, color.encoded.c1, added);
        band.blue = runningMean(band.blue, old, color.encoded.c2, added);
        band.chromaMaximum = std::max(band.chromaMaximum, color.lch.c1);
        band.colors += 1;
        band.quantity += entry.count;
    }
    for (std::size_t i = 0; i < kSpectrumBandCount; ++i) {
        ColorSpectrumBand& band = spectrum.bands[i];
        if (band.quantity == 0) {
            continue;
        }
        const ColorComponents lch = luvToLch({band.L, band.u, band.v, 1.0});
        band.lightness = lch.c0;
        band.chroma = lch.c1;
        band.hue = wrapRadians(lch.c2);
    }
    return spectrum;
}

ColorSpectrum createColorSpectrum(const KVBitmapPtr& bitmap, std::size_t colormapSize)
{
    PackedSampleSource source;
    if (colormapSize < 1 || colormapSize > kLargestColormapSize ||
        !packedSampleSourceFromBitmap(bitmap, 1.0, source)) {
        diagnostic("\nbad color spectrum parameter");
        return {};
    }
    const Colormap colormap = colormapOfImage(source, colormapSize);
    if (colormap.count == 0) {
        return {};
    }
    return colorSpectrumFromColormap(colormap, matrixOfBitmap(*bitmap));
}

void printColorSpectrum(const ColorSpectrum& spectrum, std::FILE* stream)
{
    for (std::uint64_t i = 0; i < spectrum.count; ++i) {
        const ColorSpectrumBand& band = spectrum.bands[i];
        std::fprintf(stream, "\nspectrum[%ld] luv:%f,%f,%f H,C,L: %f,%f,%f qty:%lu",
                     static_cast<long>(i), band.L, band.u, band.v, band.hue, band.chroma,
                     band.lightness, static_cast<unsigned long>(band.quantity));
    }
}

std::vector<DominantColor> createDominantColorsWithCount(const KVBitmapPtr& bitmap,
                                                         std::size_t count, double minSaturation,
                                                         double minLuminosity, double deltaE)
{
    std::vector<DominantColor> chosen;
    PackedSampleSource source;
    if (count == 0 || !packedSampleSourceFromBitmap(bitmap, 1.0, source)) {
        return chosen;
    }
    const std::size_t colormapSize = std::clamp<std::size_t>(count * 4, 32, 256);
    const Colormap colormap = colormapOfImage(source, colormapSize);
    const Matrix3 matrix = matrixOfBitmap(*bitmap);

    struct Candidate {
        DominantColor color;
        std::uint32_t packed;
    };
    std::vector<Candidate> candidates;
    candidates.reserve(colormap.count);
    for (std::size_t i = 0; i < colormap.count; ++i) {
        const ColormapEntry& entry = colormap.colors[i];
        const MeasuredColor color = measure(entry, matrix);
        const ColorComponents lab = xyzToLab(color.xyz);
        if (rgbToHsb(color.encoded).c1 < minSaturation || lab.c0 / 100.0 < minLuminosity) {
            continue;
        }
        candidates.push_back({{color.encoded, lab, color.lch, entry.count},
                              packColor(entry.r, entry.g, entry.b, 0xFF)});
    }
    std::sort(candidates.begin(), candidates.end(), [](const Candidate& a, const Candidate& b) {
        return a.color.quantity != b.color.quantity ? a.color.quantity > b.color.quantity
                                                    : a.packed < b.packed;
    });
    for (const Candidate& candidate : candidates) {
        if (chosen.size() == count) {
            break;
        }
        const bool distinct =
            std::all_of(chosen.begin(), chosen.end(), [&](const DominantColor& other) {
                return deltaE2000(candidate.color.lab, other.lab) >= deltaE;
            });
        if (distinct) {
            chosen.push_back(candidate.color);
        }
    }
    return chosen;
}

} // namespace tintorra
