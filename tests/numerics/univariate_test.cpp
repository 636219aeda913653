#include <varnow/numerics/univariate.h>

#include "tests/support/refusal.h"

#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace varnow {
namespace {

double const pi = std::acos(-1.0);
double const golden = 0.3819660112501;
double const NaN = std::numeric_limits<double>::quiet_NaN();
double const inf = std::numeric_limits<double>::infinity();

using function = double (*)(double);
function const none = [](double) { return NaN; };
function const power_9 = [](double x) { return std::pow(x, 9); };
function const cubic = [](double x) { return x * x * x; };
function const wallis = [](double x) { return x * x * x - 2 * x - 5; };
function const parabola = [](double x) { return (x - 2) * (x - 2); };
function const kink = [](double x) { return std::fabs(x - 1); };
function const runge = [](double x) { return 1 / (1 + 25 * x * x); };
function const peak = [](double x) { return 1e-3 / (1e-6 + (x - 0.3) * (x - 0.3)); };
function const steep = [](double x) { return 1 / x + x; };
function const far_step = [](double x) { return x > 1e6 ? 1.0 : -1.0; };

// Where the function under test has been called.
std::vector<double> calls;
function watched;
double traced(double x)
{
    calls.push_back(x);
    return watched(x);
}
function trace(function f)
{
    calls.clear();
    watched = f;
    return traced;
}

TEST(Univariate, ReachesKnownValues)
{
    struct
    {
        char const* name;
        double found, exact, error;
    } const cases[] = {
        // The rule's weights have 13 digits, which bounds what any tol can give.
        {"sine", integral(std::sin, 0, pi, 1e-10), 2, 3e-12},
        {"backwards", integral(std::exp, 1, 0, 1e-10), 1 - std::exp(1.0), 2e-12},
        {"degree 9, exact by the rule", integral(power_9, 0, 2, 1e-10), 102.4, 2e-10},
        {"infinite slope", integral(std::sqrt, 0, 1, 1e-8), 2.0 / 3, 1e-6},
        {"a kink", integral(kink, 0, 3, 1e-9), 2.5, 9e-7},
        {"Runge", integral(runge, -1, 1, 1e-10), 0.4 * std::atan(5.0), 1e-10},
        {"peak", integral(peak, 0, 1, 1e-8), std::atan(700.0) + std::atan(300.0), 1e-8},

        {"slope of log", derivative(std::log, 0.01, 1e-6), 100, 1e-6},
        {"slope of cubic", derivative(cubic, -2, 1e-9), 12, 1e-9},

        {"least cosine", fmin(std::cos, 2, 5, 1e-9), pi, 1e-7},
        {"least cubic", fmin(wallis, 0, 2, 1e-9), std::sqrt(2.0 / 3), 1e-7},
        {"without a parabola", fmin(kink, 0, 3, 1e-9), 1, 1e-7},
        {"lower end", fmin(std::exp, -1, 1, 1e-9), -1, 1e-6},
        {"upper end", fmin(std::acos, -1, 1, 1e-9), 1, 1e-6},
        {"no length", fmin(parabola, 7, 7, 1e-9), 7, 0},

        {"root of cosine", fzero(std::cos, 1, 1e-15), pi / 2, 1e-14},
        {"root of sine below 0", fzero(std::sin, -3, 1e-15), -pi, 4e-14},
        {"root at the start", fzero(std::tanh, 0, 1e-15), 0, 1e-14},
        {"Wallis", fzero(wallis, 0, 1e-15), 2.0945514815423265, 2e-14},
        {"far away", fzero(far_step, -4, 1e-15), 1e6, 1e-8},
    };
    for (auto const& c : cases) EXPECT_NEAR(c.found, c.exact, c.error) << c.name;
    EXPECT_TRUE(std::isnan(derivative(none, 0, 1e-9)));
}

TEST(Univariate, EndsAfterSoManyCalls)
{
    static double F[9];
    for (int k = 0; k < 9; ++k) F[k] = k / 8.0;
    function const itself = [](double x) { return x; };
    function const restless = [](double) { return std::pow(double(calls.size()), 2); };
    function const steps = [](double x) { return x <= 0.95 ? 0.0 : x < 1.5 ? -1.0 : 1.0; };
    function const down_to_0 = [](double x) { return x < 1.05 ? 1.0 : 0.0; };
    struct
    {
        function f;
        double (*of)(int& flag);
        double value;
        std::size_t calls;
        int flag = 9, flag_after = 9;
    } const cases[] = {
        // Eleven levels; without a value, one.
        {restless, [](int&) { return integral(traced, 0, 1, 0) / inf; }, 0, 9 + 8 * 2047},
        {none, [](int&) { return integral(traced, 0, 1, 1e-9); }, NaN, 17},
        // The last level, an estimate that is right, and those of the halves that are.
        {itself, [](int&) { return quad8stp(traced, 0, 1, 1e-9, 11, F, 1e30); }, 0.5, 8},
        {itself, [](int&) { return quad8stp(traced, 0, 1, 1e-9, 1, F, 0.5); }, 0.5, 8},
        {itself, [](int&) { return quad8stp(traced, 0, 1, 1e-9, 10, F, 1e30); }, 0.5, 24},
        // Of x^3 at 1 with step s the difference is 3 + s^2: the first extrapolation is exact, the
        // second one confirms it.
        {cubic, [](int& flag) { return rombergdiff(traced, 1, 1e-9, 0.5, 2, flag); }, 3, 6, 1, 0},
        {cubic, [](int& flag) { return rombergdiff(traced, 1, 1e-9, 0.5, 2, flag); }, 3, 6, -7, 0},
        {cubic, [](int& flag) { return rombergdiff(traced, 1, 1e-9, 0.5, 1, flag); }, 3, 6, 1, 1},
        {cubic, [](int& flag) { return rombergdiff(traced, 1, 1e-9, 0.5, 2, flag); }, 3, 4, 0, 0},
        {cubic, [](int& flag) { return rombergdiff(traced, 1, 1e-9, 0.5, 1, flag); }, 3, 4, 0, 1},
        {none, [](int& flag) { return rombergdiff(traced, 1, 0, 0.5, -5, flag); }, NaN, 14, 1, 1},
        // One more than the limit; the place is the first golden step, then one back from there.
        {kink, [](int& flag) { return fminops(traced, 0, 6, 0, -1, flag); }, 6 * golden, 2, 0, 1},
        {kink, [](int& flag) { return fminops(traced, 0, 6, 0, 1, flag); }, 6 * golden, 2, 0, 1},
        {kink, [](int& flag) { return fminops(traced, 0, 6, 0, 2, flag); },
         6 * golden * (1 - golden), 3, 0, 1},
        {std::fabs, [](int&) { return fmin(traced, -1, 2, 0); }, 0, 501},
        // An exact 0 counts as not above: zeros on one side and values below on the other are no
        // change of sign, and the search goes on to 1 - 0.8 and 1 + 0.8.
        {steps, [](int&) { return fzero(traced, 1, 1e-15); }, 0.2, 10},
        {down_to_0, [](int&) { return fzero(traced, 1, 1e-15); }, 1.05, 2},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(&c - cases);
        int flag = c.flag;
        trace(c.f);
        double const found = c.of(flag);
        EXPECT_TRUE(std::isnan(c.value) ? std::isnan(found) : std::fabs(found - c.value) < 1e-12)
            << found;
        EXPECT_EQ(calls.size(), c.calls);
        EXPECT_EQ(flag, c.flag_after);
    }
}

TEST(Integral, TakesEightNewPointsForEachIntervalFromTheLeft)
{
    EXPECT_EQ(integral(trace([](double) { return 0.0; }), 0, 1, 1e-9), 0.0);
    std::vector<double> expected;
    for (int k = 0; k <= 8; ++k) expected.push_back(k / 8.0);
    // The start's estimate always divides the whole; its halves agree.
    for (double width : {16.0, 32.0})
        for (int k = 1; k < width; k += 2) expected.push_back(k / width);
    EXPECT_EQ(calls, expected);

    // The points are running sums, which here are no multiples of the step.
    double const a = 0.1, h = (0.9 - a) * 0.125;
    integral(trace(std::exp), a, 0.9, 1e-6);
    double x = a, y = a + h / 2;
    for (unsigned k = 0; k < 9; ++k, x += h) EXPECT_EQ(calls[k], x) << k;
    for (unsigned k = 9; k < 17; ++k, y += h) EXPECT_EQ(calls[k], y) << k;
}

TEST(Romberg, HalvesTheStepInATableAndAgainInEveryPass)
{
    int flag = 1;
    rombergdiff(trace(none), 1, 1e-9, 0.5, 3, flag);
    std::vector<double> expected;
    for (int pass = 1; pass <= 3; ++pass)
        for (int k = 0; k < 7; ++k)
            for (int side : {1, -1}) expected.push_back(1 + side * std::ldexp(1, -pass - k));
    EXPECT_EQ(calls, expected);
}

TEST(Minimum, TakesGoldenStepsUntilAParabolaFits)
{
    int flag = 5;
    EXPECT_NEAR(fminops(trace(parabola), 0, 5, 1e-9, 500, flag), 2, 1e-7);
    EXPECT_EQ(flag, 0);
    double const first = golden * 5;
    ASSERT_GE(calls.size(), 4u);
    EXPECT_EQ(calls[0], first);
    EXPECT_EQ(calls[1], first + golden * (5 - first));
    EXPECT_EQ(calls[2], first + golden * (0 - first));
    EXPECT_NEAR(calls[3], 2, 1e-12);
    EXPECT_LE(calls.size(), 8u);

    // The steep flank of 1/x: no parabola inside the bracket at first.
    EXPECT_NEAR(fmin(trace(steep), 0.01, 50, 1e-9), 1, 1e-6);
    EXPECT_LE(calls.size(), 40u);
}

TEST(Root, SearchesAroundTheStartInDoubledSteps)
{
    // To 1.5 times the start, where a straight line is met by the first interpolation.
    struct
    {
        function f;
        double start;
    } const cases[] = {{[](double x) { return x - 3; }, 2}, {[](double x) { return x + 3; }, -2}};
    for (auto const& c : cases) {
        EXPECT_NEAR(fzero(trace(c.f), c.start, 1e-15), 1.5 * c.start, 1e-14);
        std::vector<double> expected;
        for (double dx = c.start / 20; expected.size() < 10; dx = 2 * dx)
            expected.insert(expected.end(), {c.start - dx, c.start + dx});
        ASSERT_GE(calls.size(), 11u);
        EXPECT_NEAR(calls[10], 1.5 * c.start, 1e-14);
        EXPECT_LE(calls.size(), 13u);
        calls.resize(10);
        EXPECT_EQ(calls, expected);
    }
    fzero(trace([](double x) { return x + 0.02; }), 0, 1e-15);
    calls.resize(2);
    EXPECT_EQ(calls, (std::vector<double>{-0.05, 0.05}));
}

TEST(UnivariateDeathTest, RefusesNullPointers)
{
    static int flag;
    struct
    {
        char const *name, *arguments;
        void (*call)(function);
    } const cases[] = {
        {"integral", "double,double,double", [](function f) { integral(f, 0, 1, 1e-9); }},
        {"derivative", "double,double", [](function f) { derivative(f, 0, 1e-9); }},
        {"rombergdiff", "double,double,double,int,int",
         [](function f) { rombergdiff(f, 0, 1e-9, 1, 1, flag); }},
        {"fmin", "double,double,double", [](function f) { fmin(f, 0, 1, 1e-9); }},
        {"fminops", "double,double,double,int,int",
         [](function f) { fminops(f, 0, 1, 1e-9, 1, flag); }},
        {"fzero", "double,double", [](function f) { fzero(f, 0, 1e-9); }},
    };
    for (auto const& c : cases)
        EXPECT_REFUSAL(c.call(nullptr), "FUNCTION",
                       std::string("double ") + c.name + "(double (*)(double)," + c.arguments + ")",
                       "brak funkcji");
    EXPECT_REFUSAL(quad8stp(std::sin, 0, 1, 1e-9, 1, nullptr, 0), "FUNCTION",
                   "double quad8stp(double (*)(double),double,double,double,int,double *,double)",
                   "brak wskaznika");
}

} // namespace
} // namespace varnow
