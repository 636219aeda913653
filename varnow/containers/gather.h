// Internal: the scan of the quicksort.
#pragma once

#include <cstdint>

namespace varnow::detail {

/// For i from left + 1 to right: where a[i] is below the limit, raises `last`, which begins at
/// left, and exchanges a[i] and a[last]. Gives the final `last`.
int gather_below(std::uint64_t* a, int left, int right, std::uint64_t limit);
int gather_below(std::uint32_t* a, int left, int right, std::uint32_t limit);

} // namespace varnow::detail
