// Sorting, permutations, sets and matching of vectors: containers of one row or one column.
#pragma once

#include <varnow/containers/matrix.h>
#include <varnow/containers/table.h>

namespace varnow {

// Cells compare by `<` and `==` of their type: a NaN is below nothing and equals nothing, -0.0
// equals 0.0, texts order by signed bytes. Every function stands for data<T> (a template), matrix
// and table alike.

/// Sorts the cells in place and returns the permutation: the 1-based former position of each. With
/// flag not 0 the names move too. The order among equal keys and the places of NaN are those of one
/// fixed quicksort with the middle element as pivot (not stable), whatever engine finds them.
/// A vector without cells has the empty permutation.
/// - refuses: more than a vector; another direction
template <class T> VARNOW_API Vector sort(data<T>& x, Direction d = Ascending, int flag = 0);
/// The permutation only. - refuses: more than a vector; and as `sort`
template <class T> VARNOW_API Vector order(data<T> const& x, Direction d = Ascending);
/// Sorts x and puts y in the same order; with flag not 0 the names of both move too.
/// - refuses: different shapes; and as `sort`
template <class T>
VARNOW_API void sort(data<T>& x, data<T>& y, Direction d = Ascending, int flag = 0);

// The direction as a plain number, 0 or 1.
template <class T> Vector sort(data<T>& x, int d, int flag = 0)
{
    return sort(x, static_cast<Direction>(d), flag);
}
template <class T> Vector order(data<T> const& x, int d)
{
    return order(x, static_cast<Direction>(d));
}
template <class T> void sort(data<T>& x, data<T>& y, int d, int flag = 0)
{
    sort(x, y, static_cast<Direction>(d), flag);
}

// The quicksorts behind `sort`, by direction and for a column ("2c") or row ("2r") container: they
// sort the stretch from left to right, counted from 0, of the first column (row) and exchange the
// entries of p with the cells. The swaps exchange two places. Names stay.
// - refuses: a stretch or place outside x or p (nothing is done for left not below right)
template <class T> VARNOW_API void qsort_asc_2c(data<T>& x, Vector& p, int left, int right);
template <class T> VARNOW_API void qsort_asc_2r(data<T>& x, Vector& p, int left, int right);
template <class T> VARNOW_API void qsort_desc_2c(data<T>& x, Vector& p, int left, int right);
template <class T> VARNOW_API void qsort_desc_2r(data<T>& x, Vector& p, int left, int right);
template <class T> VARNOW_API void swap_2c(data<T>& x, Vector& p, int i, int j);
template <class T> VARNOW_API void swap_2r(data<T>& x, Vector& p, int i, int j);

/// What `sort_asc` and `sort_desc` compare.
struct sort_record
{
    int position;
    double key;
};
/// Comparison routines for the C library's `qsort` on records: -1, 0 or 1; a NaN compares equal to
/// everything.
VARNOW_API int sort_asc(void const* a, void const* b);
VARNOW_API int sort_desc(void const* a, void const* b);

/// x with repeats left out: first occurrences in order or, with from_end not 0, last occurrences in
/// their order. Keeps the orientation, no names. Refuses more than a vector.
template <class T> VARNOW_API data<T> unique(data<T> const& x, int from_end = 0);

// The set functions refuse more than vectors; their results have no names. Repeats of a stay in
// setdiff and setintersect, which keep the orientation of a; an empty result of these is the empty
// object. setunion is `unique` over a and then b, in the orientation of a (of b when a is 0 by 0).
template <class A, detail::if_plain<A> = 0> VARNOW_API A setunion(A const& a, A const& b);
template <class A, detail::if_plain<A> = 0> VARNOW_API A setdiff(A const& a, A const& b);
template <class A, detail::if_plain<A> = 0> VARNOW_API A setintersect(A const& a, A const& b);
/// 1 when a and b hold the same set, whatever their orientation; 0 when either holds a NaN.
template <class A, detail::if_plain<A> = 0> VARNOW_API int setequal(A const& a, A const& b);
/// Per element of a, 1 when it stands in b.
template <class A, detail::if_plain<A> = 0> VARNOW_API Vector iselement(A const& a, A const& b);
/// 1 when v stands in x. Refuses more than a vector.
template <class T> VARNOW_API int iselement(typename data<T>::cell_type const& v, data<T> const& x);
/// Per element of a, its first (last, with from_end not 0) position in b, or nomatch.
template <class A, detail::if_plain<A> = 0>
VARNOW_API Vector match(A const& a, A const& b, int from_end = 0, int nomatch = 0);
/// 1 when a and b have one shape and equal cells.
template <class A, detail::if_plain<A> = 0> VARNOW_API int compare(A const& a, A const& b);

// The same with the cell type named, as in `setunion<double>(a, b)`.
// clang-format off
#define VARNOW_NAMED(R, name)                                                                          \
    template <class T, class A = detail::container_of<T>>                                              \
    R name(detail::container_of<T> const& a, detail::container_of<T> const& b)                         \
    { return name<A>(a, b); }
VARNOW_NAMED(A, setunion) VARNOW_NAMED(A, setdiff) VARNOW_NAMED(A, setintersect)
VARNOW_NAMED(int, setequal) VARNOW_NAMED(Vector, iselement) VARNOW_NAMED(int, compare)
#undef VARNOW_NAMED
template <class T, class A = detail::container_of<T>>
Vector match(detail::container_of<T> const& a, detail::container_of<T> const& b, int from_end = 0,
             int nomatch = 0)
{ return match<A>(a, b, from_end, nomatch); }

#define VARNOW_FORMS(M, T)                                                                             \
    inline Vector sort(M& x, Direction d = Ascending, int flag = 0) { return sort<T>(x, d, flag); }    \
    inline Vector order(M const& x, Direction d = Ascending) { return order<T>(x, d); }                \
    inline Vector order(M const& x, int d) { return order<T>(x, d); }                                  \
    inline void sort(M& x, M& y, Direction d = Ascending, int flag = 0) { sort<T>(x, y, d, flag); }    \
    inline M unique(M const& x, int from_end = 0) { return unique<T>(x, from_end); }                   \
    inline M setunion(M const& a, M const& b) { return setunion<data<T>>(a, b); }                      \
    inline M setdiff(M const& a, M const& b) { return setdiff<data<T>>(a, b); }                        \
    inline M setintersect(M const& a, M const& b) { return setintersect<data<T>>(a, b); }              \
    inline int setequal(M const& a, M const& b) { return setequal<data<T>>(a, b); }                    \
    inline Vector iselement(M const& a, M const& b) { return iselement<data<T>>(a, b); }               \
    inline int iselement(T const& v, M const& x) { return iselement<T>(v, x); }                        \
    inline Vector match(M const& a, M const& b, int from_end = 0, int nomatch = 0)                     \
    { return match<data<T>>(a, b, from_end, nomatch); }                                                \
    inline int compare(M const& a, M const& b) { return compare<data<T>>(a, b); }
VARNOW_FORMS(matrix, double)
VARNOW_FORMS(table, Text)
#undef VARNOW_FORMS
// clang-format on
inline int iselement(char const* v, table const& x)
{
    return iselement(Text(v), x);
}

} // namespace varnow
