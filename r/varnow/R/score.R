estimators <- c("logistic_par", "logistic_par2", "logistic_par1")
score_methods <- c(estimators, "f_C", "f_CU", "f_M", "f_BL", "f_B")

# The ridge of the conjugate searches, on all parameters of the columns that they see.
ridge_of <- function(method) if (method == "logistic_par1") 0 else 0.1

#' Score models
#'
#' `score_model()` fits the probability of an event: by logistic regression over any number of
#' variables, or by one of the [response_curves] over a single one.
#'
#' @param x,formula a formula; or a numeric vector, matrix or data frame of variables, whose factors
#'   become columns by [stats::model.matrix()]
#' @param y the event: 1 or `TRUE`, otherwise 0 or `FALSE`; or a factor of two levels, the second of
#'   which is the event; numbers between 0 and 1 serve as shares
#' @param data a data frame with the variables of the formula
#' @param method the estimator, or the curve:
#'   * `"logistic_par"`: conjugate directions over growing samples of the rows, for large data;
#'   * `"logistic_par2"`: the same over all rows from the start;
#'   * `"logistic_par1"`: Newton's iteration, one thread;
#'   * `"f_C"`, `"f_CU"`, `"f_M"`, `"f_BL"`, `"f_B"`: the curve of one variable by maximum likelihood,
#'     as by [fit_curve()].
#' @param eps the conjugate searches end when no parameter moves by more, which are those of uncorrelated
#'   columns of deviation 1; the steps behind them make it a matter of time and not of digits
#' @param threads number of threads of the conjugate searches
#' @param subset,na.action the rows that are taken, and what becomes of those with missing values, as
#'   for [stats::glm()]
#' @param contrasts for factors, as for [stats::glm()]
#' @param object a score model
#' @param newdata new observations, as the model was given them; columns of a matrix go by their names
#'   where they have any
#' @param type of a prediction: the probability (`"response"`), its log-odds (`"link"`), or the score
#'   from 0, the highest probability, to 1000 (`"score"`); of residuals as for [stats::glm()]
#' @param digits digits shown
#' @param which the curves to be drawn, of the model's own observations, see [plot_cap()]
#' @param p probabilities, in any shape
#' @param ... for methods; graphical parameters of `plot()`; there are no weights
#' @details Columns are brought to mean 0 and deviation 1 and made uncorrelated for the search, and the
#'   coefficients are those of the columns as they were. A model has an intercept; columns of one
#'   value, and columns that depend on those before them, have no coefficient (`NA`).
#'
#'   `"logistic_par"` and `"logistic_par2"` have a ridge: they maximise the log-likelihood less 0.05
#'   times the mean square, over the observations, of the log-odds (with `n - 1` in place of `n` for
#'   their variance). It draws the model a little toward even odds, the less the more data there are,
#'   and makes a model of classes that can be separated possible. Their `vcov()` is that of an
#'   estimator with a ridge, in which the draw itself is not counted (le Cessie and van Houwelingen,
#'   Appl. Statist. 41 (1992) 191); that of `"logistic_par1"`, which has no ridge, is the inverse of
#'   the information. Curves have none.
#'
#'   The searches begin at random and end close to the optimum; Newton's steps take away what is left,
#'   so that two runs agree but for the last digits. Where the samples lead `"logistic_par"` astray,
#'   `"logistic_par2"` takes its place. A fit that stops farther than a thousandth of a standard error
#'   from the optimum warns.
#' @return an object of class `score_model`. `print()`, `summary()`, `coef()`, `vcov()`, `confint()`,
#'   `predict()`, `fitted()`, `residuals()`, `logLik()`, `AIC()`, `deviance()`, `nobs()`,
#'   `update()` and `plot()` work on it.
#'   Predictions are missing where `newdata` is. `summary()` also tells the accuracy ratio and the
#'   Kolmogorov-Smirnov distance, see [AR()], of the model's own observations. `lm_score()`: the score
#'   of each probability, `round(1000 (1 - p))`.
#' @examples
#' model <- score_model(am ~ wt + factor(gear), mtcars)
#' summary(model)
#' predict(model, mtcars[1:3, ], type = "score")
#' plot(model, "CAP")
#' coef(score_model(as.matrix(mtcars["hp"]), mtcars$vs, method = "logistic_par1"))
#' score_model(vs ~ hp, mtcars, method = "f_C")
#' lm_score(c(0, 0.25, NA))
#' @export
score_model <- function(x, ...) UseMethod("score_model")

#' @rdname score_model
#' @export
score_model.formula <- function(formula, data = environment(formula), method = score_methods,
                                eps = 1e-5, threads = 1, subset = NULL,
                                na.action = stats::na.omit, contrasts = NULL, ...) {
  no_others(...)
  frame <- model_frame_of(match.call(), na.action, parent.frame())
  if (attr(attr(frame, "terms"), "intercept") != 1) misused("formula", "leave the intercept in")
  y <- stats::model.response(frame)
  if (is.null(y)) misused("formula", "have a response")
  framed_model(frame, as_event(y, "the response"), contrasts, score_options(method, eps, threads),
               generic_call(match.call(), "score_model"))
}

#' @rdname score_model
#' @export
score_model.default <- function(x, y, method = score_methods, eps = 1e-5, threads = 1, ...) {
  no_others(...)
  call <- generic_call(match.call(), "score_model")
  options <- score_options(method, eps, threads)
  as_rows <- is.data.frame(x) && ncol(x) > 0
  if (!as_rows) x <- as_matrix_arg(x)
  event <- as_event(y, "y")
  if (nrow(event$y) != nrow(x) || ncol(event$y) != 1)
    refuse("MATRIX", score_routine(options$method), "niezgodne wymiary macierzy")
  whole <- stats::complete.cases(x, event$y)
  omitted <- if (!all(whole)) structure(which(!whole), class = "omit")
  if (!all(whole)) {
    x <- x[whole, , drop = FALSE]
    event$y <- event$y[whole, , drop = FALSE]
  }
  if (as_rows) {
    # names such as `a b` or `.` are none for a formula
    names(x) <- make.names(names(x), unique = TRUE)
    frame <- stats::model.frame(~ ., x, na.action = stats::na.pass)
    fit <- framed_model(frame, event, NULL, options, call)
  } else {
    fit <- fitted_model(x, event, options, call)
  }
  fit$na.action <- omitted
  fit
}

score_options <- function(method, eps, threads) {
  list(method = as_choice_arg(method, score_methods), eps = as_number_arg(eps, from = 0),
       threads = as_whole_arg(threads, from = 1, to = 1024))
}

score_routine <- function(method) {
  switch(method,
         logistic_par = , logistic_par2 = paste0("matrix ", method, "(matrix,matrix,int,double)"),
         logistic_par1 = "matrix logistic_par1(matrix,matrix)",
         "double err_fit(matrix,matrix,double (*)(double,matrix),matrix,EsType)")
}

# The flag as a column, and the words for its 1.
as_event <- function(y, what) {
  if (is.factor(y)) {
    if (nlevels(y) != 2) misused(what, "have two levels")
    return(list(y = matrix(as.double(y) - 1, dimnames = list(names(y), NULL)), name = levels(y)[2]))
  }
  if (is.character(y)) misused(what, "be numbers, flags or a factor; compare texts: y == \"bad\"")
  y <- as_matrix_arg(y, what)
  if (any(y < 0 | y > 1, na.rm = TRUE)) misused(what, "be from 0 to 1")
  list(y = y)
}

# A model of the columns that a model frame gives.
framed_model <- function(frame, event, contrasts, options, call) {
  terms <- attr(frame, "terms")
  design <- stats::model.matrix(terms, frame, contrasts.arg = contrasts)
  fit <- fitted_model(design[, -1, drop = FALSE], event, options, call)
  fit$terms <- terms
  fit$xlevels <- stats::.getXlevels(terms, frame)
  fit$contrasts <- attr(design, "contrasts")
  fit$na.action <- attr(frame, "na.action")
  fit
}

fitted_model <- function(x, event, options, call) {
  y <- event$y
  if (nrow(y) != nrow(x) || ncol(y) != 1)
    refuse("MATRIX", score_routine(options$method), "niezgodne wymiary macierzy")
  if (!nrow(x)) misused("x", "have observations without missing values")
  if (anyNA(y)) misused("y", "have no missing value")
  names <- colnames(x)
  if (is.null(names)) names <- if (ncol(x)) paste0("x", seq_len(ncol(x))) else character()
  observations <- rownames(x)
  dimnames(x) <- dimnames(y) <- NULL
  fit <- if (options$method %in% estimators) fit_logistic(x, y, names, options)
         else fit_response(x, y, options)
  fitted <- stats::setNames(fit$fitted, observations)
  fit$fitted <- NULL
  fit$linear.predictors <- if (is.null(fit$curve)) stats::setNames(fit$linear, observations)
  fit$linear <- NULL
  structure(c(fit, list(fitted.values = fitted, y = as.vector(y), event = event$name,
                        method = options$method, columns = names, call = call,
                        df.residual = length(y) - sum(!is.na(fit$coefficients)))),
            class = "score_model")
}

fit_response <- function(x, y, options) {
  if (ncol(x) != 1)
    misused("x", paste("be one variable for method", options$method, "and not", ncol(x)))
  curve <- fit_curve(x, y, options$method, type = "likelihood")
  list(coefficients = coef(curve), fitted = curve$fitted.values, loglik = -curve$error, curve = curve)
}

fit_logistic <- function(x, y, names, options) {
  scale <- score_scale(x)
  centre <- scale[[1]]
  spread <- scale[[2]]
  if (!all(is.finite(spread))) misused("x", "hold finite numbers whose squares are finite")
  varied <- which(spread > 0)
  if (length(varied) < ncol(x)) x <- x[, varied, drop = FALSE]
  fit <- score_fit(x, y, centre[varied], spread[varied], options$method, ridge_of(options$method),
                   options$threads, options$eps)
  m <- length(fit$par)
  if (!all(is.finite(fit$par)))
    stop("the search left the finite numbers: the classes can perhaps be separated, or there are too ",
         "few observations; methods \"logistic_par\" and \"logistic_par2\" have a ridge that helps",
         call. = FALSE)
  # From the columns of the search to those of the data, with the intercept first.
  slopes <- matrix(fit$to, length(varied), m - 1)
  to_data <- rbind(c(-centre[varied] %*% slopes, 1),
                   cbind(slopes, numeric(length(varied))))
  at <- c(1, fit$used + 1)
  to_data <- to_data[at, , drop = FALSE]
  used <- varied[fit$used]
  names <- c("(Intercept)", names)
  coefficients <- standardised <- stats::setNames(rep(NA_real_, length(names)), names)
  coefficients[c(1, used + 1)] <- to_data %*% fit$par
  standardised[c(1, used + 1)] <- c(fit$par[m], coefficients[used + 1] * spread[used])
  converged <- isTRUE(fit$distance < 1e-6)
  if (!converged)
    warning("the search stopped before its optimum: try another `eps` or `method`", call. = FALSE)
  list(coefficients = coefficients, standardised = standardised, fitted = fit$fitted,
       linear = as.vector(x[, fit$used, drop = FALSE] %*% coefficients[used + 1]) + coefficients[[1]],
       loglik = fit$loglik, converged = converged, information = fit$information, to_data = to_data)
}

#' @rdname score_model
#' @export
print.score_model <- function(x, digits = max(3L, getOption("digits") - 3L), ...) {
  score_heading(x, length(x$y), length(x$na.action))
  cat("\n")
  print(x$coefficients, digits = digits)
  cat("\n")
  score_footing(score_measures(x), digits)
  invisible(x)
}

score_heading <- function(x, n, omitted) {
  cat("Score model by ", x$method, ", ", n, " observations",
      if (omitted) paste0(" (", omitted, " with missing values left out)"),
      if (!is.null(x$event)) paste(", event:", x$event), "\n", sep = "")
  if (!is.null(x$call)) cat(deparse(x$call), sep = "\n")
}

# The higher the score, the lower the probability.
score_measures <- function(x) {
  c(AR = AR(-x$fitted.values, x$y), KS = KS(-x$fitted.values, x$y), logLik = x$loglik)
}

score_footing <- function(measures, digits) {
  shown <- vapply(measures, format, "", digits = digits)
  cat("AR ", shown[["AR"]], ", KS ", shown[["KS"]], ", log-likelihood ", shown[["logLik"]], "\n",
      sep = "")
}

#' @rdname score_model
#' @export
summary.score_model <- function(object, ...) {
  table <- cbind(Estimate = object$coefficients)
  if (is.null(object$curve)) {
    error <- sqrt(diag(vcov.score_model(object)))[rownames(table)]
    ratio <- object$coefficients / error
    table <- cbind(table, Standardised = object$standardised, `Std. Error` = error, `z value` = ratio,
                   `Pr(>|z|)` = 2 * stats::pnorm(-abs(ratio)))
    rownames(table) <- names(object$coefficients)
  }
  structure(list(call = object$call, method = object$method, event = object$event,
                 coefficients = table, measures = score_measures(object), nobs = length(object$y),
                 omitted = length(object$na.action), converged = object$converged),
            class = "summary.score_model")
}

#' @rdname score_model
#' @export
print.summary.score_model <- function(x, digits = max(3L, getOption("digits") - 3L), ...) {
  score_heading(x, x$nobs, x$omitted)
  cat("\n")
  if (ncol(x$coefficients) == 1) print(x$coefficients, digits = digits)
  else stats::printCoefmat(x$coefficients, digits = digits, cs.ind = 1:3, tst.ind = 4, na.print = "NA")
  cat("\n")
  score_footing(x$measures, digits)
  if (isFALSE(x$converged)) cat("The search stopped before its optimum.\n")
  invisible(x)
}

#' @rdname score_model
#' @importFrom stats vcov
#' @export
vcov.score_model <- function(object, ...) {
  if (!is.null(object$curve)) misused("object", "be a logistic model; curves have no covariances")
  H <- object$information
  inverse <- solve(H + diag(ridge_of(object$method), nrow(H)), tol = 0)
  V <- if (object$method == "logistic_par1") inverse else inverse %*% H %*% inverse
  names <- names(object$coefficients)[!is.na(object$coefficients)]
  V <- object$to_data %*% V %*% t(object$to_data)
  matrix((V + t(V)) / 2, nrow(V), dimnames = list(names, names))
}

#' @rdname score_model
#' @importFrom stats predict
#' @export
predict.score_model <- function(object, newdata = NULL, type = c("response", "link", "score"), ...) {
  no_others(...)
  type <- as_choice_arg(type, c("response", "link", "score"))
  if (is.null(newdata)) {
    p <- if (type == "link" && is.null(object$curve)) object$linear.predictors else object$fitted.values
    p <- stats::napredict(object$na.action, p)
  } else {
    x <- new_variables(object, newdata)
    if (is.null(object$curve)) {
      par <- object$coefficients
      par[is.na(par)] <- 0
      z <- as.vector(x %*% par[-1]) + par[[1]]
      p <- if (type == "link") z else score_probabilities(z)
    } else {
      p <- predict(object$curve, x)
    }
    names(p) <- rownames(x)
  }
  if (type == "score") return(lm_score(p))
  if (type == "link" && !is.null(object$curve))
    p[] <- ifelse(p >= 0 & p <= 1, stats::qlogis(pmin(pmax(p, 0), 1)), NaN)
  p
}

new_variables <- function(object, newdata) {
  if (is.null(object$terms)) return(new_columns(newdata, object$columns))
  new_design(object, newdata)[, -1, drop = FALSE]
}

#' @rdname score_model
#' @importFrom stats fitted
#' @export
fitted.score_model <- function(object, ...) stats::napredict(object$na.action, object$fitted.values)

#' @rdname score_model
#' @importFrom stats residuals
#' @export
residuals.score_model <- function(object, type = c("deviance", "pearson", "response"), ...) {
  type <- as_choice_arg(type, c("deviance", "pearson", "response"))
  y <- object$y
  p <- object$fitted.values
  # by the likelihood of y itself, 0 for shares as for flags at their best
  lost <- function(y, p) ifelse(y > 0, y * log(y / p), 0)
  r <- switch(type, response = y - p, pearson = (y - p) / sqrt(p * (1 - p)),
              deviance = sign(y - p) * sqrt(2 * pmax(lost(y, p) + lost(1 - y, 1 - p), 0)))
  stats::naresid(object$na.action, stats::setNames(r, names(p)))
}

#' @rdname score_model
#' @importFrom stats deviance
#' @export
deviance.score_model <- function(object, ...) {
  object$na.action <- NULL
  sum(residuals.score_model(object)^2)
}

#' @rdname score_model
#' @export
formula.score_model <- function(x, ...) formula_of(x)

#' @rdname score_model
#' @importFrom stats logLik
#' @export
logLik.score_model <- function(object, ...) {
  structure(object$loglik, df = sum(!is.na(object$coefficients)), nobs = length(object$y),
            class = "logLik")
}

#' @rdname score_model
#' @export
nobs.score_model <- function(object, ...) length(object$y)

#' @rdname score_model
#' @export
plot.score_model <- function(x, which = c("CAP", "KS"), ...) {
  if (!is.character(which) || !length(which) || !all(which %in% c("CAP", "KS")))
    misused("which", "be \"CAP\", \"KS\" or both")
  if ("CAP" %in% which) plot_cap(-x$fitted.values, x$y, ...)
  if ("KS" %in% which) plot_ks(lm_score(x$fitted.values), x$y, ...)
  invisible(x)
}

#' @rdname score_model
#' @export
lm_score <- function(p) {
  p <- as_matrix_like(p)
  p[] <- score_points(matrix(as.double(p), ncol = 1))
  p
}
