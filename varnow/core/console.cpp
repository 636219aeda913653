#include <varnow/core/console.h>

#include <varnow/core/platform.h>

#include <cstdio>

namespace varnow {

namespace {

short saved_x = 0, saved_y = 0;

} // namespace

double clock_now()
{
    return platform::clock_seconds();
}

void sleep(int s)
{
    platform::sleep_seconds(s);
}

void clrscr()
{
    platform::clear_screen();
}

void gotoxy(short x, short y)
{
    platform::move_cursor(x, y);
}

void getpos(short& x, short& y)
{
    platform::cursor(x, y);
}

void save_cursor_pos()
{
    getpos(saved_x, saved_y);
}

void restore_cursor_pos()
{
    gotoxy(saved_x, saved_y);
}

void setcolor(int c)
{
    platform::set_attribute(static_cast<unsigned short>(c));
}

void sepline(char c, short n)
{
    for (short i = 0; i < n; ++i) std::printf("%c", c);
}

} // namespace varnow
