#include <varnow/varnow.h>

#include "tests/support/bits.h"
#include "tests/support/containers.h"
#include "tests/support/refusals.h"

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

using namespace varnow;
using test::same_bits;
using test::scattered;

namespace {

double const NaN = std::numeric_limits<double>::quiet_NaN();
double const inf = std::numeric_limits<double>::infinity();

// The sweep on each wanted pivot, cell by cell from the old object to a new one; cells outside
// those `among` which it works are 0.
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

TEST(Sweep, TakesPivotsOneAfterAnotherAndUnderAConditionLeavesZerosAroundTheChosen)
{
    matrix M = crossprod(scattered(20, 6, 5));
    M.rowname(2) = "v2";
    M.colname(6) = "v6";
    struct
    {
        int first, last;
        matrix cond; // 0.999 and 2 choose nothing; the target's own cell does not matter
        int target;
        std::vector<int> pivots, among;
    } const cases[] = {
        {2, 5, matrix(), 0, {1, 2, 3, 4}, {0, 1, 2, 3, 4, 5}},
        {5, 4, matrix(), 0, {}, {}},
        {1, 6, "1; 0.999; 1; 1; 0; 0", 5, {0, 2, 3}, {0, 2, 3, 4}},
        {1, 6, "1; 0.999; 1; 1; 1; 2", 5, {0, 2, 3}, {0, 2, 3, 4}},
        {2, 3, "1; 0.999; 1; 1; 2; 0", 6, {2}, {0, 2, 3, 5}},
        // Neither a target nor a variable left out is a pivot: nothing happens, not even the zeros.
        {2, 2, "1; 0.999; 1; 1; 2; 0", 5, {}, {}},
        {5, 5, "1; 0.999; 1; 1; 2; 0", 5, {}, {}},
    };
    for (auto const& a : cases) {
        SCOPED_TRACE(&a - cases);
        matrix S = M;
        if (a.cond.rows == 0)
            S.linreg_sweep(a.first, a.last);
        else
            S.linreg_sweep_c(a.first, a.last, a.cond, a.target);
        EXPECT_TRUE(same_bits(S, plain_sweep(M, a.pivots, a.among)));
        EXPECT_EQ(S.rowname(2), "v2");
        EXPECT_EQ(S.colname(6), "v6");
    }
    // Sweeping every pivot gives minus the inverse; a pivot of 0 divides without a word.
    matrix all = M, zero = "0 2; 2 3";
    all.linreg_sweep(1, 6);
    EXPECT_LT(double(matrix(max(~max(abs(mul(all, M) + eye(6)))))), 1e-9);
    zero.linreg_sweep(1, 1);
    EXPECT_TRUE(same_bits(zero, ~c(-inf, inf) | ~c(inf, -inf)));
}

TEST(Regression, IsTheSweepOfTheBoundCrossProducts)
{
    // Sizes around those of the kernel's tiles; 130 rows are two blocks and a rest.
    for (int p : {1, 2, 5, 6, 11, 12, 23, 24, 25}) {
        SCOPED_TRACE(p);
        matrix const X = scattered(130, p, 3), y = scattered(130, 1, 4);
        matrix M = crossprod(X | y);
        M.linreg_sweep(1, p);
        matrix const expected = M.col(p + 1).row($(p));
        test::on_every_machine([&] { EXPECT_TRUE(same_bits(linreg(X, y), expected)); });
    }
}

// NIST Statistical Reference Datasets, linear regression without intercept.
TEST(Regression, MeetsCertifiedSlopesThroughTheOrigin)
{
    EXPECT_NEAR(linreg(~seq(60, 70), ~seq(130, 140))(1), 2.07438016528926, 5e-15); // NoInt1
    EXPECT_NEAR(linreg("4; 5; 6", "3; 4; 4")(1), 0.727272727272727, 5e-16);        // NoInt2
}

TEST(Regression, MeetsCasesByHand)
{
    matrix X = "1 1; 1 2; 1 3; 1 4", M = crossprod("1 0 1 3; 0 1 1 5; 1 1 0 2; 0 0 2 8");
    X.colname(2) = "slope";
    for (int i = 0; i < 4; ++i) M.rnames[i] = "r" + itot(i + 1);
    struct
    {
        matrix result;
        char const* shown;
    } const cases[] = {
        {linreg(X, "3; 5; 7; 9"), "2x1 LINREG | .: 1 | slope: 2"},
        {linreg("1 1; 2 2; 3 3", "1; 2; 4"), "2x1 LINREG | .: NaN | .: NaN"}, // dependent columns
        // (x1, x3)'(x1, x3) = (2 1; 1 6), (x1, x3)'y = (5, 24): 6/11 and 43/11. The result is as
        // long as the condition's sum and named after the first rows of M.
        {linreg_c(M, "1; 0; 1; 0", 4), "2x1 . | r1: 0.545455 | r2: 3.90909"},
        {linreg_c(crossprod("1 3 1; 0 5 1; 1 2 0; 0 8 2"), "1; 0; 1", 2),
         "2x1 . | .: 0.545455 | .: 3.90909"},
        {linreg_c(M, "1; 0.999; 0; 0", 4), "1x1 . | r1: 2.5"},          // 1.999, truncated
        {linreg_c(M, "1; 0.6; 0.6; 0", 4), "2x1 . | r1: 2.5 | .: NaN"}, // a row for nothing
        {linreg_c(M, "1; -1; 1; 0", 4), "1x1 . | r1: 0.545455"},        // no room for the second
        {linreg_c(M, "1; 0; 1; 1.9", 4), "2x1 . | r1: 0.545455 | r2: 3.90909"}, // 3 less 1
        {linreg_c(M, "-5; 1; 1; 0", 4), "0x1 ."},                               // less than none
        {linreg_c(M, ~c(NaN, 1, 0, 0), 4), "0x1 ."},
        {linreg_c(M, "1; 1; 1; 0", 4), "3x1 . | r1: -0.25 | r2: 1.75 | r3: 3.75"},
    };
    for (auto const& a : cases) EXPECT_EQ(test::show(a.result), a.shown);
}

TEST(RegressionDeathTest, RefusesInTheOrderOfTheTests)
{
    matrix const wide(2, 3), skew("1 2; 3 4"), M("1 2; 2 4"), row("1 0"), three("1; 0; 1");
    std::string const linreg_text = "matrix linreg(matrix,matrix)";
    std::string const c_text = "linreg_c(matrix,matrix,int)", sweep = "linreg_sweep(int,int)";
    std::string const sweep_c = "linreg_sweep_c(int,int,matrix,int)";
    std::string const sizes = "nieprawidlowe wymiary macierzy", outside = "indeks poza zakresem";
    std::string const square = " powinna byc kwadratowa";
    std::string const symmetric = "macierz powinna byc symetryczna";
    std::string const column = "oczekiwany kolumnowy wektor warunkowy";
    std::string const length = "dlugosc wektora warunkowego niezgodna z wymiarami macierzy";
    test::refusal const cases[] = {
        {[&] { linreg(matrix(), matrix()); }, linreg_text, sizes},
        {[&] { linreg("1; 2", "1 2; 3 4"); }, linreg_text, sizes},
        {[&] { linreg("1; 2", "1; 2; 3"); }, linreg_text, sizes},
        {[&] { linreg("1 2 3; 4 5 6", "1; 2"); }, linreg_text, sizes},
        {[&] { linreg(matrix(NaN), matrix(1.0)); }, sweep, symmetric},
        {[&] { linreg_c(wide, row, 2); }, c_text, "macierz iloczynow" + square},
        {[&] { linreg_c(skew, row, 2); }, c_text, symmetric},
        {[&] { linreg_c(M, row, 2); }, c_text, column},
        {[&] { linreg_c(M, three, 2); }, c_text, length + " iloczynow"},
        {[&] { linreg_c(M, "1; 0", 3); }, "double & operator ()(int)", outside, "2 x 1 : ( 3 )"},
        {[&] { matrix(wide).linreg_sweep(1, 1); }, sweep, "macierz" + square},
        {[&] { matrix(skew).linreg_sweep(1, 1); }, sweep, symmetric},
        {[&] { matrix(M).linreg_sweep(0, 1); }, sweep, outside},
        {[&] { matrix(wide).linreg_sweep_c(1, 1, row, 2); }, sweep_c, "macierz" + square},
        {[&] { matrix(skew).linreg_sweep_c(1, 1, row, 2); }, sweep_c, symmetric},
        {[&] { matrix(M).linreg_sweep_c(1, 1, row, 2); }, sweep_c, column},
        {[&] { matrix(M).linreg_sweep_c(1, 1, three, 2); }, sweep_c, length},
        {[&] { matrix(M).linreg_sweep_c(2, 3, "1; 1", 2); }, sweep_c, outside},
    };
    test::expect_refusals("MATRIX", cases);
}

} // namespace
