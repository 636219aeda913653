// Linear models with an intercept: estimation, values, error and tests of the coefficients.
#pragma once

#include <varnow/numerics/fitting.h>

namespace varnow {

// X: n rows of observations, c columns of variables. y: a column of n targets. Parameters: a column
// of c + 1, the intercept last.

/// The parameters. `EsQuadratic`: least squares by `linreg`, named as there, the intercept without
/// a name. `EsLikelihood`: the same start, then `fits` and `fitu`, the linear value being the
/// probability of y = 1 itself, as `lm_val1` of logistic.h gives it. Any other type: zeros.
/// - refuses: as `linreg` of X and a column of ones
VARNOW_API matrix lm_par(matrix const& X, matrix const& y, EsType type);
/// X | ones(n, 1) times par: row names of X, column names of par. Refuses other sizes as `mul`
/// does.
VARNOW_API matrix lm_val(matrix const& X, matrix const& par);
/// The root of the mean, over the rows of b, of the squares of a - b. Refuses other shapes as `-`
/// does.
VARNOW_API double lm_err(matrix const& a, matrix const& b);

// Tests of coefficients. se: standard errors; t: coefficients by them; p: probabilities of a larger
// |t| by the normal distribution, however few observations there are. Each is sized here, without
// losing names that still fit. A perfect fit gives se of 0; as many parameters as observations, or
// more, give infinities or NaN.

/// Returns lm_par(X, y, type).
VARNOW_API matrix lm_tstud(matrix const& X, matrix const& y, matrix& se, matrix& t, matrix& p,
                           EsType type);

// Models on some of the variables, from sums of products taken once.
// - M: as `linreg_c` takes it, the target last
// - cond: a column, a cell for each row of M: 1 for each variable to take, and the last for whether
//   the model has an intercept of its own
// - k: the sum of cond, truncated, less the last cell, rounded: the number of variables
// An intercept that is estimated is a column of ones in X and M, and the last cell of cond 0:
//
//     matrix X1 = X | ones(n, 1), M = crossprod(X1 | y);

/// linreg_c(M, cond, M.cols).
VARNOW_API matrix lm_par_c(matrix const& M, matrix const& cond);
/// The sum over the taken columns of X times par, and par(k + 1) besides when the last cell of cond
/// is 1; n by 1 without names.
/// - refuses: cond shorter than the columns of X, par shorter than needed, as their cells do
VARNOW_API matrix lm_val_c(matrix const& X, matrix const& par, matrix const& cond);
/// Returns lm_par_c(M, cond); n - k - 1 degrees of freedom. The columns get k + 1 rows, t and p NaN
/// where there is no parameter.
/// - refuses: as `linreg_c`, `lm_val_c` and `-`; with a last cell of cond of 1 there is no par(k +
/// 1)
VARNOW_API matrix lm_tstud_c(matrix const& X, matrix const& y, matrix const& M, matrix const& cond,
                             matrix& se, matrix& t, matrix& p);
/// Whether a model is admissible: ok becomes 0 when some par(i), i <= k, is below lo; when some
/// p(i) exceeds pmax; when some se(i) exceeds semax. A NaN passes each test. In the first case, and
/// in a model without variables, which is admissible, the data are not read and se, t and p are
/// left alone. Returns lm_par_c(M, cond).
VARNOW_API matrix lm_qtstud_c(matrix const& X, matrix const& y, matrix const& M, matrix const& cond,
                              matrix& se, matrix& t, matrix& p, double lo, double pmax,
                              double semax, int& ok);

} // namespace varnow
