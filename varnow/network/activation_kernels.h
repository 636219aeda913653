// Internal: activations of many units at once.
#pragma once

namespace varnow::detail {

constexpr int side_by_side = 16;

/// y = activation(z, code), or 0 where z is 0, which stands for a unit that is not stored.
/// - n: a multiple of side_by_side
/// - code: 1 to 3
void activate_stored(double const* z, int n, int code, double* y);

} // namespace varnow::detail
