// Products of matrices and measures of vectors. Every sum runs with its index ascending, without
// fused operations, so that results are the same on every machine.
#pragma once

#include <varnow/containers/matrix.h>

namespace varnow {

/// The matrix product; row names of A, column names of B. Refuses A.cols != B.rows.
VARNOW_API matrix mul(matrix const& A, matrix const& B);
/// A times transposed B; row names of A, row names of B as column names. Refuses A.cols != B.cols.
VARNOW_API matrix mulT(matrix const& A, matrix const& B);
/// A times transposed A; row names of A on both sides.
VARNOW_API matrix sqrT(matrix const& A);
/// Transposed A times A; column names of A on both sides.
VARNOW_API matrix sqrT2(matrix const& A);
VARNOW_API matrix crossprod(matrix const& A);

/// Sum of a_i * b_i over two vectors of one orientation.
VARNOW_API double scmul(matrix const& a, matrix const& b);
VARNOW_API double scsqr(matrix const& a);
/// Euclidean length of a vector.
VARNOW_API double norm2(matrix const& a);
/// The projection of vector a on b.
VARNOW_API matrix proj(matrix const& a, matrix const& b);
/// The quadratic form: the sum over i of v_i times the sum over k of v_k * A(k, i).
VARNOW_API double comut(matrix const& A, matrix const& v);
VARNOW_API double trace(matrix const& A);

/// a_i op b_j over two vectors, op one of + - * /; no names.
VARNOW_API matrix outer(matrix const& a, matrix const& b, char op);

} // namespace varnow
