#include <varnow/varnow.h>

#include "tests/support/bits.h"
#include "tests/support/refusals.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace varnow {
namespace {

double const NaN = std::numeric_limits<double>::quiet_NaN();
double const inf = std::numeric_limits<double>::infinity();

using function = double (*)(matrix&);
using derivative = double (*)(matrix&, int);

double sq(double x)
{
    return x * x;
}

// Test functions of Moré, Garbow and Hillstrom, ACM TOMS 7 (1981) 17.
function const rosenbrock = [](matrix& x) { return 100 * sq(x(2) - sq(x(1))) + sq(1 - x(1)); };
derivative const d_rosenbrock = [](matrix& x, int i) {
    double const u = x(2) - sq(x(1));
    return i == 1 ? -400 * u * x(1) - 2 * (1 - x(1)) : 200 * u;
};
function const powell = [](matrix& x) {
    return sq(x(1) + 10 * x(2)) + 5 * sq(x(3) - x(4)) + sq(sq(x(2) - 2 * x(3))) +
           10 * sq(sq(x(1) - x(4)));
};
derivative const d_powell = [](matrix& x, int i) {
    double const a = 2 * (x(1) + 10 * x(2)), b = 10 * (x(3) - x(4)),
                 c = 4 * std::pow(x(2) - 2 * x(3), 3), d = 40 * std::pow(x(1) - x(4), 3);
    return i == 1 ? a + d : i == 2 ? 10 * a + c : i == 3 ? b - 2 * c : -b - d;
};
function const line = [](matrix& x) { return sq(x(1) - 3); };
derivative const d_line = [](matrix& x, int) { return 2 * (x(1) - 3); };

double distance(matrix const& a, matrix const& b)
{
    return matrix(max(abs(a - b)));
}

// The points at which the function under test has been called.
std::vector<matrix> points;
int turn;
std::function<double(matrix&)> watched;
function watch(std::function<double(matrix&)> const& f)
{
    points.clear();
    turn = 0;
    watched = f;
    return [](matrix& x) {
        points.push_back(x);
        ++turn;
        return watched(x);
    };
}
// Its values by turns, the last for good.
function give(std::vector<double> const& values)
{
    return watch([=](matrix&) { return values[std::min(points.size(), values.size()) - 1]; });
}

TEST(Minimisers, ReachTheLeastValuesAndKeepTheNames)
{
    struct
    {
        function f;
        derivative df;
        matrix start, least;
        double near;
    } const problems[] = {
        {rosenbrock, d_rosenbrock, "-1.2; 1", "1; 1", 1e-6},
        // Flat to the fourth power: the last bits of pow decide how near one comes.
        {powell, d_powell, "3; -1; 0; 1", "0; 0; 0; 0", 1e-5},
        {line, d_line, "0", "3", 1e-6},
    };
    using search = void (*)(function, derivative, matrix&);
    search const searches[] = {
        [](function f, derivative df, matrix& x) { fminu(f, df, x, 1e-10, DFP); },
        [](function f, derivative df, matrix& x) { fminu(f, df, x, 1e-10, BFGS); },
        [](function f, derivative, matrix& x) { EXPECT_TRUE(fmins(f, x, 1e-10)); },
        [](function f, derivative df, matrix& x) { fminx(f, df, x, 1e-10, SpeedSlow, BFGS); },
    };
    for (auto const& p : problems)
        for (search run : searches) {
            matrix x = p.start;
            x.rowname(1) = "first";
            run(watch(p.f), p.df, x);
            EXPECT_LT(distance(x, p.least), p.near);
            EXPECT_EQ(x.rowname(1), "first");
            for (matrix const& point : points) ASSERT_EQ(point.rowname(1), "first");
        }
}

// Calls from number k on, at the rows of a matrix.
void expect_points(std::size_t k, matrix const& rows)
{
    for (int i = 1; i <= rows.rows; ++i, ++k)
        EXPECT_LE(distance(points.at(k), ~rows.row(i)), 1e-15) << "call " << k;
}

TEST(Simplex, MovesItsWorstPoint)
{
    // From the first simplex (20, 40), (21, 40), (20, 42): the values, of these first, and where
    // the search goes next. By hand.
    struct
    {
        std::vector<double> values;
        matrix next;
    } const cases[] = {
        {{1, 2, 3, 1.5}, "21 38; 20 38"},                 // reflected
        {{1, 2, 3, 0.5, 0.7}, "21 38; 21.5 36; 20.5 36"}, // and expanded, if not further
        {{1, 2, 3, 0.5, 1}, "21 38; 21.5 36; 20 38"},     // in vain
        {{1, 2, 3, 2, 1.9}, "21 38; 20.75 39; 19.75 39"}, // contracted outside
        {{1, 2, 3, 3, 1.9}, "21 38; 20.25 41; 19.25 41"}, // and inside
        {{1, 2, 3, 3, 2, 5, 4}, "21 38; 20.25 41; 20.5 40; 20 41; 19.5 41"}, // in vain: shrunk
        {{2, 2, 1}, "21 42"}, // ties in the order of `sort`
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.values));
        matrix x("20; 40");
        fmins(give(c.values), x, 1e-6);
        expect_points(0, "20 40; 21 40; 20 42");
        expect_points(3, c.next);
    }
    matrix x("0; 20");
    fmins(give({1}), x, 1);
    ASSERT_EQ(points.size(), 3u);
    expect_points(0, "0 20; 0.00025 20; 0 21");
}

TEST(Simplex, EndsWherePointsAndValuesAreNear)
{
    for (double scale : {1e-8, 1e8}) {
        matrix x("10; 20");
        EXPECT_TRUE(fmins(watch([=](matrix& v) { return scale * (sq(v(1) - 3) + sq(v(2) - 4)); }),
                          x, 1e-3));
        EXPECT_LT(distance(x, "3; 4"), scale < 1 ? 1e-3 : 1e-5);
    }
}

TEST(QuasiNewton, CorrectsTheInverseByTheSecant)
{
    // x1^2 / 2 + x2^2 from (2, 1): the full step leads to (0, -1), and s = (-2, -2), y = (-2, -4).
    // H, with s'y = 12 and y'y = 20 by hand, is (17 -1; -1 8) / 15, (11 -1; -1 5) / 9 or stays 1.
    struct
    {
        int method;
        matrix next;
    } const cases[] = {{DFP, matrix("-2 1") / 15}, {BFGS, matrix("-2 1") / 9}, {2, "0 1"}};
    derivative const slope = [](matrix& v, int i) { return i * v(i); };
    for (auto const& c : cases) {
        matrix x("2; 1");
        fminu(watch([](matrix& v) { return sq(v(1)) / 2 + sq(v(2)); }), slope, x, 1e-9,
              static_cast<EsMethod>(c.method));
        expect_points(0, "2 1; 0 -1; 0 -1");
        expect_points(3, c.next);
    }
}

TEST(Minimisers, EndAfterSoManyCalls)
{
    function const five = [](matrix&) { return 5.0; }, nan = [](matrix&) { return NaN; };
    function const above = [](matrix&) { return inf; }, below = [](matrix&) { return -inf; };
    function const itself = [](matrix& x) { return double(x(1)); };
    function const falling = [](matrix&) { return -1.0 * turn; };
    function const behind = [](matrix&) { return turn == 1 ? -1e9 : -turn; };
    function const bouncing = [](matrix&) { return turn % 2 ? -turn : 1e9; };
    derivative const gentle = [](matrix&, int) { return 1e-3; };
    derivative const wrong = [](matrix&, int) { return -1.0; };
    struct
    {
        function f;
        derivative df; // none for the simplex
        matrix start;
        double tol;
        bool ended;
        unsigned calls;
    } const cases[] = {
        // Of 500 evaluations for each parameter, an expansion counts for 2, a reflection for 1, a
        // contraction for 2 and, in vain, for 2 and the points that are moved instead.
        {falling, nullptr, "1; 2", 1e-6, false, 1001},
        {behind, nullptr, "1; 2", 1e-6, false, 1000},
        {bouncing, nullptr, "1; 2", 1e-6, false, 1001},
        {nan, nullptr, "1; 2", 1e-6, false, 1003},
        {above, nullptr, "1; 2; 3", 1e-6, false, 1504},
        {below, nullptr, "1; 2", 1e-6, false, 1003},
        {five, nullptr, matrix(0, 1), 1e-6, false, 1},

        {five, gentle, "1", 1e-2, true, 2},     // the first step is short enough, and not taken
        {itself, wrong, "1", 1e-9, true, 55},   // in the 54th trial the step vanishes in rounding
        {itself, wrong, "0", 1e-9, false, 100}, // around 0 it does not in 99
        {nan, wrong, "1; 0; -1", 1e-6, false, 100},
        // Infinities are equal, but their difference is NaN: 500 steps.
        {above, wrong, "1", 1e-6, false, 1000},
        // A NaN counts where it stands first.
        {five, gentle, matrix("1; 2") * NaN, 1e-2, false, 2000},
        {five, gentle, matrix("1") & matrix(NaN), 1e-2, true, 2},
        {five, gentle, matrix(0, 1), 1e-2, false, 0},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(&c - cases);
        matrix x = c.start;
        function const f = watch(c.f);
        EXPECT_EQ(c.df ? fminu(f, c.df, x, c.tol, DFP) : fmins(f, x, c.tol), c.ended);
        EXPECT_EQ(points.size(), c.calls);
        EXPECT_TRUE(c.calls > 100 || test::same_bits(x, c.start));
    }
}

TEST(TwoStarts, DoAsMuchAsTheSpeedAsksAndKeepTheGivenStartUnlessTheOtherIsBetter)
{
    // Two valleys: the deeper one, at -2, is met from zero, the one at 3 from 5.
    function const valleys = [](matrix& x) { return x(1) < 0.5 ? sq(x(1) + 2) : sq(x(1) - 3) + 1; };
    // The starts end at the same value; without one at and around zero.
    function const even = [](matrix& x) { return sq(std::fabs(x(1) - 0.5) - 0.5); };
    function const hole = [](matrix& x) { return x(1) < 0.5 ? NaN : sq(x(1) - 3); };
    static bool deep, high;
    derivative const slope = [](matrix& x, int) {
        (x(1) < 0.5 ? deep : high) = true;
        return 2 * (x(1) - (x(1) < 0.5 ? -2 : 3));
    };
    struct
    {
        function f;
        double start, tol;
        int speed;
        double answer;
        bool deep, high; // where slopes are asked for
    } const cases[] = {
        {valleys, 5, 1e-8, SpeedSlow, -2, true, true},
        {valleys, 5, 1e-8, SpeedMedium, -2, true, false},
        {valleys, 5, 1e-8, SpeedFast, -2, false, false},
        {valleys, 5, 1e-8, SpeedFastest, 3, false, false},
        {valleys, 5, 1e-8, 7, 3, false, false},
        {even, 1.2, 1e-300, SpeedFast, 1, false, false},
        {hole, 5, 1e-8, SpeedFast, 3, false, false},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(&c - cases);
        matrix x(c.start);
        deep = high = false;
        fminx(c.f, c.deep ? slope : nullptr, x, c.tol, static_cast<EsSpeed>(c.speed), BFGS);
        EXPECT_NEAR(x(1), c.answer, 1e-6);
        EXPECT_EQ(deep, c.deep);
        EXPECT_EQ(high, c.high);
    }
    // From zero itself there is one start only.
    matrix x(0.0), y(0.0);
    fmins(watch(line), x, 1e-8);
    std::size_t const once = points.size();
    fminx(watch(line), nullptr, y, 1e-8, SpeedFast, BFGS);
    EXPECT_EQ(points.size(), once + 1);
}

TEST(MinimisersDeathTest, RefuseNullFunctionsAndOtherShapes)
{
    matrix x("1; 2"), wide("1 2; 3 4"), row("1 2");
    std::string const f = "(double (*)(matrix),", df = "double (*)(matrix,int),";
    char const* const none = "brak funkcji";
    char const* const minus = "matrix operator -(matrix,matrix)";
    char const* const setcol = "setcol(Vector,matrix)";
    char const* const sizes = "niezgodne wymiary macierzy";
    char const* const columns = "liczba kolumn danych do wstawienia niezgodna z dlugoscia indeksu";
    auto const u = [](matrix& v, function g, derivative dg) { fminu(g, dg, v, 1e-6, BFGS); };
    test::refusal const cases[] = {
        {[&] { u(x, nullptr, d_line); }, "bool fminu" + f + df + "matrix,double,EsMethod)", none},
        {[&] { u(x, line, nullptr); }, "bool fminu" + f + df + "matrix,double,EsMethod)", none},
        {[&] { fmins(nullptr, x, 1e-6); }, "bool fmins" + f + "matrix,double)", none},
        {[&] { fminx(line, nullptr, x, 1e-6, SpeedSlow, BFGS); },
         "fminx" + f + df + "matrix,double,EsSpeed,EsMethod)", none},
        {[&] { fminx(line, nullptr, x, 1e-6, SpeedMedium, BFGS); },
         "fminx" + f + df + "matrix,double,EsSpeed,EsMethod)", none},
        {[&] { u(wide, line, d_line); }, minus, sizes},
        {[&] { u(row, line, d_line); }, minus, sizes},
        {[&] { fmins(line, wide, 1e-6); }, setcol, columns},
        {[&] { fmins(line, row, 1e-6); }, setcol, columns},
    };
    test::expect_refusals("MATRIX", cases);
}

} // namespace
} // namespace varnow
