// The one place that knows the system: clock, sleep, terminal, and file calls that differ.
// Nothing here reports a failure that is not stated: a failing console call is ignored.
#pragma once

#include <varnow/core/export.h>

#include <cstddef>
#include <string>

namespace varnow {
namespace platform {

/// Seconds since the Unix epoch, to the microsecond.
VARNOW_API double clock_seconds();
/// Suspends the thread; returns at once for a time not above 0.
VARNOW_API void sleep_seconds(int seconds);

/// Waits for a key: on Windows by the shell's PAUSE, elsewhere where standard input and output are
/// both terminals. Prints nothing to standard error.
VARNOW_API void pause();

/// Where standard output is no terminal these do nothing, and `cursor` leaves x and y.
/// Columns and rows count from 0.
VARNOW_API void clear_screen();
VARNOW_API void move_cursor(short x, short y);
VARNOW_API void cursor(short& x, short& y);
/// The console attribute: bits 0 to 2 blue, green, red, bit 3 bright; the next four the background.
VARNOW_API void set_attribute(unsigned short attribute);

/// Renames a file, in place of an older one of that name; 0 on success.
VARNOW_API int replace_file(char const* from, char const* to);
/// The path of a new, empty file in the temporary directory, which the caller overwrites and
/// removes; the empty string when none can be made.
VARNOW_API std::string temporary_name();
/// Host and number of this process, as a part of a file's name.
VARNOW_API std::string process_name();

/// Asks that fresh memory be backed by large pages where the system has them.
VARNOW_API void advise_large_pages(void* memory, std::size_t bytes);

/// The decimal sign of the current C locale, as localeconv gives it.
VARNOW_API char const* decimal_point();

} // namespace platform
} // namespace varnow
