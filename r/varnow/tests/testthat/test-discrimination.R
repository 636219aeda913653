# By ranks, ties counted half.
auc <- function(x, y) {
  bads <- sum(y)
  goods <- length(y) - bads
  1 - (sum(rank(x)[y == 1]) - bads * (bads + 1) / 2) / (bads * goods)
}
score <- c(a = 3, b = 1, c = 2, d = 5, e = 4, f = 6)
bad <- c(0, 1, 1, 0, 1, 0)

test_that("the accuracy ratio is that of the ranks", {
  set.seed(3)
  for (values in list(1e6, 7)) {
    x <- sample(values, 500, TRUE)
    y <- rbinom(500, 1, 0.3)
    expect_equal(AR(x, y), 2 * auc(x, y) - 1, tolerance = 1e-12)
    expect_equal(AR(-x, y == 1), 1 - 2 * auc(x, y), tolerance = 1e-12)
  }
  # of the worst half: (2/9 - 1/8) / (1/4 - 1/8)
  expect_equal(AR(score, bad, range = 0.5), 7 / 9)
  # (13/24 - 1/2) / (2/3 - 1/2), the ideal curve being 5/8, 7/8, 1
  expect_equal(AR(1:3, c(0.2, 0.5, 0.1), ideal = FALSE), 1 / 4)
})

test_that("curves and tables are those of the hand", {
  expect_equal(unname(KS_xy(1:5, c(1, 1, 0, 1, 0))), c(2 / 3, 2, 0, 2 / 3))
  expect_equal(KS(score, bad), 2 / 3)
  curve <- CAP(score, bad)
  expect_identical(rownames(curve), c("b", "c", "a", "e", "d", "f"))
  expect_equal(unname(curve), cbind(1:6, 1:6 / 6, c(1, 2, 2, 3, 3, 3) / 3, c(1, 2, 3, 3, 3, 3) / 3,
                                    c(3 / 6, 2 / 5, 1 / 4, 1 / 3, 0, 0), c(0, 0, 1, 1, 2, 3) / 3))
  expect_equal(CAP(1:2, c(0.25, 0.75), 0)[, "ideal"], c(0.75, 1))
  expect_equal(TA(score, bad, 3),
               data.frame(Score = c(1, 3, 5), Count = c(6, 4, 2), Bads = c(3, 1, 0),
                          Acceptance = 1 - c(1, 3, 5) / 6, Quality = c(1 / 2, 1 / 4, 0)))
  # thirds of the good 1/3 and 2/3, of the bad 2/3 and 1/3
  expect_equal(IV(score, bad, 2), 2 / 3 * log(2))
  expect_equal(IVa(score, bad, 2), 1 / 3 * log(2))
  expect_equal(area(c(0.5, 1)), 0.5)
  expect_equal(area(t(c(0.5, 1)), 4), 0.25)
  expect_equal(del_rand_quality(c(1, 1, 2), c(a = 1, b = 0, c = 1)), c(a = 0.5, b = 0.5, c = 1))
})

test_that("missing values make measures missing, or are left out", {
  x <- c(score, NA, 2)
  y <- c(bad, 1, NA)
  for (f in list(AR, KS, KS_xy, IV, IVa)) {
    expect_true(all(is.na(f(x, y))))
    expect_equal(f(x, y, na.rm = TRUE), f(score, bad))
  }
  expect_identical(TA(x, y, 3, na.rm = TRUE), TA(score, bad, 3))
  expect_identical(CAP(x, y, na.rm = TRUE), CAP(score, bad))
  for (f in list(CAP, TA, plot_cap, plot_ks)) expect_error(f(x, y), "missing")
  expect_true(is.nan(AR(1:3, c(1, 1, 1))))
  expect_true(is.nan(KS(numeric(), numeric())))
  expect_equal(dim(CAP(numeric(), numeric())), c(0, 6))
  expect_equal(area(numeric()), 0)
})

test_that("curves are drawn", {
  grDevices::pdf(NULL)
  on.exit(grDevices::dev.off())
  expect_equal(plot_cap(score, bad, main = "mine"), AR(score, bad))
  expect_equal(plot_cap(-score, bad, add = TRUE, col = 2), -AR(score, bad))
  expect_equal(plot_ks(rep(score, 500), rep(bad, 500)), KS_xy(score, bad))
  expect_error(plot_cap(1:2, c(0, 0)), "good and bad")
})

test_that("a factor tells the bad by its second level", {
  bad <- c(1, 0, 1, 0, 0)
  expect_identical(KS_xy(5:1, factor(bad, labels = c("paid", "a default"))), KS_xy(5:1, bad))
})

test_that("misuse is an error of R", {
  row <- matrix(1:3, 1)
  routines <- list(AR = "double AR(matrix,matrix,double,int,int,int)", KS = "double KS(matrix,matrix)",
                   KS_xy = "double KS_xy(matrix,matrix,double,double,double)", IV = NULL, IVa = NULL,
                   CAP = "matrix CAP(matrix,matrix,int)", TA = "table TA(matrix,matrix,int)")
  for (name in names(routines)) {
    f <- get(name)
    expect_refusal(f(1:3, 1:2), "MATRIX", "sort(matrix,matrix,Direction,int)",
                   "wektory maja niezgodne wymiary")
    expect_refusal(f(diag(2), diag(2)), "MATRIX", "Vector sort(matrix,Direction,int)",
                   "pierwszy argument nie jest wektorem")
    if (!is.null(routines[[name]]))
      expect_refusal(f(row, row), if (name == "TA") "TABLE" else "MATRIX", routines[[name]],
                     "oczekiwane wektory kolumnowe")
    expect_misuse(f, not_numbers, y = 1)
    expect_misuse(function(y) f(1, y), not_numbers)
    expect_misuse(function(v) f(1:2, 0:1, na.rm = v), list(NA, NULL, 1))
  }
  for (bins in c(0, 7))
    expect_refusal(TA(score, bad, bins), "TABLE", routines$TA, "liczba przedzialow poza zakresem")
  for (name in c("IV", "IVa"))
    expect_refusal(get(name)(score, bad, 0), "MATRIX", paste0("double ", name, "(matrix,matrix,int)"),
                   "liczba grup mniejsza niz 1")
  expect_refusal(area(diag(2)), "MATRIX", "operator double()", "konwersja niemozliwa")
  level <- "void del_rand_quality(matrix,matrix)"
  expect_refusal(del_rand_quality(row, row), "MATRIX", level, "oczekiwane wektory kolumnowe")
  expect_refusal(del_rand_quality(1:3, 1:2), "MATRIX", level, "wektory maja niezgodne wymiary")
  expect_misuse(function(v) AR(score, bad, ties = v), list(NA, 1))
})

test_that("R survives odd arguments", {
  grDevices::pdf(NULL)
  on.exit(grDevices::dev.off())
  expect_survival("AR", score, bad, 1, TRUE, TRUE, FALSE, FALSE)
  for (name in c("KS", "KS_xy", "plot_ks")) expect_survival(name, score, bad, FALSE)
  for (name in c("CAP", "TA", "IV", "IVa")) expect_survival(name, score, bad, 2, TRUE)
  expect_survival("plot_cap", score, bad, FALSE, FALSE)
  expect_survival("area", c(0.5, 1), 2)
  expect_survival("del_rand_quality", 1:3, c(0, 1, 0))
})
