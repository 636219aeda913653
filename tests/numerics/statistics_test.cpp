#include "../support/refusal.h"

#include <varnow/containers/matrix_arithmetic.h>
#include <varnow/containers/matrix_special.h>
#include <varnow/containers/ordering.h>
#include <varnow/containers/slicing.h>
#include <varnow/numerics/statistics.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace {

using namespace varnow;

double const nan_value = std::numeric_limits<double>::quiet_NaN();
double const infinite = std::numeric_limits<double>::infinity();

void expect_same(double got, double wanted)
{
    if (std::isnan(wanted))
        EXPECT_TRUE(std::isnan(got)) << got;
    else
        EXPECT_EQ(got, wanted);
}

std::vector<double> column(matrix const& m, int j)
{
    std::vector<double> x;
    for (int i = 1; i <= m.rows; ++i) x.push_back(m(i, j));
    return x;
}

struct statistic
{
    char const* S;
    matrix (*f)(matrix const&);
    double of_sample;    // 4, 10, 2, 5, 4
    double of_none;      // no values
    double of_nan_later; // 1, NaN, 3
    double of_nan_first; // NaN, 1, 3
};
// The quicksort takes the middle of 1, NaN, 3 for its pivot, below which nothing stands, and so
// leaves NaN, 1, 3; of NaN, 1, 3 it makes 1, NaN, 3.
statistic const statistics[] = {
    {"SUM", sum, 25, 0, nan_value, nan_value},
    {"SUMSQR", sumsqr, 161, 0, nan_value, nan_value},
    {"PROD", prod, 1600, 1, nan_value, nan_value},
    {"MEAN", mean, 5, nan_value, nan_value, nan_value},
    {"VAR", var, 9, nan_value, nan_value, nan_value},
    {"STDEV", stdev, 3, nan_value, nan_value, nan_value},
    {"MEDIAN", median, 4, nan_value, 1, nan_value},
    {"MODE", mode, 4, 0, nan_value, 1},
    {"COUNT", count, 5, 0, 2, 2},
    {"MIN", (varnow::min), 2, nan_value, 1, nan_value},
    {"MAX", (varnow::max), 10, nan_value, 3, nan_value},
};

TEST(Statistics, TakeARowForOneSampleAndOtherwiseEveryColumn)
{
    matrix row("4 10 2 5 4");
    row.rowname(1) = "observed";
    row.colname(1) = "first";
    matrix columns("4 1 0; 10 1 0; 2 1 0; 5 1 0; 4 1 0");
    columns.colname(1) = "a";
    columns.colname(3) = "c";
    columns.rowname(1) = "first";
    for (statistic const& s : statistics) {
        SCOPED_TRACE(s.S);
        matrix const of_row = s.f(row);
        ASSERT_TRUE(of_row.rows == 1 && of_row.cols == 1);
        EXPECT_EQ(of_row(1), s.of_sample);
        EXPECT_EQ(of_row.rowname(1), "observed");
        EXPECT_EQ(of_row.colname(1), s.S);

        matrix const of_columns = s.f(columns);
        ASSERT_TRUE(of_columns.rows == 1 && of_columns.cols == 3);
        EXPECT_EQ(of_columns(1, 1), s.of_sample);
        EXPECT_EQ(of_columns(1, 2), double(s.f(columns[2])));
        EXPECT_EQ(of_columns(1, 3), double(s.f(columns[3])));
        EXPECT_EQ(of_columns.rowname(1), s.S);
        EXPECT_EQ(of_columns.colname(1), "a");
        EXPECT_EQ(of_columns.colname(2), "");
        EXPECT_EQ(of_columns.colname(3), "c");
    }
}

TEST(Statistics, AreDefinedWithoutValuesAndWithNan)
{
    matrix later("1 0 3"), first("0 1 3");
    later(2) = first(1) = nan_value;
    for (statistic const& s : statistics) {
        SCOPED_TRACE(s.S);
        for (matrix const& none : {matrix(0, 2), matrix(0, 1), matrix(1, 0)}) {
            matrix const r = s.f(none);
            ASSERT_TRUE(r.rows == 1 && r.cols == std::max(none.cols, 1));
            for (int j = 1; j <= r.cols; ++j) expect_same(r(1, j), s.of_none);
        }
        EXPECT_EQ(s.f(matrix()).cols, 0);
        EXPECT_EQ(s.f(matrix()).rowname(1), s.S);
        for (bool const as_row : {true, false}) {
            expect_same(s.f(as_row ? later : ~later)(1), s.of_nan_later);
            expect_same(s.f(as_row ? first : ~first)(1), s.of_nan_first);
        }
    }
    expect_same(var(matrix(7.0))(1), nan_value);
    EXPECT_EQ(double(median(matrix(7.0))), 7);
}

TEST(Statistics, AddInTheOrderOfTheSample)
{
    // Magnitudes so mixed that any other order of additions shows; 13 columns leave a rest behind
    // every width of lanes, 700 rows cross the blocks.
    matrix m = randn(700, 13);
    for (int i = 0; i < m.rows; ++i)
        for (int j = 0; j < m.cols; ++j) m.cell[i][j] = std::exp(9 * m.cell[i][j]) - 1;
    std::swap(m.cell[3], m.cell[650]);
    matrix const sums = sum(m), squares = sumsqr(m), variances = var(m), running = cumsum(m),
                 covariances = cov(m);
    std::vector<std::vector<double>> deviations;
    for (int j = 1; j <= m.cols; ++j) {
        double s = 0, q = 0, v = 0;
        int i = 0;
        deviations.emplace_back();
        for (double x : column(m, j)) {
            s += x;
            q += x * x;
            EXPECT_EQ(running(++i, j), s);
        }
        for (double x : column(m, j)) {
            deviations.back().push_back(x - s / m.rows);
            v += deviations.back().back() * deviations.back().back();
        }
        EXPECT_EQ(sums(1, j), s);
        EXPECT_EQ(squares(1, j), q);
        EXPECT_EQ(variances(1, j), v / (m.rows - 1));
        for (int k = 1; k <= j; ++k) {
            double c = 0;
            for (std::size_t r = 0; r < 700; ++r)
                c += deviations[static_cast<std::size_t>(j - 1)][r] *
                     deviations[static_cast<std::size_t>(k - 1)][r];
            EXPECT_EQ(covariances(j, k), c / m.rows);
            EXPECT_EQ(covariances(k, j), c / m.rows);
        }
        EXPECT_EQ(double(sum(~m[j])), s); // and so along a row
    }
}

TEST(Statistics, RunAlongARowOrDownEachColumn)
{
    matrix m("1 2 3; 4 5 6");
    m.rowname(2) = "second";
    m.colname(3) = "third";
    EXPECT_TRUE(compare(cumsum(m), matrix("1 2 3; 5 7 9")));
    EXPECT_TRUE(compare(cumprod(m), matrix("1 2 3; 4 10 18")));
    EXPECT_TRUE(compare(cumsum(m.row(2)), matrix("4 9 15")));
    EXPECT_TRUE(compare(cumprod(m[2]), matrix("2; 10")));
    EXPECT_EQ(cumsum(m).rowname(2), "second");
    EXPECT_EQ(cumprod(m).colname(3), "third");
    EXPECT_EQ(cumsum(matrix(0, 3)).cols, 3);
}

TEST(Quantile, InterpolatesBetweenOrderStatistics)
{
    struct
    {
        double p, value;
    } const cases[] = {
        {0, 1},
        {1, 4},
        {0.5, 2.5},
        {1.0 / 3, 2},
        {0.25, 1.75},
        {0.9, 3.7},
        {-0.0, 1},
        {-1e-300, nan_value},
        {1.0000001, nan_value},
        {nan_value, nan_value},
        {infinite, nan_value},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.p);
        if (std::isnan(c.value))
            expect_same(quantile(matrix("3; 1; 4; 2"), c.p)(1), c.value);
        else
            EXPECT_NEAR(double(quantile(matrix("3; 1; 4; 2"), c.p)), c.value, 1e-15);
    }
    EXPECT_EQ(quantile(matrix("1; 2"), 0.5).rowname(1), "QUANTILE_0.500");
    EXPECT_EQ(quantile(matrix("1 2"), 0.12345).colname(1), "QUANTILE_0.123");
    // f of exactly 0 reads one value, so an infinite neighbour does no harm
    matrix m("1 2 0");
    m(3) = infinite;
    EXPECT_EQ(double(quantile(m, 0.5)), 2);
    EXPECT_EQ(double(quantile(m, 0.75)), infinite);
}

TEST(Quantile, OfAListStandsInRowsOrAlongTheRow)
{
    matrix m("1 10; 2 20; 3 30");
    m.colname(2) = "tens";
    m.rowname(1) = "lost";
    for (matrix const& ps : {matrix("0.5 1"), matrix("0.5; 1")}) {
        matrix const r = quantile(m, ps);
        EXPECT_TRUE(compare(r, matrix("2 20; 3 30")));
        EXPECT_EQ(r.rowname(1), "QUANTILE_0.500");
        EXPECT_EQ(r.rowname(2), "QUANTILE_1.000");
        EXPECT_EQ(r.colname(2), "tens");

        matrix row("3 1 2");
        row.rowname(1) = "sample";
        matrix const q = quantile(row, ps);
        EXPECT_TRUE(compare(q, matrix("2 3")));
        EXPECT_EQ(q.rowname(1), "sample");
        EXPECT_EQ(q.colname(2), "QUANTILE_1.000");
    }
    expect_same(quantile(m, c(0.5, 1.5))(2, 2), nan_value);
}

TEST(Quantile, OfManyValuesIsThatOfTheSortedSample)
{
    int const n = 20000;
    double (*const shapes[])(double) = {
        [](double z) { return z; },
        [](double z) { return std::exp(40 * z); },  // far tails
        [](double z) { return std::floor(3 * z); }, // few values, both zeros
        [](double z) { return z > 2 ? infinite : z; },
        [](double z) { return z > 0 ? -1e308 : 1e308 + z; }, // a width that overflows
        [](double z) { return z * 1e-310; },                 // one that vanishes
        [](double) { return 7.0; },
        [](double z) { return z > 1 ? nan_value : std::floor(9 * z); },
    };
    matrix m = randn(n, 8), ps = seq(0.0, 1.0, 1.0 / 64);
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < 8; ++j) m.cell[i][j] = shapes[j](m.cell[i][j]);
    matrix const got = quantile(m, ps), middle = median(m), most = mode(m);
    for (int j = 1; j <= 8; ++j) {
        SCOPED_TRACE(j);
        matrix sorted = m[j];
        sort(sorted);
        std::vector<double> const x = column(sorted, 1);
        for (int k = 0; k <= 64; ++k) {
            double const h = (n - 1) * ps(k + 1), f = h - std::floor(h);
            auto const i = static_cast<std::size_t>(h);
            expect_same(got(k + 1, j), f == 0 ? x[i] : (1 - f) * x[i] + f * x[i + 1]);
        }
        expect_same(middle(1, j), 0.5 * x[n / 2 - 1] + 0.5 * x[n / 2]);
        if (j == 3 || j == 7) {
            auto frequency = [&](double v) { return std::count(x.begin(), x.end(), v); };
            for (double v = -12; v < 13; ++v) EXPECT_LE(frequency(v), frequency(most(1, j)));
        }
    }
}

TEST(Statistics, GiveTheSmallestOfTheMostFrequentValues)
{
    EXPECT_EQ(double(mode(matrix("2 2 1 1 3"))), 1);
    EXPECT_EQ(double(mode(matrix("5 3 4"))), 3);
    EXPECT_EQ(double(mode(matrix("-1 -1 0 7 7 7"))), 7);
}

TEST(Hist, CountsRelativeFrequenciesInBinsOfEqualWidth)
{
    matrix m("0 5; 1 5; 2 5; 3 5; 4 5; 5 5; 6 5; 8 5; 9 5");
    m.colname(2) = "constant";
    matrix const h = hist(m);
    ASSERT_TRUE(h.rows == 3 && h.cols == 2);
    double const counts[3][2] = {{3, 9}, {3, 0}, {3, 0}};
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 2; ++j) EXPECT_EQ(h.cell[i][j], counts[i][j] / 9);
    EXPECT_EQ(h.rowname(1), "HIST_1");
    EXPECT_EQ(h.rowname(3), "HIST_3");
    EXPECT_EQ(h.colname(2), "constant");

    // one bin: the columns share one total
    EXPECT_TRUE(compare(hist(matrix("1 2; 3 4")), matrix("0.5 0.5")));
    for (int rows : {0, 1}) {
        matrix const one = hist(matrix(rows, 2));
        EXPECT_TRUE(compare(one, matrix("1 1")));
        EXPECT_EQ(one.rowname(1), "HIST_1");
    }
}

TEST(Hist, LeavesOutWhatNoBinTakes)
{
    matrix m("0 0 0 0; 1 1 1 1; 2 2 2 2; 3 3 3 3");
    m(1, 2) = m(3, 3) = nan_value;
    m(4, 1) = infinite;
    matrix const h = hist(m);
    EXPECT_EQ(h(1, 1) + h(2, 1), 1);
    EXPECT_EQ(h(1, 2) + h(2, 2), 0);
    EXPECT_EQ(h(1, 3), 2.0 / 3);
    EXPECT_EQ(h(2, 4), 0.5);
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
    EXPECT_DOUBLE_EQ(cov(m)(1, 1), 2.0);
    for (matrix const& r : {cov(m), cor(m)})
        for (int k : {1, 2}) {
            EXPECT_EQ(r.rowname(k), m.colname(k));
            EXPECT_EQ(r.colname(k), m.colname(k));
        }
    matrix const a("1; 2; 3; 4");
    EXPECT_DOUBLE_EQ(cor(a, a), 0.75);
    EXPECT_TRUE(compare(cor(a | a), ones(2)));
    EXPECT_TRUE(compare(cov(matrix("1 2 3")), zeros(3))); // each column is a sample here
    expect_same(cov(matrix(0, 2))(1, 2), nan_value);
    expect_same(cov(matrix(0, 1), matrix(0, 1)), nan_value);
}

TEST(Statistics, OfFlaggedRowsNameTheRow)
{
    matrix m("1 10; 2 20; 4 40");
    m.colname(2) = "tens";
    EXPECT_TRUE(compare(sumif(m, c(1, 0, -1)), matrix("5 50")));
    EXPECT_TRUE(compare(meanif(m, c(2, 0, 1)), matrix("2.5 25")));
    EXPECT_EQ(sumif(m, c(0, 0, 0))(1, 2), 0);
    expect_same(meanif(m, c(0, 0, 0))(1, 2), nan_value);
    EXPECT_EQ(meanif(m, m[1] > 1)(1, 1), 3);
    EXPECT_EQ(meanif(m, c(1, 1, 1)).rowname(1), "MEANIF");
    EXPECT_EQ(sumif(m, c(1, 1, 1)).rowname(1), "SUMIF");
    EXPECT_EQ(sumif(m, c(1, 1, 1)).colname(2), "tens");
    EXPECT_TRUE(compare(sumif(m.row(1), c(1)), m.row(1))); // one row is still a row of columns
}

TEST(Summarise, CallsTheStatisticOnOneColumnAtATime)
{
    auto const weighed = [](matrix const& x) {
        double s = 100.0 * x.rows + 1000 * x.cols;
        for (int i = 1; i <= x.rows; ++i) s += i * x(i, 1);
        return s;
    };
    matrix m("1 2 3; 4 5 6");
    m.rowname(1) = "first";
    m.colname(3) = "third";
    matrix const r = m.summarise(+weighed);
    EXPECT_TRUE(compare(r, matrix("1209 1212 1215")));
    EXPECT_EQ(r.rowname(1), "SUMMARISE");
    EXPECT_EQ(r.colname(3), "third");
    matrix const row = matrix(m.row(1)).summarise(+weighed);
    EXPECT_EQ(double(row), 1314);
    EXPECT_EQ(row.rowname(1), "first");
    EXPECT_EQ(row.colname(1), "SUMMARISE");
    auto const at = [](matrix const& x, double p) { return double(quantile(x, p)); };
    EXPECT_TRUE(compare(m.summarise(+at, 1.0), matrix("4 5 6")));
}

TEST(StatisticsDeathTest, RefuseWhatDoesNotFit)
{
    matrix const m = ones(3, 2), column = ones(3, 1);
    char const* const list = "matrix quantile(matrix,matrix)";
    EXPECT_REFUSAL(quantile(m, m), "MATRIX", list, "oczekiwany wektor prawdopodobienstw");
    EXPECT_REFUSAL(quantile(m, matrix()), "MATRIX", list, "oczekiwany wektor prawdopodobienstw");
    EXPECT_REFUSAL(quantile(m, matrix(1, 0)), "MATRIX", list,
                   "wektor prawdopodobienstw jest pusty");
    struct
    {
        char const* routine;
        double (*f)(matrix const&, matrix const&);
    } const pairs[] = {{"double cov(matrix,matrix)", cov}, {"double cor(matrix,matrix)", cor}};
    for (auto const& p : pairs) {
        EXPECT_REFUSAL(p.f(m, column), "MATRIX", p.routine, "oczekiwane wektory kolumnowe");
        EXPECT_REFUSAL(p.f(column, ~column), "MATRIX", p.routine, "oczekiwane wektory kolumnowe");
        EXPECT_REFUSAL(p.f(column, ones(2, 1)), "MATRIX", p.routine,
                       "wektory musza byc tej samej dlugosci");
    }
    char const* const flags = "wektor warunkowy ma nieprawidlowa dlugosc";
    EXPECT_REFUSAL(meanif(m, c(1, 1)), "MATRIX", "matrix meanif(matrix,Vector)", flags);
    EXPECT_REFUSAL(sumif(m, c(1, 1)), "MATRIX", "matrix sumif(matrix,Vector)", flags);
}

} // namespace
