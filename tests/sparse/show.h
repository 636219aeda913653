// Sparse matrices for tests, and what they hold as one readable line.
#pragma once

#include "tests/support/containers.h"
#include "tests/support/refusals.h"

#include <varnow/sparse/sparse.h>

#include <initializer_list>
#include <random>
#include <string>

namespace varnow::test {

// Sizes and entries, "." for a stored 0: "2x3 (1,1)5 (2,3)."; "2x3 ?" for an undefined pattern.
inline std::string show(sparse const& s)
{
    std::string r = std::to_string(s.rows) + "x" + std::to_string(s.cols);
    if (s.nnz < 0) return r + " ?";
    for (int k = 0; k < s.nnz; ++k)
        r += " (" + std::to_string(s.rowidx[k]) + "," + std::to_string(s.colidx[k]) + ")" +
             show(s.values[k]);
    return r;
}

// "-" without an index, else begin-end of each row, empty rows as ".": "0-2 . 2-3".
inline std::string show_index(sparse const& s)
{
    if (!s.indexed) return s.row_begin || s.row_end ? "half an index" : "-";
    std::string r;
    for (int i = 1; i <= s.rows; ++i) {
        if (i > 1) r += " ";
        r += s.row_begin[i] == -1 && s.row_end[i] == -1
                 ? "."
                 : std::to_string(s.row_begin[i]) + "-" + std::to_string(s.row_end[i]);
    }
    return r;
}

struct entry
{
    int i, j;
    double x;
};

inline sparse listed(int rows, int cols, std::initializer_list<entry> entries)
{
    sparse s = spempty(rows, cols);
    for (entry const& e : entries) s(e.i, e.j) = e.x;
    return s;
}

// A matrix and how it, or what is made of it, shows.
struct shown
{
    sparse s;
    char const* first;
    char const* second;
};

// About one position in `every` stored, with values of both signs.
inline sparse scattered(int rows, int cols, int every, unsigned seed)
{
    std::mt19937 draw(seed);
    sparse s = spempty(rows, cols);
    for (int i = 1; i <= rows; ++i)
        for (int j = 1; j <= cols; ++j)
            if (draw() % static_cast<unsigned>(every) == 0)
                s(i, j) = (static_cast<int>(draw() % 2001) - 1000) / 700.0;
    return s;
}

} // namespace varnow::test
