#include <varnow/numerics/solve.h>

#include <varnow/containers/matrix_products.h>

#include "tests/support/bits.h"
#include "tests/support/refusal.h"

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

// The routines in their plain form, cell by cell.

struct Factors
{
    matrix packed, P;
    int sign = 1;
};

Factors plain_lu(matrix const& A)
{
    Factors f{A, matrix(A.rows, 1)};
    int const n = A.rows;
    double** const c = f.packed.cell;
    for (int i = 0; i < n; ++i) f.P.cell[i][0] = i + 1;
    std::vector<double> column(static_cast<std::size_t>(n));
    double* const w = column.data();
    for (int j = 0; j < n; ++j) {
        for (int i = 0; i < n; ++i) w[i] = c[i][j];
        for (int i = 0; i < n; ++i) {
            double s = 0;
            for (int k = 0; k < std::min(i, j); ++k) s += c[i][k] * w[k];
            c[i][j] = w[i] -= s;
        }
        int p = j;
        for (int i = j + 1; i < n; ++i)
            if (std::fabs(w[i]) > std::fabs(w[p])) p = i;
        if (p != j) {
            std::swap(c[p], c[j]);
            std::swap(f.P.cell[p], f.P.cell[j]);
            f.sign = -f.sign;
        }
        if (c[j][j] == 0) continue;
        for (int i = j + 1; i < n; ++i) c[i][j] /= c[j][j];
    }
    return f;
}

// The backward pass; `guarded`, a right side of 0 gives 0.
matrix plain_back(matrix const& U, matrix const& y, bool guarded)
{
    int const n = U.rows;
    matrix x(n, y.cols);
    for (int c = 0; c < y.cols; ++c)
        for (int i = n - 1; i >= 0; --i) {
            double s = 0;
            for (int k = i + 1; k < n; ++k) s += U.cell[i][k] * x.cell[k][c];
            double const v = y.cell[i][c] - s;
            x.cell[i][c] = guarded && v == 0 ? 0 : v / U.cell[i][i];
        }
    return x;
}

matrix plain_solve_lu(Factors const& f, matrix const& b)
{
    int const n = f.packed.rows;
    matrix y(n, b.cols);
    for (int c = 0; c < b.cols; ++c)
        for (int i = 0; i < n; ++i) {
            double s = 0;
            for (int k = 0; k < i; ++k) s += f.packed.cell[i][k] * y.cell[k][c];
            y.cell[i][c] = b.cell[static_cast<int>(f.P.cell[i][0]) - 1][c] - s;
        }
    return plain_back(f.packed, y, true);
}

// Empty where a pivot is exactly 0.
matrix plain_gauss(matrix A, matrix b)
{
    int const n = A.rows;
    double** const a = A.cell;
    for (int k = 0; k < n; ++k) {
        int r = k;
        for (int i = k + 1; i < n; ++i)
            if (std::fabs(a[i][k]) > std::fabs(a[r][k])) r = i;
        if (a[r][k] == 0) return matrix();
        std::swap(a[k], a[r]);
        std::swap(b.cell[k], b.cell[r]);
        for (int i = k + 1; i < n; ++i) {
            double const m = a[i][k] / a[k][k];
            for (int j = k + 1; j < n; ++j) a[i][j] -= m * a[k][j];
            for (int c = 0; c < b.cols; ++c) b.cell[i][c] -= m * b.cell[k][c];
        }
    }
    return plain_back(A, b, false);
}

matrix plain_orthonorm(matrix q)
{
    int const n = q.cols;
    double** const c = q.cell;
    for (int j = 0; j < n; ++j) {
        double s = 0;
        for (int i = 0; i < n; ++i) s += c[i][j] * c[i][j];
        for (int i = 0; i < n; ++i) c[i][j] /= std::sqrt(s);
        for (int l = j + 1; l < n; ++l) {
            double d = 0;
            for (int i = 0; i < n; ++i) d += c[i][j] * c[i][l];
            for (int i = 0; i < n; ++i) c[i][l] -= d * c[i][j];
        }
    }
    return q;
}

// Solves for each column of a right side.
std::function<matrix(matrix const&)> plain_solver(matrix const& A, LinearMethod method)
{
    if (method == GAUSS) return [A](matrix const& b) { return plain_gauss(A, b); };
    if (method == LU) return [f = plain_lu(A)](matrix const& b) { return plain_solve_lu(f, b); };
    int const n = A.rows;
    matrix const q = plain_orthonorm(A);
    matrix r(n, n);
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) {
            double& s = r.cell[i][j] = 0;
            for (int k = 0; k < n; ++k) s += q.cell[k][i] * A.cell[k][j];
        }
    return [=](matrix const& b) {
        matrix y(n, b.cols);
        for (int c = 0; c < b.cols; ++c)
            for (int i = 0; i < n; ++i) {
                double& s = y.cell[i][c] = 0;
                for (int k = 0; k < n; ++k) s += q.cell[k][i] * b.cell[k][c];
            }
        return plain_back(r, y, true);
    };
}

// Systems that try the search for pivots, NaN and infinities, and the edges of every block.
std::vector<matrix> systems()
{
    std::vector<matrix> all;
    for (int n : {1, 2, 3, 5, 8, 23, 24, 31, 32, 33, 47, 64, 65, 100, 131}) {
        unsigned const seed = static_cast<unsigned>(n);
        all.push_back(scattered(n, n, seed));
        matrix ties = scattered(n, n, seed + 1);
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j) ties.cell[i][j] = std::floor(ties.cell[i][j]);
        for (int i = 0; i < n; ++i) ties.cell[i][i] += 0.5;
        all.push_back(ties);
        matrix rare = scattered(n, n, seed + 2);
        rare.cell[n / 2][n / 3] = std::nan("");
        rare.cell[n / 3][n - 1] = inf;
        all.push_back(rare);
        matrix infinite = scattered(n, n, seed + 3);
        infinite.cell[n - 1][n / 2] = -inf;
        all.push_back(infinite);
        all.push_back(scattered(n, n, seed + 4, 0.01));
    }
    return all;
}

} // namespace

TEST(Lineqns, SolvesAndNamesTheUnknownsAfterTheColumns)
{
    // 2x + y = 3, x + 3y = 5
    matrix A("0 2 1; 1 0 0; 0 1 3");
    for (int j = 1; j <= 3; ++j) {
        A.colname(j) = Text("u") + itot(j);
        A.rowname(j) = "equation";
    }
    matrix const b("3; 7; 5");
    double const expected[] = {7, 0.8, 1.4};
    for (LinearMethod method : methods) {
        SCOPED_TRACE(method);
        matrix const x = lineqns(A, b, method);
        ASSERT_EQ(x.rows, 3);
        ASSERT_EQ(x.cols, 1);
        EXPECT_EQ(x.colname(1), "LINEQNS");
        for (int i = 1; i <= 3; ++i) {
            EXPECT_NEAR(x(i), expected[i - 1], 1e-14);
            EXPECT_EQ(x.rowname(i), Text("u") + itot(i));
        }
        EXPECT_EQ(lineqns(matrix(2.0), matrix(4.0), method)(1, 1), 2.0);
    }
    matrix const x = lineqns(A, b, unknown);
    EXPECT_EQ(x.rows, 3);
    EXPECT_EQ(x.colname(1), "LINEQNS");
    EXPECT_EQ(x.rowname(2), "u2");
}

TEST(Lineqns, WithoutAPivotGivesZerosAndInfinitiesFromLU)
{
    matrix const A("1 2; 2 4");
    matrix const none = lineqns(A, matrix("1; 2"), LU);
    EXPECT_EQ(none(2), 0.0);
    EXPECT_EQ(none(1), 1.0);
    matrix const some = lineqns(A, matrix("2; 2"), LU);
    EXPECT_EQ(some(2), inf);
    EXPECT_EQ(some(1), -inf);
}

// A pivot however small is one.
TEST(Lineqns, KnowsNoTolerance)
{
    EXPECT_EQ(lineqns(matrix("1e-300"), matrix("1e-300"), GAUSS)(1), 1.0);
}

TEST(Lineqns, HasTheBitsOfThePlainForms)
{
    for (matrix const& A : systems())
        for (LinearMethod method : methods) {
            SCOPED_TRACE(testing::Message() << A.rows << " unknowns, method " << method);
            matrix b(A.rows, 1);
            for (int i = 0; i < A.rows; ++i) b.cell[i][0] = i % 3 ? 1.0 / (i + 1) : -0.0;
            matrix const expected = plain_solver(A, method)(b);
            if (expected.rows == 0) continue;
            test::on_every_machine(
                [&] { EXPECT_TRUE(same_bits(lineqns(A, b, method), expected)); });
        }
}

TEST(Inv, IsNamedByTheColumnsOnBothSides)
{
    matrix A("4 7; 2 6"); // 1/10 (6 -7; -2 4)
    A.colname(1) = "p";
    A.colname(2) = "q";
    A.rowname(1) = "equation";
    matrix const expected("0.6 -0.7; -0.2 0.4");
    for (LinearMethod method : {GAUSS, LU, QR, unknown}) {
        SCOPED_TRACE(method);
        matrix const r = inv(A, method);
        ASSERT_EQ(r.rows, 2);
        ASSERT_EQ(r.cols, 2);
        EXPECT_EQ(r.rowname(1), "p");
        EXPECT_EQ(r.colname(2), "q");
        for (int i = 1; i <= 2 && method != unknown; ++i)
            for (int j = 1; j <= 2; ++j) EXPECT_NEAR(r(i, j), expected(i, j), 1e-15);
    }
    EXPECT_EQ(inv(matrix(), LU).rows, 0);
}

TEST(Inv, HasInEveryColumnTheBitsOfItsOwnPlainSolution)
{
    for (matrix const& A : systems())
        for (LinearMethod method : methods) {
            int const n = A.rows;
            SCOPED_TRACE(testing::Message() << n << " columns, method " << method);
            matrix unit(n, n);
            for (int i = 0; i < n; ++i)
                for (int c = 0; c < n; ++c) unit.cell[i][c] = i == c;
            matrix const expected = plain_solver(A, method)(unit);
            if (expected.rows == 0) continue;
            test::on_every_machine([&] { EXPECT_TRUE(same_bits(inv(A, method), expected)); });
        }
}

TEST(Det, MultipliesThePivotsByTheSign)
{
    EXPECT_EQ(det("0 2; 3 0"), -6.0);
    EXPECT_EQ(det("0 1 0; 0 0 1; 1 0 0"), 1.0);
    EXPECT_EQ(det("1 2; 2 4"), 0.0);
    EXPECT_EQ(det(matrix()), 1.0);
}

TEST(Diag, TurnsAVectorIntoADiagonalAndBack)
{
    matrix v("1 2 3");
    v.colname(1) = "lost";
    EXPECT_TRUE(same_bits(diag(v), matrix("1 0 0; 0 2 0; 0 0 3")));
    EXPECT_EQ(diag(v).colname(1), "");
    EXPECT_TRUE(same_bits(diag(diag(v)), matrix("1; 2; 3")));
    EXPECT_TRUE(same_bits(diag(matrix(5.0)), matrix(5.0)));
    for (matrix const& none : {matrix(), matrix(0, 1), matrix(1, 0), matrix(0, 4)})
        EXPECT_EQ(diag(none).rows, 0);
}

TEST(LUDecomp, GivesTheBitsAndExchangesOfThePlainForm)
{
    for (matrix const& A : systems()) {
        SCOPED_TRACE(A.rows);
        Factors const expected = plain_lu(A);
        test::on_every_machine([&] {
            matrix packed(2, 2), P;
            int sign = 0;
            LU_decomp(A, packed, P, sign);
            EXPECT_TRUE(same_bits(packed, expected.packed));
            EXPECT_TRUE(same_bits(P, expected.P));
            EXPECT_EQ(sign, expected.sign);
        });
    }
}

TEST(LUDecomp, TakesTheFirstOfEqualPivotsAndLeavesAColumnOfZerosAlone)
{
    matrix A("1 2; -1 4"), P;
    int sign;
    LU_decomp(A, A, P, sign); // the result may be the argument
    EXPECT_TRUE(same_bits(A, matrix("1 2; -1 6")));
    EXPECT_TRUE(same_bits(P, matrix("1; 2")));
    EXPECT_EQ(sign, 1);
    LU_decomp("0 1; 0 5", A, P, sign);
    EXPECT_TRUE(same_bits(A, matrix("0 1; 0 5")));
}

TEST(QRDecomp, GivesTheProjectionsOfTheColumnsOnQ)
{
    matrix A("3 1; 4 2"), R;
    A.colname(1) = "p";
    A.rowname(1) = "r";
    matrix const kept = A;
    QR_decomp(A, A, R);
    // First column 5 long; the second projects on (0.6, 0.8) with 2.2 and on (-0.8, 0.6) with 0.4.
    double const q[2][2] = {{0.6, -0.8}, {0.8, 0.6}}, r[2][2] = {{5, 2.2}, {0, 0.4}};
    for (int i = 0; i < 2; ++i)
        for (int j = 0; j < 2; ++j) {
            EXPECT_NEAR(A.cell[i][j], q[i][j], 1e-14);
            EXPECT_NEAR(R.cell[i][j], r[i][j], 1e-14);
        }
    EXPECT_EQ(A.rowname(1), "r");
    EXPECT_EQ(R.rowname(1), "p");
    EXPECT_EQ(R.colname(1), "p");
    matrix none_of_it("1 0; 1 0");
    none_of_it.orthonorm();
    EXPECT_TRUE(std::isnan(none_of_it(1, 2)));
}

TEST(Orthonorm, HasTheBitsOfThePlainFormAndStaysWithinItsRows)
{
    for (matrix const& A : systems()) {
        SCOPED_TRACE(A.rows);
        matrix const expected = plain_orthonorm(A);
        test::on_every_machine([&] {
            matrix q = A;
            q.orthonorm();
            EXPECT_TRUE(same_bits(q, expected));
        });
    }
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
    char const* const lineqns_text = "matrix lineqns(matrix,matrix,LinearMethod)";
    char const* const gauss_text = "lineqns_Gauss(matrix,matrix)";
    char const* const lu_text = "lineqns_LU(matrix,matrix,matrix)";
    matrix x(2, 1), P;
    int sign;
    struct
    {
        std::function<void()> call;
        char const* routine;
        char const* message;
    } const cases[] = {
        {[&] { lineqns(square, matrix("1 1"), LU); }, lineqns_text, sizes},
        {[&] { lineqns(square, matrix("1; 1; 1"), unknown); }, lineqns_text, sizes},
        {[&] { lineqns(wide, b, LU); }, lineqns_text, sizes},
        {[&] { lineqns(matrix(), matrix(0, 1), LU); }, lineqns_text, sizes},
        {[&] { lineqns(square, b, GAUSS); }, gauss_text, "macierz jest prawie osobliwa"},
        {[&] { lineqns(matrix(0.0), matrix(1.0), GAUSS); }, gauss_text,
         "macierz jest prawie osobliwa"},
        {[&] { inv(square, GAUSS); }, gauss_text, "macierz jest prawie osobliwa"},
        {[&] { x.lineqns_Gauss(square, matrix("1")); }, gauss_text, sizes},
        {[&] { x.lineqns_LU(square, matrix("1"), b); }, lu_text, sizes},
        {[&] { x.lineqns_LU(square, matrix("1; 3"), b); }, lu_text, "indeks poza zakresem"},
        {[&] { x.lineqns_QR(square, wide, b); }, "lineqns_QR(matrix,matrix,matrix)", sizes},
        {[&] { inv(wide, LU); }, "matrix inv(matrix,LinearMethod)", "macierz musi byc kwadratowa"},
        {[&] { det(wide); }, "double det(matrix)", "macierz powinna byc kwadratowa"},
        {[&] { LU_decomp(wide, x, P, sign); }, "void LU_decomp(matrix,matrix,matrix,int)",
         "macierz powinna byc kwadratowa"},
        {[&] { diag(wide); }, "matrix diag(matrix)", "oczekiwany wektor lub macierz kwadratowa"},
    };
    for (auto const& c : cases) EXPECT_REFUSAL(c.call(), "MATRIX", c.routine, c.message);
}
