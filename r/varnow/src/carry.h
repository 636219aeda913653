// Values between R and the library with their names and missing values, which the conversions of
// the bridge leave behind. R code has checked the arguments before.
#pragma once

#include <varnow/rbridge/conversions.h>
#include <varnow/varnow.h>

#include <future>

// A numeric matrix with its row and column names.
varnow::matrix matrix_arg(Rcpp::NumericMatrix const& x);
// The same back; a dimension without any name has no names in R either.
Rcpp::NumericMatrix matrix_result(varnow::matrix const& x);
// A list of character vectors of one length, as as_table_arg() in R makes it. NA becomes the empty
// text.
varnow::table table_arg(Rcpp::List const& columns);
// The same back, as a list with the column names; the empty text becomes NA.
Rcpp::List table_result(varnow::table const& x);
// A vector of whole numbers, such as a permutation.
Rcpp::IntegerVector vector_result(varnow::Vector const& x);

// A statistic of columns by the name that R users write; null for any other name.
using statistic = varnow::matrix (*)(varnow::matrix const&);
statistic statistic_named(std::string const& name);

// Calls f, which sees nothing of R, in a thread of its own. The library's helping threads belong to
// the thread that called for them, and a fork of R, as parallel::mclapply() makes them, would wait
// for those of its parent for ever.
template <class F> auto apart(F f)
{
    return std::async(std::launch::async, f).get();
}
