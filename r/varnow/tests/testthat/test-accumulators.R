test_that("a simulation answers from the values it has counted", {
  x <- c(3, 1, 4, 1, 5, 9, 2, 6)
  s <- simulation(0, 10, 5)$add(x[1:3])$add(data.frame(x[4:8]))
  m <- mean(x)
  g <- mean((x - m)^3) / mean((x - m)^2)^1.5 # and the correction for a sample
  expect_equal(summary(s),
               c(length = 8, sum = 31, mean = m, gmean = exp(mean(log(x))), hmean = 1 / mean(1 / x),
                 min = 1, max = 9, range = 8, var = var(x), stdev = sd(x),
                 skewness = g * sqrt(56) / 6,
                 kurtosis = 7 / 30 * (9 * (mean((x - m)^4) / mean((x - m)^2)^2 - 3) + 6), mode = 1))
  expect_equal(vapply(c("mean", "var", "length", "mode"), function(f) s[[f]](), 0),
               summary(s)[c("mean", "var", "length", "mode")])
  expect_equal(s$hist(), data.frame(centre = c(1, 3, 5, 7, 9), share = c(2, 2, 2, 1, 1) / 8))
  expect_identical(s$stored(), x)
  expect_output(print(s), "simulation of 8 values, mean 3.875.*5 cells from 0 to 10")
  other <- simulation(0, 10, 5)$add(c(7, NA), na.rm = TRUE)
  expect_identical(s$merge(other)$stored(), c(x, 7))
  expect_identical(simulation()$merge(s)$hist(), s$hist())
  file <- s$save(tempfile())
  expect_equal(summary(simulation()$load(file)), summary(s), tolerance = 1e-6)
  expect_identical(s$reset()$length(), 0)
  expect_true(all(is.nan(s$mean()), is.nan(s$mode()), s$min() == Inf))
  s$add(c(1, NA, 3))
  expect_identical(c(s$length(), s$max()), c(3, 3))
  expect_true(is.nan(s$mean()) || is.na(s$mean()))
})

test_that("a quantile of a stream is exact while all values are kept, and near it afterwards", {
  set.seed(1)
  x <- rexp(300000)
  q <- quantiles(0.9)$add(x[1:5000])
  expect_equal(q$result(), quantile(x[1:5000], 0.9, names = FALSE))
  expect_equal(q$cdf(sort(x[1:5000])[c(1, 2500)]), c(1, 2500) / 5000)
  expect_identical(c(q$length(), q$min(), q$max()), c(5000, min(x[1:5000]), max(x[1:5000])))
  q$add(x[-(1:5000)])
  expect_lt(q$state()[["used"]], 300000)
  # three standard errors of the sample quantile of that many values
  expect_lt(abs(q$result() - quantile(x, 0.9)), 3 * sqrt(0.09 / 300000) / 0.1)
  once <- function() {
    set.seed(2)
    quantiles(0.9)$add(x)$state()
  }
  expect_identical(once(), once())
  expect_warning(r <- quantiles(0.5)$result(), "Range warning 1!")
  expect_true(is.nan(r))
  a <- quantiles(0.5)$add(1:101)
  both <- quantiles2(a)$add(quantiles(0.5)$add(101:201))
  expect_equal(both$result(), 101, tolerance = 1e-8)
  expect_equal(both$state(), c(p = 0.5, count = 2, used = 202, all = 202))
  expect_equal(both$cdf(c(0, 300)), c(0, 1))
  expect_true(is.nan(quantiles2()$result()))
  expect_output(print(both), "2 estimates of the quantile at 0.5")
  expect_output(print(a$reset(0.25)), "quantile at 0.25 of 0 values")
})

test_that("misuse is an error of R", {
  routine <- "operator +=(simulation)"
  s <- simulation(0, 1, 2)$add(0.5)
  expect_refusal(simulation(0, 1, -1), "SIMULATION", "simulation(double,double,int)",
                 "ujemna liczba przedzialow")
  expect_refusal(s$merge(simulation(0, 2, 2)), "SIMULATION", routine,
                 "Niekompatybilna wielkosc histogramow")
  for (k in 1:30) s$merge(s$reset()$add(rep(1, 2))) # keeps s small
  file <- tempfile()
  writeLines("damaged", file)
  expect_refusal(s$load(file), "SIMULATION", "void load(Text)", "nieprawidlowa zawartosc pliku",
                 paste0("plik: ", file))
  expect_error(s$load(tempfile()), "could not be opened")
  expect_error(s$save(file.path(tempfile(), "x")), "could not be opened")
  expect_refusal(quantiles2(quantiles(0.5), quantiles(0.6)), "QUANTILES2",
                 "operator +=(quantiles)", "Incompatible p!")
  expect_refusal(quantiles2(quantiles(0.5))$result(), "QUANTILES2",
                 "void search_range(double,double)", "Range not found!")
  expect_refusal(quantiles2(quantiles(0.5)$add(rep(Inf, 9)))$result(), "QUANTILES2",
                 "double qfzero(double,double,double)", "Sign error!")
  for (object in list(s, quantiles(0.5))) {
    expect_misuse(object$add, not_numbers)
    expect_identical(object$add(numeric()), object)
  }
  expect_misuse(s$merge, list(NULL, 1, quantiles(0.5), structure(new.env(), class = "simulation")))
  forged <- structure(list2env(list(pointer = quantiles(0.5)$pointer)), class = "simulation")
  expect_error(s$merge(forged), "kind")
  expect_error(s$mean <- 1)
})

test_that("an object from another session says so", {
  file <- tempfile()
  for (object in list(simulation(), quantiles(0.5), quantiles2(), html("a"), gplot("a", tempdir()))) {
    saveRDS(object, file)
    restored <- readRDS(file)
    calls <- list(add = list(1), page = list(), title = list("a"), merge = list(restored),
                  result = list(), save = list(tempfile()), length = list())
    for (name in intersect(names(calls), ls(restored)))
      if (!(name == "add" && inherits(restored, "quantiles2")) &&
          !(name == "save" && inherits(restored, "html")))
        expect_error(do.call(restored[[name]], calls[[name]]), "session", info = name)
  }
})

test_that("R survives odd arguments", {
  expect_survival("simulation", 0, 1, 3)
  expect_survival("quantiles", 0.5)
  expect_survival("quantiles2", quantiles(0.5), quantiles(0.5))
  # methods as if they were exported
  s <- simulation(0, 1, 2)
  q <- quantiles(0.3)
  methods <- list(odd_add = s$add, odd_save = s$save, odd_load = s$load, odd_merge = s$merge,
                  odd_add2 = q$add, odd_cdf = q$cdf)
  for (name in names(methods)) {
    assign(name, methods[[name]], envir = globalenv())
    expect_survival(name, if (grepl("merge", name)) s else 1:3)
    rm(list = name, envir = globalenv())
  }
  expect_identical(q$length() > 0, TRUE)
})
