test_that("levels and frequencies have the library's order and every combination", {
  expect_identical(level_values(c("b", NA, "B", "\u017c", "b")), c(NA, "\u017c", "B", "b"))
  expect_identical(level_values(c(10, 9, NA, 0.1234567891)), c(NA, 0.1234567891, 9, 10))
  expect_identical(level_values(as.Date(c("2024-02-29", "1999-01-01"))),
                   as.Date(c("1999-01-01", "2024-02-29")))
  expect_identical(level_values(iris["Species"]), levels(iris$Species))
  p <- pivot(mtcars[c("gear", "cyl")])
  by_r <- as.data.frame(table(cyl = mtcars$cyl, gear = mtcars$gear))
  expect_identical(p, data.frame(gear = rep(c(3, 4, 5), each = 3), cyl = rep(c(4, 6, 8), 3),
                                 COUNT = by_r$Freq))
  expect_identical(pivot(factor(c("u", "v", "u"), levels = c("v", "u", "w")), c(TRUE, NA, TRUE)),
                   data.frame(VAR1 = c("u", "u", "v", "v"), VAR2 = c(NA, TRUE, NA, TRUE),
                              COUNT = c(0L, 2L, 1L, 0L)))
  expect_identical(sum(pivot(mtcars$gear, mtcars$cyl, mtcars$am)$COUNT), 32L)
  expect_identical(names(pivot(1:3)), c("VAR", "COUNT"))
})

test_that("intervals become a factor in their order", {
  x <- c(20, 5, NA, 10, 5.01, -3)
  expect_identical(cut_intervals(x, c(5, 10)),
                   factor(c("(10.00,Inf]", "(-Inf,5.00]", NA, "(5.00,10.00]", "(5.00,10.00]",
                            "(-Inf,5.00]"), c("(-Inf,5.00]", "(5.00,10.00]", "(10.00,Inf]")))
  expect_identical(as.integer(cut_intervals(x, c(5, 10), right = FALSE)), c(3L, 2L, NA, 3L, 2L, 1L))
  expect_identical(nlevels(cut_intervals(x, c(5, 5.001))), 3L)
  expect_identical(cut_intervals(x, c(-Inf, 5, 10, Inf)), cut_intervals(x, c(5, 10)))
  wide <- cut_intervals(c(7, 15, NA), c(5, 10), ordered = TRUE)
  expect_identical(pivot(wide), data.frame(VAR = wide[c(3, 1, 2)], COUNT = c(1L, 1L, 1L)))
})

test_that("groups have exact statistics, types of keys, and R's functions too", {
  x <- data.frame(k = factor(c("b", "a", NA, "b")), d = c(10, 9, 9, 10), v = c(1 / 3, 2, NA, 1))
  expect_identical(group_summary(x, c("k", "d"), n = count(v), m = mean(v), top = max(v)),
                   data.frame(k = factor(c(NA, "a", "b")), d = c(9, 9, 10), n = c(0, 1, 2),
                              m = c(NaN, 2, 2 / 3), top = c(NaN, 2, 1))[c(1, 2, 3), ])
  own <- function(v) length(v) + 0.5
  expect_identical(group_summary(x, "d", all = own(v), na = own(v), na.rm = TRUE)$all, c(1.5, 2.5))
  expect_identical(group_summary(x, s = sum(d)), data.frame(s = 38))
  expect_identical(names(group_summary(x, "k", k = mean(d), m = max(v), m = min(v))),
                   c("k", "k", "m", "m"))
  big <- aggregate(mpg ~ cyl + gear, mtcars, mean)
  expect_equal(group_summary(mtcars, c("cyl", "gear"), mpg = mean(mpg)), big)
})

test_that("misuse is an error of R", {
  levels_of <- "table levels(data)"
  sizes <- "niezgodne dlugosci danych"
  expect_refusal(level_values(character()), "TABLE", levels_of, "puste dane")
  expect_refusal(level_values(mtcars), "TABLE", levels_of, "oczekiwana kolumna danych")
  expect_refusal(pivot(cars[0, ]), "TABLE", levels_of, "puste dane")
  expect_refusal(pivot(1:2, 1), "TABLE", "table pivot(data,data)", sizes)
  expect_refusal(pivot(1:2, 1:2, 1), "TABLE", "table pivot(data,data,data)", sizes)
  cut_routine <- "table cut(data,matrix,int)"
  expect_refusal(cut_intervals(cars, 1), "TABLE", cut_routine, "oczekiwana kolumna danych")
  expect_refusal(cut_intervals(numeric(), 1), "TABLE", cut_routine, "puste dane")
  expect_refusal(cut_intervals(1, diag(2)), "TABLE", cut_routine,
                 "oczekiwany wektor definiujacy przedzialy")
  expect_refusal(cut_intervals(1, numeric()), "TABLE", cut_routine,
                 "potrzebna przynajmniej jedna granica przedzialow")
  summarise <- "table summarise(table,Text,matrix f(matrix))"
  expect_refusal(group_summary(cars, "sex"), "TABLE", "table* group_by(table,int,table)",
                 "nie znaleziono kolumny", "sex")
  expect_refusal(group_summary(cars[0, ], "dist"), "TABLE", levels_of, "puste dane")
  expect_refusal(group_summary(cars, "dist", mean(speed)), "TABLE", summarise,
                 "nieprawidlowa formula")
  expect_refusal(group_summary(cars, "dist", m = 1), "TABLE", summarise, "nieprawidlowa formula")
  expect_refusal(group_summary(cars, "dist", m = nothing_such(speed)), "TABLE", summarise,
                 "brak funkcji", "m=nothing_such(speed)")
  expect_refusal(group_summary(cars, "dist", m = mean(age)), "TABLE", "table operator [](Text)",
                 "nie znaleziono kolumny")
  expect_error(group_summary(iris, m = mean(Species)), "numbers")
  expect_error(group_summary(cars, m = range(speed)), "one number")
  expect_misuse(pivot, list(NULL, list(1), sum, 1i, mtcars, array(0, c(1, 1, 1)), data.frame()))
  expect_misuse(function(y) pivot(1, y), list(sum, list(1), 1i))
  expect_misuse(level_values, list(NULL, list(1), sum))
  expect_misuse(function(z) pivot(1, z = z), list(1))
  expect_misuse(cut_intervals, not_numbers, breaks = 1)
  expect_misuse(function(b) cut_intervals(1, b), list("a", NULL, NA_real_, c(2, 1)))
  expect_misuse(group_summary, list(NULL, 1, "a", list(1), matrix(1)))
  expect_misuse(function(by) group_summary(cars, by), list(1, NA_character_, NULL))
})

test_that("R survives odd arguments", {
  expect_survival("pivot", 1:3, c("a", NA, "b"), 4:6)
  expect_survival("level_values", 1:3)
  expect_survival("cut_intervals", c(1, NA), c(0, 5), TRUE, TRUE)
  summary_of <- function(data, by, na.rm) group_summary(data, by, n = count(dist), na.rm = na.rm)
  assign("group_summary_of_dist", summary_of, globalenv())
  on.exit(rm("group_summary_of_dist", envir = globalenv()))
  expect_survival("group_summary_of_dist", cars, "speed", TRUE)
  assign("group_summary", TRUE, envir = covered)
})
