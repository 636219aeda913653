// Selecting, binding and turning, each beside a bare loop over arrays that allocates its result.
#include <varnow/containers/slicing.h>

#include <benchmark/benchmark.h>

#include <memory>
#include <random>
#include <vector>

using namespace varnow;

namespace {

matrix numbers(int rows, int cols)
{
    matrix a(rows, cols);
    for (int i = 0; i < rows; ++i)
        for (int j = 0; j < cols; ++j) a.cell[i][j] = i + 0.5 * j;
    return a;
}

table words(int rows, int cols)
{
    table a(rows, cols);
    for (int i = 0; i < rows; ++i)
        for (int j = 0; j < cols; ++j) a.cell[i][j] = Text(i % 1000 + j);
    return a;
}

Vector coin_flags(int n)
{
    std::mt19937 source(1);
    Vector v(n);
    for (int i = 0; i < n; ++i) v.v[i] = static_cast<int>(source() >> 31);
    return v;
}

using array = std::unique_ptr<double[]>;

array bare(int rows, int cols)
{
    return array(new double[static_cast<std::size_t>(rows) * static_cast<std::size_t>(cols)]);
}

// Both sides of a pair take the sizes from the arguments: rows, columns.
#define SIZES ->Args({1000000, 1})->Args({1000000, 10})->Args({1000, 1000})

void bm_filter(benchmark::State& state)
{
    matrix const a = numbers(int(state.range(0)), int(state.range(1)));
    Vector const flags = coin_flags(a.rows);
    for (auto _ : state) benchmark::DoNotOptimize(filter(a, flags).cell);
}
BENCHMARK(bm_filter) SIZES;

void bm_filter_bare(benchmark::State& state)
{
    matrix const a = numbers(int(state.range(0)), int(state.range(1)));
    Vector const flags = coin_flags(a.rows);
    double const* const from = a.cell[0];
    int const cols = a.cols;
    for (auto _ : state) {
        int kept = 0;
        for (int i = 0; i < a.rows; ++i) kept += flags.v[i];
        array r = bare(kept, cols);
        double* to = r.get();
        for (std::ptrdiff_t i = 0; i < a.rows; ++i)
            if (flags.v[i])
                for (int j = 0; j < cols; ++j) *to++ = from[i * cols + j];
        benchmark::DoNotOptimize(r.get());
    }
}
BENCHMARK(bm_filter_bare) SIZES;

void bm_bind(benchmark::State& state)
{
    matrix const a = numbers(int(state.range(0)), int(state.range(1))), b = a.col(1);
    for (auto _ : state) benchmark::DoNotOptimize((a | b).cell);
}
BENCHMARK(bm_bind) SIZES;

void bm_bind_bare(benchmark::State& state)
{
    matrix const a = numbers(int(state.range(0)), int(state.range(1)));
    std::vector<double> const b(static_cast<std::size_t>(a.rows), 1.0);
    double const* const from = a.cell[0];
    int const cols = a.cols;
    for (auto _ : state) {
        array r = bare(a.rows, cols + 1);
        double* to = r.get();
        for (std::ptrdiff_t i = 0; i < a.rows; ++i) {
            for (int j = 0; j < cols; ++j) *to++ = from[i * cols + j];
            *to++ = b[static_cast<std::size_t>(i)];
        }
        benchmark::DoNotOptimize(r.get());
    }
}
BENCHMARK(bm_bind_bare) SIZES;

void bm_columns(benchmark::State& state)
{
    matrix const a = numbers(1000000, 10);
    Vector const idx = state.range(0) == 1 ? c(5) : c(2, 9, 4, 5);
    for (auto _ : state) benchmark::DoNotOptimize(col(a, idx).cell);
}
BENCHMARK(bm_columns)->Arg(1)->Arg(4);

void bm_transpose(benchmark::State& state)
{
    matrix const a = numbers(int(state.range(0)), int(state.range(1)));
    for (auto _ : state) benchmark::DoNotOptimize((~a).cell);
}
BENCHMARK(bm_transpose) SIZES;

void bm_transpose_bare(benchmark::State& state)
{
    matrix const a = numbers(int(state.range(0)), int(state.range(1)));
    std::ptrdiff_t const rows = a.rows, cols = a.cols;
    double const* const from = a.cell[0];
    for (auto _ : state) {
        array r = bare(a.cols, a.rows);
        for (std::ptrdiff_t i = 0; i < rows; ++i)
            for (std::ptrdiff_t j = 0; j < cols; ++j)
                r[static_cast<std::size_t>(j * rows + i)] = from[i * cols + j];
        benchmark::DoNotOptimize(r.get());
    }
}
BENCHMARK(bm_transpose_bare) SIZES;

void bm_in_place(benchmark::State& state, void (*change)(matrix&))
{
    matrix a = numbers(1000, 1000);
    for (auto _ : state) {
        change(a);
        benchmark::DoNotOptimize(a.cell);
    }
}
BENCHMARK_CAPTURE(bm_in_place, tr, [](matrix& a) { a.tr(); });
BENCHMARK_CAPTURE(bm_in_place, rot90, [](matrix& a) { a.rot90(); });
BENCHMARK_CAPTURE(bm_in_place, fliplr, [](matrix& a) { a.fliplr(); });
BENCHMARK_CAPTURE(bm_in_place, reshape, [](matrix& a) {
    a.reshape(a.cols == 1000 ? 2000 : 1000, a.cols == 1000 ? 500 : 1000);
});

void bm_flags(benchmark::State& state)
{
    Vector const flags = coin_flags(1000000);
    for (auto _ : state)
        benchmark::DoNotOptimize(nindex(-find((!flags && flags) || flags), 1000000).v);
}
BENCHMARK(bm_flags);

void bm_texts(benchmark::State& state, void (*work)(table const&))
{
    table const a = words(100000, 10);
    for (auto _ : state) work(a);
}
BENCHMARK_CAPTURE(bm_texts, copy, [](table const& a) { benchmark::DoNotOptimize(table(a).cell); });
BENCHMARK_CAPTURE(bm_texts, transpose, [](table const& a) { benchmark::DoNotOptimize((~a).cell); });
BENCHMARK_CAPTURE(bm_texts, filter, [](table const& a) {
    benchmark::DoNotOptimize(filter(a, coin_flags(a.rows)).cell);
});

} // namespace
