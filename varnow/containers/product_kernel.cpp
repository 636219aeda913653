#include <varnow/containers/product_kernel.h>

#include <algorithm>
#include <vector>

namespace varnow::detail {

void product(sum how, int m, int n, int depth, factor a, factor b, double* const* c, int first,
             part)
{
    for (int i = 0; i < m; ++i) {
        if (how == sum::set) std::fill(c[i] + first, c[i] + first + n, 0.0);
        for (int k = 0; k < depth; ++k) {
            double x = a.turned ? a.row[k][a.first + i] : a.row[i][a.first + k];
            if (how == sum::subtract) x = -x;
            for (int j = 0; j < n; ++j)
                c[i][first + j] += x * (b.turned ? b.row[j][b.first + k] : b.row[k][b.first + j]);
        }
    }
}

void crossproduct(double const* const* rows, int n, int k, double const* shift, double* const* c)
{
    for (int i = 0; i < k; ++i) std::fill(c[i], c[i] + k, 0.0);
    std::vector<double> deviation(static_cast<std::size_t>(k));
    for (int r = 0; r < n; ++r) {
        for (int i = 0; i < k; ++i) deviation[i] = rows[r][i] - (shift ? shift[i] : 0.0);
        for (int i = 0; i < k; ++i)
            for (int j = i; j < k; ++j) c[i][j] += deviation[i] * deviation[j];
    }
    mirror(c, k);
}

void mirror(double* const* c, int n)
{
    for (int i = 1; i < n; ++i)
        for (int j = 0; j < i; ++j) c[i][j] = c[j][i];
}

} // namespace varnow::detail
