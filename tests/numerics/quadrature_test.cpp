#include <varnow/numerics/univariate.h>

#include "tests/support/refusal.h"

#include <cmath>
#include <limits>
#include <vector>

namespace varnow {
namespace {

double const pi = std::acos(-1.0);
double const NaN = std::numeric_limits<double>::quiet_NaN();

// Where the function under test has been called.
std::vector<double> calls;
template <double (*F)(double)> double traced(double x)
{
    calls.push_back(x);
    return F(x);
}

double none(double)
{
    return NaN;
}
double zero(double)
{
    return 0.0;
}
double restless(double)
{
    double const k = static_cast<double>(calls.size());
    return k * k;
}
double power_9(double x)
{
    return std::pow(x, 9);
}
double cubic(double x)
{
    return x * x * x;
}

TEST(Integral, ReachesKnownValues)
{
    struct Case
    {
        char const* name;
        double (*f)(double);
        double a, b, tol, exact, error;
    };
    // The rule's weights have 13 digits, which bounds what any tol can give.
    Case const cases[] = {
        {"sine", std::sin, 0.0, pi, 1e-10, 2.0, 3e-12},
        {"exponential", std::exp, 0.0, 1.0, 1e-10, std::exp(1.0) - 1.0, 2e-12},
        {"backwards", std::exp, 1.0, 0.0, 1e-10, 1.0 - std::exp(1.0), 2e-12},
        {"degree 9, exact by the rule", power_9, 0.0, 2.0, 1e-10, 102.4, 2e-10},
        {"infinite slope", std::sqrt, 0.0, 1.0, 1e-8, 2.0 / 3.0, 1e-6},
        {"a kink", [](double x) { return std::fabs(x - 1.0 / 3.0); }, 0.0, 1.0, 1e-9, 5.0 / 18.0,
         1e-7},
        {"Runge", [](double x) { return 1.0 / (1.0 + 25.0 * x * x); }, -1.0, 1.0, 1e-10,
         0.4 * std::atan(5.0), 1e-10},
        {"a narrow peak", [](double x) { return 1e-3 / (1e-6 + (x - 0.3) * (x - 0.3)); }, 0.0, 1.0,
         1e-8, std::atan(700.0) + std::atan(300.0), 1e-8},
    };
    for (Case const& c : cases) {
        double const found = integral(c.f, c.a, c.b, c.tol);
        EXPECT_NEAR(found, c.exact, c.error) << c.name;
        std::printf("%-30s %.1f digits\n", c.name,
                    -std::log10(std::fabs(found / c.exact - 1.0) + 1e-17));
    }
}

TEST(Integral, TakesEightNewPointsForEachIntervalFromTheLeft)
{
    calls.clear();
    EXPECT_EQ(integral(traced<zero>, 0.0, 1.0, 1e-9), 0.0);
    std::vector<double> expected;
    for (int k = 0; k <= 8; ++k) expected.push_back(k / 8.0);
    for (int k = 1; k < 16; k += 2) expected.push_back(k / 16.0);
    // The start's estimate always divides the whole; its halves agree.
    for (int k = 1; k < 32; k += 2) expected.push_back(k / 32.0);
    EXPECT_EQ(calls, expected);

    calls.clear();
    EXPECT_EQ(integral(traced<std::exp>, 2.0, 2.0, 1e-9), 0.0);
    EXPECT_EQ(calls, std::vector<double>(33, 2.0));
}

TEST(Integral, PointsAreRunningSums)
{
    double const a = 0.1, b = 0.9, h = (b - a) * 0.125;
    calls.clear();
    integral(traced<std::exp>, a, b, 1e-6);
    double x = a, y = a + h / 2;
    bool other_than_products = false;
    for (unsigned k = 0; k < 9; ++k, x += h) {
        EXPECT_EQ(calls[k], x) << k;
        other_than_products |= x != a + k * h;
    }
    EXPECT_TRUE(other_than_products);
    for (unsigned k = 9; k < 17; ++k, y += h) EXPECT_EQ(calls[k], y) << k;
}

TEST(Integral, DividesElevenTimesAtMost)
{
    calls.clear();
    EXPECT_TRUE(std::isfinite(integral(traced<restless>, 0.0, 1.0, 0.0)));
    EXPECT_EQ(calls.size(), 9u + 8u * 2047u);

    calls.clear();
    EXPECT_TRUE(std::isnan(integral(traced<none>, 0.0, 1.0, 1e-9)));
    EXPECT_EQ(calls.size(), 17u);

    // At the last level, and where the estimate is right, an interval costs its eight points only.
    double F[9];
    for (int k = 0; k < 9; ++k) F[k] = k / 8.0;
    auto const identity = [](double x) {
        calls.push_back(x);
        return x;
    };
    for (int level : {11, 1}) {
        calls.clear();
        EXPECT_NEAR(quad8stp(identity, 0.0, 1.0, 1e-9, level, F, level == 1 ? 0.5 : 1e30), 0.5,
                    1e-12);
        EXPECT_EQ(calls.size(), 8u);
    }
    // Half of the tolerance goes to each half, relative to the half's own integral.
    calls.clear();
    quad8stp(identity, 0.0, 1.0, 1e-9, 10, F, 1e30);
    EXPECT_EQ(calls.size(), 24u);
}

TEST(Derivative, ReachesKnownValues)
{
    EXPECT_NEAR(derivative(std::sin, 1.0, 1e-10), std::cos(1.0), 1e-10);
    EXPECT_NEAR(derivative(std::exp, 3.0, 1e-9), std::exp(3.0), 1e-9);
    EXPECT_NEAR(derivative(std::log, 0.01, 1e-6), 100.0, 1e-6);
    EXPECT_NEAR(derivative(cubic, -2.0, 1e-9), 12.0, 1e-9);
    EXPECT_TRUE(std::isnan(derivative(none, 0.0, 1e-9)));
}

TEST(Romberg, HalvesTheStepInATableAndAgainInEveryPass)
{
    int flag = 1;
    calls.clear();
    EXPECT_TRUE(std::isnan(rombergdiff(traced<none>, 1.0, 1e-9, 0.5, 3, flag)));
    EXPECT_EQ(flag, 1);
    std::vector<double> expected;
    for (double first : {0.5, 0.25, 0.125}) {
        double s = first;
        for (int k = 0; k < 7; ++k, s *= 0.5) {
            expected.push_back(1.0 + s);
            expected.push_back(1.0 - s);
        }
    }
    EXPECT_EQ(calls, expected);

    for (int maxit : {1, 0, -5}) {
        calls.clear();
        rombergdiff(traced<none>, 1.0, 1e-9, 0.5, maxit, flag);
        EXPECT_EQ(calls.size(), 14u);
        EXPECT_EQ(flag, 1);
    }
}

TEST(Romberg, FlagTellsHowItEnded)
{
    // Of x^3 at 1 with step s the difference is 3 + s^2: the first extrapolation is exact, the
    // second one confirms it.
    struct Case
    {
        int maxit, before, after;
        unsigned calls;
    };
    for (Case const& c : {Case{2, 1, 0, 6}, Case{2, -7, 0, 6}, Case{1, 1, 1, 6}, Case{2, 0, 0, 4},
                          Case{1, 0, 1, 4}}) {
        int flag = c.before;
        calls.clear();
        EXPECT_NEAR(rombergdiff(traced<cubic>, 1.0, 1e-9, 0.5, c.maxit, flag), 3.0, 1e-12);
        EXPECT_EQ(flag, c.after) << c.maxit << " " << c.before;
        EXPECT_EQ(calls.size(), c.calls);
    }
}

TEST(UnivariateDeathTest, RefusesNullPointers)
{
    double (*const f)(double) = nullptr;
    int flag = 1;
    EXPECT_REFUSAL(integral(f, 0, 1, 1e-9), "FUNCTION",
                   "double integral(double (*)(double),double,double,double)", "brak funkcji");
    EXPECT_REFUSAL(quad8stp(std::sin, 0, 1, 1e-9, 1, nullptr, 0), "FUNCTION",
                   "double quad8stp(double (*)(double),double,double,double,int,double *,double)",
                   "brak wskaznika");
    EXPECT_REFUSAL(derivative(f, 0, 1e-9), "FUNCTION",
                   "double derivative(double (*)(double),double,double)", "brak funkcji");
    EXPECT_REFUSAL(rombergdiff(f, 0, 1e-9, 1, 1, flag), "FUNCTION",
                   "double rombergdiff(double (*)(double),double,double,double,int,int)",
                   "brak funkcji");
    EXPECT_REFUSAL(fmin(f, 0, 1, 1e-9), "FUNCTION",
                   "double fmin(double (*)(double),double,double,double)", "brak funkcji");
    EXPECT_REFUSAL(fminops(f, 0, 1, 1e-9, 1, flag), "FUNCTION",
                   "double fminops(double (*)(double),double,double,double,int,int)",
                   "brak funkcji");
    EXPECT_REFUSAL(fzero(f, 0, 1e-9), "FUNCTION", "double fzero(double (*)(double),double,double)",
                   "brak funkcji");
}

} // namespace
} // namespace varnow
