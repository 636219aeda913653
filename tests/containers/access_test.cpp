#include <varnow/containers/table.h>

#include "tests/support/containers.h"

#include <climits>

using namespace varnow;
using namespace varnow::test;

namespace {

template <class T> class Access : public testing::Test
{
};
template <class T> class AccessDeathTest : public testing::Test
{
};
TYPED_TEST_SUITE(Access, CellTypes);
TYPED_TEST_SUITE(AccessDeathTest, CellTypes);

} // namespace

TYPED_TEST(Access, ReachesACellByNumbersAndNames)
{
    using T = TypeParam;
    data<T> a = grid<T>(2, 3);
    data<T> const& same = a;
    a(2, 3) = cell<T>(7);
    EXPECT_EQ(same(2, 3), cell<T>(7));
    a.rowname(2) = "b";
    a.colname(3) = "A";
    EXPECT_EQ(&a("B", "a"), &a.cell[1][2]);
    EXPECT_EQ(&a(2, "a"), &a.cell[1][2]);
    EXPECT_EQ(&a("B", 3), &a.cell[1][2]);
    EXPECT_EQ(&same("B", "a"), &a.cell[1][2]);
    EXPECT_EQ(&same(2, "a"), &a.cell[1][2]);
    EXPECT_EQ(&same("B", 3), &a.cell[1][2]);
}

TYPED_TEST(Access, CountsAlongARowOrDownAColumn)
{
    using T = TypeParam;
    EXPECT_EQ(grid<T>(1, 3)(2), cell<T>(12));
    EXPECT_EQ(grid<T>(3, 1)(2), cell<T>(21));
    EXPECT_EQ(grid<T>(1, 1)(1), cell<T>(11));
}

TYPED_TEST(AccessDeathTest, RefusesWhatIsNotThere)
{
    using T = TypeParam;
    data<T> a = grid<T>(2, 3);
    data<T> const& same = a;
    std::string const range = "indeks poza zakresem";
    std::string const cell_routine = "_T_ & operator ()(int,int)";
    EXPECT_REFUSAL_DETAIL_OF(T, a(3, 1), cell_routine, range, "2 x 3 : ( 3 , 1 )");
    EXPECT_REFUSAL_DETAIL_OF(T, a(0, 1), cell_routine, range, "2 x 3 : ( 0 , 1 )");
    EXPECT_REFUSAL_DETAIL_OF(T, same(1, 4), cell_routine, range, "2 x 3 : ( 1 , 4 )");
    EXPECT_REFUSAL_DETAIL_OF(T, a(INT_MIN, INT_MAX), cell_routine, range,
                             "2 x 3 : ( -2147483648 , 2147483647 )");

    std::string const one = "_T_ & operator ()(int)";
    std::string const shape = "oczekiwany wektor kolumnowy lub wierszowy";
    EXPECT_REFUSAL_OF(T, a(9), one, shape);
    EXPECT_REFUSAL_OF(T, (data<T>(1, 0)(1)), one, shape);
    EXPECT_REFUSAL_OF(T, (data<T>(0, 1)(1)), one, shape);
    EXPECT_REFUSAL_OF(T, data<T>()(1), one, shape);
    EXPECT_REFUSAL_DETAIL_OF(T, (grid<T>(1, 2)(3)), one, range, "1 x 2 : ( 3 )");
    EXPECT_REFUSAL_DETAIL_OF(T, (grid<T>(3, 1)(0)), one, range, "3 x 1 : ( 0 )");

    EXPECT_REFUSAL_DETAIL_OF(T, a(3, "x"), "_T_ & operator ()(int,Text)",
                             "numer wiersza poza zakresem", "2 x 3 : ( 3 , x )");
    EXPECT_REFUSAL_DETAIL_OF(T, a(1, "x"), "_T_ & operator ()(int,Text)", "nie znaleziono kolumny",
                             "2 x 3 : ( 1 , x )");
    EXPECT_REFUSAL_DETAIL_OF(T, a("x", 4), "_T_ & operator ()(Text,int)",
                             "numer kolumny poza zakresem", "2 x 3 : ( x , 4 )");
    EXPECT_REFUSAL_DETAIL_OF(T, a("x", 1), "_T_ & operator ()(Text,int)", "nie znaleziono wiersza",
                             "2 x 3 : ( x , 1 )");
    EXPECT_REFUSAL_DETAIL_OF(T, a("x", "y"), "_T_ & operator ()(Text,Text)",
                             "nie znaleziono wiersza", "2 x 3 : ( x , y )");
    EXPECT_REFUSAL_DETAIL_OF(T, a("R1", "y"), "_T_ & operator ()(Text,Text)",
                             "nie znaleziono kolumny", "2 x 3 : ( R1 , y )");

    EXPECT_REFUSAL_OF(T, a[0], "_data_ operator [](int)", "kolumna poza zakresem");
    EXPECT_REFUSAL_OF(T, a[4], "_data_ operator [](int)", "kolumna poza zakresem");
    EXPECT_REFUSAL_OF(T, a["x"], "_data_ operator [](Text)", "nie znaleziono kolumny");
    EXPECT_REFUSAL_DETAIL_OF(T, a.colname(4), "Text & colname(int)", range, "3 : ( 4 )");
    EXPECT_REFUSAL_DETAIL_OF(T, same.rowname(0), "Text & rowname(int)", range, "2 : ( 0 )");
}

TYPED_TEST(Access, AColumnComesWithItsNames)
{
    using T = TypeParam;
    data<T> const a = grid<T>(2, 2);
    EXPECT_EQ(show(a[2]), "2x1 c2 | r1: 12 | r2: 22");
    EXPECT_EQ(show(a["C2"]), "2x1 C2 | r1: 12 | r2: 22") << "the name as given";
    EXPECT_EQ(show(a[Text("c1")]), "2x1 c1 | r1: 11 | r2: 21");
}

TYPED_TEST(Access, FindsTheFirstLineOfAName)
{
    using T = TypeParam;
    data<T> a(3, 4);
    a.colname(2) = "X";
    a.colname(3) = "x";
    a.colname(4) = "z\xB1";
    a.rowname(3) = "x";
    EXPECT_EQ(a.find_col("x"), 3);
    EXPECT_EQ(a.find_col("x", 0), 3);
    EXPECT_EQ(a.find_col("x", 1), 2);
    EXPECT_EQ(find_col(a, "x", 7), 2);
    EXPECT_EQ(a.find_col("Z\xB1", 1), 4);
    EXPECT_EQ(a.find_col("Z\xA1", 1), 0) << "letters beyond ASCII have no case";
    EXPECT_EQ(a.find_col("xx", 1), 0);
    EXPECT_EQ(a.find_col("", 0), 1);
    EXPECT_EQ(a.find_row("X", 0), 0);
    EXPECT_EQ(find_row(a, "X", 1), 3);
    for (data<T> const& none : {data<T>(), data<T>(0, 0)}) {
        EXPECT_EQ(none.find_col("", 1), 0);
        EXPECT_EQ(none.find_row("", 0), 0);
    }
}

TYPED_TEST(Access, FindsACellDownAColumn)
{
    using T = TypeParam;
    data<T> a = grid<T>(4, 2);
    a(4, 2) = a(2, 2);
    EXPECT_EQ(a.find_cell(cell<T>(22), 2), 2);
    EXPECT_EQ(a.find_cell(cell<T>(22), 2, 3), 4);
    EXPECT_EQ(a.find_cell(cell<T>(22), 1, 1), 0);
    a(3, 1) = __NAN<T>();
    // a NaN equals nothing, the empty text every empty text
    EXPECT_EQ(a.find_cell(__NAN<T>(), 1, 1), (std::is_same<T, Text>::value ? 3 : 0));
}

TYPED_TEST(AccessDeathTest, ASearchRefusesItsColumnBeforeItsRow)
{
    using T = TypeParam;
    data<T> a = grid<T>(2, 2);
    std::string const by_number = "int find_cell(_T_,int,int)";
    EXPECT_REFUSAL_OF(T, a.find_cell(cell<T>(1), 3, 9), by_number,
                      "wybrana kolumna jest poza zakresem");
    EXPECT_REFUSAL_OF(T, a.find_cell(cell<T>(1), 1, 3), by_number,
                      "wiersz startowy jest poza zakresem");
    EXPECT_REFUSAL_OF(T, a.find_cell(cell<T>(1), 1, 0), by_number,
                      "wiersz startowy jest poza zakresem");
}

TEST(AccessDeathTest, TextsAreSearchedByColumnNameToo)
{
    table const a = grid<Text>(2, 2);
    EXPECT_EQ(a.find_cell("22", "C2", 1, 1), 2);
    EXPECT_REFUSAL(a.find_cell("22", "C2", 1, 0), "TABLE", "int find_cell(Text,Text,int,int)",
                   "nie znaleziono wybranej kolumny");
}

TYPED_TEST(Access, NamesAreCopiedAsFarAsBothReach)
{
    using T = TypeParam;
    data<T> const a = grid<T>(3, 2);
    auto show_names = [&a](void (*copy)(data<T> const&, data<Text>&), int rows, int cols) {
        data<Text> b(rows, cols);
        for (int i = 0; i < rows; ++i) b.rnames[i] = "R";
        for (int j = 0; j < cols; ++j) b.cnames[j] = "C";
        copy(a, b);
        return show(b);
    };
    EXPECT_EQ(show_names(copynames, 2, 3), "2x3 c1 c2 C | r1: . . . | r2: . . .");
    EXPECT_EQ(show_names(copynames, 4, 1), "4x1 c1 | r1: . | r2: . | r3: . | R: .");
    EXPECT_EQ(show_names(copynames_r2r, 1, 1), "1x1 C | r1: .");
    EXPECT_EQ(show_names(copynames_c2c, 1, 1), "1x1 c1 | R: .");
    EXPECT_EQ(show_names(copynames_r2c, 1, 4), "1x4 r1 r2 r3 C | R: . . . .");
    EXPECT_EQ(show_names(copynames_c2r, 3, 1), "3x1 C | c1: . | c2: . | R: .");
}
