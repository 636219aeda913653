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
