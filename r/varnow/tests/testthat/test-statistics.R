test_that("statistics of columns agree with R's", {
  x <- as.matrix(mtcars)
  r <- column_statistics(mtcars, c("count", "sum", "sumsqr", "prod", "mean", "var", "stdev", "min", "max",
                          "median"))
  expect_identical(dimnames(r), list(c("COUNT", "SUM", "SUMSQR", "PROD", "MEAN", "VAR", "STDEV",
                                       "MIN", "MAX", "MEDIAN"), names(mtcars)))
  squares <- function(v) sum(v^2)
  by_r <- list(length, sum, squares, prod, mean, var, sd, min, max, median)
  for (k in seq_along(by_r)) expect_equal(unname(r[k, ]), unname(apply(x, 2, by_r[[k]])))
  expect_equal(column_statistics(c(3, 1, 3, 1, 2), "mode")[[1]], 1)
  probs <- c(0, 0.123, 0.5, 1)
  expect_equal(unname(column_quantiles(x, probs)), unname(apply(x, 2, quantile, probs)))
  expect_identical(rownames(column_quantiles(x, 0.5)), "QUANTILE_0.500")
})

test_that("missing values count as missing, and one row is a sample for each column", {
  x <- data.frame(a = c(1, NA, 3), b = c(TRUE, FALSE, TRUE))
  expect_equal(unname(column_statistics(x, c("count", "mean"))), matrix(c(2, NA, 3, 2 / 3), 2))
  expect_equal(unname(column_statistics(x, c("count", "mean"), na.rm = TRUE))[, 1], c(2, 2))
  expect_equal(unname(column_quantiles(x, 0.5, na.rm = TRUE)), matrix(c(2, 1), 1))
  expect_equal(column_statistics(x[1, ], "mean"), matrix(1, 1, 2, dimnames = list("MEAN", c("a", "b"))))
  expect_equal(dim(column_quantiles(x[1, ], c(0.1, 0.9))), c(2, 2))
  expect_equal(unname(column_statistics(numeric(), c("count", "sum", "mean"))[, 1]), c(0, 0, NaN))
  expect_equal(unname(column_statistics(c(NA, NA), c("count", "mean"), na.rm = TRUE)[, 1]), c(0, NaN))
  expect_true(is.na(column_quantiles(numeric(), 0.5)))
})

test_that("misuse is an error of R", {
  routine <- "matrix quantile(matrix,matrix)"
  expect_refusal(column_quantiles(1:3, numeric()), "MATRIX", routine,
                 "wektor prawdopodobienstw jest pusty")
  expect_refusal(column_quantiles(1:3, diag(2)), "MATRIX", routine,
                 "oczekiwany wektor prawdopodobienstw")
  expect_misuse(column_statistics, not_numbers)
  expect_misuse(column_quantiles, not_numbers)
  expect_misuse(function(s) column_statistics(1:3, s), list("range", character(), NULL, 1, NA))
  expect_misuse(function(p) column_quantiles(1:3, p), list("a", 2, -0.1, NULL))
  expect_misuse(function(f) column_statistics(1:3, na.rm = f), list(NA, "yes", NULL, 1))
})

test_that("R survives odd arguments", {
  expect_survival("column_statistics", mtcars, "mean", TRUE)
  expect_survival("column_quantiles", mtcars, 0.5, FALSE)
})
