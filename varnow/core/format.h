// Internal: fast decimal output, digit for digit that of the C library.
#pragma once

#include <varnow/core/export.h>

#include <cstddef>
#include <cstdint>

namespace varnow {
namespace detail {

/// Whether the decimal sign of the current C locale is ".". Ask once for many numbers.
VARNOW_API bool point_locale();

/// The digits of n at `to`; returns their end. 20 characters at most.
VARNOW_API char* put_digits(char* to, std::uint64_t n);

/// Room that format_fixed may need.
constexpr std::size_t fixed_room(int decimals)
{
    return 320 + static_cast<std::size_t>(decimals);
}

/// printf's "%.<decimals>f" of any double at `to`, which has the room; returns the end. There is no
/// terminator, and what stood behind the end may change.
VARNOW_API char* format_fixed(char* to, double x, int decimals, bool point = point_locale());

} // namespace detail
} // namespace varnow
