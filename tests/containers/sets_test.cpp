#include <varnow/containers/ordering.h>
#include <varnow/containers/slicing.h>

#include "tests/support/refusal.h"

#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace varnow {
namespace {

double const nan = std::numeric_limits<double>::quiet_NaN();

matrix row(std::vector<double> const& x)
{
    matrix r(1, static_cast<int>(x.size()));
    for (std::size_t i = 0; i < x.size(); ++i) r.cell[0][i] = x[i];
    return r;
}
matrix column(std::vector<double> const& x)
{
    matrix r(static_cast<int>(x.size()), 1);
    for (std::size_t i = 0; i < x.size(); ++i) r.cell[i][0] = x[i];
    return r;
}
template <class T> std::vector<T> list(data<T> const& x)
{
    std::vector<T> r;
    for (int i = 0; i < x.rows; ++i) r.insert(r.end(), x.cell[i], x.cell[i] + x.cols);
    return r;
}
std::vector<int> list(Vector const& v)
{
    return std::vector<int>(v.v, v.v + v.n);
}
template <class A> void expect_shape(A const& x, int rows, int cols)
{
    EXPECT_EQ(x.rows, rows);
    EXPECT_EQ(x.cols, cols);
}

using Numbers = std::vector<double>;
using Integers = std::vector<int>;

TEST(Sets, UniqueKeepsTheFirstOrTheLastOfEachValue)
{
    EXPECT_EQ(list(unique(row({1, 2, 1, 3}))), (Numbers{1, 2, 3}));
    EXPECT_EQ(list(unique(row({1, 2, 1, 3}), 1)), (Numbers{2, 1, 3}));
    expect_shape(unique(column({4, 4, 4})), 1, 1);
    expect_shape(unique(column({4, 4, 5})), 2, 1);
    expect_shape(unique(matrix()), 0, 0);
    expect_shape(unique(matrix(0, 1)), 0, 1);

    matrix const with_nan = unique(column({nan, 1, nan, 1}));
    expect_shape(with_nan, 3, 1);
    EXPECT_TRUE(with_nan(1) != with_nan(1) && with_nan(3) != with_nan(3));
    EXPECT_FALSE(std::signbit(unique(row({0.0, -0.0}))(1)));
    EXPECT_TRUE(std::signbit(unique(row({0.0, -0.0}), 1)(1)));

    matrix named = column({7, 7});
    named.colname(1) = "x";
    named.rowname(1) = "r";
    EXPECT_EQ(unique(named).colname(1), "");
    EXPECT_EQ(unique(named).rowname(1), "");
}

TEST(Sets, SetFunctionsKeepTheOrderAndOrientationOfTheFirst)
{
    matrix const a = column({5, 1, 5, nan, 2}), b = row({2, 9, 5, nan, 9});
    matrix const both = setintersect(a, b), only = setdiff(a, b), all = setunion(a, b);
    EXPECT_EQ(list(both), (Numbers{5, 5, 2}));
    expect_shape(both, 3, 1);
    expect_shape(only, 2, 1);
    EXPECT_EQ(only(1), 1);
    EXPECT_TRUE(only(2) != only(2));
    expect_shape(all, 6, 1);
    EXPECT_EQ(list(all.row(c(1, 2, 4, 5))), (Numbers{5, 1, 2, 9}));
    EXPECT_TRUE(all(3) != all(3) && all(6) != all(6));
    expect_shape(setunion(b, a), 1, 6);
    expect_shape(setunion(matrix(3.0), column({1, 2})), 1, 3);

    // Nothing left is the empty object; nothing to begin with takes the other's orientation.
    expect_shape(setdiff(column({1, 1}), row({1})), 0, 0);
    expect_shape(setintersect(row({1, 2}), row({3})), 0, 0);
    expect_shape(setdiff(matrix(), a), 0, 0);
    expect_shape(setunion(matrix(), column({1, 2, 2})), 2, 1);
    expect_shape(setunion(column({1, 2, 2}), matrix()), 2, 1);
    expect_shape(setunion(matrix(), matrix()), 0, 0);
}

TEST(Sets, SetequalDisregardsOrderRepeatsAndOrientation)
{
    EXPECT_EQ(setequal(row({1, 2, 2}), column({2, 1})), 1);
    EXPECT_EQ(setequal(row({0.0}), row({-0.0})), 1);
    EXPECT_EQ(setequal(row({1, 2}), row({1, 2, 3})), 0);
    EXPECT_EQ(setequal(row({1, 2, 3}), row({1, 2})), 0);
    EXPECT_EQ(setequal(row({1, 2}), row({1, 3})), 0);
    EXPECT_EQ(setequal(row({1, nan}), row({1, nan})), 0);
    EXPECT_EQ(setequal(matrix(), matrix(1, 0)), 1);
    EXPECT_EQ(setequal(matrix(), row({1})), 0);
}

TEST(Sets, MatchGivesTheFirstOrTheLastPosition)
{
    matrix const b = column({7, 8, 7, nan, 0.0});
    // Few and many elements take different ways.
    matrix const few = column({8, 7, nan, -0.0}), many = few & column({5, 5, 7});
    EXPECT_EQ(list(match(few, b, 0, -1)), (Integers{2, 1, -1, 5}));
    EXPECT_EQ(list(match(few, b, 1, -1)), (Integers{2, 3, -1, 5}));
    EXPECT_EQ(list(iselement(few, b)), (Integers{1, 1, 0, 1}));
    EXPECT_EQ(list(match(many, b, 0, -1)), (Integers{2, 1, -1, 5, -1, -1, 1}));
    EXPECT_EQ(list(match(many, b, 1, -1)), (Integers{2, 3, -1, 5, -1, -1, 3}));
    EXPECT_EQ(list(iselement(many, b)), (Integers{1, 1, 0, 1, 0, 0, 1}));
    EXPECT_EQ(list(match(row({5}), row({1, 2}))), Integers{0});
    EXPECT_EQ(match(matrix(), b).n, 0);
    EXPECT_EQ(list(match(row({1, 2, 3, 4, 5}), matrix(), 1, 9)), Integers(5, 9));
    EXPECT_EQ(iselement(8.0, b), 1);
    EXPECT_EQ(iselement(8, b), 1);
    EXPECT_EQ(iselement(nan, b), 0);
    EXPECT_EQ(iselement(1.0, matrix()), 0);
}

TEST(Sets, TextsAreOneWhenAllTheirBytesAre)
{
    table x(1, 7);
    Text const cells[] = {"", "ab", Text("ab\0", 3), "AB", "ab", "\xb1", ""};
    for (int j = 0; j < 7; ++j) x.cell[0][j] = cells[j];
    EXPECT_EQ(unique(x).cols, 5);
    EXPECT_EQ(list(match(x, unique(x))), (Integers{1, 2, 3, 4, 2, 5, 1}));
    EXPECT_EQ(iselement("ab", x), 1);
    EXPECT_EQ(iselement("a", x), 0);
    EXPECT_EQ(setequal(x, unique(x, 1)), 1);
}

// Against quadratic passes, over the sizes where the tables grow.
template <class T, class Make> void expect_plain_sets(Make make)
{
    std::mt19937 random(3);
    for (int n : {5, 40, 300, 2500}) {
        data<T> a(n, 1), b(1, n);
        for (int i = 0; i < n; ++i) {
            a.cell[i][0] = make(static_cast<int>(random() % unsigned(n)));
            b.cell[0][i] = make(static_cast<int>(random() % unsigned(n)) + n / 3);
        }
        std::vector<T> const x = list(a), y = list(b);
        std::vector<T> firsts, lasts, common, rest;
        Integers first, last;
        for (int i = 0; i < n; ++i) {
            T const& v = x[std::size_t(i)];
            int f = 0, l = 0, before = 0, after = 0;
            for (int j = 0; j < n; ++j) {
                if (y[std::size_t(j)] == v) {
                    l = j + 1;
                    if (!f) f = l;
                }
                if (x[std::size_t(j)] == v) (j < i ? before : after) += j != i;
            }
            first.push_back(f);
            last.push_back(l);
            (f ? common : rest).push_back(v);
            if (!before) firsts.push_back(v);
            if (!after) lasts.push_back(v);
        }
        ASSERT_EQ(list(unique(a)), firsts);
        ASSERT_EQ(list(unique(a, 1)), lasts);
        ASSERT_EQ(list(match(a, b)), first);
        ASSERT_EQ(list(match(a, b, 1)), last);
        ASSERT_EQ(list(setintersect(a, b)), common);
        ASSERT_EQ(list(setdiff(a, b)), rest);
    }
}

TEST(Sets, TablesOfPositionsAgreeWithQuadraticPasses)
{
    expect_plain_sets<double>([](int i) { return i * 0.5; });
    expect_plain_sets<double>([](int i) { return 1 + i * 0x1p-52; });
    expect_plain_sets<Text>([](int i) { return Text(i); });
    expect_plain_sets<Text>([](int i) { return "a name of some length " + Text(i); });
}

TEST(Sets, CompareWantsOneShapeAndEqualCells)
{
    matrix const a("1 2; 3 4"), b("1 2; 3 5");
    matrix named = a;
    named.colname(1) = "x";
    EXPECT_EQ(compare(a, named), 1);
    EXPECT_EQ(compare(a, b), 0);
    EXPECT_EQ(compare(row({1, 2}), column({1, 2})), 0);
    EXPECT_EQ(compare(row({0.0}), row({-0.0})), 1);
    EXPECT_EQ(compare(row({nan}), row({nan})), 0);
    EXPECT_EQ(compare(matrix(), matrix()), 1);
    EXPECT_EQ(compare(matrix(), matrix(0, 1)), 0);
    table const x(1, 1);
    EXPECT_EQ(compare(x, x), 1);
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
