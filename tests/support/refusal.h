// Death tests of the library's refusals.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

// The call prints exactly this refusal and ends the process with status 0.
#define EXPECT_REFUSAL_DETAIL(call, cls, routine, message, detail)                                 \
    EXPECT_EXIT(call, testing::ExitedWithCode(0),                                                  \
                testing::Eq(std::string("\n") + (cls) + ": " + (routine) + "\n" + (message) +      \
                            "\n" + (detail) + "\n"))

// The same with an empty detail.
#define EXPECT_REFUSAL(call, cls, routine, message)                                                \
    EXPECT_REFUSAL_DETAIL(call, cls, routine, message, "")
