#include "MatrixTestHelpers.h"
#include "colour/ColorMatrices.h"
#include "colour/Matrix3.h"
#include "colour/WorkingSpaces.h"
#include "support/DiagnosticsCapture.h"

#include <gtest/gtest.h>

#include <string>

namespace tintorra {
namespace {

using test::kIdentity;
using test::maxAbsDifference;
using test::product;

TEST(InvertMatrix3, HandComputedInverse)
{
    // det = 5; the adjugate worked out by hand from the cofactors.
    const Matrix3 m = {2, 0, 1, 1, 1, 0, 0, 3, 1};
    const Matrix3 adjugate = {1, 3, -1, -1, 2, 1, 3, -6, 2};
    Matrix3 out{};
    ASSERT_TRUE(invertMatrix3(out, m));
    for (int i = 0; i < 9; ++i) {
        EXPECT_NEAR(out[i], adjugate[i] / 5.0, 1e-15) << i;
    }
}

TEST(InvertMatrix3, SingularMatrixReturnsFalseAndLeavesTheAdjugate)
{
    struct Case {
        const char* what;
        Matrix3 singular;
        Matrix3 adjugate;
    };
    const Case cases[] = {
        // Rows in arithmetic progression: rank 2.
        {"rank two", {1, 2, 3, 4, 5, 6, 7, 8, 9}, {-3, 6, -3, 6, -12, 6, -3, 6, -3}},
        // Two equal columns: only the cofactors of the third column survive.
        {"equal columns", {1, 1, 2, 3, 3, 5, 4, 4, 7}, {1, 1, -1, -1, -1, 1, 0, 0, 0}},
        {"zero matrix", {0, 0, 0, 0, 0, 0, 0, 0, 0}, {0, 0, 0, 0, 0, 0, 0, 0, 0}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Matrix3 out{};
        out.fill(42.0);
        EXPECT_FALSE(invertMatrix3(out, c.singular));
        EXPECT_EQ(out, c.adjugate);
        // The adjugate times the matrix is det * I = 0.
        EXPECT_LT(maxAbsDifference(product(out, c.singular), Matrix3{}), 1e-12);
    }
}

TEST(InvertMatrix3, DeterminantThresholdIsInclusive)
{
    struct Case {
        double smallest;
        bool invertible;
    };
    // diag(d, 1, 1) has determinant exactly d.
    const Case cases[] = {{1e-12, false}, {1e-8, false}, {-1e-8, false},
                          {2e-8, true},   {-2e-8, true}, {1e-2, true}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.smallest);
        Matrix3 out{};
        EXPECT_EQ(invertMatrix3(out, {c.smallest, 0, 0, 0, 1, 0, 0, 0, 1}), c.invertible);
        // The adjugate diag(1, d, d) on failure, the inverse diag(1/d, 1, 1) on success.
        EXPECT_DOUBLE_EQ(out[0], c.invertible ? 1.0 / c.smallest : 1.0);
        EXPECT_DOUBLE_EQ(out[4], c.invertible ? 1.0 : c.smallest);
    }
}

TEST(InvertMatrix3, RoundTripsEveryWorkingSpace)
{
    for (const ColorSpaceChromaticities& space : workingSpaceTable) {
        SCOPED_TRACE(space.name);
        const Matrix3 m = matrixFromChromaticities(space);
        Matrix3 mi{};
        ASSERT_TRUE(invertMatrix3(mi, m));
        EXPECT_LT(maxAbsDifference(product(m, mi), kIdentity), 1e-12);
        EXPECT_LT(maxAbsDifference(product(mi, m), kIdentity), 1e-12);
        Matrix3 back{};
        ASSERT_TRUE(invertMatrix3(back, mi));
        EXPECT_LT(maxAbsDifference(back, m), 1e-12);
    }
}

TEST(MultiplyMatrix3, MatchesHandComputedProductAndAllowsAliasing)
{
    const Matrix3 a = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    const Matrix3 b = {9, 8, 7, 6, 5, 4, 3, 2, 1};
    const Matrix3 expected = {30, 24, 18, 84, 69, 54, 138, 114, 90};
    Matrix3 out{};
    multiplyMatrix3(out, a, b);
    EXPECT_EQ(out, expected);

    Matrix3 left = a;
    multiplyMatrix3(left, left, b);
    EXPECT_EQ(left, expected);
    Matrix3 right = b;
    multiplyMatrix3(right, a, right);
    EXPECT_EQ(right, expected);
    Matrix3 square = a;
    multiplyMatrix3(square, square, square);
    EXPECT_EQ(square, (Matrix3{30, 36, 42, 66, 81, 96, 102, 126, 150}));
}

TEST(PrintMatrix, WritesTheFixedFormatsToStandardError)
{
    const Matrix3 m = {1, 0.5, -0.25, 0, 1, 0, 2, 0, 1};
    test::captureDiagnostics();
    printMatrix(m, "M");
    EXPECT_EQ(test::capturedDiagnostics(), "Matrix |M|:\n"
                                           " 1.000000, 0.500000, -0.250000\n"
                                           " 0.000000, 1.000000, 0.000000\n"
                                           " 2.000000, 0.000000, 1.000000\n");
    const double row[3] = {0.125, -3, 10};
    test::captureDiagnostics();
    printMatrixRow(row, "white");
    EXPECT_EQ(test::capturedDiagnostics(), "Matrix |white|: 0.125000, -3.000000, 10.000000\n");
}

} // namespace
} // namespace tintorra
