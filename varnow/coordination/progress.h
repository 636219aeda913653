// A percentage in place on the console while a long loop runs.
#pragma once

#include <varnow/core/export.h>

namespace varnow {

/// Make one for the number of steps, call `position` once, and `update` after each step.
class VARNOW_API progress
{
public:
    int done;    ///< steps taken
    int total;   ///< steps announced
    int mark;    ///< number of the next display, from 1
    int marks;   ///< how many displays there will be: total, but at most 100
    double step; ///< steps between displays
    double next; ///< step count of the next display

    explicit progress(int steps) { reinit(steps); }
    void reinit(int steps);

    /// Fixes the place of the percentage: where the cursor is.
    void position();
    /// One more step. At a display the percentage is printed; if the last step is one, it stands
    /// for a second and is then wiped. A total below 1 prints nothing.
    void update();
};

} // namespace varnow
