#include "colour/Matrix3.h"

#include "common/Diagnostics.h"

#include <cmath>
#include <cstdio>

namespace tintorra {

bool invertMatrix3(Matrix3& out, const Matrix3& in)
{
    const double a = in[0], b = in[1], c = in[2];
    const double d = in[3], e = in[4], f = in[5];
    const double g = in[6], h = in[7], i = in[8];

    // The adjugate goes out first so that a singular input still leaves it for the caller.
    // clang-format off
    out = {e * i - f * h, c * h - b * i, b * f - c * e,
           f * g - d * i, a * i - c * g, c * d - a * f,
           d * h - e * g, b * g - a * h, a * e - b * d};
    // clang-format on

    const double determinant = a * out[0] + d * out[1] + g * out[2];
    if (std::fabs(determinant) <= 1e-8) {
        return false;
    }
    const double scale = 1.0 / determinant;
    for (double& element : out) {
        element *= scale;
    }
    return true;
}

void multiplyMatrix3(Matrix3& out, const Matrix3& a, const Matrix3& b)
{
    Matrix3 product{};
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            product[row * 3 + column] = a[row * 3 + 0] * b[0 * 3 + column] +
                                        a[row * 3 + 1] * b[1 * 3 + column] +
                                        a[row * 3 + 2] * b[2 * 3 + column];
        }
    }
    out = product;
}

void printMatrixRow(const double row[3], const char* label)
{
    diagnostic("Matrix |%s|: %f, %f, %f\n", label, row[0], row[1], row[2]);
}

void printMatrix(const Matrix3& matrix, const char* label)
{
    diagnostic("Matrix |%s|:\n", label);
    for (int row = 0; row < 3; ++row) {
        diagnostic(" %f, %f, %f\n", matrix[row * 3], matrix[row * 3 + 1], matrix[row * 3 + 2]);
    }
}

} // namespace tintorra
