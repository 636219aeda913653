#include "../support/refusal.h"

#include <varnow/containers/matrix_arithmetic.h>
#include <varnow/containers/matrix_special.h>
#include <varnow/containers/ordering.h>
#include <varnow/containers/slicing.h>
#include <varnow/models/discrimination.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace varnow;

double const nan_value = std::numeric_limits<double>::quiet_NaN();
double const rounding = 1e-12; // sums of some thousand terms, divided otherwise than here

struct observation
{
    double x, y;
};
using sample = std::vector<observation>;

matrix scores(sample const& s)
{
    matrix m(static_cast<int>(s.size()), 1);
    for (int i = 0; i < m.rows; ++i) m.cell[i][0] = s[static_cast<std::size_t>(i)].x;
    return m;
}
matrix flags(sample const& s)
{
    matrix m(static_cast<int>(s.size()), 1);
    for (int i = 0; i < m.rows; ++i) m.cell[i][0] = s[static_cast<std::size_t>(i)].y;
    return m;
}

// n observations, always the same, with a quarter of bads, scores of that many different values; 0
// leaves all.
sample drawn(int n, double different, bool fractions = false)
{
    varnow::detail::random_state = 12345; // the same whichever tests run
    matrix const u = rand(n, 2);
    sample s;
    for (int i = 0; i < n; ++i) {
        double const x = u.cell[i][0], y = u.cell[i][1];
        s.push_back({different > 0 ? std::floor(different * x) : x, fractions ? y * (1 - x)
                                                                    : y < 0.5 * (1 - x) ? 1.0
                                                                                        : 0.0});
    }
    return s;
}

// The sort that decides on the order of ties, as plainly as it can be written.
void quicksort(sample& s, int left, int right)
{
    while (left < right) {
        std::swap(s[static_cast<std::size_t>(left)],
                  s[static_cast<std::size_t>((left + right) / 2)]);
        int last = left;
        for (int i = left + 1; i <= right; ++i)
            if (s[static_cast<std::size_t>(i)].x < s[static_cast<std::size_t>(left)].x)
                std::swap(s[static_cast<std::size_t>(++last)], s[static_cast<std::size_t>(i)]);
        std::swap(s[static_cast<std::size_t>(left)], s[static_cast<std::size_t>(last)]);
        quicksort(s, left, last - 1);
        left = last + 1;
    }
}

// Share of pairs of a bad and a good in which the bad has the lower score, ties counting half.
double auc(sample const& s)
{
    double won = 0, pairs = 0;
    for (observation const& bad : s)
        for (observation const& good : s)
            if (bad.y == 1 && good.y == 0) {
                won += bad.x < good.x ? 1 : bad.x == good.x ? 0.5 : 0;
                ++pairs;
            }
    return won / pairs;
}

double total(sample const& s)
{
    double t = 0;
    for (observation const& o : s) t += o.y;
    return t;
}

struct extreme
{
    double ks = -2, x = 0, goods = 0, bads = 0;
};
// From observations in their final order.
extreme separation(sample const& s)
{
    extreme best;
    double const nb = total(s), n0 = static_cast<double>(s.size()) - nb;
    double b = 0, g = 0;
    for (observation const& o : s) {
        b += o.y;
        g += 1 - o.y;
        if (b / nb - g / n0 > best.ks) best = {b / nb - g / n0, o.x, g / n0, b / nb};
    }
    return best;
}

// Over groups of equal rank.
double information(sample const& s, std::size_t k)
{
    std::vector<double> bads(k), goods(k);
    for (std::size_t p = 0; p < s.size(); ++p) {
        bads[p * k / s.size()] += s[p].y;
        goods[p * k / s.size()] += 1 - s[p].y;
    }
    double const nb = total(s), n0 = static_cast<double>(s.size()) - nb;
    double sum = 0;
    for (std::size_t g = 0; g < k; ++g)
        sum += std::log(goods[g] / n0 * nb / bads[g]) * (goods[g] / n0 - bads[g] / nb);
    return sum;
}

double ratio(sample const& s)
{
    double const nb = total(s), n = static_cast<double>(s.size());
    double b = 0, area_of_model = 0;
    for (observation const& o : s) area_of_model += (b += o.y) / nb;
    area_of_model = (area_of_model - 0.5 * (b / nb)) / n;
    return (area_of_model - 0.5) / (1 - nb / n * 0.5 - 0.5);
}

TEST(Discrimination, AgreesWithCountingPairsOfBadAndGood)
{
    for (double different : {0.0, 7.0, 300.0}) {
        sample const s = drawn(1500, different);
        matrix const x = scores(s), y = flags(s);
        double const expected = 2 * auc(s) - 1;
        EXPECT_NEAR(AR(x, y, 1.0, 1, 1, 0), expected, rounding);
        EXPECT_NEAR(AR(x, y, 1.0, 0, 1, 0), expected, rounding);
        EXPECT_NEAR(AR(x, y, 1.5, 1, 1, 0), expected, rounding);
        // KS: the greatest difference over all thresholds
        double const nb = total(s), n0 = 1500 - nb;
        double best = -1;
        for (observation const& at : s) {
            double bads = 0, goods = 0;
            for (observation const& o : s)
                if (o.x <= at.x) (o.y == 1 ? bads : goods) += 1;
            best = std::max(best, bads / nb - goods / n0);
        }
        EXPECT_GE(KS(x, y), best - rounding);
        if (different > 0) continue;
        EXPECT_NEAR(KS(x, y), best, rounding);
        EXPECT_NEAR(AR(x, y, 1.0, 1, 0, 0), expected, rounding);
    }
}

TEST(Discrimination, OrdersTiesAsTheSortDoes)
{
    struct
    {
        int n;
        double different;
        bool fractions;
        bool nan;
    } const cases[] = {
        {5000, 5000, false, false}, {5000, 40, false, false},  {5000, 2, false, false},
        {5000, 1, false, false},    {5000, 1e9, false, false}, {5000, 40, true, false},
        {5000, 900, true, false},   {900, 30, false, true},    {300, 3, false, false},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(testing::Message() << c.n << " rows, " << c.different << " scores");
        sample s = drawn(c.n, c.different, c.fractions);
        if (c.different == 1e9) s[17].x = s[4000].x = s[2500].x; // hardly any ties
        if (c.nan)
            for (std::size_t i = 0; i < s.size(); i += 50) s[i].x = nan_value;
        matrix const x = scores(s), y = flags(s);
        quicksort(s, 0, c.n - 1);
        extreme const e = separation(s);
        int const groups = c.n > 300 ? 7 : 2;
        double sx, goods, bads;
        EXPECT_EQ(KS_xy(x, y, sx, goods, bads), e.ks);
        EXPECT_EQ(KS(x, y), e.ks);
        EXPECT_TRUE(sx == e.x || (sx != sx && e.x != e.x));
        EXPECT_EQ(goods, e.goods);
        EXPECT_EQ(bads, e.bads);
        EXPECT_EQ(AR(x, y, 1.0, 1, 0, 0), ratio(s));
        EXPECT_NEAR(IV(x, y, groups), information(s, std::size_t(groups)), rounding);
        matrix sorted = scores(s), levelled = flags(s);
        double const nb = total(s);
        del_rand_quality(sorted, levelled);
        for (std::size_t i = 0; i < s.size(); ++i) s[i].y = levelled.cell[i][0];
        double b = 0, a = 0;
        for (observation const& o : s) a += (b += o.y) / nb;
        a = (a - 0.5 * (b / nb)) / c.n;
        EXPECT_EQ(AR(x, y, 1.0, 1, 1, 0), (a - 0.5) / (1 - nb / c.n * 0.5 - 0.5));
    }
}

TEST(Discrimination, RatesPerfectAndWrongModels)
{
    matrix const x("6; 1; 5; 2; 4; 3"), y("0; 1; 0; 1; 0; 0");
    double sx, goods, bads;
    EXPECT_EQ(KS_xy(x, y, sx, goods, bads), 1);
    EXPECT_EQ(sx, 2);
    EXPECT_EQ(goods, 0);
    EXPECT_EQ(bads, 1);
    for (double range : {1.0, 0.5, 0.34})
        for (int ideal : {0, 1}) EXPECT_DOUBLE_EQ(AR(x, y, range, ideal, 0, 0), 1);
    EXPECT_DOUBLE_EQ(AR(-x, y, 1.0, 1, 0, 0), -1);
    EXPECT_EQ(KS(-x, y), 0); // reached in the last row; no absolute value is taken
    EXPECT_DOUBLE_EQ(AR(ones(6, 1), y, 1.0, 1, 1, 0), 0);
    // differences 0.5, 0.25, 0, 0.5, ...: the first of equal maxima
    EXPECT_EQ(KS_xy(matrix("1; 2; 3; 4; 5; 6"), matrix("1; 0; 0; 1; 0; 0"), sx, goods, bads), 0.5);
    EXPECT_EQ(sx, 1);
}

TEST(Discrimination, IsNanForOneClassAndForNoRows)
{
    matrix const x("1; 2; 2");
    for (matrix const& y : {zeros(3, 1), ones(3, 1)}) {
        double sx = 0, goods = 0, bads = 0;
        EXPECT_TRUE(std::isnan(KS_xy(x, y, sx, goods, bads)));
        EXPECT_TRUE(std::isnan(sx) && std::isnan(goods) && std::isnan(bads));
        EXPECT_TRUE(std::isnan(AR(x, y, 1.0, 1, 1, 0)));
        EXPECT_TRUE(std::isnan(IV(x, y, 2)));
    }
    for (matrix const& none : {matrix(), matrix(0, 1)}) {
        EXPECT_TRUE(std::isnan(KS(none, none)));
        EXPECT_TRUE(std::isnan(AR(none, none, 1.0, 1, 1, 0)));
        EXPECT_TRUE(std::isnan(AR(none, none, 0.5, 0, 1, 0)));
        EXPECT_TRUE(std::isnan(IV(none, none, 2)));
        EXPECT_EQ(CAP(none, none, 1).rows, 0);
        EXPECT_EQ(CAP(none, none, 0).cols, 6);
    }
}

TEST(CAP, TellsTheCurvesRowByRow)
{
    matrix x("30; 10; 20; 40"), y("0; 1; 1; 0");
    x.rowname(2) = "worst";
    x.colname(1) = "score";
    for (int mode : {1, 0}) {
        matrix const r = CAP(x, y, mode);
        EXPECT_TRUE(compare(r, matrix("10 0.25 0.5 0.5 0.5 0;"
                                      "20 0.5 1 1 0.33333333333333333 0;"
                                      "30 0.75 1 1 0 0.5;"
                                      "40 1 1 1 0 1")));
        EXPECT_EQ(r.rowname(1), "worst");
        EXPECT_EQ(r.colname(1), "");
    }
}

TEST(CAP, HasAnIdealCurveByCountOrByTheValuesOfTheFlag)
{
    struct
    {
        char const* y;
        char const* by_count;
        char const* by_values;
    } const cases[] = {
        {"0.5; 0; 0.75; 0.25", "0.5; 1; 1; 1", "0.5; 0.83333333333333333; 1; 1"}, // 1.5 bads
        {"1; 1; 1; 1", "0.25; 0.5; 0.75; 1", "0.25; 0.5; 0.75; 1"},               // as many as rows
        {"0.25; 0; 0; 0", "1; 1; 1; 1", "1; 1; 1; 1"},                            // rounded to none
    };
    for (auto const& c : cases) {
        matrix const x("1; 2; 3; 4");
        EXPECT_TRUE(compare(CAP(x, c.y, 1)[4], matrix(c.by_count)));
        EXPECT_TRUE(compare(CAP(x, c.y, 2)[4], matrix(c.by_values)));
    }
}

TEST(AR, OverARangeComparesAreasUpToThere)
{
    // Five rows, bads at 1 and 3; up to u = 0.6: chance (0.2 + 0.4 + 0.6 - 0.3) / 5 = 0.18, model
    // (0.5 + 0.5 + 1 - 0.5) / 5 = 0.3, ideal (0.5 + 1 + 1 - 0.5) / 5 = 0.4.
    matrix const x("1; 2; 3; 4; 5"), y("1; 0; 1; 0; 0");
    EXPECT_DOUBLE_EQ(AR(x, y, 0.6, 1, 0, 0), 0.12 / 0.22);
    EXPECT_DOUBLE_EQ(AR(x, y, 0.79, 0, 0, 1), 0.12 / 0.22);
    EXPECT_TRUE(std::isnan(AR(x, y, 0.1, 1, 0, 0))); // no row
    EXPECT_TRUE(std::isnan(AR(x, y, nan_value, 1, 0, 0)));
}

TEST(AR, RoundsTheNumberOfBadsWhereAsked)
{
    // Fractions: 1.5 bads of 4. Model (1 + 2 + 2.5 + 3 - 1.5) / 3 / 4.
    matrix const x("1; 2; 3; 4"), y("0.5; 0.5; 0.25; 0.25");
    double const gain = 7.0 / 12 - 0.5;
    EXPECT_DOUBLE_EQ(AR(x, y, 1.0, 1, 0, 0), gain / (0.5 - 1.5 / 8));
    EXPECT_DOUBLE_EQ(AR(x, y, 1.0, 1, 0, 1), gain / (0.5 - 2.0 / 8));
    for (int rounded : {0, 1}) EXPECT_DOUBLE_EQ(AR(x, y, 2.0, 1, 0, rounded), gain / 0.25);
    // the best order of these values is the present one
    EXPECT_DOUBLE_EQ(AR(x, y, 1.0, 0, 0, 1), 1);
}

TEST(Area, IsThatOfTrapezoidsFromZero)
{
    EXPECT_EQ(area(matrix(), 4), 0);
    EXPECT_EQ(area(matrix(1, 0), 4), 0);
    EXPECT_EQ(area(matrix("0.5; 1; 1; 1"), 4), 0.75);
    EXPECT_EQ(area(matrix("0.5 1 1 1"), 4), 0.75);
    EXPECT_EQ(area(matrix(3.0), 2), 0.75);
}

TEST(Ties, RunFromTheirFirstRow)
{
    matrix x("0; 0.0000000006; 0.0000000012; 5; 5; 5"), y("1; 0; 0; 1; 1; 0");
    del_rand_quality(x, y);
    EXPECT_TRUE(compare(y, matrix("0.5; 0.5; 0; 0.66666666666666667; 0.66666666666666667;"
                                  "0.66666666666666667")));
    matrix strange(3, 1), kept("1; 0; 1");
    strange.fill(nan_value);
    del_rand_quality(strange, kept);
    EXPECT_TRUE(compare(kept, matrix("1; 0; 1")));
}

TEST(TA, TellsWhatACutOffAccepts)
{
    matrix const x("3; 1; 2.5; 5; 4; 7; 6"), y("0; 1; 0; 0; 1; 0; 0");
    table const r = TA(x, y, 3); // every second row
    char const* const expected[5][5] = {{"Score", "Count", "Bads", "Acceptance", "Quality"},
                                        {"1", "7", "2", "0.857143", "0.285714"},
                                        {"3", "5", "1", "0.571429", "0.200000"},
                                        {"5", "3", "0", "0.285714", "0"},
                                        {"7", "1", "0", "0", "0"}};
    ASSERT_TRUE(r.rows == 4 && r.cols == 5);
    for (int j = 1; j <= 5; ++j) {
        EXPECT_EQ(r.colname(j), expected[0][j - 1]);
        for (int i = 1; i <= 4; ++i) EXPECT_EQ(r(i, j), expected[i][j - 1]);
    }
    EXPECT_EQ(TA(x, y, 7).rows, 7);
    EXPECT_EQ(TA(x, y, 1).rows, 1);
}

TEST(InformationValue, SumsOverGroupsOfEqualRank)
{
    // Seven rows in three groups, rows 1-3, 4-5 and 6-7: bads 2, 1, 1 of 4 and goods 1, 1, 1 of 3.
    matrix const x("1; 2; 3; 4; 5; 6; 7"), y("1; 1; 0; 1; 0; 0; 1");
    auto term = [](double a, double b) { return (std::log(a) - std::log(b)) * (a - b); };
    double const third = 1.0 / 3;
    EXPECT_NEAR(IV(x, y, 3), term(third, 0.5) + 2 * term(third, 0.25), rounding);
    EXPECT_NEAR(IVa(x, y, 3),
                term(third * 3 / 7, 0.5 * 3 / 7) + 2 * term(third * 2 / 7, 0.25 * 2 / 7), rounding);
    EXPECT_EQ(IV(~x, ~y, 3), IV(x, y, 3));
    EXPECT_EQ(IV(x, y, 1), 0);
    EXPECT_EQ(IV(x, matrix("1; 1; 1; 0; 0; 0; 0"), 3), std::numeric_limits<double>::infinity());
    EXPECT_TRUE(std::isnan(IV(x, y, 8)));
    EXPECT_TRUE(std::isnan(IVa(x, y, std::numeric_limits<int>::max())));
}

TEST(DiscriminationDeathTest, RefusesWhatItCannotOrder)
{
    matrix const x = ones(4, 1), y = ones(3, 1), square = ones(4), row = ones(1, 4);
    char const* const shapes = "wektory maja niezgodne wymiary";
    char const* const pair = "sort(matrix,matrix,Direction,int)";
    EXPECT_REFUSAL(KS(x, y), "MATRIX", pair, shapes);
    EXPECT_REFUSAL(AR(y, x, 1.0, 1, 0, 0), "MATRIX", pair, shapes);
    EXPECT_REFUSAL(CAP(x, ~x, 1), "MATRIX", pair, shapes);
    EXPECT_REFUSAL(IV(x, y, 2), "MATRIX", pair, shapes);
    EXPECT_REFUSAL(TA(square, square, 2), "MATRIX", "Vector sort(matrix,Direction,int)",
                   "pierwszy argument nie jest wektorem");
    matrix a = x, b = y;
    EXPECT_REFUSAL(del_rand_quality(a, b), "MATRIX", "void del_rand_quality(matrix,matrix)",
                   shapes);

    char const* const columns = "oczekiwane wektory kolumnowe";
    EXPECT_REFUSAL(KS(row, row), "MATRIX", "double KS(matrix,matrix)", columns);
    EXPECT_REFUSAL(CAP(row, row, 1), "MATRIX", "matrix CAP(matrix,matrix,int)", columns);
    EXPECT_REFUSAL(AR(row, row, 1.0, 1, 0, 0), "MATRIX",
                   "double AR(matrix,matrix,double,int,int,int)", columns);
    EXPECT_REFUSAL(TA(row, row, 1), "TABLE", "table TA(matrix,matrix,int)", columns);

    for (int bins : {0, -1, 5})
        EXPECT_REFUSAL(TA(x, x, bins), "TABLE", "table TA(matrix,matrix,int)",
                       "liczba przedzialow poza zakresem");
    for (int k : {0, -3}) {
        EXPECT_REFUSAL(IV(x, x, k), "MATRIX", "double IV(matrix,matrix,int)",
                       "liczba grup mniejsza niz 1");
        EXPECT_REFUSAL(IVa(x, x, k), "MATRIX", "double IVa(matrix,matrix,int)",
                       "liczba grup mniejsza niz 1");
    }
}

} // namespace
