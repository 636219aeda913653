// Internal: the random sequence by which networks weigh and resample their patterns.
#pragma once

#include <varnow/core/export.h>

#include <cstdint>

namespace varnow::detail {

/// Steps as the library's `random_state` does, independently of it; starts at 12345.
VARNOW_API extern std::uint32_t network_state;

} // namespace varnow::detail
