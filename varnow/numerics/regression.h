// Least squares by the sweep operator on a cross-product matrix. No pivoting, no scaling and no
// tolerance: a variable that depends on those before it gives infinities, NaN or, after rounding,
// large numbers, without a word.
//
// A sweep of A on pivot k, d = A(k, k), replaces the pivot by -1 / d, the rest of its row and
// column by A(i, j) / d and every other cell by A(i, j) - A(i, k) * A(k, j) / d. The two members of
// `matrix` sweep an object in place on pivots first to last, none when first > last:
// - `linreg_sweep` on each. Refuses what is not square; what is not symmetric, where a NaN equals
//   nothing; pivots outside the object
// - `linreg_sweep_c` on those with a cell of cond equal to 1 that are not ycol, among the cells of
//   such variables and of ycol; all other cells become 0, unless there is no such pivot. Refuses as
//   `linreg_sweep`, and between symmetry and pivots a cond of other than one column, then of other
//   than one cell for each row
// - source: Goodnight, The American Statistician 33 (1979) 149
#pragma once

#include <varnow/containers/matrix.h>

namespace varnow {

/// Coefficients of the regression of y on the columns of X; an intercept is a column of ones in X.
/// - X: n by p, y: n by 1, n at least 1 and p
/// - returns: p by 1, named "LINREG", row names the column names of X
/// - refuses: other shapes; NaN in the data, which leaves the cross-products unsymmetric
VARNOW_API matrix linreg(matrix const& X, matrix const& y);

/// Coefficients of the regression of one variable on some others, from their sums of products.
/// - M: symmetric, variables and target; ycol: the number of the target
/// - cond: a column, 1 for each variable to take and any other number for the rest
/// - returns: one column without a name, of as many rows as the cells of cond sum up to without the
///   target's, both truncated. Row k holds the coefficient of the k-th variable taken and, for
///   every choice of variables, bears the name of row k of M. Rows too many are NaN without a name,
///   and coefficients too many are left out
/// - refuses: M not square; not symmetric; cond of several columns; of another length; a ycol that
/// is
///   no cell of cond
VARNOW_API matrix linreg_c(matrix const& M, matrix const& cond, int ycol);

} // namespace varnow
