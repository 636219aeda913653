a <- matrix(c(4, 2, 1, 3), 2, dimnames = list(NULL, c("x", "y")))

test_that("systems are solved and names come back", {
  for (method in c("LU", "QR")) {
    expect_equal(lineqns(a, c(9, 8), method),
                 matrix(c(1.9, 1.4), 2, dimnames = list(c("x", "y"), "LINEQNS")))
    expect_equal(inv(as.data.frame(a), method),
                 matrix(c(0.3, -0.2, -0.1, 0.4), 2, dimnames = list(c("x", "y"), c("x", "y"))))
  }
  expect_equal(det_lu(a), 10)
  expect_equal(det_lu(matrix(0, 0, 0)), 1)
  expect_equal(dim(inv(matrix(0, 0, 0))), c(0, 0))
  expect_true(all(is.na(inv(matrix(c(NA, 1, 1, 1), 2)))))
})

test_that("misuse is an error of R", {
  solve_routine <- "matrix lineqns(matrix,matrix,LinearMethod)"
  sizes <- "niezgodne wymiary macierzy"
  singular <- matrix(1, 2, 2)
  expect_refusal(lineqns(a, 1:3), "MATRIX", solve_routine, sizes)
  expect_refusal(lineqns(a, a), "MATRIX", solve_routine, sizes)
  expect_refusal(lineqns(matrix(1, 2, 3), 1:2), "MATRIX", solve_routine, sizes)
  expect_refusal(lineqns(matrix(0, 0, 0), numeric()), "MATRIX", solve_routine, sizes)
  expect_refusal(lineqns(singular, 1:2), "MATRIX", solve_routine, "macierz jest prawie osobliwa")
  expect_refusal(inv(singular), "MATRIX", "matrix inv(matrix,LinearMethod)",
                 "macierz jest prawie osobliwa")
  expect_refusal(inv(1:2), "MATRIX", "matrix inv(matrix,LinearMethod)",
                 "macierz musi byc kwadratowa")
  expect_refusal(det_lu(1:2), "MATRIX", "double det(matrix)", "macierz powinna byc kwadratowa")
  expect_misuse(lineqns, not_numbers, b = 1)
  expect_misuse(function(b) lineqns(1, b), not_numbers)
  expect_misuse(function(method) inv(1, method), list("GAUSS", NA, 1, NULL, c("LU", "LU")))
  expect_misuse(inv, not_numbers)
  expect_misuse(det_lu, not_numbers)
})

test_that("R survives odd arguments", {
  expect_survival("lineqns", a, 1:2, "LU")
  expect_survival("inv", a, "QR")
  expect_survival("det_lu", a)
})
