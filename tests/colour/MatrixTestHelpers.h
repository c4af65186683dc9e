#pragma once

#include "colour/Matrix3.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tintorra::test {

using Vector3 = std::array<double, 3>;

inline Vector3 apply(const Matrix3& m, const Vector3& v)
{
    return {m[0] * v[0] + m[1] * v[1] + m[2] * v[2], m[3] * v[0] + m[4] * v[1] + m[5] * v[2],
            m[6] * v[0] + m[7] * v[1] + m[8] * v[2]};
}

inline double maxAbsDifference(const Matrix3& a, const Matrix3& b)
{
    double largest = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        largest = std::max(largest, std::fabs(a[i] - b[i]));
    }
    return largest;
}

// The white (x/y, 1, (1 - x - y)/y) of a chromaticity.
inline Vector3 whiteFromChromaticity(double x, double y)
{
    return {x / y, 1.0, (1.0 - x - y) / y};
}

// Product of two matrices written out independently of multiplyMatrix3.
inline Matrix3 product(const Matrix3& a, const Matrix3& b)
{
    Matrix3 out{};
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c) {
            double sum = 0.0;
            for (int k = 0; k < 3; ++k) {
                sum += a[r * 3 + k] * b[k * 3 + c];
            }
            out[r * 3 + c] = sum;
        }
    }
    return out;
}

inline double determinant(const Matrix3& m)
{
    return m[0] * (m[4] * m[8] - m[5] * m[7]) - m[1] * (m[3] * m[8] - m[5] * m[6]) +
           m[2] * (m[3] * m[7] - m[4] * m[6]);
}

// Solves m s = w by Cramer's rule: an independent route to the scale factors.
inline Vector3 solveByCramer(const Matrix3& m, const Vector3& w)
{
    const double d = determinant(m);
    Vector3 s{};
    for (int column = 0; column < 3; ++column) {
        Matrix3 replaced = m;
        for (int row = 0; row < 3; ++row) {
            replaced[row * 3 + column] = w[row];
        }
        s[column] = determinant(replaced) / d;
    }
    return s;
}

constexpr Matrix3 kIdentity = {1, 0, 0, 0, 1, 0, 0, 0, 1};

} // namespace tintorra::test
