#include <varnow/varnow.h>

#include "tests/support/bits.h"
#include "tests/support/containers.h"
#include "tests/support/refusals.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace {

using namespace varnow;
using test::same_bits;
using test::show;

double const NaN = std::numeric_limits<double>::quiet_NaN();
double const inf = std::numeric_limits<double>::infinity();

TEST(Statistics, TakeARowForOneSampleAndOtherwiseEveryColumn)
{
    // The quicksort takes the middle of 1, NaN, 3 for its pivot, below which nothing stands, and so
    // leaves NaN, 1, 3; of NaN, 1, 3 it makes 1, NaN, 3.
    struct
    {
        std::string S;
        matrix (*f)(matrix const&);
        double of_sample, of_none, of_later, of_first; // of NaN that stands first or later
    } const statistics[] = {
        {"SUM", sum, 25, 0, NaN, NaN},          {"SUMSQR", sumsqr, 161, 0, NaN, NaN},
        {"PROD", prod, 1600, 1, NaN, NaN},      {"MEAN", mean, 5, NaN, NaN, NaN},
        {"VAR", var, 9, NaN, NaN, NaN},         {"STDEV", stdev, 3, NaN, NaN, NaN},
        {"MEDIAN", median, 4, NaN, 1, NaN},     {"MODE", mode, 4, 0, NaN, 1},
        {"COUNT", count, 5, 0, 2, 2},           {"MIN", (varnow::min), 2, NaN, 1, NaN},
        {"MAX", (varnow::max), 10, NaN, 3, NaN}};
    matrix row("4 10 2 5 4"), columns = ~row | ~row, later("1 0 3"), first("0 1 3");
    row.rowname(1) = "observed";
    row.colname(1) = columns.rowname(1) = "first";
    columns.colname(2) = "b";
    later(2) = first(1) = NaN;
    for (auto const& s : statistics) {
        std::string const value = show(s.of_sample), none = show(s.of_none);
        EXPECT_EQ(show(s.f(row)), "1x1 " + s.S + " | observed: " + value);
        EXPECT_EQ(show(s.f(columns)), "1x2 . b | " + s.S + ": " + value + " " + value);
        EXPECT_EQ(show(s.f(matrix())), "1x0 | " + s.S + ":");
        EXPECT_EQ(show(s.f(matrix(0, 2))), "1x2 . . | " + s.S + ": " + none + " " + none);
        EXPECT_EQ(show(s.f(matrix(1, 0))), "1x1 " + s.S + " | .: " + none);
        for (bool const as_row : {true, false}) {
            EXPECT_TRUE(same_bits(s.f(as_row ? later : ~later), matrix(s.of_later))) << s.S;
            EXPECT_TRUE(same_bits(s.f(as_row ? first : ~first), matrix(s.of_first))) << s.S;
        }
    }
}

TEST(Statistics, AddInTheOrderOfTheSample)
{
    // Magnitudes so mixed that any other order of additions shows; 13 columns leave a rest behind
    // every width of lanes, 700 rows cross the blocks.
    int const n = 700;
    matrix m = exp(9.0 * randn(n, 13)) - 1.0, deviations = m;
    std::swap(m.cell[3], m.cell[650]);
    matrix const sums = sum(m), squares = sumsqr(m), variances = var(m), running = cumsum(m);
    for (int j = 1; j <= m.cols; ++j) {
        double s = 0, q = 0, v = 0;
        for (int i = 1; i <= n; ++i) {
            s += m(i, j);
            q += m(i, j) * m(i, j);
            EXPECT_EQ(running(i, j), s);
        }
        EXPECT_EQ(sums(1, j), s);
        EXPECT_EQ(double(sum(~m[j])), s); // and so along a row
        EXPECT_EQ(squares(1, j), q);
        for (int i = 1; i <= n; ++i) {
            double const d = deviations(i, j) = m(i, j) - s / n;
            v += d * d;
        }
        EXPECT_EQ(variances(1, j), v / (n - 1));
    }
    EXPECT_TRUE(same_bits(cov(m), crossprod(deviations) / n));
}

TEST(Quantile, OfManyValuesIsThatOfTheSortedSample)
{
    int const n = 20000;
    double (*const shapes[])(double) = {
        [](double z) { return z; },
        [](double z) { return std::exp(40 * z); },  // far tails
        [](double z) { return std::floor(3 * z); }, // few values, both zeros
        [](double z) { return z > 2 ? inf : z; },
        [](double z) { return z > 0 ? -1e308 : 1e308 + z; }, // a width that overflows
        [](double z) { return z * 1e-310; },                 // one that vanishes
        [](double) { return 7.0; },
        [](double z) { return z > 1 ? NaN : std::floor(9 * z); },
    };
    matrix m = randn(n, 8), ps = seq(0.0, 1.0, 1.0 / 64);
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < 8; ++j) m.cell[i][j] = shapes[j](m.cell[i][j]);
    matrix const got = quantile(m, ps), middle = median(m), most = mode(m);
    for (int j = 1; j <= 8; ++j) {
        SCOPED_TRACE(j);
        matrix x = m[j];
        sort(x);
        auto const frequency = [&](double v) {
            Vector const is = x == v;
            return std::count(is.v, is.v + n, 1);
        };
        for (int k = 1; k <= 65; ++k) {
            double const h = (n - 1) * ps(k), f = h - std::floor(h);
            int const i = static_cast<int>(h) + 1;
            EXPECT_TRUE(same_bits(got(k, j), f == 0 ? x(i) : (1 - f) * x(i) + f * x(i + 1)));
            if (j == 3 || j == 7) {
                EXPECT_LE(frequency(x(i)), frequency(most(1, j)));
            }
        }
        EXPECT_TRUE(same_bits(middle(1, j), 0.5 * x(n / 2) + 0.5 * x(n / 2 + 1)));
    }
}

TEST(Statistics, AreShown)
{
    matrix m("1 10; 2 20; 4 40"), row, sample("3; 1; 4; 2"), far("1; 2; 1e999");
    matrix bins("0 5; 1 5; 2 5; 3 5; 4 5; 6 5; 6 5; 8 5; 9 5");
    matrix gaps("0 0 0 0; 1 1 1 1; 2 2 2 2; 3 3 3 3"), pairs("1 2; 2 4; 3 5; 4 4; 5 5");
    m.colname(2) = bins.colname(2) = pairs.colname(2) = "y";
    m.rowname(3) = "last";
    row = m.row(3);
    gaps(1, 2) = gaps(3, 3) = NaN;
    gaps(4, 1) = inf;
    auto const weighed = [](matrix const& x) {
        double s = 100.0 * x.rows + 1000 * x.cols;
        for (int i = 1; i <= x.rows; ++i) s += i * x(i, 1);
        return s;
    };
    auto const at = [](matrix const& x, double p) { return double(quantile(x, p)); };
    struct
    {
        matrix result;
        char const* shown;
    } const cases[] = {
        {var(matrix(7.0)), "1x1 VAR | .: NaN"},
        {median(matrix(7.0)), "1x1 MEDIAN | .: 7"},
        {mode("2 2 1 1 3"), "1x1 MODE | .: 1"}, // the smallest of the most frequent values
        {mode("-1 -1 0 7 7 7"), "1x1 MODE | .: 7"},

        {cumsum(m), "3x2 . y | .: 1 10 | .: 3 30 | last: 7 70"},
        {cumprod(m), "3x2 . y | .: 1 10 | .: 2 200 | last: 8 8000"},
        {cumsum(row), "1x2 . y | last: 4 44"},
        {cumprod(m[1]), "3x1 . | .: 1 | .: 2 | last: 8"},
        {cumsum(matrix(0, 3)), "0x3 . . ."},

        {quantile(m, 0.5), "1x2 . y | QUANTILE_0.500: 2 20"},
        {quantile(row, 0.12345), "1x1 QUANTILE_0.123 | last: 8.4442"},
        {quantile(m, c(0.5, 1, 1.5)),
         "3x2 . y | QUANTILE_0.500: 2 20 | QUANTILE_1.000: 4 40 | QUANTILE_1.500: NaN NaN"},
        {quantile(row, ~c(0.5, 1)), "1x2 QUANTILE_0.500 QUANTILE_1.000 | last: 22 40"},
        {quantile(sample, "0 0.25 0.9 1"), "4x1 . | QUANTILE_0.000: 1 | QUANTILE_0.250: 1.75 | "
                                           "QUANTILE_0.900: 3.7 | QUANTILE_1.000: 4"},
        {quantile(sample, -0.0), "1x1 . | QUANTILE_-0.000: 1"},
        {quantile(sample, 1.0 / 3), "1x1 . | QUANTILE_0.333: 2"},
        {quantile(sample, -1e-300), "1x1 . | QUANTILE_-0.000: NaN"},
        {quantile(sample, 1.0000001), "1x1 . | QUANTILE_1.000: NaN"},
        {quantile(sample, NaN), "1x1 . | QUANTILE_: NaN"},
        {quantile(far, 0.5), "1x1 . | QUANTILE_0.500: 2"}, // an infinite neighbour does no harm
        {quantile(far, 0.75), "1x1 . | QUANTILE_0.750: inf"},

        {hist(bins), "3x2 . y | HIST_1: 0.333333 1 | HIST_2: 0.222222 . | HIST_3: 0.444444 ."},
        {hist("1 2; 3 4"), "1x2 . . | HIST_1: 0.5 0.5"}, // the columns share one total
        {hist(matrix(0, 2)), "1x2 . . | HIST_1: 1 1"},
        {hist(matrix(1, 2)), "1x2 . . | HIST_1: 1 1"},
        // What no bin takes is left out.
        {hist(gaps), "2x4 . . . . | HIST_1: 1 . 0.666667 0.5 | HIST_2: . . 0.333333 0.5"},

        // R: cov(x, y) * 4 / 5; cor(x, y); this over sqrt(var(x) * var(y))
        {cov(pairs), "2x2 . y | .: 2 1.2 | y: 1.2 1.2"},
        {cor(pairs), "2x2 . y | .: 1 0.774597 | y: 0.774597 1"},
        {cor(pairs[1], pairs[2]), "1x1 . | .: 0.619677"},
        {cov(pairs[1], pairs[2]), "1x1 . | .: 1.2"},
        {cov("1 2"), "2x2 . . | .: . . | .: . ."}, // each column is a sample here
        {cov(matrix(0, 2)), "2x2 . . | .: NaN NaN | .: NaN NaN"},
        {cov(matrix(0, 1), matrix(0, 1)), "1x1 . | .: NaN"},

        {sumif(m, c(1, 0, -1)), "1x2 . y | SUMIF: 5 50"},
        {sumif(m, c(0, 0, 0)), "1x2 . y | SUMIF: . ."},
        {sumif(row, c(1)), "1x2 . y | SUMIF: 4 40"}, // still a row of columns
        {meanif(m, c(2, 0, 1)), "1x2 . y | MEANIF: 2.5 25"},
        {meanif(m, c(0, 0, 0)), "1x2 . y | MEANIF: NaN NaN"},
        {meanif(m, m[1] > 1), "1x2 . y | MEANIF: 3 30"},

        {m.summarise(+weighed), "1x2 . y | SUMMARISE: 1317 1470"},
        {m.summarise(+at, 1.0), "1x2 . y | SUMMARISE: 4 40"},
        {row.summarise(+weighed), "1x1 SUMMARISE | last: 1284"},
    };
    for (auto const& c : cases) EXPECT_EQ(show(c.result), c.shown);
    EXPECT_DOUBLE_EQ(cor(pairs[1], pairs[2]), 1.2 / std::sqrt(2.5 * 1.5));
    EXPECT_DOUBLE_EQ(cor(pairs)(1, 2), 0.77459666924148341);
    EXPECT_EQ(hist(bins)(1, 1), 3.0 / 9);
    EXPECT_EQ(hist(bins)(3, 1), 4.0 / 9);
}

TEST(StatisticsDeathTest, RefuseWhatDoesNotFit)
{
    matrix const m = ones(3, 2), column = ones(3, 1), shorter = ones(2, 1);
    char const* const list = "matrix quantile(matrix,matrix)";
    char const *const covs = "double cov(matrix,matrix)", *const cors = "double cor(matrix,matrix)";
    char const* const columns = "oczekiwane wektory kolumnowe";
    char const* const lengths = "wektory musza byc tej samej dlugosci";
    char const* const flags = "wektor warunkowy ma nieprawidlowa dlugosc";
    test::refusal const cases[] = {
        {[&] { quantile(m, m); }, list, "oczekiwany wektor prawdopodobienstw"},
        {[&] { quantile(m, matrix()); }, list, "oczekiwany wektor prawdopodobienstw"},
        {[&] { quantile(m, matrix(1, 0)); }, list, "wektor prawdopodobienstw jest pusty"},
        {[&] { cov(m, column); }, covs, columns},
        {[&] { cov(column, ~column); }, covs, columns},
        {[&] { cov(column, shorter); }, covs, lengths},
        {[&] { cor(m, column); }, cors, columns},
        {[&] { cor(column, ~column); }, cors, columns},
        {[&] { cor(column, shorter); }, cors, lengths},
        {[&] { meanif(m, c(1, 1)); }, "matrix meanif(matrix,Vector)", flags},
        {[&] { sumif(m, c(1, 1)); }, "matrix sumif(matrix,Vector)", flags},
    };
    test::expect_refusals("MATRIX", cases);
}

} // namespace
