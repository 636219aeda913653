#include <varnow/numerics/regression.h>

#include <varnow/containers/matrix_arithmetic.h>
#include <varnow/containers/product_kernel.h>
#include <varnow/containers/slicing.h>
#include <varnow/containers/storage.h>
#include <varnow/numerics/statistics.h>
#include <varnow/numerics/sweep.h>

#include <algorithm>
#include <cstdint>
#include <vector>

namespace varnow {

namespace {

// The cells of the first n rows and columns, on pivot k.
void sweep(double* const* a, int n, int k)
{
    double* const pivot_row = a[k];
    double const d = pivot_row[k];
    for (int i = 0; i < n; ++i) {
        if (i == k) continue;
        double* const row = a[i];
        double const x = row[k];
        for (int j = 0; j < n; ++j) row[j] -= x * pivot_row[j] / d;
        row[k] = x / d;
    }
    for (int j = 0; j < n; ++j) pivot_row[j] /= d;
    pivot_row[k] = -1 / d;
}

bool refuse_pivots(int first, int last, int n, char const* routine)
{
    bool const outside = first <= last && (first < 1 || last > n);
    if (outside) errormessage("MATRIX", routine, "indeks poza zakresem", "");
    return outside;
}

// The variables that a condition selects and the target, with their cells of M on their own.
class selection
{
public:
    selection(matrix const& M, matrix const& cond, int ycol)
    {
        for (int v = 0; v < M.rows; ++v) {
            bool const is_target = v == ycol - 1;
            if (is_target) target_ = static_cast<int>(number_.size());
            if (is_target || cond.cell[v][0] == 1.0) number_.push_back(v);
        }
        cells_ = matrix(size(), size());
        for (int i = 0; i < size(); ++i)
            for (int j = 0; j < size(); ++j) cells_.cell[i][j] = M.cell[number(i)][number(j)];
    }

    int size() const { return static_cast<int>(number_.size()); }
    /// Position in M, from 0.
    int number(int i) const { return number_[static_cast<std::size_t>(i)]; }
    bool is_target(int i) const { return i == target_; }
    double cell(int i, int j) const { return cells_.cell[i][j]; }
    double coefficient(int i) const { return cells_.cell[i][target_]; }

    /// False when there is no pivot from `first` up to `last`, counted in M from 1.
    bool sweep_on(int first, int last)
    {
        bool swept = false;
        for (int i = 0; i < size(); ++i) {
            if (is_target(i) || number(i) < first - 1 || number(i) >= last) continue;
            sweep(cells_.cell, size(), i);
            swept = true;
        }
        return swept;
    }

private:
    std::vector<int> number_;
    int target_ = -1;
    matrix cells_;
};

bool refuse_data(matrix const& X, matrix const& y, std::int64_t variables)
{
    bool const fit = y.rows > 0 && y.cols == 1 && X.rows == y.rows && y.rows >= variables;
    if (!fit)
        errormessage("MATRIX", "matrix linreg(matrix,matrix)", "nieprawidlowe wymiary macierzy",
                     "");
    return !fit;
}

// From the cross-products of the variables and, last, the target.
matrix coefficients(matrix& products, matrix const& X)
{
    int const p = products.rows - 1;
    matrix r(p, 1);
    copynames_c2r(X, r);
    r.cnames[0] = "LINREG";
    products.linreg_sweep(1, p);
    for (int i = 0; i < p; ++i) r.cell[i][0] = products.cell[i][p];
    return r;
}

} // namespace

void matrix::linreg_sweep(int first, int last)
{
    char const* const routine = "linreg_sweep(int,int)";
    auto refuse = [&](char const* why) { errormessage("MATRIX", routine, why, ""); };
    if (rows != cols) return refuse("macierz powinna byc kwadratowa");
    if (!issym(*this)) return refuse("macierz powinna byc symetryczna");
    if (refuse_pivots(first, last, rows, routine)) return;
    for (int k = first - 1; k < last; ++k) sweep(cell, rows, k);
}

void matrix::linreg_sweep_c(int first, int last, matrix const& cond, int ycol)
{
    char const* const routine = "linreg_sweep_c(int,int,matrix,int)";
    auto refuse = [&](char const* why) { errormessage("MATRIX", routine, why, ""); };
    if (rows != cols) return refuse("macierz powinna byc kwadratowa");
    if (!issym(*this)) return refuse("macierz powinna byc symetryczna");
    if (cond.cols != 1) return refuse("oczekiwany kolumnowy wektor warunkowy");
    if (cond.rows != rows)
        return refuse("dlugosc wektora warunkowego niezgodna z wymiarami macierzy");
    if (refuse_pivots(first, last, rows, routine)) return;
    selection chosen(*this, cond, ycol);
    if (!chosen.sweep_on(first, last)) return;
    zeros();
    for (int i = 0; i < chosen.size(); ++i)
        for (int j = 0; j < chosen.size(); ++j)
            cell[chosen.number(i)][chosen.number(j)] = chosen.cell(i, j);
}

matrix linreg(matrix const& X, matrix const& y)
{
    if (refuse_data(X, y, X.cols)) return matrix();
    int const p = X.cols;
    matrix products(p + 1, p + 1);
    detail::crossproduct(X.cell, X.rows, p, nullptr, products.cell, {y.cell});
    return coefficients(products, X);
}

matrix detail::linreg_with_ones(matrix const& X, matrix const& y, matrix& products)
{
    if (refuse_data(X, y, std::int64_t(X.cols) + 1)) return matrix();
    int const m = X.cols + 1;
    matrix all(m + 1, m + 1);
    crossproduct(X.cell, X.rows, X.cols, nullptr, all.cell, {nullptr, y.cell});
    products = matrix(m, m);
    for (int i = 0; i < m; ++i) std::copy(all.cell[i], all.cell[i] + m, products.cell[i]);
    return coefficients(all, X);
}

matrix linreg_c(matrix const& M, matrix const& cond, int ycol)
{
    auto refuse = [](char const* why) {
        errormessage("MATRIX", "linreg_c(matrix,matrix,int)", why, "");
        return matrix();
    };
    if (M.rows != M.cols) return refuse("macierz iloczynow powinna byc kwadratowa");
    if (!issym(M)) return refuse("macierz powinna byc symetryczna");
    if (cond.cols != 1) return refuse("oczekiwany kolumnowy wektor warunkowy");
    if (cond.rows != M.rows)
        return refuse("dlugosc wektora warunkowego niezgodna z wymiarami macierzy iloczynow");
    std::int64_t const n = std::int64_t(int(sum(cond))) - detail::truncated(cond(ycol));
    selection chosen(M, cond, ycol);
    chosen.sweep_on(1, M.cols);
    matrix r(detail::checked_size(std::max<std::int64_t>(n, 0)), 1);
    r.fill(__NAN<double>());
    for (int i = 0, k = 0; i < chosen.size() && k < r.rows; ++i) {
        if (chosen.is_target(i)) continue;
        r.cell[k][0] = chosen.coefficient(i);
        r.rnames[k] = M.rnames[k];
        ++k;
    }
    return r;
}

} // namespace varnow
