// Internal: fast reading of numbers, bit for bit as the C library reads them.
#pragma once

#include <varnow/core/export.h>

namespace varnow {
namespace detail {

/// Reads the number that starts the text from `begin` to `end`, as atof does where the decimal sign
/// is "."; with `comma` a "," counts as a "." too. False for what only the C library knows:
/// hexadecimal numbers, infinities, NaN, and values out of range.
/// Memory up to `readable`, at or behind `end`, is looked at, which is faster when it is 8 bytes
/// on.
VARNOW_API bool parse_plain(char const* begin, char const* end, bool comma, double& x,
                            char const* readable);
inline bool parse_plain(char const* begin, char const* end, bool comma, double& x)
{
    return parse_plain(begin, end, comma, x, end);
}

/// What atof gives by the C standard, in the current locale. The one of Windows knows neither
/// infinities nor NaN, and takes a "d" for an exponent.
VARNOW_API double parse_by_c_library(char const* s);

/// The same for the text from `begin` to `end`. With `comma` every "," is first made a ".".
VARNOW_API double parse_double(char const* begin, char const* end, bool comma = false);

} // namespace detail
} // namespace varnow
