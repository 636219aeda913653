#include <varnow/models/logistic.h>

#include <varnow/containers/compare.h>
#include <varnow/containers/matrix_arithmetic.h>
#include <varnow/containers/matrix_special.h>
#include <varnow/containers/slicing.h>
#include <varnow/models/row_kernels.h>
#include <varnow/numerics/solve.h>
#include <varnow/numerics/statistics.h>

#include <omp.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace varnow {

namespace {

using numbers = std::vector<double>;

constexpr int most_turns = 500;
constexpr double ridge = 0.1;
constexpr double log_2 = 0.6931471805599453;
// From here on the exponentials are left out.
constexpr double far = 20.0;

void refuse_sizes(char const* routine)
{
    errormessage("MATRIX", routine, "niezgodne wymiary macierzy", "");
}

double product(numbers const& a, numbers const& b)
{
    double s = 0.0;
    for (std::size_t j = 0; j < a.size(); ++j) s += a[j] * b[j];
    return s;
}

double largest(numbers const& a)
{
    double most = std::fabs(a[0]);
    for (double x : a) most = std::fabs(x) > most ? std::fabs(x) : most;
    return most;
}

// Every stride-th row of the data with what the search knows of it. One pass over the data serves a
// turn: the next direction is r - gamma d with the gradient r of the turn before, so its products
// with the rows follow from those of r, taken in the gradient's own pass, and those of d. Likewise
// z follows each step. Now and then both are taken from the data anew, lest rounding adds up.
class sample
{
public:
    sample(matrix const& X, matrix const& y, int stride, int threads)
        : cols_(X.cols), threads_(threads)
    {
        for (int i = 0; i < X.rows; i += stride) {
            row_.push_back(X.cell[i]);
            s_.push_back(2.0 * y.cell[i][0] - 1.0);
        }
        for (numbers* column : {&z_, &along_, &toward_, &weight_}) column->resize(row_.size());
    }

    /// Adds the gradient of the log-likelihood at beta to g, and prepares a direction of r and d.
    void add_gradient(numbers const& beta, numbers const& r, numbers const& d, numbers& g)
    {
        bool const anew = turn_++ % turns_between == 0;
        std::size_t const m = g.size();
        int const n = rows();
#pragma omp parallel num_threads(threads_)
        {
            numbers own(m, 0.0), power(block), pull(block);
#pragma omp for schedule(static)
            for (int b = 0; b < blocks(n); ++b) {
                int const from = b * block, count = std::min(block, n - from);
                double const* const* const row = &row_[at(from)];
                double *const z = &z_[at(from)], *const along = &along_[at(from)];
                if (anew) {
                    detail::row_products(row, count, cols_, beta.data(), z);
                    detail::row_products(row, count, cols_, d.data(), along);
                } else
                    for (int i = 0; i < count; ++i) z[i] += step_ * along[i];
                detail::row_products(row, count, cols_, r.data(), &toward_[at(from)]);
                weigh(from, count, power.data(), pull.data());
                detail::add_rows(row, count, cols_, pull.data(), own.data());
            }
#pragma omp critical
            for (std::size_t j = 0; j < m; ++j) g[j] += own[j];
        }
    }

    /// Turns to the direction r - gamma d; returns the curvature of minus the log-likelihood along
    /// it.
    double turn_to(double gamma, int threads)
    {
        int const n = rows();
        double total = 0.0;
#pragma omp parallel num_threads(threads)
        {
            double own = 0.0;
#pragma omp for schedule(static)
            for (int b = 0; b < blocks(n); ++b) {
                int const from = b * block, count = std::min(block, n - from);
                own += detail::turn_and_weigh(count, gamma, &toward_[at(from)], &weight_[at(from)],
                                              &along_[at(from)]);
            }
#pragma omp atomic
            total += own;
        }
        return total;
    }

    void step(double alpha)
    {
        step_ = alpha;
    }

private:
    static constexpr int block = 256;
    static constexpr int turns_between = 32;
    static std::size_t at(int i)
    {
        return static_cast<std::size_t>(i);
    }
    static int blocks(int n)
    {
        return (n + block - 1) / block;
    }
    int rows() const
    {
        return static_cast<int>(row_.size());
    }

    // Each row's pull on the gradient and its weight in the curvature.
    void weigh(int from, int count, double* power, double* pull)
    {
        double const *const z = &z_[at(from)], *const s = &s_[at(from)];
        double* const weight = &weight_[at(from)];
        for (int i = 0; i < count; ++i) power[i] = std::exp(z[i] * s[i]);
        detail::weigh(count, z, s, power, far, pull, weight);
        // The weight by power is that of z only for targets of 0 and 1.
        for (int i = 0; i < count; ++i) {
            if (s[i] == 1.0 || s[i] == -1.0 || z[i] >= far || z[i] <= -far) continue;
            double const e = std::exp(z[i]);
            weight[i] = 1.0 / (1.0 / e + e + 2.0);
        }
    }

    int cols_, threads_, turn_ = 0;
    double step_ = 0.0;
    std::vector<double const*> row_;
    numbers s_, z_, along_, toward_, weight_;
};

struct search
{
    numbers beta, g, d;

    explicit search(int m) : beta(static_cast<std::size_t>(m)), g(beta), d(beta)
    {
        matrix const start = varnow::randn(1, m);
        std::copy(start.cell[0], start.cell[0] + m, d.begin());
    }

    // One turn; returns the length of the step along d. The direction is built from the gradient of
    // the turn before, so that the first one stays the random start.
    double turn(sample& rows, int curvature_threads)
    {
        numbers const r = g;
        for (std::size_t j = 0; j < g.size(); ++j) g[j] = -ridge * beta[j];
        rows.add_gradient(beta, r, d, g);

        numbers change(g);
        for (std::size_t j = 0; j < g.size(); ++j) change[j] = g[j] - r[j];
        double const gamma = product(g, change) / product(d, change);
        for (std::size_t j = 0; j < g.size(); ++j) d[j] = r[j] - gamma * d[j];

        double const curvature = rows.turn_to(gamma, curvature_threads);
        double const alpha = product(g, d) / (ridge * product(d, d) + curvature);
        for (std::size_t j = 0; j < g.size(); ++j) beta[j] += alpha * d[j];
        rows.step(alpha);
        return alpha;
    }

    matrix column() const
    {
        matrix par(static_cast<int>(beta.size()), 1);
        for (std::size_t j = 0; j < beta.size(); ++j) par.cell[j][0] = beta[j];
        return par;
    }
};

bool same_rows(matrix const& X, matrix const& y)
{
    return y.rows == X.rows && (y.rows == 0 || y.cols > 0);
}

double parameter(matrix const& p, int k)
{
    return p.cols == 1 && k <= p.rows ? p.cell[k - 1][0] : p(k);
}

} // namespace

matrix logistic_par(matrix const& X, matrix const& y, int threads, double eps)
{
    if (!same_rows(X, y)) {
        refuse_sizes("matrix logistic_par(matrix,matrix,int,double)");
        return matrix();
    }
    int const m = X.cols + 1;
    threads = std::max(threads, 1);
    search s(m);
    double const q = std::floor(std::log(X.rows / (10.0 * m)) / log_2);
    double const even = std::fmod(q, 2.0) == 0.0 ? q : q - 1.0;
    int stride = std::max(static_cast<int>(std::pow(2.0, even)), 1);
    for (int k = 1; stride > 0; stride /= 4) {
        double const bound = k == 1 ? 10.0 * eps : eps;
        sample rows(X, y, stride, threads);
        for (;;) {
            double const alpha = s.turn(rows, threads);
            ++k;
            if (largest(s.d) <= bound / std::fabs(alpha) || k > most_turns) break;
        }
    }
    return s.column();
}

matrix logistic_par2(matrix const& X, matrix const& y, int threads, double eps)
{
    if (!same_rows(X, y)) {
        refuse_sizes("matrix logistic_par2(matrix,matrix,int,double)");
        return matrix();
    }
    threads = std::max(threads, 1);
    search s(X.cols + 1);
    sample rows(X, y, 1, threads);
    for (int k = 1; k <= most_turns;) {
        numbers moved = s.beta;
        s.turn(rows, omp_get_max_threads());
        for (std::size_t j = 0; j < moved.size(); ++j) moved[j] = s.beta[j] - moved[j];
        ++k;
        if (largest(moved) <= eps) break;
    }
    return s.column();
}

matrix logistic_par1(matrix const& X, matrix const& y)
{
    if (!same_rows(X, y)) {
        refuse_sizes("matrix logistic_par1(matrix,matrix)");
        return matrix();
    }
    int const n = X.rows, m = X.cols + 1;
    matrix beta = zeros(m, 1);
    numbers x(static_cast<std::size_t>(m), 1.0), v(x), step(x);
    for (int k = 1; k <= most_turns;) {
        matrix const p = logistic_val(X, beta);
        matrix H = zeros(m, m);
        for (int i = 0; i < n; ++i) {
            std::copy(X.cell[i], X.cell[i] + m - 1, x.begin());
            detail::add_outer(x.data(), m, p.cell[i][0], H.cell);
        }
        matrix const inverse = ~inv(H, LU);
        std::fill(step.begin(), step.end(), 0.0);
        for (int i = 0; i < n; ++i) {
            std::copy(X.cell[i], X.cell[i] + m - 1, x.begin());
            double const rest = y.cell[i][0] - p.cell[i][0];
            detail::add_transformed(x.data(), m, inverse.cell, rest, v.data(), step.data());
        }
        // What the step really changed, after rounding, decides the end.
        for (int j = 0; j < m; ++j) {
            double& b = beta.cell[j][0];
            double const old = b;
            b += step[static_cast<std::size_t>(j)];
            v[static_cast<std::size_t>(j)] = b - old;
        }
        ++k;
        if (largest(v) <= 1e-9) break;
    }
    return beta;
}

double logit(double v)
{
    if (std::isnan(v)) return v;
    return v < far ? 1.0 / (std::exp(v) + 1.0) : 0.0;
}

matrix logistic_val(matrix const& X, matrix const& par)
{
    if (par.rows != X.cols + 1) {
        refuse_sizes("matrix mul(matrix,matrix)");
        return matrix();
    }
    matrix p(X.rows, par.cols);
    copynames_r2r(X, p);
    copynames_c2c(par, p);
    for (int i = 0; i < X.rows; ++i)
        for (int q = 0; q < par.cols; ++q) {
            double z = 0.0;
            for (int j = 0; j < X.cols; ++j) z += X.cell[i][j] * par.cell[j][q];
            p.cell[i][q] = logit(-(z + par.cell[X.cols][q]));
        }
    return p;
}

double logistic_lcl(matrix const& X, matrix const& y, matrix const& par, int stride, int threads)
{
    char const* const routine = "double logistic_lcl(matrix,matrix,matrix,int,int)";
    int const n = X.rows, c = X.cols;
    bool const column = par.rows == c + 1 && par.cols > 0, row = par.rows == 1 && par.cols == c + 1;
    if (!same_rows(X, y) || !(column || row)) {
        refuse_sizes(routine);
        return __NAN<double>();
    }
    if (stride < 1) {
        errormessage("MATRIX", routine, "krok probkowania mniejszy od 1", "");
        return __NAN<double>();
    }
    numbers b;
    for (int j = 0; j <= c; ++j) b.push_back(row ? par.cell[0][j] : par.cell[j][0]);
    double const* const beta = b.data();
    stride = std::min(stride, std::max(n, 1));
    double total = 0.0;
#pragma omp parallel num_threads(std::max(threads, 1))
    {
        double own = 0.0;
#pragma omp for schedule(static)
        for (int i = 0; i < n; i += stride) {
            double z = beta[c];
            for (int j = 0; j < c; ++j) z += beta[j] * X.cell[i][j];
            double const v = -z, t = y.cell[i][0];
            if (v <= -far || v >= far)
                own += v > far ? -v * t : (1.0 - t) * v;
            else {
                double const p = 1.0 / (std::exp(v) + 1.0);
                own += t * std::log(p) + (1.0 - t) * std::log(1.0 - p);
            }
        }
#pragma omp atomic
        total += own;
    }
    return -total;
}

double lm_val1(matrix& x, matrix& par)
{
    if (x.rows != 1 || par.cols != 1 || par.rows != x.cols + 1) {
        refuse_sizes("matrix mul(matrix,matrix)");
        return __NAN<double>();
    }
    double z = 0.0;
    for (int j = 0; j < x.cols; ++j) z += x.cell[0][j] * par.cell[j][0];
    return z + par.cell[x.cols][0];
}

double lm_dval1(matrix& x, matrix&, int j)
{
    return j <= x.cols ? x(j) : 1.0;
}

matrix lm_score(matrix const& p)
{
    return forall(p, [](double v) { return std::round(1000.0 * (1.0 - v)); });
}

namespace {

int direction(matrix const& y, Vector const& low, Vector const& high)
{
    double const from = meanif(y, low), to = meanif(y, high);
    return to < from ? -1 : 1;
}

} // namespace

int direction_B(matrix const& x, matrix const& y)
{
    return direction(y, x == 0.0, x == 1.0);
}

int direction_C(matrix const& x, matrix const& y)
{
    double const low = quantile(x, 0.1), high = quantile(x, 0.9);
    return direction(y, x <= low, x >= high);
}

namespace {

double u_of(double x, matrix const& p)
{
    return parameter(p, 2) * x + parameter(p, 3);
}

} // namespace

double f_B(double x, matrix& p)
{
    return x == 0.0 ? parameter(p, 1) : parameter(p, 2);
}

double f_BL(double x, matrix& p)
{
    return parameter(p, 1) * x + parameter(p, 2);
}

double f_C(double x, matrix& p)
{
    return parameter(p, 1) * std::tanh(u_of(x, p)) + parameter(p, 4);
}

double f_CU(double x, matrix& p)
{
    return parameter(p, 1) / std::cosh(u_of(x, p)) + parameter(p, 4);
}

double f_M(double x, matrix& p)
{
    double const f = parameter(p, 1) * std::tanh(u_of(x, p)) + parameter(p, 5);
    return x <= -1.0 ? f + parameter(p, 4) : f;
}

namespace {

// Derivatives of p(1) tanh(u) by p(1), p(2), p(3).
double tanh_slope(double x, matrix const& p, int j)
{
    double const h = std::tanh(u_of(x, p));
    if (j == 1) return h;
    double const slope = 1.0 - h * h;
    return j == 2 ? parameter(p, 1) * x * slope : parameter(p, 1) * slope;
}

} // namespace

double df_C(double x, matrix& p, int j)
{
    if (j == 4) return 1.0;
    return j >= 1 && j <= 3 ? tanh_slope(x, p, j) : 0.0;
}

double df_CU(double x, matrix& p, int j)
{
    if (j == 4) return 1.0;
    if (j < 1 || j > 3) return 0.0;
    double const u = u_of(x, p);
    if (j == 1) return 1.0 / std::cosh(u);
    return j == 2 ? -parameter(p, 1) * x * std::tanh(u) / std::cosh(u)
                  : -parameter(p, 1) * std::tanh(u) / std::cosh(u);
}

double df_M(double x, matrix& p, int j)
{
    if (j == 5) return 1.0;
    if (j == 4) return x <= -1.0 ? 1.0 : 0.0;
    return j >= 1 && j <= 3 ? tanh_slope(x, p, j) : 0.0;
}

} // namespace varnow
