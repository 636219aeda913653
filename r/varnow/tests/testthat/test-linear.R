same_model <- function(fit, by_r) {
  expect_equal(coef(fit), coef(by_r))
  expect_equal(vcov(fit), vcov(by_r), tolerance = 1e-6)
  expect_equal(fit$se, sqrt(diag(vcov(by_r))), tolerance = 1e-6)
  expect_equal(fitted(fit), fitted(by_r))
  expect_equal(residuals(fit), residuals(by_r))
  expect_equal(AIC(fit), AIC(by_r))
  expect_equal(summary(fit)$r.squared, summary(by_r)$r.squared)
  expect_equal(c(nobs(fit), df.residual(fit)), c(nobs(by_r), df.residual(by_r)))
}

test_that("models agree with lm", {
  x <- transform(mtcars, gear = factor(gear))
  x$hp[3] <- NA
  for (f in list(mpg ~ wt + hp + gear, mpg ~ wt + hp - 1, mpg ~ 1, log(mpg) ~ poly(wt, 2))) {
    fit <- linreg(f, x)
    by_r <- lm(f, x)
    same_model(fit, by_r)
    expect_equal(predict(fit, x[1:5, ]), predict(by_r, x[1:5, ]))
  }
  fit <- linreg(mpg ~ wt, mtcars)
  expect_equal(fit$p, 2 * pnorm(-abs(fit$t)), tolerance = 1e-6)
  expect_output(print(fit), "wt")
  expect_output(print(summary(linreg(mpg ~ hp, x))), "1 observations with missing")
})

test_that("matrices serve as well as formulas", {
  x <- as.matrix(mtcars[c("wt", "hp")])
  fit <- linreg(x, mtcars$mpg)
  same_model(fit, lm(mpg ~ wt + hp, mtcars))
  expect_equal(predict(fit, x[1:3, ]), fitted(fit)[1:3])
  expect_equal(unname(predict(fit, data.frame(wt = 3, hp = NA))), NA_real_)
  plain <- linreg(mtcars$wt, mtcars$mpg, intercept = FALSE)
  expect_equal(unname(coef(plain)), unname(coef(lm(mpg ~ wt - 1, mtcars))))
  expect_equal(nobs(linreg(c(1, 2, NA, 4), c(2, 1, 4, NA))), 2)
})

test_that("calls can be repeated, and slips are told", {
  cut <- 100
  data <- transform(mtcars, wt = ifelse(hp == 110, NA, wt), kind = factor(gear))
  fit <- linreg(mpg ~ wt, data, subset = hp > cut, na.action = na.exclude)
  by_r <- lm(mpg ~ wt, data, subset = hp > cut, na.action = na.exclude)
  expect_equal(formula(fit), formula(by_r))
  expect_equal(predict(fit), predict(by_r))
  expect_equal(deviance(fit), deviance(by_r))
  # a level that no row has left
  expect_equal(coef(update(fit, . ~ . + kind, subset = gear < 5)),
               coef(update(by_r, . ~ . + kind, subset = gear < 5)))
  expect_error(linreg(mpg ~ wt, data, weights = hp), "no such argument: weights = hp")
  expect_error(linreg(1:3, c(1, 2, 4), data = cars), "data = cars")
  expect_error(predict(fit, data, interval = "confidence"), "interval")
  expect_error(predict(fit, data.frame(wt = "a")), "fitted with type")
  x <- as.matrix(mtcars[c("wt", "hp")])
  expect_equal(predict(linreg(x, mtcars$mpg), mtcars[3:1, ]), fitted(lm(mtcars$mpg ~ x))[3:1],
               ignore_attr = TRUE)
  expect_warning(linreg(1e7 + x[, 1], mtcars$mpg), "few digits")
  expect_warning(linreg(mpg ~ wt + gear + kind, transform(mtcars, kind = factor(gear))), "few digits")
})

test_that("the likelihood of a linear probability has no slope at its maximum", {
  y <- rep(c(0, 1, 0, 1, 1), 40)
  x <- rep(c(0, 0, 1, 1, 1), 40)
  fit <- linreg(x, y, type = "likelihood")
  # of a saturated model the frequencies
  expect_equal(unname(coef(fit)), c(1 / 2, 2 / 3 - 1 / 2), tolerance = 1e-4)
})

test_that("misuse is an error of R", {
  sizes <- list("MATRIX", "matrix linreg(matrix,matrix)", "nieprawidlowe wymiary macierzy")
  for (case in list(list(1:3, 1:2), list(diag(2), diag(2)), list(numeric(), numeric()),
                    list(diag(2), 1:2), list(c(NA, NA), 1:2)))
    do.call(expect_refusal, c(list(quote(linreg(case[[1]], case[[2]]))), sizes), quote = FALSE)
  symmetric <- list("MATRIX", "linreg_sweep(int,int)", "macierz powinna byc symetryczna")
  for (bad in c(Inf, -Inf, 1e200))
    do.call(expect_refusal, c(list(quote(linreg(c(1, 2, 3, bad), 1:4))), symmetric))
  expect_refusal(linreg(cbind(1:3, 0), 1:3), "MATRIX", "lineqns_Gauss(matrix,matrix)",
                 "macierz jest prawie osobliwa")
  expect_misuse(linreg, not_numbers[-10], y = 1:3)
  expect_misuse(function(y) linreg(1:3, y), not_numbers)
  expect_misuse(function(i) linreg(1:3, c(1, 2, 4), intercept = i), list(NA, 1, NULL))
  expect_misuse(function(type) linreg(1:3, c(1, 2, 4), type = type), list(1, "cubic", NA))
  expect_error(linreg(1:3, c(1, 2, 4), type = "likelihood"), "0 and 1")
  expect_error(linreg(matrix(0, 3, 0), 1:3, intercept = FALSE), "column")
  expect_error(linreg(nothing ~ such, cars), "nothing")
  expect_error(linreg(Species ~ Sepal.Length, iris), "numeric")
  fit <- linreg(1:4, c(1, 3, 2, 4))
  expect_refusal(predict(fit, diag(2)), "MATRIX", "matrix mul(matrix,matrix)",
                 "niezgodne wymiary macierzy")
  expect_misuse(predict, not_numbers[-1], object = fit)
  expect_misuse(predict, list(1, "a"), object = linreg(dist ~ speed, cars))
})

test_that("R survives odd arguments", {
  expect_survival("linreg", c(1, 2, 4), c(1, 0, 1), TRUE, "quadratic")
  expect_survival("linreg", cbind(c(1, 2, 4, 3), c(0, 1, 0, 0)), c(1, 0, 1, 0), TRUE, "likelihood")
  expect_survival("linreg", dist ~ speed, cars)
})
