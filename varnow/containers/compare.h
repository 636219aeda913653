// Comparisons that give flags: a column against a scalar, and two columns of texts.
#pragma once

#include <varnow/containers/table.h>
#include <varnow/core/date.h>

namespace varnow {

namespace detail {
template <class A> using if_plain_texts = std::enable_if_t<std::is_same<A, data<Text>>::value, int>;
} // namespace detail

// Each of == != < <= > >= between a table or matrix of one column and a scalar, in both orders,
// gives a Vector of 0 and 1. Cells of a table are taken as the kind of the scalar: as texts against
// a text, as numbers (the empty cell is NaN) against a number, as dates against a date. A whole
// number acts as a double. Two tables of one column each are compared cell by cell as texts.
// - refuse: more than one column; tables of different lengths
// clang-format off
#define VARNOW_COMPARE(op)                                                                             \
    VARNOW_API Vector operator op(table const& a, table const& b);                                     \
    VARNOW_API Vector operator op(table const& a, Text const& b);                                      \
    VARNOW_API Vector operator op(Text const& a, table const& b);                                      \
    inline Vector operator op(table const& a, char const* b) { return a op Text(b); }                  \
    inline Vector operator op(char const* a, table const& b) { return Text(a) op b; }                  \
    VARNOW_API Vector operator op(table const& a, date const& b);                                      \
    VARNOW_API Vector operator op(date const& a, table const& b);                                      \
    VARNOW_API Vector operator op(table const& a, double b);                                           \
    VARNOW_API Vector operator op(double a, table const& b);                                           \
    VARNOW_API Vector operator op(matrix const& a, double b);                                          \
    VARNOW_API Vector operator op(double a, matrix const& b);                                          \
    template <class S, detail::if_number<S> = 0> Vector operator op(table const& a, S b)               \
    { return a op static_cast<double>(b); }                                                            \
    template <class S, detail::if_number<S> = 0> Vector operator op(S a, table const& b)               \
    { return static_cast<double>(a) op b; }                                                            \
    template <class S, detail::if_number<S> = 0> Vector operator op(matrix const& a, S b)              \
    { return a op static_cast<double>(b); }                                                            \
    template <class S, detail::if_number<S> = 0> Vector operator op(S a, matrix const& b)              \
    { return static_cast<double>(a) op b; }                                                            \
    template <class A, detail::if_plain_texts<A> = 0> Vector operator op(A const& a, A const& b)       \
    { return table(a) op table(b); }
VARNOW_COMPARE(==) VARNOW_COMPARE(!=) VARNOW_COMPARE(<) VARNOW_COMPARE(<=) VARNOW_COMPARE(>) VARNOW_COMPARE(>=)
#undef VARNOW_COMPARE
// clang-format on

} // namespace varnow
