// What code under test prints.
#pragma once

#include <gtest/gtest.h>

#include <iostream>
#include <string>

namespace varnow::test {

/// What f prints to standard output.
template <class F> std::string printed(F f)
{
    testing::internal::CaptureStdout();
    f();
    std::cout.flush();
    return testing::internal::GetCapturedStdout();
}

/// What f prints to standard error.
template <class F> std::string warned(F f)
{
    testing::internal::CaptureStderr();
    f();
    return testing::internal::GetCapturedStderr();
}

} // namespace varnow::test
