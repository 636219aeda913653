// Grouped queries beside a copy of the table's cells, and levels beside the sort of the same
// column.
#include <varnow/analytics/grouping.h>
#include <varnow/analytics/pivot.h>
#include <varnow/containers/matrix_special.h>

#include <benchmark/benchmark.h>

#include <memory>
#include <random>
#include <string>

namespace {

using namespace varnow;

// 1,000,000 rows in 100 x 10 groups: two keys and an amount with two decimals.
table const& payments()
{
    static table const t = [] {
        int const n = 1000000;
        std::mt19937 source(1);
        table r(n, 3);
        r.cnames[0] = "branch";
        r.cnames[1] = "grade";
        r.cnames[2] = "amount";
        for (int i = 0; i < n; ++i) {
            r.cell[i][0] = "branch" + itot(static_cast<int>(source() % 100));
            r.cell[i][1] = itot(static_cast<int>(source() % 10));
            r.cell[i][2] = dtots(static_cast<int>(source() % 1000000) / 100.0);
        }
        return r;
    }();
    return t;
}

void copy_of_the_cells(benchmark::State& state)
{
    table const& t = payments();
    for (auto _ : state) {
        table r(t);
        benchmark::DoNotOptimize(r.cell);
    }
}
void groups(benchmark::State& state)
{
    for (auto _ : state) {
        table keys;
        std::unique_ptr<table[]> const g(payments().group_by(c("branch", "grade"), keys));
        benchmark::DoNotOptimize(g.get());
    }
}
void summary(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(
            payments()
                .summarise(c("branch", "grade"), "n=count(amount)", count, "m=mean(amount)", mean)
                .cell);
}
void groups_and_summary_in_steps(benchmark::State& state)
{
    for (auto _ : state) {
        table keys;
        std::unique_ptr<table[]> const g(payments().group_by(c("branch", "grade"), keys));
        table::summarise_stp(keys, g.get(), "n=count(amount)", count);
        table::summarise_stp(keys, g.get(), "m=mean(amount)", mean);
        benchmark::DoNotOptimize(keys.cell);
    }
}
BENCHMARK(copy_of_the_cells)->Unit(benchmark::kMillisecond);
BENCHMARK(groups)->Unit(benchmark::kMillisecond);
BENCHMARK(summary)->Unit(benchmark::kMillisecond);
BENCHMARK(groups_and_summary_in_steps)->Unit(benchmark::kMillisecond);

// 200,000 rows of as many levels as the argument says, beside the copy of that column.
struct column
{
    matrix numbers;
    table texts;

    explicit column(benchmark::State const& state) : numbers(200000, 1)
    {
        std::mt19937 source(2);
        for (int i = 0; i < numbers.rows; ++i)
            numbers.cell[i][0] = static_cast<int>(source() % static_cast<unsigned>(state.range(0)));
        texts = numbers;
    }
};

void copy_of_the_column(benchmark::State& state)
{
    column const x(state);
    for (auto _ : state) {
        table r(x.texts);
        benchmark::DoNotOptimize(r.cell);
    }
}
void pivot_of_numbers(benchmark::State& state)
{
    column const x(state);
    for (auto _ : state) benchmark::DoNotOptimize(pivot(x.numbers).cell);
}
void pivot_of_texts(benchmark::State& state)
{
    column const x(state);
    for (auto _ : state) benchmark::DoNotOptimize(pivot(x.texts).cell);
}
void means_of_levels(benchmark::State& state)
{
    column const x(state);
    for (auto _ : state) benchmark::DoNotOptimize(apply(x.numbers, x.texts, mean).cell);
}
void groups_of_a_column(benchmark::State& state)
{
    column const x(state);
    for (auto _ : state) {
        table keys;
        std::unique_ptr<table[]> const g(x.texts.group_by("", keys));
        benchmark::DoNotOptimize(g.get());
    }
}
#define OF_LEVELS(f) BENCHMARK(f)->Arg(50)->Arg(50000)->Unit(benchmark::kMillisecond)
OF_LEVELS(copy_of_the_column);
OF_LEVELS(pivot_of_numbers);
OF_LEVELS(pivot_of_texts);
OF_LEVELS(means_of_levels);
OF_LEVELS(groups_of_a_column);
#undef OF_LEVELS

void intervals(benchmark::State& state)
{
    matrix const x = rand(1000000, 1), breaks("0.1 0.2 0.3 0.4 0.5 0.6 0.7 0.8 0.9");
    for (auto _ : state) benchmark::DoNotOptimize(cut(x, breaks, 1).cell);
}
BENCHMARK(intervals)->Unit(benchmark::kMillisecond);

} // namespace
