// Internal: the permutation of the library's quicksort, for flat keys.
#pragma once

#include <varnow/containers/data.h>

namespace varnow::detail {

/// position[k] becomes the place, counted from 0, of the key that ends up k-th. The permutation,
/// also among equal keys and NaN, is that of one quicksort: while left is below right, exchange the
/// middle key, (left + right) / 2, with the left one; let last be left; for i from left + 1 to
/// right, when key i is below (descending: above) the left one, raise last and exchange keys i and
/// last; exchange the keys at left and last; do the same from left to last - 1 and go on with left
/// at last + 1. The cost is linear for numbers that do not repeat, whatever their order; where they
/// do it is that of the quicksort, to which repeats in themselves add nothing.
void sorted_positions(double const* key, int n, Direction d, int* position);
void sorted_positions(Text const* const* key, int n, Direction d, int* position);

} // namespace varnow::detail
