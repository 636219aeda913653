#include <varnow/models/discrimination.h>

#include <varnow/containers/ordering.h>
#include <varnow/containers/sort_engine.h>
#include <varnow/containers/storage.h>
#include <varnow/numerics/statistics.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <memory>
#include <numeric>
#include <vector>

namespace varnow {

namespace {

bool zeros_and_ones(double const* y, std::size_t n)
{
    return std::all_of(y, y + n, [](double f) { return f == 0.0 || f == 1.0; });
}

// The observations by ascending score, tied ones at first anyhow among themselves. Lives while the
// two objects do.
class observations
{
public:
    std::size_t n = 0;
    double* x = nullptr;
    double* y = nullptr;
    double bads = 0.0;
    bool whole = false; // flags of 0 and 1 only, whose sums are exact in any order

    observations(matrix& scores, matrix& flags)
    {
        bool const fit = scores.rows == flags.rows && scores.cols == flags.cols;
        if (!fit || (scores.rows > 1 && scores.cols > 1)) {
            sort(scores, flags, Ascending, 0); // which refuses
            return;
        }
        n = static_cast<std::size_t>(scores.rows) * static_cast<std::size_t>(scores.cols);
        double const* const score = flat(scores, score_copy_);
        flag_ = flat(flags, flag_copy_);
        whole = zeros_and_ones(flag_, n);
        settled_ = std::any_of(score, score + n, [](double s) { return s != s; });
        // The sort's working memory then takes the sorted observations: fresh memory costs more
        // than most passes over it.
        words_ = detail::scratch<std::uint64_t>(2 * n);
        place_ = detail::scratch<int>(n);
        if (settled_)
            detail::sorted_positions(score, static_cast<int>(n), Ascending, place_.get());
        else
            detail::stable_positions(score, static_cast<int>(n), place_.get(), words_.get());
        x = reinterpret_cast<double*>(words_.get());
        y = x + n;
        for (std::size_t k = 0; k < n; ++k) x[k] = score[place_[k]];
        place_flags();
    }

    // Puts tied observations where `sort` puts them, in each run that holds different flags and for
    // which matters(first, end) is true.
    template <class F> void settle_ties(F matters)
    {
        if (settled_) return;
        std::vector<char> marked;
        each_mixed_run([&](std::size_t first, std::size_t end) {
            if (!matters(first, end)) return;
            marked.resize(n, 0);
            marked[first] = 1;
        });
        if (marked.empty()) return;
        if (whole) {
            detail::settle_flags(x, static_cast<int>(n), marked.data(), place_.get(), y);
        } else {
            detail::settle_repeats(x, static_cast<int>(n), marked.data(), place_.get());
            place_flags();
        }
    }
    void settle_ties()
    {
        settle_ties([](std::size_t, std::size_t) { return true; });
    }

    // Calls f(first, end) for each run of tied scores with different flags.
    template <class F> void each_mixed_run(F f) const
    {
        for (std::size_t i = 0, end; i < n; i = end) {
            bool mixed = false;
            for (end = i + 1; end < n && x[end] == x[i]; ++end) mixed |= y[end] != y[i];
            if (mixed) f(i, end);
        }
    }

private:
    static double const* flat(matrix const& v, std::vector<double>& copy)
    {
        if (v.rows < 1 || v.cols < 1) return nullptr;
        if (detail::straight_rows<double>(v.cell, v.cols, v.rows) == v.rows) return v.cell[0];
        for (int i = 0; i < v.rows; ++i) copy.push_back(v.cell[i][0]);
        return copy.data();
    }

    void place_flags()
    {
        for (std::size_t k = 0; k < n; ++k) y[k] = flag_[place_[k]];
        bads = std::accumulate(y, y + n, 0.0);
    }

    std::vector<double> score_copy_, flag_copy_;
    std::unique_ptr<std::uint64_t[]> words_;
    std::unique_ptr<int[]> place_;
    double const* flag_ = nullptr;
    bool settled_ = true;
};

// False, behind a refusal, for a row of several cells.
bool columns(matrix const& x, char const* cls, char const* routine)
{
    if (x.cols <= 1) return true;
    errormessage(cls, routine, "oczekiwane wektory kolumnowe", "");
    return false;
}

// Curves are functions that give their points from the first on.

auto cumulated(double const* y, double total)
{
    return [y, total, s = 0.0](std::size_t i) mutable { return (s += y[i]) / total; };
}

auto population(std::size_t n)
{
    return [n](std::size_t i) { return static_cast<double>(i + 1) / static_cast<double>(n); };
}

using curve = std::function<double(std::size_t)>;

// Rises in bads, rounded, equal steps.
curve ideal_by_count(std::size_t n, double bads)
{
    double const k = std::floor(bads + 0.5);
    if (!(k > 0.0 && k <= static_cast<double>(n))) return [](std::size_t) { return 1.0; };
    return [k](std::size_t i) {
        double const at = static_cast<double>(i + 1);
        return at < k ? at / k : 1.0;
    };
}

// That of the flags in descending order. With a NaN among them it is NaN throughout, in whatever
// order they stand.
curve ideal_by_values(double const* y, std::size_t n, double bads)
{
    if (bads > 0.0 && zeros_and_ones(y, n)) return ideal_by_count(n, bads);
    auto const falling = std::make_shared<std::vector<double>>(y, y + n);
    if (bads == bads) std::sort(falling->begin(), falling->end(), std::greater<double>());
    return [falling, c = cumulated(falling->data(), bads)](std::size_t i) mutable { return c(i); };
}

// Area under the first m points by steps of 1 / n.
template <class Curve> double area_under(Curve c, std::size_t m, double n)
{
    if (m == 0) return 0.0;
    double s = 0.0, last = 0.0;
    for (std::size_t i = 0; i < m; ++i) s += last = c(i);
    return (s - 0.5 * last) / n;
}

// x(i) and y(i) give cells.
template <class X, class Y> void level_ties(std::size_t n, X x, Y y)
{
    double const same = 1e-09;
    for (std::size_t i = 0, end; i < n; i = end) {
        double s = y(i);
        for (end = i + 1; end < n && std::fabs(x(end) - x(i)) <= same; ++end) s += y(end);
        if (end - i == 1) continue;
        double const level = s / static_cast<double>(end - i);
        for (std::size_t k = i; k < end; ++k) y(k) = level;
    }
}

struct separation
{
    double ks, score, goods, bads;
};

// Of flags 0 and 1: settles only ties within which the largest difference may lie. A run reaches
// at most what it would with its bads first.
void settle_ties_at_maximum(observations& o)
{
    double const goods = static_cast<double>(o.n) - o.bads;
    std::size_t next = 0;
    double b = 0.0, g = 0.0, most = 0.0; // the last difference is 0
    auto walk = [&](std::size_t end, bool within_ties) {
        for (; next < end; ++next) {
            b += o.y[next];
            g += 1.0 - o.y[next];
            if (!within_ties) most = std::max(most, b / o.bads - g / goods);
        }
    };
    std::vector<double> reach;
    o.each_mixed_run([&](std::size_t first, std::size_t end) {
        walk(first, false);
        double const g_before = g;
        walk(end - 1, true);
        walk(end, false);
        reach.push_back(b / o.bads - g_before / goods);
    });
    if (reach.empty()) return;
    walk(o.n, false);
    auto r = reach.begin();
    o.settle_ties([&](std::size_t, std::size_t) { return *r++ >= most; });
}

separation largest_separation(matrix& x, matrix& y, char const* routine)
{
    double const nan = __NAN<double>();
    separation best{nan, nan, nan, nan};
    observations o(x, y);
    if (!columns(x, "MATRIX", routine)) return best;
    if (o.whole)
        settle_ties_at_maximum(o);
    else
        o.settle_ties();
    double const goods = static_cast<double>(o.n) - o.bads;
    double b = 0.0, g = 0.0;
    for (std::size_t i = 0; i < o.n; ++i) {
        b += o.y[i];
        g += 1.0 - o.y[i];
        double const fb = b / o.bads, fg = g / goods;
        if (i == 0 || fb - fg > best.ks) best = {fb - fg, o.x[i], fg, fb};
        if (best.ks != best.ks) return {nan, nan, nan, nan};
    }
    return best;
}

} // namespace

double KS(matrix x, matrix y)
{
    return largest_separation(x, y, "double KS(matrix,matrix)").ks;
}

double KS_xy(matrix x, matrix y, double& sx, double& goods, double& bads)
{
    separation const s =
        largest_separation(x, y, "double KS_xy(matrix,matrix,double,double,double)");
    sx = s.score;
    goods = s.goods;
    bads = s.bads;
    return s.ks;
}

matrix CAP(matrix x, matrix y, int mode)
{
    sort(x, y, Ascending, 1);
    if (!columns(x, "MATRIX", "matrix CAP(matrix,matrix,int)")) return matrix();
    std::vector<double> flag;
    for (int i = 0; i < y.rows; ++i) flag.insert(flag.end(), y.cell[i], y.cell[i] + y.cols);
    std::size_t const n = flag.size();
    double const bads = std::accumulate(flag.begin(), flag.end(), 0.0);
    double const goods = static_cast<double>(n) - bads;
    auto u = population(n);
    auto model = cumulated(flag.data(), bads);
    curve ideal = mode == 1 ? ideal_by_count(n, bads) : ideal_by_values(flag.data(), n, bads);
    matrix r(static_cast<int>(n), 6);
    copynames_r2r(x, r);
    double g = 0.0, tail = 0.0;
    for (std::size_t i = 0; i < n; ++i) {
        g += 1.0 - flag[i];
        double const row[6] = {x.cell[i][0], u(i), model(i), ideal(i), 0.0, g / goods};
        std::copy(row, row + 6, r.cell[i]);
    }
    for (std::size_t i = n; i-- > 0;) {
        tail += flag[i];
        r.cell[i][4] = tail / static_cast<double>(n - i);
    }
    return r;
}

double AR(matrix x, matrix y, double range, int ideal, int ties, int rounded)
{
    observations o(x, y);
    if (!columns(x, "MATRIX", "double AR(matrix,matrix,double,int,int,int)"))
        return __NAN<double>();
    if (!(ties && o.whole)) o.settle_ties(); // levelled sums of whole flags know no order
    double const n = static_cast<double>(o.n), total_bads = o.bads;
    auto model_area = [&](std::size_t m) {
        if (ties)
            level_ties(
                o.n, [&o](std::size_t i) { return o.x[i]; },
                [&o](std::size_t i) -> double& { return o.y[i]; });
        return area_under(cumulated(o.y, total_bads), m, n);
    };
    if (range == 1.0 && ideal) {
        double const nb = rounded ? std::floor(total_bads + 0.5) : total_bads;
        double const base = 0.5, best = 1.0 - nb / n * 0.5;
        return (model_area(o.n) - base) / (best - base);
    }
    auto const u = population(o.n);
    std::size_t m = 0;
    while (m < o.n && u(m) <= range) ++m;
    double const base = area_under(u, m, n);
    double const best = area_under(
        ideal ? ideal_by_count(o.n, total_bads) : ideal_by_values(o.y, o.n, total_bads), m, n);
    return (model_area(m) - base) / (best - base);
}

double area(matrix const& c, int n)
{
    if (c.rows < 1 || c.cols < 1) return 0.0;
    double const total = sum(c);
    double const last = c.rows < c.cols ? c.cell[0][c.cols - 1] : c.cell[c.rows - 1][0];
    return (total - 0.5 * last) / n;
}

table TA(matrix x, matrix y, int bins)
{
    char const* const routine = "table TA(matrix,matrix,int)";
    observations o(x, y);
    if (!columns(x, "TABLE", routine)) return table();
    int const n = x.rows;
    if (bins < 1 || bins > n) {
        errormessage("TABLE", routine, "liczba przedzialow poza zakresem", "");
        return table();
    }
    o.settle_ties();
    double* const tail = o.y;
    for (int i = n - 1; i-- > 0;) tail[i] += tail[i + 1];
    int const step = n / bins;
    matrix r((n - 1) / step + 1, 5);
    char const* const names[5] = {"Score", "Count", "Bads", "Acceptance", "Quality"};
    std::copy(names, names + 5, r.cnames);
    for (int k = 0; k < r.rows; ++k) {
        int const i = k * step;
        double const rest = n - i;
        double const row[5] = {o.x[i], rest, tail[i], 1.0 - (i + 1) / static_cast<double>(n),
                               tail[i] / rest};
        std::copy(row, row + 5, r.cell[k]);
    }
    return table(r);
}

namespace {

// The information value; `weighted` multiplies the shares by the group's part of all observations.
double information(matrix& x, matrix& y, int k, bool weighted, char const* routine)
{
    observations o(x, y);
    if (k < 1) {
        errormessage("MATRIX", routine, "liczba grup mniejsza niz 1", "");
        return __NAN<double>();
    }
    std::size_t const n = o.n, groups = static_cast<std::size_t>(k);
    if (groups > n) return __NAN<double>(); // some group is empty: 0 times the logarithm of 0
    auto group = [=](std::uint64_t p) { return static_cast<std::size_t>(p * groups / n); };
    o.settle_ties([&](std::size_t first, std::size_t end) {
        return !o.whole || group(first) != group(end - 1);
    });
    std::vector<double> B(groups, 0.0), G(groups, 0.0), C(groups, 0.0);
    for (std::size_t p = 0; p < n; ++p) {
        std::size_t const g = group(p);
        B[g] += o.y[p];
        G[g] += 1.0 - o.y[p];
        C[g] += 1.0;
    }
    double const tb = std::accumulate(B.begin(), B.end(), 0.0);
    double const tg = std::accumulate(G.begin(), G.end(), 0.0);
    double s = 0.0;
    for (std::size_t g = 0; g < groups; ++g) {
        double const share = weighted ? C[g] / static_cast<double>(n) : 1.0;
        double const a = G[g] / tg * share, b = B[g] / tb * share;
        s += (std::log(a) - std::log(b)) * (a - b);
    }
    return s;
}

} // namespace

double IV(matrix x, matrix y, int k)
{
    return information(x, y, k, false, "double IV(matrix,matrix,int)");
}

double IVa(matrix x, matrix y, int k)
{
    return information(x, y, k, true, "double IVa(matrix,matrix,int)");
}

void del_rand_quality(matrix& x, matrix& y)
{
    auto refuse = [](char const* why) {
        errormessage("MATRIX", "void del_rand_quality(matrix,matrix)", why, "");
    };
    if (x.cols > 1 || y.cols > 1) return refuse("oczekiwane wektory kolumnowe");
    if (x.rows != y.rows || x.cols != y.cols) return refuse("wektory maja niezgodne wymiary");
    if (x.cols == 1)
        level_ties(
            static_cast<std::size_t>(x.rows), [&x](std::size_t i) { return x.cell[i][0]; },
            [&y](std::size_t i) -> double& { return y.cell[i][0]; });
}

} // namespace varnow
