// The moving polynomial beside a bare convolution with weights of the same number.
#include <varnow/containers/matrix_special.h>
#include <varnow/numerics/smoothing.h>

#include <benchmark/benchmark.h>

#include <vector>

namespace {

using namespace varnow;

constexpr int degree = 3, n = 1000000;

void smooth_a_million(benchmark::State& state)
{
    matrix const x = randn(n, 1);
    for (auto _ : state)
        benchmark::DoNotOptimize(smooth(x, degree, static_cast<int>(state.range(0))).cell);
}
void bare_convolution(benchmark::State& state)
{
    int const points = static_cast<int>(state.range(0)), m = points / 2;
    matrix const source = randn(n, 1);
    std::vector<double> x, w;
    for (int i = 0; i < n; ++i) x.push_back(source.cell[i][0]);
    for (int i = -m; i <= m; ++i) w.push_back(fun_w(degree, m, 0, i));
    double const *const from = x.data(), *const weight = w.data();
    for (auto _ : state) {
        std::vector<double> out(n);
        double* const to = out.data();
        for (int r = 0; r + points <= n; ++r) {
            double s = 0;
            for (int k = 0; k < points; ++k) s += weight[k] * from[r + k];
            to[m + r] = s;
        }
        benchmark::DoNotOptimize(to);
    }
}
BENCHMARK(smooth_a_million)->Arg(5)->Arg(21)->Arg(101)->Unit(benchmark::kMillisecond);
BENCHMARK(bare_convolution)->Arg(5)->Arg(21)->Arg(101)->Unit(benchmark::kMillisecond);

// One window as long as the data: all ends.
void smooth_one_window(benchmark::State& state)
{
    int const points = static_cast<int>(state.range(0));
    matrix const x = randn(points, 1);
    for (auto _ : state) benchmark::DoNotOptimize(smooth(x, degree, points).cell);
}
BENCHMARK(smooth_one_window)->Arg(101)->Arg(2001)->Unit(benchmark::kMicrosecond);

} // namespace
