#include <varnow/containers/matrix_arithmetic.h>
#include <varnow/containers/slicing.h>

#include "tests/support/containers.h"

#include <climits>
#include <new>

using namespace varnow;
using namespace varnow::test;

namespace {

template <class> using Binding = testing::Test;
template <class> using BindingDeathTest = testing::Test;
TYPED_TEST_SUITE(Binding, CellTypes);
TYPED_TEST_SUITE(BindingDeathTest, CellTypes);

} // namespace

TYPED_TEST(Binding, PutsSideBySideAndOnTopOfEachOtherAndAdds)
{
    using T = TypeParam;
    data<T> const a = grid<T>(2, 1), last = grid<T>(1, 1, "x");
    data<T> b = grid<T>(2, 2, "x"); // to lie in another order
    b.swap_rows(1, 2);
    b = flipud(b);
    data<T> beside = a, below = a, twice = a, doubled = a, sum = a, none;
    auto self = [](data<T>& x) -> data<T>& { return x; }; // compilers warn of x |= x
    beside |= b;
    below &= last;
    twice |= self(twice);
    doubled = doubled & doubled;
    sum += self(sum);
    none |= self(none);
    none &= data<T>();
    std::string const side_by_side = "2x3 c1 xc1 xc2 | r1: 11 11 12 | r2: 21 21 22";
    std::string const on_top = "3x1 c1 | r1: 11 | r2: 21 | xr1: 11";
    std::string const sums = "2x1 c1 | r1: " + show(cell<T>(11) + cell<T>(11)) +
                             " | r2: " + show(cell<T>(21) + cell<T>(21));
    expect_shown<data<T>>({
        {a | b, side_by_side},
        {beside, side_by_side},
        {a & last, on_top},
        {below, on_top},
        {twice, "2x2 c1 c1 | r1: 11 11 | r2: 21 21"},
        {doubled, "4x1 c1 | r1: 11 | r2: 21 | r1: 11 | r2: 21"},
        {a + named(a, "x"), sums},
        {sum, sums},
        {none, "0x0"},
        {a | data<T>(2, 0), show(a)},
        {data<T>(0, 1) & a, "2x1 . | r1: 11 | r2: 21"},
        {data<T>() | grid<T>(0, 2), "0x2 c1 c2"},
    });
}

TYPED_TEST(Binding, RepeatsVectorsInTheirOrientationWithoutNames)
{
    using T = TypeParam;
    data<T> const row = grid<T>(1, 2), column = grid<T>(2, 1);
    std::pair<data<T>, matrix> const rows[] = {
        {rep(row, 2), "11 12 11 12"},           {rep(column, 2), "11; 21; 11; 21"},
        {rep(grid<T>(1, 1), 2), "11 11"},       {rep(row, c(2, 0)), "11 11"},
        {rep(column, c(1, 2)), "11; 21; 21"},   {rep(column, c(0, 0)), matrix(0, 1)},
        {rep(data<T>(1, 0), 3), matrix(1, 0)},  {rep(data<T>(), Vector()), matrix()},
        {replen(row, 3), "11 12 11"},           {replen(column, 1), "11"},
        {replen(column, 3), "11; 21; 11"},      {repeach(row, 2), "11 11 12 12"},
        {repeach(column, 2), "11; 11; 21; 21"}, {repeach(data<T>(0, 1), 3), matrix(0, 1)},
    };
    expect_alike(rows);
    EXPECT_THROW(rep(row, INT_MAX), std::bad_array_new_length);
    EXPECT_THROW(repeach(row, INT_MAX), std::bad_array_new_length);
    EXPECT_THROW(rep(row, c(INT_MAX, INT_MAX)), std::bad_array_new_length);
}

TYPED_TEST(Binding, InterleavesLinesAndTakesAFunctionOfEveryPair)
{
    using T = TypeParam;
    data<T> const a = grid<T>(1, 4), b = grid<T>(1, 2, "x"), column = grid<T>(2, 1);
    T (*first)(T, T) = [](T x, T) { return x; };
    T (*second)(T, T) = [](T, T y) { return y; };
    expect_shown<data<T>>({
        {shufflecol(a, b), "1x6 c1 c2 xc1 c3 c4 xc2 | r1: 11 12 11 13 14 12"},
        {shufflecol(a, a), "1x8 c1 c1 c2 c2 c3 c3 c4 c4 | r1: 11 11 12 12 13 13 14 14"},
        {shufflecol(data<T>(1, 0), b), "1x2 xc1 xc2 | .: 11 12"},
        {shufflerow(flipud(~a), ~b),
         "6x1 r1 | c4: 14 | c3: 13 | xc1: 11 | c2: 12 | c1: 11 | xc2: 12"},
        {outer(column, b, first), "2x2 . . | .: 11 11 | .: 21 21"},
        {outer(b, column, second), "2x2 . . | .: 11 21 | .: 11 21"},
        {outer(data<T>(), b, first), "0x2 . ."},
    });
}

TYPED_TEST(BindingDeathTest, RefusesOtherShapesAndCounts)
{
    using T = TypeParam;
    data<T> a = grid<T>(2, 2);
    data<T> const tall(3, 2), wide(2, 3), row(1, 2), none;
    T (*f)(T, T) = [](T x, T) { return x; };
    std::string const rows = "niezgodna liczba wierszy", cols = "niezgodna liczba kolumn";
    std::string const objects = "niezgodne wymiary obiektow";
    std::string const bad_rows = "niewlasciwa liczba wierszy",
                      bad_cols = "niewlasciwa liczba kolumn";
    std::string const vector = "oczekiwany wektor", few = "zbyt mala wielokrotnosc";
    std::string const beside = "_data_ operator |(_data_,_data_)",
                      by_list = "_data_ rep(_data_,Vector)";
    std::string const by_cols = "_data_ shufflecol(_data_,_data_)",
                      by_rows = "_data_ shufflerow(_data_,_data_)";
    std::string const of_outer = "_data_ outer(_data_,_data_,_T_ f(_T_,_T_))",
                      by_count = "_data_ rep(_data_,int)", to_length = "_data_ replen(_data_,int)";
    EXPECT_REFUSAL_OF(T, a | tall, beside, rows);
    EXPECT_REFUSAL_OF(T, none | a, beside, rows);
    EXPECT_REFUSAL_OF(T, a & wide, "_data_ operator &(_data_,_data_)", cols);
    EXPECT_REFUSAL_OF(T, a |= tall, "operator |=(_data_)", rows);
    EXPECT_REFUSAL_OF(T, a &= wide, "operator &=(_data_)", cols);
    EXPECT_REFUSAL_OF(T, a + tall, "_data_ operator +(_data_,_data_)", objects);
    EXPECT_REFUSAL_OF(T, a += wide, "operator +=(_data_)", objects);
    EXPECT_REFUSAL_OF(T, rep(a, 0), by_count, vector);
    EXPECT_REFUSAL_OF(T, rep(row, 0), by_count, few);
    EXPECT_REFUSAL_OF(T, rep(a, c(1)), by_list, "oczekiwany wektor do replikacji");
    EXPECT_REFUSAL_OF(T, rep(row, c(-1)), by_list, "nieprawidlowa dlugosc wektora wielokrotnosci");
    EXPECT_REFUSAL_OF(T, rep(row, c(1, -1)), by_list, few);
    EXPECT_REFUSAL_OF(T, replen(a, 0), to_length, vector);
    EXPECT_REFUSAL_OF(T, replen(row, 0), to_length, "zbyt mala dlugosc");
    EXPECT_REFUSAL_OF(T, replen(data<T>(1, 0), 3), to_length, vector);
    EXPECT_REFUSAL_OF(T, repeach(a, 0), "_data_ repeach(_data_,int)", vector);
    EXPECT_REFUSAL_OF(T, repeach(row, -1), "_data_ repeach(_data_,int)", few);
    EXPECT_REFUSAL_OF(T, shufflecol(a, tall), by_cols, rows);
    EXPECT_REFUSAL_OF(T, shufflecol(a, wide), by_cols, bad_cols);
    EXPECT_REFUSAL_OF(T, shufflecol(a, data<T>(2, 0)), by_cols, bad_cols);
    EXPECT_REFUSAL_OF(T, shufflerow(a, wide), by_rows, cols);
    EXPECT_REFUSAL_OF(T, shufflerow(a, tall), by_rows, bad_rows);
    EXPECT_REFUSAL_OF(T, shufflerow(a, data<T>(0, 2)), by_rows, bad_rows);
    EXPECT_REFUSAL_OF(T, outer(a, a, f), of_outer, "pierwszy argument ma byc wektorem");
    EXPECT_REFUSAL_OF(T, outer(none, a, f), of_outer, "drugi argument ma byc wektorem");
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
