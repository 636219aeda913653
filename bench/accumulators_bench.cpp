// Accumulators beside bare loops and the sort of a whole stream, and how far the quantiles of
// streams of 10,000,000 values lie from the exact ones.
#include <varnow/accumulators/quantiles.h>
#include <varnow/accumulators/simulation.h>
#include <varnow/numerics/statistics.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace {

using namespace varnow;

constexpr std::size_t length = 10000000;

enum shape : long { normal, log_normal, heavy, two_humps, constant };

// The heavy tail is that of Student's distribution with 2 degrees of freedom, without a variance.
std::vector<double> const& stream(long of)
{
    static std::vector<double> x;
    static long made = -1;
    if (made == of) return x;
    made = of;
    x.resize(length);
    std::mt19937_64 source(1);
    std::normal_distribution<double> z;
    std::student_t_distribution<double> t(2);
    for (double& v : x) {
        double const here = z(source);
        v = of == normal       ? here
            : of == log_normal ? std::exp(here)
            : of == heavy      ? t(source)
            : of == two_humps  ? here + (source() % 2 ? 100 : -100)
                               : 1.0;
    }
    return x;
}

void time_per_value(benchmark::State& state)
{
    state.counters["per_value"] =
        benchmark::Counter(double(length), benchmark::Counter::kIsIterationInvariantRate |
                                               benchmark::Counter::kInvert);
}

void simulation_add(benchmark::State& state)
{
    std::vector<double> const& x = stream(state.range(0));
    simulation s(-5, 5, 100);
    for (auto _ : state) {
        s.reset();
        for (double v : x) s.add(v);
    }
    benchmark::DoNotOptimize(s.s4);
    time_per_value(state);
}
void simulation_by_a_bare_loop(benchmark::State& state)
{
    std::vector<double> const& x = stream(state.range(0));
    for (auto _ : state) {
        double s1 = 0, s2 = 0, s3 = 0, s4 = 0, slog = 0, sinv = 0, lo = x[0], hi = x[0];
        for (double v : x) {
            s1 += v;
            s2 += v * v;
            s3 += v * v * v;
            s4 += v * v * v * v;
            if (v < lo) lo = v;
            if (v > hi) hi = v;
            if (v > 0) slog += std::log(v);
            if (v != 0) sinv += 1 / v;
        }
        benchmark::DoNotOptimize(s1 + s2 + s3 + s4 + slog + sinv + lo + hi);
    }
    time_per_value(state);
}
BENCHMARK(simulation_add)->DenseRange(normal, log_normal)->Unit(benchmark::kMillisecond);
BENCHMARK(simulation_by_a_bare_loop)->DenseRange(normal, log_normal)->Unit(benchmark::kMillisecond);

void quantiles_add(benchmark::State& state)
{
    std::vector<double> const& x = stream(state.range(0));
    double result = 0;
    for (auto _ : state) {
        quantiles q(double(state.range(1)) / 100);
        for (double v : x) q.add(v);
        result = q.result();
    }
    time_per_value(state);
    std::vector<double> y = x;
    double const h = double(length - 1) * double(state.range(1)) / 100;
    auto const at = y.begin() + static_cast<std::ptrdiff_t>(h);
    std::nth_element(y.begin(), at, y.end());
    double const exact = *at + (h - std::floor(h)) * (*std::min_element(at + 1, y.end()) - *at);
    state.counters["exact"] = exact;
    state.counters["error"] = result - exact;
}
void quantile_by_sorting_all(benchmark::State& state)
{
    std::vector<double> const& x = stream(state.range(0));
    for (auto _ : state) {
        std::vector<double> y = x;
        std::sort(y.begin(), y.end());
        benchmark::DoNotOptimize(y[length / 2]);
    }
    time_per_value(state);
}
BENCHMARK(quantiles_add)
    ->ArgsProduct({{normal, log_normal, heavy, two_humps, constant}, {1, 4, 50, 96, 99}})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(quantile_by_sorting_all)->Arg(normal)->Unit(benchmark::kMillisecond)->Iterations(1);

// From 200,000 values a table of a few thousand rows, from 90,000 one that holds them all.
void cdf_of_an_unchanged_table(benchmark::State& state)
{
    std::vector<double> const& x = stream(normal);
    quantiles q(0.5);
    for (std::size_t i = 0; i < std::size_t(state.range(0)); ++i) q.add(x[i]);
    for (auto _ : state) benchmark::DoNotOptimize(q.cdf(0.001));
}
BENCHMARK(cdf_of_an_unchanged_table)->Arg(90000)->Arg(200000)->Unit(benchmark::kMicrosecond);

void quantiles_of_eight_parts(benchmark::State& state)
{
    std::vector<double> const& x = stream(normal);
    quantiles2 all(8);
    for (std::size_t k = 0; k < 8; ++k) {
        quantiles q(0.5);
        for (std::size_t i = 0; i < 90000; ++i) q.add(x[90000 * k + i]);
        all += q;
    }
    for (auto _ : state) benchmark::DoNotOptimize(all.result());
}
BENCHMARK(quantiles_of_eight_parts)->Unit(benchmark::kMillisecond);

} // namespace
