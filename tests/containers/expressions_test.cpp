// What a user writes without thinking about overloads must compile and mean what it says, in a
// program that brings the whole namespace in beside the C library and the system's own headers.
#include <varnow/containers/compare.h>
#include <varnow/containers/matrix_arithmetic.h>
#include <varnow/containers/matrix_special.h>
#include <varnow/containers/ordering.h>
#include <varnow/containers/slicing.h>
#include <varnow/containers/table.h>
#include <varnow/core/date.h>

#include "tests/support/containers.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <type_traits>
#ifdef _WIN32
#include <windows.h>
#else
#include <unistd.h>
#endif

using namespace varnow;
using test::expect_shown;
using test::show;

namespace {

template <class T, class... E> void all_are(E const&...)
{
    static_assert((std::is_same<T, E>::value && ...));
}

TEST(Expressions, ANumberAndAMatrixOfOneCellTakeEachOthersPlace)
{
    auto rows_of = [](matrix const& m) { return m.rows; };
    EXPECT_EQ(rows_of(0), 1); // no literal
    EXPECT_EQ(rows_of(3), 1); // no size
    EXPECT_EQ(rows_of(matrix(3)), 3);
    double const x = matrix(2.5);
    int const i = matrix(-2.5);
    EXPECT_EQ(x + i, 0.5);
    matrix m = zeros(2, 3);
    m = 7;
    EXPECT_EQ(show(m), "1x1 . | .: 7");
    m = "1 2; 3 4";
    m += 1;
    m *= m(2, 2); // the old value throughout
    EXPECT_EQ(show(m), "2x2 . . | .: 10 15 | .: 20 25");
}

TEST(Expressions, ArithmeticTakesNumbersOfEveryTypeOnEitherSide)
{
    matrix const m("2 3");
    long const two = 2;
    unsigned const three = 3;
    std::pair<matrix, matrix> const rows[] = {
        {m + 1, "3 4"},       {1 + m, "3 4"},          {2 * m, "4 6"},
        {m * two, "4 6"},     {6 / m, "3 2"},          {m * 3 / three, "2 3"},
        {1 - m, "-1 -2"},     {m - 0.5f, "1.5 2.5"},   {-m, "-2 -3"},
        {max(m, 0), "2 3"},   {min(2.5f, m), "2 2.5"}, {pow(m, 2), "4 9"},
        {pow(m, 2.0), "4 9"}, {pow(m, 2.0f), "4 9"},   {pow(m, two), "4 9"},
        {m + m(1, 1), "4 5"}, {m * m - m, "2 6"},      {abs(-m), "2 3"},
    };
    for (auto const& [value, expected] : rows) EXPECT_EQ(show(value), show(expected));
}

TEST(Expressions, ScalarCallsStayScalarsAndListsTakeTheTypeOfWhatTheyHold)
{
    all_are<double>(exp(1.0), min(1, 2.5), pow(2.0, 3), floor(-0.5));
    all_are<float>(sqrt(2.0f));
    all_are<int>(abs(-3), max(1, 2), std::min(3, 2), rand()); // the C library's, beside rand(r, c)
    all_are<Vector>(c(1, 2));
    all_are<matrix>(c(1, 2.5), c(1.0f));
    all_are<table>(c("a", "b"), c(t("a"), "b"));
    all_are<data<Text>>(c<Text>("a", t("b")));
    EXPECT_EQ(min(1, 2.5), 1.0);
    EXPECT_EQ(show(c(1, 2.5)), "1x2 . . | .: 1 2.5");
    EXPECT_EQ(show(c(t("a"), "b")), "1x2 . . | .: a b");
    EXPECT_EQ(iselement(3.0, c(1, 3.0)) + iselement("b", c("a", "b")), 2);
    EXPECT_EQ(iselement(3, c(1, 2.0)), 0);
}

TEST(Expressions, ComparisonsWithWhatStandsBesideGiveFlags)
{
    matrix const m("1; 2; 3");
    table const t = m, day = ~c("2024-02-28", "2024-02-29");
    all_are<Vector>(m == 1, 1 != m, m > 1.5f, m <= 2L, m >= m(3));
    all_are<matrix>(m == m, m > 0.5 * m, m >= m && !(m < m));
    EXPECT_EQ(show(2 < m), "0 0 1");
    std::pair<Vector, char const*> const rows[] = {
        {t != "1", "0 1 1"}, {"1" == t, "1 0 0"}, {t == Text("1"), "1 0 0"}, {t > 1.5, "0 1 1"},
        {t == 1, "1 0 0"},   {2 < t, "0 0 1"},    {t == t, "1 1 1"},
    };
    for (auto const& [flags, text] : rows) EXPECT_EQ(show(flags), text);
    EXPECT_EQ(show(t["" + Text("")] == 1L), "1 0 0");
    EXPECT_EQ(show(day == date("2024-02-24") + 5), "0 1");
    EXPECT_TRUE(any(m == $(3)));
}

TEST(Expressions, TextsJoinAndCompareWithWhatStandsBesideThem)
{
    Text const text("a"), number("3,5");
    EXPECT_EQ("x" + text + "y", Text("xay"));
    EXPECT_EQ('x' + text + 1, Text("xa1"));
    EXPECT_EQ(Text(1234567890L), Text("1234567890"));
    EXPECT_TRUE(text == 'a' && text == "a" && 'b' > text);
    EXPECT_TRUE(number > 3.0 && number > 3 && 4 > number);
    table const t = c("a", "b");
    EXPECT_EQ(show("x" + t + "y"), "1x2 . . | .: xay xby");
}

TEST(Expressions, ACellTypeMayBeNamedInTheCall)
{
    matrix const a = c(1.0, 2.0), b = c(2.0, 3.0);
    data<double> const plain = b;
    table const x = c("u", "v");
    double (*tens)(double, double) = [](double i, double j) { return 10 * i + j; };
    EXPECT_EQ(show(setunion<double>(a, b)), "1x3 . . . | .: 1 2 3");
    EXPECT_EQ(show(setdiff<double>(a, plain)), "1x1 . | .: 1");
    EXPECT_EQ(show(setintersect<double>(plain, plain)), "1x2 . . | .: 2 3");
    EXPECT_EQ(show(shufflecol<double>(a, b)), "1x4 . . . . | .: 1 2 2 3");
    EXPECT_EQ(show(shufflerow<Text>(x, x)), "2x2 . . | .: u v | .: u v");
    EXPECT_EQ(show(outer<double>(a, plain, tens)), "2x2 . . | .: 12 13 | .: 22 23");
    EXPECT_EQ(show(match<double>(a, b, 0, -1)), "-1 1");
    EXPECT_EQ(show(iselement<double>(a, b)), "0 1");
    EXPECT_EQ(setequal<Text>(x, x) + compare<Text>(x, x) + iselement<double>(3, b), 3);
}

TEST(Expressions, SortsTakeListsAndDirectionsAsPlainNumbers)
{
    EXPECT_EQ(show(order(c(2, 3, 1), 1)), "2 1 3");
    EXPECT_EQ(show(order(c("b", "a"))), "2 1");
    matrix m("2 10; 1 30; 3 20");
    m.colname(2) = "x";
    m.sort(1, 1);
    EXPECT_EQ(show(m), "3x2 . x | .: 3 20 | .: 2 10 | .: 1 30");
    m.sort("X", 0);
    m.sort(3, 1, 0);
    EXPECT_EQ(show(m), "3x2 x . | .: 10 2 | .: 20 3 | .: 30 1");
    table t = m;
    t.sortval(2, 0);
    EXPECT_EQ(t(1, 2), "1");
    t.sortval("x", 1, 1);
    EXPECT_EQ(t(1, 1), "30");
}

TEST(Expressions, MatricesBindAndTakeInWhatBecomesAMatrix)
{
    matrix m = c(1.0, 2.0);
    m = 0 | m | 3 | 4.5;
    m = 1 & ~m & 2u;
    EXPECT_EQ(show(~m), "1x7 . . . . . . . | .: 1 . 1 2 3 4.5 2");
    (m |= $(7)).sqr();
    m &= "8 9";
    m.setcol(1, $(8, 1));
    m.setrow(2, m.row(1));
    m.set(c(3), c(2), 5);
    m.setcol(c(2), data<double>(m[2]));
    EXPECT_EQ(show(~m[2]), "1x8 . . . . . . . . | .: 1 1 5 16 25 36 49 9");
    EXPECT_EQ(show(~m[1]), "1x8 . . . . . . . . | .: 8 8 6 5 4 3 2 1");
    table t = c("a", "b");
    t &= matrix("1 2");
    t.setcol(2, matrix("3; 4"));
    EXPECT_EQ(show(t), "2x2 . . | .: a 3 | .: 1 4");
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

} // namespace
