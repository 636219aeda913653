#include <varnow/containers/matrix_special.h>
#include <varnow/containers/slicing.h>
#include <varnow/containers/table.h>

#include "tests/support/containers.h"

#include <tuple>

using namespace varnow;
using namespace varnow::test;

TEST(TableConversions, WriteWholeNumbersWithinAnIntegerAsSuchAndReadAnyDecimalSign)
{
    std::pair<double, char const*> const written[] = {
        {2147483647.0, "2147483647"},          {3.5, "3.500000"},
        {2147483648.0, "2147483648.000000"},   {-0.0, "0"},
        {-2147483648.0, "-2147483648"},        {inf, "inf"},
        {-2147483649.0, "-2147483649.000000"}, {NaN, ""},
    };
    for (auto const& [x, cell] : written) EXPECT_STREQ(table(matrix(x)).cell[0][0].str, cell);
    table const read = c("1,5", "1.5", "abc", "", "-2e3", " 7 kg", "1,5,5");
    EXPECT_EQ(list(matrix(read)), (std::vector<double>{1.5, 1.5, 0, 0, -2e3, 7, 1.5}));
}

TEST(TableConversions, KeepSizesAndNames)
{
    matrix const m = grid<double>(2, 2);
    table const t = m;
    table copy(5, 1);
    copy.copy_matrix(m);
    for (table const& each : {t, copy}) EXPECT_EQ(show(each), show(grid<Text>(2, 2)));
    EXPECT_EQ(show(matrix(t)), show(m));
    copy.copy_table(c("a"));
    EXPECT_EQ(show(copy), "1x1 . | .: a");
    copy.delete_table();
    for (table const& none : {copy, table(matrix())}) EXPECT_EQ(show(none), "0x0");
}

TEST(TableCells, JoinAndChangeUnderTheNamesOfTheTable)
{
    table const t = grid<Text>(1, 2);
    table own = t, numbered(2, 2);
    own += own;
    own += own(1, 1); // the old cell throughout
    numbered.test("x", "k");
    expect_shown<table>({
        {t + c("x", ""), "1x2 c1 c2 | r1: 11x 12"},
        {"<" + t, "1x2 c1 c2 | r1: <11 <12"},
        {t + Text(">"), "1x2 c1 c2 | r1: 11> 12>"},
        {own, "1x2 c1 c2 | r1: 11111111 12121111"},
        {forall(t, [](Text x) { return x + "!"; }), "1x2 c1 c2 | r1: 11! 12!"},
        {forall(
             t, [](Text x, double y) { return x + itot(int(y)); }, 7.0),
         "1x2 c1 c2 | r1: 117 127"},
        {numbered, "2x2 xC1 xC2 | xR1: k1 k2 | xR2: k3 k4"},
    });
}

TEST(TableCells, StackAndGiveTheirNames)
{
    table const t = grid<Text>(2, 2);
    std::string const rows = "2x1 . | .: r1 | .: r2", cols = "1x2 . . | .: c1 c2";
    expect_shown<table>({
        {vect(t), "4x1 . | .: 11 | .: 21 | .: 12 | .: 22"},
        {rownames(t), rows},
        {colnames(t), cols},
        {rownames(matrix(t)), rows},
        {colnames(matrix(t)), cols},
        {c("a", t.colname(2), 3), "1x3 . . . | .: a c2 3"},
    });
}

TEST(TableSelect, KeepsOrLeavesOutTheLinesNamed)
{
    table const t = grid<Text>(2, 3);
    expect_shown<table>({
        {t.select(c("C3", "c1")), "2x2 c3 c1 | r1: 13 11 | r2: 23 21"},
        {t.select(c("c3", "c1"), 1, 1), "2x1 c2 | r1: 12 | r2: 22"},
        {t.select(c("r2", "R2"), 0), "2x3 c1 c2 c3 | r2: 21 22 23 | r2: 21 22 23"},
        {t.select(c("r2"), 0, 1), "1x3 c1 c2 c3 | r1: 11 12 13"},
        {t.select(table()), "0x0"},
        {t.select_if([](table const& x) { return int(x(1, 1) != "12"); }),
         "2x2 c1 c3 | r1: 11 13 | r2: 21 23"},
        {t.select_if([](table const&) { return 0; }), "0x0"},
    });
}

TEST(TableSort, OrdersByTheNumbersOfALine)
{
    std::tuple<int, char const*, Direction, int, char const*> const rows[] = {
        {1, "C1", Ascending, 1, "3x2 c1 c2 | r3: 1,5 z | r2: 9 x | r1: 10 y"},
        {1, "c1", Descending, 1, "3x2 c1 c2 | r1: 10 y | r2: 9 x | r3: 1,5 z"},
        {3, "r3", Ascending, 0, "3x2 c2 c1 | r1: y 10 | r2: x 9 | r3: z 1,5"}, // z reads as 0
    };
    table const t = named(c("10", "y") & c("9", "x") & c("1,5", "z"));
    for (auto const& [n, name, direction, by_column, sorted] : rows) {
        table by_number = t, by_name = t;
        by_number.sortval(n, direction, by_column);
        by_name.sortval(name, direction, by_column);
        EXPECT_EQ(show(by_number), sorted);
        EXPECT_EQ(show(by_name), sorted);
    }
}

TEST(TableDeathTest, RefusesWhatIsNotThere)
{
    table t = grid<Text>(2, 3);
    std::string const select = "table select(table,int,int)";
    std::string const number = "void sortval(int,Direction,int)",
                      name = "sortval(Text,Direction,int)";
    EXPECT_REFUSAL(t.select(table(2, 1)), "TABLE", select, "argument ma byc wektorem wierszowym");
    EXPECT_REFUSAL(t.select(c("c1", "x")), "TABLE", select,
                   "etykieta 'x' nie wystepuje w kolumnach");
    EXPECT_REFUSAL(t.select(c("c1"), 0), "TABLE", select,
                   "etykieta 'c1' nie wystepuje w wierszach");
    EXPECT_REFUSAL(t.sortval(0), "TABLE", number, "numer kolumny poza zakresem");
    EXPECT_REFUSAL(t.sortval(4), "TABLE", number, "numer kolumny poza zakresem");
    EXPECT_REFUSAL(t.sortval(3, Ascending, 0), "TABLE", number, "numer wiersza poza zakresem");
    EXPECT_REFUSAL(t.sortval("r1"), "TABLE", name, "nie znaleziono podanej kolumny");
    EXPECT_REFUSAL(t.sortval("c1", Ascending, 0), "TABLE", name, "nie znaleziono podanego wiersza");
    EXPECT_REFUSAL(t.sortval(1, static_cast<Direction>(2)), "MATRIX",
                   "Vector sort(matrix,Direction,int)", "nieprawidlowy kierunek sortowania");
}
