#include <varnow/containers/matrix_arithmetic.h>
#include <varnow/containers/slicing.h>

#include "tests/support/containers.h"

#include <climits>
#include <new>

using namespace varnow;
using namespace varnow::test;

namespace {

template <class T> class Binding : public testing::Test
{
};
template <class T> class BindingDeathTest : public testing::Test
{
};
TYPED_TEST_SUITE(Binding, CellTypes);
TYPED_TEST_SUITE(BindingDeathTest, CellTypes);

// Cells as in grid, other names.
template <class T> data<T> stranger(int rows, int cols)
{
    data<T> b = grid<T>(rows, cols);
    for (int i = 0; i < rows; ++i) b.rnames[i] = "R" + b.rnames[i];
    for (int j = 0; j < cols; ++j) b.cnames[j] = "C" + b.cnames[j];
    return b;
}

} // namespace

TYPED_TEST(Binding, PutsSideBySideAndOnTopOfEachOther)
{
    using T = TypeParam;
    data<T> const a = grid<T>(2, 1);
    std::string const beside = "2x3 c1 Cc1 Cc2 | r1: 11 11 12 | r2: 21 21 22";
    std::string const below = "3x1 c1 | r1: 11 | r2: 21 | Rr1: 11";
    std::string const doubled = "2x2 c1 c1 | r1: 11 11 | r2: 21 21";
    data<T> b = stranger<T>(2, 2);
    b.swap_rows(1, 2);
    b.swap_cols(1, 2);
    b = fliplr(flipud(b));
    EXPECT_EQ(show(a | b), beside);
    EXPECT_EQ(show(a & stranger<T>(1, 1)), below);
    EXPECT_EQ(show(a | a), doubled);
    EXPECT_EQ(show(a | data<T>(2, 0)), show(a));
    EXPECT_EQ(show(data<T>(0, 1) & a), "2x1 . | r1: 11 | r2: 21");
    EXPECT_EQ(show(data<T>() | grid<T>(0, 2)), "0x2 c1 c2");

    data<T> r = a, &self = r; // by another name, since compilers warn of r |= r
    r |= b;
    EXPECT_EQ(show(r), beside);
    r = a;
    r &= stranger<T>(1, 1);
    EXPECT_EQ(show(r), below);
    r = a;
    r |= self;
    EXPECT_EQ(show(r), doubled);
    r = a;
    r = r | r;
    EXPECT_EQ(show(r), doubled);
    r = grid<T>(1, 2);
    r &= self;
    EXPECT_EQ(show(r), "2x2 c1 c2 | r1: 11 12 | r1: 11 12");
    r.free();
    r |= self;
    r &= data<T>();
    EXPECT_EQ(show(r), "0x0");
}

TYPED_TEST(Binding, AddsCellByCell)
{
    using T = TypeParam;
    data<T> a = grid<T>(1, 2);
    data<T> const b = stranger<T>(1, 2);
    std::string const sums = "1x2 c1 c2 | r1: " + show(cell<T>(11) + cell<T>(11)) + " " +
                             show(cell<T>(12) + cell<T>(12));
    EXPECT_EQ(show(a + b), sums);
    a += a;
    EXPECT_EQ(show(a), sums);
}

TYPED_TEST(BindingDeathTest, RefusesUnequalShapes)
{
    using T = TypeParam;
    data<T> a = grid<T>(2, 2);
    data<T> const b = grid<T>(3, 2), wide = grid<T>(2, 3);
    std::string const rows = "niezgodna liczba wierszy", cols = "niezgodna liczba kolumn";
    EXPECT_REFUSAL_OF(T, a | b, "_data_ operator |(_data_,_data_)", rows);
    EXPECT_REFUSAL_OF(T, a & wide, "_data_ operator &(_data_,_data_)", cols);
    EXPECT_REFUSAL_OF(T, a |= b, "operator |=(_data_)", rows);
    EXPECT_REFUSAL_OF(T, a &= wide, "operator &=(_data_)", cols);
    EXPECT_REFUSAL_OF(T, a + b, "_data_ operator +(_data_,_data_)", "niezgodne wymiary obiektow");
    EXPECT_REFUSAL_OF(T, a += wide, "operator +=(_data_)", "niezgodne wymiary obiektow");
    EXPECT_REFUSAL_OF(T, data<T>() | a, "_data_ operator |(_data_,_data_)", rows);
}

TEST(Binding, ListsTextsInARow)
{
    data<Text> const a = c<Text>(Text("a"), Text(""), Text("b"));
    EXPECT_EQ(show(a), "1x3 . . . | .: a . b");
}

TYPED_TEST(Binding, RepeatsVectorsInTheirOrientationWithoutNames)
{
    using T = TypeParam;
    data<T> const row = grid<T>(1, 2), column = grid<T>(2, 1), one = grid<T>(1, 1);
    EXPECT_EQ(show(rep(row, 2)), "1x4 . . . . | .: 11 12 11 12");
    EXPECT_EQ(show(rep(column, 2)), "4x1 . | .: 11 | .: 21 | .: 11 | .: 21");
    EXPECT_EQ(show(rep(one, 2)), "1x2 . . | .: 11 11");
    EXPECT_EQ(show(rep(row, c(2, 0))), "1x2 . . | .: 11 11");
    EXPECT_EQ(show(rep(column, c(1, 2))), "3x1 . | .: 11 | .: 21 | .: 21");
    EXPECT_EQ(show(rep(column, c(0, 0))), "0x1 .");
    EXPECT_EQ(show(replen(row, 3)), "1x3 . . . | .: 11 12 11");
    EXPECT_EQ(show(replen(column, 1)), "1x1 . | .: 11");
    EXPECT_EQ(show(replen(column, 3)), "3x1 . | .: 11 | .: 21 | .: 11");
    EXPECT_EQ(show(repeach(row, 2)), "1x4 . . . . | .: 11 11 12 12");
    EXPECT_EQ(show(repeach(column, 2)), "4x1 . | .: 11 | .: 11 | .: 21 | .: 21");
    EXPECT_EQ(show(rep(data<T>(1, 0), 3)), "1x0 | .:");
    EXPECT_EQ(show(repeach(data<T>(0, 1), 3)), "0x1 .");
    EXPECT_EQ(show(rep(data<T>(), Vector())), "0x0");
    EXPECT_THROW(rep(row, INT_MAX), std::bad_array_new_length);
    EXPECT_THROW(repeach(row, INT_MAX), std::bad_array_new_length);
    EXPECT_THROW(rep(row, c(INT_MAX, INT_MAX)), std::bad_array_new_length);
}

TYPED_TEST(BindingDeathTest, RepeatingRefusesGridsThenCounts)
{
    using T = TypeParam;
    data<T> const a = grid<T>(2, 2), row = grid<T>(1, 2);
    std::string const vector = "oczekiwany wektor", few = "zbyt mala wielokrotnosc";
    std::string const by_list = "_data_ rep(_data_,Vector)";
    EXPECT_REFUSAL_OF(T, rep(a, 0), "_data_ rep(_data_,int)", vector);
    EXPECT_REFUSAL_OF(T, rep(row, 0), "_data_ rep(_data_,int)", few);
    EXPECT_REFUSAL_OF(T, rep(a, c(1)), by_list, "oczekiwany wektor do replikacji");
    EXPECT_REFUSAL_OF(T, rep(row, c(-1)), by_list, "nieprawidlowa dlugosc wektora wielokrotnosci");
    EXPECT_REFUSAL_OF(T, rep(row, c(1, -1)), by_list, few);
    EXPECT_REFUSAL_OF(T, replen(a, 0), "_data_ replen(_data_,int)", vector);
    EXPECT_REFUSAL_OF(T, replen(row, 0), "_data_ replen(_data_,int)", "zbyt mala dlugosc");
    EXPECT_REFUSAL_OF(T, replen(data<T>(1, 0), 3), "_data_ replen(_data_,int)", vector);
    EXPECT_REFUSAL_OF(T, repeach(a, 0), "_data_ repeach(_data_,int)", vector);
    EXPECT_REFUSAL_OF(T, repeach(row, -1), "_data_ repeach(_data_,int)", few);
}

TYPED_TEST(Binding, AFunctionOfEveryPairOfTwoVectors)
{
    using T = TypeParam;
    T (*first)(T, T) = [](T x, T) { return x; };
    T (*second)(T, T) = [](T, T y) { return y; };
    data<T> const row = grid<T>(1, 3), column = grid<T>(2, 1);
    EXPECT_EQ(show(outer(column, row, first)), "2x3 . . . | .: 11 11 11 | .: 21 21 21");
    EXPECT_EQ(show(outer(row, column, second)), "3x2 . . | .: 11 21 | .: 11 21 | .: 11 21");
    EXPECT_EQ(show(outer(data<T>(), row, first)), "0x3 . . .");
}

TYPED_TEST(Binding, InterleavesLinesInEvenGroups)
{
    using T = TypeParam;
    data<T> const a = grid<T>(1, 4), b = stranger<T>(1, 2);
    EXPECT_EQ(show(shufflecol(a, b)), "1x6 c1 c2 Cc1 c3 c4 Cc2 | r1: 11 12 11 13 14 12");
    EXPECT_EQ(show(shufflecol(a, a)), "1x8 c1 c1 c2 c2 c3 c3 c4 c4 | r1: 11 11 12 12 13 13 14 14");
    EXPECT_EQ(show(~shufflerow(~a, ~b)), show(shufflecol(a, b)));
    EXPECT_EQ(show(shufflecol(data<T>(1, 0), b)), "1x2 Cc1 Cc2 | .: 11 12");
    data<T> tall = ~a;
    tall.flipud();
    EXPECT_EQ(show(shufflerow(tall, ~b)),
              "6x1 r1 | c4: 14 | c3: 13 | Cc1: 11 | c2: 12 | c1: 11 | Cc2: 12");
}

TYPED_TEST(BindingDeathTest, InterleavingAndPairsRefuseOtherShapes)
{
    using T = TypeParam;
    data<T> const a = grid<T>(4, 4);
    std::string const by_cols = "_data_ shufflecol(_data_,_data_)";
    std::string const by_rows = "_data_ shufflerow(_data_,_data_)";
    EXPECT_REFUSAL_OF(T, shufflecol(a, grid<T>(3, 3)), by_cols, "niezgodna liczba wierszy");
    EXPECT_REFUSAL_OF(T, shufflecol(a, grid<T>(4, 3)), by_cols, "niewlasciwa liczba kolumn");
    EXPECT_REFUSAL_OF(T, shufflecol(a, data<T>(4, 0)), by_cols, "niewlasciwa liczba kolumn");
    EXPECT_REFUSAL_OF(T, shufflerow(a, grid<T>(3, 3)), by_rows, "niezgodna liczba kolumn");
    EXPECT_REFUSAL_OF(T, shufflerow(a, grid<T>(8, 4)), by_rows, "niewlasciwa liczba wierszy");
    EXPECT_REFUSAL_OF(T, shufflerow(a, data<T>(0, 4)), by_rows, "niewlasciwa liczba wierszy");
    T (*f)(T, T) = [](T x, T) { return x; };
    std::string const pairs = "_data_ outer(_data_,_data_,_T_ f(_T_,_T_))";
    EXPECT_REFUSAL_OF(T, outer(a, a, f), pairs, "pierwszy argument ma byc wektorem");
    EXPECT_REFUSAL_OF(T, outer(data<T>(), a, f), pairs, "drugi argument ma byc wektorem");
}

namespace {

template <class M, class T> void every_form_gives()
{
    M const a = grid<T>(2, 2), row = a.row(1);
    Vector const one = c(1);
    T (*f)(T) = [](T x) { return x; };
    T (*g)(T, double) = [](T x, double) { return x; };
    T (*h)(T, T) = [](T x, T) { return x; };
    auto check = [](auto const&... r) {
        static_assert((std::is_same<std::decay_t<decltype(r)>, M>::value && ...));
    };
    check(col(a, one), varnow::row(a, one), get(a, one, one), filter(a, c(1, 1)), a.col(1),
          a.row(one), a[1], a["c1"], a | a, a & a, a + a, ~a, up(a), down(a), tril(a), triu(a),
          rot90(a), flipud(a), fliplr(a), rep(row, 2), rep(row, c(1, 2)), replen(row, 3),
          repeach(row, 2), shufflecol(a, a), shufflerow(a, a), outer(row, row, h), forall(a, f),
          forall(a, g, 1.0), forcol(a, 1, f), forcol(a, 1, g, 1.0), forrow(a, 1, f),
          forrow(a, 1, g, 1.0));
}

} // namespace

TEST(Binding, AMatrixGivesAMatrixAndATableATable)
{
    every_form_gives<matrix, double>();
    every_form_gives<table, Text>();
}
