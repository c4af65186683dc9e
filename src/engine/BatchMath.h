#pragma once

#include <cstddef>

namespace tintorra::batch {

// Elementary functions over arrays, four lanes at a time where the processor has AVX2 and FMA
// (SLEEF's vectorised functions, and a cube root of our own), one value at a time with the C
// library otherwise. The power and the cube root are within about one unit in the last place;
// the arctangent, sine and cosine use SLEEF's faster variants, stated within 3.5 units
// (BatchMathTests measures them all against the C library), which moves the colours by their
// last bits only. A value's result does not depend on its
// neighbours or on where it lies in the array. Output may alias input.

// out[i] = x[i]^y
void pow(const double* x, double y, double* out, std::size_t n);
// out[i] = cube root of x[i]
void cbrt(const double* x, double* out, std::size_t n);
// out[i] = atan2(y[i], x[i])
void atan2(const double* y, const double* x, double* out, std::size_t n);
// sines[i] = sin(angle[i]), cosines[i] = cos(angle[i])
void sincos(const double* angle, double* sines, double* cosines, std::size_t n);

// Whether the vectorised functions are in use on this processor.
bool vectorised();

} // namespace tintorra::batch
