# What the models share that a formula or a matrix is given to.

# The model frame of a method's call, for the caller of the generic.
model_frame_of <- function(call, na.action, caller) {
  call <- call[c(1, match(c("formula", "data", "subset"), names(call), 0))]
  call[[1]] <- quote(stats::model.frame)
  call$na.action <- na.action
  call$drop.unused.levels <- TRUE
  frame <- eval(call, caller)
  if (!is.null(stats::model.offset(frame))) misused("formula", "have no offset")
  frame
}

# As the user wrote it, so that update() can repeat it.
generic_call <- function(call, generic) {
  call[[1]] <- as.name(generic)
  call
}

# What is left for `...` of a method is a slip, such as weights, and not to be passed over.
no_others <- function(...) {
  if (!...length()) return(invisible())
  given <- deparse1(substitute(list(...)))
  stop("no such argument: ", strtrim(sub("^list\\((.*)\\)$", "\\1", given), 60), call. = FALSE)
}

# The formula of a model without what terms() has added to it.
formula_of <- function(model) {
  if (is.null(model$terms)) misused("x", "be fitted by a formula")
  stats::formula(model$terms)
}

# New observations as a matrix of the model's columns, by name where the model and they have names.
new_columns <- function(newdata, names) {
  if ((is.data.frame(newdata) || is.matrix(newdata)) && !anyDuplicated(names) &&
      all(names %in% colnames(newdata)))
    newdata <- newdata[, names, drop = FALSE]
  x <- as_matrix_arg(newdata)
  if (ncol(x) != length(names))
    refuse("MATRIX", "matrix mul(matrix,matrix)", "niezgodne wymiary macierzy")
  x
}

# The same for a model with terms, as its model matrix.
new_design <- function(model, newdata) {
  if (is.matrix(newdata) && !is.null(colnames(newdata))) newdata <- as.data.frame(newdata)
  if (!is.data.frame(newdata)) misused("newdata", "be a data frame")
  if (attr(model$terms, "response") == 0)
    names(newdata) <- make.names(names(newdata), unique = TRUE)
  terms <- stats::delete.response(model$terms)
  frame <- stats::model.frame(terms, newdata, na.action = stats::na.pass, xlev = model$xlevels)
  stats::.checkMFClasses(attr(terms, "dataClasses"), frame)
  stats::model.matrix(terms, frame, contrasts.arg = model$contrasts)
}
