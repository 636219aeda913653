// Regression beside the cross-products that it cannot do without.
#include <varnow/containers/matrix_products.h>
#include <varnow/containers/matrix_special.h>
#include <varnow/containers/slicing.h>
#include <varnow/models/linear.h>
#include <varnow/numerics/regression.h>

#include <benchmark/benchmark.h>

namespace {

using namespace varnow;

struct Data
{
    matrix X = randn(200000, 20), y = randn(200000, 1);
};
Data const& data()
{
    static Data const d;
    return d;
}

void crossprod_of_200000_by_20(benchmark::State& state)
{
    for (auto _ : state) benchmark::DoNotOptimize(crossprod(data().X).cell);
}
void linreg_of_200000_by_20(benchmark::State& state)
{
    for (auto _ : state) benchmark::DoNotOptimize(linreg(data().X, data().y).cell);
}
void sweep_of_the_bound_data(benchmark::State& state)
{
    for (auto _ : state) {
        matrix M = crossprod(data().X | data().y);
        M.linreg_sweep(1, 20);
        benchmark::DoNotOptimize(M.cell);
    }
}
void tests_of_coefficients(benchmark::State& state)
{
    matrix se, t, p;
    for (auto _ : state)
        benchmark::DoNotOptimize(lm_tstud(data().X, data().y, se, t, p, EsQuadratic).cell);
}
BENCHMARK(crossprod_of_200000_by_20)->Unit(benchmark::kMillisecond);
BENCHMARK(linreg_of_200000_by_20)->Unit(benchmark::kMillisecond);
BENCHMARK(sweep_of_the_bound_data)->Unit(benchmark::kMillisecond);
BENCHMARK(tests_of_coefficients)->Unit(benchmark::kMillisecond);

// Every tenth of so many variables, from cross-products taken once.
void subset_of(benchmark::State& state)
{
    int const n = static_cast<int>(state.range(0));
    matrix const M = crossprod(randn(2 * n, n + 1));
    matrix cond = zeros(n + 1, 1);
    for (int v = 1; v <= n; v += 10) cond(v) = 1;
    for (auto _ : state) benchmark::DoNotOptimize(linreg_c(M, cond, n + 1).cell);
}
BENCHMARK(subset_of)->Arg(20)->Arg(100)->Arg(500)->Unit(benchmark::kMicrosecond);

} // namespace
