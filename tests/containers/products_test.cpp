#include <varnow/containers/matrix_products.h>

#include "tests/support/bits.h"
#include "tests/support/refusal.h"

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

using namespace varnow;
using test::same_bits;
using test::scattered;

namespace {

// A turned or not, times B turned or not, by the plain loop.
matrix plain(matrix const& A, bool turn_a, matrix const& B, bool turn_b)
{
    int const m = turn_a ? A.cols : A.rows, depth = turn_a ? A.rows : A.cols;
    matrix r(m, turn_b ? B.rows : B.cols);
    for (int i = 0; i < r.rows; ++i)
        for (int j = 0; j < r.cols; ++j) {
            double& s = r.cell[i][j] = 0;
            for (int k = 0; k < depth; ++k)
                s +=
                    (turn_a ? A.cell[k][i] : A.cell[i][k]) * (turn_b ? B.cell[j][k] : B.cell[k][j]);
        }
    return r;
}

matrix named(char const* literal)
{
    matrix m(literal);
    for (int i = 1; i <= m.rows; ++i) m.rowname(i) = Text("r") + itot(i);
    for (int j = 1; j <= m.cols; ++j) m.colname(j) = Text("c") + itot(j);
    return m;
}

std::string names(Text const* name, int n)
{
    std::string all;
    for (int i = 0; i < n; ++i) all += std::string(name[i].str) + ' ';
    return all;
}

} // namespace

TEST(Products, GiveTheHandCalculatedCellsUnderTheRightNames)
{
    matrix const a = named("1 2 3; 4 5 6");
    matrix b("7 8; 9 10; 11 12"), bt("7 9 11; 8 10 12");
    for (int i = 0; i < 2; ++i) b.cnames[i] = bt.rnames[i] = i ? "q" : "p";
    struct
    {
        char const* what;
        matrix got;
        char const* cells;
        char const* rows;
        char const* cols;
    } const cases[] = {
        {"mul", mul(a, b), "58 64; 139 154", "r1 r2 ", "p q "},
        {"mulT", mulT(a, bt), "58 64; 139 154", "r1 r2 ", "p q "},
        {"sqrT", sqrT(a), "14 32; 32 77", "r1 r2 ", "r1 r2 "},
        {"sqrT2", sqrT2(a), "17 22 27; 22 29 36; 27 36 45", "c1 c2 c3 ", "c1 c2 c3 "},
        {"crossprod", crossprod(a), "17 22 27; 22 29 36; 27 36 45", "c1 c2 c3 ", "c1 c2 c3 "},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_TRUE(same_bits(c.got, matrix(c.cells)));
        EXPECT_EQ(names(c.got.rnames, c.got.rows), c.rows);
        EXPECT_EQ(names(c.got.cnames, c.got.cols), c.cols);
    }
}

// Shapes on both sides of every tile and block of the kernel, with and without values that a
// skipped or an added term would betray.
TEST(Products, HaveTheBitsOfThePlainLoops)
{
    struct
    {
        int m, depth, n;
    } const shapes[] = {
        {1, 1, 1},     {1, 5, 1},      {1, 0, 3},       {3, 0, 2},      {0, 4, 5},     {5, 4, 0},
        {1, 300, 1},   {1, 700, 50},   {50, 700, 1},    {300, 9, 3},    {2, 40, 300},  {7, 23, 25},
        {8, 24, 24},   {9, 25, 23},    {16, 129, 47},   {17, 128, 48},  {33, 257, 49}, {64, 64, 64},
        {97, 300, 31}, {130, 513, 95}, {251, 270, 203}, {40, 31, 2100}, {2100, 33, 40}};
    for (auto const& s : shapes)
        for (double specials : {0.0, 0.02, 0.3}) {
            SCOPED_TRACE(testing::Message() << s.m << " x " << s.depth << " x " << s.n << ", "
                                            << specials << " special");
            matrix const a = scattered(s.m, s.depth, 1, specials);
            matrix const b = scattered(s.depth, s.n, 2, specials);
            matrix const bt = scattered(s.n, s.depth, 3, specials);
            matrix const ab = plain(a, false, b, false), abt = plain(a, false, bt, true);
            matrix const aat = s.m > 300 ? matrix() : plain(a, false, a, true);
            matrix const ata = s.depth > 300 ? matrix() : plain(a, true, a, false);
            test::on_every_machine([&] {
                EXPECT_TRUE(same_bits(mul(a, b), ab));
                EXPECT_TRUE(same_bits(mulT(a, bt), abt));
                if (aat.rows == s.m) {
                    EXPECT_TRUE(same_bits(sqrT(a), aat));
                }
                if (ata.rows == s.depth) {
                    EXPECT_TRUE(same_bits(sqrT2(a), ata));
                    EXPECT_TRUE(same_bits(crossprod(a), ata));
                }
            });
        }
}

TEST(ProductKernel, TakesDeviationsFromAShift)
{
    matrix const a = scattered(131, 27, 5), shift = scattered(1, 27, 6);
    matrix deviations = a;
    for (int i = 0; i < a.rows; ++i)
        for (int j = 0; j < a.cols; ++j) deviations.cell[i][j] -= shift.cell[0][j];
    matrix const expected = plain(deviations, true, deviations, false);
    test::on_every_machine([&] {
        matrix r(27, 27);
        detail::crossproduct(a.cell, a.rows, a.cols, shift.cell[0], r.cell);
        EXPECT_TRUE(same_bits(r, expected));
    });
}

TEST(Products, OfASumThatStartsAtZeroAreNeverNegativeZero)
{
    matrix const zero("-0"), one(1.0);
    for (matrix const& r : {mul(zero, one), mulT(zero, one)}) EXPECT_FALSE(std::signbit(r(1, 1)));
}

TEST(VectorMeasures, FollowTheirFormulas)
{
    matrix const row("1 2 3"), other("4 -5 6"), column("2; -1");
    EXPECT_EQ(scmul(row, other), 12.0);
    EXPECT_EQ(scmul(matrix(3.0), matrix(4.0)), 12.0);
    EXPECT_EQ(scsqr(column), 5.0);
    EXPECT_EQ(norm2(matrix("3; 4")), 5.0);
    EXPECT_EQ(trace("1 2; 3 4"), 5.0);
    // v1 (v1 a11 + v2 a21) + v2 (v1 a12 + v2 a22) = 2 (2 - 3) - 1 (4 - 4)
    EXPECT_EQ(comut("1 2; 3 4", column), -2.0);
    matrix b("1 1 0");
    b.colname(1) = "b";
    matrix const p = proj(matrix("3 1 7"), b);
    EXPECT_TRUE(same_bits(p, matrix("2 2 0")));
    EXPECT_EQ(p.colname(1), "b");
}

TEST(VectorMeasures, OfNoCellsAreZero)
{
    matrix const none, empty_column(0, 1), bare_rows(3, 0);
    EXPECT_EQ(scmul(none, none), 0.0);
    EXPECT_EQ(scmul(empty_column, matrix(5.0)), 0.0);
    EXPECT_EQ(scsqr(bare_rows), 0.0);
    EXPECT_EQ(norm2(none), 0.0);
    EXPECT_EQ(comut(none, none), 0.0);
    EXPECT_EQ(comut(matrix("1 2 3; 4 5 6; 7 8 9"), bare_rows), 0.0);
    EXPECT_EQ(trace(none), 0.0);
}

TEST(Outer, CombinesEveryPairByTheGivenOperator)
{
    struct
    {
        char op;
        char const* cells;
    } const cases[] = {
        {'+', "3 5; 9 11"}, {'-', "-1 -3; 5 3"}, {'*', "2 4; 14 28"}, {'/', "0.5 0.25; 3.5 1.75"}};
    matrix const a = named("1; 7"), b = named("2 4");
    for (auto const& c : cases) {
        matrix const r = outer(a, b, c.op);
        EXPECT_TRUE(same_bits(r, matrix(c.cells))) << c.op;
        EXPECT_EQ(names(r.rnames, 2) + names(r.cnames, 2), "    ");
    }
    EXPECT_EQ(outer(matrix(0, 1), b, '*').rows, 0);
    EXPECT_EQ(outer(a, matrix(), '*').cols, 0);
}

// Each row breaks one rule and, where it can, the later ones too.
TEST(ProductsDeathTest, RefuseInTheirOrder)
{
    matrix const table(2, 2), wide(2, 3), row("1 2"), column("1; 2"), longer("1 2 3");
    char const* const sizes = "niezgodne wymiary macierzy";
    struct
    {
        std::function<void()> call;
        char const* routine;
        char const* message;
    } const cases[] = {
        {[&] { mul(wide, wide); }, "matrix mul(matrix,matrix)", sizes},
        {[&] { mulT(wide, table); }, "matrix mulT(matrix,matrix)", sizes},
        {[&] { scmul(table, wide); }, "double scmul(matrix,matrix)",
         "pierwszy argument musi byc wektorem"},
        {[&] { scmul(column, wide); }, "double scmul(matrix,matrix)",
         "drugi argument musi byc wektorem"},
        {[&] { scmul(column, longer); }, "double scmul(matrix,matrix)",
         "niezgodna dlugosc wektorow wejsciowych"},
        {[&] { scmul(column, row); }, "double scmul(matrix,matrix)",
         "niezgodna orientacja wektorow wejsciowych"},
        {[&] { norm2(table); }, "double scmul(matrix,matrix)",
         "pierwszy argument musi byc wektorem"},
        {[&] { proj(row, column); }, "double scmul(matrix,matrix)",
         "niezgodna orientacja wektorow wejsciowych"},
        {[&] { scsqr(table); }, "double scsqr(matrix)", "argument musi byc wektorem"},
        {[&] { comut(wide, wide); }, "double comut(matrix,matrix)",
         "pierwszy argument musi byc macierza kwadratowa"},
        {[&] { comut(table, longer); }, "double comut(matrix,matrix)",
         "drugi argument musi byc wektorem kolumnowym"},
        {[&] { comut(table, matrix(1.0)); }, "double comut(matrix,matrix)",
         "wektor ma inna dlugosc niz wymiary macierzy"},
        {[&] { trace(wide); }, "double trace(matrix)", "oczekiwana macierz kwadratowa"},
        {[&] { outer(table, table, '?'); }, "matrix outer(matrix,matrix,char)",
         "pierwszy argument ma byc wektorem"},
        {[&] { outer(row, table, '?'); }, "matrix outer(matrix,matrix,char)",
         "drugi argument ma byc wektorem"},
        {[&] { outer(row, row, '?'); }, "matrix outer(matrix,matrix,char)",
         "oczekiwana funkcja +,-,* lub /"},
    };
    for (auto const& c : cases) EXPECT_REFUSAL(c.call(), "MATRIX", c.routine, c.message);
}
