// Internal: what counts as non-zero in a sparse matrix.
#pragma once

#include <cmath>

namespace varnow::detail {

/// The largest magnitude that does not.
constexpr double threshold = 1e-15;

/// A NaN is kept.
inline bool is_kept(double x)
{
    return !(std::fabs(x) <= threshold);
}

} // namespace varnow::detail
