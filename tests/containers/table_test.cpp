#include <varnow/containers/compare.h>
#include <varnow/containers/matrix_arithmetic.h>
#include <varnow/containers/matrix_special.h>
#include <varnow/containers/table.h>

#include "tests/support/containers.h"

#include <cmath>
#include <limits>

using namespace varnow;
using test::grid;
using test::show;

namespace {

// One row without names.
table row(std::initializer_list<char const*> cells)
{
    table r(1, static_cast<int>(cells.size()));
    int j = 0;
    for (char const* x : cells) r.cell[0][j++] = x;
    return r;
}

} // namespace

TEST(TableConversions, WriteWholeNumbersWithinAnIntegerAsSuch)
{
    struct
    {
        double x;
        char const* cell;
    } const rows[] = {
        {3, "3"},
        {3.5, "3.500000"},
        {-0.0, "0"},
        {2147483647, "2147483647"},
        {2147483648.0, "2147483648.000000"},
        {-2147483648.0, "-2147483648"},
        {-2147483649.0, "-2147483649.000000"},
        {1e10, "10000000000.000000"},
        {std::numeric_limits<double>::infinity(), "inf"},
        {std::nan(""), ""},
    };
    for (auto const& row : rows) EXPECT_STREQ(table(matrix(row.x)).cell[0][0].str, row.cell);
}

TEST(TableConversions, ReadNumbersAsTheCLibraryWithAnyDecimalSign)
{
    struct
    {
        char const* cell;
        double x;
    } const rows[] = {{"1,5", 1.5},   {"1.5", 1.5}, {"abc", 0},    {"", 0},
                      {"-2e3", -2e3}, {" 7 kg", 7}, {"1,5,5", 1.5}};
    for (auto const& r : rows) EXPECT_EQ(matrix(row({r.cell})).cell[0][0], r.x) << r.cell;
}

TEST(TableConversions, KeepSizesAndNames)
{
    matrix const m = grid<double>(2, 2);
    table const texts = grid<Text>(2, 2);
    table t = m;
    EXPECT_EQ(show(t), show(texts));
    EXPECT_EQ(show(matrix(t)), show(m));
    table copy(5, 1);
    copy.copy_matrix(m);
    EXPECT_EQ(show(copy), show(texts));
    copy.copy_table(row({"a"}));
    EXPECT_EQ(show(copy), "1x1 . | .: a");
    copy.delete_table();
    EXPECT_EQ(show(copy), "0x0");
    EXPECT_EQ(show(table(matrix())), "0x0");
}

TEST(TableCells, JoinWithTheNamesOfTheTable)
{
    table const t = grid<Text>(1, 2);
    table other = row({"x", ""});
    EXPECT_EQ(show(t + other), "1x2 c1 c2 | r1: 11x 12");
    EXPECT_EQ(show("<" + t), "1x2 c1 c2 | r1: <11 <12");
    EXPECT_EQ(show(t + Text(">")), "1x2 c1 c2 | r1: 11> 12>");
    table own = t;
    own += own;
    EXPECT_EQ(show(own), "1x2 c1 c2 | r1: 1111 1212");
    own += own(1, 1); // the old cell throughout
    EXPECT_EQ(show(own), "1x2 c1 c2 | r1: 11111111 12121111");
    EXPECT_EQ(show(forall(t, [](Text x) { return x + "!"; })), "1x2 c1 c2 | r1: 11! 12!");
    EXPECT_EQ(show(forall(
                  t, [](Text x, double y) { return x + itot(int(y)); }, 7.0)),
              "1x2 c1 c2 | r1: 117 127");
}

TEST(TableCells, TestNumbersTheCellsRowByRow)
{
    table t(2, 2);
    t.test("x", "k");
    EXPECT_EQ(show(t), "2x2 xC1 xC2 | xR1: k1 k2 | xR2: k3 k4");
}

TEST(TableCells, TellTheTruthOfTheWhole)
{
    table symmetric(2, 2), crooked(2, 2), tall(3, 1);
    symmetric(1, 2) = symmetric(2, 1) = crooked(1, 2) = "a";
    struct
    {
        table t;
        bool any, all, empty, square, symmetric;
    } const rows[] = {
        {table(), 0, 1, 1, 1, 1},        {row({""}), 0, 0, 0, 1, 1},
        {row({"", "0"}), 1, 0, 0, 0, 1}, {row({"a", "b"}), 1, 1, 0, 0, 1},
        {symmetric, 1, 0, 0, 1, 1},      {crooked, 1, 0, 0, 1, 0},
        {tall, 0, 0, 0, 0, 1},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(show(row.t));
        EXPECT_EQ(any(row.t), row.any);
        EXPECT_EQ(all(row.t), row.all);
        EXPECT_EQ(isempty(row.t), row.empty);
        EXPECT_EQ(issqr(row.t), row.square);
        EXPECT_EQ(issym(row.t), row.symmetric);
    }
}

TEST(TableCells, StackAndGiveTheirNames)
{
    table const t = grid<Text>(2, 2);
    EXPECT_EQ(show(vect(t)), "4x1 . | .: 11 | .: 21 | .: 12 | .: 22");
    EXPECT_EQ(show(rownames(t)), "2x1 . | .: r1 | .: r2");
    EXPECT_EQ(show(colnames(t)), "1x2 . . | .: c1 c2");
    EXPECT_EQ(show(rownames(matrix(t))), "2x1 . | .: r1 | .: r2");
    EXPECT_EQ(show(colnames(matrix(t))), "1x2 . . | .: c1 c2");
    EXPECT_EQ(show(c("a", t.colname(2), 3)), "1x3 . . . | .: a c2 3");
}

TEST(TableSelect, KeepsOrLeavesOutTheLinesNamed)
{
    table const t = grid<Text>(2, 3);
    EXPECT_EQ(show(t.select(c("C3", "c1"))), "2x2 c3 c1 | r1: 13 11 | r2: 23 21");
    EXPECT_EQ(show(t.select(c("c3", "c1"), 1, 1)), "2x1 c2 | r1: 12 | r2: 22");
    EXPECT_EQ(show(t.select(c("r2", "R2"), 0)), "2x3 c1 c2 c3 | r2: 21 22 23 | r2: 21 22 23");
    EXPECT_EQ(show(t.select(c("r2"), 0, 1)), "1x3 c1 c2 c3 | r1: 11 12 13");
    EXPECT_EQ(show(t.select(table())), "0x0");
    EXPECT_EQ(show(t.select_if([](table const& x) { return int(x(1, 1) != "12"); })),
              "2x2 c1 c3 | r1: 11 13 | r2: 21 23");
    EXPECT_EQ(show(t.select_if([](table const&) { return 0; })), "0x0");
}

TEST(TableSort, OrdersByTheNumbersOfALine)
{
    struct
    {
        int n;
        char const* name;
        Direction direction;
        int by_column;
        char const* sorted;
    } const rows[] = {
        {1, "C1", Ascending, 1, "3x2 c1 c2 | r3: 1,5 z | r2: 9 x | r1: 10 y"},
        {1, "c1", Descending, 1, "3x2 c1 c2 | r1: 10 y | r2: 9 x | r3: 1,5 z"},
        {3, "r3", Ascending, 0, "3x2 c2 c1 | r1: y 10 | r2: x 9 | r3: z 1,5"}, // z reads as 0
    };
    table t = grid<Text>(3, 2);
    char const* const cells[] = {"10", "y", "9", "x", "1,5", "z"};
    for (int k = 0; k < 6; ++k) t.cell[k / 2][k % 2] = cells[k];
    for (auto const& row : rows) {
        table by_number = t, by_name = t;
        by_number.sortval(row.n, row.direction, row.by_column);
        by_name.sortval(row.name, row.direction, row.by_column);
        EXPECT_EQ(show(by_number), row.sorted);
        EXPECT_EQ(show(by_name), row.sorted);
    }
}

TEST(TableDeathTest, RefusesWhatIsNotThere)
{
    table t = grid<Text>(2, 3), other(1, 3);
    std::string const select = "table select(table,int,int)",
                      number = "void sortval(int,Direction,int)",
                      name = "sortval(Text,Direction,int)";
    EXPECT_REFUSAL(t.select(table(2, 1)), "TABLE", select, "argument ma byc wektorem wierszowym");
    EXPECT_REFUSAL(t.select(c("c1", "no")), "TABLE", select,
                   "etykieta 'no' nie wystepuje w kolumnach");
    EXPECT_REFUSAL(t.select(c("c1"), 0), "TABLE", select,
                   "etykieta 'c1' nie wystepuje w wierszach");
    for (int n : {0, 4})
        EXPECT_REFUSAL(t.sortval(n), "TABLE", number, "numer kolumny poza zakresem");
    for (int n : {0, 3})
        EXPECT_REFUSAL(t.sortval(n, Ascending, 0), "TABLE", number, "numer wiersza poza zakresem");
    EXPECT_REFUSAL(t.sortval("r1"), "TABLE", name, "nie znaleziono podanej kolumny");
    EXPECT_REFUSAL(t.sortval("c1", Ascending, 0), "TABLE", name, "nie znaleziono podanego wiersza");
    EXPECT_REFUSAL(t.sortval(1, static_cast<Direction>(2)), "MATRIX",
                   "Vector sort(matrix,Direction,int)", "nieprawidlowy kierunek sortowania");
    EXPECT_REFUSAL(t + other, "TABLE", "table operator +(table,table)",
                   "niezgodne wymiary obiektow");
    EXPECT_REFUSAL(t += other, "TABLE", "operator +=(table)", "niezgodne wymiary obiektow");
}
