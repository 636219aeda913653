#include "tests/analytics/columns.h"

#include <algorithm>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace varnow;
using test::column;
using test::show;

double const nan_value = std::numeric_limits<double>::quiet_NaN();

// n of the values, drawn with replacement.
template <class T> auto drawn(int n, std::initializer_list<T> values, std::mt19937& source)
{
    auto x = ~rep(column({*values.begin()}), n);
    for (int i = 1; i <= n; ++i) x(i) = values.begin()[source() % values.size()];
    return x;
}

TEST(Levels, AreTheDistinctCellsInAscendingOrder)
{
    EXPECT_EQ(show(levels(column({3, 1, 3}, "x"))), "2x1 LEVELS | .: 1.000000 | .: 3.000000");
    // Texts order by signed bytes, a prefix first, and not as numbers; case counts.
    EXPECT_EQ(show(levels(column({"b", "10", "9", "", "b", "\xB1", "1", "B"}))),
              "7x1 LEVELS | .: . | .: \xB1 | .: 1 | .: 10 | .: 9 | .: B | .: b");
    EXPECT_EQ(show(levels(matrix(7.0))), "1x1 LEVELS | .: 7.000000");
    EXPECT_EQ(show(levels<double>(column({2.5, -1e-9, 2.5}))),
              "2x1 LEVELS | .: -0.000000 | .: 2.500000");
}

TEST(Levels, KeepEveryNanAndOneOfTheZerosAsTheSortLeavesThem)
{
    // The steps themselves: sort, then the first of each run of equal cells.
    std::mt19937 source(5);
    for (int round = 0; round < 150; ++round) {
        int const n = 1 + static_cast<int>(source() % 40);
        matrix x = round % 2 ? drawn(n, {0.0, -0.0, 1.0, 2.0, nan_value}, source)
                             : drawn(n, {0.0, -0.0, 1.0}, source);
        table const found = levels(x);
        sort(x);
        std::string wanted;
        for (int i = 1; i <= n; ++i)
            if (i == 1 || x(i) != x(i - 1)) wanted += " | .: " + show(dtot(x(i), 0));
        ASSERT_EQ(show(found), std::to_string(found.rows) + "x1 LEVELS" + wanted);
    }
}

TEST(Pivot, CountsEveryCombinationOfLevelsTheLastVariableFastest)
{
    EXPECT_EQ(show(pivot(column({"b", "a", "b", ""}, "grade"))),
              "3x2 grade COUNT | .: . 1 | .: a 1 | .: b 2");
    EXPECT_EQ(show(pivot(column({2, -1, 2}))),
              "2x2 VAR COUNT | .: -1.000000000000 1 | .: 2.000000000000 2");
    table const sex = column({"M", "F", "M", "M"}, "sex"), year = column({"1", "2", "2", "2"});
    EXPECT_EQ(show(pivot(sex, year)),
              "4x3 sex VAR2 COUNT | .: F 1 0 | .: F 2 1 | .: M 1 1 | .: M 2 2");
}

TEST(Pivot, TellsTextsApartThatDifferInOneByte)
{
    std::vector<std::string> texts;
    for (std::size_t n = 0; n <= 26; ++n)
        for (std::size_t k = 0; k <= n; ++k) {
            texts.emplace_back(n, 'a');
            if (k < n) texts.back()[k] = 'b';
        }
    std::sort(texts.begin(), texts.end());
    int const n = static_cast<int>(texts.size());
    table x(n, 1);
    std::string wanted = std::to_string(n) + "x2 VAR COUNT";
    for (int i = 0; i < n; ++i) {
        x.cell[i][0] = texts[static_cast<std::size_t>(i)];
        wanted += " | .: " + show(x.cell[i][0]) + " 2";
    }
    EXPECT_EQ(show(pivot(x & flipud(x))), wanted);
}

TEST(Pivot, CountsNumbersThatSixDecimalsTell)
{
    // 1/3 is not 0.333333, and the levels of 1e-9 and of the missing number are both 0, which one
    // cell is.
    EXPECT_EQ(show(pivot(column({1.0 / 3, 0.25}))),
              "2x2 VAR COUNT | .: 0.250000000000 1 | .: 0.333333000000 0");
    EXPECT_EQ(show(pivot(column({1e-9, 0.0}))),
              "2x2 VAR COUNT | .: 0.000000000000 1 | .: 0.000000000000 1");
    EXPECT_EQ(show(pivot(column({nan_value, 0.0}))),
              "2x2 VAR COUNT | .: 0.000000000000 1 | .: 0.000000000000 1");
}

// Of texts, and of numbers that six decimals tell, or blur, or that equal nothing.
template <class M> void expect_counts(M const& x, M const& y, M const& z)
{
    // Numbers count by what their texts tell.
    M const a = M(levels(x)), b = M(levels(y)), c = M(levels(z));
    std::string wanted;
    for (int i = 1; i <= a.rows; ++i)
        for (int j = 1; j <= b.rows; ++j)
            for (int k = 1; k <= c.rows; ++k) {
                int n = 0;
                for (int r = 1; r <= x.rows; ++r) n += x(r) == a(i) && y(r) == b(j) && z(r) == c(k);
                wanted += " | .: " + show(Text(a(i))) + " " + show(Text(b(j))) + " " +
                          show(Text(c(k))) + " " + std::to_string(n);
            }
    table const p = pivot(x, y, z);
    ASSERT_EQ(show(p), std::to_string(p.rows) + "x4 VAR1 VAR2 VAR3 COUNT" + wanted);
}

TEST(Pivot, AgreesWithAScanForEachCombination)
{
    std::mt19937 source(9);
    auto const numbers = {4.0, -2.5, 1e15, 1.0 / 3, 1e-9, 2e-9, 0.0, -0.0, nan_value};
    auto const texts = {"4", "4.0", "", "a", "A", "ab", "\xEA", "0", "-"};
    for (int n : {1, 2, 70}) {
        expect_counts(drawn(n, numbers, source), drawn(n, {7.0, 0.5}, source),
                      drawn(n, numbers, source));
        expect_counts(drawn(n, texts, source), drawn(n, {"x", "y"}, source),
                      drawn(n, texts, source));
    }
}

TEST(Pivot, CountsAsManyLevelsAsThereAre)
{
    // A scan for each of 100,000 levels would not end within anybody's patience.
    int const n = 200000;
    matrix x(n, 1);
    for (int i = 0; i < n; ++i) x.cell[i][0] = static_cast<int>(i * 7919LL % (n / 2));
    table const p = pivot(x), a = apply(x, table(x), mean);
    ASSERT_EQ(p.rows, n / 2);
    ASSERT_EQ(a.rows, n / 2);
    for (int i = 1; i <= p.rows; ++i) ASSERT_EQ(p(i, 2), "2");
}

TEST(Cut, LabelsTheIntervalsClosedAtEitherSide)
{
    matrix x = column({-1e300, 5.0, 5.001, 7.5, 10.0, 1e300, nan_value}, "age");
    table texts = column({"-9", "5", "5,001", "7.5", "10", "1e300", ""}, "age");
    x.rowname(2) = texts.rowname(2) = "anna";
    std::string const right =
        "7x1 CUT | .: (-Inf,5.00] | anna: (-Inf,5.00] | .: (5.00,7.50] | .: (5.00,7.50]"
        " | .: (7.50,10.00] | .: (10.00,Inf] | .: .";
    std::string const left =
        "7x1 CUT | .: [-Inf,5.00) | anna: [5.00,7.50) | .: [5.00,7.50) | .: [7.50,10.00)"
        " | .: [10.00,Inf] | .: [10.00,Inf] | .: .";
    for (matrix const& breaks : {matrix("5 7.5 10"), matrix("5; 7.5; 10")}) {
        EXPECT_EQ(show(cut(x, breaks, 0)), right);
        EXPECT_EQ(show(cut(texts, breaks)), right);
        EXPECT_EQ(show(cut(x, breaks, 1)), left);
        EXPECT_EQ(show(cut(texts, breaks, -1)), left);
    }
    EXPECT_EQ(show(cut(column({1, 2, 3}), 2.0, 0)),
              "3x1 CUT | .: (-Inf,2.00] | .: (-Inf,2.00] | .: (2.00,Inf]");
}

TEST(Cut, StopsAtTheFirstBreakThatIsNotPassed)
{
    // Breaks out of order, and one that nothing can be compared with.
    EXPECT_EQ(show(cut(column({4, 6, 9}), matrix("5 8 3"), 0)),
              "3x1 CUT | .: (-Inf,5.00] | .: (5.00,8.00] | .: (3.00,Inf]");
    matrix breaks("5 0 8");
    breaks(2) = nan_value;
    EXPECT_EQ(show(cut(column({4, 9}), breaks, 0)), "2x1 CUT | .: (-Inf,5.00] | .: (5.00,]");
    EXPECT_EQ(show(cut(column({4, 9}), nan_value, 1)), "2x1 CUT | .: . | .: .");
    EXPECT_EQ(show(cut(column({5, 6}), matrix("5 5 6"), 1)),
              "2x1 CUT | .: [5.00,6.00) | .: [6.00,Inf]");
}

TEST(Apply, TakesTheCellsAtEachLevelOfTheIndex)
{
    table const index = column({"b", "a", "b", ""}, "group");
    EXPECT_EQ(show(apply(column({1, 2, 4, 8}, "x"), index, mean)),
              "3x2 group x | .: . 8.000000 | .: a 2.000000 | .: b 2.500000");
    // An empty text cell is a missing number and not 0; a missing result is an empty cell.
    table const texts = column({"1,5", "", "", "3"});
    EXPECT_EQ(show(apply(texts, index, count)),
              "3x2 group VALUE | .: . 1.000000 | .: a 0.000000 | .: b 1.000000");
    EXPECT_EQ(show(apply(texts, index, sum)), "3x2 group VALUE | .: . 3.000000 | .: a . | .: b .");
    EXPECT_EQ(show(apply(column({1, 2, 4, 8}), column({"b", "b", "b", "b"}), quantile, 0.5)),
              "1x2 VAR VALUE | .: b 3.000000");
    // The function is called once for each level, with the rows in their order.
    matrix x = column({3, 1, 2, 5, 4}, "x");
    x.rowname(1) = "r";
    test::calls = "";
    apply(x, column({"q", "p", "q", "q", "p"}), test::notes);
    EXPECT_EQ(test::calls, "2x1 . | .: 1 | .: 4;3x1 . | .: 3 | .: 2 | .: 5;");
}

TEST(PivotDeathTest, RefusesWhatIsNoColumnOfData)
{
    matrix const x = column({1, 2}), wide(2, 2), longer = column({1, 2, 3}), none(0, 1);
    table const i = column({"a", "b"});
    char const* const not_column = "oczekiwana kolumna danych";
    char const* const empty = "puste dane";
    char const* const lengths = "niezgodne dlugosci danych";
    char const* const of_two = "table pivot(data,data)";
    char const* const of_three = "table pivot(data,data,data)";
    char const* const of_levels = "table levels(data)";
    char const* const of_cut = "table cut(data,matrix,int)";
    char const* const of_apply = "table apply(data,table,matrix f(matrix))";
    char const* const no_break = "potrzebna przynajmniej jedna granica przedzialow";
    char const* const no_vector = "oczekiwany wektor definiujacy przedzialy";
    char const* const argument[] = {"pierwszy argument musi byc kolumna danych",
                                    "drugi argument musi byc kolumna danych",
                                    "trzeci argument musi byc kolumna danych"};
    matrix (*const nothing)(matrix const&) = nullptr;
    test::refusal const cases[] = {
        {[&] { levels(matrix(0, 2)); }, of_levels, not_column},
        {[&] { levels(table(0, 1)); }, of_levels, empty},
        {[&] { levels(matrix(3, 0)); }, of_levels, empty},
        {[&] { pivot(table(2, 2)); }, "table pivot(data)", not_column},
        {[&] { pivot(table()); }, "table pivot(data)", empty},
        {[&] { pivot(wide, matrix()); }, of_two, argument[0]},
        {[&] { pivot(longer, wide); }, of_two, argument[1]},
        {[&] { pivot(x, longer); }, of_two, lengths},
        {[&] { pivot(none, none); }, of_levels, empty},
        {[&] { pivot(matrix(), wide, wide); }, of_three, argument[0]},
        {[&] { pivot(longer, wide, wide); }, of_three, argument[1]},
        {[&] { pivot(longer, x, wide); }, of_three, argument[2]},
        {[&] { pivot(x, longer, x); }, of_three, lengths},
        {[&] { pivot(x, x, longer); }, of_three, lengths},
        {[&] { cut(matrix(0, 2), matrix(), 0); }, of_cut, not_column},
        {[&] { cut(none, matrix(), 0); }, of_cut, empty},
        {[&] { cut(x, matrix(), 0); }, of_cut, no_vector},
        {[&] { cut(i, wide, 0); }, of_cut, no_vector},
        {[&] { cut(x, matrix(1, 0), 0); }, of_cut, no_break},
        {[&] { cut(x, matrix(0, 1), 1); }, of_cut, no_break},
        {[&] { apply(matrix(0, 2), i, nothing); }, of_apply, not_column},
        {[&] { apply(none, table(), nothing); }, of_apply, empty},
        {[&] { apply(x, table(3, 2), nothing); }, of_apply, "oczekiwana kolumna indeksujaca"},
        {[&] { apply(longer, i, nothing); }, of_apply,
         "dlugosc indeksu niezgodna z dlugoscia danych"},
        {[&] { apply(i, i, nothing); }, of_apply, "brak funkcji"},
        {[&] { apply(x, i, nullptr, 0.5); }, of_apply, "brak funkcji"},
    };
    test::expect_refusals("TABLE", cases);
    EXPECT_REFUSAL(apply(x, i, test::two), "MATRIX", "operator double()", "konwersja niemozliwa");
}

} // namespace
