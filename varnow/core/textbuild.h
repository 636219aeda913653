// Internal: makes a text of a known length in one step, for routines that fill it.
#pragma once

#include <varnow/core/text.h>

namespace varnow {
namespace detail {

/// A text of n characters without values, its terminator set.
/// Throws std::bad_alloc when n passes the range of `len`.
VARNOW_API Text blank_text(std::size_t n);

/// The end of the memory behind a text that may be read: at least its terminator.
VARNOW_API char const* readable_end(Text const& x);

/// A text as long as x, each of its bytes made by f.
template <class F> Text each_byte(Text const& x, F f)
{
    Text r = blank_text(static_cast<std::size_t>(x.len));
    for (int i = 0; i < r.len; ++i) r.str[i] = f(x.str[i]);
    return r;
}

} // namespace detail
} // namespace varnow
