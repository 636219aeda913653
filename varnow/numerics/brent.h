// Internal: the line minimiser.
#pragma once

#include <cmath>

namespace varnow::detail {

/// Golden section with parabolic steps, as fminops (univariate.h) has it, for any callable.
/// - least: the value of f at the result
template <class F>
double brent_minimum(F f, double a, double b, double tol, int maxit, int& flag, double& least)
{
    constexpr double c = 0.3819660112501, seps = 1.4901161193847656e-08;
    auto const sign_of = [](double x) { return x < 0 ? -1.0 : 1.0; };
    flag = 1;
    // The best place, the next best one and the one that this replaced.
    double xf = a + c * (b - a), w = xf, v = xf;
    double fx = f(xf), fw = fx, fv = fx;
    double d = 0.0, e = 0.0;
    long long n = 1;
    do {
        double const xm = (a + b) * 0.5;
        double const tol1 = seps * std::fabs(xf) + tol / 3, tol2 = 2 * tol1;
        if (std::fabs(xf - xm) <= tol2 - 0.5 * (b - a)) {
            flag = 0;
            break;
        }
        ++n;
        bool parabola = std::fabs(e) > tol1;
        if (parabola) {
            double const r = (fx - fv) * (xf - w);
            double q = (fx - fw) * (xf - v);
            double p = (xf - v) * q - (xf - w) * r;
            q = 2 * (q - r);
            if (q > 0) p = -p;
            q = std::fabs(q);
            parabola =
                !(std::fabs(0.5 * q * e) <= std::fabs(p) || p <= q * (a - xf) || p >= q * (b - xf));
            if (parabola) {
                e = d;
                d = p / q;
                if (xf + d - a < tol2 || b - (xf + d) < tol2) d = sign_of(xm - xf) * tol1;
            }
        }
        if (!parabola) {
            e = xm <= xf ? a - xf : b - xf;
            d = c * e;
        }
        double const step = std::fabs(d);
        double const x = xf + sign_of(d) * (step > tol1 ? step : tol1);
        double const fu = f(x);
        if (fu <= fx) {
            (x >= xf ? a : b) = xf;
            v = w, fv = fw;
            w = xf, fw = fx;
            xf = x, fx = fu;
        } else {
            (x < xf ? a : b) = x;
            if (fu <= fw || w == xf) {
                v = w, fv = fw;
                w = x, fw = fu;
            } else if (fu <= fv || v == xf || v == w) {
                v = x, fv = fu;
            }
        }
    } while (n <= maxit);
    least = fx;
    return xf;
}

} // namespace varnow::detail
