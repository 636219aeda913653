#include <varnow/numerics/smoothing.h>

#include <varnow/containers/product_kernel.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace varnow {

namespace {

constexpr int most_degree = 5;

double refuse_degree(char const* routine)
{
    errormessage("MATRIX", routine, "zle wywolanie funkcji wewnetrznej", "");
    return __NAN<double>();
}

// (2k + 1) (2m)!^2 / ((2m + k + 1)! (2m - k)!), whose factorials alone overflow from m = 43 on.
double weight_factor(int k, int m)
{
    std::int64_t const n = 2 * std::int64_t(m);
    double f = 2.0 * k + 1;
    for (int j = 0; j <= k; ++j) {
        if (j < k && n - j > 0) f *= static_cast<double>(n - j);
        if (n + j + 1 > 0) f /= static_cast<double>(n + j + 1);
    }
    return f;
}

// The weights of a window: w(t, i) = the sum over k of f_k * p_k(t) * p_k(i).
class gram_weights
{
public:
    gram_weights(int degree, int m) : m_(m)
    {
        for (int k = 0; k <= degree; ++k) {
            std::vector<double> p, scaled;
            double const f = weight_factor(k, m);
            for (int i = -m; i <= m; ++i) p.push_back(fun_p(k, i, m));
            for (double x : p) scaled.push_back(f * x);
            p_.push_back(p);
            scaled_.push_back(scaled);
        }
    }

    /// Those of point i for the `count` points from t on.
    void column(int t, int count, int i, double* w) const
    {
        std::fill(w, w + count, 0.0);
        for (std::size_t k = 0; k < p_.size(); ++k)
            detail::add_multiple(count, p_[k][at(i)], &scaled_[k][at(t)], w);
    }

private:
    std::size_t at(int i) const
    {
        int const position = i + m_;
        return static_cast<std::size_t>(position);
    }

    int m_;
    std::vector<std::vector<double>> p_, scaled_;
};

} // namespace

double fun_eps(int k, int m)
{
    double const x = m;
    switch (k) {
    case 0:
        return 1;
    case 1:
        return 1 / x;
    case 2:
        return 3 / (x * (2 * x - 1));
    case 3:
        return 5 / ((x - 1) * x * (2 * x - 1));
    case 4:
        return 35 / ((x - 1) * 2 * x * (2 * x - 1) * (2 * x - 3));
    case 5:
        return 63 / ((x - 1) * 2 * x * (x - 2) * (2 * x - 1) * (2 * x - 3));
    default:
        return refuse_degree("double fun_eps(int,int)");
    }
}

double fun_delta(int k, int j, int m)
{
    if (j == k) return 1;
    if (k > most_degree) return refuse_degree("double fun_delta(int,int,int)");
    if (j < 0 || j > k) return 0;
    double const x = m;
    switch (10 * k + j) {
    case 20:
        return -(x + 1) * x / 3;
    case 31:
        return -(3 * x * x + 3 * x - 1) / 5;
    case 40:
        return 3.0 / 35.0 * x * (x * x - 1) * (x + 2);
    case 42:
        return -(6 * x * x + 6 * x - 5) / 7;
    case 51:
        return (15 * x * x * x * x + 30 * x * x * x - 35 * x * x - 50 * x + 12) / 63;
    case 53:
        return -5.0 / 9.0 * (2 * x * x + 2 * x - 3);
    default:
        return 0;
    }
}

double fun_p(int k, int i, int m)
{
    if (k == 0) return 1;
    double const eps = fun_eps(k, m);
    double s = 0;
    for (int j = 0; j <= k; ++j) s += fun_delta(k, j, m) * std::pow(static_cast<double>(i), j);
    return eps * s;
}

double factor(int n)
{
    double f = 1;
    for (int i = 2; i <= n && std::isfinite(f); ++i) f *= i;
    return f;
}

double fun_w(int degree, int m, int t, int i)
{
    double w = 0;
    for (int k = 0; k <= degree; ++k) w += weight_factor(k, m) * fun_p(k, t, m) * fun_p(k, i, m);
    return w;
}

matrix smooth(matrix const& x, int degree, int points)
{
    auto refuse = [](char const* why) {
        errormessage("MATRIX", "matrix smooth(matrix,int,int)", why, "");
        return matrix();
    };
    if (x.cols > 1 || (x.cols < 1 && x.rows > 0)) return refuse("oczekiwany wektor kolumnowy");
    if (points % 2 == 0 || points < 1)
        return refuse("oczekiwana nieparzysta liczba punktow do usredniania");
    if (points > x.rows) return refuse("liczba punktow do usredniania przekracza dlugosc danych");
    if (degree > most_degree) return refuse("stopien wielomianu przekracza 5");

    int const n = x.rows, m = (points - 1) / 2;
    gram_weights const weights(degree, m);
    // The last windows of a panel may lie beyond the data.
    std::ptrdiff_t const padded = std::ptrdiff_t(n) + detail::panel_width();
    detail::work_space const data(padded), w(points);
    for (int i = 0; i < n; ++i) data[i] = x.cell[i][0];
    std::fill(data + n, data + padded, 0.0);
    matrix r(n, 1);

    // Cells side by side, each with its sum over the window in the window's order.
    constexpr int together = 1024;
    double s[together];
    auto put = [&](int from, int count) {
        for (int i = 0; i < count; ++i) r.cell[from + i][0] = s[i];
    };

    // The ends: each cell has weights of its own.
    for (int t = -m; t < 0; t += together) {
        int const count = std::min(together, -t);
        std::fill(s, s + count, 0.0);
        for (int i = -m; i <= m; ++i) {
            weights.column(t, count, i, w);
            detail::add_multiple(count, data[m + i], w, s);
        }
        put(m + t, count);
    }
    // Row t of the weights is row -t read from its end.
    for (int t = -m; t < 0; t += together) {
        int const count = std::min(together, -t);
        std::fill(s, s + count, 0.0);
        for (int i = -m; i <= m; ++i) {
            weights.column(t, count, -i, w);
            detail::add_multiple(count, data[n - 1 - m + i], w, s);
        }
        std::reverse(s, s + count);
        put(n - m - t - count, count);
    }

    for (int i = -m; i <= m; ++i) weights.column(0, 1, i, w + (m + i));
    int const width = detail::panel_width();
    for (int from = m; from < n - m; from += width) {
        std::fill(s, s + width, 0.0);
        detail::add_windows(points, w, data + (from - m), s);
        put(from, std::min(width, n - m - from));
    }
    return r;
}

} // namespace varnow
