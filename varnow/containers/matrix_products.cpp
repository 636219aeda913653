#include <varnow/containers/matrix_products.h>

#include <varnow/containers/matrix_arithmetic.h>
#include <varnow/containers/product_kernel.h>

#include <algorithm>
#include <cmath>

namespace varnow {

namespace {

bool is_table(matrix const& a)
{
    return a.rows > 1 && a.cols > 1;
}

// Number of cells of a vector, and the i-th of them.
int count(matrix const& a)
{
    return a.rows && a.cols ? std::max(a.rows, a.cols) : 0;
}
double element(matrix const& a, int i)
{
    return a.rows == 1 ? a.cell[0][i] : a.cell[i][0];
}

} // namespace

matrix mul(matrix const& A, matrix const& B)
{
    if (A.cols != B.rows) {
        errormessage("MATRIX", "matrix mul(matrix,matrix)", "niezgodne wymiary macierzy", "");
        return matrix();
    }
    matrix r(A.rows, B.cols);
    copynames_r2r(A, r);
    copynames_c2c(B, r);
    detail::product(detail::sum::set, A.rows, B.cols, A.cols, {A.cell}, {B.cell}, r.cell);
    return r;
}

matrix mulT(matrix const& A, matrix const& B)
{
    if (A.cols != B.cols) {
        errormessage("MATRIX", "matrix mulT(matrix,matrix)", "niezgodne wymiary macierzy", "");
        return matrix();
    }
    matrix r(A.rows, B.rows);
    copynames_r2r(A, r);
    copynames_r2c(B, r);
    detail::product(detail::sum::set, A.rows, B.rows, A.cols, {A.cell}, {B.cell, 0, true}, r.cell);
    return r;
}

// Cells (i, j) and (j, i) of the square products are the same sums, so one triangle is enough.
matrix sqrT(matrix const& A)
{
    matrix r(A.rows, A.rows);
    copynames_r2r(A, r);
    copynames_r2c(A, r);
    detail::product(detail::sum::set, A.rows, A.rows, A.cols, {A.cell}, {A.cell, 0, true}, r.cell,
                    0, detail::part::upper);
    detail::mirror(r.cell, r.rows);
    return r;
}

matrix sqrT2(matrix const& A)
{
    return crossprod(A);
}

matrix crossprod(matrix const& A)
{
    matrix r(A.cols, A.cols);
    copynames_c2r(A, r);
    copynames_c2c(A, r);
    detail::crossproduct(A.cell, A.rows, A.cols, nullptr, r.cell);
    return r;
}

double scmul(matrix const& a, matrix const& b)
{
    auto refuse = [](char const* why) {
        errormessage("MATRIX", "double scmul(matrix,matrix)", why, "");
        return 0.0;
    };
    if (is_table(a)) return refuse("pierwszy argument musi byc wektorem");
    if (is_table(b)) return refuse("drugi argument musi byc wektorem");
    if (std::max(a.rows, a.cols) != std::max(b.rows, b.cols))
        return refuse("niezgodna dlugosc wektorow wejsciowych");
    if ((a.cols == 1) != (b.cols == 1)) return refuse("niezgodna orientacja wektorow wejsciowych");
    double s = 0;
    for (int i = 0, n = std::min(count(a), count(b)); i < n; ++i)
        s += element(a, i) * element(b, i);
    return s;
}

double scsqr(matrix const& a)
{
    if (is_table(a)) {
        errormessage("MATRIX", "double scsqr(matrix)", "argument musi byc wektorem", "");
        return 0;
    }
    double s = 0;
    for (int i = 0, n = count(a); i < n; ++i) s += element(a, i) * element(a, i);
    return s;
}

double norm2(matrix const& a)
{
    return std::sqrt(scmul(a, a));
}

matrix proj(matrix const& a, matrix const& b)
{
    return scmul(a, b) / scmul(b, b) * b;
}

double comut(matrix const& A, matrix const& v)
{
    auto refuse = [](char const* why) {
        errormessage("MATRIX", "double comut(matrix,matrix)", why, "");
        return 0.0;
    };
    if (A.rows != A.cols) return refuse("pierwszy argument musi byc macierza kwadratowa");
    if (v.cols > 1) return refuse("drugi argument musi byc wektorem kolumnowym");
    if (v.rows != A.rows) return refuse("wektor ma inna dlugosc niz wymiary macierzy");
    int const n = count(v);
    // All inner sums side by side, along the rows of A.
    detail::work_space const inner(n);
    std::fill(inner + 0, inner + n, 0.0);
    for (int k = 0; k < n; ++k) detail::add_multiple(n, v.cell[k][0], A.cell[k], inner);
    double s = 0;
    for (int i = 0; i < n; ++i) s += v.cell[i][0] * inner[i];
    return s;
}

double trace(matrix const& A)
{
    if (A.rows != A.cols) {
        errormessage("MATRIX", "double trace(matrix)", "oczekiwana macierz kwadratowa", "");
        return 0;
    }
    double s = 0;
    for (int i = 0; i < A.rows; ++i) s += A.cell[i][i];
    return s;
}

matrix outer(matrix const& a, matrix const& b, char op)
{
    auto refuse = [](char const* why) {
        errormessage("MATRIX", "matrix outer(matrix,matrix,char)", why, "");
        return matrix();
    };
    if (is_table(a)) return refuse("pierwszy argument ma byc wektorem");
    if (is_table(b)) return refuse("drugi argument ma byc wektorem");
    auto table_of = [&](auto f) {
        matrix r(count(a), count(b));
        for (int i = 0; i < r.rows; ++i)
            for (int j = 0; j < r.cols; ++j) r.cell[i][j] = f(element(a, i), element(b, j));
        return r;
    };
    switch (op) {
    case '+':
        return table_of([](double x, double y) { return x + y; });
    case '-':
        return table_of([](double x, double y) { return x - y; });
    case '*':
        return table_of([](double x, double y) { return x * y; });
    case '/':
        return table_of([](double x, double y) { return x / y; });
    default:
        return refuse("oczekiwana funkcja +,-,* lub /");
    }
}

} // namespace varnow
