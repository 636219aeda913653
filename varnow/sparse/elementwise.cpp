// Makers, and what works on stored entries alone: filling, numbers, two matrices of one pattern.
#include <varnow/sparse/sparse.h>

#include <varnow/containers/matrix_special.h>
#include <varnow/core/messages.h>
#include <varnow/sparse/generator.h>

#include <algorithm>

namespace varnow {

namespace detail {

std::uint32_t sparse_state = 12345;

double sparse_draw()
{
    return random_step(sparse_state) / 2147483647.0;
}

} // namespace detail

namespace {

template <class F> void change(sparse& s, F const& f)
{
    for (int k = 0; k < s.nnz; ++k) s.values[k] = f(s.values[k]);
}

template <class F> void change_zeros(sparse& s, F const& f)
{
    change(s, [&f](double x) { return x == 0.0 ? f() : x; });
}

bool of_one_pattern(sparse const& a, sparse const& b, char const* routine)
{
    auto const refuse = [routine](char const* why) {
        errormessage("SPARSE", routine, why, "");
        return false;
    };
    if (a.rows != b.rows || a.cols != b.cols) return refuse("niezgodne wymiary macierzy");
    if (a.nnz != b.nnz) return refuse("niezgodna dlugosc wypelnienia");
    return true;
}

template <class F> sparse zip(sparse const& a, sparse const& b, char const* routine, F const& f)
{
    if (!of_one_pattern(a, b, routine)) return sparse();
    sparse r(a.rows, a.cols);
    r.nnz = a.nnz;
    r.sorted = a.sorted;
    int const n = std::max(a.nnz, 0);
    std::copy_n(a.rowidx, n, r.rowidx);
    std::copy_n(a.colidx, n, r.colidx);
    for (int k = 0; k < n; ++k) r.values[k] = f(a.values[k], b.values[k]);
    return r;
}

template <class F> void assign(sparse& a, sparse const& b, F const& f)
{
    if (!of_one_pattern(a, b, "void addassign(sparse)")) return;
    for (int k = 0; k < a.nnz; ++k) a.values[k] = f(a.values[k], b.values[k]);
}

template <class F> sparse full(int r, int c, F const& value)
{
    sparse s(r, c);
    s.unpack();
    change(s, [&value](double) { return value(); });
    return s;
}

} // namespace

sparse spempty(int r, int c)
{
    sparse s(r, c);
    s.nnz = 0;
    return s;
}

sparse spzeros(int r, int c)
{
    sparse s(r, c);
    s.unpack();
    return s;
}

sparse spones(int r, int c)
{
    return full(r, c, [] { return 1.0; });
}

sparse sprand(int r, int c)
{
    return full(r, c, detail::sparse_draw);
}

sparse speye(int r, int c)
{
    sparse s = spempty(r, c);
    for (int i = 1; i <= std::min(s.rows, s.cols); ++i) s(i, i) = 1.0;
    return s;
}

sparse sptest(int r, int c)
{
    sparse s = spempty(r, c);
    int k = 0;
    for (int i = 1; i <= s.rows; ++i)
        for (int j = 1; j <= s.cols; ++j)
            if (++k % 3 != 0) s(i, j) = k;
    return s;
}

void sparse::fill(double v)
{
    change(*this, [v](double) { return v; });
}

void sparse::zeros()
{
    fill(0.0);
}

void sparse::ones()
{
    fill(1.0);
}

void sparse::fill0(double v)
{
    change_zeros(*this, [v] { return v; });
}

void sparse::rfill(double s)
{
    change(*this, [s](double) { return detail::sparse_draw() * s; });
}

void sparse::rfill0(double s)
{
    change_zeros(*this, [s] { return detail::sparse_draw() * s; });
}

void sparse::forall(double (*f)(double))
{
    change(*this, f);
}

void sparse::forall(double (*f)(double, double), double p)
{
    change(*this, [f, p](double x) { return f(x, p); });
}

void sparse::spabs()
{
    change(*this, [](double x) { return std::fabs(x); });
}

void sparse::spsqr()
{
    change(*this, [](double x) { return x * x; });
}

sparse spminus(sparse const& a, sparse const& b, double t)
{
    return zip(a, b, "sparse spminus(sparse,sparse)",
               [t](double x, double y) { return x - t * y; });
}

sparse operator-(sparse a)
{
    change(a, [](double x) { return -x; });
    return a;
}

sparse abs(sparse a)
{
    a.spabs();
    return a;
}

sparse sqr(sparse a)
{
    a.spsqr();
    return a;
}

sparse forall(sparse const& a, double (*f)(double))
{
    sparse r = a;
    r.forall(f);
    return r;
}

sparse forall(sparse const& a, double (*f)(double, double), double p)
{
    sparse r = a;
    r.forall(f, p);
    return r;
}

double sum(sparse const& a)
{
    double s = 0.0;
    for (int k = 0; k < a.nnz; ++k) s += a.values[k];
    return s;
}

double sumsqr(sparse const& a)
{
    double s = 0.0;
    for (int k = 0; k < a.nnz; ++k) s += a.values[k] * a.values[k];
    return s;
}

int compare(sparse const& a, sparse const& b)
{
    if (a.rows != b.rows || a.cols != b.cols || a.nnz != b.nnz) return 0;
    for (int k = 0; k < a.nnz; ++k)
        if (a.rowidx[k] != b.rowidx[k] || a.colidx[k] != b.colidx[k] ||
            !(a.values[k] == b.values[k]))
            return 0;
    return 1;
}

// clang-format off
#define ASSIGN(op)                                                                                     \
    sparse& sparse::operator op(double s)                                                              \
    { change(*this, [s](double x) { return x op s; }); return *this; }
ASSIGN(+=) ASSIGN(-=) ASSIGN(*=) ASSIGN(/=)
#undef ASSIGN

#define SCALAR(op)                                                                                     \
    sparse operator op(sparse a, double s)                                                             \
    { change(a, [s](double x) { return x op s; }); return a; }                                         \
    sparse operator op(double s, sparse a)                                                             \
    { change(a, [s](double x) { return s op x; }); return a; }
SCALAR(*) SCALAR(/)
#undef SCALAR

#define ZIP(name, op)                                                                                  \
    sparse name(sparse const& a, sparse const& b)                                                      \
    { return zip(a, b, "sparse " #name "(sparse,sparse)", [](double x, double y) { return x op y; }); }
ZIP(spplus, +) ZIP(spminus, -) ZIP(spmul, *) ZIP(spdiv, /)
#undef ZIP

#define ADD(name, op)                                                                                  \
    void sparse::name(sparse const& b)                                                                 \
    { assign(*this, b, [](double x, double y) { return x op y; }); }                                   \
    void sparse::name(double s, sparse const& b)                                                       \
    { assign(*this, b, [s](double x, double y) { return s * x op y; }); }                              \
    void sparse::name(sparse const& b, double s)                                                       \
    { assign(*this, b, [s](double x, double y) { return x op s * y; }); }
ADD(addassign, +) ADD(subassign, -)
#undef ADD
// clang-format on

} // namespace varnow
