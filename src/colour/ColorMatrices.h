#pragma once

#include "colour/Matrix3.h"
#include "colour/WorkingSpaces.h"

#include <array>

namespace tintorra {

class KVColorSpace;

// Chromatic adaptation methods; 3 is Bradford again, kept for stored values.
enum ChromaticAdaptationMethod : int {
    kAdaptationBradford = 0,
    kAdaptationXyzScaling = 1,
    kAdaptationVonKries = 2,
    kAdaptationBradfordAlias = 3,
};

// The RGB-to-XYZ matrix of a working space: primaries scaled so that RGB (1, 1, 1) maps exactly
// to the white point with Y = 1.
Matrix3 matrixFromChromaticities(const ColorSpaceChromaticities& record);

// The same from eight chromaticity coordinates alone, solved by Gaussian elimination without
// pivoting. The result holds the nine matrix elements followed by the white's XYZ. On a zero
// pivot "zero pivot found in line:%d\n" goes to standard error and only the white is written.
void matrixFromPrimaries(std::array<double, 12>& out, double xr, double yr, double xg, double yg,
                         double xb, double yb, double xw, double yw);

// Adapts `xyz` from `sourceWhite` to `destinationWhite`. Returns 0, or -50 (writing nothing) for
// a method above 3.
int adaptXyz(const double xyz[3], const double sourceWhite[3], double out[3],
             const double destinationWhite[3], int method);

// True when (X, Y, Z) is the ICC profile connection space white within 0.001 per component.
bool isD50White(double X, double Y, double Z);

// The RGB-to-XYZ matrix of a colour space: from its ICC profile's colourant and white point tags,
// sRGB when there is no space or no profile, and `out` left untouched for a non-RGB space.
void matrixFromColorSpace(Matrix3& out, const KVColorSpace* colorSpace);
void inverseMatrixFromColorSpace(Matrix3& out, const KVColorSpace* colorSpace);

} // namespace tintorra
