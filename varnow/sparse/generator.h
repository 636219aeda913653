// Internal: the random sequence of sparse matrices and of the weights of networks.
#pragma once

#include <varnow/core/export.h>

#include <cstdint>

namespace varnow::detail {

/// A state of the same kind as the library's `random_state`, and as independent; starts at 12345.
VARNOW_API extern std::uint32_t sparse_state;
/// Takes one step and gives the new state over the modulus.
VARNOW_API double sparse_draw();

} // namespace varnow::detail
