// Arithmetic cell by cell, beside a bare loop over arrays that allocates its result.
#include <varnow/containers/matrix_arithmetic.h>
#include <varnow/containers/matrix_special.h>

#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>

using namespace varnow;

namespace {

matrix uniform(int rows, int cols)
{
    return rand(rows, cols) + 0.5;
}

template <class F> void bare(benchmark::State& state, F f)
{
    std::ptrdiff_t const n = 1000000;
    std::unique_ptr<double[]> a(new double[n]), b(new double[n]);
    for (std::ptrdiff_t k = 0; k < n; ++k) a[k] = b[k] = 0.5 + static_cast<double>(k) / n;
    for (auto _ : state) {
        double* const r = new double[n];
        for (std::ptrdiff_t k = 0; k < n; ++k) r[k] = f(a[k], b[k]);
        benchmark::DoNotOptimize(r);
        benchmark::ClobberMemory();
        delete[] r;
    }
}
void bare_sum(benchmark::State& state)
{
    bare(state, [](double x, double y) { return x + y; });
}
BENCHMARK(bare_sum)->Unit(benchmark::kMillisecond);
void bare_exponential(benchmark::State& state)
{
    bare(state, [](double x, double) { return std::exp(x); });
}
BENCHMARK(bare_exponential)->Unit(benchmark::kMillisecond);

template <class F> void run(benchmark::State& state, F f)
{
    matrix const a = uniform(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    matrix const b = uniform(a.rows, a.cols);
    for (auto _ : state) {
        matrix r = f(a, b);
        benchmark::DoNotOptimize(r.cell);
    }
}

void sum(benchmark::State& state)
{
    run(state, [](matrix const& a, matrix const& b) { return a + b; });
}
void product(benchmark::State& state)
{
    run(state, [](matrix const& a, matrix const& b) { return a * b; });
}
void scaled(benchmark::State& state)
{
    run(state, [](matrix const& a, matrix const&) { return 2 * a; });
}
void compared(benchmark::State& state)
{
    run(state, [](matrix const& a, matrix const& b) { return a < b; });
}
void exponential(benchmark::State& state)
{
    run(state, [](matrix const& a, matrix const&) { return exp(a); });
}
void root(benchmark::State& state)
{
    run(state, [](matrix const& a, matrix const&) { return varnow::sqrt(a); });
}
void sum_in_place(benchmark::State& state)
{
    matrix a = uniform(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    matrix const b = 1e-9 * a;
    for (auto _ : state) {
        a += b;
        benchmark::DoNotOptimize(a.cell);
    }
}
// Rows in an order that exchanges have left.
void sum_of_mixed_rows(benchmark::State& state)
{
    matrix a = uniform(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    for (int i = a.rows - 1; i > 0; --i)
        std::swap(a.cell[i], a.cell[static_cast<int>(detail::random_step() % std::uint32_t(i))]);
    for (auto _ : state) {
        matrix r = a + a;
        benchmark::DoNotOptimize(r.cell);
    }
}

#define SHAPES Unit(benchmark::kMillisecond)->Args({1000, 1000})->Args({1000000, 1})
BENCHMARK(sum)->SHAPES->Args({1, 1000000})->Args({100000, 10});
BENCHMARK(sum_in_place)->SHAPES;
BENCHMARK(product)->SHAPES;
BENCHMARK(scaled)->SHAPES;
BENCHMARK(compared)->SHAPES;
BENCHMARK(exponential)->SHAPES;
BENCHMARK(root)->SHAPES;
BENCHMARK(sum_of_mixed_rows)->SHAPES;
#undef SHAPES

void normal_draws(benchmark::State& state)
{
    for (auto _ : state) benchmark::DoNotOptimize(randn(1000, 1000).cell);
}
BENCHMARK(normal_draws)->Unit(benchmark::kMillisecond);

} // namespace
