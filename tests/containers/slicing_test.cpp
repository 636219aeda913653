#include <varnow/containers/slicing.h>

#include "tests/support/containers.h"

#include <climits>

using namespace varnow;
using namespace varnow::test;

namespace {

template <class T> class Slicing : public testing::Test
{
};
template <class T> class SlicingDeathTest : public testing::Test
{
};
TYPED_TEST_SUITE(Slicing, CellTypes);
TYPED_TEST_SUITE(SlicingDeathTest, CellTypes);

std::string const range = "indeks poza zakresem";

} // namespace

TYPED_TEST(Slicing, SelectsLinesInListOrderWithTheirNames)
{
    using T = TypeParam;
    data<T> const a = grid<T>(2, 3);
    EXPECT_EQ(show(col(a, c(3, 1, 3))), "2x3 c3 c1 c3 | r1: 13 11 13 | r2: 23 21 23");
    EXPECT_EQ(show(col(a, c(-2))), "2x2 c1 c3 | r1: 11 13 | r2: 21 23");
    EXPECT_EQ(show(col(a, c(-3, -1, -3))), "2x1 c2 | r1: 12 | r2: 22");
    EXPECT_EQ(show(row(a, c(2, 2, 1))),
              "3x3 c1 c2 c3 | r2: 21 22 23 | r2: 21 22 23 | r1: 11 12 13");
    EXPECT_EQ(show(row(a, -c(1))), "1x3 c1 c2 c3 | r2: 21 22 23");
    EXPECT_EQ(show(get(a, c(2, 1), c(3, 3))), "2x2 c3 c3 | r2: 23 23 | r1: 13 13");
    EXPECT_EQ(show(filter(a, c(0, -7))), "1x3 c1 c2 c3 | r2: 21 22 23");
    EXPECT_EQ(show(a.col(2)), "2x1 c2 | r1: 12 | r2: 22");
    EXPECT_EQ(show(a.col(-2)), show(col(a, c(-2))));
    EXPECT_EQ(show(a.row(2)), "1x3 c1 c2 c3 | r2: 21 22 23");
    EXPECT_EQ(show(a.filter(c(1, 0)).row(c(1)).col(c(1))), "1x1 c1 | r1: 11");

    data<T> shuffled = a;
    shuffled.flipud();
    EXPECT_EQ(show(row(shuffled, c(2, 1))), show(a));
    EXPECT_EQ(show(filter(shuffled, c(1, 1))), show(shuffled));
}

TYPED_TEST(Slicing, ASelectionOfNothingIsTheEmptyObject)
{
    using T = TypeParam;
    data<T> const a = grid<T>(2, 1);
    for (data<T> const& r :
         {col(a, c(-1)), row(a, c(-1, -2)), col(a, Vector()), row(a, Vector()),
          get(a, Vector(), c(1)), get(a, c(1), Vector()), filter(a, c(0, 0)),
          col(data<T>(), Vector()), filter(data<T>(), Vector()), filter(data<T>(0, 2), Vector())})
        EXPECT_EQ(show(r), "0x0");
    EXPECT_EQ(show(col(grid<T>(0, 2), c(2))), "0x1 c2");
    EXPECT_EQ(show(row(grid<T>(2, 0), c(2))), "1x0 | r2:");
}

TYPED_TEST(SlicingDeathTest, SelectionsRefuseElementByElement)
{
    using T = TypeParam;
    data<T> const a = grid<T>(2, 2);
    struct
    {
        Vector idx;
        char const* message;
    } const cases[] = {
        {c(0, 99), "indeks wynosi 0"},
        {c(99, 0), "indeks poza zakresem"},
        {c(-3), "indeks poza zakresem"},
        {c(INT_MIN), "indeks poza zakresem"},
        {c(1, 0), "indeks wynosi 0"},
        {c(2, -1), "indeksy sa roznych znakow"},
        {c(-2, 1, 99), "indeksy sa roznych znakow"},
    };
    for (auto const& k : cases) {
        EXPECT_REFUSAL_OF(T, col(a, k.idx), "_data_ col(_data_,Vector)", k.message);
        EXPECT_REFUSAL_OF(T, row(a, k.idx), "_data_ row(_data_,Vector)", k.message);
    }
    EXPECT_REFUSAL_OF(T, a.col(3), "_data_ col(_data_,Vector)", range);
    EXPECT_REFUSAL_OF(T, a.row(0), "_data_ row(_data_,Vector)", "indeks wynosi 0");
    EXPECT_REFUSAL_OF(T, data<T>().col(1), "_data_ col(_data_,Vector)", range);
    EXPECT_REFUSAL_OF(T, get(a, c(1, 3), c(9)), "_data_ get(_data_,Vector,Vector)",
                      "indeks wierszy poza zakresem");
    EXPECT_REFUSAL_OF(T, get(a, c(1), c(-1)), "_data_ get(_data_,Vector,Vector)",
                      "indeks kolumn poza zakresem");
    EXPECT_REFUSAL_OF(T, filter(a, c(1)), "_data_ filter(_data_,Vector)",
                      "wektor warunkowy ma nieprawidlowa dlugosc");
}

TYPED_TEST(Slicing, CopiesABlockAlsoWithinOneObject)
{
    using T = TypeParam;
    data<T> const a = grid<T>(3, 3);
    data<T> b(2, 3);
    b.clear();
    copy(a, 2, 1, 2, 2, b, 1, 2);
    EXPECT_EQ(show(b), "2x3 . . . | .: . 21 22 | .: . 31 32");
    copy(a, 4, 4, 0, 1, b, 3, 1);
    copy(a, 1, 1, 1, 0, b, 1, 9);
    EXPECT_EQ(show(b), "2x3 . . . | .: . 21 22 | .: . 31 32");

    // every shift of a 2 by 2 block over itself, against a copy by way of a third object
    for (int r = 1; r <= 2; ++r)
        for (int col = 1; col <= 2; ++col)
            for (int r2 = 1; r2 <= 2; ++r2)
                for (int col2 = 1; col2 <= 2; ++col2) {
                    data<T> self = a, expected = a;
                    copy(self, r, col, 2, 2, self, r2, col2);
                    copy(a, r, col, 2, 2, expected, r2, col2);
                    EXPECT_EQ(show(self), show(expected)) << r << col << r2 << col2;
                }
}

TYPED_TEST(Slicing, WritesListedCellsBack)
{
    using T = TypeParam;
    data<T> const b = grid<T>(2, 2);
    auto target = [] {
        data<T> a(3, 3);
        a.clear();
        a.colname(1) = "kept";
        return a;
    };
    data<T> a = target();
    a.set(c(3, 1), c(2, 1), b, c(1, 2), c(2, 1));
    EXPECT_EQ(show(a), "3x3 kept . . | .: 21 22 . | .: . . . | .: 11 12 .");
    a = target();
    a.set(c(1, 1), c(3, 3), b);
    EXPECT_EQ(show(a), "3x3 kept . . | .: . . 22 | .: . . . | .: . . .") << "the last one stays";
    a = target();
    a.set(Vector(), c(1), b, Vector(), c(1));
    a.setcol(c(3, 1), grid<T>(3, 2));
    EXPECT_EQ(show(a), "3x3 kept . . | .: 12 . 11 | .: 22 . 21 | .: 32 . 31");
    a.setcol(2, grid<T>(3, 1));
    EXPECT_EQ(show(a), "3x3 kept . . | .: 12 11 11 | .: 22 21 21 | .: 32 31 31");
    a = target();
    a.setrow(c(3, 1), grid<T>(2, 3));
    a.setrow(2, grid<T>(1, 3));
    EXPECT_EQ(show(a), "3x3 kept . . | .: 21 22 23 | .: 11 12 13 | .: 11 12 13");
    a.setcol(Vector(), data<T>(3, 0));
    EXPECT_EQ(a(3, 3), cell<T>(13));
}

TYPED_TEST(Slicing, AnObjectCanBeWrittenIntoItself)
{
    using T = TypeParam;
    data<T> a = grid<T>(2, 2);
    a.set(c(1, 2), c(1, 2), a, c(2, 1), c(2, 1));
    EXPECT_EQ(show(a), "2x2 c1 c2 | r1: 22 21 | r2: 12 11");
    a = grid<T>(2, 2);
    a.setcol(c(2, 1), a);
    EXPECT_EQ(show(a), "2x2 c1 c2 | r1: 12 11 | r2: 22 21");
    a.setrow(c(2, 1), a);
    EXPECT_EQ(show(a), "2x2 c1 c2 | r1: 22 21 | r2: 12 11");
    a.fill(a(1, 1), 1, 1, 2, 1);
    EXPECT_EQ(show(a), "2x2 c1 c2 | r1: 22 21 | r2: 22 11");
    a.fill(a(2, 2));
    EXPECT_EQ(show(a), "2x2 c1 c2 | r1: 11 11 | r2: 11 11");
    a = grid<T>(2, 1);
    a.setcol(1, a);
    EXPECT_EQ(show(a), "2x1 c1 | r1: 11 | r2: 21");
}

TYPED_TEST(SlicingDeathTest, WritingBackRefusesInOrder)
{
    using T = TypeParam;
    data<T> a = grid<T>(2, 2);
    data<T> const b = grid<T>(3, 3);
    Vector const bad = c(4), two = c(1, 1), one = c(1);
    struct
    {
        Vector r, k, br, bk;
        char const* message;
    } const cases[] = {
        {bad, bad, bad, bad, "indeks zrodlowy wierszy poza zakresem"},
        {bad, bad, two, bad, "indeks zrodlowy kolumn poza zakresem"},
        {bad, bad, two, two, "indeks docelowy wierszy poza zakresem"},
        {one, bad, two, two, "indeks docelowy kolumn poza zakresem"},
        {one, one, two, two, "niezgodna dlugosc indeksow wierszowych"},
        {two, one, two, two, "niezgodna dlugosc indeksow kolumnowych"},
        {one, one, c(0), one, "indeks zrodlowy wierszy poza zakresem"},
        {c(-1), one, one, one, "indeks docelowy wierszy poza zakresem"},
    };
    for (auto const& k : cases)
        EXPECT_REFUSAL_OF(T, a.set(k.r, k.k, b, k.br, k.bk),
                          "set(Vector,Vector,_data_,Vector,Vector)", k.message);
    EXPECT_REFUSAL_OF(T, a.set(two, two, b), "set(Vector,Vector,_data_,Vector,Vector)",
                      "niezgodna dlugosc indeksow wierszowych");

    EXPECT_REFUSAL_OF(T, a.setcol(3, b), "setcol(Vector,_data_)", range);
    EXPECT_REFUSAL_OF(T, a.setcol(c(1), b), "setcol(Vector,_data_)", "niezgodna liczba wierszy");
    EXPECT_REFUSAL_OF(T, a.setcol(1, grid<T>(2, 2)), "setcol(Vector,_data_)",
                      "liczba kolumn danych do wstawienia niezgodna z dlugoscia indeksu");
    EXPECT_REFUSAL_OF(T, a.setrow(0, b), "setrow(Vector,_data_)", range);
    EXPECT_REFUSAL_OF(T, a.setrow(1, b), "setrow(Vector,_data_)", "niezgodna liczba kolumn");
    EXPECT_REFUSAL_OF(T, a.setrow(c(1), grid<T>(2, 2)), "setrow(Vector,_data_)",
                      "liczba wierszy danych do wstawienia niezgodna z dlugoscia indeksu");
}

TYPED_TEST(Slicing, FillsAndClears)
{
    using T = TypeParam;
    data<T> a = grid<T>(3, 3);
    a.fill(cell<T>(7), 2, 2, 2, 1);
    EXPECT_EQ(show(a), "3x3 c1 c2 c3 | r1: 11 12 13 | r2: 21 7 23 | r3: 31 7 33");
    a.fill(cell<T>(7), 1, 1, 0, 5);
    a.fill(cell<T>(7), INT_MAX, INT_MAX, INT_MAX, 0);
    EXPECT_EQ(show(a), "3x3 c1 c2 c3 | r1: 11 12 13 | r2: 21 7 23 | r3: 31 7 33");
    a.clear();
    EXPECT_EQ(show(a), "3x3 c1 c2 c3 | r1: . . . | r2: . . . | r3: . . .");
    a.clear(1);
    EXPECT_EQ(show(a), "3x3 . . . | .: . . . | .: . . . | .: . . .");
    data<T> none;
    none.clear(1);
    none.fill(cell<T>(7));
    EXPECT_EQ(show(none), "0x0");
}

TYPED_TEST(SlicingDeathTest, BlocksRefuseWhatLeavesTheObject)
{
    using T = TypeParam;
    data<T> a = grid<T>(2, 3), wide = grid<T>(9, 9);
    struct
    {
        int r, k, nr, nk;
    } const cases[] = {
        {0, 1, 1, 1}, {1, 0, 0, 0}, {1, 1, -1, 0}, {1, 1, 0, -1},      {3, 1, 1, 1},
        {1, 4, 1, 1}, {2, 1, 2, 1}, {1, 2, 1, 3},  {1, 1, INT_MAX, 1}, {INT_MAX, 1, INT_MAX, 1},
    };
    std::string const copying = "copy(_data_,int,int,int,int,_data_ &,int,int)";
    for (auto const& k : cases) {
        EXPECT_REFUSAL_OF(T, a.fill(cell<T>(1), k.r, k.k, k.nr, k.nk), "fill(_T_,int,int,int,int)",
                          range);
        EXPECT_REFUSAL_OF(T, copy(a, k.r, k.k, k.nr, k.nk, wide, 1, 1), copying, range);
        EXPECT_REFUSAL_OF(T, copy(wide, 1, 1, k.nr, k.nk, a, k.r, k.k), copying, range);
    }
}

TYPED_TEST(Slicing, AppliesAFunctionToCells)
{
    using T = TypeParam;
    T (*twice)(T) = [](T x) { return T(x + x); };
    T (*joined)(T, double) = [](T x, double y) { return T(x + cell<T>(static_cast<int>(y))); };
    auto sum_of = [](int x, int y) { return show(cell<T>(x) + cell<T>(y)); };
    data<T> const b = grid<T>(2, 1);
    data<T> a = b;
    a.forall(twice);
    EXPECT_EQ(show(a), "2x1 c1 | r1: " + sum_of(11, 11) + " | r2: " + sum_of(21, 21));
    std::string const second = "2x1 c1 | r1: 11 | r2: " + sum_of(21, 21);
    a = b;
    a.forrow(2, twice);
    EXPECT_EQ(show(a), second);
    EXPECT_EQ(show(forrow(b, 2, twice)), second);
    a = ~b;
    a.forcol(2, twice);
    EXPECT_EQ(show(~a), second);
    EXPECT_EQ(show(~forcol(~b, 2, twice)), second);
    EXPECT_EQ(show(forrow(b, 2, joined, 3.0)), "2x1 c1 | r1: 11 | r2: " + sum_of(21, 3));
    EXPECT_EQ(show(~forcol(~b, 2, joined, 3.0)), "2x1 c1 | r1: 11 | r2: " + sum_of(21, 3));
    EXPECT_EQ(show(b), "2x1 c1 | r1: 11 | r2: 21");
}

TYPED_TEST(SlicingDeathTest, AFunctionIsRefusedALineThatIsNotThere)
{
    using T = TypeParam;
    T (*f)(T) = [](T x) { return x; };
    T (*g)(T, double) = [](T x, double) { return x; };
    data<T> a = grid<T>(2, 3);
    std::string const no_column = "numer kolumny poza zakresem";
    std::string const no_row = "numer wiersza poza zakresem";
    EXPECT_REFUSAL_OF(T, a.forcol(4, f), "forcol(int,_T_ f(_T_))", no_column);
    EXPECT_REFUSAL_OF(T, forcol(a, 0, f), "_data_ forcol(_data_,int,_T_ f(_T_))", no_column);
    EXPECT_REFUSAL_OF(T, forcol(a, 4, g, 1.0), "_data_ forcol(_data_,int,_T_ f(_T_,double),double)",
                      no_column);
    EXPECT_REFUSAL_OF(T, a.forrow(3, f), "forrow(int,_T_ f(_T_))", no_row);
    EXPECT_REFUSAL_OF(T, forrow(a, 0, f), "_data_ forrow(_data_,int,_T_ f(_T_))", no_row);
    EXPECT_REFUSAL_OF(T, forrow(a, 3, g, 1.0), "_data_ forrow(_data_,int,_T_ f(_T_,double),double)",
                      no_row);
}
