#include <varnow/varnow.h>

#include "tests/support/bits.h"
#include "tests/support/refusal.h"

#include <cmath>
#include <cstdio>
#include <limits>
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

// Test functions of Moré, Garbow and Hillstrom, ACM TOMS 7 (1981) 17, and Wood's from Colville
// (1968).
double rosenbrock(matrix& x)
{
    return 100 * sq(x(2) - sq(x(1))) + sq(1 - x(1));
}
double d_rosenbrock(matrix& x, int i)
{
    double const u = x(2) - sq(x(1));
    return i == 1 ? -400 * u * x(1) - 2 * (1 - x(1)) : 200 * u;
}

double powell(matrix& x)
{
    return sq(x(1) + 10 * x(2)) + 5 * sq(x(3) - x(4)) + sq(sq(x(2) - 2 * x(3))) +
           10 * sq(sq(x(1) - x(4)));
}
double d_powell(matrix& x, int i)
{
    double const a = 2 * (x(1) + 10 * x(2)), b = 10 * (x(3) - x(4)),
                 c = 4 * std::pow(x(2) - 2 * x(3), 3), d = 40 * std::pow(x(1) - x(4), 3);
    return i == 1 ? a + d : i == 2 ? 10 * a + c : i == 3 ? b - 2 * c : -b - d;
}

double wood(matrix& x)
{
    return 100 * sq(x(2) - sq(x(1))) + sq(1 - x(1)) + 90 * sq(x(4) - sq(x(3))) + sq(1 - x(3)) +
           10.1 * (sq(x(2) - 1) + sq(x(4) - 1)) + 19.8 * (x(2) - 1) * (x(4) - 1);
}
double d_wood(matrix& x, int i)
{
    double const u = x(2) - sq(x(1)), v = x(4) - sq(x(3));
    switch (i) {
    case 1:
        return -400 * u * x(1) - 2 * (1 - x(1));
    case 2:
        return 200 * u + 20.2 * (x(2) - 1) + 19.8 * (x(4) - 1);
    case 3:
        return -360 * v * x(3) - 2 * (1 - x(3));
    default:
        return 180 * v + 20.2 * (x(4) - 1) + 19.8 * (x(2) - 1);
    }
}

double const beale_y[] = {1.5, 2.25, 2.625};
double beale(matrix& x)
{
    double s = 0;
    for (int k = 1; k <= 3; ++k) s += sq(beale_y[k - 1] - x(1) * (1 - std::pow(x(2), k)));
    return s;
}
double d_beale(matrix& x, int i)
{
    double s = 0;
    for (int k = 1; k <= 3; ++k) {
        double const r = beale_y[k - 1] - x(1) * (1 - std::pow(x(2), k));
        s += 2 * r * (i == 1 ? std::pow(x(2), k) - 1 : x(1) * k * std::pow(x(2), k - 1));
    }
    return s;
}

double const two_pi = 2 * std::acos(-1.0);
double turned(matrix& x)
{
    return std::atan(x(2) / x(1)) / two_pi + (x(1) < 0 ? 0.5 : 0.0);
}
double helical(matrix& x)
{
    double const r = std::sqrt(sq(x(1)) + sq(x(2)));
    return 100 * (sq(x(3) - 10 * turned(x)) + sq(r - 1)) + sq(x(3));
}
double d_helical(matrix& x, int i)
{
    double const r = std::sqrt(sq(x(1)) + sq(x(2))), u = 200 * (x(3) - 10 * turned(x));
    if (i == 3) return u + 2 * x(3);
    double const slope = (i == 1 ? -x(2) : x(1)) / (two_pi * r * r);
    return -10 * u * slope + 200 * (r - 1) * x(i) / r;
}

// Not smooth: values in steps, so that the points of a simplex tie, and NaN on a half-plane.
double terraces(matrix& x)
{
    return std::floor(4 * sq(x(1) - 0.3)) + std::floor(4 * sq(x(2) + 0.2));
}
double d_terraces(matrix& x, int i)
{
    return i == 1 ? 8 * (x(1) - 0.3) : 8 * (x(2) + 0.2);
}
double undefined_left(matrix& x)
{
    return x(1) < 0 ? NaN : sq(x(1) - 0.1) + sq(x(2));
}
double d_undefined_left(matrix& x, int i)
{
    return x(1) < 0 ? NaN : 2 * x(i) - (i == 1 ? 0.2 : 0);
}
double line(matrix& x)
{
    return sq(x(1) - 3);
}
double d_line(matrix& x, int)
{
    return 2 * (x(1) - 3);
}

struct Problem
{
    char const* name;
    function f;
    derivative df;
    matrix start, least;
};
std::vector<Problem> const smooth = {
    {"Rosenbrock", rosenbrock, d_rosenbrock, "-1.2; 1", "1; 1"},
    {"Powell", powell, d_powell, "3; -1; 0; 1", "0; 0; 0; 0"},
    {"Wood", wood, d_wood, "-3; -1; -3; -1", "1; 1; 1; 1"},
    {"Beale", beale, d_beale, "1; 1", "3; 0.5"},
    {"helical valley", helical, d_helical, "-1; 0; 0", "1; 0; 0"},
    {"one parameter", line, d_line, "0", "3"},
};
std::vector<Problem> const rough = {
    {"terraces", terraces, d_terraces, "2; -1.5", ""},
    {"undefined left", undefined_left, d_undefined_left, "0.2; 1", ""},
    {"undefined at the start", undefined_left, d_undefined_left, "-0.2; 1", ""},
};

double distance(matrix const& a, matrix const& b)
{
    return matrix(max(abs(a - b)));
}

// Calls of a function under test: its argument, and i where the derivative was called (else 0).
struct Call
{
    matrix x;
    int i;
};
std::vector<Call> calls;
function traced_f;
derivative traced_df;
double trace_f(matrix& x)
{
    calls.push_back({x, 0});
    return traced_f(x);
}
double trace_df(matrix& x, int i)
{
    calls.push_back({x, i});
    return traced_df(x, i);
}
void trace(Problem const& p)
{
    traced_f = p.f;
    traced_df = p.df;
    calls.clear();
}

void expect_calls(std::vector<Call> const& expected)
{
    ASSERT_EQ(calls.size(), expected.size());
    for (std::size_t k = 0; k < calls.size(); ++k) {
        ASSERT_EQ(calls[k].i, expected[k].i) << "call " << k;
        ASSERT_TRUE(test::same_bits(calls[k].x, expected[k].x)) << "call " << k;
    }
}

// Both searches in whole matrices, as they are defined.
double largest(matrix const& m)
{
    return matrix(max(max(abs(m))));
}

bool plain_fminu(function f, derivative df, matrix& x, double tol, int method)
{
    int const n = x.rows;
    matrix g(n, 1), gnew(n, 1), H = eye(n, n);
    for (int i = 1; i <= n; ++i) g(i) = df(x, i);
    for (int turn = 0; turn < 500 * n; ++turn) {
        matrix const p = mul(H, g);
        double const f0 = f(x);
        matrix xnew;
        double f1, t = 1;
        int k = 1;
        do {
            xnew = x - t * p;
            f1 = f(xnew);
            ++k;
            t /= 2;
        } while (!(f1 <= f0) && k != 100);
        matrix const s = xnew - x;
        if ((largest(s) <= tol && std::fabs(f1 - f0) <= tol) || k == 100) return k < 100;
        for (int i = 1; i <= n; ++i) gnew(i) = df(xnew, i);
        matrix const y = gnew - g;
        double const sy = scmul(s, y), yHy = comut(H, y);
        if (method == DFP) H = H + sqrT(s) / sy - sqrT(mul(H, y)) / yHy;
        if (method == BFGS)
            H = H + ((yHy / sy + 1) * sqrT(s) - mul(mulT(s, y), H) - mul(H, mulT(y, s))) / sy;
        x = xnew;
        g = gnew;
    }
    return false;
}

bool plain_fmins(function f, matrix& x, double tol)
{
    int const n = x.rows, limit = 500 * n;
    matrix S(n, n + 1), F(1, n + 1);
    for (int j = 0; j <= n; ++j) {
        matrix y = x;
        if (j > 0) y(j) = y(j) == 0 ? 0.00025 : 1.05 * y(j);
        S.setcol(j + 1, y);
        F(j + 1) = f(y);
    }
    auto const rank = [&] { S = S.col(sort(F, 0, 1)); };
    rank();
    int count = n + 1;
    Vector const on = $(n), ot = $(2, n + 1), one = vones(n);
    while (count < limit) {
        if (largest(S.col(ot) - S.col(one)) <= tol &&
            double(matrix(max(abs(F(1) - F.col(ot))))) <= tol)
            break;
        matrix const vbar = ~sum(~S.col(on)) / n;
        matrix const last = S.col(n + 1);
        matrix vr = 2 * vbar - 1 * last, vk = vr;
        double const fr = f(vr);
        double fk = fr;
        if (fr < F(n)) {
            ++count;
            if (fr < F(1)) {
                matrix ve = 2 * vr - vbar;
                double const fe = f(ve);
                ++count;
                if (fe < F(1)) vk = ve, fk = fe;
            }
        } else {
            matrix vc = 0.5 * vbar + 0.5 * (fr < F(n + 1) ? vr : last);
            vk = vc;
            fk = f(vc);
            count += 2;
            if (!(fk < F(n))) {
                for (int j = 2; j <= n; ++j) {
                    matrix y = (S.col(j) + S.col(1)) / 2;
                    S.setcol(j, y);
                    F(j) = f(y);
                }
                vk = (last + S.col(1)) / 2;
                fk = f(vk);
                count += n;
            }
        }
        S.setcol(n + 1, vk);
        F(n + 1) = fk;
        rank();
    }
    x = S.col(1);
    return count < limit;
}

TEST(Minimisers, CallTheFunctionAtThePointsOfThePlainSearch)
{
    for (std::vector<Problem> const* problems : {&smooth, &rough})
        for (Problem const& p : *problems) {
            SCOPED_TRACE(p.name);
            for (double tol : {1e-2, 1e-9, 0.0}) {
                matrix x = p.start, plain = p.start;
                trace(p);
                bool const ended = plain_fmins(trace_f, plain, tol);
                std::vector<Call> const expected = std::move(calls);
                trace(p);
                EXPECT_EQ(fmins(trace_f, x, tol), ended);
                EXPECT_TRUE(test::same_bits(x, plain));
                expect_calls(expected);
            }
            for (int method : {0, 1, 2}) {
                SCOPED_TRACE(method);
                matrix x = p.start, plain = p.start;
                trace(p);
                bool const ended = plain_fminu(trace_f, trace_df, plain, 1e-7, method);
                std::vector<Call> const expected = std::move(calls);
                trace(p);
                EXPECT_EQ(fminu(trace_f, trace_df, x, 1e-7, static_cast<EsMethod>(method)), ended);
                EXPECT_TRUE(test::same_bits(x, plain));
                expect_calls(expected);
            }
        }
}

TEST(Minimisers, ReachTheLeastValues)
{
    for (Problem const& p : smooth) {
        SCOPED_TRACE(p.name);
        // Powell's is flat to the fourth power: the last bits of pow decide how near one comes.
        double const near = p.f == powell ? 1e-5 : 1e-6;
        for (EsMethod method : {DFP, BFGS}) {
            matrix x = p.start;
            fminu(p.f, p.df, x, 1e-10, method);
            EXPECT_LT(distance(x, p.least), near);
            std::printf("%-15s fminu %s  f %8.1e  x %8.1e\n", p.name, method ? "BFGS" : "DFP ",
                        p.f(x), distance(x, p.least));
        }
        matrix x = p.start;
        fmins(p.f, x, 1e-10);
        EXPECT_LT(distance(x, p.least), near);
        std::printf("%-15s fmins       f %8.1e  x %8.1e\n", p.name, p.f(x), distance(x, p.least));
    }
}

TEST(Minimisers, KeepTheNamesOfTheParameters)
{
    static auto const by_name = [](matrix& x) { return sq(x("a", 1) - 1) + sq(x("b", 1) + 2); };
    static function const f = [](matrix& x) { return by_name(x); };
    static derivative const df = [](matrix& x, int i) { return 2 * (x(i) - (i == 1 ? 1 : -2)); };
    using search = void (*)(matrix&);
    search const searches[] = {
        [](matrix& x) { EXPECT_TRUE(fminu(f, df, x, 1e-9, BFGS)); },
        [](matrix& x) { EXPECT_TRUE(fmins(f, x, 1e-9)); },
        [](matrix& x) { fminx(f, df, x, 1e-9, SpeedSlow, BFGS); },
    };
    for (search run : searches) {
        matrix x("4; 7");
        x.rowname(1) = "a";
        x.rowname(2) = "b";
        run(x);
        EXPECT_NEAR(x("a", 1), 1.0, 1e-7);
        EXPECT_NEAR(x("b", 1), -2.0, 1e-7);
    }
}

TEST(Minimisers, EndAtTheirLimits)
{
    for (double bad : {NaN, inf, -inf}) {
        SCOPED_TRACE(bad);
        static double value;
        value = bad;
        Problem const p{"", [](matrix&) { return value; }, [](matrix&, int) { return 1.0; },
                        "1; 0; -1", ""};
        matrix x = p.start;
        trace(p);
        EXPECT_FALSE(fmins(trace_f, x, 1e-6));
        EXPECT_GE(calls.size(), 1500u);
        EXPECT_LE(calls.size(), 1504u);

        x = p.start;
        trace(p);
        bool const ended = fminu(trace_f, trace_df, x, 1e-6, BFGS);
        EXPECT_FALSE(ended);
        // All of 99 halvings are tried against NaN; infinities are equal, but their difference is
        // NaN.
        if (std::isnan(bad)) {
            EXPECT_EQ(calls.size(), 3u + 1u + 99u);
            EXPECT_TRUE(test::same_bits(x, p.start));
        }
    }
    // Nothing to search: one look at the value.
    matrix none(0, 1);
    trace({"", [](matrix&) { return 1.0; }, d_line, "", ""});
    EXPECT_FALSE(fmins(trace_f, none, 1e-6));
    EXPECT_EQ(calls.size(), 1u);
    EXPECT_FALSE(fminu(trace_f, trace_df, none, 1e-6, DFP));
}

TEST(QuasiNewton, EqualValuesAreAcceptedAndRisingOnesHalved)
{
    // A constant: the first step is taken, and meets the test once the step is short.
    Problem const flat{"", [](matrix&) { return 5.0; }, [](matrix&, int) { return 1e-3; }, "1", ""};
    matrix x = flat.start;
    trace(flat);
    EXPECT_TRUE(fminu(trace_f, trace_df, x, 1e-2, DFP));
    EXPECT_EQ(calls.size(), 3u);
    EXPECT_EQ(x(1), 1.0); // the step that met it is not taken

    // An ascent: in the 54th halving the step vanishes in rounding, and the value is equal.
    Problem const wrong{"", [](matrix& v) { return double(v(1)); },
                        [](matrix&, int) { return -1.0; }, "1", ""};
    x = wrong.start;
    trace(wrong);
    EXPECT_TRUE(fminu(trace_f, trace_df, x, 1e-9, DFP));
    EXPECT_EQ(x(1), 1.0);
    EXPECT_EQ(calls.size(), 2u + 54u);
    // Around 0 it does not vanish in 99 of them.
    x = matrix(0.0);
    trace(wrong);
    EXPECT_FALSE(fminu(trace_f, trace_df, x, 1e-9, DFP));
    EXPECT_EQ(calls.size(), 2u + 99u);
    EXPECT_EQ(x(1), 0.0);
}

TEST(TwoStarts, DoAsMuchAsTheSpeedAsks)
{
    // Two valleys: the deeper one, at -2, is met from zero, the one at 3 from 5.
    Problem const p{"", [](matrix& x) { return x(1) < 0.5 ? sq(x(1) + 2) : sq(x(1) - 3) + 1; },
                    [](matrix& x, int) { return x(1) < 0.5 ? 2 * (x(1) + 2) : 2 * (x(1) - 3); },
                    "5", ""};
    struct Case
    {
        int speed;
        double answer;
        bool zero, slopes;
    };
    for (Case const& c :
         {Case{0, -2, true, true}, Case{1, -2, true, true}, Case{2, -2, true, false},
          Case{3, 3, false, false}, Case{7, 3, false, false}}) {
        SCOPED_TRACE(c.speed);
        matrix x = p.start;
        trace(p);
        fminx(trace_f, c.slopes ? trace_df : nullptr, x, 1e-8, static_cast<EsSpeed>(c.speed), BFGS);
        EXPECT_NEAR(x(1), c.answer, 1e-6);
        bool zero = false;
        std::size_t first_slope = calls.size(), second_start = calls.size();
        for (std::size_t k = calls.size(); k-- > 0;) {
            if (calls[k].i) first_slope = k;
            if (calls[k].x(1) == 0.0) second_start = k, zero = true;
        }
        EXPECT_EQ(zero, c.zero);
        EXPECT_EQ(first_slope < calls.size(), c.slopes);
        // The slow search descends from the first start before it takes the second.
        if (c.slopes) {
            EXPECT_EQ(first_slope < second_start, c.speed == 0);
        }
    }
}

TEST(TwoStarts, KeepTheGivenStartUnlessTheOtherIsBetter)
{
    // Even: both starts end at 0.25 of their own side.
    function const even = [](matrix& x) { return sq(std::fabs(x(1) - 0.5) - 0.5); };
    matrix x("1.2");
    fminx(even, nullptr, x, 1e-300, SpeedFast, BFGS);
    EXPECT_NEAR(x(1), 1.0, 1e-6);

    // NaN at and around zero must not win.
    function const hole = [](matrix& v) { return v(1) < 0.5 ? NaN : sq(v(1) - 3); };
    x = matrix(5.0);
    fminx(hole, nullptr, x, 1e-8, SpeedFast, BFGS);
    EXPECT_NEAR(x(1), 3.0, 1e-6);

    // From zero itself there is one start only.
    Problem const p = smooth[5];
    x = matrix(0.0);
    trace(p);
    fminx(trace_f, nullptr, x, 1e-8, SpeedFast, BFGS);
    std::size_t const twice = calls.size();
    x = matrix(0.0);
    trace(p);
    fmins(trace_f, x, 1e-8);
    EXPECT_EQ(twice, calls.size() + 1);
}

TEST(MinimisersDeathTest, RefuseNullFunctionsAndOtherShapes)
{
    matrix x("1; 2"), wide("1 2; 3 4"), row("1 2");
    EXPECT_REFUSAL(fminu(nullptr, d_line, x, 1e-6, BFGS), "MATRIX",
                   "bool fminu(double (*)(matrix),double (*)(matrix,int),matrix,double,EsMethod)",
                   "brak funkcji");
    EXPECT_REFUSAL(fminu(line, nullptr, x, 1e-6, BFGS), "MATRIX",
                   "bool fminu(double (*)(matrix),double (*)(matrix,int),matrix,double,EsMethod)",
                   "brak funkcji");
    EXPECT_REFUSAL(fmins(nullptr, x, 1e-6), "MATRIX",
                   "bool fmins(double (*)(matrix),matrix,double)", "brak funkcji");
    for (EsSpeed speed : {SpeedSlow, SpeedMedium})
        EXPECT_REFUSAL(
            fminx(line, nullptr, x, 1e-6, speed, BFGS), "MATRIX",
            "fminx(double (*)(matrix),double (*)(matrix,int),matrix,double,EsSpeed,EsMethod)",
            "brak funkcji");
    for (matrix* other : {&wide, &row}) {
        EXPECT_REFUSAL(fminu(line, d_line, *other, 1e-6, BFGS), "MATRIX",
                       "matrix operator -(matrix,matrix)", "niezgodne wymiary macierzy");
        EXPECT_REFUSAL(fmins(line, *other, 1e-6), "MATRIX", "setcol(Vector,matrix)",
                       "liczba kolumn danych do wstawienia niezgodna z dlugoscia indeksu");
    }
}

} // namespace
} // namespace varnow
