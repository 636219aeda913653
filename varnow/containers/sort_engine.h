// Internal: the permutation of the library's quicksort, for flat keys.
#pragma once

#include <varnow/containers/data.h>

#include <cstdint>

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

/// The ascending order of numbers without NaN; equal keys stand in the order of their places. The
/// caller may give 2 n words to work in.
void stable_positions(double const* key, int n, int* position, std::uint64_t* work = nullptr);
/// Turns the order of `stable_positions` into that of `sorted_positions`, as far as the members of
/// marked runs of equal keys go; those of other runs may change places among themselves. marked[k]
/// is 1 or 0 where a run begins at sorted_key[k], and not looked at elsewhere.
void settle_repeats(double const* sorted_key, int n, char const* marked, int* position);
/// The same for flags 0 and 1 that stand in the order of `stable_positions`, as `position` tells
/// it: they alone are put in their final places.
void settle_flags(double const* sorted_key, int n, char const* marked, int const* position,
                  double* flag);

} // namespace varnow::detail
