#include <varnow/network/activation_kernels.h>

#include <algorithm>
#include <cmath>

namespace varnow::detail {

void activate_stored(double const* z, int n, int code, double* y)
{
    switch (code) {
    case 1:
        for (int i = 0; i < n; ++i) y[i] = z[i] == 0.0 ? 0.0 : 1.0 / (1.0 + std::exp(-z[i]));
        break;
    case 2:
        for (int i = 0; i < n; ++i) y[i] = std::tanh(z[i]);
        break;
    default:
        std::copy_n(z, n, y);
    }
}

} // namespace varnow::detail
