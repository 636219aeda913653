#include <varnow/numerics/univariate.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace varnow {
namespace {

double const pi = std::acos(-1.0);
double const golden = 0.3819660112501;

std::vector<double> calls;
template <double (*F)(double)> double traced(double x)
{
    calls.push_back(x);
    return F(x);
}

double parabola(double x)
{
    return (x - 2.0) * (x - 2.0);
}
double kink(double x)
{
    return std::fabs(x - 1.0);
}
double none(double)
{
    return std::numeric_limits<double>::quiet_NaN();
}

double steep(double x)
{
    return 1.0 / x + x;
}
double line(double x)
{
    return x + 0.02;
}
double steps(double x)
{
    return x <= 0.95 ? 0.0 : x < 1.5 ? -1.0 : 1.0;
}
double down_to_zero(double x)
{
    return x < 1.05 ? 1.0 : 0.0;
}

TEST(Minimum, ReachesKnownPlaces)
{
    EXPECT_NEAR(fmin(std::cos, 2.0, 5.0, 1e-9), pi, 1e-7);
    EXPECT_NEAR(fmin(parabola, -10.0, 30.0, 1e-9), 2.0, 1e-7);
    // x^3 - 2x - 5 has its minimum at the root of 2/3; |x - 1| has no parabola.
    EXPECT_NEAR(fmin([](double x) { return x * x * x - 2.0 * x - 5.0; }, 0.0, 2.0, 1e-9),
                std::sqrt(2.0 / 3.0), 1e-7);
    EXPECT_NEAR(fmin(kink, 0.0, 3.0, 1e-9), 1.0, 1e-7);
    // At the ends, and in an interval without length.
    EXPECT_NEAR(fmin(std::exp, -1.0, 1.0, 1e-9), -1.0, 1e-6);
    EXPECT_NEAR(fmin([](double x) { return -x; }, -1.0, 1.0, 1e-9), 1.0, 1e-6);
    EXPECT_EQ(fmin(parabola, 7.0, 7.0, 1e-9), 7.0);
}

TEST(Minimum, TakesGoldenStepsUntilAParabolaFits)
{
    calls.clear();
    int flag = 5;
    EXPECT_NEAR(fminops(traced<parabola>, 0.0, 5.0, 1e-9, 500, flag), 2.0, 1e-7);
    EXPECT_EQ(flag, 0);
    double const first = golden * 5.0;
    ASSERT_GE(calls.size(), 4u);
    EXPECT_EQ(calls[0], first);
    EXPECT_EQ(calls[1], first + golden * (5.0 - first));
    EXPECT_EQ(calls[2], first + golden * (0.0 - first));
    EXPECT_NEAR(calls[3], 2.0, 1e-12);
    EXPECT_LE(calls.size(), 8u);
    for (double x : calls) EXPECT_TRUE(x > 0.0 && x < 5.0) << x;

    // The steep flank of 1/x: no parabola inside the bracket at first.
    calls.clear();
    EXPECT_NEAR(fmin(traced<steep>, 0.01, 50.0, 1e-9), 1.0, 1e-6);
    EXPECT_LE(calls.size(), 40u);
}

TEST(Minimum, MakesOneEvaluationMoreThanTheLimit)
{
    for (int maxit : {-1, 0, 1, 10}) {
        calls.clear();
        int flag = 0;
        double const place = fminops(traced<kink>, 0.0, 6.0, 0.0, maxit, flag);
        EXPECT_EQ(flag, 1);
        EXPECT_EQ(calls.size(), maxit < 1 ? 2u : static_cast<unsigned>(maxit) + 1u);
        for (double x : calls) EXPECT_LE(kink(place), kink(x));
    }
    calls.clear();
    fmin(traced<none>, 0.0, 6.0, 0.0);
    EXPECT_LE(calls.size(), 501u);
}

TEST(Root, ReachesKnownValues)
{
    struct Case
    {
        double (*f)(double);
        double start, root;
    };
    Case const cases[] = {
        {std::cos, 1.0, pi / 2.0},
        {std::sin, 3.0, pi},
        {std::sin, -3.0, -pi},
        {std::tanh, 0.0, 0.0},
        {std::log, 0.3, 1.0},
        {[](double x) { return x * x * x - 2.0 * x - 5.0; }, 0.0, 2.0945514815423265},
        {[](double x) { return std::exp(-x) - x; }, 20.0, 0.5671432904097838},
        {[](double x) { return std::pow(x - 1.0, 3); }, 0.4, 1.0},
        {[](double x) { return x > 1e6 ? 1.0 : -1.0; }, -4.0, 1e6},
    };
    for (Case const& c : cases)
        EXPECT_NEAR(fzero(c.f, c.start, 1e-15), c.root, 1e-14 * std::fmax(std::fabs(c.root), 1.0))
            << c.start << " to " << c.root;
}

TEST(Root, SearchesAroundTheStartInDoubledSteps)
{
    // From a negative start the first point is the one above it.
    for (double sign : {1.0, -1.0}) {
        static double at;
        at = sign * 3.0;
        auto const f = [](double x) {
            calls.push_back(x);
            return x - at;
        };
        double const start = sign * 2.0;
        std::vector<double> expected;
        double dx = start / 20.0;
        for (int k = 0; k < 5; ++k, dx = 2.0 * dx) {
            expected.push_back(start - dx);
            expected.push_back(start + dx);
        }
        calls.clear();
        EXPECT_NEAR(fzero(f, start, 1e-15), at, 1e-14);
        ASSERT_GE(calls.size(), 11u);
        // A straight line is met by the first interpolation.
        EXPECT_NEAR(calls[10], at, 1e-14);
        EXPECT_LE(calls.size(), 13u);
        calls.resize(10);
        EXPECT_EQ(calls, expected);
    }
    calls.clear();
    fzero(traced<line>, 0.0, 1e-15);
    EXPECT_EQ(calls[0], -0.05);
    EXPECT_EQ(calls[1], 0.05);
}

TEST(Root, ExactZeroCountsAsNotAbove)
{
    // Zeros on one side and values below on the other are no change of sign: the search goes on to
    // 1 - 0.8 and 1 + 0.8.
    calls.clear();
    EXPECT_NEAR(fzero(traced<steps>, 1.0, 1e-15), 0.2, 1e-15);
    EXPECT_EQ(calls.size(), 10u);
    calls.clear();
    EXPECT_EQ(fzero(traced<down_to_zero>, 1.0, 1e-15), 1.05);
    EXPECT_EQ(calls.size(), 2u);
}

} // namespace
} // namespace varnow
