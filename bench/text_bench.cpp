// Short texts against std::string, a million at a time, and numbers against the C library.
#include <varnow/core/format.h>
#include <varnow/core/parse.h>
#include <varnow/core/text.h>

#include <benchmark/benchmark.h>

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

namespace {

int const count = 1000000;

// Words of 3 to 12 characters, as labels and codes in files are.
std::vector<std::string> const& words()
{
    static std::vector<std::string> const r = [] {
        std::mt19937 g(7);
        std::vector<std::string> w(count);
        for (std::string& x : w)
            for (auto n = 3 + g() % 10; n > 0; --n) x += static_cast<char>('a' + g() % 26);
        return w;
    }();
    return r;
}

template <class S> std::vector<S> texts()
{
    std::vector<S> r;
    r.reserve(count);
    for (std::string const& w : words()) r.emplace_back(w.c_str());
    return r;
}

template <class S> void create(benchmark::State& state)
{
    words();
    for (auto _ : state) benchmark::DoNotOptimize(texts<S>().data());
}

template <class S> void create_empty(benchmark::State& state)
{
    for (auto _ : state) benchmark::DoNotOptimize(std::vector<S>(count).data());
}

template <class S> void copy(benchmark::State& state)
{
    std::vector<S> const from = texts<S>();
    for (auto _ : state) benchmark::DoNotOptimize(std::vector<S>(from).data());
}

template <class S> void assign(benchmark::State& state)
{
    std::vector<S> const from = texts<S>();
    std::vector<S> to(from.rbegin(), from.rend());
    for (auto _ : state) {
        for (std::size_t i = 0; i < from.size(); ++i) to[i] = from[i];
        benchmark::ClobberMemory();
    }
}

template <class S> void join(benchmark::State& state)
{
    std::vector<S> const a = texts<S>();
    for (auto _ : state)
        for (S const& x : a) benchmark::DoNotOptimize(x + a[0]);
}

template <class S> void less(benchmark::State& state)
{
    std::vector<S> const a = texts<S>();
    for (auto _ : state) {
        int n = 0;
        for (std::size_t i = 1; i < a.size(); ++i) n += a[i - 1] < a[i];
        benchmark::DoNotOptimize(n);
    }
}

template <class S> void equal(benchmark::State& state)
{
    std::vector<S> const a = texts<S>(), b = a;
    for (auto _ : state) {
        int n = 0;
        for (std::size_t i = 0; i < a.size(); ++i) n += a[i] == b[i];
        benchmark::DoNotOptimize(n);
    }
}

std::vector<double> const& numbers()
{
    static std::vector<double> const r = [] {
        std::mt19937_64 g(7);
        std::normal_distribution<double> normal(0, 1000);
        std::vector<double> v(count);
        for (double& x : v) x = normal(g);
        return v;
    }();
    return r;
}

std::vector<std::string> number_texts(int decimals)
{
    std::vector<std::string> r;
    char buffer[400];
    for (double x : numbers()) {
        std::snprintf(buffer, sizeof buffer, "%.*f", decimals, x);
        r.emplace_back(buffer);
        r.back().reserve(64);
    }
    return r;
}

template <class F> void print(benchmark::State& state, F f)
{
    char buffer[400];
    for (auto _ : state)
        for (double x : numbers()) benchmark::DoNotOptimize(f(buffer, x));
}

template <class F> void read(benchmark::State& state, F f)
{
    std::vector<std::string> const all = number_texts(static_cast<int>(state.range(0)));
    for (auto _ : state)
        for (std::string const& s : all) benchmark::DoNotOptimize(f(s));
}

#define PAIR(name)                                                                                 \
    BENCHMARK_TEMPLATE(name, varnow::Text)->Unit(benchmark::kMillisecond);                         \
    BENCHMARK_TEMPLATE(name, std::string)->Unit(benchmark::kMillisecond)

PAIR(create);
PAIR(create_empty);
PAIR(copy);
PAIR(assign);
PAIR(join);
PAIR(less);
PAIR(equal);

#undef PAIR

BENCHMARK_CAPTURE(print, format_fixed, [](char* to, double x) {
    return varnow::detail::format_fixed(to, x, 6, true);
})->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(print, to_chars, [](char* to, double x) {
    return std::to_chars(to, to + 400, x, std::chars_format::fixed, 6).ptr;
})->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(print, snprintf, [](char* to, double x) {
    return std::snprintf(to, 400, "%.6f", x);
})->Unit(benchmark::kMillisecond);

BENCHMARK_CAPTURE(read, parse_plain,
                  [](std::string const& s) {
                      double x;
                      char const* const end = s.data() + s.size();
                      return varnow::detail::parse_plain(s.data(), end, false, x) ? x : 0;
                  })
    ->Arg(6)
    ->Arg(14)
    ->Unit(benchmark::kMillisecond);
// With memory behind the number, as in a file's buffer.
BENCHMARK_CAPTURE(read, parse_plain_in_a_buffer,
                  [](std::string const& s) {
                      double x;
                      char const* const end = s.data() + s.size();
                      return varnow::detail::parse_plain(s.data(), end, false, x, end + 7) ? x : 0;
                  })
    ->Arg(6)
    ->Arg(14)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(read, from_chars,
                  [](std::string const& s) {
                      double x = 0;
                      std::from_chars(s.data(), s.data() + s.size(), x);
                      return x;
                  })
    ->Arg(6)
    ->Arg(14)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(read, strtod,
                  [](std::string const& s) { return std::strtod(s.c_str(), nullptr); })
    ->Arg(6)
    ->Arg(14)
    ->Unit(benchmark::kMillisecond);

} // namespace
