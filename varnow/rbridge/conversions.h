// Values carried to and from R, through the classes of Rcpp. A program that includes this header is
// built with the headers of R and Rcpp, so varnow.h brings it only behind Rcpp.h.
#pragma once

#include <varnow/containers/matrix.h>
#include <varnow/containers/table.h>
#include <varnow/core/date.h>
#include <varnow/core/text.h>

#include <Rcpp.h>

namespace varnow {

// The shared library is not linked with R and finds R's functions in the process that loads it: an
// R session, or a program that is itself linked with R. Elsewhere every function here is refused
// (class RBRIDGE). All other failures are exceptions of Rcpp.

/// The bytes of an R string, in its own encoding; NA gives "NA".
/// - throws: embedded_nul_in_string for one made in C++ with a zero byte inside
VARNOW_API Text ctext(Rcpp::String const& x);
/// A string of native encoding.
/// - throws: embedded_nul_in_string for a text with a zero byte inside
VARNOW_API Rcpp::String rtext(Text const& x);

/// The year goes in as the object's broken-down time holds it, with nothing added. Present releases
/// of Rcpp keep full years there; one that keeps years since 1900 would give dates that `date`
/// refuses, as it refuses NA.
VARNOW_API date cdate(Rcpp::Date const& x);
/// The day by its year, month and day.
VARNOW_API Rcpp::Date rdate(date const& x);

/// Cells only: names are not carried over, either way. NA becomes NaN and keeps its bits, so that
/// it comes back as NA.
/// - throws: not_a_matrix for an object that has lost its dimensions
VARNOW_API matrix cmatrix(Rcpp::Matrix<14> const& x);
VARNOW_API Rcpp::Matrix<14> rmatrix(matrix const& x);

/// A matrix of one row, without names.
/// - throws: index_out_of_bounds for more elements than a matrix has columns
VARNOW_API matrix cvector(Rcpp::Vector<14> const& x);
/// The cells, row after row.
VARNOW_API Rcpp::Vector<14> rvector(matrix const& x);

/// Every cell as text, by R's as.character: a factor as its labels, a missing value as "NA". Column
/// names are taken over, row names are not.
/// - throws: not_compatible for a column that is a list or another object without such a form;
///   index_out_of_bounds for a frame with columns shorter than its row names, or too few names
VARNOW_API table ctable(Rcpp::DataFrame const& x);
/// Columns of strings; names as R's as.data.frame makes them of the column names, which mends those
/// that are no R names. Row names are not passed on.
/// - throws: as `rtext`; eval_error when as.data.frame fails
VARNOW_API Rcpp::DataFrame rtable(table const& x);

} // namespace varnow
