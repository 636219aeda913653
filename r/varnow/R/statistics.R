known_statistics <- c("count", "sum", "sumsqr", "prod", "mean", "var", "stdev", "min", "max", "mode",
                      "median")

#' Descriptive statistics of columns
#'
#' @param x a numeric vector, matrix or data frame; each column is a sample
#' @param statistics any of `"count"` (values that are not missing), `"sum"`, `"sumsqr"`, `"prod"`,
#'   `"mean"`, `"var"` and `"stdev"` (by n - 1), `"min"`, `"max"`, `"mode"` (of several the
#'   smallest) and `"median"`
#' @param probs probabilities from 0 to 1
#' @param na.rm whether missing values are left out first. Otherwise one of them makes sums and what
#'   is made of them missing, `"min"` and `"max"` pass over it unless it stands first, and
#'   quantiles take it where the library's sort puts it
#' @return `column_statistics()`: a matrix with a row for each statistic, named `MEAN` and so on.
#'   `column_quantiles()`: a row for each probability, named `QUANTILE_` and the probability, by
#'   linear interpolation (type 7 of R). Columns keep their names.
#' @examples
#' column_statistics(data.frame(age = c(30, 58, 24), income = c(129, NA, 200)))
#' column_statistics(c(1, 2, 2, 7), c("mode", "median"))
#' column_quantiles(cars, c(0.1, 0.5, 0.9))
#' @export
column_statistics <- function(x, statistics = c("count", "mean", "stdev", "min", "median", "max"),
                     na.rm = FALSE) {
  x <- as_matrix_arg(x)
  as_flag_arg(na.rm)
  known <- known_statistics
  if (!is.character(statistics) || !length(statistics) || !all(statistics %in% known))
    misused("statistics", paste("be some of", paste0('"', known, '"', collapse = ", ")))
  statistics_of_columns(x, statistics, na.rm)
}

#' @rdname column_statistics
#' @export
column_quantiles <- function(x, probs = c(0, 0.25, 0.5, 0.75, 1), na.rm = FALSE) {
  x <- as_matrix_arg(x)
  as_flag_arg(na.rm)
  routine <- "matrix quantile(matrix,matrix)"
  if (!is.numeric(probs)) misused("probs", "be numeric")
  if (!is.null(dim(probs)) && !(length(dim(probs)) == 2 && 1 %in% dim(probs)))
    refuse("MATRIX", routine, "oczekiwany wektor prawdopodobienstw")
  if (!length(probs)) refuse("MATRIX", routine, "wektor prawdopodobienstw jest pusty")
  if (!all(is.na(probs) | (probs >= 0 & probs <= 1))) misused("probs", "be from 0 to 1")
  statistics_quantiles(x, as.double(probs), na.rm)
}
