curve_sizes <- c(f_B = 2L, f_BL = 2L, f_C = 4L, f_CU = 4L, f_M = 5L)
response_curves <- names(curve_sizes)

curve_at <- function(curve, x, p) {
  x <- as_matrix_like(x)
  p <- as.vector(as_matrix_arg(p))
  if (length(p) < curve_sizes[[curve]])
    refuse("MATRIX", "double & operator ()(int)", "indeks poza zakresem",
           paste0(length(p), " x 1 : ( ", length(p) + 1L, " )"))
  x[] <- curves_values(curve, as.double(x), p)
  x
}

# Numbers in their own shape, for functions of each of them.
as_matrix_like <- function(x) {
  if (!(is.numeric(x) || is.logical(x)) || is.factor(x) || is.object(x)) misused("x", "be numeric")
  storage.mode(x) <- "double"
  x
}

#' Response curves of one variable
#'
#' How a probability or its log-odds may depend on a variable: `f_B()` a flag, `f_BL()` a line,
#' `f_C()` a rise or fall that levels off, `f_CU()` a bell or a U, `f_M()` as `f_C()` with a level of
#' its own for codes at or below -1. They serve in formulas and for [fit_curve()].
#'
#' @param x numbers, in any shape
#' @param p the parameters: at least as many as the curve has
#' @param y the flag or any other response, as many numbers as `x` has
#' @details
#' | curve | value |
#' |---|---|
#' | `f_B` | `p[1]` at x = 0, otherwise `p[2]` |
#' | `f_BL` | `p[1] x + p[2]` |
#' | `f_C` | `p[1] tanh(p[2] x + p[3]) + p[4]` |
#' | `f_CU` | `p[1] / cosh(p[2] x + p[3]) + p[4]` |
#' | `f_M` | `p[1] tanh(p[2] x + p[3]) + p[5]`, and `p[4]` more where x is at most -1 |
#' @return the curve's values in the shape of `x`, missing where `x` is. `direction_C()`: -1 when the
#'   mean of `y` falls from the lowest tenth of `x` to the highest, otherwise 1; `direction_B()` the
#'   same from `x = 0` to `x = 1`.
#' @examples
#' f_C(c(-1, 0, 1, NA), c(-0.8, 1, 0, 0.3))
#' direction_C(cars$speed, cars$dist)
#' @name response_curves
NULL

#' @rdname response_curves
#' @export
f_B <- function(x, p) curve_at("f_B", x, p)

#' @rdname response_curves
#' @export
f_BL <- function(x, p) curve_at("f_BL", x, p)

#' @rdname response_curves
#' @export
f_C <- function(x, p) curve_at("f_C", x, p)

#' @rdname response_curves
#' @export
f_CU <- function(x, p) curve_at("f_CU", x, p)

#' @rdname response_curves
#' @export
f_M <- function(x, p) curve_at("f_M", x, p)

direction <- function(x, y, flag) {
  x <- as_matrix_arg(x)
  y <- as_matrix_arg(y)
  if (!length(x)) refuse("MATRIX", "operator double()", "konwersja niemozliwa")
  if (ncol(x) > 1) {
    if (!flag && nrow(x) > 1) refuse("MATRIX", "operator double()", "konwersja niemozliwa")
    refuse("MATRIX", paste("Vector operator", if (flag) "==(matrix,double)" else ">=(matrix,double)"),
           "oczekiwana jedna kolumna danych")
  }
  if (ncol(y) != 1 || nrow(y) != nrow(x))
    refuse("MATRIX", "matrix meanif(matrix,Vector)", "wektor warunkowy ma nieprawidlowa dlugosc")
  curves_direction(x, y, flag)
}

#' @rdname response_curves
#' @export
direction_B <- function(x, y) direction(x, y, TRUE)

#' @rdname response_curves
#' @export
direction_C <- function(x, y) direction(x, y, FALSE)

# Where the search begins: levels from the means of y, places from the middle and spread of x.
curve_start <- function(curve, x, y) {
  level <- function(which, otherwise = mean(y)) if (any(which)) mean(y[which]) else otherwise
  if (curve == "f_B") return(c(level(x == 0), level(x != 0)))
  coded <- curve == "f_M" & x <= -1
  codes <- level(coded)
  if (!all(coded)) {
    x <- x[!coded]
    y <- y[!coded]
  }
  middle <- mean(x)
  spread <- if (length(x) > 1 && stats::sd(x) > 0) stats::sd(x) else 1
  at <- stats::quantile(x, c(0.1, 0.9), names = FALSE)
  low <- level(x <= at[1])
  high <- level(x >= at[2])
  place <- c(1 / spread, -middle / spread)
  switch(curve,
         f_BL = c((high - low) / (2.5 * spread), mean(y) - (high - low) / (2.5 * spread) * middle),
         f_C = c((high - low) / 2, place, (low + high) / 2),
         f_CU = c(level(abs(x - middle) <= spread) - (low + high) / 2, place, (low + high) / 2),
         f_M = c((high - low) / 2, place, codes - low, (low + high) / 2))
}

# The variable is brought to mean 0 and deviation 1 for the search, whose tolerance is absolute, where
# the curve lets that be undone.
scaled_curve <- function(curve, x) {
  centre <- mean(x)
  spread <- if (length(x) > 1) stats::sd(x) else 0
  if (curve %in% c("f_B", "f_M") || !is.finite(spread) || spread == 0) return(c(0, 1))
  c(centre, spread)
}

curve_parameters <- function(curve, p, centre, spread) {
  k <- if (curve == "f_BL") 1L else 2L
  if (curve %in% c("f_B", "f_M")) return(p)
  p[k] <- p[k] / spread
  p[k + 1L] <- p[k + 1L] - p[k] * centre
  p
}

#' Fit a response curve
#'
#' Fits a curve of one variable, see [response_curves], to observations. The library searches with a
#' simplex, then along the gradient, from `start` and from zeros.
#'
#' @param x the variable: a numeric vector; a fitted curve for `print()` and `plot()`
#' @param y the response, as many numbers; for the likelihood from 0 to 1
#' @param curve `"f_B"`, `"f_BL"`, `"f_C"`, `"f_CU"` or `"f_M"`
#' @param start the parameters to begin with; without them they are guessed from the data
#' @param type what is minimised: `"quadratic"`, the mean squared difference; or `"likelihood"`, minus
#'   the log-likelihood of `y`, the curve being the probability of 1
#' @param speed how much is done: `"slow"` searches with simplex and gradient from both starts,
#'   `"medium"` follows the gradient from the better one only, `"fast"` leaves it out, and
#'   `"fastest"` begins with `start` only
#' @param tol the search ends when parameters and error change by less; it applies to `x` of mean 0
#'   and deviation 1, but for `"f_B"` and `"f_M"`
#' @param object a fitted curve
#' @param newdata numbers at which the curve is wanted, by default those of the fit
#' @param digits digits shown
#' @param groups the response is drawn as its means over about so many groups of equal rank of the
#'   variable; 0 draws the observations
#' @param ... for methods; graphical parameters of `plot()`
#' @details Observations with a missing value are left out. The minimum that is found may be a local
#'   one; other `start` values tell. Four threads add up in any order, so that two runs may differ in
#'   the last digits.
#' @return an object of class `fit_curve` with `coefficients`, `error` (the root of the mean squared
#'   difference, or minus the log-likelihood), `fitted.values` and `residuals`. `predict()` gives the
#'   curve's values, missing for a missing number.
#' @examples
#' x <- seq(-3, 3, 0.1)
#' fit <- fit_curve(x, 0.3 - 0.2 * tanh(1.5 * x + 1), "f_C")
#' fit
#' predict(fit, c(0, NA))
#' plot(fit)
#' @export
fit_curve <- function(x, y, curve = c("f_C", "f_B", "f_BL", "f_CU", "f_M"), start = NULL,
                      type = c("quadratic", "likelihood"),
                      speed = c("slow", "medium", "fast", "fastest"), tol = 1e-8) {
  x <- as_matrix_arg(x)
  y <- as_matrix_arg(y)
  curve <- as_choice_arg(curve, c("f_C", "f_B", "f_BL", "f_CU", "f_M"))
  type <- as_choice_arg(type, c("quadratic", "likelihood"))
  speeds <- c("slow", "medium", "fast", "fastest")
  speed <- as_choice_arg(speed, speeds)
  tol <- as_number_arg(tol, from = 0)
  size <- curve_sizes[[curve]]
  if (ncol(x) != 1 || ncol(y) != 1 || nrow(x) != nrow(y))
    refuse("MATRIX", "double err_fit(matrix,matrix,double (*)(double,matrix),matrix,EsType)",
           "niezgodne wymiary macierzy")
  whole <- !is.na(x[, 1]) & !is.na(y[, 1])
  names <- rownames(x)[whole]
  x <- x[whole]
  y <- y[whole]
  if (!length(x)) misused("x", "have observations without missing values")
  # products of larger numbers overflow
  if (!all(abs(x) < 1e150) || !all(abs(y) < 1e150))
    misused("x` and `y", "be finite numbers below 1e150")
  if (type == "likelihood" && !all(y >= 0 & y <= 1)) misused("y", "be from 0 to 1")
  scale <- scaled_curve(curve, x)
  if (is.null(start)) {
    start <- curve_start(curve, (x - scale[1]) / scale[2], y)
  } else {
    start <- as.vector(as_matrix_arg(start))
    if (length(start) < size)
      refuse("MATRIX", "double & operator ()(int)", "indeks poza zakresem",
             paste0(length(start), " x 1 : ( ", length(start) + 1L, " )"))
    if (length(start) > size || !all(is.finite(start)))
      misused("start", paste("hold", size, "finite numbers"))
    start <- curve_parameters(curve, start, -scale[1] / scale[2], 1 / scale[2])
  }
  found <- curves_fit(curve, (x - scale[1]) / scale[2], y, start, tol, match(speed, speeds) - 1L,
                      as.integer(type == "likelihood"))
  par <- curve_parameters(curve, found$par, scale[1], scale[2])
  fitted <- stats::setNames(curves_values(curve, x, par), names)
  structure(list(curve = curve, coefficients = stats::setNames(par, paste0("p", seq_len(size))),
                 error = found$error, type = type, fitted.values = fitted,
                 residuals = stats::setNames(y, names) - fitted, x = x,
                 omitted = sum(!whole), call = match.call()), class = "fit_curve")
}

#' @rdname fit_curve
#' @export
print.fit_curve <- function(x, digits = max(3L, getOption("digits") - 3L), ...) {
  cat("Response curve ", x$curve, ", ", length(x$x), " observations",
      if (x$omitted) paste0(" (", x$omitted, " with missing values left out)"), "\n\n", sep = "")
  print(x$coefficients, digits = digits)
  cat(if (x$type == "quadratic") "\nRoot mean squared difference" else "\nLog-likelihood",
      format(if (x$type == "quadratic") x$error else -x$error, digits = digits), "\n")
  invisible(x)
}

#' @rdname fit_curve
#' @export
predict.fit_curve <- function(object, newdata = NULL, ...) {
  if (is.null(newdata)) return(object$fitted.values)
  x <- as_matrix_arg(newdata)
  if (ncol(x) != 1) misused("newdata", "have one column")
  stats::setNames(curves_values(object$curve, as.vector(x), object$coefficients), rownames(x))
}

#' @rdname fit_curve
#' @export
nobs.fit_curve <- function(object, ...) length(object$x)

#' @rdname fit_curve
#' @export
logLik.fit_curve <- function(object, ...) {
  n <- length(object$x)
  value <- if (object$type == "likelihood") -object$error
           else -n / 2 * (log(2 * pi * object$error^2) + 1)
  structure(value, df = length(object$coefficients) + (object$type == "quadratic"), nobs = n,
            class = "logLik")
}

#' @rdname fit_curve
#' @export
plot.fit_curve <- function(x, groups = 20, ...) {
  groups <- as_whole_arg(groups, from = 0)
  at <- x$x
  y <- x$fitted.values + x$residuals
  if (groups > 0 && length(at) > groups) {
    # equal numbers stay together
    group <- ceiling(rank(at, ties.method = "max") * groups / length(at))
    at <- as.vector(tapply(at, group, mean))
    y <- as.vector(tapply(y, group, mean))
  }
  line <- seq(min(x$x), max(x$x), length.out = 500)
  curve <- predict(x, line)
  frame <- list(x = at, y = y, xlim = range(x$x), ylim = range(y, curve), xlab = "x",
                ylab = "response", main = x$curve)
  do.call(graphics::plot, overridden(frame, list(...)))
  graphics::lines(line, curve, lwd = 2, col = "firebrick")
  invisible(x)
}
