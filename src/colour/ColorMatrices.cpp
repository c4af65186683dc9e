#include "colour/ColorMatrices.h"

#include "common/Diagnostics.h"

#include <cmath>
#include <cstdio>

namespace tintorra {

namespace {

// clang-format off
constexpr Matrix3 kIdentity = {1.0, 0.0, 0.0,
                               0.0, 1.0, 0.0,
                               0.0, 0.0, 1.0};

// Cone-response matrices of the adaptation methods, row-major.
constexpr Matrix3 kBradford = { 0.8951,  0.2664, -0.1614,
                               -0.7502,  1.7135,  0.0367,
                                0.0389, -0.0685,  1.0296};
constexpr Matrix3 kVonKries = { 0.40024, 0.7076, -0.08081,
                               -0.2263,  1.16532, 0.0457,
                                0.0,     0.0,     0.91822};
// clang-format on

// Pivots smaller than this stop the elimination in matrixFromPrimaries.
constexpr double kZeroPivot = 1e-6;

// Tolerance per component of the profile connection space white test.
constexpr double kD50Tolerance = 0.001;

std::array<double, 3> multiply(const Matrix3& m, const double v[3])
{
    return {m[0] * v[0] + m[1] * v[1] + m[2] * v[2], m[3] * v[0] + m[4] * v[1] + m[5] * v[2],
            m[6] * v[0] + m[7] * v[1] + m[8] * v[2]};
}

} // namespace

Matrix3 matrixFromChromaticities(const ColorSpaceChromaticities& record)
{
    const double primaries[3][3] = {
        {record.redX, record.redY, record.redLuminance},
        {record.greenX, record.greenY, record.greenLuminance},
        {record.blueX, record.blueY, record.blueLuminance},
    };

    // Columns of P are the primaries' XYZ; a primary on the y = 0 line contributes only its Y.
    Matrix3 p{};
    for (int column = 0; column < 3; ++column) {
        const double x = primaries[column][0];
        const double y = primaries[column][1];
        const double luminance = primaries[column][2];
        double X = 0.0;
        double Z = 0.0;
        if (y != 0.0) {
            X = x * luminance / y;
            Z = (1.0 - x - y) * luminance / y;
        }
        p[0 * 3 + column] = X;
        p[1 * 3 + column] = luminance;
        p[2 * 3 + column] = Z;
    }

    const double xw = record.whiteX;
    const double yw = record.whiteY;
    double white[3] = {0.0, 1.0, 0.0};
    if (yw != 0.0) {
        white[0] = xw / yw;
        white[2] = (1.0 - xw - yw) / yw;
    }

    // A singular P leaves its adjugate here; the table's rows never are.
    Matrix3 pInverse{};
    invertMatrix3(pInverse, p);
    const std::array<double, 3> scale = multiply(pInverse, white);

    Matrix3 m{};
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            m[row * 3 + column] = p[row * 3 + column] * scale[column];
        }
    }
    return m;
}

void matrixFromPrimaries(std::array<double, 12>& out, double xr, double yr, double xg, double yg,
                         double xb, double yb, double xw, double yw)
{
    out[9] = xw / yw;
    out[10] = 1.0;
    out[11] = (1.0 - xw - yw) / yw;

    // The augmented system [P | W], P's columns being (x, y, 1 - x - y) of each primary.
    const Matrix3 p = {xr, xg, xb, yr, yg, yb, 1.0 - xr - yr, 1.0 - xg - yg, 1.0 - xb - yb};
    double a[3][4] = {
        {p[0], p[1], p[2], out[9]},
        {p[3], p[4], p[5], out[10]},
        {p[6], p[7], p[8], out[11]},
    };

    // Forward elimination without row exchanges; the last pivot is only divided by below.
    for (int k = 0; k < 2; ++k) {
        const double pivot = a[k][k];
        if (std::fabs(pivot) < kZeroPivot) {
            diagnostic("zero pivot found in line:%d\n", k);
            return;
        }
        for (int i = k + 1; i < 3; ++i) {
            const double factor = a[i][k] / pivot;
            for (int j = k; j < 4; ++j) {
                a[i][j] -= factor * a[k][j];
            }
        }
    }

    double scale[3];
    for (int i = 2; i >= 0; --i) {
        double sum = a[i][3];
        for (int j = i + 1; j < 3; ++j) {
            sum -= a[i][j] * scale[j];
        }
        scale[i] = sum / a[i][i];
    }

    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            out[row * 3 + column] = p[row * 3 + column] * scale[column];
        }
    }
}

int adaptXyz(const double xyz[3], const double sourceWhite[3], double out[3],
             const double destinationWhite[3], int method)
{
    const Matrix3* cone = nullptr;
    switch (method) {
    case kAdaptationBradford:
    case kAdaptationBradfordAlias:
        cone = &kBradford;
        break;
    case kAdaptationXyzScaling:
        cone = &kIdentity;
        break;
    case kAdaptationVonKries:
        cone = &kVonKries;
        break;
    default:
        return -50;
    }

    Matrix3 coneInverse{};
    invertMatrix3(coneInverse, *cone);

    const std::array<double, 3> rhoSource = multiply(*cone, sourceWhite);
    const std::array<double, 3> rhoDestination = multiply(*cone, destinationWhite);
    const Matrix3 gain = {rhoDestination[0] / rhoSource[0], 0.0, 0.0, 0.0,
                          rhoDestination[1] / rhoSource[1], 0.0, 0.0, 0.0,
                          rhoDestination[2] / rhoSource[2]};

    Matrix3 adaptation{};
    multiplyMatrix3(adaptation, gain, *cone);
    multiplyMatrix3(adaptation, coneInverse, adaptation);

    const std::array<double, 3> result = multiply(adaptation, xyz);
    out[0] = result[0];
    out[1] = result[1];
    out[2] = result[2];
    return 0;
}

bool isD50White(double X, double Y, double Z)
{
    return std::fabs(X - 0.9642) <= kD50Tolerance && std::fabs(Y - 1.0) <= kD50Tolerance &&
           std::fabs(Z - 0.8249) <= kD50Tolerance;
}

} // namespace tintorra
