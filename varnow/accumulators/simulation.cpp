#include <varnow/accumulators/simulation.h>

#include <varnow/containers/bindump.h>
#include <varnow/containers/matrix_special.h>
#include <varnow/numerics/statistics.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <limits>
#include <memory>

namespace varnow {

namespace {

constexpr int stored = 20000;
double const infinity = std::numeric_limits<double>::infinity();

double square(double x)
{
    return x * x;
}

} // namespace

simulation::simulation() : bins(0), lo(0), hi(0), width(0), first(stored, 1), counts(0, 1)
{
    reset();
}

simulation::simulation(double from, double to, int cells)
    : bins(cells), lo(from), hi(to), width((to - from) / cells), first(stored, 1)
{
    if (bins < 0) {
        errormessage("SIMULATION", "simulation(double,double,int)", "ujemna liczba przedzialow",
                     "");
        bins = 0;
    }
    counts = matrix(bins, 1);
    reset();
}

void simulation::reset()
{
    n = 0;
    s1 = s2 = s3 = s4 = slog = sinv = 0.0;
    min_x = infinity;
    max_x = -infinity;
    first.zeros();
    counts.zeros();
}

void simulation::add(double x)
{
    if (n >= INT_MAX - 1) {
        if (n == INT_MAX) return;
        warningmessage("SIMULATION", "void add(double)", "nastepne wartosci nie beda liczone", "");
    }
    ++n;
    double const x2 = x * x, x3 = x2 * x;
    s1 += x;
    s2 += x2;
    s3 += x3;
    s4 += x3 * x;
    if (min_x > x) min_x = x;
    if (x > max_x) max_x = x;
    if (x > 0) slog += std::log(x);
    if (x != 0) sinv += 1 / x;
    if (n <= stored) {
        if (n > first.rows) first.resizec(stored, 1); // a file may hold the taken rows only
        first.cell[n - 1][0] = x;
    }
    int const cells = counts.rows;
    if (cells < 1) return;
    // Limited before it becomes an integer, which need not hold it; NaN fails the first test.
    double const k = (x - lo) / width + 1;
    counts.cell[!(k >= 1) ? 0 : k >= cells ? cells - 1 : static_cast<int>(k) - 1][0] += 1.0;
}

double simulation::gmean() const
{
    return std::exp(slog / n);
}

double simulation::var() const
{
    double const m = mean();
    return (s2 / n - m * m) * n / (n - 1.0);
}

double simulation::stdev() const
{
    return std::sqrt(var());
}

double simulation::skewness() const
{
    double const m = mean(), v = s2 / n - m * m;
    return (s3 / n - 3 * s2 / n * m + 2 * m * m * m) / std::pow(v, 1.5) *
           (std::sqrt((n - 1.0) * n) / (n - 2.0));
}

double simulation::kurtosis() const
{
    double const m = mean(), v = s2 / n - m * m;
    double const c = (s4 / n - 4 * s3 / n * m + 6 * s2 / n * m * m - 3 * square(m * m)) / square(v);
    return ((n + 1.0) * (c - 3) + 6) * (n - 1.0) / ((n - 2.0) * (n - 3.0));
}

matrix simulation::hist() const
{
    matrix r(counts.rows, 2);
    for (int k = 0; k < r.rows; ++k) {
        r.cell[k][0] = (k + 0.5) * width;
        r.cell[k][1] = counts.cell[k][0] / n;
    }
    return r;
}

double simulation::mode() const
{
    if (n >= first.rows) return varnow::mode(first);
    matrix values(n, 1);
    for (int i = 0; i < n; ++i) values.cell[i][0] = first.cell[i][0];
    return varnow::mode(values);
}

namespace {

struct closer
{
    void operator()(std::FILE* f) const { std::fclose(f); }
};
using file = std::unique_ptr<std::FILE, closer>;

file opened(Text const& name, char const* mode)
{
    return file(std::fopen(name.str, mode));
}

void warn(char const* routine, char const* why, Text const& name)
{
    warningmessage("SIMULATION", routine, why, "plik: " + name);
}

// f(x) for the real fields of the head in their order, as long as it gives true.
template <class S, class F> bool each_real(S& s, F f)
{
    return f(s.lo) && f(s.hi) && f(s.width) && f(s.s1) && f(s.s2) && f(s.s3) && f(s.s4) &&
           f(s.min_x) && f(s.max_x) && f(s.slog) && f(s.sinv);
}

// Beyond the usual number of rows, which merges leave, all are taken; below it, those that are.
bool sizes_agree(simulation const& s)
{
    int const rows = s.first.rows;
    return s.n >= 0 && s.bins >= 0 && s.first.cols == 1 && s.counts.cols == 1 &&
           s.counts.rows == s.bins &&
           (rows <= stored ? rows >= std::min(s.n, stored) : rows <= s.n);
}

// The last number may be cut short and still be one: a blank ends it.
bool ends_here(std::FILE* f)
{
    return std::getc(f) == EOF && std::fseek(f, -1, SEEK_END) == 0 && std::getc(f) == ' ';
}

} // namespace

void simulation::save(Text const& name) const
{
    file f = opened(name, "wb");
    if (!f) return;
    std::fprintf(f.get(), "%d %d ", n, bins);
    each_real(*this, [&](double x) {
        detail::write_number(f.get(), x);
        return true;
    });
    first.writebin(f.get());
    counts.writebin(f.get());
    bool const failed = std::ferror(f.get()) != 0;
    if (std::fclose(f.release()) != 0 || failed)
        warn("void save(Text)", "nieudany zapis do pliku", name);
}

void simulation::load(Text const& name)
{
    file const f = opened(name, "rb");
    if (!f) return;
    simulation s;
    bool const whole = detail::read_number(f.get(), s.n) && detail::read_number(f.get(), s.bins) &&
                       each_real(s, [&](double& x) { return detail::read_number(f.get(), x); }) &&
                       detail::read_dump(f.get(), s.first) &&
                       detail::read_dump(f.get(), s.counts) && sizes_agree(s) && ends_here(f.get());
    if (whole)
        *this = std::move(s);
    else
        warn("void load(Text)", "nieprawidlowa zawartosc pliku", name);
}

simulation& simulation::operator+=(simulation const& other)
{
    auto refuse = [this](char const* why) -> simulation& {
        errormessage("SIMULATION", "operator +=(simulation)", why, "");
        return *this;
    };
    bool const same = bins == other.bins && lo == other.lo && hi == other.hi;
    if (!same && n > 0) return refuse("Niekompatybilna wielkosc histogramow");
    if (other.n > INT_MAX - n) return refuse("przekroczona najwieksza liczba wartosci");

    matrix later = other.first;
    if (other.n < later.rows) later.resizec(other.n, 1);
    if (n < first.rows) first.resizec(n, 1);
    first &= later;
    if (first.rows < stored) first.resizec(stored, 1);

    n += other.n;
    s1 += other.s1;
    s2 += other.s2;
    s3 += other.s3;
    s4 += other.s4;
    slog += other.slog;
    sinv += other.sinv;
    min_x = std::min(min_x, other.min_x);
    max_x = std::max(max_x, other.max_x);
    if (same) {
        counts += other.counts;
    } else {
        bins = other.bins;
        lo = other.lo;
        hi = other.hi;
        width = other.width;
        counts = other.counts;
    }
    return *this;
}

} // namespace varnow
