#include <varnow/containers/matrix.h>
#include <varnow/containers/vector.h>

#include "tests/support/containers.h"

#include <climits>
#include <new>

using namespace varnow;
using namespace varnow::test;

TEST(Vector, IsBuiltFromValuesAndRanges)
{
    EXPECT_EQ(show(c(7)), "7");
    EXPECT_EQ(show(c(1, -2, 3, 4, 5, 6, 7, 8, 9, 10)), "1 -2 3 4 5 6 7 8 9 10");
    EXPECT_EQ(show(vi(3, 4, 5, 6)), "4 5 6");
    EXPECT_EQ(show(vi(2, 4, 5, 6)), "4 5");
    EXPECT_EQ(show(vi(0)), "");
    EXPECT_EQ(show($(3)), "1 2 3");
    EXPECT_EQ(show($(0)), "");
    EXPECT_EQ(show($(INT_MIN)), "");
    EXPECT_EQ(show($(2, 4)), "2 3 4");
    EXPECT_EQ(show($(3, 1)), "3 2 1");
    EXPECT_EQ(show($(2, 2)), "2");
    EXPECT_EQ(show($(5, 2, 1)), "5 3 1");
    EXPECT_EQ(show($(1, 2, 6)), "1 3 5");
    EXPECT_EQ(show($(6, 4, 1)), "6 2");
    EXPECT_EQ(show($(1, 9, 4)), "1");
    EXPECT_EQ(show($(1, -4, 5)), "");
    EXPECT_EQ(show(filled(7, 2)), "7 7");
    EXPECT_EQ(show(vzeros(2)), "0 0");
    EXPECT_EQ(show(vones(2)), "1 1");
    // at the ends of int
    EXPECT_EQ(show($(INT_MAX - 1, INT_MAX)), "2147483646 2147483647");
    EXPECT_EQ(show($(INT_MIN + 1, INT_MIN)), "-2147483647 -2147483648");
    EXPECT_EQ(show($(INT_MIN, INT_MAX, INT_MAX)), "-2147483648 -1 2147483646");
    EXPECT_EQ(show($(INT_MAX, INT_MAX, INT_MIN)), "2147483647 0 -2147483647");
}

TEST(Vector, SumsAndFindsAndNegates)
{
    EXPECT_EQ(sum(Vector()), 0);
    EXPECT_EQ(sum(c(4, -1, 2)), 5);
    EXPECT_EQ(show(find(c(0, 2, 0, -1))), "2 4");
    EXPECT_EQ(show(find(c(1, 1, 0, 0))), "1 2");
    EXPECT_EQ(find(c(0, 0)).v, nullptr);
    EXPECT_EQ(find(Vector()).n, 0);
    EXPECT_EQ(show(-c(1, -2, 0)), "-1 2 0");
    EXPECT_EQ(show(-c(INT_MIN)), "-2147483648");
    EXPECT_EQ(show(!c(0, 5, -1)), "1 0 0");
    EXPECT_EQ(show(c(0, 0, 2, 4) && c(0, 1, 0, 1)), "0 0 0 1"); // 2 and 4 have no bit in common
    EXPECT_EQ(show(c(0, 0, 2, 4) || c(0, 1, 0, 1)), "0 1 1 1");
    EXPECT_EQ((c(1, 0) && c(1, 1, 1)).v, nullptr);
    EXPECT_EQ((c(1, 0) || c(1, 1, 1)).v, nullptr);
}

TEST(Vector, NegativePositionsGiveTheComplement)
{
    struct
    {
        Vector a;
        int n;
        char const* rest;
    } const cases[] = {
        {c(-2), 4, "1 3 4"},
        {c(-4), 4, "1 2 3"},
        {c(-9), 4, "1 2 3 4"},
        {c(2), 4, "1 2 3 4"},
        {c(INT_MIN), 2, "1 2"},
        {c(-1), 1, ""},
        {c(-1, -2), 2, ""},
        {c(-3, -1, -3), 4, "2 4"},
        {c(-3, 2, 0, -7), 4, "1 2 4"}, // only what lies in -4 to -1 counts
        {Vector(), 2, "1 2"},
        {c(-1), 0, ""},
        {c(-1), -5, ""},
    };
    for (auto const& k : cases) EXPECT_EQ(show(nindex(k.a, k.n)), k.rest) << show(k.a);
    EXPECT_EQ(nindex(c(-1), 1).v, nullptr);
}

TEST(Vector, OwnsItsElements)
{
    Vector a = c(1, 2, 3), b = a;
    b.v[0] = 9;
    EXPECT_EQ(show(a), "1 2 3");

    int const* const kept = a.v;
    Vector const other = c(4, 5, 6);
    a = other;
    EXPECT_EQ(a.v, kept) << "equal lengths keep the array";
    EXPECT_EQ(show(a), "4 5 6");
    Vector const& same = a;
    a = same;
    a.resize(3);
    EXPECT_EQ(show(a), "4 5 6");
    a = c(7, 8);
    EXPECT_EQ(show(a), "7 8");
    a.fill(-1);
    EXPECT_EQ(show(a), "-1 -1");

    Vector moved = static_cast<Vector&&>(b);
    EXPECT_EQ(show(moved), "9 2 3");
    EXPECT_EQ(b.n, 0);
    EXPECT_EQ(b.v, nullptr);
    for (void (*empty)(Vector&) : {+[](Vector& x) { x.free(); }, +[](Vector& x) { x.resize(0); },
                                   +[](Vector& x) { x = Vector(); }}) {
        Vector x = c(1, 2);
        empty(x);
        EXPECT_EQ(x.n, 0);
        EXPECT_EQ(x.v, nullptr);
        x = c(3);
        EXPECT_EQ(show(x), "3");
    }
}

TEST(Vector, NegativeAndOverflowingCountsFailInTheAllocation)
{
    EXPECT_THROW(Vector(-1), std::bad_array_new_length);
    EXPECT_THROW(vi(-1, 2), std::bad_array_new_length);
    EXPECT_THROW(filled(0, -1), std::bad_array_new_length);
    EXPECT_THROW($(1, -1, 5), std::bad_array_new_length);
    EXPECT_THROW($(INT_MIN, INT_MAX), std::bad_array_new_length);
    Vector a = c(1, 2);
    EXPECT_THROW(a.resize(-1), std::bad_array_new_length);
    EXPECT_EQ(show(a), "1 2");
}

TEST(Vector, BecomesAColumnOfAMatrix)
{
    EXPECT_EQ(show(matrix(c(3, -1))), "2x1 . | .: 3 | .: -1");
    EXPECT_EQ(show(matrix(Vector())), "0x1 .");
}

TEST(Vector, IsDisplayedInOneLine)
{
    testing::internal::CaptureStdout();
    c(1, -20, 3).display("100 %s");
    c(5).display();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "\n100 %s\n  1 -20   3 \n\n\n5 \n\n");
}
