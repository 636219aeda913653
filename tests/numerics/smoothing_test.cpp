#include <varnow/varnow.h>

#include "tests/support/bits.h"
#include "tests/support/refusals.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

using namespace varnow;
using test::same_bits;
using test::scattered;

namespace {

TEST(GramWeights, AreTheLeastSquaresFractions)
{
    // Rows of (P'P)^-1 P', P the powers of -m, ..., m. Those of t = 0 are the tables of Savitzky
    // and Golay (1964).
    struct
    {
        int degree, m, t, denominator;
        matrix numerators;
    } const rows[] = {
        {-1, 2, 0, 1, "0 0 0 0 0"},
        {0, 1, -1, 3, "1 1 1"},
        {1, 2, -1, 10, "4 3 2 1 0"},
        {2, 2, 0, 35, "-3 12 17 12 -3"},
        {2, 2, -2, 35, "31 9 -3 -5 3"},
        {3, 3, -3, 42, "39 8 -4 -4 1 4 -2"},
        {4, 3, 0, 231, "5 -30 75 131 75 -30 5"},
        {4, 3, -1, 462, "-35 155 212 150 25 -65 20"},
        {4, 5, -5, 143, "131 30 -10 -15 -5 6 10 5 -5 -10 6"},
        {5, 4, 0, 429, "15 -55 30 135 179 135 30 -55 15"},
        {5, 4, -1, 1716, "32 -213 582 905 540 -27 -202 123 -24"},
    };
    for (auto const& row : rows)
        for (int i = -row.m; i <= row.m; ++i)
            EXPECT_NEAR(fun_w(row.degree, row.m, row.t, i),
                        row.numerators(i + row.m + 1) / row.denominator, 2e-14)
                << row.degree << ", " << row.m << ", " << row.t << ", " << i;
    // Beyond the degrees that 3 points allow the polynomials are infinite off them.
    EXPECT_EQ(fun_w(3, 1, 2, 2), std::numeric_limits<double>::infinity());
}

TEST(GramWeights, LongWindowsReproducePolynomials)
{
    // Powers of a smoothed value are those of t, whatever the window's length.
    for (int m : {50, 20000})
        for (int power = 0; power <= 5; ++power) {
            double s = 0;
            int const t = m / 2;
            for (int i = -m; i <= m; ++i) s += fun_w(5, m, t, i) * std::pow(double(i) / m, power);
            EXPECT_NEAR(s, std::pow(double(t) / m, power), 1e-11) << m << ", " << power;
        }
}

TEST(GramPolynomials, AreOneAtTheEndAndHaveTheirFactors)
{
    for (int k = 0; k <= 5; ++k) EXPECT_NEAR(fun_p(k, 6, 6), 1, 1e-14);
    EXPECT_EQ(fun_delta(6, 6, 3), 1);
    EXPECT_EQ(fun_delta(3, 2, 3), 0);
    EXPECT_EQ(fun_delta(1, 10, 3), 0);
    EXPECT_EQ(factor(-3), 1);
    EXPECT_EQ(factor(20), 2432902008176640000.0);
}

// The filter by one row of weights for every cell of the result; those of row t are those of row
// -t from their end.
matrix plain_smooth(matrix const& x, int degree, int points)
{
    int const m = (points - 1) / 2, n = x.rows;
    matrix out(n, 1);
    for (int r = 0; r < n; ++r) {
        int const middle = std::min(std::max(r, m), n - 1 - m), t = r - middle;
        double& s = out.cell[r][0] = 0;
        for (int i = -m; i <= m; ++i)
            s += (t > 0 ? fun_w(degree, m, -t, -i) : fun_w(degree, m, t, i)) * x(middle + i + 1);
    }
    return out;
}

TEST(Smooth, IsTheMatrixOfWeightsOnEveryWindow)
{
    struct
    {
        int n, degree, points;
    } const cases[] = {{1, 0, 1},   {7, 0, 7},     {7, -1, 3},    {9, 1, 5},  {40, 3, 21},
                       {21, 3, 21}, {3000, 2, 11}, {300, 5, 299}, {64, 4, 63}};
    for (auto const& a : cases) {
        SCOPED_TRACE(testing::Message() << a.n << ", " << a.degree << ", " << a.points);
        matrix const x = scattered(a.n, 1, 6), expected = plain_smooth(x, a.degree, a.points);
        test::on_every_machine(
            [&] { EXPECT_TRUE(same_bits(smooth(x, a.degree, a.points), expected)); });
    }
}

TEST(Smooth, KeepsPolynomialsWithoutNamesAndSpreadsNaN)
{
    // Ends of more than a block of cells.
    matrix x = pow(~linspace(-1, 1.5, 2501), 3.0);
    x.rowname(3) = "name";
    matrix const kept = smooth(x, 3, 2501) - x;
    EXPECT_LT(double(matrix(max(abs(kept)))), 1e-11);
    EXPECT_EQ(smooth(x, 3, 9).rowname(3), "");

    x(21) = std::nan("");
    matrix const s = smooth(x, 2, 5);
    for (int i = 1; i <= 30; ++i) EXPECT_EQ(std::isnan(s(i)), i >= 19 && i <= 23) << i;
}

TEST(SmoothDeathTest, RefusesInTheOrderOfTheTests)
{
    char const *const routine = "matrix smooth(matrix,int,int)", *const eps =
                                                                     "double fun_eps(int,int)";
    char const* const column = "oczekiwany wektor kolumnowy";
    char const* const odd = "oczekiwana nieparzysta liczba punktow do usredniania";
    char const* const longer = "liczba punktow do usredniania przekracza dlugosc danych";
    char const* const inner = "zle wywolanie funkcji wewnetrznej";
    matrix const three(3, 1);
    test::refusal const cases[] = {
        {[&] { smooth(matrix(3, 2), 6, 4); }, routine, column},
        {[&] { smooth(matrix(3, 0), 0, 3); }, routine, column},
        {[&] { smooth(three, 6, 4); }, routine, odd},
        {[&] { smooth(three, 0, -1); }, routine, odd},
        {[&] { smooth(three, 6, 5); }, routine, longer},
        {[&] { smooth(matrix(), 0, 1); }, routine, longer},
        {[&] { smooth(three, 6, 3); }, routine, "stopien wielomianu przekracza 5"},
        {[&] { fun_eps(6, 3); }, eps, inner},
        {[&] { fun_eps(-1, 3); }, eps, inner},
        {[&] { fun_delta(6, 5, 3); }, "double fun_delta(int,int,int)", inner},
    };
    test::expect_refusals("MATRIX", cases);
}

} // namespace
