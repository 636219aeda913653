#' Least squares with tests of the coefficients
#'
#' `linreg()` regresses by sweeps of the sums of products, which is fast for many rows. There is no
#' pivoting and no tolerance: variables that depend on each other are refused where a coefficient
#' comes out infinite or missing; close to that, and very far from 0, digits are lost, with a warning
#' when few are left.
#'
#' @param x,formula a formula; or a numeric vector, matrix or data frame of variables
#' @param y the target, as many numbers as `x` has rows
#' @param data a data frame with the variables of the formula
#' @param subset,na.action the rows that are taken, and what becomes of those with missing values, as
#'   for [stats::lm()]
#' @param intercept whether the model has an intercept; a formula tells by itself
#' @param type `"quadratic"`: least squares; `"likelihood"`: for a target of 0 and 1, the linear value
#'   being the probability of 1 (only with an intercept)
#' @param ... for methods; there are no weights
#' @param object a model
#' @param newdata new observations, as the model was given them, columns of a matrix going by their
#'   names where they have any; without them the fitted values
#' @param digits digits shown
#' @details Rows with a missing value are left out. Numbers beyond 1e150 are refused, since their
#'   products overflow. The probabilities `p` of a larger ratio of coefficient and standard error are
#'   taken from the normal distribution, however few observations there are.
#' @return an object of class `linreg` with `coefficients`, `se`, `t`, `p`, `fitted.values`,
#'   `residuals`, `df.residual`; `print()`, `summary()`, `predict()`, `vcov()`, `logLik()`, `AIC()`,
#'   `confint()`, `update()` and others work on it.
#' @examples
#' fit <- linreg(dist ~ speed, cars)
#' summary(fit)
#' predict(fit, data.frame(speed = c(10, 20)))
#' coef(linreg(as.matrix(mtcars[c("wt", "hp")]), mtcars$mpg))
#' @export
linreg <- function(x, ...) UseMethod("linreg")

#' @rdname linreg
#' @export
linreg.formula <- function(formula, data = environment(formula),
                           type = c("quadratic", "likelihood"), subset = NULL,
                           na.action = stats::na.omit, ...) {
  no_others(...)
  frame <- model_frame_of(match.call(), na.action, parent.frame())
  terms <- attr(frame, "terms")
  design <- stats::model.matrix(terms, frame)
  intercept <- attr(terms, "intercept") == 1
  if (intercept) design <- design[, -1, drop = FALSE]
  response <- stats::model.response(frame)
  if (is.null(dim(response))) names(response) <- NULL # the design has them too
  fit <- linear_model(design, as_matrix_arg(response, "the response"), intercept,
                      as_choice_arg(type, c("quadratic", "likelihood")))
  fit$terms <- terms
  fit$xlevels <- stats::.getXlevels(terms, frame)
  fit$contrasts <- attr(design, "contrasts")
  fit$na.action <- attr(frame, "na.action")
  fit$call <- generic_call(match.call(), "linreg")
  fit
}

#' @rdname linreg
#' @export
linreg.default <- function(x, y, intercept = TRUE, type = c("quadratic", "likelihood"), ...) {
  no_others(...)
  x <- as_matrix_arg(x)
  y <- as_matrix_arg(y)
  as_flag_arg(intercept)
  type <- as_choice_arg(type, c("quadratic", "likelihood"))
  check_regression(x, y, 0)
  omitted <- if (linear_largest(x, y) == Inf) which(!stats::complete.cases(x, y))
  if (length(omitted)) {
    x <- x[-omitted, , drop = FALSE]
    y <- y[-omitted, , drop = FALSE]
  }
  fit <- linear_model(x, y, intercept, type)
  if (length(omitted)) fit$na.action <- structure(omitted, class = "omit")
  fit$call <- generic_call(match.call(), "linreg")
  fit
}

check_regression <- function(x, y, coefficients) {
  if (ncol(y) != 1 || nrow(y) < 1 || nrow(x) != nrow(y) || nrow(y) < coefficients)
    refuse("MATRIX", "matrix linreg(matrix,matrix)", "nieprawidlowe wymiary macierzy")
}

linear_model <- function(x, y, intercept, type) {
  names <- colnames(x)
  check_regression(x, y, ncol(x) + intercept)
  if (!intercept && type == "likelihood") misused("type", "be \"quadratic\" without an intercept")
  # infinities among the sums of products turn into NaN, with which they are not symmetric
  if (linear_largest(x, y) >= 1e150)
    refuse("MATRIX", "linreg_sweep(int,int)", "macierz powinna byc symetryczna")
  if (type == "likelihood" && !all(y == 0 | y == 1)) misused("y", "hold 0 and 1 only")
  k <- ncol(x)
  rows <- rownames(x)
  dimnames(x) <- dimnames(y) <- NULL # names of many rows take longer than the sums
  parts <- if (intercept) linear_fit(x, y, type == "likelihood")
           else if (ncol(x)) linear_fit_plain(x, y)
           else misused("x", "have a column where there is no intercept")
  if (!all(is.finite(parts[[1]])))
    refuse("MATRIX", "lineqns_Gauss(matrix,matrix)", "macierz jest prawie osobliwa")
  if (parts[[7]])
    warning("the variables depend on each other or lie far from 0: few digits are right",
            call. = FALSE)
  if (is.null(names)) names <- if (k) paste0("x", seq_len(k)) else character()
  # the library has the intercept last, R first
  order <- if (intercept) c(k + 1L, seq_len(k)) else seq_len(k)
  if (intercept) names <- c("(Intercept)", names)
  column <- function(i) stats::setNames(parts[[i]][order], names)
  fitted <- stats::setNames(parts[[5]], rows)
  structure(list(coefficients = column(1), se = column(2), t = column(3), p = column(4),
                 fitted.values = fitted, residuals = stats::setNames(y[, 1] - parts[[5]], rows),
                 df.residual = nrow(x) - length(order), deviance = sum((y[, 1] - parts[[5]])^2),
                 unscaled = matrix(parts[[6]][order, order], length(order),
                                   dimnames = list(names, names)),
                 intercept = intercept, type = type), class = "linreg")
}

#' @rdname linreg
#' @export
print.linreg <- function(x, digits = max(3L, getOption("digits") - 3L), ...) {
  cat("Linear model, ", length(x$residuals), " observations\n", sep = "")
  if (!is.null(x$call)) cat(deparse(x$call), sep = "\n")
  cat("\n")
  print(x$coefficients, digits = digits)
  invisible(x)
}

#' @rdname linreg
#' @export
summary.linreg <- function(object, ...) {
  total <- object$fitted.values + object$residuals
  if (object$intercept) total <- total - mean(total)
  error <- sum(object$residuals^2)
  structure(list(call = object$call, sigma = sqrt(error / object$df.residual),
                 coefficients = cbind(Estimate = object$coefficients, `Std. Error` = object$se,
                                      Ratio = object$t, `Pr(>|ratio|)` = object$p),
                 r.squared = 1 - error / sum(total^2), df.residual = object$df.residual,
                 omitted = length(object$na.action)), class = "summary.linreg")
}

#' @rdname linreg
#' @export
print.summary.linreg <- function(x, digits = max(3L, getOption("digits") - 3L), ...) {
  if (!is.null(x$call)) cat(deparse(x$call), "", sep = "\n")
  stats::printCoefmat(x$coefficients, digits = digits, has.Pvalue = TRUE, P.values = TRUE)
  cat("\nResidual standard error ", format(x$sigma, digits = digits), " on ", x$df.residual,
      " degrees of freedom, R-squared ", format(x$r.squared, digits = digits), "\n", sep = "")
  if (x$omitted) cat(x$omitted, "observations with missing values left out\n")
  invisible(x)
}

#' @rdname linreg
#' @export
predict.linreg <- function(object, newdata = NULL, ...) {
  no_others(...)
  if (is.null(newdata)) return(stats::napredict(object$na.action, object$fitted.values))
  if (is.null(object$terms)) {
    names <- names(object$coefficients)
    x <- new_columns(newdata, if (object$intercept) names[-1] else names)
    if (object$intercept) x <- cbind(1, x)
  } else {
    x <- new_design(object, newdata)
  }
  stats::setNames(as.vector(x %*% object$coefficients), rownames(x))
}

#' @rdname linreg
#' @importFrom stats formula
#' @export
formula.linreg <- function(x, ...) formula_of(x)

#' @rdname linreg
#' @export
vcov.linreg <- function(object, ...) {
  object$unscaled * sum(object$residuals^2) / object$df.residual
}

#' @rdname linreg
#' @export
logLik.linreg <- function(object, ...) {
  n <- length(object$residuals)
  mean_square <- sum(object$residuals^2) / n
  value <- if (object$type == "quadratic") -n / 2 * (log(2 * pi * mean_square) + 1)
           else sum(log(pmax(1 - abs(object$residuals), 0)))
  structure(value, df = length(object$coefficients) + (object$type == "quadratic"), nobs = n,
            class = "logLik")
}

#' @importFrom stats nobs
#' @rdname linreg
#' @export
nobs.linreg <- function(object, ...) length(object$residuals)
