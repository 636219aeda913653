// Integral, derivative, minimum and root of a function of one real variable.
#pragma once

#include <varnow/core/export.h>

namespace varnow {

// f is called on the caller's thread, in a fixed order at fixed points, and nothing is kept between
// calls. A result is always returned; NaN and infinities of f pass into it.
// - refuse, class FUNCTION: a null pointer; nothing else

/// The integral of f from a to b by halving each interval until the closed rule of nine points
/// agrees on it and on its halves, at most 11 levels deep (then the value stands as it is).
/// - tol: relative; each half gets half of it, relative to its own integral
VARNOW_API double integral(double (*f)(double), double a, double b, double tol);
/// One interval of `integral`.
/// - level: 1 at the top, 11 at most divides no further
/// - F: nine values of f at a + k (b - a) / 8
/// - Qprev: what is known of this interval's integral; 1e30 makes it divide
VARNOW_API double quad8stp(double (*f)(double), double a, double b, double tol, int level,
                           double* F, double Qprev);

/// The derivative of f at x by `rombergdiff` from a first step of 0.001, at most 10 passes.
/// - tol: absolute
VARNOW_API double derivative(double (*f)(double), double x, double tol);
/// Richardson's extrapolation of central differences over six halvings of the step; each further
/// pass begins with half of the step.
/// - tol: absolute change of the last column that ends the search
/// - maxit: passes; below 1 as 1
/// - flag: on entry not 0, or the first extrapolated value is the result; on return 0 for a value
///   that settled before the last pass allowed, 1 for any other
/// - source: Romberg, Norske Vid. Selsk. Forh. 28 (1955) 30
VARNOW_API double rombergdiff(double (*f)(double), double x, double tol, double h, int maxit,
                              int& flag);

/// Where f is least between a and b, by `fminops` with at most 501 evaluations.
/// - tol: absolute, on the place; below about 1e-8 of it nothing is gained
VARNOW_API double fmin(double (*f)(double), double a, double b, double tol);
/// Golden section with parabolic steps.
/// - maxit: evaluations, of which maxit + 1 (at least two) are made at most
/// - flag: on return 0 when the bracket is as narrow as tol asks, 1 at the limit; the result is the
///   best place so far
/// - source: Brent, Algorithms for Minimization without Derivatives (1973) ch. 5
VARNOW_API double fminops(double (*f)(double), double a, double b, double tol, int maxit,
                          int& flag);

/// A root of f near x: widens an interval around x until f is above 0 on one side only, then
/// closes in on it. An exact 0 counts as not above.
/// - tol: on the place, relative to the larger of the root and 1; 0 asks for more than rounding
///   may grant, and the search need not end
/// Never returns when f has no change of sign, NaN everywhere included.
/// - source: Brent, ibid. ch. 4
VARNOW_API double fzero(double (*f)(double), double x, double tol);

} // namespace varnow
