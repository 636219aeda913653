#include <varnow/containers/matrix_products.h>

#include "tests/support/bits.h"
#include "tests/support/containers.h"

#include <array>
#include <cmath>

using namespace varnow;
using namespace varnow::test;

namespace {

matrix plain(matrix const& a, matrix const& b)
{
    matrix r(a.rows, b.cols);
    for (int i = 0; i < r.rows; ++i)
        for (int j = 0; j < r.cols; ++j) {
            r.cell[i][j] = 0;
            for (int k = 0; k < a.cols; ++k) r.cell[i][j] += a.cell[i][k] * b.cell[k][j];
        }
    return r;
}

} // namespace

TEST(Products, GiveTheHandCalculatedCellsUnderTheRightNames)
{
    matrix const a = named("1 2 3; 4 5 6"), b = named("7 8; 9 10; 11 12", "b"), bt = ~b;
    std::string const product = "2x2 bc1 bc2 | r1: 58 64 | r2: 139 154";
    std::string const cross = "3x3 c1 c2 c3 | c1: 17 22 27 | c2: 22 29 36 | c3: 27 36 45";
    expect_shown<matrix>({
        {mul(a, b), product},
        {mulT(a, bt), product},
        {sqrT(a), "2x2 r1 r2 | r1: 14 32 | r2: 32 77"},
        {sqrT2(a), cross},
        {crossprod(a), cross},
    });
}

// Shapes on both sides of every tile and block of the kernel, with and without values that a
// skipped or an added term would betray.
TEST(Products, HaveTheBitsOfThePlainLoops)
{
    std::array<int, 3> const shapes[] = {
        {1, 1, 1},      {1, 5, 1},       {1, 0, 3},      {3, 0, 2},     {0, 4, 5},
        {5, 4, 0},      {9, 1, 25},      {1, 300, 1},    {1, 700, 50},  {50, 700, 1},
        {300, 9, 3},    {2, 40, 300},    {7, 23, 25},    {8, 24, 24},   {9, 25, 23},
        {16, 129, 47},  {17, 128, 48},   {33, 257, 49},  {64, 64, 64},  {97, 300, 31},
        {130, 513, 95}, {251, 270, 203}, {40, 31, 2100}, {2100, 33, 40}};
    for (auto const& [m, depth, n] : shapes)
        for (double specials : {0.0, 0.02, 0.3}) {
            SCOPED_TRACE(testing::Message()
                         << m << " x " << depth << " x " << n << ", " << specials << " special");
            matrix const a = scattered(m, depth, 1, specials);
            matrix const b = scattered(depth, n, 2, specials);
            matrix const bt = scattered(n, depth, 3, specials);
            matrix const ab = plain(a, b), abt = plain(a, ~bt), ata = plain(~a, a);
            bool const small = m <= 300;
            matrix const aat = small ? plain(a, ~a) : matrix();
            on_every_machine([&] {
                EXPECT_TRUE(same_bits(mul(a, b), ab));
                EXPECT_TRUE(same_bits(mulT(a, bt), abt));
                EXPECT_TRUE(same_bits(sqrT2(a), ata));
                EXPECT_TRUE(same_bits(crossprod(a), ata));
                EXPECT_TRUE(!small || same_bits(sqrT(a), aat));
            });
        }
}

TEST(ProductKernel, TakesDeviationsFromAShift)
{
    matrix const a = scattered(131, 27, 5), shift = scattered(1, 27, 6);
    matrix deviations = a;
    for (int i = 0; i < a.rows; ++i)
        for (int j = 0; j < a.cols; ++j) deviations.cell[i][j] -= shift.cell[0][j];
    matrix const expected = plain(~deviations, deviations);
    on_every_machine([&] {
        matrix r(27, 27);
        detail::crossproduct(a.cell, a.rows, a.cols, shift.cell[0], r.cell);
        EXPECT_TRUE(same_bits(r, expected));
    });
}

TEST(VectorMeasures, FollowTheirFormulas)
{
    matrix const row("1 2 3"), other("4 -5 6"), column("2; -1"), none, empty(0, 1), bare(3, 0);
    EXPECT_EQ(scmul(row, other), 12.0);
    EXPECT_EQ(scmul(matrix(3.0), matrix(4.0)), 12.0);
    EXPECT_EQ(scsqr(column), 5.0);
    EXPECT_EQ(norm2(matrix("3; 4")), 5.0);
    EXPECT_EQ(trace("1 2; 3 4"), 5.0);
    // v1 (v1 a11 + v2 a21) + v2 (v1 a12 + v2 a22) = 2 (2 - 3) - 1 (4 - 4)
    EXPECT_EQ(comut("1 2; 3 4", column), -2.0);
    EXPECT_EQ(show(proj(matrix("3 1 7"), named("1 1 0"))), "1x3 c1 c2 c3 | r1: 2 2 .");
    for (double of_nothing :
         {scmul(none, none), scmul(empty, matrix(5.0)), scsqr(bare), norm2(none), trace(none),
          comut(none, none), comut(matrix("1 2 3; 4 5 6; 7 8 9"), bare)})
        EXPECT_EQ(of_nothing, 0.0);
}

TEST(Outer, CombinesEveryPairByTheGivenOperator)
{
    matrix const a = named("1; 7"), b = named("2 4");
    std::pair<matrix, matrix> const rows[] = {
        {outer(a, b, '+'), "3 5; 9 11"},
        {outer(a, b, '-'), "-1 -3; 5 3"},
        {outer(a, b, '*'), "2 4; 14 28"},
        {outer(a, b, '/'), "0.5 0.25; 3.5 1.75"},
        {outer(matrix(0, 1), b, '*'), matrix(0, 2)},
        {outer(a, matrix(), '*'), matrix(2, 0)},
    };
    expect_alike(rows);
}

// Each row breaks one rule and, where it can, the later ones too.
TEST(ProductsDeathTest, RefuseInTheirOrder)
{
    matrix const table(2, 2), wide(2, 3), row("1 2"), column("1; 2"), longer("1 2 3");
    std::string const sizes = "niezgodne wymiary macierzy";
    std::string const of_scmul = "double scmul(matrix,matrix)",
                      of_comut = "double comut(matrix,matrix)",
                      of_outer = "matrix outer(matrix,matrix,char)";
    std::string const first = "pierwszy argument musi byc wektorem";
    std::string const orientation = "niezgodna orientacja wektorow wejsciowych";
    EXPECT_REFUSAL(mul(wide, wide), "MATRIX", "matrix mul(matrix,matrix)", sizes);
    EXPECT_REFUSAL(mulT(wide, table), "MATRIX", "matrix mulT(matrix,matrix)", sizes);
    EXPECT_REFUSAL(scmul(table, wide), "MATRIX", of_scmul, first);
    EXPECT_REFUSAL(scmul(column, wide), "MATRIX", of_scmul, "drugi argument musi byc wektorem");
    EXPECT_REFUSAL(scmul(column, longer), "MATRIX", of_scmul,
                   "niezgodna dlugosc wektorow wejsciowych");
    EXPECT_REFUSAL(scmul(column, row), "MATRIX", of_scmul, orientation);
    EXPECT_REFUSAL(norm2(table), "MATRIX", of_scmul, first);
    EXPECT_REFUSAL(proj(row, column), "MATRIX", of_scmul, orientation);
    EXPECT_REFUSAL(scsqr(table), "MATRIX", "double scsqr(matrix)", "argument musi byc wektorem");
    EXPECT_REFUSAL(comut(wide, wide), "MATRIX", of_comut,
                   "pierwszy argument musi byc macierza kwadratowa");
    EXPECT_REFUSAL(comut(table, longer), "MATRIX", of_comut,
                   "drugi argument musi byc wektorem kolumnowym");
    EXPECT_REFUSAL(comut(table, matrix(1.0)), "MATRIX", of_comut,
                   "wektor ma inna dlugosc niz wymiary macierzy");
    EXPECT_REFUSAL(trace(wide), "MATRIX", "double trace(matrix)", "oczekiwana macierz kwadratowa");
    EXPECT_REFUSAL(outer(table, table, '?'), "MATRIX", of_outer,
                   "pierwszy argument ma byc wektorem");
    EXPECT_REFUSAL(outer(row, table, '?'), "MATRIX", of_outer, "drugi argument ma byc wektorem");
    EXPECT_REFUSAL(outer(row, row, '?'), "MATRIX", of_outer, "oczekiwana funkcja +,-,* lub /");
}
