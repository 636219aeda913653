// Containers for tests, and what they hold as one readable line.
#pragma once

#include "tests/support/refusals.h"

#include <varnow/containers/matrix.h>

#include <cmath>
#include <cstdio>
#include <initializer_list>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace varnow::test {

using CellTypes = testing::Types<double, Text>;

double const NaN = std::numeric_limits<double>::quiet_NaN();
double const inf = std::numeric_limits<double>::infinity();

// A cell that shows as the number: 7 or "7".
template <class T> T cell(int k)
{
    return T(k);
}

// The same with rows named r1, r2, ... and columns c1, c2, ..., a prefix before each.
template <class M> M named(M a, Text const& prefix = Text())
{
    for (int i = 0; i < a.rows; ++i) a.rnames[i] = prefix + "r" + Text(i + 1);
    for (int j = 0; j < a.cols; ++j) a.cnames[j] = prefix + "c" + Text(j + 1);
    return a;
}
inline matrix named(char const* cells, Text const& prefix = Text())
{
    return named(matrix(cells), prefix);
}

// Cell (i, j) shows as ij; named as above.
template <class T> data<T> grid(int rows, int cols, Text const& prefix = Text())
{
    data<T> a(rows, cols);
    for (int i = 0; i < rows; ++i)
        for (int j = 0; j < cols; ++j) a.cell[i][j] = cell<T>(10 * i + j + 11);
    return named(a, prefix);
}

// A column, or a row, of the given cells.
template <class T> data<T> vector_of(std::vector<T> const& x, bool row = false)
{
    int const n = static_cast<int>(x.size());
    data<T> r(row ? 1 : n, row ? n : 1);
    for (int i = 0; i < n; ++i) (row ? r.cell[0][i] : r.cell[i][0]) = x[std::size_t(i)];
    return r;
}

// All cells, row by row.
template <class T> std::vector<T> list(data<T> const& x)
{
    std::vector<T> r;
    for (int i = 0; i < x.rows; ++i) r.insert(r.end(), x.cell[i], x.cell[i] + x.cols);
    return r;
}
inline std::vector<int> list(Vector const& x)
{
    return std::vector<int>(x.v, x.v + x.n);
}

inline std::string show(Text const& x)
{
    return x.len == 0 ? "." : std::string(x.str, static_cast<std::size_t>(x.len));
}
inline std::string show(double x)
{
    if (std::isnan(x)) return "NaN";
    if (x == 0) return ".";
    char digits[32];
    std::snprintf(digits, sizeof digits, "%g", x);
    return digits;
}

inline std::string show(Vector const& a)
{
    std::string s;
    for (int i = 0; i < a.n; ++i) s += (i ? " " : "") + std::to_string(a.v[i]);
    return s;
}

// Sizes, column names, then every row with its name; a dot for what is 0 or empty:
// "2x2 c1 c2 | r1: 11 12 | r2: 21 22".
template <class T> std::string show(data<T> const& a)
{
    std::string s = std::to_string(a.rows) + "x" + std::to_string(a.cols);
    for (int j = 0; j < a.cols; ++j) s += " " + show(a.cnames[j]);
    for (int i = 0; i < a.rows; ++i) {
        s += " | " + show(a.rnames[i]) + ":";
        for (int j = 0; j < a.cols; ++j) s += " " + show(a.cell[i][j]);
    }
    return s;
}

// Each shows as the text beside it.
template <class A> void expect_shown(std::initializer_list<std::pair<A, std::string>> rows)
{
    for (auto const& [x, text] : rows) EXPECT_EQ(show(x), text);
}

// In each row both show alike.
template <class Rows> void expect_alike(Rows const& rows)
{
    for (auto const& [x, like] : rows) EXPECT_EQ(show(x), show(like));
}

// The class token of a refusal on this cell type.
template <class T> std::string token()
{
    return std::is_same<T, double>::value ? "MATRIX" : "TABLE";
}

// A routine text with its place-holders filled in.
template <class T> std::string routine(std::string s)
{
    bool const numbers = std::is_same<T, double>::value;
    for (auto const& [from, to] :
         {std::pair<std::string, std::string>{"_T_", numbers ? "double" : "Text"},
          {"_data_", numbers ? "matrix" : "table"}})
        for (std::size_t at; (at = s.find(from)) != std::string::npos;)
            s.replace(at, from.size(), to);
    return s;
}

} // namespace varnow::test

// clang-format off
#define EXPECT_REFUSAL_OF(T, call, routine_text, message)                                              \
    EXPECT_REFUSAL(call, varnow::test::token<T>(), varnow::test::routine<T>(routine_text), message)
#define EXPECT_REFUSAL_DETAIL_OF(T, call, routine_text, message, detail)                               \
    EXPECT_REFUSAL_DETAIL(call, varnow::test::token<T>(), varnow::test::routine<T>(routine_text), message, detail)
// clang-format on

namespace varnow::test {

// Each call prints its refusal on this cell type; the routines have place-holders.
template <class T> void expect_refusals_of(std::initializer_list<refusal> cases)
{
    for (refusal const& r : cases)
        EXPECT_REFUSAL_DETAIL_OF(T, r.call(), r.routine, r.message, r.detail);
}

} // namespace varnow::test
