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
/// - refuses: more than a vector; a direction above 1
template <class T> VARNOW_API Vector sort(data<T>& x, Direction d = Ascending, int flag = 0);
/// The permutation only. - refuses: more than a vector; and as `sort`
template <class T> VARNOW_API Vector order(data<T> const& x, Direction d = Ascending);
/// Sorts x and puts y in the same order. Refuses different shapes, and as `sort`.
template <class T>
VARNOW_API void sort(data<T>& x, data<T>& y, Direction d = Ascending, int flag = 0);

/// x with repeats left out: first occurrences in order or, with from_end not 0, last occurrences in
/// their order. Keeps the orientation.
template <class T> VARNOW_API data<T> unique(data<T> const& x, int from_end = 0);

// The set functions refuse more than vectors. Repeats of a stay in setdiff and setintersect; an
// empty result of these is the empty object. setunion is `unique` over a and then b, in the
// orientation of a.
template <class A, detail::if_plain<A> = 0> VARNOW_API A setunion(A const& a, A const& b);
template <class A, detail::if_plain<A> = 0> VARNOW_API A setdiff(A const& a, A const& b);
template <class A, detail::if_plain<A> = 0> VARNOW_API A setintersect(A const& a, A const& b);
/// 1 when a and b hold the same set, whatever their orientation.
template <class A, detail::if_plain<A> = 0> VARNOW_API int setequal(A const& a, A const& b);
/// Per element of a, 1 when it stands in b.
template <class A, detail::if_plain<A> = 0> VARNOW_API Vector iselement(A const& a, A const& b);
/// 1 when v stands in x.
template <class T> VARNOW_API int iselement(typename data<T>::cell_type const& v, data<T> const& x);
/// Per element of a, its first (last, with from_end not 0) position in b, or nomatch.
template <class A, detail::if_plain<A> = 0>
VARNOW_API Vector match(A const& a, A const& b, int from_end = 0, int nomatch = 0);
/// 1 when a and b have one shape and equal cells.
template <class A, detail::if_plain<A> = 0> VARNOW_API int compare(A const& a, A const& b);

// clang-format off
#define VARNOW_FORMS(M, T)                                                                             \
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
