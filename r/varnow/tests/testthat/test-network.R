# value of a net by its definition
by_hand <- function(fit, x, f = tanh, g = identity)
  drop(g(f(sweep(x %*% fit$w1, 2, fit$b1, "+")) %*% fit$w2 + c(fit$b2)))

test_that("a net learns a curve that a line misses", {
  set.seed(3)
  x <- matrix(runif(400, 100, 200), 200, dimnames = list(NULL, c("a", "b")))
  y <- sin(x[, 1] / 20) + x[, 2] / 100
  fit <- net(x, y, hidden = 6, max_iter = 150)
  expect_lt(fit$learning[["error"]], var(lm(y ~ x)$residuals) / 2)
  expect_equal(fit$learning[["error"]], mean((predict(fit) - y)^2), tolerance = 1e-6)
  expect_equal(fit$learning[["corr"]], cor(predict(fit), y), tolerance = 1e-6)
  expect_identical(fit$learning[["AR"]], NA_real_)
  expect_equal(predict(fit, x[1:5, ]), by_hand(fit, x[1:5, ]))
  expect_identical(is.na(predict(fit, rbind(x[1, ], NA))), c(FALSE, TRUE))
  expect_identical(rownames(coef(fit)$w1), c("a", "b"))
  expect_output(print(fit), "Network 2-6-1, tanhyp and linear, 25 weights")
  set.seed(4)
  one <- net(x, y, hidden = 2, max_iter = 5)
  set.seed(4)
  expect_equal(coef(net(x, y, hidden = 2, max_iter = 5)), coef(one))
})

test_that("formulas, factors, missing values and validation", {
  set.seed(5)
  data <- transform(mtcars, cyl = factor(cyl))
  data$wt[3] <- NA
  fit <- net(am ~ wt + cyl, data[1:25, ], hidden = 2, output = "logistic", max_iter = 30,
             valid = data[26:32, ])
  expect_length(predict(fit), 24)
  expect_identical(names(which(is.na(predict(fit, data)))), rownames(mtcars)[3])
  expect_equal(predict(fit, data)[names(predict(fit))], predict(fit))
  expect_true(all(predict(fit) > 0 & predict(fit) < 1))
  expect_identical(dimnames(summary(fit)), list(c("learning", "validation"), c("error", "corr", "AR")))
  expect_equal(fit$validation[["error"]], mean((predict(fit, data[26:32, ]) - data$am[26:32])^2),
               tolerance = 1e-6)
})

test_that("the library's steps are silent, or on R's console", {
  expect_silent(net(cars$speed, cars$dist, hidden = 1, max_iter = 2))
  expect_output(net(cars$speed, cars$dist, hidden = 1, max_iter = 2, verbose = TRUE),
                "learn\n1 - [0-9.]+ & .*\n2 - ")
})

test_that("a net is saved in six files and restored", {
  set.seed(6)
  fit <- net(cbind(s = cars$speed), cars$dist, hidden = 2, max_iter = 20)
  name <- save_net(fit, tempfile())
  expect_identical(readLines(paste0(name, "_layers.nn")), "1 2 1")
  expect_identical(readLines(paste0(name, "_activ.nn")), "2 3")
  expect_equal(predict(load_net(name), cars$speed), predict(fit), tolerance = 1e-3)
  file <- paste0(name, "_w1.nn")
  for (bad in list("", "1 2", "x", "2 2 0", "1 2 1\n1 3 0.5", "1 2 2\n1 2 1\n1 1 1", "1 2 1\n1 1 a")) {
    writeLines(bad, file)
    expect_refusal(load_net(name), "NEURAL_NET", "load(Text)", "nieprawidlowa zawartosc pliku",
                   paste0("plik: ", file))
  }
  unlink(file)
  expect_refusal(load_net(name), "NEURAL_NET", "load(Text)", "nieudane otwarcie pliku do odczytu",
                 paste0("plik: ", file))
  lost <- file.path(tempfile(), "x")
  expect_refusal(save_net(fit, lost), "NEURAL_NET", "save(Text)",
                 "nieudane otwarcie pliku do zapisu", paste0("plik: ", lost, "_layers.nn"))
})

test_that("misuse is an error of R", {
  sizes <- function(call) expect_refusal(call, "NEURAL_NET", "set_patterns(matrix,matrix,int)",
                                         "niezgodne wymiary macierzy")
  sizes(net(1:3, 1:4))
  sizes(net(1:3, diag(3)))
  sizes(net(1:3, 1:3, valid = list(x = 1:2, y = 1)))
  expect_refusal(net(1:3, 1:3, valid = list(x = diag(2), y = 1:2)), "NEURAL_NET",
                 "int learn_and_valid(int,int,int,double,int,int,int)",
                 "niezgodne wymiary macierzy wzorcow")
  fit <- net(cars$speed, cars$dist, hidden = 1, max_iter = 1)
  expect_refusal(predict(fit, diag(2)), "NEURAL_NET", "matrix values(int)",
                 "niezgodne wymiary macierzy wzorcow")
  expect_misuse(net, Filter(function(x) !is.language(x), not_numbers), y = 1)
  expect_misuse(function(v) predict(fit, v), not_numbers)
  fit$b1 <- 1
  expect_error(predict(fit, 1), "be a net")
  for (bad in list(list(hidden = 0), list(hidden = 1e4), list(hidden = 1.5), list(max_iter = 0),
                   list(scale = NA), list(method = "x"), list(activation = 2), list(valid = 1),
                   list(penalty = TRUE, valid = list(x = 1, y = 1)), list(size = 3), list(x = c(1, Inf, 2))))
    expect_error(do.call(net, utils::modifyList(list(x = 1:3, y = 1:3), bad)), "must|unused",
                 info = deparse1(bad))
})

test_that("R survives odd arguments", {
  x <- matrix(c(1:6, 2, 1), 4)
  expect_survival("net", x, 1:4, 2, "tanhyp", "linear", list(x = x, y = 4:1), 1, 3, 1, 0.1, "both", FALSE,
                  0.1, TRUE)
  fit <- net(x, 1:4, hidden = 2, max_iter = 2)
  expect_survival("save_net", fit, tempfile())
  expect_survival("load_net", save_net(fit, tempfile()))
  assign("odd_predict", function(object, x) predict(structure(object, class = "net"), x), globalenv())
  expect_survival("odd_predict", fit, x)
  rm("odd_predict", envir = globalenv())
})
