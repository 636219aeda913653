#include <varnow/core/scalar.h>

namespace varnow {

namespace {

double power(double x, unsigned n)
{
    double r = 1;
    for (; n > 0; n >>= 1) {
        if (n & 1) r *= x;
        x *= x;
    }
    return r;
}

} // namespace

double powi_int(double x, int n)
{
    return n < 1 ? 1 : power(x, static_cast<unsigned>(n));
}

double powi(double x, int n)
{
    return n < 0 ? 1 / power(x, 0u - static_cast<unsigned>(n)) : powi_int(x, n);
}

double erf(double x)
{
    double const s = (x > 0) - (x < 0);
    double const t = 1 / (1 + 0.3275911 * std::fabs(x));
    return s *
           (1 - std::exp(-x * x) * t *
                    ((((1.061405429 * t - 1.453152027) * t + 1.421413741) * t - 0.284496736) * t +
                     0.254829592));
}

double phi(double x)
{
    return (erf(x / 1.414213562373) + 1) * 0.5;
}

} // namespace varnow
