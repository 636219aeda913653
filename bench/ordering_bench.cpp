// Sorting beside std::sort of (key, position) pairs, and sets beside the standard hash table.
#include <varnow/containers/ordering.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

using namespace varnow;

namespace {

constexpr int sorted_cells = 1000000;
constexpr int set_cells = 200000;
constexpr unsigned distinct_cells = 50000;

struct Keys
{
    char const* name;
    double (*at)(int i, std::uint64_t random);
};
Keys const keys[] = {
    {"random", [](int, std::uint64_t r) { return double(r >> 11) * 0x1p-53; }},
    {"normal", [](int, std::uint64_t r) { return std::log((double(r >> 11) + 0.5) * 0x1p-53); }},
    {"sorted", [](int i, std::uint64_t) { return double(i); }},
    {"reversed", [](int i, std::uint64_t) { return double(-i); }},
    {"sorted_ties", [](int i, std::uint64_t) { return double(i / 3); }},
    {"reversed_ties", [](int i, std::uint64_t) { return double(-(i / 3)); }},
    {"organ_pipe", [](int i, std::uint64_t) { return i < 500000 ? 2.0 * i : 1999999.0 - 2 * i; }},
    {"close", [](int i, std::uint64_t r) { return i ? 1 + double(r >> 32) * 0x1p-52 : -1e300; }},
    {"all_equal", [](int, std::uint64_t) { return 1.0; }},
    {"one_percent", [](int, std::uint64_t r) { return r % 100 ? 0.0 : 1.0; }},
    {"thousand", [](int, std::uint64_t r) { return double(r % 1000); }},
    {"rounded", [](int, std::uint64_t r) { return double(r % 1000000) / 1e6; }},
    {"half_missing", [](int, std::uint64_t r) { return r % 2 ? std::nan("") : double(r >> 11); }},
};

matrix cells(Keys const& k)
{
    std::mt19937_64 random(1);
    matrix m(sorted_cells, 1);
    for (int i = 0; i < sorted_cells; ++i) m.cell[i][0] = k.at(i, random());
    return m;
}

void order_numbers(benchmark::State& state, Keys k)
{
    matrix const x = cells(k);
    for (auto _ : state) benchmark::DoNotOptimize(order(x));
}

void sort_numbers(benchmark::State& state, Keys k)
{
    matrix const x = cells(k);
    for (auto _ : state) {
        state.PauseTiming();
        matrix y = x;
        state.ResumeTiming();
        benchmark::DoNotOptimize(sort(y));
    }
}

void sort_pairs(benchmark::State& state, Keys k)
{
    matrix const x = cells(k);
    using Pair = std::pair<double, int>;
    std::vector<Pair> const pairs = [&] {
        std::vector<Pair> r;
        for (int i = 0; i < x.rows; ++i) r.push_back({x.cell[i][0], i});
        return r;
    }();
    for (auto _ : state) {
        state.PauseTiming();
        std::vector<Pair> y = pairs;
        state.ResumeTiming();
        std::sort(y.begin(), y.end(),
                  [](Pair const& a, Pair const& b) { return a.first < b.first; });
        benchmark::DoNotOptimize(y.data());
    }
}

// Texts of the first letters and a number; "common" begins every text alike.
table texts(unsigned distinct, int n, unsigned seed, char const* common)
{
    std::mt19937 random(seed);
    table t(n, 1);
    for (int i = 0; i < n; ++i) {
        unsigned const r = unsigned(random()) % distinct * 2654435761u;
        t.cell[i][0] = common + Text(static_cast<int>(r & 0x7fffffff));
    }
    return t;
}

void sort_texts(benchmark::State& state, unsigned distinct, char const* common)
{
    table const x = texts(distinct, sorted_cells, 1, common);
    for (auto _ : state) {
        state.PauseTiming();
        table y = x;
        state.ResumeTiming();
        benchmark::DoNotOptimize(sort(y));
    }
}

void sort_views(benchmark::State& state, unsigned distinct, char const* common)
{
    table const x = texts(distinct, sorted_cells, 1, common);
    using Pair = std::pair<std::string_view, int>;
    for (auto _ : state) {
        std::vector<Pair> y;
        for (int i = 0; i < x.rows; ++i) y.push_back({x.cell[i][0].str, i});
        std::sort(y.begin(), y.end());
        benchmark::DoNotOptimize(y.data());
    }
}

matrix numbers(unsigned seed)
{
    std::mt19937 random(seed);
    matrix m(set_cells, 1);
    for (int i = 0; i < set_cells; ++i) m.cell[i][0] = unsigned(random()) % distinct_cells / 7.0;
    return m;
}
table texts(unsigned seed)
{
    return texts(distinct_cells, set_cells, seed, "client ");
}

template <class A, class F> void on_sets(benchmark::State& state, A (*make)(unsigned), F f)
{
    A const a = make(1), b = make(2);
    for (auto _ : state) benchmark::DoNotOptimize(f(a, b));
}

double key(double x)
{
    return x;
}
std::string_view key(Text const& x)
{
    return {x.str, std::size_t(x.len)};
}

template <class A> int standard_match(A const& a, A const& b)
{
    std::unordered_map<decltype(key(a.cell[0][0])), int> first;
    for (int i = 0; i < b.rows; ++i) first.emplace(key(b.cell[i][0]), i + 1);
    std::vector<int> r;
    for (int i = 0; i < a.rows; ++i) {
        auto const found = first.find(key(a.cell[i][0]));
        r.push_back(found == first.end() ? 0 : found->second);
    }
    return r.back();
}

template <class A> void register_sets(char const* kind, A (*make)(unsigned))
{
    auto add = [&](char const* name, auto f) {
        benchmark::RegisterBenchmark((std::string(name) + "/" + kind).c_str(),
                                     [=](benchmark::State& state) { on_sets(state, make, f); })
            ->Unit(benchmark::kMillisecond);
    };
    add("unique", [](A const& a, A const&) { return unique(a).rows; });
    add("match", [](A const& a, A const& b) { return match(a, b).n; });
    add("iselement", [](A const& a, A const& b) { return iselement(a, b).n; });
    add("setdiff", [](A const& a, A const& b) { return setdiff(a, b).rows; });
    add("setintersect", [](A const& a, A const& b) { return setintersect(a, b).rows; });
    add("setunion", [](A const& a, A const& b) { return setunion(a, b).rows; });
    add("setequal", [](A const& a, A const& b) { return setequal(a, b); });
    add("unordered_map_match", [](A const& a, A const& b) { return standard_match(a, b); });
}

bool const registered = [] {
    for (Keys const& k : keys) {
        std::string const name = k.name;
        for (auto const& [what, f] :
             {std::make_pair("order/", order_numbers), std::make_pair("sort/", sort_numbers),
              std::make_pair("std_sort_pairs/", sort_pairs)}) {
            if (what[1] == 't' && name == "half_missing") continue; // no order for std::sort
            benchmark::RegisterBenchmark((what + name).c_str(), f, k)
                ->Unit(benchmark::kMillisecond);
        }
    }
    struct Kind
    {
        char const* name;
        unsigned distinct;
        char const* common;
    };
    for (Kind k : {Kind{"random", 0x7fffffff, ""}, Kind{"common_start", 0x7fffffff, "client no. "},
                   Kind{"thousand", 1000, ""}}) {
        benchmark::RegisterBenchmark((std::string("sort_texts/") + k.name).c_str(), sort_texts,
                                     k.distinct, k.common)
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark((std::string("std_sort_views/") + k.name).c_str(), sort_views,
                                     k.distinct, k.common)
            ->Unit(benchmark::kMillisecond);
    }
    register_sets<matrix>("numbers", numbers);
    register_sets<table>("texts", texts);
    return true;
}();

} // namespace
