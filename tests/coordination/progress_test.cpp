#include "tests/support/output.h"

#include <varnow/coordination/progress.h>
#include <varnow/core/console.h>

#include <climits>

using namespace varnow;

namespace {

std::string shown(progress& p, int updates)
{
    return test::printed([&] {
        p.position();
        for (int i = 0; i < updates; ++i) p.update();
    });
}

} // namespace

TEST(Progress, ShowsAHundredStepsOfALongLoop)
{
    progress p(1000);
    EXPECT_EQ(shown(p, 9), "");
    std::string steps;
    for (int i = 1; i < 100; ++i) steps += std::to_string(i) + "%";
    EXPECT_EQ(shown(p, 990), steps);
    double const before = clock_now();
    EXPECT_EQ(shown(p, 1), "100%    ");
    EXPECT_GE(clock_now() - before, 0.99); // the last display stands for a second
}

TEST(Progress, ShowsEveryStepOfAShortLoopAndNothingWithoutSteps)
{
    progress p(7);
    EXPECT_EQ(shown(p, 7), "14%28%42%57%71%85%100%    ");
    p.reinit(2);
    EXPECT_EQ(shown(p, 1), "50%");
    progress copy(p);
    EXPECT_EQ(shown(copy, 1), "100%    ");
    EXPECT_EQ(p.done, 1);
    // Displays at 1.5, 3, 4.5, ... steps: half a step is rounded up.
    p.reinit(150);
    for (char const* display : {"", "1%", "2%", "", "3%"}) EXPECT_EQ(shown(p, 1), display);
    for (int total : {0, -5, INT_MIN}) {
        progress none(total);
        EXPECT_EQ(shown(none, 10), "");
        EXPECT_EQ(none.done, 0);
    }
}
