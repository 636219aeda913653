#include <varnow/containers/ordering.h>

#include "tests/support/containers.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <tuple>

namespace varnow {
namespace {

using namespace test;

TEST(Sets, KeepTheOrderAndTheOrientationOfTheFirstAndNoNames)
{
    matrix const a("5; 1; 5; NaN; 2"), b("2 9 NaN 5 NaN 9"), twos("2; 1; 2"), zeros("0 -0"), none;
    // Nothing left is the empty object; nothing to begin with takes the other's orientation.
    std::pair<matrix, matrix> const rows[] = {
        {unique(b, 1), "2 NaN 5 NaN 9"},         {unique(b), "2 9 NaN 5 NaN"},
        {setintersect(a, b), "5; 5; 2"},         {setdiff(a, b), "1; NaN"},
        {setunion(b, a), "2 9 NaN 5 NaN 1 NaN"}, {setunion(zeros, twos), "0 2 1"},
        {unique(matrix(0, 1)), matrix(0, 1)},    {setdiff(none, a), none},
        {unique(named("4; 4; 4")), "4"},         {setdiff(twos, a), none},
        {setintersect(b, zeros), none},          {setunion(none, none), none},
        {setunion(none, twos), "2; 1"},          {setunion(twos, none), "2; 1"},
    };
    expect_alike(rows);
    EXPECT_EQ(show(setunion(a, b)), show(matrix("5; 1; NaN; 2; 9; NaN; NaN")));
    EXPECT_EQ(show(unique(none)), "0x0");
    EXPECT_FALSE(std::signbit(unique(zeros)(1)));
    EXPECT_TRUE(std::signbit(unique(zeros, 1)(1)));
}

// Sets have no order, repeats or orientation; containers are compared cell by cell. -0.0 equals
// 0.0 and a NaN nothing.
TEST(Sets, AreEqualAsSetsOrAsContainers)
{
    std::tuple<matrix, matrix, int, int> const rows[] = {
        {"1 2 2", "2; 1", 1, 0},        {"0", "-0", 1, 1},
        {"1 2", "1 2 3", 0, 0},         {"1 2 3", "1 2", 0, 0},
        {"1 2", "1 3", 0, 0},           {"1 NaN", "1 NaN", 0, 0},
        {matrix(), matrix(1, 0), 1, 0}, {matrix(), matrix(0, 1), 1, 0},
        {matrix(), matrix(), 1, 1},     {matrix(), "1", 0, 0},
        {"1; 2", named("1; 2"), 1, 1},
    };
    for (auto const& [a, b, as_sets, as_containers] : rows) {
        EXPECT_EQ(setequal(a, b), as_sets) << show(a) << " and " << show(b);
        EXPECT_EQ(compare(a, b), as_containers) << show(a) << " and " << show(b);
    }
    EXPECT_EQ(compare(matrix("1 2; 3 4"), matrix("1 2; 3 5")), 0);
}

TEST(Sets, MatchGivesTheFirstOrTheLastPosition)
{
    matrix const b("7; 8; 7; NaN; 0"), none;
    // Few and many elements take different ways.
    matrix const few("8; 7; NaN; -0"), many("8; 7; NaN; -0; 5; 5; 7");
    std::pair<Vector, char const*> const rows[] = {
        {match(many, b, 0, -1), "2 1 -1 5 -1 -1 1"}, {match(few, b, 0, -1), "2 1 -1 5"},
        {match(many, b, 1, -1), "2 3 -1 5 -1 -1 3"}, {match(few, b, 1, -1), "2 3 -1 5"},
        {iselement(many, b), "1 1 0 1 0 0 1"},       {iselement(few, b), "1 1 0 1"},
        {match(many, none, 1, 9), "9 9 9 9 9 9 9"},  {match(matrix("5"), b), "0"},
    };
    for (auto const& [found, expected] : rows) EXPECT_EQ(show(found), expected);
    EXPECT_EQ(match(none, b).n, 0);
    EXPECT_EQ(iselement(8, b), 1);
    EXPECT_EQ(iselement(NaN, b), 0);
    EXPECT_EQ(iselement(1.0, none), 0);
}

TEST(Sets, TextsAreOneWhenAllTheirBytesAre)
{
    table const x = c("", "ab", Text("ab\0", 3), "AB", "ab", "\xb1", "");
    EXPECT_EQ(show(match(x, unique(x))), "1 2 3 4 2 5 1");
    EXPECT_EQ(iselement("ab", x), 1);
    EXPECT_EQ(iselement("a", x), 0);
    EXPECT_EQ(setequal(x, unique(x, 1)), 1);
}

// Against searches from end to end, over the sizes where the tables grow.
template <class T, class Make> void expect_plain_sets(Make make)
{
    std::mt19937 random(3);
    for (int n : {5, 40, 300, 2500}) {
        std::vector<T> x, y, firsts, lasts, common, rest;
        std::vector<int> first, last;
        for (int i = 0; i < n; ++i) {
            x.push_back(make(static_cast<int>(random() % unsigned(n))));
            y.push_back(make(static_cast<int>(random() % unsigned(n)) + n / 3));
        }
        for (auto v = x.begin(); v != x.end(); ++v) {
            auto const from_start = std::find(y.begin(), y.end(), *v) - y.begin();
            auto const from_end = std::find(y.rbegin(), y.rend(), *v) - y.rbegin();
            first.push_back(from_start < n ? static_cast<int>(from_start) + 1 : 0);
            last.push_back(n - static_cast<int>(from_end));
            (from_start < n ? common : rest).push_back(*v);
            if (std::find(x.begin(), v, *v) == v) firsts.push_back(*v);
            if (std::find(v + 1, x.end(), *v) == x.end()) lasts.push_back(*v);
        }
        data<T> const a = vector_of(x), b = vector_of(y, true);
        EXPECT_EQ(list(unique(a)), firsts);
        EXPECT_EQ(list(unique(a, 1)), lasts);
        EXPECT_EQ(list(match(a, b)), first);
        EXPECT_EQ(list(match(a, b, 1)), last);
        EXPECT_EQ(list(setintersect(a, b)), common);
        EXPECT_EQ(list(setdiff(a, b)), rest);
    }
}

TEST(Sets, TablesOfPositionsAgreeWithPlainSearches)
{
    expect_plain_sets<double>([](int i) { return i * 0.5; });
    expect_plain_sets<double>([](int i) { return 1 + i * 0x1p-52; });
    expect_plain_sets<Text>([](int i) { return Text(i); });
    expect_plain_sets<Text>([](int i) { return "a name of some length " + Text(i); });
}

TEST(SetsDeathTest, RefuseMoreThanVectors)
{
    matrix const m(2, 2), v(1, 2);
    table const t(2, 2);
    char const* const why = "oczekiwany wektor";
    EXPECT_REFUSAL(unique(m), "MATRIX", "matrix unique(matrix,int)", why);
    EXPECT_REFUSAL(setunion(v, m), "MATRIX", "matrix setunion(matrix,matrix)", why);
    EXPECT_REFUSAL(setdiff(m, v), "MATRIX", "matrix setdiff(matrix,matrix)", why);
    EXPECT_REFUSAL(setintersect(t, t), "TABLE", "table setintersect(table,table)", why);
    EXPECT_REFUSAL(setequal(v, m), "MATRIX", "int setequal(matrix,matrix)", why);
    EXPECT_REFUSAL(iselement(m, v), "MATRIX", "Vector iselement(matrix,matrix)", why);
    EXPECT_REFUSAL(match(v, m), "MATRIX", "Vector match(matrix,matrix,int,int)", why);
    EXPECT_REFUSAL(iselement(1.0, m), "MATRIX", "int iselement(double,matrix)", why);
    EXPECT_REFUSAL(iselement("a", t), "TABLE", "int iselement(Text,table)", why);
}

} // namespace
} // namespace varnow
