#include <varnow/models/linear.h>

#include <varnow/containers/matrix_arithmetic.h>
#include <varnow/containers/matrix_special.h>
#include <varnow/containers/product_kernel.h>
#include <varnow/containers/storage.h>
#include <varnow/models/logistic.h>
#include <varnow/numerics/regression.h>
#include <varnow/numerics/solve.h>
#include <varnow/numerics/statistics.h>
#include <varnow/numerics/sweep.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace varnow {

namespace {

double squared_distance(matrix const& a, matrix const& b)
{
    if (a.rows != b.rows || a.cols != b.cols) {
        static_cast<void>(a - b); // refuses
        return __NAN<double>();
    }
    double s = 0;
    for (int i = 0; i < a.rows; ++i)
        for (int j = 0; j < a.cols; ++j) {
            double const d = a.cell[i][j] - b.cell[i][j];
            s += d * d;
        }
    return s;
}

double last_cell(matrix const& cond)
{
    return cond(std::max(cond.rows, cond.cols));
}

// The number of selected variables as the sum of the cells has it.
std::int64_t variables(matrix const& cond)
{
    return std::int64_t(int(sum(cond))) - detail::truncated(std::round(last_cell(cond)));
}

// V: the inverse of the cross-products.
void test_coefficients(matrix const& par, matrix const& V, double sse, double freedom, matrix& se,
                       matrix& t, matrix& p)
{
    for (matrix* column : {&se, &t, &p}) column->resize(V.rows, 1);
    for (int i = 0; i < V.rows; ++i) {
        double const error = std::sqrt(sse * V.cell[i][i] / freedom);
        double const ratio = i < par.rows ? par.cell[i][0] / error : __NAN<double>();
        se.cell[i][0] = error;
        t.cell[i][0] = ratio;
        p.cell[i][0] = 2 * (1 - phi(std::fabs(ratio)));
    }
}

void test_subset(matrix const& X, matrix const& y, matrix const& M, matrix const& cond,
                 matrix const& par, matrix& se, matrix& t, matrix& p)
{
    double const sse = squared_distance(y, lm_val_c(X, par, cond));
    std::int64_t const k = variables(cond);
    int const m = detail::checked_size(std::max<std::int64_t>(k + 1, 0));
    std::vector<int> taken;
    for (int v = 0; v < cond.rows; ++v)
        if (cond.cell[v][0] == 1.0 && static_cast<int>(taken.size()) < m) taken.push_back(v);
    matrix A = zeros(m, m);
    int i = 0;
    for (int from : taken) {
        int j = 0;
        for (int to : taken) A.cell[i][j++] = M.cell[from][to];
        ++i;
    }
    test_coefficients(par, inv(A, LU), sse, static_cast<double>(X.rows - k - 1), se, t, p);
}

} // namespace

matrix lm_par(matrix const& X, matrix const& y, EsType type)
{
    if (type != EsQuadratic && type != EsLikelihood) return zeros(X.cols + 1, 1);
    matrix products, par = detail::linreg_with_ones(X, y, products);
    if (type == EsLikelihood) {
        fits(X, y, lm_val1, par, 0.0001, EsLikelihood);
        fitu(X, y, lm_val1, lm_dval1, par, 1e-09, EsLikelihood, DFP);
    }
    return par;
}

// The column of ones need not be bound: it adds the last parameter to the finished sum.
matrix lm_val(matrix const& X, matrix const& par)
{
    if (par.rows != X.cols + 1) {
        errormessage("MATRIX", "matrix mul(matrix,matrix)", "niezgodne wymiary macierzy", "");
        return matrix();
    }
    matrix r(X.rows, par.cols);
    copynames_r2r(X, r);
    copynames_c2c(par, r);
    detail::product(detail::sum::set, r.rows, r.cols, X.cols, {X.cell}, {par.cell}, r.cell);
    for (int i = 0; i < r.rows; ++i)
        for (int j = 0; j < r.cols; ++j) r.cell[i][j] += par.cell[X.cols][j];
    return r;
}

double lm_err(matrix const& a, matrix const& b)
{
    return std::sqrt(squared_distance(a, b) / b.rows);
}

matrix lm_tstud(matrix const& X, matrix const& y, matrix& se, matrix& t, matrix& p, EsType type)
{
    matrix par, products;
    if (type == EsQuadratic)
        par = detail::linreg_with_ones(X, y, products);
    else {
        par = lm_par(X, y, type);
        products = matrix(X.cols + 1, X.cols + 1);
        detail::crossproduct(X.cell, X.rows, X.cols, nullptr, products.cell, {nullptr});
    }
    double const sse = squared_distance(y, lm_val(X, par));
    test_coefficients(par, inv(products, LU), sse, static_cast<double>(X.rows) - X.cols - 1, se, t,
                      p);
    return par;
}

matrix lm_par_c(matrix const& M, matrix const& cond)
{
    return linreg_c(M, cond, M.cols);
}

matrix lm_val_c(matrix const& X, matrix const& par, matrix const& cond)
{
    std::vector<int> taken;
    for (int j = 1; j <= X.cols; ++j)
        if (cond(j) == 1.0) taken.push_back(j - 1);
    bool const intercept = last_cell(cond) == 1.0;
    matrix r(X.rows, 1);
    if (r.rows == 0) return r;
    std::vector<double> b;
    for (int j = 1; j <= static_cast<int>(taken.size()); ++j) b.push_back(par(j));
    if (intercept) b.push_back(par(static_cast<int>(variables(cond) + 1)));
    for (int i = 0; i < r.rows; ++i) {
        double const* const x = X.cell[i];
        double s = 0;
        auto weight = b.begin();
        for (int j : taken) s += x[j] * *weight++;
        r.cell[i][0] = intercept ? s + *weight : s;
    }
    return r;
}

matrix lm_tstud_c(matrix const& X, matrix const& y, matrix const& M, matrix const& cond, matrix& se,
                  matrix& t, matrix& p)
{
    matrix par = lm_par_c(M, cond);
    test_subset(X, y, M, cond, par, se, t, p);
    return par;
}

matrix lm_qtstud_c(matrix const& X, matrix const& y, matrix const& M, matrix const& cond,
                   matrix& se, matrix& t, matrix& p, double lo, double pmax, double semax, int& ok)
{
    matrix par = lm_par_c(M, cond);
    auto const k = static_cast<int>(variables(cond));
    ok = k < 1;
    if (ok) return par;
    for (int i = 1; i <= k; ++i)
        if (par(i) < lo) return par;
    test_subset(X, y, M, cond, par, se, t, p);
    for (int i = 1; i <= k; ++i)
        if (p(i) > pmax) return par;
    for (int i = 1; i <= k; ++i)
        if (se(i) > semax) return par;
    ok = 1;
    return par;
}

} // namespace varnow
