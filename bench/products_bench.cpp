// Products of matrices beside the plain loops and, where it is installed, OpenBLAS on one thread.
#include <varnow/containers/matrix_products.h>
#include <varnow/containers/matrix_special.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#ifdef VARNOW_PEER_OPENBLAS
#include <cblas.h>
#include <vector>
#endif

using namespace varnow;

namespace {

void Product(benchmark::State& state)
{
    int const n = static_cast<int>(state.range(0));
    matrix const a = randn(n), b = randn(n);
    for (auto _ : state) benchmark::DoNotOptimize(mul(a, b));
}

void ProductByPlainLoops(benchmark::State& state)
{
    int const n = static_cast<int>(state.range(0));
    matrix const a = randn(n), b = randn(n);
    for (auto _ : state) {
        matrix r = zeros(n);
        for (int i = 0; i < n; ++i)
            for (int k = 0; k < n; ++k)
                for (int j = 0; j < n; ++j) r.cell[i][j] += b.cell[k][j] * a.cell[i][k];
        benchmark::DoNotOptimize(r);
    }
}

void ProductByTransposed(benchmark::State& state)
{
    int const n = static_cast<int>(state.range(0));
    matrix const a = randn(n), b = randn(n);
    for (auto _ : state) benchmark::DoNotOptimize(mulT(a, b));
}

void ProductByVector(benchmark::State& state)
{
    int const n = static_cast<int>(state.range(0));
    matrix const a = randn(n), x = randn(n, 1);
    for (auto _ : state) benchmark::DoNotOptimize(mul(a, x));
}

void CrossProducts(benchmark::State& state)
{
    matrix const a = randn(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    for (auto _ : state) benchmark::DoNotOptimize(crossprod(a));
}

void CrossProductsByPlainLoops(benchmark::State& state)
{
    matrix const a = randn(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    for (auto _ : state) {
        matrix r = zeros(a.cols);
        for (int k = 0; k < a.rows; ++k)
            for (int i = 0; i < a.cols; ++i)
                for (int j = i; j < a.cols; ++j) r.cell[i][j] += a.cell[k][i] * a.cell[k][j];
        benchmark::DoNotOptimize(r);
    }
}

#ifdef VARNOW_PEER_OPENBLAS
std::vector<double> flat(matrix const& a)
{
    std::vector<double> r;
    for (int i = 0; i < a.rows; ++i) r.insert(r.end(), a.cell[i], a.cell[i] + a.cols);
    return r;
}

void ProductByOpenBlas(benchmark::State& state)
{
    openblas_set_num_threads(1);
    int const n = static_cast<int>(state.range(0));
    std::vector<double> const a = flat(randn(n)), b = flat(randn(n));
    std::vector<double> r(a.size());
    for (auto _ : state) {
        cblas_dgemm(CblasRowMajor, CblasNoTrans, CblasNoTrans, n, n, n, 1, a.data(), n, b.data(), n,
                    0, r.data(), n);
        benchmark::DoNotOptimize(r.data());
    }
}
BENCHMARK(ProductByOpenBlas)->Arg(200)->Arg(1000)->Unit(benchmark::kMicrosecond);
#endif

} // namespace

BENCHMARK(Product)->Arg(5)->Arg(20)->Arg(50)->Arg(200)->Arg(1000)->Unit(benchmark::kMicrosecond);
BENCHMARK(ProductByPlainLoops)
    ->Arg(5)
    ->Arg(20)
    ->Arg(50)
    ->Arg(200)
    ->Arg(1000)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(ProductByTransposed)->Arg(200)->Arg(1000)->Unit(benchmark::kMicrosecond);
BENCHMARK(ProductByVector)->Arg(1000)->Unit(benchmark::kMicrosecond);
BENCHMARK(CrossProducts)->Args({200000, 22})->Args({2000, 500})->Unit(benchmark::kMicrosecond);
BENCHMARK(CrossProductsByPlainLoops)
    ->Args({200000, 22})
    ->Args({2000, 500})
    ->Unit(benchmark::kMicrosecond);
