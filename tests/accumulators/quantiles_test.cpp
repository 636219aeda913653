#include <tests/support/bits.h>
#include <tests/support/refusal.h>

#include <varnow/accumulators/quantiles.h>
#include <varnow/containers/matrix_special.h>

#include <climits>
#include <cmath>
#include <functional>
#include <string>
#include <utility>

namespace {

using namespace varnow;
using test::same_bits;

double const inf = INFINITY, nan = NAN;

template <class F> std::string printed(F f)
{
    testing::internal::CaptureStderr();
    f();
    return testing::internal::GetCapturedStderr();
}

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

TEST(Quantiles, InterpolatesBetweenRows)
{
    struct
    {
        double p, result;
    } const results[] = {{0, 10}, {0.25, 17.5}, {0.5, 20}, {0.75, 25}, {0.9, 34}, {1, 40}};
    for (auto const& r : results)
        EXPECT_DOUBLE_EQ(filled(r.p, {40, 20, 10, 20}).result(), r.result) << r.p;
    quantiles const q = filled(0.5, {40, 20, 10, 20}), odd = filled(0.5, {-inf, 1, 2, inf}),
                    gap = filled(0.5, {1, nan, 2, 3});
    struct
    {
        quantiles const& q;
        double x, share;
    } const shares[] = {
        {q, 9, 0},        {q, 10, 0.25},     {q, 15, 0.375}, {q, 20, 0.5},       {q, 30, 0.875},
        {q, 40, 1},       {q, 41, 1},        {q, inf, 1},    {q, -inf, 0},       {q, nan, nan},
        {odd, -inf, .25}, {odd, -1e9, 0.5},  {odd, 1, 0.5},  {odd, 1.5, 0.625},  {odd, 5, 0.75},
        {odd, inf, 1},    {gap, 2.5, 0.625}, {gap, 3, 0.75}, {gap, 1000., 0.75}, {gap, 0, 0},
    };
    for (auto const& s : shares)
        EXPECT_PRED2([](double a, double b) { return same_bits(a, b); }, s.q.cdf(s.x), s.share)
            << s.x;
    EXPECT_EQ(odd.result(), 1.5);
    EXPECT_EQ(filled(0.5, {inf, 7, -inf}).result(), 7);
    EXPECT_EQ(gap.result(), 2.5);
    EXPECT_TRUE(std::isnan(filled(1, {1, nan, 2}).result()));
    EXPECT_EQ(gap.T_min(), 1);
    EXPECT_EQ(gap.T_max(), 3);
    EXPECT_TRUE(std::isnan(quantiles(0.5).T_min()) && std::isnan(quantiles(0.5).cdf(1)));
    EXPECT_EQ(filled(0.5, {nan}).cdf(1), 0);
}

TEST(Quantiles, DrawsTheFirstWindowFromTheLibrarysGenerator)
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
    EXPECT_NEAR((q.lo + q.hi) / 2, 5000, 25);
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
        EXPECT_EQ(p < 0.05, q.below == 0);
        EXPECT_EQ(p > 0.95, q.above == 0);
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
        for (int row : {2, 3, 777, 50000, 99999, 100000}) {
            double const before = q.tab(row, 2), value = q.tab(row, 1),
                         gap = value - q.tab(row - 1, 1);
            q.increase(value);
            q.increase(value - gap / 2);
            EXPECT_EQ(q.tab(row, 2), before + 2);
        }
    }
    double const first = q.tab(1, 2), last = q.T_max();
    q.add(-5);
    q.add(nan);
    EXPECT_EQ(q.tab(1, 2), first + 2);
    q.increase(last + 1);
    EXPECT_EQ(q.T_max(), last + 1);
    for (double constant : {0.1, 5.0, -1e-100})
        for (double p : {0.01, 0.3, 0.97}) {
            SCOPED_TRACE(testing::Message() << constant << " at " << p);
            quantiles c(p);
            for (int i = 0; i < 150000; ++i) c.add(constant);
            EXPECT_TRUE(c.frozen);
            EXPECT_EQ(c.tab(1, 2), 50001);
            EXPECT_EQ(c.result(), constant);
            EXPECT_EQ(c.cdf(constant), 50001.0 / 150000);
        }
    for (double odd : {nan, inf}) { // neither lost nor in the way
        quantiles c(0.5);
        for (int i = 0; i < 250000; ++i) c.add(i % 2 ? odd : i);
        EXPECT_EQ(counted(c), 250000);
    }
}

TEST(Quantiles, TakesItsStepsOneByOne)
{
    quantiles q = filled(0.5, {1, 2, 3, 4, 5});
    q.lo = 2;
    q.hi = 4;
    q.remove_extremes();
    EXPECT_EQ(q.used, 3);
    EXPECT_EQ(q.below, 1);
    EXPECT_EQ(q.above, 1);
    EXPECT_EQ(q.result(), 3);
    EXPECT_EQ(q.cdf(4), 0.8);
    q.increase(2.5);
    matrix t;
    q.prepare_table(t);
    EXPECT_TRUE(same_bits(t, matrix("2 1; 3 2; 4 1")));
    q.sigma = 1;
    q.n = 16;
    q.range_update();
    EXPECT_EQ(q.lo, 4.0 - 1); // rank 8.5 is above them all
    EXPECT_EQ(q.hi, 4);
    for (int i = 0; i < 100001; ++i) q.insert(i);
    EXPECT_EQ(q.used, 100000);
}

TEST(Quantiles, NoticesWhatIsWrittenToItsFields)
{
    quantiles q = filled(0.5, {1, 2, 3});
    EXPECT_EQ(q.result(), 2);
    q.tab(1, 1) = 10;
    EXPECT_EQ(q.result(), 3);
    q.tab(3, 2) = 5;
    EXPECT_EQ(q.cdf(3), 2);
    q.used = 2;
    EXPECT_EQ(q.result(), 10);
    q.used = 1000000; // more than there is
    EXPECT_EQ(q.cdf(-1), 0);
    quantiles const other = std::move(q);
    q.add(1);
    EXPECT_TRUE(std::isnan(q.T_min()));
}

TEST(Quantiles, WarnsOfWhatItDoesNotHold)
{
    quantiles cut = filled(0.5, {1, 2, 3, 4, 5}), low = cut, high = cut;
    cut.lo = 2.5, cut.hi = 3.5;
    low.lo = 4, low.hi = 9;
    high.lo = 0, high.hi = 1;
    for (quantiles* q : {&cut, &low, &high}) q->remove_extremes();
    auto text = [](std::string const& routine, int k) {
        return "\nQUANTILES: " + routine + "\nRange warning " + std::to_string(k) + "!\n\n";
    };
    double r = 0;
    std::string const cdf = "double cdf(double)", result = "double result()";
    EXPECT_EQ(printed([&] { r = cut.cdf(2) + 10 * cut.cdf(4); }), text(cdf, 1) + text(cdf, 2));
    EXPECT_EQ(r, 10);
    EXPECT_EQ(printed([&] { r = high.cdf(0) + 10 * low.cdf(6); }), "");
    EXPECT_EQ(r, 10);
    EXPECT_EQ(printed([&] { r = low.result() + 10 * high.result(); }),
              text(result, 1) + text(result, 2));
    EXPECT_EQ(r, 14);
    EXPECT_EQ(printed([&] {
                  r = quantiles(0.5).result() + 10 * filled(nan, {4, 3}).result();
              }),
              text(result, 1) + text(result, 1));
    EXPECT_EQ(r, 31);
    cut.n = INT_MAX - 1;
    EXPECT_EQ(printed([&] { cut.add(1), cut.add(1); }),
              "\nQUANTILES: void add(double)\nNo further values are counted!\n\n");
    EXPECT_EQ(cut.n, INT_MAX);
}

TEST(Quantiles2, SolvesForTheMeanOfTheParts)
{
    quantiles2 both(2), same(3);
    EXPECT_TRUE(std::isnan(both.cdf(1)) && std::isnan(both.result()));
    int const n = 200003;
    both += scrambled(0.3, n);
    same += both.items[0];
    same += same.items[0];
    same += same.items[1];
    both += scrambled(0.3, n, 200);
    // Uniform on stretches that are 200 apart: the mean reaches 0.3 in their middle.
    EXPECT_NEAR(both.result(), 0.3 * n + 100, 2);
    EXPECT_NEAR(both.cdf(both.result()), 0.3, 1e-6);
    EXPECT_NEAR(both.equation(0.3 * n), -100.0 / n, 3.0 / n);
    EXPECT_NEAR(same.result(), both.items[0].result(), 1);
    EXPECT_EQ(both.simulations_all(), 2 * n);
    both.usable.v[1] = 0;
    EXPECT_EQ(both.simulations_used(), n);
    both.items[0].n = INT_MAX;
    EXPECT_EQ(both.simulations_all(), INT_MAX);
    both.reset(3);
    EXPECT_EQ(both.count, 2);
    EXPECT_EQ(both.simulations_used(), 0);
    EXPECT_TRUE(std::isnan(both.cdf(1)));
    both += filled(0.3, {1, 2, 3});
    EXPECT_EQ(both.cdf(2), 2.0 / 3);
}

TEST(Quantiles2, LeavesOutPartsThatMissTheQuantile)
{
    quantiles2 q(3);
    q += filled(0.5, {1, 2, 3, 4});
    quantiles lost = filled(0.5, {0, -1, -2});
    lost.below = 97;
    lost.n = 100;
    q += lost;
    q += quantiles(0.5);
    double x = 0;
    EXPECT_EQ(printed([&] { x = q.result(); }),
              "\nQUANTILES2: double result()\nNumber of simulations was reduced!\n"
              "all=104, used=4\n");
    EXPECT_NEAR(x, 2, 1e-8);
    EXPECT_EQ(q.usable.v[0] + 10 * q.usable.v[1] + 100 * q.usable.v[2], 1);
    double a, b;
    q.search_range(a, b);
    EXPECT_EQ(a, 1);
    EXPECT_EQ(b, 4);
    EXPECT_EQ(q.qfzero(2, 4, 1e-9), 2);
    EXPECT_NEAR(q.qfzero(inf, -inf, nan), 2, 1e-12);
    // Equal values have no place where the function is p, only one where it passes p.
    quantiles2 constant(1);
    constant += filled(0.5, {3, 3, 3});
    std::string const text = printed([&] { x = constant.result(); });
    EXPECT_EQ(text.find("\nQUANTILES2: double result()\nResult inaccurate!\np=0.500000000000, "
                        "cdf(res)="),
              0u);
    EXPECT_NEAR(x, 3, 1e-8);
}

TEST(Quantiles2DeathTest, Refuses)
{
    quantiles2 none(0), negative(-4), two(2), lost(1);
    two += filled(0.5, {1, 2, 3});
    lost += quantiles(0.5);
    double a, b;
    struct
    {
        std::function<void()> call;
        char const *routine, *why;
    } const cases[] = {
        {[&] { none += quantiles(0.5); }, "operator +=(quantiles)", "Out of range!"},
        {[&] { negative += quantiles(0.5); }, "operator +=(quantiles)", "Out of range!"},
        {[&] { two += quantiles(0.25); }, "operator +=(quantiles)", "Incompatible p!"},
        {[&] { two.qfzero(2.5, 9, 1e-9); }, "double qfzero(double,double,double)", "Sign error!"},
        {[&] { two.qfzero(nan, nan, 1e-9); }, "double qfzero(double,double,double)", "Sign error!"},
        {[&] { lost.result(); }, "void search_range(double,double)", "Range not found!"},
        {[&] { none.search_range(a, b); }, "void search_range(double,double)", "Range not found!"},
    };
    for (auto const& c : cases) EXPECT_REFUSAL(c.call(), "QUANTILES2", c.routine, c.why);
}

} // namespace
