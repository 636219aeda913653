#include "tests/support/bits.h"
#include "tests/support/containers.h"
#include "tests/support/refusals.h"

#include <varnow/varnow.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>

namespace {

using namespace varnow;
using test::same_bits;

double const nan_value = std::numeric_limits<double>::quiet_NaN();
double const rounding = 1e-12; // sums of some thousand terms, divided otherwise than here

struct sample
{
    matrix x, y;
};

// n observations, always the same, with a quarter of bads, scores of that many different values; 0
// leaves all.
sample drawn(int n, double different, bool fractions = false)
{
    varnow::detail::random_state = 12345; // the same whichever tests run
    matrix const u = rand(n, 2);
    sample s = {u[1], u[2]};
    for (int i = 1; i <= n; ++i) {
        double& x = s.x(i);
        double& y = s.y(i);
        y = fractions ? y * (1 - x) : y < 0.5 * (1 - x);
        if (different > 0) x = std::floor(different * x);
    }
    return s;
}

// KS, the score where it is reached, and the shares of goods and bads there.
matrix separation(matrix const& x, matrix const& y)
{
    double score, goods, bads, ks = KS_xy(x, y, score, goods, bads);
    EXPECT_TRUE(same_bits(KS(x, y), ks));
    return c(ks, score, goods, bads);
}

TEST(Discrimination, AgreesWithCountingPairsOfBadAndGood)
{
    for (double different : {0.0, 7.0, 300.0}) {
        auto const [x, y] = drawn(1500, different);
        // A pair is won where the bad has the lower score, ties counting half; KS is the greatest
        // difference over all thresholds.
        double const nb = sum(y), n0 = 1500 - nb;
        double won = 0, best = -1;
        for (int at = 1; at <= 1500; ++at) {
            double bads = 0, goods = 0, tied = 0;
            for (int i = 1; i <= 1500; ++i) {
                if (x(i) <= x(at)) (y(i) == 1 ? bads : goods) += 1;
                if (x(i) == x(at)) tied += y(i);
            }
            best = std::max(best, bads / nb - goods / n0);
            if (y(at) == 0) won += bads - tied / 2;
        }
        double const expected = 2 * won / (nb * n0) - 1;
        EXPECT_NEAR(AR(x, y, 1.0, 1, 1, 0), expected, rounding);
        EXPECT_NEAR(AR(x, y, 1.0, 0, 1, 0), expected, rounding);
        EXPECT_NEAR(AR(x, y, 1.5, 1, 1, 0), expected, rounding);
        EXPECT_GE(KS(x, y), best - rounding);
        if (different > 0) continue;
        EXPECT_NEAR(KS(x, y), best, rounding);
        EXPECT_NEAR(AR(x, y, 1.0, 1, 0, 0), expected, rounding);
    }
}

// What is told of tied scores is what is told of their ranks, which are not tied, in the order in
// which `sort` leaves them.
TEST(Discrimination, OrdersTiesAsTheSortDoes)
{
    struct
    {
        int n;
        double different;
        bool fractions, nan;
    } const cases[] = {
        {5000, 5000, false, false}, {5000, 40, false, false},  {5000, 2, false, false},
        {5000, 1, false, false},    {5000, 1e9, false, false}, {5000, 40, true, false},
        {5000, 900, true, false},   {900, 30, false, true},    {300, 3, false, false},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(testing::Message() << c.n << " rows, " << c.different << " scores");
        auto [x, y] = drawn(c.n, c.different, c.fractions);
        if (c.different == 1e9) x(18) = x(4001) = x(2501); // hardly any ties
        for (int i = 1; c.nan && i <= c.n; i += 50) x(i) = nan_value;
        matrix sorted = x, flags = y, rank = $(c.n);
        sort(sorted, flags, Ascending, 1);

        matrix of_ranks = separation(rank, flags);
        of_ranks(2) = sorted(int(of_ranks(2)));
        EXPECT_TRUE(same_bits(separation(x, y), of_ranks));
        EXPECT_EQ(AR(x, y, 1.0, 1, 0, 0), AR(rank, flags, 1.0, 1, 0, 0));
        for (int groups : {2, 7}) EXPECT_NEAR(IV(x, y, groups), IV(rank, flags, groups), rounding);
        del_rand_quality(sorted, flags);
        EXPECT_NEAR(AR(x, y, 1.0, 1, 1, 0), AR(rank, flags, 1.0, 1, 0, 0), rounding);
    }
}

TEST(Discrimination, RatesPerfectAndWrongModels)
{
    matrix const x("6; 1; 5; 2; 4; 3"), y("0; 1; 0; 1; 0; 0");
    EXPECT_TRUE(compare(separation(x, y), matrix("1 2 0 1")));
    for (double range : {1.0, 0.5, 0.34})
        for (int ideal : {0, 1}) EXPECT_DOUBLE_EQ(AR(x, y, range, ideal, 0, 0), 1);
    EXPECT_DOUBLE_EQ(AR(-x, y, 1.0, 1, 0, 0), -1);
    // reached in the last row; no absolute value is taken
    EXPECT_TRUE(compare(separation(-x, y), matrix("0 -1 1 1")));
    EXPECT_DOUBLE_EQ(AR(ones(6, 1), y, 1.0, 1, 1, 0), 0);
    // differences 0.5, 0.25, 0, 0.5, ...: the first of equal maxima
    EXPECT_TRUE(compare(separation($(6), matrix("1; 0; 0; 1; 0; 0")), matrix("0.5 1 0 0.5")));
}

TEST(Discrimination, IsNanForOneClassAndForNoRows)
{
    matrix const x("1; 2; 2"), none(0, 1), missing = "nan nan nan nan";
    for (sample const& s : {sample{x, zeros(3, 1)}, sample{x, ones(3, 1)}, sample{none, none},
                            sample{matrix(), matrix()}}) {
        EXPECT_TRUE(same_bits(separation(s.x, s.y), missing));
        EXPECT_TRUE(std::isnan(AR(s.x, s.y, 1.0, 1, 1, 0)));
        EXPECT_TRUE(std::isnan(AR(s.x, s.y, 0.5, 0, 1, 0)));
        EXPECT_TRUE(std::isnan(IV(s.x, s.y, 2)));
    }
    EXPECT_EQ(CAP(none, none, 1).rows, 0);
    EXPECT_EQ(CAP(matrix(), matrix(), 0).cols, 6);
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
    std::tuple<char const*, char const*, char const*> const cases[] = {
        {"0.5; 0; 0.75; 0.25", "0.5; 1; 1; 1", "0.5; 0.83333333333333333; 1; 1"}, // 1.5 bads
        {"1; 1; 1; 1", "0.25; 0.5; 0.75; 1", "0.25; 0.5; 0.75; 1"},               // as many as rows
        {"0.25; 0; 0; 0", "1; 1; 1; 1", "1; 1; 1; 1"},                            // rounded to none
    };
    for (auto const& [y, by_count, by_values] : cases) {
        EXPECT_TRUE(compare(CAP($(4), y, 1)[4], matrix(by_count)));
        EXPECT_TRUE(compare(CAP($(4), y, 2)[4], matrix(by_values)));
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
    EXPECT_EQ(test::show(TA(x, y, 3)), // every second row
              "4x5 Score Count Bads Acceptance Quality | .: 1 7 2 0.857143 0.285714"
              " | .: 3 5 1 0.571429 0.200000 | .: 5 3 0 0.285714 0 | .: 7 1 0 0 0");
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
    char const* const pair = "sort(matrix,matrix,Direction,int)";
    char const* const levelling = "void del_rand_quality(matrix,matrix)";
    char const* const shapes = "wektory maja niezgodne wymiary";
    char const* const columns = "oczekiwane wektory kolumnowe";
    char const* const groups = "liczba grup mniejsza niz 1";
    matrix a = x, b = y, c = row, d = row;
    double sx;
    test::refusal const cases[] = {
        {[&] { KS(x, y); }, pair, shapes},
        {[&] { AR(y, x, 1.0, 1, 0, 0); }, pair, shapes},
        {[&] { CAP(x, ~x, 1); }, pair, shapes},
        {[&] { IV(x, y, 2); }, pair, shapes},
        {[&] { TA(square, square, 2); }, "Vector sort(matrix,Direction,int)",
         "pierwszy argument nie jest wektorem"},
        {[&] { del_rand_quality(a, b); }, levelling, shapes},
        {[&] { del_rand_quality(c, d); }, levelling, columns},
        {[&] { KS_xy(row, row, sx, sx, sx); }, "double KS_xy(matrix,matrix,double,double,double)",
         columns},
        {[&] { KS(row, row); }, "double KS(matrix,matrix)", columns},
        {[&] { CAP(row, row, 1); }, "matrix CAP(matrix,matrix,int)", columns},
        {[&] { AR(row, row, 1.0, 1, 0, 0); }, "double AR(matrix,matrix,double,int,int,int)",
         columns},
        {[&] { IV(x, x, 0); }, "double IV(matrix,matrix,int)", groups},
        {[&] { IVa(x, x, -3); }, "double IVa(matrix,matrix,int)", groups},
    };
    test::expect_refusals("MATRIX", cases);
    char const* const ta = "table TA(matrix,matrix,int)";
    char const* const bins = "liczba przedzialow poza zakresem";
    test::refusal const tables[] = {
        {[&] { TA(row, row, 1); }, ta, columns},
        {[&] { TA(x, x, 0); }, ta, bins},
        {[&] { TA(x, x, 5); }, ta, bins},
    };
    test::expect_refusals("TABLE", tables);
}

} // namespace
