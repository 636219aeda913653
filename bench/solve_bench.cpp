// Solvers beside their plain forms and, where it is installed, the LAPACK of OpenBLAS on one
// thread.
#include <varnow/containers/matrix_special.h>
#include <varnow/numerics/solve.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <utility>
#ifdef VARNOW_PEER_OPENBLAS
#include <cblas.h>
#include <vector>
extern "C" void dgetrf_(int*, int*, double*, int*, int*, int*);
extern "C" void dgetri_(int*, double*, int*, int*, double*, int*, int*);
#endif

using namespace varnow;

namespace {

void PlainLU(benchmark::State& state)
{
    int const n = static_cast<int>(state.range(0));
    matrix const a = randn(n);
    matrix w(n, 1);
    for (auto _ : state) {
        matrix f = a;
        for (int j = 0; j < n; ++j) {
            for (int i = 0; i < n; ++i) w.cell[i][0] = f.cell[i][j];
            for (int i = 0; i < n; ++i) {
                double s = 0;
                for (int k = 0; k < std::min(i, j); ++k) s += f.cell[i][k] * w.cell[k][0];
                f.cell[i][j] = w.cell[i][0] -= s;
            }
            int p = j;
            for (int i = j + 1; i < n; ++i)
                if (std::fabs(w.cell[i][0]) > std::fabs(w.cell[p][0])) p = i;
            std::swap(f.cell[p], f.cell[j]);
            for (int i = j + 1; i < n; ++i) f.cell[i][j] /= f.cell[j][j];
        }
        benchmark::DoNotOptimize(f);
    }
}

void Determinant(benchmark::State& state)
{
    matrix const a = randn(static_cast<int>(state.range(0)));
    for (auto _ : state) benchmark::DoNotOptimize(det(a));
}

void Equations(benchmark::State& state)
{
    int const n = static_cast<int>(state.range(0));
    auto const method = static_cast<LinearMethod>(state.range(1));
    matrix const a = randn(n), b = randn(n, 1);
    for (auto _ : state) benchmark::DoNotOptimize(lineqns(a, b, method));
}

void Inverse(benchmark::State& state)
{
    matrix const a = randn(static_cast<int>(state.range(0)));
    auto const method = static_cast<LinearMethod>(state.range(1));
    for (auto _ : state) benchmark::DoNotOptimize(inv(a, method));
}

#ifdef VARNOW_PEER_OPENBLAS
// Factors, and the inverse from them when the second argument is 1.
void OpenBlas(benchmark::State& state)
{
    openblas_set_num_threads(1);
    int n = static_cast<int>(state.range(0)), info = 0, size = 64 * n;
    matrix const a = randn(n);
    std::vector<double> cells, work(static_cast<std::size_t>(size));
    std::vector<int> pivots(static_cast<std::size_t>(n));
    for (auto _ : state) {
        cells.clear();
        for (int i = 0; i < n; ++i) cells.insert(cells.end(), a.cell[i], a.cell[i] + n);
        dgetrf_(&n, &n, cells.data(), &n, pivots.data(), &info);
        if (state.range(1)) dgetri_(&n, cells.data(), &n, pivots.data(), work.data(), &size, &info);
        benchmark::DoNotOptimize(cells.data());
    }
}
BENCHMARK(OpenBlas)->ArgsProduct({{50, 500, 1000}, {0, 1}})->Unit(benchmark::kMicrosecond);
#endif

} // namespace

BENCHMARK(PlainLU)->Arg(50)->Arg(500)->Unit(benchmark::kMicrosecond);
BENCHMARK(Determinant)->Arg(5)->Arg(50)->Arg(500)->Arg(1000)->Unit(benchmark::kMicrosecond);
BENCHMARK(Equations)->ArgsProduct({{5, 50, 500}, {GAUSS, LU, QR}})->Unit(benchmark::kMicrosecond);
BENCHMARK(Inverse)
    ->ArgsProduct({{5, 50, 500, 1000}, {GAUSS, LU, QR}})
    ->Unit(benchmark::kMicrosecond);
