// Fits of a curve of four parameters to 100,000 points, beside a bare OpenMP loop over the same
// model with the same threads, and the minimisers on a cheap function.
#include <varnow/varnow.h>

#include <benchmark/benchmark.h>

#include <cmath>
#include <omp.h>
#include <vector>

using namespace varnow;

namespace {

int const n = 100000;
double (*const curve)(double, matrix&) = f_C;
double curve_of_row(matrix& row, matrix& par)
{
    return f_C(row.cell[0][0], par);
}

struct problem
{
    matrix X, y, par;
};

problem const& data_set()
{
    static problem const p = [] {
        problem made{matrix(n, 1), matrix(), "2; 1.5; -0.5; 0.25"};
        for (int i = 0; i < n; ++i) made.X.cell[i][0] = 6.0 * i / n - 3.0;
        made.y = fun_fit(made.X, curve, made.par) + 0.1 * randn(n, 1);
        made.par = "1; 1; 0.1; 0.1";
        return made;
    }();
    return p;
}

double bare_error(std::vector<double> const& x, std::vector<double> const& y, matrix& par)
{
    double total = 0.0;
#pragma omp parallel for num_threads(4) schedule(static) reduction(+ : total)
    for (int i = 0; i < n; ++i) {
        double const d =
            y[static_cast<std::size_t>(i)] - curve(x[static_cast<std::size_t>(i)], par);
        total += d * d;
    }
    return std::sqrt(total / n);
}

void error_bare_loop(benchmark::State& state)
{
    problem p = data_set();
    std::vector<double> x, y;
    for (int i = 0; i < n; ++i) {
        x.push_back(p.X.cell[i][0]);
        y.push_back(p.y.cell[i][0]);
    }
    for (auto _ : state) benchmark::DoNotOptimize(bare_error(x, y, p.par));
}

void error_scalar_form(benchmark::State& state)
{
    problem p = data_set();
    for (auto _ : state) benchmark::DoNotOptimize(err_fit(p.X, p.y, curve, p.par, EsQuadratic));
}

void error_row_form(benchmark::State& state)
{
    problem p = data_set();
    for (auto _ : state)
        benchmark::DoNotOptimize(err_fit(p.X, p.y, curve_of_row, p.par, EsQuadratic));
}

void slope_scalar_form(benchmark::State& state)
{
    problem p = data_set();
    for (auto _ : state)
        benchmark::DoNotOptimize(derr_fit(p.X, p.y, curve, df_C, p.par, 2, EsQuadratic));
}

void whole_simplex(benchmark::State& state)
{
    for (auto _ : state) {
        problem p = data_set();
        fits(p.X, p.y, curve, p.par, 1e-6, EsQuadratic);
        benchmark::DoNotOptimize(p.par);
    }
}

void whole_descent(benchmark::State& state)
{
    for (auto _ : state) {
        problem p = data_set();
        fitu(p.X, p.y, curve, df_C, p.par, 1e-6, EsQuadratic, BFGS);
        benchmark::DoNotOptimize(p.par);
    }
}

long evaluations;
double rosenbrock(matrix& x)
{
    ++evaluations;
    double const a = x.cell[0][0], b = x.cell[1][0];
    return 100 * (b - a * a) * (b - a * a) + (1 - a) * (1 - a);
}
double d_rosenbrock(matrix& x, int i)
{
    double const a = x.cell[0][0], b = x.cell[1][0];
    return i == 1 ? -400 * (b - a * a) * a - 2 * (1 - a) : 200 * (b - a * a);
}

template <class Search> void minimum(benchmark::State& state, Search search)
{
    evaluations = 0;
    for (auto _ : state) {
        matrix x("-1.2; 1");
        search(x);
        benchmark::DoNotOptimize(x);
    }
    state.counters["evaluations"] =
        benchmark::Counter(static_cast<double>(evaluations), benchmark::Counter::kAvgIterations);
}
void simplex_search(benchmark::State& state)
{
    minimum(state, [](matrix& x) { fmins(rosenbrock, x, 1e-8); });
}
void descent(benchmark::State& state)
{
    minimum(state, [](matrix& x) { fminu(rosenbrock, d_rosenbrock, x, 1e-8, BFGS); });
}

BENCHMARK(error_bare_loop)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(error_scalar_form)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(error_row_form)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(slope_scalar_form)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(whole_simplex)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(whole_descent)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(simplex_search)->Unit(benchmark::kMicrosecond);
BENCHMARK(descent)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
