// Internal: where the arrays of a container come from.
#pragma once

#include <varnow/core/text.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace varnow::detail {

/// An array of row pointers and, in the same block, the rows they point at: Text cells empty,
/// double cells undefined. Negative or overflowing sizes throw std::bad_array_new_length.
template <class T> T** new_cells(int rows, int cols);
/// Takes any state of the pointers that exchanges of rows leave. Null is nothing.
template <class T> void free_cells(T** cell) noexcept;
/// n empty names; never null. Release resets and keeps them for the next array of n.
Text* new_names(int n);
void free_names(Text* names) noexcept;

/// Copies n names, most of which are empty.
inline void copy_texts(Text const* from, Text* to, int n)
{
    for (int i = 0; i < n; ++i) to[i] = from[i];
}

/// A size that was formed from other sizes; throws as the arrays above do.
int checked_size(std::int64_t n);

/// Number of rows from row i on that lie end to end in memory, at most `most`.
template <class T> int straight_rows(T const* const* row, int cols, int most)
{
    int k = 1;
    while (k < most && row[k] == row[k - 1] + cols) ++k;
    return k;
}

/// Copies whole rows between different objects, as far as they lie in order in one go.
template <class T> void copy_rows(T const* const* from, T* const* to, int rows, int cols)
{
    for (int i = 0; i < rows;) {
        int const left = rows - i;
        int const k =
            std::min(straight_rows(from + i, cols, left), straight_rows(to + i, cols, left));
        std::copy(from[i], from[i] + static_cast<std::ptrdiff_t>(k) * cols, to[i]);
        i += k;
    }
}

} // namespace varnow::detail
