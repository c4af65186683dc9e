#pragma once

#include "colour/Matrix3.h"

#include <array>
#include <cstddef>

namespace tintorra {

// Number of lightness columns of a gamut row: L = 0, 0.5, ..., 100.
inline constexpr std::size_t kGamutLightnessCount = 201;

// Coefficients derived from the XYZ-to-RGB matrix so that the chroma search can go from an LCh
// colour to linear RGB without calling the general conversions.
using ChromaSearchCoefficients = std::array<double, 9>;

// The inverse matrix with its first column scaled by Xn and its third by Zn, so that the relative
// xr, yr, zr of the Lab inversion feed in directly.
ChromaSearchCoefficients labMatrixPrecalc(const Matrix3& MI);

// Per row k of the inverse matrix: the weights of L, u and v in the channel's numerator once the
// Luv inversion is folded in (the common factor Y / (0.164248 v + L) is applied by the search).
ChromaSearchCoefficients luvMatrixPrecalc(const Matrix3& MI);

// The largest chroma of hue `hue` (radians) at lightness `lightness` whose linear RGB stays
// strictly inside 0..1: steps outward by 64 (Lab) or 75 (Luv) until the colour leaves the gamut,
// then bisects until the step is at most 0.001. Lightness 0 and 100 have no chroma.
double labChromaSearch(const ChromaSearchCoefficients& coefficients, double hue, double lightness);
double luvChromaSearch(const ChromaSearchCoefficients& coefficients, double hue, double lightness);

// Which instruction set a row search runs on: the best the processor has, or the baseline that
// every x86-64 processor has (for comparing the two).
enum class ChromaRowKernel {
    best,
    baseline,
};

// One whole table row: the search for every lightness column of one hue, written to
// `chromas[0..200]`. Runs several columns side by side in vector registers; every value is
// bit-identical to the single search of the same column.
void labChromaSearchRow(const ChromaSearchCoefficients& coefficients, double hue, double* chromas,
                        ChromaRowKernel kernel = ChromaRowKernel::best);
void luvChromaSearchRow(const ChromaSearchCoefficients& coefficients, double hue, double* chromas,
                        ChromaRowKernel kernel = ChromaRowKernel::best);

} // namespace tintorra
