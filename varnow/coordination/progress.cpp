#include <varnow/coordination/progress.h>

#include <varnow/core/console.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace varnow {

void progress::reinit(int steps)
{
    done = 0;
    total = steps;
    mark = 1;
    marks = std::min(total, 100);
    step = next = static_cast<double>(total) / marks;
}

void progress::position()
{
    save_cursor_pos();
}

void progress::update()
{
    if (total < 1) return;
    ++done;
    if (done != std::trunc(next + 0.5)) return;
    restore_cursor_pos();
    std::printf("%i%%", mark * 100 / marks);
    std::fflush(stdout);
    ++mark;
    next += step;
    if (done != total) return;
    sleep(1);
    restore_cursor_pos();
    std::printf("    ");
    restore_cursor_pos();
    std::fflush(stdout);
}

} // namespace varnow
