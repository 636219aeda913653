#include "carry.h"

#include <algorithm>
#include <cmath>
#include <vector>

// The mean and the deviation of each column; a deviation of 0 marks a column of one value, NaN or
// an infinity one with numbers that are not finite or too large.
// [[Rcpp::export]]
Rcpp::List score_scale(Rcpp::NumericMatrix const& x)
{
    int const n = x.nrow();
    Rcpp::NumericVector centre(x.ncol()), spread(x.ncol());
    for (int j = 0; j < x.ncol(); ++j) {
        double const* const cell = x.begin() + static_cast<R_xlen_t>(j) * n;
        double total = 0.0, squares = 0.0;
        for (int i = 0; i < n; ++i) total += cell[i];
        double const mean = total / n;
        for (int i = 0; i < n; ++i) squares += (cell[i] - mean) * (cell[i] - mean);
        bool const same = std::all_of(cell, cell + n, [=](double v) { return v == cell[0]; });
        centre[j] = mean;
        spread[j] = same && std::isfinite(cell[0]) ? 0.0 : std::sqrt(squares / std::max(n - 1, 1));
    }
    return Rcpp::List::create(centre, spread);
}

namespace {

// The columns b, one for each variable that does not depend on those before it, for which x b has
// unit variances and no correlations where C holds those of x. Their rows in use get their numbers.
varnow::matrix uncorrelated(varnow::matrix const& C, std::vector<int>& used)
{
    double const least = 1e-11; // of a variance of 1, left by the variables before
    varnow::matrix b(C.rows, 0);
    for (int j = 0; j < C.rows; ++j) {
        varnow::matrix v = varnow::zeros(C.rows, 1);
        v.cell[j][0] = 1.0;
        // twice, since once leaves correlations where little of the variance is left
        for (int pass = 0; pass < 2 && b.cols > 0; ++pass)
            v = v - varnow::mul(b, varnow::mul(~b, varnow::mul(C, v)));
        double const rest = varnow::mul(~v, varnow::mul(C, v)).cell[0][0];
        if (!(rest > least)) continue;
        b |= v / std::sqrt(rest);
        used.push_back(j + 1);
    }
    return b;
}

varnow::matrix estimate(varnow::matrix const& X, varnow::matrix const& y, std::string const& method,
                        int threads, double eps)
{
    if (method == "logistic_par1") return varnow::logistic_par1(X, y);
    auto const search = method == "logistic_par2" ? varnow::logistic_par2 : varnow::logistic_par;
    return apart([&] { return search(X, y, threads, eps); });
}

// The log-likelihood about the parameters par of X and a last column of ones: its slope, its
// information, and the step of Newton's from there, all with the ridge.
struct surroundings
{
    varnow::matrix slope, information, step;
    double distance; // of the optimum, squared, in standard errors

    surroundings(varnow::matrix const& X, varnow::matrix const& y, varnow::matrix const& par,
                 double ridge)
        : slope(par.rows, 1)
    {
        varnow::matrix const p = varnow::logistic_val(X, par);
        varnow::matrix weighted(X.rows, par.rows);
        std::vector<double> of_slope(par.rows);
        double* const sums = of_slope.data();
        for (int i = 0; i < X.rows; ++i) {
            double const at = p.cell[i][0], rest = y.cell[i][0] - at;
            double const weight = std::sqrt(at * (1.0 - at));
            double const* const x = X.cell[i];
            double* const w = weighted.cell[i];
            for (int j = 0; j < X.cols; ++j) {
                sums[j] += rest * x[j];
                w[j] = weight * x[j];
            }
            sums[X.cols] += rest;
            w[X.cols] = weight;
        }
        information = varnow::crossprod(weighted);
        varnow::matrix curvature = information;
        for (int j = 0; j < par.rows; ++j) {
            slope.cell[j][0] = sums[j] - ridge * par.cell[j][0];
            curvature.cell[j][j] += ridge;
        }
        step = varnow::lineqns(curvature, slope, varnow::LU);
        distance = varnow::scmul(step, slope);
    }
};

} // namespace

// Fits columns without correlations: x in deviations from the centre, times `to`. The parameters
// are of these and a last one of ones, and so is the information. A last step or two of Newton's
// take away what a search has left, which depends on its random start.
// [[Rcpp::export]]
Rcpp::List score_fit(Rcpp::NumericMatrix const& x, Rcpp::NumericMatrix const& y,
                     Rcpp::NumericVector const& centre, Rcpp::NumericVector const& spread,
                     std::string const& method, double ridge, int threads, double eps)
{
    varnow::matrix X = varnow::cmatrix(x);
    for (int i = 0; i < X.rows; ++i)
        for (int j = 0; j < X.cols; ++j) X.cell[i][j] = (X.cell[i][j] - centre[j]) / spread[j];
    varnow::matrix const flag = varnow::cmatrix(y);
    std::vector<int> used;
    varnow::matrix to(0, 0);
    if (X.cols > 0) {
        to = uncorrelated(varnow::crossprod(X) / (X.rows - 1.0), used);
        X = varnow::mul(X, to);
    }
    varnow::matrix par = estimate(X, flag, method, threads, eps);
    surroundings at(X, flag, par, ridge);
    // The samples can lead the search astray, which then has no turns left for all the rows.
    if (method == "logistic_par" && !(at.distance < 1.0)) {
        par = estimate(X, flag, "logistic_par2", threads, eps);
        at = surroundings(X, flag, par, ridge);
    }
    for (int turn = 0; turn < 10 && at.distance >= 1e-6; ++turn) {
        par = par + at.step;
        at = surroundings(X, flag, par, ridge);
    }
    if (std::isfinite(at.distance)) par = par + at.step;
    for (int j = 0; j < to.rows; ++j)
        for (int k = 0; k < to.cols; ++k) to.cell[j][k] /= spread[j];
    return Rcpp::List::create(Rcpp::Named("par") = varnow::rvector(par), Rcpp::Named("used") = used,
                              Rcpp::Named("to") = varnow::rmatrix(to),
                              Rcpp::Named("fitted") = varnow::rvector(varnow::logistic_val(X, par)),
                              Rcpp::Named("loglik") = -apart(
                                  [&] { return varnow::logistic_lcl(X, flag, par, 1, threads); }),
                              Rcpp::Named("distance") = at.distance,
                              Rcpp::Named("information") = varnow::rmatrix(at.information));
}

// Probabilities of linear values, by the library's function.
// [[Rcpp::export]]
Rcpp::NumericVector score_probabilities(Rcpp::NumericVector const& z)
{
    Rcpp::NumericVector p = Rcpp::no_init(z.size());
    for (R_xlen_t i = 0; i < z.size(); ++i) p[i] = varnow::logit(-z[i]);
    return p;
}

// [[Rcpp::export]]
Rcpp::NumericMatrix score_points(Rcpp::NumericMatrix const& p)
{
    return matrix_result(varnow::lm_score(matrix_arg(p)));
}
