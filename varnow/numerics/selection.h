// Internal: order statistics of a flat sample.
#pragma once

#include <vector>

namespace varnow::detail {

/// Sorts a sample ascending, in the order of `sort` where it holds NaN.
void sort_sample(double* x, int n);

/// Leaves at each of the ranks, which count from 0 and ascend, what `sort_sample` would leave
/// there. The other values are lost.
void put_in_place(double* x, int n, std::vector<int> const& ranks);

} // namespace varnow::detail
