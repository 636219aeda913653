#include <varnow/containers/matrix.h>
#include <varnow/containers/vector.h>

#include "tests/support/containers.h"

#include <climits>
#include <new>
#include <tuple>

using namespace varnow;
using namespace varnow::test;

TEST(Vector, IsBuiltFromValuesAndRanges)
{
    std::pair<Vector, char const*> const rows[] = {
        {c(7), "7"},           {vi(3, 4, 5, 6), "4 5 6"}, {vi(2, 4, 5, 6), "4 5"},
        {vi(0), ""},           {$(3), "1 2 3"},           {$(0), ""},
        {$(INT_MIN), ""},      {$(2, 4), "2 3 4"},        {$(3, 1), "3 2 1"},
        {$(2, 2), "2"},        {$(5, 2, 1), "5 3 1"},     {$(1, 2, 6), "1 3 5"},
        {$(6, 4, 1), "6 2"},   {$(1, 9, 4), "1"},         {$(1, -4, 5), ""},
        {filled(7, 2), "7 7"}, {vzeros(2), "0 0"},        {vones(2), "1 1"},
    };
    for (auto const& [x, text] : rows) EXPECT_EQ(show(x), text);
    expect_shown<Vector>({
        {c(1, -2, 3, 4, 5, 6, 7, 8, 9, 10), "1 -2 3 4 5 6 7 8 9 10"},
        {$(INT_MAX - 1, INT_MAX), "2147483646 2147483647"},
        {$(INT_MIN + 1, INT_MIN), "-2147483647 -2147483648"},
        {$(INT_MIN, INT_MAX, INT_MAX), "-2147483648 -1 2147483646"},
        {$(INT_MAX, INT_MAX, INT_MIN), "2147483647 0 -2147483647"},
    });
}

TEST(Vector, SumsAndFindsAndNegates)
{
    EXPECT_EQ(sum(c(4, -1, 2)) + sum(Vector()), 5);
    // 2 and 4 have no bit in common.
    std::pair<Vector, char const*> const rows[] = {
        {c(0, 0, 2, 4) && c(0, 1, 0, 1), "0 0 0 1"}, {find(c(0, 2, 0, -1)), "2 4"},
        {c(0, 0, 2, 4) || c(0, 1, 0, 1), "0 1 1 1"}, {find(c(1, 1, 0, 0)), "1 2"},
        {-c(1, -2, INT_MIN), "-1 2 -2147483648"},    {!c(0, 5, -1), "1 0 0"},
    };
    for (auto const& [x, text] : rows) EXPECT_EQ(show(x), text);
    for (Vector const& none : {find(c(0, 0)), find(Vector()), c(1, 0) && c(1, 1, 1),
                               c(1, 0) || c(1, 1, 1), nindex(c(-1), 1)})
        EXPECT_EQ(none.v, nullptr);
}

TEST(Vector, NegativePositionsGiveTheComplement)
{
    // Only what lies in -n to -1 counts.
    std::tuple<Vector, int, char const*> const rows[] = {
        {c(-3, 2, 0, -7), 4, "1 2 4"}, {c(-2), 4, "1 3 4"},  {c(-1), 1, ""},
        {c(-3, -1, -3), 4, "2 4"},     {c(-4), 4, "1 2 3"},  {c(-1, -2), 2, ""},
        {c(INT_MIN), 2, "1 2"},        {c(2), 4, "1 2 3 4"}, {c(-1), 0, ""},
        {c(-9), 4, "1 2 3 4"},         {Vector(), 2, "1 2"}, {c(-1), -5, ""},
    };
    for (auto const& [a, n, rest] : rows) EXPECT_EQ(show(nindex(a, n)), rest) << show(a);
}

TEST(Vector, OwnsItsElements)
{
    Vector a = c(1, 2, 3), b = a;
    b.v[0] = 9;
    EXPECT_EQ(show(a), "1 2 3");
    int const* const kept = a.v;
    Vector const other = c(4, 5, 6), &same = a;
    a = other;
    a = same;
    a.resize(3);
    EXPECT_EQ(a.v, kept) << "equal lengths keep the array";
    EXPECT_EQ(show(a), "4 5 6");
    a = c(7, 8);
    EXPECT_EQ(show(a), "7 8");
    a.fill(-1);
    EXPECT_EQ(show(a), "-1 -1");

    Vector moved = static_cast<Vector&&>(b);
    EXPECT_EQ(show(moved), "9 2 3");
    Vector freed = c(1, 2), resized = freed, assigned = freed;
    freed.free();
    resized.resize(0);
    assigned = Vector();
    for (Vector* empty : {&b, &freed, &resized, &assigned}) {
        EXPECT_EQ(empty->n, 0);
        EXPECT_EQ(empty->v, nullptr);
        *empty = c(3);
        EXPECT_EQ(show(*empty), "3");
    }
}

TEST(Vector, NegativeAndOverflowingCountsFailInTheAllocation)
{
    Vector a = c(1, 2);
    for (void (*make)(Vector&) :
         {+[](Vector&) { Vector(-1); }, +[](Vector&) { vi(-1, 2); },
          +[](Vector&) { filled(0, -1); }, +[](Vector&) { $(1, -1, 5); },
          +[](Vector&) { $(INT_MIN, INT_MAX); }, +[](Vector& x) { x.resize(-1); }})
        EXPECT_THROW(make(a), std::bad_array_new_length);
    EXPECT_EQ(show(a), "1 2");
}

TEST(Vector, BecomesAColumnOfAMatrixAndIsDisplayedInOneLine)
{
    EXPECT_EQ(show(matrix(c(3, -1))), "2x1 . | .: 3 | .: -1");
    EXPECT_EQ(show(matrix(Vector())), "0x1 .");
    testing::internal::CaptureStdout();
    c(1, -20, 3).display("100 %s");
    c(5).display();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "\n100 %s\n  1 -20   3 \n\n\n5 \n\n");
}
