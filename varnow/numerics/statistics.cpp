#include <varnow/numerics/statistics.h>

#include <varnow/containers/product_kernel.h>
#include <varnow/numerics/selection.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace varnow {

namespace {

int sample_size(matrix const& m)
{
    return m.rows == 1 ? m.cols : m.rows;
}

// A result of the right shape that bears the names of statistic S.
matrix labelled(matrix const& m, Text const& S)
{
    if (m.rows == 1) {
        matrix r(1, 1);
        copynames_r2r(m, r);
        r.cnames[0] = S;
        return r;
    }
    matrix r(1, m.cols);
    r.rnames[0] = S;
    copynames_c2c(m, r);
    return r;
}

// Folds W columns from column j on, row by row: each keeps its order of additions, and they run
// side by side.
template <int W, class F>
void fold_lanes(double const* const* row, int rows, int j, double* acc, F f)
{
    double a[W];
    for (int k = 0; k < W; ++k) a[k] = acc[j + k];
    for (int i = 0; i < rows; ++i) {
        double const* const x = row[i] + j;
        for (int k = 0; k < W; ++k) a[k] = f(a[k], x[k], j + k);
    }
    for (int k = 0; k < W; ++k) acc[j + k] = a[k];
}

// acc[j] = f(acc[j], value, j) over the values of each column j.
template <class F> void fold_columns(matrix const& m, double* acc, F f)
{
    int const rows_at_once = 256; // so that what is read of a row stays near for its next columns
    for (int i = 0; i < m.rows; i += rows_at_once) {
        double const* const* const row = m.cell + i;
        int const n = std::min(rows_at_once, m.rows - i);
        int j = 0;
        for (; j + 8 <= m.cols; j += 8) fold_lanes<8>(row, n, j, acc, f);
        for (; j + 2 <= m.cols; j += 2) fold_lanes<2>(row, n, j, acc, f);
        if (j < m.cols) fold_lanes<1>(row, n, j, acc, f);
    }
}

// The same for each sample; that of an object of one row is its row, and j is 0.
template <class F> void fold(matrix const& m, double* acc, F f)
{
    if (m.rows != 1) return fold_columns(m, acc, f);
    double a = acc[0];
    for (int j = 0; j < m.cols; ++j) a = f(a, m.cell[0][j], 0);
    acc[0] = a;
}

template <class F> matrix folded(matrix const& m, char const* S, double start, F f)
{
    matrix r = labelled(m, S);
    std::fill(r.cell[0], r.cell[0] + r.cols, start);
    fold(m, r.cell[0], f);
    return r;
}

double add(double a, double x, int)
{
    return a + x;
}

// Sums of squared deviations from the mean over n - 1, as `finish` turns them into the statistic.
template <class F> matrix spread(matrix const& m, char const* S, F finish)
{
    int const n = sample_size(m);
    matrix const centre = mean(m);
    double const* const c = centre.cell[0];
    matrix r = folded(m, S, n == 0 ? __NAN<double>() : 0.0, [c](double a, double x, int j) {
        double const d = x - c[j];
        return a + d * d;
    });
    for (int j = 0; j < r.cols; ++j) r.cell[0][j] = finish(r.cell[0][j] / (n - 1));
    return r;
}

template <class Before> matrix extreme(matrix const& m, char const* S, Before before)
{
    matrix r = labelled(m, S);
    bool const none = sample_size(m) == 0;
    for (int j = 0; j < r.cols; ++j) r.cell[0][j] = none ? __NAN<double>() : m.cell[0][j];
    fold(m, r.cell[0], [before](double a, double x, int) { return before(x, a) ? x : a; });
    return r;
}

} // namespace

matrix sum(matrix const& m)
{
    return folded(m, "SUM", 0.0, add);
}
matrix sumsqr(matrix const& m)
{
    return folded(m, "SUMSQR", 0.0, [](double a, double x, int) { return a + x * x; });
}
matrix prod(matrix const& m)
{
    return folded(m, "PROD", 1.0, [](double a, double x, int) { return a * x; });
}
matrix count(matrix const& m)
{
    return folded(m, "COUNT", 0.0,
                  [](double a, double x, int) { return a + (x == x ? 1.0 : 0.0); });
}
matrix mean(matrix const& m)
{
    matrix r = folded(m, "MEAN", 0.0, add);
    for (int j = 0; j < r.cols; ++j) r.cell[0][j] /= sample_size(m);
    return r;
}
matrix var(matrix const& m)
{
    return spread(m, "VAR", [](double v) { return v; });
}
matrix stdev(matrix const& m)
{
    return spread(m, "STDEV", [](double v) { return std::sqrt(v); });
}
matrix(min)(matrix const& m)
{
    return extreme(m, "MIN", [](double x, double least) { return x < least; });
}
matrix(max)(matrix const& m)
{
    return extreme(m, "MAX", [](double x, double most) { return x > most; });
}

namespace {

template <class F> matrix running(matrix const& m, double start, F f)
{
    matrix r(m.rows, m.cols);
    copynames(m, r);
    if (m.rows == 1 || m.cols == 1) {
        double a = start;
        for (int i = 0; i < m.rows; ++i)
            for (int j = 0; j < m.cols; ++j) r.cell[i][j] = a = f(a, m.cell[i][j]);
        return r;
    }
    std::vector<double> const first(static_cast<std::size_t>(m.cols), start);
    double const* above = first.data();
    for (int i = 0; i < m.rows; above = r.cell[i++])
        for (int j = 0; j < m.cols; ++j) r.cell[i][j] = f(above[j], m.cell[i][j]);
    return r;
}

} // namespace

matrix cumsum(matrix const& m)
{
    return running(m, 0.0, [](double a, double x) { return a + x; });
}
matrix cumprod(matrix const& m)
{
    return running(m, 1.0, [](double a, double x) { return a * x; });
}

namespace {

// Calls f(j, x) for each sample j on a copy that f may reorder. Columns are copied eight at a time,
// so that a wide row is not read again for each.
template <class F> void each_sample(matrix const& m, F f)
{
    std::size_t const n = static_cast<std::size_t>(sample_size(m));
    if (m.rows == 1) {
        std::vector<double> x(m.cell[0], m.cell[0] + m.cols);
        f(0, x.data());
        return;
    }
    int const lanes = std::min(8, m.cols);
    std::vector<double> x(n * static_cast<std::size_t>(lanes));
    for (int j = 0; j < m.cols; j += lanes) {
        int const k = std::min(lanes, m.cols - j);
        for (int i = 0; i < m.rows; ++i)
            for (int c = 0; c < k; ++c)
                x[static_cast<std::size_t>(c) * n + static_cast<std::size_t>(i)] = m.cell[i][j + c];
        for (int c = 0; c < k; ++c) f(j + c, x.data() + static_cast<std::size_t>(c) * n);
    }
}

double most_frequent(double const* x, int n)
{
    double best = 0.0;
    int most = 0;
    for (int i = 0, end; i < n; i = end) {
        end = i + 1;
        while (end < n && x[end] == x[i]) ++end;
        if (end - i <= most) continue;
        most = end - i;
        best = x[i];
    }
    return best;
}

// Where the quantile at p lies in a sample of n sorted values, counted from 0.
struct place
{
    bool exists;
    int below;
    double fraction;

    place(int n, double p) : exists(n > 0 && p >= 0.0 && p <= 1.0), below(0), fraction(0.0)
    {
        if (!exists) return;
        double const h = (n - 1) * p;
        below = static_cast<int>(h);
        fraction = h - below;
    }

    double read(double const* x) const
    {
        if (!exists) return __NAN<double>();
        if (fraction == 0.0) return x[below];
        return (1.0 - fraction) * x[below] + fraction * x[below + 1];
    }
};

std::vector<place> places(int n, std::vector<double> const& p)
{
    std::vector<place> at;
    at.reserve(p.size());
    for (double pk : p) at.emplace_back(n, pk);
    return at;
}

// The quantiles of every sample at the given places: store(k, j, value).
template <class Store>
void read_quantiles(matrix const& m, std::vector<place> const& at, Store store)
{
    std::vector<int> ranks;
    for (place const& q : at) {
        if (!q.exists) continue;
        ranks.push_back(q.below);
        if (q.fraction != 0.0) ranks.push_back(q.below + 1);
    }
    std::sort(ranks.begin(), ranks.end());
    ranks.erase(std::unique(ranks.begin(), ranks.end()), ranks.end());
    each_sample(m, [&](int j, double* x) {
        detail::put_in_place(x, sample_size(m), ranks);
        for (std::size_t k = 0; k < at.size(); ++k) store(static_cast<int>(k), j, at[k].read(x));
    });
}

matrix one_quantile(matrix const& m, double p, Text const& S)
{
    matrix r = labelled(m, S);
    read_quantiles(m, places(sample_size(m), {p}),
                   [&](int, int j, double value) { r.cell[0][j] = value; });
    return r;
}

Text quantile_name(double p)
{
    return "QUANTILE_" + dtot(p, 3);
}

} // namespace

matrix mode(matrix const& m)
{
    matrix r = labelled(m, "MODE");
    int const n = sample_size(m);
    each_sample(m, [&](int j, double* x) {
        detail::sort_sample(x, n);
        r.cell[0][j] = most_frequent(x, n);
    });
    return r;
}

matrix median(matrix const& m)
{
    return one_quantile(m, 0.5, "MEDIAN");
}

matrix quantile(matrix const& m, double p)
{
    return one_quantile(m, p, quantile_name(p));
}

matrix quantile(matrix const& m, matrix const& ps)
{
    auto refuse = [](char const* why) {
        errormessage("MATRIX", "matrix quantile(matrix,matrix)", why, "");
        return matrix();
    };
    if (ps.rows != 1 && ps.cols != 1) return refuse("oczekiwany wektor prawdopodobienstw");
    if (ps.rows == 0 || ps.cols == 0) return refuse("wektor prawdopodobienstw jest pusty");
    int const K = ps.rows * ps.cols;
    std::vector<double> p;
    for (int k = 1; k <= K; ++k) p.push_back(ps(k));
    bool const along_row = m.rows == 1;
    matrix r = along_row ? matrix(1, K) : matrix(K, m.cols);
    if (along_row)
        copynames_r2r(m, r);
    else
        copynames_c2c(m, r);
    for (int k = 0; k < K; ++k)
        (along_row ? r.cnames : r.rnames)[k] = quantile_name(p[static_cast<std::size_t>(k)]);
    read_quantiles(m, places(sample_size(m), p), [&](int k, int j, double value) {
        (along_row ? r.cell[0][k] : r.cell[k][j]) = value;
    });
    return r;
}

matrix hist(matrix const& m)
{
    int const k = m.rows <= 1 ? 1 : static_cast<int>(std::sqrt(static_cast<double>(m.rows)));
    matrix r(k, m.cols);
    copynames_c2c(m, r);
    for (int i = 0; i < k; ++i) r.rnames[i] = "HIST_" + itot(i + 1);
    if (m.rows <= 1) {
        r.ones();
        return r;
    }
    r.zeros();
    matrix const least = (min)(m), most = (max)(m);
    for (int i = 0; i < m.rows; ++i)
        for (int j = 0; j < m.cols; ++j) {
            double const lo = least.cell[0][j], hi = most.cell[0][j];
            double const width = hi > lo ? (hi - lo) / k : 1.0;
            double const bin = (m.cell[i][j] - lo) / width;
            if (bin >= 0.0) r.cell[bin > k - 1 ? k - 1 : static_cast<int>(bin)][j] += 1.0;
        }
    r.norm();
    return r;
}

namespace {

// The refusals that cov and cor of two columns share.
bool paired_columns(matrix const& a, matrix const& b, char const* routine)
{
    auto refuse = [routine](char const* why) {
        errormessage("MATRIX", routine, why, "");
        return false;
    };
    if (a.cols != 1 || b.cols != 1) return refuse("oczekiwane wektory kolumnowe");
    if (a.rows != b.rows) return refuse("wektory musza byc tej samej dlugosci");
    return true;
}

double covariance(matrix const& a, matrix const& b)
{
    double const ma = mean(a), mb = mean(b);
    double s = 0.0;
    for (int i = 0; i < a.rows; ++i) s += (a.cell[i][0] - ma) * (b.cell[i][0] - mb);
    return s / a.rows;
}

} // namespace

double cov(matrix const& a, matrix const& b)
{
    if (!paired_columns(a, b, "double cov(matrix,matrix)")) return __NAN<double>();
    return covariance(a, b);
}

double cor(matrix const& a, matrix const& b)
{
    if (!paired_columns(a, b, "double cor(matrix,matrix)")) return __NAN<double>();
    double const va = var(a), vb = var(b);
    return covariance(a, b) / std::sqrt(va * vb);
}

matrix cov(matrix const& m)
{
    // Means of columns also where the object has one row, unlike `mean`.
    std::vector<double> centre(static_cast<std::size_t>(m.cols), 0.0);
    fold_columns(m, centre.data(), add);
    for (double& c : centre) c /= m.rows;
    matrix r(m.cols, m.cols);
    copynames_c2r(m, r);
    copynames_c2c(m, r);
    detail::crossproduct(m.cell, m.rows, m.cols, centre.data(), r.cell);
    for (int i = 0; i < r.rows; ++i)
        for (int j = 0; j < r.cols; ++j) r.cell[i][j] /= m.rows;
    return r;
}

matrix cor(matrix const& m)
{
    matrix const v = cov(m);
    matrix r = v;
    for (int i = 0; i < v.rows; ++i)
        for (int j = 0; j < v.cols; ++j)
            r.cell[i][j] = v.cell[i][j] / std::sqrt(v.cell[i][i] * v.cell[j][j]);
    return r;
}

namespace {

matrix sum_where(matrix const& m, Vector const& flags, char const* S, char const* routine)
{
    if (flags.n != m.rows) {
        errormessage("MATRIX", routine, "wektor warunkowy ma nieprawidlowa dlugosc", "");
        return matrix();
    }
    matrix r(1, m.cols);
    copynames_c2c(m, r);
    r.rnames[0] = S;
    r.zeros();
    for (int i = 0; i < m.rows; ++i)
        if (flags.v[i] != 0)
            for (int j = 0; j < m.cols; ++j) r.cell[0][j] += m.cell[i][j];
    return r;
}

} // namespace

matrix meanif(matrix const& m, Vector const& flags)
{
    matrix r = sum_where(m, flags, "MEANIF", "matrix meanif(matrix,Vector)");
    auto const set = flags.n - std::count(flags.v, flags.v + flags.n, 0);
    r /= static_cast<double>(set);
    return r;
}

matrix sumif(matrix const& m, Vector const& flags)
{
    return sum_where(m, flags, "SUMIF", "matrix sumif(matrix,Vector)");
}

namespace {

template <class F> matrix summarised(matrix const& m, F f)
{
    matrix r = labelled(m, "SUMMARISE");
    matrix x(sample_size(m), 1);
    for (int j = 0; j < r.cols; ++j) {
        for (int i = 0; i < x.rows; ++i) x.cell[i][0] = m.rows == 1 ? m.cell[0][i] : m.cell[i][j];
        r.cell[0][j] = f(x);
    }
    return r;
}

} // namespace

matrix matrix::summarise(double (*f)(matrix const&)) const
{
    return summarised(*this, f);
}

matrix matrix::summarise(double (*f)(matrix const&, double), double p) const
{
    return summarised(*this, [f, p](matrix const& x) { return f(x, p); });
}

} // namespace varnow
