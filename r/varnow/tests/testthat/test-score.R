credit <- read_delimited(system.file("extdata", "credit.txt", package = "varnow"), sep = ";")
credit$bad <- credit$Status == "bad"
numbers <- bad ~ Seniority + Time + Age + Expenses + Income + Assets + Debt + Amount + Price
all_columns <- bad ~ . - Status

test_that("Newton's estimator agrees with glm in everything that both tell", {
  for (f in list(numbers, all_columns, bad ~ 1, bad ~ poly(Time, 2) + log(1 + Price):Job)) {
    by_r <- glm(f, binomial, credit, epsilon = 1e-12)
    model <- score_model(f, credit, method = "logistic_par1")
    expect_equal(coef(model), coef(by_r), tolerance = 1e-7)
    expect_equal(vcov(model), vcov(by_r), tolerance = 1e-6)
    expect_equal(summary(model)$coefficients[, c(1, 3:5)], summary(by_r)$coefficients, tolerance = 1e-6,
                 ignore_attr = TRUE)
    expect_equal(unclass(logLik(model)), unclass(logLik(by_r)), tolerance = 1e-10)
    expect_equal(AIC(model), AIC(by_r))
    expect_equal(fitted(model), fitted(by_r), tolerance = 1e-7)
    for (type in c("deviance", "pearson", "response"))
      expect_equal(residuals(model, type), residuals(by_r, type), tolerance = 1e-6)
    for (type in c("link", "response"))
      expect_equal(predict(model, credit[1:50, ], type), predict(by_r, credit[1:50, ], type),
                   tolerance = 1e-7)
  }
})

test_that("the searches end at the optimum with the ridge, close to glm", {
  by_r <- glm(all_columns, binomial, credit)
  X <- model.matrix(by_r)
  y <- by_r$y
  # the mean square of the log-odds as a form of the coefficients
  square <- tcrossprod(colMeans(X)) + cov(X)
  for (method in c("logistic_par", "logistic_par2")) {
    model <- score_model(all_columns, credit, method = method)
    # from wherever the search starts and stops
    for (eps in c(1e-8, 0.1))
      expect_equal(coef(score_model(all_columns, credit, method, eps)), coef(model), tolerance = 1e-6)
    slope <- crossprod(X, y - fitted(model)) - 0.1 * square %*% coef(model)
    # the distance to it, squared, in standard errors
    expect_lt(sum(slope * (vcov(by_r) %*% slope)), 1e-9)
    error <- sqrt(diag(vcov(by_r)))
    expect_lt(max(abs(coef(model) - coef(by_r)) / error), 0.02)
    expect_equal(sqrt(diag(vcov(model))), error, tolerance = 0.01)
    expect_equal(as.numeric(logLik(model)), as.numeric(logLik(by_r)), tolerance = 1e-6)
  }
})

test_that("the scale of a column does not matter", {
  set.seed(5)
  x <- cbind(a = rnorm(2000), b = rnorm(2000))
  y <- rbinom(2000, 1, plogis(x[, 1] - x[, 2]))
  plain <- score_model(x, y)
  moved <- score_model(cbind(a = 1e-6 * x[, 1], b = 1e6 + 1e3 * x[, 2]), y)
  expect_equal(coef(moved)[["a"]], 1e6 * coef(plain)[["a"]], tolerance = 1e-7)
  expect_equal(coef(moved)[["b"]], coef(plain)[["b"]] / 1e3, tolerance = 1e-7)
  expect_equal(fitted(moved), fitted(plain), tolerance = 1e-7)
  # a constant and a sum of the others have no coefficient, and predictions do without
  dull <- score_model(cbind(one = 7, x, sum = x[, 1] + x[, 2]), y)
  expect_identical(unname(is.na(coef(dull))), c(FALSE, TRUE, FALSE, FALSE, TRUE))
  expect_equal(coef(dull)[3:4], coef(plain)[2:3], tolerance = 1e-7)
  expect_identical(rownames(vcov(dull)), c("(Intercept)", "a", "b"))
  expect_equal(predict(dull, cbind(7, x, 0)[1:3, ]), fitted(dull)[1:3])
  expect_output(print(summary(dull)), "sum +NA")
})

test_that("matrices, data frames, factors and flags go in alike", {
  part <- credit[1:1500, c("Age", "Home", "Income")]
  part$Home <- factor(part$Home)
  model <- score_model(part, credit$bad[1:1500], method = "logistic_par1")
  whole <- complete.cases(part)
  by_r <- glm(credit$bad[1:1500] ~ Age + Home + Income, binomial, part)
  expect_equal(coef(model), coef(by_r), tolerance = 1e-7)
  expect_equal(nobs(model), sum(whole))
  gap <- which(!whole)[1]
  expect_equal(is.na(predict(model, part[c(1, gap), ])), c(FALSE, TRUE), ignore_attr = TRUE)
  flag <- factor(ifelse(credit$bad, "z bad", "good"))
  by_factor <- score_model(flag ~ Age, credit)
  expect_equal(coef(by_factor), coef(score_model(as.matrix(credit["Age"]), credit$bad)),
               tolerance = 1e-7)
  expect_output(print(by_factor), "event: z bad")
  padded <- score_model(bad ~ Income, credit, na.action = na.exclude)
  expect_length(fitted(padded), nrow(credit))
  expect_equal(is.na(residuals(padded)), is.na(credit$Income), ignore_attr = TRUE)
  odd <- setNames(part, c("the age", "Home", "."))
  expect_equal(unname(predict(score_model(odd, credit$bad[1:1500], "logistic_par1"), odd)),
               unname(predict(by_r, part, type = "response")), tolerance = 1e-7)
})

test_that("scores, measures and plots follow from the probabilities", {
  model <- score_model(numbers, credit)
  p <- fitted(model)
  expect_equal(predict(model, type = "score"), round(1000 * (1 - p)))
  expect_equal(predict(model, type = "link"), qlogis(p))
  expect_equal(lm_score(matrix(c(0, 1, 0.2504, NA), 2)), matrix(c(1000, 0, 750, NA), 2))
  # by glm and ranks: AUC 0.772866, KS 0.431785
  expect_equal(unname(summary(model)$measures[1:2]), c(0.545733, 0.431785), tolerance = 1e-3)
  expect_output(print(model), "414 with missing")
  grDevices::pdf(NULL)
  on.exit(grDevices::dev.off())
  expect_identical(plot(model), model)
  expect_misuse(function(which) plot(model, which), list("ROC", 1, character()))
})

test_that("a response curve is a model of one variable", {
  model <- score_model(bad ~ Seniority, credit, method = "f_BL")
  curve <- fit_curve(credit$Seniority, credit$bad, "f_BL", type = "likelihood")
  expect_equal(coef(model), coef(curve), tolerance = 1e-3)
  p <- fitted(model)
  expect_equal(as.numeric(logLik(model)), sum(log(ifelse(credit$bad, p, 1 - p))), tolerance = 1e-8)
  expect_equal(predict(model, data.frame(Seniority = c(2, NA)), "link"),
               qlogis(f_BL(c(2, NA), coef(model))), ignore_attr = TRUE)
  expect_output(print(summary(model)), "p2")
  expect_error(vcov(model), "curves")
  expect_error(score_model(numbers, credit, method = "f_C"), "one variable")
})

test_that("calls can be repeated, and slips are told", {
  model <- score_model(am ~ wt, mtcars, "logistic_par1", subset = hp > 60)
  by_r <- glm(am ~ wt, binomial, mtcars, subset = hp > 60)
  expect_equal(formula(model), formula(by_r))
  expect_equal(coef(update(model, . ~ 1)), coef(update(by_r, . ~ 1)), tolerance = 1e-7)
  expect_equal(c(deviance(model), df.residual(model), BIC(model)),
               c(deviance(by_r), df.residual(by_r), BIC(by_r)), tolerance = 1e-7)
  expect_error(score_model(am ~ wt, mtcars, weights = hp), "weights")
  expect_error(predict(model, mtcars, se.fit = TRUE), "se.fit")
  x <- mtcars[c("wt", "hp")]
  for (by_columns in list(score_model(x, mtcars$am), score_model(as.matrix(x), mtcars$am)))
    for (new in list(mtcars, as.matrix(mtcars)))
      expect_equal(predict(by_columns, new), fitted(by_columns))
})

test_that("a fork of R has threads too", {
  skip_on_os("windows")
  slopes <- function() {
    c(coef(score_model(am ~ wt, mtcars, threads = 2)), coef(fit_curve(cars$speed, cars$dist, "f_BL")))
  }
  expected <- slopes()
  fork <- parallel::mcparallel(slopes())
  found <- parallel::mccollect(fork, wait = FALSE, timeout = 60)
  if (is.null(found)) tools::pskill(fork$pid)
  expect_equal(found[[1]], expected, tolerance = 1e-6)
})

test_that("what cannot be fitted is told", {
  x <- c(1:10, 21:30)
  y <- rep(0:1, each = 10)
  expect_error(suppressWarnings(score_model(x, y, method = "logistic_par1")), "ridge")
  expect_true(all(is.finite(coef(score_model(x, y)))))
  expect_true(is.finite(coef(score_model(1:3, c(1, 1, 1)))[1]))
})

test_that("misuse is an error of R", {
  search <- "matrix logistic_par(matrix,matrix,int,double)"
  sizes <- "niezgodne wymiary macierzy"
  for (x in list(1:4, cars, diag(2), numeric()))
    expect_refusal(score_model(x, c(0, 1, 0)), "MATRIX", search, sizes)
  expect_refusal(score_model(1:3, diag(3)), "MATRIX", search, sizes)
  expect_refusal(score_model(1:3, 0:1, "logistic_par1"), "MATRIX",
                 "matrix logistic_par1(matrix,matrix)", sizes)
  expect_misuse(score_model, not_numbers, y = 0:1)
  expect_misuse(function(y) score_model(1, y), not_numbers)
  expect_misuse(function(m) score_model(1:3, c(0, 1, 0), m), list("logit", 1, NULL))
  expect_misuse(function(n) score_model(1:3, c(0, 1, 0), threads = n), list(0, "a", NULL, 1.5))
  expect_misuse(function(y) score_model(1:3, y),
                list(c(0, 2, 1), factor(1:3), c("a", "b", "a"), rep(NA, 3)))
  expect_error(score_model(c(1, Inf, 2), c(0, 1, 0)), "finite")
  expect_error(score_model(bad ~ Age - 1, credit), "intercept")
  expect_error(score_model(bad ~ Age + offset(Time), credit), "offset")
  expect_error(score_model(~Age, credit), "response")
  expect_error(score_model(bad ~ Income, credit, na.action = na.pass), "finite")
  model <- score_model(diag(3), c(0, 1, 0))
  expect_refusal(predict(model, diag(2)), "MATRIX", "matrix mul(matrix,matrix)", sizes)
  expect_misuse(predict, not_numbers[-1], object = model)
  expect_misuse(function(type) predict(model, type = type), list("odds", 1, NULL))
  expect_misuse(lm_score, not_numbers[-7])
})

test_that("R survives odd arguments", {
  expect_survival("score_model", cbind(c(1, 2, 4, 3), c(0, 1, 0, 0)), c(1, 0, 1, 0), "logistic_par",
                  1e-4, 1)
  expect_survival("score_model", c(1, 2, 4, 3), c(1, 0, 1, 0), "logistic_par1")
  expect_survival("score_model", c(1, 2, 4, 3), c(1, 0, 1, 0), "f_BL")
  expect_survival("score_model", am ~ wt, mtcars, "logistic_par2")
  expect_survival("lm_score", c(0.2, 0.7))
})
