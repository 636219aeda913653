#include <varnow/containers/matrix_special.h>

#include "tests/support/bits.h"
#include "tests/support/containers.h"

#include <cmath>
#include <limits>

using namespace varnow;
using test::grid;
using test::show;

TEST(SpecialMatrices, StandAsFreeFunctionsAndAsMembersThatKeepSizesAndNames)
{
    struct
    {
        char const* name;
        matrix (*free)(int, int);
        matrix (*square)(int);
        void (matrix::*member)();
        char const* two_by_three;
        char const* one_by_one;
    } const rows[] = {
        {"zeros", zeros, zeros, &matrix::zeros, "r1: . . . | r2: . . .", ": ."},
        {"ones", ones, ones, &matrix::ones, "r1: 1 1 1 | r2: 1 1 1", ": 1"},
        {"eye", eye, eye, &matrix::eye, "r1: 1 . . | r2: . 1 .", ": 1"},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.name);
        matrix named = grid<double>(2, 3);
        (named.*row.member)();
        EXPECT_EQ(show(named), std::string("2x3 c1 c2 c3 | ") + row.two_by_three);
        matrix const plain = row.free(2, 3);
        EXPECT_TRUE(test::same_bits(plain, named));
        EXPECT_EQ(plain.cnames[0].len + plain.rnames[1].len, 0);
        EXPECT_EQ(show(row.square(1)), std::string("1x1 . | .") + row.one_by_one);
        EXPECT_EQ(show(row.free(0, 2)), "0x2 . .");
        matrix empty;
        (empty.*row.member)();
        EXPECT_EQ(show(empty), "0x0");
    }
    EXPECT_EQ(show(eye(3, 2)), "3x2 . . | .: 1 . | .: . 1 | .: . .");
}

TEST(SpecialMatrices, RunFromOneNumberToAnother)
{
    struct
    {
        char const* call;
        matrix m;
        char const* cells;
    } const rows[] = {
        {"linspace(1, 2, 5)", linspace(1, 2, 5), "1x5 . . . . . | .: 1 1.25 1.5 1.75 2"},
        {"linspace(2, 1, 3)", linspace(2, 1, 3), "1x3 . . . | .: 2 1.5 1"},
        {"linspace(7, 9, 1)", linspace(7, 9, 1), "1x1 . | .: 7"},
        {"linspace(7, 9, 0)", linspace(7, 9, 0), "1x0 | .:"},
        {"linspace(7, 9, -2)", linspace(7, 9, -2), "1x0 | .:"},
        {"seq(5, 1)", seq(5, 1), "1x5 . . . . . | .: 5 4 3 2 1"},
        {"seq(0.5, 3)", seq(0.5, 3), "1x3 . . . | .: 0.5 1.5 2.5"},
        {"seq(2, 2)", seq(2, 2), "1x1 . | .: 2"},
        {"seq(1, 10, 4)", seq(1, 10, 4), "1x3 . . . | .: 1 5 9"},
        {"seq(1, 0, -0.5f)", seq(1, 0, -0.5f), "1x3 . . . | .: 1 0.5 ."},
        {"seq(3, 3, -1)", seq(3, 3, -1), "1x1 . | .: 3"},
        {"vd(2, 1.5, 2.5, 3.5)", vd(2, 1.5, 2.5, 3.5), "1x2 . . | .: 1.5 2.5"},
        {"c of ten", c(1, 2, 3, 4, 5, 6, 7, 8, 9, 0.5),
         "1x10 . . . . . . . . . . | .: 1 2 3 4 5 6 7 8 9 0.5"},
    };
    for (auto const& row : rows) EXPECT_EQ(show(row.m), row.cells) << row.call;
}

// A step that is no binary fraction carries the rounding of every addition.
TEST(SpecialMatrices, AddTheStepAgainAndAgain)
{
    matrix const m = linspace(0, 1, 11);
    double sum = 0;
    for (int k = 0; k < 10; ++k) sum += 0.1;
    EXPECT_EQ(m(11), sum);
    EXPECT_NE(m(11), 1.0);
    EXPECT_EQ(seq(0, 1, 0.1)(4), 0.1 + 0.1 + 0.1);
}

TEST(SpecialMatrices, TestNumbersTheCellsRowByRow)
{
    matrix m(2, 2);
    m.test(0.5, "x");
    EXPECT_EQ(show(m), "2x2 xC1 xC2 | xR1: 1.5 2.5 | xR2: 3.5 4.5");
    m.test();
    EXPECT_EQ(show(m), "2x2 C1 C2 | R1: 1 2 | R2: 3 4");
}

TEST(SpecialMatricesDeathTest, RefuseASequenceThatDoesNotArrive)
{
    double const NaN = std::nan(""), inf = std::numeric_limits<double>::infinity();
    double const steps[][3] = {{1, 5, -1},  {5, 1, 1},   {1, 5, 0},    {1, 5, NaN},
                               {NaN, 5, 1}, {1, inf, 1}, {0, 1e10, 1}, {0, 1, 1e-10}};
    for (auto const& s : steps)
        EXPECT_REFUSAL(seq(s[0], s[1], s[2]), "MATRIX", "matrix seq(double,double,double)",
                       "niewlasciwe argumenty");
    for (double end : {NaN, inf, -1e10})
        EXPECT_REFUSAL(seq(0, end), "MATRIX", "matrix seq(double,double)", "niewlasciwe argumenty");
}
