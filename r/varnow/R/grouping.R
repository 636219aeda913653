# A key as numbers of its levels in ascending order, and the levels themselves, a missing one first:
# texts and labels in the library's order, values with an order of their own (numbers, dates, ordered
# factors) in that.
as_key_arg <- function(x, what) {
  if (!is.null(dim(x)) && length(dim(x)) == 2 && ncol(x) == 1) x <- as.vector(as.matrix(x))
  if (is.character(x) || (is.factor(x) && !is.ordered(x))) {
    x <- as_texts(x, what)
    x[!is.na(x) & !nzchar(x)] <- NA
    levels <- if (length(x)) grouping_levels(list(unique(x)))
  } else {
    if (!is.atomic(x) || is.null(x) || !is.null(dim(x)) || is.complex(x) || is.raw(x))
      misused(what, "be a vector of numbers, texts or dates, or a factor")
    if (is.double(x)) x[is.nan(x)] <- NA
    levels <- sort(unique(x), na.last = FALSE)
  }
  list(codes = match(x, levels), levels = levels)
}

# One to three key columns with the names of their variables.
as_keys <- function(x, y, z) {
  if (is.data.frame(x) || (is.matrix(x) && is.atomic(x) && ncol(x) > 1)) {
    if (!is.null(y) || !is.null(z)) misused("y", "be left out where `x` has columns")
    x <- as.data.frame(x, stringsAsFactors = FALSE)
    if (ncol(x) < 1 || ncol(x) > 3) misused("x", "have one to three columns")
    columns <- as.list(x)
  } else {
    if (is.null(y) && !is.null(z)) misused("z", "be left out where `y` is")
    columns <- list(x)
    if (!is.null(y)) columns <- c(columns, list(y))
    if (!is.null(z)) columns <- c(columns, list(z))
    names(columns) <- rep("", length(columns))
  }
  keys <- Map(as_key_arg, columns, c("x", "y", "z")[seq_along(columns)])
  rows <- lengths(lapply(keys, function(key) key$codes))
  if (any(rows != rows[1]))
    refuse("TABLE", paste0("table pivot(", strrep("data,", length(keys) - 1), "data)"),
           "niezgodne dlugosci danych")
  if (rows[1] < 1) refuse("TABLE", "table levels(data)", "puste dane")
  keys
}

#' Levels and frequency tables
#'
#' @param x a vector or factor; for `pivot()` also a data frame or matrix of one to three columns
#' @param y,z further vectors of the same length
#' @return `level_values()`: the distinct values in ascending order. `pivot()`: a data frame with a row
#'   for each combination of levels, the last variable varying fastest, and how often it occurs in
#'   the column `COUNT`, also when never. A missing value is a level of its own and stands first.
#'   Texts, and factors by their labels, are ordered by bytes; numbers, dates and ordered factors by
#'   value.
#' @examples
#' level_values(c("b", NA, "a", "b"))
#' pivot(mtcars[c("gear", "cyl")])
#' @export
pivot <- function(x, y = NULL, z = NULL) {
  keys <- as_keys(x, y, z)
  codes <- vapply(keys, function(key) as.double(key$codes), numeric(length(keys[[1]]$codes)))
  dim(codes) <- c(length(keys[[1]]$codes), length(keys))
  colnames(codes) <- names(keys)
  counted <- lapply(grouping_pivot(codes), function(column) as.integer(as.double(column)))
  for (j in seq_along(keys)) counted[[j]] <- keys[[j]]$levels[counted[[j]]]
  as_frame(counted)
}

#' @rdname pivot
#' @export
level_values <- function(x) {
  if ((is.data.frame(x) || is.matrix(x)) && ncol(x) != 1)
    refuse("TABLE", "table levels(data)", "oczekiwana kolumna danych")
  as_keys(x, NULL, NULL)[[1]]$levels
}

#' Intervals of numbers
#'
#' @param x a numeric vector, or a matrix or data frame of one column
#' @param breaks ascending numbers that part the intervals; the outer ones are open to infinity, which
#'   may stand among the breaks or not
#' @param right whether an interval holds its upper bound, and not its lower one
#' @param ordered whether the factor is an ordered one, which [pivot()] and [group_summary()] take in
#'   the order of its levels and not of their labels
#' @return a factor of the labels, such as `(5.00,10.00]`, with levels in ascending order. Labels show
#'   two decimals; intervals whose labels agree are one level.
#' @examples
#' table(cut_intervals(cars$speed, c(10, 20)))
#' cut_intervals(c(5, 7, NA), c(5, 10), right = FALSE)
#' @export
cut_intervals <- function(x, breaks, right = TRUE, ordered = FALSE) {
  as_flag_arg(right)
  as_flag_arg(ordered)
  x <- as_matrix_arg(x)
  routine <- "table cut(data,matrix,int)"
  if (ncol(x) > 1) refuse("TABLE", routine, "oczekiwana kolumna danych")
  if (nrow(x) < 1 || ncol(x) < 1) refuse("TABLE", routine, "puste dane")
  if (!is.numeric(breaks)) misused("breaks", "be numeric")
  if (!is.null(dim(breaks)) && !(length(dim(breaks)) == 2 && 1 %in% dim(breaks)))
    refuse("TABLE", routine, "oczekiwany wektor definiujacy przedzialy")
  breaks <- as.double(breaks[!is.infinite(breaks)])
  if (!length(breaks))
    refuse("TABLE", routine, "potrzebna przynajmniej jedna granica przedzialow")
  if (anyNA(breaks) || is.unsorted(breaks)) misused("breaks", "be ascending, without missing values")
  inside <- if (right) c(breaks, Inf) else c(-Inf, breaks)
  labels <- unique(grouping_cut(matrix(inside, ncol = 1), breaks, !right))
  factor(grouping_cut(x, breaks, !right), labels, ordered = ordered)
}

#' Statistics of groups
#'
#' @param data a data frame
#' @param by names of the columns that make the groups; with none all rows are one group
#' @param ... `name = statistic(column)`: the name of a result (but not `d` or `b`, which R takes for
#'   the first letters of `data` and `by`), one of the statistics of
#'   [column_statistics()] or any function that makes one number of a vector, and a numeric column
#' @param na.rm whether missing values of the columns are left out first
#' @return a data frame with a row for each combination of keys that occurs, the first key varying
#'   fastest, in the order that [pivot()] gives to levels, and a column for each formula
#' @examples
#' group_summary(mtcars, c("gear", "cyl"), n = count(mpg), mpg = mean(mpg), spread = IQR(mpg))
#' @export
group_summary <- function(data, by = character(), ..., na.rm = FALSE) {
  if (!is.data.frame(data)) misused("data", "be a data frame")
  if (!is.character(by) || anyNA(by)) misused("by", "be names of columns")
  as_flag_arg(na.rm)
  formulas <- eval(substitute(alist(...)))
  caller <- parent.frame()
  for (key in by) {
    if (!(key %in% names(data)))
      refuse("TABLE", "table* group_by(table,int,table)", "nie znaleziono kolumny", key)
    if (nrow(data) < 1) refuse("TABLE", "table levels(data)", "puste dane")
  }
  groups <- grouping_groups(group_codes(data, by))
  first <- vapply(groups, function(rows) rows[1], 0L)
  result <- lapply(by, function(key) data[[key]][first])
  names(result) <- by
  for (k in seq_along(formulas))
    result <- c(result, stats::setNames(list(
      group_column(formulas[[k]], formula_name(formulas, k), data, groups, na.rm, caller)),
      formula_name(formulas, k)))
  as_frame(result, rows = length(groups))
}

# The number of the group of each row, groups being counted with the first key varying fastest.
group_codes <- function(data, by) {
  codes <- rep(1L, nrow(data))
  for (name in rev(by)) {
    key <- as_key_arg(data[[name]], name)
    codes <- (codes - 1) * length(key$levels) + key$codes
    used <- sort(unique(codes))
    codes <- match(codes, used)
  }
  codes
}

summarise_routine <- "table summarise(table,Text,matrix f(matrix))"

formula_name <- function(formulas, k) {
  name <- names(formulas)[k]
  if (is.null(name) || !nzchar(name))
    refuse("TABLE", summarise_routine, "nieprawidlowa formula")
  name
}

# One formula, statistic(column), for every group.
group_column <- function(formula, name, data, groups, na.rm, caller) {
  if (!is.call(formula) || length(formula) != 2 || !is.name(formula[[1]]) || !is.name(formula[[2]]))
    refuse("TABLE", summarise_routine, "nieprawidlowa formula")
  label <- as.character(formula[[1]])
  column <- as.character(formula[[2]])
  f <- if (label %in% known_statistics) NULL else get0(label, caller, mode = "function")
  if (is.null(f) && !(label %in% known_statistics))
    refuse("TABLE", summarise_routine, "brak funkcji", paste0(name, "=", deparse1(formula)))
  if (!(column %in% names(data)))
    refuse("TABLE", "table operator [](Text)", "nie znaleziono kolumny")
  x <- as_matrix_arg(data[column], column)[, 1]
  if (is.null(f)) return(grouping_statistic(unname(x), groups, label, na.rm))
  vapply(groups, function(rows) {
    v <- f(if (na.rm) x[rows][!is.na(x[rows])] else x[rows])
    if (length(v) != 1 || !(is.numeric(v) || is.logical(v)))
      misused(label, "give one number for each group")
    as.double(v)
  }, 0)
}
