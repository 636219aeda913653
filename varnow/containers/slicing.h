// Cutting, binding, replicating and rearranging containers.
#pragma once

#include <varnow/containers/matrix.h>
#include <varnow/containers/table.h>

namespace varnow {

namespace detail {
template <class A>
using of_two_cells = typename A::cell_type (*)(typename A::cell_type, typename A::cell_type);
} // namespace detail

// Positions count from 1; a list of negative positions takes all but these. A selection of nothing
// is the 0 by 0 object. Every function below stands for data<T> (a template), matrix and table
// alike.

/// All rows and the listed columns in list order (repeats allowed), with their names.
/// - refuses, element by element: out of range; 0; another sign than the first
template <class T> VARNOW_API data<T> col(data<T> const& a, Vector const& idx);
/// The same for rows.
template <class T> VARNOW_API data<T> row(data<T> const& a, Vector const& idx);
/// The block of rows r and columns c, both positive lists, with their names.
template <class T> VARNOW_API data<T> get(data<T> const& a, Vector const& r, Vector const& c);
/// The rows whose flag is not 0. Refuses a flag vector of another length.
template <class T> VARNOW_API data<T> filter(data<T> const& a, Vector const& flags);
/// Copies the block of nr by nc cells at (r, c) to (r2, c2) of dst, which may be src.
template <class T>
VARNOW_API void copy(data<T> const& src, int r, int c, int nr, int nc, data<T>& dst, int r2,
                     int c2);

// Repetition of an object of one row or one column, in its orientation (1 by 1 is a row), without
// names. All refuse other shapes, then a count below 1.

/// The vector repeated whole k times; each element i repeated k[i] times, which may be 0. Refuses
/// another number of counts.
template <class T> VARNOW_API data<T> rep(data<T> const& a, int k);
template <class T> VARNOW_API data<T> rep(data<T> const& a, Vector const& k);
/// The vector repeated and cut to length n. Refuses a vector of no elements.
template <class T> VARNOW_API data<T> replen(data<T> const& a, int n);
/// Each element repeated k times in place.
template <class T> VARNOW_API data<T> repeach(data<T> const& a, int k);

/// Transposed, names of both kinds exchanged.
template <class T> VARNOW_API data<T> operator~(data<T> const& a);
/// Column j (counted from 1) moved up (down) by j - 1 rows; freed cells are 0 or empty.
template <class T> VARNOW_API data<T> up(data<T> const& a);
template <class T> VARNOW_API data<T> down(data<T> const& a);
/// The lower (upper) triangle with the diagonal, the rest 0 or empty. Refuse what is not square.
template <class T> VARNOW_API data<T> tril(data<T> const& a);
template <class T> VARNOW_API data<T> triu(data<T> const& a);
/// A quarter turn against the clock: out(i, j) = a(j, cols + 1 - i); any shape.
template <class T> VARNOW_API data<T> rot90(data<T> const& a);
/// Rows (columns) in reverse order, with their names.
template <class T> VARNOW_API data<T> flipud(data<T> const& a);
template <class T> VARNOW_API data<T> fliplr(data<T> const& a);

/// f on one column (row) of a copy, or f(cell, x).
template <class T> VARNOW_API data<T> forcol(data<T> const& a, int j, T (*f)(T));
template <class T> VARNOW_API data<T> forcol(data<T> const& a, int j, T (*f)(T const&));
template <class T> VARNOW_API data<T> forcol(data<T> const& a, int j, T (*f)(T, double), double x);
template <class T> VARNOW_API data<T> forrow(data<T> const& a, int i, T (*f)(T));
template <class T> VARNOW_API data<T> forrow(data<T> const& a, int i, T (*f)(T const&));
template <class T> VARNOW_API data<T> forrow(data<T> const& a, int i, T (*f)(T, double), double x);

// Two containers. The templates take data<T> itself; matrix and table have their own forms, so that
// a matrix meets a data<double>, a Vector or a number without ambiguity.

/// Side by side; row names of a. Refuses different row counts.
template <class A, detail::if_plain<A> = 0> VARNOW_API A operator|(A const& a, A const& b);
/// On top of each other; column names of a. Refuses different column counts.
template <class A, detail::if_plain<A> = 0> VARNOW_API A operator&(A const& a, A const& b);
/// Element-wise sum, or joining of texts; names of a. Refuses different shapes.
template <class A, detail::if_plain<A> = 0> VARNOW_API A operator+(A const& a, A const& b);
/// After each group of a.cols / b.cols columns of a stands one column of b with its name; row names
/// of a.
/// - refuses: different row counts; b.cols of 0 or no divisor of a.cols
template <class A, detail::if_plain<A> = 0> VARNOW_API A shufflecol(A const& a, A const& b);
/// The same for rows.
template <class A, detail::if_plain<A> = 0> VARNOW_API A shufflerow(A const& a, A const& b);
/// f(a[i], b[j]) over two vectors; no names.
template <class A, detail::if_plain<A> = 0>
VARNOW_API A outer(A const& a, A const& b, detail::of_two_cells<A> f);

// The same with the cell type named, as in `shufflecol<double>(a, b)`.
template <class T, class A = detail::container_of<T>>
A shufflecol(detail::container_of<T> const& a, detail::container_of<T> const& b)
{
    return shufflecol<A>(a, b);
}
template <class T, class A = detail::container_of<T>>
A shufflerow(detail::container_of<T> const& a, detail::container_of<T> const& b)
{
    return shufflerow<A>(a, b);
}
template <class T, class A = detail::container_of<T>>
A outer(detail::container_of<T> const& a, detail::container_of<T> const& b,
        detail::of_two_cells<A> f)
{
    return outer<A>(a, b, f);
}

// clang-format off
#define VARNOW_FORMS(M, T)                                                                             \
    inline M col(M const& a, Vector const& idx) { return col<T>(a, idx); }                             \
    inline M row(M const& a, Vector const& idx) { return row<T>(a, idx); }                             \
    inline M get(M const& a, Vector const& r, Vector const& c) { return get<T>(a, r, c); }             \
    inline M filter(M const& a, Vector const& flags) { return filter<T>(a, flags); }                   \
    inline M rep(M const& a, int k) { return rep<T>(a, k); }                                           \
    inline M rep(M const& a, Vector const& k) { return rep<T>(a, k); }                                 \
    inline M replen(M const& a, int n) { return replen<T>(a, n); }                                     \
    inline M repeach(M const& a, int k) { return repeach<T>(a, k); }                                   \
    inline M up(M const& a) { return up<T>(a); }                                                       \
    inline M down(M const& a) { return down<T>(a); }                                                   \
    inline M tril(M const& a) { return tril<T>(a); }                                                   \
    inline M triu(M const& a) { return triu<T>(a); }                                                   \
    inline M rot90(M const& a) { return rot90<T>(a); }                                                 \
    inline M flipud(M const& a) { return flipud<T>(a); }                                               \
    inline M fliplr(M const& a) { return fliplr<T>(a); }                                               \
    inline M forcol(M const& a, int j, T (*f)(T)) { return forcol<T>(a, j, f); }                       \
    template <class R> M forcol(M const& a, int j, R (*f)(T const&))                                   \
    { return forcol(static_cast<data<T> const&>(a), j, f); }                                           \
    inline M forcol(M const& a, int j, T (*f)(T, double), double x) { return forcol<T>(a, j, f, x); }  \
    inline M forrow(M const& a, int i, T (*f)(T)) { return forrow<T>(a, i, f); }                       \
    template <class R> M forrow(M const& a, int i, R (*f)(T const&))                                   \
    { return forrow(static_cast<data<T> const&>(a), i, f); }                                           \
    inline M forrow(M const& a, int i, T (*f)(T, double), double x) { return forrow<T>(a, i, f, x); }  \
    inline M operator|(M const& a, M const& b) { return operator|<data<T>>(a, b); }                    \
    inline M operator&(M const& a, M const& b) { return operator&<data<T>>(a, b); }                    \
    inline M shufflecol(M const& a, M const& b) { return shufflecol<data<T>>(a, b); }                  \
    inline M shufflerow(M const& a, M const& b) { return shufflerow<data<T>>(a, b); }                  \
    inline M outer(M const& a, M const& b, T (*f)(T, T)) { return outer<data<T>>(a, b, f); }
VARNOW_FORMS(matrix, double)
VARNOW_FORMS(table, Text)
#undef VARNOW_FORMS
// A number binds as a 1 by 1 matrix; without these forms the logic of whole numbers competes.
#define VARNOW_BIND(op)                                                                                \
    template <class S, detail::if_number<S> = 0> matrix operator op(matrix const& a, S b)              \
    { return a op matrix(static_cast<double>(b)); }                                                    \
    template <class S, detail::if_number<S> = 0> matrix operator op(S a, matrix const& b)              \
    { return matrix(static_cast<double>(a)) op b; }
VARNOW_BIND(|) VARNOW_BIND(&)
#undef VARNOW_BIND
// clang-format on

} // namespace varnow
