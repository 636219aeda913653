x <- seq(-4, 6, 0.05)

test_that("curves have their values in the shape of x", {
  u <- 1.5 * x + 1
  expect_equal(f_C(x, c(-0.3, 1.5, 1, 0.4)), -0.3 * tanh(u) + 0.4)
  expect_equal(f_CU(x, c(-0.3, 1.5, 1, 0.4)), -0.3 / cosh(u) + 0.4)
  expect_equal(f_M(x, c(-0.3, 1.5, 1, 0.1, 0.4)), -0.3 * tanh(u) + 0.4 + 0.1 * (x <= -1))
  expect_equal(f_BL(matrix(1:4, 2), c(2, 1)), matrix(c(3, 5, 7, 9), 2))
  expect_equal(f_B(c(a = 0, b = 5, c = NA), c(2, 3)), c(a = 2, b = 3, c = NA))
  expect_identical(f_C(numeric(), 1:4), numeric())
  expect_equal(c(direction_C(x, -x), direction_C(x, x), direction_B(c(0, 1), c(1, 0))), c(-1, 1, -1))
})

test_that("a fit finds the curve that made the data", {
  made <- list(f_B = c(0.2, 0.7), f_BL = c(2, -1), f_C = c(0.3, 1.5, -1, 0.4),
               f_CU = c(-0.3, 0.8, -1, 0.9), f_M = c(0.3, 0.8, -1, -0.2, 0.6))
  for (curve in names(made)) {
    exact <- get(curve)(x, made[[curve]])
    fit <- fit_curve(x, exact, curve)
    expect_lt(fit$error, 1e-5)
    expect_equal(predict(fit, x), exact, tolerance = 1e-4)
    expect_equal(predict(fit, c(NA, 1)), c(NA, get(curve)(1, made[[curve]])), tolerance = 1e-4)
  }
  # far from 0 and wide, and beside gaps
  far <- fit_curve(c(1e6 + 1e4 * x, NA, 1), c(f_C(x, made$f_C), 1, NA), "f_C",
                   start = c(0.2, 1e-4, -100, 0.3))
  expect_equal(unname(coef(far)), c(0.3, 1.5e-4, -151, 0.4), tolerance = 1e-3)
  expect_equal(c(nobs(far), far$omitted), c(201, 2))
})

test_that("errors and likelihoods are those of the data", {
  line <- fit_curve(cars$speed, cars$dist, "f_BL")
  by_r <- lm(dist ~ speed, cars)
  expect_equal(unname(coef(line)), unname(rev(coef(by_r))), tolerance = 1e-5)
  expect_equal(as.numeric(logLik(line)), as.numeric(logLik(by_r)), tolerance = 1e-6)
  expect_equal(sum(residuals(line)^2), deviance(by_r), tolerance = 1e-6)
  # of a flag the likelihood is highest at the frequencies
  flag <- rep(0:1, c(40, 60))
  y <- c(rep(0:1, 20), rep(c(0, 0, 1), 20))
  fit <- fit_curve(flag, y, "f_B", type = "likelihood")
  expect_equal(unname(coef(fit)), c(1 / 2, 1 / 3), tolerance = 1e-5)
  expect_equal(as.numeric(logLik(fit)), 40 * log(1 / 2) + 20 * log(1 / 3) + 40 * log(2 / 3))
  expect_output(print(fit), "f_B, 100 observations")
  grDevices::pdf(NULL)
  on.exit(grDevices::dev.off())
  expect_identical(plot(fit, groups = 5, main = "flag"), fit)
})

test_that("misuse is an error of R", {
  subscript <- list("MATRIX", "double & operator ()(int)", "indeks poza zakresem")
  sizes <- list("MATRIX", "double err_fit(matrix,matrix,double (*)(double,matrix),matrix,EsType)",
                "niezgodne wymiary macierzy")
  do.call(expect_refusal, c(list(quote(f_C(1, 1:3))), subscript, "3 x 1 : ( 4 )"))
  do.call(expect_refusal, c(list(quote(fit_curve(1:3, 1:3, start = 1:2))), subscript, "2 x 1 : ( 3 )"))
  do.call(expect_refusal, c(list(quote(fit_curve(1:3, 1:2))), sizes))
  do.call(expect_refusal, c(list(quote(fit_curve(diag(2), diag(2)))), sizes))
  expect_refusal(direction_C(1:3, 1:2), "MATRIX", "matrix meanif(matrix,Vector)",
                 "wektor warunkowy ma nieprawidlowa dlugosc")
  expect_refusal(direction_C(matrix(0, 1, 2), 1), "MATRIX", "Vector operator >=(matrix,double)",
                 "oczekiwana jedna kolumna danych")
  expect_refusal(direction_B(diag(2), 1), "MATRIX", "Vector operator ==(matrix,double)",
                 "oczekiwana jedna kolumna danych")
  for (f in list(fit_curve, direction_B, direction_C)) {
    expect_misuse(f, not_numbers, y = 1)
    expect_misuse(function(y) f(1, y), not_numbers)
  }
  for (f in list(f_B, f_BL, f_C, f_CU, f_M)) {
    expect_misuse(f, not_numbers[-7], p = 1:5)
    expect_misuse(function(p) f(1, p), not_numbers)
  }
  expect_misuse(function(curve) fit_curve(1:3, 1:3, curve), list("f", NULL, sum, NA))
  expect_misuse(function(start) fit_curve(1:3, 1:3, start = start), list(1:5, c(1, 2, 3, NA), "a", Inf))
  expect_error(fit_curve(c(NA, 1), c(1, NA)), "observations")
  expect_error(fit_curve(c(1, Inf), 1:2), "finite")
  expect_error(fit_curve(1:2, c(0, 2), type = "likelihood"), "from 0 to 1")
})

test_that("R survives odd arguments", {
  for (name in c("f_B", "f_BL", "f_C", "f_CU", "f_M")) expect_survival(name, 1:3, 1:5)
  for (name in c("direction_B", "direction_C")) expect_survival(name, c(0, 1, 1), 1:3)
  expect_survival("fit_curve", c(0, 1, 2), c(0, 1, 1), "f_B", c(0.3, 0.6), "likelihood", "fastest",
                  1e-3)
})
