#include <varnow/containers/table.h>

#include "tests/support/containers.h"

#include <algorithm>
#include <climits>
#include <utility>
#include <vector>

using namespace varnow;
using namespace varnow::test;

namespace {

template <class T> class Access : public testing::Test
{
};
template <class T> using AccessDeathTest = Access<T>;
TYPED_TEST_SUITE(Access, CellTypes);
TYPED_TEST_SUITE(AccessDeathTest, CellTypes);

} // namespace

TYPED_TEST(Access, ReachesCellsAndColumnsByNumbersAndNames)
{
    using T = TypeParam;
    data<T> a = grid<T>(2, 3);
    data<T> const& same = a;
    a(2, 3) = cell<T>(7);
    a.rowname(2) = "b";
    a.colname(3) = "A";
    for (T const* found : std::vector<T const*>{&a("B", "a"), &a(2, "a"), &a("B", 3), &same(2, 3),
                                                &same("B", "a"), &same(2, "a"), &same("B", 3)})
        EXPECT_EQ(found, &a.cell[1][2]);
    EXPECT_EQ(grid<T>(1, 3)(2), cell<T>(12));
    EXPECT_EQ(grid<T>(3, 1)(2), cell<T>(21));
    EXPECT_EQ(grid<T>(1, 1)(1), cell<T>(11));
    EXPECT_EQ(show(a[2]), "2x1 c2 | r1: 12 | b: 22");
    EXPECT_EQ(show(a["a"]), "2x1 a | r1: 13 | b: 7") << "the name as given";
    EXPECT_EQ(show(a[Text("c1")]), "2x1 c1 | r1: 11 | b: 21");
}

TYPED_TEST(AccessDeathTest, RefusesWhatIsNotThere)
{
    using T = TypeParam;
    data<T> a = grid<T>(2, 3), row = grid<T>(1, 2), column = grid<T>(3, 1);
    data<T> const& same = a;
    std::string const at = "_T_ & operator ()", along = at + "(int)",
                      range = "indeks poza zakresem",
                      shape = "oczekiwany wektor kolumnowy lub wierszowy",
                      no_row = "nie znaleziono wiersza", no_column = "nie znaleziono kolumny",
                      search = "int find_cell(_T_,int,int)",
                      start = "wiersz startowy jest poza zakresem";
    expect_refusals_of<T>({
        {[&] { a(3, 1); }, at + "(int,int)", range, "2 x 3 : ( 3 , 1 )"},
        {[&] { a(0, 1); }, at + "(int,int)", range, "2 x 3 : ( 0 , 1 )"},
        {[&] { same(1, 4); }, at + "(int,int)", range, "2 x 3 : ( 1 , 4 )"},
        {[&] { a(INT_MIN, INT_MAX); }, at + "(int,int)", range,
         "2 x 3 : ( -2147483648 , 2147483647 )"},
        {[&] { a(9); }, along, shape},
        {[&] { data<T>(1, 0)(1); }, along, shape},
        {[&] { data<T>(0, 1)(1); }, along, shape},
        {[&] { row(3); }, along, range, "1 x 2 : ( 3 )"},
        {[&] { column(0); }, along, range, "3 x 1 : ( 0 )"},
        {[&] { a(3, "x"); }, at + "(int,Text)", "numer wiersza poza zakresem", "2 x 3 : ( 3 , x )"},
        {[&] { a(1, "x"); }, at + "(int,Text)", no_column, "2 x 3 : ( 1 , x )"},
        {[&] { a("x", 4); }, at + "(Text,int)", "numer kolumny poza zakresem", "2 x 3 : ( x , 4 )"},
        {[&] { a("x", 1); }, at + "(Text,int)", no_row, "2 x 3 : ( x , 1 )"},
        {[&] { a("x", "y"); }, at + "(Text,Text)", no_row, "2 x 3 : ( x , y )"},
        {[&] { a("R1", "y"); }, at + "(Text,Text)", no_column, "2 x 3 : ( R1 , y )"},
        {[&] { a[0]; }, "_data_ operator [](int)", "kolumna poza zakresem"},
        {[&] { a[4]; }, "_data_ operator [](int)", "kolumna poza zakresem"},
        {[&] { a["x"]; }, "_data_ operator [](Text)", no_column},
        {[&] { a.colname(4); }, "Text & colname(int)", range, "3 : ( 4 )"},
        {[&] { same.rowname(0); }, "Text & rowname(int)", range, "2 : ( 0 )"},
        // the column comes first
        {[&] { a.find_cell(cell<T>(1), 4, 9); }, search, "wybrana kolumna jest poza zakresem"},
        {[&] { a.find_cell(cell<T>(1), 1, 3); }, search, start},
        {[&] { a.find_cell(cell<T>(1), 1, 0); }, search, start},
        {[&] { a.newrows(-1); }, "void newrows(int)", "ujemny parametr"},
    });
    EXPECT_REFUSAL(grid<Text>(2, 2).find_cell("22", "C2", 1, 0), "TABLE",
                   "int find_cell(Text,Text,int,int)", "nie znaleziono wybranej kolumny");
}

TYPED_TEST(Access, FindsTheFirstLineOfAName)
{
    using T = TypeParam;
    data<T> a(3, 4);
    a.colname(2) = "X";
    a.colname(3) = a.rowname(3) = "x";
    a.colname(4) = "z\xB1";
    auto found = [&a](char const* name, int nocase) {
        EXPECT_EQ(data<T>(0, 0).find_col(name, nocase), 0);
        EXPECT_EQ(data<T>().find_row(name, nocase), 0);
        return std::pair(a.find_col(name, nocase), find_row(a, name, nocase));
    };
    EXPECT_EQ(found("x", 0), std::pair(3, 3));
    EXPECT_EQ(found("x", 1), std::pair(2, 3));
    EXPECT_EQ(found("X", 0), std::pair(2, 0));
    EXPECT_EQ(found("X", 7), std::pair(2, 3));
    EXPECT_EQ(found("", 0), std::pair(1, 1));
    EXPECT_EQ(found("Z\xB1", 1), std::pair(4, 0));
    EXPECT_EQ(found("Z\xA1", 1), std::pair(0, 0)) << "letters beyond ASCII have no case";
    EXPECT_EQ(a.find_row("X"), 0);
    EXPECT_EQ(find_col(a, "x"), 3);
}

TYPED_TEST(Access, FindsACellDownAColumn)
{
    using T = TypeParam;
    data<T> a = grid<T>(4, 2);
    a(4, 2) = a(2, 2);
    EXPECT_EQ(a.find_cell(cell<T>(22), 2), 2);
    EXPECT_EQ(a.find_cell(cell<T>(22), 2, 3), 4);
    EXPECT_EQ(a.find_cell(cell<T>(22), 1, 1), 0);
    EXPECT_EQ(grid<Text>(2, 2).find_cell("22", "C2", 1, 1), 2);
    a(3, 1) = __NAN<T>();
    // a NaN equals nothing, the empty text every empty text
    EXPECT_EQ(a.find_cell(__NAN<T>(), 1, 1), (std::is_same<T, Text>::value ? 3 : 0));
}

TYPED_TEST(Access, NamesAreCopiedAsFarAsBothReach)
{
    using T = TypeParam;
    auto names = [](void (*copy)(data<T> const&, data<Text>&), int rows, int cols) {
        data<Text> b(rows, cols);
        std::fill_n(b.rnames, rows, Text("R"));
        std::fill_n(b.cnames, cols, Text("C"));
        copy(grid<T>(3, 2), b);
        return show(b);
    };
    EXPECT_EQ(names(copynames, 2, 3), "2x3 c1 c2 C | r1: . . . | r2: . . .");
    EXPECT_EQ(names(copynames_r2r, 4, 1), "4x1 C | r1: . | r2: . | r3: . | R: .");
    EXPECT_EQ(names(copynames_c2c, 1, 1), "1x1 c1 | R: .");
    EXPECT_EQ(names(copynames_r2c, 1, 4), "1x4 r1 r2 r3 C | R: . . . .");
    EXPECT_EQ(names(copynames_c2r, 3, 1), "3x1 C | c1: . | c2: . | R: .");
}
