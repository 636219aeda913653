// Internal: walks over a grid in squares, and transposition by them.
#pragma once

#include <algorithm>
#include <type_traits>

namespace varnow::detail {

// Calls f(top, left, down, across) for squares that cover a rows by cols grid, so that walks along
// rows of one object and columns of another both stay in the cache.
constexpr int tile = 8; // a cache line of numbers
template <class F> void by_tiles(int rows, int cols, F f)
{
    for (int top = 0, down; top < rows; top += down) {
        down = std::min(tile, rows - top);
        for (int left = 0, across; left < cols; left += across) {
            across = std::min(tile, cols - left);
            f(top, left, down, across);
        }
    }
}

// to[j][i] takes from[i][j]; texts are moved out of a source that is not constant.
template <class S, class T> void transpose(S* const* from, int rows, int cols, T* const* to)
{
    by_tiles(rows, cols, [=](int top, int left, int down, int across) {
        if constexpr (std::is_trivially_copyable<T>::value)
            if (down == tile && across == tile) {
                T turned[tile][tile];
                for (int i = 0; i < tile; ++i)
                    for (int j = 0; j < tile; ++j) turned[j][i] = from[top + i][left + j];
                for (int j = 0; j < tile; ++j) std::copy_n(turned[j], tile, to[left + j] + top);
                return;
            }
        for (int j = left; j < left + across; ++j)
            for (int i = top; i < top + down; ++i) to[j][i] = static_cast<S&&>(from[i][j]);
    });
}

} // namespace varnow::detail
