#include "carry.h"

// Names play no part in the measures, so the bare conversions serve. What the measures take by
// value they get without a copy.

// [[Rcpp::export]]
double discrimination_ar(Rcpp::NumericMatrix const& x, Rcpp::NumericMatrix const& y, double range,
                         bool ideal, bool ties, bool rounded)
{
    return varnow::AR(varnow::cmatrix(x), varnow::cmatrix(y), range, ideal, ties, rounded);
}

// [[Rcpp::export]]
Rcpp::NumericVector discrimination_ks(Rcpp::NumericMatrix const& x, Rcpp::NumericMatrix const& y)
{
    double at, goods, bads;
    double const ks = varnow::KS_xy(varnow::cmatrix(x), varnow::cmatrix(y), at, goods, bads);
    return Rcpp::NumericVector::create(ks, at, goods, bads);
}

// [[Rcpp::export]]
Rcpp::NumericMatrix discrimination_cap(Rcpp::NumericMatrix const& x, Rcpp::NumericMatrix const& y,
                                       int mode)
{
    return matrix_result(varnow::CAP(matrix_arg(x), varnow::cmatrix(y), mode));
}

// [[Rcpp::export]]
Rcpp::List discrimination_sorted(Rcpp::NumericMatrix const& x, Rcpp::NumericMatrix const& y)
{
    varnow::matrix score = varnow::cmatrix(x), flag = varnow::cmatrix(y);
    varnow::sort(score, flag, varnow::Ascending, 1);
    return Rcpp::List::create(Rcpp::Named("x") = varnow::rvector(score),
                              Rcpp::Named("y") = varnow::rvector(flag));
}

// [[Rcpp::export]]
double discrimination_iv(Rcpp::NumericMatrix const& x, Rcpp::NumericMatrix const& y, int k,
                         bool weighted)
{
    return (weighted ? varnow::IVa : varnow::IV)(varnow::cmatrix(x), varnow::cmatrix(y), k);
}

// [[Rcpp::export]]
double discrimination_area(Rcpp::NumericMatrix const& curve, int n)
{
    return varnow::area(varnow::cmatrix(curve), n);
}

// [[Rcpp::export]]
Rcpp::NumericMatrix discrimination_level(Rcpp::NumericMatrix const& x, Rcpp::NumericMatrix const& y)
{
    varnow::matrix score = varnow::cmatrix(x), flag = varnow::cmatrix(y);
    varnow::del_rand_quality(score, flag);
    return varnow::rmatrix(flag);
}
