// The logistic estimators on 200,000 rows of 20 columns, one thread, beside R's glm.fit on the same
// data (where R is installed; it reports the processor time of the fit alone).
#include <varnow/varnow.h>

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>

using namespace varnow;

namespace {

struct problem
{
    matrix X, y;
};

problem const& data_set()
{
    static problem const p = [] {
        int const n = 200000, c = 20;
        problem made;
        made.X = randn(n, c);
        made.y = matrix(n, 1);
        matrix const u = rand(n, 1);
        for (int i = 0; i < n; ++i) {
            double z = -1.0;
            for (int j = 0; j < c; ++j) z += made.X.cell[i][j] * (j % 5 - 2) * 0.3;
            made.y.cell[i][0] = u.cell[i][0] < 1.0 / (1.0 + std::exp(-z)) ? 1.0 : 0.0;
        }
        return made;
    }();
    return p;
}

void staged(benchmark::State& state)
{
    problem const& p = data_set();
    for (auto _ : state) benchmark::DoNotOptimize(logistic_par(p.X, p.y, 1, 1e-6));
}

void all_rows(benchmark::State& state)
{
    problem const& p = data_set();
    for (auto _ : state) benchmark::DoNotOptimize(logistic_par2(p.X, p.y, 1, 1e-6));
}

void newton(benchmark::State& state)
{
    problem const& p = data_set();
    for (auto _ : state) benchmark::DoNotOptimize(logistic_par1(p.X, p.y));
}

void glm_fit(benchmark::State& state)
{
    problem const& p = data_set();
    (p.X | p.y).writetxt("logistic_bench.txt", 0, 0, 0);
    char const* const script = "Rscript --vanilla -e 'd <- matrix(scan(\"logistic_bench.txt\", "
                               "quiet = TRUE), ncol = 21, byrow = TRUE); "
                               "X <- cbind(d[, 1:20], 1); y <- d[, 21]; "
                               "cat(system.time(glm.fit(X, y, family = "
                               "binomial()))[[\"user.self\"]])' > logistic_bench.out 2>/dev/null";
    for (auto _ : state) {
        double seconds = 0.0;
        FILE* out = std::system(script) == 0 ? std::fopen("logistic_bench.out", "r") : nullptr;
        if (!out || std::fscanf(out, "%lf", &seconds) != 1) {
            if (out) std::fclose(out);
            state.SkipWithError("R is not installed");
            break;
        }
        std::fclose(out);
        state.SetIterationTime(seconds);
    }
    std::remove("logistic_bench.txt");
    std::remove("logistic_bench.out");
}

BENCHMARK(staged)->Unit(benchmark::kMillisecond);
BENCHMARK(all_rows)->Unit(benchmark::kMillisecond);
BENCHMARK(newton)->Unit(benchmark::kMillisecond);
BENCHMARK(glm_fit)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(1);

} // namespace

BENCHMARK_MAIN();
