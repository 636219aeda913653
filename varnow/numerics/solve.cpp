#include <varnow/numerics/solve.h>

#include <varnow/containers/product_kernel.h>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace varnow {

namespace {

using detail::work_space;
using std::ptrdiff_t;

bool is_square(matrix const& a, int n)
{
    return a.rows == n && a.cols == n;
}

bool refuse_sizes(bool fit, char const* routine)
{
    if (!fit) errormessage("MATRIX", routine, "niezgodne wymiary macierzy", "");
    return !fit;
}

// Where a cell's products go: Gauss takes each one off the cell, Crout adds them up and takes the
// sum off at the end.
enum class form { gauss, crout };

constexpr int panel_cols = 32;

// Factorises n rows in place: multipliers below the diagonal, U on and above it. Panels of columns
// are worked out column by column in a copy; what they do to the columns right of them goes through
// the product kernel, which keeps the order of the terms of every cell. order[i] becomes the
// number, from 0, of the row that was taken for row i. The parity of the exchanges, or 0 where
// Gauss meets a pivot of exactly 0.
int factorise(form how, double** f, int n, int* order)
{
    bool const crout = how == form::crout;
    ptrdiff_t const tall = n;
    work_space const sums(crout ? tall * n : 0);
    std::vector<double*> summed(static_cast<std::size_t>(crout ? n : 0));
    double** const s = summed.data();
    if (crout) std::fill(sums + 0, sums + tall * n, 0.0);
    for (int i = 0; i < n; ++i) {
        order[i] = i;
        if (crout) s[i] = sums + i * tall;
    }
    // Columns of the panel and their sums, from the panel's first row down.
    work_space const columns(tall * panel_cols), column_sums(crout ? tall * panel_cols : 0);
    int sign = 1;
    for (int j0 = 0; j0 < n; j0 += panel_cols) {
        int const wide = std::min(panel_cols, n - j0), j1 = j0 + wide, height = n - j0;
        for (int i = 0; i < height; ++i)
            for (int c = 0; c < wide; ++c) {
                columns[c * tall + i] = f[j0 + i][j0 + c];
                if (crout) column_sums[c * tall + i] = s[j0 + i][j0 + c];
            }
        for (int c = 0; c < wide; ++c) {
            double* const w = columns + c * tall;
            double* const sum = crout ? column_sums + c * tall : w;
            for (int k = 0; k < c; ++k) {
                if (crout) w[k] -= sum[k];
                detail::add_multiple(height - k - 1, crout ? w[k] : -w[k],
                                     columns + (k * tall + k + 1), sum + k + 1);
            }
            if (crout)
                for (int i = c; i < height; ++i) w[i] -= sum[i];
            int p = c;
            for (int i = c + 1; i < height; ++i)
                if (std::fabs(w[i]) > std::fabs(w[p])) p = i;
            if (!crout && w[p] == 0) return 0;
            if (p != c) {
                for (int q = 0; q < wide; ++q) {
                    std::swap(columns[q * tall + p], columns[q * tall + c]);
                    if (crout) std::swap(column_sums[q * tall + p], column_sums[q * tall + c]);
                }
                std::swap(f[j0 + p], f[j0 + c]);
                if (crout) std::swap(s[j0 + p], s[j0 + c]);
                std::swap(order[j0 + p], order[j0 + c]);
                sign = -sign;
            }
            if (w[c] != 0)
                for (int i = c + 1; i < height; ++i) w[i] /= w[c];
        }
        for (int i = 0; i < height; ++i)
            for (int c = 0; c < wide; ++c) f[j0 + i][j0 + c] = columns[c * tall + i];
        double* const* const target = crout ? s : f;
        for (int i = j0; i < j1; ++i) {
            for (int k = j0; k < i; ++k)
                detail::add_multiple(n - j1, crout ? f[i][k] : -f[i][k], f[k] + j1, target[i] + j1);
            if (crout)
                for (int j = j1; j < n; ++j) f[i][j] -= s[i][j];
        }
        detail::product(crout ? detail::sum::add : detail::sum::subtract, n - j1, n - j1, wide,
                        {f + j1, j0}, {f + j0, j1}, target + j1, j1);
    }
    return sign;
}

// x of U x = y; guarded, a right side of 0 gives 0 whatever the pivot.
void back_substitute(matrix const& u, double const* y, bool guarded, matrix& x)
{
    for (int i = u.rows - 1; i >= 0; --i) {
        double s = 0;
        for (int k = i + 1; k < u.rows; ++k) s += u.cell[i][k] * x.cell[k][0];
        double const v = y[i] - s;
        x.cell[i][0] = guarded && v == 0 ? 0 : v / u.cell[i][i];
    }
}

// The same for a panel of right sides, in place.
void back_substitute(double const* const* u, int n, bool guarded, double* panel)
{
    ptrdiff_t const width = detail::panel_width();
    work_space const s(width);
    for (int i = n - 1; i >= 0; --i) {
        double* const x = panel + i * width;
        std::fill(s + 0, s + width, 0.0);
        detail::add_panel(n - 1 - i, u[i] + i + 1, x + width, s);
        for (int c = 0; c < width; ++c) {
            double const v = x[c] - s[c];
            x[c] = guarded && v == 0 ? 0 : v / u[i][i];
        }
    }
}

// Takes `count` columns from column `first` on into a panel, whose other columns are 0.
void load_panel(double const* const* y, int n, int first, int count, double* panel)
{
    ptrdiff_t const width = detail::panel_width();
    for (int i = 0; i < n; ++i, panel += width) {
        std::copy(y[i] + first, y[i] + first + count, panel);
        std::fill(panel + count, panel + width, 0.0);
    }
}

bool all_finite(double const* cells, int n)
{
    bool finite = true;
    for (int j = 0; j < n; ++j) finite &= std::isfinite(cells[j]);
    return finite;
}

// Pointers to the rows of cells that lie end to end.
std::vector<double*> row_pointers(double* cells, int rows, ptrdiff_t step)
{
    std::vector<double*> r(static_cast<std::size_t>(rows));
    for (double*& p : r) {
        p = cells;
        cells += step;
    }
    return r;
}

constexpr int forward_rows = 32, forward_panels = 6;

// y of L y = e for some columns of the unit matrix, which start out in y, from row `start` on; the
// rows above are 0.
void forward_substitute(form how, double const* const* f, int n, int start, int width,
                        double* const* y)
{
    bool const crout = how == form::crout;
    work_space const sums(crout ? static_cast<ptrdiff_t>(forward_rows) * width : 0);
    std::vector<double*> const summed = row_pointers(sums, crout ? forward_rows : 0, width);
    for (int i0 = start; i0 < n; i0 += forward_rows) {
        int const i1 = std::min(n, i0 + forward_rows);
        double* const* const target = crout ? summed.data() : y + i0;
        detail::product(crout ? detail::sum::set : detail::sum::subtract, i1 - i0, width,
                        i0 - start, {f + i0, start}, {y + start}, target);
        for (int i = i0; i < i1; ++i) {
            double* const s = target[i - i0];
            for (int k = i0; k < i; ++k)
                detail::add_multiple(width, crout ? f[i][k] : -f[i][k], y[k], s);
            if (crout)
                for (int c = 0; c < width; ++c) y[i][c] -= s[c];
        }
    }
}

// Columns of the inverse from the factors of `factorise`, a block of unit vectors at a time. In the
// order of the exchanged rows a unit vector begins with zeros, which finite multipliers keep.
void invert(form how, double const* const* f, int n, int const* order, matrix& r)
{
    int const width = detail::panel_width(), most = std::min(n, forward_panels * width);
    ptrdiff_t const step = width;
    bool finite = true;
    for (int i = 0; i < n; ++i) finite = finite && all_finite(f[i], i);
    work_space const panel(n * step), block(static_cast<ptrdiff_t>(n) * most);
    std::vector<double*> const y = row_pointers(block, n, most);
    for (int p = 0; p < n; p += most) {
        int const count = std::min(most, n - p);
        std::fill(block + 0, block + static_cast<ptrdiff_t>(n) * most, 0.0);
        for (int c = 0; c < count; ++c) block[static_cast<ptrdiff_t>(p + c) * most + c] = 1;
        forward_substitute(how, f, n, finite ? p : 0, count, y.data());
        for (int q = 0; q < count; q += width) {
            int const some = std::min(width, count - q);
            load_panel(y.data(), n, q, some, panel);
            back_substitute(f, n, how == form::crout, panel);
            for (int i = 0; i < n; ++i)
                std::copy(panel + i * step, panel + (i * step + some), r.cell[i] + p + q);
        }
    }
    // Back into the order of the columns, by rows, which stay near.
    work_space const line(n);
    for (int i = 0; i < n; ++i) {
        std::copy(r.cell[i], r.cell[i] + n, line + 0);
        for (int c = 0; c < n; ++c) r.cell[i][order[c]] = line[c];
    }
}

char const* const gauss_routine = "lineqns_Gauss(matrix,matrix)";

void report_singular(matrix& x)
{
    for (int i = 0; i < x.rows; ++i) std::fill(x.cell[i], x.cell[i] + x.cols, 0.0);
    errormessage("MATRIX", gauss_routine, "macierz jest prawie osobliwa", "");
}

void invert_by_gauss(matrix A, matrix& r)
{
    std::vector<int> order(static_cast<std::size_t>(A.rows));
    if (factorise(form::gauss, A.cell, A.rows, order.data()))
        invert(form::gauss, A.cell, A.rows, order.data(), r);
    else
        report_singular(r);
}

void invert_by_LU(matrix A, matrix& r)
{
    std::vector<int> order(static_cast<std::size_t>(A.rows));
    factorise(form::crout, A.cell, A.rows, order.data());
    invert(form::crout, A.cell, A.rows, order.data(), r);
}

void invert_by_QR(matrix const& A, matrix& r)
{
    matrix Q, R;
    QR_decomp(A, Q, R);
    int const n = A.rows, width = detail::panel_width();
    ptrdiff_t const step = width;
    // Transposed Q times the unit matrix; finite cells pass through, -0 as 0.
    bool finite = true;
    for (int i = 0; i < n; ++i) finite = finite && all_finite(Q.cell[i], n);
    matrix y(n, n);
    if (finite) {
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j) y.cell[i][j] = 0.0 + Q.cell[j][i];
    } else {
        matrix unit(n, n);
        for (int i = 0; i < n; ++i) {
            std::fill(unit.cell[i], unit.cell[i] + n, 0.0);
            unit.cell[i][i] = 1;
        }
        detail::product(detail::sum::set, n, n, n, {Q.cell, 0, true}, {unit.cell}, y.cell);
    }
    work_space const panel(n * step);
    for (int p = 0; p < n; p += width) {
        int const count = std::min(width, n - p);
        load_panel(y.cell, n, p, count, panel);
        back_substitute(R.cell, n, true, panel);
        for (int i = 0; i < n; ++i)
            std::copy(panel + i * step, panel + (i * step + count), r.cell[i] + p);
    }
}

} // namespace

void matrix::lineqns_Gauss(matrix A, matrix b)
{
    if (refuse_sizes(is_square(A, rows) && b.rows == rows && b.cols == 1 && cols == 1,
                     gauss_routine))
        return;
    std::vector<int> order(static_cast<std::size_t>(rows));
    if (!factorise(form::gauss, A.cell, rows, order.data())) return report_singular(*this);
    work_space const y(rows);
    for (int i = 0; i < rows; ++i) {
        double v = b.cell[order[static_cast<std::size_t>(i)]][0];
        for (int k = 0; k < i; ++k) v -= A.cell[i][k] * y[k];
        y[i] = v;
    }
    back_substitute(A, y, false, *this);
}

void matrix::lineqns_LU(matrix const& F, matrix const& P, matrix const& b)
{
    char const* const routine = "lineqns_LU(matrix,matrix,matrix)";
    if (refuse_sizes(is_square(F, rows) && P.rows == rows && P.cols == 1 && b.rows == rows &&
                         b.cols == 1 && cols == 1,
                     routine))
        return;
    for (int i = 0; i < rows; ++i)
        if (!(P.cell[i][0] >= 1 && P.cell[i][0] < rows + 1.0)) {
            errormessage("MATRIX", routine, "indeks poza zakresem", "");
            return;
        }
    work_space const y(rows);
    for (int i = 0; i < rows; ++i) {
        double s = 0;
        for (int k = 0; k < i; ++k) s += F.cell[i][k] * y[k];
        y[i] = b.cell[static_cast<int>(P.cell[i][0]) - 1][0] - s;
    }
    back_substitute(F, y, true, *this);
}

void matrix::lineqns_QR(matrix const& Q, matrix const& R, matrix const& b)
{
    if (refuse_sizes(is_square(Q, rows) && is_square(R, rows) && b.rows == rows && b.cols == 1 &&
                         cols == 1,
                     "lineqns_QR(matrix,matrix,matrix)"))
        return;
    work_space const y(rows);
    std::fill(y + 0, y + rows, 0.0);
    for (int k = 0; k < rows; ++k) detail::add_multiple(rows, b.cell[k][0], Q.cell[k], y);
    back_substitute(R, y, true, *this);
}

// A panel of columns at a time loses its projections on the columns before it, which are finished
// and lie end to end; one pass over the panel takes off a projection and adds up the next dot
// products. In the panel a finished column stays behind as rubbish that nobody reads.
void matrix::orthonorm()
{
    int const n = std::min(rows, cols), width = detail::panel_width();
    ptrdiff_t const tall = n, step = width;
    work_space const finished(tall * cols), panel(tall * step), unused(step);
    work_space d(step), next_d(step);
    auto const column = [&](int j) { return finished + j * tall; };
    auto const clear = [step](double* sums) { std::fill(sums, sums + step, 0.0); };
    for (int l = 0; l < cols; l += width) {
        int const count = std::min(width, cols - l);
        load_panel(cell, n, l, count, panel);
        clear(next_d);
        if (l > 0) detail::add_panel(n, column(0), panel, next_d);
        for (int j = 0; j < l; ++j) {
            std::swap(d, next_d);
            clear(next_d);
            detail::project_panel(n, column(j), d, column(std::min(j + 1, l - 1)), panel, next_d);
        }
        for (int c = 0; c < count; ++c) {
            double* const q = column(l + c);
            double s = 0;
            for (int i = 0; i < n; ++i) {
                q[i] = panel[i * step + c];
                s += q[i] * q[i];
            }
            double const length = std::sqrt(s);
            for (int i = 0; i < n; ++i) q[i] /= length;
            clear(d);
            clear(unused);
            detail::add_panel(n, q, panel, d);
            detail::project_panel(n, q, d, q, panel, unused);
        }
    }
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < cols; ++j) cell[i][j] = finished[j * tall + i];
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
    switch (method) {
    case GAUSS:
        invert_by_gauss(A, r);
        break;
    case LU:
        invert_by_LU(A, r);
        break;
    case QR:
        invert_by_QR(A, r);
        break;
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
    std::vector<int> order(static_cast<std::size_t>(n));
    sign = factorise(form::crout, factors.cell, n, order.data());
    P.resize(n, 1);
    for (int i = 0; i < n; ++i) P.cell[i][0] = order[static_cast<std::size_t>(i)] + 1;
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
