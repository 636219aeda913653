// Internal: what counts as non-zero in a sparse matrix.
#pragma once

#include <cmath>

namespace varnow::detail {

/// A NaN is kept.
inline bool is_kept(double x)
{
    return !(std::fabs(x) <= 1e-15);
}

} // namespace varnow::detail
