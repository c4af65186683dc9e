#pragma once

#include <array>

namespace tintorra {

// A row-major 3x3 matrix of doubles. M maps linear RGB to XYZ (white Y = 1); MI is its inverse.
using Matrix3 = std::array<double, 9>;

// Writes the adjugate of `in` to `out`, then scales it by 1/determinant. Returns false, leaving
// the unscaled adjugate, when |determinant| <= 1e-8.
bool invertMatrix3(Matrix3& out, const Matrix3& in);

// out = a * b. `out` may alias either operand.
void multiplyMatrix3(Matrix3& out, const Matrix3& a, const Matrix3& b);

// Diagnostics on standard error: "Matrix |label|: r0, r1, r2" for one row, or the header line and
// three indented rows for a whole matrix.
void printMatrixRow(const double row[3], const char* label);
void printMatrix(const Matrix3& matrix, const char* label);

} // namespace tintorra
