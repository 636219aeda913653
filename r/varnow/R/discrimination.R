# Scores and flags as columns, refused as the library's sort and then `routine` refuse them. Rows
# with a missing value are left out, or give NULL.
score_and_flag <- function(x, y, na.rm, class = "MATRIX", routine = NULL, names = FALSE) {
  x <- as_matrix_arg(x)
  y <- if (is.factor(y)) as_event(y, "y")$y else as_matrix_arg(y)
  as_flag_arg(na.rm)
  if (any(dim(x) != dim(y)))
    refuse("MATRIX", "sort(matrix,matrix,Direction,int)", "wektory maja niezgodne wymiary")
  if (nrow(x) > 1 && ncol(x) > 1)
    refuse("MATRIX", "Vector sort(matrix,Direction,int)", "pierwszy argument nie jest wektorem")
  if (ncol(x) > 1) {
    if (!is.null(routine)) refuse(class, routine, "oczekiwane wektory kolumnowe")
    x <- t(x)
    y <- t(y)
  }
  if (!names) dimnames(x) <- NULL
  dimnames(y) <- NULL
  if (anyNA(x) || anyNA(y)) {
    if (!na.rm) return(NULL)
    whole <- !is.na(x[, 1]) & !is.na(y[, 1])
    x <- x[whole, , drop = FALSE]
    y <- y[whole, , drop = FALSE]
  }
  list(x = x, y = y)
}

# For tables, whose rows a missing value would leave in disorder.
score_and_flag_whole <- function(x, y, na.rm, ...) {
  pair <- score_and_flag(x, y, na.rm, ...)
  if (is.null(pair)) misused("x` and `y", "have no missing value, or `na.rm` be TRUE")
  pair
}

#' How well a score separates two classes
#'
#' The measures put the observations in ascending order of the score, so that a good score is a high
#' one and a perfect score has the bad observations first. For the probability `p` of a bad outcome
#' give `-p`, or `lm_score(p)`.
#'
#' @param x the score: a numeric vector
#' @param y the flag of each observation, 1 or `TRUE` for a bad one and 0 for a good one; fractions
#'   serve, and a factor of two levels, of which the second is the bad one
#' @param range share of the population, from the lowest score up, over which areas are taken
#' @param ideal whether the ideal curve follows from the number of the bad; otherwise it is the best
#'   that the values of `y` allow, which differs for fractions
#' @param ties whether the model's curve is levelled over tied scores, which makes the ratio
#'   independent of their order
#' @param rounded whether the number of the bad is rounded, which it always is with a `range` below 1
#' @param mode 1 for the ideal curve that follows from the number of the bad, any other number for
#'   the best that the values of `y` allow
#' @param bins about how many cut-offs the table has: one every `n %/% bins` observations
#' @param k number of groups of equal rank
#' @param curve a cumulative curve: a numeric vector, or a matrix of one row or column
#' @param n the width of a step is `1 / n`
#' @param na.rm whether observations with a missing score or flag are left out. Otherwise the numbers
#'   are `NA` when there is one, and the tables stop
#' @details With one class only there is nothing to separate, and the measures are `NaN`. Among equal
#'   scores the order is that of the library's sort; `KS`, `CAP`, `TA`, `IV` and `AR` without `ties`
#'   depend on it. The observations have no weights; fractions in `y` may stand for them.
#' @return
#' * `AR()`: the accuracy ratio, the area that the score gains over chance as a part of what the ideal
#'   score gains; with the defaults 2 AUC - 1.
#' * `KS()`: the largest difference between the distribution functions of the bad and the good, with
#'   its sign: a score that works the wrong way gives a value near 0. `KS_xy()`: also the score where
#'   it is first reached, and the shares of the good and the bad up to there.
#' * `CAP()`: a matrix with a row for each observation, by ascending score: `score`, `population`,
#'   `bads`, `ideal` (the curves' shares), `rate` (of the bad from this row to the end), `goods`. The
#'   names of `x` are the row names.
#' * `TA()`: a data frame of cut-offs: `Score`, the `Count` and the `Bads` from that score on,
#'   `Acceptance` (one observation less than `Count`, as a share), `Quality` (bads per count).
#' * `IV()`: the information value over `k` groups, nothing being smoothed: a group without good or
#'   bad ones makes it infinite or `NaN`. `IVa()` weighs the shares by the group's size.
#' * `area()`: the area under a curve by trapezoids, from 0 before its first point.
#' * `del_rand_quality()`: `y` levelled to its mean over each run of scores that are at most 1e-9
#'   above the run's first; `x` must be sorted.
#' @examples
#' score <- c(310, 420, 420, 505, 611, 700, 702, 850)
#' bad <- c(1, 1, 0, 0, 1, 0, 0, 0)
#' AR(score, bad)
#' KS_xy(score, bad)
#' TA(score, bad, 4)
#' CAP(score, bad)[1:3, ]
#' IV(c(1, 1, 2, 2, 3, 3, 4, 4), c(1, 0, 0, 1, 1, 0, 0, 0), 2)
#' del_rand_quality(score, bad)
#' @export
AR <- function(x, y, range = 1, ideal = TRUE, ties = TRUE, rounded = FALSE, na.rm = FALSE) {
  pair <- score_and_flag(x, y, na.rm, routine = "double AR(matrix,matrix,double,int,int,int)")
  range <- as_number_arg(range)
  for (flag in list(ideal, ties, rounded)) as_flag_arg(flag, "ideal`, `ties` and `rounded")
  if (is.null(pair)) return(NA_real_)
  discrimination_ar(pair$x, pair$y, range, ideal, ties, rounded)
}

#' @rdname AR
#' @export
KS <- function(x, y, na.rm = FALSE) {
  pair <- score_and_flag(x, y, na.rm, routine = "double KS(matrix,matrix)")
  if (is.null(pair)) NA_real_ else discrimination_ks(pair$x, pair$y)[1]
}

#' @rdname AR
#' @export
KS_xy <- function(x, y, na.rm = FALSE) {
  pair <- score_and_flag(x, y, na.rm,
                         routine = "double KS_xy(matrix,matrix,double,double,double)")
  place <- if (is.null(pair)) rep(NA_real_, 4) else discrimination_ks(pair$x, pair$y)
  stats::setNames(place, c("KS", "score", "goods", "bads"))
}

#' @rdname AR
#' @export
CAP <- function(x, y, mode = 1, na.rm = FALSE) {
  pair <- score_and_flag_whole(x, y, na.rm, routine = "matrix CAP(matrix,matrix,int)",
                               names = TRUE)
  curve <- discrimination_cap(pair$x, pair$y, as_whole_arg(mode))
  colnames(curve) <- c("score", "population", "bads", "ideal", "rate", "goods")
  curve
}

#' @rdname AR
#' @export
TA <- function(x, y, bins = 10, na.rm = FALSE) {
  routine <- "table TA(matrix,matrix,int)"
  pair <- score_and_flag_whole(x, y, na.rm, class = "TABLE", routine = routine)
  bins <- as_whole_arg(bins)
  n <- nrow(pair$x)
  if (bins < 1 || bins > n) refuse("TABLE", routine, "liczba przedzialow poza zakresem")
  # the library's table holds texts of six decimals
  sorted <- discrimination_sorted(pair$x, pair$y)
  at <- seq.int(1L, n, by = n %/% bins)
  bads <- rev(cumsum(rev(sorted$y)))[at]
  count <- n - at + 1
  data.frame(Score = sorted$x[at], Count = count, Bads = bads, Acceptance = 1 - at / n,
             Quality = bads / count)
}

information_value <- function(x, y, k, na.rm, weighted) {
  pair <- score_and_flag(x, y, na.rm)
  k <- as_whole_arg(k)
  if (k < 1)
    refuse("MATRIX", paste0("double IV", if (weighted) "a", "(matrix,matrix,int)"),
           "liczba grup mniejsza niz 1")
  if (is.null(pair)) NA_real_ else discrimination_iv(pair$x, pair$y, k, weighted)
}

#' @rdname AR
#' @export
IV <- function(x, y, k = 10, na.rm = FALSE) information_value(x, y, k, na.rm, FALSE)

#' @rdname AR
#' @export
IVa <- function(x, y, k = 10, na.rm = FALSE) information_value(x, y, k, na.rm, TRUE)

#' @rdname AR
#' @export
area <- function(curve, n = length(curve)) {
  curve <- as_matrix_arg(curve)
  if (nrow(curve) > 1 && ncol(curve) > 1)
    refuse("MATRIX", "operator double()", "konwersja niemozliwa")
  discrimination_area(curve, as_whole_arg(n))
}

#' @rdname AR
#' @export
del_rand_quality <- function(x, y) {
  x <- as_matrix_arg(x)
  y <- as_matrix_arg(y)
  routine <- "void del_rand_quality(matrix,matrix)"
  if (ncol(x) > 1 || ncol(y) > 1) refuse("MATRIX", routine, "oczekiwane wektory kolumnowe")
  if (any(dim(x) != dim(y))) refuse("MATRIX", routine, "wektory maja niezgodne wymiary")
  stats::setNames(as.vector(discrimination_level(x, y)), rownames(y))
}

# About a thousand rows of a curve, which is more than a page can show.
thinned <- function(curve, rows = 1000) {
  curve[unique(round(seq(1, nrow(curve), length.out = min(nrow(curve), rows)))), , drop = FALSE]
}

# Graphical parameters of the caller go before those of the plot.
overridden <- function(defaults, given) c(given, defaults[setdiff(names(defaults), names(given))])

#' Plots of a score's curves
#'
#' `plot_cap()` draws the share of the bad found among the worst scores, between the lines of the
#' ideal score and of chance. `plot_ks()` draws the distribution functions of the good and the bad,
#' and where they are farthest apart.
#'
#' @inheritParams AR
#' @param add whether the curve of the score is added to a plot of the same kind, to compare two
#' @param ... graphical parameters, such as `main` and `col`
#' @return the accuracy ratio, or `KS_xy()`, invisibly
#' @examples
#' score <- c(310, 420, 420, 505, 611, 700, 702, 850)
#' bad <- c(1, 1, 0, 0, 1, 0, 0, 0)
#' plot_cap(score, bad)
#' plot_ks(score, bad)
#' @importFrom graphics abline legend lines plot points segments
#' @export
plot_cap <- function(x, y, add = FALSE, na.rm = FALSE, ...) {
  as_flag_arg(add)
  curve <- CAP(x, y, na.rm = na.rm)
  ratio <- AR(x, y, na.rm = na.rm)
  if (!nrow(curve) || is.na(ratio)) misused("y", "have good and bad ones")
  curve <- rbind(0, thinned(curve))
  if (!add) {
    frame <- list(x = c(0, 1), y = c(0, 1), type = "n", xlab = "share of all",
                  ylab = "share of the bad", main = paste("CAP, AR", format(ratio, digits = 3)))
    do.call(graphics::plot, overridden(frame, list(...)))
    graphics::lines(curve[, "population"], curve[, "ideal"], lty = 2, col = "grey50")
    graphics::abline(0, 1, col = "grey70")
  }
  look <- list(...)[names(list(...)) %in% c("col", "lwd", "lty")]
  line <- list(x = curve[, "population"], y = curve[, "bads"], lwd = 2)
  do.call(graphics::lines, overridden(line, look))
  invisible(ratio)
}

#' @rdname plot_cap
#' @export
plot_ks <- function(x, y, na.rm = FALSE, ...) {
  curve <- CAP(x, y, na.rm = na.rm)
  place <- KS_xy(x, y, na.rm = na.rm)
  if (!nrow(curve) || is.na(place[1])) misused("y", "have good and bad ones")
  curve <- thinned(curve)
  frame <- list(x = range(curve[, "score"]), y = c(0, 1), type = "n", xlab = "score",
                ylab = "share up to the score", main = paste("KS", format(place[["KS"]], digits = 3)))
  do.call(graphics::plot, overridden(frame, list(...)))
  graphics::lines(curve[, "score"], curve[, "bads"], type = "s", lwd = 2, col = "firebrick")
  graphics::lines(curve[, "score"], curve[, "goods"], type = "s", lwd = 2, col = "forestgreen")
  graphics::segments(place[["score"]], place[["goods"]], y1 = place[["bads"]], lwd = 2)
  graphics::legend("topleft", c("bad", "good"), col = c("firebrick", "forestgreen"), lwd = 2,
                   bty = "n")
  invisible(place)
}
