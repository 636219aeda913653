// Sparse matrices beside plain loops over arrays of the same entries.
#include <varnow/sparse/sparse.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <vector>

using namespace varnow;

namespace {

int const size = 1000;

// One entry in `every` positions; all for 1.
sparse scattered(int rows, int cols, int every, unsigned seed)
{
    std::mt19937 draw(seed);
    sparse s = spempty(rows, cols);
    for (int i = 1; i <= rows; ++i)
        for (int j = 1; j <= cols; ++j)
            if (every == 1 || draw() % static_cast<unsigned>(every) == 0)
                s(i, j) = static_cast<double>(draw() % 2000 + 1) / 700;
    return s;
}

// Filling and reading every position, row after row; the plain form writes the three arrays.
void Fill(benchmark::State& state)
{
    for (auto _ : state) {
        sparse s = spempty(size, size);
        if (state.range(0)) s.mkindex();
        for (int i = 1; i <= size; ++i)
            for (int j = 1; j <= size; ++j) s(i, j) = i + j;
        benchmark::DoNotOptimize(s.values);
    }
}
void FillByPlainArrays(benchmark::State& state)
{
    for (auto _ : state) {
        std::vector<int> row, column;
        std::vector<double> value;
        for (auto* v : {&row, &column}) v->reserve(size * size);
        value.reserve(size * size);
        for (int i = 1; i <= size; ++i)
            for (int j = 1; j <= size; ++j) {
                row.push_back(i);
                column.push_back(j);
                value.push_back(i + j);
            }
        benchmark::DoNotOptimize(value.data());
    }
}

// Reading at every position of a matrix with one entry in `range(0)`.
void Read(benchmark::State& state)
{
    sparse s = scattered(size, size, static_cast<int>(state.range(0)), 1);
    s.mkindex();
    for (auto _ : state) {
        double x = 0;
        for (int i = 1; i <= size; ++i)
            for (int j = 1; j <= size; ++j) x += s.get(i, j);
        benchmark::DoNotOptimize(x);
    }
}
// The same by a search of the standard library between the begin and end of each row.
void ReadByPlainSearch(benchmark::State& state)
{
    sparse s = scattered(size, size, static_cast<int>(state.range(0)), 1);
    s.mkindex();
    for (auto _ : state) {
        double x = 0;
        for (int i = 1; i <= size; ++i)
            for (int j = 1; j <= size; ++j) {
                int const first = std::max(s.row_begin[i], 0), last = std::max(s.row_end[i], 0);
                int const* const at = std::lower_bound(s.colidx + first, s.colidx + last, j);
                if (at != s.colidx + last && *at == j) x += s.values[at - s.colidx];
            }
        benchmark::DoNotOptimize(x);
    }
}

void Product(benchmark::State& state)
{
    int const n = static_cast<int>(state.range(0)), every = static_cast<int>(state.range(1));
    sparse const a = scattered(n, n, every, 1), b = scattered(n, n, every, 2);
    for (auto _ : state) benchmark::DoNotOptimize(mul(a, b).values);
}
// Row by row with dense sums, a list of the touched columns and a sort of it.
void ProductByPlainRows(benchmark::State& state)
{
    int const n = static_cast<int>(state.range(0)), every = static_cast<int>(state.range(1));
    sparse const a = scattered(n, n, every, 1);
    sparse b = scattered(n, n, every, 2);
    b.mkindex();
    for (auto _ : state) {
        std::vector<int> row, column, touched;
        std::vector<double> value, sums(static_cast<std::size_t>(n) + 1);
        std::vector<char> mark(sums.size());
        for (int p = 0; p < a.nnz;) {
            int const i = a.rowidx[p];
            for (; p < a.nnz && a.rowidx[p] == i; ++p) {
                int const k = a.colidx[p];
                for (int q = b.row_begin[k]; q < b.row_end[k]; ++q) {
                    std::size_t const j = static_cast<std::size_t>(b.colidx[q]);
                    if (!mark[j]) {
                        mark[j] = 1;
                        touched.push_back(b.colidx[q]);
                    }
                    sums[j] += a.values[p] * b.values[q];
                }
            }
            std::sort(touched.begin(), touched.end());
            for (int c : touched) {
                std::size_t const j = static_cast<std::size_t>(c);
                row.push_back(i);
                column.push_back(c);
                value.push_back(sums[j]);
                sums[j] = 0;
                mark[j] = 0;
            }
            touched.clear();
        }
        benchmark::DoNotOptimize(value.data());
    }
}

void Sum(benchmark::State& state)
{
    int const n = static_cast<int>(state.range(0)), every = static_cast<int>(state.range(1));
    sparse const a = scattered(n, n, every, 1), b = scattered(n, n, every, 2);
    for (auto _ : state) benchmark::DoNotOptimize((a + b).values);
}
// Through a grid of all positions.
void SumByGrid(benchmark::State& state)
{
    int const n = static_cast<int>(state.range(0)), every = static_cast<int>(state.range(1));
    sparse const a = scattered(n, n, every, 1), b = scattered(n, n, every, 2);
    for (auto _ : state) {
        std::vector<double> grid(static_cast<std::size_t>(n) * static_cast<std::size_t>(n));
        auto const at = [n](sparse const& s, int k) {
            return static_cast<std::size_t>((s.rowidx[k] - 1) * n + s.colidx[k] - 1);
        };
        for (int k = 0; k < a.nnz; ++k) grid[at(a, k)] = a.values[k];
        for (int k = 0; k < b.nnz; ++k) grid[at(b, k)] += b.values[k];
        sparse r = spempty(n, n);
        for (int i = 1, g = 0; i <= n; ++i)
            for (int j = 1; j <= n; ++j, ++g) {
                double const x = grid[static_cast<std::size_t>(g)];
                if (std::abs(x) > 1e-15) {
                    r.rowidx[r.nnz] = i;
                    r.colidx[r.nnz] = j;
                    r.values[r.nnz++] = x;
                }
            }
        benchmark::DoNotOptimize(r.values);
    }
}

void AddAssign(benchmark::State& state)
{
    sparse a = spones(size, size), b = a;
    for (auto _ : state) {
        a.addassign(b, 1e-9);
        benchmark::DoNotOptimize(a.values);
    }
}
void AddAssignByPlainLoop(benchmark::State& state)
{
    sparse a = spones(size, size), b = a;
    for (auto _ : state) {
        for (int k = 0; k < size * size; ++k) a.values[k] += 1e-9 * b.values[k];
        benchmark::DoNotOptimize(a.values);
    }
}

// The forward pass of a small network asks for such products.
void SmallProduct(benchmark::State& state)
{
    sparse const x = spones(1, 5);
    sparse w = spones(5, 8);
    w.mkindex();
    for (auto _ : state) benchmark::DoNotOptimize(mul(x, w).values);
}

BENCHMARK(Fill)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(FillByPlainArrays)->Unit(benchmark::kMillisecond);
BENCHMARK(Read)->Arg(1)->Arg(10)->Arg(100)->Unit(benchmark::kMillisecond);
BENCHMARK(ReadByPlainSearch)->Arg(1)->Arg(10)->Arg(100)->Unit(benchmark::kMillisecond);
#define PAIRS Args({1000, 100})->Args({1000, 10})->Args({300, 1})->Unit(benchmark::kMicrosecond)
BENCHMARK(Product)->PAIRS;
BENCHMARK(ProductByPlainRows)->PAIRS;
BENCHMARK(Sum)->PAIRS;
BENCHMARK(SumByGrid)->PAIRS;
BENCHMARK(AddAssign)->Unit(benchmark::kMicrosecond);
BENCHMARK(AddAssignByPlainLoop)->Unit(benchmark::kMicrosecond);
BENCHMARK(SmallProduct);

} // namespace
