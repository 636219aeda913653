#include <varnow/containers/matrix_special.h>

#include "tests/support/bits.h"
#include "tests/support/containers.h"

using namespace varnow;
using namespace varnow::test;

TEST(SpecialMatrices, StandAsFreeFunctionsAndAsMembersThatKeepSizesAndNames)
{
    struct
    {
        matrix (*free)(int, int);
        matrix (*square)(int);
        void (matrix::*member)();
        char const* two_by_three;
    } const rows[] = {
        {zeros, zeros, &matrix::zeros, "2x3 c1 c2 c3 | r1: . . . | r2: . . ."},
        {ones, ones, &matrix::ones, "2x3 c1 c2 c3 | r1: 1 1 1 | r2: 1 1 1"},
        {eye, eye, &matrix::eye, "2x3 c1 c2 c3 | r1: 1 . . | r2: . 1 ."},
    };
    for (auto const& row : rows) {
        matrix in_place = grid<double>(2, 3), empty;
        (in_place.*row.member)();
        (empty.*row.member)();
        EXPECT_EQ(show(in_place), row.two_by_three);
        EXPECT_EQ(show(empty), "0x0");
        EXPECT_EQ(row.free(2, 3).colname(3), Text());
        EXPECT_EQ(show(named(row.free(2, 3))), row.two_by_three);
        EXPECT_EQ(show(row.square(2)), show(row.free(2, 2)));
        EXPECT_EQ(show(row.free(0, 2)), "0x2 . .");
    }
    EXPECT_EQ(show(eye(3, 2)), "3x2 . . | .: 1 . | .: . 1 | .: . .");
    matrix m(2, 2);
    m.test(0.5, "x");
    EXPECT_EQ(show(m), "2x2 xC1 xC2 | xR1: 1.5 2.5 | xR2: 3.5 4.5");
    m.test();
    EXPECT_EQ(show(m), "2x2 C1 C2 | R1: 1 2 | R2: 3 4");
}

TEST(SpecialMatrices, RunFromOneNumberToAnother)
{
    std::pair<matrix, matrix> const rows[] = {
        {linspace(1, 2, 3), "1 1.5 2"},     {linspace(7, 9, 1), "7"},
        {linspace(2, 1, 3), "2 1.5 1"},     {seq(1, 10, 4), "1 5 9"},
        {linspace(7, 9, 0), matrix(1, 0)},  {seq(5, 1), "5 4 3 2 1"},
        {linspace(7, 9, -2), matrix(1, 0)}, {seq(2, 2), "2"},
        {vd(2, 1.5, 2.5, 3.5), "1.5 2.5"},  {seq(3, 3, -1), "3"},
        {seq(0.5, 3), "0.5 1.5 2.5"},       {seq(1, -1, -2), "1 -1"},
        {seq(1, 0, -0.5f), "1 0.5 0"},
    };
    expect_alike(rows);
    EXPECT_EQ(show(c(1, 2, 3, 4, 5, 6, 7, 8, 9, 0.5)), show(matrix("1 2 3 4 5 6 7 8 9 0.5")));
    // A step that is no binary fraction carries the rounding of every addition.
    double sum = 0;
    for (int k = 0; k < 10; ++k) sum += 0.1;
    EXPECT_EQ(linspace(0, 1, 11)(11), sum);
    EXPECT_EQ(seq(0, 1, 0.1)(4), 0.1 + 0.1 + 0.1);
}

TEST(SpecialMatricesDeathTest, RefuseASequenceThatDoesNotArrive)
{
    double const steps[][3] = {{1, 5, -1},  {5, 1, 1},   {1, 5, 0},    {1, 5, NaN},
                               {NaN, 5, 1}, {1, inf, 1}, {0, 1e10, 1}, {0, 1, 1e-10}};
    for (auto const& s : steps)
        EXPECT_REFUSAL(seq(s[0], s[1], s[2]), "MATRIX", "matrix seq(double,double,double)",
                       "niewlasciwe argumenty");
    for (double end : {NaN, inf, -1e10})
        EXPECT_REFUSAL(seq(0, end), "MATRIX", "matrix seq(double,double)", "niewlasciwe argumenty");
}
