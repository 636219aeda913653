#include <varnow/varnow.h>

#include "tests/support/bits.h"
#include "tests/support/containers.h"
#include "tests/support/refusal.h"

#include <cmath>
#include <limits>
#include <vector>

using namespace varnow;
using test::same_bits;
using test::scattered;

namespace {

double const NaN = std::numeric_limits<double>::quiet_NaN();

matrix column(std::vector<double> const& x)
{
    matrix m(static_cast<int>(x.size()), 1);
    for (int i = 0; i < m.rows; ++i) m.cell[i][0] = x[static_cast<std::size_t>(i)];
    return m;
}

// Sums of products of columns, the last of which is close to a combination of the others.
matrix products(int n)
{
    matrix const X = scattered(3 * n, n, 5);
    for (int i = 0; i < X.rows; ++i)
        for (int j = 0; j + 1 < n; ++j) X.cell[i][n - 1] += (j + 1) * X.cell[i][j];
    matrix M = crossprod(X);
    for (int i = 0; i < n; ++i) M.rnames[i] = M.cnames[i] = "v" + itot(i + 1);
    return M;
}

// The sweep on each wanted pivot, cell by cell from the old object to a new one; cells outside the
// wanted ones and `target` are 0.
matrix plain_sweep(matrix A, std::vector<int> const& pivots, std::vector<int> const& among)
{
    for (int k : pivots) {
        matrix B = varnow::zeros(A.rows, A.rows);
        double** const a = A.cell;
        for (int i : among)
            for (int j : among)
                B.cell[i][j] = i != k && j != k ? a[i][j] - a[i][k] * a[k][j] / a[k][k]
                               : i == j         ? -1 / a[k][k]
                                                : a[i][j] / a[k][k];
        A = B;
    }
    return A;
}

TEST(Sweep, TakesPivotsOneAfterAnotherAndKeepsNames)
{
    matrix const M = products(9);
    matrix S = M;
    S.linreg_sweep(2, 7);
    EXPECT_TRUE(same_bits(S, plain_sweep(M, {1, 2, 3, 4, 5, 6}, {0, 1, 2, 3, 4, 5, 6, 7, 8})));
    EXPECT_EQ(S.rowname(2), "v2");
    EXPECT_EQ(S.colname(9), "v9");

    // Sweeping every pivot gives minus the inverse.
    S = M;
    S.linreg_sweep(1, 9);
    matrix const unit = mul(S, M);
    for (int i = 0; i < 9; ++i)
        for (int j = 0; j < 9; ++j) EXPECT_NEAR(unit.cell[i][j], i == j ? -1 : 0, 1e-9);

    matrix untouched = M;
    untouched.linreg_sweep(5, 4);
    EXPECT_TRUE(same_bits(untouched, M));
}

TEST(Sweep, DividesByAPivotOfZeroWithoutAWord)
{
    matrix S = "0 2; 2 3";
    S.linreg_sweep(1, 1);
    double const inf = std::numeric_limits<double>::infinity();
    EXPECT_TRUE(same_bits(S, matrix(column({-inf, inf})) | column({inf, -inf})));
}

TEST(Sweep, UnderAConditionLeavesZerosAroundTheChosen)
{
    matrix const M = products(6);
    // 0.999 and 2 choose nothing; the target's own cell does not matter.
    matrix const cond = column({1, 0.999, 1, 1, 2, 0});
    for (double own : {0.0, 1.0}) {
        matrix S = M, c = cond;
        c(5) = own;
        S.linreg_sweep_c(1, 6, c, 5);
        EXPECT_TRUE(same_bits(S, plain_sweep(M, {0, 2, 3}, {0, 2, 3, 4})));
        EXPECT_EQ(S.rowname(2), "v2");
    }
    matrix part = M;
    part.linreg_sweep_c(2, 3, cond, 6);
    EXPECT_TRUE(same_bits(part, plain_sweep(M, {2}, {0, 2, 3, 5})));

    // Neither a target nor a variable left out is a pivot: nothing happens, not even the zeros.
    for (int first : {2, 5}) {
        matrix S = M;
        S.linreg_sweep_c(first, first, cond, 5);
        EXPECT_TRUE(same_bits(S, M));
    }
}

TEST(Regression, IsTheSweepOfTheBoundCrossProducts)
{
    // Sizes around those of the kernel's tiles; 130 rows are two blocks and a rest.
    for (int p : {1, 2, 5, 6, 11, 12, 23, 24, 25}) {
        SCOPED_TRACE(p);
        matrix const X = scattered(130, p, 3), y = scattered(130, 1, 4);
        matrix M = crossprod(X | y);
        M.linreg_sweep(1, p);
        matrix expected(p, 1);
        for (int i = 0; i < p; ++i) expected.cell[i][0] = M.cell[i][p];
        test::on_every_machine([&] { EXPECT_TRUE(same_bits(linreg(X, y), expected)); });
    }
}

TEST(Regression, NamesTheCoefficientsAfterTheColumns)
{
    matrix X = "1 1; 1 2; 1 3; 1 4";
    X.colname(1) = "level";
    X.colname(2) = "slope";
    matrix const y = "3; 5; 7; 9";
    EXPECT_EQ(test::show(linreg(X, y)), "2x1 LINREG | level: 1 | slope: 2");
    EXPECT_EQ(linreg(varnow::ones(3, 1), "1; 2; 3")(1), 2);
}

TEST(Regression, LetsDependentColumnsThrough)
{
    matrix const b = linreg("1 1; 2 2; 3 3", "1; 2; 4");
    EXPECT_FALSE(std::isfinite(b(1)));
    EXPECT_FALSE(std::isfinite(b(2)));
}

// NIST Statistical Reference Datasets, linear regression without intercept.
TEST(Regression, MeetsCertifiedSlopesThroughTheOrigin)
{
    matrix x(11, 1), y(11, 1);
    for (int i = 0; i < 11; ++i) {
        x.cell[i][0] = 60 + i;
        y.cell[i][0] = 130 + i;
    }
    EXPECT_NEAR(linreg(x, y)(1), 2.07438016528926, 5e-15);                  // NoInt1
    EXPECT_NEAR(linreg("4; 5; 6", "3; 4; 4")(1), 0.727272727272727, 5e-16); // NoInt2
}

TEST(ConditionalRegression, IsTheRegressionOnTheChosenVariables)
{
    matrix const X = scattered(40, 5, 8), y = scattered(40, 1, 9);
    matrix const M = crossprod(X.col(1) | y | X.col(c(2, 3, 4, 5)));
    for (int chosen = 0; chosen < 32; ++chosen) {
        SCOPED_TRACE(chosen);
        matrix cond = varnow::zeros(6, 1);
        cond(2) = chosen % 2; // the target's own cell does not count
        std::vector<int> taken;
        for (int v = 1; v <= 5; ++v)
            if (chosen >> (v - 1) & 1) {
                taken.push_back(v);
                cond(v == 1 ? 1 : v + 1) = 1;
            }
        matrix const b = linreg_c(M, cond, 2);
        ASSERT_EQ(b.rows, static_cast<int>(taken.size()));
        if (taken.empty()) continue;
        matrix sub(40, 0);
        for (int v : taken) sub |= X.col(v);
        matrix const expected = linreg(sub, y);
        for (int k = 1; k <= b.rows; ++k) EXPECT_NEAR(b(k), expected(k), 1e-12);
    }
}

TEST(ConditionalRegression, NamesItsRowsAfterTheFirstOfM)
{
    matrix M = crossprod("1 0 1 3; 0 1 1 5; 1 1 0 2; 0 0 2 8");
    for (int i = 0; i < 4; ++i) M.rnames[i] = "r" + itot(i + 1);
    matrix const b = linreg_c(M, "1; 0; 1; 0", 4);
    EXPECT_EQ(b.rowname(1), "r1");
    EXPECT_EQ(b.rowname(2), "r2");
    EXPECT_EQ(b.colname(1), "");
    // (x1, x3)'(x1, x3) = (2 1; 1 6), (x1, x3)'y = (5, 24): 6/11 and 43/11.
    EXPECT_NEAR(b(1), 6.0 / 11, 1e-15);
    EXPECT_NEAR(b(2), 43.0 / 11, 1e-15);
}

TEST(ConditionalRegression, SizesItsResultByTheSumOfTheCondition)
{
    matrix const M = crossprod("1 0 1 3; 0 1 1 5; 1 1 0 2; 0 0 2 8");
    struct
    {
        char const* cond;
        int rows, filled;
    } const cases[] = {
        {"1; 0.999; 0; 0", 1, 1}, // 1.999, truncated
        {"1; 0.6; 0.6; 0", 2, 1}, // a row for nothing
        {"1; -1; 1; 0", 1, 1},    // no room for the second coefficient
        {"1; 1; 0; 1.9", 2, 2},   // 3 less 1
        {"-5; 1; 1; 0", 0, 0},    // less than none
        {"1; 1; 1; 1", 3, 3},
    };
    for (auto const& a : cases) {
        SCOPED_TRACE(a.cond);
        matrix const b = linreg_c(M, a.cond, 4);
        ASSERT_EQ(b.rows, a.rows);
        for (int k = 0; k < b.rows; ++k) EXPECT_EQ(std::isnan(b.cell[k][0]), k >= a.filled);
    }
    EXPECT_EQ(linreg_c(M, column({NaN, 1, 0, 0}), 4).rows, 0);
}

TEST(RegressionDeathTest, RefusesWhatDoesNotFit)
{
    char const* const routine = "matrix linreg(matrix,matrix)";
    char const* const sizes = "nieprawidlowe wymiary macierzy";
    EXPECT_REFUSAL(linreg(matrix(), matrix()), "MATRIX", routine, sizes);
    EXPECT_REFUSAL(linreg("1; 2", "1 2; 3 4"), "MATRIX", routine, sizes);
    EXPECT_REFUSAL(linreg("1; 2", "1; 2; 3"), "MATRIX", routine, sizes);
    EXPECT_REFUSAL(linreg("1 2 3; 4 5 6", "1; 2"), "MATRIX", routine, sizes);
    EXPECT_REFUSAL(linreg(column({1, NaN, 3}), "1; 2; 3"), "MATRIX", "linreg_sweep(int,int)",
                   "macierz powinna byc symetryczna");
}

TEST(RegressionDeathTest, RefusesConditionsInTheOrderOfTheTests)
{
    matrix const wide(2, 3), skew("1 2; 3 4"), M("1 2; 2 4"), row("1 0"), three("1; 0; 1");
    struct
    {
        matrix const& M;
        matrix const& cond;
        char const* why;
    } const cases[] = {
        {wide, row, " powinna byc kwadratowa"},
        {skew, row, "macierz powinna byc symetryczna"},
        {M, row, "oczekiwany kolumnowy wektor warunkowy"},
        {M, three, "dlugosc wektora warunkowego niezgodna z wymiarami macierzy"},
    };
    for (auto const& a : cases) {
        SCOPED_TRACE(a.why);
        bool const square = a.why[0] != ' ', sizes = a.why[0] == 'd';
        std::string const why = a.why;
        EXPECT_REFUSAL(linreg_c(a.M, a.cond, 2), "MATRIX", "linreg_c(matrix,matrix,int)",
                       (square ? "" : "macierz iloczynow") + why + (sizes ? " iloczynow" : ""));
        matrix S = a.M;
        EXPECT_REFUSAL(S.linreg_sweep_c(1, 1, a.cond, 2), "MATRIX",
                       "linreg_sweep_c(int,int,matrix,int)", (square ? "" : "macierz") + why);
    }
    EXPECT_REFUSAL(matrix(wide).linreg_sweep(1, 1), "MATRIX", "linreg_sweep(int,int)",
                   "macierz powinna byc kwadratowa");
    EXPECT_REFUSAL(matrix(skew).linreg_sweep(1, 1), "MATRIX", "linreg_sweep(int,int)",
                   "macierz powinna byc symetryczna");
    EXPECT_REFUSAL(matrix(M).linreg_sweep(0, 1), "MATRIX", "linreg_sweep(int,int)",
                   "indeks poza zakresem");
    EXPECT_REFUSAL(matrix(M).linreg_sweep_c(2, 3, "1; 1", 2), "MATRIX",
                   "linreg_sweep_c(int,int,matrix,int)", "indeks poza zakresem");
    EXPECT_REFUSAL_DETAIL(linreg_c(M, "1; 0", 3), "MATRIX", "double & operator ()(int)",
                          "indeks poza zakresem", "2 x 1 : ( 3 )");
}

} // namespace
