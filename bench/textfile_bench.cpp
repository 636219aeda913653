// Delimited text of 1,000,000 x 10, beside the bare bytes and plain loops over the C library.
#include <varnow/containers/matrix.h>
#include <varnow/containers/table.h>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <vector>

using namespace varnow;

namespace {

char const* const number_file = "textfile_bench_numbers.txt";
char const* const text_file = "textfile_bench_texts.txt";
char const* const out_file = "textfile_bench_out.txt";

struct closer
{
    void operator()(std::FILE* f) const { std::fclose(f); }
};
using stream = std::unique_ptr<std::FILE, closer>;

// The objects, written to the files that the readers take and removed at the end.
struct samples
{
    matrix numbers{1000000, 10};
    table texts{1000000, 10};

    samples()
    {
        std::mt19937_64 random(1);
        std::normal_distribution<double> normal(0, 10);
        for (int i = 0; i < numbers.rows; ++i)
            for (int j = 0; j < numbers.cols; ++j) {
                numbers.cell[i][j] = normal(random);
                char word[16];
                std::size_t const length = random() % 13;
                for (std::size_t k = 0; k < length; ++k) word[k] = static_cast<char>('a' + k);
                texts.cell[i][j] = Text(word, length);
            }
        numbers.writetxt(number_file);
        texts.writetxt(text_file);
    }
    ~samples()
    {
        for (char const* file : {number_file, text_file, out_file}) std::remove(file);
    }
};

samples const& data_set()
{
    static samples const s;
    return s;
}

void bytes_in(benchmark::State& state)
{
    data_set();
    std::vector<char> block(1 << 18);
    for (auto _ : state) {
        stream const f(std::fopen(number_file, "rb"));
        std::size_t total = 0;
        while (std::size_t const n = std::fread(block.data(), 1, block.size(), f.get())) total += n;
        state.counters["MB"] = static_cast<double>(total) / 1e6;
    }
}

void fgetc_and_atof(benchmark::State& state)
{
    matrix m(1000000, 10);
    data_set();
    for (auto _ : state) {
        stream const f(std::fopen(number_file, "rb"));
        char field[256];
        int i = -1, j = 0, n = 0;
        for (int c; (c = std::fgetc(f.get())) != EOF;) {
            if (c != '\t' && c != '\n') {
                field[n++] = static_cast<char>(c);
                continue;
            }
            field[n] = 0;
            n = 0;
            if (i >= 0) m.cell[i][j] = std::atof(field);
            j = c == '\n' ? 0 : j + 1;
            i += c == '\n';
        }
        benchmark::DoNotOptimize(m.cell);
    }
}

template <class A> void read_new(benchmark::State& state, char const* name)
{
    data_set();
    for (auto _ : state) {
        A a;
        a.readtxt(name);
        benchmark::DoNotOptimize(a.cell);
    }
}
void numbers_in(benchmark::State& state)
{
    read_new<matrix>(state, number_file);
}
void texts_in(benchmark::State& state)
{
    read_new<table>(state, text_file);
}
void numbers_in_as_texts(benchmark::State& state)
{
    read_new<table>(state, number_file);
}
void numbers_in_again(benchmark::State& state)
{
    data_set();
    matrix m;
    m.readtxt(number_file);
    for (auto _ : state) m.readtxt(number_file);
}

void fprintf_out(benchmark::State& state)
{
    matrix const& m = data_set().numbers;
    for (auto _ : state) {
        stream const f(std::fopen(out_file, "wt"));
        for (int i = 0; i < m.rows; ++i)
            for (int j = 0; j < m.cols; ++j)
                std::fprintf(f.get(), "%f%c", m.cell[i][j], j < 9 ? '\t' : '\n');
    }
}

void bytes_out(benchmark::State& state)
{
    std::vector<char> const block(1 << 18, 'x');
    data_set();
    for (auto _ : state) {
        stream const f(std::fopen(out_file, "wb"));
        for (int k = 0; k < 390; ++k) std::fwrite(block.data(), 1, block.size(), f.get());
    }
}

template <class A> void write(benchmark::State& state, A const& a)
{
    for (auto _ : state) a.writetxt(out_file);
}
void numbers_out(benchmark::State& state)
{
    write(state, data_set().numbers);
}
void texts_out(benchmark::State& state)
{
    write(state, data_set().texts);
}

BENCHMARK(bytes_in)->Unit(benchmark::kMillisecond);
BENCHMARK(numbers_in)->Unit(benchmark::kMillisecond);
BENCHMARK(numbers_in_again)->Unit(benchmark::kMillisecond);
BENCHMARK(texts_in)->Unit(benchmark::kMillisecond);
BENCHMARK(numbers_in_as_texts)->Unit(benchmark::kMillisecond);
BENCHMARK(fgetc_and_atof)->Unit(benchmark::kMillisecond);
BENCHMARK(bytes_out)->Unit(benchmark::kMillisecond);
BENCHMARK(numbers_out)->Unit(benchmark::kMillisecond);
BENCHMARK(texts_out)->Unit(benchmark::kMillisecond);
BENCHMARK(fprintf_out)->Unit(benchmark::kMillisecond);

} // namespace
