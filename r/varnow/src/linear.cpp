#include "carry.h"

#include <cmath>

namespace {

Rcpp::NumericVector cells(varnow::matrix const& column)
{
    return varnow::rvector(column);
}

// Whether the variance of a coefficient exceeds that of a column perpendicular to the others so far
// that rounding, enlarged as many times, leaves few digits.
bool inexact(varnow::matrix const& products, varnow::matrix const& inverse)
{
    for (int i = 0; i < products.rows; ++i)
        if (!(std::fabs(products.cell[i][i] * inverse.cell[i][i]) < 1e11)) return true;
    return false;
}

} // namespace

// The largest magnitude; infinite where a number is missing.
// [[Rcpp::export]]
double linear_largest(Rcpp::NumericMatrix const& x, Rcpp::NumericMatrix const& y)
{
    double most = 0;
    for (Rcpp::NumericMatrix const& m : {x, y})
        for (double const v : m)
            if (!(std::fabs(v) <= most)) {
                if (std::isnan(v)) return R_PosInf;
                most = std::fabs(v);
            }
    return most;
}

// Coefficients, of which the last is the intercept's, their tests, and the inverse of the sums of
// products behind them, and whether that is inexact.
// [[Rcpp::export]]
Rcpp::List linear_fit(Rcpp::NumericMatrix const& x, Rcpp::NumericMatrix const& y, bool likelihood)
{
    varnow::matrix const X = matrix_arg(x), target = matrix_arg(y);
    varnow::matrix se, t, p;
    varnow::matrix const par = varnow::lm_tstud(
        X, target, se, t, p, likelihood ? varnow::EsLikelihood : varnow::EsQuadratic);
    varnow::matrix const products = varnow::crossprod(X | varnow::ones(X.rows, 1));
    varnow::matrix const V = varnow::inv(products, varnow::LU);
    return Rcpp::List::create(cells(par), cells(se), cells(t), cells(p),
                              cells(varnow::lm_val(X, par)), varnow::rmatrix(V),
                              inexact(products, V));
}

// The same without an intercept, which the library has no tests for.
// [[Rcpp::export]]
Rcpp::List linear_fit_plain(Rcpp::NumericMatrix const& x, Rcpp::NumericMatrix const& y)
{
    varnow::matrix const X = matrix_arg(x), target = matrix_arg(y);
    varnow::matrix const par = varnow::linreg(X, target);
    varnow::matrix const products = varnow::crossprod(X);
    varnow::matrix const V = varnow::inv(products, varnow::LU);
    varnow::matrix const value = varnow::mul(X, par), rest = target - value;
    double const variance = varnow::sumsqr(~rest).cell[0][0] / static_cast<double>(X.rows - X.cols);
    int const n = par.rows;
    varnow::matrix se(n, 1), t(n, 1), p(n, 1);
    for (int i = 0; i < n; ++i) {
        se.cell[i][0] = std::sqrt(variance * V.cell[i][i]);
        t.cell[i][0] = par.cell[i][0] / se.cell[i][0];
        p.cell[i][0] = 2 * (1 - varnow::phi(std::fabs(t.cell[i][0])));
    }
    return Rcpp::List::create(cells(par), cells(se), cells(t), cells(p), cells(value),
                              varnow::rmatrix(V), inexact(products, V));
}
