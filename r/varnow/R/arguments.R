# Checks of arguments and the ways of R objects into the library. The library ends the process on
# misuse, so whatever it would refuse is refused here before, in its own words.

# Stops as the library would: class, routine, message, detail.
refuse <- function(class, routine, message, detail = "") {
  text <- paste0(class, ": ", routine, "\n", message)
  if (nzchar(detail)) text <- paste0(text, "\n", detail)
  stop(structure(class = c("varnow_refusal", "error", "condition"),
                 list(message = text, call = NULL)))
}

# What no C++ caller could pass has no message of the library.
misused <- function(what, must) stop("`", what, "` must ", must, call. = FALSE)

# A matrix of doubles, with dimnames: from a numeric or logical vector (one column; names become row
# names), matrix or data frame. NA becomes the library's missing value, NaN, and stays NA.
as_matrix_arg <- function(x, what = deparse1(substitute(x))) {
  numbers <- function(v) (is.numeric(v) || is.logical(v)) && is.null(dim(v))
  if (is.data.frame(x)) {
    good <- vapply(x, numbers, logical(1))
    if (!all(good))
      misused(what, paste0("hold numbers; these columns do not: ",
                           paste(names(x)[!good], collapse = ", ")))
    automatic <- is.integer(attr(x, "row.names"))
    dims <- list(if (!automatic) row.names(x), names(x))
    x <- matrix(as.double(unlist(x, use.names = FALSE)), nrow(x), ncol(x))
    if (length(dims[[2]]) || length(dims[[1]])) dimnames(x) <- dims
    return(x)
  }
  if (!(is.numeric(x) || is.logical(x)) || is.factor(x)) misused(what, "be numeric")
  if (is.null(dim(x))) {
    names <- names(x)
    x <- matrix(as.double(x), ncol = 1)
    if (!is.null(names)) dimnames(x) <- list(names, NULL)
    return(x)
  }
  if (length(dim(x)) != 2) misused(what, "be a vector, a matrix or a data frame")
  if (is.double(x) && all(names(attributes(x)) %in% c("dim", "dimnames"))) return(x)
  matrix(as.double(x), nrow(x), ncol(x), dimnames = dimnames(x))
}

# Texts: factors arrive as their labels, everything else as as.character() writes it.
as_texts <- function(x, what = deparse1(substitute(x))) {
  if (!is.atomic(x) || is.null(x) || !is.null(dim(x)))
    misused(what, "be a vector of numbers, texts or dates, or a factor")
  enc2native(as.character(x))
}

# A list of character vectors of one length, with names, for table_arg() in C++: from a vector or
# factor (one column without a name), a matrix or a data frame. NA becomes the empty text, the
# library's missing text, on the way.
as_table_arg <- function(x, what = deparse1(substitute(x))) {
  if (is.data.frame(x)) {
    if (nrow(x) > 0 || ncol(x) > 0)
      return(structure(lapply(x, as_texts, what = paste0("each column of ", what)),
                       names = enc2native(names(x))))
    return(list())
  }
  if (is.matrix(x) && is.atomic(x))
    return(structure(lapply(seq_len(ncol(x)), function(j) as_texts(as.vector(x[, j]), what)),
                     names = if (is.null(colnames(x))) rep("", ncol(x)) else colnames(x)))
  structure(list(as_texts(x, what)), names = "")
}

# A list of columns as a data frame, names as they are.
as_frame <- function(columns, row_names = NULL,
                     rows = if (length(columns)) length(columns[[1]]) else 0L) {
  structure(columns, class = "data.frame",
            row.names = if (is.null(row_names)) .set_row_names(rows) else row_names)
}

as_flag_arg <- function(x, what = deparse1(substitute(x))) {
  if (!isTRUE(x) && !isFALSE(x)) misused(what, "be TRUE or FALSE")
  x
}

as_text_arg <- function(x, what = deparse1(substitute(x))) {
  if (!is.character(x) || length(x) != 1 || is.na(x)) misused(what, "be one text")
  enc2native(x)
}

as_number_arg <- function(x, what = deparse1(substitute(x)), from = -Inf, to = Inf) {
  if (!is.numeric(x) || length(x) != 1 || is.na(x) || x < from || x > to)
    misused(what, paste("be one number",
                        if (is.finite(from) || is.finite(to)) paste("from", from, "to", to)))
  as.double(x)
}

as_whole_arg <- function(x, what = deparse1(substitute(x)), from = -.Machine$integer.max,
                         to = .Machine$integer.max) {
  force(what) # before x is another
  x <- as_number_arg(x, what, from, to)
  if (x != trunc(x)) misused(what, "be a whole number")
  as.integer(x)
}

# One of the given texts, or the first of them when the argument is left at its default.
as_choice_arg <- function(x, choices, what = deparse1(substitute(x))) {
  if (identical(x, choices)) return(choices[1])
  if (!is.character(x) || length(x) != 1 || !(x %in% choices))
    misused(what, paste("be one of", paste0('"', choices, '"', collapse = ", ")))
  x
}
