#include "tests/network/nets.h"
#include "tests/support/bits.h"

#include <varnow/containers/compare.h>
#include <varnow/containers/matrix_arithmetic.h>
#include <varnow/containers/matrix_products.h>
#include <varnow/network/generator.h>

#include <cmath>
#include <sstream>
#include <vector>

namespace varnow {
namespace {

using test::constant_net;
using test::printed;
using test::same_bits;
using test::sparse_net;
using test::uneven;

matrix column_of(neural_net const& net, sparse& a, sparse& b, sparse& c, sparse& d)
{
    matrix m(a.nnz + b.nnz + c.nnz + d.nnz, 1);
    net.weight2param(a, b, c, d, m);
    return m;
}
matrix weights(neural_net& n)
{
    return column_of(n, n.w1, n.b1, n.w2, n.b2);
}
matrix gradient(neural_net& n)
{
    return column_of(n, n.gw1, n.gb1, n.gw2, n.gb2);
}
matrix direction(neural_net& n)
{
    return column_of(n, n.dw1, n.db1, n.dw2, n.db2);
}

// Adds r times the entries of s that g stores too.
void add_where_stored(sparse& g, double r, sparse const& s)
{
    for (int k = 0; k < g.nnz; ++k)
        if (s.iselem(g.rowidx[k], g.colidx[k])) g.values[k] += r * s.get(g.rowidx[k], g.colidx[k]);
}

// One step's gradient, pattern by pattern with sparse matrices.
void add_gradient_plainly(neural_net& n)
{
    for (int p = 1; p <= n.n_patterns[0]; ++p) {
        double const r = n.rep(p);
        if (r == 0.0) continue;
        n.cur_in = row(n.inputs[0], p);
        n.cur_hid = forall(mul(n.cur_in, n.w1) + n.b1, activation, n.act_hid);
        double const y = forall(mul(n.cur_hid, n.w2) + n.b2, activation, n.act_out);
        double const delta = (n.outputs[0].get(p, 1) - y) * d_activation(y, n.act_out);
        n.cur_hid.T();
        add_where_stored(n.gw2, r * delta, n.cur_hid);
        n.gb2 += r * delta;
        n.cur_delta = (delta * n.w2) * forall(n.cur_hid, d_activation, n.act_hid);
        n.cur_in.T();
        n.cur_delta.T();
        add_where_stored(n.gw1, r, mul(n.cur_in, n.cur_delta));
        add_where_stored(n.gb1, r, n.cur_delta);
    }
    for (sparse* g : {&n.gw1, &n.gb1, &n.gw2, &n.gb2}) *g *= -2.0;
}

// Tiny weights let deltas vanish, also those of inputs without a number.
TEST(Gradient, IsThatOfTheSparseOperations)
{
    double const odd[] = {1.0, NAN, INFINITY};
    test::on_every_machine([&] {
        for (int k = 0; k < 18; ++k) {
            SCOPED_TRACE(k);
            // Units one by one, and enough beside each other for several vectors.
            int const hidden = k % 2 ? 5 : 19;
            neural_net net = sparse_net(4, hidden, k % 3 + 1, k / 3 % 3 + 1, 80 + k);
            if (hidden == 19) {
                net.w1 = uneven(4, 19, 1000, 90 + k);
                net.b1 = uneven(1, 19, 1000, 91 + k);
                net.w2 = uneven(19, 1, 1000, 92 + k);
                net.init_vars();
            }
            net.w2 *= k < 9 ? 1.0 : 1e-14;
            net.inputs[0][1] *= odd[k / 3 % 3];
            net.outputs[0][9] *= odd[k / 6];
            for (int p = 1; p <= 71; ++p) net.rep(p) = p % 4;
            neural_net plain = net;
            EXPECT_EQ(net.backprop(0, 0, 1, 0), 1);
            add_gradient_plainly(plain);
            EXPECT_TRUE(same_bits(gradient(net), gradient(plain)));
            EXPECT_EQ(compare(net.cur_hid, plain.cur_hid), 1);
            EXPECT_EQ(compare(net.cur_delta, plain.cur_delta), 1);
        }
    });
}

// By differences of the error in every weight; rep_total scales the sum to the mean.
TEST(Gradient, IsTheSlopeOfTheError)
{
    for (int act_hid : {1, 2, 3})
        for (int act_out : {1, 2, 3}) {
            SCOPED_TRACE(testing::Message() << act_hid << " " << act_out);
            neural_net net = sparse_net(3, 4, act_hid, act_out, 11);
            net.backprop(0, 0, 1, 0);
            matrix const w = weights(net), g = gradient(net);
            double const h = 1e-5;
            for (int k = 1; k <= w.rows; ++k) {
                double e[2];
                for (int side : {0, 1}) {
                    matrix moved = w;
                    moved(k) += side ? h : -h;
                    net.param2weight(moved, net.w1, net.b1, net.w2, net.b2);
                    e[side] = net.error(0);
                }
                EXPECT_NEAR(g(k) / net.rep_total, (e[1] - e[0]) / (2 * h), 1e-8) << k;
            }
        }
}

TEST(Gradient, LeavesOutWhatDoesNotCount)
{
    neural_net net = sparse_net(3, 4, 2, 3, 21);
    net.set_patterns(test::uneven(2, 3, 9, 1), "1; nan", 0);
    net.rep = "1; 0";
    net.rep_total = 1;
    matrix const before = weights(net);
    net.backprop(0, 0, 1, 0);
    EXPECT_TRUE(std::isfinite(scsqr(gradient(net))));
    EXPECT_TRUE(same_bits(weights(net), before));
    net.backprop(0, 0, 0, 0);
    EXPECT_EQ(sumsqr(net.gw1) + sumsqr(net.gb1), 0.0);
    EXPECT_GT(sumsqr(net.gw2), 0.0);
}

// One pattern at the origin with the target 0.5, w1 = 4, w2 = -9, b2 = 0.5: no error, penalty only.
// S = 8 + 27, K = 3, so D = 38; the gradients are 0.495 / 38 times 2 and -3, that of b2 none.
TEST(Penalty, WeighsWeightsByThePowerOfOneAndAHalf)
{
    neural_net net(1, 1, 2, 3);
    net.w1 = sparse(4.0);
    net.b1 = spempty(1, 1);
    net.w2 = sparse(-9.0);
    net.b2 = sparse(0.5);
    net.init_vars();
    net.set_patterns(matrix(0.0), matrix(0.5), 0);
    EXPECT_DOUBLE_EQ(net.error_tau(0.0, 1), 0.33 * 35.0 / 38.0);
    EXPECT_EQ(net.error_mod(0), 0.0);
    net.backprop(0, 0, 0, 1);
    EXPECT_DOUBLE_EQ(net.gw1[1], 0.495 / 38.0 * 2.0);
    EXPECT_DOUBLE_EQ(net.gw2[1], -0.495 / 38.0 * 3.0);
    EXPECT_EQ(net.gb2[1], 0.0);
}

TEST(Parameters, TakeTheFourthPartOnlyWhenItIsOne)
{
    neural_net net;
    sparse a = sparse("1 0 2"), b = sparse("3"), c = spempty(2, 1), d = sparse("4 5");
    matrix column = zeros(5, 1);
    net.weight2param(a, b, c, d, column);
    EXPECT_TRUE(same_bits(column, matrix("1; 2; 3; 0; 0")));
    d = sparse("6");
    column = "7; 8; 9; 10";
    net.param2weight(column, a, b, c, d);
    EXPECT_EQ(a[2] * 1000 + b[1] * 100 + d[1], 8910.0);
}

// The error of a constant net is a parabola: the first step ends in its lowest point.
TEST(ConjugateStep, EndsWhereTheErrorIsLeastOnTheLine)
{
    neural_net net = constant_net("1; 2; 6", 0.0);
    EXPECT_EQ(net.backprop(1, 0, 1, 0), 0);
    // the gradient is a sum, -2 (1 + 2 + 6), and no previous one bends the direction
    EXPECT_EQ(net.db2[1], -18.0);
    EXPECT_EQ(net.grad_norm2, 324.0);
    EXPECT_NEAR(net.b2[1], 3.0, 1e-7);
    EXPECT_NEAR(net.tau, 3.0 / 18.0, 1e-8);
    EXPECT_NEAR(net.qmin_error_tau(-0.5, 0.5, 1e-9, 0), 0.0, 1e-6);

    net = sparse_net(3, 4, 2, 3, 31);
    for (int turn = 0; turn < 3; ++turn) {
        matrix const before = direction(net), w = weights(net);
        double const n2 = net.grad_norm2, error = net.error(0);
        EXPECT_EQ(net.backprop(1, 0, 1, 0), 0);
        double const beta = n2 == 0.0 ? 0.0 : net.grad_norm2 / n2;
        EXPECT_TRUE(same_bits(direction(net), matrix(beta * before + gradient(net)))) << turn;
        EXPECT_LT(net.error(0), error);
        EXPECT_NEAR(weights(net)(1), w(1) - net.tau * direction(net)(1), 1e-12);
        EXPECT_EQ(compare(net.tw1, net.w1) + compare(net.tb2, net.b2), 2);
    }
    // the lowest point of such a parabola is at 1 / (2 n)
    net = constant_net(test::uneven(1000, 1, 9, 1), 5.0);
    net.backprop(1, 0, 1, 0);
    EXPECT_EQ(net.tau, 0.001);
}

TEST(ConjugateStep, KeepsTheHiddenLayerWhenAsked)
{
    neural_net net = sparse_net(3, 4, 2, 3, 41);
    net.dw1.ones();
    net.db1.ones();
    sparse const w1 = net.w1, b1 = net.b1, w2 = net.w2;
    EXPECT_EQ(net.backprop(1, 0, 0, 0), 0);
    EXPECT_EQ(compare(net.w1, w1) + compare(net.b1, b1), 2);
    EXPECT_EQ(compare(net.w2, w2), 0);
    EXPECT_EQ(sumsqr(net.dw1) + sumsqr(net.db1), 0.0);
}

// Of a constant net with targets of mean 0.1 and mean square 100, b = 0: m = 100 and the gradient g
// = -2 n 0.1. A step m g / (l + g^2) overshoots until l has grown to the size of m, so trials grow
// l by tens, gain at a few, and end behind the best of them.
TEST(DampedStep, TakesTheBestOfGrowingDampings)
{
    double const spread = std::sqrt(100.0 - 0.01);
    neural_net net = constant_net(~c(0.1 + spread, 0.1 - spread), 0.0);
    double const g = -0.4, m = 100.0;
    auto const step = [&](double l) { return m * g / (l + g * g); };
    // In error less the least one: (0.1 + step)^2. l = 100: 0.09; 1000: 0.0036; 10000: 0.0092.
    EXPECT_EQ(net.backprop(0, 1, 1, 0), 0);
    EXPECT_NEAR(net.lambda, 1000.0, 1e-9);
    EXPECT_NEAR(net.b2[1], -step(1000.0), 1e-10);
    EXPECT_NEAR(net.outer_mat(1), g * g, 1e-12);
    EXPECT_EQ(net.db2[1], net.gb2[1]);
    EXPECT_NEAR(net.sb2[1], step(10000.0), 1e-10);

    // The thirtieth trial is the first to gain: given up.
    net = constant_net(~c(0.1 + spread, 0.1 - spread), 0.0);
    net.lambda = 1e-26;
    std::string const stop = "BACKPROP - STOP";
    EXPECT_EQ(printed([&] { EXPECT_EQ(net.backprop(0, 1, 1, 0), 1); }), stop);
    EXPECT_NEAR(net.lambda, 1000.0, 1e-9);
    EXPECT_EQ(net.b2[1], 0.0);

    // With a line search beside it that is taken instead, and at the lowest point nothing is.
    EXPECT_EQ(net.backprop(1, 1, 1, 0), 0);
    EXPECT_NEAR(net.b2[1], 0.1, 1e-6);
    net = constant_net("1; 3", 2.0);
    EXPECT_EQ(printed([&] { EXPECT_EQ(net.backprop(1, 1, 1, 0), 1); }), stop);
}

// Steps of a copy, taken by hand.
TEST(Learn, PrintsItsStepsAndKeepsTheBestWeights)
{
    neural_net net = sparse_net(3, 4, 2, 3, 61), copy = net;
    std::ostringstream expected;
    double previous = copy.error(0), gain = 0.0;
    expected << "\nlearn\n";
    for (int i = 1; i <= 3; ++i) {
        copy.backprop(1, 1, 1, 0);
        double const e = copy.error(0);
        gain = 0.75 * gain + 0.25 * (previous - e) / previous;
        previous = e;
        expected << i << " - " << e << " & " << gain << "\n";
    }
    expected << previous << "\n\n";
    EXPECT_EQ(printed([&] { EXPECT_EQ(net.learn(0, 3, 5, 1e-9, 1, 1, 1, 0), 1); }), expected.str());
    EXPECT_TRUE(same_bits(weights(net), weights(copy)));

    // Gains of the first 2 steps are not looked at, then patience is 1.
    std::string const text = printed([&] { net.learn(2, 100, 1, 10.0, 1, 0, 1, 0); });
    EXPECT_EQ(std::count(text.begin(), text.end(), '&'), 4);
    // A gradient alone is no step: it wears out patience at once.
    std::string const flagged = printed([&] { net.learn(100, 100, 1, 0.0, 0, 0, 1, 0); });
    EXPECT_EQ(std::count(flagged.begin(), flagged.end(), '&'), 2);

    matrix const w = weights(net);
    std::ostringstream error;
    error << "\nlearn\n" << net.error(0) << "\n\n";
    EXPECT_EQ(printed([&] { net.learn(0, 9, -1, 0.0, 1, 1, 1, 0); }), error.str());
    EXPECT_TRUE(same_bits(weights(net), w));
}

TEST(Learn, FindsAnExclusiveOr)
{
    neural_net net(2, 3, 2, 3);
    detail::sparse_state = 12345;
    net.init(1.0);
    for (int k = 1; k <= 6; ++k) net.w1[k] -= 0.5;
    net.set_patterns("-1 -1; -1 1; 1 -1; 1 1", "0; 1; 1; 0", 0);
    printed([&] { net.learn(20, 300, 20, 1e-6, 1, 1, 1, 0); });
    EXPECT_LT(net.error(0), 1e-6);
}

TEST(LearnAndValid, KeepsTheWeightsThatSuitBothSets)
{
    neural_net net = sparse_net(3, 4, 2, 3, 61);
    matrix const x = net.inputs[0];
    matrix t(71, 1), opposite(71, 1);
    for (int p = 1; p <= 71; ++p) {
        t(p) = std::tanh(x(p, 1) - x(p, 2));
        opposite(p) = -t(p);
    }
    net.set_patterns(x, t, 0);
    net.set_patterns(x, t, 1);
    std::string const text = printed([&] { net.learn_and_valid(5, 30, 5, 1e-6, 1, 1, 1); });
    EXPECT_EQ(text.find("\nlearn and valid\n1 - "), 0u);
    EXPECT_EQ(text.find("not found"), std::string::npos);
    EXPECT_GT(net.corr(1), 0.95);
    std::ostringstream last;
    last << "\n" << net.corr(0) << " $ " << net.corr(1) << "\n";
    EXPECT_EQ(text.substr(text.size() - last.str().size()), last.str());

    // The other way round no step serves both: the weights of the start, and its correlations.
    neural_net worse = net;
    worse.set_patterns(x, opposite, 1);
    matrix const w = weights(worse);
    std::ostringstream start;
    start << "\n" << worse.corr(0) << " $ " << worse.corr(1) << "\nnot found";
    std::string const none = printed([&] { worse.learn_and_valid(0, 30, 2, 0.0, 1, 0, 1); });
    EXPECT_EQ(std::count(none.begin(), none.end(), '-') > 3, true);
    EXPECT_EQ(none.substr(none.size() - start.str().size()), start.str());
    EXPECT_TRUE(same_bits(weights(worse), w));
}

// Rounds of a copy, by hand; the patterns are weighed anew where a round fails.
TEST(Fit, GoesRoundByRound)
{
    neural_net net = constant_net("1; 3; 4; 9; 2", 2.0), copy = net;
    std::ostringstream expected;
    int const rounds = 40;
    expected << "\nfit\n";
    detail::network_state = 12345;
    matrix kept = weights(copy);
    double best = copy.error_rep(1.5);
    int failed = 0;
    for (int i = 1; i <= rounds; ++i) {
        int flag = 0, steps = 0;
        double e = best;
        do {
            flag = copy.backprop(1, 0, 1, 0);
            e = copy.error_rep(1.5);
        } while (++steps < 12 && !flag && e > best);
        expected << i << " - " << best << " & \n";
        if (!flag && best >= e) {
            kept = weights(copy);
            best = e;
        } else {
            copy.param2weight(kept, copy.w1, copy.b1, copy.w2, copy.b2);
            copy.random_rep(1.5);
            ++failed;
        }
    }
    copy.param2weight(kept, copy.w1, copy.b1, copy.w2, copy.b2);
    ASSERT_GT(failed, 0);
    ASSERT_LT(failed, rounds);
    detail::network_state = 12345;
    EXPECT_EQ(printed([&] { EXPECT_EQ(net.fit(rounds, 1, 0, 1), 1); }), expected.str());
    EXPECT_TRUE(same_bits(weights(net), weights(copy)));
    EXPECT_TRUE(same_bits(gradient(net), gradient(copy)));
}

TEST(Resampling, DrawsFromAllPatterns)
{
    neural_net net = sparse_net(3, 4, 2, 3, 71);
    net.random_rep(20.0);
    EXPECT_EQ(net.rep_total, 1420);
    double total = 0.0;
    for (int p = 1; p <= 71; ++p) {
        total += net.rep(p);
        EXPECT_GT(net.rep(p), 0.0);
    }
    EXPECT_EQ(total, 1420.0);
    net.normal_rep();
    EXPECT_EQ(net.rep_total, 71);
    EXPECT_TRUE(same_bits(net.rep, ones(71, 1)));
    // Where all errors are 4, so are the means, and the weights of `mean3n` add up to 1.
    EXPECT_NEAR(constant_net("1; 1; 5; 5", 3.0).error_rep(1.5), 4.0, 1e-12);
    // The mean squared error is 0.5; high samples count more. 300 draws: deviation 0.0289.
    double const high = constant_net("0; 1; 0; 1", 0.0).error_rep(75.0);
    EXPECT_NEAR(high, 0.5 + 0.0289 * 0.564, 0.003);
}

TEST(Mean3n, CountsHighValuesMost)
{
    matrix column = "3; 1; 2", row = "3 1 2", one = "5";
    EXPECT_DOUBLE_EQ(mean3n(column), 8.0 / 3.0);
    EXPECT_TRUE(same_bits(column, matrix("1; 2; 3")));
    EXPECT_DOUBLE_EQ(mean3n(row), 8.0 / 3.0);
    EXPECT_TRUE(std::isnan(mean3n(one)));
}

TEST(Training, SurvivesMissingTargetsAndEmptySets)
{
    neural_net net = sparse_net(3, 4, 2, 3, 71);
    matrix const w = weights(net);
    net.set_patterns(test::uneven(3, 3, 9, 1), "1; nan; 0", 0);
    printed([&] { net.learn(0, 3, 5, 0.0, 1, 1, 1, 1); });
    EXPECT_TRUE(same_bits(weights(net), w));
    net.set_patterns(matrix(0, 3), matrix(0, 1), 0);
    printed([&] {
        net.learn(0, 3, 5, 0.0, 1, 1, 1, 0);
        net.learn_and_valid(0, 3, 5, 0.0, 1, 1, 1);
        net.fit(2, 1, 1, 1);
    });
    EXPECT_TRUE(same_bits(weights(net), w));
    EXPECT_TRUE(std::isnan(net.error_rep(1.5)));
}

} // namespace
} // namespace varnow
