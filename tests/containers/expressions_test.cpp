// What a user writes without thinking about overloads must compile and mean what it says, in a
// program that brings the whole namespace in beside the C library and the system's own headers.
#include <varnow/containers/compare.h>
#include <varnow/containers/matrix_arithmetic.h>
#include <varnow/containers/matrix_special.h>
#include <varnow/containers/ordering.h>
#include <varnow/containers/slicing.h>
#include <varnow/containers/table.h>
#include <varnow/core/date.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <type_traits>
#ifdef _WIN32
#include <windows.h>
#else
#include <unistd.h>
#endif

using namespace varnow;

namespace {

template <class T, class E> constexpr bool is(E const&)
{
    return std::is_same<T, E>::value;
}

matrix cell_of(double x)
{
    return matrix(x);
}

int sides(matrix const& m)
{
    return m.rows;
}

TEST(Expressions, AWholeNumberGivenForAMatrixIsItsOnlyCellAndNeverASizeOrALiteral)
{
    EXPECT_EQ(sides(0), 1);
    EXPECT_EQ(sides(3), 1);
    EXPECT_EQ(sides(matrix(3)), 3);
    matrix const m = 7;
    EXPECT_EQ(m(1), 7.0);
}

TEST(Expressions, ArithmeticTakesNumbersOfEveryTypeOnEitherSide)
{
    matrix const m = c(2.0, 3.0);
    long const two = 2;
    unsigned const three = 3;
    struct
    {
        char const* expression;
        matrix value;
        double first, second;
    } const rows[] = {
        {"m + 1", m + 1, 3, 4},
        {"1 + m", 1 + m, 3, 4},
        {"2 * m", 2 * m, 4, 6},
        {"m * 2L", m * two, 4, 6},
        {"m / 2u", m / three, 2.0 / 3, 1},
        {"1 - m", 1 - m, -1, -2},
        {"m - 0.5f", m - 0.5f, 1.5, 2.5},
        {"6 / m", 6 / m, 3, 2},
        {"-m", -m, -2, -3},
        {"max(m, 0)", max(m, 0), 2, 3},
        {"min(2.5f, m)", min(2.5f, m), 2, 2.5},
        {"pow(m, 2)", pow(m, 2), 4, 9},
        {"pow(m, 2.0)", pow(m, 2.0), 4, 9},
        {"pow(m, 2.0f)", pow(m, 2.0f), 4, 9},
        {"pow(m, 2L)", pow(m, two), 4, 9},
        {"m + m(1, 1)", m + m(1, 1), 4, 5},
        {"m * m - m", m * m - m, 2, 6},
        {"abs(-m)", abs(-m), 2, 3},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.expression);
        ASSERT_EQ(row.value.cols, 2);
        EXPECT_DOUBLE_EQ(row.value(1), row.first);
        EXPECT_DOUBLE_EQ(row.value(2), row.second);
    }
}

TEST(Expressions, ScalarCallsStayScalars)
{
    EXPECT_TRUE(is<double>(exp(1.0)));
    EXPECT_TRUE(is<float>(sqrt(2.0f)));
    EXPECT_TRUE(is<int>(abs(-3)));
    EXPECT_TRUE(is<double>(min(1, 2.5)));
    EXPECT_TRUE(is<int>(max(1, 2)));
    EXPECT_EQ(pow(2.0, 3), 8.0);
    EXPECT_TRUE(is<double>(pow(2.0, 3)));
    EXPECT_EQ(std::min(3, 2), 2);
    EXPECT_EQ(min(1, 2.5), 1.0);
    EXPECT_GE(rand(), 0); // the C library's, beside rand(r, c)
    EXPECT_EQ(floor(-0.5), -1.0);
}

TEST(Expressions, ComparisonsOfMatricesWithNumbersGiveFlags)
{
    matrix const m("1; 2; 3");
    struct
    {
        char const* expression;
        Vector flags;
        int first, second, third;
    } const rows[] = {
        {"m == 1", m == 1, 1, 0, 0},     {"1 != m", 1 != m, 0, 1, 1},
        {"m > 1.5f", m > 1.5f, 0, 1, 1}, {"2 < m", 2 < m, 0, 0, 1},
        {"m <= 2L", m <= 2L, 1, 1, 0},   {"m >= m(3)", m >= m(3), 0, 0, 1},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.expression);
        ASSERT_EQ(row.flags.n, 3);
        EXPECT_EQ(row.flags.v[0], row.first);
        EXPECT_EQ(row.flags.v[1], row.second);
        EXPECT_EQ(row.flags.v[2], row.third);
    }
    EXPECT_TRUE(is<matrix>(m == m));
    EXPECT_TRUE(is<matrix>(m > 0.5 * m));
    EXPECT_TRUE(all(m >= m && !(m < m)));
    EXPECT_TRUE(any(m == $(3)));
}

TEST(Expressions, TextsJoinAndCompareWithWhatStandsBesideThem)
{
    Text const text("a"), number("3,5");
    EXPECT_EQ(text + "x", Text("ax"));
    EXPECT_EQ("x" + text, Text("xa"));
    EXPECT_EQ('x' + text + 1, Text("xa1"));
    EXPECT_EQ(Text(1234567890L), Text("1234567890"));
    EXPECT_TRUE(text == 'a' && text == "a" && 'b' > text);
    EXPECT_TRUE(number > 3.0 && number > 3 && 4 > number);
}

TEST(Expressions, TablesCompareWithWhatStandsBesideThem)
{
    table tab(2, 1);
    tab(1, 1) = "yes";
    tab(2, 1) = "1";
    auto second_only = [](Vector const& flags) {
        return flags.n == 2 && flags.v[0] == 0 && flags.v[1] == 1;
    };
    EXPECT_TRUE(second_only(tab != "yes"));
    EXPECT_TRUE(second_only("1" == tab));
    EXPECT_TRUE(second_only(tab == Text("1")));
    EXPECT_TRUE(second_only(tab > 0.5));
    EXPECT_TRUE(second_only(tab == 1));
    EXPECT_TRUE(second_only(0 < tab));
    EXPECT_TRUE(second_only(tab["" + Text("")] == 1L));
    tab(1, 1) = tab(2, 1) = "2024-02-29";
    EXPECT_EQ((tab + "x")(2, 1), Text("2024-02-29x"));
    EXPECT_EQ(("x" + tab)(2, 1), Text("x2024-02-29"));
    EXPECT_EQ(sum(tab == date("2024-02-24") + 5), 2);
    EXPECT_EQ(sum(tab == tab), 2);
}

TEST(Expressions, ListsTakeTheTypeOfWhatTheyHold)
{
    EXPECT_TRUE(is<Vector>(c(1, 2)));
    EXPECT_TRUE(is<matrix>(c(1, 2.5)));
    EXPECT_TRUE(is<matrix>(c(1.0f)));
    EXPECT_TRUE(is<table>(c("a", "b")));
    EXPECT_TRUE(is<table>(c(t("a"), "b")));
    EXPECT_TRUE(is<data<Text>>(c<Text>("a", t("b"))));
    matrix const m = c(1, 2.5);
    EXPECT_EQ(m.rows, 1);
    EXPECT_EQ(m(1, 2), 2.5);
    EXPECT_EQ(c(t("a"), "b")(1, 2), Text("b"));
    EXPECT_EQ(iselement(3.0, c(1, 3.0)), 1);
    EXPECT_EQ(iselement(3, c(1, 2.0)), 0);
    EXPECT_EQ(iselement("b", c("a", "b")), 1);
}

TEST(Expressions, ACellTypeMayBeNamedInTheCall)
{
    matrix const a = c(1.0, 2.0), b = c(2.0, 3.0);
    data<double> const plain = b;
    table const x = c("u", "v");
    double (*tens)(double, double) = [](double i, double j) { return 10 * i + j; };
    EXPECT_EQ(setunion<double>(a, b).cols, 3);
    EXPECT_EQ(setdiff<double>(a, plain)(1), 1);
    EXPECT_EQ(setintersect<double>(plain, plain).cols, 2);
    EXPECT_EQ(setequal<Text>(x, x), 1);
    EXPECT_EQ(sum(iselement<double>(a, b)), 1);
    EXPECT_EQ(iselement<double>(3, b), 1);
    EXPECT_EQ(match<double>(a, b, 0, -1).v[1], 1);
    EXPECT_EQ(compare<Text>(x, x), 1);
    EXPECT_EQ(shufflecol<double>(a, b)(2), 2);
    EXPECT_EQ(shufflerow<Text>(x, x).rows, 2);
    EXPECT_EQ(outer<double>(a, plain, tens)(2, 1), 22);
}

TEST(Expressions, SortsTakeListsAndDirectionsAsPlainNumbers)
{
    Vector const falling = order(c(2, 3, 1), 1);
    EXPECT_EQ(falling.v[0] * 100 + falling.v[1] * 10 + falling.v[2], 213);
    EXPECT_EQ(order(c("b", "a")).v[0], 2);
    matrix m("2 10; 1 30; 3 20");
    m.colname(2) = "x";
    m.sort(1, 1);
    EXPECT_EQ(m(1, 1), 3);
    m.sort("X", 0);
    EXPECT_EQ(m(1, 2), 10);
    m.sort(3, 1, 0);
    EXPECT_EQ(m.colname(1), "x");
    table t = m;
    t.sortval(1, 0);
    EXPECT_EQ(t(1, 1), "10");
    t.sortval("x", 1, 1);
    EXPECT_EQ(t(1, 1), "30");
}

TEST(Expressions, MatricesBindAndTakeInWhatBecomesAMatrix)
{
    matrix m = c(1.0, 2.0);
    m = 0 | m | 3 | 4.5;
    EXPECT_EQ(m.cols, 5);
    EXPECT_EQ(m(1), 0);
    EXPECT_EQ(m(4), 3);
    m = 1 & ~m & 2u;
    EXPECT_EQ(m.rows, 7);
    EXPECT_EQ(m(7), 2);
    (m |= $(7)).sqr();
    EXPECT_EQ(m(7, 2), 49);
    m &= "8 9";
    EXPECT_EQ(m(8, 2), 9);
    m.setcol(1, $(8, 1));
    m.setrow(2, m.row(1));
    m.set(c(3), c(2), 5);
    m.setcol(c(2), data<double>(m[2]));
    EXPECT_EQ(m(2, 1) * 10 + m(3, 2), 85);
    table t = c("a", "b");
    t &= matrix("1 2");
    t.setcol(2, matrix("3; 4"));
    EXPECT_EQ(t(2, 1) + t(1, 2), "13");
}

TEST(Expressions, FunctionsOnCellsMayTakeThemByReference)
{
    table const t = c("a", "b") & c("c", "d");
    table u = t, v = t;
    u.forall(to_upper);
    v.forcol(1, to_upper);
    v.forrow(1, to_upper);
    EXPECT_EQ(u(2, 2) + forall(t, to_upper)(1, 2), "DB");
    EXPECT_EQ(v(1, 2) + v(2, 1) + v(2, 2), "BCd");
    EXPECT_EQ(forcol(t, 2, to_upper)(2, 2) + forrow(t, 2, to_upper)(2, 1), "DC");
    matrix m("4 9");
    m.forall(sqrt);
    m.forall([](auto x) { return x + 1; });
    EXPECT_EQ(forcol(m, 1, sqrt)(2) + forrow(m, 1, exp)(1), 4 + exp(3.0));
}

TEST(Expressions, OneCellMatricesAndNumbersTakeEachOthersPlace)
{
    double const x = cell_of(2.5);
    int const i = cell_of(-2.5);
    EXPECT_EQ(x, 2.5);
    EXPECT_EQ(i, -2);
    matrix m = zeros(2, 3);
    m = 0;
    EXPECT_EQ(m.rows * 10 + m.cols, 11);
    m = "1 2; 3 4";
    m += 1;
    m *= m(2, 2); // the old value throughout
    EXPECT_EQ(m(1, 1), 10);
    EXPECT_EQ(m(2, 2), 25);
}

} // namespace
