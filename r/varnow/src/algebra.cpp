#include "carry.h"

// [[Rcpp::export]]
Rcpp::NumericMatrix algebra_lineqns(Rcpp::NumericMatrix const& a, Rcpp::NumericMatrix const& b,
                                    int method)
{
    return matrix_result(
        varnow::lineqns(matrix_arg(a), matrix_arg(b), static_cast<varnow::LinearMethod>(method)));
}

// [[Rcpp::export]]
Rcpp::NumericMatrix algebra_inv(Rcpp::NumericMatrix const& a, int method)
{
    return matrix_result(varnow::inv(matrix_arg(a), static_cast<varnow::LinearMethod>(method)));
}

// [[Rcpp::export]]
double algebra_det(Rcpp::NumericMatrix const& a)
{
    return varnow::det(matrix_arg(a));
}
