// Columns to group and to count, and statistics to take of them.
#pragma once

#include <varnow/varnow.h>

#include "tests/support/containers.h"
#include "tests/support/refusals.h"

#include <initializer_list>
#include <string>
#include <type_traits>

namespace varnow::test {

// Of numbers a matrix, of texts a table.
template <class T> auto column(std::initializer_list<T> values, char const* name = "")
{
    std::conditional_t<std::is_arithmetic<T>::value, matrix, table> m(
        static_cast<int>(values.size()), 1);
    int i = 0;
    for (T x : values) m.cell[i++][0] = x;
    m.cnames[0] = name;
    return m;
}

// The sum, and what it was asked of.
inline std::string calls;
inline matrix notes(matrix const& m)
{
    calls += show(m) + ";";
    return sum(m);
}

// No single number.
inline matrix two(matrix const&)
{
    return matrix("1 2");
}

} // namespace varnow::test
