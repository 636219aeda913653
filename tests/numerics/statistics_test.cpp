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

struct statistic
{
    std::string S;
    matrix (*f)(matrix const&);
    double of_sample;    // 4, 10, 2, 5, 4
    double of_none;      // no values
    double of_nan_later; // 1, NaN, 3
    double of_nan_first; // NaN, 1, 3
};
// The quicksort takes the middle of 1, NaN, 3 for its pivot, below which nothing stands, and so
// leaves NaN, 1, 3; of NaN, 1, 3 it makes 1, NaN, 3.
statistic const statistics[] = {
    {"SUM", sum, 25, 0, NaN, NaN},          {"SUMSQR", sumsqr, 161, 0, NaN, NaN},
    {"PROD", prod, 1600, 1, NaN, NaN},      {"MEAN", mean, 5, NaN, NaN, NaN},
    {"VAR", var, 9, NaN, NaN, NaN},         {"STDEV", stdev, 3, NaN, NaN, NaN},
    {"MEDIAN", median, 4, NaN, 1, NaN},     {"MODE", mode, 4, 0, NaN, 1},
    {"COUNT", count, 5, 0, 2, 2},           {"MIN", (varnow::min), 2, NaN, 1, NaN},
    {"MAX", (varnow::max), 10, NaN, 3, NaN}};

TEST(Statistics, TakeARowForOneSampleAndOtherwiseEveryColumn)
{
    matrix row("4 10 2 5 4"), columns = ~row | ~row, later("1 0 3"), first("0 1 3");
    row.rowname(1) = "observed";
    row.colname(1) = columns.rowname(1) = "first";
    columns.colname(2) = "b";
    later(2) = first(1) = NaN;
    for (statistic const& s : statistics) {
        std::string const value = show(s.of_sample), none = show(s.of_none);
        EXPECT_EQ(show(s.f(row)), "1x1 " + s.S + " | observed: " + value);
        EXPECT_EQ(show(s.f(columns)), "1x2 . b | " + s.S + ": " + value + " " + value);
        EXPECT_EQ(show(s.f(matrix())), "1x0 | " + s.S + ":");
        EXPECT_EQ(show(s.f(matrix(0, 2))), "1x2 . . | " + s.S + ": " + none + " " + none);
        EXPECT_EQ(show(s.f(matrix(1, 0))), "1x1 " + s.S + " | .: " + none);
        for (bool const as_row : {true, false}) {
            EXPECT_TRUE(same_bits(s.f(as_row ? later : ~later), matrix(s.of_nan_later))) << s.S;
            EXPECT_TRUE(same_bits(s.f(as_row ? first : ~first), matrix(s.of_nan_first))) << s.S;
        }
    }
    EXPECT_TRUE(std::isnan(var(matrix(7.0))(1)));
    EXPECT_EQ(double(median(matrix(7.0))), 7);
    // The smallest of the most frequent values.
    EXPECT_EQ(double(mode(matrix("2 2 1 1 3"))), 1);
    EXPECT_EQ(double(mode(matrix("-1 -1 0 7 7 7"))), 7);
}

TEST(Statistics, AddInTheOrderOfTheSample)
{
    // Magnitudes so mixed that any other order of additions shows; 13 columns leave a rest behind
    // every width of lanes, 700 rows cross the blocks.
    int const n = 700;
    matrix m = exp(9.0 * randn(n, 13)) - 1.0, deviations = m;
    std::swap(m.cell[3], m.cell[650]);
    matrix const sums = sum(m), squares = sumsqr(m), variances = var(m), running = cumsum(m),
                 covariances = cov(m);
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
        for (int k = 1; k <= j; ++k) {
            double c = 0;
            for (int i = 1; i <= n; ++i) c += deviations(i, j) * deviations(i, k);
            EXPECT_EQ(covariances(j, k), c / n);
            EXPECT_EQ(covariances(k, j), c / n);
        }
    }
}

TEST(Statistics, RunAlongARowOrDownEachColumn)
{
    matrix m("1 2 3; 4 5 6");
    m.rowname(2) = "b";
    m.colname(3) = "z";
    EXPECT_EQ(show(cumsum(m)), "2x3 . . z | .: 1 2 3 | b: 5 7 9");
    EXPECT_EQ(show(cumprod(m)), "2x3 . . z | .: 1 2 3 | b: 4 10 18");
    EXPECT_EQ(show(cumsum(m.row(2))), "1x3 . . z | b: 4 9 15");
    EXPECT_EQ(show(cumprod(m[2])), "2x1 . | .: 2 | b: 10");
    EXPECT_EQ(cumsum(matrix(0, 3)).cols, 3);
}

TEST(Quantile, InterpolatesBetweenOrderStatistics)
{
    struct
    {
        char const* sample;
        double p, value;
    } const cases[] = {{"3; 1; 4; 2", 0, 1},
                       {"3; 1; 4; 2", -0.0, 1},
                       {"3; 1; 4; 2", 1.0 / 3, 2},
                       {"3; 1; 4; 2", 0.25, 1.75},
                       {"3 1 4 2", 0.9, 3.7},
                       {"3; 1; 4; 2", 1, 4},
                       {"3; 1; 4; 2", -1e-300, NaN},
                       {"3; 1; 4; 2", 1.0000001, NaN},
                       {"3; 1; 4; 2", NaN, NaN},
                       // between two values, so an infinite neighbour does no harm
                       {"1; 2; 1e999", 0.5, 2},
                       {"1; 2; 1e999", 0.75, inf}};
    for (auto const& c : cases)
        EXPECT_EQ(show(double(quantile(c.sample, c.p))), show(c.value)) << c.p;
    EXPECT_EQ(show(quantile(matrix("1; 2"), 0.5)), "1x1 . | QUANTILE_0.500: 1.5");
    EXPECT_EQ(quantile(matrix("1 2"), 0.12345).colname(1), "QUANTILE_0.123");
}

TEST(Quantile, OfAListStandsInRowsOrAlongTheRow)
{
    matrix m("1 10; 2 20; 3 30"), row("3 1 2");
    m.colname(2) = "tens";
    m.rowname(1) = "lost";
    row.rowname(1) = "sample";
    for (matrix const& ps : {matrix("0.5 1"), matrix("0.5; 1")}) {
        EXPECT_EQ(show(quantile(m, ps)),
                  "2x2 . tens | QUANTILE_0.500: 2 20 | QUANTILE_1.000: 3 30");
        EXPECT_EQ(show(quantile(row, ps)), "1x2 QUANTILE_0.500 QUANTILE_1.000 | sample: 2 3");
    }
    EXPECT_TRUE(std::isnan(quantile(m, c(0.5, 1.5))(2, 2)));
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

TEST(Hist, CountsRelativeFrequenciesInBinsOfEqualWidth)
{
    matrix m("0 5; 1 5; 2 5; 3 5; 4 5; 6 5; 6 5; 8 5; 9 5"),
        gaps("0 0 0 0; 1 1 1 1; 2 2 2 2; 3 3 3 3");
    m.colname(2) = "constant";
    EXPECT_EQ(show(hist(m)), "3x2 . constant | HIST_1: 0.333333 1 | HIST_2: 0.222222 . | "
                             "HIST_3: 0.444444 .");
    // One bin: the columns share one total.
    EXPECT_EQ(show(hist("1 2; 3 4")), "1x2 . . | HIST_1: 0.5 0.5");
    for (int rows : {0, 1}) EXPECT_EQ(show(hist(matrix(rows, 2))), "1x2 . . | HIST_1: 1 1");
    // What no bin takes is left out.
    gaps(1, 2) = gaps(3, 3) = NaN;
    gaps(4, 1) = inf;
    EXPECT_EQ(show(hist(gaps)),
              "2x4 . . . . | HIST_1: 1 . 0.666667 0.5 | HIST_2: . . 0.333333 0.5");
}

TEST(Covariance, DividesByTheNumberOfRows)
{
    // R: cov(x, y) * 4 / 5, and that over sqrt(var(x) * var(y)); cor(x, y)
    matrix m("1 2; 2 4; 3 5; 4 4; 5 5");
    m.colname(1) = "x";
    m.colname(2) = "y";
    EXPECT_DOUBLE_EQ(cov(m[1], m[2]), 1.2);
    EXPECT_DOUBLE_EQ(cor(m[1], m[2]), 1.2 / std::sqrt(2.5 * 1.5));
    EXPECT_DOUBLE_EQ(cor(m)(1, 2), 0.77459666924148341);
    EXPECT_EQ(show(cov(m)), "2x2 x y | x: 2 1.2 | y: 1.2 1.2");
    EXPECT_EQ(show(cor(m)), "2x2 x y | x: 1 0.774597 | y: 0.774597 1");
    EXPECT_EQ(show(cov("1 2")), "2x2 . . | .: . . | .: . ."); // each column is a sample here
    EXPECT_TRUE(std::isnan(cov(matrix(0, 2))(1, 2)));
    EXPECT_TRUE(std::isnan(cov(matrix(0, 1), matrix(0, 1))));
}

TEST(Statistics, OfFlaggedRowsNameTheRow)
{
    matrix m("1 10; 2 20; 4 40");
    m.colname(2) = "tens";
    EXPECT_EQ(show(sumif(m, c(1, 0, -1))), "1x2 . tens | SUMIF: 5 50");
    EXPECT_EQ(show(meanif(m, c(2, 0, 1))), "1x2 . tens | MEANIF: 2.5 25");
    EXPECT_EQ(show(sumif(m, c(0, 0, 0))), "1x2 . tens | SUMIF: . .");
    EXPECT_TRUE(std::isnan(meanif(m, c(0, 0, 0))(1, 2)));
    EXPECT_EQ(meanif(m, m[1] > 1)(1, 1), 3);
    EXPECT_EQ(show(sumif("1 10", c(1))), "1x2 . . | SUMIF: 1 10"); // still a row of columns
}

TEST(Summarise, CallsTheStatisticOnOneColumnAtATime)
{
    auto const weighed = [](matrix const& x) {
        double s = 100.0 * x.rows + 1000 * x.cols;
        for (int i = 1; i <= x.rows; ++i) s += i * x(i, 1);
        return s;
    };
    auto const at = [](matrix const& x, double p) { return double(quantile(x, p)); };
    matrix m("1 2 3; 4 5 6"), row("1 2 3");
    row.rowname(1) = m.rowname(1) = "first";
    m.colname(3) = "third";
    EXPECT_EQ(show(m.summarise(+weighed)), "1x3 . . third | SUMMARISE: 1209 1212 1215");
    EXPECT_EQ(show(m.summarise(+at, 1.0)), "1x3 . . third | SUMMARISE: 4 5 6");
    EXPECT_EQ(show(row.summarise(+weighed)), "1x1 SUMMARISE | first: 1314");
}

TEST(StatisticsDeathTest, RefuseWhatDoesNotFit)
{
    matrix const m = ones(3, 2), column = ones(3, 1), shorter = ones(2, 1);
    char const *const list = "matrix quantile(matrix,matrix)", *const covs =
                                                                   "double cov(matrix,matrix)";
    char const* const cors = "double cor(matrix,matrix)";
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
