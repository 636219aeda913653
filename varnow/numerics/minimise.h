// Minimisers of a function of several parameters.
#pragma once

#include <varnow/containers/matrix.h>

namespace varnow {

/// How `fminu` and `fitu` learn the inverse of the second derivatives; any other value keeps the
/// unit matrix, which makes it steepest descent.
enum EsMethod : int { DFP = 0, BFGS = 1 };

/// How much `fminx` and `fitx` do; 3 and above is the least.
enum EsSpeed : int { SpeedSlow = 0, SpeedMedium = 1, SpeedFast = 2, SpeedFastest = 3 };

// x: the start and then the answer, n parameters in one column. Its names stay, and f sees them.
// f is the function, df its derivative by parameter i, from 1 to n; they are called on the caller's
// thread. Searches are never endless: an f that is NaN or infinite everywhere runs into a limit.
// - refuse: a null f; a null df where it is needed; an x of another shape

/// Descends along the gradient as the quasi-Newton matrix turns it, halving the step until f does
/// not rise.
/// - tol: on the change of every parameter and of f, both in one turn; the step that meets it is
///   not taken
/// - returns: false after 99 halvings without success, or 500 n turns; x is then the best so far
/// No guard against a division by 0 in the matrix: what follows is a step of NaN, and false.
/// - source: Fletcher, Practical Methods of Optimization (1987) ch. 3
VARNOW_API bool fminu(double (*f)(matrix&), double (*df)(matrix&, int), matrix& x, double tol,
                      EsMethod method);

/// Searches with a simplex of n + 1 points, without derivatives. It begins with x and points that
/// differ from it in one parameter, 1.05 times as large or, in place of 0, 0.00025.
/// - tol: on the largest distance of a parameter, and of f, from the best point's
/// - returns: false once 500 n evaluations are reached
/// Equal values stand in the order that `sort` gives them.
/// - source: Nelder and Mead, Comput. J. 7 (1965) 308
VARNOW_API bool fmins(double (*f)(matrix&), matrix& x, double tol);

/// Searches from x and from the zero vector and keeps the better answer, x's unless the other's
/// value is below it. `SpeedFastest`: `fmins` from x only. `SpeedFast`: `fmins` from both.
/// `SpeedMedium`: then `fminu` from the better one. `SpeedSlow`: `fmins` and `fminu` from both.
/// - df: may be null for the two fast ones
VARNOW_API void fminx(double (*f)(matrix&), double (*df)(matrix&, int), matrix& x, double tol,
                      EsSpeed speed, EsMethod method);

} // namespace varnow
