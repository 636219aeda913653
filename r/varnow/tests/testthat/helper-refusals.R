# The call stops with the library's message; that later tests run at all shows that R lives on.
expect_refusal <- function(call, class, routine, message, detail = "") {
  text <- paste0(class, ": ", routine, "\n", message, if (nzchar(detail)) paste0("\n", detail))
  e <- tryCatch(call, error = identity)
  expect_s3_class(e, "varnow_refusal")
  expect_identical(conditionMessage(e), text)
}

# What is no data for any function: wrong types and shapes.
not_numbers <- list(NULL, "a", list(1), sum, factor("a"), data.frame(a = "x"), array(0, c(1, 1, 1)),
                    1i, as.Date("2024-02-29"), quote(x))

# Each of the arguments makes the function stop with an ordinary error.
expect_misuse <- function(f, arguments, ...) {
  for (x in arguments) expect_error(f(x, ...), class = "error")
}

odd_values <- c(not_numbers, list(NA, NA_character_, NaN, Inf, -Inf, -1, 0, 0.5, 1e308, TRUE, "", strrep("x", 300),
  character(), numeric(), list(), raw(1), c(1, 2), 1:100, letters, c(NA, 1), data.frame(),
  data.frame(a = 1:3)[0, , drop = FALSE], matrix(0, 0, 3), matrix(0, 3, 0), matrix(NA_real_, 2, 2),
  matrix("a", 2, 2), diag(3), as.POSIXct("2024-02-29", tz = "UTC"), new.env(), NULL, y ~ x, -.Machine$integer.max))

covered <- new.env()

# Calls a function with each of the arguments, and each two of them, replaced by odd values. Whatever
# comes back, an error or a value: a call that ended R would end the tests before their last line.
expect_survival <- function(name, ...) {
  good <- list(...)
  f <- get(name)
  assign(name, TRUE, envir = covered)
  folder <- tempfile()
  dir.create(folder)
  old <- setwd(folder)
  on.exit(setwd(old))
  try_with <- function(changed) {
    capture.output(suppressMessages(suppressWarnings(
      tryCatch(do.call(f, changed, quote = TRUE), error = identity))))
  }
  put <- function(arguments, k, value) {
    arguments[k] <- list(value)
    arguments
  }
  for (k in seq_along(good))
    for (odd in odd_values) {
      try_with(put(good, k, odd))
      if (k > 1) try_with(put(put(good, 1, odd), k, odd))
    }
  expect_true(is.function(f))
}
