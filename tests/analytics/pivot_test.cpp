#include "../support/containers.h"

#include <varnow/varnow.h>

#include <algorithm>
#include <initializer_list>
#include <iterator>
#include <limits>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using namespace varnow;
using test::show;

double const nan_value = std::numeric_limits<double>::quiet_NaN();

matrix column(std::initializer_list<double> values, char const* name = "")
{
    matrix m(static_cast<int>(values.size()), 1);
    int i = 0;
    for (double x : values) m.cell[i++][0] = x;
    m.cnames[0] = name;
    return m;
}

table column(std::initializer_list<char const*> values, char const* name = "")
{
    table t(static_cast<int>(values.size()), 1);
    int i = 0;
    for (char const* x : values) t.cell[i++][0] = x;
    t.cnames[0] = name;
    return t;
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
    double const values[] = {0.0, -0.0, 1, 2, 3, nan_value};
    for (int kinds : {2, 5, 6})
        for (int round = 0; round < 50; ++round) {
            matrix x(1 + static_cast<int>(source() % 40), 1);
            for (int i = 0; i < x.rows; ++i)
                x.cell[i][0] = values[source() % static_cast<unsigned>(kinds)];
            matrix sorted = x;
            sort(sorted);
            std::string wanted;
            int n = 0;
            for (int i = 0; i < x.rows; ++i) {
                double const v = sorted.cell[i][0];
                if (i > 0 && v == sorted.cell[i - 1][0]) continue;
                wanted += " | .: " + show(dtot(v, 0));
                ++n;
            }
            ASSERT_EQ(show(levels(x)), std::to_string(n) + "x1 LEVELS" + wanted);
        }
}

TEST(Pivot, CountsTheLevelsOfAColumn)
{
    EXPECT_EQ(show(pivot(column({"b", "a", "b", ""}, "grade"))),
              "3x2 grade COUNT | .: . 1 | .: a 1 | .: b 2");
    EXPECT_EQ(show(pivot(column({2, -1, 2}))),
              "2x2 VAR COUNT | .: -1.000000000000 1 | .: 2.000000000000 2");
}

TEST(Pivot, TellsTextsApartThatDifferInOneByte)
{
    std::vector<std::string> texts;
    for (std::size_t n = 0; n <= 26; ++n)
        for (std::size_t k = 0; k <= n; ++k) {
            texts.emplace_back(n, 'a');
            if (k < n) texts.back()[k] = 'b';
        }
    table x(2 * static_cast<int>(texts.size()), 1);
    for (int i = 0; i < x.rows; ++i)
        x.cell[i][0] = texts[static_cast<std::size_t>(i) % texts.size()];
    std::sort(texts.begin(), texts.end());
    table const p = pivot(x);
    ASSERT_EQ(p.rows, static_cast<int>(texts.size()));
    for (int i = 0; i < p.rows; ++i) {
        EXPECT_EQ(p.cell[i][0], Text(texts[static_cast<std::size_t>(i)]));
        EXPECT_EQ(p.cell[i][1], "2");
    }
}

TEST(Pivot, HasARowForEveryCombinationTheLastVariableFastest)
{
    table const sex = column({"M", "F", "M", "M"}, "sex"), year = column({"1", "2", "2", "2"});
    EXPECT_EQ(show(pivot(sex, year)),
              "4x3 sex VAR2 COUNT | .: F 1 0 | .: F 2 1 | .: M 1 1 | .: M 2 2");
    EXPECT_EQ(show(pivot(column({1, 2}), column({5, 4}, "y"), column({7, 7}, "z"))),
              "4x4 VAR1 y z COUNT | .: 1.000000000000 4.000000000000 7.000000000000 0"
              " | .: 1.000000000000 5.000000000000 7.000000000000 1"
              " | .: 2.000000000000 4.000000000000 7.000000000000 1"
              " | .: 2.000000000000 5.000000000000 7.000000000000 0");
}

TEST(Pivot, CountsNumbersThatSixDecimalsTell)
{
    // 1/3 is not 0.333333, and the levels of 1e-9 and of the missing number are both 0, which one
    // cell is.
    EXPECT_EQ(show(pivot(column({1.0 / 3, 0.25}))),
              "2x2 VAR COUNT | .: 0.250000000000 1 | .: 0.333333000000 0");
    EXPECT_EQ(show(pivot(column({1e-9, 0}))),
              "2x2 VAR COUNT | .: 0.000000000000 1 | .: 0.000000000000 1");
    EXPECT_EQ(show(pivot(column({nan_value, 0}))),
              "2x2 VAR COUNT | .: 0.000000000000 1 | .: 0.000000000000 1");
}

// Cells that six decimals tell, or blur, or that equal nothing.
template <class T> data<T> sample(int rows, int kinds, std::mt19937& source)
{
    data<T> x(rows, 1);
    double const numbers[] = {4, -2.5, 1e15, 1.0 / 3, 1e-9, 2e-9, 0.0, -0.0, nan_value};
    char const* const texts[] = {"4", "4.0", "", "a", "A", "ab", "\xEA", "0", "-"};
    for (int i = 0; i < rows; ++i) {
        auto const k = source() % static_cast<unsigned>(kinds);
        if constexpr (std::is_same<T, double>::value)
            x.cell[i][0] = numbers[k];
        else
            x.cell[i][0] = texts[k];
    }
    return x;
}

// The levels as pivot counts by them: numbers as their texts tell.
template <class T> std::vector<T> keys_of(data<T> const& x)
{
    std::conditional_t<std::is_same<T, double>::value, matrix, table> const l = levels(x);
    std::vector<T> keys;
    for (int k = 1; k <= l.rows; ++k) keys.push_back(l(k));
    return keys;
}

template <class T> class PivotOf : public testing::Test
{
};
TYPED_TEST_SUITE(PivotOf, test::CellTypes);

TYPED_TEST(PivotOf, AgreesWithAScanForEachCombination)
{
    using T = TypeParam;
    std::mt19937 source(9);
    for (int kinds : {1, 3, 6, 9})
        for (int rows : {1, 2, 70}) {
            data<T> const x = sample<T>(rows, kinds, source), y = sample<T>(rows, kinds, source),
                          z = sample<T>(rows, 3, source);
            std::string one, two, three;
            int n = 0;
            auto line = [](std::initializer_list<T> levels_here, int count) {
                std::string s = " | .:";
                for (T const& level : levels_here) s += " " + show(Text(level));
                return s + " " + std::to_string(count);
            };
            for (T const& a : keys_of(x)) {
                int in_a = 0;
                for (int i = 0; i < rows; ++i) in_a += x.cell[i][0] == a;
                one += line({a}, in_a);
                for (T const& b : keys_of(y)) {
                    int in_b = 0;
                    for (int i = 0; i < rows; ++i) in_b += x.cell[i][0] == a && y.cell[i][0] == b;
                    two += line({a, b}, in_b);
                    for (T const& c : keys_of(z)) {
                        int in_c = 0;
                        for (int i = 0; i < rows; ++i)
                            in_c += x.cell[i][0] == a && y.cell[i][0] == b && z.cell[i][0] == c;
                        three += line({a, b, c}, in_c);
                        ++n;
                    }
                }
            }
            auto rows_of = [](table const& t) {
                std::string const s = show(t);
                return s.substr(s.find(" | "));
            };
            ASSERT_EQ(rows_of(pivot(x)), one);
            ASSERT_EQ(rows_of(pivot(x, y)), two);
            ASSERT_EQ(rows_of(pivot<T>(x, y, z)), three);
            ASSERT_EQ(pivot(x, y, z).rows, n);
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
    struct
    {
        double x;
        char const *right, *left;
    } const cases[] = {
        {-1e300, "(-Inf,5.00]", "[-Inf,5.00)"},
        {5, "(-Inf,5.00]", "[5.00,7.50)"},
        {5.001, "(5.00,7.50]", "[5.00,7.50)"},
        {7.5, "(5.00,7.50]", "[7.50,10.00)"},
        {10, "(7.50,10.00]", "[10.00,Inf]"},
        {1e300, "(10.00,Inf]", "[10.00,Inf]"},
        {nan_value, "", ""},
    };
    matrix x(static_cast<int>(std::size(cases)), 1);
    table texts(x.rows, 1);
    x.colname(1) = texts.colname(1) = "age";
    x.rowname(2) = texts.rowname(2) = "anna";
    for (int i = 0; i < x.rows; ++i) {
        x.cell[i][0] = cases[i].x;
        texts.cell[i][0] = replace(Text(cases[i].x), '.', ',');
    }
    for (matrix const& breaks : {matrix("5 7.5 10"), matrix("5; 7.5; 10")})
        for (table const& right : {cut(x, breaks, 0), cut(texts, breaks)}) {
            table const left = cut(texts, breaks, -1);
            EXPECT_EQ(right.colname(1), "CUT");
            EXPECT_EQ(right.rowname(2), "anna");
            EXPECT_EQ(right.cols, 1);
            for (int i = 0; i < x.rows; ++i) {
                EXPECT_EQ(right(i + 1), cases[i].right);
                EXPECT_EQ(left(i + 1), cases[i].left);
            }
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
}

std::string calls;
matrix notes(matrix const& m)
{
    calls += show(m) + ";";
    return sum(m);
}

TEST(Apply, CallsTheFunctionOnceForEachLevelWithTheRowsInOrder)
{
    matrix x = column({3, 1, 2, 5, 4}, "x");
    x.rowname(1) = "r";
    calls = "";
    apply(x, column({"q", "p", "q", "q", "p"}), notes);
    EXPECT_EQ(calls, "2x1 . | .: 1 | .: 4;3x1 . | .: 3 | .: 2 | .: 5;");
}

matrix two(matrix const&)
{
    return matrix("1 2");
}

TEST(PivotDeathTest, RefusesWhatIsNoColumnOfData)
{
    matrix const x = column({1, 2}), wide(2, 2), longer = column({1, 2, 3}), none(0, 1);
    table const i = column({"a", "b"});
    char const* const not_column = "oczekiwana kolumna danych";
    char const* const empty = "puste dane";
    char const* const lengths = "niezgodne dlugosci danych";
    auto expect = [](auto call, char const* routine, char const* message) {
        SCOPED_TRACE(std::string(routine) + ": " + message);
        EXPECT_REFUSAL(call(), "TABLE", routine, message);
    };
    expect([&] { levels(matrix(0, 2)); }, "table levels(data)", not_column);
    expect([&] { levels(table(0, 1)); }, "table levels(data)", empty);
    expect([&] { levels(matrix(3, 0)); }, "table levels(data)", empty);
    expect([&] { pivot(table(2, 2)); }, "table pivot(data)", not_column);
    expect([&] { pivot(table()); }, "table pivot(data)", empty);

    char const* const argument[] = {"pierwszy argument musi byc kolumna danych",
                                    "drugi argument musi byc kolumna danych",
                                    "trzeci argument musi byc kolumna danych"};
    expect([&] { pivot(wide, matrix()); }, "table pivot(data,data)", argument[0]);
    expect([&] { pivot(longer, wide); }, "table pivot(data,data)", argument[1]);
    expect([&] { pivot(x, longer); }, "table pivot(data,data)", lengths);
    expect([&] { pivot(none, none); }, "table levels(data)", empty);
    char const* const of_three = "table pivot(data,data,data)";
    expect([&] { pivot(matrix(), wide, wide); }, of_three, argument[0]);
    expect([&] { pivot(longer, wide, wide); }, of_three, argument[1]);
    expect([&] { pivot(longer, x, wide); }, of_three, argument[2]);
    expect([&] { pivot(x, longer, x); }, of_three, lengths);
    expect([&] { pivot(x, x, longer); }, of_three, lengths);

    char const* const of_cut = "table cut(data,matrix,int)";
    char const* const no_break = "potrzebna przynajmniej jedna granica przedzialow";
    char const* const no_vector = "oczekiwany wektor definiujacy przedzialy";
    expect([&] { cut(matrix(0, 2), matrix(), 0); }, of_cut, not_column);
    expect([&] { cut(none, matrix(), 0); }, of_cut, empty);
    expect([&] { cut(x, matrix(), 0); }, of_cut, no_vector);
    expect([&] { cut(i, wide, 0); }, of_cut, no_vector);
    expect([&] { cut(x, matrix(1, 0), 0); }, of_cut, no_break);
    expect([&] { cut(x, matrix(0, 1), 1); }, of_cut, no_break);

    char const* const of_apply = "table apply(data,table,matrix f(matrix))";
    matrix (*const nothing)(matrix const&) = nullptr;
    expect([&] { apply(matrix(0, 2), i, nothing); }, of_apply, not_column);
    expect([&] { apply(none, table(), nothing); }, of_apply, empty);
    expect([&] { apply(x, table(3, 2), nothing); }, of_apply, "oczekiwana kolumna indeksujaca");
    expect([&] { apply(longer, i, nothing); }, of_apply,
           "dlugosc indeksu niezgodna z dlugoscia danych");
    expect([&] { apply(i, i, nothing); }, of_apply, "brak funkcji");
    expect([&] { apply(x, i, nullptr, 0.5); }, of_apply, "brak funkcji");
    EXPECT_REFUSAL(apply(x, i, two), "MATRIX", "operator double()", "konwersja niemozliwa");
}

} // namespace
