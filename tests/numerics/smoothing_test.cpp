#include <varnow/numerics/smoothing.h>

#include <varnow/containers/matrix_products.h>
#include <varnow/containers/matrix_special.h>
#include <varnow/containers/slicing.h>

#include "tests/support/bits.h"
#include "tests/support/refusal.h"

#include <cmath>
#include <limits>
#include <vector>

using namespace varnow;
using test::same_bits;
using test::scattered;

namespace {

// Rows of (P'P)^-1 P' in exact fractions, P the powers of -m, ..., m. Those of t = 0 are the tables
// of Savitzky and Golay (1964).
struct Row
{
    int degree, m, t, denominator;
    std::vector<int> numerators;
};
Row const rows[] = {
    {0, 1, 0, 3, {1, 1, 1}},
    {0, 1, -1, 3, {1, 1, 1}},
    {1, 2, -2, 5, {3, 2, 1, 0, -1}},
    {1, 2, -1, 10, {4, 3, 2, 1, 0}},
    {2, 2, 0, 35, {-3, 12, 17, 12, -3}},
    {2, 2, -2, 35, {31, 9, -3, -5, 3}},
    {2, 2, -1, 35, {9, 13, 12, 6, -5}},
    {3, 3, 0, 21, {-2, 3, 6, 7, 6, 3, -2}},
    {3, 3, -3, 42, {39, 8, -4, -4, 1, 4, -2}},
    {4, 3, 0, 231, {5, -30, 75, 131, 75, -30, 5}},
    {4, 3, -1, 462, {-35, 155, 212, 150, 25, -65, 20}},
    {5, 4, 0, 429, {15, -55, 30, 135, 179, 135, 30, -55, 15}},
    {5, 4, -4, 429, {425, 18, -27, 8, 15, -6, -13, 12, -3}},
    {5, 4, -1, 1716, {32, -213, 582, 905, 540, -27, -202, 123, -24}},
    {4, 5, 0, 429, {18, -45, -10, 60, 120, 143, 120, 60, -10, -45, 18}},
    {4, 5, -5, 143, {131, 30, -10, -15, -5, 6, 10, 5, -5, -10, 6}},
};

// The filter as one matrix of weights, every cell of the result a product of its own.
matrix plain_smooth(matrix const& x, int degree, int points)
{
    int const m = (points - 1) / 2, n = x.rows;
    matrix W(points, points), out(n, 1);
    for (int t = -m; t <= 0; ++t)
        for (int i = -m; i <= m; ++i) W(m + 1 + t, m + 1 + i) = fun_w(degree, m, t, i);
    for (int t = 1; t <= m; ++t)
        for (int i = -m; i <= m; ++i) W(m + 1 + t, m + 1 + i) = W(m + 1 - t, m + 1 - i);
    for (int r = 1; r <= n; ++r) {
        int const from = r <= m ? 1 : r <= n - m ? r - m : n - points + 1;
        double s = 0;
        for (int k = 0; k < points; ++k) s += W(r - from + 1, k + 1) * x(from + k);
        out(r) = s;
    }
    return out;
}

TEST(GramWeights, AreTheLeastSquaresFractions)
{
    for (Row const& row : rows) {
        SCOPED_TRACE(testing::Message() << row.degree << ", " << row.m << ", " << row.t);
        for (int i = -row.m; i <= row.m; ++i) {
            double const exact = row.numerators[static_cast<std::size_t>(i + row.m)];
            EXPECT_NEAR(fun_w(row.degree, row.m, row.t, i), exact / row.denominator, 2e-14) << i;
        }
    }
    EXPECT_EQ(fun_w(-1, 2, 0, 0), 0);
}

TEST(GramWeights, AgreeWithFactorialsAndStayFiniteBeyondThem)
{
    auto plain = [](int degree, int m, int t, int i) {
        double s = 0;
        for (int k = 0; k <= degree; ++k)
            s += (2 * k + 1) * factor(2 * m) * factor(2 * m) /
                 (factor(2 * m + k + 1) * factor(2 * m - k)) * fun_p(k, t, m) * fun_p(k, i, m);
        return s;
    };
    for (int m : {3, 10, 30})
        for (int degree : {0, 3, 5})
            for (int i : {-3, 0, 2}) {
                double const w = plain(degree, m, -m + 1, i);
                EXPECT_NEAR(fun_w(degree, m, -m + 1, i), w, 1e-12 * std::fabs(w));
            }
    // Beyond the degrees that 3 points allow the polynomials are infinite off them.
    EXPECT_TRUE(std::isinf(plain(3, 1, 2, 2)));
    EXPECT_TRUE(same_bits(fun_w(3, 1, 2, 2), plain(3, 1, 2, 2)));
}

TEST(GramWeights, LongWindowsReproducePolynomials)
{
    // Powers of a smoothed value are those of t, whatever the window's length.
    for (int m : {50, 500, 20000})
        for (int power = 0; power <= 5; ++power) {
            double s = 0;
            int const t = m / 2;
            for (int i = -m; i <= m; ++i) s += fun_w(5, m, t, i) * std::pow(double(i) / m, power);
            EXPECT_NEAR(s, std::pow(double(t) / m, power), 1e-11) << m << ", " << power;
        }
}

TEST(GramPolynomials, AreOrthogonalAndOneAtTheEnd)
{
    int const m = 6;
    for (int k = 0; k <= 5; ++k) {
        EXPECT_NEAR(fun_p(k, m, m), 1, 1e-14);
        EXPECT_NEAR(fun_p(k, -m, m), k % 2 ? -1 : 1, 1e-14);
        for (int l = 0; l < k; ++l) {
            double s = 0;
            for (int i = -m; i <= m; ++i) s += fun_p(k, i, m) * fun_p(l, i, m);
            EXPECT_NEAR(s, 0, 1e-13) << k << ", " << l;
        }
    }
    EXPECT_EQ(fun_delta(6, 6, 3), 1);
    EXPECT_EQ(fun_delta(3, 2, 3), 0);
    EXPECT_EQ(fun_delta(1, 10, 3), 0);
    EXPECT_EQ(factor(-3), 1);
    EXPECT_EQ(factor(20), 2432902008176640000.0);
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
    // Ends of more than a block of cells, against the polynomial itself.
    matrix x(2501, 1);
    for (int i = 0; i < x.rows; ++i) x.cell[i][0] = std::pow(i / 1000.0 - 1, 3);
    matrix const s = smooth(x, 3, 2501);
    for (int i = 0; i < x.rows; ++i) ASSERT_NEAR(s.cell[i][0], x.cell[i][0], 1e-11) << i;
}

TEST(Smooth, KeepsPolynomialsAndSpreadsNaN)
{
    matrix x(30, 1);
    for (int degree = 0; degree <= 5; ++degree) {
        for (int i = 0; i < 30; ++i) x.cell[i][0] = std::pow(i / 10.0 - 1, degree);
        x.rowname(3) = "name";
        matrix const s = smooth(x, degree, 9);
        EXPECT_EQ(s.rowname(3), "");
        for (int i = 0; i < 30; ++i) EXPECT_NEAR(s.cell[i][0], x.cell[i][0], 1e-12);
    }
    x.cell[20][0] = std::numeric_limits<double>::quiet_NaN();
    matrix const s = smooth(x, 2, 5);
    for (int i = 0; i < 30; ++i) EXPECT_EQ(std::isnan(s.cell[i][0]), i >= 18 && i <= 22) << i;
}

TEST(SmoothDeathTest, RefusesInTheOrderOfTheTests)
{
    struct
    {
        matrix x;
        int degree, points;
        char const* why;
    } const cases[] = {
        {varnow::zeros(3, 2), 6, 4, "oczekiwany wektor kolumnowy"},
        {varnow::zeros(3, 0), 0, 3, "oczekiwany wektor kolumnowy"},
        {varnow::zeros(3, 1), 6, 4, "oczekiwana nieparzysta liczba punktow do usredniania"},
        {varnow::zeros(3, 1), 0, -1, "oczekiwana nieparzysta liczba punktow do usredniania"},
        {varnow::zeros(3, 1), 6, 5, "liczba punktow do usredniania przekracza dlugosc danych"},
        {matrix(), 0, 1, "liczba punktow do usredniania przekracza dlugosc danych"},
        {varnow::zeros(3, 1), 6, 3, "stopien wielomianu przekracza 5"},
    };
    for (auto const& a : cases)
        EXPECT_REFUSAL(smooth(a.x, a.degree, a.points), "MATRIX", "matrix smooth(matrix,int,int)",
                       a.why);
    char const* const inner = "zle wywolanie funkcji wewnetrznej";
    EXPECT_REFUSAL(fun_eps(6, 3), "MATRIX", "double fun_eps(int,int)", inner);
    EXPECT_REFUSAL(fun_eps(-1, 3), "MATRIX", "double fun_eps(int,int)", inner);
    EXPECT_REFUSAL(fun_delta(6, 5, 3), "MATRIX", "double fun_delta(int,int,int)", inner);
}

} // namespace
