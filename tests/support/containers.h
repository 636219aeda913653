// Containers for tests, and what they hold as one readable line.
#pragma once

#include "tests/support/refusals.h"

#include <varnow/containers/data.h>

#include <cmath>
#include <cstdio>
#include <initializer_list>
#include <string>

namespace varnow::test {

using CellTypes = testing::Types<double, Text>;

// A cell that shows as the number: 7 or "7".
template <class T> T cell(int k);
template <> inline double cell<double>(int k)
{
    return k;
}
template <> inline Text cell<Text>(int k)
{
    return Text(std::to_string(k));
}

// Cell (i, j) shows as ij; rows are named r1, r2, ... and columns c1, c2, ...
template <class T> data<T> grid(int rows, int cols)
{
    data<T> a(rows, cols);
    for (int i = 1; i <= rows; ++i) {
        a.rnames[i - 1] = Text("r" + std::to_string(i));
        for (int j = 1; j <= cols; ++j) a.cell[i - 1][j - 1] = cell<T>(10 * i + j);
    }
    for (int j = 1; j <= cols; ++j) a.cnames[j - 1] = Text("c" + std::to_string(j));
    return a;
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
