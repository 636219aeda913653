test_that("sorting follows the library and carries names and rows", {
  expect_identical(sort_values(c(b = 2, a = 1, c = 3)), c(a = 1, b = 2, c = 3))
  expect_identical(order_values(c(2L, 1L, 3L), decreasing = TRUE), c(3L, 1L, 2L))
  expect_identical(sort_values(c("b", NA, "B", "\u017c")), c(NA, "\u017c", "B", "b"))
  expect_identical(sort_values(factor(c("u", "v"), c("v", "u"))), factor(c("u", "v"), c("v", "u")))
  expect_identical(order_values(as.difftime(c(10, 9, NA), units = "mins")), 3:1)
  two_hours_of_2 <- structure(1698538200 + c(3000, 0, 3600), class = c("POSIXct", "POSIXt"),
                              tzone = "Europe/Warsaw")
  expect_identical(order_values(two_hours_of_2), c(2L, 1L, 3L))
  expect_setequal(order_values(c(NA, 2, NaN, 1)), 1:4)
  expect_identical(order_values(numeric()), integer())
  expect_identical(sort_rows(cars, "dist", TRUE)[1:2, ], cars[c(49, 48), ])
  m <- matrix(c(2, 1, 3, 4), 2, dimnames = list(c("p", "q"), NULL))
  expect_identical(sort_rows(m, 1), m[2:1, ])
})

test_that("sets use the library's equality", {
  x <- c(3, 1, NA, 3, NA, -0)
  expect_identical(unique_values(x), c(3, 1, NA, NA, 0))
  expect_identical(unique_values(c("b", NA, "a", "b", NA), from_last = TRUE), c("a", "b", NA))
  expect_identical(match_values(x, c(1, NA, 0, 3, 3)), c(4L, 1L, NA, 4L, NA, 3L))
  expect_identical(match_values(3, c(1, 3, 3), from_last = TRUE, nomatch = 0), 3L)
  expect_identical(match_values(c("1", NA, "z"), c(NA, 1)), c(2L, 1L, NA))
  expect_identical(set_union(c(2, 1), c(1, 5)), c(2, 1, 5))
  expect_identical(set_union(NA_character_, "b"), c(NA, "b"))
  expect_identical(set_difference(c(1, 1, 2, NA), c(2, NA)), c(1, 1, NA))
  expect_identical(set_intersection(factor(c("a", "b")), "b"), "b")
  expect_identical(set_difference(1, 1), numeric())
  expect_identical(set_union(character(), character()), character())
  expect_true(set_equal(c(1, 2, 2), c(2, 1)))
  expect_false(set_equal(NA, NA))
  expect_identical(is_element(c("a", "z"), letters[1:3]), c(TRUE, FALSE))
  expect_identical(is_element(numeric(), 1), logical())
})

test_that("misuse is an error of R", {
  two <- diag(2)
  not_a_vector <- "oczekiwany wektor"
  for (case in list(list(sort_values, "Vector order(matrix,Direction)"),
                    list(unique_values, "matrix unique(matrix,int)")))
    expect_refusal(case[[1]](two), "MATRIX", case[[2]], not_a_vector)
  pairs <- list(list(match_values, "Vector match(matrix,matrix,int,int)"),
                list(set_union, "matrix setunion(matrix,matrix)"),
                list(set_difference, "matrix setdiff(matrix,matrix)"),
                list(set_intersection, "matrix setintersect(matrix,matrix)"),
                list(set_equal, "int setequal(matrix,matrix)"),
                list(is_element, "Vector iselement(matrix,matrix)"))
  vectorless <- list(NULL, list(1), sum, cars, array(0, c(1, 1, 1)))
  for (case in pairs) {
    expect_refusal(case[[1]](two, 1), "MATRIX", case[[2]], not_a_vector)
    expect_refusal(case[[1]](1, two), "MATRIX", case[[2]], not_a_vector)
    expect_misuse(case[[1]], vectorless, 1)
    expect_misuse(function(y) case[[1]](1, y), vectorless)
  }
  expect_refusal(unique_values(matrix("a", 2, 2)), "TABLE", "table unique(table,int)", not_a_vector)
  for (f in list(sort_values, order_values, unique_values)) {
    expect_misuse(f, vectorless)
    expect_misuse(function(flag) f(1, flag), list(NA, 2, "a", NULL))
  }
  expect_refusal(sort_rows(cars, "age"), "TABLE", "sort(Text,Direction,int)",
                 "nie znaleziono podanej kolumny")
  for (by in c(0, 3)) expect_refusal(sort_rows(cars, by), "TABLE", "sort(int,Direction,int)",
                                     "numer kolumny poza zakresem")
  expect_refusal(sort_rows(two, 3), "MATRIX", "sort(int,Direction,int)",
                 "numer kolumny poza zakresem")
  expect_misuse(sort_rows, list(NULL, 1, "a", list()), by = 1)
  expect_error(sort_rows(cars, by = 1.5), "`by`")
  expect_misuse(function(by) sort_rows(cars, by), list(NULL, NA, 1.5, c("speed", "dist"), list()))
  expect_misuse(function(nomatch) match_values(1, 1, nomatch = nomatch), list(NULL, "a", 1:2))
})

test_that("R survives odd arguments", {
  expect_survival("sort_values", c(2, 1), TRUE)
  expect_survival("order_values", c("b", "a"), TRUE)
  expect_survival("sort_rows", cars, "dist", TRUE)
  expect_survival("unique_values", c(2, 1, 2), TRUE)
  expect_survival("match_values", c("b", "a"), "a", FALSE, 0)
  for (f in c("set_union", "set_difference", "set_intersection", "set_equal", "is_element"))
    expect_survival(f, c(1, 2, NA), 2)
})
