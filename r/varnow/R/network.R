activations <- c("logistic", "tanhyp", "linear") # by their codes
net_parts <- c("layers", "activ", "w1", "b1", "w2", "b2")

#' Neural network with one hidden layer
#'
#' `net()` trains a feed-forward network with one output, for regression and for scores, by whole
#' passes over the observations: in each step a conjugate direction with a line search and a damped
#' step, the better of which is taken. `save_net()` and `load_net()` keep the net in six text files
#' `name_layers.nn`, `name_activ.nn`, `name_w1.nn`, `name_b1.nn`, `name_w2.nn`, `name_b2.nn`, which
#' programs of the library read and write too; weights have six digits there. [saveRDS()] keeps it whole.
#'
#' With observations for validation the weights kept are those with the best correlations of values
#' and target in both sets, otherwise those with the least squared error.
#'
#' @param x a formula; or a numeric vector, matrix or data frame of inputs
#' @param y the target, as many numbers as `x` has rows
#' @param data a data frame with the variables of the formula
#' @param hidden the number of hidden units
#' @param activation,output the functions of the hidden units and of the output: `"tanhyp"`,
#'   `"logistic"` or `"linear"`
#' @param valid observations for validation: a data frame with the variables of the formula; for
#'   other `x` a list of `x` and `y`
#' @param min_iter,max_iter the least and the largest number of steps
#' @param patience after how many steps of little gain training ends; from `min_iter` on they count
#' @param min_gain what is little: the smoothed relative fall of the error
#' @param method `"both"`, or only `"conjugate"` or `"damped"` steps
#' @param penalty whether large weights add to the error (not with `valid`)
#' @param scale weights begin between 0 and this; [set.seed()] repeats them
#' @param standardise whether inputs are brought to mean 0 and deviation 1 for training; the weights
#'   of the result fit inputs as they are given
#' @param verbose whether the library prints each step
#' @param ... the arguments from `hidden` on
#' @param object a net
#' @param newdata new observations, as the net was given them; without them the fitted values
#' @param name path and stem of the files
#' @details Rows with a missing value are left out of training, and predicted as missing. Training can
#'   be interrupted between steps.
#' @return an object of class `net` with the weights `w1`, `b1`, `w2`, `b2`, the `fitted.values` and,
#'   for the `learning` and the `validation` set, the mean squared `error`, the correlation `corr` and
#'   the accuracy ratio `AR` of values and target (missing where the target is not 0 and 1; negative
#'   where high values go with 1, which counts as the bad outcome of a low score). `coef()` gives the
#'   weights, `summary()` the measures. `load_net()` gives a net without fitted values. `save_net()`
#'   gives the name, invisibly.
#' @examples
#' set.seed(1)
#' fit <- net(mpg ~ wt + hp, mtcars, hidden = 3, max_iter = 50)
#' fit
#' predict(fit, data.frame(wt = 3, hp = c(100, 150)))
#' name <- save_net(fit, tempfile())
#' predict(load_net(name), cbind(wt = 3, hp = 100))
#' @export
net <- function(x, ...) UseMethod("net")

#' @rdname net
#' @export
net.formula <- function(x, data = environment(x), ..., valid = NULL) {
  frame <- stats::model.frame(x, data, na.action = stats::na.omit)
  terms <- attr(frame, "terms")
  if (!is.null(stats::model.offset(frame))) misused("x", "have no offset")
  levels <- stats::.getXlevels(terms, frame)
  contrasts <- attr(net_design(terms, frame), "contrasts")
  if (!is.null(valid)) {
    if (!is.data.frame(valid)) misused("valid", "be a data frame")
    rows <- stats::model.frame(terms, valid, na.action = stats::na.omit, xlev = levels)
    valid <- list(x = net_design(terms, rows, contrasts), y = stats::model.response(rows))
  }
  fit <- net.default(net_design(terms, frame), stats::model.response(frame), ..., valid = valid)
  fit$terms <- terms
  fit$xlevels <- levels
  fit$contrasts <- contrasts
  fit$na.action <- attr(frame, "na.action")
  fit$call <- match.call()
  fit
}

# The inputs of a formula; the bias stands for the intercept.
net_design <- function(terms, frame, contrasts = NULL) {
  attr(terms, "intercept") <- 1
  design <- stats::model.matrix(terms, frame, contrasts.arg = contrasts)
  structure(design[, -1, drop = FALSE], contrasts = attr(design, "contrasts"))
}

#' @rdname net
#' @export
net.default <- function(x, y, hidden = 4, activation = c("tanhyp", "logistic", "linear"),
                        output = c("linear", "logistic", "tanhyp"), valid = NULL, min_iter = 20,
                        max_iter = 200, patience = 10, min_gain = 1e-4,
                        method = c("both", "conjugate", "damped"), penalty = FALSE, scale = 0.1,
                        standardise = TRUE, verbose = FALSE, ...) {
  if (...length()) misused("...", "be empty")
  hidden <- as_whole_arg(hidden, from = 1, to = 5000)
  codes <- match(c(as_choice_arg(activation, c("tanhyp", "logistic", "linear")),
                   as_choice_arg(output, c("linear", "logistic", "tanhyp"))), activations)
  steps <- c(as_whole_arg(min_iter, from = 0), as_whole_arg(max_iter, from = 1),
             as_whole_arg(patience, from = 0))
  as_number_arg(min_gain)
  method <- as_choice_arg(method, c("both", "conjugate", "damped"))
  as_number_arg(scale, from = 0, to = 1e6)
  for (flag in c("penalty", "standardise", "verbose")) as_flag_arg(get(flag), flag)
  learning <- net_patterns(x, y, "x")
  inputs <- ncol(learning$x)
  if (inputs < 1 || !any(learning$kept)) misused("x", "have a row without missing values, and columns")
  if ((inputs + 2) * hidden + 1 > 5000) misused("hidden", "make at most 5000 weights")
  checked <- if (is.null(valid)) list(x = matrix(0, 0, inputs), y = matrix(0, 0, 1)) else {
    if (!is.list(valid) || is.null(valid$x) || is.null(valid$y))
      misused("valid", "be a list of x and y")
    net_patterns(valid$x, valid$y, "valid")
  }
  if (ncol(checked$x) != inputs)
    refuse("NEURAL_NET", "int learn_and_valid(int,int,int,double,int,int,int)",
           "niezgodne wymiary macierzy wzorcow")
  if (!is.null(valid) && !nrow(checked$x)) misused("valid", "have a row without missing values")
  if (penalty && !is.null(valid)) misused("penalty", "be FALSE with `valid`")

  centre <- if (standardise) colMeans(learning$x) else rep(0, inputs)
  spread <- if (standardise) apply(learning$x, 2, function(v) sqrt(mean((v - mean(v))^2)))
            else rep(1, inputs)
  spread[!(spread > 0) | !is.finite(spread)] <- 1
  standard <- function(x) sweep(sweep(x, 2, centre), 2, spread, "/")
  draw <- function(rows, cols) matrix(stats::runif(rows * cols) * scale, rows, cols)
  start <- list(w1 = draw(inputs, hidden), b1 = draw(1, hidden), w2 = draw(hidden, 1), b2 = draw(1, 1))
  fit <- network_train(start, codes, standard(learning$x), learning$y, standard(checked$x), checked$y,
                       steps, min_gain, method != "damped", method != "conjugate", penalty, verbose)
  fit$w1 <- fit$w1 / spread
  fit$b1 <- fit$b1 - centre %*% fit$w1
  for (set in c("learning", "validation"))
    if (!is.null(fit[[set]]) && !all(switch(set, learning = learning, checked)$y %in% 0:1))
      fit[[set]][["AR"]] <- NA
  dimnames(fit$w1) <- list(learning$names, NULL)
  fit <- structure(c(fit, list(codes = codes)), class = "net")
  fit$fitted.values <- network_values(fit, codes, learning$x)
  names(fit$fitted.values) <- rownames(learning$x)
  if (!all(learning$kept)) fit$na.action <- structure(which(!learning$kept), class = "omit")
  fit$call <- match.call()
  fit
}

# Inputs and targets of the rows without missing values.
net_patterns <- function(x, y, what) {
  x <- as_matrix_arg(x, what)
  y <- as_matrix_arg(y, "y")
  if (nrow(x) != nrow(y) || ncol(y) != 1)
    refuse("NEURAL_NET", "set_patterns(matrix,matrix,int)", "niezgodne wymiary macierzy")
  kept <- stats::complete.cases(x, y)
  if (any(is.infinite(x)) || any(is.infinite(y))) misused(what, "be finite")
  list(x = x[kept, , drop = FALSE], y = matrix(y[kept], ncol = 1), kept = kept, names = colnames(x))
}

#' @rdname net
#' @export
predict.net <- function(object, newdata, ...) {
  check_net(object)
  if (missing(newdata)) {
    if (is.null(object$fitted.values)) misused("newdata", "be given for a net from a file")
    return(stats::napredict(object$na.action, object$fitted.values))
  }
  if (!is.null(object$terms)) {
    terms <- stats::delete.response(object$terms)
    frame <- stats::model.frame(terms, newdata, na.action = stats::na.pass, xlev = object$xlevels)
    newdata <- net_design(terms, frame, object$contrasts)
    attr(newdata, "contrasts") <- NULL
  }
  x <- as_matrix_arg(newdata)
  if (ncol(x) != nrow(object$w1))
    refuse("NEURAL_NET", "matrix values(int)", "niezgodne wymiary macierzy wzorcow")
  whole <- stats::complete.cases(x)
  r <- rep(NA_real_, nrow(x))
  if (any(whole)) r[whole] <- network_values(object, object$codes, x[whole, , drop = FALSE])
  names(r) <- rownames(x)
  r
}

# The parts of a net, which may have been written to, still belong together.
check_net <- function(object) {
  shape <- function(part, rows, cols)
    is.matrix(object[[part]]) && is.double(object[[part]]) && all(dim(object[[part]]) == c(rows, cols))
  sizes <- dim(object$w1)
  if (!inherits(object, "net") || length(sizes) != 2 || !shape("w1", sizes[1], sizes[2]) ||
      !shape("b1", 1, sizes[2]) || !shape("w2", sizes[2], 1) || !shape("b2", 1, 1) ||
      !is.numeric(object$codes) || length(object$codes) != 2 || !all(object$codes %in% 1:3) ||
      (sizes[1] + 2) * sizes[2] + 1 > 5000)
    misused("object", "be a net")
  invisible(object)
}

#' @export
print.net <- function(x, ...) {
  check_net(x)
  cat("Network ", nrow(x$w1), "-", ncol(x$w1), "-1, ", activations[x$codes[1]], " and ",
      activations[x$codes[2]], ", ", sum(lengths(coef.net(x))), " weights\n", sep = "")
  if (!is.null(x$learning)) print(summary.net(x))
  invisible(x)
}

#' @rdname net
#' @export
summary.net <- function(object, ...) {
  check_net(object)
  rbind(learning = object$learning, validation = object$validation)
}

#' @rdname net
#' @importFrom stats coef predict
#' @export
coef.net <- function(object, ...) object[c("w1", "b1", "w2", "b2")]

#' @rdname net
#' @export
save_net <- function(object, name) {
  check_net(object)
  name <- as_text_arg(name)
  draft <- tempfile("varnow")
  drafts <- paste0(draft, "_", net_parts, ".nn")
  files <- paste0(path.expand(name), "_", net_parts, ".nn")
  on.exit(unlink(drafts))
  network_save(object, object$codes, draft)
  for (k in seq_along(files))
    if (dir.exists(files[k]) ||
        !suppressWarnings(file.copy(drafts[k], files[k], overwrite = TRUE, copy.mode = FALSE)))
      refuse("NEURAL_NET", "save(Text)", "nieudane otwarcie pliku do zapisu",
             paste0("plik: ", files[k]))
  invisible(name)
}

#' @rdname net
#' @export
load_net <- function(name) {
  files <- paste0(path.expand(as_text_arg(name)), "_", net_parts, ".nn")
  names(files) <- net_parts
  damaged <- function(part)
    refuse("NEURAL_NET", "load(Text)", "nieprawidlowa zawartosc pliku", paste0("plik: ", files[[part]]))
  numbers <- function(part) {
    file <- files[[part]]
    if (!file.exists(file) || dir.exists(file) || file.access(file, 4) != 0)
      refuse("NEURAL_NET", "load(Text)", "nieudane otwarcie pliku do odczytu", paste0("plik: ", file))
    words <- scan(file, "", quiet = TRUE, quote = "", comment.char = "", sep = "", skipNul = TRUE)
    x <- suppressWarnings(as.double(words))
    if (!all(is.finite(x)) || !length(x)) damaged(part)
    x
  }
  layers <- numbers("layers")
  if (length(layers) != 3 || any(layers != trunc(layers)) || any(layers < 0) || layers[3] != 1 ||
      (layers[1] + 2) * layers[2] + 1 > 5000)
    damaged("layers")
  codes <- numbers("activ")
  if (length(codes) != 2 || !all(codes %in% 1:3)) damaged("activ")
  weights <- function(part, rows, cols) {
    x <- numbers(part)
    if (length(x) < 3 || x[1] != rows || x[2] != cols || length(x) != 3 + 3 * x[3]) damaged(part)
    entries <- matrix(x[-(1:3)], ncol = 3, byrow = TRUE)
    position <- (entries[, 1] - 1) * cols + entries[, 2]
    if (any(entries[, 1:2] != trunc(entries[, 1:2]) | entries[, 1:2] < 1) ||
        any(entries[, 1] > rows | entries[, 2] > cols) || is.unsorted(position, strictly = TRUE))
      damaged(part)
    r <- matrix(0, rows, cols)
    r[entries[, 1:2, drop = FALSE]] <- entries[, 3]
    r
  }
  inputs <- layers[1]
  hidden <- layers[2]
  structure(list(w1 = weights("w1", inputs, hidden), b1 = weights("b1", 1, hidden),
                 w2 = weights("w2", hidden, 1), b2 = weights("b2", 1, 1), codes = as.integer(codes)),
            class = "net")
}
