#include <varnow/varnow.h>

#include "tests/support/bits.h"
#include "tests/support/containers.h"
#include "tests/support/refusals.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <utility>
#include <vector>

using namespace varnow;
using test::same_bits;
using test::scattered;

namespace {

double const inf = std::numeric_limits<double>::infinity();
LinearMethod const methods[] = {GAUSS, LU, QR};
LinearMethod const unknown = static_cast<LinearMethod>(7);

// The routines in their plain form, column by column. Gauss takes each product off the cell, Crout
// adds them up and takes off the sum.
template <class F> double less_products(bool crout, double v, int n, F product)
{
    double s = 0;
    for (int k = 0; k < n; ++k) (crout ? s : v) += crout ? product(k) : -product(k);
    return crout ? v - s : v;
}

struct Factors
{
    matrix packed, P;
    int sign = 1;
    bool singular = false;
};
Factors plain_factors(matrix const& A, bool crout)
{
    Factors f{A, ~seq(1, A.rows)};
    double** const a = f.packed.cell;
    for (int j = 0; j < A.rows; ++j) {
        for (int i = 0; i < A.rows; ++i)
            a[i][j] = less_products(crout, a[i][j], std::min(i, j),
                                    [&](int k) { return a[i][k] * a[k][j]; });
        int p = j;
        for (int i = j + 1; i < A.rows; ++i)
            if (std::fabs(a[i][j]) > std::fabs(a[p][j])) p = i;
        std::swap(a[p], a[j]);
        std::swap(f.P.cell[p], f.P.cell[j]);
        if (p != j) f.sign = -f.sign;
        f.singular |= a[j][j] == 0;
        for (int i = j + 1; i < A.rows && a[j][j] != 0; ++i) a[i][j] /= a[j][j];
    }
    return f;
}

// x of U x = y; guarded, a right side of 0 gives 0.
matrix plain_back(matrix const& U, matrix const& y, bool guarded)
{
    matrix x(y.rows, y.cols);
    for (int c = 0; c < y.cols; ++c)
        for (int i = y.rows - 1; i >= 0; --i) {
            double const v = less_products(true, y.cell[i][c], y.rows - 1 - i, [&](int k) {
                return U.cell[i][i + 1 + k] * x.cell[i + 1 + k][c];
            });
            x.cell[i][c] = guarded && v == 0 ? 0 : v / U.cell[i][i];
        }
    return x;
}

matrix plain_orthonorm(matrix q)
{
    for (int j = 1; j <= q.cols; ++j) {
        matrix const unit = q[j] / std::sqrt(scmul(q[j], q[j]));
        q.setcol(j, unit);
        for (int l = j + 1; l <= q.cols; ++l) q.setcol(l, q[l] - scmul(unit, q[l]) * unit);
    }
    return q;
}

// Empty where Gauss meets a pivot of exactly 0.
matrix plain_solve(matrix const& A, matrix const& b, LinearMethod method)
{
    if (method == QR) {
        matrix const q = plain_orthonorm(A);
        return plain_back(mul(~q, A), mul(~q, b), true);
    }
    bool const crout = method == LU;
    Factors const f = plain_factors(A, crout);
    if (!crout && f.singular) return matrix();
    matrix y(b.rows, b.cols);
    for (int i = 0; i < b.rows; ++i)
        for (int c = 0; c < b.cols; ++c)
            y.cell[i][c] = less_products(crout, b.cell[static_cast<int>(f.P.cell[i][0]) - 1][c], i,
                                         [&](int k) { return f.packed.cell[i][k] * y.cell[k][c]; });
    return plain_back(f.packed, y, crout);
}

TEST(Solve, HasTheBitsOfThePlainForms)
{
    // The edges of every block; ties between pivots, NaN and infinities.
    for (int n : {1, 2, 3, 5, 23, 24, 31, 32, 33, 64, 65, 131}) {
        unsigned const seed = static_cast<unsigned>(n);
        matrix const plain = scattered(n, n, seed);
        matrix ties = floor(scattered(n, n, seed + 1)), rare = plain, infinite = plain;
        for (int i = 0; i < n; ++i) ties.cell[i][i] += 0.5;
        rare.cell[n / 2][n / 3] = std::nan("");
        rare.cell[n / 3][n - 1] = inf;
        infinite.cell[n - 1][n / 2] = -inf;
        matrix b = ~(1.0 / seq(1, n));
        for (int i = 0; i < n; i += 3) b.cell[i][0] = -0.0;
        for (matrix const& A : {plain, ties, rare, infinite, scattered(n, n, seed + 4, 0.01)}) {
            Factors const factors = plain_factors(A, true);
            matrix const orthonormal = plain_orthonorm(A);
            test::on_every_machine([&] {
                matrix packed(2, 2), P, q = A;
                int sign = 0;
                LU_decomp(A, packed, P, sign);
                EXPECT_TRUE(same_bits(packed, factors.packed)) << n;
                EXPECT_TRUE(same_bits(P, factors.P)) << n;
                EXPECT_EQ(sign, factors.sign) << n;
                q.orthonorm();
                EXPECT_TRUE(same_bits(q, orthonormal)) << n;
            });
            for (LinearMethod method : methods) {
                SCOPED_TRACE(testing::Message() << n << " unknowns, method " << method);
                matrix const plainly = plain_solve(A, b | eye(n), method);
                if (plainly.rows == 0) continue;
                matrix const solution = plainly.col(1), inverse = plainly.col($(2, n + 1));
                test::on_every_machine([&] {
                    EXPECT_TRUE(same_bits(lineqns(A, b, method), solution));
                    EXPECT_TRUE(same_bits(inv(A, method), inverse));
                });
            }
        }
    }
}

TEST(Solve, NamesTheUnknownsAfterTheColumns)
{
    matrix A("1 2; 1 4");
    A.colname(1) = "p";
    A.colname(2) = "q";
    A.rowname(1) = "equation";
    for (LinearMethod method : methods) {
        SCOPED_TRACE(method);
        EXPECT_EQ(test::show(lineqns(A, "4; 6", method)), "2x1 LINEQNS | p: 2 | q: 1");
        EXPECT_EQ(test::show(inv(A, method)), "2x2 p q | p: 2 -1 | q: -0.5 0.5");
    }
    // Undefined cells.
    EXPECT_EQ(lineqns(A, "4; 6", unknown).rowname(2), "q");
    EXPECT_EQ(inv(A, unknown).colname(2), "q");
}

TEST(Solve, MeetsCasesByHand)
{
    matrix v("1 2 3");
    v.colname(1) = "lost";
    char const* const diagonal = "3x3 . . . | .: 1 . . | .: . 2 . | .: . . 3";
    struct
    {
        matrix result;
        char const* shown;
    } const cases[] = {
        // Without a pivot zeros and infinities; one however small is one.
        {lineqns("1 2; 2 4", "1; 2", LU), "2x1 LINEQNS | .: 1 | .: ."},
        {lineqns("1 2; 2 4", "2; 2", LU), "2x1 LINEQNS | .: -inf | .: inf"},
        {lineqns(1e-300, 1e-300, GAUSS), "1x1 LINEQNS | .: 1"},
        {inv(matrix(), QR), "0x0"},
        {det("0 2; 3 0"), "1x1 . | .: -6"},
        {det("0 1 0; 0 0 1; 1 0 0"), "1x1 . | .: 1"},
        {det("1 2; 2 4"), "1x1 . | .: ."},
        {det(matrix()), "1x1 . | .: 1"},
        {diag(v), diagonal},
        {diag(~v), diagonal},
        {diag(diag(v)), "3x1 . | .: 1 | .: 2 | .: 3"},
        {diag(matrix(0, 4)), "0x0"},
        {diag(matrix(1, 0)), "0x0"},
    };
    for (auto const& c : cases) EXPECT_EQ(test::show(c.result), c.shown);
}

TEST(Decompositions, MayWorkInPlaceAndKeepNames)
{
    // The first of equal pivots is taken, and a column of zeros left alone.
    matrix A("1 2; -1 4"), P, R;
    int sign;
    LU_decomp(A, A, P, sign);
    EXPECT_EQ(test::show(A), "2x2 . . | .: 1 2 | .: -1 6");
    EXPECT_EQ(test::show(P), "2x1 . | .: 1 | .: 2");
    LU_decomp("0 1; 0 5", A, P, sign);
    EXPECT_EQ(test::show(A), "2x2 . . | .: . 1 | .: . 5");

    // First column 5 long; the second projects on (0.6, 0.8) with 2.2 and on (-0.8, 0.6) with 0.4.
    A = "3 1; 4 2";
    A.colname(1) = "p";
    A.rowname(1) = "r";
    QR_decomp(A, A, R);
    EXPECT_EQ(test::show(A), "2x2 p . | r: 0.6 -0.8 | .: 0.8 0.6");
    R(2, 1) = std::round(R(2, 1) * 1e14);
    EXPECT_EQ(test::show(R), "2x2 p . | p: 5 2.2 | .: . 0.4");

    // Within the rows there are.
    matrix wide("3 1 0; 4 2 5"), tall("3 0; 4 1; 9 9"), none(0, 3);
    wide.orthonorm();
    EXPECT_NEAR(wide(1, 2), -0.8, 1e-14);
    tall.orthonorm();
    EXPECT_NEAR(tall(2, 1), 0.8, 1e-15);
    EXPECT_EQ(tall(3, 1), 9.0);
    none.orthonorm();
}

TEST(SolveDeathTest, RefusesAndReports)
{
    matrix const wide(2, 3), square("1 2; 2 4"), b("1; 1");
    char const* const sizes = "niezgodne wymiary macierzy";
    char const* const singular = "macierz jest prawie osobliwa";
    char const* const not_square = "macierz powinna byc kwadratowa";
    char const* const lineqns_text = "matrix lineqns(matrix,matrix,LinearMethod)";
    char const* const gauss_text = "lineqns_Gauss(matrix,matrix)";
    char const* const lu_text = "lineqns_LU(matrix,matrix,matrix)";
    matrix x(2, 1), P;
    int sign;
    test::refusal const cases[] = {
        {[&] { lineqns(square, "1 1", LU); }, lineqns_text, sizes},
        {[&] { lineqns(square, "1; 1; 1", unknown); }, lineqns_text, sizes},
        {[&] { lineqns(wide, b, LU); }, lineqns_text, sizes},
        {[&] { lineqns(matrix(), matrix(0, 1), LU); }, lineqns_text, sizes},
        {[&] { lineqns(square, b, GAUSS); }, gauss_text, singular},
        {[&] { inv(square, GAUSS); }, gauss_text, singular},
        {[&] { x.lineqns_Gauss(square, "1"); }, gauss_text, sizes},
        {[&] { x.lineqns_LU(square, "1", b); }, lu_text, sizes},
        {[&] { x.lineqns_LU(square, "1; 3", b); }, lu_text, "indeks poza zakresem"},
        {[&] { x.lineqns_QR(square, wide, b); }, "lineqns_QR(matrix,matrix,matrix)", sizes},
        {[&] { inv(wide, LU); }, "matrix inv(matrix,LinearMethod)", "macierz musi byc kwadratowa"},
        {[&] { det(wide); }, "double det(matrix)", not_square},
        {[&] { LU_decomp(wide, x, P, sign); }, "void LU_decomp(matrix,matrix,matrix,int)",
         not_square},
        {[&] { diag(wide); }, "matrix diag(matrix)", "oczekiwany wektor lub macierz kwadratowa"},
    };
    test::expect_refusals("MATRIX", cases);
}

} // namespace
