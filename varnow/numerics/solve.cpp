#include <varnow/numerics/solve.h>

#include <varnow/containers/product_kernel.h>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace varnow {

namespace {

bool is_square(matrix const& a, int n)
{
    return a.rows == n && a.cols == n;
}

bool refuse_sizes(bool fit, char const* routine)
{
    if (!fit) errormessage("MATRIX", routine, "niezgodne wymiary macierzy", "");
    return !fit;
}

// x of the upper triangular system; a right side of 0 gives 0 whatever the pivot.
void back_substitute(matrix const& u, std::vector<double> const& y, matrix& x)
{
    for (int i = u.rows - 1; i >= 0; --i) {
        double s = 0;
        for (int k = i + 1; k < u.rows; ++k) s += u.cell[i][k] * x.cell[k][0];
        double const v = y[i] - s;
        x.cell[i][0] = v == 0 ? 0 : v / u.cell[i][i];
    }
}

} // namespace

void matrix::lineqns_Gauss(matrix A, matrix b)
{
    char const* const routine = "lineqns_Gauss(matrix,matrix)";
    if (refuse_sizes(is_square(A, rows) && b.rows == rows && b.cols == 1 && cols == 1, routine))
        return;
    int const n = rows;
    for (int k = 0; k < n; ++k) {
        int r = k;
        for (int i = k + 1; i < n; ++i)
            if (std::fabs(A.cell[i][k]) > std::fabs(A.cell[r][k])) r = i;
        if (A.cell[r][k] == 0) {
            for (int i = 0; i < n; ++i) cell[i][0] = 0;
            errormessage("MATRIX", routine, "macierz jest prawie osobliwa", "");
            return;
        }
        std::swap(A.cell[k], A.cell[r]);
        std::swap(b.cell[k], b.cell[r]);
        for (int i = k + 1; i < n; ++i) {
            double const m = A.cell[i][k] / A.cell[k][k];
            for (int j = k + 1; j < n; ++j) A.cell[i][j] -= m * A.cell[k][j];
            b.cell[i][0] -= m * b.cell[k][0];
        }
    }
    for (int i = n - 1; i >= 0; --i) {
        double s = 0;
        for (int j = i + 1; j < n; ++j) s += A.cell[i][j] * cell[j][0];
        cell[i][0] = (b.cell[i][0] - s) / A.cell[i][i];
    }
}

void matrix::lineqns_LU(matrix const& F, matrix const& P, matrix const& b)
{
    if (refuse_sizes(is_square(F, rows) && P.rows == rows && P.cols == 1 && b.rows == rows &&
                         b.cols == 1 && cols == 1,
                     "lineqns_LU(matrix,matrix,matrix)"))
        return;
    for (int i = 0; i < rows; ++i)
        if (!(P.cell[i][0] >= 1 && P.cell[i][0] < rows + 1.0)) {
            errormessage("MATRIX", "lineqns_LU(matrix,matrix,matrix)", "indeks poza zakresem", "");
            return;
        }
    std::vector<double> y(static_cast<std::size_t>(rows));
    for (int i = 0; i < rows; ++i) {
        double s = 0;
        for (int k = 0; k < i; ++k) s += F.cell[i][k] * y[k];
        y[i] = b.cell[static_cast<int>(P.cell[i][0]) - 1][0] - s;
    }
    back_substitute(F, y, *this);
}

void matrix::lineqns_QR(matrix const& Q, matrix const& R, matrix const& b)
{
    if (refuse_sizes(is_square(Q, rows) && is_square(R, rows) && b.rows == rows && b.cols == 1 &&
                         cols == 1,
                     "lineqns_QR(matrix,matrix,matrix)"))
        return;
    std::vector<double> y(static_cast<std::size_t>(rows), 0.0);
    for (int k = 0; k < rows; ++k)
        for (int i = 0; i < rows; ++i) y[i] += Q.cell[k][i] * b.cell[k][0];
    back_substitute(R, y, *this);
}

void matrix::orthonorm()
{
    int const n = std::min(rows, cols);
    for (int j = 0; j < cols; ++j) {
        double s = 0;
        for (int i = 0; i < n; ++i) s += cell[i][j] * cell[i][j];
        double const length = std::sqrt(s);
        for (int i = 0; i < n; ++i) cell[i][j] /= length;
        for (int l = j + 1; l < cols; ++l) {
            double d = 0;
            for (int i = 0; i < n; ++i) d += cell[i][j] * cell[i][l];
            for (int i = 0; i < n; ++i) cell[i][l] -= d * cell[i][j];
        }
    }
}

matrix lineqns(matrix const& A, matrix const& b, LinearMethod method)
{
    if (refuse_sizes(b.rows > 0 && b.cols == 1 && is_square(A, b.rows),
                     "matrix lineqns(matrix,matrix,LinearMethod)"))
        return matrix();
    matrix x(b.rows, 1);
    copynames_c2r(A, x);
    x.cnames[0] = "LINEQNS";
    switch (method) {
    case GAUSS:
        x.lineqns_Gauss(A, b);
        break;
    case LU: {
        matrix factors, P;
        int sign;
        LU_decomp(A, factors, P, sign);
        x.lineqns_LU(factors, P, b);
        break;
    }
    case QR: {
        matrix Q, R;
        QR_decomp(A, Q, R);
        x.lineqns_QR(Q, R, b);
        break;
    }
    }
    return x;
}

matrix inv(matrix const& A, LinearMethod method)
{
    if (A.rows != A.cols) {
        errormessage("MATRIX", "matrix inv(matrix,LinearMethod)", "macierz musi byc kwadratowa",
                     "");
        return matrix();
    }
    matrix r(A.rows, A.rows);
    copynames_c2r(A, r);
    copynames_c2c(A, r);
    matrix e(A.rows, 1);
    for (int i = 0; i < A.rows; ++i) e.cell[i][0] = 0;
    for (int c = 0; c < A.rows; ++c) {
        e.cell[c][0] = 1;
        matrix const x = lineqns(A, e, method);
        for (int i = 0; i < A.rows; ++i) r.cell[i][c] = x.cell[i][0];
        e.cell[c][0] = 0;
    }
    return r;
}

double det(matrix const& A)
{
    if (A.rows != A.cols) {
        errormessage("MATRIX", "double det(matrix)", "macierz powinna byc kwadratowa", "");
        return 0;
    }
    matrix factors, P;
    int sign;
    LU_decomp(A, factors, P, sign);
    double product = sign;
    for (int i = 0; i < A.rows; ++i) product *= factors.cell[i][i];
    return product;
}

matrix diag(matrix const& m)
{
    if (m.rows == 0 || m.cols == 0) return matrix();
    if (m.rows == 1 || m.cols == 1) {
        int const n = std::max(m.rows, m.cols);
        matrix r(n, n);
        for (int i = 0; i < n; ++i) {
            std::fill(r.cell[i], r.cell[i] + n, 0.0);
            r.cell[i][i] = m.rows == 1 ? m.cell[0][i] : m.cell[i][0];
        }
        return r;
    }
    if (m.rows != m.cols) {
        errormessage("MATRIX", "matrix diag(matrix)", "oczekiwany wektor lub macierz kwadratowa",
                     "");
        return matrix();
    }
    matrix r(m.rows, 1);
    for (int i = 0; i < m.rows; ++i) r.cell[i][0] = m.cell[i][i];
    return r;
}

void LU_decomp(matrix const& A, matrix& factors, matrix& P, int& sign)
{
    if (A.rows != A.cols) {
        errormessage("MATRIX", "void LU_decomp(matrix,matrix,matrix,int)",
                     "macierz powinna byc kwadratowa", "");
        return;
    }
    factors = A;
    int const n = factors.rows;
    P.resize(n, 1);
    for (int i = 0; i < n; ++i) P.cell[i][0] = i + 1;
    sign = 1;
    double** const f = factors.cell;
    std::vector<double> w(static_cast<std::size_t>(n));
    for (int j = 0; j < n; ++j) {
        for (int i = 0; i < n; ++i) w[i] = f[i][j];
        for (int i = 0; i < n; ++i) {
            double s = 0;
            for (int k = 0; k < std::min(i, j); ++k) s += f[i][k] * w[k];
            w[i] -= s;
            f[i][j] = w[i];
        }
        int p = j;
        for (int i = j + 1; i < n; ++i)
            if (std::fabs(w[i]) > std::fabs(w[p])) p = i;
        if (p != j) {
            std::swap(f[p], f[j]);
            std::swap(P.cell[p][0], P.cell[j][0]);
            sign = -sign;
        }
        if (f[j][j] != 0)
            for (int i = j + 1; i < n; ++i) f[i][j] /= f[j][j];
    }
}

void QR_decomp(matrix const& A, matrix& Q, matrix& R)
{
    matrix q = A;
    q.orthonorm();
    matrix r(A.cols, A.cols);
    copynames_c2r(A, r);
    copynames_c2c(A, r);
    detail::product(detail::sum::set, A.cols, A.cols, A.rows, {q.cell, 0, true}, {A.cell}, r.cell);
    Q = std::move(q);
    R = std::move(r);
}

} // namespace varnow
