// Clock, sleep and the cursor and colours of the console.
#pragma once

#include <varnow/core/export.h>

namespace varnow {

/// Wall-clock seconds since the Unix epoch, with microseconds.
VARNOW_API double clock_now();
/// Suspends the calling thread for s seconds; not at all for s below 1.
VARNOW_API void sleep(int s);

/// The routines below act on the Windows console or, elsewhere, on a terminal at standard output;
/// where there is none they do nothing. Columns and rows count from 0.
VARNOW_API void clrscr();
VARNOW_API void gotoxy(short x, short y);
/// Leaves x and y as they are where the cursor can't be asked for.
VARNOW_API void getpos(short& x, short& y);
/// One pair for the whole library, 0 and 0 at first.
VARNOW_API void save_cursor_pos();
VARNOW_API void restore_cursor_pos();
/// Console attribute, low 16 bits: 1 blue, 2 green, 4 red, 8 bright, and 16 times that for the
/// background; 7 is the usual one.
VARNOW_API void setcolor(int c);

/// Prints c n times to standard output, without a line end.
VARNOW_API void sepline(char c, short n);

} // namespace varnow
