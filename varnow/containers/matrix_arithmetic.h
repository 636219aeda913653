// Arithmetic, comparison and logic on matrices, cell by cell.
#pragma once

#include <varnow/containers/compare.h>
#include <varnow/containers/matrix.h>

namespace varnow {

// + - * / of two matrices work cell by cell (the product of matrices is `mul`, solving is
// `lineqns`), as do `max` and `min`; a scalar stands in its written place. Results bear the names
// of the (first) matrix.
// - refuse: different shapes
VARNOW_API matrix operator+(matrix const& a, matrix const& b);
VARNOW_API matrix operator-(matrix const& a, matrix const& b);
VARNOW_API matrix operator*(matrix const& a, matrix const& b);
VARNOW_API matrix operator/(matrix const& a, matrix const& b);
/// a >= b ? a : b
VARNOW_API matrix max(matrix const& a, matrix const& b);
/// a >= b ? b : a
VARNOW_API matrix min(matrix const& a, matrix const& b);
VARNOW_API matrix operator-(matrix const& a);

// clang-format off
#define VARNOW_SCALAR(f)                                                                               \
    VARNOW_API matrix f(matrix const& a, double b);                                                    \
    VARNOW_API matrix f(double a, matrix const& b);                                                    \
    template <class S, detail::if_number<S> = 0> matrix f(matrix const& a, S b)                        \
    { return f(a, static_cast<double>(b)); }                                                           \
    template <class S, detail::if_number<S> = 0> matrix f(S a, matrix const& b)                        \
    { return f(static_cast<double>(a), b); }
VARNOW_SCALAR(operator+) VARNOW_SCALAR(operator-) VARNOW_SCALAR(operator*) VARNOW_SCALAR(operator/)
VARNOW_SCALAR(max) VARNOW_SCALAR(min)
#undef VARNOW_SCALAR
    // clang-format on

    // 1.0 where the comparison holds, else 0.0, with the names of a; against a number a matrix
    // gives a Vector (compare.h). - refuse: different shapes
    VARNOW_API matrix
    operator==(matrix const& a, matrix const& b);
VARNOW_API matrix operator!=(matrix const& a, matrix const& b);
VARNOW_API matrix operator<(matrix const& a, matrix const& b);
VARNOW_API matrix operator<=(matrix const& a, matrix const& b);
VARNOW_API matrix operator>(matrix const& a, matrix const& b);
VARNOW_API matrix operator>=(matrix const& a, matrix const& b);

// A cell is true when its value truncated toward zero to a 32-bit integer is not 0: 0.5 is false;
// NaN and what is out of range are true.
VARNOW_API matrix operator&&(matrix const& a, matrix const& b);
VARNOW_API matrix operator||(matrix const& a, matrix const& b);
VARNOW_API matrix operator!(matrix const& a);

/// True when a cell differs from 0 (NaN does); false for no cells.
VARNOW_API bool any(matrix const& a);
/// False when a cell equals 0; true for no cells.
VARNOW_API bool all(matrix const& a);
VARNOW_API bool isempty(matrix const& a);
VARNOW_API bool issqr(matrix const& a);
/// Exact symmetry of the largest square at the upper left; the shape is not tested. A NaN off the
/// diagonal is a difference.
VARNOW_API bool issym(matrix const& a);

// The C library's function of each name on every cell of a copy; names kept.
VARNOW_API matrix abs(matrix const& a);
VARNOW_API matrix sqr(matrix const& a);
VARNOW_API matrix sqrt(matrix const& a);
VARNOW_API matrix sin(matrix const& a);
VARNOW_API matrix cos(matrix const& a);
VARNOW_API matrix tan(matrix const& a);
VARNOW_API matrix sinh(matrix const& a);
VARNOW_API matrix cosh(matrix const& a);
VARNOW_API matrix tanh(matrix const& a);
VARNOW_API matrix asin(matrix const& a);
VARNOW_API matrix acos(matrix const& a);
VARNOW_API matrix atan(matrix const& a);
VARNOW_API matrix exp(matrix const& a);
VARNOW_API matrix log(matrix const& a);
VARNOW_API matrix log10(matrix const& a);
VARNOW_API matrix ceil(matrix const& a);
VARNOW_API matrix floor(matrix const& a);
VARNOW_API matrix pow(matrix const& a, double p);
/// Integer power by repeated squaring.
VARNOW_API matrix pow(matrix const& a, int n);
template <class S, detail::if_number<S> = 0> matrix pow(matrix const& a, S p)
{
    return pow(a, static_cast<double>(p));
}
VARNOW_API matrix forall(matrix const& a, double (*f)(double));
VARNOW_API matrix forall(matrix const& a, double (*f)(double, double), double x);
/// Scaled to unit sum, as the member `norm`.
VARNOW_API matrix norm(matrix const& a);

/// The cells of one row or column truncated toward zero, NaN and what is out of range as the
/// integer minimum; the empty matrix gives the empty Vector. Refuses more than one row and column.
VARNOW_API Vector as_Vector(matrix const& a);
/// The 1-based positions of the cells of a vector that differ from 0 (NaN does). Refuses more than
/// one row and column.
VARNOW_API Vector find(matrix const& a);
/// All cells in one column, column after column, without names.
VARNOW_API matrix vect(matrix const& a);

} // namespace varnow
