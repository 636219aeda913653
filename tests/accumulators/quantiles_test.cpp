#include <tests/support/bits.h>
#include <tests/support/output.h>
#include <tests/support/refusal.h>

#include <varnow/accumulators/quantiles.h>
#include <varnow/containers/matrix_special.h>

#include <climits>
#include <cmath>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace varnow;
using test::same_bits;
using test::warned;

double const inf = INFINITY, nan = NAN;

quantiles filled(double p, std::initializer_list<double> values)
{
    quantiles q(p);
    for (double x : values) q.add(x);
    return q;
}

// 0 to n - 1, each once, without any order to speak of; the quantile at p of all is (n - 1) p.
quantiles scrambled(double p, int n, double shift = 0)
{
    quantiles q(p);
    long long x = 0;
    for (int i = 0; i < n; ++i) q.add(double(x = (x + 386117) % n) + shift);
    return q;
}

double counted(quantiles const& q)
{
    double sum = double(q.below) + q.above;
    for (int i = 0; i < q.used; ++i) sum += q.tab.cell[i][1];
    return sum;
}

std::string warning(char const* routine, int k)
{
    return std::string("\nQUANTILES: double ") + routine + "\nRange warning " + char('0' + k) +
           "!\n\n";
}

TEST(Quantiles, InterpolatesBetweenRows)
{
    quantiles const q = filled(0.5, {40, 20, 10, 20}), odd = filled(0.5, {-inf, 1, 2, inf}),
                    gap = filled(0.5, {1, nan, 2, 3}), none(0.5);
    struct
    {
        quantiles const& q;
        double x, share;
    } const shares[] = {
        {q, 9, 0},        {q, 10, 0.25},     {q, 15, 0.375}, {q, 20, 0.5},       {q, 30, 0.875},
        {q, 40, 1},       {q, 41, 1},        {q, inf, 1},    {q, -inf, 0},       {q, nan, nan},
        {odd, -inf, .25}, {odd, -1e9, 0.5},  {odd, 1, 0.5},  {odd, 1.5, 0.625},  {odd, 5, 0.75},
        {odd, inf, 1},    {gap, 2.5, 0.625}, {gap, 3, 0.75}, {gap, 1000., 0.75}, {gap, 0, 0},
        {none, 1, nan},
    };
    for (auto const& s : shares) EXPECT_TRUE(same_bits(s.q.cdf(s.x), s.share)) << s.x;
    for (auto const& [p, x] : std::initializer_list<std::pair<double, double>>{
             {0, 10}, {0.25, 17.5}, {0.5, 20}, {0.75, 25}, {0.9, 34}, {1, 40}})
        EXPECT_DOUBLE_EQ(filled(p, {40, 20, 10, 20}).result(), x) << p;
    EXPECT_EQ(odd.result(), 1.5);
    EXPECT_EQ(filled(0.5, {inf, 7, -inf}).result(), 7);
    EXPECT_EQ(gap.result(), 2.5);
    EXPECT_TRUE(std::isnan(filled(1, {1, nan, 2}).result()) && std::isnan(none.T_min()));
    EXPECT_EQ(gap.T_min() + 10 * gap.T_max(), 31);
    EXPECT_EQ(filled(0.5, {nan}).cdf(1), 0);
}

TEST(Quantiles, NarrowsTheWindowAtItsTurns)
{
    quantiles q = scrambled(0.5, 9999);
    std::uint32_t const start = detail::random_state;
    q.add(4999);
    std::uint32_t const end = detail::random_state;
    detail::random_state = start;
    for (int i = 0; i < 1000000; ++i) detail::random_step();
    EXPECT_EQ(end, detail::random_state);
    // Of uniform values over 10,000 the median has the standard error 5,000 / sqrt(n).
    EXPECT_NEAR(q.sigma, 5000, 1000);
    EXPECT_NEAR(q.hi - q.lo, 8 * q.sigma / 100, 1e-9);
    EXPECT_NEAR(q.hi + q.lo, 10000, 50);
    q = scrambled(0.5, 99999);
    q.add(50000);
    EXPECT_DOUBLE_EQ(q.lo, 49999 - 4 * q.sigma / std::sqrt(99999)); // the rank among 99,999
    EXPECT_EQ(q.below, std::ceil(q.lo));
    EXPECT_EQ(counted(q), 100000);
}

TEST(Quantiles, StaysExactWhileTheWindowHoldsTheQuantile)
{
    int const n = 1000003;
    for (double p : {0.01, 0.05, 0.3, 0.5, 0.95, 0.99}) {
        SCOPED_TRACE(p);
        quantiles const q = scrambled(p, n);
        EXPECT_FALSE(q.frozen);
        EXPECT_LT(q.used, 70000);
        EXPECT_EQ(counted(q), n);
        EXPECT_NEAR(q.result(), (n - 1) * p, 1e-6);
        EXPECT_TRUE((p < 0.05) == (q.below == 0) && (p > 0.95) == (q.above == 0));
    }
}

TEST(Quantiles, FreezesWhenTheWindowCannotShrink)
{
    int const n = 4000037;
    quantiles q = scrambled(0.04, n);
    EXPECT_TRUE(q.frozen);
    EXPECT_EQ(q.used, 100000);
    EXPECT_EQ(counted(q), n);
    for (int i = 1; i < q.used; ++i) ASSERT_LT(q.tab.cell[i - 1][0], q.tab.cell[i][0]);
    EXPECT_NEAR(q.result(), (n - 1) * 0.04, 200);  // of cells about 25 wide
    for (double shift : {0., 0., 3000., -3000.}) { // the rows may be written to
        for (int i = 0; i < q.used; ++i) q.tab.cell[i][0] += shift;
        for (int row = 2; row <= q.used; row += 2) {
            double const before = q.tab(row, 2), value = q.tab(row, 1),
                         gap = value - q.tab(row - 1, 1);
            q.increase(value);
            q.increase(value - gap / 2);
            ASSERT_EQ(q.tab(row, 2), before + 2);
        }
    }
    double const first = q.tab(1, 2), last = q.T_max();
    q.add(-5);
    q.add(nan);
    EXPECT_EQ(q.tab(1, 2), first + 2);
    q.increase(last + 1);
    EXPECT_EQ(q.T_max(), last + 1);
    for (double p : {0.01, 0.5, 0.97}) {
        double const constant = p > 0.9 ? 0.1 : 5, rest = p < 0.1 ? inf : nan;
        quantiles c(p), odd(p);
        for (int i = 0; i < 250000; ++i) c.add(constant), odd.add(i % 2 ? rest : i);
        EXPECT_EQ(c.tab(1, 2), 150001);
        EXPECT_EQ(c.result(), constant);
        EXPECT_EQ(c.cdf(constant), 150001.0 / 250000);
        EXPECT_EQ(counted(odd), 250000); // neither lost nor in the way
    }
}

TEST(Quantiles, TakesItsStepsOneByOneAndNoticesWhatIsWrittenToItsFields)
{
    quantiles q = filled(0.5, {5, 4, 3, 2, 1});
    EXPECT_EQ(q.result(), 3);
    q.tab(1, 2) = q.tab(2, 2) = 2, q.tab(4, 2) = 1, q.tab(5, 2) = 3;
    q.lo = 2, q.hi = 4, q.n = 9;
    q.remove_extremes();
    EXPECT_EQ(q.used + 10 * q.below + 100 * q.above, 233);
    q.tab(1, 1) = 2.75;
    EXPECT_EQ(q.result(), 2.375);
    EXPECT_EQ(q.cdf(3), 7 / 9.);
    q.tab(4, 2) = 9;
    q.insert(4);
    for (double x : {3.5, 5., 4.5}) q.increase(x);
    matrix t;
    q.prepare_table(t);
    EXPECT_TRUE(same_bits(t, matrix("2 1; 2.75 2; 3 1; 5 4")));
    q.tab(2, 2) = 5;
    EXPECT_EQ(q.cdf(3), 11 / 9.);
    q.below = 0;
    EXPECT_EQ(q.cdf(3), 8 / 9.);
    q.n = 16;
    for (double sigma : {1, 2}) { // rank 8.5 is at 3.25
        q.sigma = sigma;
        q.range_update();
        EXPECT_EQ(q.lo + 10 * q.hi, 42.25);
    }
    q.used = 2;
    EXPECT_EQ(q.T_min(), 2.75);
    q.used = 1000000; // more than there is
    EXPECT_EQ(q.cdf(0.5), 0);
    q.used = 100000;
    q.insert(7);
    EXPECT_EQ(q.used, 100000);
    quantiles const other = std::move(q);
    q.add(1), q.increase(1);
    EXPECT_TRUE(std::isnan(q.T_min()));
}

TEST(Quantiles, WarnsOfWhatItDoesNotHold)
{
    quantiles cut = filled(0.5, {3}), low = filled(0.5, {4, 5}), high = filled(0.5, {1, 2}),
              odd = filled(nan, {4, 3});
    cut.below = cut.above = 1;
    low.below = high.above = 98;
    low.n = high.n = 100;
    std::vector<double> r;
    std::string text = warned([&] { r = {cut.cdf(2), cut.cdf(4), high.cdf(0), low.cdf(6)}; });
    EXPECT_EQ(text, warning("cdf(double)", 1) + warning("cdf(double)", 2));
    EXPECT_EQ(r, (std::vector<double>{0, 1, 0, 1}));
    cut.n = 9;
    text = warned([&] {
        r = {cut.result(), low.result(), high.result(), quantiles(0.5).result(), odd.result()};
    });
    EXPECT_EQ(text, warning("result()", 2) + warning("result()", 1) + warning("result()", 2) +
                        warning("result()", 1) + warning("result()", 1));
    EXPECT_EQ(r, (std::vector<double>{3, 4, 2, 1, 3}));
    cut.n = INT_MAX - 1;
    EXPECT_EQ(warned([&] { cut.add(1), cut.add(1); }),
              "\nQUANTILES: void add(double)\nNo further values are counted!\n\n");
    EXPECT_EQ(cut.n, INT_MAX);
}

TEST(Quantiles2, SolvesForTheMeanOfTheParts)
{
    quantiles2 both(2);
    EXPECT_TRUE(std::isnan(both.cdf(1)) && std::isnan(both.result()));
    int const n = 200003;
    both += scrambled(0.3, n);
    both += scrambled(0.3, n, 200);
    // Uniform on stretches that are 200 apart: the mean reaches 0.3 in their middle.
    EXPECT_NEAR(both.result(), 0.3 * n + 100, 2);
    EXPECT_NEAR(both.equation(0.3 * n), -100.0 / n, 3.0 / n);
    EXPECT_EQ(both.simulations_all(), 2 * n);
    both.usable.v[1] = 0;
    EXPECT_EQ(both.simulations_used(), n);
    both.items[0].n = INT_MAX;
    EXPECT_EQ(both.simulations_all(), INT_MAX);
    both.reset(3);
    EXPECT_EQ(both.simulations_used(), 0);
    both += filled(0.3, {1, 2, 3}); // the third, of which alone there is something
    EXPECT_EQ(both.cdf(2), 2.0 / 3);
}

TEST(Quantiles2, LeavesOutPartsThatMissTheQuantile)
{
    quantiles2 q(4);
    quantiles low = filled(0.5, {0, -1, -2}), high = filled(0.5, {7, 6, 5});
    low.below = high.above = 97;
    low.n = high.n = 100;
    for (quantiles const& part : {filled(0.5, {1, 2, 3, 4}), low, high, quantiles(0.5)}) q += part;
    double a, b, x = 0;
    EXPECT_EQ(warned([&] { x = q.result(); }),
              "\nQUANTILES2: double result()\nNumber of simulations was reduced!\n"
              "all=204, used=4\n");
    EXPECT_NEAR(x, 2, 1e-8);
    EXPECT_EQ(q.usable.v[0] + 10 * q.usable.v[1] + 100 * q.usable.v[2] + 1000 * q.usable.v[3], 1);
    q.search_range(a, b);
    EXPECT_EQ(a + 10 * b, 41);
    EXPECT_EQ(q.qfzero(2, 4, 1e-9), 2);
    EXPECT_NEAR(q.qfzero(inf, -inf, nan), 2, 1e-12);
    // Equal values have no place where the function is p, only one where it passes p.
    for (quantiles const& part : {filled(0.5, {3, 3, 3}), filled(0.5, {3})}) {
        quantiles2 constant(1);
        constant += part;
        EXPECT_THAT(warned([&] { x = constant.result(); }),
                    testing::StartsWith("\nQUANTILES2: double result()\nResult inaccurate!\n"
                                        "p=0.500000000000, cdf(res)="));
        EXPECT_NEAR(x, 3, 1e-8);
    }
}

TEST(Quantiles2DeathTest, Refuses)
{
    quantiles2 none(-4), two(2), lost(1);
    two += filled(0.5, {1, 2, 3});
    lost += quantiles(0.5);
    double a, b;
    auto refuses = [](auto call, char const* routine, char const* why) {
        EXPECT_REFUSAL(call(), "QUANTILES2", routine, why);
    };
    refuses([&] { none += lost.items[0]; }, "operator +=(quantiles)", "Out of range!");
    refuses([&] { two += quantiles(0.25); }, "operator +=(quantiles)", "Incompatible p!");
    for (double end : {9., nan})
        refuses([&] { two.qfzero(2.5, end, 1e-9); }, "double qfzero(double,double,double)",
                "Sign error!");
    refuses([&] { lost.result(); }, "void search_range(double,double)", "Range not found!");
    refuses([&] { none.search_range(a, b); }, "void search_range(double,double)",
            "Range not found!");
}

} // namespace
