// Internal: regression with an intercept, for models.
#pragma once

#include <varnow/containers/matrix.h>

namespace varnow::detail {

/// linreg(X | ones(X.rows, 1), y) without the bound copy; refuses as it does. Unless it refuses,
/// `products` becomes crossprod(X | ones(X.rows, 1)), without names.
matrix linreg_with_ones(matrix const& X, matrix const& y, matrix& products);

} // namespace varnow::detail
