// Internal: loops over all cells of containers of one shape.
#pragma once

#include <varnow/containers/matrix.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <new>

#if defined(__GNUC__) && !defined(__clang__)
#define VARNOW_INDEPENDENT_CELLS _Pragma("GCC ivdep")
#else
#define VARNOW_INDEPENDENT_CELLS
#endif

namespace varnow::detail {

/// True when n rows lie end to end in memory. There is no way out of the loop, so that the compiler
/// can test several pointers at a time.
template <class T> bool in_line(T const* const* row, int cols, std::ptrdiff_t n)
{
    std::uintptr_t const step = static_cast<std::uintptr_t>(cols) * sizeof(T);
    std::uintptr_t expected = reinterpret_cast<std::uintptr_t>(row[0]), off = 0;
    for (std::ptrdiff_t k = 0; k < n; ++k, expected += step)
        off |= reinterpret_cast<std::uintptr_t>(row[k]) ^ expected;
    return off == 0;
}

/// to = f(from...) for each of n cells. A source is the target itself or lies apart from it.
template <class F, class R, class... T>
void set_row(std::ptrdiff_t n, F const& f, R* to, T const*... from)
{
    VARNOW_INDEPENDENT_CELLS
    for (std::ptrdiff_t k = 0; k < n; ++k) to[k] = f(from[k]...);
}

/// The same over all cells, sources in the shape of the target. Rows may stand in any order; where
/// they lie end to end they are taken some hundred at a time, since a loop for each row costs more
/// than the cells of a narrow object.
template <class F, class R, class... T>
void set_cells(data<R>& to, F const& f, data<T> const&... from)
{
    constexpr std::ptrdiff_t most = 256;
    for (std::ptrdiff_t i = 0, n; i < to.rows; i += n) {
        n = std::min(most, to.rows - i);
        if (in_line(to.cell + i, to.cols, n) && (in_line(from.cell + i, to.cols, n) && ...))
            set_row(n * to.cols, f, to.cell[i], from.cell[i]...);
        else
            for (std::ptrdiff_t k = i; k < i + n; ++k)
                set_row(to.cols, f, to.cell[k], from.cell[k]...);
    }
}

/// A new object with the shape and the names of a; cells of type double are undefined.
template <class T> data<T> like(data<T> const& a)
{
    data<T> r(a.rows, a.cols);
    // The new names are empty: only a name that is not has to be looked at twice.
    for (int i = 0; i < a.rows; ++i)
        if (a.rnames[i].len != 0) r.rnames[i] = a.rnames[i];
    for (int j = 0; j < a.cols; ++j)
        if (a.cnames[j].len != 0) r.cnames[j] = a.cnames[j];
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
