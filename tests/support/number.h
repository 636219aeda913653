// Numbers as the C library reads them.
#pragma once

#include <cstdlib>

namespace varnow::test {

/// atof by the standard. The one of Windows knows less than strtod does, which may give a sign to
/// the zero for a text without a number.
inline double standard_atof(char const* s)
{
    char* end;
    double const x = std::strtod(s, &end);
    return end == s ? 0.0 : x;
}

} // namespace varnow::test
