// Statistics beside plain loops over a flat array and the standard sort.
#include <varnow/containers/matrix_special.h>
#include <varnow/containers/slicing.h>
#include <varnow/numerics/statistics.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

using namespace varnow;

std::vector<double> flat(matrix const& m)
{
    std::vector<double> x;
    for (int i = 0; i < m.rows; ++i) x.insert(x.end(), m.cell[i], m.cell[i] + m.cols);
    return x;
}

// Values of several shapes: 0 uniform, 1 heavy-tailed, 2 of 1,000 different values.
matrix sample(int n, long shape)
{
    matrix m = shape == 1 ? randn(n, 1) : rand(n, 1);
    for (int i = 0; i < n; ++i) {
        double& x = m.cell[i][0];
        x = shape == 0 ? x : shape == 1 ? std::exp(5 * x) : std::floor(1000 * x);
    }
    return m;
}

matrix percentiles()
{
    matrix p(99, 1);
    for (int k = 0; k < 99; ++k) p.cell[k][0] = (k + 1) / 100.0;
    return p;
}

void percentiles_of_a_million(benchmark::State& state)
{
    matrix const m = sample(1000000, state.range(0)), p = percentiles();
    for (auto _ : state) benchmark::DoNotOptimize(quantile(m, p).cell);
}
void percentiles_by_standard_sort(benchmark::State& state)
{
    std::vector<double> const x = flat(sample(1000000, state.range(0)));
    for (auto _ : state) {
        std::vector<double> y = x;
        std::sort(y.begin(), y.end());
        benchmark::DoNotOptimize(y.data());
    }
}
BENCHMARK(percentiles_of_a_million)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);
BENCHMARK(percentiles_by_standard_sort)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);

void median_of_a_million(benchmark::State& state)
{
    matrix const m = sample(1000000, 0);
    for (auto _ : state) benchmark::DoNotOptimize(median(m).cell);
}
void median_by_nth_element(benchmark::State& state)
{
    std::vector<double> const x = flat(sample(1000000, 0));
    for (auto _ : state) {
        std::vector<double> y = x;
        std::nth_element(y.begin(), y.begin() + 500000, y.end());
        benchmark::DoNotOptimize(y[500000]);
    }
}
void mode_of_a_million(benchmark::State& state)
{
    matrix const m = sample(1000000, state.range(0));
    for (auto _ : state) benchmark::DoNotOptimize(mode(m).cell);
}
BENCHMARK(median_of_a_million)->Unit(benchmark::kMillisecond);
BENCHMARK(median_by_nth_element)->Unit(benchmark::kMillisecond);
BENCHMARK(mode_of_a_million)->Arg(0)->Arg(2)->Unit(benchmark::kMillisecond);

void covariances(benchmark::State& state)
{
    matrix const m = randn(100000, 50);
    for (auto _ : state) benchmark::DoNotOptimize(cov(m).cell);
}
void covariances_by_plain_loops(benchmark::State& state)
{
    int const n = 100000, k = 50;
    std::vector<double> const x = flat(~randn(n, k));
    for (auto _ : state) {
        std::vector<double> y = x;
        for (int j = 0; j < k; ++j) {
            double* const c = &y[static_cast<std::size_t>(j) * n];
            double s = 0;
            for (int i = 0; i < n; ++i) s += c[i];
            for (int i = 0; i < n; ++i) c[i] -= s / n;
        }
        std::vector<double> v;
        for (int i = 0; i < k; ++i)
            for (int j = i; j < k; ++j) {
                double s = 0;
                for (int r = 0; r < n; ++r)
                    s += y[static_cast<std::size_t>(i) * n + static_cast<std::size_t>(r)] *
                         y[static_cast<std::size_t>(j) * n + static_cast<std::size_t>(r)];
                v.push_back(s / n);
            }
        benchmark::DoNotOptimize(v.data());
    }
}
BENCHMARK(covariances)->Unit(benchmark::kMillisecond);
BENCHMARK(covariances_by_plain_loops)->Unit(benchmark::kMillisecond);

void variances_of_columns(benchmark::State& state)
{
    matrix const m =
        randn(1000000 / static_cast<int>(state.range(0)), static_cast<int>(state.range(0)));
    for (auto _ : state) benchmark::DoNotOptimize(var(m).cell);
}
void variances_column_by_column(benchmark::State& state)
{
    int const k = static_cast<int>(state.range(0)), n = 1000000 / k;
    std::vector<double> const x = flat(randn(n, k));
    for (auto _ : state) {
        std::vector<double> v;
        for (int j = 0; j < k; ++j) {
            double s = 0, q = 0;
            for (int i = 0; i < n; ++i) s += x[static_cast<std::size_t>(i * k + j)];
            s /= n;
            for (int i = 0; i < n; ++i) {
                double const d = x[static_cast<std::size_t>(i * k + j)] - s;
                q += d * d;
            }
            v.push_back(q / (n - 1));
        }
        benchmark::DoNotOptimize(v.data());
    }
}
BENCHMARK(variances_of_columns)->Arg(1)->Arg(7)->Arg(50)->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK(variances_column_by_column)
    ->Arg(1)
    ->Arg(7)
    ->Arg(50)
    ->Arg(1000)
    ->Unit(benchmark::kMillisecond);

} // namespace
