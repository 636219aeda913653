// Measures of a million scores beside the standard sort of pairs of score and flag.
#include <varnow/containers/matrix_special.h>
#include <varnow/models/discrimination.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace {

using namespace varnow;

// A fifth of bads, more among low scores; 0 leaves the scores, another number rounds them to that
// many different ones.
struct scored
{
    matrix x, y;
    explicit scored(long different) : x(rand(1000000, 1)), y(rand(1000000, 1))
    {
        double const k = static_cast<double>(different);
        for (int i = 0; i < x.rows; ++i) {
            double& s = x.cell[i][0];
            y.cell[i][0] = y.cell[i][0] < 0.4 * (1 - s) ? 1 : 0;
            if (different > 0) s = std::floor(s * k) / k;
        }
    }
};

void sorted_pairs(benchmark::State& state)
{
    scored const data(state.range(0));
    for (auto _ : state) {
        std::vector<std::pair<double, double>> p;
        for (int i = 0; i < data.x.rows; ++i) p.emplace_back(data.x.cell[i][0], data.y.cell[i][0]);
        std::sort(p.begin(), p.end(),
                  [](auto const& a, auto const& b) { return a.first < b.first; });
        benchmark::DoNotOptimize(p.data());
    }
}
void ks(benchmark::State& state)
{
    scored const data(state.range(0));
    for (auto _ : state) benchmark::DoNotOptimize(KS(data.x, data.y));
}
void ar(benchmark::State& state)
{
    scored const data(state.range(0));
    for (auto _ : state) benchmark::DoNotOptimize(AR(data.x, data.y, 1.0, 1, 0, 0));
}
void ar_ties_levelled(benchmark::State& state)
{
    scored const data(state.range(0));
    for (auto _ : state) benchmark::DoNotOptimize(AR(data.x, data.y, 1.0, 1, 1, 0));
}
void ar_of_a_range(benchmark::State& state)
{
    scored const data(state.range(0));
    for (auto _ : state) benchmark::DoNotOptimize(AR(data.x, data.y, 0.3, 0, 0, 0));
}
void iv(benchmark::State& state)
{
    scored const data(state.range(0));
    for (auto _ : state) benchmark::DoNotOptimize(IV(data.x, data.y, 20));
}
#define SCORES(f)                                                                                  \
    BENCHMARK(f)->Arg(0)->Arg(1000000)->Arg(1000)->Arg(2)->Unit(benchmark::kMillisecond)
SCORES(sorted_pairs);
SCORES(ks);
SCORES(ar);
SCORES(ar_ties_levelled);
SCORES(ar_of_a_range);
SCORES(iv);
#undef SCORES

} // namespace
