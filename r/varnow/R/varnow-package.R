#' Numerical work, statistics, data tables and score models
#'
#' The verbs of the Varnow library for R. Vectors, matrices and data frames go in, `NA` being the
#' library's missing value, and names come back on results. What the library refuses is an R error
#' of class `varnow_refusal` that carries the library's own message: where, and what was wrong.
#'
#' @keywords internal
#' @useDynLib varnow, .registration = TRUE
#' @importFrom Rcpp evalCpp
"_PACKAGE"
