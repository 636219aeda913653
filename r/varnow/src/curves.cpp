#include "carry.h"

#include <cmath>

namespace {

using curve = double (*)(double, varnow::matrix&);
using derivative = double (*)(double, varnow::matrix&, int);

// The two that the library leaves to its callers.
double df_B(double x, varnow::matrix&, int j)
{
    return (x == 0.0) == (j == 1) ? 1.0 : 0.0;
}

double df_BL(double x, varnow::matrix&, int j)
{
    return j == 1 ? x : 1.0;
}

struct known_curve
{
    char const* name;
    curve f;
    derivative df;
} const curves[] = {
    {"f_B", varnow::f_B, df_B},         {"f_BL", varnow::f_BL, df_BL},
    {"f_C", varnow::f_C, varnow::df_C}, {"f_CU", varnow::f_CU, varnow::df_CU},
    {"f_M", varnow::f_M, varnow::df_M},
};

known_curve const& curve_named(std::string const& name)
{
    for (auto const& c : curves)
        if (name == c.name) return c;
    throw Rcpp::exception(("no curve " + name).c_str());
}

varnow::matrix column(Rcpp::NumericVector const& x)
{
    return ~varnow::cvector(x);
}

} // namespace

// [[Rcpp::export]]
Rcpp::NumericVector curves_values(std::string const& name, Rcpp::NumericVector const& x,
                                  Rcpp::NumericVector const& par)
{
    varnow::matrix p = column(par);
    curve const f = curve_named(name).f;
    Rcpp::NumericVector r = Rcpp::no_init(x.size());
    for (R_xlen_t i = 0; i < x.size(); ++i) r[i] = std::isnan(x[i]) ? x[i] : f(x[i], p);
    return r;
}

// The parameters and the error of the fit. The fitting threads see the library's own curves only.
// [[Rcpp::export]]
Rcpp::List curves_fit(std::string const& name, Rcpp::NumericVector const& x,
                      Rcpp::NumericVector const& y, Rcpp::NumericVector const& start, double tol,
                      int speed, int type)
{
    known_curve const& c = curve_named(name);
    varnow::matrix const X = column(x), target = column(y);
    varnow::matrix par = column(start);
    auto const measure = static_cast<varnow::EsType>(type);
    double const error = apart([&] {
        varnow::fitx(X, target, c.f, c.df, par, tol, static_cast<varnow::EsSpeed>(speed), measure,
                     varnow::BFGS);
        return varnow::err_fit(X, target, c.f, par, measure);
    });
    return Rcpp::List::create(Rcpp::Named("par") = varnow::rvector(par),
                              Rcpp::Named("error") = error);
}

// [[Rcpp::export]]
int curves_direction(Rcpp::NumericMatrix const& x, Rcpp::NumericMatrix const& y, bool flag)
{
    return (flag ? varnow::direction_B : varnow::direction_C)(varnow::cmatrix(x),
                                                              varnow::cmatrix(y));
}
