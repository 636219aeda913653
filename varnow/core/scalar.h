// Small scalar routines below everything else, and the scalar mathematics of the C++ library.
#pragma once

#include <varnow/core/export.h>

#include <cmath>
#include <cstdlib>
#include <type_traits>

namespace varnow {

// Matrices have functions of these names too. With the scalar ones beside them a scalar call inside
// this namespace, or behind a using directive, never turns into a 1 by 1 matrix.
using std::abs;
using std::acos;
using std::asin;
using std::atan;
using std::ceil;
using std::cos;
using std::cosh;
using std::exp;
using std::floor;
using std::log;
using std::log10;
using std::pow;
using std::sin;
using std::sinh;
using std::sqrt;
using std::tan;
using std::tanh;

namespace detail {

template <class A, class B>
using common_number = std::enable_if_t<std::is_arithmetic<A>::value && std::is_arithmetic<B>::value,
                                       std::common_type_t<A, B>>;

} // namespace detail

// In brackets, since a system header may have macros of these names.
template <class A, class B> constexpr detail::common_number<A, B>(min)(A a, B b)
{
    using C = detail::common_number<A, B>;
    return static_cast<C>(b) < static_cast<C>(a) ? static_cast<C>(b) : static_cast<C>(a);
}
template <class A, class B> constexpr detail::common_number<A, B>(max)(A a, B b)
{
    using C = detail::common_number<A, B>;
    return static_cast<C>(a) < static_cast<C>(b) ? static_cast<C>(b) : static_cast<C>(a);
}

/// x to the power n by repeated squaring; 1 for n below 1.
VARNOW_API double powi_int(double x, int n);
/// The same for either sign of n: a negative n gives 1 / x^-n.
VARNOW_API double powi(double x, int n);

/// The error function to 1.5e-7.
/// - source: Abramowitz and Stegun, Handbook of Mathematical Functions, 7.1.26
VARNOW_API double erf(double x);
/// The normal distribution function, by `erf`.
VARNOW_API double phi(double x);

} // namespace varnow
