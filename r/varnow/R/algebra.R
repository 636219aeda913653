solvers <- c("LU", "QR")
solver_number <- function(method) match(method, c("GAUSS", "LU", "QR")) - 1L

# Zero pivots leave infinities or NaN where the data had none.
checked_solution <- function(x, from, routine) {
  if (all(is.finite(from)) && !all(is.finite(x)))
    refuse("MATRIX", routine, "macierz jest prawie osobliwa")
  x
}

#' Linear systems, inverses and determinants
#'
#' `lineqns()` solves A x = b, `inv()` inverts, and `det_lu()` is the determinant by the factors of
#' Crout. No cell is scaled and no tolerance applied: a matrix is singular when a pivot is exactly
#' 0, and close to that the digits are lost without a word.
#'
#' @param a a square numeric matrix or data frame
#' @param b a numeric vector or a matrix of one column, with as many elements as `a` has rows
#' @param method `"LU"` by partial pivoting, or `"QR"` by orthogonal columns
#' @return `lineqns()`: a matrix of one column named `LINEQNS`, with the column names of `a` as row
#'   names. `inv()`: a matrix with the column names of `a` on both sides. `det_lu()`: a number.
#'   Missing values in the data give missing values in the result; a singular matrix is an error for
#'   the first two.
#' @examples
#' a <- matrix(c(4, 2, 1, 3), 2, dimnames = list(NULL, c("x", "y")))
#' lineqns(a, c(9, 8))
#' inv(a) %*% a
#' det_lu(a)
#' @export
lineqns <- function(a, b, method = c("LU", "QR")) {
  a <- as_matrix_arg(a)
  b <- as_matrix_arg(b)
  method <- as_choice_arg(method, solvers)
  routine <- "matrix lineqns(matrix,matrix,LinearMethod)"
  if (nrow(a) != ncol(a) || ncol(b) != 1 || nrow(b) != nrow(a) || nrow(a) < 1)
    refuse("MATRIX", routine, "niezgodne wymiary macierzy")
  checked_solution(algebra_lineqns(a, b, solver_number(method)), c(a, b), routine)
}

#' @rdname lineqns
#' @export
inv <- function(a, method = c("LU", "QR")) {
  a <- as_matrix_arg(a)
  method <- as_choice_arg(method, solvers)
  routine <- "matrix inv(matrix,LinearMethod)"
  if (nrow(a) != ncol(a)) refuse("MATRIX", routine, "macierz musi byc kwadratowa")
  checked_solution(algebra_inv(a, solver_number(method)), a, routine)
}

#' @rdname lineqns
#' @export
det_lu <- function(a) {
  a <- as_matrix_arg(a)
  if (nrow(a) != ncol(a)) refuse("MATRIX", "double det(matrix)", "macierz powinna byc kwadratowa")
  algebra_det(a)
}
