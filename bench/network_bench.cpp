// A network of 5 inputs and 8 hidden units on 2,000 patterns: the gradient beside a plain loop over
// dense arrays, whole steps, and learning to a given error beside R's package nnet from the same
// weights (where R has it; it reports its own processor time). The targets have a variance of 0.68,
// 0.01 of which is noise.
#include <varnow/varnow.h>

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <vector>

using namespace varnow;

namespace {

int const n = 2000, inputs = 5, hidden = 8, sets = 3, starts_each = 10, starts = sets * starts_each;

// Nets at the weights from which all begin, ten on each of three sets of patterns. They are drawn
// at once, so that the figures do not depend on which benchmarks run.
struct experiments
{
    matrix x[sets], t[sets];
    std::vector<neural_net> nets;
};

experiments const& all_experiments()
{
    static experiments const made = [] {
        experiments e;
        for (int set = 0; set < sets; ++set) {
            matrix const x = randn(n, inputs), noise = 0.1 * randn(n, 1);
            matrix t(n, 1);
            for (int i = 1; i <= n; ++i)
                t(i) = std::sin(1.5 * x(i, 1)) * x(i, 2) / 2 + std::tanh(x(i, 3) - x(i, 4)) +
                       0.2 * x(i, 5) + noise(i);
            for (int k = 0; k < starts_each; ++k) {
                neural_net net(inputs, hidden, 2, 3);
                net.init(1.0);
                for (sparse* w : {&net.w1, &net.b1, &net.w2, &net.b2}) *w -= 0.5;
                net.set_patterns(x, t, 0);
                e.nets.push_back(net);
            }
            e.x[set] = x;
            e.t[set] = t;
        }
        return e;
    }();
    return made;
}

neural_net start(int act_hid)
{
    neural_net net = all_experiments().nets[0];
    net.set_activ_fun(act_hid, 3);
    return net;
}

void gradient(benchmark::State& state, int act_hid)
{
    neural_net net = start(act_hid);
    for (auto _ : state) net.backprop(0, 0, 1, 0);
}

// What one would write for this one net.
void gradient_by_hand(benchmark::State& state)
{
    neural_net const net = start(2);
    matrix const &x_of = all_experiments().x[0], &t_of = all_experiments().t[0];
    double const *const w1 = net.w1.values, *const b1 = net.b1.values, *const w2 = net.w2.values,
                        *const b2 = net.b2.values;
    double g1[inputs][hidden], c1[hidden], g2[hidden], c2;
    for (auto _ : state) {
        for (int j = 0; j < hidden; ++j) {
            c1[j] = g2[j] = 0.0;
            for (int i = 0; i < inputs; ++i) g1[i][j] = 0.0;
        }
        c2 = 0.0;
        for (int k = 0; k < n; ++k) {
            double const* const x = x_of.cell[k];
            double h[hidden], y = 0.0;
            for (int j = 0; j < hidden; ++j) {
                double z = 0.0;
                for (int i = 0; i < inputs; ++i) z += x[i] * w1[i * hidden + j];
                h[j] = std::tanh(z + b1[j]);
                y += h[j] * w2[j];
            }
            double const delta = t_of.cell[k][0] - (y + b2[0]);
            c2 += delta;
            for (int j = 0; j < hidden; ++j) {
                g2[j] += delta * h[j];
                double const d = delta * w2[j] * (1.0 - h[j] * h[j]);
                c1[j] += d;
                for (int i = 0; i < inputs; ++i) g1[i][j] += x[i] * d;
            }
        }
        benchmark::DoNotOptimize(g1);
        benchmark::DoNotOptimize(c1);
        benchmark::DoNotOptimize(g2);
        benchmark::DoNotOptimize(c2);
    }
}

// Keeps what the drivers print off the screen.
struct silence
{
    silence() : screen(std::cout.rdbuf(nullptr)) {}
    ~silence() { std::cout.rdbuf(screen); }
    std::streambuf* screen;
};

void step(benchmark::State& state, int use_cg, int use_gn)
{
    silence quiet;
    neural_net const begin = start(2);
    for (auto _ : state) {
        neural_net net = begin;
        for (int turn = 0; turn < 10; ++turn) net.backprop(use_cg, use_gn, 1, 0);
    }
}

// Writes the weights in the order of nnet: of each unit its bias, then its inputs.
void write_weights(FILE* f, neural_net const& net)
{
    for (int j = 1; j <= hidden; ++j) {
        std::fprintf(f, "%.17g\n", net.b1.get(1, j));
        for (int i = 1; i <= inputs; ++i) std::fprintf(f, "%.17g\n", net.w1.get(i, j));
    }
    std::fprintf(f, "%.17g\n", net.b2.get(1, 1));
    for (int j = 1; j <= hidden; ++j) std::fprintf(f, "%.17g\n", net.w2.get(j, 1));
}

// As many steps as the error asks for.
int turns_to(neural_net net, int use_gn, double wanted_error)
{
    int turns = 0;
    for (; turns < 2000 && net.error(0) > wanted_error; ++turns) net.backprop(1, use_gn, 1, 0);
    return turns;
}

void learn_to(benchmark::State& state, int act_hid, int use_gn, double wanted_error)
{
    silence quiet;
    std::vector<neural_net> nets = all_experiments().nets;
    std::vector<int> turns;
    for (neural_net& net : nets) {
        net.set_activ_fun(act_hid, 3);
        turns.push_back(turns_to(net, use_gn, wanted_error));
    }
    for (auto _ : state) {
        double reached = 0.0, total = 0.0;
        for (int k = 0; k < starts; ++k) {
            neural_net& net = nets[k];
            net.learn(turns[k], turns[k], turns[k], 0.0, 1, use_gn, 1, 0);
            reached += net.error(0) <= wanted_error;
            total += turns[k];
        }
        state.counters["reached"] = reached;
        state.counters["turns"] = total / starts;
    }
}

void learn_to_by_nnet(benchmark::State& state, double wanted_error)
{
    experiments const& e = all_experiments();
    matrix patterns = e.x[0] | e.t[0];
    for (int set = 1; set < sets; ++set) patterns &= e.x[set] | e.t[set];
    patterns.writetxt("network_bench.txt", 0, 0, 0);
    FILE* f = std::fopen("network_bench.wts", "w");
    for (neural_net const& net : e.nets) write_weights(f, net);
    std::fclose(f);
    char script[1000];
    std::snprintf(
        script, sizeof script,
        "Rscript --vanilla -e 'library(nnet); d <- matrix(scan(\"network_bench.txt\", quiet = "
        "TRUE), ncol = %d, byrow = TRUE); w <- matrix(scan(\"network_bench.wts\", quiet = TRUE), "
        "ncol = %d); reached <- 0; seconds <- 0; for (k in 1:%d) { "
        "rows <- (k - 1) %%/%% %d * %d + 1:%d; x <- d[rows, 1:%d]; y <- d[rows, %d]; "
        "seconds <- seconds + system.time(m <- nnet(x, y, size = %d, linout = TRUE, Wts = w[, k], "
        "maxit = 5000, abstol = %g, reltol = 0, trace = FALSE))[[\"user.self\"]]; "
        "reached <- reached + (m$value <= %g) }; cat(seconds, reached)' "
        "> network_bench.out 2>/dev/null",
        inputs + 1, starts, starts, starts_each, n, n, inputs, inputs + 1, hidden, wanted_error * n,
        wanted_error * n);
    for (auto _ : state) {
        double seconds = 0.0, reached = 0.0;
        FILE* out = std::system(script) == 0 ? std::fopen("network_bench.out", "r") : nullptr;
        if (!out || std::fscanf(out, "%lf %lf", &seconds, &reached) != 2) {
            if (out) std::fclose(out);
            state.SkipWithError("R or its package nnet is not installed");
            break;
        }
        std::fclose(out);
        state.SetIterationTime(seconds);
        state.counters["reached"] = reached;
    }
    for (char const* name : {"network_bench.txt", "network_bench.wts", "network_bench.out"})
        std::remove(name);
}

BENCHMARK_CAPTURE(gradient, tanh, 2)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(gradient, logistic, 1)->Unit(benchmark::kMicrosecond);
BENCHMARK(gradient_by_hand)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(step, conjugate, 1, 0)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(step, both, 1, 1)->Unit(benchmark::kMillisecond);
#define LEARN(name, error)                                                                         \
    BENCHMARK_CAPTURE(learn_to, name##_tanh, 2, 0, error)                                          \
        ->Unit(benchmark::kMillisecond)                                                            \
        ->Iterations(1);                                                                           \
    BENCHMARK_CAPTURE(learn_to, name##_tanh_both, 2, 1, error)                                     \
        ->Unit(benchmark::kMillisecond)                                                            \
        ->Iterations(1);                                                                           \
    BENCHMARK_CAPTURE(learn_to, name##_logistic, 1, 0, error)                                      \
        ->Unit(benchmark::kMillisecond)                                                            \
        ->Iterations(1);                                                                           \
    BENCHMARK_CAPTURE(learn_to_by_nnet, name, error)                                               \
        ->Unit(benchmark::kMillisecond)                                                            \
        ->UseManualTime()                                                                          \
        ->Iterations(1)
LEARN(0_20, 0.20);
LEARN(0_15, 0.15);
LEARN(0_10, 0.10);
LEARN(0_05, 0.05);
#undef LEARN

} // namespace

BENCHMARK_MAIN();
