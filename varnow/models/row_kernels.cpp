#include <varnow/models/row_kernels.h>

#include <algorithm>

// One body, compiled for several instruction sets, chosen when the library is loaded. Contraction
// is off, so they differ in the order of sums alone.
#if defined(__x86_64__) && defined(__linux__) && !defined(__clang__) &&                            \
    !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define CLONES __attribute__((target_clones("default", "avx2", "arch=skylake-avx512")))
#else
#define CLONES
#endif

namespace varnow::detail {

CLONES void row_products(double const* const* row, int count, int c, double const* d, double* out)
{
    int i = 0;
    for (; i + 4 <= count; i += 4) {
        double const *const w = row[i], *const x = row[i + 1], *const y = row[i + 2],
                            *const z = row[i + 3];
        double sw = 0.0, sx = 0.0, sy = 0.0, sz = 0.0;
#pragma omp simd reduction(+ : sw, sx, sy, sz)
        for (int j = 0; j < c; ++j) {
            sw += d[j] * w[j];
            sx += d[j] * x[j];
            sy += d[j] * y[j];
            sz += d[j] * z[j];
        }
        out[i] = d[c] + sw;
        out[i + 1] = d[c] + sx;
        out[i + 2] = d[c] + sy;
        out[i + 3] = d[c] + sz;
    }
    for (; i < count; ++i) {
        double s = 0.0;
        for (int j = 0; j < c; ++j) s += d[j] * row[i][j];
        out[i] = d[c] + s;
    }
}

CLONES void add_rows(double const* const* row, int count, int c, double const* pull, double* g)
{
    int i = 0;
    for (; i + 4 <= count; i += 4) {
        double const *const a = row[i], *const b = row[i + 1], *const e = row[i + 2],
                            *const f = row[i + 3];
        double const pa = pull[i], pb = pull[i + 1], pe = pull[i + 2], pf = pull[i + 3];
#pragma omp simd
        for (int j = 0; j < c; ++j) g[j] += (a[j] * pa + b[j] * pb) + (e[j] * pe + f[j] * pf);
        g[c] += (pa + pb) + (pe + pf);
    }
    for (; i < count; ++i) {
        double const* const a = row[i];
        double const pa = pull[i];
#pragma omp simd
        for (int j = 0; j < c; ++j) g[j] += a[j] * pa;
        g[c] += pa;
    }
}

CLONES void weigh(int count, double const* z, double const* s, double const* power, double far,
                  double* pull, double* weight)
{
#pragma omp simd
    for (int i = 0; i < count; ++i) {
        double const p = 1.0 / (power[i] + 1.0);
        double const curved = power[i] * p * p;
        pull[i] = z[i] * s[i] < far ? s[i] * p : 0.0;
        weight[i] = ((z[i] >= far) | (z[i] <= -far)) ? 0.0 : curved;
    }
}

CLONES double turn_and_weigh(int count, double gamma, double const* toward, double const* weight,
                             double* along)
{
    double s = 0.0;
#pragma omp simd reduction(+ : s)
    for (int i = 0; i < count; ++i) {
        double const a = toward[i] - gamma * along[i];
        along[i] = a;
        s += a * a * weight[i];
    }
    return s;
}

CLONES void add_outer(double const* x, int m, double p, double* const* H)
{
    for (int j = 0; j < m; ++j) {
        double const w = (1.0 - p) * x[j] * p;
        double* const h = H[j];
#pragma omp simd
        for (int l = 0; l < m; ++l) h[l] += x[l] * w;
    }
}

CLONES void add_transformed(double const* x, int m, double const* const* transposed, double rest,
                            double* v, double* step)
{
    std::fill(v, v + m, 0.0);
    for (int k = 0; k < m; ++k) {
        double const* const t = transposed[k];
        double const xk = x[k];
#pragma omp simd
        for (int j = 0; j < m; ++j) v[j] += xk * t[j];
    }
#pragma omp simd
    for (int j = 0; j < m; ++j) step[j] += rest * v[j];
}

} // namespace varnow::detail
