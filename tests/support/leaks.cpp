#include <gtest/gtest.h>

// A refusal ends its process without the destructors of the stack: what the child of a death test
// leaves behind is no leak.
extern "C" int __lsan_is_turned_off();
int __lsan_is_turned_off()
{
    return testing::internal::InDeathTestChild() ? 1 : 0;
}
