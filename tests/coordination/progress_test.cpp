#include <varnow/coordination/progress.h>
#include <varnow/core/console.h>

#include <gtest/gtest.h>

#include <climits>
#include <string>

using namespace varnow;

namespace {

std::string shown(progress& p, int updates)
{
    testing::internal::CaptureStdout();
    p.position();
    for (int i = 0; i < updates; ++i) p.update();
    return testing::internal::GetCapturedStdout();
}

} // namespace

TEST(Progress, ShowsAHundredStepsOfALongLoop)
{
    progress p(1000);
    EXPECT_EQ(shown(p, 9), "");
    EXPECT_EQ(shown(p, 11), "1%2%");
    std::string rest;
    for (int i = 3; i < 100; ++i) rest += std::to_string(i) + "%";
    EXPECT_EQ(shown(p, 979), rest);
    double const before = clock_now();
    EXPECT_EQ(shown(p, 1), "100%    ");
    EXPECT_GE(clock_now() - before, 0.99); // the last display stands for a second
}

TEST(Progress, ShowsEveryStepOfAShortLoop)
{
    progress p(7);
    EXPECT_EQ(shown(p, 7), "14%28%42%57%71%85%100%    ");
    p.reinit(2);
    EXPECT_EQ(shown(p, 1), "50%");
    progress copy(p);
    EXPECT_EQ(shown(copy, 1), "100%    ");
    EXPECT_EQ(p.done, 1);
}

TEST(Progress, RoundsTheStepsThatDoNotDivideTheLoop)
{
    // Displays at 1.5, 3, 4.5, ... steps: half a step is rounded up.
    progress p(150);
    EXPECT_EQ(shown(p, 1), "");
    EXPECT_EQ(shown(p, 1), "1%");
    EXPECT_EQ(shown(p, 1), "2%");
    EXPECT_EQ(shown(p, 2), "3%");
}

TEST(Progress, ShowsNothingWithoutSteps)
{
    for (int total : {0, -5, INT_MIN}) {
        progress p(total);
        EXPECT_EQ(shown(p, 10), "");
        EXPECT_EQ(p.done, 0);
    }
}
