// Fits of a model's parameters to observations.
#pragma once

#include <varnow/containers/matrix.h>
#include <varnow/numerics/minimise.h>

namespace varnow {

/// The error of a fit; any other value makes it, and its derivatives, 0.
/// - EsQuadratic: root of the mean squared difference
/// - EsLikelihood: minus the log-likelihood of y, the model's value being the probability of 1
enum EsType : int { EsQuadratic = 0, EsLikelihood = 1 };

// X: n rows of observations. y: n values (other numbers between 0 and 1 enter the likelihood as
// weights). par: m parameters in one column, the start and then the answer.
// f: the model, df its derivative by parameter j, from 1 to m. In the row form they get an
// observation as a matrix of one row with the row's and the columns' names, which they may write
// to, but not reshape or rename; in the scalar form a number. y, and in the scalar form X, is read
// along its first row when it has fewer rows than columns, else down its first column; n is the
// number of rows of X in either case.
// - threads: all but `fun_fit` call f and df from four threads at once, each with a block of
//   consecutive observations, all with the same par: they must be free of side effects. The order
//   in which the threads' sums meet is open, so the last bits of an error can differ from run to
//   run
// - refuse: a null f; a null df where it is needed; fewer values in y than n; a scalar form
//   without columns in X

/// The model's value for each observation, a column of n without names; on the caller's thread.
VARNOW_API matrix fun_fit(matrix const& X, double (*f)(matrix&, matrix&), matrix& par);
VARNOW_API matrix fun_fit(matrix const& X, double (*f)(double, matrix&), matrix& par);

/// The error of the fit. For no observations NaN (EsQuadratic) or 0. Under EsLikelihood a model
/// value that is not between 0 and 1 costs 100, one of exactly 0 or 1 that hits y nothing, and NaN
/// nothing.
VARNOW_API double err_fit(matrix const& X, matrix const& y, double (*f)(matrix&, matrix&),
                          matrix& par, EsType type);
VARNOW_API double err_fit(matrix const& X, matrix const& y, double (*f)(double, matrix&),
                          matrix& par, EsType type);

/// The derivative of the error by parameter j. NaN at a perfect fit (EsQuadratic); observations
/// with a model value that is not between 0 and 1 add nothing (EsLikelihood).
VARNOW_API double derr_fit(matrix const& X, matrix const& y, double (*f)(matrix&, matrix&),
                           double (*df)(matrix&, matrix&, int), matrix& par, int j, EsType type);
VARNOW_API double derr_fit(matrix const& X, matrix const& y, double (*f)(double, matrix&),
                           double (*df)(double, matrix&, int), matrix& par, int j, EsType type);

// `fminu`, `fmins` and `fminx` (minimise.h) of the error: tol, limits, results and the fate of par
// are theirs.
VARNOW_API bool fitu(matrix const& X, matrix const& y, double (*f)(matrix&, matrix&),
                     double (*df)(matrix&, matrix&, int), matrix& par, double tol, EsType type,
                     EsMethod method);
VARNOW_API bool fitu(matrix const& X, matrix const& y, double (*f)(double, matrix&),
                     double (*df)(double, matrix&, int), matrix& par, double tol, EsType type,
                     EsMethod method);
VARNOW_API bool fits(matrix const& X, matrix const& y, double (*f)(matrix&, matrix&), matrix& par,
                     double tol, EsType type);
VARNOW_API bool fits(matrix const& X, matrix const& y, double (*f)(double, matrix&), matrix& par,
                     double tol, EsType type);
VARNOW_API void fitx(matrix const& X, matrix const& y, double (*f)(matrix&, matrix&),
                     double (*df)(matrix&, matrix&, int), matrix& par, double tol, EsSpeed speed,
                     EsType type, EsMethod method);
VARNOW_API void fitx(matrix const& X, matrix const& y, double (*f)(double, matrix&),
                     double (*df)(double, matrix&, int), matrix& par, double tol, EsSpeed speed,
                     EsType type, EsMethod method);

} // namespace varnow
