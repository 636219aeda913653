#include <gtest/gtest.h>

// A refusal ends its process without the destructors of the stack: what the child of a death test
// leaves behind is no leak.
extern "C" int __lsan_is_turned_off();
int __lsan_is_turned_off()
{
    return testing::internal::InDeathTestChild() ? 1 : 0;
}

// Nor are the threads of a parallel region that one of them has ended by a refusal.
extern "C" char const* __tsan_default_suppressions();
char const* __tsan_default_suppressions()
{
    return "thread:libomp";
}
