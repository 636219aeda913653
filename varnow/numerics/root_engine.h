// Internal: the root finder over any function.
#pragma once

#include <cmath>

namespace varnow::detail {

/// Closes in on the change of sign of f between a and b, where it is fa and fb, by the method of
/// Brent; f is called as f(x).
template <class F> double close_in(F const& f, double a, double fa, double b, double fb, double tol)
{
    double c = b, fc = fb, d = b - a, e = d;
    while (fb != 0) {
        if ((fb > 0) == (fc > 0)) {
            c = a, fc = fa;
            d = e = b - a;
        }
        if (std::fabs(fc) < std::fabs(fb)) {
            a = b, b = c, c = a;
            fa = fb, fb = fc, fc = fa;
        }
        double const m = 0.5 * (c - b);
        double const size = std::fabs(b), toler = 2 * tol * (size > 1 ? size : 1);
        if (std::fabs(m) <= toler || fb == 0) break;
        bool interpolated = !(std::fabs(e) < toler || std::fabs(fa) <= std::fabs(fb));
        if (interpolated) {
            double const s = fb / fa;
            double p, q;
            if (a == c) {
                p = 2 * m * s;
                q = 1 - s;
            } else {
                double const r = fb / fc;
                q = fa / fc;
                p = s * (2 * m * q * (q - r) - (b - a) * (r - 1));
                q = (q - 1) * (r - 1) * (s - 1);
            }
            if (p > 0)
                q = -q;
            else
                p = -p;
            interpolated = 2 * p < 3 * m * q - std::fabs(toler * q) && p < std::fabs(0.5 * e * q);
            if (interpolated) {
                e = d;
                d = p / q;
            }
        }
        if (!interpolated) d = e = m;
        a = b, fa = fb;
        if (std::fabs(d) > toler)
            b += d;
        else
            b = b > c ? b - toler : b + toler;
        fb = f(b);
    }
    return b;
}

} // namespace varnow::detail
