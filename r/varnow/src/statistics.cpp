#include "carry.h"

#include <cmath>

namespace {

struct
{
    char const* name;
    statistic f;
} const statistics[] = {
    {"count", varnow::count}, {"sum", varnow::sum},       {"sumsqr", varnow::sumsqr},
    {"prod", varnow::prod},   {"mean", varnow::mean},     {"var", varnow::var},
    {"stdev", varnow::stdev}, {"min", varnow::min},       {"max", varnow::max},
    {"mode", varnow::mode},   {"median", varnow::median},
};

// One column of x with its name, without NaN where these are to be left out.
varnow::matrix sample(varnow::matrix const& x, int j, bool drop)
{
    varnow::matrix r(x.rows, 1);
    int n = 0;
    for (int i = 0; i < x.rows; ++i)
        if (!drop || !std::isnan(x.cell[i][j])) r.cell[n++][0] = x.cell[i][j];
    r.resizec(n, 1);
    r.cnames[0] = x.cnames[j];
    return r;
}

// What f gives for each column, which it gets as a column also where it is a single row.
template <class F> Rcpp::NumericMatrix by_columns(Rcpp::NumericMatrix const& x, bool drop, F f)
{
    varnow::matrix const m = matrix_arg(x);
    varnow::matrix r;
    for (int j = 0; j < m.cols; ++j) {
        varnow::matrix const column = f(sample(m, j, drop));
        if (j == 0) {
            r = varnow::matrix(column.rows, m.cols);
            std::copy_n(column.rnames, column.rows, r.rnames);
            std::copy_n(m.cnames, m.cols, r.cnames);
        }
        for (int i = 0; i < column.rows; ++i) r.cell[i][j] = column.cell[i][0];
    }
    return matrix_result(r);
}

} // namespace

statistic statistic_named(std::string const& name)
{
    for (auto const& s : statistics)
        if (name == s.name) return s.f;
    return nullptr;
}

// [[Rcpp::export]]
Rcpp::NumericMatrix statistics_of_columns(Rcpp::NumericMatrix const& x,
                                          Rcpp::CharacterVector const& which, bool drop)
{
    return by_columns(x, drop, [&which](varnow::matrix const& column) {
        varnow::matrix r(static_cast<int>(which.size()), 1);
        for (int i = 0; i < r.rows; ++i) {
            std::string const name(which[i]);
            r.cell[i][0] = statistic_named(name)(column).cell[0][0];
            r.rnames[i] = varnow::to_upper(name);
        }
        return r;
    });
}

// [[Rcpp::export]]
Rcpp::NumericMatrix statistics_quantiles(Rcpp::NumericMatrix const& x, Rcpp::NumericVector const& p,
                                         bool drop)
{
    varnow::matrix const probs = varnow::cvector(p);
    return by_columns(x, drop, [&probs](varnow::matrix const& column) {
        if (column.rows != 1) return varnow::quantile(column, probs);
        // an object of one row would be one sample with its quantiles side by side
        return ~varnow::quantile(column, probs);
    });
}
