#include <varnow/numerics/minimise.h>

#include <varnow/containers/matrix_arithmetic.h>
#include <varnow/containers/sort_engine.h>
#include <varnow/numerics/minimise_engine.h>

#include <cstddef>

namespace varnow {

namespace detail {

bool not_a_column(matrix const& x, char const* routine, char const* why)
{
    if (x.cols == 1) return false;
    errormessage("MATRIX", routine, why, "");
    return true;
}

namespace {

// One column of `max`: a NaN that stands first is never within.
bool column_within(double difference, bool first, double tol)
{
    return first ? std::fabs(difference) <= tol : !(std::fabs(difference) > tol);
}

} // namespace

bool all_within(matrix const& s, double tol)
{
    for (int i = 0; i < s.rows; ++i)
        if (!column_within(s.cell[i][0], i == 0, tol)) return false;
    return true;
}

void update_inverse(matrix& H, matrix const& s, matrix const& y, EsMethod method)
{
    if (method != DFP && method != BFGS) return;
    double const sy = scmul(s, y), yHy = comut(H, y);
    if (method == DFP) {
        matrix const shrunk = sqrT(mul(H, y));
        H += sqrT(s) / sy;
        H -= shrunk / yHy;
        return;
    }
    matrix change = (yHy / sy + 1) * sqrT(s);
    change -= mul(mulT(s, y), H);
    change -= mul(H, mulT(y, s));
    H += change / sy;
}

simplex::simplex(matrix const& x)
    : n(x.rows),
      point(static_cast<std::size_t>(n) + 1, x),
      value(point.size()),
      centre(n),
      order_(point.size()),
      old_value_(point.size()),
      old_point_(point.size())
{
}

void simplex::rank()
{
    sorted_positions(value.data(), n + 1, Ascending, order_.data());
    std::swap(value, old_value_);
    std::swap(point, old_point_);
    for (std::size_t k = 0; k < point.size(); ++k) {
        std::size_t const from = order_[k];
        value[k] = old_value_[from];
        point[k] = std::move(old_point_[from]);
    }
}

bool simplex::within(double tol) const
{
    // Each point is a column whose largest distance counts, a NaN only where it stands first.
    matrix const& best = point[0];
    for (int j = 1; j <= n; ++j) {
        matrix const& p = point[j];
        double const head = std::fabs(p.cell[0][0] - best.cell[0][0]);
        if (std::isnan(head) && j > 1) continue;
        if (!(head <= tol)) return false;
        for (int i = 1; i < n; ++i)
            if (std::fabs(p.cell[i][0] - best.cell[i][0]) > tol) return false;
    }
    for (int j = 1; j <= n; ++j)
        if (!column_within(value[0] - value[j], j == 1, tol)) return false;
    return true;
}

void simplex::find_centre()
{
    for (int i = 0; i < n; ++i) {
        double s = 0.0;
        for (int j = 0; j < n; ++j) s += point[j].cell[i][0];
        centre[static_cast<std::size_t>(i)] = s / n;
    }
}

} // namespace detail

namespace {

using function = double (*)(matrix&);
using derivative = double (*)(matrix&, int);

struct objective
{
    function f;
    derivative df;

    double operator()(matrix& x) const { return f(x); }
    double slope(matrix& x, int i) const { return df(x, i); }
};

bool missing(bool found, char const* routine)
{
    if (!found) errormessage("MATRIX", routine, "brak funkcji", "");
    return !found;
}

} // namespace

bool fminu(double (*f)(matrix&), double (*df)(matrix&, int), matrix& x, double tol, EsMethod method)
{
    if (missing(f && df, "bool fminu(double (*)(matrix),double (*)(matrix,int),matrix,double,"
                         "EsMethod)"))
        return false;
    return detail::quasi_newton(objective{f, df}, x, tol, method);
}

bool fmins(double (*f)(matrix&), matrix& x, double tol)
{
    if (missing(f, "bool fmins(double (*)(matrix),matrix,double)")) return false;
    return detail::simplex_search(objective{f, nullptr}, x, tol);
}

void fminx(double (*f)(matrix&), double (*df)(matrix&, int), matrix& x, double tol, EsSpeed speed,
           EsMethod method)
{
    if (missing(f && (df || !detail::descends(speed)),
                "fminx(double (*)(matrix),double (*)(matrix,int),matrix,double,EsSpeed,EsMethod)"))
        return;
    detail::two_starts(objective{f, df}, x, tol, speed, method);
}

} // namespace varnow
