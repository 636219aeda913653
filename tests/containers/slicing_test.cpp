#include <varnow/containers/slicing.h>

#include "tests/support/containers.h"

#include <climits>
#include <initializer_list>

using namespace varnow;
using namespace varnow::test;

namespace {

template <class T> class Slicing : public testing::Test
{
};
template <class T> using SlicingDeathTest = Slicing<T>;
TYPED_TEST_SUITE(Slicing, CellTypes);
TYPED_TEST_SUITE(SlicingDeathTest, CellTypes);

} // namespace

TYPED_TEST(Slicing, SelectsLinesInListOrderWithTheirNames)
{
    using D = data<TypeParam>;
    D const a = grid<TypeParam>(2, 3), thin = grid<TypeParam>(2, 1);
    EXPECT_EQ(show(col(a, c(3, 1, 3))), "2x3 c3 c1 c3 | r1: 13 11 13 | r2: 23 21 23");
    EXPECT_EQ(show(col(a, c(-3, -1, -3))), "2x1 c2 | r1: 12 | r2: 22");
    EXPECT_EQ(show(row(a, c(2, 2, 1))),
              "3x3 c1 c2 c3 | r2: 21 22 23 | r2: 21 22 23 | r1: 11 12 13");
    EXPECT_EQ(show(row(a, c(-1))), "1x3 c1 c2 c3 | r2: 21 22 23");
    EXPECT_EQ(show(get(a, c(2, 1), c(3, 3))), "2x2 c3 c3 | r2: 23 23 | r1: 13 13");
    EXPECT_EQ(show(filter(a, c(0, -7))), "1x3 c1 c2 c3 | r2: 21 22 23");
    EXPECT_EQ(show(a.col(-2)), "2x2 c1 c3 | r1: 11 13 | r2: 21 23");
    EXPECT_EQ(show(a.row(2)), "1x3 c1 c2 c3 | r2: 21 22 23");
    EXPECT_EQ(show(a.filter(c(1, 0)).row(c(1)).col(c(1))), "1x1 c1 | r1: 11");
    D shuffled = a;
    shuffled.flipud();
    EXPECT_EQ(show(row(shuffled, c(2, 1))), show(a));
    EXPECT_EQ(show(filter(shuffled, c(1, 1))), show(shuffled));
    for (D const& r :
         {col(thin, c(-1)), row(thin, c(-1, -2)), col(thin, Vector()), row(thin, Vector()),
          get(thin, Vector(), c(1)), get(thin, c(1), Vector()), filter(thin, c(0, 0)),
          col(D(), Vector()), filter(D(), Vector()), filter(D(0, 2), Vector())})
        EXPECT_EQ(show(r), "0x0");
    EXPECT_EQ(show(col(grid<TypeParam>(0, 2), c(2))), "0x1 c2");
    EXPECT_EQ(show(row(grid<TypeParam>(2, 0), c(2))), "1x0 | r2:");
}

TYPED_TEST(Slicing, CopiesABlockAlsoWithinOneObject)
{
    using T = TypeParam;
    data<T> const a = grid<T>(3, 3);
    data<T> b(2, 3);
    b.clear();
    copy(a, 2, 1, 2, 2, b, 1, 2);
    copy(a, 4, 4, 0, 1, b, 3, 1);
    copy(a, 1, 1, 1, 0, b, 1, 9);
    EXPECT_EQ(show(b), "2x3 . . . | .: . 21 22 | .: . 31 32");

    // every shift of a 2 by 2 block over itself, against a copy by way of a third object
    for (int k = 0; k < 16; ++k) {
        int const r = 1 + k % 2, col = 1 + k / 2 % 2, r2 = 1 + k / 4 % 2, col2 = 1 + k / 8;
        data<T> self = a, expected = a;
        copy(self, r, col, 2, 2, self, r2, col2);
        copy(a, r, col, 2, 2, expected, r2, col2);
        EXPECT_EQ(show(self), show(expected)) << k;
    }
}

TYPED_TEST(Slicing, WritesListedCellsBack)
{
    using T = TypeParam;
    data<T> const b = grid<T>(2, 2);
    data<T> a(3, 3);
    auto expect = [&a](auto change, char const* after) {
        a.clear();
        a.colname(1) = "kept";
        change();
        EXPECT_EQ(show(a), after);
    };
    expect([&] { a.set(c(3, 1), c(2, 1), b, c(1, 2), c(2, 1)); },
           "3x3 kept . . | .: 21 22 . | .: . . . | .: 11 12 .");
    // of two values for a cell the last one stays
    expect([&] { a.set(c(1, 1), c(3, 3), b); }, "3x3 kept . . | .: . . 22 | .: . . . | .: . . .");
    expect([&] { a.set(Vector(), c(1), b, Vector(), c(1)), a.setcol(Vector(), data<T>(3, 0)); },
           "3x3 kept . . | .: . . . | .: . . . | .: . . .");
    expect([&] { a.setcol(c(3, 1), grid<T>(3, 2)), a.setcol(2, grid<T>(3, 1)); },
           "3x3 kept . . | .: 12 11 11 | .: 22 21 21 | .: 32 31 31");
    expect([&] { a.setrow(c(3, 1), grid<T>(2, 3)), a.setrow(2, grid<T>(1, 3)); },
           "3x3 kept . . | .: 21 22 23 | .: 11 12 13 | .: 11 12 13");
}

TYPED_TEST(Slicing, FillsClearsAndWritesAnObjectIntoItself)
{
    using T = TypeParam;
    data<T> a = grid<T>(2, 2), column = grid<T>(2, 1), none;
    a.set(c(1, 2), c(1, 2), a, c(2, 1), c(2, 1));
    EXPECT_EQ(show(a), "2x2 c1 c2 | r1: 22 21 | r2: 12 11");
    a.setcol(c(2, 1), a);
    EXPECT_EQ(show(a), "2x2 c1 c2 | r1: 21 22 | r2: 11 12");
    a.setrow(c(2, 1), a);
    EXPECT_EQ(show(a), "2x2 c1 c2 | r1: 11 12 | r2: 21 22");
    a.fill(a(1, 1), 1, 1, 2, 1);
    a.fill(cell<T>(7), 1, 1, 0, 5);
    a.fill(cell<T>(7), INT_MAX, INT_MAX, INT_MAX, 0);
    EXPECT_EQ(show(a), "2x2 c1 c2 | r1: 11 12 | r2: 11 22");
    a.fill(cell<T>(7), 1, 2, 1, 1);
    EXPECT_EQ(show(a), "2x2 c1 c2 | r1: 11 7 | r2: 11 22");
    a.fill(a(2, 2));
    EXPECT_EQ(show(a), "2x2 c1 c2 | r1: 22 22 | r2: 22 22");
    a.clear();
    EXPECT_EQ(show(a), "2x2 c1 c2 | r1: . . | r2: . .");
    a.clear(1);
    EXPECT_EQ(show(a), "2x2 . . | .: . . | .: . .");
    column.setcol(1, column);
    EXPECT_EQ(show(column), "2x1 c1 | r1: 11 | r2: 21");
    none.clear(1);
    none.fill(cell<T>(7));
    EXPECT_EQ(show(none), "0x0");
}

TYPED_TEST(Slicing, AppliesAFunctionToCells)
{
    using T = TypeParam;
    T (*twice)(T) = [](T x) { return T(x + x); };
    T (*joined)(T, double) = [](T x, double y) { return T(x + cell<T>(static_cast<int>(y))); };
    data<T> const b = grid<T>(2, 1);
    data<T> all = b, row = b, column = ~b, expected = b;
    expected.cell[1][0] = cell<T>(21) + cell<T>(21);
    row.forrow(2, twice);
    column.forcol(2, twice);
    for (data<T> const& r : {row, ~column, forrow(b, 2, twice), ~forcol(~b, 2, twice)})
        EXPECT_EQ(show(r), show(expected));
    expected.cell[0][0] = cell<T>(11) + cell<T>(11);
    all.forall(twice);
    EXPECT_EQ(show(all), show(expected));
    expected = b;
    expected.cell[1][0] = cell<T>(21) + cell<T>(3);
    for (data<T> const& r : {forrow(b, 2, joined, 3.0), ~forcol(~b, 2, joined, 3.0)})
        EXPECT_EQ(show(r), show(expected));
}

TYPED_TEST(SlicingDeathTest, RefusesInOrderWhatIsNotThereOrDoesNotFit)
{
    using T = TypeParam;
    T (*f)(T) = [](T x) { return x; };
    T (*g)(T, double) = [](T x, double) { return x; };
    data<T> a = grid<T>(2, 2);
    data<T> const b = grid<T>(3, 3), same = a;
    std::string const range = "indeks poza zakresem";
    Vector const bad = c(4), two = c(1, 1), one = c(1);
    auto refused = [&](std::initializer_list<Vector> lists, char const* message) {
        for (Vector const& idx : lists) {
            EXPECT_REFUSAL_OF(T, col(a, idx), "_data_ col(_data_,Vector)", message);
            EXPECT_REFUSAL_OF(T, row(a, idx), "_data_ row(_data_,Vector)", message);
        }
    };
    refused({c(0, 99), c(-1, 0)}, "indeks wynosi 0");
    refused({c(99, 0), c(-3), c(INT_MIN)}, "indeks poza zakresem");
    refused({c(2, -1), c(-2, 1, 99)}, "indeksy sa roznych znakow");
    auto expect = [&](Vector const& r, Vector const& k, Vector const& br, Vector const& bk,
                      char const* message) {
        EXPECT_REFUSAL_OF(T, a.set(r, k, b, br, bk), "set(Vector,Vector,_data_,Vector,Vector)",
                          message);
    };
    expect(bad, bad, bad, bad, "indeks zrodlowy wierszy poza zakresem");
    expect(bad, bad, two, bad, "indeks zrodlowy kolumn poza zakresem");
    expect(bad, bad, two, two, "indeks docelowy wierszy poza zakresem");
    expect(one, bad, two, two, "indeks docelowy kolumn poza zakresem");
    expect(one, one, two, two, "niezgodna dlugosc indeksow wierszowych");
    expect(two, one, two, two, "niezgodna dlugosc indeksow kolumnowych");
    expect(one, one, c(0), one, "indeks zrodlowy wierszy poza zakresem");
    expect(c(-1), one, one, one, "indeks docelowy wierszy poza zakresem");

    // blocks
    data<T> block = grid<T>(2, 3), wide = grid<T>(9, 9);
    std::string const copying = "copy(_data_,int,int,int,int,_data_ &,int,int)";
    int const blocks[][4] = {
        {0, 1, 1, 1}, {1, 0, 0, 0}, {1, 1, -1, 0}, {1, 1, 0, -1},      {3, 1, 1, 1},
        {1, 4, 1, 1}, {2, 1, 2, 1}, {1, 2, 1, 3},  {1, 1, INT_MAX, 1}, {INT_MAX, 1, INT_MAX, 1},
    };
    for (auto const& [i, j, nr, nk] : blocks) {
        EXPECT_REFUSAL_OF(T, block.fill(__0<T>(), i, j, nr, nk), "fill(_T_,int,int,int,int)",
                          range);
        EXPECT_REFUSAL_OF(T, copy(block, i, j, nr, nk, wide, 1, 1), copying, range);
        EXPECT_REFUSAL_OF(T, copy(wide, 1, 1, nr, nk, block, i, j), copying, range);
    }

    std::string const picking = "_data_ get(_data_,Vector,Vector)",
                      setcol = "setcol(Vector,_data_)", setrow = "setrow(Vector,_data_)",
                      no_col = "numer kolumny poza zakresem",
                      no_row = "numer wiersza poza zakresem",
                      with_number = "(_data_,int,_T_ f(_T_,double),double)";
    expect_refusals_of<T>({
        {[&] { get(a, c(1, 3), c(9)); }, picking, "indeks wierszy poza zakresem"},
        {[&] { get(a, one, c(-1)); }, picking, "indeks kolumn poza zakresem"},
        {[&] { filter(a, one); }, "_data_ filter(_data_,Vector)",
         "wektor warunkowy ma nieprawidlowa dlugosc"},
        {[&] { a.set(two, two, b); }, "set(Vector,Vector,_data_,Vector,Vector)",
         "niezgodna dlugosc indeksow wierszowych"},
        {[&] { a.setcol(3, b); }, setcol, range},
        {[&] { a.setcol(one, b); }, setcol, "niezgodna liczba wierszy"},
        {[&] { a.setcol(1, same); }, setcol,
         "liczba kolumn danych do wstawienia niezgodna z dlugoscia indeksu"},
        {[&] { a.setrow(0, b); }, setrow, range},
        {[&] { a.setrow(1, b); }, setrow, "niezgodna liczba kolumn"},
        {[&] { a.setrow(one, same); }, setrow,
         "liczba wierszy danych do wstawienia niezgodna z dlugoscia indeksu"},
        {[&] { a.forcol(3, f); }, "forcol(int,_T_ f(_T_))", no_col},
        {[&] { forcol(a, 0, f); }, "_data_ forcol(_data_,int,_T_ f(_T_))", no_col},
        {[&] { forcol(a, 3, g, 1.0); }, "_data_ forcol" + with_number, no_col},
        {[&] { a.forrow(3, f); }, "forrow(int,_T_ f(_T_))", no_row},
        {[&] { forrow(a, 0, f); }, "_data_ forrow(_data_,int,_T_ f(_T_))", no_row},
        {[&] { forrow(a, 3, g, 1.0); }, "_data_ forrow" + with_number, no_row},
    });
}
