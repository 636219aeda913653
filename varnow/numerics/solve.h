// Dense linear systems: plain elimination with partial pivoting, LU and QR. No scaling, no
// refinement and no tolerance: only a pivot of exactly 0 counts as none, and NaN and infinities
// pass into the results without a word.
#pragma once

#include <varnow/containers/matrix.h>

namespace varnow {

/// Solves A x = b.
/// - A: n by n; b: n by 1, n at least 1
/// - returns: n by 1, named "LINEQNS", row names the column names of A; with an unknown method the
///   cells are undefined
/// - GAUSS reports a pivot that is exactly 0; LU and QR give 0 where 0 / 0 would stand, and else
///   infinities
/// - refuses: any other shapes
VARNOW_API matrix lineqns(matrix const& A, matrix const& b, LinearMethod method);

/// The inverse, column by column the solution for a unit vector; column names of A on both sides,
/// and with an unknown method undefined cells. Refuses what is not square.
VARNOW_API matrix inv(matrix const& A, LinearMethod method);

/// The determinant by LU_decomp; 1 for 0 by 0. Refuses what is not square.
VARNOW_API double det(matrix const& A);

/// A vector as the diagonal of a matrix of zeros, without names; the diagonal of a larger square
/// matrix as one column, without names; nothing for an object without cells. Refuses other shapes.
VARNOW_API matrix diag(matrix const& m);

/// Crout's factors of A with its rows exchanged for the largest pivots, earlier rows winning ties.
/// Each result is sized here and may be A itself. A column without a pivot stays undivided.
/// - factors: multipliers below the diagonal, U on and above it; names of A, which stay in place
/// - P: n by 1, the number in A of the row now in row i
/// - sign: 1, or -1 after an odd number of exchanges
/// - refuses: what is not square
VARNOW_API void LU_decomp(matrix const& A, matrix& factors, matrix& P, int& sign);

/// Q of orthonormal columns by `matrix::orthonorm`, and R = mul(~Q, A), whose lower part is only
/// close to 0. Q and R may be A itself.
VARNOW_API void QR_decomp(matrix const& A, matrix& Q, matrix& R);

} // namespace varnow
