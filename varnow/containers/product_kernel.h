// Internal: sums of products, the one kernel behind the products of matrices, covariances and the
// solvers. Every cell's sum runs with k ascending and without fused operations, so that its bits
// are those of the plain loop on every machine.
#pragma once

namespace varnow::detail {

/// An operand where it lies: cell (i, k) is row[i][first + k] or, turned, row[k][first + i].
struct factor
{
    double const* const* row;
    int first = 0;
    bool turned = false;
};

/// How a sum begins and goes on: from 0, from the cell, or from the cell by one subtraction a term.
enum class sum { set, add, subtract };
/// Which cells are wanted; of those below the diagonal `upper` leaves some untouched.
enum class part { all, upper };

/// c[i][first + j] takes the sum of A(i, k) * B(k, j) over k < depth, for i < m and j < n.
void product(sum how, int m, int n, int depth, factor a, factor b, double* const* c, int first = 0,
             part wanted = part::all);

/// c[i][j] = sum over the n rows of (row[i] - shift[i]) * (row[j] - shift[j]) for all i, j < k; a
/// null shift is none.
void crossproduct(double const* const* rows, int n, int k, double const* shift, double* const* c);

/// Copies the n by n cells above the diagonal to those below.
void mirror(double* const* c, int n);

} // namespace varnow::detail
