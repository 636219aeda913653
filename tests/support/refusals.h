// Tables of calls that must be refused.
#pragma once

#include "tests/support/refusal.h"

#include <functional>

namespace varnow::test {

struct refused
{
    std::function<void()> call;
    std::string routine, message, detail = "";
};

/// Every call prints its refusal for the class and ends the process.
template <std::size_t count>
void expect_refusals(std::string const& cls, refused const (&cases)[count])
{
    for (refused const& c : cases) {
        SCOPED_TRACE(c.routine);
        EXPECT_REFUSAL_DETAIL(c.call(), cls, c.routine, c.message, c.detail);
    }
}

} // namespace varnow::test
