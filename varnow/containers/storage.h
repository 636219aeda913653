// Internal: where the arrays of a container come from.
#pragma once

#include <varnow/core/platform.h>
#include <varnow/core/text.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace varnow::detail {

/// An array of row pointers and, in the same block, the rows they point at: Text cells empty,
/// double cells undefined. Negative or overflowing sizes throw std::bad_array_new_length.
template <class T> T** new_cells(int rows, int cols);
/// Takes any state of the pointers that exchanges of rows leave. Null is nothing.
template <class T> void free_cells(T** cell) noexcept;
/// n empty names; never null. Release resets and keeps them for the next array of n.
Text* new_names(int n);
void free_names(Text* names) noexcept;

/// Names and row pointers are looked at this many at a time, without a way out of the loop, so that
/// several are tested at once.
constexpr int looked_at = 256;

/// True when none of n texts, at most looked_at of them, has a buffer of its own.
inline bool all_empty(Text const* texts, std::ptrdiff_t n)
{
    std::uintptr_t const empty = reinterpret_cast<std::uintptr_t>(empty_text);
    std::uintptr_t off = 0;
    for (std::ptrdiff_t k = 0; k < n; ++k)
        off |= reinterpret_cast<std::uintptr_t>(texts[k].str) ^ empty;
    return off == 0;
}

/// True when n rows, at most looked_at of them, lie end to end in memory.
template <class T> bool in_line(T const* const* row, int cols, std::ptrdiff_t n)
{
    std::uintptr_t const step = static_cast<std::uintptr_t>(cols) * sizeof(T);
    std::uintptr_t expected = reinterpret_cast<std::uintptr_t>(row[0]), off = 0;
    for (std::ptrdiff_t k = 0; k < n; ++k, expected += step)
        off |= reinterpret_cast<std::uintptr_t>(row[k]) ^ expected;
    return off == 0;
}

/// Calls f(i, k) for pieces of 0 to n - 1 that begin at i and are k long, at most looked_at.
template <class F> void in_pieces(std::ptrdiff_t n, F const& f)
{
    for (std::ptrdiff_t i = 0; i < n; i += looked_at)
        f(i, std::min<std::ptrdiff_t>(looked_at, n - i));
}

/// Copies n names, most of which are empty.
inline void copy_texts(Text const* from, Text* to, int n)
{
    in_pieces(n, [&](std::ptrdiff_t i, std::ptrdiff_t k) {
        if (!all_empty(from + i, k) || !all_empty(to + i, k)) std::copy_n(from + i, k, to + i);
    });
}
/// The same where the targets are known to be empty.
inline void copy_texts_to_new(Text const* from, Text* to, int n)
{
    in_pieces(n, [&](std::ptrdiff_t i, std::ptrdiff_t k) {
        if (!all_empty(from + i, k)) std::copy_n(from + i, k, to + i);
    });
}

/// Copies n cells that are often few, and gives the place behind them.
template <class T> T* copy_cells(T const* from, int n, T* to)
{
    if (n >= 8) return std::copy_n(from, n, to);
    for (int i = 0; i < n; ++i) to[i] = from[i];
    return to + n;
}

/// n values to work in, undefined, and on large pages where they are many.
template <class T> std::unique_ptr<T[]> scratch(std::size_t n)
{
    std::unique_ptr<T[]> r(new T[n]);
    platform::advise_large_pages(r.get(), n * sizeof(T));
    return r;
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
    in_pieces(rows, [&](std::ptrdiff_t i, std::ptrdiff_t k) {
        if (in_line(from + i, cols, k) && in_line(to + i, cols, k))
            std::copy_n(from[i], k * cols, to[i]);
        else
            for (std::ptrdiff_t row = i; row < i + k; ++row) std::copy_n(from[row], cols, to[row]);
    });
}

} // namespace varnow::detail
