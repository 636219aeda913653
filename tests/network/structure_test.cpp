#include "tests/network/nets.h"
#include "tests/sparse/show.h"
#include "tests/support/bits.h"
#include "tests/support/refusals.h"
#include "tests/support/words.h"

#include <varnow/containers/compare.h>
#include <varnow/models/discrimination.h>
#include <varnow/numerics/statistics.h>

#include <cmath>

namespace varnow {
namespace {

using test::printed;
using test::show;
using test::split;

TEST(Activation, KnowsThreeFunctionsTheirSlopesAndNames)
{
    struct
    {
        int code;
        char const* name;
        double at_1, slope_at_half;
    } const rows[] = {{1, "logistic", 0.7310585786300049, 0.25},
                      {2, "tanhyp", 0.7615941559557649, 0.75},
                      {3, "linear", 1.0, 1.0}};
    for (auto const& row : rows) {
        EXPECT_EQ(act_name(row.code), row.name);
        EXPECT_DOUBLE_EQ(activation(1.0, row.code), row.at_1);
        EXPECT_EQ(d_activation(0.5, row.code), row.slope_at_half);
    }
    EXPECT_EQ(act_name(0), "undefined");
}

// Draws k, k + 1, ... of the sequence s -> 48271 s mod 2^31 - 1, from 12345 on, over the modulus.
std::vector<double> draws(int count)
{
    std::vector<double> r;
    for (std::uint64_t s = 12345; count > 0; --count)
        r.push_back(static_cast<double>(s = s * 48271 % 2147483647) / 2147483647.0);
    return r;
}

TEST(NeuralNet, DrawsWeightsInOrder)
{
    std::vector<double> const u = draws(20);
    struct
    {
        void (*init)(neural_net&);
        // the numbers of the draws at the stored positions of w1, b1, w2, b2
        char const* drawn;
    } const rows[] = {
        {[](neural_net& n) { n.init(2.0); }, "0 1 2 3 4 5|6 7 8|9 10 11|12"},
        {[](neural_net& n) { n.init_simply(2.0); }, "1 3|0 2|5 6|4"},
        {[](neural_net& n) { n.init_single_input(2, 2, 2, 2.0); }, "0 1|3 5|4 6|2"},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.drawn);
        neural_net net(2, 3, 2, 3);
        detail::sparse_state = 12345;
        row.init(net);
        std::pair<sparse*, sparse*> const parts[] = {
            {&net.w1, &net.gw1}, {&net.b1, &net.db1}, {&net.w2, &net.sw2}, {&net.b2, &net.tb2}};
        for (std::size_t p = 0; p < 4; ++p) {
            auto const& [weights, work] = parts[p];
            std::vector<std::string> const drawn = split(split(row.drawn, '|')[p], ' ');
            ASSERT_EQ(weights->nnz, static_cast<int>(drawn.size()));
            for (int k = 1; k <= weights->nnz; ++k) {
                EXPECT_EQ((*weights)[k], 2.0 * u[std::stoul(drawn[k - 1u])]);
                EXPECT_EQ(work->colidx[k - 1], weights->colidx[k - 1]);
                EXPECT_EQ((*work)[k], 0.0);
            }
        }
        EXPECT_EQ(net.unit_mat.rows, net.w1.nnz + net.b1.nnz + net.w2.nnz + 1);
        EXPECT_TRUE(net.w1.indexed && net.w2.indexed);
    }
    neural_net net(2, 3, 2, 3);
    net.init_single_input(2, 2, 2, 1.0);
    for (sparse* s : {&net.w1, &net.b1, &net.w2}) s->ones();
    EXPECT_EQ(show(net.w1) + show(net.b1) + show(net.w2),
              "2x3 (2,2)1 (2,3)11x3 (1,2)1 (1,3)13x1 (2,1)1 (3,1)1");
}

TEST(NeuralNet, PrintsItsShapeAndData)
{
    neural_net net(3, 3, 1, 3);
    net.init_simply(1.0);
    net.set_patterns(test::uneven(5, 3, 9, 1), zeros(5, 1), 0);
    net.set_patterns(test::uneven(4, 3, 9, 1), zeros(4, 1), 2);
    EXPECT_EQ(printed([&] { net.structure(); }),
              "layer size: 3 3 1\nactivation: logistic linear\nparameters: 3 3 3 1\n");
    EXPECT_EQ(printed([&] { net.datainfo(); }), "patterns: 5 0 4\n");
}

TEST(NeuralNet, GrowsWithItsWeightsAndStartsItsSearchesAnew)
{
    neural_net net(2, 2, 2, 3);
    net.init(1.0);
    sparse const w1 = net.w1;
    net.lambda = net.tau = net.grad_norm2 = 5.0;
    net.resizec(2, 2);
    EXPECT_EQ(compare(net.w1, w1), 1);
    EXPECT_EQ(net.lambda, 0.001);
    net.resizec(3, 4);
    EXPECT_EQ(net.w1.get(2, 2), w1.get(2, 2));
    EXPECT_EQ(show(net.gw1), "3x4 (1,1). (1,2). (2,1). (2,2).");
    net.dw1.ones();
    net.tau = 5.0;
    net.reset();
    EXPECT_EQ(sum(net.dw1) + net.grad_norm2, 0.0);
    EXPECT_EQ(net.tau, 0.001);
    neural_net copy = net;
    copy.w1[1] = 7.0;
    EXPECT_NE(net.w1[1], 7.0);
}

TEST(NeuralNet, CountsOnlyLearningPatterns)
{
    neural_net net(2, 1, 2, 3);
    net.set_patterns("1 2; 3e-16 0; 0 4", "1; 0; nan", 0);
    EXPECT_EQ(show(net.inputs[0]), "3x2 (1,1)1 (1,2)2 (3,2)4");
    EXPECT_TRUE(net.inputs[0].indexed && net.outputs[0].indexed);
    net.rep = "2; 0; 1";
    net.set_patterns("1 2", "1", 1);
    EXPECT_EQ(net.rep(1), 2.0);
    net.set_patterns("1 2; 3 4", "1; 0", 0);
    EXPECT_EQ(net.rep_total, 2);
    EXPECT_TRUE(test::same_bits(net.rep, ones(2, 1)));
}

// The passes over whole sets against `value`, which works one pattern out with sparse matrices.
TEST(NeuralNet, GivesTheValuesOfTheSparseOperations)
{
    double const odd[] = {1.0, NAN, INFINITY};
    test::on_every_machine([&] {
        for (int k = 0; k < 27; ++k) {
            SCOPED_TRACE(k);
            neural_net net = test::sparse_net(4, 5, k % 3 + 1, k / 3 % 3 + 1, 50 + k);
            net.w1[1] *= k % 2 ? 1.0 : 20.0; // far from 0 for tanh
            net.w1[2] *= odd[k / 9];
            for (int e = 1; e <= 40; ++e) net.inputs[0][e] *= k % 2 ? 1.0 : -INFINITY;
            net.w2[1] *= odd[2 - k / 9];
            matrix const y = net.values(0);
            for (int p = 1; p <= 71; ++p) {
                double const one = net.value(row(net.inputs[0], p));
                ASSERT_TRUE(test::same_bits(one, y(p))) << p << ": " << one << " " << y(p);
            }
        }
    });
}

// One unit whose value is the tangent of the input: around the numbers where a power of 2 comes in,
// where the way of reckoning changes, and at the ends.
TEST(NeuralNet, GivesTheTangentsOfTheLibrary)
{
    double const large = std::numeric_limits<double>::max();
    std::vector<double> x = {2e-15, 1e-9, 6.75, 19.9, 20.0, 22.0, 700.0, large, INFINITY, NAN};
    for (int power = 0; power < 64; ++power)
        for (double border : {(power + 0.5) * std::log(2.0) / 2, power / 4.0}) {
            for (int k = 0; k < 20; ++k) border = std::nextafter(border, 0.0);
            for (int k = 0; k < 40; ++k) x.push_back(border = std::nextafter(border, 99.0));
        }
    matrix in(static_cast<int>(x.size()), 1);
    for (int p = 0; p < in.rows; ++p) in.cell[p][0] = p % 2 ? x[p] : -x[p];
    neural_net net(1, 1, 2, 3);
    net.init(1.0);
    net.w1[1] = net.w2[1] = 1.0;
    net.b1 = spempty(1, 1);
    net.b2 = spempty(1, 1);
    net.init_vars();
    net.set_patterns(in, zeros(in.rows, 1), 0);
    test::on_every_machine([&] {
        matrix const y = net.values(0);
        for (int p = 0; p < in.rows; ++p) {
            double const t = std::fabs(in.cell[p][0]) <= 1e-15 ? 0.0 : std::tanh(in.cell[p][0]);
            ASSERT_TRUE(test::same_bits(y.cell[p][0], t)) << in.cell[p][0] << " " << y.cell[p][0];
        }
    });
}

TEST(NeuralNet, LeavesUnitsWithoutAStoredSumAtZero)
{
    neural_net net(1, 1, 1, 1);
    net.init(1.0);
    net.w1[1] = 0.1 + 0.2;
    net.b1[1] = -0.3;
    net.w2[1] = 3.0;
    net.b2[1] = 0.5;
    net.set_patterns("1; 2; 0", "0; 0; 0", 0);
    matrix const y = net.values(0);
    auto const logistic = [](double x) { return 1.0 / (1.0 + std::exp(-x)); };
    EXPECT_DOUBLE_EQ(y(1), logistic(0.5)); // the hidden sum is below 1e-16
    EXPECT_DOUBLE_EQ(y(2), logistic(3.0 * logistic(0.3) + 0.5));
    net.b2[1] = 0.0;
    EXPECT_EQ(net.values(0)(1), 0.0);
}

TEST(NeuralNet, MeasuresEachSet)
{
    neural_net net = test::sparse_net(3, 4, 2, 3, 7);
    matrix const t = matrix(test::uneven(40, 1, 2, 3) > 0.0);
    net.set_patterns(test::uneven(40, 3, 5, 9), t, 1);
    net.rep = zeros(71, 1);
    matrix const y = net.values(1);
    EXPECT_EQ(net.corr(1), cor(t, y));
    EXPECT_EQ(net.AR(1), AR(y, t, 1.0, 1, 0, 0));
    double total = 0.0;
    for (int p = 1; p <= 40; ++p) total += (t(p) - y(p)) * (t(p) - y(p));
    EXPECT_DOUBLE_EQ(net.error(1), total / 40);
    EXPECT_GT(net.error(0), 0.0); // rep does not matter
    EXPECT_TRUE(std::isnan(net.error(2)));
    EXPECT_EQ(net.values(2).rows, 0);
}

TEST(NeuralNet, BeginsNearTheCurveOfOneInput)
{
    neural_net net(2, 2, 2, 3);
    matrix x(200, 2), t(200, 1);
    for (int p = 1; p <= 200; ++p) {
        x(p, 1) = p % 3 == 0;
        x(p, 2) = p * 0.05;
        t(p) = 0.3 * std::tanh(0.8 * x(p, 2) - 4.0) + 0.4;
    }
    net.set_patterns(x, t, 0);
    net.init_confun(2, 1);
    EXPECT_LT(net.error(0), 1e-6);
    EXPECT_EQ(show(net.b2).substr(0, 9), "1x1 (1,1)");
    EXPECT_EQ(net.w1.nnz + net.b1.nnz + net.w2.nnz, 3);

    for (int p = 1; p <= 200; ++p) t(p) = 0.1 * (p % 2) + (p % 3 == 0 ? 0.75 : 0.25);
    net.set_patterns(x, t, 0);
    net.init_binfun(1, 2);
    // p = 1 and 2 stand for the two levels; the noise alternates within both
    EXPECT_NEAR(net.values(0)(1), 0.3, 1e-3);
    EXPECT_NEAR(net.values(0)(3), 0.8, 1e-3);
    EXPECT_EQ(net.b1.get(1, 2), 0.0);
    EXPECT_EQ(net.b1.nnz, 1);
}

TEST(NeuralNetDeathTest, Refuses)
{
    neural_net bare(2, 2, 2, 3), net = bare;
    net.init(1.0);
    net.set_patterns("1 2; 3 4", "1; 0", 0);
    net.set_patterns("1 2 3", "1", 1);
    char const* const unknown = "unknow activation function";
    char const* const undefined = "undefined activation function";
    char const* const shape = "niezgodne wymiary macierzy";
    char const* const weights = "niezgodne wymiary macierzy wag";
    char const* const set = "numer zbioru poza zakresem";
    char const* const range = "indeks poza zakresem";
    test::refusal const cases[] = {
        {[] { activation(1.0, 0); }, "double activation(double,int)", undefined},
        {[] { activation(1.0, 4); }, "double activation(double,int)", unknown},
        {[] { d_activation(1.0, 0); }, "double activation(double,int)", undefined},
        {[] { d_activation(1.0, -1); }, "double d_activation(double,int)", unknown},
        {[] { act_name(4); }, "Text act_name(int)", unknown},
        {[&] { net.resizec(2, 1); }, "resizec(int,int)", "incorrect size"},
        {[&] { net.init_single_input(1, 2, 2, 1.0); }, "init_single_input(int,int,int,double)",
         range},
        {[&] { net.init_confun(3, 1); }, "init_confun(int,int)", range},
        {[&] { net.set_patterns("1 2", "1; 2", 0); }, "set_patterns(matrix,matrix,int)", shape},
        {[&] { net.set_patterns("1 2", "1", 3); }, "set_patterns(matrix,matrix,int)", set},
        {[&] { net.AR(-1); }, "double AR(int)", set},
        {[&] { net.error(1); }, "double error(int)", "niezgodne wymiary macierzy wzorcow"},
        {[&] { bare.value(sparse("1 2")); }, "double value(sparse)", weights},
        {[&] { bare.learn(1, 1, 1, 0.0, 1, 0, 1, 0); },
         "int learn(int,int,int,double,int,int,int,int)", weights},
        {[&] { net.set_activ_fun(0, 3), net.values(0); }, "double activation(double,int)",
         undefined},
        {[&] { net.gw1.nnz = 3, net.backprop(1, 1, 1, 0); }, "int backprop(int,int,int,int)",
         "niezgodna dlugosc wypelnienia"},
        {[&] { net.rep.resize(1, 1), net.error_tau(0.0, 0); }, "double error_tau(double,int)",
         "niezgodna liczba wag wzorcow"},
        {[&] { net.random_rep(-1.0); }, "random_rep(double)", "niewlasciwa wielkosc proby"},
        {[&] {
             matrix column(8, 1);
             net.weight2param(net.w1, net.b1, net.w2, net.b2, column);
         },
         "weight2param(sparse,sparse,sparse,sparse,matrix)", shape},
    };
    test::expect_refusals("NEURAL_NET", cases);
    EXPECT_REFUSAL_DETAIL(neural_net(3, 2, 2, 3).init_simply(1.0), "SPARSE",
                          "double & operator ()(int,int)", range, "1 x 2 : ( 1 , 3 )");
}

} // namespace
} // namespace varnow
