// Binary logistic regression and the one-variable response curves.
#pragma once

#include <varnow/containers/matrix.h>

namespace varnow {

// X: n rows of observations, c columns of variables. y: a column of n targets, 1 for the event, 0
// otherwise (other values enter the formulas as they stand). Parameters: a column of m = c + 1 rows
// without names, the intercept last. `logistic_par` and `logistic_par2` maximise the log-likelihood
// less 0.05 times the sum of squares of all parameters; `logistic_par1` has no such ridge.
// - threads: asked for each parallel region, 1 when below 1; last bits of a result vary with the
//   order in which the threads' sums meet
// - limits: 500 turns, silently. Columns of very different scale are not fitted in that many turns:
//   bring them to mean 0 and variance 1 first. An `eps` as small as 1e-9 can spend the turns on the
//   coarse sample of `logistic_par`; 1e-6 is a good choice
// - NaN in the data, and a gradient of exactly 0 at the start, give NaN parameters
// - refuse: y of another number of rows, class MATRIX
// - source: Bishop, Neural Networks for Pattern Recognition (1995) 7.7 on conjugate directions

/// The estimator for large data: conjugate directions over samples of every 4^k-th row, the first
/// of 10 to 40 rows a parameter, then four times as many, at last all rows. Below 10 rows a
/// parameter: all rows at once.
VARNOW_API matrix logistic_par(matrix const& X, matrix const& y, int threads, double eps);
/// The same search on all rows; ends when no parameter moves by more than eps.
VARNOW_API matrix logistic_par2(matrix const& X, matrix const& y, int threads, double eps);
/// Newton's iteration, until no parameter moves by more than 1e-9. One thread, no ridge.
VARNOW_API matrix logistic_par1(matrix const& X, matrix const& y);

/// Probabilities of the event, a column with the row names of X (and the column names of par).
/// - refuses: par of another number of rows than c + 1, as `mul` does
VARNOW_API matrix logistic_val(matrix const& X, matrix const& par);
/// Minus the log-likelihood over the rows 1, 1 + stride, 1 + 2 stride, ...; lower is better.
/// - par: a column or a row
/// - refuses: y or par of another length; stride below 1
VARNOW_API double logistic_lcl(matrix const& X, matrix const& y, matrix const& par, int stride,
                               int threads);
/// 1 / (exp(v) + 1) below 20, and 0 from there on; NaN for NaN.
VARNOW_API double logit(double v);

/// The linear predictor of one row x, and its derivative by parameter j, as model functions of a
/// fit.
VARNOW_API double lm_val1(matrix& x, matrix& par);
VARNOW_API double lm_dval1(matrix& x, matrix& par, int j);

/// The score round(1000 (1 - p)) of each probability: 0 the highest, 1000 the lowest. Names kept.
VARNOW_API matrix lm_score(matrix const& p);

/// The sign of a variable's relation to y: -1 when the mean of y falls from x = 0 to x = 1, else
/// +1.
VARNOW_API int direction_B(matrix const& x, matrix const& y);
/// The same from the lowest tenth of x (at or below its quantile at 0.1) to the highest.
VARNOW_API int direction_C(matrix const& x, matrix const& y);

// Response curves of one variable; u stands for p(2) x + p(3).
/// p(1) at x = 0, else p(2).
VARNOW_API double f_B(double x, matrix& p);
/// p(1) x + p(2)
VARNOW_API double f_BL(double x, matrix& p);
/// p(1) tanh(u) + p(4): a monotone sigmoid.
VARNOW_API double f_C(double x, matrix& p);
/// p(1) / cosh(u) + p(4): a bell, or a U with p(1) below 0.
VARNOW_API double f_CU(double x, matrix& p);
/// p(1) tanh(u) + p(5), and p(4) more when x is at most -1: a sigmoid with a level of its own
/// there.
VARNOW_API double f_M(double x, matrix& p);
/// Derivatives by parameter j; 0 for a j that is no parameter.
VARNOW_API double df_C(double x, matrix& p, int j);
VARNOW_API double df_CU(double x, matrix& p, int j);
VARNOW_API double df_M(double x, matrix& p, int j);

} // namespace varnow
