#include <varnow/accumulators/quantiles.h>

#include <varnow/containers/matrix_special.h>
#include <varnow/numerics/root_engine.h>
#include <varnow/numerics/statistics.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <limits>

namespace varnow {

namespace {

constexpr int table_rows = 100000, bootstrap_at = 10000, bootstrap_samples = 100;
double const infinity = std::numeric_limits<double>::infinity();

bool open_below(double p)
{
    return p < 0.05;
}
bool open_above(double p)
{
    return p > 0.95;
}
constexpr double open_end = 1e20;
constexpr int guide_stretches = 1 << 15;

void warn(char const* routine, char const* why)
{
    warningmessage("QUANTILES", routine, why, "");
}

} // namespace

void quantiles::reset(double probability)
{
    tab.resize(table_rows, 2);
    tab.clear(1);
    tab.ones();
    p = probability;
    frozen = n = used = below = above = 0;
    sigma = lo = hi = 0.0;
    guide_.clear();
}

void quantiles::add(double x)
{
    if (n >= INT_MAX - 1) {
        if (n == INT_MAX) return;
        warn("void add(double)", "No further values are counted!");
    }
    ++n;
    if (n <= table_rows) {
        insert(x);
        if (n == bootstrap_at) first_window();
        if (n == table_rows) {
            --n;
            range_update();
            ++n;
            remove_extremes();
        }
        return;
    }
    if (x < lo) {
        ++below;
    } else if (x > hi) {
        ++above;
    } else {
        if (!frozen && used >= table_rows) {
            --n;
            range_update();
            ++n;
            remove_extremes();
        }
        if (!frozen && used < table_rows)
            insert(x);
        else
            increase(x);
    }
}

void quantiles::first_window()
{
    if (tab.rows < bootstrap_at) return;
    matrix c(bootstrap_at, 1), B(bootstrap_samples, 1);
    for (int i = 0; i < bootstrap_at; ++i) c.cell[i][0] = tab.cell[i][0];
    for (int k = 0; k < bootstrap_samples; ++k)
        B.cell[k][0] = quantile(c.sample_n(bootstrap_at, 1), p);
    double const m = mean(B), d = stdev(B);
    sigma = 100 * d; // the standard error grows by the root of the 10,000 values
    lo = open_below(p) ? -open_end : m - 4 * d;
    hi = open_above(p) ? open_end : m + 4 * d;
}

void quantiles::range_update()
{
    double const r = result(), s = sigma / std::sqrt(static_cast<double>(n));
    if (open_below(p))
        lo = -open_end;
    else if (r - 4 * s > lo)
        lo = r - 4 * s;
    if (open_above(p))
        hi = open_end;
    else if (r + 4 * s < hi)
        hi = r + 4 * s;
}

void quantiles::insert(double x)
{
    if (used < 0 || used >= tab.rows) return;
    double* const row = tab.cell[used++];
    row[0] = x;
    row[1] = 1.0;
}

void quantiles::increase(double x)
{
    if (tab.rows < 1) return;
    int const last = std::max(rows_in_use(), 1) - 1, at = first_not_below(x, last);
    double* const row = tab.cell[at];
    row[1] += 1.0;
    if (at == last && x > row[0]) row[0] = x;
}

int quantiles::first_not_below(double x, int last) const
{
    double* const* const row = tab.cell;
    if (last == 0 || !(row[0][0] < x)) return 0;
    int from = 1, to = last;
    double const stretch = (x - guide_from_) * guide_scale_;
    if (stretch >= 0 && stretch < guide_stretches && !guide_.empty()) {
        int const* const g = &guide_[static_cast<std::size_t>(stretch)];
        // The guide is believed as far as the rows bear it out: they may have been written to.
        if (g[1] <= last && g[0] > 0 && row[g[0] - 1][0] < x && row[g[1]][0] >= x) {
            from = g[0];
            to = g[1];
            if (row[from][0] >= x) return from; // repeated values fill whole stretches
        }
    }
    // Halved without a branch, which nobody could predict.
    int left = to - from;
    while (left > 0) {
        int const half = (left + 1) / 2;
        from = row[from + half - 1][0] < x ? from + half : from;
        left -= half;
    }
    return from;
}

void quantiles::make_guide()
{
    guide_.clear();
    guide_from_ = tab.cell[0][0];
    guide_scale_ = guide_stretches / (T_max() - guide_from_);
    if (!(guide_scale_ > 0) || !std::isfinite(guide_scale_)) return;
    guide_.assign(guide_stretches + 1, used);
    int next = 0;
    for (int i = 0; i < used; ++i) {
        double const stretch = (tab.cell[i][0] - guide_from_) * guide_scale_;
        for (; next <= guide_stretches && stretch >= next; ++next)
            guide_[static_cast<std::size_t>(next)] = i;
    }
}

void quantiles::remove_extremes()
{
    int kept = 0;
    for (int i = 0, rows = rows_in_use(); i < rows; ++i) {
        double const value = tab.cell[i][0], times = tab.cell[i][1];
        if (value < lo) {
            below = detail::truncated(below + times);
        } else if (value > hi) {
            above = detail::truncated(above + times);
        } else {
            tab.cell[kept][0] = value;
            tab.cell[kept++][1] = times;
        }
    }
    used = kept;
    if (used < table_rows || frozen) return;
    prepare();
    put_prepared(tab);
    frozen = 1;
    make_guide();
}

int quantiles::rows_in_use() const
{
    return std::max(0, std::min(used, tab.rows));
}

double quantiles::T_min() const
{
    double least = __NAN<double>();
    for (int i = 0, rows = rows_in_use(); i < rows; ++i)
        if (!(tab.cell[i][0] >= least)) least = std::fmin(tab.cell[i][0], least);
    return least;
}

double quantiles::T_max() const
{
    double most = __NAN<double>();
    for (int i = 0, rows = rows_in_use(); i < rows; ++i)
        if (!(tab.cell[i][0] <= most)) most = std::fmax(tab.cell[i][0], most);
    return most;
}

namespace {

// One turn of a digest: a bijection of what was there and of the cell, so that a change of one cell
// always shows.
std::uint64_t stirred(std::uint64_t digest, double cell)
{
    std::uint64_t bits;
    std::memcpy(&bits, &cell, sizeof bits);
    return ((digest << 26 | digest >> 38) ^ bits) * 0x9E3779B97F4A7C15u;
}

} // namespace

std::uint64_t quantiles::digest() const
{
    // Two chains, which run side by side.
    std::uint64_t values = 1, counts = stirred(stirred(stirred(2, frozen), used), below);
    for (int i = 0, rows = rows_in_use(); i < rows; ++i) {
        values = stirred(values, tab.cell[i][0]);
        counts = stirred(counts, tab.cell[i][1]);
    }
    return (values << 32 | values >> 32) ^ counts;
}

void quantiles::prepare() const
{
    std::uint64_t const now = digest();
    if (now == prepared_digest_) return;
    std::size_t const rows = static_cast<std::size_t>(rows_in_use());
    if (rows > prepared_.capacity()) {
        // Neither the former rows nor room for more of them are needed beside the new ones.
        std::vector<entry>().swap(prepared_);
        prepared_.reserve(rows);
    }
    prepared_.resize(rows);
    double* const* row = tab.cell;
    for (entry& e : prepared_) {
        e = {(*row)[0], (*row)[1]};
        ++row;
    }
    if (!frozen) {
        auto const numbers = std::partition(prepared_.begin(), prepared_.end(),
                                            [](entry const& e) { return e.value == e.value; });
        std::sort(prepared_.begin(), numbers,
                  [](entry const& a, entry const& b) { return a.value < b.value; });
    }
    double cum = below;
    for (entry& e : prepared_) e.upto = cum += e.upto;
    prepared_digest_ = now;
}

void quantiles::prepare_table(matrix& out) const
{
    if (frozen) {
        out = tab;
        return;
    }
    prepare();
    out.resize(static_cast<int>(prepared_.size()), 2);
    out.clear(1);
    put_prepared(out);
}

void quantiles::put_prepared(matrix& out) const
{
    double cum = below;
    double* const* row = out.cell;
    for (entry const& e : prepared_) {
        (*row)[0] = e.value;
        (*row)[1] = e.upto - cum;
        cum = e.upto;
        ++row;
    }
}

double quantiles::result() const
{
    prepare();
    return prepared_result();
}

double quantiles::cdf(double x) const
{
    prepare();
    return prepared_cdf(x);
}

double quantiles::prepared_result() const
{
    char const* const routine = "double result()";
    double const t = (n - 1.0) * p + 1;
    if (prepared_.empty() || !(t > below)) {
        warn(routine, "Range warning 1!");
        if (!prepared_.empty()) return prepared_.front().value;
        return tab.rows > 0 ? tab.cell[0][0] : __NAN<double>();
    }
    auto const at = std::lower_bound(prepared_.begin(), prepared_.end(), t,
                                     [](entry const& e, double rank) { return e.upto < rank; });
    if (at == prepared_.end()) {
        warn(routine, "Range warning 2!");
        return prepared_.back().value;
    }
    if (at == prepared_.begin()) return at->value;
    entry const& before = at[-1];
    double const a = (at->upto - t) / (at->upto - before.upto);
    // Where nothing is to be mixed the row's value stands, which infinities and rounding would
    // lose.
    if (a == 0.0 || before.value == at->value) return at->value;
    return a * before.value + (1 - a) * at->value;
}

double quantiles::prepared_cdf(double x) const
{
    char const* const routine = "double cdf(double)";
    if (std::isnan(x)) return __NAN<double>();
    if (prepared_.empty()) return static_cast<double>(below) / n;
    if (x < prepared_.front().value) {
        if (below > 0) warn(routine, "Range warning 1!");
        return 0.0;
    }
    if (x > prepared_.back().value) {
        if (above > 0) warn(routine, "Range warning 2!");
        return 1.0;
    }
    auto const at = std::lower_bound(prepared_.begin(), prepared_.end(), x,
                                     [](entry const& e, double value) { return e.value < value; });
    if (at->value == x) return at->upto / n;
    if (at == prepared_.begin()) return static_cast<double>(below) / n; // there are only NaN
    entry const& before = at[-1];
    // NaN where the row is infinite or NaN itself.
    double const share = (at->value - x) / (at->value - before.value);
    return (at->upto - (at->upto - before.upto) * (share <= 1 ? share : 1.0)) / n;
}

quantiles2::quantiles2(int slots) : count(0), p(0.5)
{
    reset(slots);
}

void quantiles2::reset(int slots)
{
    capacity = std::max(slots, 0);
    items.clear();
    items.resize(static_cast<std::size_t>(capacity), quantiles(0.5));
    usable = Vector();
}

quantiles2& quantiles2::operator+=(quantiles const& q)
{
    auto refuse = [this](char const* why) -> quantiles2& {
        errormessage("QUANTILES2", "operator +=(quantiles)", why, "");
        return *this;
    };
    if (count < 0 || count >= static_cast<int>(items.size())) return refuse("Out of range!");
    if (count > 0 && q.p != p) return refuse("Incompatible p!");
    p = q.p;
    items[static_cast<std::size_t>(count++)] = q;
    Vector flags = vzeros(count);
    std::copy_n(usable.v, std::min(usable.n, count), flags.v);
    flags.v[count - 1] = 1;
    usable = flags;
    return *this;
}

int quantiles2::filled() const
{
    return std::max(0, std::min(count, static_cast<int>(items.size())));
}

bool quantiles2::is_usable(int item) const
{
    return item < usable.n && usable.v[item] != 0;
}

void quantiles2::prepare() const
{
    for (int i = 0; i < filled(); ++i)
        if (is_usable(i)) item(i).prepare();
}

double quantiles2::prepared_cdf(double x) const
{
    double sum = 0.0;
    int added = 0;
    for (int i = 0; i < filled(); ++i) {
        if (!is_usable(i)) continue;
        sum += item(i).prepared_cdf(x);
        ++added;
    }
    return sum / added;
}

double quantiles2::cdf(double x) const
{
    prepare();
    return prepared_cdf(x);
}

namespace {

// The number of values, as far as an int holds it.
int as_int(std::int64_t values)
{
    return static_cast<int>(std::min<std::int64_t>(values, INT_MAX));
}

bool rises_through_zero(double fa, double fb)
{
    return fa <= 0 && fb >= 0;
}

} // namespace

template <class F> std::int64_t quantiles2::simulations(F wanted) const
{
    std::int64_t sum = 0;
    for (int i = 0; i < filled(); ++i)
        if (wanted(i)) sum += item(i).n;
    return sum;
}

std::int64_t quantiles2::used() const
{
    return simulations([this](int i) { return is_usable(i); });
}
std::int64_t quantiles2::all() const
{
    return simulations([](int) { return true; });
}

int quantiles2::simulations_used() const
{
    return as_int(used());
}
int quantiles2::simulations_all() const
{
    return as_int(all());
}

void quantiles2::usable_range(double& a, double& b) const
{
    a = infinity;
    b = -infinity;
    for (int i = 0; i < filled(); ++i) {
        if (!is_usable(i)) continue;
        a = std::fmin(a, item(i).T_min());
        b = std::fmax(b, item(i).T_max());
    }
}

double quantiles2::qfzero(double a, double b, double tol) const
{
    constexpr double finest = std::numeric_limits<double>::epsilon();
    auto limited = [](double x) { return std::max(std::min(x, 1e300), -1e300); };
    prepare();
    auto const f = [this](double x) { return prepared_cdf(x) - p; };
    a = limited(a);
    b = limited(b);
    double const fa = f(a), fb = f(b);
    if (!rises_through_zero(fa, fb) && !rises_through_zero(fb, fa)) {
        errormessage("QUANTILES2", "double qfzero(double,double,double)", "Sign error!", "");
        return __NAN<double>();
    }
    return fa == 0 ? a : detail::close_in(f, a, fa, b, fb, tol >= finest ? tol : finest);
}

void quantiles2::search_range(double& a, double& b)
{
    usable = vzeros(filled());
    for (int i = 0; i < usable.n; ++i) {
        quantiles const& q = item(i);
        q.prepare();
        // Shares on the far sides of the smallest and the largest value.
        bool const encloses = !q.prepared_.empty() && q.below <= p * q.n &&
                              q.prepared_.back().upto >= p * q.n && q.T_min() <= q.T_max();
        usable.v[i] = encloses;
    }
    if (sum(usable) == 0) {
        errormessage("QUANTILES2", "void search_range(double,double)", "Range not found!", "");
        return;
    }
    usable_range(a, b);
    if (prepared_cdf(a) > p) a = std::nextafter(a, -infinity);
    if (prepared_cdf(b) < p) b = std::nextafter(b, infinity);
}

double quantiles2::result()
{
    char const* const routine = "double result()";
    if (filled() < 1) return __NAN<double>();
    double a, b;
    usable_range(a, b);
    if (!rises_through_zero(equation(a), equation(b))) search_range(a, b);
    double const x = qfzero(a, b, 1e-9), reached = cdf(x);
    if (used() < all())
        warningmessage("QUANTILES2", routine, "Number of simulations was reduced!",
                       "all=" + Text(all()) + ", used=" + Text(used()));
    if (std::fabs(reached - p) > 1e-6)
        warningmessage("QUANTILES2", routine, "Result inaccurate!",
                       "p=" + Text(p) + ", cdf(res)=" + Text(reached));
    return x;
}

} // namespace varnow
