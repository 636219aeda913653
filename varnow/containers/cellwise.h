// Internal: loops over all cells of containers of one shape.
#pragma once

#include <varnow/containers/matrix.h>
#include <varnow/containers/storage.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <new>

#if defined(__GNUC__) && !defined(__clang__)
#define VARNOW_INDEPENDENT_CELLS _Pragma("GCC ivdep")
#else
#define VARNOW_INDEPENDENT_CELLS
#endif

namespace varnow::detail {

/// to = f(from...) for each of n cells. A source is the target itself or lies apart from it.
template <class F, class R, class... T>
void set_row(std::ptrdiff_t n, F const& f, R* to, T const*... from)
{
    VARNOW_INDEPENDENT_CELLS
    for (std::ptrdiff_t k = 0; k < n; ++k) to[k] = f(from[k]...);
}

/// The same over all cells, sources in the shape of the target. Rows may stand in any order; where
/// they lie end to end many are taken at once, since a loop for each row costs more than the cells
/// of a narrow object.
template <class F, class R, class... T>
void set_cells(data<R>& to, F const& f, data<T> const&... from)
{
    int const cols = to.cols;
    in_pieces(to.rows, [&](std::ptrdiff_t i, std::ptrdiff_t k) {
        if (in_line(to.cell + i, cols, k) && (in_line(from.cell + i, cols, k) && ...))
            set_row(k * cols, f, to.cell[i], from.cell[i]...);
        else if (cols == 1)
            for (std::ptrdiff_t row = i; row < i + k; ++row) *to.cell[row] = f(*from.cell[row]...);
        else
            for (std::ptrdiff_t row = i; row < i + k; ++row)
                set_row(cols, f, to.cell[row], from.cell[row]...);
    });
}

/// A new object with the shape and the names of a; cells of type double are undefined.
template <class T> data<T> like(data<T> const& a)
{
    data<T> r(a.rows, a.cols);
    copy_texts_to_new(a.rnames, r.rnames, a.rows);
    copy_texts_to_new(a.cnames, r.cnames, a.cols);
    return r;
}

template <class T> bool same_shape(data<T> const& a, data<T> const& b)
{
    return a.rows == b.rows && a.cols == b.cols;
}

/// f of every cell, in a new object with the names of a.
template <class T, class F> data<T> map(data<T> const& a, F const& f)
{
    data<T> r = like(a);
    set_cells(r, f, a);
    return r;
}

/// f of every pair of cells, in a new object with the names of a.
template <class F> matrix zip(matrix const& a, matrix const& b, char const* routine, F const& f)
{
    if (!same_shape(a, b)) {
        errormessage("MATRIX", routine, "niezgodne wymiary macierzy", "");
        return matrix();
    }
    matrix r = like(a);
    set_cells(r, f, a, b);
    return r;
}

/// The in-place forms; the object keeps its names.
template <class T, class F> data<T>& change(data<T>& a, F const& f)
{
    set_cells(a, f, a);
    return a;
}
template <class F> matrix& change(matrix& a, matrix const& b, char const* routine, F const& f)
{
    if (!same_shape(a, b))
        errormessage("MATRIX", routine, "niezgodne wymiary macierzy", "");
    else
        set_cells(a, f, a, b);
    return a;
}

template <class T, class F> bool some_cell(data<T> const& a, F const& holds)
{
    for (int i = 0; i < a.rows; ++i)
        for (int j = 0; j < a.cols; ++j)
            if (holds(a.cell[i][j])) return true;
    return false;
}

/// cell (i, j) == cell (j, i) in the largest leading square, taken in blocks that stay in cache.
template <class T> bool symmetric(data<T> const& a)
{
    constexpr int block = 32;
    int const n = std::min(a.rows, a.cols);
    for (int i0 = 0; i0 < n; i0 += block)
        for (int j0 = 0; j0 <= i0; j0 += block)
            for (int i = i0; i < std::min(n, i0 + block); ++i)
                for (int j = j0; j < std::min(i, j0 + block); ++j)
                    if (!(a.cell[i][j] == a.cell[j][i])) return false;
    return true;
}

/// The columns on top of each other, without names.
template <class T> data<T> stacked(data<T> const& a)
{
    if (a.rows > 0 && a.cols > INT_MAX / a.rows) throw std::bad_array_new_length();
    data<T> r(a.rows * a.cols, 1);
    for (int i = 0; i < a.rows; ++i)
        for (int j = 0; j < a.cols; ++j) r.cell[j * a.rows + i][0] = a.cell[i][j];
    return r;
}

/// Names rows prefix + "R" + i and columns prefix + "C" + j.
template <class T> void number_names(data<T>& a, Text const& prefix)
{
    for (int i = 0; i < a.rows; ++i) a.rnames[i] = prefix + "R" + itot(i + 1);
    for (int j = 0; j < a.cols; ++j) a.cnames[j] = prefix + "C" + itot(j + 1);
}

} // namespace varnow::detail
