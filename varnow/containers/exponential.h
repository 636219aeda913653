// Internal: the exponential function of many cells.
#pragma once

#include <cmath>
#include <cstddef>

namespace varnow::detail {

/// to[k] = std::exp(from[k]), to the last bit; the two may be one.
void exponentials(std::ptrdiff_t n, double const* from, double* to);

/// std::exp for the loops over cells, which take rows of it at once.
struct exponential
{
    double operator()(double x) const { return std::exp(x); }
};
inline void set_row(std::ptrdiff_t n, exponential const&, double* to, double const* from)
{
    exponentials(n, from, to);
}

} // namespace varnow::detail
