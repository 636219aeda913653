// Special matrices, sequences and the library's one random generator.
#pragma once

#include <varnow/containers/matrix.h>

#include <cstdint>

namespace varnow {

namespace detail {
/// Takes one step of the minimal-standard Lehmer sequence, multiplier 48271, modulus 2147483647
/// (Park and Miller, CACM 31 (1988) 1192), and gives the new state.
inline std::uint32_t random_step(std::uint32_t& state)
{
    // The modulus is 2^31 - 1: high and low part of the product add up to the remainder.
    constexpr std::uint32_t modulus = 2147483647u;
    std::uint64_t const product = std::uint64_t(state) * 48271u;
    std::uint32_t const sum = static_cast<std::uint32_t>((product & modulus) + (product >> 31));
    return state = sum >= modulus ? sum - modulus : sum;
}
/// The state of the containers' one generator. Starts at 12345.
VARNOW_API extern std::uint32_t random_state;
inline std::uint32_t random_step()
{
    return random_step(random_state);
}
} // namespace detail

// The one-argument forms are n by n.
VARNOW_API matrix zeros(int r, int c);
VARNOW_API matrix zeros(int n);
VARNOW_API matrix ones(int r, int c);
VARNOW_API matrix ones(int n);
VARNOW_API matrix eye(int r, int c);
VARNOW_API matrix eye(int n);
/// Uniform draws in (0, 1), row after row.
VARNOW_API matrix rand(int r, int c);
VARNOW_API matrix rand(int n);
/// Normal draws by the transform of Box and Muller, Ann. Math. Stat. 29 (1958) 610; pairs fill
/// opposite ends of each column.
VARNOW_API matrix randn(int r, int c);
VARNOW_API matrix randn(int n);

/// One row of n cells from a by repeated addition of (b - a) / (n - 1); for n of 1 just a, below 1
/// no cells.
VARNOW_API matrix linspace(double a, double b, int n);
/// One row from a toward b by 1 or -1. Refuses NaN, and more cells than an int counts.
VARNOW_API matrix seq(double a, double b);
/// One row from a toward b by repeated addition of step. Refuses a step of the wrong
/// sign or 0, NaN, and more cells than an int counts.
VARNOW_API matrix seq(double a, double b, double step);
template <class A, class B, class C, detail::if_number<A> = 0, detail::if_number<B> = 0,
          detail::if_number<C> = 0>
matrix seq(A a, B b, C step)
{
    return seq(static_cast<double>(a), static_cast<double>(b), static_cast<double>(step));
}

namespace detail {
template <class... A>
using if_decimals = std::enable_if_t<(sizeof...(A) > 0) && (std::is_arithmetic<A>::value && ...) &&
                                         !(std::is_integral<A>::value && ...),
                                     int>;
VARNOW_API matrix listed(int count, std::initializer_list<double> values);
} // namespace detail

/// One row of the given numbers, of which at least one is a floating-point number.
template <class... A, detail::if_decimals<A...> = 0> matrix c(A... values)
{
    return detail::listed(static_cast<int>(sizeof...(A)), {static_cast<double>(values)...});
}

/// One row of the first n of the numbers that follow.
template <class... A> matrix vd(int n, A... values)
{
    return detail::listed(n, {static_cast<double>(values)...});
}

} // namespace varnow
