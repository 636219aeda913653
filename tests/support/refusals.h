// Tables of a class's refusals.
#pragma once

#include "tests/support/refusal.h"

#include <cstddef>
#include <functional>
#include <string>

namespace varnow::test {

struct refusal
{
    std::function<void()> call;
    std::string routine, message, detail = "";
};

/// Each call prints its refusal in the name of the class and ends the process.
template <std::size_t n> void expect_refusals(char const* cls, refusal const (&cases)[n])
{
    for (refusal const& r : cases) {
        SCOPED_TRACE(r.routine + ": " + r.message);
        EXPECT_REFUSAL_DETAIL(r.call(), cls, r.routine, r.message, r.detail);
    }
}

} // namespace varnow::test
