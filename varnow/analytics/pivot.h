// Levels, frequency tables, intervals and statistics by level of columns of data.
#pragma once

#include <varnow/containers/matrix.h>
#include <varnow/containers/table.h>

namespace varnow {

// Every function stands for data<T> (a template), matrix and table alike and gives a table. Texts
// compare as texts, the empty one included; a NaN equals nothing and -0.0 equals 0.0. The cost is
// linear in the rows, beside the order of the levels and the rows of the result.

/// The distinct cells of one column in ascending order, in a column named "LEVELS". Numbers are
/// written by `dtot(x, 0)`; each NaN is a level of its own, the empty text, where `sort` puts it.
/// - refuses: several columns; no rows
template <class T> VARNOW_API table levels(data<T> const& x);

/// The levels of one to three columns and how often each combination of them occurs. There is a row
/// for every combination, also for those that never occur, with the count 0; the last variable
/// varies fastest. The level columns bear the names of the data ("VAR", of several "VAR1", "VAR2"
/// and "VAR3", where these are empty), the last one is named "COUNT".
/// A numeric level is what the text that `levels` gives holds, so it has six decimals, with 0 for a
/// NaN; cells equal to that number are counted, and it is written with twelve decimals. Numbers
/// with more decimals are better cut into intervals first.
/// - refuse: what is not one column; no rows; different lengths
template <class T> VARNOW_API table pivot(data<T> const& x);
template <class T> VARNOW_API table pivot(data<T> const& x, data<T> const& y);
template <class T> VARNOW_API table pivot(data<T> const& x, data<T> const& y, data<T> const& z);

/// The label of the interval in which each number of one column lies, in a column named "CUT" with
/// the row names of x.
/// - breaks: one or more in a row or a column, ascending (not tested); the labels show two decimals
/// - flag: 0 closes the intervals at the right, "(-Inf,5.00]", "(5.00,10.00]", "(10.00,Inf]"; any
///   other value at the left, "[-Inf,5.00)", "[5.00,10.00)", "[10.00,Inf]"
/// - returns: the empty text for NaN, and so for an empty cell
/// - refuses: several columns; no rows; breaks that are no vector; no break
template <class T> VARNOW_API table cut(data<T> const& x, matrix const& breaks, int flag = 0);

/// f of the cells of one column that stand at each level of the index, which f gets as a matrix of
/// one column without names, rows in their order. An empty cell is NaN.
/// - f: a statistic of the library or one's own; it has to give a 1 by 1 matrix
/// - returns: a row per level in ascending order: the level in a column named as the index ("VAR"
///   where that is empty), then the number by `dtot(value, 0)` in one named as x ("VALUE")
/// - refuses: x of other than one column; no rows; index of other than one column; different
///   lengths; a null f; in the conversion of a matrix, a result that is not 1 by 1
template <class T>
VARNOW_API table apply(data<T> const& x, table const& index, matrix (*f)(matrix const&));
/// The same with a parameter of f.
template <class T>
VARNOW_API table apply(data<T> const& x, table const& index, matrix (*f)(matrix const&, double),
                       double p);

// clang-format off
#define VARNOW_FORMS(M, T)                                                                             \
    inline table levels(M const& x) { return levels<T>(x); }                                           \
    inline table pivot(M const& x) { return pivot<T>(x); }                                             \
    inline table pivot(M const& x, M const& y) { return pivot<T>(x, y); }                              \
    inline table pivot(M const& x, M const& y, M const& z) { return pivot<T>(x, y, z); }               \
    inline table cut(M const& x, matrix const& breaks, int flag = 0)                                   \
    { return cut<T>(x, breaks, flag); }                                                                \
    inline table apply(M const& x, table const& index, matrix (*f)(matrix const&))                     \
    { return apply<T>(x, index, f); }                                                                  \
    inline table apply(M const& x, table const& index, matrix (*f)(matrix const&, double), double p)   \
    { return apply<T>(x, index, f, p); }
VARNOW_FORMS(matrix, double)
VARNOW_FORMS(table, Text)
#undef VARNOW_FORMS
// clang-format on

} // namespace varnow
