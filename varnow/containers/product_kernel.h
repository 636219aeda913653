// Internal: sums of products, the one kernel behind the products of matrices, covariances and the
// solvers. Every cell's sum runs with k ascending and without fused operations, so that its bits
// are those of the plain loop on every machine; vectors hold different cells.
#pragma once

#include <varnow/core/export.h>

#include <cstddef>
#include <initializer_list>
#include <memory>

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
/// Which cells are wanted; those below the diagonal are undefined with `upper`.
enum class part { all, upper };

/// c[i][first + j] takes the sum of A(i, k) * B(k, j) over k < depth, for i < m and j < n. The
/// cells may lie in the rows of A and B, but not be theirs.
void product(sum how, int m, int n, int depth, factor a, factor b, double* const* c, int first = 0,
             part wanted = part::all);

/// c[i][j] = sum over the n rows of (row[i] - shift[i]) * (row[j] - shift[j]) for all i, j < k; a
/// null shift is none. Columns beside them follow as if bound to their right, unshifted: the first
/// cell of each row, or ones where the pointer is null.
VARNOW_API void crossproduct(double const* const* rows, int n, int k, double const* shift,
                             double* const* c,
                             std::initializer_list<double const* const*> beside = {});

/// Copies the n by n cells above the diagonal to those below.
void mirror(double* const* c, int n);

/// to[j] += x * from[j]
void add_multiple(int n, double x, double const* from, double* to);

/// Cells that stand side by side in a panel: right sides of a solver, or columns of a matrix.
int panel_width();
/// s[c] += row[k] * panel[k * panel_width() + c] for k < depth.
void add_panel(int depth, double const* row, double const* panel, double* s);
/// s[c] += w[k] * x[k + c] for k < depth and c < panel_width().
void add_windows(int depth, double const* w, double const* x, double* s);

/// Row i of the panel loses x[i] * d, and then next_d gains y[i] times what is left, for i < n.
void project_panel(int n, double const* x, double const* d, double const* y, double* panel,
                   double* next_d);

/// Does as a machine whose vectors hold at most so many cells would, 8 being the most there are.
/// Results stay the same; tests run every kernel so.
VARNOW_API void limit_vectors(int cells);

/// Cells of a vector on the machine that is done as.
int vector_cells();

/// An array of n doubles without a value.
class work_space
{
public:
    explicit work_space(std::ptrdiff_t n) : cells(new double[static_cast<std::size_t>(n)]) {}
    operator double*() const { return cells.get(); }

private:
    std::unique_ptr<double[]> cells;
};

} // namespace varnow::detail
