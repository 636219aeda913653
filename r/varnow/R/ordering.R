# A vector of doubles, or of texts (labels of a factor, texts of dates).
as_sortable_arg <- function(x, what, routine) {
  if (!is.null(dim(x))) {
    if (length(dim(x)) != 2 || is.data.frame(x)) misused(what, "be a vector")
    if (!(1 %in% dim(x)))
      refuse(if (is.character(x)) "TABLE" else "MATRIX", routine(x), "oczekiwany wektor")
    x <- x[seq_along(x)]
  }
  if (is.numeric(x) || is.logical(x)) return(as.double(x))
  as_texts(x, what)
}
# The routine text names the container of a cell type.
of_cells <- function(pattern) function(x)
  gsub("_data_", if (is.character(x)) "table" else "matrix", pattern, fixed = TRUE)

# Two of a kind: numbers beside texts become texts.
as_sortable_args <- function(x, y, routine) {
  xs <- as_sortable_arg(x, "x", routine)
  ys <- as_sortable_arg(y, "y", routine)
  if (is.character(xs) && !is.character(ys)) ys <- as_texts(as.vector(y), "y")
  if (is.character(ys) && !is.character(xs)) xs <- as_texts(as.vector(x), "x")
  list(xs, ys)
}

#' Sorting by the library's order
#'
#' Texts are ordered by their bytes, of which those above ASCII stand first, whatever the locale. The
#' sort is one fixed quicksort: the order among equal values is always the same, but not that of
#' their places. Missing numbers are below nothing and stay where the sort leaves them; a missing
#' text is empty and stands first, and so does a missing date or time.
#'
#' @param x a vector of numbers or texts; a factor counts as its labels. For `sort_rows()` a data
#'   frame or a matrix
#' @param decreasing whether the largest comes first
#' @param by the number or the name of a column of `x`
#' @return `sort_values()`: the sorted vector with its names. `order_values()`: the places in `x` of
#'   the sorted values. `sort_rows()`: `x` with its rows sorted.
#' @examples
#' sort_values(c(b = 2, a = 1, c = 2))
#' order_values(c("b", "B", "a"))
#' sort_rows(cars, "dist", decreasing = TRUE)[1:3, ]
#' @export
sort_values <- function(x, decreasing = FALSE) {
  x[order_values(x, decreasing)]
}

#' @rdname sort_values
#' @export
order_values <- function(x, decreasing = FALSE) {
  as_flag_arg(decreasing)
  if (inherits(x, c("Date", "POSIXct", "difftime"))) {
    x <- as.double(x)
    x[is.na(x)] <- -Inf
  }
  ordering_order(as_sortable_arg(x, "x", of_cells("Vector order(_data_,Direction)")), decreasing)
}

#' @rdname sort_values
#' @export
sort_rows <- function(x, by, decreasing = FALSE) {
  if (!is.data.frame(x) && !is.matrix(x)) misused("x", "be a matrix or a data frame")
  class <- if (is.matrix(x) && !is.character(x)) "MATRIX" else "TABLE"
  if (is.character(by)) {
    found <- match(as_text_arg(by), colnames(x))
    if (is.na(found))
      refuse(class, "sort(Text,Direction,int)", "nie znaleziono podanej kolumny")
    by <- found
  }
  by <- as_whole_arg(by)
  if (by < 1 || by > ncol(x))
    refuse(class, "sort(int,Direction,int)", "numer kolumny poza zakresem")
  key <- if (is.data.frame(x)) x[[by]] else x[, by]
  x[order_values(key, decreasing), , drop = FALSE]
}

#' Sets and matches by the library's equality
#'
#' Unlike in R a missing number equals nothing, not even another one; a missing text is the empty
#' text and equals it. 0 and -0 are equal. Numbers beside texts are compared as texts.
#'
#' @param x,y vectors of numbers or texts; factors count as their labels
#' @param from_last whether the last of equal values counts instead of the first
#' @param nomatch what stands for a value without a match
#' @return `unique_values()` and `set_union()`: each value once. `set_difference()` and
#'   `set_intersection()`: the values of `x` that stand in `y` or do not, repeats included.
#'   `set_equal()`: `TRUE` or `FALSE`. `is_element()`: for each value of `x` whether it stands in `y`.
#'   `match_values()`: for each value of `x` its place in `y`.
#' @examples
#' unique_values(c(3, 1, 3, NA, NA), from_last = TRUE)
#' match_values(c("b", "z"), letters)
#' set_difference(1:5, c(2, 4))
#' @export
unique_values <- function(x, from_last = FALSE) {
  as_flag_arg(from_last)
  ordering_unique(as_sortable_arg(x, "x", of_cells("_data_ unique(_data_,int)")), from_last)
}

#' @rdname unique_values
#' @export
match_values <- function(x, y, from_last = FALSE, nomatch = NA_integer_) {
  as_flag_arg(from_last)
  if (length(nomatch) != 1 || !(is.numeric(nomatch) || is.logical(nomatch)))
    misused("nomatch", "be one number or NA")
  args <- as_sortable_args(x, y, of_cells("Vector match(_data_,_data_,int,int)"))
  ordering_match(args[[1]], args[[2]], from_last, as.integer(nomatch))
}

set_verb <- function(x, y, routine, number) {
  args <- as_sortable_args(x, y, of_cells(routine))
  ordering_sets(args[[1]], args[[2]], number)
}

#' @rdname unique_values
#' @export
set_union <- function(x, y) set_verb(x, y, "_data_ setunion(_data_,_data_)", 1L)

#' @rdname unique_values
#' @export
set_difference <- function(x, y) set_verb(x, y, "_data_ setdiff(_data_,_data_)", 2L)

#' @rdname unique_values
#' @export
set_intersection <- function(x, y) set_verb(x, y, "_data_ setintersect(_data_,_data_)", 3L)

#' @rdname unique_values
#' @export
set_equal <- function(x, y) set_verb(x, y, "int setequal(_data_,_data_)", 4L)

#' @rdname unique_values
#' @export
is_element <- function(x, y) set_verb(x, y, "Vector iselement(_data_,_data_)", 5L)
